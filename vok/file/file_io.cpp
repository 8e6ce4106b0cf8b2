// SPDX-License-Identifier: MIT
// How bytes get from and to an open file.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include <zlib.h>

#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr std::size_t MAX_CHUNK = 0x800000;
constexpr unsigned TRANSFER_RETRIES = 10;
constexpr u2_t BAD_FILE = 9;  // EBADF, the same everywhere

[[nodiscard]] std::FILE* FileOf(void* pHandle) noexcept {
    return static_cast<std::FILE*>(pHandle);
}
[[nodiscard]] gzFile Gzip(void* pHandle) noexcept {
    return static_cast<gzFile>(pHandle);
}

}  // namespace

// Asks again for what a transfer left missing, waiting longer each time. Returns what was
// transferred in the end.
template <class Transfer>
std::size_t File::Retry(std::size_t uDone, std::size_t uWanted, Transfer oTransfer) {
    for (unsigned u = 1; u <= TRANSFER_RETRIES && uDone < uWanted; ++u) {
        Sleep(1u << u);
        uDone += oTransfer(uDone, uWanted - uDone);
    }
    return uDone;
}

inline void File::CheckOpen() const {
    if (m_pHandle == nullptr) [[unlikely]]
        Msg::ObjectPointsToNothing();
}

// Prepares for transfers of one kind. The stream below stands behind what is read ahead
// and in front of what is pending.
void File::TurnTo(u2_t uState) {
    constexpr u2_t uTransfers = STATE_READ | STATE_WRITTEN;
    if (Is(STATE_BUFFERED) && m_oBuffer.Size() == 0) (void)m_oBuffer.AddSpace(BUFFER_SIZE);
    if (Is(uState) || Is(FLAG_GZIP)) return;

    if (Is(uTransfers)) {
        Drain(0);
        const i3_t iBack = -static_cast<i3_t>(Ahead());
        if (!sys::Seek(FileOf(m_pHandle), iBack, FROM_POSITION)) {
            Msg::FileSeekFailed(iBack, FROM_POSITION, Msg::SystemError());
        }
        m_uNext = m_uEnd = 0;
    }
    // Appending happens at the end wherever one is: let positions tell that.
    if (uState == STATE_WRITTEN && Is(FLAG_APPEND)) {
        (void)sys::Seek(FileOf(m_pHandle), 0, FROM_END);
    }
    m_uFlags = (m_uFlags & ~uTransfers) | uState;
}

// ---- reading ----------------------------------------------------------------

std::size_t File::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::File::Read", [&] {
        CheckOpen();
        return ReadInChunks(oBuffer, uCount, bAppend);
    });
}

std::size_t File::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    // A count of 0 wraps around and goes the other way.
    if (uCount - 1 < Ahead() && pTarget != nullptr) [[likely]] {
        std::memcpy(pTarget, m_oBuffer.Beg() + m_uNext, uCount);
        m_uNext += uCount;
        return uCount;
    }
    return Where("vok::File::Read", [&] { return ReadMore(pTarget, uCount, bAllowShort); });
}

std::size_t File::ReadMore(void* pTarget, std::size_t uCount, bool bAllowShort) {
    CheckOpen();
    if (pTarget == nullptr && uCount != 0) Msg::NullPointerAssignment();
    TurnTo(STATE_READ);
    char* pBytes = static_cast<char*>(pTarget);
    std::size_t uDone = 0;
    while (uDone < uCount) {
        const std::size_t uWanted = std::min(uCount - uDone, MAX_CHUNK);
        std::size_t uRead = ReadPart(pBytes + uDone, uWanted);
        if (uRead < uWanted && (bAllowShort || uCount == ALL)) {
            const bool bReport = uCount == ALL || uDone + uRead == 0;
            if (!bReport || !HasError()) return uDone + uRead;
            Msg::UnexpectedEndOfFile(Name(), sys::RuntimeError());
        }
        uRead = Retry(uRead, uWanted, [&](std::size_t uHere, std::size_t uMissing) {
            return ReadPart(pBytes + uDone + uHere, uMissing);
        });
        if (uRead < uWanted) Msg::UnexpectedEndOfFile(Name(), sys::RuntimeError());
        uDone += uRead;
    }
    return uDone;
}

// What is read ahead, and more where that does not do: small parts through the buffer,
// large ones straight to their target.
std::size_t File::ReadPart(char* pTarget, std::size_t uCount) noexcept {
    std::size_t uDone = 0;
    while (uDone < uCount) {
        const std::size_t uMissing = uCount - uDone;
        if (Ahead() == 0) {
            if (!Is(STATE_BUFFERED) || uMissing >= BUFFER_SIZE) {
                return uDone + ReadChunk(pTarget + uDone, uMissing);
            }
            m_uNext = 0;
            m_uEnd = ReadChunk(m_oBuffer.Beg(), BUFFER_SIZE);
            if (m_uEnd == 0) break;
        }
        const std::size_t uPart = std::min(uMissing, Ahead());
        std::memcpy(pTarget + uDone, m_oBuffer.Beg() + m_uNext, uPart);
        m_uNext += uPart;
        uDone += uPart;
    }
    return uDone;
}

// Leaves the reason of a short transfer in RuntimeError(), 0 when it is just the end.
std::size_t File::ReadChunk(char* pTarget, std::size_t uCount) noexcept {
    if (!Is(FLAG_READ)) {
        sys::SetRuntimeError(BAD_FILE);  // not every runtime says so
        return 0;
    }
    if (!Is(FLAG_GZIP)) {
        // Some runtimes do not look again at the end of a file that has grown.
        if (std::feof(FileOf(m_pHandle)) != 0) (void)sys::Seek(FileOf(m_pHandle), 0, FROM_POSITION);
        std::clearerr(FileOf(m_pHandle));
        sys::SetRuntimeError(0);
        return std::fread(pTarget, 1, uCount, FileOf(m_pHandle));
    }
    // The state of a gzip stream stays: what is damaged does not mend.
    sys::SetRuntimeError(0);
    const int iRead = ::gzread(Gzip(m_pHandle), pTarget, static_cast<unsigned>(uCount));
    m_iGzip += std::max(iRead, 0);
    return iRead > 0 ? static_cast<std::size_t>(iRead) : 0;
}

// Whether a short transfer was more than the end of the file.
bool File::HasError() const noexcept {
    if (!Is(FLAG_READ)) return true;
    if (!Is(FLAG_GZIP)) return std::ferror(FileOf(m_pHandle)) != 0;
    int iError = Z_OK;
    (void)::gzerror(Gzip(m_pHandle), &iError);
    return iError != Z_OK && iError != Z_STREAM_END;
}

// ---- writing ----------------------------------------------------------------

std::size_t File::Write(const void* pSource, std::size_t uCount) {
    constexpr u2_t uFast = STATE_WRITTEN | STATE_BUFFERED;
    // A count of 0 wraps around and goes the other way, as ALL does.
    if (uCount - 1 < BUFFER_SIZE - m_uPending && (m_uFlags & uFast) == uFast && pSource != nullptr)
        [[likely]] {
        std::memcpy(m_oBuffer.Beg() + m_uPending, pSource, uCount);
        m_uPending += uCount;
        return uCount;
    }
    return Where("vok::File::Write", [&] { return WriteMore(pSource, uCount); });
}

std::size_t File::WriteMore(const void* pSource, std::size_t uCount) {
    if (!Is(FLAG_WRITE)) Msg::FileIsNotOpenForWrite(Name());
    if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
    const char* pBytes = static_cast<const char*>(pSource);
    if (uCount == ALL) uCount = std::strlen(pBytes);
    if (uCount == 0) return 0;
    TurnTo(STATE_WRITTEN);
    if (Is(STATE_BUFFERED) && uCount < BUFFER_SIZE) {
        if (uCount > BUFFER_SIZE - m_uPending) Drain(uCount);
        std::memcpy(m_oBuffer.Beg() + m_uPending, pBytes, uCount);
        m_uPending += uCount;
        return uCount;
    }
    Drain(uCount);
    std::size_t uDone = 0;
    while (uDone < uCount) {
        const std::size_t uWanted = std::min(uCount - uDone, MAX_CHUNK);
        const std::size_t uWritten = Retry(WriteChunk(pBytes + uDone, uWanted), uWanted,
                                           [&](std::size_t uHere, std::size_t uMissing) {
                                               return WriteChunk(pBytes + uDone + uHere, uMissing);
                                           });
        uDone += uWritten;
        if (uWritten < uWanted) RaiseWriteError(uCount - uDone);
    }
    return uDone;
}

// Leaves the reason of a short transfer in RuntimeError().
std::size_t File::WriteChunk(const char* pSource, std::size_t uCount) noexcept {
    if (!Is(FLAG_GZIP)) {
        std::clearerr(FileOf(m_pHandle));
        sys::SetRuntimeError(0);
        return std::fwrite(pSource, 1, uCount, FileOf(m_pHandle));
    }
    sys::SetRuntimeError(0);
    const int iDone = ::gzwrite(Gzip(m_pHandle), pSource, static_cast<unsigned>(uCount));
    m_iGzip += std::max(iDone, 0);
    return iDone > 0 ? static_cast<std::size_t>(iDone) : 0;
}

// Hands pending bytes on to the system; what it does not take stays pending.
bool File::HandOn(bool bRetry) noexcept {
    if (m_uPending == 0) return true;
    const char* pBytes = m_oBuffer.Beg();
    std::size_t uDone = WriteChunk(pBytes, m_uPending);
    if (bRetry) {
        uDone = Retry(uDone, m_uPending, [&](std::size_t uHere, std::size_t uMissing) {
            return WriteChunk(pBytes + uHere, uMissing);
        });
    }
    m_uPending -= uDone;
    if (m_uPending == 0) {
        m_uFlags &= ~STATE_STUCK;
        return true;
    }
    std::memmove(m_oBuffer.Beg(), pBytes + uDone, m_uPending);
    m_uFlags |= STATE_STUCK;
    return false;
}

// Hands pending bytes on or raises; uBehind bytes more are lost with them.
void File::Drain(std::size_t uBehind) {
    if (!HandOn(true)) RaiseWriteError(m_uPending + uBehind);
}

void File::RaiseWriteError(std::size_t uNotWritten) {
    const u2_t uError = sys::RuntimeError();
    const i3_t iPosition = Is(FLAG_GZIP) ? m_iGzip : sys::Tell(FileOf(m_pHandle));
    Msg::FileWriteError(Name(), uNotWritten, iPosition, uError);
}

int File::Flush() {
    return Where("vok::File::Flush", [&] {
        CheckOpen();
        if (!Is(FLAG_WRITE)) return 0;
        Drain(0);
        sys::SetRuntimeError(0);
        const bool bGood = Is(FLAG_GZIP) ? ::gzflush(Gzip(m_pHandle), Z_SYNC_FLUSH) == Z_OK
                                         : std::fflush(FileOf(m_pHandle)) == 0;
        if (!bGood) RaiseWriteError(0);
        return 0;
    });
}

// ---- position and size ------------------------------------------------------

// From the start or the current position; back only when reading. Some builds of zlib count in
// 32 bits, so the position is ours, and the way there is made of steps that they can take.
bool File::SeekGzip(i3_t iOffset, int iWhence) noexcept {
    constexpr i3_t iMostStep = i3_t{1} << 30;
    if (iWhence != FROM_START && iWhence != FROM_POSITION) return false;
    const i3_t iFrom = iWhence == FROM_START ? 0 : m_iGzip;
    if (iOffset < -iFrom || iOffset > std::numeric_limits<i3_t>::max() - iFrom) return false;
    const i3_t iTarget = iFrom + iOffset;
    if (iTarget < m_iGzip) {
        if (::gzrewind(Gzip(m_pHandle)) != 0) return false;
        m_iGzip = 0;
    }
    while (m_iGzip < iTarget) {
        const i3_t iStep = std::min(iTarget - m_iGzip, iMostStep);
        // The result may be a position past what zlib can count; only its errors tell. It goes
        // there with the next transfer, so a long way needs one at each step.
        (void)::gzseek(Gzip(m_pHandle), static_cast<z_off_t>(iStep - 1), FROM_POSITION);
        char cByte = 0;
        const int iDone = Is(FLAG_WRITE) ? ::gzwrite(Gzip(m_pHandle), &cByte, 1)
                                         : ::gzread(Gzip(m_pHandle), &cByte, 1);
        if (iDone < 0 || (iDone == 0 && Is(FLAG_WRITE))) return false;
        // Behind the end there is nothing to go over, however far the target claims to be.
        m_iGzip = iDone == 0 ? iTarget : m_iGzip + iStep;
    }
    return true;
}

void File::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::File::Seek", [&] {
        CheckOpen();
        if (Is(FLAG_GZIP)) {
            sys::SetRuntimeError(0);
            if (SeekGzip(iOffset, iWhence)) return;
            Msg::FileSeekFailed(iOffset, iWhence, sys::RuntimeError());
        }
        const auto iAhead = static_cast<i3_t>(Ahead());
        i3_t iBelow = iOffset;  // as the stream below sees it
        if (iWhence == FROM_POSITION) {
            if (iOffset >= 0 && iOffset <= iAhead && iAhead != 0) {
                m_uNext += static_cast<std::size_t>(iOffset);
                return;
            }
            // A way back that is too long for a number leads nowhere in any case.
            const bool bFits = iOffset >= std::numeric_limits<i3_t>::min() + iAhead;
            if (bFits) iBelow -= iAhead;
        }
        Drain(0);
        sys::SetRuntimeError(0);
        if (!sys::Seek(FileOf(m_pHandle), iBelow, iWhence)) {
            Msg::FileSeekFailed(iOffset, iWhence, sys::RuntimeError());
        }
        m_uNext = m_uEnd = 0;
        m_uFlags &= ~(STATE_READ | STATE_WRITTEN);
    });
}

i3_t File::Tell() {
    return Where("vok::File::Tell", [&]() -> i3_t {
        CheckOpen();
        if (Is(FLAG_GZIP)) return m_iGzip;
        const i3_t iBelow = sys::Tell(FileOf(m_pHandle));
        if (iBelow < 0) return -1;
        return iBelow - static_cast<i3_t>(Ahead()) + static_cast<i3_t>(m_uPending);
    });
}

i3_t File::Size() {
    return Where("vok::File::Size", [&]() -> i3_t {
        CheckOpen();
        if (Is(FLAG_GZIP)) return sys::SizeOf(m_oName.CStr());
        Drain(0);
        return sys::SizeOf(FileOf(m_pHandle));
    });
}

i3_t File::Size(const Str& oPath) {
    return sys::SizeOf(oPath.CStr());
}

}  // namespace vok
