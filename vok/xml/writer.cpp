// SPDX-License-Identifier: MIT
// Writes a tree as an XML document: elements, attributes and values.
#include <algorithm>
#include <bit>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/walk.h"
#include "vok/xml/fast_writer.h"
#include "vok/xml/writer.h"

namespace vok {

namespace detail {

template <class Sink>
void XmlWriter<Sink>::MarkTargets(const Data& oTop) {
    if (oTop.GetId() == 0) {
        m_oVerbatim.Spread();
        for (const Node& oNode : m_oBase.m_oNode) MarkTarget(oNode);
        return;
    }
    for (Data_Walk o(oTop); o.Next();) MarkTarget(m_oBase.m_oNode(o.GetId()));
}

template <class Sink>
void XmlWriter<Sink>::Run(u2_t uTop, bool bDeclaration) {
    m_uTop = uTop;
    if (bDeclaration) Element::Declaration();
    WriteElement(uTop);
    while (m_oFrame.Size() != 0) {
        WriteFastElements();
        Frame& f = m_oFrame.Last();
        if (f.pNext == f.pEnd) {
            Element::EndTree(WrittenName(f.uId));
            m_oFrame.Pop();
            continue;
        }
        const u2_t uId = *f.pNext++;
        if (m_oBase.m_oNode(uId).GetType() != Node::Zombi) WriteElement(uId);
    }
    m_oSink.Finish();
}

template <class Sink>
void XmlWriter<Sink>::WriteElement(u2_t uId) {
    Element::BeginTag(WrittenName(uId));
    if (uId == m_uTop) Element::DeclareTypes();
    if (m_bAttributes && m_oBase.m_oAtt.Has(uId)) WriteAttributes(uId);
    if (IsNumbered(uId)) Element::Number(xml::NODE_ID, NumberOf(uId));
    WriteValue(uId);
}

template <class Sink>
std::string_view XmlWriter<Sink>::WrittenName(u2_t uId) {
    const u2_t uKey = m_oBase.m_oNode(uId).uKey;
    if (uKey == 0 && uId == 0) return m_oBase.NameOf(0);
    const std::string_view sName = m_oBase.m_oName(uKey).View();
    if (IsVerbatim(uKey)) return sName;
    m_oName.Truncate(0);
    xml::EncodeName(m_oName, sName);
    return {m_oName.Beg(), m_oName.Size()};
}

template <class Sink>
void XmlWriter<Sink>::WriteAttributes(u2_t uId) {
    m_oBase.m_oAtt.ListByName(uId, m_oAttKeys);
    for (const u2_t uKey : m_oAttKeys) {
        Element::NodeAttribute(m_oBase.m_oAtt.Names()(uKey).View(), m_oBase.AttributeOf(uId, uKey));
    }
}

template <class Sink>
void XmlWriter<Sink>::WriteValue(u2_t uId) {
    const Node& oNode = m_oBase.m_oNode(uId);
    const char* const pHeap = m_oBase.m_oHeap.Begin();
    const auto oDouble = [&] { return std::bit_cast<double>(oNode.Value64()); };
    switch (const Node::Type eType = oNode.GetType()) {
        case Node::Tree: return WriteTree(uId);
        case Node::Boolean:
        case Node::Integer: Element::Int(eType, oNode.uWord2); break;
        case Node::Char: Element::Char(oNode.uWord2); break;
        case Node::Float:
        case Node::Double: Element::Real(eType, oDouble()); break;
        case Node::Date: Element::Date(oDouble()); break;
        case Node::Long: Element::Lng(oNode.Value64()); break;
        case Node::Quad: Element::Quad(m_oBase.m_oHeap.QuadOf(oNode)); break;
        case Node::String:
            Element::Str({pHeap + oNode.uWord2, oNode.uWord3 - std::size_t{1}});
            break;
        case Node::Binary: Element::Bin(pHeap + oNode.uWord2, oNode.uWord3); break;
        case Node::Link:
            if (IsTarget(oNode.uWord2)) return Element::Link(NumberOf(oNode.uWord2));
            return Element::Empty();
        default: return Element::Empty();
    }
    Element::EndTag(WrittenName(uId));
}

template <class Sink>
void XmlWriter<Sink>::WriteTree(u2_t uId) {
    const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
    const u2_t* const pEnd = oGroup.pId + oGroup.uSize;
    const auto oIsLive = [this](u2_t u) { return m_oBase.m_oNode(u).GetType() != Node::Zombi; };
    if (std::none_of(oGroup.pId, pEnd, oIsLive)) return Element::Empty();
    Element::BeginTree();
    m_oFrame.Emplace(oGroup.pId, pEnd, uId);
}

}  // namespace detail

void Data::SaveToXML(File_Stream& out, i2_t iDeclaration, i2_t iDepth) const {
    return Where("vok::Data::SaveToXML", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        SetAccessMode();
        const auto oWriteTo = [&](auto&& oSink) {
            detail::XmlWriter oWriter(b, oSink, static_cast<u2_t>(std::max(iDepth, 0)));
            oWriter.MarkTargets(*this);
            oWriter.Run(m_uId, iDeclaration != 0);
        };
        File_Buf* pBuffer = dynamic_cast<File_Buf*>(&out);
        if (pBuffer != nullptr && BufferSink::Fits(*pBuffer)) return oWriteTo(BufferSink(*pBuffer));
        oWriteTo(PieceSink(out));
    });
}

void Data::SaveToXMLString(Str& oOut, i2_t iDeclaration, i2_t iDepth) const {
    return Where("vok::Data::SaveToXMLString", [&] {
        File_Buf oBuffer("w");
        SaveToXML(oBuffer, iDeclaration, iDepth);
        oOut = Str(std::string_view(oBuffer.Data(), oBuffer.Size()));
    });
}

}  // namespace vok
