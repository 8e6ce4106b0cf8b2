// SPDX-License-Identifier: MIT
// Fixed-width numbers of stored bytes: low byte first, whatever the host does.
#ifndef VOK_BASE_LITTLE_ENDIAN_H
#define VOK_BASE_LITTLE_ENDIAN_H

#include <bit>
#include <cstring>

#include "vok/base/types.h"

namespace vok::le {

// Writes an integer and returns the place behind it.
template <class T>
inline char* Store(char* pBytes, T tValue) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(pBytes, &tValue, sizeof(T));
    } else {
        for (std::size_t u = 0; u < sizeof(T); ++u) {
            pBytes[u] = static_cast<char>(static_cast<u3_t>(tValue) >> 8 * u);
        }
    }
    return pBytes + sizeof(T);
}

template <class T>
[[nodiscard]] inline T Load(const char* pBytes) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        T tValue;
        std::memcpy(&tValue, pBytes, sizeof(T));
        return tValue;
    } else {
        u3_t uValue = 0;
        for (std::size_t u = sizeof(T); u-- > 0;) {
            uValue = uValue << 8 | static_cast<u0_t>(pBytes[u]);
        }
        return static_cast<T>(uValue);
    }
}

}  // namespace vok::le

#endif  // VOK_BASE_LITTLE_ENDIAN_H
