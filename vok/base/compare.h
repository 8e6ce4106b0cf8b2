// SPDX-License-Identifier: MIT
// Comparing of short texts, where a call of memcmp takes longer than the comparison. Internal.
#ifndef VOK_BASE_COMPARE_H
#define VOK_BASE_COMPARE_H

#include "vok/base/little_endian.h"

namespace vok {

// The bytes at p as a number with the first one on top: compares as the bytes do.
template <class Word>
[[nodiscard]] inline Word BigEndianAt(const char* p) noexcept {
    const Word uWord = le::Load<Word>(p);
    if constexpr (sizeof(Word) == 8) return __builtin_bswap64(uWord);
    return __builtin_bswap32(static_cast<u2_t>(uWord));
}

// Whether two texts of uSize bytes, more than eight, are equal behind their first eight bytes.
// The end comes first: names that begin alike often differ in a number there.
[[nodiscard]] inline bool IsTailEqual(const char* pA, const char* pB, std::size_t uSize) noexcept {
    if (le::Load<u3_t>(pA + uSize - 8) != le::Load<u3_t>(pB + uSize - 8)) return false;
    for (std::size_t u = 8; u + 8 < uSize; u += 8) {
        if (le::Load<u3_t>(pA + u) != le::Load<u3_t>(pB + u)) return false;
    }
    return true;
}

// Whether two texts of uSize bytes are equal.
[[nodiscard]] inline bool IsEqualText(const char* pA, const char* pB, std::size_t uSize) noexcept {
    if (uSize >= 8) {
        return le::Load<u3_t>(pA) == le::Load<u3_t>(pB) &&
               (uSize == 8 || IsTailEqual(pA, pB, uSize));
    }
    if (uSize >= 4) {
        // Words that overlap.
        return le::Load<u2_t>(pA) == le::Load<u2_t>(pB) &&
               le::Load<u2_t>(pA + uSize - 4) == le::Load<u2_t>(pB + uSize - 4);
    }
    return uSize == 0 ||
           (pA[0] == pB[0] && pA[uSize - 1] == pB[uSize - 1] && pA[uSize / 2] == pB[uSize / 2]);
}

}  // namespace vok

#endif  // VOK_BASE_COMPARE_H
