// SPDX-License-Identifier: MIT
#include "vok/file/stream.h"

#include <algorithm>

#include "vok/base/msg.h"

namespace vok {

namespace {

constexpr std::size_t FIRST_CHUNK = 0x10000;
constexpr std::size_t LAST_CHUNK = 0x800000;

// Cuts an array back to the bytes that are known to be good, however the scope is left.
struct Tail {
    Arr<char>& m_oBuffer;
    std::size_t m_uGood;

    ~Tail() { m_oBuffer.Truncate(m_uGood); }
};

}  // namespace

bool File_Stream::CanSeek(int) const {
    return false;
}

bool File_Stream::TakesPieces() const {
    return false;
}

const char* File_Stream::Name() const {
    return nullptr;
}

std::size_t File_Stream::ReadInChunks(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    if (!bAppend) oBuffer.Truncate(0);
    Tail oTail{oBuffer, oBuffer.Size()};
    std::size_t uChunk = FIRST_CHUNK;
    std::size_t uDone = 0;
    while (uDone < uCount) {
        const std::size_t uWanted = std::min(uChunk, uCount - uDone);
        const std::size_t uRead = Read(oBuffer.AddSpace(uWanted), uWanted, true);
        uDone += uRead;
        // Where short reads are not the end, the one that brings nothing is.
        if (uRead == 0) break;
        oBuffer.Truncate(oTail.m_uGood + uDone);
        if (uRead == uWanted) uChunk = std::min(2 * uChunk, LAST_CHUNK);
    }
    oTail.m_uGood += uDone;
    return uDone;
}

}  // namespace vok
