/* SPDX-License-Identifier: MIT */
// What the functions of the C interface are made of. Internal.
#ifndef SERIALIZER_C_INTERNAL_H
#define SERIALIZER_C_INTERNAL_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>

#include "serializer/c/vok_serializer.h"
#include "serializer/exception.h"
#include "serializer/guarded.h"
#include "serializer/node.h"
#include "serializer/string.h"
#include "vok/sys/sys.h"

// Counts what lives of it.
struct vok_node {
    explicit vok_node(Velmar::Q7R::Serializer::Node oNode) : m_oNode(std::move(oNode)) {
        s_iLive.fetch_add(1, std::memory_order_relaxed);
    }
    ~vok_node() { s_iLive.fetch_sub(1, std::memory_order_relaxed); }
    vok_node(const vok_node&) = delete;
    vok_node& operator=(const vok_node&) = delete;

    Velmar::Q7R::Serializer::Node m_oNode;
    static inline std::atomic<std::int64_t> s_iLive{0};
};

namespace Velmar::Q7R::Serializer::C {

// A node that was given up, in place of a null handle.
[[nodiscard]] const Node& Disposed() noexcept;

[[nodiscard]] inline const Node& Use(const vok_node* pNode) noexcept {
    return pNode != nullptr ? pNode->m_oNode : Disposed();
}
// Hands out a handle; failing to make one says sFailure.
inline void Give(vok_node** ppNode, Node oNode, const char* sFailure) {
    *ppNode = Guarded(sFailure, [&] { return new vok_node(std::move(oNode)); });
}

// Nothing that fails on the node that was given up changes it: threads may share it.
[[nodiscard]] inline Node& Use(vok_node* pNode) noexcept {
    return pNode != nullptr ? pNode->m_oNode : const_cast<Node&>(Disposed());
}

[[nodiscard]] inline StringRef Text(const vok_char* sText) noexcept {
    return StringRef(sText);
}

// A text for the caller, who may hand it to other functions: UTF-16 in the block of the thread.
void GiveText(std::string_view sText, const char* sFailure, const vok_char** ppValue,
              int32_t* pLength);

// Keeps a failure for vok_last_error and vok_last_error_detail; cut to what there is room for.
void SetLastError(const std::exception& oFailure) noexcept;

// The border that no exception crosses. The body tells whether it found what it looked for.
template <class F>
vok_status Call(F&& oBody) noexcept {
    const vok::sys::NoCancel oNoCancel;
    try {
        return oBody() ? VOK_OK : VOK_NOT_FOUND;
    } catch (const std::exception& e) {
        SetLastError(e);
    } catch (...) {
        SetLastError(System::ApplicationException("unknown failure"));
    }
    return VOK_FAILED;
}
// For bodies with nothing to tell.
template <class F>
vok_status Do(F&& oBody) noexcept {
    return Call([&] {
        oBody();
        return true;
    });
}

}  // namespace Velmar::Q7R::Serializer::C

#endif  // SERIALIZER_C_INTERNAL_H
