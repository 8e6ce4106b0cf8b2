/* SPDX-License-Identifier: MIT */
/* The same with texts in UTF-16, in the byte order of the machine: u"..." where the compiler knows
 * it. A surrogate without its partner becomes U+FFFD. Sizes and lengths are in units. Texts handed
 * out are copied, as vok_tree.h says: trees hold UTF-8.
 *
 * Each does what the function without "16" does, and fails as that one does; texts that it is
 * handed are converted first. */
#ifndef VOK_TREE_UTF16_H
#define VOK_TREE_UTF16_H

#include "c/vok_tree_base.h"
#include "c/vok_tree_document.h"
#include "c/vok_tree_value.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- texts handed in ----------------------------------------------------- */

VOK_TREE_API vok_tree_status vok_tree_set_root_name16(vok_tree_node* node,
                                                      const vok_tree_char16* name);
VOK_TREE_API vok_tree_status vok_tree_add16(vok_tree_node* node, const vok_tree_char16* name,
                                            vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_succ16(const vok_tree_node* node, const vok_tree_char16* name,
                                             uint32_t nth, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_succ_count16(const vok_tree_node* node,
                                                   const vok_tree_char16* name, uint32_t* count);
VOK_TREE_API vok_tree_status vok_tree_iterate16(const vok_tree_node* node,
                                                const vok_tree_char16* name,
                                                vok_tree_iterator** iterator);
VOK_TREE_API vok_tree_status vok_tree_set_attribute16(vok_tree_node* node,
                                                      const vok_tree_char16* name,
                                                      const vok_tree_char16* value);
/* The size in units, or VOK_TREE_TO_NUL. */
VOK_TREE_API vok_tree_status vok_tree_set_text16(vok_tree_node* node, const vok_tree_char16* text,
                                                 size_t size);
VOK_TREE_API vok_tree_status vok_tree_add_text16(vok_tree_node* node, const vok_tree_char16* name,
                                                 const vok_tree_char16* text, size_t size,
                                                 vok_tree_node* found);
/* With a text in it, which is UTF-8 there. */
VOK_TREE_API vok_tree_status vok_tree_add_value16(vok_tree_node* node, const vok_tree_char16* name,
                                                  const vok_tree_value* value,
                                                  vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_set_user_tag16(vok_tree_node* node,
                                                     const vok_tree_char16* tag);
VOK_TREE_API vok_tree_status vok_tree_create16(vok_tree_node* node, const vok_tree_char16* path,
                                               const vok_tree_limits* limits, vok_tree_node* found,
                                               uint32_t* created);
VOK_TREE_API vok_tree_status vok_tree_first16(const vok_tree_node* node,
                                              const vok_tree_char16* path,
                                              const vok_tree_limits* limits, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_select16(const vok_tree_node* node,
                                               const vok_tree_char16* path,
                                               const vok_tree_limits* limits,
                                               vok_tree_nodes** nodes);
VOK_TREE_API vok_tree_status vok_tree_query_new16(const vok_tree_char16* path,
                                                  vok_tree_query** query);
VOK_TREE_API vok_tree_status vok_tree_insert16(vok_tree_node* node, const vok_tree_char16* name,
                                               uint32_t position, vok_tree_node* found);
VOK_TREE_API vok_tree_status vok_tree_rename16(vok_tree_node* node, const vok_tree_char16* name,
                                               uint32_t position);
VOK_TREE_API vok_tree_status vok_tree_load_file16(vok_tree_node* node, const vok_tree_char16* path,
                                                  int32_t form, const vok_tree_limits* limits,
                                                  vok_tree_report* report);
VOK_TREE_API vok_tree_status vok_tree_attach_file16(vok_tree_node* node,
                                                    const vok_tree_char16* path, int32_t checked,
                                                    const vok_tree_limits* limits,
                                                    vok_tree_report* report);
VOK_TREE_API vok_tree_status vok_tree_save_file16(vok_tree_node* node, const vok_tree_char16* path,
                                                  int32_t form);
VOK_TREE_API vok_tree_status vok_tree_reader_open_file16(const vok_tree_char16* path,
                                                         const vok_tree_limits* limits,
                                                         vok_tree_reader** reader);
VOK_TREE_API vok_tree_status vok_tree_records_open_file16(const vok_tree_char16* file,
                                                          const vok_tree_char16* path,
                                                          const vok_tree_limits* limits,
                                                          vok_tree_records** records);
VOK_TREE_API vok_tree_status vok_tree_writer_open_file16(const vok_tree_char16* path, int32_t form,
                                                         vok_tree_writer** writer);
VOK_TREE_API vok_tree_status vok_tree_writer_begin16(vok_tree_writer* writer,
                                                     const vok_tree_char16* name,
                                                     uint32_t successors);
VOK_TREE_API vok_tree_status vok_tree_writer_attribute16(vok_tree_writer* writer,
                                                         const vok_tree_char16* name,
                                                         const vok_tree_char16* value);
VOK_TREE_API vok_tree_status vok_tree_writer_add16(vok_tree_writer* writer,
                                                   const vok_tree_char16* name,
                                                   const vok_tree_value* value);
VOK_TREE_API vok_tree_status vok_tree_writer_announce16(vok_tree_writer* writer,
                                                        const vok_tree_char16* path);

/* ---- texts handed out ---------------------------------------------------- */

VOK_TREE_API vok_tree_status vok_tree_name16(const vok_tree_node* node, vok_tree_char16* buffer,
                                             size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_user_tag16(const vok_tree_node* node, vok_tree_char16* buffer,
                                                 size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_escape16(const vok_tree_char16* text, vok_tree_char16* buffer,
                                               size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_get_text16(const vok_tree_node* node, vok_tree_char16* buffer,
                                                 size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_as_text16(const vok_tree_node* node,
                                                const vok_tree_char16* other,
                                                vok_tree_char16* buffer, size_t room,
                                                size_t* length);
VOK_TREE_API vok_tree_status vok_tree_attribute16(const vok_tree_node* node,
                                                  const vok_tree_char16* name,
                                                  vok_tree_char16* buffer, size_t room,
                                                  size_t* length);
VOK_TREE_API vok_tree_status vok_tree_path16(const vok_tree_node* node, vok_tree_char16* buffer,
                                             size_t room, size_t* length);
VOK_TREE_API vok_tree_status vok_tree_reader_path16(const vok_tree_reader* reader,
                                                    vok_tree_char16* buffer, size_t room,
                                                    size_t* length);
VOK_TREE_API vok_tree_status vok_tree_records_path16(const vok_tree_records* records,
                                                     vok_tree_char16* buffer, size_t room,
                                                     size_t* length);
/* The text of vok_tree_last_error, which this does not replace when it fails. */
VOK_TREE_API vok_tree_status vok_tree_last_error16(vok_tree_char16* buffer, size_t room,
                                                   size_t* length);

#ifdef __cplusplus
}
#endif

#endif /* VOK_TREE_UTF16_H */
