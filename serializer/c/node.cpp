// SPDX-License-Identifier: MIT
// Nodes: their handles, values written to and read from them.
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "serializer/c/internal.h"
#include "serializer/document.h"
#include "serializer/exception.h"
#include "serializer/node.h"
#include "serializer/utilities.h"
#include "vok/sys/sys.h"

using namespace Velmar::Q7R::Serializer;
using C::Call;
using C::Do;
using C::Give;
using C::Text;
using C::Use;

namespace {
constexpr char NO_NODE[] = "Failed to make a node";
constexpr char NO_TEXT[] = "Failed to get Node String value";
}  // namespace

namespace Velmar::Q7R::Serializer::C {

void GiveText(std::string_view sText, const char* sFailure, const vok_char** ppValue,
              int32_t* pLength) {
    // UTF-16 has no more units than the text has bytes, which 32 bits can count.
    auto* pUnits =
        static_cast<vok_char*>(vok::sys::ThreadBlock((sText.size() + 1) * sizeof(vok_char)));
    if (pUnits == nullptr) throw System::ApplicationException(sFailure);
    const std::size_t uUnits = Utilities::Utf8ToUtf16(sText, pUnits);
    pUnits[uUnits] = 0;
    *ppValue = pUnits;
    *pLength = static_cast<int32_t>(uUnits);
}

}  // namespace Velmar::Q7R::Serializer::C

// ---- handles ----------------------------------------------------------------

vok_status vok_node_create(vok_node** node) {
    return Do([&] { Give(node, Node(), NO_NODE); });
}

vok_status vok_root_create(vok_node** node) {
    return Do([&] { Give(node, Document::NewRoot(NO_NODE), NO_NODE); });
}

vok_status vok_node_copy(const vok_node* node, vok_node** copy) {
    return Do([&] {
        if (node == nullptr) throw System::ApplicationException(NO_NODE);
        Give(copy, node->m_oNode, NO_NODE);
    });
}

void vok_node_free(vok_node* node) {
    delete node;
}

// ---- writing ----------------------------------------------------------------

vok_status vok_node_add_string(vok_node* node, const vok_char* name, const vok_char* value) {
    return Do([&] { Use(node).AddValue(Text(name), Text(value)); });
}

vok_status vok_node_add_int(vok_node* node, const vok_char* name, int32_t value) {
    return Do([&] { Use(node).AddValue(Text(name), value); });
}

vok_status vok_node_add_double(vok_node* node, const vok_char* name, double value) {
    return Do([&] { Use(node).AddValue(Text(name), value); });
}

vok_status vok_node_add_bool(vok_node* node, const vok_char* name, int32_t value) {
    return Do([&] { Use(node).AddValue(Text(name), value != 0); });
}

vok_status vok_node_add_bytes(vok_node* node, const vok_char* name, const uint8_t* bytes,
                              int32_t size) {
    return Do([&] {
        if (size < 0) throw System::ApplicationException("Failed to add Node byte array");
        const std::size_t uSize = bytes != nullptr ? static_cast<std::size_t>(size) : 0;
        Use(node).AddValue(Text(name), std::span<const Byte>(bytes, uSize));
    });
}

vok_status vok_node_add_ints(vok_node* node, const vok_char* name, int32_t v1, int32_t v2,
                             int32_t v3, int32_t v4) {
    return Do([&] { Use(node).AddValue(Text(name), v1, v2, v3, v4); });
}

vok_status vok_node_add_subnode(vok_node* node, const vok_char* name, vok_node** subnode) {
    return Do([&] { Give(subnode, Use(node).AddSubnode(Text(name)), "Failed to add subnode"); });
}

// ---- reading ----------------------------------------------------------------

vok_status vok_node_get_string(const vok_node* node, const vok_char* name, int32_t index,
                               const vok_char** value, int32_t* length) {
    return Call([&] {
        std::string_view sText;
        if (!Use(node).TryGetValue(Text(name), index, sText)) return false;
        C::GiveText(sText, NO_TEXT, value, length);
        return true;
    });
}

vok_status vok_node_get_int(const vok_node* node, const vok_char* name, int32_t index,
                            int32_t* value) {
    return Call([&] { return Use(node).TryGetValue(Text(name), index, *value); });
}

vok_status vok_node_get_double(const vok_node* node, const vok_char* name, int32_t index,
                               double* value) {
    return Call([&] { return Use(node).TryGetValue(Text(name), index, *value); });
}

vok_status vok_node_get_bool(const vok_node* node, const vok_char* name, int32_t index,
                             int32_t* value) {
    return Call([&] {
        bool bValue = false;
        if (!Use(node).TryGetValue(Text(name), index, bValue)) return false;
        *value = bValue ? 1 : 0;
        return true;
    });
}

vok_status vok_node_get_bytes(const vok_node* node, const vok_char* name, int32_t index,
                              const uint8_t** bytes, int32_t* size) {
    return Call([&] {
        std::span<const Byte> oBytes;
        if (!Use(node).TryGetValue(Text(name), index, oBytes)) return false;
        *bytes = oBytes.empty() ? nullptr : oBytes.data();
        *size = static_cast<int32_t>(oBytes.size());
        return true;
    });
}

vok_status vok_node_get_ints(const vok_node* node, const vok_char* name, int32_t index, int32_t* v1,
                             int32_t* v2, int32_t* v3, int32_t* v4) {
    return Call([&] { return Use(node).TryGetValue(Text(name), index, *v1, *v2, *v3, *v4); });
}

vok_status vok_node_get_subnode(const vok_node* node, const vok_char* name, int32_t index,
                                vok_node** subnode) {
    return Call([&] {
        Node oSubnode;
        if (!Use(node).TryGetSubnode(Text(name), index, oSubnode)) return false;
        Give(subnode, std::move(oSubnode), "Failed to get subnode");
        return true;
    });
}

vok_status vok_node_count(const vok_node* node, const vok_char* name, int32_t* count) {
    return Do([&] { *count = Use(node).GetSubnodeCount(Text(name)); });
}
