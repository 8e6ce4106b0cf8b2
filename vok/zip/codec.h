// SPDX-License-Identifier: MIT
// What the two engines of this folder share, which make plain bytes of compressed ones and back.
// Internal.
#ifndef VOK_ZIP_CODEC_H
#define VOK_ZIP_CODEC_H

#include <cstddef>

#include "vok/base/types.h"

namespace vok::zip {

// How many bytes move at a time between an engine and what lies below it.
inline constexpr std::size_t CHUNK = 256 * 1024;
// Transfers below this size go through a buffer, larger ones straight from or to the caller.
inline constexpr std::size_t SMALL = 64 * 1024;

enum class Format {
    Stored,
    Raw,   // deflate without any wrapping
    Zlib,  // reading: gzip as well, several members one after the other included
    Gzip,
};

// What is wrong with compressed bytes.
enum class Fault {
    None,
    Damaged,  // not a deflate stream, or its own checksum differs
    Ends,     // the bytes end before the stream does
    Size,     // another size than was announced
    Crc,
};

// Where a seek leads to; in front of the start means the start.
[[nodiscard]] inline u3_t SeekTarget(i3_t iOffset, int iWhence, u3_t uPosition) noexcept {
    const u3_t uBase = iWhence == 0 ? 0 : uPosition;
    const auto uOffset = static_cast<u3_t>(iOffset);
    if (iOffset < 0) return uBase > -uOffset ? uBase + uOffset : 0;
    return uBase + uOffset;
}

}  // namespace vok::zip

#endif  // VOK_ZIP_CODEC_H
