// SPDX-License-Identifier: MIT
// What a document is wrapped in, and how its first bytes tell.
#ifndef VOK_ZIP_WRAPPING_H
#define VOK_ZIP_WRAPPING_H

#include <string_view>

#include "vok/base/types.h"

namespace vok {

// Zip: the only member of an archive.
enum class Zip_Wrapping : u0_t { None, Zlib, Gzip, Zip };

// "", "zlib", "gzip", "zip".
[[nodiscard]] constexpr const char* Zip_WrappingName(Zip_Wrapping e) noexcept {
    constexpr const char* NAMES[] = {"", "zlib", "gzip", "zip"};
    return NAMES[static_cast<u0_t>(e)];
}

// So many bytes are looked at, where there are so many.
inline constexpr std::size_t ZIP_SNIFFED = 30;

// The first byte of a zlib stream with a window of 32 KiB comes first: it is enough.
[[nodiscard]] inline Zip_Wrapping Zip_WrappingOf(std::string_view sStart) noexcept {
    if (sStart.starts_with('x')) return Zip_Wrapping::Zlib;
    if (sStart.starts_with("PK")) return Zip_Wrapping::Zip;
    if (sStart.starts_with("\x1f\x8b")) return Zip_Wrapping::Gzip;
    return Zip_Wrapping::None;
}

}  // namespace vok

#endif  // VOK_ZIP_WRAPPING_H
