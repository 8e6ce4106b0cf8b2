// SPDX-License-Identifier: MIT
// Named pipes of Windows, overlapped so that every wait can end.
#include "vok/sys/pipe.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>
#include <utility>

#include "vok/sys/win32_handle.h"

namespace vok::sys {

namespace {

constexpr DWORD BUFFER = 64 * 1024;
constexpr std::size_t MOST_AT_ONCE = std::size_t{1} << 20;
// What clients may do: not make more pipes of the name.
constexpr DWORD CLIENT_ACCESS =
    FILE_GENERIC_READ | (FILE_GENERIC_WRITE & ~DWORD{FILE_CREATE_PIPE_INSTANCE});
constexpr u2_t LONGEST_PAUSE = 50;  // ms between attempts to connect

class Deadline {
  public:
    explicit Deadline(u2_t uMs) noexcept : m_bEver(uMs == FOREVER), m_uEnd(Now() + uMs) {}
    [[nodiscard]] DWORD Left() const noexcept {
        constexpr u3_t MOST = 1 << 30;
        if (m_bEver) return INFINITE;
        const u3_t uNow = Now();
        return static_cast<DWORD>(uNow < m_uEnd ? std::min(m_uEnd - uNow, MOST) : 0);
    }

  private:
    [[nodiscard]] static u3_t Now() noexcept { return ::GetTickCount64(); }

    bool m_bEver;
    u3_t m_uEnd;
};

[[nodiscard]] PipeEnd TimedOut() noexcept {
    ::SetLastError(ERROR_TIMEOUT);
    errno = ETIMEDOUT;
    return PipeEnd::TimedOut;
}

// Closed where the other side has gone, else Failed.
[[nodiscard]] PipeEnd Failure() noexcept {
    switch (::GetLastError()) {
        case ERROR_BROKEN_PIPE:
        case ERROR_NO_DATA:
        case ERROR_PIPE_NOT_CONNECTED: errno = EPIPE; return PipeEnd::Closed;
        default: (void)TakeLastError(); return PipeEnd::Failed;
    }
}

[[nodiscard]] bool FullName(const char* sName, std::wstring& sFull) noexcept {
    std::wstring sWide;
    if (!ToWide(sName, sWide)) return false;
    try {
        sFull = L"\\\\.\\pipe\\" + sWide;
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

[[nodiscard]] Handle NewEvent() noexcept {
    return Handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// Waits for a transfer that is under way, and stops it where it takes too long.
[[nodiscard]] PipeEnd Await(HANDLE hPipe, OVERLAPPED& o, const Deadline& oDeadline,
                            DWORD& uDone) noexcept {
    for (;;) {
        const DWORD uWait = ::WaitForSingleObject(o.hEvent, oDeadline.Left());
        if (uWait == WAIT_TIMEOUT && oDeadline.Left() != 0) continue;
        if (uWait != WAIT_OBJECT_0) ::CancelIoEx(hPipe, &o);
        // It may have come to its end just before. The system has the buffer until this returns.
        if (::GetOverlappedResult(hPipe, &o, &uDone, TRUE) != 0) return PipeEnd::Done;
        return uWait == WAIT_TIMEOUT && ::GetLastError() == ERROR_OPERATION_ABORTED ? TimedOut()
                                                                                    : Failure();
    }
}

}  // namespace

// ---- servers ----------------------------------------------------------------

struct PipeServer {
    std::wstring sName;
    Security oSecurity;
    Handle oEvent;
    Handle oNext;  // what the next client connects to
    OVERLAPPED oWaiting{};
    bool bWaiting = false;  // for it, since an Accept whose time was up
};

struct Pipe {
    Handle oPipe;
    Handle oEvent;
    bool bServer;
};

namespace {

[[nodiscard]] Handle NewInstance(const PipeServer& o, bool bFirst) noexcept {
    SECURITY_ATTRIBUTES oAttributes{sizeof(oAttributes), o.oSecurity.Get(), FALSE};
    // The first one fails where somebody else has the name.
    return Handle(::CreateNamedPipeW(
        o.sName.c_str(),
        PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (bFirst ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0),
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
        PIPE_UNLIMITED_INSTANCES, BUFFER, BUFFER, 0, &oAttributes));
}

[[nodiscard]] bool Wrap(Handle&& oPipe, bool bServer, Pipe*& pPipe) noexcept {
    Handle oEvent = NewEvent();
    if (!oEvent.IsOpen()) return TakeLastError();
    pPipe = new (std::nothrow) Pipe{std::move(oPipe), std::move(oEvent), bServer};
    if (pPipe == nullptr) errno = ENOMEM;
    return pPipe != nullptr;
}

// Begins to wait for a client, or finds one.
[[nodiscard]] PipeEnd Begin(PipeServer& o, bool& bThere) noexcept {
    o.oWaiting = {};
    o.oWaiting.hEvent = o.oEvent.Get();
    bThere = ::ConnectNamedPipe(o.oNext.Get(), &o.oWaiting) != 0;
    if (bThere) return PipeEnd::Done;
    switch (::GetLastError()) {
        case ERROR_IO_PENDING: o.bWaiting = true; return PipeEnd::Done;
        // One that came and has gone again is told when it is read.
        case ERROR_NO_DATA:
        case ERROR_PIPE_CONNECTED: bThere = true; return PipeEnd::Done;
        default: (void)TakeLastError(); return PipeEnd::Failed;
    }
}

}  // namespace

PipeServer* ListenPipe(const char* sName, bool bEveryone) noexcept {
    PipeServer* const pServer = new (std::nothrow) PipeServer;
    if (pServer == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    bool bGood = FullName(sName, pServer->sName);
    if (bGood) {
        pServer->oEvent = NewEvent();
        bGood =
            (pServer->oEvent.IsOpen() && pServer->oSecurity.Make(bEveryone ? CLIENT_ACCESS : 0)) ||
            TakeLastError();
    }
    if (bGood) {
        pServer->oNext = NewInstance(*pServer, true);
        bGood = pServer->oNext.IsOpen() || TakeLastError();
    }
    if (bGood) return pServer;
    CloseServer(pServer);
    return nullptr;
}

void CloseServer(PipeServer* pServer) noexcept {
    const int iError = errno;
    if (pServer->bWaiting) {
        DWORD uDone = 0;
        ::CancelIoEx(pServer->oNext.Get(), &pServer->oWaiting);
        ::GetOverlappedResult(pServer->oNext.Get(), &pServer->oWaiting, &uDone, TRUE);
    }
    delete pServer;
    errno = iError;
}

PipeEnd AcceptPipe(PipeServer& oServer, u2_t uMs, Pipe*& pPipe) noexcept {
    const Deadline oDeadline(uMs);
    bool bThere = false;
    if (!oServer.oNext.IsOpen()) {
        oServer.oNext = NewInstance(oServer, false);
        if (!oServer.oNext.IsOpen()) return TakeLastError(), PipeEnd::Failed;
    }
    if (!oServer.bWaiting && Begin(oServer, bThere) == PipeEnd::Failed) return PipeEnd::Failed;
    while (!bThere) {
        const DWORD uWait = ::WaitForSingleObject(oServer.oEvent.Get(), oDeadline.Left());
        // The wait goes on with the next call: who connects meanwhile is not lost.
        if (uWait == WAIT_TIMEOUT && oDeadline.Left() == 0) return TimedOut();
        if (uWait == WAIT_FAILED) return TakeLastError(), PipeEnd::Failed;
        bThere = uWait == WAIT_OBJECT_0;
    }
    oServer.bWaiting = false;
    // The name stays taken even where this client goes before the next one comes. Where there is
    // no other now the next call tries again.
    Handle oClient = std::exchange(oServer.oNext, Handle());
    oServer.oNext = NewInstance(oServer, false);
    return Wrap(std::move(oClient), true, pPipe) ? PipeEnd::Done : PipeEnd::Failed;
}

// ---- connections ------------------------------------------------------------

PipeEnd ConnectPipe(const char* sName, u2_t uMs, Pipe*& pPipe) noexcept {
    const Deadline oDeadline(uMs);
    std::wstring sFull;
    if (!FullName(sName, sFull)) return PipeEnd::Failed;
    for (DWORD uPause = 1;; uPause = std::min<DWORD>(2 * uPause, LONGEST_PAUSE)) {
        // The server is not to act for this user.
        Handle oPipe(::CreateFileW(
            sFull.c_str(), CLIENT_ACCESS, 0, nullptr, OPEN_EXISTING,
            FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (oPipe.IsOpen()) {
            return Wrap(std::move(oPipe), false, pPipe) ? PipeEnd::Done : PipeEnd::Failed;
        }
        // Not there yet, or too many that come at the same time.
        const DWORD uError = ::GetLastError();
        if (uError != ERROR_FILE_NOT_FOUND && uError != ERROR_PIPE_BUSY) return Failure();
        const DWORD uLeft = oDeadline.Left();
        if (uLeft == 0) return TimedOut();
        ::Sleep(std::min(uLeft, uPause));
    }
}

PipeEnd ReadPipe(Pipe& oPipe, char* pTarget, std::size_t uSize, u2_t uMs,
                 std::size_t& uDone) noexcept {
    const Deadline oDeadline(uMs);
    uDone = 0;
    for (;;) {
        OVERLAPPED o{};
        o.hEvent = oPipe.oEvent.Get();
        DWORD uRead = 0;
        const auto uPart = static_cast<DWORD>(std::min(uSize, MOST_AT_ONCE));
        if (::ReadFile(oPipe.oPipe.Get(), pTarget, uPart, nullptr, &o) == 0 &&
            ::GetLastError() != ERROR_IO_PENDING) {
            return Failure();
        }
        const PipeEnd eEnd = Await(oPipe.oPipe.Get(), o, oDeadline, uRead);
        if (eEnd != PipeEnd::Done) return eEnd;
        // The other side can write nothing, which is not the end.
        if (uRead == 0) continue;
        uDone = uRead;
        return PipeEnd::Done;
    }
}

PipeEnd WritePipe(Pipe& oPipe, const char* pSource, std::size_t uSize, u2_t uMs) noexcept {
    // A part is as much as the other side can have been given without reading.
    constexpr std::size_t PART = BUFFER;
    while (uSize != 0) {
        OVERLAPPED o{};
        o.hEvent = oPipe.oEvent.Get();
        DWORD uWritten = 0;
        const auto uPart = static_cast<DWORD>(std::min(uSize, PART));
        if (::WriteFile(oPipe.oPipe.Get(), pSource, uPart, nullptr, &o) == 0 &&
            ::GetLastError() != ERROR_IO_PENDING) {
            return Failure();
        }
        const PipeEnd eEnd = Await(oPipe.oPipe.Get(), o, Deadline(uMs), uWritten);
        if (eEnd != PipeEnd::Done) return eEnd;
        pSource += uWritten;
        uSize -= uWritten;
    }
    return PipeEnd::Done;
}

void ClosePipe(Pipe* pPipe) noexcept {
    delete pPipe;
}

u2_t PeerProcess(const Pipe& oPipe) noexcept {
    ULONG uProcess = 0;
    const bool bGood =
        (oPipe.bServer ? ::GetNamedPipeClientProcessId(oPipe.oPipe.Get(), &uProcess)
                       : ::GetNamedPipeServerProcessId(oPipe.oPipe.Get(), &uProcess)) != 0;
    return bGood ? uProcess : 0;
}

}  // namespace vok::sys
