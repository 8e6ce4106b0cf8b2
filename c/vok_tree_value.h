/* SPDX-License-Identifier: MIT */
/* Values. */
#ifndef VOK_TREE_VALUE_H
#define VOK_TREE_VALUE_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The types of nodes. Documents have these numbers. */
enum {
    VOK_TREE_TYPE_EMPTY = 0,
    VOK_TREE_TYPE_BOOLEAN = 1,
    VOK_TREE_TYPE_INTEGER = 2,
    VOK_TREE_TYPE_CHAR = 3, /* a code point */
    VOK_TREE_TYPE_FLOAT = 4,
    VOK_TREE_TYPE_DOUBLE = 5,
    VOK_TREE_TYPE_DATE = 6, /* seconds since 1970-01-01 UTC */
    VOK_TREE_TYPE_STRING = 7,
    VOK_TREE_TYPE_BINARY = 8,
    VOK_TREE_TYPE_LONG = 9,  /* 64 bits, unsigned */
    VOK_TREE_TYPE_QUAD = 10, /* four words of 32 bits */
    VOK_TREE_TYPE_LINK = 12, /* to another node of the tree, or to nothing */
    VOK_TREE_TYPE_TREE = 13, /* it has successors */
    VOK_TREE_TYPE_REMOVED = 15
};

VOK_TREE_API vok_tree_status vok_tree_type(const vok_tree_node* node, int32_t* type);
/* "Empty", "Boolean", ...; "Unknown" for a number without a type. Never null. */
VOK_TREE_API const char* vok_tree_type_name(int32_t type);

/* A value apart from a tree, of which the member of its type counts. Those without one are Empty,
 * Tree and Removed; a Link has none but in a record, where its text says what the document says of
 * the target. Texts and bytes are borrowed when they come out, and copied when they go in. */
typedef struct vok_tree_value {
    int32_t type;
    union {
        int32_t integer; /* Integer, and Boolean: 0 or 1 */
        uint32_t character;
        double real; /* Float, Double, Date */
        uint64_t whole;
        uint32_t quad[4];
        struct {
            const char* data; /* ends in a NUL only in a tree; null with size 0 is the empty text */
            size_t size;      /* without that NUL */
        } text;
        struct {
            const void* data;
            size_t size;
        } bytes;
    } as;
} vok_tree_value;

/* ---- any type ------------------------------------------------------------ */

VOK_TREE_API vok_tree_status vok_tree_get_value(const vok_tree_node* node, vok_tree_value* value);
/* Not for Links, Tree and Removed: VOK_TREE_ARGUMENT. Empty clears. */
VOK_TREE_API vok_tree_status vok_tree_set_value(vok_tree_node* node, const vok_tree_value* value);
VOK_TREE_API vok_tree_status vok_tree_add_value(vok_tree_node* node, const char* name,
                                                const vok_tree_value* value, vok_tree_node* found);

/* ---- getting ------------------------------------------------------------- */

/* Each wants just its type, else VOK_TREE_TYPE; nothing is converted. Constant time. */
VOK_TREE_API vok_tree_status vok_tree_get_bool(const vok_tree_node* node, int32_t* value);
VOK_TREE_API vok_tree_status vok_tree_get_int(const vok_tree_node* node, int32_t* value);
VOK_TREE_API vok_tree_status vok_tree_get_char(const vok_tree_node* node, uint32_t* value);
VOK_TREE_API vok_tree_status vok_tree_get_float(const vok_tree_node* node, double* value);
VOK_TREE_API vok_tree_status vok_tree_get_double(const vok_tree_node* node, double* value);
VOK_TREE_API vok_tree_status vok_tree_get_date(const vok_tree_node* node, double* value);
VOK_TREE_API vok_tree_status vok_tree_get_long(const vok_tree_node* node, uint64_t* value);
/* Borrowed. The length is optional. */
VOK_TREE_API vok_tree_status vok_tree_get_text(const vok_tree_node* node, const char** text,
                                               size_t* length);
/* Borrowed; null when there are none. The size is optional. */
VOK_TREE_API vok_tree_status vok_tree_get_bytes(const vok_tree_node* node, const void** bytes,
                                                size_t* size);
VOK_TREE_API vok_tree_status vok_tree_get_quad(const vok_tree_node* node, uint32_t quad[4]);
/* VOK_TREE_NONE for a link to nothing. */
VOK_TREE_API vok_tree_status vok_tree_get_link(const vok_tree_node* node, vok_tree_node* found);

/* The value as another type, whatever it has; the default for an empty node. Texts give the decimal
 * number that they start with, 0 without one; reals give 0 as a whole number. */
VOK_TREE_API vok_tree_status vok_tree_as_int(const vok_tree_node* node, int32_t other,
                                             int64_t* value);
VOK_TREE_API vok_tree_status vok_tree_as_double(const vok_tree_node* node, double other,
                                                double* value);
/* Numbers in decimal, reals with 16 digits, dates as "2026-11-24 18:35:56". VOK_TREE_TYPE for
 * Binary, Link and Tree. */
VOK_TREE_API vok_tree_status vok_tree_as_text(const vok_tree_node* node, const char* other,
                                              char* buffer, size_t room, size_t* length);

/* ---- setting ------------------------------------------------------------- */

/* Each puts a value in the place of what the node has; a cursor on nothing gets a tree. Fails on a
 * node with successors and on a removed one. Constant time plus the size of the value. */
VOK_TREE_API vok_tree_status vok_tree_set_bool(vok_tree_node* node, int32_t value);
VOK_TREE_API vok_tree_status vok_tree_set_int(vok_tree_node* node, int32_t value);
VOK_TREE_API vok_tree_status vok_tree_set_char(vok_tree_node* node, uint32_t value);
VOK_TREE_API vok_tree_status vok_tree_set_float(vok_tree_node* node, double value);
VOK_TREE_API vok_tree_status vok_tree_set_double(vok_tree_node* node, double value);
VOK_TREE_API vok_tree_status vok_tree_set_date(vok_tree_node* node, double value);
VOK_TREE_API vok_tree_status vok_tree_set_long(vok_tree_node* node, uint64_t value);
/* Of a text with a size its bytes up to the first NUL. */
VOK_TREE_API vok_tree_status vok_tree_set_text(vok_tree_node* node, const char* text, size_t size);
/* At most 2^31 - 1 bytes; null with a size is VOK_TREE_ARGUMENT. */
VOK_TREE_API vok_tree_status vok_tree_set_bytes(vok_tree_node* node, const void* bytes,
                                                size_t size);
VOK_TREE_API vok_tree_status vok_tree_set_quad(vok_tree_node* node, const uint32_t quad[4]);
/* To a node of the same tree; to nothing for a cursor on nothing. */
VOK_TREE_API vok_tree_status vok_tree_set_link(vok_tree_node* node, const vok_tree_node* target);
/* Makes the node empty; a removed one that kept its place is a live one again. */
VOK_TREE_API vok_tree_status vok_tree_clear_value(vok_tree_node* node);
/* The value of another node, which may be in another tree; a Link out of that one leads to nothing.
 */
VOK_TREE_API vok_tree_status vok_tree_copy_value(const vok_tree_node* node, vok_tree_node* to);

/* ---- adding -------------------------------------------------------------- */

/* vok_tree_add and a setter in one, for less than half of the time. Where the value cannot be
 * stored the successor stays, empty. */
VOK_TREE_API vok_tree_status vok_tree_add_bool(vok_tree_node* node, const char* name, int32_t value,
                                               vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_int(vok_tree_node* node, const char* name, int32_t value,
                                              vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_char(vok_tree_node* node, const char* name,
                                               uint32_t value, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_float(vok_tree_node* node, const char* name, double value,
                                                vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_double(vok_tree_node* node, const char* name,
                                                 double value, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_date(vok_tree_node* node, const char* name, double value,
                                               vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_long(vok_tree_node* node, const char* name,
                                               uint64_t value, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_text(vok_tree_node* node, const char* name,
                                               const char* text, size_t size, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_bytes(vok_tree_node* node, const char* name,
                                                const void* bytes, size_t size,
                                                vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_quad(vok_tree_node* node, const char* name,
                                               const uint32_t quad[4], vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_add_link(vok_tree_node* node, const char* name,
                                               const vok_tree_node* target, vok_tree_node* found);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_VALUE_H */
