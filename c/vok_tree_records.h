/* SPDX-License-Identifier: MIT */
/* Documents of any size, node by node in constant memory: XML and DGraph, compressed or not. */
#ifndef VOK_TREE_RECORDS_H
#define VOK_TREE_RECORDS_H

#include "c/vok_tree_base.h"
#include "c/vok_tree_document.h"
#include "c/vok_tree_value.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The number of successors where it is not known. */
#define VOK_TREE_UNKNOWN UINT32_C(0xFFFFFFFF)

/* ---- reading ------------------------------------------------------------- */

/* Documents that vok_tree_load_file refuses are refused at the same place, with the same error.
 *
 *     while (vok_tree_reader_next(reader) == VOK_TREE_OK) {
 *         vok_tree_reader_record(reader, &record);
 *         ...
 *     }
 */
VOK_TREE_API vok_tree_status vok_tree_reader_open_file(const char* path,
                                                       const vok_tree_limits* limits,
                                                       vok_tree_reader** reader);
/* The bytes must stay as they are until the reader is freed. */
VOK_TREE_API vok_tree_status vok_tree_reader_open_memory(const void* bytes, size_t size,
                                                         const vok_tree_limits* limits,
                                                         vok_tree_reader** reader);
/* The context of the stream must stay until the reader is freed; it is read ahead. */
VOK_TREE_API vok_tree_status vok_tree_reader_open_stream(const vok_tree_stream* stream,
                                                         const vok_tree_limits* limits,
                                                         vok_tree_reader** reader);
VOK_TREE_API void vok_tree_reader_free(vok_tree_reader* reader);

/* Goes to the next record, the first of which is the root, each in front of its successors;
 * VOK_TREE_NONE behind the last one. After a failure there is only the report. */
VOK_TREE_API vok_tree_status vok_tree_reader_next(vok_tree_reader* reader);

/* What a document says of a node. Texts have no NUL behind them, and are valid until the reader
 * goes on. */
typedef struct vok_tree_record {
    const char* name;
    size_t name_size;
    uint32_t depth;      /* 0 for the root */
    int32_t index;       /* among the neighbours of its name */
    uint32_t successors; /* announced for it; or VOK_TREE_UNKNOWN */
    int32_t has_target;  /* whether it leads to another node */
    size_t attributes;
    uint64_t offset; /* bytes in front of it */
    vok_tree_value value;
    uint64_t reserved[2];
} vok_tree_record;
typedef struct vok_tree_record_attribute {
    const char* name;
    size_t name_size;
    const char* value;
    size_t value_size;
} vok_tree_record_attribute;

/* The record that the reader is at; VOK_TREE_NONE when it is at none. */
VOK_TREE_API vok_tree_status vok_tree_reader_record(const vok_tree_reader* reader,
                                                    vok_tree_record* record);
/* Its attribute at a place from 0 in the document; VOK_TREE_NONE behind the last one. */
VOK_TREE_API vok_tree_status vok_tree_reader_attribute(const vok_tree_reader* reader, size_t nth,
                                                       vok_tree_record_attribute* attribute);
/* The path of the record. Linear in its depth. */
VOK_TREE_API vok_tree_status vok_tree_reader_path(const vok_tree_reader* reader, char* buffer,
                                                  size_t room, size_t* length);
/* Leaves out what is below the record. */
VOK_TREE_API vok_tree_status vok_tree_reader_skip(vok_tree_reader* reader);
/* Makes the record and all below it a tree, to whose root the cursor goes; other cursors on the
 * tree that it was on are lost with it, also when this fails. The next record is then behind all
 * of that. */
VOK_TREE_API vok_tree_status vok_tree_reader_take(vok_tree_reader* reader, vok_tree_node* node);
VOK_TREE_API vok_tree_status vok_tree_reader_report(const vok_tree_reader* reader,
                                                    vok_tree_report* report);

/* ---- parts by a path ----------------------------------------------------- */

/* The subtrees that a path selects, one after the other, each as a tree of its own. The path goes
 * from the root downward by names, "*", "//", positions and attributes; others need the whole tree,
 * which is said at once.
 *
 *     while (vok_tree_records_next(records, order) == VOK_TREE_OK) use(order);
 *
 * Bytes and streams must stay as those of a reader. */
VOK_TREE_API vok_tree_status vok_tree_records_open_file(const char* file, const char* path,
                                                        const vok_tree_limits* limits,
                                                        vok_tree_records** records);
VOK_TREE_API vok_tree_status vok_tree_records_open_memory(const void* bytes, size_t size,
                                                          const char* path,
                                                          const vok_tree_limits* limits,
                                                          vok_tree_records** records);
VOK_TREE_API vok_tree_status vok_tree_records_open_stream(const vok_tree_stream* stream,
                                                          const char* path,
                                                          const vok_tree_limits* limits,
                                                          vok_tree_records** records);
VOK_TREE_API void vok_tree_records_free(vok_tree_records* records);
/* Moves `found` to the root of the next one; VOK_TREE_NONE behind the last one, and then the
 * document was read to its end. The tree before it is used again: its cursors are lost. After a
 * failure there is only the report. */
VOK_TREE_API vok_tree_status vok_tree_records_next(vok_tree_records* records, vok_tree_node* found);
/* Where in the document its root stands; VOK_TREE_NONE when there is none. */
VOK_TREE_API vok_tree_status vok_tree_records_path(const vok_tree_records* records, char* buffer,
                                                   size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_records_report(const vok_tree_records* records,
                                                     vok_tree_report* report);

/* ---- writing ------------------------------------------------------------- */

/* Nodes in the order of the document: successors in the byte order of their names. The bytes are
 * those of a tree that was built in that order. The form is VOK_TREE_DGRAPH or VOK_TREE_XML, with
 * VOK_TREE_ZLIB, VOK_TREE_GZIP or neither.
 *
 *     vok_tree_writer_begin(writer, "orders", VOK_TREE_UNKNOWN);
 *     vok_tree_writer_add(writer, "id", &value);
 *     vok_tree_writer_end(writer);
 *     vok_tree_writer_finish(writer);
 *
 * A function that fails has written nothing of its own node, unless what failed is the stream. */
VOK_TREE_API vok_tree_status vok_tree_writer_open_file(const char* path, int32_t form,
                                                       vok_tree_writer** writer);
/* The context of the stream must stay until the writer is freed. Where it cannot seek, up to 64 MiB
 * of a DGraph document are held back behind a node with an unknown number of successors. */
VOK_TREE_API vok_tree_status vok_tree_writer_open_stream(const vok_tree_stream* stream,
                                                         int32_t form, vok_tree_writer** writer);
/* What was not finished is not complete. */
VOK_TREE_API void vok_tree_writer_free(vok_tree_writer* writer);

/* Opens a node; `successors` is how many it will have, or VOK_TREE_UNKNOWN. */
VOK_TREE_API vok_tree_status vok_tree_writer_begin(vok_tree_writer* writer, const char* name,
                                                   uint32_t successors);
/* For the node that was opened last, in front of its value or successors. */
VOK_TREE_API vok_tree_status vok_tree_writer_attribute(vok_tree_writer* writer, const char* name,
                                                       const char* value);
/* The value of the node that was opened last. That of a Link is the path of its target. */
VOK_TREE_API vok_tree_status vok_tree_writer_value(vok_tree_writer* writer,
                                                   const vok_tree_value* value);
VOK_TREE_API vok_tree_status vok_tree_writer_end(vok_tree_writer* writer);
/* Begin, value and end in one; a null value is an empty node. */
VOK_TREE_API vok_tree_status vok_tree_writer_add(vok_tree_writer* writer, const char* name,
                                                 const vok_tree_value* value);
/* A node of a tree and all below it. */
VOK_TREE_API vok_tree_status vok_tree_writer_add_node(vok_tree_writer* writer,
                                                      const vok_tree_node* node);
/* The record that a reader is at, with its attributes. A Tree is begun, and must be ended. */
VOK_TREE_API vok_tree_status vok_tree_writer_add_record(vok_tree_writer* writer,
                                                        const vok_tree_reader* reader);
/* In XML the targets of all links have to be told before the root is begun. */
VOK_TREE_API vok_tree_status vok_tree_writer_announce(vok_tree_writer* writer, const char* path);
/* Writes what is left, and puts a file in its place: a writer that is freed before it leaves what
 * was there. Fails while a node is open. */
VOK_TREE_API vok_tree_status vok_tree_writer_finish(vok_tree_writer* writer);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_RECORDS_H */
