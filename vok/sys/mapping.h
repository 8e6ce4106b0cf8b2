// SPDX-License-Identifier: MIT
// Files as memory. posix_mapping.cpp and win32_mapping.cpp stand behind it. Internal.
#ifndef VOK_SYS_MAPPING_H
#define VOK_SYS_MAPPING_H

#include <cstddef>

namespace vok::sys {

// The bytes of a file, at the beginning of a page. What is written to them is this process' own.
struct Mapping {
    char* pBytes = nullptr;
    std::size_t uSize = 0;
};

// Maps a file, which may then be renamed, replaced and, where the system allows it, removed. False
// with the reason in RuntimeError(), also for what is no file or has no bytes. Bytes that somebody
// else cuts off the file meanwhile end the process when they are looked at.
[[nodiscard]] bool MapFile(const char* sPath, Mapping& oMapping) noexcept;
void Unmap(const Mapping& oMapping) noexcept;

}  // namespace vok::sys

#endif  // VOK_SYS_MAPPING_H
