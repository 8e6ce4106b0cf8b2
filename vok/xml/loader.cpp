// SPDX-License-Identifier: MIT
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

XmlLoader::XmlLoader(Data_Base& oBase, u2_t uNode, xml::Source& oSource, u2_t uFlags,
                     const Limits& oLimits)
    : Tokens(oSource, uFlags, oLimits), m_pBase(&oBase), m_uNode(uNode) {
    if (oBase.m_oNode(0).GetType() != Node::Empty) m_uFirst = oBase.m_oNode.Size();
    m_uMost = m_oLimits.m_uNodes + std::min(m_uFirst, ~u3_t{0} - m_oLimits.m_uNodes);
    CheckMemory();
}

u2_t XmlLoader::Run() {
    m_pBase->UpdateSucc();
    while (!m_bDone) {
        if (m_uOpen != 0) ReadFastElements();
        ReadToken();
    }
    return m_uElements;
}

void XmlLoader::RunBelow(Data_Base& oBase, Tokens& oAt, u3_t uNodes) {
    m_pBase = &oBase;
    m_uNode = 0;
    m_oTarget.Truncate(0);
    m_oLink.Truncate(0);
    TakeOver(oAt);
    m_uAbove = m_uOpen - 1;
    m_uMost = m_oLimits.m_uNodes - uNodes + 1;  // the root was counted
    CheckMemory();
    Run();
    // The root was placed before: all others are.
    if (!oBase.UpdateSucc()) m_oFound.uReordered += CountReordered();
}

void XmlLoader::ResolveLinks() {
    const auto oIsLess = [](const Numbered& x, const Numbered& y) { return x.uNumber < y.uNumber; };
    std::stable_sort(m_oTarget.Beg(), m_oTarget.End(), oIsLess);
    for (const Numbered& oLink : m_oLink) {
        const Numbered* pTarget =
            std::lower_bound(m_oTarget.Beg(), m_oTarget.End(), oLink, oIsLess);
        if (pTarget == m_oTarget.End() || pTarget->uNumber != oLink.uNumber) continue;
        m_uNode = oLink.uId;
        Node& oNode = m_pBase->m_oNode(m_uNode);
        if (oNode.GetType() == Node::Tree) {
            Msg::NodeWithWrongDataType(m_pBase->ShownName(m_uNode), Node::TypeName(Node::Tree));
        }
        m_pBase->DropValue(oNode);
        oNode.SetType(Node::Link);
        oNode.uWord2 = pTarget->uId;
    }
    m_uNode = 0;
    if (m_oLink.Size() == 0) return;
    m_oWork.SetInput(m_oSource.OffsetOf(m_p));
    (void)m_oWork.CheckMemory(LinkBytes(*m_pBase));
}

void XmlLoader::AddTo(Load_Report& oReport) {
    m_oFound.AddTo(oReport);
    oReport.m_uWork = m_oWork.Done();
    if (m_bDone && m_pBase->IsIndexed()) oReport.m_uReordered = CountReordered();
}

// Successors stand by name, and those of one name in the order of their elements: of any two that
// have changed places the one that came later has the higher id and stands in front.
u3_t XmlLoader::CountReordered() {
    u3_t uCount = 0;
    for (u2_t uId = 0; uId < m_pBase->m_oNode.Size(); ++uId) {
        if (TypeOf(uId) != Node::Tree) continue;
        const Data_Base::Group oGroup = m_pBase->SuccOf(uId);
        if (std::is_sorted(oGroup.pId, oGroup.pId + oGroup.uSize)) continue;
        u2_t uLowest = Node::NONE;
        for (u2_t u = oGroup.uSize; u-- > 0;) {
            if (oGroup.pId[u] > uLowest && oGroup.pId[u] >= m_uFirst) ++uCount;
            uLowest = std::min(uLowest, oGroup.pId[u]);
        }
    }
    return uCount;
}

bool XmlLoader::OnStart() {
    OpenElement();
    if (m_oTag.IsEmpty()) CloseElement();
    return true;
}

void XmlLoader::OnEnd(std::string_view sName) {
    if (!IsNameOf(m_uNode, sName)) Msg::NoXmlStream();
    CloseElement();
}

void XmlLoader::OpenElement() {
    const u2_t uKey = InternName(m_oTag.Name());
    if (m_uOpen == 0 && m_pBase->m_oNode(0).GetType() == Node::Empty) {
        m_uNode = 0;
        m_pBase->m_oNode(0).uKey = uKey;
    } else {
        EndTextBeforeElement();
        m_pBase->CheckAppend(m_uNode);
        CheckLimits();
        m_uNode = m_pBase->Append(m_uNode, uKey);
    }
    ++m_uOpen;
    ++m_uElements;
    SetAttributes();
}

void XmlLoader::CheckMemory(u3_t uMore) {
    if (m_pBase->m_oNode.Size() >= m_uMost) [[unlikely]] {
        m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    }
    m_uAttributes = 0;
    m_uMostNodes = m_uMost;
    if (!m_oWork.IsMetered()) return;
    const u3_t uHeld = m_pBase->HeapBytes() + m_oSource.Held() + m_oText.Capacity() + uMore +
                       m_oTarget.Capacity() * sizeof(Numbered) +
                       m_oLink.Capacity() * sizeof(Numbered);
    m_uMostNodes = std::min(m_uMost, NodesBeforeCheck(m_oWork, uHeld, *m_pBase));
}

void XmlLoader::CheckLimits() {
    if (m_pBase->m_oNode.Size() >= m_uMostNodes) [[unlikely]]
        CheckMemory();
    if (m_uOpen >= m_oLimits.m_uDepth) [[unlikely]] {
        m_oLimits.RaiseExceeded(&Limits::m_uDepth);
    }
}

void XmlLoader::CloseElement() {
    if (m_bText) SetText();
    if (--m_uOpen == m_uAbove) {
        m_bDone = true;
        return;
    }
    m_uNode = m_pBase->m_oNode(m_uNode).Pred();
}

}  // namespace detail

u2_t Data::LoadFromXML(File_Stream& in, u2_t uFlags, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Data::LoadFromXML", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        xml::Source oSource(in, xml::Declares::Xml);
        detail::XmlLoader oLoader(b, m_uId, oSource, uFlags, oLimits);
        u2_t uElements;
        {
            const auto oOnExit = detail::ReportOnExit(pReport, [&](Load_Report& oReport) {
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
