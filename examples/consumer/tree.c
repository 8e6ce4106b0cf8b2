/* SPDX-License-Identifier: MIT */
/* The tree in C: a point to a JSON text and back. */
#include <stdio.h>

#include "c/vok_tree.h"

static vok_tree_status write_point(vok_tree_node* root, int32_t at_x, int32_t at_y) {
    vok_tree_status status = vok_tree_add_int(root, "x", at_x, NULL);
    if (status == VOK_TREE_OK) status = vok_tree_add_int(root, "y", at_y, NULL);
    return status;
}

static vok_tree_status read_point(vok_tree_node* root, int32_t* at_x, int32_t* at_y) {
    vok_tree_node* node = NULL;
    vok_tree_status status = vok_tree_new(&node);
    if (status == VOK_TREE_OK) status = vok_tree_succ(root, "x", 0, node);
    if (status == VOK_TREE_OK) status = vok_tree_get_int(node, at_x);
    if (status == VOK_TREE_OK) status = vok_tree_succ(root, "y", 0, node);
    if (status == VOK_TREE_OK) status = vok_tree_get_int(node, at_y);
    vok_tree_free(node);
    return status;
}

int main(void) {
    vok_tree_node* root = NULL;
    uint8_t* bytes = NULL;
    size_t size = 0;
    int32_t x = 0, y = 0;
    vok_tree_status status = vok_tree_new(&root);
    if (status == VOK_TREE_OK) status = write_point(root, 3, -4);
    if (status == VOK_TREE_OK) {
        status = vok_tree_save_memory(root, VOK_TREE_JSON | VOK_TREE_COMPACT, &bytes, &size);
    }
    if (status == VOK_TREE_OK) {
        printf("%.*s", (int)size, (const char*)bytes);
        status = vok_tree_load_memory(root, bytes, size, VOK_TREE_ANY, NULL, NULL);
    }
    if (status == VOK_TREE_OK) status = read_point(root, &x, &y);
    if (status != VOK_TREE_OK) fprintf(stderr, "consumer: %s\n", vok_tree_last_error()->text);
    vok_tree_bytes_free(bytes);
    vok_tree_free(root);
    return status == VOK_TREE_OK && x == 3 && y == -4 ? 0 : 1;
}
