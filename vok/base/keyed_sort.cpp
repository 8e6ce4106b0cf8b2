// SPDX-License-Identifier: MIT
#include "vok/base/keyed_sort.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vok {

namespace {

// Up to here comparing is quicker than counting.
constexpr std::size_t FEW = 192;

// Moves elements to pTo in the order of the eight bits at uShift of their keys, equal ones as they
// stand.
void MoveByByte(const Keyed* pFrom, std::size_t uSize, unsigned uShift, Keyed* pTo) noexcept {
    u2_t auNext[256] = {};
    for (std::size_t u = 0; u < uSize; ++u) ++auNext[pFrom[u].uKey >> uShift & 0xFF];
    u2_t uBefore = 0;
    for (u2_t& uNext : auNext) {
        const u2_t uCount = uNext;
        uNext = uBefore;
        uBefore += uCount;
    }
    for (std::size_t u = 0; u < uSize; ++u)
        pTo[auNext[pFrom[u].uKey >> uShift & 0xFF]++] = pFrom[u];
}

}  // namespace

void SortByKey(Keyed* pFirst, std::size_t uSize, Keyed* pRoom) noexcept {
    if (uSize <= FEW) {
        std::sort(pFirst, pFirst + uSize, [](const Keyed& oA, const Keyed& oB) {
            return oA.uKey != oB.uKey ? oA.uKey < oB.uKey : oA.uValue < oB.uValue;
        });
        return;
    }
    u3_t uDiffer = 0;
    for (std::size_t u = 1; u < uSize; ++u) uDiffer |= pFirst[u].uKey ^ pFirst[0].uKey;
    Keyed* pFrom = pFirst;
    Keyed* pTo = pRoom;
    for (unsigned uShift = 0; uShift < 64; uShift += 8) {
        if ((uDiffer >> uShift & 0xFF) == 0) continue;
        MoveByByte(pFrom, uSize, uShift, pTo);
        std::swap(pFrom, pTo);
    }
    if (pFrom != pFirst) std::copy_n(pFrom, uSize, pFirst);
}

void Few_Keys::Sort(u2_t uFirst, u2_t* pNumber) noexcept {
    if (m_bInOrder) {
        for (u2_t u = 0; u < m_uSize; ++u) pNumber[u] = uFirst + u;
        return;
    }
    const u2_t uFilled = (m_uSize + 7) & ~7u;
    for (u2_t u = m_uSize; u < uFilled; ++u) m_aiKey[u] = std::numeric_limits<i2_t>::max();
    for (u2_t u = 0; u < m_uSize; ++u) {
        u2_t uBelow = 0;
        for (u2_t uOther = 0; uOther < uFilled; ++uOther) uBelow += m_aiKey[uOther] < m_aiKey[u];
        pNumber[uBelow] = uFirst + u;
    }
}

}  // namespace vok
