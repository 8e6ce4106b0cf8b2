// SPDX-License-Identifier: MIT
// The integer types of the library. The digit is the power of two of the byte
// count: u2_t has 2^2 = 4 bytes, u3_t has 2^3 = 8.
#ifndef VOK_SYS_TYPES_H
#define VOK_SYS_TYPES_H

#include <cstddef>
#include <cstdint>

namespace vok {

using u0_t = std::uint8_t;
using u1_t = std::uint16_t;
using u2_t = std::uint32_t;
using u3_t = std::uint64_t;
using i2_t = std::int32_t;
using i3_t = std::int64_t;

}  // namespace vok

#endif  // VOK_SYS_TYPES_H
