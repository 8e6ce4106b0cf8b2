/* SPDX-License-Identifier: MIT */
/* Trees to documents and back: files, memory, functions of the program. */
#ifndef VOK_TREE_DOCUMENT_H
#define VOK_TREE_DOCUMENT_H

#include "c/vok_tree_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- forms --------------------------------------------------------------- */

/* A form, one of the wrappings or none, and flags, joined by "|". */
enum {
    VOK_TREE_ANY = 0, /* for loading: what the first bytes say; JSON as an object or a list */
    VOK_TREE_XML = 1,
    VOK_TREE_DGRAPH = 2,
    VOK_TREE_JSON = 3,
    VOK_TREE_DUMP = 4, /* the native dump: the fastest */

    /* for saving; loading sees them */
    VOK_TREE_ZLIB = 0x10,
    VOK_TREE_GZIP = 0x20,
    VOK_TREE_ZIP = 0x30, /* an archive with one member; files only */

    /* for saving */
    VOK_TREE_COMPACT = 0x100,        /* JSON on one line */
    VOK_TREE_NO_DECLARATION = 0x200, /* XML without its first line */
    VOK_TREE_ATTACHABLE = 0x400,     /* a dump for vok_tree_attach_file; somewhat longer */

    /* for loading XML */
    VOK_TREE_SKIP_BLANKS = 0x1000, /* a text of blanks only is no value */
    VOK_TREE_SKIP_HTML = 0x2000,   /* the tags "br" and "meta" are left out */
    VOK_TREE_LOOSE_TAGS = 0x4000   /* attributes without quotes, or value */
};

/* The version in which the tree is written as a DGraph document, and its user tag: 1.0 to 1.3, or
 * 2.0, which is a dump; with another one it cannot be saved. A tree without one is given 1.3.0. */
VOK_TREE_API vok_tree_status vok_tree_set_version(vok_tree_node* node, int32_t major, int32_t minor,
                                                  int32_t patch);

/* ---- functions as streams ------------------------------------------------ */

/* Members that are not needed are null. All functions are called in this thread, before the call
 * that was given the stream returns, or the reader or writer is freed; no jump may leave them. What
 * they return is checked: a stream that fails, or says what cannot be, is VOK_TREE_STREAM. */
typedef struct vok_tree_stream {
    void* context; /* what the functions are given */
    /* Puts up to `size` bytes there and returns how many: 0 at the end, below 0 for a failure. */
    int64_t (*read)(void* context, void* bytes, size_t size);
    /* Takes bytes and returns how many, at least 1; below that it is a failure. */
    int64_t (*write)(void* context, const void* bytes, size_t size);
    /* Goes to a position from the beginning. Returns 0, or anything else for a failure. */
    int32_t (*seek)(void* context, int64_t position);
    /* The position when the stream is handed over, asked for once; below 0 where it cannot seek. */
    int64_t (*tell)(void* context);
    /* The number of bytes from the beginning to the end; below 0 where it is not known. */
    int64_t (*size)(void* context);
    void* reserved[2]; /* null */
} vok_tree_stream;

/* ---- loading ------------------------------------------------------------- */

/* What loading met, whether it failed or not: where it ended, and what the tree does not hold. */
typedef struct vok_tree_report {
    uint64_t offset;        /* bytes from where loading began */
    uint32_t line;          /* from 1; 0 where the form has no lines */
    uint32_t column;        /* in characters from 1 */
    uint64_t nodes;         /* made, the root included */
    uint64_t bytes_left;    /* behind the document, as far as they are known */
    uint64_t missing_bytes; /* a DGraph document that was cut short: they read as zeros */
    uint64_t missing_nodes; /* announced, and not there */
    uint64_t dropped_texts; /* XML: beside elements */
    uint64_t kept_references;
    uint64_t reordered; /* elements that stand elsewhere: successors are ordered by name */
    uint64_t comments;
    uint64_t instructions;
    uint64_t rounded; /* JSON: numbers with digits that are not kept */
    uint64_t reserved[4];
    char path[512]; /* of the node being read, cut to what there is room for */
} vok_tree_report;

/* Each puts the tree of a document, compressed or not, in the place of the one that the cursor is
 * on, and the cursor on its root. Other cursors keep the former tree, and so does this one when it
 * fails. Limits and report may be null. Untrusted documents are safe. Linear in their size. */
VOK_TREE_API vok_tree_status vok_tree_load_file(vok_tree_node* node, const char* path, int32_t form,
                                                const vok_tree_limits* limits,
                                                vok_tree_report* report);
/* The bytes are used during the call only. */
VOK_TREE_API vok_tree_status vok_tree_load_memory(vok_tree_node* node, const void* bytes,
                                                  size_t size, int32_t form,
                                                  const vok_tree_limits* limits,
                                                  vok_tree_report* report);
/* Reads from the position of the stream. One that can seek is left right behind the document, or
 * what it is compressed in; of another one up to 64 KiB more are read. No archives. */
VOK_TREE_API vok_tree_status vok_tree_load_stream(vok_tree_node* node,
                                                  const vok_tree_stream* stream, int32_t form,
                                                  const vok_tree_limits* limits,
                                                  vok_tree_report* report);

/* Puts the tree of a dump that was saved as attachable in the place of the one that the cursor is
 * on, without copying it: its pages are shared by all processes that attach the file, and what is
 * changed is this process' own. The file may be replaced or removed meanwhile - on Windows it may
 * not - but never be written to: bytes that change or go under a tree are as bad as wild pointers.
 *
 * It is verified like every document, unless `checked` is not 0: for a file that this program or
 * one like it has attached before, and that nobody else can have changed. Then it takes no time
 * worth mentioning, however large it is. Another dump is loaded. Else as vok_tree_load_file. */
VOK_TREE_API vok_tree_status vok_tree_attach_file(vok_tree_node* node, const char* path,
                                                  int32_t checked, const vok_tree_limits* limits,
                                                  vok_tree_report* report);

/* ---- saving -------------------------------------------------------------- */

/* XML and JSON have the node and all below it, DGraph documents and dumps the whole tree. All are
 * linear in its size. */

/* Folders above the file are made when they are missing. A file that is there is replaced once all
 * is written and on the disk; until then, and when it fails, it stays. */
VOK_TREE_API vok_tree_status vok_tree_save_file(vok_tree_node* node, const char* path,
                                                int32_t form);
/* The caller frees the bytes with vok_tree_bytes_free. */
VOK_TREE_API vok_tree_status vok_tree_save_memory(vok_tree_node* node, int32_t form,
                                                  uint8_t** bytes, size_t* size);
VOK_TREE_API vok_tree_status vok_tree_save_stream(vok_tree_node* node,
                                                  const vok_tree_stream* stream, int32_t form);
VOK_TREE_API void vok_tree_bytes_free(uint8_t* bytes);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_DOCUMENT_H */
