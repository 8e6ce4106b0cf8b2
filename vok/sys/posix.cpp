// SPDX-License-Identifier: MIT
#include "vok/sys/sys.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "vok/sys/page_cache.h"
#include "vok/sys/thread_block.h"

namespace vok::sys {

// ---- process and threads --------------------------------------------------

u2_t ProcessId() noexcept {
    return static_cast<u2_t>(::getpid());
}

u2_t ThreadId() noexcept {
    return static_cast<u2_t>(::syscall(SYS_gettid));
}

void SleepMs(unsigned uMilliseconds) noexcept {
    timespec oTime{};
    oTime.tv_sec = static_cast<time_t>(uMilliseconds / 1000);
    oTime.tv_nsec = static_cast<long>(uMilliseconds % 1000) * 1000000L;
    while (::nanosleep(&oTime, &oTime) != 0 && errno == EINTR) {
    }
}

void OnFork(void (*pBefore)(), void (*pAfter)()) noexcept {
    (void)::pthread_atfork(pBefore, pAfter, pAfter);
}

NoCancel::NoCancel() noexcept {
    (void)::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_iBefore);
}

NoCancel::~NoCancel() {
    (void)::pthread_setcancelstate(m_iBefore, nullptr);
}

namespace {

// One key for all threads; each frees its block when it ends. A thread_local object with a
// destructor would end the process where there is no memory to register it; a key says so.
struct ThreadBlocks {
    ThreadBlocks() noexcept : bGood(::pthread_key_create(&oKey, std::free) == 0) {}
    ~ThreadBlocks() {
        if (bGood) (void)::pthread_key_delete(oKey);
    }
    ThreadBlocks(const ThreadBlocks&) = delete;
    ThreadBlocks& operator=(const ThreadBlocks&) = delete;
    pthread_key_t oKey{};
    const bool bGood;
};
const ThreadBlocks g_oThreadBlocks;

}  // namespace

void* ThreadBlock(std::size_t uSize) noexcept {
    if (!g_oThreadBlocks.bGood) return nullptr;
    return GrowThreadBlock(::pthread_getspecific(g_oThreadBlocks.oKey), uSize, [](void* p) {
        return ::pthread_setspecific(g_oThreadBlocks.oKey, p) == 0;
    });
}

// ---- errors ---------------------------------------------------------------

u2_t LastError() noexcept {
    return static_cast<u2_t>(errno);
}

void SetLastError(u2_t uCode) noexcept {
    errno = static_cast<int>(uCode);
}

u2_t RuntimeError() noexcept {
    return LastError();
}

void SetRuntimeError(u2_t uCode) noexcept {
    SetLastError(uCode);
}

std::size_t SystemErrorText(u2_t uCode, char* sBuf, std::size_t uSize) noexcept {
    if (uSize == 0) return 0;
    char sTmp[256];
    // The GNU form: it may or may not use the buffer it is given.
    const char* sText = ::strerror_r(static_cast<int>(uCode), sTmp, sizeof(sTmp));
    const std::size_t uLength = ::strnlen(sText, uSize - 1);
    std::memcpy(sBuf, sText, uLength);
    sBuf[uLength] = 0;
    return uLength;
}

u2_t RuntimeErrno(u2_t uCode) noexcept {
    constexpr u2_t uLastShared = 34;   // up to ERANGE both number alike
    constexpr u2_t uLastRuntime = 80;  // the highest number the other side has a text for
    constexpr u2_t uOffset = 0x10000;
    constexpr u2_t uNobodys = 41;  // no error of this system: it can only be meant as it is
    switch (uCode) {
        case EDEADLK: return 36;
        case ENAMETOOLONG: return 38;
        case ENOLCK: return 39;
        case ENOSYS: return 40;
        case ENOTEMPTY: return 41;
        case EILSEQ: return 42;
        default: break;
    }
    const bool bForeign = uCode > uLastShared && uCode <= uLastRuntime && uCode != uNobodys;
    return bForeign ? uCode + uOffset : uCode;
}

// ---- program --------------------------------------------------------------

std::vector<std::string> Arguments(int iCount, char** asArgument) {
    return {asArgument, asArgument + iCount};
}

void PrepareConsole() noexcept {}

std::vector<int> EndingSignals() {
    return {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};
}

void IgnoreFileSizeSignal() noexcept {
    (void)std::signal(SIGXFSZ, SIG_IGN);
}

void RemoveOnInterrupt(const char* sPath) noexcept {
    ::unlink(sPath);
}

namespace {

std::atomic<::pid_t> g_iPager{0};

}  // namespace

bool StartPager(const char* sCommand) noexcept {
    int aiEnd[2];
    if (::pipe2(aiEnd, O_CLOEXEC) != 0) return false;
    (void)::setenv("LESS", "FRX", 0);
    std::fflush(stdout);
    const ::pid_t iPager = ::fork();
    if (iPager == 0) {
        ::dup2(aiEnd[0], STDIN_FILENO);
        ::execl("/bin/sh", "sh", "-c", sCommand, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    const bool bGood = iPager > 0 && ::dup2(aiEnd[1], STDOUT_FILENO) == STDOUT_FILENO;
    ::close(aiEnd[0]);
    ::close(aiEnd[1]);
    if (iPager > 0) g_iPager = iPager;
    return bGood;
}

void FinishPager() noexcept {
    const ::pid_t iPager = g_iPager.exchange(0);
    if (iPager == 0) return;
    ::close(STDOUT_FILENO);
    while (::waitpid(iPager, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// ---- time -----------------------------------------------------------------

i3_t UnixTime() noexcept {
    return static_cast<i3_t>(::time(nullptr));
}

Calendar LocalTime(i3_t iTime) noexcept {
    const auto oTime = static_cast<time_t>(iTime);
    tm oTm{};
    ::localtime_r(&oTime, &oTm);
    return {oTm.tm_year + 1900, oTm.tm_mon + 1, oTm.tm_mday, oTm.tm_hour, oTm.tm_min, oTm.tm_sec};
}

// ---- console and debugger -------------------------------------------------

namespace {

// The streams that the process started with; a program may have put others in their place.
std::FILE* const g_pStdout = stdout;
std::FILE* const g_pStderr = stderr;

}  // namespace

void WriteToConsole(bool bError, const char* pBytes, std::size_t uSize) noexcept {
    std::FILE* const pFile = bError ? stderr : stdout;
    const int iDescriptor = bError ? STDERR_FILENO : STDOUT_FILENO;
    if (pFile != (bError ? g_pStderr : g_pStdout) || ::fileno(pFile) != iDescriptor) {
        (void)std::fwrite(pBytes, 1, uSize, pFile);
        std::fflush(pFile);
        return;
    }
    // What the program itself printed through stdio comes first.
    std::fflush(pFile);
    while (uSize > 0) {
        const ssize_t iDone = ::write(iDescriptor, pBytes, uSize);
        if (iDone < 0 && errno == EINTR) continue;
        if (iDone <= 0) return;
        pBytes += iDone;
        uSize -= static_cast<std::size_t>(iDone);
    }
}

bool IsTerminal(std::FILE* pFile) noexcept {
    return ::isatty(::fileno(pFile)) == 1;
}

void SetBinary(std::FILE*) noexcept {}

void DebugOutput(const char* sText) noexcept {
    WriteToConsole(true, sText, std::strlen(sText));
}

bool HasDebugger() noexcept {
    return false;
}

// ---- files ----------------------------------------------------------------

bool CreateNew(const char* sPath) noexcept {
    const int iDescriptor =
        ::open(sPath, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (iDescriptor < 0) return false;
    if (::close(iDescriptor) == 0) return true;
    const int iError = errno;
    (void)::unlink(sPath);
    errno = iError;
    return false;
}

bool MayWrite(const char* sPath) noexcept {
    // Whoever may do anything is still told by a mode that lets nobody write.
    struct stat oStat {};
    if (::stat(sPath, &oStat) != 0 || ::access(sPath, W_OK) != 0) return false;
    return (oStat.st_mode & 0222) != 0;
}

void CopyMode(const char* sFrom, const char* sTo) noexcept {
    struct stat oStat {};
    if (::stat(sFrom, &oStat) == 0) {
        // Giving a file away takes its special bits, so the mode comes behind. Without the owner
        // they would mean something else.
        const bool bGiven = ::chown(sTo, oStat.st_uid, oStat.st_gid) == 0;
        if (!bGiven && ::chown(sTo, uid_t(-1), oStat.st_gid) != 0) oStat.st_mode &= ~mode_t{070};
        (void)::chmod(sTo, oStat.st_mode & (bGiven ? 07777 : 0777));
        return;
    }
    const mode_t uMask = ::umask(0);
    (void)::umask(uMask);
    (void)::chmod(sTo, 0666 & ~uMask);
}

bool TruncateFile(const char* sPath, i3_t iSize) noexcept {
    return ::truncate(sPath, static_cast<off_t>(iSize)) == 0;
}

bool SyncFile(const char* sPath) noexcept {
    const int iDescriptor = ::open(*sPath != 0 ? sPath : ".", O_RDONLY | O_CLOEXEC);
    if (iDescriptor < 0) return false;
    const bool bGood = ::fsync(iDescriptor) == 0 || errno == EINVAL;
    const int iError = errno;
    (void)::close(iDescriptor);
    errno = iError;
    return bGood;
}

namespace {

int OpenFlags(const char* sMode) noexcept {
    const bool bBoth = std::strchr(sMode, '+') != nullptr;
    switch (sMode[0]) {
        case 'a': return (bBoth ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
        case 'w': return (bBoth ? O_RDWR : O_WRONLY) | O_CREAT;
        default: return bBoth ? O_RDWR : O_RDONLY;
    }
}

// The sharing modes of Windows as advisory locks that never block. Where the file
// system has no locks the open goes through without one.
bool Lock(int iDescriptor, Sharing eSharing) noexcept {
    if (eSharing == Sharing::All) return true;
    const int iKind = eSharing == Sharing::DenyWrite ? LOCK_SH : LOCK_EX;
    if (::flock(iDescriptor, iKind | LOCK_NB) == 0 || errno != EWOULDBLOCK) return true;
    errno = EACCES;
    return false;
}

}  // namespace

int OpenDescriptor(const char* sPath, const char* sMode, Sharing eSharing) noexcept {
    const int iDescriptor = ::open(sPath, OpenFlags(sMode) | O_CLOEXEC, 0666);
    if (iDescriptor < 0) return -1;
    struct stat oStat {};
    bool bGood = ::fstat(iDescriptor, &oStat) == 0;
    if (bGood && S_ISDIR(oStat.st_mode)) {
        errno = EISDIR;
        bGood = false;
    }
    // A file is emptied only once nobody else is found to hold it.
    bGood = bGood && Lock(iDescriptor, eSharing);
    if (bGood && sMode[0] == 'w' && S_ISREG(oStat.st_mode))
        bGood = ::ftruncate(iDescriptor, 0) == 0;
    if (bGood) return iDescriptor;
    const int iError = errno;
    ::close(iDescriptor);
    errno = iError;
    return -1;
}

void CloseDescriptor(int iDescriptor) noexcept {
    ::close(iDescriptor);
}

std::FILE* OpenFile(const char* sPath, const char* sMode, Sharing eSharing) noexcept {
    const int iDescriptor = OpenDescriptor(sPath, sMode, eSharing);
    if (iDescriptor < 0) return nullptr;
    const char sSystemMode[] = {sMode[0], std::strchr(sMode, '+') != nullptr ? '+' : '\0', '\0'};
    std::FILE* pFile = ::fdopen(iDescriptor, sSystemMode);
    if (pFile == nullptr) {
        const int iError = errno;
        ::close(iDescriptor);
        errno = iError;
    }
    return pFile;
}

bool Seek(std::FILE* pFile, i3_t iOffset, int iWhence) noexcept {
    return ::fseeko(pFile, static_cast<off_t>(iOffset), iWhence) == 0;
}

i3_t Tell(std::FILE* pFile) noexcept {
    return static_cast<i3_t>(::ftello(pFile));
}

i3_t SizeOf(std::FILE* pFile) noexcept {
    const i3_t iPosition = Tell(pFile);
    if (iPosition < 0 || !Seek(pFile, 0, SEEK_END)) return -1;
    const i3_t iSize = Tell(pFile);
    return Seek(pFile, iPosition, SEEK_SET) ? iSize : -1;
}

i3_t SizeOf(const char* sPath) noexcept {
    struct stat oStat {};
    if (::stat(sPath, &oStat) != 0) return -1;
    return static_cast<i3_t>(oStat.st_size);
}

bool IsLink(const char* sPath) noexcept {
    struct stat oStat {};
    return ::lstat(sPath, &oStat) == 0 && S_ISLNK(oStat.st_mode);
}

bool MakeDirectories(const char* sPath) noexcept {
    try {
        std::string sDir(sPath);
        for (std::size_t u = 1; u <= sDir.size(); ++u) {
            if (u < sDir.size() && sDir[u] != '/') continue;
            const char cOld = u < sDir.size() ? sDir[u] : '\0';
            if (u < sDir.size()) sDir[u] = '\0';
            if (::mkdir(sDir.c_str(), 0777) != 0 && errno != EEXIST) return false;
            if (u < sDir.size()) sDir[u] = cOld;
        }
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

// ---- memory ---------------------------------------------------------------

namespace {

// Pages of this size are used where they can be: an array that is written front to back
// then takes one fault per 2 MiB instead of 512.
constexpr std::size_t HUGE_PAGE = std::size_t{1} << 21;

[[nodiscard]] std::size_t RoundUp(std::size_t uSize) noexcept {
    return (uSize + HUGE_PAGE - 1) & ~(HUGE_PAGE - 1);
}

constinit PageCache g_oPages;

struct PagesOverFork {
    PagesOverFork() noexcept {
        OnFork([] { g_oPages.Lock(); }, [] { g_oPages.Unlock(); });
    }
};
const PagesOverFork g_oPagesOverFork;

// Maps uMapped bytes, a multiple of HUGE_PAGE, so that they begin at one.
[[nodiscard]] PageHeader* Map(std::size_t uMapped) noexcept {
    void* pMap = ::mmap(nullptr, uMapped + HUGE_PAGE, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pMap == MAP_FAILED) return nullptr;
    const auto uAddress = reinterpret_cast<std::uintptr_t>(pMap);
    const std::size_t uHead = RoundUp(uAddress) - uAddress;
    char* pBegin = static_cast<char*>(pMap) + uHead;
    if (uHead != 0) ::munmap(pMap, uHead);
    if (uHead != HUGE_PAGE) ::munmap(pBegin + uMapped, HUGE_PAGE - uHead);
    ::madvise(pBegin, uMapped, MADV_HUGEPAGE);
    return new (pBegin) PageHeader{uMapped, uMapped};
}

[[nodiscard]] std::size_t MappedFor(std::size_t uSize) noexcept {
    return RoundUp(uSize + sizeof(PageHeader));
}

}  // namespace

void* AllocPages(std::size_t uSize) noexcept {
    PageHeader* pBlock = g_oPages.Take(MappedFor(uSize), false);
    if (pBlock == nullptr) pBlock = Map(MappedFor(uSize));
    return pBlock != nullptr ? pBlock + 1 : nullptr;
}

void* ReallocPages(void* pPages, std::size_t uOldSize, std::size_t uNewSize) noexcept {
    PageHeader* pOld = HeaderOf(pPages);
    const std::size_t uMapped = MappedFor(uNewSize);
    if (uMapped <= pOld->uMapped) return pPages;
    PageHeader* pNew = g_oPages.Take(uMapped, true);
    if (pNew != nullptr) {
        std::memcpy(pNew + 1, pPages, uOldSize < uNewSize ? uOldSize : uNewSize);
        FreePages(pPages, uOldSize);
        return pNew + 1;
    }
    pNew = Map(uMapped);
    if (pNew == nullptr) return nullptr;
    // Moves page tables instead of bytes; what lies behind the old block stays mapped.
    const std::size_t uOldMapped = pOld->uMapped;
    if (::mremap(pOld, uOldMapped, uOldMapped, MREMAP_MAYMOVE | MREMAP_FIXED, pNew) == MAP_FAILED) {
        ::munmap(pNew, uMapped);
        return nullptr;
    }
    *pNew = {uMapped, uMapped};
    return pNew + 1;
}

void FreePages(void* pPages, std::size_t) noexcept {
    PageHeader* pBlock = HeaderOf(pPages);
    const std::size_t uMapped = pBlock->uMapped;
    if (!g_oPages.IsFirmFor(uMapped)) {
        static const auto uPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        ::madvise(reinterpret_cast<char*>(pBlock) + uPage, uMapped - uPage, MADV_FREE);
    }
    if (!g_oPages.Give(pBlock)) ::munmap(pBlock, uMapped);
}

}  // namespace vok::sys
