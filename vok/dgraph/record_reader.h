// SPDX-License-Identifier: MIT
// DGraph documents of major version 1, record by record. Internal.
#ifndef VOK_DGRAPH_RECORD_READER_H
#define VOK_DGRAPH_RECORD_READER_H

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>

#include "vok/data/record_source.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/reader.h"
#include "vok/dgraph/step.h"
#include "vok/file/window.h"

namespace vok::dgraph {

// Nothing that it is told is trusted: what Reader refuses it refuses at the same place and with the
// same error, but for links, of which only the path is known. Limits are those of loading on nodes,
// depth, skipped slots, bytes and attributes.
class RecordReader final : public detail::Record_Source {
  public:
    // Reads the header. Raises what Dgraph_LoadDGraph raises for another one.
    RecordReader(File_Stream& oIn, const Limits& oLimits);

    const Data_Record* Next() override;
    void BuildBelow(Data& oTree, Data_Base& oBase, Built& oBuilt) override;
    [[nodiscard]] Str Version() const override { return m_oTag; }
    void AddTo(Load_Report& oReport) const override;
    [[nodiscard]] u3_t Offset() const override { return m_oWindow.Offset(); }
    void GoBack() noexcept override;

  private:
    // Closes levels without records to come; false when that closes all of them, or the document is
    // at its end.
    bool CloseLevels() noexcept {
        while (m_oTrail.Size() != 0 && m_oTrail.Last().uPending == 0) {
            m_oTrail.Close();
            m_pBefore = nullptr;
        }
        return m_oTrail.Size() != 0 && !m_bEnd;
    }
    // Reads a record that is like most are: an expected name, no attributes, the next index of its
    // run, a value that needs no second look, all at hand. False for any other, with nothing read.
    [[nodiscard]] bool ReadFast();
    [[nodiscard]] bool ReadAtEnd(std::size_t uAtHand);
    // The name of a record and its index; where its type code stands.
    struct Head {
        u2_t uKey;
        u2_t uIndex;
        const char* pCode;
    };
    using Record_Source::IsInOrder;
    [[nodiscard]] bool IsInOrder(Hash_Guess::Expected oExpected, u2_t uLast) noexcept;
    [[nodiscard]] bool ReadExpected(const char* p, Head& o);
    [[nodiscard]] bool ReadNext(const char* p, Head& o) noexcept;
    [[nodiscard]] bool ReadHead(const char* p, std::size_t uAtHand, Head& o);
    [[nodiscard]] bool ReadBehind(const Head& o, const char* pEnd);
    [[nodiscard]] u2_t FindName(const char* p, std::size_t uSeen, std::size_t uStep);
    [[nodiscard]] bool ReadFastValue(u0_t uCode, const char* p, const char* pEnd);
    template <class Record>
    [[nodiscard]] const char* TakeLeaf(Record& o, u0_t uCode, const char* p,
                                       const char* pEnd) const noexcept;
    // Reads records of the last level and below in front of their turn, as long as they are like
    // most are and stand in order: what a loop keeps in registers is not put aside between calls.
    // They are for NextAhead; false where there is none.
    bool ReadAhead();
    [[nodiscard]] std::size_t ReadSeveral(std::size_t uMost);
    std::size_t GetLength();
    void ReadStep();
    void NoteName(u2_t uKey, i2_t iIndex);
    void ReadAttributes();
    void ReadValue();
    [[nodiscard]] std::string_view ReadBlock();
    void Count(u3_t uNodes) {
        m_uNodes += uNodes;
        if (m_uNodes <= m_oLimits.m_uNodes) return;
        m_uNodes = std::max<u3_t>(m_oLimits.m_uNodes, 1);
        m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    }

    static constexpr std::size_t LENGTH = 4;
    static constexpr std::size_t MOST_AHEAD = 16;
    // Who had some of them read in vain will do so again: records until it is tried once more.
    static constexpr u2_t PATIENCE = 256;
    // The same where records were not like most so often in a row.
    static constexpr u2_t MOST_IN_VAIN = 4;
    static constexpr u2_t SHORT_PATIENCE = 16;

    File_Window m_oWindow;
    const Limits m_oLimits;
    const std::size_t m_uHeadRoom;  // bytes to be there for heads to be compared as a whole
    Str m_oTag;                     // that of trees of that version
    u3_t m_uMissingHeader = 0;
    Step m_oStep;
    // The record in front, where it is of this level and still in the window; null where unknown.
    const char* m_pBefore = nullptr;
    Arr<char> m_oRoom;   // what of a value is not in the window
    Arr<char> m_oTexts;  // attributes that were no UTF-8
    std::unique_ptr<std::array<detail::Ahead_Record, MOST_AHEAD>> m_paoAhead;
    std::size_t m_uStart = 0;                // the level that was the last one in front of them
    detail::Record_Trail::Level m_oStart{};  // what it was
    u2_t m_uPatience = 0;                    // records that are still to come one by one
    u2_t m_uInVain = 0;                      // times in a row that there was none
    bool m_bMore = false;   // the last time there were as many as may be, and may be more of them
    bool m_bPlain = false;  // the record was like most: its step is its name and its index
    // What builds the trees of records, once there are any.
    struct Loader {
        explicit Loader(RecordReader& r) : oSource(r.m_oWindow), oReader(oSource, r.m_oLimits) {}
        WindowSource oSource;
        Reader<WindowSource> oReader;
    };
    std::optional<Loader> m_oLoader;
    u3_t m_uNodes = 1;
    u3_t m_uSkipped = 0;
    bool m_bNamed = false;  // of the record being read the name is known
    bool m_bEnd = false;    // the stream was at its end
    bool m_bDone = false;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_RECORD_READER_H
