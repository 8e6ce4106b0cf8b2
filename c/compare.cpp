// SPDX-License-Identifier: MIT
// Comparing, patching and merging trees.
#include "c/vok_tree_compare.h"

#include <algorithm>

#include "c/internal.h"
#include "vok/compare/diff.h"
#include "vok/compare/merge.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::Find;
using c::Out;
using c::Text;
using c::Use;

static_assert(int{VOK_TREE_ONLY_IN_A} == int{Data_Difference::OnlyInA} &&
              int{VOK_TREE_MOVED} == int{Data_Difference::Moved});
static_assert(int{VOK_TREE_DID_CHANGE} == int{Data_Conflict::Changed} &&
              int{VOK_TREE_DID_INSERT} == int{Data_Conflict::Inserted});

namespace {

std::vector<std::string> ToTexts(const char* const* ps, std::size_t uCount, const char* sName) {
    if (ps == nullptr && uCount != 0) c::RaiseArgument(sName);
    std::vector<std::string> as;
    for (std::size_t u = 0; u < uCount; ++u) as.emplace_back(Text(ps[u]));
    return as;
}

Data_DiffOptions ToOptions(const vok_tree_compare_options* p) {
    if (p == nullptr) return {};
    return {ToTexts(p->keys, p->key_count, "keys"),
            ToTexts(p->ignored, p->ignored_count, "ignored"), p->delta};
}

Data_MergePick ToPick(int32_t iPick) {
    switch (iPick) {
        case VOK_TREE_PICK_NONE: return Data_MergePick::None;
        case VOK_TREE_PICK_A: return Data_MergePick::A;
        case VOK_TREE_PICK_B: return Data_MergePick::B;
        default: c::RaiseArgument("pick");
    }
}

}  // namespace

vok_tree_status vok_tree_is_equal(const vok_tree_node* a, const vok_tree_node* b, int32_t* equal) {
    return Ask(__func__, equal, "equal",
               [&] { return Data::Equal(Use(a, "a").m_oData, Use(b, "b").m_oData) ? 1 : 0; });
}

vok_tree_status vok_tree_hash(const vok_tree_node* node, uint8_t hash[16]) {
    return Call(__func__, [&] {
        (void)Out(hash, "hash");
        std::ranges::copy(Use(node).Hash().m_auByte, hash);
    });
}

vok_tree_status vok_tree_diff(const vok_tree_node* a, const vok_tree_node* b,
                              const vok_tree_compare_options* options, vok_tree_visit visit,
                              void* context, uint64_t* count) {
    return Call(__func__, [&] {
        (void)Out(visit, "visit");
        const Data& oA = Use(a, "a").m_oData;
        const Data& oB = Use(b, "b").m_oData;
        const auto oTell = [&](const Data_Difference& o) {
            const vok_tree_node oNodeA(o.m_oA);
            const vok_tree_node oNodeB(o.m_oB);
            const vok_tree_difference oDifference{o.m_eWhat,      o.m_sPath, o.m_sPathB,
                                                  o.m_sAttribute, &oNodeA,   &oNodeB};
            return visit(context, &oDifference) == 0;
        };
        const u3_t uCalls = options != nullptr ? Data::Diff(oA, oB, ToOptions(options), oTell)
                                               : Data::Diff(oA, oB, oTell);
        c::SetIfWanted(count, uint64_t{uCalls});
    });
}

vok_tree_status vok_tree_make_patch(const vok_tree_node* a, const vok_tree_node* b,
                                    const vok_tree_compare_options* options, vok_tree_node* patch) {
    return Call(__func__, [&] {
        Data& oPatch = Use(patch, "patch").m_oData;
        oPatch = Data::MakePatch(Use(a, "a").m_oData, Use(b, "b").m_oData, ToOptions(options));
    });
}

vok_tree_status vok_tree_apply_patch(const vok_tree_node* node, const vok_tree_node* patch,
                                     vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).ApplyPatch(Use(patch, "patch").m_oData); });
}

vok_tree_status vok_tree_merge(const vok_tree_node* base, const vok_tree_node* a,
                               const vok_tree_node* b, const vok_tree_compare_options* options,
                               int32_t pick, vok_tree_conflict_visit visit, void* context,
                               vok_tree_node* found) {
    return Find(__func__, found, [&] {
        const auto oTell = [&](const Data_Conflict& o) {
            if (visit == nullptr) return false;
            const vok_tree_node oBase(o.m_oBase);
            const vok_tree_node oA(o.m_oA.oNode);
            const vok_tree_node oB(o.m_oB.oNode);
            const vok_tree_conflict oConflict{o.m_sPath,
                                              o.m_sAttribute,
                                              &oBase,
                                              o.m_sBase,
                                              {o.m_oA.eDid, &oA, o.m_oA.sText},
                                              {o.m_oB.eDid, &oB, o.m_oB.sText}};
            return visit(context, &oConflict) == 0;
        };
        return Data::Merge(Use(base, "base").m_oData, Use(a, "a").m_oData, Use(b, "b").m_oData,
                           ToOptions(options), ToPick(pick), oTell);
    });
}
