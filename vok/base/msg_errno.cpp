// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

struct Errno_Text {
    u2_t m_uCode;
    const char* m_sText;
};

// By number, ascending. The numbers are those of the C runtime of Windows.
constexpr Errno_Text TEXTS[] = {
    {1, "EPERM (Operation not permitted)"},
    {2, "ENOENT (No such file or directory)"},
    {3, "ESRCH (No such process)"},
    {4, "EINTR (Interrupted system call)"},
    {5, "EIO (I/O error)"},
    {6, "ENXIO (No such device or address)"},
    {7, "E2BIG (Argument list too big)"},
    {8, "ENOEXEC (Exec format error)"},
    {9, "EBADF (Bad file number)"},
    {10, "ECHILD (No child processes)"},
    {11, "EAGAIN (Try again)"},
    {12, "ENOMEM (Out of memory)"},
    {13, "EACCES (Permission denied)"},
    {14, "EFAULT (Bad address)"},
    {16, "EBUSY (Device or resource busy)"},
    {17, "EEXIST (File exists)"},
    {18, "EXDEV (Cross-device link)"},
    {19, "ENODEV (No such device)"},
    {20, "ENOTDIR (Not a directory)"},
    {21, "EISDIR (Is a directory)"},
    {22, "EINVAL (Invalid argument)"},
    {23, "ENFILE (File table overflow)"},
    {24, "EMFILE (Too many open files)"},
    {25, "ENOTTY (Not a typewriter)"},
    {27, "EFBIG (File too large)"},
    {28, "ENOSPC (No space left on device)"},
    {29, "ESPIPE (Illegal seek)"},
    {30, "EROFS (Read-only file system)"},
    {31, "EMLINK (Too many links)"},
    {32, "EPIPE (Broken pipe)"},
    {33, "EDOM (Math argument out of domain of func)"},
    {34, "ERANGE (Math result not representable)"},
    {36, "EDEADLK (Resource deadlock would occur)"},
    {38, "ENAMETOOLONG"},
    {39, "ENOLCK"},
    {40, "ENOSYS"},
    {41, "ENOTEMPTY (Directory not empty)"},
    {42, "EILSEQ"},
    {80, "STRUNCATE"},
};

constexpr const char* UNKNOWN = "UNKNOWN (unknown errno)";
// The longest "UNKNOWN (unknown errno %d)" with its NUL.
constexpr std::size_t UNKNOWN_ROOM = 35;

}  // namespace

const char* Msg::ErrnoText(char* sBuf, std::size_t uSize, u2_t uCode) noexcept {
    const auto* const pText = std::ranges::find(TEXTS, uCode, &Errno_Text::m_uCode);
    if (pText != std::end(TEXTS)) {
        if (sBuf == nullptr || std::strlen(pText->m_sText) >= uSize) return pText->m_sText;
        std::memcpy(sBuf, pText->m_sText, std::strlen(pText->m_sText) + 1);
        return sBuf;
    }
    if (sBuf == nullptr || uSize == 0) return UNKNOWN;
    const u2_t uLastError = sys::LastError();
    const int iPrinted = std::snprintf(sBuf, uSize, "%d :", static_cast<int>(uLastError));
    const std::size_t uUsed = std::min(static_cast<std::size_t>(std::max(iPrinted, 0)), uSize - 1);
    if (static_cast<int>(uLastError) > 0) {
        sys::SystemErrorText(uLastError, sBuf + uUsed, uSize - uUsed);
        return sBuf;
    }
    if (uSize - uUsed < UNKNOWN_ROOM) return UNKNOWN;
    std::snprintf(sBuf + uUsed, uSize - uUsed, "UNKNOWN (unknown errno %d)",
                  static_cast<int>(uCode));
    return sBuf;
}

u2_t Msg::SystemError() noexcept {
    const u2_t uCode = sys::RuntimeError();
    return uCode == 0 ? NO_SYSTEM_ERROR_CODE : uCode;
}

}  // namespace vok
