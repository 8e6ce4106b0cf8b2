// SPDX-License-Identifier: MIT
// Memory that processes share by a name. posix_shm.cpp and win32_shm.cpp stand behind it. Internal.
//
// A name is plain, see IsPlainName. Functions that fail leave the reason in RuntimeError(), and in
// LastError() where that is another one.
#ifndef VOK_SYS_SHM_H
#define VOK_SYS_SHM_H

#include "vok/sys/mapping.h"
#include "vok/sys/types.h"

namespace vok::sys {

struct Shm;

enum class ShmMode : u0_t {
    Read,         // what is there
    Write,        // what is there, by one at a time: for others it is busy as long as this is open
    Create,       // the same of what was not there
    CreateOrOpen  // whatever is the case
};

// The bytes in front, which processes agree by: on pages of their own.
inline constexpr std::size_t SHM_HEADER = 4096;

// For its user only. What is new, or was left unfinished by one that made it, is all zero, has
// SHM_HEADER bytes and room for uRoom, where the system wants to know that beforehand. Null on
// failure; NOT_THERE also for what is shorter than its header and only to be opened.
[[nodiscard]] Shm* OpenShm(const char* sName, ShmMode eMode, u3_t uRoom) noexcept;
void CloseShm(Shm* pShm) noexcept;
// Takes a name away; who has the memory open keeps it. Where names end with the last one that has
// them open this does nothing and is NOT_THERE.
[[nodiscard]] bool RemoveShm(const char* sName) noexcept;

[[nodiscard]] char* ShmHeader(const Shm& oShm) noexcept;
// The bytes there are, header included; 0 on failure. Another process may cut them off at any time,
// where the system lets it.
[[nodiscard]] u3_t ShmSize(const Shm& oShm) noexcept;
// Copies bytes out, as many as there are. What has been cut off is not there, and harms nobody.
[[nodiscard]] std::size_t ReadShm(const Shm& oShm, u3_t uAt, char* pTarget,
                                  std::size_t uSize) noexcept;
// The place at which uRoom bytes are or will be, header included: it stays until it is closed. Null
// on failure. Only what GrowShm has made may be touched.
[[nodiscard]] char* MapShm(Shm& oShm, u3_t uRoom) noexcept;
// Has memory for all bytes up to uTo set aside; those up to uFrom are. The system is asked for it
// now, and not when the bytes are written to.
[[nodiscard]] bool GrowShm(Shm& oShm, u3_t uFrom, u3_t uTo) noexcept;
// The first uSize bytes as they are now; what is written to them is this process' own.
[[nodiscard]] bool CopyShm(const Shm& oShm, std::size_t uSize, Mapping& oMapping) noexcept;

}  // namespace vok::sys

#endif  // VOK_SYS_SHM_H
