// SPDX-License-Identifier: MIT
#include "vok/sys/mapping.h"

#include <string>

#include "vok/sys/win32_text.h"

namespace vok::sys {

bool MapFile(const char* sPath, Mapping& oMapping) noexcept {
    std::wstring sWide;
    if (!ToWidePath(sPath, sWide)) return false;
    // Others may replace the file, and not write to it.
    const HANDLE hFile =
        ::CreateFileW(sWide.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) return TakeLastError();
    LARGE_INTEGER oSize{};
    HANDLE hMapping = nullptr;
    void* pBytes = nullptr;
    if (::GetFileSizeEx(hFile, &oSize) != 0 && oSize.QuadPart > 0) {
        hMapping = ::CreateFileMappingW(hFile, nullptr, PAGE_WRITECOPY, 0, 0, nullptr);
        if (hMapping != nullptr) pBytes = ::MapViewOfFile(hMapping, FILE_MAP_COPY, 0, 0, 0);
    }
    const DWORD uError = ::GetLastError();
    if (hMapping != nullptr) ::CloseHandle(hMapping);  // the view keeps it
    ::CloseHandle(hFile);
    if (pBytes == nullptr) {
        if (oSize.QuadPart <= 0) {
            errno = EINVAL;
            return false;
        }
        ::SetLastError(uError);
        return TakeLastError();
    }
    oMapping = {static_cast<char*>(pBytes), static_cast<std::size_t>(oSize.QuadPart)};
    return true;
}

void Unmap(const Mapping& oMapping) noexcept {
    if (oMapping.pBytes != nullptr) ::UnmapViewOfFile(oMapping.pBytes);
}

}  // namespace vok::sys
