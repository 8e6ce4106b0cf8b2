// SPDX-License-Identifier: MIT
#include "vok/compare/aligned_walk.h"

#include <algorithm>
#include <utility>

namespace vok {

Data_AlignedWalk::Data_AlignedWalk(Data_Side& oA, Data_Side& oB, const Data_DiffOptions& oOptions,
                                   Data_FoundSink* pSink)
    : Data_ComparePairs(oA, oB, pSink, oOptions.m_dDelta), m_oMatch(oA, oB, oOptions) {}

u3_t Data_AlignedWalk::Run() {
    if (a.IsIgnored(a.m_uTop) || b.IsIgnored(b.m_uTop)) return 0;
    CompareNames();
    if (!m_bStopped && ComparePair(a.m_uTop, b.m_uTop)) Open(a.m_uTop, b.m_uTop);
    while (!m_bStopped && m_oFrame.Size() != 0) Step();
    CompareLinks();
    return m_uFound;
}

void Data_AlignedWalk::Step() {
    Frame& f = m_oFrame.Last();
    if (f.uNext == m_oItem.Size()) {
        m_oItem.Truncate(f.uFirst);
        m_oFrame.Pop();
        return;
    }
    const Item o = m_oItem(f.uNext++);
    if (o.bFirst) f.uTo = 0;
    if (o.uA != NONE && a.IsIgnored(o.uA)) {
        ++f.uTo;
        return;
    }
    if (o.uB == NONE) return Report({Data_Difference::OnlyInA, o.uA, NONE});
    const u2_t uTo = f.uTo++;
    if (o.uA == NONE || o.bMoved) {
        const auto eWhat = o.bMoved ? Data_Difference::Moved : Data_Difference::OnlyInB;
        Report({eWhat, o.uA, o.uB, nullptr, f.uParentA, uTo});
    }
    if (o.uA != NONE && !m_bStopped && ComparePair(o.uA, o.uB)) Open(o.uA, o.uB);
}

// Puts the successors of a pair beside each other, run by run.
void Data_AlignedWalk::Open(u2_t uA, u2_t uB) {
    const Data_Base::Group oA = a.m_oBase.SuccOf(uA);
    const Data_Base::Group oB = b.m_oBase.SuccOf(uB);
    if (oA.uSize + u3_t{oB.uSize} == 0) return;
    m_oFrame.Add(Frame{uA, m_oItem.Size(), m_oItem.Size(), 0});
    for (u2_t uPosA = 0, uPosB = 0; uPosA != oA.uSize || uPosB != oB.uSize;) {
        const u2_t uKeyA = uPosA != oA.uSize ? a.Node(oA.pId[uPosA]).uKey : NONE;
        const u2_t uKeyB = uPosB != oB.uSize ? b.Node(oB.pId[uPosB]).uKey : NONE;
        const int iOrder = uKeyA == NONE ? 1 : uKeyB == NONE ? -1 : CompareKeys(uKeyA, uKeyB);
        m_oRunA.Resize(0);
        m_oRunB.Resize(0);
        if (iOrder <= 0) {
            for (; uPosA != oA.uSize && a.Node(oA.pId[uPosA]).uKey == uKeyA; ++uPosA) {
                if (a.IsLive(oA.pId[uPosA])) m_oRunA.Add(oA.pId[uPosA]);
            }
        }
        if (iOrder >= 0) {
            for (; uPosB != oB.uSize && b.Node(oB.pId[uPosB]).uKey == uKeyB; ++uPosB) {
                if (b.IsSeen(oB.pId[uPosB])) m_oRunB.Add(oB.pId[uPosB]);
            }
        }
        const std::size_t uFirst = m_oItem.Size();
        AddRun(m_oRunA, m_oRunB);
        if (uFirst != m_oItem.Size()) m_oItem(uFirst).bFirst = true;
    }
}

void Data_AlignedWalk::AddRun(const Arr<u2_t>& oA, const Arr<u2_t>& oB) {
    if (oA.Size() == 0 || oB.Size() == 0) {
        for (const u2_t uA : oA) AddItem(uA, NONE);
        for (const u2_t uB : oB) AddItem(NONE, uB);
        return;
    }
    m_oSeenA.Resize(0);
    for (const u2_t uA : oA) {
        if (!a.IsIgnored(uA)) m_oSeenA.Add(uA);
    }
    m_oMatch.Run(m_oSeenA, oB, m_oMate, m_oMoved);
    m_oMateOfB.Resize(oB.Size());
    std::fill(m_oMateOfB.Beg(), m_oMateOfB.End(), NONE);
    for (u2_t u = 0; u < m_oMate.Size(); ++u) {
        if (m_oMate(u) != NONE) m_oMateOfB(m_oMate(u)) = u;
    }
    u2_t uNext = 0;  // of oA
    u2_t uSeen = 0;  // of those that are seen
    // What is only in A, up to one that stays in its place.
    const auto oPass = [&](u2_t uUpTo) {
        for (; uSeen < uUpTo || (uNext < oA.Size() && a.IsIgnored(oA(uNext))); ++uNext) {
            const bool bIgnored = a.IsIgnored(oA(uNext));
            if (bIgnored || m_oMate(uSeen) == NONE) AddItem(oA(uNext), NONE);
            uSeen += !bIgnored;
        }
    };
    for (u2_t uB = 0; uB < oB.Size(); ++uB) {
        const u2_t uMate = m_oMateOfB(uB);
        if (uMate == NONE) {
            AddItem(NONE, oB(uB));
        } else if (m_oMoved(uMate)) {
            AddItem(m_oSeenA(uMate), oB(uB), true);
        } else {
            oPass(uMate);
            AddItem(m_oSeenA(uMate), oB(uB));
            ++uNext;
            ++uSeen;
        }
    }
    oPass(static_cast<u2_t>(m_oSeenA.Size()));
}

}  // namespace vok
