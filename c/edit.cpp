// SPDX-License-Identifier: MIT
// Changing trees.
#include "c/vok_tree_edit.h"

#include "c/internal.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::Find;
using c::Use;

static_assert(VOK_TREE_LAST == Data::LAST);

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
