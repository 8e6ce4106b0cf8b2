/* SPDX-License-Identifier: MIT */
// What the functions of this interface are made of. Internal.
#ifndef C_INTERNAL_H
#define C_INTERNAL_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <string_view>
#include <type_traits>
#include <utility>

#include "c/vok_tree_base.h"
#include "vok/base/limits.h"
#include "vok/base/msg.h"
#include "vok/base/where.h"
#include "vok/data/data.h"
#include "vok/sys/sys.h"

namespace vok::c {

// What every handle begins with: its kind, so that one of another is found out. Counts what lives.
struct Counted {
    Counted() noexcept { s_iLive.fetch_add(1, std::memory_order_relaxed); }
    ~Counted() { s_iLive.fetch_sub(1, std::memory_order_relaxed); }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    static inline std::atomic<std::int64_t> s_iLive{0};
};
template <char KIND>
struct Handle {
    static constexpr u2_t TAG = 0x564F4B00u + static_cast<u0_t>(KIND);
    const u2_t m_uTag = TAG;
    const Counted m_oCounted;
};

// ---- failures ---------------------------------------------------------------

// A failure whose code is known.
struct Failure : Msg_Exception {
    Failure(vok_tree_status iCode, const Msg_Exception& oError) noexcept
        : Msg_Exception(oError), m_iCode(iCode) {}
    vok_tree_status m_iCode;
};

// Raises what oRaise does under a code.
template <class F>
[[noreturn]] void RaiseAs(vok_tree_status iCode, F&& oRaise) {
    try {
        oRaise();
    } catch (const Msg_Exception& e) {
        throw Failure(iCode, e);
    }
    std::terminate();
}
[[noreturn]] void RaiseArgument(const char* sName);

// Keeps the exception in flight for vok_tree_last_error, and gives its code.
[[nodiscard]] vok_tree_status KeepFailure() noexcept;
// Where in a document it came up; for the next KeepFailure.
void KeepPlace(const Load_Report& oReport) noexcept;

// The border that no exception crosses. The body returns nothing, whether it found what it looked
// for, or a status.
template <class F>
vok_tree_status Call(const char* sName, F&& oBody) noexcept {
    const sys::NoCancel oNoCancel;
    try {
        return Where(sName, [&]() -> vok_tree_status {
            using Result = std::invoke_result_t<F>;
            if constexpr (std::is_void_v<Result>) {
                oBody();
                return VOK_TREE_OK;
            } else if constexpr (std::is_same_v<Result, bool>) {
                return oBody() ? VOK_TREE_OK : VOK_TREE_NONE;
            } else {
                return oBody();
            }
        });
    } catch (...) {
        return KeepFailure();
    }
}

// ---- arguments --------------------------------------------------------------

// Null for what is no handle of its kind.
template <class H>
[[nodiscard]] H* IfHandle(H* pHandle) noexcept {
    return pHandle != nullptr && pHandle->m_uTag == H::TAG ? pHandle : nullptr;
}
template <class H>
[[nodiscard]] H& Use(H* pHandle, const char* sName) {
    if (IfHandle(pHandle) == nullptr) RaiseArgument(sName);
    return *pHandle;
}
// What is no handle of its kind stays as it is.
template <class H>
void Free(H* pHandle) noexcept {
    delete IfHandle(pHandle);
}

// An output that must be there.
template <class T>
[[nodiscard]] T& Out(T* pValue, const char* sName) {
    if (pValue == nullptr) RaiseArgument(sName);
    return *pValue;
}
template <class T>
void SetIfWanted(T* pValue, T tValue) noexcept {
    if (pValue != nullptr) *pValue = tValue;
}
// Hands out a handle that is made of what oMake gives.
template <class H, class F>
void Give(H** ppHandle, const char* sName, F&& oMake) {
    H*& pHandle = Out(ppHandle, sName);
    pHandle = oMake();
}

[[nodiscard]] inline const char* Text(const char* sText) noexcept {
    return sText != nullptr ? sText : "";
}
// A text of so many bytes, or up to its NUL.
[[nodiscard]] std::string_view Text(const char* sText, std::size_t uSize, const char* sName);

// The path of a file: not null, and not empty.
[[nodiscard]] const char* Path(const char* sPath);

[[nodiscard]] Limits ToLimits(const vok_tree_limits* pLimits) noexcept;

// ---- texts handed out -------------------------------------------------------

// Cut to what there is room for, at the border of a character.
void CopyCut(std::string_view sText, char* pTarget, std::size_t uRoom) noexcept;

// Into a buffer of the caller's; a null one only asks.
vok_tree_status CopyOut(std::string_view sText, char* pBuffer, std::size_t uRoom,
                        std::size_t* pLength) noexcept;
vok_tree_status CopyOut(std::string_view sText, vok_tree_char16* pBuffer, std::size_t uRoom,
                        std::size_t* pLength);

}  // namespace vok::c

struct vok_tree_node : vok::c::Handle<'n'> {
    vok_tree_node() = default;
    explicit vok_tree_node(vok::Data oData) noexcept : m_oData(std::move(oData)) {}
    vok::Data m_oData;
};

namespace vok::c {

[[nodiscard]] inline Data& Use(vok_tree_node* pNode) {
    return Use(pNode, "node").m_oData;
}
[[nodiscard]] inline const Data& Use(const vok_tree_node* pNode) {
    return Use(pNode, "node").m_oData;
}
// A cursor that need not be there: where it is to go is told by the function that is returned.
inline auto Found(vok_tree_node* pFound) {
    if (pFound != nullptr) (void)Use(pFound, "found");
    return [pFound](Data oData) {
        const bool bNode = oData.IsNode();
        if (bNode && pFound != nullptr) pFound->m_oData = std::move(oData);
        return bNode;
    };
}
// The shell of what gives a node, or nothing.
template <class F>
vok_tree_status Find(const char* sName, vok_tree_node* pFound, F&& oBody) noexcept {
    return Call(sName, [&] {
        const auto oGo = Found(pFound);
        return oGo(oBody());
    });
}

// The shell of what gives a value, for which there must be room.
template <class T, class F>
vok_tree_status Ask(const char* sName, T* pOut, const char* sOut, F&& oBody) noexcept {
    return Call(sName, [&] {
        T& tOut = Out(pOut, sOut);
        tOut = oBody();
    });
}

}  // namespace vok::c

#endif  // C_INTERNAL_H
