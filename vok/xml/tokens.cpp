// SPDX-License-Identifier: MIT
#include "vok/xml/tokens.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace vok::xml {

void Tokens::TakeOver(Tokens& o) noexcept {
    m_p = o.m_p;
    m_pEnd = o.m_pEnd;
    m_uOpen = o.m_uOpen;
    m_uElements = o.m_uElements;
    m_bBegun = o.m_bBegun;
    m_bDone = false;
    m_oFound = std::exchange(o.m_oFound, {});
}

void Tokens::ReadToken() {
    for (;;) {
        const char* const pToken = m_p;
        if (m_p != m_pEnd && (*m_p == '<' ? ReadTag() : ReadRun())) return;
        const std::ptrdiff_t iStopped = m_p - pToken;
        m_p = pToken;
        // Tags may be longer than texts; a token that never ends must not fill the memory.
        if (static_cast<u3_t>(m_pEnd - m_p) > std::max(m_oLimits.m_uTextBytes, LONG_TOKEN)) {
            RaiseTextLimit();
        }
        // The source makes room for as much again as it keeps.
        BeforeFetch(static_cast<u3_t>(m_pEnd - m_p));
        if (m_oSource.Fetch(m_p, m_pEnd)) continue;
        // Fetching has moved what there was.
        const char* const pMoved = std::exchange(m_p, m_p + iStopped);
        RaiseEndInToken(pMoved);
    }
}

void Tokens::RaiseEndInToken(const char* pToken) const {
    if (pToken == m_pEnd || *pToken != '<') {
        if (!m_bBegun) Msg::NoXmlStream();
        Msg::MissingCharInXmlStream('<');
    }
    const std::string_view sToken = Rest(pToken);
    const bool bClosed = sToken.find('>') != std::string_view::npos;
    if (bClosed && sToken.starts_with("<!--")) Msg::MissingCharInXmlStream('-');
    if (bClosed && sToken.starts_with(CDATA)) Msg::MissingCharInXmlStream(']');
    Msg::MissingCharInXmlStream('>');
}

bool Tokens::ReadRun() {
    const void* pFound = std::memchr(m_p, '<', static_cast<std::size_t>(m_pEnd - m_p));
    if (pFound == nullptr) return false;
    const char* pBegin = std::exchange(m_p, static_cast<const char*>(pFound));
    const std::string_view sRun = Between(pBegin, m_p);
    if (m_uOpen != 0) OnText(sRun);
    return true;
}

bool Tokens::ReadTag() {
    if (m_pEnd - m_p < 2) return false;
    m_bBegun = true;
    switch (m_p[1]) {
        case '?': return SkipInstruction();
        case '!': return ReadDeclaration();
        case '/': return ReadEndTag();
        default: return ReadStartTag();
    }
}

bool Tokens::SkipPast(std::string_view sEnd, std::size_t uSkip) {
    const std::size_t uEnd = Rest(m_p).find(sEnd, uSkip);
    if (uEnd == std::string_view::npos) return false;
    m_p += uEnd + sEnd.size();
    return true;
}

bool Tokens::SkipInstruction() {
    const std::size_t uLength = InstructionLength(Rest(m_p), m_oSource.IsAtEnd());
    if (uLength == 0) return false;
    constexpr std::string_view DECLARATION = "<?xml";
    const std::string_view sStart = Rest(m_p).substr(0, DECLARATION.size() + 1);
    const bool bDeclaration = sStart.starts_with(DECLARATION) && Is(sStart.back(), BLANK);
    m_oFound.uInstructions += !bDeclaration;
    m_p += uLength;
    return true;
}

bool Tokens::ReadDeclaration() {
    const std::string_view sRest = Rest(m_p);
    if (sRest.starts_with("<!-")) {
        if (sRest.size() < 4) return false;
        if (sRest[3] != '-') {
            m_p += 3;
            Msg::MissingCharInXmlStream('-');
        }
        const bool bSkipped = SkipPast("-->", 4);
        m_oFound.uComments += bSkipped;
        return bSkipped;
    }
    constexpr std::string_view DOCTYPE = "<!DOCTYPE";
    for (const std::string_view sStart : {CDATA, DOCTYPE}) {
        const bool bShort = sRest.size() < sStart.size();
        if (bShort && sStart.starts_with(sRest)) return false;
    }
    if (m_uOpen != 0 && sRest.starts_with(CDATA)) return ReadCdata();
    // A document type declaration comes before the top element.
    if (m_uElements != 0 || !sRest.starts_with(DOCTYPE)) Msg::NoXmlStream();
    return SkipDoctype();
}

bool Tokens::SkipDoctype() {
    std::size_t uBrackets = 0;
    for (const char* p = m_p; p != m_pEnd; ++p) {
        const std::string_view sRest = Rest(p);
        std::string_view sEnd;
        switch (*p) {
            case '[': ++uBrackets; break;
            case ']': uBrackets -= uBrackets != 0; break;
            case '"': sEnd = "\""; break;
            case '\'': sEnd = "'"; break;
            case '<':
                if (sRest.starts_with("<!--")) sEnd = "-->";
                if (sRest.starts_with("<?")) sEnd = "?>";
                break;
            case '>':
                if (uBrackets != 0) break;
                ++m_oFound.uInstructions;
                m_p = p + 1;
                return true;
            default: break;
        }
        if (sEnd.empty()) continue;
        const std::size_t uEnd = sRest.find(sEnd, 1);
        if (uEnd == std::string_view::npos) return false;
        p += uEnd + sEnd.size() - 1;
    }
    return false;
}

bool Tokens::ReadCdata() {
    const char* pText = m_p + CDATA.size();
    std::size_t uSize = Rest(pText).find(CDATA_END);
    if (IsBinary()) {
        // Base64 has no ">": the first one is the end or never will be.
        uSize = Rest(pText).find('>');
        if (uSize == std::string_view::npos) return false;
        m_p = pText + uSize;
        if (uSize < 2 || m_p[-1] != ']' || m_p[-2] != ']') Msg::MissingCharInXmlStream(']');
        uSize -= 2;
    }
    if (uSize == std::string_view::npos) return false;
    m_p = pText + uSize + CDATA_END.size();
    OnCdata({pText, uSize});
    return true;
}

bool Tokens::ReadEndTag() {
    const void* pFound = std::memchr(m_p, '>', static_cast<std::size_t>(m_pEnd - m_p));
    if (pFound == nullptr) return false;
    const char* pName = m_p + 2;
    std::string_view sName = Between(pName, static_cast<const char*>(pFound));
    while (!sName.empty() && Is(sName.back(), BLANK)) sName.remove_suffix(1);
    if (!IsSkipped(sName)) {
        if (m_uOpen == 0) Msg::NoXmlStream();
        OnEnd(sName);
    }
    m_p = static_cast<const char*>(pFound) + 1;
    return true;
}

bool Tokens::ReadStartTag() {
    const char* const pToken = m_p++;
    if (!m_oTag.ParseName(m_p, m_pEnd)) return false;
    const bool bSkipped = IsSkipped(m_oTag.Name());
    if (!(bSkipped ? Tag::Skip(m_p, m_pEnd)
                   : m_oTag.ParseRest(m_p, m_pEnd, Has(Data::XML_LOOSE_TAGS)))) {
        return false;
    }
    const char* pBehind = std::exchange(m_p, pToken);  // where errors below are reported
    if (bSkipped || OnStart()) m_p = pBehind;
    return true;
}

// ---- texts ------------------------------------------------------------------

std::string_view Tokens::DecodedValue(std::string_view sValue, Arr<char>& oRoom) {
    const auto oIsSpecial = [](char c) { return c == '&' || c == '\t' || c == '\n' || c == '\r'; };
    if (std::any_of(sValue.begin(), sValue.end(), oIsSpecial)) {
        oRoom.Truncate(0);
        m_oFound.uKeptReferences += DecodeValue(oRoom, sValue, KeepsUnknown());
        sValue = {oRoom.Beg(), oRoom.Size()};
    }
    CheckNoNul(sValue);
    if (sValue.size() > m_oLimits.m_uTextBytes) RaiseTextLimit();
    return sValue;
}

void Tokens::AddText(Data_Node::Type eType, std::string_view sRun) {
    if (eType == Data_Node::Tree) {
        m_oFound.uDroppedTexts += !IsBlank(sRun);
        return;
    }
    if (eType == Data_Node::Binary) Msg::MissingHeaderForBinaryData();
    CheckLength(sRun.size());
    CheckNoNul(sRun);
    m_oFound.uKeptReferences += DecodeText(m_oText, sRun, KeepsUnknown());
    m_bText = true;
}

void Tokens::AddCdata(Data_Node::Type eType, std::string_view sRun) {
    if (eType == Data_Node::Tree) {
        m_oFound.uDroppedTexts += !IsBlank(sRun);
        return;
    }
    if (eType == Data_Node::Binary && m_bText) Msg::MissingHeaderForBinaryData();
    CheckLength(sRun.size());
    CheckNoNul(sRun);
    m_oText.Add(sRun.data(), sRun.size());
    m_bText = true;
}

}  // namespace vok::xml
