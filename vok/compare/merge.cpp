// SPDX-License-Identifier: MIT
// What two trees have made of a third one, in one tree.
#include "vok/compare/merge.h"

#include "vok/base/where.h"
#include "vok/compare/plan_merger.h"
#include "vok/data/checks.h"

namespace vok {

const char* Data_Conflict::DidName(Did eDid) noexcept {
    static constexpr const char* NAMES[] = {"changed", "changed below", "removed", "moved",
                                            "inserted"};
    return NAMES[eDid];
}

Data Data::Merge(const Data& oBase, const Data& oA, const Data& oB,
                 const Data_DiffOptions& oOptions, Data_MergePick ePick,
                 const std::function<bool(const Data_Conflict&)>& oVisit) {
    return Where("vok::Data::Merge", [&] {
        Data oPatches;
        oPatches.SetToRoot();
        const Data oPatchA = MakePatch(oBase, oA, oOptions).MkCopy(oPatches);
        const Data oPatchB = MakePatch(oBase, oB, oOptions).MkCopy(oPatches);
        Data_Side oTree(oBase, *oBase.m_oBase);
        Data_Side oSide(oPatches, *oPatches.m_oBase);
        Data_PatchTargets oTargets(oSide.m_oBase.m_oNode.Size());
        Data_PatchPlan oPlanA(oTree, oSide, oTargets);
        Data_PatchPlan oPlanB(oTree, oSide, oTargets);
        oPlanA.Read(oPatchA.GetId());
        oPlanB.Read(oPatchB.GetId());
        Data_PatchPlan oPlan(oTree, oSide, oTargets);
        const u3_t uConflicts =
            Data_PlanMerger(oTree, oSide, oPlanA, oPlanB, oOptions, ePick, oVisit).Run(oPlan);
        if (uConflicts != 0 && ePick == Data_MergePick::None) return Data();
        return MakePatchedCopy(oTree, oSide, oPlan);
    });
}

}  // namespace vok
