// SPDX-License-Identifier: MIT
// The first node that a path selects.
#include <algorithm>
#include <bit>
#include <deque>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/step_lookup.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"

namespace vok {

namespace {

// Goes through a tree in pre-order and follows all ways to take the path at once: of each open node
// it holds which steps may be taken below it. A node is looked at once, and only where a way leads.
class FirstMatch {
  public:
    // Steps are bits; one more is the end of the path.
    static constexpr std::size_t MOST_STEPS = 63;

    // Whether it can: paths that go up are for others.
    [[nodiscard]] static bool Takes(const Data_Xpath& oPath) noexcept {
        for (std::size_t u = 0; u < oPath.Size(); ++u) {
            if (oPath(u).m_eKind == Data_XpathStep::Parent) return false;
        }
        return oPath.Size() <= MOST_STEPS;
    }

    FirstMatch(Data_Base& b, const Data_Xpath& oPath, Work& oWork) : m_oBase(b), m_oWork(oWork) {
        for (std::size_t u = 0; u < oPath.Size(); ++u) m_aoStep.emplace_back(b, oPath(u));
        m_oStart = oPath.IsDescendantFromRoot() && oPath.Size() != 0 ? Ways{0, 1} : Ways{1, 0};
    }

    // NONE where there is none.
    [[nodiscard]] u2_t Find(u2_t uStart) {
        if (m_oBase.m_oNode(uStart).GetType() == Data_Node::Zombi) return NONE;
        Ways o = m_oStart;
        m_oWork.Look(1);
        if (Close(o)) return uStart;
        Open(uStart, o);
        while (m_oLevel.Size() != 0) {
            Level& oLevel = m_oLevel.Last();
            if (oLevel.uNext == oLevel.uEnd) {
                m_oLevel.Pop();
                continue;
            }
            const u2_t uId = oLevel.oGroup.pId[oLevel.uNext];
            Ways oBelow = Take(oLevel, uId);
            ++oLevel.uNext;
            if (m_oBase.m_oNode(uId).GetType() == Data_Node::Zombi) continue;
            if (Close(oBelow)) return uId;
            Open(uId, oBelow);
        }
        return NONE;
    }

  private:
    static constexpr u2_t NONE = Data_Node::NONE;

    // The steps that may be taken below a node, and below any node under it as well.
    struct Ways {
        u3_t uHere;
        u3_t uAnyDepth;
    };
    // An open node: those of its successors that are still to be looked at.
    struct Level {
        Ways oWays;
        Data_Base::Group oGroup;
        u2_t uNext;
        u2_t uEnd;
        u2_t uRunKey;    // of the name that came last
        u2_t uRunStart;  // its first one
    };

    [[nodiscard]] static u3_t Bit(std::size_t uStep) noexcept { return u3_t{1} << uStep; }
    void Reach(Ways& o, std::size_t uStep) const {
        (m_aoStep[uStep].m_oStep.m_bDescendant ? o.uAnyDepth : o.uHere) |= Bit(uStep + 1);
    }

    // Takes the steps "." at a node; whether it is at the end of the path.
    [[nodiscard]] bool Close(Ways& o) const {
        for (std::size_t u = 0; u < m_aoStep.size(); ++u) {
            const bool bHere = ((o.uHere | o.uAnyDepth) & Bit(u)) != 0;
            if (bHere && m_aoStep[u].m_oStep.m_eKind == Data_XpathStep::Self) Reach(o, u);
        }
        // A "//" at the end leads no further.
        const u3_t uEnd = Bit(m_aoStep.size());
        const bool bFound = ((o.uHere | o.uAnyDepth) & uEnd) != 0;
        o.uAnyDepth &= ~uEnd;
        return bFound;
    }

    void Open(u2_t uId, const Ways& o) {
        if ((o.uHere | o.uAnyDepth) == 0) return;
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        if (oGroup.uSize == 0) return;
        Data_Base::Run oRun{0, oGroup.uSize};
        // The only step asks for one name.
        if (o.uAnyDepth == 0 && (o.uHere & (o.uHere - 1)) == 0) {
            const detail::Step_Lookup& oStep =
                m_aoStep[static_cast<std::size_t>(std::countr_zero(o.uHere))];
            if (!oStep.m_oStep.m_bAnyName) {
                oRun = oStep.m_uKey != Hash::NONE ? m_oBase.FindRun(oGroup, oStep.m_uKey)
                                                  : Data_Base::Run{};
            }
        }
        m_oLevel.Add(
            Level{o, oGroup, oRun.uFirst, oRun.uFirst + oRun.uSize, Hash::NONE, oRun.uFirst});
    }

    // The ways that lead on to a successor.
    [[nodiscard]] Ways Take(Level& oLevel, u2_t uId) {
        const u2_t uKey = m_oBase.m_oNode(uId).uKey;
        if (uKey != oLevel.uRunKey) {
            oLevel.uRunKey = uKey;
            oLevel.uRunStart = oLevel.uNext;
        }
        m_oWork.Look(1);
        Ways o{0, oLevel.oWays.uAnyDepth};
        for (u3_t u = oLevel.oWays.uHere | oLevel.oWays.uAnyDepth; u != 0; u &= u - 1) {
            const auto uStep = static_cast<std::size_t>(std::countr_zero(u));
            const detail::Step_Lookup& oLookup = m_aoStep[uStep];
            const Data_XpathStep& oStep = oLookup.m_oStep;
            if (oStep.m_eKind == Data_XpathStep::Self) continue;
            if (!oStep.m_bAnyName && oLookup.m_uKey != uKey) continue;
            const u2_t uFirst = oStep.m_bAnyName ? 0 : oLevel.uRunStart;
            if (oStep.m_iIndex >= 0 && oLevel.uNext - uFirst != static_cast<u2_t>(oStep.m_iIndex)) {
                continue;
            }
            if (oLookup.HasAttributes(uId, m_oWork)) Reach(o, uStep);
        }
        return o;
    }

    Data_Base& m_oBase;
    Work& m_oWork;
    std::deque<detail::Step_Lookup> m_aoStep;
    Ways m_oStart{};
    Arr<Level> m_oLevel;
};

}  // namespace

Data Data_Xpath::EvaluateFirst(const Data& oFrom, const Limits& oLimits) const {
    return Where("vok::Data_Xpath::EvaluateFirst", [&] {
        Data_Base& b = detail::NodeOf(oFrom.m_oBase, oFrom.m_uId);
        if (FirstMatch::Takes(*this)) {
            Work oWork(oLimits, b.m_oNode.Size() * sizeof(Data_Node));
            const u2_t uStart = IsAbsolute() ? 0 : oFrom.m_uId;
            const u2_t uFound = FirstMatch(b, *this, oWork).Find(uStart);
            return uFound != Data_Node::NONE ? Data(oFrom.m_oBase, uFound) : Data();
        }
        const Data_NodeSet oFound = Evaluate(oFrom, oLimits);
        if (oFound.Size() <= 1) return oFound.GetNth(0);
        Data_Walk o(oFrom.GetRoot());
        while (o.Next() && !std::binary_search(oFound.m_oId.Beg() + oFound.m_uGap,
                                               oFound.m_oId.End(), o.GetId())) {
        }
        return o.GetData();
    });
}

}  // namespace vok
