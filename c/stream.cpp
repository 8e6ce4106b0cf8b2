// SPDX-License-Identifier: MIT
#include "c/stream.h"

#include <algorithm>
#include <cstring>

namespace vok::c {

HostStream::HostStream(const vok_tree_stream& oFunctions) : m_o(oFunctions) {
    if (m_o.seek == nullptr || m_o.tell == nullptr) return;
    const i3_t iPosition = m_o.tell(m_o.context);
    if (iPosition > MOST) {
        RaiseAs(VOK_TREE_STREAM, [&] { Msg::FileSeekFailed(iPosition, FROM_START, 0); });
    }
    m_bSeek = iPosition >= 0;
    if (m_bSeek) m_iBelow = iPosition;
}

std::size_t HostStream::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return ReadInChunks(oBuffer, uCount, bAppend);
}

std::size_t HostStream::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    char* const p = static_cast<char*>(pTarget);
    std::size_t uDone = 0;
    while (uDone < uCount) {
        const std::size_t uWanted = uCount - uDone;
        if (m_uNext == m_uEnd && uWanted >= BUFFER) {
            const std::size_t uRead = ReadBelow(p + uDone, uWanted);
            if (uRead == 0) break;
            uDone += uRead;
            continue;
        }
        if (m_uNext == m_uEnd) {
            m_oBuffer.Resize(BUFFER);
            m_uNext = m_uEnd = 0;
            m_uEnd = ReadBelow(m_oBuffer.Beg(), BUFFER);
            if (m_uEnd == 0) break;
        }
        const std::size_t uPart = std::min(uWanted, m_uEnd - m_uNext);
        std::memcpy(p + uDone, m_oBuffer.Beg() + m_uNext, uPart);
        m_uNext += uPart;
        uDone += uPart;
    }
    if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
    return uDone;
}

std::size_t HostStream::ReadBelow(char* pTarget, std::size_t uCount) {
    if (m_o.read == nullptr) RaiseAs(VOK_TREE_ARGUMENT, [] { Msg::StreamNotOpenForRead(); });
    const i3_t iRead = m_o.read(m_o.context, pTarget, uCount);
    if (iRead < 0 || static_cast<u3_t>(iRead) > uCount) {
        RaiseAs(VOK_TREE_STREAM, [&] { Msg::UnexpectedEndOfFile(Name(), 0); });
    }
    m_iBelow += iRead;
    return static_cast<std::size_t>(iRead);
}

std::size_t HostStream::Write(const void* pSource, std::size_t uCount) {
    if (m_o.write == nullptr) RaiseAs(VOK_TREE_ARGUMENT, [] { Msg::StreamNotOpenForWrite(); });
    const char* const p = static_cast<const char*>(pSource);
    if (uCount == ALL) uCount = std::strlen(p);
    for (std::size_t uDone = 0; uDone < uCount;) {
        const std::size_t uRest = uCount - uDone;
        const i3_t iWritten = m_o.write(m_o.context, p + uDone, uRest);
        if (iWritten <= 0 || static_cast<u3_t>(iWritten) > uRest) {
            RaiseAs(VOK_TREE_STREAM,
                    [&] { Msg::FileWriteError(Name(), uRest, m_bSeek ? m_iBelow : 0, 0); });
        }
        uDone += static_cast<std::size_t>(iWritten);
        m_iBelow += iWritten;
    }
    return uCount;
}

bool HostStream::CanSeek(int iWhence) const {
    return m_bSeek && (iWhence != FROM_END || m_o.size != nullptr);
}

i3_t HostStream::Tell() {
    return m_bSeek ? Position() : -1;
}

void HostStream::Seek(i3_t iOffset, int iWhence) {
    i3_t iBase = 0;
    if (iWhence == FROM_POSITION) iBase = Position();
    if (iWhence == FROM_END && m_o.size != nullptr) iBase = m_o.size(m_o.context);
    const bool bGood = CanSeek(iWhence) && iBase >= 0 && iBase <= MOST && iOffset >= -iBase &&
                       iOffset <= MOST - iBase;
    if (!bGood) Msg::FileSeekFailed(iOffset, iWhence, 0);
    const i3_t iTarget = iBase + iOffset;
    const i3_t iFirst = m_iBelow - static_cast<i3_t>(m_uEnd);
    if (iTarget >= iFirst && iTarget <= m_iBelow) {
        m_uNext = static_cast<std::size_t>(iTarget - iFirst);
        return;
    }
    SeekBelow(iTarget);
}

void HostStream::SeekBelow(i3_t iPosition) {
    m_uNext = m_uEnd = 0;
    if (m_o.seek(m_o.context, iPosition) != 0) {
        RaiseAs(VOK_TREE_STREAM, [&] { Msg::FileSeekFailed(iPosition, FROM_START, 0); });
    }
    m_iBelow = iPosition;
}

void HostStream::GiveBack() {
    if (m_bSeek && m_uNext != m_uEnd) SeekBelow(Position());
}

u3_t HostStream::Left() const {
    if (!m_bSeek || m_o.size == nullptr) return 0;
    const i3_t iSize = m_o.size(m_o.context);
    const i3_t iPosition = Position();
    return iSize > iPosition ? static_cast<u3_t>(iSize - iPosition) : 0;
}

}  // namespace vok::c
