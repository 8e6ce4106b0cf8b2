// SPDX-License-Identifier: MIT
#include "vok/file/shm.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "vok/base/where.h"
#include "vok/file/plain_name.h"
#include "vok/sys/disk.h"
#include "vok/sys/shm.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr std::size_t LONGEST_NAME = 200;
constexpr u3_t MOST = u3_t{1} << 46;
constexpr std::size_t BUFFER_SIZE = 0x10000;
constexpr u3_t FIRST_ROOM = 0x10000;
constexpr u3_t MOST_MORE = u3_t{16} << 20;  // that is taken at a time without need

constexpr u2_t NO_ACCESS = 13;  // EACCES
constexpr u2_t TOO_LARGE = 27;  // EFBIG

constexpr u3_t MAGIC = 0x314D4853'2D4B4F56;  // "VOK-SHM1", in the order of this machine
constexpr u2_t VERSION = 1;

// What stands in front. The processes that share it run on one machine, maybe with different
// versions of this library.
struct Header {
    u3_t uMagic;  // written last: what has it is complete
    u2_t uVersion;
    u2_t uReserved;
    u3_t uLimit;
    u3_t uPublished;   // bytes behind the header that stay as they are
    u3_t uGeneration;  // how often there was something published
};
static_assert(sizeof(Header) <= sys::SHM_HEADER && std::atomic_ref<u3_t>::is_always_lock_free);

[[nodiscard]] Header& HeaderOf(const sys::Shm& oShm) noexcept {
    return *reinterpret_cast<Header*>(sys::ShmHeader(oShm));
}
// Reading does not write, where the page cannot be written to either: they are plain loads.
[[nodiscard]] u3_t Get(u3_t& uField) noexcept {
    return std::atomic_ref<u3_t>(uField).load(std::memory_order_acquire);
}
void Set(u3_t& uField, u3_t uValue) noexcept {
    std::atomic_ref<u3_t>(uField).store(uValue, std::memory_order_release);
}

[[nodiscard]] bool Fail(u2_t uError) noexcept {
    sys::SetRuntimeError(uError);
    return false;
}
[[nodiscard]] bool IsName(const Str& oName) noexcept {
    return file::IsPlainName(oName.View(), LONGEST_NAME) || Fail(sys::INVALID_ARGUMENT);
}

std::atomic<u3_t> g_uInUse{0};

}  // namespace

// ---- opening ----------------------------------------------------------------

void File_Shm::Closer::operator()(sys::Shm* pShm) const noexcept {
    sys::CloseShm(pShm);
}

File_Shm::File_Shm() noexcept = default;

File_Shm::File_Shm(const Str& oName, Mode eMode, u3_t uLimit) {
    Open(oName, eMode, uLimit);
}

File_Shm::~File_Shm() {
    Close();
}

void File_Shm::Open(const Str& oName, Mode eMode, u3_t uLimit) {
    return Where("vok::File_Shm::Open", [&] {
        Close();
        m_oName = oName;
        static_assert(static_cast<int>(sys::ShmMode::CreateOrOpen) ==
                      static_cast<int>(Mode::CreateOrOpen));
        const bool bMake = eMode == Mode::Create || eMode == Mode::CreateOrOpen;
        Handle pShm;
        bool bGood = IsName(oName) &&
                     ((uLimit != 0 && uLimit <= MOST) || !bMake || Fail(sys::INVALID_ARGUMENT));
        if (bGood) {
            pShm.reset(sys::OpenShm(oName.CStr(), static_cast<sys::ShmMode>(eMode),
                                    sys::SHM_HEADER + (bMake ? uLimit : 0)));
            bGood = pShm != nullptr && TakeUp(pShm, eMode != Mode::Read, bMake ? uLimit : 0);
            // Half of it would be in the way of the next one.
            if (!bGood && pShm != nullptr && eMode == Mode::Create) {
                const u2_t uError = sys::RuntimeError();
                (void)sys::RemoveShm(oName.CStr());
                sys::SetRuntimeError(uError);
            }
        }
        if (!bGood) {
            const u2_t uError = Msg::SystemError();
            pShm.reset();
            Close();
            if (bMake) Msg::CannotCreateSharedMemory(Name(), uLimit, uError);
            Msg::CannotOpenSharedMemory(Name(), uError);
        }
        m_pShm = std::move(pShm);
        ++g_uInUse;
    });
}

// Reads the header, or writes that of something new. Only a writer that may make something gives a
// limit: it has the lock, so that nobody else does the same.
bool File_Shm::TakeUp(const Handle& pShm, bool bWrite, u3_t uLimit) {
    Header& o = HeaderOf(*pShm);
    if (Get(o.uMagic) == 0) {
        if (!bWrite || uLimit == 0) return Fail(sys::NOT_THERE);
        new (&o) Header{0, VERSION, 0, uLimit, 0, 0};
        Set(o.uMagic, MAGIC);
    }
    if (!TakeHeader(*pShm)) return Fail(sys::INVALID_ARGUMENT);
    if (!bWrite) return true;
    char* const pBytes = sys::MapShm(*pShm, sys::SHM_HEADER + m_uLimit);
    if (pBytes == nullptr) return false;
    m_pBytes = pBytes + sys::SHM_HEADER;
    m_uPosition = m_uRoom = m_uSize;
    return true;
}

// What it says is as good as nothing until it holds together.
bool File_Shm::TakeHeader(const sys::Shm& oShm) {
    const u3_t uThere = sys::ShmSize(oShm);
    if (uThere < sys::SHM_HEADER) return false;
    Header& o = HeaderOf(oShm);
    if (Get(o.uMagic) != MAGIC || o.uVersion != VERSION) return false;
    // The count first: what it counts is then there.
    const u3_t uGeneration = Get(o.uGeneration);
    const u3_t uPublished = Get(o.uPublished);
    const u3_t uLimit = Get(o.uLimit);
    if (uLimit > MOST || uPublished > uLimit) return false;
    // A writer may have made room and published since the size was asked for.
    const u3_t uEnd = sys::SHM_HEADER + uPublished;
    if (uEnd > uThere && uEnd > sys::ShmSize(oShm)) return false;
    if (uPublished < m_uPublished || uGeneration < m_uGeneration) return false;
    m_uLimit = uLimit;
    m_uGeneration = uGeneration;
    m_uSize = m_uPublished = uPublished;
    return true;
}

void File_Shm::Close() noexcept {
    if (m_pShm != nullptr) --g_uInUse;
    m_pShm.reset();
    m_pBytes = nullptr;
    m_uLimit = m_uRoom = m_uSize = m_uPublished = m_uGeneration = m_uPosition = 0;
    m_oAhead.Truncate(0);
}

sys::Shm& File_Shm::Checked() const {
    if (m_pShm == nullptr) [[unlikely]]
        Msg::ObjectPointsToNothing();
    return *m_pShm;
}

bool File_Shm::Remove(const Str& oName) {
    return Where("vok::File_Shm::Remove", [&] {
        if (IsName(oName) && sys::RemoveShm(oName.CStr())) return true;
        if (sys::RuntimeError() != sys::NOT_THERE) {
            Msg::CannotOpenSharedMemory(oName.CStr(), Msg::SystemError());
        }
        return false;
    });
}

u3_t File_Shm::InUse() noexcept {
    return g_uInUse;
}

void File_Shm::CheckAllClosed() {
    if (const u3_t uCount = InUse(); uCount != 0) Msg::StillSharedMemoryInUse(uCount);
}

// ---- publishing -------------------------------------------------------------

void File_Shm::Publish() {
    return Where("vok::File_Shm::Publish", [&] {
        const sys::Shm& oShm = Checked();
        if (!CanWrite()) Msg::FileIsNotOpenForWrite(Name());
        // Somebody may have cut off what the number is to stand for.
        if (sys::ShmSize(oShm) < sys::SHM_HEADER + m_uSize) {
            Msg::CannotSetSharedMemoryView(sys::SHM_HEADER, m_uSize, sys::INVALID_ARGUMENT);
        }
        Header& o = HeaderOf(oShm);
        m_uPublished = m_uSize;
        Set(o.uPublished, m_uPublished);
        Set(o.uGeneration, ++m_uGeneration);
    });
}

bool File_Shm::Refresh() {
    return Where("vok::File_Shm::Refresh", [&] {
        const sys::Shm& oShm = Checked();
        if (CanWrite()) return false;
        // A writer that is killed between both has published all the same.
        const u3_t uBefore = m_uGeneration;
        const u3_t uKnown = m_uPublished;
        if (!TakeHeader(oShm)) {
            Msg::CannotSetSharedMemoryView(sys::SHM_HEADER, m_uPublished, sys::INVALID_ARGUMENT);
        }
        return m_uGeneration != uBefore || m_uPublished != uKnown;
    });
}

File_Shm::Bytes File_Shm::MapBytes() const {
    return Where("vok::File_Shm::MapBytes", [&]() -> Bytes {
        const sys::Shm& oShm = Checked();
        const u3_t uBegin = sys::SHM_HEADER + std::min(m_uPosition, m_uPublished);
        const u3_t uEnd = sys::SHM_HEADER + m_uPublished;
        sys::Mapping oMapping;
        const bool bFits =
            uEnd <= std::numeric_limits<std::size_t>::max() || Fail(sys::INVALID_ARGUMENT);
        if (!bFits || !sys::CopyShm(oShm, static_cast<std::size_t>(uEnd), oMapping)) {
            Msg::CannotSetSharedMemoryView(uBegin, uEnd - uBegin, Msg::SystemError());
        }
        const std::shared_ptr<char> pAll(oMapping.pBytes,
                                         [oMapping](char*) { sys::Unmap(oMapping); });
        return {{pAll, oMapping.pBytes + uBegin}, static_cast<std::size_t>(uEnd - uBegin)};
    });
}

// ---- the stream -------------------------------------------------------------

std::size_t File_Shm::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::File_Shm::Read", [&] {
        (void)Checked();
        return ReadInChunks(oBuffer, uCount, bAppend);
    });
}

std::size_t File_Shm::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::File_Shm::Read", [&]() -> std::size_t {
        (void)Checked();
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        const u3_t uLeft = m_uPosition < m_uSize ? m_uSize - m_uPosition : 0;
        const auto uThere = static_cast<std::size_t>(std::min<u3_t>(uCount, uLeft));
        const std::size_t uDone = ReadHere(static_cast<char*>(pTarget), uThere);
        m_uPosition += uDone;
        const bool bShort = uDone < uCount && uCount != ALL && !bAllowShort;
        if (bShort || uDone < uThere) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    });
}

// Bytes at the position that are part of the stream. Small parts go through the buffer, which is
// good as long as nothing is written: others do not change what a reader can see.
std::size_t File_Shm::ReadHere(char* pTarget, std::size_t uSize) {
    std::size_t uDone = 0;
    while (uDone < uSize) {
        const u3_t uAt = m_uPosition + uDone;
        if (uAt < m_uAhead || uAt - m_uAhead >= m_oAhead.Size()) {
            const std::size_t uMissing = uSize - uDone;
            if (uMissing >= BUFFER_SIZE) {
                return uDone +
                       sys::ReadShm(*m_pShm, sys::SHM_HEADER + uAt, pTarget + uDone, uMissing);
            }
            m_oAhead.Truncate(0);
            m_oAhead.Reserve(BUFFER_SIZE);
            const auto uPiece =
                static_cast<std::size_t>(std::min<u3_t>(BUFFER_SIZE, m_uSize - uAt));
            m_oAhead.SetSize(sys::ReadShm(*m_pShm, sys::SHM_HEADER + uAt, m_oAhead.Beg(), uPiece));
            m_uAhead = uAt;
            if (m_oAhead.Size() == 0) break;
        }
        const auto uFrom = static_cast<std::size_t>(uAt - m_uAhead);
        const std::size_t uPart = std::min(uSize - uDone, m_oAhead.Size() - uFrom);
        std::memcpy(pTarget + uDone, m_oAhead.Beg() + uFrom, uPart);
        uDone += uPart;
    }
    return uDone;
}

std::size_t File_Shm::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::File_Shm::Write", [&]() -> std::size_t {
        (void)Checked();
        if (!CanWrite()) Msg::FileIsNotOpenForWrite(Name());
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        if (uCount == ALL) uCount = std::strlen(static_cast<const char*>(pSource));
        if (uCount == 0) return 0;
        if (m_uPosition < m_uPublished) Msg::FileWriteError(Name(), uCount, Tell(), NO_ACCESS);
        if (m_uPosition > m_uLimit || uCount > m_uLimit - m_uPosition) {
            sys::SetRuntimeError(TOO_LARGE);
            Msg::CannotResizeSharedMemory(Name(), m_uPosition + uCount, TOO_LARGE);
        }
        Grow(m_uPosition + uCount);
        // One that was killed may have left something in the gap.
        if (m_uPosition > m_uSize) {
            std::memset(m_pBytes + m_uSize, 0, static_cast<std::size_t>(m_uPosition - m_uSize));
        }
        std::memcpy(m_pBytes + m_uPosition, pSource, uCount);
        m_oAhead.Truncate(0);
        m_uPosition += uCount;
        m_uSize = std::max(m_uSize, m_uPosition);
        return uCount;
    });
}

void File_Shm::Grow(u3_t uEnd) {
    if (uEnd <= m_uRoom) return;
    const u3_t uMore = std::clamp(m_uRoom, FIRST_ROOM, MOST_MORE);
    const u3_t uRoom = std::min(std::max(uEnd, m_uRoom + uMore), m_uLimit);
    // Where there is not so much, maybe as much as is needed.
    if (sys::GrowShm(*m_pShm, sys::SHM_HEADER + m_uRoom, sys::SHM_HEADER + uRoom)) {
        m_uRoom = uRoom;
    } else if (sys::GrowShm(*m_pShm, sys::SHM_HEADER + m_uRoom, sys::SHM_HEADER + uEnd)) {
        m_uRoom = uEnd;
    } else {
        Msg::CannotResizeSharedMemory(Name(), uEnd, Msg::SystemError());
    }
}

void File_Shm::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::File_Shm::Seek", [&] {
        (void)Checked();
        u3_t uBase = 0;
        switch (iWhence) {
            case FROM_START: break;
            case FROM_POSITION: uBase = m_uPosition; break;
            case FROM_END: uBase = m_uSize; break;
            default: Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        // Both are below 2^63, so a negative sum shows as a huge one.
        const u3_t uPosition = uBase + static_cast<u3_t>(iOffset);
        if (uPosition > u3_t{std::numeric_limits<i3_t>::max()}) {
            Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        m_uPosition = uPosition;
    });
}

i3_t File_Shm::Tell() {
    return Where("vok::File_Shm::Tell", [&] {
        (void)Checked();
        return static_cast<i3_t>(m_uPosition);
    });
}

int File_Shm::Flush() {
    return Where("vok::File_Shm::Flush", [&] {
        (void)Checked();
        return 0;
    });
}

}  // namespace vok
