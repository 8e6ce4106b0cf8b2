// SPDX-License-Identifier: MIT
// How the first bytes of a file tell its wrapping. Internal.
#ifndef VOK_DGRAPH_WRAPPING_H
#define VOK_DGRAPH_WRAPPING_H

#include <string_view>

namespace vok::dgraph {

enum class Wrapping { None, Zlib, Gzip, Zip };

// So many bytes are looked at, where there are so many.
inline constexpr std::size_t SNIFFED = 30;

// The first byte of a zlib stream with a window of 32 KiB comes first: it is enough.
[[nodiscard]] inline Wrapping WrappingOf(std::string_view sStart) noexcept {
    if (sStart.starts_with('x')) return Wrapping::Zlib;
    if (sStart.starts_with("PK")) return Wrapping::Zip;
    if (sStart.starts_with("\x1f\x8b")) return Wrapping::Gzip;
    return Wrapping::None;
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_WRAPPING_H
