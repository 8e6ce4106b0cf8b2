// SPDX-License-Identifier: MIT
#include "vok/file/nam_pipe.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "vok/base/little_endian.h"
#include "vok/base/where.h"
#include "vok/file/messages.h"
#include "vok/file/plain_name.h"
#include "vok/file/rest.h"
#include "vok/sys/disk.h"
#include "vok/sys/pipe.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr std::size_t BUFFER_SIZE = 0x10000;
constexpr std::size_t MAX_CHUNK = 0x800000;
constexpr std::size_t LONGEST_NAME = 100;
constexpr std::size_t LENGTH_SIZE = 8;  // of the number in front of a message

static_assert(File_NamPipe::FOREVER == sys::FOREVER);

// Leaves the reason in sys::RuntimeError().
[[nodiscard]] bool IsName(const Str& oName) noexcept {
    const std::string_view s = oName.View();
    const bool bPath = !sys::IS_WINDOWS && s.find('/') != std::string_view::npos;
    if (bPath || file::IsPlainName(s, LONGEST_NAME)) return true;
    sys::SetRuntimeError(sys::INVALID_ARGUMENT);
    return false;
}

}  // namespace

// ---- connections ------------------------------------------------------------

void File_NamPipe::Closer::operator()(sys::Pipe* pPipe) const noexcept {
    sys::ClosePipe(pPipe);
}

File_NamPipe::File_NamPipe() noexcept = default;

File_NamPipe::File_NamPipe(const Str& oName, u2_t uMs) {
    (void)Connect(oName, uMs);
}

File_NamPipe::File_NamPipe(File_NamPipe&& oOther) noexcept {
    *this = std::move(oOther);
}

File_NamPipe& File_NamPipe::operator=(File_NamPipe&& oOther) noexcept {
    if (this == &oOther) return *this;
    Drop();
    m_pPipe.swap(oOther.m_pPipe);
    m_oName = oOther.m_oName;
    m_oAhead.Swap(oOther.m_oAhead);
    m_oPending.Swap(oOther.m_oPending);
    m_uNext = std::exchange(oOther.m_uNext, 0);
    m_uReadMs = oOther.m_uReadMs;
    m_uWriteMs = oOther.m_uWriteMs;
    m_bBroken = std::exchange(oOther.m_bBroken, false);
    m_bTimedOut = oOther.m_bTimedOut;
    return *this;
}

File_NamPipe::~File_NamPipe() {
    Drop();
}

bool File_NamPipe::Connect(const Str& oName, u2_t uMs, bool bRaise) {
    return Where("vok::File_NamPipe::Connect", [&] {
        Close();
        m_oName = oName;
        sys::Pipe* pPipe = nullptr;
        const sys::PipeEnd eEnd =
            IsName(oName) ? sys::ConnectPipe(oName.CStr(), uMs, pPipe) : sys::PipeEnd::Failed;
        m_bTimedOut = eEnd == sys::PipeEnd::TimedOut;
        if (eEnd == sys::PipeEnd::Done) {
            m_pPipe.reset(pPipe);
        } else if (bRaise) {
            Msg::CouldNotOpenNamedPipe(Name(), Msg::SystemError());
        }
        return IsOpen();
    });
}

void File_NamPipe::Close() {
    return Where("vok::File_NamPipe::Close", [&] {
        if (!IsOpen()) return;
        // However the scope is left.
        struct Last {
            File_NamPipe& m_oPipe;
            ~Last() {
                m_oPipe.m_oPending.Truncate(0);
                m_oPipe.Drop();
            }
        } oLast{*this};
        if (!m_bBroken) HandOver();
    });
}

// Closes, and hands over what goes at once.
void File_NamPipe::Drop() noexcept {
    if (m_pPipe != nullptr && m_oPending.Size() != 0 && !m_bBroken) {
        (void)sys::WritePipe(*m_pPipe, m_oPending.Beg(), m_oPending.Size(), 0);
    }
    m_pPipe.reset();
    m_oAhead.Truncate(0);
    m_oPending.Truncate(0);
    m_uNext = 0;
    m_bBroken = false;
}

void File_NamPipe::SetTimeouts(u2_t uReadMs, u2_t uWriteMs) noexcept {
    m_uReadMs = uReadMs;
    m_uWriteMs = uWriteMs;
}

u2_t File_NamPipe::PeerProcess() const {
    return Where("vok::File_NamPipe::PeerProcess", [&] { return sys::PeerProcess(Checked()); });
}

sys::Pipe& File_NamPipe::Checked() const {
    if (m_pPipe == nullptr) [[unlikely]]
        Msg::ObjectPointsToNothing();
    return *m_pPipe;
}

// ---- reading ----------------------------------------------------------------

std::size_t File_NamPipe::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::File_NamPipe::Read", [&] { return ReadInChunks(oBuffer, uCount, bAppend); });
}

std::size_t File_NamPipe::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::File_NamPipe::Read", [&]() -> std::size_t {
        (void)Checked();
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        HandOver();
        char* const pBytes = static_cast<char*>(pTarget);
        std::size_t uDone = 0;
        while (uDone < uCount) {
            const std::size_t uMissing = uCount - uDone;
            if (m_uNext == m_oAhead.Size()) {
                if (uDone != 0 && bAllowShort && uCount != ALL) break;
                m_oAhead.Truncate(0);
                m_uNext = 0;
                if (uMissing >= BUFFER_SIZE) {
                    const std::size_t uGot = Receive(pBytes + uDone, std::min(uMissing, MAX_CHUNK));
                    if (uGot == 0) break;
                    uDone += uGot;
                    continue;
                }
                m_oAhead.Reserve(BUFFER_SIZE);
                m_oAhead.SetSize(Receive(m_oAhead.Beg(), BUFFER_SIZE));
                if (m_oAhead.Size() == 0) break;
            }
            const std::size_t uPart = std::min(uMissing, m_oAhead.Size() - m_uNext);
            std::memcpy(pBytes + uDone, m_oAhead.Beg() + m_uNext, uPart);
            m_uNext += uPart;
            uDone += uPart;
        }
        if (uDone < uCount && uCount != ALL && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    });
}

// Returns 0 at the end.
std::size_t File_NamPipe::Receive(char* pTarget, std::size_t uSize) {
    std::size_t uDone = 0;
    const sys::PipeEnd eEnd = sys::ReadPipe(Checked(), pTarget, uSize, m_uReadMs, uDone);
    m_bTimedOut = eEnd == sys::PipeEnd::TimedOut;
    if (eEnd == sys::PipeEnd::TimedOut || eEnd == sys::PipeEnd::Failed) {
        Msg::ErrorReadingToNamedPipe(Name(), Msg::SystemError());
    }
    return uDone;
}

// ---- writing ----------------------------------------------------------------

std::size_t File_NamPipe::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::File_NamPipe::Write", [&]() -> std::size_t {
        (void)Checked();
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        const char* const pBytes = static_cast<const char*>(pSource);
        if (uCount == ALL) uCount = std::strlen(pBytes);
        if (uCount > BUFFER_SIZE - m_oPending.Size()) HandOver();
        if (uCount < BUFFER_SIZE && !m_bBroken) {
            m_oPending.Reserve(BUFFER_SIZE);
            m_oPending.Add(pBytes, uCount);
        } else {
            Send(pBytes, uCount);
        }
        return uCount;
    });
}

void File_NamPipe::Send(const char* pSource, std::size_t uSize) {
    sys::Pipe& oPipe = Checked();
    m_bTimedOut = false;
    if (m_bBroken) {
        sys::SetRuntimeError(sys::NO_READER);
    } else {
        const sys::PipeEnd eEnd = sys::WritePipe(oPipe, pSource, uSize, m_uWriteMs);
        if (eEnd == sys::PipeEnd::Done) return;
        m_bTimedOut = eEnd == sys::PipeEnd::TimedOut;
        m_bBroken = true;
    }
    m_oPending.Truncate(0);
    Msg::ErrorWritingToNamedPipe(Name(), Msg::SystemError());
}

void File_NamPipe::HandOver() {
    if (m_oPending.Size() == 0) return;
    Send(m_oPending.Beg(), m_oPending.Size());
    m_oPending.Truncate(0);
}

int File_NamPipe::Flush() {
    return Where("vok::File_NamPipe::Flush", [&] {
        (void)Checked();
        HandOver();
        return 0;
    });
}

void File_NamPipe::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::File_NamPipe::Seek", [&] { Msg::FileSeekFailed(iOffset, iWhence, 0); });
}

// ---- messages ---------------------------------------------------------------

void File_NamPipe::WriteMessage(const void* pSource, std::size_t uSize) {
    return Where("vok::File_NamPipe::WriteMessage", [&] {
        char sLength[LENGTH_SIZE];
        le::Store<u3_t>(sLength, uSize);
        Write(sLength, sizeof(sLength));
        if (uSize != 0) Write(pSource, uSize);
        Flush();
    });
}

bool File_NamPipe::ReadMessage(Arr<char>& oMessage, u3_t uMost) {
    return Where("vok::File_NamPipe::ReadMessage", [&] {
        oMessage.Truncate(0);
        char sLength[LENGTH_SIZE];
        const std::size_t uGot = ReadUpTo(*this, sLength, sizeof(sLength));
        if (uGot == 0) return false;
        if (uGot < sizeof(sLength)) Msg::UnexpectedEndOfFile(Name(), 0);
        const u3_t uSize = le::Load<u3_t>(sLength);
        if (uSize > std::min<u3_t>(uMost, ALL - 1)) file::RaiseLongMessage(Name(), uSize, uMost);
        if (Read(oMessage, static_cast<std::size_t>(uSize)) < uSize) {
            oMessage.Truncate(0);
            Msg::UnexpectedEndOfFile(Name(), 0);
        }
        return true;
    });
}

// ---- servers ----------------------------------------------------------------

void File_NamPipeServer::Closer::operator()(sys::PipeServer* pServer) const noexcept {
    sys::CloseServer(pServer);
}

File_NamPipeServer::File_NamPipeServer() noexcept = default;

File_NamPipeServer::File_NamPipeServer(const Str& oName, Access eAccess) {
    Open(oName, eAccess);
}

File_NamPipeServer::~File_NamPipeServer() = default;

void File_NamPipeServer::Open(const Str& oName, Access eAccess) {
    return Where("vok::File_NamPipeServer::Open", [&] {
        Close();
        m_oName = oName;
        if (IsName(oName)) {
            m_pServer.reset(sys::ListenPipe(oName.CStr(), eAccess == Access::Everyone));
        }
        if (!IsOpen()) Msg::CannotCreateNamedPipe(Name(), Msg::SystemError());
    });
}

void File_NamPipeServer::Close() noexcept {
    m_pServer.reset();
}

bool File_NamPipeServer::Accept(File_NamPipe& oClient, u2_t uMs) {
    return Where("vok::File_NamPipeServer::Accept", [&] {
        if (!IsOpen()) Msg::ObjectPointsToNothing();
        oClient.Drop();
        sys::Pipe* pPipe = nullptr;
        const sys::PipeEnd eEnd = sys::AcceptPipe(*m_pServer, uMs, pPipe);
        if (eEnd == sys::PipeEnd::TimedOut) return false;
        if (eEnd != sys::PipeEnd::Done) {
            Msg::NamedPipeCouldNotBeConnected(Name(), Msg::SystemError());
        }
        oClient.m_pPipe.reset(pPipe);
        oClient.m_oName = m_oName;
        oClient.m_bTimedOut = false;
        return true;
    });
}

}  // namespace vok
