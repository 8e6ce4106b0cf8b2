// SPDX-License-Identifier: MIT
#include "vok/compare/plan_merger.h"

#include <algorithm>
#include <cstring>

#include "vok/compare/patch_form.h"

namespace vok {

Data_PlanMerger::Data_PlanMerger(Data_Side& oBase, Data_Side& oPatches, Data_PatchPlan& oA,
                                 Data_PatchPlan& oB, const Data_DiffOptions& oOptions,
                                 Data_MergePick ePick, const Visit& oVisit)
    : m_oBase(oBase),
      m_oPatches(oPatches),
      a(oA, oBase.m_oBase.m_oNode.Size()),
      b(oB, oBase.m_oBase.m_oNode.Size()),
      m_ePick(ePick),
      m_oVisit(oVisit) {
    for (const std::string& s : oOptions.m_asKey) m_oKeys.emplace_back(s);
    m_oTexts.Start();
}

u3_t Data_PlanMerger::Run(Data_PatchPlan& oPlan) {
    m_pPlan = &oPlan;
    DropCovered(a, b);
    DropCovered(b, a);
    MergeNames();
    MergeChange(m_oBase.m_uTop);
    MergeChanges(a);
    MergeChanges(b);
    MergeRuns();
    return m_uConflicts;
}

// ---- what is done below what the other side takes away ----------------------------

void Data_PlanMerger::DropCovered(Half& oInner, Half& oOuter) {
    for (const Change& o : oInner.oPlan.Changes()) {
        if (o.uId == m_oBase.m_uTop || ChangeIn(oInner, o.uId) == nullptr) continue;
        const u2_t uCover = CoverOf(oOuter, m_oBase.Node(o.uId).Pred());
        if (uCover == NONE || oOuter.oDropped.Find(uCover)) continue;
        if (o.bRemoved) {
            oInner.oDropped(o.uId) = true;  // it is gone either way
        } else {
            DropCovered(oInner, oOuter, uCover, o.uId);
        }
    }
    for (const Arrival& o : oInner.oPlan.Arrivals()) {
        const u2_t uCover = CoverOf(oOuter, o.uParent);
        if (uCover == NONE || oOuter.oDropped.Find(uCover)) continue;
        DropCovered(oInner, oOuter, uCover, NONE);
    }
}

void Data_PlanMerger::DropCovered(Half& oInner, Half& oOuter, u2_t uCover, u2_t uChanged) {
    if (!oOuter.oTold.Find(uCover)) {
        oOuter.oTold(uCover) = true;
        const Change& oChange = *oOuter.oPlan.ChangeOf(uCover);
        const auto eDid = oChange.bRemoved ? Data_Conflict::Removed : Data_Conflict::Changed;
        if (&oInner == &a) {
            Tell(uCover, Data_Conflict::Below, NONE, eDid, oChange.uContent);
        } else {
            Tell(uCover, eDid, oChange.uContent, Data_Conflict::Below, NONE);
        }
    }
    if (PicksB() == (&oInner == &b)) {
        oOuter.oDropped(uCover) = true;
    } else if (uChanged != NONE) {
        oInner.oDropped(uChanged) = true;
    }
}

u2_t Data_PlanMerger::CoverOf(Half& o, u2_t uId) {
    constexpr u2_t UNKNOWN = 0;
    constexpr u2_t CLEAN = 1;
    u2_t uUp = uId;
    u2_t uFound = UNKNOWN;
    while ((uFound = o.oCover.Find(uUp)) == UNKNOWN) {
        const Change* p = o.oPlan.ChangeOf(uUp);
        if (p != nullptr && (p->bRemoved || p->uContent != NONE)) uFound = uUp + 2;
        if (uFound == UNKNOWN && uUp == m_oBase.m_uTop) uFound = CLEAN;
        if (uFound != UNKNOWN) {
            o.oCover(uUp) = uFound;
            break;
        }
        uUp = m_oBase.Node(uUp).Pred();
    }
    for (u2_t u = uId; u != uUp; u = m_oBase.Node(u).Pred()) o.oCover(u) = uFound;
    return uFound != CLEAN ? uFound - 2 : NONE;
}

bool Data_PlanMerger::IsCovered(Half& oOuter, u2_t uId) {
    const u2_t uCover = CoverOf(oOuter, uId);
    return uCover != NONE && !oOuter.oDropped.Find(uCover);
}

const Data_PatchPlan::Change* Data_PlanMerger::ChangeIn(const Half& o, u2_t uId) noexcept {
    const Change* p = o.oPlan.ChangeOf(uId);
    if (p == nullptr || o.oDropped.Find(uId)) return nullptr;
    return p->bLeaves || p->uContent != NONE || p->uAttributes != 0 ? p : nullptr;
}

// ---- one node -----------------------------------------------------------------------

void Data_PlanMerger::MergeChanges(const Half& o) {
    for (const Change& oChange : o.oPlan.Changes()) {
        if (m_pPlan->ChangeOf(oChange.uId) == nullptr) MergeChange(oChange.uId);
    }
}

void Data_PlanMerger::MergeChange(u2_t uId) {
    const Change* pA = ChangeIn(a, uId);
    const Change* pB = ChangeIn(b, uId);
    const bool bTop = uId == m_oBase.m_uTop;
    if (pA == nullptr && pB == nullptr && !bTop) return;
    if (pA != nullptr && pB != nullptr && pA->bRemoved != pB->bRemoved) {
        const auto oDid = [](const Change& o) {
            return o.bRemoved                                              ? Data_Conflict::Removed
                   : o.bLeaves && o.uContent == NONE && o.uAttributes == 0 ? Data_Conflict::Moved
                                                                           : Data_Conflict::Changed;
        };
        Tell(uId, oDid(*pA), pA->uContent, oDid(*pB), pB->uContent);
        if (PicksB()) {
            a.oDropped(uId) = true;
            pA = nullptr;
        } else {
            b.oDropped(uId) = true;
            pB = nullptr;
        }
    }
    Change oMerged{uId, NONE, NONE, 0, 0, false, false};
    for (const Change* p : {pB, pA}) {
        if (p == nullptr) continue;
        oMerged.uPatch = p->uPatch;
        if (p->uContent != NONE) oMerged.uContent = p->uContent;
        oMerged.bLeaves = oMerged.bLeaves || p->bLeaves;
        oMerged.bRemoved = oMerged.bRemoved || p->bRemoved;
    }
    if (pA != nullptr && pB != nullptr && pA->uContent != NONE && pB->uContent != NONE &&
        !Unite(pA->uContent, pB->uContent)) {
        Tell(uId, Data_Conflict::Changed, pA->uContent, Data_Conflict::Changed, pB->uContent);
        if (PicksB()) oMerged.uContent = pB->uContent;
    }
    MergeAttributes(uId, pA, pB, oMerged);
    m_pPlan->m_oChange.Add(oMerged);
    m_pPlan->m_oChangeOf(uId) = static_cast<u2_t>(m_pPlan->m_oChange.Size());
}

void Data_PlanMerger::MergeAttributes(u2_t uId, const Change* pA, const Change* pB,
                                      Change& oMerged) {
    Data_PatchPlan::AttributeRange oA{nullptr, nullptr};
    Data_PatchPlan::AttributeRange oB{nullptr, nullptr};
    if (pA != nullptr) oA = a.oPlan.AttributesOf(uId);
    if (pB != nullptr) oB = b.oPlan.AttributesOf(uId);
    oMerged.uFirstAttribute = static_cast<u2_t>(m_pPlan->m_oAttribute.Size());
    while (oA.pBeg != oA.pEnd || oB.pBeg != oB.pEnd) {
        const int iOrder = oA.pBeg == oA.pEnd   ? 1
                           : oB.pBeg == oB.pEnd ? -1
                                                : std::strcmp(oA.pBeg->sName, oB.pBeg->sName);
        const char* sA = iOrder <= 0 ? oA.pBeg->sNew : nullptr;
        const char* sB = iOrder >= 0 ? oB.pBeg->sNew : nullptr;
        Attribute oTaken = iOrder <= 0 ? *oA.pBeg : *oB.pBeg;
        const bool bSame = sA == nullptr || sB == nullptr ? sA == sB : std::strcmp(sA, sB) == 0;
        if (iOrder == 0 && !bSame) {
            const Data_Base& t = m_oBase.m_oBase;
            const u2_t uKey = t.m_oAtt.Has(uId) ? t.m_oAtt.Names().Find(oTaken.sName) : Hash::NONE;
            TellText(uId, oTaken.sName, uKey != Hash::NONE ? t.AttributeOf(uId, uKey) : nullptr, sA,
                     sB);
            if (PicksB()) oTaken = *oB.pBeg;
        }
        m_pPlan->m_oAttribute.Add(oTaken);
        ++oMerged.uAttributes;
        oA.pBeg += iOrder <= 0;
        oB.pBeg += iOrder >= 0;
    }
}

void Data_PlanMerger::MergeNames() {
    const char* sA = a.oPlan.NewName();
    const char* sB = b.oPlan.NewName();
    m_pPlan->m_sNewName = sA != nullptr ? sA : sB;
    if (sA == nullptr || sB == nullptr || std::strcmp(sA, sB) == 0) return;
    TellText(m_oBase.m_uTop, nullptr, m_oBase.m_oBase.ShownName(m_oBase.m_uTop), sA, sB);
    if (PicksB()) m_pPlan->m_sNewName = sB;
}

// ---- runs -----------------------------------------------------------------------------

void Data_PlanMerger::MergeRuns() {
    const Arr<Arrival>& oA = a.oPlan.Arrivals();
    const Arr<Arrival>& oB = b.oPlan.Arrivals();
    const auto oEnd = [](const Arr<Arrival>& o, std::size_t u, const Arrival& oFirst) {
        while (u < o.Size() && o(u).uParent == oFirst.uParent && o(u).sName == oFirst.sName) ++u;
        return u;
    };
    for (std::size_t uA = 0, uB = 0; uA < oA.Size() || uB < oB.Size(); uA = a.uEnd, uB = b.uEnd) {
        const bool bA =
            uB == oB.Size() ||
            (uA != oA.Size() && (oA(uA).uParent != oB(uB).uParent ? oA(uA).uParent < oB(uB).uParent
                                                                  : oA(uA).sName <= oB(uB).sName));
        const Arrival oFirst = bA ? oA(uA) : oB(uB);
        a.uFirst = uA;
        a.uEnd = oEnd(oA, uA, oFirst);
        b.uFirst = uB;
        b.uEnd = oEnd(oB, uB, oFirst);
        MergeRun(oFirst.uParent, oFirst.sName);
    }
    std::sort(m_pPlan->m_oArrival.Beg(), m_pPlan->m_oArrival.End());
}

void Data_PlanMerger::MergeRun(u2_t uParent, std::string_view sName) {
    const Data_PatchPlan::LiveRun oRun = a.oPlan.FindRun(uParent, sName);
    FindSlots(a, oRun);
    FindSlots(b, oRun);
    const bool bCoveredA = IsCovered(b, uParent);
    const bool bCoveredB = IsCovered(a, uParent);
    for (std::size_t u = 0; u < a.Size(); ++u) {
        const u2_t uMoved = a.At(u).uMoved;
        a.oLeftOut(u) = bCoveredA || (uMoved != NONE && ChangeIn(a, uMoved) == nullptr);
    }
    for (std::size_t u = 0; u < b.Size(); ++u) {
        const u2_t uMoved = b.At(u).uMoved;
        b.oLeftOut(u) = bCoveredB || (uMoved != NONE && ChangeIn(b, uMoved) == nullptr);
    }
    if (a.Size() != 0 && b.Size() != 0) {
        SettleMoves();
        if (!m_oKeys.empty()) SettleKeys();
        SettleSlots();
    }
    Arrive(oRun);
}

// How many nodes of the base there are up to the one that each arrival comes behind.
void Data_PlanMerger::FindSlots(Half& o, const Data_PatchPlan::LiveRun& oRun) {
    o.oSlot.Resize(0);
    o.oLeftOut.Resize(0);
    o.oLeftOut.Resize(o.Size());
    u2_t uBase = 0;
    u2_t uKept = 0;
    for (u2_t u = 0; u < o.Size(); ++u) {
        for (; uBase < oRun.uSize && uKept + u < o.At(u).uTo; ++uBase) {
            const Change* p = o.oPlan.ChangeOf(oRun.pId[uBase]);
            uKept += p == nullptr || !p->bLeaves;
        }
        o.oSlot.Add(uBase);
    }
}

namespace {

struct Numbered {
    u2_t uNumber;
    u2_t uNth;

    friend bool operator<(const Numbered& x, const Numbered& y) noexcept {
        return x.uNumber != y.uNumber ? x.uNumber < y.uNumber : x.uNth < y.uNth;
    }
};

// Calls oPair with the places of those that have the same number on both sides, the first with the
// first.
template <class Pair>
void ForEachPair(Arr<Numbered>& oA, Arr<Numbered>& oB, const Pair& oPair) {
    std::sort(oA.Beg(), oA.End());
    std::sort(oB.Beg(), oB.End());
    for (std::size_t uA = 0, uB = 0; uA < oA.Size() && uB < oB.Size();) {
        const Numbered x = oA(uA);
        const Numbered y = oB(uB);
        if (x.uNumber == y.uNumber) oPair(x.uNth, y.uNth);
        uA += x.uNumber <= y.uNumber;
        uB += y.uNumber <= x.uNumber;
    }
}

}  // namespace

// A node moves once.
void Data_PlanMerger::SettleMoves() {
    Arr<Numbered> oA;
    Arr<Numbered> oB;
    for (u2_t u = 0; u < a.Size(); ++u) {
        if (!a.oLeftOut(u) && a.At(u).uMoved != NONE) oA.Add({a.At(u).uMoved, u});
    }
    for (u2_t u = 0; u < b.Size(); ++u) {
        if (!b.oLeftOut(u) && b.At(u).uMoved != NONE) oB.Add({b.At(u).uMoved, u});
    }
    ForEachPair(oA, oB, [this](u2_t uA, u2_t uB) {
        const bool bSame = a.oSlot(uA) == b.oSlot(uB);
        if (!bSame) {
            Tell(a.At(uA).uMoved, Data_Conflict::Moved, NONE, Data_Conflict::Moved, NONE);
        }
        (PicksB() && !bSame ? a.oLeftOut(uA) : b.oLeftOut(uB)) = true;
    });
}

// A key comes in once.
void Data_PlanMerger::SettleKeys() {
    Arr<Numbered> oA;
    Arr<Numbered> oB;
    for (u2_t u = 0; u < a.Size(); ++u) {
        const u2_t uKey = a.oLeftOut(u) ? 0 : KeyOf(a.At(u).uNew);
        if (uKey != 0) oA.Add({uKey, u});
    }
    for (u2_t u = 0; u < b.Size(); ++u) {
        const u2_t uKey = b.oLeftOut(u) ? 0 : KeyOf(b.At(u).uNew);
        if (uKey != 0) oB.Add({uKey, u});
    }
    ForEachPair(oA, oB, [this](u2_t uA, u2_t uB) {
        const bool bSame = Unite(a.At(uA).uNew, b.At(uB).uNew);
        if (!bSame) TellInserted(a.At(uA), b.At(uB));
        (PicksB() && !bSame ? a.oLeftOut(uA) : b.oLeftOut(uB)) = true;
    });
}

// What has no key may come into one place from one side only.
void Data_PlanMerger::SettleSlots() {
    for (std::size_t uA = 0, uB = 0; uA < a.Size() && uB < b.Size();) {
        const u2_t uSlot = std::min(a.oSlot(uA), b.oSlot(uB));
        SettleSlot(uA, uB, uSlot);
    }
}

// Moves both behind a slot.
void Data_PlanMerger::SettleSlot(std::size_t& uA, std::size_t& uB, u2_t uSlot) {
    Arr<std::size_t> oA;
    Arr<std::size_t> oB;
    const auto oCounts = [this](const Half& o, std::size_t u) {
        return !o.oLeftOut(u) && o.At(u).uNew != NONE && KeyOf(o.At(u).uNew) == 0;
    };
    for (; uA < a.Size() && a.oSlot(uA) == uSlot; ++uA) {
        if (oCounts(a, uA)) oA.Add(uA);
    }
    for (; uB < b.Size() && b.oSlot(uB) == uSlot; ++uB) {
        if (oCounts(b, uB)) oB.Add(uB);
    }
    std::size_t uSame = 0;
    while (uSame < oA.Size() && uSame < oB.Size() &&
           Unite(a.At(oA(uSame)).uNew, b.At(oB(uSame)).uNew)) {
        b.oLeftOut(oB(uSame++)) = true;
    }
    if (uSame == oA.Size() || uSame == oB.Size()) return;
    TellInserted(a.At(oA(uSame)), b.At(oB(uSame)));
    Half& oOther = PicksB() ? a : b;
    const Arr<std::size_t>& oOut = PicksB() ? oA : oB;
    for (; uSame < oOut.Size(); ++uSame) oOther.oLeftOut(oOut(uSame)) = true;
}

// Counts positions anew.
void Data_PlanMerger::Arrive(const Data_PatchPlan::LiveRun& oRun) {
    u2_t uTo = 0;
    std::size_t uNextA = 0;
    std::size_t uNextB = 0;
    const auto oArrive = [&](const Half& o, std::size_t& uNext, u2_t uSlot) {
        for (; uNext < o.Size() && o.oSlot(uNext) == uSlot; ++uNext) {
            if (o.oLeftOut(uNext)) continue;
            Arrival oArrival = o.At(uNext);
            oArrival.uTo = uTo++;
            m_pPlan->m_oArrival.Add(oArrival);
        }
    };
    for (u2_t uSlot = 0; uSlot <= oRun.uSize; ++uSlot) {
        oArrive(a, uNextA, uSlot);
        oArrive(b, uNextB, uSlot);
        if (uSlot == oRun.uSize) return;
        const Change* p = m_pPlan->ChangeOf(oRun.pId[uSlot]);
        uTo += p == nullptr || !p->bLeaves;
    }
}

u2_t Data_PlanMerger::KeyOf(u2_t uNew) {
    if (uNew == NONE) return 0;
    for (const Data_RunKey& oKey : m_oKeys) {
        const u2_t uText = oKey.Find(m_oPatches, uNew, m_oTexts);
        if (uText != 0) return uText;
    }
    return 0;
}

bool Data_PlanMerger::IsSame(u2_t uNewA, u2_t uNewB) {
    const auto oSameLinks = [this](u2_t uA, u2_t uB) { return IsSameTarget(uA, uB); };
    return patch::IsSameSubtree(m_oPatches, uNewA, m_oPatches, uNewB, true, oSameLinks) ||
           Data::Equal(m_oPatches.Cursor(uNewA), m_oPatches.Cursor(uNewB));
}

// Nodes of the base, or what stands in the same place of both patches.
bool Data_PlanMerger::IsSameTarget(u2_t uLinkA, u2_t uLinkB) {
    u2_t uA = NONE;
    u2_t uB = NONE;
    const bool bFoundA = a.oPlan.FindTarget(uLinkA, uA);
    const bool bFoundB = b.oPlan.FindTarget(uLinkB, uB);
    if (bFoundA || bFoundB) return bFoundA && bFoundB && uA == uB;
    const auto oPathIn = [this](u2_t uLink, Arr<char>& oPath) {
        m_oPatches.AppendPath(oPath, m_oPatches.InnerTarget(uLink));
        const std::string_view sPath(oPath.Beg(), oPath.Size());
        return sPath.substr(std::min(sPath.find('/', 1), sPath.size()));
    };
    Arr<char> oPathA;
    Arr<char> oPathB;
    return oPathIn(uLinkA, oPathA) == oPathIn(uLinkB, oPathB);
}

bool Data_PlanMerger::Unite(u2_t uNewA, u2_t uNewB) {
    if (!IsSame(uNewA, uNewB)) return false;
    Data_Walk oWalkA(m_oPatches.Cursor(uNewA));
    Data_Walk oWalkB(m_oPatches.Cursor(uNewB));
    while (oWalkA.Next() && oWalkB.Next()) m_pPlan->m_oTwinOf(oWalkB.GetId()) = oWalkA.GetId() + 1;
    return true;
}

// ---- what is told -------------------------------------------------------------------------

Data_Conflict::Side Data_PlanMerger::SideOf(Data_Conflict::Did eDid, u2_t uNew) const {
    return {eDid, uNew != NONE ? m_oPatches.Cursor(uNew) : Data(), nullptr};
}

void Data_PlanMerger::Tell(u2_t uId, Data_Conflict::Did eA, u2_t uNewA, Data_Conflict::Did eB,
                           u2_t uNewB) {
    if (!Count()) return;
    m_bTells = m_oVisit({a.oPlan.PathOf(uId).CStr(), nullptr, m_oBase.Cursor(uId), nullptr,
                         SideOf(eA, uNewA), SideOf(eB, uNewB)});
}

void Data_PlanMerger::TellInserted(const Arrival& oA, const Arrival& oB) {
    if (!Count()) return;
    m_bTells = m_oVisit({a.oPlan.PathOf(oA.uParent, oA.sName, oA.uTo).CStr(), nullptr, Data(),
                         nullptr, SideOf(Data_Conflict::Inserted, oA.uNew),
                         SideOf(Data_Conflict::Inserted, oB.uNew)});
}

void Data_PlanMerger::TellText(u2_t uId, const char* sAttribute, const char* sBase, const char* sA,
                               const char* sB) {
    if (!Count()) return;
    const auto oSide = [](const char* s) {
        return Data_Conflict::Side{Data_Conflict::Changed, Data(), s};
    };
    m_bTells = m_oVisit(
        {a.oPlan.PathOf(uId).CStr(), sAttribute, m_oBase.Cursor(uId), sBase, oSide(sA), oSide(sB)});
}

}  // namespace vok
