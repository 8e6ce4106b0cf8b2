// Writes a tree as an XML document.
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
#include "vok/data/id_map.h"
#include "vok/data/walk.h"
#include "vok/file/sinks.h"
#include "vok/file/xml_text.h"
#include "vok/xml/form.h"

namespace vok {

namespace {

using Node = Data_Node;

// Elements stand on lines of their own, a tab deeper than the one they are in. Deeper than
// this the lines do not get longer, so that the document stays linear in the tree.
constexpr u2_t MOST_TABS = 32;

// Room for everything of an element that has no length of its own: tabs, brackets, type
// attribute, the longest number, CDATA marks.
constexpr std::size_t FIXED_ROOM = 192;

char* Store(char* p, std::string_view s) noexcept {
    std::memcpy(p, s.data(), s.size());
    return p + s.size();
}

template <class Sink>
class XmlWriter {
  public:
    XmlWriter(Data_Base& oBase, Sink& oSink, u2_t uDepth)
        : b(oBase),
          m_oSink(oSink),
          m_uDepth(uDepth),
          m_bAttributes(!oBase.m_oAtt.IsUnused()),
          m_oPlain(oBase.m_oName.Size()),
          m_oNumber(oBase.m_oNode.Size()) {}

    // Notes which nodes the links below oTop lead to: those get a number. In time with what is
    // written: a host may save a large tree part by part.
    void MarkTargets(const Data& oTop) {
        if (oTop.GetId() == 0) {
            m_oPlain.Spread();
            for (const Node& oNode : b.m_oNode) MarkTarget(oNode);
            return;
        }
        for (Data_Walk o(oTop); o.Next();) MarkTarget(b.m_oNode(o.GetId()));
    }

    void Run(u2_t uTop, bool bDeclaration) {
        m_uTop = uTop;
        if (bDeclaration) Add("<?xml version='1.0' encoding='UTF-8'?>\n");
        WriteElement(uTop);
        while (m_oFrame.Size() != 0) {
            WritePlainElements();
            Frame& f = m_oFrame(m_oFrame.Size() - 1);
            if (f.pNext == f.pEnd) {
                const u2_t uId = f.uId;
                m_oFrame.Truncate(m_oFrame.Size() - 1);
                --m_uDepth;
                m_oSink.Cut(StoreTabs(m_oSink.Space(FIXED_ROOM)));
                WriteEndTag(uId);
                continue;
            }
            const u2_t uId = *f.pNext++;
            if (b.m_oNode(uId).GetType() != Node::Zombi) WriteElement(uId);
        }
        m_oSink.Finish();
    }

  private:
    // Successors still to come in an open element.
    struct Frame {
        const u2_t* pNext;
        const u2_t* pEnd;
        u2_t uId;
    };
    enum Plain : u0_t { Unknown, Yes, No };

    static constexpr u2_t TO_COME = 0xFFFFFFFF;

    // Long values are converted in pieces; base64 takes three bytes at a time.
    static constexpr std::size_t PIECE = 3 << 14;
    static constexpr u2_t PLAIN_TYPES = 1u << Node::Integer | 1u << Node::Double |
                                        1u << Node::Boolean | 1u << Node::String |
                                        1u << Node::Empty;
    static constexpr u2_t SHORT_TEXT = 64;
    static constexpr std::size_t PLAIN_ROOM = 2 * Hash::SLACK + SHORT_TEXT + FIXED_ROOM;

    void MarkTarget(const Node& oNode) {
        if (oNode.GetType() != Node::Link || !IsTarget(oNode.uWord2)) return;
        m_oNumber(oNode.uWord2) = TO_COME;
        m_bNumbers = true;
    }
    [[nodiscard]] bool IsTarget(u2_t uId) const noexcept {
        return uId < b.m_oNode.Size() && b.m_oNode(uId).GetType() != Node::Zombi;
    }

    // Whether a name is written as it stands.
    [[nodiscard]] bool IsPlain(u2_t uKey) {
        u0_t& uPlain = m_oPlain(uKey);
        if (uPlain == Unknown) {
            const Hash_Text& oName = b.m_oName(uKey);
            uPlain = xml::IsPlainName({oName.sText, oName.uLength}) ? Yes : No;
        }
        return uPlain == Yes;
    }

    void Add(std::string_view s) { m_oSink.Payload(s.data(), s.size()); }

    char* StoreTabs(char* p) const noexcept {
        const u2_t uTabs = std::min(m_uDepth, MOST_TABS);
        std::memset(p, '\t', MOST_TABS);
        return p + uTabs;
    }

    // ---- elements ---------------------------------------------------------

    // Writes successors as long as they are like most nodes are: a name written as it stands,
    // no attributes, no links, one of the common values. This loop is what saving XML costs.
    void WritePlainElements() {
        Frame& f = m_oFrame(m_oFrame.Size() - 1);
        const Node* const pNodes = std::as_const(b.m_oNode).Beg();
        const Hash_Text* const pNames = b.m_oName.Texts();
        const char* const pHeap = b.m_oHeap.Begin();
        char* p = m_oSink.Space(PLAIN_ROOM);
        const char* pEnd = m_oSink.SpaceEnd();
        for (; f.pNext != f.pEnd; ++f.pNext) {
            const u2_t uId = *f.pNext;
            const Node& oNode = pNodes[uId];
            const Node::Type eType = oNode.GetType();
            if ((PLAIN_TYPES >> eType & 1u) == 0 || !IsPlain(oNode.uKey)) break;
            if ((m_bAttributes && b.m_oAtt.Has(uId)) || IsNumbered(uId)) break;
            const Hash_Text& oName = pNames[oNode.uKey];
            if (oName.uLength > Hash::SLACK) break;
            if (static_cast<std::size_t>(pEnd - p) < PLAIN_ROOM) {
                m_oSink.Cut(p);
                p = m_oSink.Space(PLAIN_ROOM);
                pEnd = m_oSink.SpaceEnd();
            }
            char* const pBegin = p;
            p = StoreTabs(p);
            *p++ = '<';
            std::memcpy(p, oName.sText, Hash::SLACK);
            p += oName.uLength;
            switch (eType) {
                case Node::Integer:
                    p = Store(p, xml::TypeTag<Node::Integer>::TEXT);
                    p += FormatInteger(static_cast<i2_t>(oNode.uWord2), p);
                    break;
                case Node::Double:
                    p = Store(p, xml::TypeTag<Node::Double>::TEXT);
                    p += FormatReal(std::bit_cast<double>(oNode.Value64()), p);
                    break;
                case Node::Boolean:
                    p = Store(p, xml::TypeTag<Node::Boolean>::TEXT);
                    p += FormatInteger(static_cast<i2_t>(oNode.uWord2), p);
                    break;
                case Node::String: {
                    const char* pText = pHeap + oNode.uWord2;
                    const std::size_t uSize = oNode.uWord3 - std::size_t{1};
                    if (uSize > SHORT_TEXT || std::memchr(pText, ']', uSize) != nullptr) {
                        m_oSink.Cut(pBegin);
                        return;
                    }
                    *p++ = '>';
                    p = Store(p, xml::CDATA);
                    for (std::size_t u = 0; u < uSize; u += 16) std::memcpy(p + u, pText + u, 16);
                    p = Store(p + uSize, xml::CDATA_END);
                    break;
                }
                default: p = Store(p, "/>\n"); continue;
            }
            p = Store(p, "</");
            std::memcpy(p, oName.sText, Hash::SLACK);
            p = Store(p + oName.uLength, ">\n");
        }
        m_oSink.Cut(p);
    }

    void WriteElement(u2_t uId) {
        m_oSink.Cut(StoreTabs(m_oSink.Space(FIXED_ROOM)));
        Add("<");
        WriteName(uId);
        if (uId == m_uTop) WriteAttribute(xml::DT_DECLARATION, xml::DT_NAMESPACE);
        if (m_bAttributes && b.m_oAtt.Has(uId)) WriteAttributes(uId);
        if (IsNumbered(uId)) WriteNumber(xml::NODE_ID, uId);
        WriteValue(uId);
    }

    void WriteName(u2_t uId) {
        const u2_t uKey = b.m_oNode(uId).uKey;
        if (uKey == 0 && uId == 0) return Add(b.NameOf(0));
        const Hash_Text& oName = b.m_oName(uKey);
        const std::string_view sName(oName.sText, oName.uLength);
        if (IsPlain(uKey)) return Add(sName);
        m_oRoom.Truncate(0);
        xml::EncodeName(m_oRoom, sName);
        Add({m_oRoom.Beg(), m_oRoom.Size()});
    }

    void WriteEndTag(u2_t uId) {
        Add("</");
        WriteName(uId);
        Add(">\n");
    }

    void WriteAttributes(u2_t uId) {
        b.m_oAtt.ListByName(uId, m_oAttKeys);
        for (const u2_t uKey : m_oAttKeys) {
            const Hash_Text& oName = b.m_oAtt.Names()(uKey);
            const std::string_view sName(oName.sText, oName.uLength);
            const bool bReserved = xml::IsReserved(sName);
            m_oRoom.Truncate(0);
            if (bReserved || !xml::IsPlainName(sName)) {
                xml::EncodeName(m_oRoom, sName, bReserved);
            } else {
                m_oRoom.Add(sName.data(), sName.size());
            }
            WriteAttribute({m_oRoom.Beg(), m_oRoom.Size()}, b.AttributeOf(uId, uKey));
        }
    }

    void WriteAttribute(std::string_view sName, std::string_view sValue) {
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

    [[nodiscard]] bool IsNumbered(u2_t uId) const noexcept {
        return m_bNumbers && m_oNumber.Find(uId) != 0;
    }

    // Numbers count up in the order in which the document names them: equal trees give equal
    // documents.
    void WriteNumber(std::string_view sName, u2_t uId) {
        u2_t& uNumber = m_oNumber(uId);
        if (uNumber == TO_COME) uNumber = ++m_uNumbers;
        char s[NUMBER_ROOM + 2] = "ID";
        WriteAttribute(sName, {s, 2 + FormatInteger(uNumber, s + 2)});
    }

    // ---- values -----------------------------------------------------------

    // The rest of the element, behind its attributes.
    void WriteValue(u2_t uId) {
        const Node& oNode = b.m_oNode(uId);
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
                WriteCdata({b.m_oHeap.At(oNode.uWord2), oNode.uWord3 - std::size_t{1}});
                return WriteEndTag(uId);
            }
            case Node::Binary: {
                StartTyped(oNode.GetType());
                Add(xml::CDATA);
                for (std::size_t u = 0; u < oNode.uWord3; u += PIECE) {
                    const std::size_t uSize = std::min(oNode.uWord3 - u, PIECE);
                    m_oValue.Truncate(0);
                    EncodeBase64(b.m_oHeap.At(oNode.uWord2) + u, uSize,
                                 m_oValue.AddSpace(Base64Size(uSize)));
                    Add({m_oValue.Beg(), m_oValue.Size()});
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

    void StartTyped(Node::Type eType) {
        WriteAttribute(xml::TYPE, xml::NameOf(eType));
        Add(">");
    }

    void WriteTyped(u2_t uId, std::string_view sText) {
        StartTyped(b.m_oNode(uId).GetType());
        Add(sText);
        WriteEndTag(uId);
    }

    void WriteQuad(u2_t uId) {
        const Node& oNode = b.m_oNode(uId);
        char s[4 * NUMBER_ROOM];
        std::size_t uSize = 0;
        for (const u2_t uWord : b.m_oHeap.QuadOf(oNode)) {
            if (uSize != 0) s[uSize++] = ',';
            uSize += FormatInteger(static_cast<i2_t>(uWord), s + uSize);
        }
        WriteTyped(uId, {s, uSize});
    }

    // A text with the end mark in it goes into two sections that share the mark.
    void WriteCdata(std::string_view sText) {
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

    void WriteTree(u2_t uId) {
        const Data_Base::Group oGroup = b.SuccOf(uId);
        const u2_t* const pEnd = oGroup.pId + oGroup.uSize;
        const auto oIsLive = [this](u2_t u) { return b.m_oNode(u).GetType() != Node::Zombi; };
        if (std::none_of(oGroup.pId, pEnd, oIsLive)) return Add("/>\n");
        Add(">\n");
        ++m_uDepth;
        m_oFrame.Add(Frame{oGroup.pId, pEnd, uId});
    }

    Data_Base& b;
    Sink& m_oSink;
    u2_t m_uDepth;
    u2_t m_uTop = 0;
    bool m_bAttributes;
    Arr<Frame> m_oFrame;
    Data_IdMap<u0_t> m_oPlain;   // by key
    Data_IdMap<u2_t> m_oNumber;  // by id, not 0 for the target of a link
    bool m_bNumbers = false;     // there are any
    u2_t m_uNumbers = 0;
    Arr<u2_t> m_oAttKeys;
    Arr<char> m_oRoom;  // a written name
    Arr<char> m_oAttValue;
    Arr<char> m_oValue;  // a piece of a value
};

}  // namespace

void Data::SaveToXML(File_Stream& out, i2_t iDeclaration, i2_t iDepth) const {
    return Where("vok::Data::SaveToXML", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (b.m_oNode(m_uId).GetType() == Node::Zombi) Msg::TryToAccessDeletedNode();
        SetAccessMode();
        const auto oWriteTo = [&](auto&& oSink) {
            XmlWriter oWriter(b, oSink, static_cast<u2_t>(std::max(iDepth, 0)));
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
