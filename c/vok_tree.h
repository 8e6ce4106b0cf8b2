/* SPDX-License-Identifier: MIT */
/* Trees for programs in C: made, read, changed, searched, compared, stored and loaded.
 *
 *     vok_tree_node *root = NULL, *order = NULL;
 *     vok_tree_new(&root);
 *     vok_tree_new(&order);
 *     vok_tree_create(root, "/order[0][@state=\"open\"]", NULL, order, NULL);
 *     vok_tree_add_double(order, "price", 12.5, NULL);
 *     if (vok_tree_save_file(root, "orders.xml", VOK_TREE_XML) != VOK_TREE_OK)
 *         fputs(vok_tree_last_error()->text, stderr);
 *     vok_tree_free(order);
 *     vok_tree_free(root);
 *
 * A vok_tree_node is a cursor: it stands on a node of a tree, or on nothing, and keeps the whole
 * tree alive. A function that finds or makes a node moves a cursor of the caller there, `found`,
 * which may be the one that it started from: going through a tree makes and frees nothing. It may
 * be null too: then only the status tells.
 *
 * Every function with a vok_tree_status returns VOK_TREE_OK, or VOK_TREE_NONE where what was asked
 * for is not there, or a negative code, and then vok_tree_last_error tells the rest. When it is not
 * VOK_TREE_OK, outputs and cursors are untouched, and so is the tree unless the description says
 * otherwise. No C++ exception leaves the library.
 *
 * Handles are made by the functions with an output of two stars and freed by the one that ends in
 * _free, once; null is ignored there. A null handle, one of another kind and a null output are
 * VOK_TREE_ARGUMENT everywhere else, but for outputs that are said to be optional. To use a handle
 * that was freed, or to free it again, is a mistake that cannot be found out.
 *
 * Texts are UTF-8, and what is not valid is read as Latin-1. Those handed in end at their first NUL
 * and are copied where they are kept; null is the empty text. Those handed out are NUL-terminated
 * and either borrowed - they lie in the tree, good until it is changed or its last cursor goes - or
 * copied into a buffer of the caller's:
 *
 *     size_t length = 0;
 *     vok_tree_path(node, NULL, 0, &length);             how long it is, without its NUL
 *     vok_tree_path(node, buffer, length + 1, NULL);     the text
 *
 * A null buffer only asks for the length, which is optional; a buffer without room for the text and
 * its NUL is VOK_TREE_TOO_SMALL: nothing is copied, but the length is told. vok_tree_utf16.h has
 * the same for UTF-16.
 *
 * A tree with all that refers to it is used from one thread at a time; after vok_tree_prepare
 * several threads may read it through cursors of their own until it is changed. Different trees
 * need no care. The same program may use vok_serializer.h as well: the trees of one are none of the
 * other.
 *
 * The parts in reading order: vok_tree_base.h, _node, _value, _path, _edit, _compare, _document,
 * _records.
 */
#ifndef VOK_TREE_H
#define VOK_TREE_H

#include "c/vok_tree_base.h"
#include "c/vok_tree_compare.h"
#include "c/vok_tree_document.h"
#include "c/vok_tree_edit.h"
#include "c/vok_tree_node.h"
#include "c/vok_tree_path.h"
#include "c/vok_tree_records.h"
#include "c/vok_tree_utf16.h"
#include "c/vok_tree_value.h"

#endif /* VOK_TREE_H */
