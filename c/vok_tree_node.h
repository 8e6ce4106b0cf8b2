/* SPDX-License-Identifier: MIT */
/* Cursors, names, successors, attributes. */
#ifndef VOK_TREE_NODE_H
#define VOK_TREE_NODE_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- cursors ------------------------------------------------------------- */

/* A cursor on nothing. The first thing put into it gives it a tree, and it stands on the root. */
VOK_TREE_API vok_tree_status vok_tree_new(vok_tree_node** node);
/* A second cursor on the same node; the tree is shared, not copied. */
VOK_TREE_API vok_tree_status vok_tree_duplicate(const vok_tree_node* node, vok_tree_node** copy);
/* Moves a cursor to where another one stands, which may be nothing. */
VOK_TREE_API vok_tree_status vok_tree_assign(vok_tree_node* node, const vok_tree_node* other);
/* The tree goes with the last cursor, iterator or list of nodes that refers to it. */
VOK_TREE_API void vok_tree_free(vok_tree_node* node);

/* Whether it stands on a node; 0 for a null handle. */
VOK_TREE_API int32_t vok_tree_is_node(const vok_tree_node* node);
/* Whether two cursors stand on one node, or both on nothing. */
VOK_TREE_API int32_t vok_tree_is_same(const vok_tree_node* a, const vok_tree_node* b);
/* The number of the node in its tree, 0 for the root and for nothing. It stays until
 * vok_tree_shrink. */
VOK_TREE_API uint32_t vok_tree_id(const vok_tree_node* node);
/* Nodes of the tree, removed ones included; 0 for nothing. */
VOK_TREE_API uint32_t vok_tree_node_count(const vok_tree_node* node);

/* Moves the cursor to the root; one on nothing gets a new tree. */
VOK_TREE_API vok_tree_status vok_tree_to_root(vok_tree_node* node);

/* Each moves `found`. VOK_TREE_NONE where there is no such node. Constant time, but for siblings:
 * logarithmic in their number, linear where nodes were moved. */
VOK_TREE_API vok_tree_status vok_tree_root(const vok_tree_node* node, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_by_id(const vok_tree_node* node, uint32_t id,
                                            vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_parent(const vok_tree_node* node, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_next_sibling(const vok_tree_node* node, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_previous_sibling(const vok_tree_node* node,
                                                       vok_tree_node* found);
/* Steps up to the root. Linear in them. */
VOK_TREE_API vok_tree_status vok_tree_depth(const vok_tree_node* node, int32_t* depth);

/* ---- names --------------------------------------------------------------- */

/* Borrowed; empty for an unnamed node, "Root" for an unnamed root. The length is optional. */
VOK_TREE_API vok_tree_status vok_tree_name(const vok_tree_node* node, const char** name,
                                           size_t* length);
/* Names the root, wherever the cursor stands; others are named by vok_tree_rename. */
VOK_TREE_API vok_tree_status vok_tree_set_root_name(vok_tree_node* node, const char* name);
/* A free text that is kept with the tree: DGraph documents have their version there. */
VOK_TREE_API vok_tree_status vok_tree_user_tag(const vok_tree_node* node, char* buffer, size_t room,
                                               size_t* length);
VOK_TREE_API vok_tree_status vok_tree_set_user_tag(vok_tree_node* node, const char* tag);

/* ---- successors ---------------------------------------------------------- */

/* The successors of a node stand in the byte order of their names, those of one name as they were
 * added. A removed node keeps its place until vok_tree_erase or vok_tree_shrink: positions count
 * it, and what finds a node by its position finds it. */

/* Appends an empty successor. Constant time. Fails on a node with a value. */
VOK_TREE_API vok_tree_status vok_tree_add(vok_tree_node* node, const char* name,
                                          vok_tree_node* found);
/* The successor at a position from 0 among those of its name; with a null name among all.
 * Logarithmic, but for the first time after a change, which puts the tree in order. */
VOK_TREE_API vok_tree_status vok_tree_succ(const vok_tree_node* node, const char* name,
                                           uint32_t nth, vok_tree_node* found);
/* The number of successors of that name, removed ones included. */
VOK_TREE_API vok_tree_status vok_tree_succ_count(const vok_tree_node* node, const char* name,
                                                 uint32_t* count);
/* The number of all successors that were not removed. */
VOK_TREE_API vok_tree_status vok_tree_live_succs(const vok_tree_node* node, uint32_t* count);

/* Goes through the successors of a name, or through all with a null name, removed ones left out:
 *
 *     if (vok_tree_iterate(orders, "order", &each) == VOK_TREE_OK) {
 *         while (vok_tree_iterator_next(each, order) == VOK_TREE_OK) use(order);
 *         vok_tree_iterator_free(each);
 *     }
 *
 * Take a new one after a change to the successors: an old one gives others, or none. Constant time
 * a step. */
VOK_TREE_API vok_tree_status vok_tree_iterate(const vok_tree_node* node, const char* name,
                                              vok_tree_iterator** iterator);
/* VOK_TREE_NONE behind the last one. */
VOK_TREE_API vok_tree_status vok_tree_iterator_next(vok_tree_iterator* iterator,
                                                    vok_tree_node* found);
VOK_TREE_API void vok_tree_iterator_free(vok_tree_iterator* iterator);

/* Brings the order of all successors up to date; from then on reading does not write. Linear. */
VOK_TREE_API vok_tree_status vok_tree_prepare(const vok_tree_node* node);

/* ---- attributes ---------------------------------------------------------- */

/* A null value removes the attribute. Fails for an empty name. */
VOK_TREE_API vok_tree_status vok_tree_set_attribute(vok_tree_node* node, const char* name,
                                                    const char* value);
/* Borrowed. VOK_TREE_NONE where there is none of that name. The length is optional. */
VOK_TREE_API vok_tree_status vok_tree_attribute(const vok_tree_node* node, const char* name,
                                                const char** value, size_t* length);
/* All of them in the order of their names, borrowed, into two arrays with room for so many. Null
 * arrays only ask for the count; with less room than that VOK_TREE_TOO_SMALL, and the count is
 * told. Values and count are optional. */
VOK_TREE_API vok_tree_status vok_tree_attributes(const vok_tree_node* node, const char** names,
                                                 const char** values, size_t room, size_t* count);
VOK_TREE_API vok_tree_status vok_tree_remove_attributes(vok_tree_node* node);
/* Gives `to`, which may be in another tree, the attributes of node and no others. */
VOK_TREE_API vok_tree_status vok_tree_copy_attributes(const vok_tree_node* node, vok_tree_node* to);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_NODE_H */
