// SPDX-License-Identifier: MIT
// Named pipes as sockets in the file system.
//
// A name is taken by a lock on the file ".NAME.lock" beside the socket, which its server holds as
// long as it lives: the system lets it go however the process ends. Who has the lock is the only
// one that removes and makes the socket, so that two servers that start at the same time cannot
// take it from each other. A server removes both files when it closes. Somebody may just have
// opened the lock file that is being removed: who gets a lock looks whether the file still has its
// name, and begins again where it has not.
#include "vok/sys/pipe.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "vok/sys/disk.h"
#include "vok/sys/posix_descriptor.h"

namespace vok::sys {

namespace {

constexpr int BACKLOG = 128;        // clients that may wait to be accepted
constexpr u2_t LONGEST_PAUSE = 50;  // ms between attempts to connect

// The end of a wait.
class Deadline {
  public:
    explicit Deadline(u2_t uMs) noexcept : m_iEnd(uMs == FOREVER ? -1 : Now() + i3_t{uMs}) {}

    // Milliseconds that are left, as poll() takes them.
    [[nodiscard]] int Left() const noexcept {
        constexpr i3_t MOST = 1 << 30;
        if (m_iEnd < 0) return -1;
        const i3_t iLeft = m_iEnd - Now();
        return static_cast<int>(iLeft < 0 ? 0 : iLeft < MOST ? iLeft : MOST);
    }

  private:
    [[nodiscard]] static i3_t Now() noexcept {
        timespec o{};
        (void)::clock_gettime(CLOCK_MONOTONIC, &o);
        return static_cast<i3_t>(o.tv_sec) * 1000 + o.tv_nsec / 1000000;
    }

    i3_t m_iEnd;
};

[[nodiscard]] PipeEnd TimedOut() noexcept {
    errno = ETIMEDOUT;
    return PipeEnd::TimedOut;
}

// Waits until a socket can do something, or has failed, which the next call then tells.
[[nodiscard]] PipeEnd Await(int iSocket, short iWhat, const Deadline& oDeadline) noexcept {
    pollfd oPoll{iSocket, iWhat, 0};
    for (;;) {
        const int iLeft = oDeadline.Left();
        const int iDone = ::poll(&oPoll, 1, iLeft);
        if (iDone > 0) return PipeEnd::Done;
        if (iDone < 0 && errno != EINTR) return PipeEnd::Failed;
        if (iDone == 0 && oDeadline.Left() == 0) return TimedOut();
    }
}

// ---- names ------------------------------------------------------------------

struct Place {
    std::string sFolder;  // "" is the current one
    std::string sName;
    Descriptor oFolder;

    // What lies below the folder stays there, whatever becomes the current one meanwhile.
    [[nodiscard]] int In() const noexcept { return oFolder.Get(); }
};

[[nodiscard]] bool Fail(int iError) noexcept {
    errno = iError;
    return false;
}

[[nodiscard]] bool OpenFolder(Place& o) noexcept {
    o.oFolder = Descriptor(
        ::open(o.sFolder.empty() ? "." : o.sFolder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return o.oFolder.IsOpen();
}

// The same for one that nobody else must have his hands in: not a link, ours, and closed to others.
[[nodiscard]] bool OpenPrivate(Place& o, bool bMake) noexcept {
    if (bMake && ::mkdir(o.sFolder.c_str(), 0700) != 0 && errno != EEXIST) return false;
    o.oFolder =
        Descriptor(::open(o.sFolder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat oStat {};
    if (!o.oFolder.IsOpen() || ::fstat(o.oFolder.Get(), &oStat) != 0) return false;
    return (oStat.st_uid == ::geteuid() && (oStat.st_mode & 077) == 0) || Fail(EACCES);
}

// Whether the folder that a session has for such things is ours: not after a change of users.
[[nodiscard]] bool IsOurs(const char* sFolder) noexcept {
    struct stat oStat {};
    return sFolder != nullptr && *sFolder == '/' && ::stat(sFolder, &oStat) == 0 &&
           S_ISDIR(oStat.st_mode) && oStat.st_uid == ::geteuid();
}

[[nodiscard]] bool Find(const char* sName, bool bMake, Place& o) noexcept {
    try {
        const std::string_view sPath(sName);
        const std::size_t uSlash = sPath.rfind('/');
        if (uSlash != std::string_view::npos) {
            o.sFolder = sPath.substr(0, uSlash + 1);
            o.sName = sPath.substr(uSlash + 1);
            return (!o.sName.empty() && OpenFolder(o)) || (o.sName.empty() && Fail(EINVAL));
        }
        o.sName = sPath;
        if (const char* const sRuntime = std::getenv("XDG_RUNTIME_DIR"); IsOurs(sRuntime)) {
            o.sFolder = std::string(sRuntime) + "/vok";
        } else {
            if (!TempFolder(o.sFolder)) return false;
            o.sFolder += "/vok-" + std::to_string(::geteuid());
        }
        if (!OpenPrivate(o, bMake)) return false;
        o.sFolder += '/';
        return true;
    } catch (const std::exception&) {
        return Fail(ENOMEM);
    }
}

// An address has room for short paths only; others go by the descriptor of their folder.
[[nodiscard]] bool AddressOf(const Place& o, sockaddr_un& oAddress) noexcept {
    oAddress = {};
    oAddress.sun_family = AF_UNIX;
    constexpr std::size_t ROOM = sizeof(oAddress.sun_path);
    int iSize = std::snprintf(oAddress.sun_path, ROOM, "%s%s", o.sFolder.c_str(), o.sName.c_str());
    if (static_cast<std::size_t>(iSize) >= ROOM) {
        iSize =
            std::snprintf(oAddress.sun_path, ROOM, "/proc/self/fd/%d/%s", o.In(), o.sName.c_str());
    }
    return static_cast<std::size_t>(iSize) < ROOM || Fail(ENAMETOOLONG);
}

[[nodiscard]] Descriptor NewSocket() noexcept {
    return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

[[nodiscard]] bool ConnectTo(const Descriptor& oSocket, const Place& o) noexcept {
    sockaddr_un oAddress;
    return AddressOf(o, oAddress) &&
           ::connect(oSocket.Get(), reinterpret_cast<const sockaddr*>(&oAddress),
                     sizeof(oAddress)) == 0;
}

// Whether a file still has its name.
[[nodiscard]] bool IsNamed(const Place& o, const std::string& sName,
                           const struct stat& oFile) noexcept {
    struct stat oNamed {};
    return ::fstatat(o.In(), sName.c_str(), &oNamed, AT_SYMLINK_NOFOLLOW) == 0 &&
           oNamed.st_ino == oFile.st_ino && oNamed.st_dev == oFile.st_dev;
}

// The lock of a name, or EADDRINUSE.
[[nodiscard]] Descriptor LockName(const Place& o, const std::string& sLock) noexcept {
    for (;;) {
        Descriptor oLock(::openat(o.In(), sLock.c_str(),
                                  O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
        if (!oLock.IsOpen()) return oLock;
        if (::flock(oLock.Get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) errno = EADDRINUSE;
            return Descriptor();
        }
        struct stat oHeld {};
        if (::fstat(oLock.Get(), &oHeld) != 0) return Descriptor();
        if (IsNamed(o, sLock, oHeld)) return oLock;
    }
}

// Removes a socket that nobody listens at. A server that knows nothing of the lock answers, or is
// too busy to: it stays, and so does what is no socket.
[[nodiscard]] bool RemoveStale(const Place& o) noexcept {
    struct stat oStat {};
    if (::fstatat(o.In(), o.sName.c_str(), &oStat, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    if (!S_ISSOCK(oStat.st_mode)) return Fail(EEXIST);
    const Descriptor oSocket = NewSocket();
    if (!oSocket.IsOpen()) return false;
    if (ConnectTo(oSocket, o) || errno != ECONNREFUSED) return Fail(EADDRINUSE);
    return ::unlinkat(o.In(), o.sName.c_str(), 0) == 0;
}

// Lets everybody connect, whatever the mask of the process is. Not by the name, at which somebody
// may have put something else.
[[nodiscard]] bool LetEveryone(const Place& o) noexcept {
    const Descriptor oSocket(::openat(o.In(), o.sName.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat oStat {};
    if (!oSocket.IsOpen() || ::fstat(oSocket.Get(), &oStat) != 0) return false;
    if (!S_ISSOCK(oStat.st_mode)) return Fail(EEXIST);
    char sPath[32];
    (void)std::snprintf(sPath, sizeof(sPath), "/proc/self/fd/%d", oSocket.Get());
    return ::chmod(sPath, 0666) == 0;
}

}  // namespace

// ---- servers ----------------------------------------------------------------

struct PipeServer {
    Place oPlace;
    std::string sLock;
    Descriptor oLock;
    Descriptor oSocket;
    struct stat oFile {};  // what the socket is bound to, of which it knows nothing itself
    bool bBound = false;
};

struct Pipe {
    Descriptor oSocket;
};

namespace {

[[nodiscard]] bool Listen(PipeServer& o, const char* sName, bool bEveryone) noexcept {
    // Where only the user may look, nobody else can connect.
    if (bEveryone && std::strchr(sName, '/') == nullptr) return Fail(EINVAL);
    if (!Find(sName, true, o.oPlace)) return false;
    try {
        o.sLock = '.' + o.oPlace.sName + ".lock";
    } catch (const std::exception&) {
        return Fail(ENOMEM);
    }
    o.oLock = LockName(o.oPlace, o.sLock);
    if (!o.oLock.IsOpen() || !RemoveStale(o.oPlace)) return false;
    o.oSocket = NewSocket();
    sockaddr_un oAddress;
    if (!o.oSocket.IsOpen() || !AddressOf(o.oPlace, oAddress)) return false;
    // The mode that the file will be made with. Until listen() nobody is let in, so that of
    // everybody may come behind.
    if (::fchmod(o.oSocket.Get(), 0600) != 0) return false;
    const auto* const pAddress = reinterpret_cast<const sockaddr*>(&oAddress);
    o.bBound = ::bind(o.oSocket.Get(), pAddress, sizeof(oAddress)) == 0;
    return o.bBound &&
           ::fstatat(o.oPlace.In(), o.oPlace.sName.c_str(), &o.oFile, AT_SYMLINK_NOFOLLOW) == 0 &&
           (!bEveryone || LetEveryone(o.oPlace)) && ::listen(o.oSocket.Get(), BACKLOG) == 0;
}

[[nodiscard]] bool Wrap(Descriptor&& oSocket, Pipe*& pPipe) noexcept {
    pPipe = new (std::nothrow) Pipe{std::move(oSocket)};
    return pPipe != nullptr || Fail(ENOMEM);
}

}  // namespace

PipeServer* ListenPipe(const char* sName, bool bEveryone) noexcept {
    PipeServer* const pServer = new (std::nothrow) PipeServer;
    if (pServer == nullptr) {
        errno = ENOMEM;
    } else if (!Listen(*pServer, sName, bEveryone)) {
        const int iError = errno;
        CloseServer(pServer);
        errno = iError;
        return nullptr;
    }
    return pServer;
}

void CloseServer(PipeServer* pServer) noexcept {
    // The socket before the lock: others come when that is gone. Who has removed one of them by
    // hand may have let another server have the name.
    const Place& oPlace = pServer->oPlace;
    if (pServer->bBound && IsNamed(oPlace, oPlace.sName, pServer->oFile)) {
        (void)::unlinkat(oPlace.In(), oPlace.sName.c_str(), 0);
    }
    struct stat oHeld {};
    if (pServer->oLock.IsOpen() && ::fstat(pServer->oLock.Get(), &oHeld) == 0 &&
        IsNamed(oPlace, pServer->sLock, oHeld)) {
        (void)::unlinkat(oPlace.In(), pServer->sLock.c_str(), 0);
    }
    delete pServer;
}

PipeEnd AcceptPipe(PipeServer& oServer, u2_t uMs, Pipe*& pPipe) noexcept {
    const Deadline oDeadline(uMs);
    for (;;) {
        Descriptor oSocket(
            ::accept4(oServer.oSocket.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (oSocket.IsOpen()) {
            return Wrap(std::move(oSocket), pPipe) ? PipeEnd::Done : PipeEnd::Failed;
        }
        if (errno == EINTR || errno == ECONNABORTED) continue;
        if (errno != EAGAIN) return PipeEnd::Failed;
        const PipeEnd eEnd = Await(oServer.oSocket.Get(), POLLIN, oDeadline);
        if (eEnd != PipeEnd::Done) return eEnd;
    }
}

// ---- connections ------------------------------------------------------------

PipeEnd ConnectPipe(const char* sName, u2_t uMs, Pipe*& pPipe) noexcept {
    const Deadline oDeadline(uMs);
    for (int iPause = 1;; iPause *= 2) {
        Place oPlace;
        Descriptor oSocket = NewSocket();
        if (!oSocket.IsOpen()) return PipeEnd::Failed;
        if (Find(sName, false, oPlace) && ConnectTo(oSocket, oPlace)) {
            return Wrap(std::move(oSocket), pPipe) ? PipeEnd::Done : PipeEnd::Failed;
        }
        // Not there yet, not listening yet or no more, too many that wait.
        const bool bLater = errno == ENOENT || errno == ECONNREFUSED || errno == EAGAIN;
        if (!bLater && errno != EINTR) return PipeEnd::Failed;
        const int iLeft = oDeadline.Left();
        if (iLeft == 0) return TimedOut();
        if (iPause > static_cast<int>(LONGEST_PAUSE)) iPause = LONGEST_PAUSE;
        (void)::poll(nullptr, 0, iLeft > 0 && iLeft < iPause ? iLeft : iPause);
    }
}

PipeEnd ReadPipe(Pipe& oPipe, char* pTarget, std::size_t uSize, u2_t uMs,
                 std::size_t& uDone) noexcept {
    const Deadline oDeadline(uMs);
    uDone = 0;
    for (;;) {
        const ssize_t iDone = ::recv(oPipe.oSocket.Get(), pTarget, uSize, 0);
        if (iDone > 0) {
            uDone = static_cast<std::size_t>(iDone);
            return PipeEnd::Done;
        }
        // Reset: the other side has gone and had not read all that it was sent.
        if (iDone == 0 || errno == ECONNRESET) return PipeEnd::Closed;
        if (errno == EINTR) continue;
        if (errno != EAGAIN) return PipeEnd::Failed;
        const PipeEnd eEnd = Await(oPipe.oSocket.Get(), POLLIN, oDeadline);
        if (eEnd != PipeEnd::Done) return eEnd;
    }
}

PipeEnd WritePipe(Pipe& oPipe, const char* pSource, std::size_t uSize, u2_t uMs) noexcept {
    Deadline oDeadline(uMs);
    while (uSize != 0) {
        // Without a signal where nobody reads any more.
        const ssize_t iDone = ::send(oPipe.oSocket.Get(), pSource, uSize, MSG_NOSIGNAL);
        if (iDone >= 0) {
            pSource += iDone;
            uSize -= static_cast<std::size_t>(iDone);
            oDeadline = Deadline(uMs);
            continue;
        }
        if (errno == EINTR) continue;
        if (errno == EPIPE || errno == ECONNRESET) {
            errno = EPIPE;
            return PipeEnd::Closed;
        }
        if (errno != EAGAIN) return PipeEnd::Failed;
        const PipeEnd eEnd = Await(oPipe.oSocket.Get(), POLLOUT, oDeadline);
        if (eEnd != PipeEnd::Done) return eEnd;
    }
    return PipeEnd::Done;
}

void ClosePipe(Pipe* pPipe) noexcept {
    delete pPipe;
}

u2_t PeerProcess(const Pipe& oPipe) noexcept {
    ucred oPeer{};
    socklen_t uSize = sizeof(oPeer);
    const bool bGood =
        ::getsockopt(oPipe.oSocket.Get(), SOL_SOCKET, SO_PEERCRED, &oPeer, &uSize) == 0;
    return bGood ? static_cast<u2_t>(oPeer.pid) : 0;
}

}  // namespace vok::sys
