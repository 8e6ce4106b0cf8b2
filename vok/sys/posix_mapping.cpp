// SPDX-License-Identifier: MIT
#include "vok/sys/mapping.h"

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vok::sys {

bool MapFile(const char* sPath, Mapping& oMapping) noexcept {
    const int iDescriptor = ::open(sPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (iDescriptor < 0) return false;
    struct stat oStat {};
    int iError = 0;
    void* pBytes = MAP_FAILED;
    if (::fstat(iDescriptor, &oStat) != 0) {
        iError = errno;
    } else if (S_ISDIR(oStat.st_mode)) {
        iError = EISDIR;
    } else if (!S_ISREG(oStat.st_mode) || oStat.st_size <= 0) {
        iError = EINVAL;
    } else {
        // Pages that are written to become this process' own one by one: nothing is set aside.
        pBytes = ::mmap(nullptr, static_cast<std::size_t>(oStat.st_size), PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_NORESERVE, iDescriptor, 0);
        iError = errno;
    }
    (void)::close(iDescriptor);
    errno = iError;
    if (pBytes == MAP_FAILED) return false;
    oMapping = {static_cast<char*>(pBytes), static_cast<std::size_t>(oStat.st_size)};
    return true;
}

void Unmap(const Mapping& oMapping) noexcept {
    if (oMapping.pBytes != nullptr) (void)::munmap(oMapping.pBytes, oMapping.uSize);
}

}  // namespace vok::sys
