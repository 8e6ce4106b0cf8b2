/* SPDX-License-Identifier: MIT */
/* Reads the package database of a Debian machine into a tree, writes that to a DGraph file and to
 * an XML file, reads them back and compares: the same files as those of the program in C++. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "examples/package_inventory_c/status_file.h"

static int failed(const char* text) {
    fprintf(stderr, "package_inventory: %s\n", text);
    return 2;
}

/* A few questions to the tree. */
static vok_tree_status show_paths(const vok_tree_node* root) {
    static const char* const PATHS[] = {"/package[0]/name", "/package/number/value",
                                        "//any-of/package/name", "//version"};
    size_t i;
    vok_tree_node* first = NULL;
    vok_tree_status status = vok_tree_new(&first);
    puts("found by path");
    for (i = 0; i < sizeof(PATHS) / sizeof(PATHS[0]) && status == VOK_TREE_OK; ++i) {
        vok_tree_nodes* found = NULL;
        char text[41] = "";
        status = vok_tree_select(root, PATHS[i], NULL, &found);
        printf("  %-46s %6lu nodes", PATHS[i], (unsigned long)vok_tree_nodes_count(found));
        if (vok_tree_nodes_at(found, 0, first) == VOK_TREE_OK &&
            vok_tree_as_text(first, NULL, text, sizeof(text), NULL) == VOK_TREE_OK) {
            printf("; first: %s", text);
        }
        putchar('\n');
        vok_tree_nodes_free(found);
    }
    vok_tree_free(first);
    return status;
}

/* Writes a file, reads it back, and tells whether it holds the same tree. */
static vok_tree_status check_file(vok_tree_node* root, const char* path, int32_t form,
                                  int32_t* equal) {
    vok_tree_node* copy = NULL;
    vok_tree_report report;
    vok_tree_status status = vok_tree_new(&copy);
    if (status == VOK_TREE_OK) status = vok_tree_save_file(root, path, form);
    if (status == VOK_TREE_OK) status = vok_tree_load_file(copy, path, VOK_TREE_ANY, NULL, &report);
    if (status == VOK_TREE_OK) status = vok_tree_is_equal(root, copy, equal);
    if (status == VOK_TREE_OK) {
        printf("wrote     %s: %lu bytes, %lu nodes\n", path, (unsigned long)report.offset,
               (unsigned long)report.nodes);
    }
    vok_tree_free(copy);
    return status;
}

static int run(vok_tree_node* root, const char* status_path, const char* output) {
    char fault[512];
    size_t size = 0;
    int32_t equal = 0, equal_xml = 0;
    vok_tree_status status;
    const size_t packages = read_status_file(status_path, root, &size, fault);
    const size_t xml_size = strlen(output) + sizeof(".xml");
    char* xml = (char*)malloc(xml_size);
    if (packages == 0 || xml == NULL) {
        free(xml);
        return failed(packages == 0 ? fault : "out of memory");
    }
    snprintf(xml, xml_size, "%s.xml", output);
    printf("read      %lu packages, %lu bytes of %s\n", (unsigned long)packages,
           (unsigned long)size, status_path);
    /* As the facade writes them. */
    status = vok_tree_set_root_name(root, "Root");
    if (status == VOK_TREE_OK) status = vok_tree_set_version(root, 1, 2, 0);
    if (status == VOK_TREE_OK) status = check_file(root, output, VOK_TREE_DGRAPH, &equal);
    if (status == VOK_TREE_OK) status = show_paths(root);
    if (status == VOK_TREE_OK) status = check_file(root, xml, VOK_TREE_XML, &equal_xml);
    free(xml);
    if (status != VOK_TREE_OK) return failed(vok_tree_last_error()->text);
    puts(equal && equal_xml ? "equal in every field" : "DIFFERENT");
    return equal && equal_xml ? 0 : 1;
}

int main(int argc, char** argv) {
    const char* status = "/var/lib/dpkg/status";
    const char* output = "package_inventory.dgraph";
    vok_tree_node* root = NULL;
    int i, exit_status;
    for (i = 1; i < argc; ++i) {
        if ((strcmp(argv[i], "--output") == 0 || strcmp(argv[i], "-o") == 0) && i + 1 < argc) {
            output = argv[++i];
        } else if (argv[i][0] != '-') {
            status = argv[i];
        } else {
            puts("usage: inventory_c [STATUS] [--output FILE]");
            return strcmp(argv[i], "--help") == 0 ? 0 : 2;
        }
    }
    if (vok_tree_new(&root) != VOK_TREE_OK) return failed(vok_tree_last_error()->text);
    exit_status = run(root, status, output);
    vok_tree_free(root);
    return exit_status;
}
