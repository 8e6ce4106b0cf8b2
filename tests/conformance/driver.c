/* SPDX-License-Identifier: MIT */
/* What C answers: for each line FILE, depth limit, PATH of the file that is named, a line. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "c/vok_tree.h"

static const char* const TYPES[] = {"Empty", "Boolean", "Integer", "Char", "Float", "Double",
                                    "Date",  "String",  "Binary",  "Long", "Quad",  "",
                                    "Link",  "Tree",    "",        "Zombi"};

static void print_hash(const vok_tree_node* node) {
    uint8_t hash[16] = {0};
    size_t i;
    vok_tree_hash(node, hash);
    printf(" ");
    for (i = 0; i < sizeof(hash); ++i) printf("%02x", hash[i]);
}

static void print_node(const vok_tree_node* node) {
    char path[4096];
    size_t length = 0;
    int32_t type = 0;
    vok_tree_path(node, path, sizeof(path), &length);
    vok_tree_type(node, &type);
    printf(" | %s %s", path, TYPES[type & 15]);
    print_hash(node);
}

static void answer(const char* file, uint64_t depth, const char* path) {
    vok_tree_node *tree = NULL, *found = NULL;
    vok_tree_nodes* nodes = NULL;
    vok_tree_limits limits = {{0}};
    size_t i;
    if (depth != 0) limits.at_most[VOK_TREE_LIMIT_DEPTH] = depth;
    vok_tree_new(&tree);
    vok_tree_new(&found);
    if (vok_tree_load_file(tree, file, VOK_TREE_ANY, &limits, NULL) == VOK_TREE_OK &&
        vok_tree_select(tree, path, &limits, &nodes) == VOK_TREE_OK) {
        printf("%" PRIu32, vok_tree_node_count(tree));
        print_hash(tree);
        for (i = 0; i < vok_tree_nodes_count(nodes); ++i) {
            vok_tree_nodes_at(nodes, i, found);
            print_node(found);
        }
    } else {
        const vok_tree_error* e = vok_tree_last_error();
        printf("error: %s @ %" PRIu64 " %" PRIu32 " %" PRIu32 " %s", e->text, e->offset, e->line,
               e->column, e->path);
    }
    printf("\n");
    vok_tree_nodes_free(nodes);
    vok_tree_free(found);
    vok_tree_free(tree);
}

int main(int argc, char** argv) {
    static char line[65536];
    FILE* cases = fopen(argc > 1 ? argv[1] : "", "r");
    if (cases == NULL) return 1;
    while (fgets(line, sizeof(line), cases) != NULL) {
        char* depth = strchr(line, '\t');
        char* path = depth != NULL ? strchr(depth + 1, '\t') : NULL;
        if (path == NULL) return 1;
        *depth++ = 0;
        *path++ = 0;
        path[strcspn(path, "\n")] = 0;
        answer(line, strtoull(depth, NULL, 10), path);
    }
    fclose(cases);
    return 0;
}
