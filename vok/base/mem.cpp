// SPDX-License-Identifier: MIT
#include "vok/base/mem.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "vok/base/msg.h"
#include "vok/base/msg_channel.h"
#include "vok/sys/sys.h"

namespace vok::Mem {

namespace {

// From here on a block is worth its own pages.
constexpr std::size_t PAGES_FROM = std::size_t{1} << 21;

void* DefaultAlloc(std::size_t uSize) {
    return uSize < PAGES_FROM ? std::malloc(uSize) : sys::AllocPages(uSize);
}

void DefaultFree(void* pBlock, std::size_t uSize) {
    if (uSize < PAGES_FROM) {
        std::free(pBlock);
    } else {
        sys::FreePages(pBlock, uSize);
    }
}

void* DefaultResize(void* pBlock, std::size_t uOldSize, std::size_t uNewSize) {
    const bool bWasPages = uOldSize >= PAGES_FROM;
    const bool bIsPages = uNewSize >= PAGES_FROM;
    if (!bWasPages && !bIsPages) return std::realloc(pBlock, uNewSize);
    if (bWasPages && bIsPages) return sys::ReallocPages(pBlock, uOldSize, uNewSize);
    void* pMoved = DefaultAlloc(uNewSize);
    if (pMoved == nullptr) return nullptr;
    std::memcpy(pMoved, pBlock, uOldSize < uNewSize ? uOldSize : uNewSize);
    DefaultFree(pBlock, uOldSize);
    return pMoved;
}

Allocator g_oAllocator{DefaultAlloc, DefaultResize, DefaultFree};
std::atomic<u3_t> g_uBytes{0};
std::atomic<u3_t> g_uBlocks{0};

[[nodiscard]] u3_t* Header(void* pData) noexcept {
    return reinterpret_cast<u3_t*>(static_cast<char*>(pData) - HEADER_SIZE);
}

[[nodiscard]] bool IsTooLarge(std::size_t uSize) noexcept {
    return uSize > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - 4096;
}

}  // namespace

namespace detail {

std::atomic<bool> g_bDebug{false};

void TraceDecrement(const void* pData, u3_t uOld) noexcept {
    char sLine[96];
    const auto uBlock =
        static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pData)) - HEADER_SIZE;
    std::snprintf(sLine, sizeof(sLine), "VOK.Mem:reference_count(0x%016llX) = %llu - 1\n", uBlock,
                  static_cast<unsigned long long>(uOld));
    Msg_Debug::Trace(sLine);
}

}  // namespace detail

Allocator SetAllocator(const Allocator& oAllocator) noexcept {
    return std::exchange(g_oAllocator, oAllocator);
}

void* Create(std::size_t uSize) {
    void* pBlock = IsTooLarge(uSize) ? nullptr : g_oAllocator.pAlloc(HEADER_SIZE + uSize);
    if (pBlock == nullptr) Msg::AllocationFailed(uSize, BytesInUse(), BlocksInUse());
    void* pData = static_cast<char*>(pBlock) + HEADER_SIZE;
    new (Header(pData)) std::atomic<u3_t>(0);
    Header(pData)[1] = uSize;
    sys::FetchAdd<u3_t>(g_uBytes, uSize);
    sys::FetchAdd<u3_t>(g_uBlocks, 1);
    return pData;
}

void* Resize(void* pData, std::size_t uNewSize) {
    if (pData == nullptr) return Create(uNewSize);
    const std::size_t uOldSize = SizeOf(pData);
    if (IsInPlace(pData)) {
        if (uNewSize <= uOldSize) return pData;
        return std::memcpy(Create(uNewSize), pData, uOldSize);
    }
    void* pBlock =
        IsTooLarge(uNewSize)
            ? nullptr
            : g_oAllocator.pResize(Header(pData), HEADER_SIZE + uOldSize, HEADER_SIZE + uNewSize);
    if (pBlock == nullptr) {
        Msg::ReallocationFailed(reinterpret_cast<std::uintptr_t>(pData), uNewSize, BytesInUse(),
                                BlocksInUse());
    }
    pData = static_cast<char*>(pBlock) + HEADER_SIZE;
    Header(pData)[1] = uNewSize;
    sys::FetchAdd<u3_t>(g_uBytes, uNewSize - uOldSize);
    return pData;
}

void Free(void* pData) noexcept {
    if (pData == nullptr || IsInPlace(pData)) return;
    const std::size_t uSize = SizeOf(pData);
    g_oAllocator.pFree(Header(pData), HEADER_SIZE + uSize);
    sys::FetchAdd<u3_t>(g_uBytes, ~static_cast<u3_t>(uSize) + 1);
    sys::FetchAdd<u3_t>(g_uBlocks, ~u3_t{0});
}

u3_t BytesInUse() noexcept {
    return g_uBytes.load(std::memory_order_relaxed);
}

u3_t BlocksInUse() noexcept {
    return g_uBlocks.load(std::memory_order_relaxed);
}

void SetDebug(bool bOn) noexcept {
    detail::g_bDebug.store(bOn, std::memory_order_relaxed);
}

void DecRef(void* pData) {
    std::atomic<u3_t>& oCount = RefCnt(pData);
    u3_t uOld = oCount.load(std::memory_order_acquire);
    do {
        if (uOld == 0) Msg::TryToDecrementZeroReferenceCount();
    } while (!oCount.compare_exchange_weak(uOld, uOld - 1, std::memory_order_acq_rel));
    if (detail::g_bDebug.load(std::memory_order_relaxed)) detail::TraceDecrement(pData, uOld);
}

}  // namespace vok::Mem
