// SPDX-License-Identifier: MIT
#include "vok/sys/shm.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <new>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vok::sys {

struct Shm {
    int iDescriptor = -1;
    char* pHeader = nullptr;
    char* pBytes = nullptr;  // of a writer
    std::size_t uMapped = 0;
};

namespace {

// "/NAME", as the system wants it.
struct Slashed {
    char s[256];
    explicit Slashed(const char* sName) noexcept {
        (void)std::snprintf(s, sizeof(s), "/%s", sName);
    }
};

[[nodiscard]] bool Fail(int iError) noexcept {
    errno = iError;
    return false;
}

[[nodiscard]] int OpenNamed(const char* sName, ShmMode eMode) noexcept {
    const Slashed oName(sName);
    if (eMode == ShmMode::Read) return ::shm_open(oName.s, O_RDONLY, 0);
    int iFlags = O_RDWR;
    if (eMode != ShmMode::Write) iFlags |= O_CREAT;
    if (eMode == ShmMode::Create) iFlags |= O_EXCL;
    return ::shm_open(oName.s, iFlags, 0600);
}

[[nodiscard]] bool SetAside(int iDescriptor, u3_t uFrom, u3_t uTo) noexcept {
    // It starts anew after a signal: what it had got until then is still there.
    for (;;) {
        const int iError = ::posix_fallocate(iDescriptor, static_cast<off_t>(uFrom),
                                             static_cast<off_t>(uTo - uFrom));
        if (iError == 0) return true;
        if (iError != EINTR) return Fail(iError);
    }
}

[[nodiscard]] bool Prepare(Shm& o, ShmMode eMode) noexcept {
    const bool bWrite = eMode != ShmMode::Read;
    // Anybody may have made something of that name for all to use.
    struct stat oStat {};
    if (::fstat(o.iDescriptor, &oStat) != 0) return false;
    if (oStat.st_uid != ::geteuid()) return Fail(EACCES);
    // One writer at a time, until its process ends, however that comes.
    if (bWrite && ::flock(o.iDescriptor, LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? Fail(EBUSY) : false;
    }
    // Who has the lock may finish what somebody has begun.
    if (ShmSize(o) < SHM_HEADER) {
        if (!bWrite || eMode == ShmMode::Write) return Fail(ENOENT);
        if (!SetAside(o.iDescriptor, 0, SHM_HEADER)) return false;
    }
    void* const p = ::mmap(nullptr, SHM_HEADER, bWrite ? PROT_READ | PROT_WRITE : PROT_READ,
                           MAP_SHARED, o.iDescriptor, 0);
    if (p == MAP_FAILED) return false;
    o.pHeader = static_cast<char*>(p);
    return true;
}

[[nodiscard]] bool Open(Shm& o, const char* sName, ShmMode eMode) noexcept {
    o.iDescriptor = OpenNamed(sName, eMode);
    if (o.iDescriptor < 0) return false;
    if (Prepare(o, eMode)) return true;
    const int iError = errno;
    if (eMode == ShmMode::Create) (void)RemoveShm(sName);
    return Fail(iError);
}

}  // namespace

Shm* OpenShm(const char* sName, ShmMode eMode, u3_t) noexcept {
    Shm* const pShm = new (std::nothrow) Shm;
    if (pShm == nullptr) {
        errno = ENOMEM;
    } else if (!Open(*pShm, sName, eMode)) {
        CloseShm(pShm);
        return nullptr;
    }
    return pShm;
}

void CloseShm(Shm* pShm) noexcept {
    const int iError = errno;
    if (pShm->pHeader != nullptr) (void)::munmap(pShm->pHeader, SHM_HEADER);
    if (pShm->pBytes != nullptr) (void)::munmap(pShm->pBytes, pShm->uMapped);
    if (pShm->iDescriptor >= 0) (void)::close(pShm->iDescriptor);
    delete pShm;
    errno = iError;
}

bool RemoveShm(const char* sName) noexcept {
    return ::shm_unlink(Slashed(sName).s) == 0;
}

char* ShmHeader(const Shm& oShm) noexcept {
    return oShm.pHeader;
}

u3_t ShmSize(const Shm& oShm) noexcept {
    struct stat oStat {};
    return ::fstat(oShm.iDescriptor, &oStat) == 0 ? static_cast<u3_t>(oStat.st_size) : 0;
}

std::size_t ReadShm(const Shm& oShm, u3_t uAt, char* pTarget, std::size_t uSize) noexcept {
    // Not from a mapping, where bytes that are cut off end the process.
    std::size_t uDone = 0;
    while (uDone < uSize) {
        const ssize_t iDone = ::pread(oShm.iDescriptor, pTarget + uDone, uSize - uDone,
                                      static_cast<off_t>(uAt + uDone));
        if (iDone < 0 && errno == EINTR) continue;
        if (iDone <= 0) break;
        uDone += static_cast<std::size_t>(iDone);
    }
    return uDone;
}

char* MapShm(Shm& oShm, u3_t uRoom) noexcept {
    if (uRoom > std::numeric_limits<std::ptrdiff_t>::max()) {
        errno = ENOMEM;
        return nullptr;
    }
    // More than there is: growing moves nothing.
    const auto uSize = static_cast<std::size_t>(uRoom);
    void* const p = ::mmap(nullptr, uSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_NORESERVE,
                           oShm.iDescriptor, 0);
    if (p == MAP_FAILED) return nullptr;
    oShm.pBytes = static_cast<char*>(p);
    oShm.uMapped = uSize;
    return oShm.pBytes;
}

bool GrowShm(Shm& oShm, u3_t uFrom, u3_t uTo) noexcept {
    return SetAside(oShm.iDescriptor, uFrom, uTo);
}

bool CopyShm(const Shm& oShm, std::size_t uSize, Mapping& oMapping) noexcept {
    if (ShmSize(oShm) < uSize) return Fail(EINVAL);
    void* const p = ::mmap(nullptr, uSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_NORESERVE,
                           oShm.iDescriptor, 0);
    if (p == MAP_FAILED) return false;
    oMapping = {static_cast<char*>(p), uSize};
    return true;
}

}  // namespace vok::sys
