// SPDX-License-Identifier: MIT
// Copying of short texts. Internal.
#ifndef VOK_BASE_COPY_H
#define VOK_BASE_COPY_H

#include <cstring>

#include "vok/base/types.h"

namespace vok {

namespace detail {

template <std::size_t SIZE>
inline void CopyEnds(char* pDst, const char* pSrc, std::size_t uSize) noexcept {
    char sHead[SIZE];
    char sTail[SIZE];
    std::memcpy(sHead, pSrc, SIZE);
    std::memcpy(sTail, pSrc + uSize - SIZE, SIZE);
    std::memcpy(pDst, sHead, SIZE);
    std::memcpy(pDst + uSize - SIZE, sTail, SIZE);
}

}  // namespace detail

// Most texts are short: two copies that overlap do for up to 32 bytes.
inline void CopyBytes(char* pDst, const char* pSrc, std::size_t uSize) noexcept {
    if (uSize > 32) {
        std::memcpy(pDst, pSrc, uSize);
    } else if (uSize >= 16) {
        detail::CopyEnds<16>(pDst, pSrc, uSize);
    } else if (uSize >= 8) {
        detail::CopyEnds<8>(pDst, pSrc, uSize);
    } else if (uSize >= 4) {
        detail::CopyEnds<4>(pDst, pSrc, uSize);
    } else {
        for (std::size_t u = 0; u < uSize; ++u) pDst[u] = pSrc[u];
    }
}

// A text that is not empty, behind which SLACK bytes can be read, to where as many can be written:
// pieces of that size are quicker than asking how many bytes there are. Returns the end.
inline constexpr std::size_t COPY_SLACK = 16;
inline char* PutPieces(char* p, const char* pText, std::size_t uSize) noexcept {
    std::size_t u = 0;
    do {
        std::memcpy(p + u, pText + u, COPY_SLACK);
        u += COPY_SLACK;
    } while (u < uSize);
    return p + uSize;
}

}  // namespace vok

#endif  // VOK_BASE_COPY_H
