/* SPDX-License-Identifier: MIT */
/* Changing trees. */
#ifndef VOK_TREE_EDIT_H
#define VOK_TREE_EDIT_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Ids, values, attributes and cursors of nodes that are not named here stay. Positions count the
 * successors of one name from 0, removed ones included: what comes to a position takes the place
 * of the one there, which moves up with those behind it. */
#define VOK_TREE_LAST UINT32_C(0xFFFFFFFF)

/* Makes an empty successor at a position. Linear in the successors of node. */
VOK_TREE_API vok_tree_status vok_tree_insert(vok_tree_node* node, const char* name,
                                             uint32_t position, vok_tree_node* found);
/* Marks the node and everything below it as removed; it keeps its place. Not for the root. */
VOK_TREE_API vok_tree_status vok_tree_remove(vok_tree_node* node);
/* The same with everything below the node, which is then empty; no places are kept. */
VOK_TREE_API vok_tree_status vok_tree_remove_succs(vok_tree_node* node);
/* Gives up the place that a removed node has kept. */
VOK_TREE_API vok_tree_status vok_tree_erase(vok_tree_node* node);
/* Remove and erase in one; the cursor stays on the removed node. */
VOK_TREE_API vok_tree_status vok_tree_delete(vok_tree_node* node);
/* Another name, at a position among those that have it. */
VOK_TREE_API vok_tree_status vok_tree_rename(vok_tree_node* node, const char* name,
                                             uint32_t position);
/* Makes the node, with everything below it, a successor of parent. In another tree it is a copy,
 * on which the cursor then stands; the node itself is removed, as vok_tree_remove does it. Not for
 * the root, nor to a place below itself. */
VOK_TREE_API vok_tree_status vok_tree_move(vok_tree_node* node, vok_tree_node* parent,
                                           uint32_t position);
/* Copies the node and everything below it, to any tree; links within it lead to the copies. Linear.
 */
VOK_TREE_API vok_tree_status vok_tree_copy(const vok_tree_node* node, vok_tree_node* parent,
                                           uint32_t position, vok_tree_node* found);
/* The same as a tree of its own, to whose root `found` goes. */
VOK_TREE_API vok_tree_status vok_tree_clone(const vok_tree_node* node, vok_tree_node* found);
/* Drops removed nodes and unused texts. Ids change: this cursor follows its node, other cursors and
 * iterators must be taken anew. */
VOK_TREE_API vok_tree_status vok_tree_shrink(vok_tree_node* node);
/* Makes the tree as new, for all its cursors; memory is kept for what is built next. */
VOK_TREE_API vok_tree_status vok_tree_reset(vok_tree_node* node);
/* Whether one can come back to a node from predecessors to successors and along links. */
VOK_TREE_API vok_tree_status vok_tree_has_cycle(const vok_tree_node* node, int32_t* has);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_EDIT_H */
