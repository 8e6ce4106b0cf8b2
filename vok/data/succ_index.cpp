// The order of successors: placing pending nodes in their groups, sorting, searching.
#include <algorithm>

#include "vok/data/store.h"

namespace vok {

namespace {

// Up to here a run is found by looking at every key of a group: one or two cache lines of
// node records, without a branch that is hard to predict.
constexpr u2_t SCAN_UP_TO = 24;

// Up to here a successor that comes out of order is moved to its place at once; longer groups
// are sorted as a whole when all of them are there.
constexpr u2_t INSERT_UP_TO = 32;

}  // namespace

void Data_Base::PlaceNew() {
    while (m_uIndexed < m_oNode.Size()) {
        Place(m_uIndexed);
        ++m_uIndexed;
    }
}

void Data_Base::PlacePending() {
    PlaceNew();
    if (m_oUnsorted.Size() != 0) SortGroups();
}

void Data_Base::UpdateSucc() {
    PlacePending();
    if (m_uDeadSucc > 4096 && m_uDeadSucc > m_oSucc.Size() / 2) CompactGroups();
}

void Data_Base::ReservePlaces(u2_t uParent, std::size_t uCount, std::size_t uGroups) {
    const Node& oParent = m_oNode(uParent);
    std::size_t uWords = uCount + GROUP_HEADER * (uGroups + 1) + 1;
    if (oParent.GetType() == Node::Tree && oParent.Start() != NONE) {
        uWords += 2 * std::size_t{m_oSucc(oParent.Start() + 1)};
    }
    (void)Msg::ToInt32(m_oSucc.Size() + uWords);
    m_oSucc.ReserveMore(uWords);
    m_oUnsorted.ReserveMore(1);
}

// Puts one node at the end of its parent's group. Nothing is changed if memory runs out.
void Data_Base::Place(u2_t uId) {
    const Node& oNode = m_oNode(uId);
    const u2_t uParent = oNode.Pred();
    if (uParent >= m_oNode.Size()) return;  // the root, or cut loose before it was placed
    Node& oParent = m_oNode(uParent);
    if (oParent.GetType() != Node::Tree) Msg::AssertionFailed("Data_IDX(uPred - 1) == uNth");
    if (oParent.Start() == NONE || PlacedIn(oParent.Start()) == m_oSucc(oParent.Start() + 1)) {
        GrowGroup(oParent);
    }
    u2_t* pGroup = m_oSucc.Beg() + oParent.Start();
    const u2_t uSize = PlacedIn(oParent.Start());
    u2_t* pPlace = pGroup + GROUP_HEADER + uSize;
    if ((pGroup[0] & UNSORTED) == 0 && !IsInOrder(pGroup, uSize, oNode.uKey)) {
        if (uSize < INSERT_UP_TO) {
            do {
                *pPlace = pPlace[-1];
                --pPlace;
            } while (pPlace > pGroup + GROUP_HEADER &&
                     m_oName.IsLess(oNode.uKey, m_oNode(pPlace[-1]).uKey));
        } else {
            Unsort(uParent, pGroup[0]);
        }
    }
    *pPlace = uId;
    if ((pGroup[0] & UNSORTED) != 0) {
        ++m_oUnsorted(pGroup[0] & ~UNSORTED).uPlaced;
    } else {
        ++pGroup[0];
    }
}

// Makes a group one that is not in order: what is there is its first run.
void Data_Base::Unsort(u2_t uParent, u2_t& uHeader) {
    m_oUnsorted.ReserveMore(1);
    const u2_t uEntry = static_cast<u2_t>(m_oUnsorted.Size());
    m_oUnsorted.Add(Data_Unsorted{uParent, uHeader, uHeader, {1, {0}}});
    uHeader = UNSORTED | uEntry;
}

void Data_Base::OpenTree(u2_t uId, u2_t uCapacity) {
    if (uId >= Node::CUT_LOOSE - 1) Msg::AssertionFailed("uParent + 1 < 0xFFFFFF");
    const u2_t uStart = AddGroup(uCapacity);
    Node& oNode = m_oNode(uId);
    oNode.SetType(Node::Tree);
    oNode.uWord2 = uStart;
    oNode.uWord3 = 0;
}

// Appends an empty group and returns its place.
u2_t Data_Base::AddGroup(u2_t uCapacity) {
    const std::size_t uStart = m_oSucc.Size();
    if (!Msg::IsInt32(static_cast<i3_t>(uStart + GROUP_HEADER + uCapacity))) {
        Msg::AssertionFailed("vok::Msg::IsInt32(x)");
    }
    if (m_oSucc.Capacity() == 0) m_oSucc.Reserve(FIRST_SUCC);
    u2_t* pGroup = m_oSucc.AddSpace(std::size_t{GROUP_HEADER} + uCapacity);
    pGroup[0] = 0;
    pGroup[1] = uCapacity;
    return static_cast<u2_t>(uStart);
}

// Gives a group room for at least one more. A first group is as large as the node already
// has successors: exact for every tree that is built before it is read.
void Data_Base::GrowGroup(Node& oParent) {
    const bool bFirst = oParent.Start() == NONE;
    const u2_t uOld = bFirst ? 0 : m_oSucc(oParent.Start() + 1);
    const u2_t uCapacity = bFirst ? oParent.Size() : std::max(oParent.Size(), 2 * uOld);
    const u2_t uStart = AddGroup(uCapacity);
    if (!bFirst) {
        const u2_t* pOld = m_oSucc.Beg() + oParent.Start();
        u2_t* pGroup = m_oSucc.Beg() + uStart;
        pGroup[0] = pOld[0];
        std::copy_n(pOld + GROUP_HEADER, PlacedIn(oParent.Start()), pGroup + GROUP_HEADER);
        m_uMoved += uOld;
        m_uDeadSucc += GROUP_HEADER + uOld;
    }
    oParent.uWord2 = uStart;
}

// Sorts the groups that were appended to out of order.
void Data_Base::SortGroups() {
    for (Data_Unsorted* p = m_oUnsorted.Beg(); p != m_oUnsorted.End(); ++p) {
        if (p->uParent != NONE) SortGroup(*p);
    }
    m_oUnsorted.Truncate(0);
}

// What came last is sorted and joins the runs, then all of them are merged. Each step is stable, so
// equal names keep the order of creation.
void Data_Base::SortGroup(Data_Unsorted& o) {
    const Node* pParent = o.uParent < m_oNode.Size() ? &m_oNode(o.uParent) : nullptr;
    const u2_t uEntry = static_cast<u2_t>(&o - m_oUnsorted.Beg());
    o.uParent = NONE;
    // Removed in between, or taken back: nothing to sort any more.
    if (pParent == nullptr || pParent->GetType() != Node::Tree || pParent->Start() == NONE) return;
    u2_t* pGroup = m_oSucc.Beg() + pParent->Start();
    if (pGroup[0] != (UNSORTED | uEntry)) return;
    const auto oIsLess = ByName();
    u2_t* pFirst = pGroup + GROUP_HEADER;
    std::stable_sort(pFirst + o.uKnown, pFirst + o.uPlaced, oIsLess);
    o.oRuns.auStart[o.oRuns.uCount++] = o.uKnown;
    m_uMoved += runs::MergeAll(o.oRuns, pFirst, o.uPlaced, oIsLess);
    pGroup[0] = o.uPlaced;
}

// The entry of the group of uId, with all of its successors in runs; null for a group in order.
const Data_Unsorted* Data_Base::UnsortedOf(u2_t uId) {
    PlaceNew();
    u2_t* pGroup = m_oSucc.Beg() + m_oNode(uId).Start();
    if ((pGroup[0] & UNSORTED) == 0) return nullptr;
    Data_Unsorted& o = m_oUnsorted(pGroup[0] & ~UNSORTED);
    if (o.uKnown == o.uPlaced) return &o;
    const auto oIsLess = ByName();
    u2_t* pFirst = pGroup + GROUP_HEADER;
    std::stable_sort(pFirst + o.uKnown, pFirst + o.uPlaced, oIsLess);
    m_uMoved += runs::Add(o.oRuns, pFirst, o.uKnown, o.uPlaced, oIsLess);
    o.uKnown = o.uPlaced;
    if (o.oRuns.uCount > 1) return &o;
    // In order after all.
    pGroup[0] = o.uPlaced;
    o.uParent = NONE;
    if (&o == m_oUnsorted.End() - 1) m_oUnsorted.Truncate(m_oUnsorted.Size() - 1);
    return nullptr;
}

u2_t Data_Base::CountNamed(u2_t uId, u2_t uKey) {
    u2_t uCount = 0;
    VisitNamed(uId, uKey, [&](const Group& o) {
        uCount += o.uSize;
        return true;
    });
    return uCount;
}

u2_t Data_Base::FindNamed(u2_t uId, u2_t uKey, u2_t uNth) {
    u2_t uFound = NONE;
    VisitNamed(uId, uKey, [&](const Group& o) {
        if (uNth < o.uSize) uFound = o.pId[uNth];
        const bool bMore = uNth >= o.uSize;
        uNth -= std::min(uNth, o.uSize);
        return bMore;
    });
    return uFound;
}

// Moves all groups together once abandoned ones fill half of the array.
void Data_Base::CompactGroups() {
    Arr<u2_t> oNew;
    oNew.Reserve(m_oSucc.Size() - m_uDeadSucc);
    for (std::size_t u = 0; u < m_oNode.Size(); ++u) {
        Node& oNode = m_oNode(u);
        if (oNode.GetType() != Node::Tree || oNode.Start() == NONE) continue;
        const u2_t* pGroup = m_oSucc.Beg() + oNode.Start();
        const u2_t uStart = static_cast<u2_t>(oNew.Size());
        oNew.Add(pGroup, GROUP_HEADER + pGroup[1]);
        oNode.uWord2 = uStart;
    }
    m_oSucc.Swap(oNew);
    m_uDeadSucc = 0;
}

Data_Base::Run Data_Base::FindRun(const Group& oGroup, u2_t uKey) const noexcept {
    const auto oKeyOf = [&](u2_t uNth) { return m_oNode(oGroup.pId[uNth]).uKey; };
    if (oGroup.uSize == 0) return {};
    u2_t uFirst = 0;
    if (oGroup.uSize <= SCAN_UP_TO) {
        while (uFirst < oGroup.uSize && oKeyOf(uFirst) != uKey) ++uFirst;
        u2_t uEnd = uFirst;
        while (uEnd < oGroup.uSize && oKeyOf(uEnd) == uKey) ++uEnd;
        return {uFirst, uEnd - uFirst};
    }
    // Long groups are mostly lists of one name.
    const bool bToEnd = oKeyOf(oGroup.uSize - 1) == uKey;
    if (bToEnd && oKeyOf(0) == uKey) return {0, oGroup.uSize};

    const auto oIsLess = [&](u2_t uId, u2_t uWanted) {
        return m_oName.IsLess(m_oNode(uId).uKey, uWanted);
    };
    const auto oIsGreater = [&](u2_t uWanted, u2_t uId) {
        return m_oName.IsLess(uWanted, m_oNode(uId).uKey);
    };
    const u2_t* pEnd = oGroup.pId + oGroup.uSize;
    const u2_t* pFirst = std::lower_bound(oGroup.pId, pEnd, uKey, oIsLess);
    if (pFirst == pEnd || m_oNode(*pFirst).uKey != uKey) return {};
    uFirst = static_cast<u2_t>(pFirst - oGroup.pId);
    if (bToEnd) return {uFirst, oGroup.uSize - uFirst};
    // Most names occur once or a few times: look twice as far each time before searching.
    u2_t uStep = 1;
    while (uStep < static_cast<u2_t>(pEnd - pFirst) && m_oNode(pFirst[uStep]).uKey == uKey) {
        uStep *= 2;
    }
    const u2_t* pLast = pFirst + std::min(uStep, static_cast<u2_t>(pEnd - pFirst));
    pLast = std::upper_bound(pFirst + uStep / 2, pLast, uKey, oIsGreater);
    return {uFirst, static_cast<u2_t>(pLast - pFirst)};
}

// The place of a node in its group, which is in order.
u2_t* Data_Base::PlaceOf(u2_t uId) noexcept {
    const Node& oParent = m_oNode(m_oNode(uId).Pred());
    u2_t* pFirst = m_oSucc.Beg() + oParent.Start() + GROUP_HEADER;
    const Run oRun = FindRun({pFirst, m_oSucc(oParent.Start())}, m_oNode(uId).uKey);
    pFirst += oRun.uFirst;
    u2_t* pEnd = pFirst + oRun.uSize;
    // Creation order is the order of ids unless nodes were moved or inserted.
    u2_t* pFound = std::lower_bound(pFirst, pEnd, uId);
    if (pFound != pEnd && *pFound == uId) return pFound;
    return std::find(pFirst, pEnd, uId);
}

u2_t Data_Base::PositionOf(u2_t uId) {
    const Group oGroup = SuccOf(m_oNode(uId).Pred());
    const Run oRun = FindRun(oGroup, m_oNode(uId).uKey);
    return static_cast<u2_t>(PlaceOf(uId) - (oGroup.pId + oRun.uFirst));
}

}  // namespace vok
