// SPDX-License-Identifier: MIT
// The same with texts in UTF-16: converted on the way in, and on the way out.
#include "c/vok_tree_utf16.h"

#include <algorithm>

#include "c/convert.h"
#include "c/vok_tree.h"

using namespace vok;
using c::Call;
using c::CopyOut;
using c::Use;

namespace {

// A text as UTF-8 for the duration of a call; null stays null.
class Utf8 {
  public:
    explicit Utf8(const vok_tree_char16* sText) : Utf8(sText, VOK_TREE_TO_NUL, "text") {}
    Utf8(const vok_tree_char16* sText, std::size_t uSize, const char* sName)
        : m_bNull(sText == nullptr) {
        if (m_bNull && uSize != 0 && uSize != VOK_TREE_TO_NUL) c::RaiseArgument(sName);
        if (m_bNull) return;
        const vok_tree_char16* const pEnd =
            uSize != VOK_TREE_TO_NUL ? std::find(sText, sText + uSize, u'\0') : nullptr;
        m_oText.Add(sText, pEnd);
    }
    operator const char*() const noexcept {  // NOLINT(google-explicit-constructor)
        return m_bNull ? nullptr : m_oText.CStr();
    }

  private:
    bool m_bNull;
    Str m_oText;
};

}  // namespace

// ---- texts handed in --------------------------------------------------------

vok_tree_status vok_tree_set_root_name16(vok_tree_node* node, const vok_tree_char16* name) {
    return Call(__func__, [&] { return vok_tree_set_root_name(node, Utf8(name)); });
}

vok_tree_status vok_tree_add16(vok_tree_node* node, const vok_tree_char16* name,
                               vok_tree_node* found) {
    return Call(__func__, [&] { return vok_tree_add(node, Utf8(name), found); });
}

vok_tree_status vok_tree_succ16(const vok_tree_node* node, const vok_tree_char16* name,
                                uint32_t nth, vok_tree_node* found) {
    return Call(__func__, [&] { return vok_tree_succ(node, Utf8(name), nth, found); });
}

vok_tree_status vok_tree_succ_count16(const vok_tree_node* node, const vok_tree_char16* name,
                                      uint32_t* count) {
    return Call(__func__, [&] { return vok_tree_succ_count(node, Utf8(name), count); });
}

vok_tree_status vok_tree_iterate16(const vok_tree_node* node, const vok_tree_char16* name,
                                   vok_tree_iterator** iterator) {
    return Call(__func__, [&] { return vok_tree_iterate(node, Utf8(name), iterator); });
}

vok_tree_status vok_tree_set_attribute16(vok_tree_node* node, const vok_tree_char16* name,
                                         const vok_tree_char16* value) {
    return Call(__func__, [&] { return vok_tree_set_attribute(node, Utf8(name), Utf8(value)); });
}

vok_tree_status vok_tree_set_text16(vok_tree_node* node, const vok_tree_char16* text, size_t size) {
    return Call(__func__,
                [&] { return vok_tree_set_text(node, Utf8(text, size, "text"), VOK_TREE_TO_NUL); });
}

vok_tree_status vok_tree_add_text16(vok_tree_node* node, const vok_tree_char16* name,
                                    const vok_tree_char16* text, size_t size,
                                    vok_tree_node* found) {
    return Call(__func__, [&] {
        const Utf8 oText(text, size, "text");
        return vok_tree_add_text(node, Utf8(name), oText, VOK_TREE_TO_NUL, found);
    });
}

vok_tree_status vok_tree_add_value16(vok_tree_node* node, const vok_tree_char16* name,
                                     const vok_tree_value* value, vok_tree_node* found) {
    return Call(__func__, [&] { return vok_tree_add_value(node, Utf8(name), value, found); });
}

vok_tree_status vok_tree_set_user_tag16(vok_tree_node* node, const vok_tree_char16* tag) {
    return Call(__func__, [&] { return vok_tree_set_user_tag(node, Utf8(tag)); });
}

vok_tree_status vok_tree_create16(vok_tree_node* node, const vok_tree_char16* path,
                                  const vok_tree_limits* limits, vok_tree_node* found,
                                  uint32_t* created) {
    return Call(__func__,
                [&] { return vok_tree_create(node, Utf8(path), limits, found, created); });
}

vok_tree_status vok_tree_first16(const vok_tree_node* node, const vok_tree_char16* path,
                                 const vok_tree_limits* limits, vok_tree_node* found) {
    return Call(__func__, [&] { return vok_tree_first(node, Utf8(path), limits, found); });
}

vok_tree_status vok_tree_select16(const vok_tree_node* node, const vok_tree_char16* path,
                                  const vok_tree_limits* limits, vok_tree_nodes** nodes) {
    return Call(__func__, [&] { return vok_tree_select(node, Utf8(path), limits, nodes); });
}

vok_tree_status vok_tree_query_new16(const vok_tree_char16* path, vok_tree_query** query) {
    return Call(__func__, [&] { return vok_tree_query_new(Utf8(path), query); });
}

vok_tree_status vok_tree_insert16(vok_tree_node* node, const vok_tree_char16* name,
                                  uint32_t position, vok_tree_node* found) {
    return Call(__func__, [&] { return vok_tree_insert(node, Utf8(name), position, found); });
}

vok_tree_status vok_tree_rename16(vok_tree_node* node, const vok_tree_char16* name,
                                  uint32_t position) {
    return Call(__func__, [&] { return vok_tree_rename(node, Utf8(name), position); });
}

vok_tree_status vok_tree_load_file16(vok_tree_node* node, const vok_tree_char16* path, int32_t form,
                                     const vok_tree_limits* limits, vok_tree_report* report) {
    return Call(__func__,
                [&] { return vok_tree_load_file(node, Utf8(path), form, limits, report); });
}

vok_tree_status vok_tree_attach_file16(vok_tree_node* node, const vok_tree_char16* path,
                                       int32_t checked, const vok_tree_limits* limits,
                                       vok_tree_report* report) {
    return Call(__func__,
                [&] { return vok_tree_attach_file(node, Utf8(path), checked, limits, report); });
}

vok_tree_status vok_tree_save_file16(vok_tree_node* node, const vok_tree_char16* path,
                                     int32_t form) {
    return Call(__func__, [&] { return vok_tree_save_file(node, Utf8(path), form); });
}

vok_tree_status vok_tree_reader_open_file16(const vok_tree_char16* path,
                                            const vok_tree_limits* limits,
                                            vok_tree_reader** reader) {
    return Call(__func__, [&] { return vok_tree_reader_open_file(Utf8(path), limits, reader); });
}

vok_tree_status vok_tree_records_open_file16(const vok_tree_char16* file,
                                             const vok_tree_char16* path,
                                             const vok_tree_limits* limits,
                                             vok_tree_records** records) {
    return Call(__func__, [&] {
        return vok_tree_records_open_file(Utf8(file), Utf8(path), limits, records);
    });
}

vok_tree_status vok_tree_writer_open_file16(const vok_tree_char16* path, int32_t form,
                                            vok_tree_writer** writer) {
    return Call(__func__, [&] { return vok_tree_writer_open_file(Utf8(path), form, writer); });
}

vok_tree_status vok_tree_writer_begin16(vok_tree_writer* writer, const vok_tree_char16* name,
                                        uint32_t successors) {
    return Call(__func__, [&] { return vok_tree_writer_begin(writer, Utf8(name), successors); });
}

vok_tree_status vok_tree_writer_attribute16(vok_tree_writer* writer, const vok_tree_char16* name,
                                            const vok_tree_char16* value) {
    return Call(__func__,
                [&] { return vok_tree_writer_attribute(writer, Utf8(name), Utf8(value)); });
}

vok_tree_status vok_tree_writer_add16(vok_tree_writer* writer, const vok_tree_char16* name,
                                      const vok_tree_value* value) {
    return Call(__func__, [&] { return vok_tree_writer_add(writer, Utf8(name), value); });
}

vok_tree_status vok_tree_writer_announce16(vok_tree_writer* writer, const vok_tree_char16* path) {
    return Call(__func__, [&] { return vok_tree_writer_announce(writer, Utf8(path)); });
}

// ---- texts handed out -------------------------------------------------------

namespace {

// What is borrowed as UTF-8, by a function of the other interface.
template <class F>
vok_tree_status CopyBorrowed(const char* sName, vok_tree_char16* pBuffer, std::size_t uRoom,
                             std::size_t* pLength, F&& oBorrow) noexcept {
    return Call(sName, [&]() -> vok_tree_status {
        const char* s = nullptr;
        std::size_t uSize = 0;
        const vok_tree_status iStatus = oBorrow(&s, &uSize);
        return iStatus == VOK_TREE_OK ? CopyOut({s, uSize}, pBuffer, uRoom, pLength) : iStatus;
    });
}

// What is copied as UTF-8, by a function of the other interface: asked first for its length.
template <class F>
vok_tree_status CopyCopied(const char* sName, vok_tree_char16* pBuffer, std::size_t uRoom,
                           std::size_t* pLength, F&& oCopy) noexcept {
    return Call(sName, [&]() -> vok_tree_status {
        std::size_t uSize = 0;
        vok_tree_status iStatus = oCopy(nullptr, 0, &uSize);
        if (iStatus != VOK_TREE_OK) return iStatus;
        Arr<char> oText;
        oText.Resize(uSize + 1);
        iStatus = oCopy(oText.Beg(), uSize + 1, &uSize);
        return iStatus == VOK_TREE_OK ? CopyOut({oText.Beg(), uSize}, pBuffer, uRoom, pLength)
                                      : iStatus;
    });
}

}  // namespace

vok_tree_status vok_tree_name16(const vok_tree_node* node, vok_tree_char16* buffer, size_t room,
                                size_t* length) {
    return CopyBorrowed(__func__, buffer, room, length, [&](const char** p, std::size_t* pSize) {
        return vok_tree_name(node, p, pSize);
    });
}

vok_tree_status vok_tree_get_text16(const vok_tree_node* node, vok_tree_char16* buffer, size_t room,
                                    size_t* length) {
    return CopyBorrowed(__func__, buffer, room, length, [&](const char** p, std::size_t* pSize) {
        return vok_tree_get_text(node, p, pSize);
    });
}

vok_tree_status vok_tree_attribute16(const vok_tree_node* node, const vok_tree_char16* name,
                                     vok_tree_char16* buffer, size_t room, size_t* length) {
    return CopyBorrowed(__func__, buffer, room, length, [&](const char** p, std::size_t* pSize) {
        return vok_tree_attribute(node, Utf8(name), p, pSize);
    });
}

vok_tree_status vok_tree_as_text16(const vok_tree_node* node, const vok_tree_char16* other,
                                   vok_tree_char16* buffer, size_t room, size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_as_text(node, Utf8(other), p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_user_tag16(const vok_tree_node* node, vok_tree_char16* buffer, size_t room,
                                    size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_user_tag(node, p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_escape16(const vok_tree_char16* text, vok_tree_char16* buffer, size_t room,
                                  size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_escape(Utf8(text), p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_path16(const vok_tree_node* node, vok_tree_char16* buffer, size_t room,
                                size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_path(node, p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_reader_path16(const vok_tree_reader* reader, vok_tree_char16* buffer,
                                       size_t room, size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_reader_path(reader, p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_records_path16(const vok_tree_records* records, vok_tree_char16* buffer,
                                        size_t room, size_t* length) {
    return CopyCopied(__func__, buffer, room, length,
                      [&](char* p, std::size_t uRoom, std::size_t* pSize) {
                          return vok_tree_records_path(records, p, uRoom, pSize);
                      });
}

vok_tree_status vok_tree_last_error16(vok_tree_char16* buffer, size_t room, size_t* length) {
    return CopyBorrowed(__func__, buffer, room, length, [](const char** p, std::size_t* pSize) {
        *p = vok_tree_last_error()->text;
        *pSize = std::string_view(*p).size();
        return VOK_TREE_OK;
    });
}
