#include "vok/data/undo.h"

#include <algorithm>

namespace vok {

void Data_Undo::TakeBack() noexcept {
    for (std::size_t u = m_oChange.Size(); u-- > 0;) {
        const Change& o = m_oChange(u);
        if (o.uAttribute == NO_ATTRIBUTE) {
            RestoreNode(o);
        } else {
            RestoreAttribute(o);
        }
    }
    // New nodes hang below new ones now, or below nothing.
    for (std::size_t u = m_uNodes; u < b.m_oNode.Size(); ++u) {
        const Data_Node& o = b.m_oNode(u);
        if (o.GetType() == Data_Node::Tree) b.AddDeadGroup(o);
    }
    b.Rollback(m_uNodes);
    b.m_uIndexed = std::min(b.m_uIndexed, m_uNodes);
    b.m_oStr.Truncate(std::max<std::size_t>(m_uHeap, 1));
    b.m_uDead = m_uDead;
    b.m_uGarbage = m_uGarbage;
}

void Data_Undo::RestoreNode(const Change& o) noexcept {
    Data_Node& oNode = b.m_oNode(o.uId);
    if (oNode.GetType() != Data_Node::Tree) {
        oNode = o.oOld;
        return;
    }
    if (o.oOld.GetType() != Data_Node::Tree) {
        b.AddDeadGroup(oNode);
        oNode = o.oOld;
        return;
    }
    // Its group may have moved since, and have new successors among the old ones.
    if (oNode.Start() != Data_Node::NONE) DropNewFrom(oNode.Start());
    oNode.uWord3 = o.oOld.uWord3;
}

// Takes the new nodes out of a group; the others keep their order, and their runs.
void Data_Undo::DropNewFrom(u2_t uStart) noexcept {
    const auto oIsNew = [this](u2_t uId) { return uId >= m_uNodes; };
    u2_t* pGroup = b.m_oSucc.Beg() + uStart;
    u2_t* pFirst = pGroup + Data_Base::GROUP_HEADER;
    const auto oOldIn = [&](u2_t uEnd) {
        return uEnd - static_cast<u2_t>(std::count_if(pFirst, pFirst + uEnd, oIsNew));
    };
    const u2_t uPlaced = b.PlacedIn(uStart);
    const u2_t uLeft = oOldIn(uPlaced);
    if ((pGroup[0] & Data_Base::UNSORTED) == 0) {
        pGroup[0] = uLeft;
    } else {
        Data_Unsorted& oEntry = b.m_oUnsorted(pGroup[0] & ~Data_Base::UNSORTED);
        for (u2_t u = 0; u < oEntry.oRuns.uCount; ++u) {
            oEntry.oRuns.auStart[u] = oOldIn(oEntry.oRuns.auStart[u]);
        }
        oEntry.uKnown = oOldIn(oEntry.uKnown);
        oEntry.uPlaced = uLeft;
    }
    (void)std::remove_if(pFirst, pFirst + uPlaced, oIsNew);
}

void Data_Undo::RestoreAttribute(const Change& o) noexcept {
    b.RestoreValue(o.uId, o.uAttribute, o.oOld.uWord2);
}

}  // namespace vok
