// SPDX-License-Identifier: MIT
// Shared memory that the paging file stands behind. Its address space is set aside as a whole, its
// memory as it grows; the system knows for each page whether there is memory, for all processes.
#include "vok/sys/shm.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "vok/sys/win32_handle.h"

namespace vok::sys {

struct Shm {
    Handle oMapping;
    Handle oWriter;  // there can be one with its name
    char* pBytes = nullptr;
    bool bWrite = false;
};

namespace {

[[nodiscard]] bool FullName(const char* sName, const wchar_t* sEnd, std::wstring& sFull) noexcept {
    std::wstring sWide;
    if (!ToWide(sName, sWide)) return false;
    try {
        sFull = L"Local\\" + sWide + sEnd;
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

// The mark of the writer, which goes with its process.
[[nodiscard]] bool BeWriter(Shm& o, const char* sName, SECURITY_ATTRIBUTES& oSecurity) noexcept {
    std::wstring sFull;
    if (!FullName(sName, L".writer", sFull)) return false;
    ::SetLastError(0);
    o.oWriter = Handle(::CreateEventW(&oSecurity, TRUE, FALSE, sFull.c_str()));
    if (!o.oWriter.IsOpen()) return TakeLastError();
    if (::GetLastError() != ERROR_ALREADY_EXISTS) return true;
    errno = EBUSY;
    return false;
}

[[nodiscard]] bool OpenMapping(Shm& o, const wchar_t* sName, ShmMode eMode, u3_t uRoom,
                               SECURITY_ATTRIBUTES& oSecurity) noexcept {
    if (eMode == ShmMode::Read || eMode == ShmMode::Write) {
        // Copies on write, which readers may make, need no right to write.
        o.oMapping = Handle(::OpenFileMappingW(
            o.bWrite ? FILE_MAP_READ | FILE_MAP_WRITE : FILE_MAP_READ, FALSE, sName));
        return o.oMapping.IsOpen() || TakeLastError();
    }
    // In whole steps of address space: Wine does not tell others of memory on a last page that is
    // not needed in full.
    constexpr u3_t STEP = u3_t{1} << 16;
    uRoom = (uRoom + STEP - 1) & ~(STEP - 1);
    ::SetLastError(0);
    o.oMapping = Handle(::CreateFileMappingW(
        INVALID_HANDLE_VALUE, &oSecurity, PAGE_READWRITE | SEC_RESERVE,
        static_cast<DWORD>(uRoom >> 32), static_cast<DWORD>(uRoom & 0xFFFFFFFF), sName));
    if (!o.oMapping.IsOpen()) return TakeLastError();
    if (eMode != ShmMode::Create || ::GetLastError() != ERROR_ALREADY_EXISTS) return true;
    errno = EEXIST;
    return false;
}

[[nodiscard]] bool Open(Shm& o, const char* sName, ShmMode eMode, u3_t uRoom) noexcept {
    o.bWrite = eMode != ShmMode::Read;
    std::wstring sFull;
    if (!FullName(sName, L"", sFull)) return false;
    Security oUser;
    if (!oUser.Make()) return TakeLastError();
    SECURITY_ATTRIBUTES oSecurity{sizeof(oSecurity), oUser.Get(), FALSE};
    if (!OpenMapping(o, sFull.c_str(), eMode, uRoom, oSecurity)) return false;
    if (o.bWrite && !BeWriter(o, sName, oSecurity)) return false;
    o.pBytes = static_cast<char*>(::MapViewOfFile(
        o.oMapping.Get(), o.bWrite ? FILE_MAP_READ | FILE_MAP_WRITE : FILE_MAP_READ, 0, 0, 0));
    if (o.pBytes == nullptr) return TakeLastError();
    if (ShmSize(o) >= SHM_HEADER) return true;
    if (eMode == ShmMode::Read || eMode == ShmMode::Write) {
        errno = ENOENT;
        return false;
    }
    return GrowShm(o, 0, SHM_HEADER);
}

}  // namespace

Shm* OpenShm(const char* sName, ShmMode eMode, u3_t uRoom) noexcept {
    Shm* const pShm = new (std::nothrow) Shm;
    if (pShm == nullptr) {
        errno = ENOMEM;
    } else if (!Open(*pShm, sName, eMode, uRoom)) {
        CloseShm(pShm);
        return nullptr;
    }
    return pShm;
}

void CloseShm(Shm* pShm) noexcept {
    const int iError = errno;
    if (pShm->pBytes != nullptr) ::UnmapViewOfFile(pShm->pBytes);
    delete pShm;
    errno = iError;
}

bool RemoveShm(const char*) noexcept {
    errno = ENOENT;
    return false;
}

char* ShmHeader(const Shm& oShm) noexcept {
    return oShm.pBytes;
}

// As much as the pages in front have memory.
u3_t ShmSize(const Shm& oShm) noexcept {
    u3_t uSize = 0;
    MEMORY_BASIC_INFORMATION o{};
    while (::VirtualQuery(oShm.pBytes + uSize, &o, sizeof(o)) != 0 && o.State == MEM_COMMIT &&
           o.AllocationBase == oShm.pBytes) {
        uSize += o.RegionSize;
    }
    return uSize;
}

std::size_t ReadShm(const Shm& oShm, u3_t uAt, char* pTarget, std::size_t uSize) noexcept {
    // Nothing is ever taken away.
    const u3_t uThere = ShmSize(oShm);
    const u3_t uLeft = uAt < uThere ? uThere - uAt : 0;
    const auto uDone = static_cast<std::size_t>(std::min<u3_t>(uLeft, uSize));
    if (uDone != 0) std::memcpy(pTarget, oShm.pBytes + uAt, uDone);
    return uDone;
}

char* MapShm(Shm& oShm, u3_t uRoom) noexcept {
    // All of it is mapped; is there so much of it?
    u3_t uThere = 0;
    MEMORY_BASIC_INFORMATION o{};
    while (uThere < uRoom && ::VirtualQuery(oShm.pBytes + uThere, &o, sizeof(o)) != 0 &&
           o.AllocationBase == oShm.pBytes) {
        uThere += o.RegionSize;
    }
    if (uThere >= uRoom) return oShm.pBytes;
    errno = EINVAL;
    return nullptr;
}

bool GrowShm(Shm& oShm, u3_t uFrom, u3_t uTo) noexcept {
    return ::VirtualAlloc(oShm.pBytes + uFrom, static_cast<SIZE_T>(uTo - uFrom), MEM_COMMIT,
                          PAGE_READWRITE) != nullptr ||
           TakeLastError();
}

bool CopyShm(const Shm& oShm, std::size_t uSize, Mapping& oMapping) noexcept {
    if (ShmSize(oShm) < uSize) {
        errno = EINVAL;
        return false;
    }
    void* const p = ::MapViewOfFile(oShm.oMapping.Get(), FILE_MAP_COPY, 0, 0, uSize);
    if (p == nullptr) return TakeLastError();
    oMapping = {static_cast<char*>(p), uSize};
    return true;
}

}  // namespace vok::sys
