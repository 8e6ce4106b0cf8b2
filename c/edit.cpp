// Changing trees, and comparing them.
#include "c/vok_tree_edit.h"

#include <algorithm>

#include "c/internal.h"
#include "vok/data/diff.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::Find;
using c::Out;
using c::Use;

static_assert(VOK_TREE_LAST == Data::LAST);
static_assert(int{VOK_TREE_ONLY_IN_A} == int{Data_Difference::OnlyInA} &&
              int{VOK_TREE_OTHER_ATTRIBUTE} == int{Data_Difference::Attribute});

// ---- editing ----------------------------------------------------------------

vok_tree_status vok_tree_insert(vok_tree_node* node, const char* name, uint32_t position,
                                vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).Insert(name, position); });
}

vok_tree_status vok_tree_remove(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).Remove(); });
}

vok_tree_status vok_tree_remove_succs(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).RemoveSuccs(); });
}

vok_tree_status vok_tree_erase(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).Erase(); });
}

vok_tree_status vok_tree_delete(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).Delete(); });
}

vok_tree_status vok_tree_rename(vok_tree_node* node, const char* name, uint32_t position) {
    return Call(__func__, [&] { Use(node).Rename(name, position); });
}

vok_tree_status vok_tree_move(vok_tree_node* node, vok_tree_node* parent, uint32_t position) {
    return Call(__func__, [&] { Use(node).MoveTo(Use(parent, "parent").m_oData, position); });
}

vok_tree_status vok_tree_copy(const vok_tree_node* node, vok_tree_node* parent, uint32_t position,
                              vok_tree_node* found) {
    return Find(__func__, found,
                [&] { return Use(node).MkCopy(Use(parent, "parent").m_oData, position); });
}

vok_tree_status vok_tree_clone(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).MkClone(); });
}

vok_tree_status vok_tree_shrink(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).Shrink(); });
}

vok_tree_status vok_tree_reset(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).Reset(); });
}

vok_tree_status vok_tree_has_cycle(const vok_tree_node* node, int32_t* has) {
    return Ask(__func__, has, "has", [&] { return Use(node).HasCycle() ? 1 : 0; });
}

// ---- comparing --------------------------------------------------------------

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

vok_tree_status vok_tree_diff(const vok_tree_node* a, const vok_tree_node* b, vok_tree_visit visit,
                              void* context, uint64_t* count) {
    return Call(__func__, [&] {
        (void)Out(visit, "visit");
        const auto oTell = [&](const Data_Difference& o) {
            const vok_tree_node oA(o.m_oA);
            const vok_tree_node oB(o.m_oB);
            const vok_tree_difference oDifference{o.m_eWhat, o.m_sPath, o.m_sAttribute, &oA, &oB};
            return visit(context, &oDifference) == 0;
        };
        const u3_t uCalls = Data::Diff(Use(a, "a").m_oData, Use(b, "b").m_oData, oTell);
        c::SetIfWanted(count, uint64_t{uCalls});
    });
}

vok_tree_status vok_tree_make_patch(const vok_tree_node* a, const vok_tree_node* b,
                                    vok_tree_node* patch) {
    return Call(__func__, [&] {
        Data& oPatch = Use(patch, "patch").m_oData;
        oPatch = Data::MakePatch(Use(a, "a").m_oData, Use(b, "b").m_oData);
    });
}

vok_tree_status vok_tree_apply_patch(const vok_tree_node* node, const vok_tree_node* patch,
                                     vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).ApplyPatch(Use(patch, "patch").m_oData); });
}
