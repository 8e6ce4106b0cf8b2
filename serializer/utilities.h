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
// Writes a code point as UTF-16 to pOut, which has room for two units; returns how many it took.
inline std::size_t PutUtf16(vok::u2_t uCode, char16_t* pOut) noexcept {
    if (uCode < 0x10000) {
        pOut[0] = static_cast<char16_t>(uCode);
        return 1;
    }
    pOut[0] = static_cast<char16_t>(0xD7C0 + (uCode >> 10));
    pOut[1] = static_cast<char16_t>(0xDC00 + (uCode & 0x3FF));
    return 2;
}
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
