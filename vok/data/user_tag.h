// SPDX-License-Identifier: MIT
// The text that a tree carries beside its nodes. Internal.
#ifndef VOK_DATA_USER_TAG_H
#define VOK_DATA_USER_TAG_H

#include <cstring>
#include <string_view>

#include "vok/base/compare.h"
#include "vok/base/str.h"

namespace vok {

// Most tags are the version of a format: short ones stand in place, so that a tree needs no block
// for them.
class Data_UserTag {
  public:
    // The text ends at its first NUL. Nothing is changed if memory runs out.
    void Set(std::string_view sTag) {
        if (IsSet(sTag)) return;
        if (!IsShort(sTag)) {
            sTag = sTag.substr(0, sTag.find('\0'));
            if (!IsShort(sTag)) {
                m_oLong = Mem::Str(sTag);
                m_uShort = 0;
                return;
            }
        }
        // It may be a part of the one that is there.
        if (!sTag.empty()) std::memmove(m_sShort, sTag.data(), sTag.size());
        m_sShort[sTag.size()] = 0;
        m_uShort = static_cast<u0_t>(sTag.size());
        m_oLong.Clear();
    }
    [[nodiscard]] Mem::Str Get() const { return m_uShort != 0 ? Mem::Str(View()) : m_oLong; }
    [[nodiscard]] std::string_view View() const noexcept {
        return m_uShort != 0 ? std::string_view(m_sShort, m_uShort) : m_oLong.View();
    }
    // Good until it is set again.
    [[nodiscard]] const char* CStr() const noexcept {
        return m_uShort != 0 ? m_sShort : m_oLong.CStr();
    }
    void Clear() noexcept {
        m_oLong.Clear();
        m_uShort = 0;
    }
    [[nodiscard]] std::size_t HeapBytes() const noexcept { return m_oLong.HeapBytes(); }

  private:
    [[nodiscard]] bool IsSet(std::string_view sTag) const noexcept {
        const std::string_view s = View();
        return s.size() == sTag.size() && IsEqualText(s.data(), sTag.data(), s.size());
    }

    // Whether it stands in place as it is: a NUL is none of the bytes of such a text.
    [[nodiscard]] static bool IsShort(std::string_view sTag) noexcept {
        return sTag.size() <= SHORT && IsAsciiText(sTag.data(), sTag.size());
    }

    static constexpr std::size_t SHORT = 22;

    u0_t m_uShort = 0;  // bytes of one in place
    char m_sShort[SHORT + 1];
    Mem::Str m_oLong;
};

}  // namespace vok

#endif  // VOK_DATA_USER_TAG_H
