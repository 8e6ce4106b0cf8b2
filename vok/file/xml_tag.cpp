// SPDX-License-Identifier: MIT
#include "vok/file/xml_tag.h"

#include <cstring>

#include "vok/base/msg.h"
#include "vok/base/utf8.h"
#include "vok/file/xml_text.h"

namespace vok::xml {

namespace {

// Moves over blanks; false at the end of the text.
bool SkipBlanks(const char*& p, const char* pEnd) noexcept {
    while (p != pEnd && Is(*p, BLANK)) ++p;
    return p != pEnd;
}

// Moves over the name at p; false when the text ends before the name does.
bool TakeName(const char*& p, const char* pEnd, std::string_view& sName) {
    const char* pName = p;
    while (p != pEnd && Is(*p, NAME)) ++p;
    if (p == pEnd) return false;
    sName = {pName, static_cast<std::size_t>(p - pName)};
    const std::size_t uLength = NameLength(sName);
    if (uLength == sName.size() && uLength != 0) return true;
    p = pName + uLength;
    RaiseInvalidCharacter(p, pEnd);
}

}  // namespace

void RaiseInvalidCharacter(const char* p, const char* pEnd) {
    const u2_t uBefore = static_cast<u0_t>(p[-1]);
    const u2_t uCode = DecodeUtf8(p, pEnd);
    Msg::InvalidCharacterAfter(uCode, uBefore);
}

bool Tag::ParseName(const char*& p, const char* pEnd) {
    m_oAttribute.Truncate(0);
    m_bEmpty = false;
    return TakeName(p, pEnd, m_sName);
}

bool Tag::Skip(const char*& p, const char* pEnd) noexcept {
    for (; p != pEnd; ++p) {
        if (*p == '>') {
            ++p;
            return true;
        }
        if (*p != '"' && *p != '\'') continue;
        // A quote that is not closed before the next tag is none.
        const char* pClose = p + 1;
        while (pClose != pEnd && *pClose != *p && *pClose != '<') ++pClose;
        if (pClose == pEnd) return false;
        if (*pClose == *p) p = pClose;
    }
    return false;
}

bool Tag::ParseRest(const char*& p, const char* pEnd, bool bLoose) {
    for (;;) {
        const char* pBefore = p;
        if (!SkipBlanks(p, pEnd)) return false;
        if (*p == '>') {
            ++p;
            return true;
        }
        if (*p == '/') {
            if (++p == pEnd) return false;
            if (*p != '>') Msg::MissingCharInXmlStream('>');
            ++p;
            m_bEmpty = true;
            return true;
        }
        if (p == pBefore) RaiseInvalidCharacter(p, pEnd);
        if (!ParseAttribute(p, pEnd, bLoose)) return false;
    }
}

bool Tag::ParseAttribute(const char*& p, const char* pEnd, bool bLoose) {
    Attribute o;
    if (!TakeName(p, pEnd, o.sName)) return false;
    const char* pBehindName = p;
    if (!SkipBlanks(p, pEnd)) return false;
    if (*p != '=') {
        if (!bLoose) Msg::MissingCharInXmlStream('=');
        p = pBehindName;
        m_oAttribute.Add(o);
        return true;
    }
    ++p;
    if (!SkipBlanks(p, pEnd)) return false;
    if (*p == '"' || *p == '\'') {
        const char cQuote = *p++;
        const char* pValue = p;
        p = static_cast<const char*>(std::memchr(p, cQuote, static_cast<std::size_t>(pEnd - p)));
        const char* pValueEnd = p != nullptr ? p : pEnd;
        // A "<" means that the closing quote was forgotten; finding that out here keeps what
        // has to be read before the error is known short.
        const std::size_t uSize = static_cast<std::size_t>(pValueEnd - pValue);
        if (uSize != 0 && std::memchr(pValue, '<', uSize) != nullptr) {
            p = static_cast<const char*>(std::memchr(pValue, '<', uSize));
            Msg::MissingCharInXmlStream(static_cast<u0_t>(cQuote));
        }
        if (p == nullptr) {
            p = pEnd;
            return false;
        }
        o.sValue = {pValue, uSize};
        ++p;
    } else {
        if (!bLoose) Msg::MissingCharInXmlStream('"');
        const char* pValue = p;
        while (p != pEnd && !Is(*p, BLANK) && *p != '>') ++p;
        if (p == pEnd) return false;
        o.sValue = {pValue, static_cast<std::size_t>(p - pValue)};
    }
    m_oAttribute.Add(o);
    return true;
}

}  // namespace vok::xml
