// SPDX-License-Identifier: MIT
// Evaluation of paths.
#include <algorithm>
#include <cstring>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/id_map.h"
#include "vok/data/select.h"
#include "vok/data/step_lookup.h"
#include "vok/data/succ_it.h"
#include "vok/data/xpath.h"

namespace vok {

namespace {

// Walks a path step by step over whole sets of nodes: what a step selects is gathered for all
// nodes of the set before, sorted and freed of duplicates. So a node is looked at once per
// step however many ways lead to it, and nothing recurses.
class Evaluator {
  public:
    Evaluator(Data_Base& oBase, Work& oWork) : m_oBase(oBase), m_oWork(oWork) {}

    void Run(u2_t uStart, const Data_Xpath& oPath, Arr<u2_t>& oResult) {
        if (IsLive(uStart)) oResult.Add(uStart);
        bool bDescend = oPath.IsDescendantFromRoot();
        for (std::size_t u = 0; u < oPath.Size(); ++u) {
            if (bDescend) AddDescendants(oResult);
            Step(oPath(u), oResult);
            bDescend = oPath(u).m_bDescendant;
        }
        // A "." behind "//" leaves the order in which nodes were come upon.
        if (!std::is_sorted(oResult.Beg(), oResult.End())) {
            std::sort(oResult.Beg(), oResult.End());
        }
    }

  private:
    [[nodiscard]] bool IsLive(u2_t uId) const noexcept {
        return m_oBase.m_oNode(uId).GetType() != Data_Node::Zombi;
    }

    // Adds everything below the nodes of a set.
    void AddDescendants(Arr<u2_t>& oSet) {
        Data_IdMap<bool> oSeen(m_oBase.m_oNode.Size());
        // What hangs below one node is met once in any case.
        const bool bMark = oSet.Size() > 1;
        const auto oMark = [&](u2_t uId) { return !bMark || !std::exchange(oSeen(uId), true); };
        for (std::size_t u = 0; u < oSet.Size(); ++u) oMark(oSet(u));
        for (std::size_t u = 0; u < oSet.Size(); ++u) {
            const Data_Base::Group oGroup = m_oBase.SuccOf(oSet(u));
            m_oWork.Look(oGroup.uSize);
            for (u2_t uNth = 0; uNth < oGroup.uSize; ++uNth) {
                const u2_t uId = oGroup.pId[uNth];
                if (IsLive(uId) && oMark(uId)) oSet.Add(uId);
            }
        }
    }

    void Step(const Data_XpathStep& oStep, Arr<u2_t>& oSet) {
        if (oStep.m_eKind == Data_XpathStep::Self) return;
        Arr<u2_t> oNext;
        const detail::Step_Lookup oLookup(m_oBase, oStep);
        m_oWork.Charge(1);
        for (std::size_t u = 0; u < oSet.Size(); ++u) {
            if (oStep.m_eKind == Data_XpathStep::Parent) {
                AddPred(oSet(u), oNext);
            } else {
                AddSuccessors(oSet(u), oLookup, oNext);
            }
        }
        m_oWork.Charge(oNext.Size());
        if (!std::is_sorted(oNext.Beg(), oNext.End())) std::sort(oNext.Beg(), oNext.End());
        oNext.Truncate(
            static_cast<std::size_t>(std::unique(oNext.Beg(), oNext.End()) - oNext.Beg()));
        oSet.Swap(oNext);
    }

    void AddPred(u2_t uId, Arr<u2_t>& oNext) {
        m_oWork.Look(1);
        const u2_t uPred = m_oBase.m_oNode(uId).Pred();
        if (uPred >= m_oBase.m_oNode.Size()) Msg::NodeHasNoPredecessor();
        // Siblings stand side by side.
        if (oNext.Size() == 0 || oNext(oNext.Size() - 1) != uPred) oNext.Add(uPred);
    }

    void AddSuccessors(u2_t uId, const detail::Step_Lookup& oLookup, Arr<u2_t>& oNext) {
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        const Data_XpathStep& oStep = oLookup.m_oStep;
        Data_Base::Run oRun{0, oGroup.uSize};
        if (!oStep.m_bAnyName) {
            oRun = oLookup.m_uKey != Hash::NONE ? m_oBase.FindRun(oGroup, oLookup.m_uKey)
                                                : Data_Base::Run{};
        }
        if (oStep.m_iIndex >= 0) {
            const u2_t uIndex = static_cast<u2_t>(oStep.m_iIndex);
            oRun = uIndex < oRun.uSize ? Data_Base::Run{oRun.uFirst + uIndex, 1} : Data_Base::Run{};
        }
        m_oWork.Look(u3_t{oRun.uSize} + 1);
        for (u2_t u = 0; u < oRun.uSize; ++u) {
            const u2_t uSucc = oGroup.pId[oRun.uFirst + u];
            if (IsLive(uSucc) && oLookup.HasAttributes(uSucc, m_oWork)) oNext.Add(uSucc);
        }
    }

    Data_Base& m_oBase;
    Work& m_oWork;
};

}  // namespace

namespace detail {

void SelectNodes(Data_Base& b, u2_t uStart, const char* sPath, Work& oWork, Arr<u2_t>& oResult) {
    return Where("vok::Data::GetNodeSet", [&] {
        Data_Xpath oPath;
        oPath.Parse(sPath);
        oResult.Resize(0);
        Evaluator(b, oWork).Run(oPath.IsAbsolute() ? 0 : uStart, oPath, oResult);
    });
}

}  // namespace detail

Data_NodeSet Data_Xpath::Evaluate(const Data& oFrom, const Limits& oLimits) const {
    return Where("vok::Data_Xpath::Evaluate", [&] {
        Data_Base& b = detail::NodeOf(oFrom.m_oBase, oFrom.m_uId);
        Work oWork(oLimits, b.m_oNode.Size() * sizeof(Data_Node));
        Data_NodeSet oSet;
        Evaluator(b, oWork).Run(IsAbsolute() ? 0 : oFrom.m_uId, *this, oSet.m_oId);
        if (oSet.Size() != 0) oSet.m_oBase = oFrom.m_oBase;
        return oSet;
    });
}

Data_NodeSet Data::GetNodeSet(std::string_view sPath, const Limits& oLimits) const {
    return GetNodeSet(Str(sPath).CStr(), oLimits);
}

Data_NodeSet Data::GetNodeSet(const char* sPath, const Limits& oLimits) const {
    Data_NodeSet oSet;
    Base& b =
        Where("vok::Data::GetNodeSet", [&]() -> Base& { return detail::NodeOf(m_oBase, m_uId); });
    const std::size_t uPath = sPath != nullptr ? std::strlen(sPath) : 0;
    Work oWork(oLimits, uPath + b.m_oNode.Size() * sizeof(Node));
    detail::SelectNodes(b, m_uId, sPath, oWork, oSet.m_oId);
    if (oSet.Size() != 0) oSet.m_oBase = m_oBase;
    return oSet;
}

bool Data::Test(const Data_XpathStep& oStep) const {
    return Where("vok::Data::Test", [&] {
        if (!m_oBase || GetNode().GetType() == Node::Zombi) return false;
        for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
            if (*oStep.m_oAttName(u) == 0 || oStep.AttVal(u) == nullptr) continue;
            const char* sValue = GetAttVal(oStep.m_oAttName(u));
            if (sValue == nullptr || std::strcmp(sValue, oStep.AttVal(u)) != 0) return false;
        }
        return true;
    });
}

}  // namespace vok
