// Reads XML documents into a tree: tokens and elements.
#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/link_bytes.h"
#include "vok/data/report.h"
#include "vok/file/rest.h"
#include "vok/xml/loader.h"

namespace vok {

namespace detail {

u2_t XmlLoader::Run() {
    m_oBase.UpdateSucc();
    while (!m_bDone) {
        if (m_uDepth != 0) ReadFastElements();
        const char* const pToken = m_p;
        if (m_p != m_pEnd && (*m_p == '<' ? ReadTag() : ReadText())) continue;
        const std::ptrdiff_t iStopped = m_p - pToken;
        m_p = pToken;
        // Tags may be longer than texts; a token that never ends must not fill the memory.
        if (static_cast<u3_t>(m_pEnd - m_p) > std::max(m_oLimits.m_uTextBytes, LONG_TOKEN)) {
            RaiseTextLimit();
        }
        // The source makes room for as much again as it keeps.
        if (m_oWork.IsMetered()) CheckMemory(static_cast<u3_t>(m_pEnd - m_p));
        if (m_oSource.Fetch(m_p, m_pEnd)) continue;
        // Fetching has moved what there was.
        const char* const pMoved = std::exchange(m_p, m_p + iStopped);
        RaiseEndInToken(pMoved);
    }
    return m_uElements;
}

void XmlLoader::ResolveLinks() {
    const auto oIsLess = [](const Numbered& x, const Numbered& y) { return x.uNumber < y.uNumber; };
    std::stable_sort(m_oTarget.Beg(), m_oTarget.End(), oIsLess);
    for (const Numbered& oLink : m_oLink) {
        const Numbered* pTarget =
            std::lower_bound(m_oTarget.Beg(), m_oTarget.End(), oLink, oIsLess);
        if (pTarget == m_oTarget.End() || pTarget->uNumber != oLink.uNumber) continue;
        m_uNode = oLink.uId;
        Node& oNode = m_oBase.m_oNode(m_uNode);
        if (oNode.GetType() == Node::Tree) {
            Msg::NodeWithWrongDataType(m_oBase.ShownName(m_uNode), Node::TypeName(Node::Tree));
        }
        m_oBase.DropValue(oNode);
        oNode.SetType(Node::Link);
        oNode.uWord2 = pTarget->uId;
    }
    m_uNode = 0;
    if (m_oLink.Size() == 0) return;
    m_oWork.SetInput(m_oSource.OffsetOf(m_p));
    (void)m_oWork.CheckMemory(LinkBytes(m_oBase));
}

void XmlLoader::AddTo(Load_Report& oReport) {
    oReport = m_oFound;
    oReport.m_uWork = m_oWork.Done();
    if (m_bDone && m_oBase.IsIndexed()) oReport.m_uReordered = CountReordered();
}

// Successors stand by name, and those of one name in the order of their elements: of any two that
// have changed places the one that came later has the higher id and stands in front.
u3_t XmlLoader::CountReordered() {
    u3_t uCount = 0;
    for (u2_t uId = 0; uId < m_oBase.m_oNode.Size(); ++uId) {
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        u2_t uLowest = Node::NONE;
        for (u2_t u = oGroup.uSize; u-- > 0;) {
            if (oGroup.pId[u] > uLowest && oGroup.pId[u] >= m_uFirst) ++uCount;
            uLowest = std::min(uLowest, oGroup.pId[u]);
        }
    }
    return uCount;
}

void XmlLoader::RaiseEndInToken(const char* pToken) const {
    if (pToken == m_pEnd || *pToken != '<') {
        if (!m_bBegun) Msg::NoXmlStream();
        Msg::MissingCharInXmlStream('<');
    }
    const std::string_view sToken = Rest(pToken);
    const bool bClosed = sToken.find('>') != std::string_view::npos;
    if (bClosed && sToken.starts_with("<!--")) Msg::MissingCharInXmlStream('-');
    if (bClosed && sToken.starts_with(xml::CDATA)) Msg::MissingCharInXmlStream(']');
    Msg::MissingCharInXmlStream('>');
}

bool XmlLoader::ReadText() {
    const void* pFound = std::memchr(m_p, '<', static_cast<std::size_t>(m_pEnd - m_p));
    if (pFound == nullptr) return false;
    const char* pBegin = std::exchange(m_p, static_cast<const char*>(pFound));
    const std::string_view sRun = Between(pBegin, m_p);
    if (m_uDepth != 0) AddText(sRun);
    return true;
}

bool XmlLoader::ReadTag() {
    if (m_pEnd - m_p < 2) return false;
    m_bBegun = true;
    switch (m_p[1]) {
        case '?': return SkipInstruction();
        case '!': return ReadDeclaration();
        case '/': return ReadEndTag();
        default: return ReadStartTag();
    }
}

bool XmlLoader::SkipPast(std::string_view sEnd, std::size_t uSkip) {
    const std::size_t uEnd = Rest(m_p).find(sEnd, uSkip);
    if (uEnd == std::string_view::npos) return false;
    m_p += uEnd + sEnd.size();
    return true;
}

bool XmlLoader::SkipInstruction() {
    const std::size_t uLength = xml::InstructionLength(Rest(m_p), m_oSource.IsAtEnd());
    if (uLength == 0) return false;
    constexpr std::string_view DECLARATION = "<?xml";
    const std::string_view sStart = Rest(m_p).substr(0, DECLARATION.size() + 1);
    const bool bDeclaration = sStart.starts_with(DECLARATION) && xml::Is(sStart.back(), xml::BLANK);
    m_oFound.m_uInstructions += !bDeclaration;
    m_p += uLength;
    return true;
}

bool XmlLoader::ReadDeclaration() {
    const std::string_view sRest = Rest(m_p);
    if (sRest.starts_with("<!-")) {
        if (sRest.size() < 4) return false;
        if (sRest[3] != '-') {
            m_p += 3;
            Msg::MissingCharInXmlStream('-');
        }
        const bool bSkipped = SkipPast("-->", 4);
        m_oFound.m_uComments += bSkipped;
        return bSkipped;
    }
    constexpr std::string_view DOCTYPE = "<!DOCTYPE";
    for (const std::string_view sStart : {xml::CDATA, DOCTYPE}) {
        const bool bShort = sRest.size() < sStart.size();
        if (bShort && sStart.starts_with(sRest)) return false;
    }
    if (m_uDepth != 0 && sRest.starts_with(xml::CDATA)) return ReadCdata();
    // A document type declaration comes before the top element.
    if (m_uElements != 0 || !sRest.starts_with(DOCTYPE)) Msg::NoXmlStream();
    return SkipDoctype();
}

bool XmlLoader::SkipDoctype() {
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
                ++m_oFound.m_uInstructions;
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

bool XmlLoader::ReadCdata() {
    const char* pText = m_p + xml::CDATA.size();
    std::size_t uSize = Rest(pText).find(xml::CDATA_END);
    const bool bBinary = m_oBase.m_oNode(m_uNode).GetType() == Node::Binary;
    if (bBinary) {
        // Base64 has no ">": the first one is the end or never will be.
        uSize = Rest(pText).find('>');
        if (uSize == std::string_view::npos) return false;
        m_p = pText + uSize;
        if (uSize < 2 || m_p[-1] != ']' || m_p[-2] != ']') Msg::MissingCharInXmlStream(']');
        uSize -= 2;
    }
    if (uSize == std::string_view::npos) return false;
    m_p = pText + uSize + xml::CDATA_END.size();
    AddCdata({pText, uSize});
    return true;
}

bool XmlLoader::ReadEndTag() {
    const void* pFound = std::memchr(m_p, '>', static_cast<std::size_t>(m_pEnd - m_p));
    if (pFound == nullptr) return false;
    const char* pName = m_p + 2;
    std::string_view sName = Between(pName, static_cast<const char*>(pFound));
    while (!sName.empty() && xml::Is(sName.back(), xml::BLANK)) sName.remove_suffix(1);
    if (!IsSkipped(sName)) {
        if (m_uDepth == 0 || !IsNameOf(m_uNode, sName)) Msg::NoXmlStream();
        CloseElement();
    }
    m_p = static_cast<const char*>(pFound) + 1;
    return true;
}

bool XmlLoader::ReadStartTag() {
    const char* const pToken = m_p++;
    if (!m_oTag.ParseName(m_p, m_pEnd)) return false;
    const bool bSkipped = IsSkipped(m_oTag.Name());
    if (!(bSkipped ? xml::Tag::Skip(m_p, m_pEnd)
                   : m_oTag.ParseRest(m_p, m_pEnd, Has(Data::XML_LOOSE_TAGS)))) {
        return false;
    }
    const char* pBehind = std::exchange(m_p, pToken);  // where errors below are reported
    if (!bSkipped) {
        OpenElement();
        if (m_oTag.IsEmpty()) CloseElement();
    }
    m_p = pBehind;
    return true;
}

void XmlLoader::OpenElement() {
    const u2_t uKey = InternName(m_oTag.Name());
    if (m_uDepth == 0 && m_oBase.m_oNode(0).GetType() == Node::Empty) {
        m_uNode = 0;
        m_oBase.m_oNode(0).uKey = uKey;
    } else {
        EndTextBeforeElement();
        m_oBase.CheckAppend(m_uNode);
        CheckLimits();
        m_uNode = m_oBase.Append(m_uNode, uKey);
    }
    ++m_uDepth;
    ++m_uElements;
    SetAttributes();
}

void XmlLoader::CheckMemory(u3_t uMore) {
    if (m_oBase.m_oNode.Size() - m_uFirst >= m_oLimits.m_uNodes) [[unlikely]] {
        m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    }
    m_uAttributes = 0;
    const u3_t uMost = m_oLimits.m_uNodes + std::min(m_uFirst, ~u3_t{0} - m_oLimits.m_uNodes);
    m_uMostNodes = uMost;
    if (!m_oWork.IsMetered()) return;
    // Elements get their places in groups at the end.
    const u3_t uPending = (m_oBase.m_oNode.Size() - m_oBase.m_uIndexed) * 2 * sizeof(u2_t);
    const u3_t uHeld = m_oBase.HeapBytes() + uPending + m_oSource.Held() + m_oText.Capacity() +
                       uMore + m_oTarget.Capacity() * sizeof(Numbered) +
                       m_oLink.Capacity() * sizeof(Numbered);
    const u3_t uNext = m_oWork.CheckMemory(uHeld) / MOST_PER_NODE;
    m_uMostNodes = std::min(uMost, m_oBase.m_oNode.Size() + std::max(uNext, NODES_BETWEEN_CHECKS));
}

void XmlLoader::CheckLimits() {
    if (m_oBase.m_oNode.Size() >= m_uMostNodes) [[unlikely]]
        CheckMemory();
    if (m_uDepth >= m_oLimits.m_uDepth) [[unlikely]] {
        m_oLimits.RaiseExceeded(&Limits::m_uDepth);
    }
}

void XmlLoader::CloseElement() {
    if (m_bText) SetText();
    if (--m_uDepth == 0) {
        m_bDone = true;
        return;
    }
    m_uNode = m_oBase.m_oNode(m_uNode).Pred();
}

}  // namespace detail

u2_t Data::LoadFromXML(File_Stream& in, u2_t uFlags, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Data::LoadFromXML", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        xml::Source oSource(in);
        detail::XmlLoader oLoader(b, m_uId, oSource, uFlags, oLimits);
        u2_t uElements;
        {
            const detail::ReportOnExit oOnExit(pReport, [&](Load_Report& oReport) {
                const xml::Source::Place oPlace = oSource.PlaceOf(oLoader.Position());
                oLoader.AddTo(oReport);
                oReport.m_uOffset = oPlace.uOffset;
                oReport.m_uLine = oPlace.uLine;
                oReport.m_uColumn = oPlace.uColumn;
                detail::ReportNode(oReport, *this, oLoader.CurrentNode());
            });
            uElements = oLoader.Run();
            oLoader.ResolveLinks();
            SetAccessMode();
        }
        const u3_t uLeft = oSource.Leave(oLoader.Position());
        if (pReport != nullptr) pReport->m_uBytesLeft = std::max(uLeft, BytesLeft(in));
        Shrink();
        SetToRoot();
        return uElements;
    });
}

u2_t Data::LoadFromXMLString(std::string_view sText, u2_t uFlags, const Limits& oLimits,
                             Load_Report* pReport) {
    return Where("vok::Data::LoadFromXMLString", [&] {
        File_Buf oIn(sText.data(), sText.size());
        return LoadFromXML(oIn, uFlags, oLimits, pReport);
    });
}

}  // namespace vok
