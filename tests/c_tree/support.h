// SPDX-License-Identifier: MIT
/* What the parts of the program share. */
#ifndef TESTS_C_TREE_SUPPORT_H
#define TESTS_C_TREE_SUPPORT_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "c/vok_tree.h"

#define CHECK(condition)                                             \
    do {                                                             \
        if (!(condition)) {                                          \
            printf("%s:%d: %s\n", __FILE__, __LINE__, #condition);   \
            printf("last error: %s\n", vok_tree_last_error()->text); \
            return 1;                                                \
        }                                                            \
    } while (0)

#define OK(call) CHECK((call) == VOK_TREE_OK)
#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static inline int is(const char* text, const char* expected) {
    if (strcmp(text, expected) == 0) return 1;
    printf("\"%s\" instead of \"%s\"\n", text, expected);
    return 0;
}

static inline int path_is(const vok_tree_node* n, const char* expected) {
    char path[64];
    size_t length = 0;
    OK(vok_tree_path(n, NULL, 0, &length));
    CHECK(length == strlen(expected));
    if (length > 0) CHECK(vok_tree_path(n, path, length, &length) == VOK_TREE_TOO_SMALL);
    OK(vok_tree_path(n, path, length + 1, NULL));
    CHECK(is(path, expected));
    return 0;
}

static inline int same_tree(const vok_tree_node* a, const vok_tree_node* b) {
    uint8_t ha[16], hb[16];
    OK(vok_tree_hash(a, ha));
    OK(vok_tree_hash(b, hb));
    CHECK(memcmp(ha, hb, 16) == 0);
    return 0;
}

/* documents_test.c */
int check_documents_and_records(vok_tree_node* root);
/* memory_test.c */
int check_memory(void);

#endif /* TESTS_C_TREE_SUPPORT_H */
