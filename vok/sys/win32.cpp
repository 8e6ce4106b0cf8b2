// SPDX-License-Identifier: MIT
#include "vok/sys/sys.h"

#include <algorithm>
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

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include <shellapi.h>

#include "vok/sys/page_cache.h"
#include "vok/sys/thread_block.h"
#include "vok/sys/win32_text.h"

namespace vok::sys {

// ---- process and threads --------------------------------------------------

u2_t ProcessId() noexcept {
    return ::GetCurrentProcessId();
}

u2_t ThreadId() noexcept {
    return ::GetCurrentThreadId();
}

void SleepMs(unsigned uMilliseconds) noexcept {
    ::Sleep(uMilliseconds);
}

void OnFork(void (*)(), void (*)()) noexcept {}

NoCancel::NoCancel() noexcept = default;
NoCancel::~NoCancel() = default;

namespace {

void WINAPI FreeBlock(void* p) {
    std::free(p);
}

// One slot for all threads; each frees its block when it ends.
struct ThreadBlocks {
    ThreadBlocks() noexcept : uSlot(::FlsAlloc(FreeBlock)) {}
    ~ThreadBlocks() {
        if (uSlot != FLS_OUT_OF_INDEXES) ::FlsFree(uSlot);
    }
    ThreadBlocks(const ThreadBlocks&) = delete;
    ThreadBlocks& operator=(const ThreadBlocks&) = delete;
    const DWORD uSlot;
};
const ThreadBlocks g_oThreadBlocks;

}  // namespace

void* ThreadBlock(std::size_t uSize) noexcept {
    if (g_oThreadBlocks.uSlot == FLS_OUT_OF_INDEXES) return nullptr;
    const DWORD uLastError = ::GetLastError();
    void* const pHeld = ::FlsGetValue(g_oThreadBlocks.uSlot);
    ::SetLastError(uLastError);
    return GrowThreadBlock(pHeld, uSize,
                           [](void* p) { return ::FlsSetValue(g_oThreadBlocks.uSlot, p) != 0; });
}

// ---- errors ---------------------------------------------------------------

u2_t LastError() noexcept {
    return ::GetLastError();
}

void SetLastError(u2_t uCode) noexcept {
    ::SetLastError(uCode);
}

u2_t RuntimeError() noexcept {
    return static_cast<u2_t>(errno);
}

void SetRuntimeError(u2_t uCode) noexcept {
    errno = static_cast<int>(uCode);
}

std::size_t SystemErrorText(u2_t uCode, char* sBuf, std::size_t uSize) noexcept {
    if (uSize == 0) return 0;
    constexpr DWORD uMost = 512;
    char sAnsi[uMost];
    DWORD uLength = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                     nullptr, uCode, 0, sAnsi, uMost, nullptr);
    // The system ends its texts with a line break.
    while (uLength > 0 && static_cast<unsigned char>(sAnsi[uLength - 1]) <= ' ') --uLength;
    wchar_t sWide[uMost];
    const int iWide = ::MultiByteToWideChar(CP_ACP, 0, sAnsi, static_cast<int>(uLength), sWide,
                                            static_cast<int>(uMost));
    char sText[3 * uMost];
    const int iText = ::WideCharToMultiByte(CP_UTF8, 0, sWide, iWide, sText,
                                            static_cast<int>(sizeof(sText)), nullptr, nullptr);
    std::size_t uUsed = std::min(static_cast<std::size_t>(std::max(iText, 0)), uSize - 1);
    // Not within a character: back to where one starts.
    if (uUsed < static_cast<std::size_t>(std::max(iText, 0))) {
        while (uUsed > 0 && (static_cast<unsigned char>(sText[uUsed]) & 0xC0) == 0x80) --uUsed;
    }
    std::memcpy(sBuf, sText, uUsed);
    sBuf[uUsed] = 0;
    return uUsed;
}

u2_t RuntimeErrno(u2_t uCode) noexcept {
    return uCode;
}

// ---- program --------------------------------------------------------------

std::vector<std::string> Arguments(int iCount, char** asArgument) {
    int iWords = 0;
    wchar_t** const asWide = ::CommandLineToArgvW(::GetCommandLineW(), &iWords);
    if (asWide == nullptr) return {asArgument, asArgument + iCount};
    std::vector<std::string> asWord;
    try {
        for (int i = 0; i < iWords; ++i) asWord.push_back(ToUtf8(asWide[i]));
    } catch (...) {
        ::LocalFree(asWide);
        throw;
    }
    ::LocalFree(asWide);
    return asWord;
}

namespace {

// What the terminal was set to before.
UINT g_uCodePage = 0;
HANDLE g_pTerminal = nullptr;
DWORD g_uTerminalMode = 0;

void RestoreConsole() noexcept {
    ::SetConsoleMode(g_pTerminal, g_uTerminalMode);
    ::SetConsoleOutputCP(g_uCodePage);
}

}  // namespace

void PrepareConsole() noexcept {
    SetBinary(stdin);
    SetBinary(stdout);
    for (const DWORD uStream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        HANDLE const pHandle = ::GetStdHandle(uStream);
        DWORD uMode = 0;
        if (pHandle == nullptr || ::GetConsoleMode(pHandle, &uMode) == 0) continue;
        g_pTerminal = pHandle;
        g_uTerminalMode = uMode;
        g_uCodePage = ::GetConsoleOutputCP();
        constexpr DWORD uColours = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
        ::SetConsoleMode(pHandle, uMode | uColours);
        ::SetConsoleOutputCP(CP_UTF8);
        std::atexit(RestoreConsole);
        return;
    }
}

std::vector<int> EndingSignals() {
    return {SIGINT, SIGTERM};
}

void IgnoreFileSizeSignal() noexcept {}

void RemoveOnInterrupt(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return;
    // Nobody can remove an open file. The handler has a thread of its own, so the files may
    // be closed under the one that uses them.
    ::_fcloseall();
    ::_wremove(sWide.c_str());
}

bool StartPager(const char*) noexcept {
    return false;
}

void FinishPager() noexcept {}

// ---- time -----------------------------------------------------------------

i3_t UnixTime() noexcept {
    return ::_time64(nullptr);
}

Calendar LocalTime(i3_t iTime) noexcept {
    const __time64_t oTime = iTime;
    tm oTm{};
    ::_localtime64_s(&oTm, &oTime);
    return {oTm.tm_year + 1900, oTm.tm_mon + 1, oTm.tm_mday, oTm.tm_hour, oTm.tm_min, oTm.tm_sec};
}

// ---- console and debugger -------------------------------------------------

void WriteToConsole(bool bError, const char* pBytes, std::size_t uSize) noexcept {
    std::FILE* const pFile = bError ? stderr : stdout;
    const int iDescriptor = ::_fileno(pFile);
    if (iDescriptor > 2) {  // another file in the place of the process's own
        (void)std::fwrite(pBytes, 1, uSize, pFile);
        std::fflush(pFile);
        return;
    }
    // What the program itself printed through stdio comes first.
    std::fflush(pFile);
    if (iDescriptor < 0) return;           // a program without a console
    constexpr std::size_t uMost = 0x4000;  // a console takes no more at a time
    while (uSize > 0) {
        const int iDone =
            ::_write(iDescriptor, pBytes, static_cast<unsigned>(std::min(uSize, uMost)));
        if (iDone <= 0) return;
        pBytes += iDone;
        uSize -= static_cast<std::size_t>(iDone);
    }
}

bool IsTerminal(std::FILE* pFile) noexcept {
    // The runtime calls every character device a terminal, NUL among them.
    const int iDescriptor = ::_fileno(pFile);
    if (iDescriptor < 0 || ::_isatty(iDescriptor) == 0) return false;
    DWORD uMode = 0;
    return ::GetConsoleMode(reinterpret_cast<HANDLE>(::_get_osfhandle(iDescriptor)), &uMode) != 0;
}

void SetBinary(std::FILE* pFile) noexcept {
    const int iDescriptor = ::_fileno(pFile);
    if (iDescriptor < 0) return;
    std::fflush(pFile);
    ::_setmode(iDescriptor, _O_BINARY);
}

void DebugOutput(const char* sText) noexcept {
    const char* const pEnd = sText + std::strlen(sText);
    const bool bAscii =
        std::all_of(sText, pEnd, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    std::wstring sWide;
    if (!bAscii && ToWide(sText, sWide)) {
        ::OutputDebugStringW(sWide.c_str());
    } else {
        ::OutputDebugStringA(sText);
    }
}

bool HasDebugger() noexcept {
    return true;
}

// ---- files ----------------------------------------------------------------

bool CreateNew(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const int iDescriptor =
        ::_wopen(sWide.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    return iDescriptor >= 0 && ::_close(iDescriptor) == 0;
}

bool MayWrite(const char* sPath) noexcept {
    std::wstring sWide;
    return ToWidePath(sPath, sWide) && ::_waccess(sWide.c_str(), 2) == 0;
}

void CopyMode(const char*, const char*) noexcept {}  // a folder tells what its files may

bool TruncateFile(const char* sPath, i3_t iSize) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const int iDescriptor = ::_wopen(sWide.c_str(), _O_RDWR | _O_BINARY);
    if (iDescriptor < 0) return false;
    const bool bGood = ::_chsize_s(iDescriptor, iSize) == 0;
    ::_close(iDescriptor);
    return bGood;
}

bool SyncFile(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const int iDescriptor = ::_wopen(sWide.c_str(), _O_RDWR | _O_BINARY);
    if (iDescriptor < 0) return false;  // a folder
    const bool bGood = ::_commit(iDescriptor) == 0;
    ::_close(iDescriptor);
    return bGood;
}

namespace {

int SharingFlag(Sharing eSharing) noexcept {
    switch (eSharing) {
        case Sharing::DenyWrite: return _SH_DENYWR;
        case Sharing::DenyReadWrite: return _SH_DENYRW;
        default: return _SH_DENYNO;
    }
}

int OpenFlags(const char* sMode) noexcept {
    const bool bBoth = std::strchr(sMode, '+') != nullptr;
    constexpr int uAlways = _O_BINARY | _O_NOINHERIT;
    switch (sMode[0]) {
        case 'a': return (bBoth ? _O_RDWR : _O_WRONLY) | _O_CREAT | _O_APPEND | uAlways;
        case 'w': return (bBoth ? _O_RDWR : _O_WRONLY) | _O_CREAT | _O_TRUNC | uAlways;
        default: return (bBoth ? _O_RDWR : _O_RDONLY) | uAlways;
    }
}

}  // namespace

int OpenDescriptor(const char* sPath, const char* sMode, Sharing eSharing) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return -1;
    int iDescriptor = -1;
    ::_wsopen_s(&iDescriptor, sWide.c_str(), OpenFlags(sMode), SharingFlag(eSharing),
                _S_IREAD | _S_IWRITE);
    return iDescriptor;
}

void CloseDescriptor(int iDescriptor) noexcept {
    ::_close(iDescriptor);
}

std::FILE* OpenFile(const char* sPath, const char* sMode, Sharing eSharing) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return nullptr;
    // Programs that this one starts must not go on holding its files: "N".
    wchar_t sWideMode[8] = {};
    std::size_t uUsed = 0;
    for (; uUsed < 5 && sMode[uUsed] != 0; ++uUsed) {
        sWideMode[uUsed] = static_cast<wchar_t>(sMode[uUsed]);
    }
    sWideMode[uUsed] = L'N';
    return ::_wfsopen(sWide.c_str(), sWideMode, SharingFlag(eSharing));
}

bool Seek(std::FILE* pFile, i3_t iOffset, int iWhence) noexcept {
    return ::_fseeki64(pFile, iOffset, iWhence) == 0;
}

i3_t Tell(std::FILE* pFile) noexcept {
    return ::_ftelli64(pFile);
}

i3_t SizeOf(std::FILE* pFile) noexcept {
    const i3_t iPosition = Tell(pFile);
    if (iPosition < 0 || !Seek(pFile, 0, SEEK_END)) return -1;
    const i3_t iSize = Tell(pFile);
    return Seek(pFile, iPosition, SEEK_SET) ? iSize : -1;
}

i3_t SizeOf(const char* sPath) noexcept {
    std::wstring sWide;
    struct _stat64 oStat {};
    if (!ToWidePath(sPath, sWide) || ::_wstat64(sWide.c_str(), &oStat) != 0) return -1;
    return oStat.st_size;
}

bool IsLink(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const DWORD uKind = ::GetFileAttributesW(sWide.c_str());
    if (uKind == INVALID_FILE_ATTRIBUTES || (uKind & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return false;
    // Files kept elsewhere are reparse points as well; only the tag tells links.
    WIN32_FIND_DATAW oFound{};
    HANDLE const pSearch = ::FindFirstFileW(sWide.c_str(), &oFound);
    if (pSearch == INVALID_HANDLE_VALUE) return true;
    ::FindClose(pSearch);
    return oFound.dwReserved0 == IO_REPARSE_TAG_SYMLINK ||
           oFound.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT;
}

bool MakeDirectories(const char* sPath) noexcept {
    std::wstring sDir;
    if (!ToWidePath(sPath, sDir)) return false;
    // What cannot be made may be there all the same, a drive or the name of a server. Only
    // the end of the path tells.
    for (std::size_t u = 1; u < sDir.size(); ++u) {
        const wchar_t cOld = sDir[u];
        if (cOld != L'/' && cOld != L'\\') continue;
        sDir[u] = L'\0';
        ::_wmkdir(sDir.c_str());
        sDir[u] = cOld;
    }
    return ::_wmkdir(sDir.c_str()) == 0 || errno == EEXIST ||
           ::GetFileAttributesW(sDir.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// ---- memory ---------------------------------------------------------------

namespace {

// The system hands out address space in such steps.
constexpr std::size_t STEP = std::size_t{1} << 16;
// So much more address space than memory is kept for a block to grow into without being
// copied; there is 128 TiB of it.
constexpr std::size_t ROOM = 16;
constexpr std::size_t MOST_ROOM = std::size_t{1} << 36;

constinit PageCache g_oPages;

[[nodiscard]] std::size_t MappedFor(std::size_t uSize) noexcept {
    return (uSize + sizeof(PageHeader) + STEP - 1) & ~(STEP - 1);
}

[[nodiscard]] PageHeader* Map(std::size_t uMapped) noexcept {
    std::size_t uReserved = std::max(uMapped, std::min(MOST_ROOM, uMapped * ROOM));
    void* pMap = ::VirtualAlloc(nullptr, uReserved, MEM_RESERVE, PAGE_READWRITE);
    if (pMap == nullptr) {
        uReserved = uMapped;
        pMap = ::VirtualAlloc(nullptr, uReserved, MEM_RESERVE, PAGE_READWRITE);
    }
    if (pMap == nullptr) return nullptr;
    if (::VirtualAlloc(pMap, uMapped, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        ::VirtualFree(pMap, 0, MEM_RELEASE);
        return nullptr;
    }
    return new (pMap) PageHeader{uMapped, uReserved};
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
    if (uMapped <= pOld->uReserved) {
        char* const pEnd = reinterpret_cast<char*>(pOld) + pOld->uMapped;
        if (::VirtualAlloc(pEnd, uMapped - pOld->uMapped, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
            return nullptr;
        }
        pOld->uMapped = uMapped;
        return pPages;
    }
    PageHeader* pNew = g_oPages.Take(uMapped, true);
    if (pNew == nullptr) pNew = Map(uMapped);
    if (pNew == nullptr) return nullptr;
    std::memcpy(pNew + 1, pPages, std::min(uOldSize, uNewSize));
    FreePages(pPages, uOldSize);
    return pNew + 1;
}

void FreePages(void* pPages, std::size_t) noexcept {
    PageHeader* pBlock = HeaderOf(pPages);
    if (!g_oPages.IsFirmFor(pBlock->uMapped)) {
        char* const pReset = reinterpret_cast<char*>(pBlock) + STEP;
        ::VirtualAlloc(pReset, pBlock->uMapped - STEP, MEM_RESET, PAGE_READWRITE);
    }
    if (!g_oPages.Give(pBlock)) ::VirtualFree(pBlock, 0, MEM_RELEASE);
}

}  // namespace vok::sys
