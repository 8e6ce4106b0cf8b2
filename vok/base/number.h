// SPDX-License-Identifier: MIT
// Numbers as text, never by the locale of the process. Internal.
#ifndef VOK_BASE_NUMBER_H
#define VOK_BASE_NUMBER_H

#include <charconv>
#include <string_view>

#include "vok/base/types.h"

namespace vok {

// Room for every number below, the NUL included.
inline constexpr std::size_t NUMBER_ROOM = 32;

// Writes a number and a NUL to sBuf and returns the length without it.
template <class T>
std::size_t FormatInteger(T tValue, char* sBuf) noexcept {
    char* pEnd = std::to_chars(sBuf, sBuf + NUMBER_ROOM - 1, tValue).ptr;
    *pEnd = 0;
    return static_cast<std::size_t>(pEnd - sBuf);
}
// 16 significant digits, as "%.16g" gives them.
std::size_t FormatReal16(double dValue, char* sBuf) noexcept;

// The shortest text that reads back to the same value; "INF", "-INF", "NaN".
std::size_t FormatReal(double dValue, char* sBuf) noexcept;

// The decimal number that a text starts with, after blanks and a sign, as strtol with 32
// bits gives it: 0 when there is none, clamped to the range of i2_t. pEnd, unless it is
// null, receives the place behind it, or sText.
[[nodiscard]] i2_t ParseLong(const char* sText, const char** pEnd = nullptr) noexcept;
// The same for a text without NUL, as strtol with base 0: "0x" starts a hexadecimal number,
// "0" an octal one.
[[nodiscard]] i2_t ParseLongAnyBase(std::string_view sText) noexcept;
// The same for 64 bits, decimal: from -2^63 to 2^64 - 1, negative ones as their two's
// complement, clamped.
[[nodiscard]] u3_t ParseLong64(std::string_view sText) noexcept;
// The real that a text starts with, after blanks and a sign, as strtod gives it in the C
// locale: decimal, "0x" hexadecimal, "inf", "nan"; 0 when there is none. What is too large is
// infinite, what is too small is 0.
[[nodiscard]] double ParseReal(std::string_view sText) noexcept;

}  // namespace vok

#endif  // VOK_BASE_NUMBER_H
