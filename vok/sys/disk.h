// SPDX-License-Identifier: MIT
// What the operating system does with files and folders by their paths; sys.h has what opens them.
// posix_disk.cpp and win32_disk.cpp stand behind it. Internal.
//
// Paths are UTF-8. Functions that return false leave the reason in RuntimeError().
#ifndef VOK_SYS_DISK_H
#define VOK_SYS_DISK_H

#include <string>
#include <vector>

#include "vok/sys/types.h"

namespace vok::sys {

// Error numbers that mean the same everywhere.
inline constexpr u2_t NOT_THERE = 2;          // ENOENT
inline constexpr u2_t ALREADY_THERE = 17;     // EEXIST
inline constexpr u2_t ANOTHER_DEVICE = 18;    // EXDEV
inline constexpr u2_t NO_FOLDER = 20;         // ENOTDIR
inline constexpr u2_t IS_FOLDER = 21;         // EISDIR
inline constexpr u2_t INVALID_ARGUMENT = 22;  // EINVAL

enum class EntryKind : u0_t { None, File, Folder, Link, Other };

struct Entry {
    EntryKind eKind = EntryKind::None;
    bool bMayWrite = false;
    u2_t uMode = 0;
    u3_t uSize = 0;
    double dModified = 0;  // seconds since 1970-01-01 UTC
    double dRead = 0;
    // Two paths with the same ones lead to the same file.
    u3_t uDevice = 0;
    u3_t uNumber = 0;
};

// What a path leads to, or is itself where it is a link and bFollow is not set.
[[nodiscard]] bool LookAt(const char* sPath, bool bFollow, Entry& oEntry) noexcept;
// Where a symbolic link leads to, as it says. False for what is none, and on Windows.
[[nodiscard]] bool ReadLink(const char* sPath, std::string& sTarget) noexcept;
// The names in a folder, without "." and "..", in any order.
[[nodiscard]] bool ListFolder(const char* sPath, std::vector<std::string>& asName) noexcept;

// Makes one folder that was not there; for its maker alone with bPrivate.
[[nodiscard]] bool CreateFolder(const char* sPath, bool bPrivate) noexcept;
// A file or a link. A folder is an error.
[[nodiscard]] bool RemoveFile(const char* sPath) noexcept;
[[nodiscard]] bool RemoveFolder(const char* sPath) noexcept;
// Within one file system, else ANOTHER_DEVICE.
[[nodiscard]] bool Rename(const char* sFrom, const char* sTo, bool bReplace) noexcept;
[[nodiscard]] bool SetModified(const char* sPath, double dSeconds) noexcept;

// Called in the course of a copy; false ends it. May throw.
using CopyStep = bool (*)(void* pContext, u3_t uDone, u3_t uTotal);
enum class CopyEnd { Done, Stopped, Failed };
// Copies the bytes, times and mode of a regular file into one that is there already and is empty.
// Where it does not end well, what is in that is nobody's.
[[nodiscard]] CopyEnd CopyInto(const char* sFrom, const char* sTo, CopyStep pStep, void* pContext);

// A path from the root of the file system, or of a drive, on; "." and links may still be in it.
[[nodiscard]] bool FullPath(const char* sPath, std::string& sFull) noexcept;
// The folder for temporary files.
[[nodiscard]] bool TempFolder(std::string& sFolder) noexcept;

}  // namespace vok::sys

#endif  // VOK_SYS_DISK_H
