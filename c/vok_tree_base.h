/* SPDX-License-Identifier: MIT */
/* What all functions share: results, errors, limits. */
#ifndef VOK_TREE_BASE_H
#define VOK_TREE_BASE_H

#include <stddef.h>
#include <stdint.h>

/* Rises when programs made for an older one would no longer run, as does the number in the shared
 * library's name. Functions may be added without. */
#define VOK_TREE_INTERFACE 1

#if defined(VOK_TREE_BUILD) && defined(_WIN32)
#define VOK_TREE_API __declspec(dllexport)
#elif defined(_WIN32)
#define VOK_TREE_API __declspec(dllimport)
#else
#define VOK_TREE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A cursor on a node, and what else there are handles of. */
typedef struct vok_tree_node vok_tree_node;
typedef struct vok_tree_iterator vok_tree_iterator;
typedef struct vok_tree_nodes vok_tree_nodes;
typedef struct vok_tree_query vok_tree_query;
typedef struct vok_tree_reader vok_tree_reader;
typedef struct vok_tree_records vok_tree_records;
typedef struct vok_tree_writer vok_tree_writer;

/* A UTF-16 code unit, of the type that u"..." has in C++ and, from C11 on, in C. */
#ifdef __cplusplus
typedef char16_t vok_tree_char16;
#else
typedef uint_least16_t vok_tree_char16;
#endif

/* The size of a text that ends at its NUL. */
#define VOK_TREE_TO_NUL ((size_t)-1)

typedef int32_t vok_tree_status; /* the values never change */
enum {
    VOK_TREE_OK = 0,
    VOK_TREE_NONE = 1,       /* there is none, or none any more */
    VOK_TREE_FAILED = -1,    /* refused or gone wrong: the text tells */
    VOK_TREE_ARGUMENT = -2,  /* a null or foreign handle, a null output, a value that is none */
    VOK_TREE_TYPE = -3,      /* the node has a value of another type */
    VOK_TREE_STREAM = -4,    /* a function of a vok_tree_stream failed, or said what cannot be */
    VOK_TREE_TOO_SMALL = -5, /* the buffer; the length is told */
    VOK_TREE_NO_MEMORY = -6,
    VOK_TREE_LIMIT =
        -7, /* the input asks for more than a vok_tree_limits allows; the text says which */
    VOK_TREE_SYSTEM =
        -8 /* the system refused, as a file that is not there; the text has its reason */
};

/* ---- the library --------------------------------------------------------- */

/* VOK_TREE_INTERFACE of the library that was loaded. */
VOK_TREE_API int32_t vok_tree_interface_version(void);

/* The last failure in this thread. What is not known is 0, or empty; texts are never null. */
typedef struct vok_tree_error {
    vok_tree_status code; /* VOK_TREE_OK before the first one */
    uint32_t line;        /* from 1, where a text was being read */
    uint32_t column;      /* in characters from 1 */
    uint64_t offset;      /* in bytes from the beginning of the document that was being read */
    const char* text;     /* what went wrong, without a line break at its end */
    const char* path;     /* the node of the document that was being read */
    const char* trail;    /* the functions that it passed, innermost first, a line each */
} vok_tree_error;

/* Valid until the next failure in this thread; never null. */
VOK_TREE_API const vok_tree_error* vok_tree_last_error(void);
/* As before the first failure. */
VOK_TREE_API void vok_tree_clear_error(void);

enum { VOK_TREE_ENGLISH = 0, VOK_TREE_GERMAN = 1 };
/* The language of error texts, for the whole process; English at first. */
VOK_TREE_API vok_tree_status vok_tree_set_language(int32_t language);

/* Handles that were not freed, and blocks of memory in use with their bytes, in the whole process.
 */
VOK_TREE_API int64_t vok_tree_live_handles(void);
VOK_TREE_API int64_t vok_tree_live_blocks(void);
VOK_TREE_API int64_t vok_tree_live_bytes(void);

/* ---- limits -------------------------------------------------------------- */

/* What one operation over data from outside may use up. The defaults keep what a document costs in
 * proportion to its size: about a microsecond and 200 bytes of memory for each of its bytes. A
 * breach names what raises it in C++: m_uDepth is VOK_TREE_LIMIT_DEPTH. */
enum {
    VOK_TREE_LIMIT_NODES = 0,
    VOK_TREE_LIMIT_DEPTH = 1,
    VOK_TREE_LIMIT_SKIPPED_SLOTS = 2, /* places that positions in names leave out */
    VOK_TREE_LIMIT_TEXT_BYTES = 3,    /* of one text, block or attribute value */
    VOK_TREE_LIMIT_ATTRIBUTES = 4,    /* of one node */
    VOK_TREE_LIMIT_INFLATED_BYTES = 5,
    VOK_TREE_LIMIT_INFLATION_RATIO = 6,
    VOK_TREE_LIMIT_ZIP_ENTRIES = 7,
    VOK_TREE_LIMIT_PATH_STEPS = 8, /* nodes looked at by one path */
    VOK_TREE_LIMIT_WORK_PER_BYTE = 9,
    VOK_TREE_LIMIT_MEMORY_PER_BYTE = 10,
    VOK_TREE_LIMIT_COUNT = 11
};
/* Zeros are the defaults, so is a null pointer to it:
 *     vok_tree_limits limits = {{0}};
 *     limits.at_most[VOK_TREE_LIMIT_DEPTH] = 100;
 */
typedef struct vok_tree_limits {
    uint64_t at_most[16]; /* those behind VOK_TREE_LIMIT_COUNT are ignored */
} vok_tree_limits;

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_BASE_H */
