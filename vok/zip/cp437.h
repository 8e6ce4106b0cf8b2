// SPDX-License-Identifier: MIT
// Code page 437, in which zip archives keep names and comments. Internal.
#ifndef VOK_ZIP_CP437_H
#define VOK_ZIP_CP437_H

#include <string_view>

#include "vok/base/str.h"

namespace vok::zip {

// Bytes below 128 are ASCII, control characters included. A NUL, which no text can hold, becomes
// U+FFFD.
[[nodiscard]] Str FromCp437(std::string_view sBytes);
// Whether every character of a text is in the code page.
[[nodiscard]] bool IsCp437(const Str& oText) noexcept;
// Appends the bytes of a text; a character that the code page lacks becomes byte 255.
void AddCp437(Arr<char>& oBytes, const Str& oText);
// The same as UTF-8 for bytes that are that already; what is not well-formed is taken as Latin-1.
[[nodiscard]] Str FromUtf8(std::string_view sBytes);

}  // namespace vok::zip

#endif  // VOK_ZIP_CP437_H
