// SPDX-License-Identifier: MIT
// Two patches of one tree made one. Internal.
#ifndef VOK_COMPARE_PLAN_MERGER_H
#define VOK_COMPARE_PLAN_MERGER_H

#include <deque>
#include <functional>

#include "vok/compare/match_runs.h"
#include "vok/compare/merge.h"
#include "vok/compare/patch_plan.h"

namespace vok {

// Takes from both plans what does not get in each other's way. What does is told, and taken from
// the side that is picked, from A where none is. n log n in changes, and linear in the runs that
// nodes arrive in.
//
// Where nodes arrive, positions are those of one side only. So each arrival is put behind a node of
// the base that stays in its place on that side, and positions are counted anew when it is known
// what stays on both. Of two that arrive in one place A's comes first; without keys, which say that
// they are different things, that is a conflict.
class Data_PlanMerger {
  public:
    using Visit = std::function<bool(const Data_Conflict&)>;

    Data_PlanMerger(Data_Side& oBase, Data_Side& oPatches, Data_PatchPlan& oA, Data_PatchPlan& oB,
                    const Data_DiffOptions& oOptions, Data_MergePick ePick, const Visit& oVisit);

    // Fills oPlan, which changes nothing yet, and returns the number of conflicts.
    u3_t Run(Data_PatchPlan& oPlan);

  private:
    static constexpr u2_t NONE = Data_Node::NONE;
    using Change = Data_PatchPlan::Change;
    using Arrival = Data_PatchPlan::Arrival;
    using Attribute = Data_PatchPlan::Attribute;

    // One of the two, and what is not taken from it.
    struct Half {
        Half(Data_PatchPlan& o, std::size_t uIds)
            : oPlan(o), oCover(uIds), oDropped(uIds), oTold(uIds) {}

        [[nodiscard]] std::size_t Size() const noexcept { return uEnd - uFirst; }
        [[nodiscard]] const Arrival& At(std::size_t u) const noexcept {
            return oPlan.Arrivals()(uFirst + u);
        }

        Data_PatchPlan& oPlan;
        // By id: the nearest node, itself or above it, that this side removes or gives other
        // contents, plus 2; 1 for none, 0 for not looked up yet.
        Data_IdMap<u2_t> oCover;
        Data_IdMap<bool> oDropped;  // changes of these nodes do not count
        Data_IdMap<bool> oTold;     // conflicts with what is below these were told
        // Of the run at hand: its arrivals, behind how many nodes of the base each is, and whether
        // it does not arrive.
        std::size_t uFirst = 0;
        std::size_t uEnd = 0;
        Arr<u2_t> oSlot;
        Arr<bool> oLeftOut;
    };

    void DropCovered(Half& oInner, Half& oOuter);
    void DropCovered(Half& oInner, Half& oOuter, u2_t uCover, u2_t uChanged);
    [[nodiscard]] u2_t CoverOf(Half& o, u2_t uId);
    // Whether what this side does below a node is taken.
    [[nodiscard]] bool IsCovered(Half& oOuter, u2_t uId);
    // Null where nothing is done to the node itself, or it is not taken.
    [[nodiscard]] static const Change* ChangeIn(const Half& o, u2_t uId) noexcept;

    void MergeChanges(const Half& o);
    void MergeChange(u2_t uId);
    void MergeAttributes(u2_t uId, const Change* pA, const Change* pB, Change& oMerged);
    void MergeNames();

    void MergeRuns();
    void MergeRun(u2_t uParent, std::string_view sName);
    static void FindSlots(Half& o, const Data_PatchPlan::LiveRun& oRun);
    void SettleMoves();
    void SettleKeys();
    void SettleSlots();
    void SettleSlot(std::size_t& uA, std::size_t& uB, u2_t uSlot);
    void Arrive(const Data_PatchPlan::LiveRun& oRun);

    [[nodiscard]] u2_t KeyOf(u2_t uNew);
    [[nodiscard]] bool IsSame(u2_t uNewA, u2_t uNewB);
    [[nodiscard]] bool IsSameTarget(u2_t uLinkA, u2_t uLinkB);
    // IsSame; then what is B's is left out.
    [[nodiscard]] bool Unite(u2_t uNewA, u2_t uNewB);
    [[nodiscard]] bool PicksB() const noexcept { return m_ePick == Data_MergePick::B; }

    void Tell(u2_t uId, Data_Conflict::Did eA, u2_t uNewA, Data_Conflict::Did eB, u2_t uNewB);
    void TellInserted(const Arrival& oA, const Arrival& oB);
    void TellText(u2_t uId, const char* sAttribute, const char* sBase, const char* sA,
                  const char* sB);
    // Counts a conflict; whether it is to be told.
    [[nodiscard]] bool Count() noexcept {
        ++m_uConflicts;
        return m_bTells;
    }
    [[nodiscard]] Data_Conflict::Side SideOf(Data_Conflict::Did eDid, u2_t uNew) const;

    Data_Side& m_oBase;
    Data_Side& m_oPatches;
    Half a;
    Half b;
    std::deque<Data_RunKey> m_oKeys;
    Hash m_oTexts;
    const Data_MergePick m_ePick;
    const Visit& m_oVisit;
    Data_PatchPlan* m_pPlan = nullptr;
    u3_t m_uConflicts = 0;
    bool m_bTells = true;
};

}  // namespace vok

#endif  // VOK_COMPARE_PLAN_MERGER_H
