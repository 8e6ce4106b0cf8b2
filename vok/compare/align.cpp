// SPDX-License-Identifier: MIT
#include "vok/compare/align.h"

#include <algorithm>
#include <utility>

namespace vok {

namespace {

// After so many edits these diagonals have been reached: from -uEdits to uEdits, and one more on
// either side that never is.
constexpr std::size_t WIDTH = 2 * std::size_t{Data_Align::MOST_EDITS} + 3;
constexpr i3_t NOWHERE = -1;

[[nodiscard]] std::size_t SlotOf(u2_t uEdits, i3_t iDiagonal) noexcept {
    return uEdits * WIDTH + static_cast<std::size_t>(iDiagonal + i3_t{Data_Align::MOST_EDITS} + 1);
}

// How one more edit gets to a diagonal.
struct Edit {
    i3_t iX;          // where it is then on side A; NOWHERE if there is no way
    bool bFromAbove;  // over an element of side B that A lacks
};
// pFront: what the edits before have reached, at the diagonal.
[[nodiscard]] Edit Choose(const i3_t* pFront, i3_t iDiagonal, i3_t iSizeA, i3_t iSizeB) noexcept {
    // A point on a diagonal d has the place x on side A and x - d on side B.
    const i3_t iLeft = pFront[-1];
    const i3_t iAbove = pFront[1];
    const i3_t iFromLeft = iLeft != NOWHERE && iLeft < iSizeA ? iLeft + 1 : NOWHERE;
    const i3_t iFromAbove =
        iAbove != NOWHERE && iAbove - (iDiagonal + 1) < iSizeB ? iAbove : NOWHERE;
    return {std::max(iFromLeft, iFromAbove), iFromAbove >= iFromLeft};
}

// Those of a sorted list whose token is there once.
void KeepUnique(Arr<Data_Align::Place>& o) {
    std::size_t uKept = 0;
    for (std::size_t u = 0, uNext; u < o.Size(); u = uNext) {
        for (uNext = u + 1; uNext < o.Size() && o(uNext).uToken == o(u).uToken;) ++uNext;
        if (uNext == u + 1) o(uKept++) = o(u);
    }
    o.Truncate(uKept);
}

}  // namespace

void Data_Align::Run(const Arr<u3_t>& oA, const Arr<u3_t>& oB, Arr<u2_t>& oMate) {
    m_pA = oA.Beg();
    m_pB = oB.Beg();
    m_pMate = &oMate;
    std::fill(oMate.Beg(), oMate.End(), NONE);
    m_oOpen.Resize(0);
    m_oOpen.Add(Range{0, static_cast<u2_t>(oA.Size()), 0, static_cast<u2_t>(oB.Size()), 0});
    while (m_oOpen.Size() != 0) {
        const Range r = m_oOpen.Last();
        m_oOpen.Pop();
        RunRange(r);
    }
}

void Data_Align::RunRange(Range r) {
    while (r.uA != r.uEndA && r.uB != r.uEndB && m_pA[r.uA] == m_pB[r.uB]) Pair(r.uA++, r.uB++);
    while (r.uA != r.uEndA && r.uB != r.uEndB && m_pA[r.uEndA - 1] == m_pB[r.uEndB - 1]) {
        Pair(--r.uEndA, --r.uEndB);
    }
    if (r.uA == r.uEndA || r.uB == r.uEndB || FollowEdits(r, false)) return;
    if (r.uLevel < MOST_LEVELS && SplitAtUnique(r)) return;
    while (r.uA != r.uEndA && r.uB != r.uEndB) FollowEdits(r, true);
}

bool Data_Align::FollowEdits(Range& r, bool bForce) {
    const i3_t iSizeA = r.uEndA - r.uA;
    const i3_t iSizeB = r.uEndB - r.uB;
    m_oFront.Resize((MOST_EDITS + 1) * WIDTH);
    i3_t iBest = 0;
    for (u2_t uEdits = 0; uEdits <= MOST_EDITS; ++uEdits) {
        const i3_t iEdits = uEdits;
        i3_t* const pFront = m_oFront.Beg() + SlotOf(uEdits, 0);
        std::fill(m_oFront.Beg() + uEdits * WIDTH, m_oFront.Beg() + (uEdits + 1) * WIDTH, NOWHERE);
        i3_t iFurthest = NOWHERE;
        for (i3_t iDiagonal = -iEdits; iDiagonal <= iEdits; iDiagonal += 2) {
            i3_t iX = 0;
            if (uEdits != 0) {
                const i3_t* pBefore = m_oFront.Beg() + SlotOf(uEdits - 1, iDiagonal);
                iX = Choose(pBefore, iDiagonal, iSizeA, iSizeB).iX;
            }
            if (iX == NOWHERE) continue;
            while (iX < iSizeA && iX - iDiagonal < iSizeB &&
                   m_pA[r.uA + iX] == m_pB[r.uB + iX - iDiagonal]) {
                ++iX;
            }
            pFront[iDiagonal] = iX;
            if (iX == iSizeA && iX - iDiagonal == iSizeB) {
                Trace(r, uEdits, iDiagonal);
                r.uA = r.uEndA;
                r.uB = r.uEndB;
                return true;
            }
            if (2 * iX - iDiagonal > iFurthest) {
                iFurthest = 2 * iX - iDiagonal;
                iBest = iDiagonal;
            }
        }
    }
    if (!bForce) return false;
    const i3_t iX = m_oFront(SlotOf(MOST_EDITS, iBest));
    Trace(r, MOST_EDITS, iBest);
    r.uA += static_cast<u2_t>(iX);
    r.uB += static_cast<u2_t>(iX - iBest);
    return true;
}

// From where it ended back to the beginning: what was the same on the way is paired.
void Data_Align::Trace(const Range& r, u2_t uEdits, i3_t iDiagonal) {
    const i3_t iSizeA = r.uEndA - r.uA;
    const i3_t iSizeB = r.uEndB - r.uB;
    for (i3_t iX = m_oFront(SlotOf(uEdits, iDiagonal));; --uEdits) {
        Edit oEdit{0, false};
        if (uEdits != 0) {
            const i3_t* pBefore = m_oFront.Beg() + SlotOf(uEdits - 1, iDiagonal);
            oEdit = Choose(pBefore, iDiagonal, iSizeA, iSizeB);
        }
        for (; iX > oEdit.iX; --iX) {
            Pair(static_cast<u2_t>(r.uA + iX - 1), static_cast<u2_t>(r.uB + iX - iDiagonal - 1));
        }
        if (uEdits == 0) return;
        iX -= !oEdit.bFromAbove;
        iDiagonal += oEdit.bFromAbove ? 1 : -1;
    }
}

bool Data_Align::SplitAtUnique(const Range& r) {
    m_oPlaceA.Resize(0);
    m_oPlaceB.Resize(0);
    for (u2_t u = r.uA; u != r.uEndA; ++u) m_oPlaceA.Add(Place{m_pA[u], u});
    for (u2_t u = r.uB; u != r.uEndB; ++u) m_oPlaceB.Add(Place{m_pB[u], u});
    std::sort(m_oPlaceA.Beg(), m_oPlaceA.End());
    std::sort(m_oPlaceB.Beg(), m_oPlaceB.End());
    KeepUnique(m_oPlaceA);
    KeepUnique(m_oPlaceB);
    Arr<Match> oMatch;
    for (std::size_t uA = 0, uB = 0; uA < m_oPlaceA.Size() && uB < m_oPlaceB.Size();) {
        const u3_t uTokenA = m_oPlaceA(uA).uToken;
        const u3_t uTokenB = m_oPlaceB(uB).uToken;
        if (uTokenA == uTokenB) oMatch.Add(Match{m_oPlaceA(uA).uPos, m_oPlaceB(uB).uPos});
        uA += uTokenA <= uTokenB;
        uB += uTokenB <= uTokenA;
    }
    if (oMatch.Size() == 0) return false;
    std::sort(oMatch.Beg(), oMatch.End(),
              [](const Match& x, const Match& y) { return x.uA < y.uA; });
    KeepAscending(oMatch);
    Range oBefore{r.uA, r.uEndA, r.uB, r.uEndB, r.uLevel + 1};
    for (const Match& o : std::as_const(oMatch)) {
        Pair(o.uA, o.uB);
        oBefore.uEndA = o.uA;
        oBefore.uEndB = o.uB;
        m_oOpen.Add(oBefore);
        oBefore.uA = o.uA + 1;
        oBefore.uB = o.uB + 1;
    }
    oBefore.uEndA = r.uEndA;
    oBefore.uEndB = r.uEndB;
    m_oOpen.Add(oBefore);
    return true;
}

void Data_Align::KeepAscending(Arr<Match>& oMatch) {
    // The last match of the ascending sequences found so far, the best one of each length, and
    // which match stands before each.
    Arr<u2_t> oLast;
    Arr<u2_t> oBefore;
    oBefore.Resize(oMatch.Size());
    for (u2_t u = 0; u < oMatch.Size(); ++u) {
        u2_t* p = std::lower_bound(oLast.Beg(), oLast.End(), oMatch(u).uB,
                                   [&oMatch](u2_t uNth, u2_t uB) { return oMatch(uNth).uB < uB; });
        oBefore(u) = p != oLast.Beg() ? p[-1] : NONE;
        if (p == oLast.End()) {
            oLast.Add(u);
        } else {
            *p = u;
        }
    }
    if (oLast.Size() == 0) return;
    const std::size_t uKept = oLast.Size();
    std::size_t uPlace = uKept;
    for (u2_t u = oLast.Last(); u != NONE; u = oBefore(u)) oLast(--uPlace) = u;
    for (std::size_t u = 0; u < uKept; ++u) oMatch(u) = oMatch(oLast(u));
    oMatch.Truncate(uKept);
}

}  // namespace vok
