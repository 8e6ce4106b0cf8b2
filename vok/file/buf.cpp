// SPDX-License-Identifier: MIT
#include "vok/file/buf.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "vok/base/text_words.h"
#include "vok/base/where.h"

namespace vok {

namespace {

constexpr char BUF_NAME[] = "*** File_Buf ***";

// A position is a signed 64-bit number to callers and an index into memory here.
constexpr u3_t MAX_POSITION =
    std::min<u3_t>(std::numeric_limits<i3_t>::max(), std::numeric_limits<std::ptrdiff_t>::max());
constexpr std::size_t FIRST_CAPACITY = 256;

// What tells an external block of no bytes from no external block.
constexpr char NO_BYTES[1] = {};

}  // namespace

void File_Buf::Open(const char* sMode) {
    u2_t uFlags = 0;
    char cMode = 'r';
    bool bPlus = false;
    for (const char* s = sMode != nullptr ? sMode : "r"; *s != 0; ++s) {
        switch (*s) {
            case 'r':
            case 'w':
            case 'a': cMode = *s; break;
            case '+': bPlus = true; break;
            case 't': uFlags |= TEXT_MODE; break;
            case 'b': uFlags &= ~TEXT_MODE; break;
            default: break;
        }
    }
    if (bPlus || cMode != 'r') uFlags |= WRITABLE;
    m_pExternal = nullptr;
    m_uEnd = 0;
    if (cMode == 'w') m_oBuffer.Truncate(0);
    m_uPosition = cMode == 'a' ? m_oBuffer.Size() : 0;
    m_uFlags = uFlags;
}

void File_Buf::Open(const void* pBlock, std::size_t uSize) {
    return Where("vok::File_Buf::Open", [&] {
        if (pBlock == nullptr && uSize != 0) Msg::ObjectPointsToNothing();
        m_oBuffer.Clear();
        m_pExternal = pBlock != nullptr ? static_cast<const char*>(pBlock) : NO_BYTES;
        m_uEnd = uSize;
        m_uPosition = 0;
        m_uFlags = 0;
    });
}

void File_Buf::Clear() noexcept {
    m_oBuffer.Truncate(0);
    m_pExternal = nullptr;
    m_uEnd = 0;
    m_uPosition = 0;
}

std::size_t File_Buf::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::File_Buf::Read", [&] {
        Msg::Assert(&oBuffer != &m_oBuffer, "&oBuffer != &m_oBuffer");
        if (!bAppend) oBuffer.Truncate(0);
        const std::size_t uDone = std::min(uCount, Remaining());
        oBuffer.Add(Peek(), uDone);
        Skip(uDone);
        return uDone;
    });
}

std::size_t File_Buf::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::File_Buf::Read", [&]() -> std::size_t {
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        const std::size_t uDone = std::min(uCount, Remaining());
        if (uDone != 0) std::memcpy(pTarget, Peek(), uDone);
        Skip(uDone);
        if (uDone < uCount && uCount != ALL && !bAllowShort) {
            Msg::UnexpectedEndOfFile(BUF_NAME, 0);
        }
        return uDone;
    });
}

std::size_t File_Buf::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::File_Buf::Write", [&]() -> std::size_t {
        if ((m_uFlags & WRITABLE) == 0) Msg::FileIsNotOpenForWrite(BUF_NAME);
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        const char* pBytes = static_cast<const char*>(pSource);
        if (uCount == ALL) uCount = std::strlen(pBytes);
        if (uCount == 0) return 0;
        if ((m_uFlags & TEXT_MODE) != 0) {
            WriteText(pBytes, uCount);
        } else {
            std::memcpy(WriteSpace(uCount), pBytes, uCount);
            Commit(uCount);
        }
        return uCount;
    });
}

void File_Buf::WriteText(const char* pSource, std::size_t uCount) {
    const char* pEnd = pSource + uCount;
    const std::size_t uLines = words::Count(pSource, uCount, '\n');
    char* pOut = MakeSpace(uCount + uLines);
    while (pSource < pEnd) {
        const char* pLine = std::find(pSource, pEnd, '\n');
        pOut = std::copy(pSource, pLine, pOut);
        if (pLine == pEnd) break;
        *pOut++ = '\r';
        *pOut++ = '\n';
        pSource = pLine + 1;
    }
    Commit(uCount + uLines);
}

char* File_Buf::WriteSpaceSlow(std::size_t uCount) {
    if ((m_uFlags & WRITABLE) == 0) Msg::FileIsNotOpenForWrite(BUF_NAME);
    Msg::Assert((m_uFlags & TEXT_MODE) == 0, "(m_uFlags & TEXT_MODE) == 0");
    return MakeSpace(uCount);
}

// Room for uCount bytes at the position, in storage of its own and without a gap before it.
char* File_Buf::MakeSpace(std::size_t uCount) {
    if (uCount > MAX_POSITION - m_uPosition) {
        Msg::FileWriteError(BUF_NAME, uCount, static_cast<i3_t>(m_uPosition), 0);
    }
    const auto uPosition = static_cast<std::size_t>(m_uPosition);
    const std::size_t uNeeded = uPosition + uCount;
    if (uNeeded > m_oBuffer.Capacity()) {
        m_oBuffer.Reserve(std::max({uNeeded, 2 * m_oBuffer.Capacity(), FIRST_CAPACITY}));
    }
    m_oBuffer.MakePrivate();
    if (uPosition > m_oBuffer.Size() && uCount != 0) m_oBuffer.Resize(uPosition);
    return m_oBuffer.Beg() + uPosition;
}

void File_Buf::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::File_Buf::Seek", [&] {
        u3_t uBase = 0;
        switch (iWhence) {
            case FROM_START: break;
            case FROM_POSITION: uBase = m_uPosition; break;
            case FROM_END: uBase = Size(); break;
            default: Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        // Both are at most 2^63 - 1, so a negative sum shows as a huge one.
        const u3_t uPosition = uBase + static_cast<u3_t>(iOffset);
        if (uPosition > MAX_POSITION) Msg::FileSeekFailed(iOffset, iWhence, 0);
        m_uPosition = uPosition;
    });
}

const char* File_Buf::Name() const {
    return BUF_NAME;
}

}  // namespace vok
