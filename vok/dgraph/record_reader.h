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
    void GoBack(const Data_Record* pGiven) noexcept override;
    void BuildBelow(Data& oTree, Data_Base& oBase, Built& oBuilt) override;
    [[nodiscard]] Str Version() const override { return m_oTag; }
    void AddTo(Load_Report& oReport) const override;
    [[nodiscard]] u3_t Offset() const override { return m_oWindow.Offset(); }

  private:
    // Closes levels without records to come; false when that closes all of them, or the document is
    // at its end.
    bool CloseLevels() noexcept {
        while (m_oTrail.Size() != 0 && m_oTrail.Last().uPending == 0) {
            m_oTrail.Close();
            m_oBefore.Set(m_oBefore.At(m_oTrail.Size()));
        }
        return m_oTrail.Size() != 0 && !m_bEnd;
    }
    // Reads records of the last level and of others as long as they are like most are - a name as
    // it stands, no attributes, the next index of its run, a value that needs no second look - and
    // stand in order: what a loop keeps in registers is not put aside between calls. They are at
    // hand as a batch, the first of which is returned; null where there is none, with nothing read.
    [[nodiscard]] const Data_Record* ReadAhead();
    // The same for one of a run of trees, as they come to who takes each of them: the source has
    // come to it.
    [[nodiscard]] bool ReadNextTree();
    [[nodiscard]] std::size_t ReadSeveral(std::size_t uMost);
    // The name of a record and where its type code stands; null where it is not like most are.
    struct Head {
        u2_t uKey;
        const char* pCode;
    };
    [[nodiscard]] Head FindHead(const char* p, const char* pEnd, u2_t uLast, u2_t uRun, bool bNew);
    [[nodiscard]] u2_t FindName(const char* p, std::size_t uSeen, std::size_t uStep, bool bNew);
    using Record_Source::IsInOrder;
    [[nodiscard]] bool IsInOrder(Hash_Guess::Expected oExpected, u2_t uBehind, u2_t uLast) noexcept;
    [[nodiscard]] const char* TakeLeaf(detail::Record_Batch::Entry& o, u0_t uCode, const char* p,
                                       const char* pEnd) const noexcept;
    void ReadOne();
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

    // By level the record in front, of those that are like most are and are still in the window;
    // null where unknown, as it is for all but the highest levels.
    class Before {
      public:
        [[nodiscard]] const char* Get() const noexcept { return m_pLast; }
        void Set(const char* p) noexcept { m_pLast = p; }
        // That of the last of so many levels, below which another one is opened; what it was when
        // that is closed.
        void Keep(std::size_t uLevels, const char* p) noexcept {
            if (uLevels <= LEVELS) m_ap[uLevels - 1] = p;
        }
        [[nodiscard]] const char* At(std::size_t uLevels) const noexcept {
            return uLevels - 1 < LEVELS ? m_ap[uLevels - 1] : nullptr;
        }
        // The window has moved.
        void Forget() noexcept {
            m_ap.fill(nullptr);
            m_pLast = nullptr;
        }

      private:
        static constexpr std::size_t LEVELS = 8;
        std::array<const char*, LEVELS> m_ap{};
        const char* m_pLast = nullptr;
    };

    File_Window m_oWindow;
    const Limits m_oLimits;
    const std::size_t m_uHeadRoom;  // bytes to be there for heads to be compared as a whole
    Str m_oTag;                     // that of trees of that version
    u3_t m_uMissingHeader = 0;
    Step m_oStep;
    Before m_oBefore;
    Arr<char> m_oRoom;   // what of a value is not in the window
    Arr<char> m_oTexts;  // attributes that were no UTF-8
    // What builds the trees of records, once there are any.
    struct Loader {
        explicit Loader(RecordReader& r) : oSource(r.m_oWindow), oReader(oSource, r.m_oLimits) {}
        WindowSource oSource;
        Reader<WindowSource> oReader;
    };
    std::optional<Loader> m_oLoader;
    u3_t m_uNodes = 1;
    u3_t m_uSkipped = 0;
    bool m_bPlain = false;  // the record was like most are: its step is its name and its index
    bool m_bNamed = false;  // of the record being read the name is known
    bool m_bEnd = false;    // the stream was at its end
    bool m_bDone = false;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_RECORD_READER_H
