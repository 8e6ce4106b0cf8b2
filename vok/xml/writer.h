// Writing XML: the writer behind Data::SaveToXML. Internal.
//
// Its functions stand in two files: elements, attributes and values (writer.cpp), and the loop that
// most elements go through (fast_writer.h).
#ifndef VOK_XML_WRITER_H
#define VOK_XML_WRITER_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/base/base64.h"
#include "vok/data/id_map.h"
#include "vok/data/store.h"
#include "vok/file/sinks.h"
#include "vok/file/xml_text.h"
#include "vok/xml/form.h"

namespace vok::detail {

// Writes to a sink of vok/file/sinks.h: a memory buffer, or pieces of any stream.
template <class Sink>
class XmlWriter {
  public:
    using Node = Data_Node;

    XmlWriter(Data_Base& oBase, Sink& oSink, u2_t uDepth)
        : m_oBase(oBase),
          m_oSink(oSink),
          m_uDepth(uDepth),
          m_bAttributes(!oBase.m_oAtt.IsUnused()),
          m_oVerbatim(oBase.m_oName.Size()),
          m_oNumber(oBase.m_oNode.Size()) {}

    // Notes which nodes the links below oTop lead to: those get a number. In time with what is
    // written: a host may save a large tree part by part.
    void MarkTargets(const Data& oTop);

    void Run(u2_t uTop, bool bDeclaration);

  private:
    // Elements stand on lines of their own, a tab deeper than the one they are in. Deeper than
    // this the lines do not get longer, so that the document stays linear in the tree.
    static constexpr u2_t MOST_TABS = 32;

    // Room for everything of an element that has no length of its own: tabs, brackets, type
    // attribute, the longest number, CDATA marks.
    static constexpr std::size_t FIXED_ROOM = 192;

    // Successors still to come in an open element.
    struct Frame {
        const u2_t* pNext;
        const u2_t* pEnd;
        u2_t uId;
    };
    enum Verbatim : u0_t { Unknown, Yes, No };

    static constexpr u2_t TO_COME = 0xFFFFFFFF;

    // Long values are converted in pieces: base64, of three bytes at a time, in its place.
    static constexpr std::size_t PIECE = 3 << 14;
    static constexpr std::size_t BLOCK_PIECE = 3 << 10;
    static_assert(Base64Size(BLOCK_PIECE) <= PieceSink::LARGEST_SPACE);
    static constexpr u2_t FAST_TYPES = 1u << Node::Integer | 1u << Node::Double |
                                       1u << Node::Boolean | 1u << Node::String | 1u << Node::Empty;
    static constexpr u2_t SHORT_NAME = 64;
    static constexpr u2_t SHORT_TEXT = 64;
    static constexpr std::size_t FAST_ROOM = 2 * SHORT_NAME + SHORT_TEXT + FIXED_ROOM;

    void MarkTarget(const Node& oNode) {
        if (oNode.GetType() != Node::Link || !IsTarget(oNode.uWord2)) return;
        m_oNumber(oNode.uWord2) = TO_COME;
        m_bNumbers = true;
    }
    [[nodiscard]] bool IsTarget(u2_t uId) const noexcept {
        return uId < m_oBase.m_oNode.Size() && m_oBase.m_oNode(uId).GetType() != Node::Zombi;
    }

    // Whether a name is written as it stands.
    [[nodiscard]] bool IsVerbatim(u2_t uKey) {
        u0_t& uVerbatim = m_oVerbatim(uKey);
        if (uVerbatim == Unknown) {
            const Hash_Text& oName = m_oBase.m_oName(uKey);
            uVerbatim = xml::IsVerbatimName(oName.View()) ? Yes : No;
        }
        return uVerbatim == Yes;
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
    void WriteFastElements();

    void WriteElement(u2_t uId);

    void WriteName(u2_t uId);

    void WriteEndTag(u2_t uId) {
        Add("</");
        WriteName(uId);
        Add(">\n");
    }

    void WriteAttributes(u2_t uId);

    void WriteAttribute(std::string_view sName, std::string_view sValue);

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
    void WriteValue(u2_t uId);

    void StartTyped(Node::Type eType) {
        WriteAttribute(xml::TYPE, xml::NameOf(eType));
        Add(">");
    }

    void WriteTyped(u2_t uId, std::string_view sText) {
        StartTyped(m_oBase.m_oNode(uId).GetType());
        Add(sText);
        WriteEndTag(uId);
    }

    void WriteQuad(u2_t uId);

    // A text with the end mark in it goes into two sections that share the mark.
    void WriteCdata(std::string_view sText);

    void WriteTree(u2_t uId);

    Data_Base& m_oBase;
    Sink& m_oSink;
    u2_t m_uDepth;
    u2_t m_uTop = 0;
    bool m_bAttributes;
    Arr<Frame> m_oFrame;
    Data_IdMap<u0_t> m_oVerbatim;  // by key
    Data_IdMap<u2_t> m_oNumber;    // by id, not 0 for the target of a link
    bool m_bNumbers = false;       // there are any
    u2_t m_uNumbers = 0;
    Arr<u2_t> m_oAttKeys;
    Arr<char> m_oRoom;  // a written name
    Arr<char> m_oAttValue;
    Arr<char> m_oValue;  // a piece of a value
};

}  // namespace vok::detail

#endif  // VOK_XML_WRITER_H
