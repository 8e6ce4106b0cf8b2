/* SPDX-License-Identifier: MIT */
/* Nodes by paths.
 *
 *     path      = [ "/" [ "/" ] ] [ step { ( "/" | "//" ) step } [ "/" | "//" ] ]
 *     step      = "." | ".." | ( name | "*" ) { predicate }
 *     predicate = "[" ( "*" | digits ) "]" | "[@" name "=" quote value quote "]"
 *
 * Positions count from 0. "//" matches the next step at every depth. Characters of the syntax in
 * names and values have to be escaped: vok_tree_escape does it. */
#ifndef VOK_TREE_PATH_H
#define VOK_TREE_PATH_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The node at the end of a path, with every node on the way made that is missing; attributes that a
 * step asks for are set. `created`, which is optional, tells how many were made. Fails for "*" and
 * "//", and where a step fits several nodes; what was made is then taken back. */
VOK_TREE_API vok_tree_status vok_tree_create(vok_tree_node* node, const char* path,
                                             const vok_tree_limits* limits, vok_tree_node* found,
                                             uint32_t* created);
/* The first node that a path selects, in the order of a walk; VOK_TREE_NONE when there is none.
 * Looks no further than that. */
VOK_TREE_API vok_tree_status vok_tree_first(const vok_tree_node* node, const char* path,
                                            const vok_tree_limits* limits, vok_tree_node* found);
/* All of them, by ascending id, maybe none. Every step looks at each node once at most. */
VOK_TREE_API vok_tree_status vok_tree_select(const vok_tree_node* node, const char* path,
                                             const vok_tree_limits* limits, vok_tree_nodes** nodes);

/* 0 for a null handle. */
VOK_TREE_API size_t vok_tree_nodes_count(const vok_tree_nodes* nodes);
/* VOK_TREE_NONE when there are not so many. */
VOK_TREE_API vok_tree_status vok_tree_nodes_at(const vok_tree_nodes* nodes, size_t nth,
                                               vok_tree_node* found);
VOK_TREE_API void vok_tree_nodes_free(vok_tree_nodes* nodes);

/* A path that is used more than once. */
VOK_TREE_API vok_tree_status vok_tree_query_new(const char* path, vok_tree_query** query);
VOK_TREE_API vok_tree_status vok_tree_query_first(const vok_tree_query* query,
                                                  const vok_tree_node* node,
                                                  const vok_tree_limits* limits,
                                                  vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_query_select(const vok_tree_query* query,
                                                   const vok_tree_node* node,
                                                   const vok_tree_limits* limits,
                                                   vok_tree_nodes** nodes);
VOK_TREE_API void vok_tree_query_free(vok_tree_query* query);

/* The path that selects just this node: "/" or "/a[0]/b[2]". Linear in its depth. */
VOK_TREE_API vok_tree_status vok_tree_path(const vok_tree_node* node, char* buffer, size_t room,
                                           size_t* length);
/* A name or value as it has to stand in a path. */
VOK_TREE_API vok_tree_status vok_tree_escape(const char* text, char* buffer, size_t room,
                                             size_t* length);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_PATH_H */
