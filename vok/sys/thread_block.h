// SPDX-License-Identifier: MIT
// Internal. The block of memory that a thread has for itself. The slot that holds it, and whatever
// frees it when the thread ends, is the system's.
#ifndef VOK_SYS_THREAD_BLOCK_H
#define VOK_SYS_THREAD_BLOCK_H

#include <cstddef>
#include <cstdlib>

namespace vok::sys {

// What stands in front of the bytes; std::free() takes its address.
struct alignas(std::max_align_t) ThreadBlockHeader {
    std::size_t uSize;  // of the bytes behind it
};

// At least uSize bytes: those of pHeld, which is what the thread's slot holds, or those of a larger
// block that oPut has put in its place. Null when there is none to be had; pHeld is then kept.
template <class Put>
[[nodiscard]] void* GrowThreadBlock(void* pHeld, std::size_t uSize, const Put& oPut) noexcept {
    auto* const pOld = static_cast<ThreadBlockHeader*>(pHeld);
    if (pOld != nullptr && pOld->uSize >= uSize) return pOld + 1;
    auto* const pNew =
        static_cast<ThreadBlockHeader*>(std::malloc(sizeof(ThreadBlockHeader) + uSize));
    if (pNew == nullptr) return nullptr;
    pNew->uSize = uSize;
    if (!oPut(pNew)) {
        std::free(pNew);
        return nullptr;
    }
    std::free(pOld);
    return pNew + 1;
}

}  // namespace vok::sys

#endif  // VOK_SYS_THREAD_BLOCK_H
