// SPDX-License-Identifier: MIT
// The integer types and the version of the library.
#ifndef VOK_BASE_TYPES_H
#define VOK_BASE_TYPES_H

#include "vok/sys/types.h"

namespace vok {

// The library's version: major, minor, build, revision.
inline constexpr u2_t VERSION_MAJOR = 2;
inline constexpr u2_t VERSION_MINOR = 1;
inline constexpr u2_t VERSION_BUILD = 143;
inline constexpr u2_t VERSION_REVISION = 1;

}  // namespace vok

#endif  // VOK_BASE_TYPES_H
