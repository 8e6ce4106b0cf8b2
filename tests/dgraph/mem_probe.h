// Counts and refuses the memory of blocks during one test.
#ifndef TESTS_DGRAPH_MEM_PROBE_H
#define TESTS_DGRAPH_MEM_PROBE_H

#include <cstdlib>

#include "vok/base/mem.h"

namespace vok {

// Only while no block is in use.
class Mem_Probe {
  public:
    Mem_Probe() : m_oOld(Mem::SetAllocator({Alloc, Resize, Free})) {
        s_uNow = s_uPeak = 0;
        s_uFailIn = 0;
    }
    ~Mem_Probe() { Mem::SetAllocator(m_oOld); }
    Mem_Probe(const Mem_Probe&) = delete;
    Mem_Probe& operator=(const Mem_Probe&) = delete;

    // The most bytes in use at one time.
    [[nodiscard]] static std::size_t Peak() noexcept { return s_uPeak; }
    static void ResetPeak() noexcept { s_uPeak = s_uNow; }

    // The n-th request from now on is refused, once; 0 refuses none.
    static void FailIn(unsigned uNth) noexcept { s_uFailIn = uNth; }
    // Counts a request; true when it is the one to be refused.
    static bool Refuses() noexcept { return s_uFailIn != 0 && --s_uFailIn == 0; }
    // Whether the refusal is still to come.
    [[nodiscard]] static bool IsArmed() noexcept { return s_uFailIn != 0; }

  private:
    static void* Alloc(std::size_t uSize) { return Resize(nullptr, 0, uSize); }
    static void* Resize(void* pBlock, std::size_t uOldSize, std::size_t uNewSize) {
        if (Refuses()) return nullptr;
        void* pNew = std::realloc(pBlock, uNewSize);
        if (pNew == nullptr) return nullptr;
        s_uNow += uNewSize - uOldSize;
        s_uPeak = s_uNow > s_uPeak ? s_uNow : s_uPeak;
        return pNew;
    }
    static void Free(void* pBlock, std::size_t uSize) {
        s_uNow -= uSize;
        std::free(pBlock);
    }

    static inline std::size_t s_uNow = 0;
    static inline std::size_t s_uPeak = 0;
    static inline unsigned s_uFailIn = 0;
    Mem::Allocator m_oOld;
};

}  // namespace vok

#endif  // TESTS_DGRAPH_MEM_PROBE_H
