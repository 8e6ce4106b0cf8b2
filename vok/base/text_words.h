// SPDX-License-Identifier: MIT
// Looking at every byte of a text, many of them at a time. Internal.
#ifndef VOK_BASE_TEXT_WORDS_H
#define VOK_BASE_TEXT_WORDS_H

#include <algorithm>
#include <cstring>

#include "vok/base/types.h"

namespace vok::words {

// A byte times EACH is that byte in each place of a word.
inline constexpr u3_t EACH = 0x0101010101010101u;
inline constexpr u3_t HIGH_BITS = 0x80 * EACH;

// The high bit of each byte of a word that is zero, and of none below the lowest of them.
[[nodiscard]] constexpr u3_t ZerosIn(u3_t uWord) noexcept {
    return (uWord - EACH) & ~uWord & HIGH_BITS;
}

// True when oBad(word) sets no high bit of any word of the text, which may overlap; what else it
// sets does not matter. A word of a text that is too short for one is filled up with other bytes of
// it, or with those of uFill, which shall be good. Hands the words to oUse with their places.
template <class Bad, class Use>
[[nodiscard]] inline bool AreGood(const char* pText, std::size_t uSize, u3_t uFill, const Bad& oBad,
                                  const Use& oUse) noexcept {
    u3_t uWord;
    if (uSize < 8) {
        if (uSize >= 4) {
            u2_t auHalf[2];
            std::memcpy(&auHalf[0], pText, 4);
            std::memcpy(&auHalf[1], pText + uSize - 4, 4);
            oUse(auHalf[0], 0);
            oUse(auHalf[1], uSize - 4);
            uWord = u3_t{auHalf[0]} << 32 | auHalf[1];
        } else {
            uWord = uFill;
            for (std::size_t u = 0; u < uSize; ++u) {
                oUse(static_cast<u0_t>(pText[u]), u);
                uWord = uWord << 8 | static_cast<u0_t>(pText[u]);
            }
        }
        return (oBad(uWord) & HIGH_BITS) == 0;
    }
    u3_t uBad = 0;
    for (std::size_t u = 0; u + 8 < uSize; u += 8) {
        std::memcpy(&uWord, pText + u, 8);
        oUse(uWord, u);
        uBad |= oBad(uWord);
    }
    std::memcpy(&uWord, pText + uSize - 8, 8);
    oUse(uWord, uSize - 8);
    uBad |= oBad(uWord);
    return (uBad & HIGH_BITS) == 0;
}

template <class Bad>
[[nodiscard]] inline bool AreGood(const char* pText, std::size_t uSize, u3_t uFill,
                                  const Bad& oBad) noexcept {
    return AreGood(pText, uSize, uFill, oBad, [](auto, std::size_t) {});
}

// How often a byte stands in a text. As long as sums fit into bytes compilers keep them beside each
// other in one register, where std::count has them widen each.
[[nodiscard]] inline std::size_t Count(const char* pText, std::size_t uSize, char c) noexcept {
    constexpr std::size_t LANES = 32;
    const char* const pEnd = pText + uSize;
    std::size_t uCount = 0;
    while (uSize >= LANES) {
        u0_t auSum[LANES] = {};
        for (std::size_t uRounds = std::min<std::size_t>(uSize / LANES, 255); uRounds > 0;
             --uRounds) {
            for (std::size_t u = 0; u < LANES; ++u) {
                auSum[u] = static_cast<u0_t>(auSum[u] + (pText[u] == c));
            }
            pText += LANES;
        }
        for (const u0_t u : auSum) uCount += u;
        uSize = static_cast<std::size_t>(pEnd - pText);
    }
    for (; pText != pEnd; ++pText) uCount += *pText == c;
    return uCount;
}

}  // namespace vok::words

#endif  // VOK_BASE_TEXT_WORDS_H
