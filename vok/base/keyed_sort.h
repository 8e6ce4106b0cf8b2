// SPDX-License-Identifier: MIT
// Sorting by numbers that stand beside what is sorted. Internal.
#ifndef VOK_BASE_KEYED_SORT_H
#define VOK_BASE_KEYED_SORT_H

#include <algorithm>
#include <numeric>

#include "vok/base/types.h"

namespace vok {

struct Keyed {
    u3_t uKey;
    u2_t uValue;
};

// Sorts by keys. Values come in ascending order, and equal keys leave them so. Takes uSize more
// elements of memory at pRoom; linear in uSize, and in the bytes in which keys differ.
void SortByKey(Keyed* pFirst, std::size_t uSize, Keyed* pRoom) noexcept;

// Sorts numbers by keys below uKeys, equal ones as they stand. Takes uKeys numbers of memory at
// pCount, and as many as there are at pRoom; linear in both.
template <class KeyOf>
void SortByCounts(u2_t* pFirst, u2_t* pEnd, const KeyOf& oKeyOf, std::size_t uKeys, u2_t* pCount,
                  u2_t* pRoom) noexcept {
    std::fill_n(pCount, uKeys, 0);
    for (const u2_t* p = pFirst; p != pEnd; ++p) ++pCount[oKeyOf(*p)];
    std::exclusive_scan(pCount, pCount + uKeys, pCount, u2_t{0});
    for (const u2_t* p = pFirst; p != pEnd; ++p) pRoom[pCount[oKeyOf(*p)]++] = *p;
    std::copy_n(pRoom, pEnd - pFirst, pFirst);
}

// Few keys, which are put in order without a branch that depends on them: each is compared with all
// others, several at a time.
class Few_Keys {
  public:
    static constexpr u2_t MOST = 64;         // how many there may be
    static constexpr u2_t ABOVE = 1u << 25;  // of all keys

    // Adds a key, in turn; there is room for it.
    void Add(u2_t uKey) noexcept {
        const auto i = static_cast<i2_t>(uKey * MOST + m_uSize);
        m_bInOrder = m_bInOrder && i > m_iLast;
        m_aiKey[m_uSize++] = m_iLast = i;
    }
    // Writes their numbers to pNumber, uFirst being that of the first one, in the order of keys;
    // equal ones stay as they came. Quadratic, but linear where they came in order.
    void Sort(u2_t uFirst, u2_t* pNumber) noexcept;

  private:
    alignas(16) i2_t m_aiKey[MOST];  // and below each its place: no two are equal
    u2_t m_uSize = 0;
    i2_t m_iLast = -1;
    bool m_bInOrder = true;
};

}  // namespace vok

#endif  // VOK_BASE_KEYED_SORT_H
