// SPDX-License-Identifier: MIT
#include "serializer/utilities.h"

#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "vok/base/utf8.h"

namespace Velmar::Q7R::Serializer {

namespace Utilities {

namespace {

// NUL-terminates in sOut, which has room for uRoom bytes; false when the text does not fit
// or is more than plain ASCII.
template <class Char>
bool CopyShort(std::basic_string_view<Char> sText, char* sOut, std::size_t uRoom) noexcept {
    if (sText.size() >= uRoom) return false;
    unsigned uAll = 0;
    for (std::size_t u = 0; u < sText.size(); ++u) {
        const auto uUnit = static_cast<std::make_unsigned_t<Char>>(sText[u]);
        uAll |= uUnit;
        sOut[u] = static_cast<char>(uUnit);
    }
    sOut[sText.size()] = 0;
    return uAll < 0x80;
}
template <>
bool CopyShort(std::string_view sText, char* sOut, std::size_t uRoom) noexcept {
    if (sText.size() >= uRoom) return false;
    if (!sText.empty()) std::memcpy(sOut, sText.data(), sText.size());
    sOut[sText.size()] = 0;
    return true;
}

}  // namespace

vok::Str String2Str(StringRef string) {
    vok::Str oStr;
    if (string.Utf8().data() != nullptr) {
        oStr.Add(string.Utf8());
    } else if (string.Utf16().data() != nullptr) {
        oStr.Add(string.Utf16().data(), string.Utf16().data() + string.Utf16().size());
    }
    return oStr;
}

String Str2String(const vok::Str& string) {
    return Utf8ToString(string.View());
}

std::size_t Utf8ToUtf16(std::string_view sText, char16_t* pOut) noexcept {
    const char* p = sText.data();
    const char* const pEnd = p + sText.size();
    char16_t* pTo = pOut;
    while (p != pEnd) {
        if (static_cast<unsigned char>(*p) < 0x80) {
            *pTo++ = static_cast<char16_t>(*p++);
            continue;
        }
        pTo += vok::EncodeUtf16(vok::DecodeUtf8(p, pEnd), pTo);
    }
    return static_cast<std::size_t>(pTo - pOut);
}

String Utf8ToString(std::string_view sText) {
    std::u16string sUtf16(sText.size(), u'\0');
    sUtf16.resize(Utf8ToUtf16(sText, sUtf16.data()));
    return String(std::move(sUtf16));
}

NativeText::NativeText(StringRef string) : m_sText(m_sShort) {
    const bool bShort = string.Utf8().data() != nullptr
                            ? CopyShort(string.Utf8(), m_sShort, sizeof(m_sShort))
                            : CopyShort(string.Utf16(), m_sShort, sizeof(m_sShort));
    if (bShort) return;
    m_oLong = String2Str(string);
    m_sText = m_oLong.CStr();
}

}  // namespace Utilities

std::string String::ToUtf8() const {
    return Utilities::String2Str(*this).CStr();
}

}  // namespace Velmar::Q7R::Serializer
