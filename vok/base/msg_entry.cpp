// SPDX-License-Identifier: MIT
#include "vok/base/msg_entry.h"

#include <cstdio>
#include <exception>

#include "vok/base/msg.h"
#include "vok/base/msg_channel.h"
#include "vok/base/utf8.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

const char* InCurrentLanguage(const Msg_Text& oText) noexcept {
    switch (Msg::LanguageIndex()) {
        case Msg::ENGLISH: return oText.m_sEnglish;
        case Msg::GERMAN: return oText.m_sGerman;
        default: return "";
    }
}

void Emit(int iMode, const Msg_Text& oText, const Msg_Entry::Args& oArgs, u2_t uSystemError) {
    Msg_Args ps{};
    std::size_t uNth = 0;
    for (const Msg_Arg& oArg : oArgs) {
        if (uNth == ps.size()) break;
        ps[uNth++] = oArg.Text();
    }
    Msg_Emit(iMode, oText.m_eKind, InCurrentLanguage(oText), uSystemError, ps);
}

}  // namespace

Msg_Arg::Msg_Arg(u3_t uNumber) noexcept : m_sText(m_sBuf) {
    std::snprintf(m_sBuf, sizeof(m_sBuf), "%llu", static_cast<unsigned long long>(uNumber));
}

Msg_Arg::Msg_Arg(Kind eKind, u3_t uValue) noexcept : m_sText(m_sBuf) {
    if (eKind == Kind::Char) {
        m_sBuf[EncodeUtf8(static_cast<u2_t>(uValue), m_sBuf)] = 0;
        return;
    }
    std::snprintf(m_sBuf, sizeof(m_sBuf), "0x%016llX", static_cast<unsigned long long>(uValue));
}

const char* Msg_Entry::Text(const Msg_Text& oText) noexcept {
    return InCurrentLanguage(oText);
}

void Msg_Entry::Raise(const Msg_Text& oText, const Args& oArgs, u2_t uSystemError) {
    Emit(Msg::MODE_RAISE, oText, oArgs, uSystemError);
    // Not reached, which the compiler cannot know. A throw of the result would do as well, but
    // claim room for it first, and when memory is short leave the runtime's little reserve in
    // pieces.
    std::terminate();
}

void Msg_Entry::Report(const Msg_Text& oText, const Args& oArgs) {
    Emit(Msg::MODE_REPORT, oText, oArgs, 0);
}

void Msg_Entry::Log(const Msg_Text& oText, const Args& oArgs) {
    Emit(Msg::MODE_LOG, oText, oArgs, 0);
}

void Msg_Entry::RaiseOrReport(bool bRaise, const Msg_Text& oText, const Args& oArgs) {
    Emit(bRaise ? Msg::MODE_RAISE : Msg::MODE_REPORT, oText, oArgs, 0);
}

}  // namespace vok
