// SPDX-License-Identifier: MIT
// Writing XML: the writer behind Data::SaveToXML. Internal.
//
// Its functions stand in two files: nodes (writer.cpp), and the loop that most of them go through
// (fast_writer.h). What an element looks like is in element_writer.h.
#ifndef VOK_XML_WRITER_H
#define VOK_XML_WRITER_H

#include <string_view>

#include "vok/data/id_map.h"
#include "vok/data/store.h"
#include "vok/file/sinks.h"
#include "vok/xml/element_writer.h"

namespace vok::detail {

// Writes to a sink of vok/file/sinks.h: a memory buffer, or pieces of any stream.
template <class Sink>
class XmlWriter : private xml::ElementWriter<Sink> {
  public:
    using Node = Data_Node;

    XmlWriter(Data_Base& oBase, Sink& oSink, u2_t uDepth)
        : xml::ElementWriter<Sink>(oSink, uDepth),
          m_oBase(oBase),
          m_bAttributes(!oBase.m_oAtt.IsUnused()),
          m_oVerbatim(oBase.m_oName.Size()),
          m_oNumber(oBase.m_oNode.Size()) {}

    // Notes which nodes the links below oTop lead to: those get a number. In time with what is
    // written: a host may save a large tree part by part.
    void MarkTargets(const Data& oTop);

    void Run(u2_t uTop, bool bDeclaration);

  private:
    using Element = xml::ElementWriter<Sink>;
    using Element::m_oSink;
    using Element::SHORT_ROOM;

    // Successors still to come in an open element.
    struct Frame {
        const u2_t* pNext;
        const u2_t* pEnd;
        u2_t uId;
    };
    enum Verbatim : u0_t { Unknown, Yes, No };

    static constexpr u2_t TO_COME = 0xFFFFFFFF;

    static constexpr u2_t FAST_TYPES = 1u << Node::Integer | 1u << Node::Double |
                                       1u << Node::Boolean | 1u << Node::String | 1u << Node::Empty;

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

    // ---- elements ---------------------------------------------------------

    // Writes successors as long as they are like most nodes are: a name written as it stands,
    // no attributes, no links, one of the common values. This loop is what saving XML costs.
    void WriteFastElements();

    void WriteElement(u2_t uId);

    // The name of a node as it is written; valid until the next call.
    [[nodiscard]] std::string_view WrittenName(u2_t uId);

    void WriteAttributes(u2_t uId);

    [[nodiscard]] bool IsNumbered(u2_t uId) const noexcept {
        return m_bNumbers && m_oNumber.Find(uId) != 0;
    }

    // Numbers count up in the order in which the document names them: equal trees give equal
    // documents.
    [[nodiscard]] u2_t NumberOf(u2_t uId) {
        u2_t& uNumber = m_oNumber(uId);
        if (uNumber == TO_COME) uNumber = ++m_uNumbers;
        return uNumber;
    }

    // The rest of the element, behind its attributes.
    void WriteValue(u2_t uId);
    void WriteTree(u2_t uId);

    Data_Base& m_oBase;
    u2_t m_uTop = 0;
    bool m_bAttributes;
    Arr<Frame> m_oFrame;
    Data_IdMap<u0_t> m_oVerbatim;  // by key
    Data_IdMap<u2_t> m_oNumber;    // by id, not 0 for the target of a link
    bool m_bNumbers = false;       // there are any
    u2_t m_uNumbers = 0;
    Arr<u2_t> m_oAttKeys;
    Arr<char> m_oName;  // a written one
};

}  // namespace vok::detail

#endif  // VOK_XML_WRITER_H
