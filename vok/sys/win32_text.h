// SPDX-License-Identifier: MIT
// Texts and paths as Windows wants them, and its errors as errno has them. Internal.
#ifndef VOK_SYS_WIN32_TEXT_H
#define VOK_SYS_WIN32_TEXT_H

#include <cerrno>
#include <cstddef>
#include <exception>
#include <string>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace vok::sys {

// False when sText is no UTF-8 or memory is short; the reason is in RuntimeError().
inline bool ToWide(const char* sText, std::wstring& sWide) noexcept {
    const int iSize = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, sText, -1, nullptr, 0);
    if (iSize <= 0) {
        errno = EINVAL;
        return false;
    }
    try {
        sWide.resize(static_cast<std::size_t>(iSize));
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, sText, -1, sWide.data(), iSize);
    sWide.pop_back();  // the NUL
    return true;
}

inline std::string ToUtf8(const wchar_t* sWide) {
    const int iSize = ::WideCharToMultiByte(CP_UTF8, 0, sWide, -1, nullptr, 0, nullptr, nullptr);
    if (iSize <= 0) return {};
    std::string sText(static_cast<std::size_t>(iSize), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, sWide, -1, sText.data(), iSize, nullptr, nullptr);
    sText.pop_back();
    return sText;
}

// A path from a drive or a server on, without ".", ".." and "/". Throws std::bad_alloc; false with
// the reason in LastError().
inline bool ToFull(const std::wstring& sPath, std::wstring& sFull) {
    const DWORD uRoom = ::GetFullPathNameW(sPath.c_str(), 0, nullptr, nullptr);
    sFull.resize(uRoom);
    const DWORD uSize =
        uRoom != 0 ? ::GetFullPathNameW(sPath.c_str(), uRoom, sFull.data(), nullptr) : 0;
    if (uSize == 0 || uSize >= uRoom) return false;  // another thread went elsewhere meanwhile
    sFull.resize(uSize);
    return true;
}

// As ToWide. Paths that are longer than the system takes as they are get the mark that lifts this:
// 260 units with the NUL, for folders 12 less.
inline bool ToWidePath(const char* sPath, std::wstring& sWide) noexcept {
    constexpr std::size_t SHORT = 260 - 12;
    if (!ToWide(sPath, sWide)) return false;
    if (sWide.size() < SHORT) return true;
    try {
        std::wstring sFull;
        if (!ToFull(sWide, sFull)) return true;
        if (sFull.starts_with(L"\\\\?\\") || sFull.starts_with(L"\\\\.\\")) {
            sWide = sFull;
        } else if (sFull.starts_with(L"\\\\")) {
            sWide = L"\\\\?\\UNC" + sFull.substr(1);
        } else {
            sWide = L"\\\\?\\" + sFull;
        }
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
    return true;
}

// Sets errno to what LastError() means; returns false.
inline bool TakeLastError() noexcept {
    switch (::GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_INVALID_NAME: errno = ENOENT; break;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS: errno = EEXIST; break;
        case ERROR_NOT_SAME_DEVICE: errno = EXDEV; break;
        case ERROR_DIRECTORY: errno = ENOTDIR; break;
        case ERROR_DIR_NOT_EMPTY: errno = ENOTEMPTY; break;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL: errno = ENOSPC; break;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY: errno = ENOMEM; break;
        case ERROR_TOO_MANY_OPEN_FILES: errno = EMFILE; break;
        case ERROR_WRITE_PROTECT: errno = EROFS; break;
        case ERROR_FILENAME_EXCED_RANGE: errno = ENAMETOOLONG; break;
        case ERROR_INVALID_PARAMETER: errno = EINVAL; break;
        default: errno = EACCES; break;
    }
    return false;
}

}  // namespace vok::sys

#endif  // VOK_SYS_WIN32_TEXT_H
