// SPDX-License-Identifier: MIT
// Conversion of texts between hosts and the library. Internal.
#ifndef SERIALIZER_UTILITIES_H
#define SERIALIZER_UTILITIES_H

#include <cstddef>
#include <string_view>

#include "serializer/string.h"
#include "vok/base/str.h"
#include "vok/base/types.h"

namespace Velmar::Q7R::Serializer::Utilities {

// Null gives the empty string.
[[nodiscard]] vok::Str String2Str(StringRef string);
// A string without text gives String::Empty().
[[nodiscard]] String Str2String(const vok::Str& string);

// The same for text inside a tree. Linear, with one allocation.
[[nodiscard]] String Utf8ToString(std::string_view sText);

// Writes valid UTF-8 as UTF-16 to pOut, which has room for a unit for each byte; returns how many.
std::size_t Utf8ToUtf16(std::string_view sText, char16_t* pOut) noexcept;

// A host text as NUL-terminated UTF-8 for the duration of a call, without a heap block when
// it is short.
class NativeText {
  public:
    explicit NativeText(StringRef string);
    [[nodiscard]] const char* CStr() const noexcept { return m_sText; }

  private:
    const char* m_sText;
    char m_sShort[64];
    vok::Str m_oLong;
};

}  // namespace Velmar::Q7R::Serializer::Utilities

#endif  // SERIALIZER_UTILITIES_H
