// The integer types of the library. The digit is the power of two of the byte
// count: u2_t has 2^2 = 4 bytes, u3_t has 2^3 = 8.
#ifndef VOK_BASE_TYPES_H
#define VOK_BASE_TYPES_H

#include <cstddef>
#include <cstdint>

namespace vok {

using u0_t = std::uint8_t;
using u1_t = std::uint16_t;
using u2_t = std::uint32_t;
using u3_t = std::uint64_t;
using i2_t = std::int32_t;
using i3_t = std::int64_t;

// The library's version: major, minor, build, revision.
inline constexpr u2_t VERSION_MAJOR = 2;
inline constexpr u2_t VERSION_MINOR = 1;
inline constexpr u2_t VERSION_BUILD = 143;
inline constexpr u2_t VERSION_REVISION = 1;

}  // namespace vok

#endif  // VOK_BASE_TYPES_H
