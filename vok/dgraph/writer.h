// SPDX-License-Identifier: MIT
// Writing a tree as a DGraph document of major version 1. Internal.
//
// Its functions stand in two files: nodes (writer.cpp), and the loop that most of them go through
// (fast_writer.h). What a record looks like is in record_writer.h.
#ifndef VOK_DGRAPH_WRITER_H
#define VOK_DGRAPH_WRITER_H

#include "vok/data/escape.h"
#include "vok/data/id_map.h"
#include "vok/data/store.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/record_writer.h"
#include "vok/dgraph/sinks.h"

namespace vok::dgraph {

// Writes to a memory buffer, or field by field to any stream.
template <class Sink>
class Writer : private RecordWriter<Sink> {
  public:
    Writer(const Data& oRoot, const Version& oVersion, Sink& oSink)
        : RecordWriter<Sink>(oSink, oVersion.iMinor),
          m_oBase(*Access::BaseOf(oRoot)),
          m_oRoot(oRoot),
          m_oFormOf(m_oBase.m_oName.Size()) {
        m_oVerbatim.Resize(m_oBase.m_oName.Size());
    }

    void Run();

  private:
    using Record = RecordWriter<Sink>;
    using Record::CopyName;
    using Record::FIXED_ROOM;
    using Record::m_oSink;
    using Record::StoreFirst;
    using Record::StoreIndex;
    using Record::StoreNext;
    static_assert(Data_Heap::SLACK >= BufferSink::SLACK);

    // The successors of one open level, and the run of equal names at its position.
    struct Frame {
        Data_Base::Group oGroup;
        u2_t uPos;
        u2_t uRunKey;
        u2_t uRunStart;
    };

    enum Verbatim : u0_t { Unknown, Yes, No };

    static constexpr u2_t FAST_TYPES =
        1u << Data_Node::Integer | 1u << Data_Node::Double | 1u << Data_Node::Boolean;
    static constexpr u2_t SHORT_TEXT = 64;
    static constexpr u2_t SHORT_NAME = 64;
    // Room for any record with a short name and a short text, and what copying in steps of 16
    // bytes writes behind it.
    static constexpr std::size_t PIECE = SHORT_NAME + SHORT_TEXT + FIXED_ROOM;

    // Names longer than this go where their length is checked.
    static constexpr u2_t LONGEST_VERBATIM = 0x7FFFFF00;

    // Whether a name is written as it stands.
    [[nodiscard]] bool IsVerbatim(u2_t uKey) {
        u0_t& uVerbatim = m_oVerbatim(uKey);
        if (uVerbatim == Unknown) {
            const Hash_Text& oName = m_oBase.m_oName(uKey);
            const bool bEscaped =
                uKey == 0 || oName.uLength > LONGEST_VERBATIM || detail::HasReserved(oName.View());
            uVerbatim = bEscaped ? No : Yes;
        }
        return uVerbatim == Yes;
    }

    // How another, short name is written. Remembered.
    [[nodiscard]] const Hash_Text& Escaped(u2_t uKey);

    // Writes the records of the top level as long as they are like most records are: a short name
    // written as it stands, no attributes, one of the common values. This loop is what
    // writing a document costs, so all it needs is at hand in locals: the bytes it stores
    // could otherwise be taken for any of the members.
    template <bool SCATTERED>
    void WriteFastRecords();
    [[gnu::noinline]] void WriteScattered() { WriteFastRecords<true>(); }
    // Whether leaves follow that are so many that near caches do not hold them, and that do not
    // stand one behind the other.
    [[nodiscard]] bool IsScattered(const Frame& f) const noexcept {
        if (f.oGroup.uSize < MANY || f.uPos == f.oGroup.uSize || f.oGroup.IsDense()) return false;
        return m_oBase.m_oNode(f.oGroup.pId[f.uPos]).GetType() != Data_Node::Tree;
    }
    static void AskFor(const Data_Base::Group& oGroup, u2_t uPos, const Data_Node* pNodes,
                       const Hash_Text* pNames) noexcept;
    static constexpr u2_t MANY = 4096;
    static constexpr u2_t STEP = 8;  // records ahead: what memory needs

    void WriteNode(u2_t uId, u2_t uIndex);

    // A step whose name has escapes, or with attributes.
    void WriteLongStep(u2_t uId, u2_t uIndex);

    void WriteValue(u2_t uId, const Data_Node& oNode);

    void WriteTree(u2_t uId);

    // Only a node that the document itself reaches can be linked to: below the root, every
    // ancestor a tree node.
    [[nodiscard]] bool IsInDocument(u2_t uId) const noexcept;

    void WriteLink(const Data_Node& oNode);

    Data_Base& m_oBase;
    const Data& m_oRoot;
    Arr_Near<Frame, 16> m_oFrame;
    Arr_Near<u0_t, 64> m_oVerbatim;  // by key
    Hash m_oForm;                    // of names that are not written as they stand
    Data_IdMap<u2_t> m_oFormOf;      // theirs, by key of the name
    Arr<char> m_oEscaped;
    Arr<u2_t> m_oAttKeys;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_WRITER_H
