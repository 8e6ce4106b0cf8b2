// SPDX-License-Identifier: MIT
#include "vok/sys/disk.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vok/sys/posix_descriptor.h"

namespace vok::sys {

namespace {

double Seconds(const timespec& o) noexcept {
    return static_cast<double>(o.tv_sec) + static_cast<double>(o.tv_nsec) * 1e-9;
}

EntryKind KindOf(mode_t uMode) noexcept {
    if (S_ISREG(uMode)) return EntryKind::File;
    if (S_ISDIR(uMode)) return EntryKind::Folder;
    return S_ISLNK(uMode) ? EntryKind::Link : EntryKind::Other;
}

bool OutOfMemory() noexcept {
    errno = ENOMEM;
    return false;
}

}  // namespace

bool LookAt(const char* sPath, bool bFollow, Entry& oEntry) noexcept {
    struct stat oStat {};
    if ((bFollow ? ::stat(sPath, &oStat) : ::lstat(sPath, &oStat)) != 0) return false;
    oEntry.eKind = KindOf(oStat.st_mode);
    oEntry.bMayWrite = (oStat.st_mode & 0222) != 0;
    oEntry.uMode = oStat.st_mode & 07777;
    oEntry.uSize = oEntry.eKind == EntryKind::File ? static_cast<u3_t>(oStat.st_size) : 0;
    oEntry.dModified = Seconds(oStat.st_mtim);
    oEntry.dRead = Seconds(oStat.st_atim);
    oEntry.uDevice = static_cast<u3_t>(oStat.st_dev);
    oEntry.uNumber = static_cast<u3_t>(oStat.st_ino);
    return true;
}

bool ReadLink(const char* sPath, std::string& sTarget) noexcept {
    try {
        for (std::size_t uRoom = 256;; uRoom *= 2) {
            sTarget.resize(uRoom);
            const ssize_t iSize = ::readlink(sPath, sTarget.data(), uRoom);
            if (iSize < 0) return false;
            if (static_cast<std::size_t>(iSize) == uRoom) continue;
            sTarget.resize(static_cast<std::size_t>(iSize));
            return true;
        }
    } catch (const std::exception&) {
        return OutOfMemory();
    }
}

bool ListFolder(const char* sPath, std::vector<std::string>& asName) noexcept {
    const std::unique_ptr<DIR, int (*)(DIR*)> pFolder(::opendir(sPath), ::closedir);
    if (pFolder == nullptr) return false;
    try {
        for (;;) {
            errno = 0;
            const dirent* const p = ::readdir(pFolder.get());
            if (p == nullptr) return errno == 0;
            const std::string_view sName(p->d_name);
            if (sName != "." && sName != "..") asName.emplace_back(sName);
        }
    } catch (const std::exception&) {
        return OutOfMemory();
    }
}

bool CreateFolder(const char* sPath, bool bPrivate) noexcept {
    return ::mkdir(sPath, bPrivate ? 0700 : 0777) == 0;
}

bool RemoveFile(const char* sPath) noexcept {
    return ::unlink(sPath) == 0;
}

bool RemoveFolder(const char* sPath) noexcept {
    return ::rmdir(sPath) == 0;
}

bool Rename(const char* sFrom, const char* sTo, bool bReplace) noexcept {
    if (bReplace) return ::rename(sFrom, sTo) == 0;
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, sFrom, AT_FDCWD, sTo, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
#endif
    // A file system that cannot do both at once: somebody may come in between.
    struct stat oStat {};
    if (::lstat(sTo, &oStat) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(sFrom, sTo) == 0;
}

bool SetModified(const char* sPath, double dSeconds) noexcept {
    constexpr double MOST = 9e15;  // what any file system has; also keeps not-a-number out
    if (!(std::fabs(dSeconds) < MOST)) {
        errno = EINVAL;
        return false;
    }
    const double dWhole = std::floor(dSeconds);
    timespec aoTime[2]{};
    aoTime[0].tv_nsec = UTIME_OMIT;
    aoTime[1].tv_sec = static_cast<time_t>(dWhole);
    aoTime[1].tv_nsec = std::min(static_cast<long>((dSeconds - dWhole) * 1e9), 999999999L);
    return ::utimensat(AT_FDCWD, sPath, aoTime, 0) == 0;
}

// ---- copying ----------------------------------------------------------------

namespace {

// So much between two calls of who watches.
constexpr std::size_t STEP = std::size_t{8} << 20;
constexpr std::size_t PIECE = std::size_t{256} << 10;

class Copying {
  public:
    Copying(int iFrom, int iTo, u3_t uTotal, CopyStep pStep, void* pContext) noexcept
        : m_iFrom(iFrom), m_iTo(iTo), m_uTotal(uTotal), m_pStep(pStep), m_pContext(pContext) {}

    CopyEnd Run() {
        for (;;) {
            const ssize_t iDone = ::copy_file_range(m_iFrom, nullptr, m_iTo, nullptr, STEP, 0);
            if (iDone < 0 && errno == EINTR) continue;
            // Some files have no size, and show what they hold to readers only.
            if (iDone == 0 && m_uDone != 0) return Told() ? CopyEnd::Done : CopyEnd::Stopped;
            if (iDone <= 0) break;
            m_uDone += static_cast<u3_t>(iDone);
            if (!Told()) return CopyEnd::Stopped;
        }
        // The system cannot do it between these two, or not on. Where the disk fails, it does so
        // again.
        return ByPieces();
    }

  private:
    CopyEnd ByPieces() {
        const std::unique_ptr<char[]> pPiece(new (std::nothrow) char[PIECE]);
        if (pPiece == nullptr) {
            errno = ENOMEM;
            return CopyEnd::Failed;
        }
        u3_t uTold = m_uDone;
        for (;;) {
            const ssize_t iRead = ::read(m_iFrom, pPiece.get(), PIECE);
            if (iRead < 0 && errno == EINTR) continue;
            if (iRead < 0) return CopyEnd::Failed;
            if (iRead == 0) return Told() ? CopyEnd::Done : CopyEnd::Stopped;
            if (!WriteAll(pPiece.get(), static_cast<std::size_t>(iRead))) return CopyEnd::Failed;
            m_uDone += static_cast<u3_t>(iRead);
            if (m_uDone - uTold < STEP) continue;
            uTold = m_uDone;
            if (!Told()) return CopyEnd::Stopped;
        }
    }
    bool WriteAll(const char* p, std::size_t uSize) noexcept {
        while (uSize != 0) {
            const ssize_t iDone = ::write(m_iTo, p, uSize);
            if (iDone < 0 && errno == EINTR) continue;
            if (iDone <= 0) return false;
            p += iDone;
            uSize -= static_cast<std::size_t>(iDone);
        }
        return true;
    }
    // A file may have grown meanwhile.
    bool Told() {
        return m_pStep == nullptr || m_pStep(m_pContext, m_uDone, std::max(m_uDone, m_uTotal));
    }

    const int m_iFrom;
    const int m_iTo;
    const u3_t m_uTotal;
    const CopyStep m_pStep;
    void* const m_pContext;
    u3_t m_uDone = 0;
};

}  // namespace

CopyEnd CopyInto(const char* sFrom, const char* sTo, CopyStep pStep, void* pContext) {
    // Of a pipe nobody may come to the other end.
    const Descriptor oFrom(::open(sFrom, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat oStat {};
    if (oFrom.Get() < 0 || ::fstat(oFrom.Get(), &oStat) != 0) return CopyEnd::Failed;
    if (!S_ISREG(oStat.st_mode)) {
        errno = S_ISDIR(oStat.st_mode) ? EISDIR : EINVAL;
        return CopyEnd::Failed;
    }
    Descriptor oTo(::open(sTo, O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    if (oTo.Get() < 0) return CopyEnd::Failed;
    const CopyEnd eEnd =
        Copying(oFrom.Get(), oTo.Get(), static_cast<u3_t>(oStat.st_size), pStep, pContext).Run();
    if (eEnd != CopyEnd::Done) return eEnd;
    // File systems that know neither go without. Set-user bits would mean another user here.
    (void)::fchmod(oTo.Get(), oStat.st_mode & 0777);
    const timespec aoTime[2] = {oStat.st_atim, oStat.st_mtim};
    (void)::futimens(oTo.Get(), aoTime);
    return oTo.Close() ? CopyEnd::Done : CopyEnd::Failed;
}

// ---- places -----------------------------------------------------------------

bool FullPath(const char* sPath, std::string& sFull) noexcept {
    try {
        sFull.clear();
        if (*sPath != '/') {
            const std::unique_ptr<char, void (*)(void*)> pHere(::getcwd(nullptr, 0), std::free);
            if (pHere == nullptr) return false;
            sFull = pHere.get();
            sFull += '/';
        }
        sFull += sPath;
    } catch (const std::exception&) {
        return OutOfMemory();
    }
    return true;
}

bool TempFolder(std::string& sFolder) noexcept {
    const char* const sTold = std::getenv("TMPDIR");
    try {
        sFolder = sTold != nullptr && *sTold != 0 ? sTold : "/tmp";
    } catch (const std::exception&) {
        return OutOfMemory();
    }
    return true;
}

}  // namespace vok::sys
