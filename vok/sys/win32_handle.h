// SPDX-License-Identifier: MIT
// Objects of Windows, and who may use those that have names. Internal.
#ifndef VOK_SYS_WIN32_HANDLE_H
#define VOK_SYS_WIN32_HANDLE_H

#include <cwchar>
#include <utility>

#include "vok/sys/win32_text.h"

#include <sddl.h>

namespace vok::sys {

// Closes one, and leaves the reason of what went wrong before.
class Handle {
  public:
    explicit Handle(HANDLE h = nullptr) noexcept : m_h(h != INVALID_HANDLE_VALUE ? h : nullptr) {}
    Handle(Handle&& o) noexcept : m_h(std::exchange(o.m_h, nullptr)) {}
    Handle& operator=(Handle&& o) noexcept {
        std::swap(m_h, o.m_h);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        const DWORD uError = ::GetLastError();
        if (m_h != nullptr) ::CloseHandle(m_h);
        ::SetLastError(uError);
    }
    [[nodiscard]] HANDLE Get() const noexcept { return m_h; }
    [[nodiscard]] bool IsOpen() const noexcept { return m_h != nullptr; }

  private:
    HANDLE m_h;
};

// Who may use an object with a name: its user, or also all, as uAccess tells.
class Security {
  public:
    [[nodiscard]] bool Make(DWORD uAccess = 0) noexcept {
        HANDLE hToken = nullptr;
        if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &hToken) == 0) return false;
        const Handle oToken(hToken);
        alignas(TOKEN_USER) char sUser[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
        DWORD uSize = 0;
        if (::GetTokenInformation(hToken, TokenUser, sUser, sizeof(sUser), &uSize) == 0)
            return false;
        wchar_t* sSid = nullptr;
        if (::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(sUser)->User.Sid, &sSid) == 0)
            return false;
        wchar_t sText[256] = L"D:P(A;;GA;;;";
        constexpr std::size_t LONGEST_SID = 190;
        const bool bFits = std::wcslen(sSid) < LONGEST_SID;
        if (bFits) {
            std::wcscat(sText, sSid);
            wchar_t* const pEnd = sText + std::wcslen(sText);
            if (uAccess != 0) {
                (void)std::swprintf(pEnd, 40, L")(A;;0x%lx;;;WD)", uAccess);
            } else {
                std::wcscat(pEnd, L")");
            }
        }
        ::LocalFree(sSid);
        return bFits && ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
                            sText, SDDL_REVISION_1, &m_p, nullptr) != 0;
    }
    Security() noexcept = default;
    Security(const Security&) = delete;
    Security& operator=(const Security&) = delete;
    ~Security() {
        const DWORD uError = ::GetLastError();
        if (m_p != nullptr) ::LocalFree(m_p);
        ::SetLastError(uError);
    }
    [[nodiscard]] PSECURITY_DESCRIPTOR Get() const noexcept { return m_p; }

  private:
    PSECURITY_DESCRIPTOR m_p = nullptr;
};

}  // namespace vok::sys

#endif  // VOK_SYS_WIN32_HANDLE_H
