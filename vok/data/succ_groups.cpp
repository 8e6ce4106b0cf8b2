// SPDX-License-Identifier: MIT
#include "vok/data/succ_groups.h"

#include "vok/base/msg.h"

namespace vok {

void Data_Groups::MakeRoom(std::size_t uEnd) {
    if (uEnd > MOST) Msg::AssertionFailed("vok::Msg::IsInt32(x)");
    m_oWord.ReserveMore(uEnd - m_oWord.Size());
}

u2_t Data_Groups::Grow(u2_t uStart, u2_t uRoom) {
    const u2_t uOld = Room(uStart);
    const u2_t uNew = Add(std::max(uRoom, 2 * uOld));
    m_oWord(uNew) = m_oWord(uStart);
    if (!IsSorted(uStart)) m_oUnsorted(EntryOf(uStart)).uStart = uNew;
    std::copy_n(Ids(uStart), Placed(uStart), Ids(uNew));
    m_uMoved += uOld;
    m_uDead += HEADER + uOld;
    return uNew;
}

void Data_Groups::Abandon(u2_t uStart) noexcept {
    if (!IsSorted(uStart)) m_oUnsorted(EntryOf(uStart)).uStart = NONE;
    m_uDead += HEADER + Room(uStart);
}

void Data_Groups::InsertAt(u2_t uStart, u2_t* pPlace, u2_t uId) noexcept {
    u2_t* pEnd = Ids(uStart) + Placed(uStart);
    m_uMoved += static_cast<u3_t>(pEnd - pPlace);
    std::copy_backward(pPlace, pEnd, pEnd + 1);
    *pPlace = uId;
    ++m_oWord(uStart);
}

u2_t Data_Groups::RemoveAt(u2_t uStart, u2_t* pPlace) noexcept {
    u2_t* pGroup = m_oWord.Beg() + uStart;
    u2_t* pFirst = pGroup + HEADER;
    u2_t* pEnd = pFirst + pGroup[0];
    if (pPlace - pFirst < pEnd - pPlace) {
        // The shorter side moves up, and the group begins a word later.
        m_uMoved += static_cast<u3_t>(pPlace - pFirst);
        std::copy_backward(pGroup, pPlace, pPlace + 1);
        ++pGroup;
        ++uStart;
        --pGroup[1];
        ++m_uDead;
    } else {
        m_uMoved += static_cast<u3_t>(pEnd - pPlace);
        std::copy(pPlace + 1, pEnd, pPlace);
    }
    --pGroup[0];
    return uStart;
}

void Data_Groups::DropFrom(u2_t uStart, u2_t uFirst) noexcept {
    const auto oIsNew = [uFirst](u2_t uId) { return uId >= uFirst; };
    u2_t* pFirst = Ids(uStart);
    const auto oOldIn = [&](u2_t uEnd) {
        return uEnd - static_cast<u2_t>(std::count_if(pFirst, pFirst + uEnd, oIsNew));
    };
    const u2_t uPlaced = Placed(uStart);
    const u2_t uLeft = oOldIn(uPlaced);
    if (IsSorted(uStart)) {
        m_oWord(uStart) = uLeft;
    } else {
        Unsorted& o = m_oUnsorted(EntryOf(uStart));
        for (u2_t u = 0; u < o.oRuns.uCount; ++u) {
            o.oRuns.auStart[u] = oOldIn(o.oRuns.auStart[u]);
        }
        o.uKnown = oOldIn(o.uKnown);
        o.uPlaced = uLeft;
    }
    (void)std::remove_if(pFirst, pFirst + uPlaced, oIsNew);
}

// Adds an id in no order. Of a group that was in order what is there is the first run.
void Data_Groups::AddUnsorted(u2_t uStart, u2_t uId) {
    if (IsSorted(uStart)) {
        const u2_t uEntry = static_cast<u2_t>(m_oUnsorted.Size());
        u2_t& uHeader = m_oWord(uStart);
        m_oUnsorted.Add(Unsorted{uStart, uHeader, uHeader, {1, {0}}});
        uHeader = UNSORTED | uEntry;
    }
    Ids(uStart)[m_oUnsorted(EntryOf(uStart)).uPlaced++] = uId;
}

void Data_Groups::Reserve(std::size_t uIds, std::size_t uGroups, u2_t uGrowing) {
    std::size_t uWords = uIds + HEADER * (uGroups + 1) + 1;
    if (uGrowing != NONE) uWords += 2 * std::size_t{Room(uGrowing)};
    (void)Msg::ToInt32(m_oWord.Size() + uWords);
    m_oWord.ReserveMore(uWords);
    m_oUnsorted.ReserveMore(1);
}

bool Data_Groups::Check(std::size_t uLiving) const noexcept {
    for (std::size_t u = 0; u < m_oUnsorted.Size(); ++u) {
        const Unsorted& o = m_oUnsorted(u);
        if (o.uStart == NONE) continue;
        const bool bHere = o.uStart < m_oWord.Size() && m_oWord(o.uStart) == (UNSORTED | u);
        if (!bHere || o.uKnown > o.uPlaced || o.uPlaced > Room(o.uStart)) return false;
        for (u2_t uRun = 0; uRun + 1 < o.oRuns.uCount; ++uRun) {
            if (o.oRuns.auStart[uRun] > o.oRuns.End(uRun, o.uKnown)) return false;
        }
    }
    return uLiving + m_uDead == m_oWord.Size();
}

}  // namespace vok
