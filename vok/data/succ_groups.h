// SPDX-License-Identifier: MIT
// The successors of all nodes, in groups. Internal.
#ifndef VOK_DATA_SUCC_GROUPS_H
#define VOK_DATA_SUCC_GROUPS_H

#include <algorithm>

#include "vok/base/arr.h"
#include "vok/data/node.h"
#include "vok/data/runs.h"

namespace vok {

// One array of words. A group is
//
//     word 0   how many successors stand in it; with the top bit it is not in order as a whole:
//              then the other bits are the index of an entry, which has the count
//     word 1   how many it has room for
//     words 2- their ids: by name in byte order, equal names by creation
//
// and its place is that of word 0. One that is full moves to the end with twice as much room;
// what it leaves is dead until Compact. Nobody else knows these words, but for the dump, which
// writes and reads them as they are.
//
// Less is an order of ids: that of the names of their nodes. WeightOf(id) is what of an id it
// compares, IsBelow(weight, id) compares one with another id.
class Data_Groups {
  public:
    static constexpr u2_t NONE = Data_Node::NONE;
    static constexpr u2_t HEADER = 2;  // words in front of the ids

    // Ids of successors; valid until a group grows or is moved.
    struct View {
        const u2_t* pId = nullptr;
        u2_t uSize = 0;

        // Whether the ids follow each other, of a group that is not empty and was never edited.
        [[nodiscard]] bool IsDense() const noexcept { return pId[uSize - 1] - pId[0] == uSize - 1; }
        [[nodiscard]] const u2_t* begin() const noexcept { return pId; }
        [[nodiscard]] const u2_t* end() const noexcept { return pId + uSize; }
    };
    // A group in no order as a whole: what is known of it stands in runs, each by name, the
    // others follow as they came.
    struct Unsorted {
        u2_t uStart;   // of the group; NONE once it is in order, or gone
        u2_t uPlaced;  // successors in it
        u2_t uKnown;   // those of them that stand in runs
        runs::Starts oRuns;
    };

    // ---- one group --------------------------------------------------------

    [[nodiscard]] u2_t Placed(u2_t uStart) const noexcept {
        return IsSorted(uStart) ? m_oWord(uStart) : m_oUnsorted(EntryOf(uStart)).uPlaced;
    }
    [[nodiscard]] u2_t Room(u2_t uStart) const noexcept { return m_oWord(uStart + 1); }
    [[nodiscard]] bool IsSorted(u2_t uStart) const noexcept {
        return (m_oWord(uStart) & UNSORTED) == 0;
    }
    // Whether it has that many successors and is in order.
    [[nodiscard]] bool IsComplete(u2_t uStart, u2_t uSize) const noexcept {
        return m_oWord(uStart) == uSize;
    }
    // Whether it is in order and has room for one more.
    [[nodiscard]] bool HasRoom(u2_t uStart) const noexcept {
        return m_oWord(uStart) < m_oWord(uStart + 1);
    }
    [[nodiscard]] const u2_t* Ids(u2_t uStart) const noexcept {
        return m_oWord.Beg() + uStart + HEADER;
    }
    [[nodiscard]] u2_t* Ids(u2_t uStart) noexcept { return m_oWord.Beg() + uStart + HEADER; }
    // What a place is added to to come to the ids of its group; null while there is no group.
    [[nodiscard]] const u2_t* IdsAtZero() const noexcept {
        return m_oWord.Size() != 0 ? Ids(0) : nullptr;
    }
    [[nodiscard]] View ViewOf(u2_t uStart, u2_t uSize) const noexcept {
        return {Ids(uStart), uSize};
    }

    // Whether there is memory for one more group.
    [[nodiscard]] bool HasSpace(u2_t uRoom) const noexcept {
        return m_oWord.Size() + HEADER + uRoom <= std::min<std::size_t>(m_oWord.Capacity(), MOST);
    }
    // Appends an empty group and returns its place.
    u2_t Add(u2_t uRoom) {
        const std::size_t uStart = m_oWord.Size();
        const std::size_t uEnd = uStart + HEADER + uRoom;
        if (!HasSpace(uRoom)) [[unlikely]]
            MakeRoom(uEnd);
        m_oWord.SetSize(uEnd);
        u2_t* pGroup = m_oWord.Beg() + uStart;
        pGroup[0] = 0;
        pGroup[1] = uRoom;
        return static_cast<u2_t>(uStart);
    }
    // Moves the group at uStart to the end, with room for at least one more than it has, and
    // returns its new place.
    u2_t Grow(u2_t uStart, u2_t uRoom);
    // The group at uStart is needed no more.
    void Abandon(u2_t uStart) noexcept;

    // Declares that so many ids stand in a group, which is in order: by one who has put them there.
    void SetPlaced(u2_t uStart, u2_t uSize) noexcept { m_oWord(uStart) = uSize; }
    // Adds an id to a group with room for it; whether it belongs behind all that it has. Short
    // groups stay in order; a long one is put in order later. Nothing is changed if memory runs
    // out.
    template <class Less>
    bool Place(u2_t uStart, u2_t uId, const Less& oIsLess) {
        u2_t* pGroup = m_oWord.Beg() + uStart;
        const u2_t uSize = pGroup[0];
        u2_t* pEnd = pGroup + HEADER + uSize;
        if ((uSize & UNSORTED) == 0 && (uSize == 0 || !oIsLess(uId, pEnd[-1]))) [[likely]] {
            *pEnd = uId;
            ++pGroup[0];
            return true;
        }
        PlaceLater(uStart, uId, oIsLess);
        return false;
    }

    // Adds an id at pPlace, one of the ids of the group or their end; there is room for it.
    void InsertAt(u2_t uStart, u2_t* pPlace, u2_t uId) noexcept;
    // Takes out the id at pPlace and returns the place of the group, which may begin later now.
    [[nodiscard]] u2_t RemoveAt(u2_t uStart, u2_t* pPlace) noexcept;
    // Takes out the ids from uFirst on; the others keep their order, and their runs.
    void DropFrom(u2_t uStart, u2_t uFirst) noexcept;

    // ---- those that are not in order --------------------------------------

    [[nodiscard]] bool IsAllSorted() const noexcept { return m_oUnsorted.Size() == 0; }
    // Puts all groups in order; what stands in no run yet is sorted by oSort(first, end), equal
    // names as they came: their ids ascend.
    template <class Less, class Sort>
    void SortAll(const Less& oIsLess, const Sort& oSort) {
        for (Unsorted* p = m_oUnsorted.Beg(); p != m_oUnsorted.End(); ++p) {
            if (p->uStart == NONE) continue;
            u2_t* pFirst = Ids(p->uStart);
            oSort(pFirst + p->uKnown, pFirst + p->uPlaced);
            p->oRuns.auStart[p->oRuns.uCount++] = p->uKnown;
            m_uMoved += runs::MergeAll(p->oRuns, pFirst, p->uPlaced, oIsLess);
            m_oWord(p->uStart) = p->uPlaced;
        }
        m_oUnsorted.Truncate(0);
    }
    template <class Less>
    void SortAll(const Less& oIsLess) {
        SortAll(oIsLess, [&](u2_t* p, u2_t* pEnd) { std::stable_sort(p, pEnd, oIsLess); });
    }
    // As many as stand in no run in any group.
    [[nodiscard]] std::size_t MostUnsorted() const noexcept {
        u2_t uMost = 0;
        for (const Unsorted& o : m_oUnsorted) {
            if (o.uStart != NONE) uMost = std::max(uMost, o.uPlaced - o.uKnown);
        }
        return uMost;
    }
    // Puts all successors of a group in runs. Null when it is in order.
    template <class Less>
    const Unsorted* RunsOf(u2_t uStart, const Less& oIsLess) {
        if (IsSorted(uStart)) return nullptr;
        Unsorted& o = m_oUnsorted(EntryOf(uStart));
        if (o.uKnown == o.uPlaced) return &o;
        u2_t* pFirst = Ids(uStart);
        std::stable_sort(pFirst + o.uKnown, pFirst + o.uPlaced, oIsLess);
        m_uMoved += runs::Add(o.oRuns, pFirst, o.uKnown, o.uPlaced, oIsLess);
        o.uKnown = o.uPlaced;
        if (o.oRuns.uCount > 1) return &o;
        // In order after all.
        m_oWord(uStart) = o.uPlaced;
        o.uStart = NONE;
        if (&o == m_oUnsorted.End() - 1) m_oUnsorted.Pop();
        return nullptr;
    }

    // ---- all groups -------------------------------------------------------

    // Room for uIds more ids in uGroups new groups, where the group at uGrowing (NONE: none)
    // grows by one.
    void Reserve(std::size_t uIds, std::size_t uGroups, u2_t uGrowing);
    // Whether dead words are the greater part of many.
    [[nodiscard]] bool IsWorthCompacting() const noexcept {
        return m_uDead > 4096 && m_uDead > m_oWord.Size() / 2;
    }
    // Moves the living groups together, all of which are in order. oForEach hands their places,
    // as references to be changed, to the function that it is given.
    template <class ForEach>
    void Compact(const ForEach& oForEach) {
        Arr<u2_t> oNew;
        oNew.Reserve(m_oWord.Size() - static_cast<std::size_t>(m_uDead));
        oForEach([&](u2_t& uStart) {
            const u2_t* pGroup = m_oWord.Beg() + uStart;
            uStart = static_cast<u2_t>(oNew.Size());
            oNew.Add(pGroup, HEADER + pGroup[1]);
        });
        Swap(oNew);
    }
    // Takes other words in place of its own: living groups only, all in order.
    void Swap(Arr<u2_t>& oWord) noexcept {
        m_oWord.Swap(oWord);
        m_oUnsorted.Truncate(0);
        m_uDead = 0;
    }
    void Reset() noexcept {
        m_oWord.Truncate(0);
        m_oUnsorted.Truncate(0);
        m_uDead = 0;
    }
    void Trim() { m_oWord.TrimMost(); }
    // Appends a group in order to words that are to be swapped in; returns its place.
    template <class Next>
    static u2_t Write(Arr<u2_t>& oWord, u2_t uMost, const Next& oNext) {
        const std::size_t uStart = oWord.Size();
        u2_t* pGroup = oWord.AddSpace(std::size_t{HEADER} + uMost);
        const u2_t uSize = oNext(pGroup + HEADER);
        pGroup[0] = pGroup[1] = uSize;
        oWord.Truncate(uStart + HEADER + uSize);
        return static_cast<u2_t>(uStart);
    }

    [[nodiscard]] const Arr<u2_t>& Words() const noexcept { return m_oWord; }
    [[nodiscard]] std::size_t LivingWords() const noexcept {
        return m_oWord.Size() - static_cast<std::size_t>(m_uDead);
    }
    // Bytes that a group takes in addition to have uIds more ids.
    [[nodiscard]] std::size_t GrowthFor(u2_t uStart, std::size_t uIds) const noexcept {
        const std::size_t uRoom = Room(uStart);
        if (Placed(uStart) + uIds <= uRoom) return 0;
        return m_oWord.GrowthFor(HEADER + std::max(2 * uRoom, Placed(uStart) + uIds));
    }
    [[nodiscard]] std::size_t HeapBytes() const noexcept {
        return m_oWord.HeapBytes() + m_oUnsorted.HeapBytes();
    }
    // Ids that keeping order has moved so far.
    [[nodiscard]] u3_t Moved() const noexcept { return m_uMoved; }

    // Whether what it knows holds together: the entries and their groups, dead words.
    // uLiving are the words of the groups that are in use.
    [[nodiscard]] bool Check(std::size_t uLiving) const noexcept;

  private:
    static constexpr u2_t UNSORTED = 0x80000000;
    // Up to here a successor that comes out of order is moved to its place at once; longer
    // groups are sorted as a whole when all of them are there.
    static constexpr u2_t INSERT_UP_TO = 32;
    // What small trees need.
    static constexpr std::size_t FIRST = 64;
    // Places are signed 32-bit numbers elsewhere.
    static constexpr std::size_t MOST = 0x7FFFFFFF;

    [[nodiscard]] u2_t EntryOf(u2_t uStart) const noexcept { return m_oWord(uStart) & ~UNSORTED; }
    void AddUnsorted(u2_t uStart, u2_t uId);
    void MakeRoom(std::size_t uEnd);

    // Place for an id that does not come last, or in a group that is not in order.
    template <class Less>
    void PlaceLater(u2_t uStart, u2_t uId, const Less& oIsLess) {
        const u2_t uSize = m_oWord(uStart);
        if (!IsSorted(uStart) || uSize >= INSERT_UP_TO) return AddUnsorted(uStart, uId);
        u2_t* pFirst = Ids(uStart);
        u2_t* pPlace = pFirst + uSize;
        const auto oWeight = oIsLess.WeightOf(uId);
        do {
            *pPlace = pPlace[-1];
            --pPlace;
        } while (pPlace > pFirst && oIsLess.IsBelow(oWeight, pPlace[-1]));
        *pPlace = uId;
        ++m_oWord(uStart);
    }

    Arr_Near<u2_t, FIRST> m_oWord;
    Arr<Unsorted> m_oUnsorted;
    u3_t m_uDead = 0;  // words of abandoned groups
    u3_t m_uMoved = 0;
};

}  // namespace vok

#endif  // VOK_DATA_SUCC_GROUPS_H
