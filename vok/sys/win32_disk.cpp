// SPDX-License-Identifier: MIT
#include "vok/sys/disk.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "vok/sys/sys.h"
#include "vok/sys/win32_text.h"

namespace vok::sys {

namespace {

// A handle that is closed in the end, and leaves errno alone.
class Handle {
  public:
    explicit Handle(HANDLE p) noexcept : m_p(p) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (IsGood()) ::CloseHandle(m_p);
    }
    [[nodiscard]] bool IsGood() const noexcept { return m_p != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE Get() const noexcept { return m_p; }

  private:
    HANDLE m_p;
};

constexpr DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// File times count steps of 100 nanoseconds from 1601 on.
constexpr double STEPS_PER_SECOND = 1e7;
constexpr double SECONDS_TO_1970 = 11644473600.0;

u3_t Join(DWORD uHigh, DWORD uLow) noexcept {
    return u3_t{uHigh} << 32 | uLow;
}

double Seconds(const FILETIME& o) noexcept {
    const u3_t uSteps = Join(o.dwHighDateTime, o.dwLowDateTime);
    return uSteps != 0 ? static_cast<double>(uSteps) / STEPS_PER_SECOND - SECONDS_TO_1970 : 0;
}

}  // namespace

bool LookAt(const char* sPath, bool bFollow, Entry& oEntry) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const bool bLink = !bFollow && IsLink(sPath);
    const Handle oFile(::CreateFileW(
        sWide.c_str(), FILE_READ_ATTRIBUTES, SHARE_ALL, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS | (bLink ? FILE_FLAG_OPEN_REPARSE_POINT : 0), nullptr));
    if (!oFile.IsGood()) return TakeLastError();
    BY_HANDLE_FILE_INFORMATION o{};
    if (::GetFileType(oFile.Get()) != FILE_TYPE_DISK) {
        oEntry.eKind = EntryKind::Other;
        oEntry.bMayWrite = true;
        return true;
    }
    if (::GetFileInformationByHandle(oFile.Get(), &o) == 0) return TakeLastError();
    const bool bFolder = (o.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    oEntry.eKind = bLink ? EntryKind::Link : bFolder ? EntryKind::Folder : EntryKind::File;
    oEntry.bMayWrite = (o.dwFileAttributes & FILE_ATTRIBUTE_READONLY) == 0;
    oEntry.uMode = oEntry.bMayWrite ? 0666 : 0444;
    if (oEntry.eKind == EntryKind::File) oEntry.uSize = Join(o.nFileSizeHigh, o.nFileSizeLow);
    oEntry.dModified = Seconds(o.ftLastWriteTime);
    oEntry.dRead = Seconds(o.ftLastAccessTime);
    oEntry.uDevice = o.dwVolumeSerialNumber;
    oEntry.uNumber = Join(o.nFileIndexHigh, o.nFileIndexLow);
    return true;
}

bool ReadLink(const char*, std::string&) noexcept {
    errno = EINVAL;
    return false;
}

bool ListFolder(const char* sPath, std::vector<std::string>& asName) noexcept {
    try {
        std::wstring sWide;
        if (!ToWidePath((std::string(sPath) + "/*").c_str(), sWide)) return false;
        WIN32_FIND_DATAW oFound{};
        HANDLE const pSearch = ::FindFirstFileW(sWide.c_str(), &oFound);
        if (pSearch == INVALID_HANDLE_VALUE) {
            // The root of a drive may have nothing at all in it.
            return ::GetLastError() == ERROR_FILE_NOT_FOUND || TakeLastError();
        }
        struct Closer {
            HANDLE p;
            ~Closer() { ::FindClose(p); }
        } const oCloser{pSearch};
        do {
            const std::wstring_view sName(oFound.cFileName);
            if (sName != L"." && sName != L"..") asName.push_back(ToUtf8(oFound.cFileName));
        } while (::FindNextFileW(pSearch, &oFound) != 0);
        return ::GetLastError() == ERROR_NO_MORE_FILES || TakeLastError();
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
}

bool CreateFolder(const char* sPath, bool) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    return ::CreateDirectoryW(sWide.c_str(), nullptr) != 0 || TakeLastError();
}

bool RemoveFile(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    if (::DeleteFileW(sWide.c_str()) != 0) return true;
    // A link to a folder is removed as folders are.
    const DWORD uError = ::GetLastError();
    if (IsLink(sPath) && ::RemoveDirectoryW(sWide.c_str()) != 0) return true;
    ::SetLastError(uError);
    return TakeLastError();
}

bool RemoveFolder(const char* sPath) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    if (IsLink(sPath)) {
        errno = ENOTDIR;
        return false;
    }
    return ::RemoveDirectoryW(sWide.c_str()) != 0 || TakeLastError();
}

bool Rename(const char* sFrom, const char* sTo, bool bReplace) noexcept {
    std::wstring sOld;
    std::wstring sNew;
    if (!ToWidePath(sFrom, sOld) || !ToWidePath(sTo, sNew)) return false;
    const DWORD uFlags = bReplace ? MOVEFILE_REPLACE_EXISTING : 0;
    return ::MoveFileExW(sOld.c_str(), sNew.c_str(), uFlags) != 0 || TakeLastError();
}

bool SetModified(const char* sPath, double dSeconds) noexcept {
    constexpr double MOST = 9e11;  // beyond what 63 bits of such steps have
    const double dSince = dSeconds + SECONDS_TO_1970;
    if (!(dSince > 0 && dSince < MOST)) {
        errno = EINVAL;
        return false;
    }
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    const Handle oFile(::CreateFileW(sWide.c_str(), FILE_WRITE_ATTRIBUTES, SHARE_ALL, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!oFile.IsGood()) return TakeLastError();
    const auto uSteps = static_cast<u3_t>(dSince * STEPS_PER_SECOND);
    const FILETIME oTime{static_cast<DWORD>(uSteps), static_cast<DWORD>(uSteps >> 32)};
    return ::SetFileTime(oFile.Get(), nullptr, nullptr, &oTime) != 0 || TakeLastError();
}

// ---- copying ----------------------------------------------------------------

namespace {

// What stands between the system, which nothing may be thrown through, and who watches.
struct Watch {
    CopyStep pStep;
    void* pContext;
    std::exception_ptr pThrown;
    bool bTold = false;  // of all of it
};

DWORD CALLBACK OnStep(LARGE_INTEGER uTotal, LARGE_INTEGER uDone, LARGE_INTEGER, LARGE_INTEGER,
                      DWORD, DWORD, HANDLE, HANDLE, LPVOID pData) {
    auto& o = *static_cast<Watch*>(pData);
    if (o.pStep == nullptr) return PROGRESS_QUIET;
    try {
        o.bTold = uDone.QuadPart == uTotal.QuadPart;
        const bool bOn = o.pStep(o.pContext, static_cast<u3_t>(uDone.QuadPart),
                                 static_cast<u3_t>(uTotal.QuadPart));
        return bOn ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
    } catch (...) {
        o.pThrown = std::current_exception();
        return PROGRESS_CANCEL;
    }
}

}  // namespace

CopyEnd CopyInto(const char* sFrom, const char* sTo, CopyStep pStep, void* pContext) {
    std::wstring sOld;
    std::wstring sNew;
    if (!ToWidePath(sFrom, sOld) || !ToWidePath(sTo, sNew)) return CopyEnd::Failed;
    Watch oWatch{pStep, pContext, nullptr, false};
    if (::CopyFileExW(sOld.c_str(), sNew.c_str(), OnStep, &oWatch, nullptr, 0) != 0) {
        // Not every system tells, nor all tell of the end.
        Entry oMade;
        const bool bTell = pStep != nullptr && !oWatch.bTold && LookAt(sTo, true, oMade);
        return !bTell || pStep(pContext, oMade.uSize, oMade.uSize) ? CopyEnd::Done
                                                                   : CopyEnd::Stopped;
    }
    const bool bStopped = ::GetLastError() == ERROR_REQUEST_ABORTED;
    TakeLastError();
    if (oWatch.pThrown) std::rethrow_exception(oWatch.pThrown);
    return bStopped ? CopyEnd::Stopped : CopyEnd::Failed;
}

// ---- places -----------------------------------------------------------------

bool FullPath(const char* sPath, std::string& sFull) noexcept {
    try {
        std::wstring sWide;
        std::wstring sWhole;
        if (!ToWide(sPath, sWide)) return false;
        if (!ToFull(sWide, sWhole)) return TakeLastError();
        sFull = ToUtf8(sWhole.c_str());
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

bool TempFolder(std::string& sFolder) noexcept {
    wchar_t sWide[MAX_PATH + 2];
    const DWORD uSize = ::GetTempPathW(MAX_PATH + 1, sWide);
    if (uSize == 0 || uSize > MAX_PATH) return TakeLastError();
    try {
        sFolder = ToUtf8(sWide);
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

}  // namespace vok::sys
