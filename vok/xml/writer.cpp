// Writes a tree as an XML document: elements, attributes and values.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/base64.h"
#include "vok/base/date.h"
#include "vok/base/number.h"
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
    if (bDeclaration) Add("<?xml version='1.0' encoding='UTF-8'?>\n");
    WriteElement(uTop);
    while (m_oFrame.Size() != 0) {
        WriteFastElements();
        Frame& f = m_oFrame.Last();
        if (f.pNext == f.pEnd) {
            const u2_t uId = f.uId;
            m_oFrame.Pop();
            --m_uDepth;
            m_oSink.Cut(StoreTabs(m_oSink.Space(FIXED_ROOM)));
            WriteEndTag(uId);
            continue;
        }
        const u2_t uId = *f.pNext++;
        if (m_oBase.m_oNode(uId).GetType() != Node::Zombi) WriteElement(uId);
    }
    m_oSink.Finish();
}

template <class Sink>
void XmlWriter<Sink>::WriteElement(u2_t uId) {
    m_oSink.Cut(StoreTabs(m_oSink.Space(FIXED_ROOM)));
    Add("<");
    WriteName(uId);
    if (uId == m_uTop) WriteAttribute(xml::DT_DECLARATION, xml::DT_NAMESPACE);
    if (m_bAttributes && m_oBase.m_oAtt.Has(uId)) WriteAttributes(uId);
    if (IsNumbered(uId)) WriteNumber(xml::NODE_ID, uId);
    WriteValue(uId);
}

template <class Sink>
void XmlWriter<Sink>::WriteName(u2_t uId) {
    const u2_t uKey = m_oBase.m_oNode(uId).uKey;
    if (uKey == 0 && uId == 0) return Add(m_oBase.NameOf(0));
    const Hash_Text& oName = m_oBase.m_oName(uKey);
    const std::string_view sName = oName.View();
    if (IsVerbatim(uKey)) return Add(sName);
    m_oRoom.Truncate(0);
    xml::EncodeName(m_oRoom, sName);
    Add({m_oRoom.Beg(), m_oRoom.Size()});
}

template <class Sink>
void XmlWriter<Sink>::WriteAttributes(u2_t uId) {
    m_oBase.m_oAtt.ListByName(uId, m_oAttKeys);
    for (const u2_t uKey : m_oAttKeys) {
        const Hash_Text& oName = m_oBase.m_oAtt.Names()(uKey);
        const std::string_view sName = oName.View();
        const bool bReserved = xml::IsReserved(sName);
        m_oRoom.Truncate(0);
        if (bReserved || !xml::IsVerbatimName(sName)) {
            xml::EncodeName(m_oRoom, sName, bReserved);
        } else {
            m_oRoom.Add(sName.data(), sName.size());
        }
        WriteAttribute({m_oRoom.Beg(), m_oRoom.Size()}, m_oBase.AttributeOf(uId, uKey));
    }
}

template <class Sink>
void XmlWriter<Sink>::WriteAttribute(std::string_view sName, std::string_view sValue) {
    Add(" ");
    Add(sName);
    Add("=\"");
    while (!sValue.empty()) {
        const std::string_view sPiece = sValue.substr(0, PIECE);
        m_oAttValue.Truncate(0);
        xml::EncodeText(m_oAttValue, sPiece);
        Add({m_oAttValue.Beg(), m_oAttValue.Size()});
        sValue.remove_prefix(sPiece.size());
    }
    Add("\"");
}

template <class Sink>
void XmlWriter<Sink>::WriteValue(u2_t uId) {
    const Node& oNode = m_oBase.m_oNode(uId);
    char s[128];
    switch (oNode.GetType()) {
        case Node::Tree: return WriteTree(uId);
        case Node::Boolean:
        case Node::Integer:
            return WriteTyped(uId, {s, FormatInteger(static_cast<i2_t>(oNode.uWord2), s)});
        case Node::Char: {
            m_oValue.Truncate(0);
            if (oNode.uWord2 != 0) xml::EncodeText(m_oValue, {s, EncodeUtf8(oNode.uWord2, s)});
            return WriteTyped(uId, {m_oValue.Beg(), m_oValue.Size()});
        }
        case Node::Float:
        case Node::Double:
            return WriteTyped(uId, {s, FormatReal(std::bit_cast<double>(oNode.Value64()), s)});
        case Node::Date: {
            const double dSeconds = std::bit_cast<double>(oNode.Value64());
            return WriteTyped(uId, {s, std::isfinite(dSeconds) ? FormatDate(dSeconds, 'T', s)
                                                               : FormatReal(dSeconds, s)});
        }
        case Node::Long: return WriteTyped(uId, {s, FormatInteger(oNode.Value64(), s)});
        case Node::Quad: return WriteQuad(uId);
        case Node::String: {
            Add(">");
            WriteCdata({m_oBase.m_oHeap.At(oNode.uWord2), oNode.uWord3 - std::size_t{1}});
            return WriteEndTag(uId);
        }
        case Node::Binary: {
            StartTyped(oNode.GetType());
            Add(xml::CDATA);
            for (std::size_t u = 0; u < oNode.uWord3; u += BLOCK_PIECE) {
                const std::size_t uSize = std::min(oNode.uWord3 - u, BLOCK_PIECE);
                char* const p = m_oSink.Space(Base64Size(uSize));
                EncodeBase64(m_oBase.m_oHeap.At(oNode.uWord2) + u, uSize, p);
                m_oSink.Cut(p + Base64Size(uSize));
            }
            Add(xml::CDATA_END);
            return WriteEndTag(uId);
        }
        case Node::Link:
            if (IsTarget(oNode.uWord2)) {
                WriteNumber(xml::NODE_REFERENCE, oNode.uWord2);
                WriteAttribute(xml::REFERENCE_TYPE, "link");
            }
            return Add("/>\n");
        default: return Add("/>\n");
    }
}

template <class Sink>
void XmlWriter<Sink>::WriteQuad(u2_t uId) {
    const Node& oNode = m_oBase.m_oNode(uId);
    char s[4 * NUMBER_ROOM];
    std::size_t uSize = 0;
    for (const u2_t uWord : m_oBase.m_oHeap.QuadOf(oNode)) {
        if (uSize != 0) s[uSize++] = ',';
        uSize += FormatInteger(static_cast<i2_t>(uWord), s + uSize);
    }
    WriteTyped(uId, {s, uSize});
}

template <class Sink>
void XmlWriter<Sink>::WriteCdata(std::string_view sText) {
    Add(xml::CDATA);
    for (;;) {
        const std::size_t uEnd = sText.find(xml::CDATA_END);
        if (uEnd == std::string_view::npos) break;
        Add(sText.substr(0, uEnd + 2));
        Add(xml::CDATA_END);
        Add(xml::CDATA);
        sText.remove_prefix(uEnd + 2);
    }
    Add(sText);
    Add(xml::CDATA_END);
}

template <class Sink>
void XmlWriter<Sink>::WriteTree(u2_t uId) {
    const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
    const u2_t* const pEnd = oGroup.pId + oGroup.uSize;
    const auto oIsLive = [this](u2_t u) { return m_oBase.m_oNode(u).GetType() != Node::Zombi; };
    if (std::none_of(oGroup.pId, pEnd, oIsLive)) return Add("/>\n");
    Add(">\n");
    ++m_uDepth;
    m_oFrame.Add(Frame{oGroup.pId, pEnd, uId});
}

}  // namespace detail

void Data::SaveToXML(File_Stream& out, i2_t iDeclaration, i2_t iDepth) const {
    return Where("vok::Data::SaveToXML", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (b.m_oNode(m_uId).GetType() == Node::Zombi) Msg::TryToAccessDeletedNode();
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
