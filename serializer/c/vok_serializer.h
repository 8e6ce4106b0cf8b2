/* SPDX-License-Identifier: MIT */
/* The serializer for programs in C, and in every language that calls C: trees of named values,
 * written to and read from XML files and binary DGraph documents.
 *
 *     vok_node* root;
 *     vok_root_create(&root);
 *     vok_node_add_int(root, name, 42);
 *     if (vok_save_file(root, path) != VOK_OK) print(vok_last_error());
 *     vok_node_free(root);
 *
 * Writing: make a root, add to it, save it. Reading: make a root, load it, get from it.
 *
 * Texts are UTF-16 in the byte order of the machine. Texts handed in end at their first NUL, are
 * copied where they are kept, and may be null: null is the empty text. A surrogate without its
 * partner becomes U+FFFD.
 *
 * Handles are made by functions with an output vok_node** and freed by vok_node_free. A handle
 * keeps the whole tree of its node alive. A null handle counts as a node that was given up: every
 * operation on it fails, none crashes. Outputs must not be null.
 *
 * Every function with a vok_status fails by returning VOK_FAILED, with the outputs untouched and
 * the text of vok_last_error set. What an operation had done to the tree before it failed stays
 * done. No C++ exception leaves the library.
 *
 * A tree, with all handles of its nodes, is used from one thread at a time; but handles may be
 * freed from any thread at any time. Different trees need no care.
 */
#ifndef VOK_SERIALIZER_H
#define VOK_SERIALIZER_H

#include <stdint.h>

/* Rises when programs made for an older one would no longer run, as does the number in the shared
 * library's name. Functions may be added without. */
#define VOK_SERIALIZER_VERSION 1

#if defined(VOK_SERIALIZER_BUILD) && defined(_WIN32)
#define VOK_API __declspec(dllexport)
#elif defined(_WIN32)
#define VOK_API __declspec(dllimport)
#else
#define VOK_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A UTF-16 code unit: of the type that C++ has for them, which C99 lacks. */
#ifdef __cplusplus
typedef char16_t vok_char;
#else
typedef uint16_t vok_char;
#endif
typedef struct vok_node vok_node; /* one node of a tree */

typedef int32_t vok_status; /* the values never change */
#define VOK_OK 0
#define VOK_NOT_FOUND 1 /* there is no such successor; the outputs are untouched */
#define VOK_FAILED (-1)

/* ---- the library -------------------------------------------------------- */

/* VOK_SERIALIZER_VERSION of the library that was loaded. */
VOK_API int32_t vok_serializer_version(void);

/* The text of the last failure in this thread, valid until the next one; empty before the first.
 * Never null. */
VOK_API const vok_char* vok_last_error(void);
/* The reason of that failure, in lines: the native error; where in a document it was found ("at
 * byte 17, line 2, column 5, in /a[0]"), when one was being read; the functions it passed,
 * innermost first. Empty when the text of the failure says it all. Valid as long. Never null. */
VOK_API const vok_char* vok_last_error_detail(void);

/* Handles that wait for vok_node_free, and blocks of memory in use with their bytes, in the whole
 * process. Hosts with a garbage collector can tell from the bytes when to start it. */
VOK_API int64_t vok_live_nodes(void);
VOK_API int64_t vok_live_blocks(void);
VOK_API int64_t vok_live_bytes(void);

/* Whether each failure below also prints a line with its time to standard output; off from when the
 * library is loaded. For the whole process. Returns the former setting. */
VOK_API int32_t vok_set_banner(int32_t on);
/* The language of native error texts: 0 English (at first), 1 German. "invalid language
 * id: %0". */
VOK_API vok_status vok_set_language(int32_t language);
/* A file that native errors are appended to; null or empty: none (at first). */
VOK_API vok_status vok_set_log_file(const vok_char* path);

/* ---- nodes -------------------------------------------------------------- */

/* A node of no tree: the first value or subnode added gives it one. Constant time. */
VOK_API vok_status vok_node_create(vok_node** node);
/* The root of a new tree. Constant time. */
VOK_API vok_status vok_root_create(vok_node** node);
/* A second handle of the same node. Constant time. "Failed to make a node". */
VOK_API vok_status vok_node_copy(const vok_node* node, vok_node** copy);
/* Frees a handle; the tree goes with its last one. Null is ignored. */
VOK_API void vok_node_free(vok_node* node);

/* ---- writing ------------------------------------------------------------ */

/* Each appends a successor of this name; a name may be used any number of times. Amortised
 * constant time plus the size of the value. */

/* "Failed to add Node String value". */
VOK_API vok_status vok_node_add_string(vok_node* node, const vok_char* name, const vok_char* value);
/* "Failed to add Node int value". */
VOK_API vok_status vok_node_add_int(vok_node* node, const vok_char* name, int32_t value);
/* "Failed to add Node double value". */
VOK_API vok_status vok_node_add_double(vok_node* node, const vok_char* name, double value);
/* Any value but 0 is true. "Failed to add Node bool value". */
VOK_API vok_status vok_node_add_bool(vok_node* node, const vok_char* name, int32_t value);
/* Copies size bytes; null counts as none, a size below 0 fails. "Failed to add Node byte array". */
VOK_API vok_status vok_node_add_bytes(vok_node* node, const vok_char* name, const uint8_t* bytes,
                                      int32_t size);
/* A subnode with the integers "V1" to "V4". "Failed to add Node quad tuple". */
VOK_API vok_status vok_node_add_ints(vok_node* node, const vok_char* name, int32_t v1, int32_t v2,
                                     int32_t v3, int32_t v4);
/* A subnode to be filled; the caller frees its handle. "Failed to add subnode". */
VOK_API vok_status vok_node_add_subnode(vok_node* node, const vok_char* name, vok_node** subnode);

/* ---- reading ------------------------------------------------------------ */

/* Each gets the successor at an index from 0 among those of its name, or is VOK_NOT_FOUND when
 * there is none. A successor with a value of another type is a failure. Logarithmic in the number
 * of successors, but for the first read after a write, which puts the tree in order. */

/* The text and its length in units; it ends in a NUL and is valid until this function is called in
 * this thread again: a thread keeps the last text it got. An empty node gives the empty text. Fails
 * with the native error and, a line each, the functions it passed. */
VOK_API vok_status vok_node_get_string(const vok_node* node, const vok_char* name, int32_t index,
                                       const vok_char** value, int32_t* length);
/* "Failed to get Node int value". */
VOK_API vok_status vok_node_get_int(const vok_node* node, const vok_char* name, int32_t index,
                                    int32_t* value);
/* "Failed to get Node double value". */
VOK_API vok_status vok_node_get_double(const vok_node* node, const vok_char* name, int32_t index,
                                       double* value);
/* 0 or 1. "Failed to get Node bool value". */
VOK_API vok_status vok_node_get_bool(const vok_node* node, const vok_char* name, int32_t index,
                                     int32_t* value);
/* The bytes in the tree, valid until it is changed or its last handle freed; null when there are
 * none. "Failed to get Node byte array". */
VOK_API vok_status vok_node_get_bytes(const vok_node* node, const vok_char* name, int32_t index,
                                      const uint8_t** bytes, int32_t* size);
/* The integers "V1" to "V4". Sets each that exists, even when it is VOK_NOT_FOUND because another
 * does not, or fails at a later one. "Failed to get Node int value". */
VOK_API vok_status vok_node_get_ints(const vok_node* node, const vok_char* name, int32_t index,
                                     int32_t* v1, int32_t* v2, int32_t* v3, int32_t* v4);
/* The caller frees the handle. "Failed to get subnode". */
VOK_API vok_status vok_node_get_subnode(const vok_node* node, const vok_char* name, int32_t index,
                                        vok_node** subnode);
/* The number of successors of that name. "Failed to get subnode count". */
VOK_API vok_status vok_node_count(const vok_node* node, const vok_char* name, int32_t* count);

/* ---- documents ---------------------------------------------------------- */

/* All are linear in the size of the document. Saving a null handle fails with "Invalid
 * vok::Data". */

/* Writes the node and all below it as XML; directories above the file are made when they are
 * missing, a file that is there is replaced. "Failed to write data to file". */
VOK_API vok_status vok_save_file(const vok_node* root, const vok_char* path);
/* The whole tree, from its root, as a DGraph document of version 1.2.0; the handle then designates
 * the root. The caller frees the bytes with vok_bytes_free. "Failed to write data to buffer". */
VOK_API vok_status vok_save_buffer(vok_node* root, uint8_t** bytes, int32_t* size);
/* The same of a form: VOK_DGRAPH or VOK_DGRAPH_1_3; any other is the first. */
VOK_API vok_status vok_save_buffer_as(vok_node* root, int32_t form, uint8_t** bytes, int32_t* size);
/* Null is ignored. */
VOK_API void vok_bytes_free(uint8_t* bytes);

/* What vok_save_stream writes: a form, and one of the others or none. */
#define VOK_DGRAPH 0 /* a DGraph document of version 1.2.0 */
#define VOK_XML 1
#define VOK_DGRAPH_1_3 2 /* of version 1.3.0 where it has a Long, which is a text before */
#define VOK_ZLIB 16      /* compressed as a zlib stream */
#define VOK_GZIP 32

/* Takes size bytes, at most 1 MiB of them, which are the next ones of a document. Returns 0 when it
 * has taken all of them; any other number ends saving. */
typedef int32_t (*vok_write_function)(void* context, const uint8_t* bytes, int32_t size);
/* Gives up to size bytes, at most 1 MiB, which are the next ones of a document, and returns their
 * number: 0 only at their end, a number below 0 when reading fails, which ends loading. */
typedef int32_t (*vok_read_function)(void* context, uint8_t* bytes, int32_t size);

/* As vok_save_file and vok_save_buffer, but piece by piece: the document is never held. The
 * functions are called in this thread, before it returns, and no exception or jump may leave them.
 * "Failed to write data to stream". */
VOK_API vok_status vok_save_stream(vok_node* root, int32_t form, vok_write_function write,
                                   void* context);

/* Puts the tree that a document makes in the place of the one that root had, and root on its root.
 * Other handles keep the former tree, and so does root when it fails. Untrusted documents are safe:
 * what one may cost in memory is bounded. "Failed to read data from file.", both; a null handle:
 * "Invalid vok::Data". */
VOK_API vok_status vok_load_file(vok_node* root, const vok_char* path);
/* Null, or a size below 1, is no document. */
VOK_API vok_status vok_load_buffer(vok_node* root, const uint8_t* bytes, int32_t size);
/* The same for a document of any form, as it is or compressed, which is read piece by piece, and
 * beyond its end. "Failed to read data from stream". */
VOK_API vok_status vok_load_stream(vok_node* root, vok_read_function read, void* context);

/* ---- values of every type ----------------------------------------------- */

/* Each appends a successor of this name, as those above. */

/* 64 bits, with or without a sign: a negative number is its two's complement. "Failed to add Node
 * int value". */
VOK_API vok_status vok_node_add_long(vok_node* node, const vok_char* name, int64_t value);
/* "Failed to add Node double value". */
VOK_API vok_status vok_node_add_float(vok_node* node, const vok_char* name, float value);
/* Seconds since 1970-01-01 UTC. "Failed to add Node int value". */
VOK_API vok_status vok_node_add_date(vok_node* node, const vok_char* name, double seconds);
/* Sets an attribute of the node itself; it ends up once, with the last value. "Failed to set Node
 * attribute". */
VOK_API vok_status vok_node_set_attribute(vok_node* node, const vok_char* name,
                                          const vok_char* value);

/* Each gets the successor at an index from 0 among those of its name, or is VOK_NOT_FOUND, and
 * takes the value from a node of any type that holds it. What does not fit is a failure that says
 * so: "/size: a number from 0 to 255 expected, Integer 300 found". */

/* A whole number from lowest, which is not above 0, to highest, the latter without a sign: of an
 * Integer, a Long, or, where highest is beyond an Integer, the decimal text that older documents
 * have for one. Negative ones are their two's complement. */
VOK_API vok_status vok_node_get_whole(const vok_node* node, const vok_char* name, int32_t index,
                                      int64_t lowest, uint64_t highest, int64_t* value);
/* Of an Integer, a Long that loses nothing, a Float or a Double. */
VOK_API vok_status vok_node_get_real(const vok_node* node, const vok_char* name, int32_t index,
                                     double* value);
/* The same where a Float holds all of it. */
VOK_API vok_status vok_node_get_float(const vok_node* node, const vok_char* name, int32_t index,
                                      float* value);
/* Whole seconds since 1970-01-01 UTC. */
VOK_API vok_status vok_node_get_date(const vok_node* node, const vok_char* name, int32_t index,
                                     int64_t* seconds);
/* An attribute of the node itself, or VOK_NOT_FOUND; the text is as that of vok_node_get_string.
 * "Failed to get Node attribute". */
VOK_API vok_status vok_node_get_attribute(const vok_node* node, const vok_char* name,
                                          const vok_char** value, int32_t* length);

/* ---- many nodes in one call --------------------------------------------- */

/* For hosts to whom a call is dear: what stands below a node, as bytes. Numbers in them are
 * little-endian, without padding; texts are UTF-8, their length in bytes in front of
 * them as 4 bytes.
 *
 * To be added, an item after the other: a code of 1 byte, then by the code. A value is a name and
 * the value of a node; nodes go into the one that is open.
 *
 *     VOK_ITEM_EMPTY       name
 *     VOK_ITEM_BOOLEAN     name, 1 byte, 0 or 1
 *     VOK_ITEM_INTEGER     name, 4 bytes
 *     VOK_ITEM_FLOAT       name, 8 bytes, a Double that a Float holds
 *     VOK_ITEM_DOUBLE      name, 8 bytes
 *     VOK_ITEM_DATE        name, 8 bytes, seconds since 1970-01-01 UTC as a Double
 *     VOK_ITEM_STRING      name, text
 *     VOK_ITEM_BINARY      name, number of bytes as 4 bytes, the bytes
 *     VOK_ITEM_LONG        name, 8 bytes
 *     VOK_ITEM_TREE        name; opens the node
 *     VOK_ITEM_END         closes it
 *     VOK_ITEM_NULL        name; an empty node with the attribute null="true"
 *     VOK_ITEM_HOST        name; an empty node whose handle is handed out
 *     VOK_ITEM_ATTRIBUTE   name, text; of the node that is open
 *     VOK_ITEM_REAL        name, 8 bytes: an attribute, the decimal text of a Double
 *     VOK_ITEM_FAIL        text: nothing more is added, and the call fails with the path of the
 *                          last node and this reason
 */
#define VOK_ITEM_EMPTY 0 /* these are the types of nodes, whose values never change */
#define VOK_ITEM_BOOLEAN 1
#define VOK_ITEM_INTEGER 2
#define VOK_ITEM_FLOAT 4
#define VOK_ITEM_DOUBLE 5
#define VOK_ITEM_DATE 6
#define VOK_ITEM_STRING 7
#define VOK_ITEM_BINARY 8
#define VOK_ITEM_LONG 9
#define VOK_ITEM_TREE 13
#define VOK_ITEM_END 16
#define VOK_ITEM_NULL 17
#define VOK_ITEM_HOST 18
#define VOK_ITEM_ATTRIBUTE 19
#define VOK_ITEM_REAL 20
#define VOK_ITEM_FAIL 21

/* Appends what items tell, and puts the handles of its nodes for VOK_ITEM_HOST into hosts, which
 * has room for count and must have no more of them; the caller frees them. What is left open is
 * closed. Linear. "Failed to add Node items" where they are not as above, or for what the tree
 * refuses; "/note: a text ends at its first NUL: use bytes". */
VOK_API vok_status vok_node_add_items(vok_node* node, const uint8_t* items, int32_t size,
                                      vok_node** hosts, int32_t count);

/* The node and all below it, successors in the order of their names. First the place of the names,
 * as 4 bytes; then the node:
 *
 *     size of what follows of it   4 bytes
 *     id                           4 bytes
 *     number of its name           4 bytes
 *     type                         1 byte: the codes above, or another one of a type not told here
 *     attributes                   4 bytes: how many; each is its name, a text; 1 byte, 1 where the
 *                                  text is a number; the number, a Double; the text
 *     value                        as above; of VOK_ITEM_TREE the successors, up to its size
 *
 * At the place of the names their number, 4 bytes, and each as a text. Linear. The caller frees the
 * bytes with vok_bytes_free. VOK_NOT_FOUND for a node of no tree. "Failed to get Node items". */
VOK_API vok_status vok_node_get_items(const vok_node* node, uint8_t** items, int32_t* size);
/* The node of the same tree that has this id; the caller frees the handle. VOK_NOT_FOUND where none
 * has. "Failed to get subnode". */
VOK_API vok_status vok_node_from_id(const vok_node* node, int32_t id, vok_node** found);

/* Both fail with what is wrong with the value of the node that has this id, its path in front:
 * "/legs[3]/strike: REASON, byte 1234". found other than 0: the reason is what was expected, and
 * what was found is told behind it. The place is that in the document which the tree was loaded
 * from: a buffer, or none where bytes is null; or a file, a line of it. */
VOK_API vok_status vok_fail_in_buffer(const vok_node* root, int32_t id, const vok_char* reason,
                                      int32_t found, const uint8_t* bytes, int32_t size);
VOK_API vok_status vok_fail_in_file(const vok_node* root, int32_t id, const vok_char* reason,
                                    int32_t found, const vok_char* path);

#ifdef __cplusplus
}
#endif

#endif /* VOK_SERIALIZER_H */
