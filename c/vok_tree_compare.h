/* SPDX-License-Identifier: MIT */
/* Comparing, patching and merging trees. */
#ifndef VOK_TREE_COMPARE_H
#define VOK_TREE_COMPARE_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Whether two subtrees are the same in all that can be seen. Linear. */
VOK_TREE_API vok_tree_status vok_tree_is_equal(const vok_tree_node* a, const vok_tree_node* b,
                                               int32_t* equal);
/* 128 bits, high byte first, the same for equal trees in every form on every system: XXH3 of what
 * docs/hash.md describes. Not against those who want two trees to have the same one. */
VOK_TREE_API vok_tree_status vok_tree_hash(const vok_tree_node* node, uint8_t hash[16]);

/* How successors of one name are put beside each other where that is not done by their position:
 * runs of them are aligned, so that what was put in, taken out or moved is one difference
 * (docs/compare.md). Zeros are good:
 *     static const char* const KEYS[] = {"@id"};
 *     vok_tree_compare_options options = {0};
 *     options.keys = KEYS;
 *     options.key_count = 1;
 */
typedef struct vok_tree_compare_options {
    /* What tells them apart: "@id" (an attribute), "id" (the value of a successor), "head/@id". */
    const char* const* keys;
    size_t key_count;
    /* Paths of what is not looked at. */
    const char* const* ignored;
    size_t ignored_count;
    double delta; /* reals that are no further apart are the same */
    void* reserved[2];
} vok_tree_compare_options;

enum {
    VOK_TREE_ONLY_IN_A = 0, /* with everything below, which is not visited */
    VOK_TREE_ONLY_IN_B = 1,
    VOK_TREE_OTHER_NAME = 2, /* of the compared nodes themselves */
    VOK_TREE_OTHER_TYPE = 3, /* what is below is not visited */
    VOK_TREE_OTHER_VALUE = 4,
    VOK_TREE_OTHER_ATTRIBUTE = 5,
    VOK_TREE_MOVED = 6 /* among the successors of its name; where these are aligned */
};
/* Valid during the call. */
typedef struct vok_tree_difference {
    int32_t what;
    const char* path;       /* seen from the compared nodes; in b where it is only there */
    const char* path_b;     /* where it is in b; null where it is only in a */
    const char* attribute;  /* null unless it is one */
    const vok_tree_node* a; /* the two sides; on nothing where there is none */
    const vok_tree_node* b;
} vok_tree_difference;
/* Returns 0 to go on, anything else to stop. Changes neither tree. */
typedef int32_t (*vok_tree_visit)(void* context, const vok_tree_difference* difference);

/* Hands every difference to `visit`. Without options successors are compared name by name, the
 * first with the first. The number of calls is optional. */
VOK_TREE_API vok_tree_status vok_tree_diff(const vok_tree_node* a, const vok_tree_node* b,
                                           const vok_tree_compare_options* options,
                                           vok_tree_visit visit, void* context, uint64_t* count);

/* What makes a tree like b of one like a, as a tree that can be stored. */
VOK_TREE_API vok_tree_status vok_tree_make_patch(const vok_tree_node* a, const vok_tree_node* b,
                                                 const vok_tree_compare_options* options,
                                                 vok_tree_node* patch);
/* A copy of the node and everything below it with the changes of a patch, as a tree of its own.
 * What a patch changes must be there as it was. */
VOK_TREE_API vok_tree_status vok_tree_apply_patch(const vok_tree_node* node,
                                                  const vok_tree_node* patch, vok_tree_node* found);

/* Whose changes count where both sides have changed the same. */
enum { VOK_TREE_PICK_NONE = 0, VOK_TREE_PICK_A = 1, VOK_TREE_PICK_B = 2 };
/* What one side did to a node of the base. */
enum {
    VOK_TREE_DID_CHANGE = 0,       /* its value, an attribute, its name */
    VOK_TREE_DID_CHANGE_BELOW = 1, /* what is below it */
    VOK_TREE_DID_REMOVE = 2,
    VOK_TREE_DID_MOVE = 3,
    VOK_TREE_DID_INSERT = 4
};
/* All valid during the call; texts are values of an attribute, or names, null where there is none.
 */
typedef struct vok_tree_conflict_side {
    int32_t did;
    const vok_tree_node* node; /* what there is then, where it is changed or inserted */
    const char* text;
} vok_tree_conflict_side;
typedef struct vok_tree_conflict {
    const char* path;      /* in the base; the place that it would have in a if it is inserted */
    const char* attribute; /* null unless it is one */
    const vok_tree_node* base; /* on nothing where it is inserted */
    const char* base_text;
    vok_tree_conflict_side a;
    vok_tree_conflict_side b;
} vok_tree_conflict;
/* Returns 0 to go on, anything else to be told no more. */
typedef int32_t (*vok_tree_conflict_visit)(void* context, const vok_tree_conflict* conflict);

/* What a and b have each made of base, in one tree, to whose root `found` goes. VOK_TREE_NONE where
 * there are conflicts and nobody's changes are picked. Options and `visit` are optional. */
VOK_TREE_API vok_tree_status vok_tree_merge(const vok_tree_node* base, const vok_tree_node* a,
                                            const vok_tree_node* b,
                                            const vok_tree_compare_options* options, int32_t pick,
                                            vok_tree_conflict_visit visit, void* context,
                                            vok_tree_node* found);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_COMPARE_H */
