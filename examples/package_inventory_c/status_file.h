// SPDX-License-Identifier: MIT
/* The package database of a Debian machine: stanzas of "Field: value" lines, as a tree. */
#ifndef INVENTORY_C_STATUS_FILE_H
#define INVENTORY_C_STATUS_FILE_H

#include <stddef.h>

#include "c/vok_tree.h"

/* Reads a database into the tree of `root`:
 *
 *     package                a stanza
 *       name
 *       text                 one for each field, in the order of their names
 *         field, value
 *       number
 *         field, value       an Integer
 *       relation
 *         field
 *         any-of             one of these has to be there
 *           package
 *             name, architecture, version, rest
 *
 * Returns the number of packages; 0 when it fails, and then `fault` says why. `size` receives the
 * bytes of the file. */
size_t read_status_file(const char* path, vok_tree_node* root, size_t* size, char fault[512]);

#endif /* INVENTORY_C_STATUS_FILE_H */
