// SPDX-License-Identifier: MIT
#include "vok/file/ext_buf.h"

#include <algorithm>
#include <cstring>

#include "vok/base/where.h"

namespace vok {

void File_ExtBuf::Open(void* pBlock, std::size_t uCapacity) {
    return Where("vok::File_ExtBuf::Open", [&] {
        if (pBlock == nullptr && uCapacity != 0) Msg::ObjectPointsToNothing();
        m_pBlock = static_cast<char*>(pBlock);
        m_uCapacity = uCapacity;
        m_uUsed = 0;
        m_uPosition = 0;
    });
}

std::size_t File_ExtBuf::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::File_ExtBuf::Read", [&] { return ReadInChunks(oBuffer, uCount, bAppend); });
}

std::size_t File_ExtBuf::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::File_ExtBuf::Read", [&]() -> std::size_t {
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        const std::size_t uDone = std::min(uCount, m_uUsed - m_uPosition);
        if (uDone != 0) std::memcpy(pTarget, m_pBlock + m_uPosition, uDone);
        m_uPosition += uDone;
        if (uDone < uCount && uCount != ALL && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    });
}

std::size_t File_ExtBuf::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::File_ExtBuf::Write", [&]() -> std::size_t {
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        if (uCount == ALL) uCount = std::strlen(static_cast<const char*>(pSource));
        if (uCount > m_uCapacity - m_uPosition) Msg::FileWriteError(Name(), uCount, Tell(), 0);
        // The source may well be another part of the block.
        if (uCount != 0) std::memmove(m_pBlock + m_uPosition, pSource, uCount);
        m_uPosition += uCount;
        m_uUsed = std::max(m_uUsed, m_uPosition);
        return uCount;
    });
}

void File_ExtBuf::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::File_ExtBuf::Seek", [&] {
        std::size_t uBase = 0;
        switch (iWhence) {
            case FROM_START: break;
            case FROM_POSITION: uBase = m_uPosition; break;
            case FROM_END: uBase = m_uUsed; break;
            default: Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        // A position in front of the block wraps around to one far behind it.
        const u3_t uPosition = uBase + static_cast<u3_t>(iOffset);
        if (uPosition > m_uUsed) Msg::FileSeekFailed(iOffset, iWhence, 0);
        m_uPosition = static_cast<std::size_t>(uPosition);
    });
}

const char* File_ExtBuf::Name() const {
    return "*** File_ExtBuf ***";
}

}  // namespace vok
