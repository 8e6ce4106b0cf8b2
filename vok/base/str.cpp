// SPDX-License-Identifier: MIT
#include "vok/base/str.h"

#include <cstring>
#include <utility>

#include "vok/base/utf8.h"

namespace vok {

Str::Str(const char* sText) {
    Add(sText);
}

Str::Str(std::string_view sText) {
    Add(sText);
}

Str::Str(const Str& oStr) noexcept
    : m_sText(oStr.m_sText),
      m_uSize(oStr.m_uSize),
      m_uCapacity(oStr.m_uCapacity),
      m_uChars(oStr.m_uChars) {
    if (m_sText != nullptr) Mem::AddRef(m_sText);
}

Str::Str(Str&& oStr) noexcept
    : m_sText(std::exchange(oStr.m_sText, nullptr)),
      m_uSize(std::exchange(oStr.m_uSize, 0)),
      m_uCapacity(std::exchange(oStr.m_uCapacity, 0)),
      m_uChars(std::exchange(oStr.m_uChars, 0)) {}

Str& Str::operator=(const Str& oStr) noexcept {
    if (this != &oStr) *this = Str(oStr);
    return *this;
}

Str& Str::operator=(Str&& oStr) noexcept {
    std::swap(m_sText, oStr.m_sText);
    std::swap(m_uSize, oStr.m_uSize);
    std::swap(m_uCapacity, oStr.m_uCapacity);
    std::swap(m_uChars, oStr.m_uChars);
    return *this;
}

void Str::Clear() noexcept {
    if (m_sText != nullptr && Mem::DropRef(m_sText)) Mem::Free(m_sText);
    m_sText = nullptr;
    m_uSize = 0;
    m_uCapacity = 0;
    m_uChars = 0;
}

void Str::Add(const char* sText) {
    if (sText != nullptr) Add(std::string_view(sText));
}

void Str::Add(std::string_view sText) {
    const Utf8_Text oText(sText);
    AddValid(oText.Data(), oText.Len());
}

void Str::Add(const Str& oStr) {
    if (oStr.IsEmpty()) return;
    if (IsEmpty()) {
        *this = oStr;
        return;
    }
    const Str oCopy(oStr);  // it may be this string
    AddValid(oCopy.m_sText, oCopy.Len());
}

void Str::Add(const char16_t* pText, const char16_t* pEnd) {
    if (pText == nullptr) return;
    if (pEnd == nullptr) pEnd = pText + std::char_traits<char16_t>::length(pText);
    Arr<char> oUtf8;
    while (pText < pEnd && *pText != 0) {
        char sCode[4];
        oUtf8.Add(sCode, EncodeUtf8(DecodeUtf16(pText, pEnd), sCode));
    }
    AddValid(oUtf8.Beg(), oUtf8.Size());
}

void Str::Renew(std::size_t uCapacity) {
    char* sCopy = static_cast<char*>(Mem::Create(uCapacity));
    const std::size_t uLen = Len();
    const std::size_t uChars = m_uChars;
    if (m_sText != nullptr) std::memcpy(sCopy, m_sText, uLen);
    sCopy[uLen] = 0;
    Clear();
    m_sText = sCopy;
    m_uSize = uLen + 1;
    m_uCapacity = uCapacity;
    m_uChars = uChars;
}

void Str::AddValid(const char* pText, std::size_t uSize) {
    if (uSize == 0) return;
    const std::size_t uNeeded = Len() + uSize + 1;
    // The text appended may point into this very string: it must outlive the old block.
    const Str oKeep = IsOwn() && uNeeded <= m_uCapacity ? Str() : *this;
    if (oKeep.m_sText != nullptr || m_sText == nullptr) {
        Renew(uNeeded > 2 * m_uCapacity ? uNeeded : 2 * m_uCapacity);
    }
    std::memmove(m_sText + Len(), pText, uSize);
    m_uChars += CountUtf8(m_sText + Len(), uSize);
    m_uSize = uNeeded;
    m_sText[uNeeded - 1] = 0;
}

void Str::Utf16::Init(const Str& oStr) {
    Arr<char16_t> oText;
    const char* pText = oStr.CStr();
    const char* pEnd = pText + oStr.Len();
    oText.Reserve(oStr.Chars() + 1);
    while (pText < pEnd) {
        char16_t aUnits[2];
        oText.Add(aUnits, EncodeUtf16(DecodeUtf8(pText, pEnd), aUnits));
    }
    oText.Add(u'\0');
    m_oText.Swap(oText);
}

Utf8_Text::Utf8_Text(std::string_view sText) : m_sView(sText) {
    const void* pNul = sText.empty() ? nullptr : std::memchr(sText.data(), 0, sText.size());
    if (pNul != nullptr) {
        m_sView = sText.substr(
            0, static_cast<std::size_t>(static_cast<const char*>(pNul) - sText.data()));
    }
    if (IsUtf8(m_sView.data(), m_sView.size())) return;
    const char* pText = m_sView.data();
    const char* pEnd = pText + m_sView.size();
    m_oCopy.Reserve(m_sView.size() + m_sView.size() / 2 + 1);
    while (pText < pEnd) {
        char sCode[4];
        const u2_t uCode = DecodeUtf8(pText, pEnd);
        m_oCopy.Add(sCode, EncodeUtf8(uCode, sCode));
    }
    m_oCopy.Add('\0');
    m_sView = std::string_view(m_oCopy.Beg(), m_oCopy.Size() - 1);
}

}  // namespace vok
