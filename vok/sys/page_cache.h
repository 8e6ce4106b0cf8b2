// SPDX-License-Identifier: MIT
// Internal. Freed blocks of pages that wait for the next tree: clearing fresh pages costs as
// much as filling them.
#ifndef VOK_SYS_PAGE_CACHE_H
#define VOK_SYS_PAGE_CACHE_H

#include <atomic>
#include <cstddef>
#include <utility>

namespace vok::sys {

// What stands in front of every block of pages.
struct PageHeader {
    std::size_t uMapped;    // bytes that can be used, this header with them
    std::size_t uReserved;  // bytes of address space, where a block can grow in place
};
static_assert(sizeof(PageHeader) == 16, "blocks are aligned to 16 bytes");

[[nodiscard]] inline PageHeader* HeaderOf(void* pPages) noexcept {
    return static_cast<PageHeader*>(pPages) - 1;
}

// Several threads may use one.
class PageCache {
  public:
    // Beyond so many bytes the system is told that it may take the pages of a block back, should it
    // need them: two large trees that are alive in turn then wait for no fresh pages, and nobody
    // else runs out of memory for that.
    static constexpr std::size_t FIRM = std::size_t{64} << 20;

    [[nodiscard]] bool IsFirmFor(std::size_t uMapped) const noexcept {
        return m_uBytes.load(std::memory_order_relaxed) + uMapped <= FIRM;
    }
    // A block of at least uMapped bytes, null when there is none: the smallest one, or the
    // largest one for an array that goes on growing.
    PageHeader* Take(std::size_t uMapped, bool bLargest) noexcept {
        const Guard oGuard(*this);
        PageHeader** pBest = nullptr;
        for (PageHeader*& p : m_apBlock) {
            if (p == nullptr || p->uMapped < uMapped) continue;
            if (pBest == nullptr || (p->uMapped > (*pBest)->uMapped) == bLargest) pBest = &p;
        }
        if (pBest == nullptr) return nullptr;
        m_uBytes.fetch_sub((*pBest)->uMapped, std::memory_order_relaxed);
        return std::exchange(*pBest, nullptr);
    }
    // False when there is no room: the block stays the caller's.
    bool Give(PageHeader* pBlock) noexcept {
        const Guard oGuard(*this);
        if (pBlock->uMapped > MOST - m_uBytes.load(std::memory_order_relaxed)) return false;
        for (PageHeader*& p : m_apBlock) {
            if (p != nullptr) continue;
            p = pBlock;
            m_uBytes.fetch_add(pBlock->uMapped, std::memory_order_relaxed);
            return true;
        }
        return false;
    }

    // Around a fork: the child must not find it taken by a thread that it does not have.
    void Lock() noexcept {
        while (m_oTaken.test_and_set(std::memory_order_acquire)) m_oTaken.wait(true);
    }
    void Unlock() noexcept {
        m_oTaken.clear(std::memory_order_release);
        m_oTaken.notify_one();
    }

  private:
    static constexpr std::size_t COUNT = 16;
    static constexpr std::size_t MOST = 4 * FIRM;

    // Trees may be made before and freed after everything that is constructed at run time, and
    // a mutex is that on some systems.
    class Guard {
      public:
        explicit Guard(PageCache& oCache) noexcept : m_oCache(oCache) { oCache.Lock(); }
        ~Guard() { m_oCache.Unlock(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

      private:
        PageCache& m_oCache;
    };

    std::atomic_flag m_oTaken;
    PageHeader* m_apBlock[COUNT] = {};
    std::atomic<std::size_t> m_uBytes{0};
};

}  // namespace vok::sys

#endif  // VOK_SYS_PAGE_CACHE_H
