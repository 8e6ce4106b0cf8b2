// Fixed-width numbers of stored bytes: low byte first, whatever the host does. Compilers
// make one load or store of each.
#ifndef VOK_FILE_LITTLE_ENDIAN_H
#define VOK_FILE_LITTLE_ENDIAN_H

#include "vok/base/types.h"

namespace vok::le {

[[nodiscard]] inline u2_t GetU2(const char* pBytes) noexcept {
    u2_t uValue = 0;
    for (unsigned u = 0; u < 4; ++u) {
        uValue |= static_cast<u2_t>(static_cast<u0_t>(pBytes[u])) << (8 * u);
    }
    return uValue;
}

[[nodiscard]] inline u3_t GetU3(const char* pBytes) noexcept {
    return GetU2(pBytes) | static_cast<u3_t>(GetU2(pBytes + 4)) << 32;
}

inline void PutU2(char* pBytes, u2_t uValue) noexcept {
    for (unsigned u = 0; u < 4; ++u) pBytes[u] = static_cast<char>(uValue >> (8 * u));
}

inline void PutU3(char* pBytes, u3_t uValue) noexcept {
    PutU2(pBytes, static_cast<u2_t>(uValue));
    PutU2(pBytes + 4, static_cast<u2_t>(uValue >> 32));
}

}  // namespace vok::le

#endif  // VOK_FILE_LITTLE_ENDIAN_H
