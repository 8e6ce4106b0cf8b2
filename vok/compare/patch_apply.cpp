// SPDX-License-Identifier: MIT
// A tree with the changes of a patch.
#include <string_view>

#include "vok/base/where.h"
#include "vok/compare/messages.h"
#include "vok/compare/patch_form.h"
#include "vok/compare/patch_plan.h"
#include "vok/data/checks.h"
#include "vok/data/report.h"

namespace vok {

namespace {

// Builds the new tree: what stays and what arrives, merged by name and position.
class PatchedCopy {
  public:
    PatchedCopy(Data_Side& oTree, Data_Side& oPatch, Data_PatchPlan& oPlan)
        : m_oTree(oTree),
          m_oPatch(oPatch),
          m_oPlan(oPlan),
          m_oNewOf(oTree.m_oBase.m_oNode.Size()),
          m_oNewOfPatch(oPatch.m_oBase.m_oNode.Size()) {}

    Data Make() {
        m_oNew.SetToRoot();
        m_oApplied.Resize(m_oPlan.Changes().Size());
        MakeTop();
        FillTop();
        CheckAllApplied();
        for (const Link& o : m_oLink) SetLink(o);
        return m_oNew;
    }

  private:
    static constexpr u2_t NONE = Data_Node::NONE;
    using Change = Data_PatchPlan::Change;
    using Arrival = Data_PatchPlan::Arrival;

    // Successors on their way.
    struct Level {
        Data_Base::Group oGroup;
        u2_t uParent;
        u2_t uPos;
        u2_t uArrival;
        std::string_view sRun;
        u2_t uOut;      // how many of the run are there
        bool bStarted;  // whether sRun is one
    };
    struct Link {
        u2_t uNew;
        u2_t uId;
        bool bPatch;  // uId is of the patch
    };

    // ---- the top ------------------------------------------------------------

    void MakeTop() {
        const u2_t uTop = m_oTree.m_uTop;
        const Change& oChange = *m_oPlan.ChangeOf(uTop);
        const char* sName = m_oPlan.NewName();
        if (sName == nullptr) sName = m_oTree.m_oBase.m_oName.TextOrNull(m_oTree.Node(uTop).uKey);
        if (sName != nullptr) m_oNew.SetRootName(sName);
        m_oNew.SetUserTag(m_oTree.Cursor(uTop).GetUserTag().CStr());
        const bool bOld = oChange.uContent == NONE;
        const Data oFrom = bOld ? m_oTree.Cursor(uTop) : m_oPatch.Cursor(oChange.uContent);
        if (oFrom.GetType() == Data_Node::Link) {
            m_oLink.Add({0, oFrom.GetId(), !bOld});
        } else if (oFrom.GetType() != Data_Node::Tree) {
            Data::CopyVal(oFrom, m_oNew);
        }
        if (!m_oTree.m_oBase.m_oAtt.IsUnused()) m_oTree.Cursor(uTop).CopyAtt(m_oNew);
        const Data_PatchPlan::AttributeRange oChanged = m_oPlan.AttributesOf(uTop);
        for (const auto* p = oChanged.pBeg; p != oChanged.pEnd; ++p) {
            m_oNew.SetAttVal(p->sName, p->sNew);
        }
        m_oNewOf(uTop) = 1;
    }
    void FillTop() {
        const u2_t uTop = m_oTree.m_uTop;
        const Change& oChange = *m_oPlan.ChangeOf(uTop);
        MarkApplied(&oChange);
        const bool bOld = oChange.uContent == NONE;
        if (bOld && m_oTree.Node(uTop).GetType() != Data_Node::Tree) CheckTakesArrivals(uTop);
        if (m_oNew.GetType() != Data_Node::Empty) return;
        Data_Builder oBuilder(m_oNew);
        m_pBuilder = &oBuilder;
        const detail::OnExit oOnExit([this] { m_pBuilder = nullptr; });
        if (!bOld) return CopyNew(oChange.uContent, "", false, NONE);
        OpenLevel(uTop);
        while (m_oLevel.Size() != 0) Step();
    }

    // ---- the rest -------------------------------------------------------------

    void Step() {
        Level& l = m_oLevel.Last();
        while (l.uPos != l.oGroup.uSize && !Stays(l.oGroup.pId[l.uPos])) ++l.uPos;
        const Arr<Arrival>& oAll = m_oPlan.Arrivals();
        const u2_t uId = l.uPos != l.oGroup.uSize ? l.oGroup.pId[l.uPos] : NONE;
        const Arrival* pArrival = l.uArrival < oAll.Size() && oAll(l.uArrival).uParent == l.uParent
                                      ? &oAll(l.uArrival)
                                      : nullptr;
        if (uId == NONE && pArrival == nullptr) {
            m_oLevel.Pop();
            if (m_oLevel.Size() != 0) m_pBuilder->Close();
            return;
        }
        const std::string_view sName = uId != NONE ? m_oTree.NameOf(uId) : std::string_view();
        bool bArrives = pArrival != nullptr;
        if (bArrives && uId != NONE && pArrival->sName >= sName) {
            const u2_t uOut = l.bStarted && l.sRun == sName ? l.uOut : 0;
            bArrives = pArrival->sName == sName && pArrival->uTo <= uOut;
        }
        const std::string_view sRun = bArrives ? pArrival->sName : sName;
        if (!l.bStarted || l.sRun != sRun) {
            l.sRun = sRun;
            l.uOut = 0;
            l.bStarted = true;
        }
        if (bArrives && pArrival->uTo != l.uOut) {
            detail::RaiseOtherCount(m_oPlan.PathOf(l.uParent, sRun, pArrival->uTo).CStr());
        }
        ++l.uOut;
        if (!bArrives) {
            ++l.uPos;
            return Put(uId);
        }
        ++l.uArrival;
        ++m_uArrived;
        if (pArrival->uMoved != NONE) return Put(pArrival->uMoved);
        CopyNew(pArrival->uNew, pArrival->sName.data(), true, NONE);
    }

    [[nodiscard]] bool Stays(u2_t uId) {
        if (!m_oTree.IsLive(uId)) return false;
        const Change* p = m_oPlan.ChangeOf(uId);
        if (p == nullptr || !p->bLeaves) return true;
        MarkApplied(p);
        return false;
    }

    void OpenLevel(u2_t uId) {
        m_oLevel.Add(
            Level{m_oTree.m_oBase.SuccOf(uId), uId, 0, m_oPlan.FirstArrival(uId), {}, 0, false});
    }
    // Whether something arrives below a node that is no tree. Raises unless it is empty then.
    bool CheckTakesArrivals(u2_t uId) {
        const u2_t u = m_oPlan.FirstArrival(uId);
        if (u == m_oPlan.Arrivals().Size() || m_oPlan.Arrivals()(u).uParent != uId) return false;
        const Data_Node::Type eType = m_oTree.Node(uId).GetType();
        if (eType != Data_Node::Empty) {
            detail::RaiseOtherType(m_oPlan.PathOf(uId).CStr(), Data_Node::TypeName(Data_Node::Tree),
                                   Data_Node::TypeName(eType));
        }
        return true;
    }

    // Builds a node of the tree; what is below it follows.
    void Put(u2_t uId) {
        const Change* pChange = m_oPlan.ChangeOf(uId);
        if (pChange != nullptr) MarkApplied(pChange);
        const char* sName = m_oTree.m_oBase.m_oName(m_oTree.Node(uId).uKey).sText;
        if (pChange != nullptr && pChange->uContent != NONE) {
            return CopyNew(pChange->uContent, sName, true, uId);
        }
        const Data_View oNode(m_oTree.Cursor(uId));
        const bool bTree = oNode.GetType() == Data_Node::Tree;
        const bool bOpen = bTree || CheckTakesArrivals(uId);
        const u2_t uNew =
            bOpen ? m_pBuilder->Open(sName) : m_pBuilder->Add(sName, oNode.GetValue());
        SetAttributes(uId, uNew);
        if (oNode.GetType() == Data_Node::Link) m_oLink.Add({uNew, uId, false});
        if (bOpen) OpenLevel(uId);
    }

    // Of the node built last, which uId has become.
    void SetAttributes(u2_t uId, u2_t uNew) {
        m_oNewOf(uId) = uNew + 1;
        const Data_Base& b = m_oTree.m_oBase;
        const Data_PatchPlan::AttributeRange oChanged = m_oPlan.AttributesOf(uId);
        if (b.m_oAtt.Has(uId)) {
            b.m_oAtt.List(uId, m_oKeys);
            for (const u2_t uKey : m_oKeys) {
                const char* sName = b.m_oAtt.Names()(uKey).sText;
                if (!oChanged.Has(sName)) m_pBuilder->SetAttVal(sName, b.AttributeOf(uId, uKey));
            }
        }
        for (const auto* p = oChanged.pBeg; p != oChanged.pEnd; ++p) {
            if (p->sNew != nullptr) m_pBuilder->SetAttVal(p->sName, p->sNew);
        }
    }

    // Builds a node of the patch; uFor, unless it is NONE, is the node whose content that is.
    void CopyNew(u2_t uFrom, const char* sName, bool bTop, u2_t uFor) {
        const Data_Base& p = m_oPatch.m_oBase;
        patch::CopySubtree(*m_pBuilder, m_oPatch.Cursor(uFrom), sName, bTop,
                           [&](u2_t uId, u2_t uNew, std::size_t uDepth) {
                               m_oNewOfPatch(uId) = uNew + 1;
                               if (uDepth == 0 && uFor != NONE) {
                                   SetAttributes(uFor, uNew);
                               } else {
                                   patch::CopyAttributes(*m_pBuilder, p, uId, m_oKeys);
                               }
                               if (m_oPatch.Node(uId).GetType() == Data_Node::Link)
                                   m_oLink.Add({uNew, uId, true});
                           });
    }

    void SetLink(const Link& o) {
        u2_t uTarget = 0;  // plus 1, 0 for nothing
        if (!o.bPatch) {
            const u2_t uOld = m_oTree.InnerTarget(o.uId);
            if (uOld != NONE) uTarget = m_oNewOf.Find(uOld);
        } else if (u2_t uOld = NONE; m_oPlan.FindTarget(o.uId, uOld)) {
            if (uOld != NONE) uTarget = m_oNewOf.Find(uOld);
        } else {
            const u2_t uInPatch = m_oPatch.InnerTarget(o.uId);
            const u2_t uTwin = m_oPlan.TwinOf(uInPatch);
            uTarget = m_oNewOfPatch.Find(uTwin != NONE ? uTwin : uInPatch);
            if (uTarget == 0 && m_oPlan.IsRead()) m_oPlan.Refuse(o.uId);
        }
        m_oNew.GetNodeFromID(o.uNew).SetValLink(uTarget != 0 ? m_oNew.GetNodeFromID(uTarget - 1)
                                                             : Data());
    }

    // ---- what has been done -------------------------------------------------------

    void MarkApplied(const Change* p) {
        m_oApplied(static_cast<std::size_t>(p - m_oPlan.Changes().Beg())) = true;
    }
    // What is changed below a node that is removed or gets other contents is not.
    void CheckAllApplied() {
        for (std::size_t u = 0; u < m_oApplied.Size(); ++u) {
            if (!m_oApplied(u)) m_oPlan.Refuse(m_oPlan.Changes()(u).uPatch);
        }
        if (m_uArrived == m_oPlan.Arrivals().Size()) return;
        for (const Arrival& o : m_oPlan.Arrivals()) {
            if (m_oNewOf.Find(o.uParent) == 0 || IsReplaced(o.uParent)) m_oPlan.Refuse(o.uPatch);
        }
    }
    [[nodiscard]] bool IsReplaced(u2_t uId) const noexcept {
        const Change* p = m_oPlan.ChangeOf(uId);
        return p != nullptr && p->uContent != NONE;
    }

    Data_Side& m_oTree;
    Data_Side& m_oPatch;
    Data_PatchPlan& m_oPlan;
    Data m_oNew;
    Data_Builder* m_pBuilder = nullptr;
    Arr<Level> m_oLevel;
    Arr<bool> m_oApplied;  // by change
    std::size_t m_uArrived = 0;
    Data_IdMap<u2_t> m_oNewOf;       // by id in the tree: that in the new one plus 1
    Data_IdMap<u2_t> m_oNewOfPatch;  // by id in the patch
    Arr<Link> m_oLink;
    Arr<u2_t> m_oKeys;
};

}  // namespace

Data MakePatchedCopy(Data_Side& oTree, Data_Side& oPatch, Data_PatchPlan& oPlan) {
    return PatchedCopy(oTree, oPatch, oPlan).Make();
}

Data Data::ApplyPatch(const Data& oPatch) const {
    return Where("vok::Data::ApplyPatch", [&] {
        Data_Side oTree(*this, detail::LiveNodeOf(m_oBase, m_uId));
        Data_Side oSide(oPatch, detail::LiveNodeOf(oPatch.m_oBase, oPatch.m_uId));
        Data_PatchTargets oTargets(oSide.m_oBase.m_oNode.Size());
        Data_PatchPlan oPlan(oTree, oSide, oTargets);
        oPlan.Read(oSide.m_uTop);
        return MakePatchedCopy(oTree, oSide, oPlan);
    });
}

}  // namespace vok
