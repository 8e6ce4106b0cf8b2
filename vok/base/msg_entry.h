// SPDX-License-Identifier: MIT
// What the entries of the message catalog are made of. Included by the files that define
// entries, not by those that call them. Internal.
#ifndef VOK_BASE_MSG_ENTRY_H
#define VOK_BASE_MSG_ENTRY_H

#include <initializer_list>

#include "vok/base/msg_exception.h"
#include "vok/base/types.h"

namespace vok {

// One message in both languages, UTF-8, with the same placeholders in each, and the kind of
// failure it tells of; a system error makes that System.
struct Msg_Text {
    const char* m_sEnglish;
    const char* m_sGerman;
    Msg_Kind m_eKind = Msg_Kind::Other;
};

// One argument as the text that replaces its placeholder. Numbers are printed as unsigned
// 64-bit decimals. Made in place and never copied: the text may lie in the object.
class Msg_Arg {
  public:
    Msg_Arg(const char* sText) noexcept : m_sText(sText) {}
    Msg_Arg(u3_t uNumber) noexcept;
    Msg_Arg(i3_t iNumber) noexcept : Msg_Arg(static_cast<u3_t>(iNumber)) {}
    Msg_Arg(u2_t uNumber) noexcept : Msg_Arg(static_cast<u3_t>(uNumber)) {}
    Msg_Arg(i2_t iNumber) noexcept : Msg_Arg(static_cast<i3_t>(iNumber)) {}
    Msg_Arg(const Msg_Arg&) = delete;
    Msg_Arg& operator=(const Msg_Arg&) = delete;

    // The address of a memory block: "0x" and 16 hexadecimal digits.
    [[nodiscard]] static Msg_Arg Address(u3_t uAddress) noexcept {
        return {Kind::Address, uAddress};
    }
    // A code point as its UTF-8 sequence.
    [[nodiscard]] static Msg_Arg Char(u2_t uChar) noexcept { return {Kind::Char, uChar}; }

    [[nodiscard]] const char* Text() const noexcept { return m_sText; }

  private:
    enum class Kind { Address, Char };
    Msg_Arg(Kind eKind, u3_t uValue) noexcept;

    const char* m_sText;
    char m_sBuf[128];
};

// Emits a text in the current language. uSystemError is sys::RuntimeError() of the call
// that failed, Msg::NO_SYSTEM_ERROR_CODE, or 0 when no system call is to blame.
class Msg_Entry {
  public:
    using Args = std::initializer_list<Msg_Arg>;

    [[noreturn]] static void Raise(const Msg_Text& oText, const Args& oArgs = {},
                                   u2_t uSystemError = 0);
    static void Report(const Msg_Text& oText, const Args& oArgs = {});
    static void Log(const Msg_Text& oText, const Args& oArgs = {});
    static void RaiseOrReport(bool bRaise, const Msg_Text& oText, const Args& oArgs = {});
    // The text in the current language, for those who say it themselves.
    [[nodiscard]] static const char* Text(const Msg_Text& oText) noexcept;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_ENTRY_H
