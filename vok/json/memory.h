// SPDX-License-Identifier: MIT
// Where RapidJSON keeps a text that it reads, and a few bytes for every open level. Internal.
#ifndef VOK_JSON_MEMORY_H
#define VOK_JSON_MEMORY_H

#include <algorithm>

#include "vok/base/limits.h"
#include "vok/base/mem.h"

namespace vok::json {

class Memory {
  public:
    static constexpr bool kNeedFree = true;

    // As much as there is; RapidJSON makes one of its own where it is given none.
    Memory() noexcept = default;
    // As much as texts of that length take, and more than levels do.
    explicit Memory(const Limits& oLimits) noexcept
        : m_pLimits(&oLimits), m_uMost(LEVELS + 2 * std::min(MOST, oLimits.m_uTextBytes)) {}

    void* Malloc(std::size_t uSize) { return Realloc(nullptr, 0, uSize); }
    void* Realloc(void* p, std::size_t, std::size_t uSize) {
        if (m_pLimits != nullptr && uSize > m_uMost) {
            m_pLimits->RaiseExceeded(&Limits::m_uTextBytes);
        }
        return p != nullptr ? Mem::Resize(p, uSize) : Mem::Create(uSize);
    }
    static void Free(void* p) noexcept {
        if (p != nullptr) Mem::Free(p);
    }

  private:
    static constexpr u3_t LEVELS = u3_t{1} << 26;
    // Its memory grows by halves, and it counts the bytes of a text in 32 bits.
    static constexpr u3_t MOST = 0x7FFFFFFF - LEVELS;

    const Limits* m_pLimits = nullptr;
    u3_t m_uMost = 0;
};

}  // namespace vok::json

#endif  // VOK_JSON_MEMORY_H
