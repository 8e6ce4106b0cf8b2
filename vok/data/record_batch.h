// SPDX-License-Identifier: MIT
// Records that are read in front of their turn. Internal.
#ifndef VOK_DATA_RECORD_BATCH_H
#define VOK_DATA_RECORD_BATCH_H

#include <algorithm>
#include <array>

#include "vok/data/record.h"
#include "vok/data/record_trail.h"

namespace vok::detail {

// Records one behind the other, none of them with attributes, read by a loop that keeps what it
// knows in registers. Each leads to the next one, the last one to nothing. Where the trail stood in
// front of them is kept as well: who wants to know where one of them stands goes back to it.
class Record_Batch {
  public:
    static constexpr std::size_t MOST = 16;

    class Entry final : public Data_Record {
      public:
        using Data_Record::m_iIndex;
        using Data_Record::m_pNext;
        using Data_Record::m_sName;
        using Data_Record::m_sText;
        using Data_Record::m_uDepth;
        using Data_Record::m_uOffset;
        using Data_Record::SetValue;

        const char* m_pBehind = nullptr;  // where it ends, for codecs that do not tell it otherwise
    };

    Record_Batch() noexcept { LinkAll(); }
    Record_Batch(const Record_Batch&) = delete;
    Record_Batch& operator=(const Record_Batch&) = delete;

    // Begins where the trail stands; returns the first of up to uMost that are to be written. To
    // one alone nobody goes back.
    Entry* Start(const Record_Trail& oTrail, std::size_t uMost) noexcept {
        SetSize(0);
        if (m_bCut) LinkAll();
        m_uLevels = oTrail.Size();
        m_uLowest = m_uLevels - 1;
        if (uMost <= 1) return m_aoEntry.data();
        m_uLowest = m_uLevels - std::min(m_uLevels, KEPT);
        std::copy(&oTrail.At(m_uLowest), &oTrail.At(m_uLowest) + (m_uLevels - m_uLowest),
                  m_aoLevel.begin());
        return m_aoEntry.data();
    }
    // The lowest level that may be the last one: those below are not kept.
    [[nodiscard]] std::size_t Lowest() const noexcept { return m_uLowest; }
    // So many were written.
    void SetSize(std::size_t uSize) noexcept {
        if (m_uSize != 0) m_aoEntry[m_uSize - 1].m_pNext = m_aoEntry.data() + m_uSize;
        m_uSize = uSize;
        if (m_uSize != 0) m_aoEntry[m_uSize - 1].m_pNext = nullptr;
    }
    [[nodiscard]] std::size_t Size() const noexcept { return m_uSize; }

    // An entry leads to what is behind all that is below it; false where none of those that were
    // read is, but one of the next ones may be below it.
    [[nodiscard]] bool SkipBelow(const Entry& o) noexcept {
        const Data_Record* p = o.m_pNext;
        while (p != nullptr && p->GetDepth() > o.GetDepth()) {
            p = static_cast<const Entry*>(p)->m_pNext;
        }
        m_aoEntry[IndexOf(o)].m_pNext = p;
        m_bCut = true;
        return p != nullptr;
    }
    [[nodiscard]] bool IsLast(const Entry& o) const noexcept { return IndexOf(o) + 1 == m_uSize; }
    // Whether an entry that is not the last one leads to another one than the next.
    [[nodiscard]] static bool Skips(const Entry& o) noexcept { return o.m_pNext != &o + 1; }

    // The path of an entry as Record_Trail::PathTo gives it: its ancestors are those entries in
    // front of it that come first on their levels from it back, and what was open in front of all.
    [[nodiscard]] Str PathTo(const Record_Trail& oTrail, const Entry& o) const {
        std::array<const Entry*, MOST> apUp;
        std::size_t uUp = 0;
        std::size_t uLevel = o.GetDepth() + std::size_t{1};
        for (std::size_t u = IndexOf(o) + 1; u-- > 0;) {
            if (m_aoEntry[u].GetDepth() + std::size_t{1} != uLevel) continue;
            apUp[uUp++] = &m_aoEntry[u];
            --uLevel;
        }
        Path_Text oPath;
        for (std::size_t u = 1; u < uLevel; ++u) {
            oTrail.AddStep(oPath, u < m_uLowest ? oTrail.At(u) : m_aoLevel[u - m_uLowest]);
        }
        while (uUp-- > 0) {
            const Entry& oUp = *apUp[uUp];
            Record_Trail::AddStep(oPath, oUp.m_sName, static_cast<u2_t>(oUp.m_iIndex));
        }
        return Record_Trail::Whole(oPath);
    }

    [[nodiscard]] const Entry* begin() const noexcept { return m_aoEntry.data(); }
    [[nodiscard]] const Entry* end() const noexcept { return m_aoEntry.data() + m_uSize; }

    // Makes the trail what it was in front of them. None but those that were read have changed it.
    void Restore(Record_Trail& oTrail) const noexcept {
        oTrail.Restore(m_uLowest, m_aoLevel.data(), m_uLevels - m_uLowest);
    }

  private:
    [[nodiscard]] std::size_t IndexOf(const Entry& o) const noexcept {
        return static_cast<std::size_t>(&o - m_aoEntry.data());
    }
    void LinkAll() noexcept {
        for (Entry& o : m_aoEntry) o.m_pNext = &o + 1;
        m_bCut = false;
    }

    // Levels up to which they may lead.
    static constexpr std::size_t KEPT = 4;

    std::array<Entry, MOST> m_aoEntry;
    std::size_t m_uSize = 0;
    bool m_bCut = false;  // some of them do not lead to the next one
    std::array<Record_Trail::Level, KEPT> m_aoLevel;
    std::size_t m_uLevels = 0;
    std::size_t m_uLowest = 0;
};

}  // namespace vok::detail

#endif  // VOK_DATA_RECORD_BATCH_H
