// Writing DGraph documents of major version 1. Internal.
//
// Its functions stand in two files: steps and values (writer.cpp), and the loop that most records
// go through (fast_writer.h).
#ifndef VOK_DGRAPH_WRITER_H
#define VOK_DGRAPH_WRITER_H

#include <cstring>
#include <string_view>

#include "vok/base/number.h"
#include "vok/data/escape.h"
#include "vok/data/id_map.h"
#include "vok/data/store.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/sinks.h"

namespace vok::dgraph {

// Writes to a memory buffer, or field by field to any stream.
template <class Sink>
class Writer {
  public:
    Writer(const Data& oRoot, const Version& oVersion, Sink& oSink)
        : m_oBase(*Access::BaseOf(oRoot)),
          m_oRoot(oRoot),
          m_iMinor(oVersion.iMinor),
          m_oSink(oSink),
          m_oFormOf(m_oBase.m_oName.Size()) {
        m_oVerbatim.Resize(m_oBase.m_oName.Size());
    }

    void Run();

  private:
    // Room for everything of a record that has no length of its own: lengths, brackets, run
    // index, type code, the largest value.
    static constexpr std::size_t FIXED_ROOM = 128;
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
    void WriteFastRecords();

    void WriteNode(u2_t uId, u2_t uIndex);

    // The table of names has 16 bytes to spare behind each of its blocks.
    static char* CopyName(char* p, const Hash_Text& oName) noexcept {
        std::memcpy(p, oName.sText, Hash::SLACK);
        for (u2_t u = Hash::SLACK; u < oName.uLength; u += Hash::SLACK) [[unlikely]] {
                std::memcpy(p + u, oName.sText + u, Hash::SLACK);
            }
        return p + oName.uLength;
    }

    static char* StoreIndex(char* p, u2_t uIndex) noexcept {
        *p++ = '[';
        if (uIndex < 10) {
            *p++ = static_cast<char>('0' + uIndex);
        } else {
            p += FormatInteger(uIndex, p);
        }
        *p++ = ']';
        return p;
    }

    // A step whose name has escapes, or with attributes.
    void WriteLongStep(u2_t uId, u2_t uIndex);

    void WriteBlock(const char* pData, std::size_t uSize) {
        m_oSink.Cut(Store(m_oSink.Space(4), Msg::ToInt32(uSize)));
        m_oSink.Payload(pData, uSize);
    }

    // A value with its type code; room for both is there already.
    template <class T>
    void WriteFixed(Code eCode, T tValue) {
        char* p = m_oSink.Space(FIXED_ROOM);
        *p++ = static_cast<char>(eCode);
        m_oSink.Cut(p);
        m_oSink.Cut(Store(p, tValue));
    }

    void WriteCode(Code eCode) {
        char* p = m_oSink.Space(FIXED_ROOM);
        *p++ = static_cast<char>(eCode);
        m_oSink.Cut(p);
    }

    // The forms of older minor versions: a text where a number stands today.
    void WriteText(Code eCode, const char* sText, std::size_t uLength) {
        WriteCode(eCode);
        WriteBlock(sText, uLength + 1);
    }

    void WriteValue(u2_t uId, const Data_Node& oNode);

    void WriteTree(u2_t uId);

    void WriteQuad(const Data_Node& oNode);

    // Only a node that the document itself reaches can be linked to: below the root, every
    // ancestor a tree node.
    [[nodiscard]] bool IsInDocument(u2_t uId) const noexcept;

    void WriteLink(const Data_Node& oNode);

    Data_Base& m_oBase;
    const Data& m_oRoot;
    const i2_t m_iMinor;
    Sink& m_oSink;
    Arr_Near<Frame, 16> m_oFrame;
    Arr_Near<u0_t, 64> m_oVerbatim;  // by key
    Hash m_oForm;                    // of names that are not written as they stand
    Data_IdMap<u2_t> m_oFormOf;      // theirs, by key of the name
    Arr<char> m_oStep;
    Arr<u2_t> m_oAttKeys;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_WRITER_H
