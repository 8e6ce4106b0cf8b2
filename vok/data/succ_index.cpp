// SPDX-License-Identifier: MIT
// The order of successors: placing pending nodes in their groups, sorting, searching.
#include <algorithm>

#include "vok/base/keyed_sort.h"
#include "vok/data/store.h"
#include "vok/data/succ_shapes.h"

namespace vok {

namespace {

// Up to here a run is found by looking at every key of a group: one or two cache lines of
// node records, without a branch that is hard to predict.
constexpr u2_t SCAN_UP_TO = 24;
// From here on ordering names costs less than comparing them does.
constexpr std::size_t NODES_PER_NAME = 4;
// So many successors of one node are better sorted by ranks, where most names are theirs.
constexpr std::size_t LONG = 256;

// An order of nodes by the ranks of their names.
struct RankOrder {
    const Data_Node* pNode;
    const u2_t* pRank;

    [[nodiscard]] u2_t WeightOf(u2_t uId) const noexcept { return pRank[pNode[uId].uKey]; }
    [[nodiscard]] bool IsBelow(u2_t uRank, u2_t uId) const noexcept {
        return uRank < WeightOf(uId);
    }
    bool operator()(u2_t uA, u2_t uB) const noexcept { return WeightOf(uA) < WeightOf(uB); }
};

}  // namespace

// Puts one node in its parent's group; whether it came behind all that were there. Nothing is
// changed if memory runs out.
template <class Less>
inline bool Data_Base::PlaceOne(u2_t uId, const Less& oIsLess) {
    const u2_t uParent = m_oNode(uId).Pred();
    if (uParent >= m_oNode.Size()) return true;  // the root, or cut loose before it was placed
    Node& oParent = m_oNode(uParent);
    if (oParent.GetType() != Node::Tree) Msg::AssertionFailed("Data_IDX(uPred - 1) == uNth");
    const bool bFull = oParent.Start() == NONE ||
                       m_oGroup.Placed(oParent.Start()) == m_oGroup.Room(oParent.Start());
    if (bFull) GrowGroup(oParent);
    return m_oGroup.Place(oParent.Start(), uId, oIsLess);
}

void Data_Base::Place(u2_t uId) {
    PlaceOne(uId, ByName());
}

// Puts the next pending node in its group, and those behind it that have its parent; whether each
// came behind all that were there.
template <class Less>
inline bool Data_Base::PlaceSiblings(const Less& oIsLess) {
    const u2_t uParent = m_oNode(m_uIndexed).Pred();
    bool bInOrder = PlaceOne(m_uIndexed, oIsLess);
    ++m_uIndexed;
    if (uParent >= m_oNode.Size()) return bInOrder;
    const u2_t uStart = m_oNode(uParent).Start();
    while (m_uIndexed < m_oNode.Size() && m_oNode(m_uIndexed).Pred() == uParent &&
           m_oGroup.HasRoom(uStart)) {
        bInOrder &= m_oGroup.Place(uStart, m_uIndexed, oIsLess);
        ++m_uIndexed;
    }
    return bInOrder;
}

template <class Less>
inline bool Data_Base::PlaceNew(const Less& oIsLess) {
    bool bInOrder = true;
    while (m_uIndexed < m_oNode.Size()) bInOrder &= PlaceSiblings(oIsLess);
    return bInOrder;
}

void Data_Base::PlacePending() {
    PlaceNew(ByName());
    if (!m_oGroup.IsAllSorted()) m_oGroup.SortAll(ByName());
}

// Gathers the ranks of the next pending node and of those behind it that have its parent: how many
// they are, 0 if that is too many.
u2_t Data_Base::GatherFew(const u2_t* pRank, Few_Keys& oKeys) const noexcept {
    if (m_oName.Size() > Few_Keys::ABOVE) return 0;
    const Node* const pFirst = m_oNode.Beg() + m_uIndexed;
    const Node* p = pFirst;
    do {
        if (p - pFirst == Few_Keys::MOST) return 0;
        oKeys.Add(pRank[p->uKey]);
    } while (++p != m_oNode.End() && p->PredField() == pFirst->PredField());
    return static_cast<u2_t>(p - pFirst);
}

// Puts the next pending node and those behind it that have its parent in the group that they begin,
// if they are few or came in that order before. False, with nothing done, for all others.
inline bool Data_Base::PlaceRun(const u2_t* pRank, Data_Shapes& oShapes) {
    const u2_t uFirst = m_uIndexed;
    const Node* const pFirst = m_oNode.Beg() + uFirst;
    const u2_t uParent = pFirst->Pred();
    if (!Data_Shapes::IsRun(pFirst, m_oNode.End()) || !StartsGroup(uParent)) return false;
    Node& oParent = m_oNode(uParent);
    Few_Keys oKeys;
    const u2_t uAlike = oShapes.Match(pFirst, m_oNode.End());
    const u2_t uPlaced = uAlike != 0 ? uAlike : GatherFew(pRank, oKeys);
    if (uPlaced == 0 || uPlaced > oParent.Size()) return false;
    GrowGroup(oParent);
    u2_t* const pIds = m_oGroup.Ids(oParent.Start());
    if (uAlike != 0) {
        oShapes.Place(pFirst->uKey, uFirst, pIds);
    } else {
        oKeys.Sort(uFirst, pIds);
        oShapes.Note(pFirst, uFirst, uPlaced, pIds);
    }
    m_oGroup.SetPlaced(oParent.Start(), uPlaced);
    m_uIndexed += uPlaced;
    return true;
}

// Numbers are compared faster than names: with many nodes to each name it pays to order these
// first. Then there are many objects of few kinds, too.
void Data_Base::PlaceByRank() {
    const Arr<u2_t> oRank = m_oName.Ranks();
    const RankOrder oIsLess{m_oNode.Beg(), oRank.Beg()};
    Data_Shapes oShapes;
    while (m_uIndexed < m_oNode.Size()) {
        if (!PlaceRun(oRank.Beg(), oShapes)) PlaceSiblings(oIsLess);
    }
    if (!m_oGroup.IsAllSorted()) SortByRank(oIsLess);
}

// The groups that are not in order yet. Where there are not many more names than a group has ids
// they are counted, which takes little memory.
template <class Less>
void Data_Base::SortByRank(const Less& oIsLess) {
    const std::size_t uNames = m_oName.Size();
    const std::size_t uMost = m_oGroup.MostUnsorted();
    const auto oCounts = [uNames](std::size_t uSize) { return uNames <= 4 * uSize; };
    Arr<u2_t> oCount;
    Arr<u2_t> oRoom;
    if (oCounts(uMost)) {
        (void)oCount.AddSpace(uNames);
        (void)oRoom.AddSpace(uMost);
    }
    Arr<Keyed> oKeyed;  // of those that are not counted
    (void)oKeyed.AddSpace(2 * std::min(uMost, uNames / 4));
    m_oGroup.SortAll(oIsLess, [&](u2_t* pFirst, u2_t* pEnd) {
        const auto uSize = static_cast<std::size_t>(pEnd - pFirst);
        const auto oRankOf = [&](u2_t uId) { return oIsLess.WeightOf(uId); };
        if (oCounts(uSize)) {
            return SortByCounts(pFirst, pEnd, oRankOf, uNames, oCount.Beg(), oRoom.Beg());
        }
        for (std::size_t u = 0; u < uSize; ++u) oKeyed(u) = {oRankOf(pFirst[u]), pFirst[u]};
        SortByKey(oKeyed.Beg(), uSize, oKeyed.Beg() + uSize);
        for (std::size_t u = 0; u < uSize; ++u) pFirst[u] = oKeyed(u).uValue;
    });
}

// What is placed in order needs no ranks, however many names there are; sorting a long group does.
bool Data_Base::PlaceByName() {
    const bool bInOrder = PlaceNew(ByName());
    if (m_oGroup.IsAllSorted()) return bInOrder;
    const std::size_t uLong = m_oGroup.MostUnsorted();
    if (uLong < LONG || 2 * uLong < m_oName.Size()) {
        m_oGroup.SortAll(ByName());
        return false;
    }
    const Arr<u2_t> oRank = m_oName.Ranks();
    SortByRank(RankOrder{m_oNode.Beg(), oRank.Beg()});
    return false;
}

bool Data_Base::UpdateSucc() {
    const std::size_t uNew = m_oNode.Size() - m_uIndexed;
    const bool bByRank = !IsIndexed() && uNew > NODES_PER_NAME * m_oName.Size();
    const bool bInOrder = !bByRank && (IsIndexed() || PlaceByName());
    if (bByRank) PlaceByRank();
    if (m_oGroup.IsWorthCompacting()) CompactGroups();
    return bInOrder;
}

void Data_Base::CompactGroups() {
    m_oGroup.Compact([this](const auto& oMove) {
        for (Node* p = m_oNode.Beg(); p != m_oNode.End(); ++p) {
            if (p->GetType() == Node::Tree && p->Start() != NONE) oMove(p->uWord2);
        }
    });
}

void Data_Base::ReservePlaces(u2_t uParent, std::size_t uCount, std::size_t uGroups) {
    const Node& oParent = m_oNode(uParent);
    const bool bGrows = oParent.GetType() == Node::Tree;
    m_oGroup.Reserve(uCount, uGroups, bGrows ? oParent.Start() : NONE);
}

// Gives a group room for at least one more. A first group is as large as the node already
// has successors: exact for every tree that is built before it is read.
void Data_Base::GrowGroup(Node& oParent) {
    oParent.uWord2 = oParent.Start() == NONE ? m_oGroup.Add(oParent.Size())
                                             : m_oGroup.Grow(oParent.Start(), oParent.Size());
}

// The group of uId with all of its successors in runs; null for one that is in order.
const Data_Groups::Unsorted* Data_Base::RunsOf(u2_t uId) {
    PlaceNew(ByName());
    return m_oGroup.RunsOf(m_oNode(uId).Start(), ByName());
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
    u2_t* pFirst = m_oGroup.Ids(oParent.Start());
    const Run oRun = FindRun({pFirst, m_oGroup.Placed(oParent.Start())}, m_oNode(uId).uKey);
    pFirst += oRun.uFirst;
    u2_t* pEnd = pFirst + oRun.uSize;
    // Creation order is the order of ids unless nodes were moved or inserted.
    u2_t* pFound = std::lower_bound(pFirst, pEnd, uId);
    if (pFound != pEnd && *pFound == uId) return pFound;
    return std::find(pFirst, pEnd, uId);
}

u2_t Data_Base::LiveSuccs(u2_t uId) {
    const Group oGroup = SuccOf(uId);
    if (m_uDead == 0) return oGroup.uSize;
    return static_cast<u2_t>(std::count_if(oGroup.begin(), oGroup.end(), [this](u2_t u) {
        return m_oNode(u).GetType() != Node::Zombi;
    }));
}

u2_t Data_Base::Sibling(u2_t uId, int iStep) {
    const u2_t uPred = m_oNode(uId).Pred();
    if (uPred >= m_oNode.Size()) return NONE;
    const Group oGroup = SuccOf(uPred);
    // Behind the first one comes the end of all integers.
    auto uPlace = static_cast<std::size_t>(PlaceOf(uId) - oGroup.pId);
    do {
        uPlace += static_cast<std::size_t>(iStep);
    } while (uPlace < oGroup.uSize && m_oNode(oGroup.pId[uPlace]).GetType() == Node::Zombi);
    return uPlace < oGroup.uSize ? oGroup.pId[uPlace] : NONE;
}

u2_t Data_Base::PositionOf(u2_t uId) {
    const Group oGroup = SuccOf(m_oNode(uId).Pred());
    const Run oRun = FindRun(oGroup, m_oNode(uId).uKey);
    return static_cast<u2_t>(PlaceOf(uId) - (oGroup.pId + oRun.uFirst));
}

}  // namespace vok
