// Numbers as text, never by the locale of the process. Internal.
#ifndef VOK_BASE_NUMBER_H
#define VOK_BASE_NUMBER_H

#include <charconv>

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

// The decimal number that a text starts with, after blanks and a sign, as strtol with 32
// bits gives it: 0 when there is none, clamped to the range of i2_t. pEnd, unless it is
// null, receives the place behind it, or sText.
[[nodiscard]] i2_t ParseLong(const char* sText, const char** pEnd = nullptr) noexcept;

}  // namespace vok

#endif  // VOK_BASE_NUMBER_H
