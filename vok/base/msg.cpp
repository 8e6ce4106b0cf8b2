// SPDX-License-Identifier: MIT
#include "vok/base/msg.h"

#include <cstring>
#include <exception>
#include <string_view>

#include "vok/base/msg_channel.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr std::size_t ERRNO_TEXT_SIZE = 256;

// Cuts sText at its placeholders and gives the pieces of the message to oPut, in order.
template <class Put>
void Format(const char* sText, const Msg_Args& psArgs, Put&& oPut) {
    while (const char* const pPercent = std::strchr(sText, '%')) {
        oPut(std::string_view(sText, pPercent));
        const char c = pPercent[1];
        if (c == 0) return;
        if (c == '%') oPut("%");
        const auto uArg = static_cast<std::size_t>(c - '0');
        if (uArg < psArgs.size() && psArgs[uArg] != nullptr) oPut(psArgs[uArg]);
        sText = pPercent + 2;
    }
    oPut(sText);
}

template <class Put>
void AppendSystemError(u2_t uSystemError, Put&& oPut) {
    if (uSystemError == 0) return;
    char sBuf[ERRNO_TEXT_SIZE];
    oPut(uSystemError == Msg::NO_SYSTEM_ERROR_CODE ? ": " : ": errno=");
    oPut(Msg::ErrnoText(sBuf, sizeof(sBuf), sys::RuntimeErrno(uSystemError)));
}

}  // namespace

void Msg_Emit(int iMode, Msg_Kind eKind, const char* sText, u2_t uSystemError,
              const Msg_Args& psArgs) {
    const u2_t uLastError = sys::LastError();
    const auto FormatInto = [&](auto&& oPut) {
        Format(sText != nullptr ? sText : "", psArgs, oPut);
        sys::SetLastError(uLastError);  // printing may have changed it
        AppendSystemError(uSystemError, oPut);
        oPut("\n");
    };

    Msg_Exception oError;
    oError.SetKind(uSystemError != 0 ? Msg_Kind::System : eKind);
    Msg_Banner oBanner;
    bool bNested = false;
    {
        const Msg_Guard oGuard(Msg_Console::Lock());
        bNested = oGuard.IsNested();
        if (!bNested) Msg_Console::Begin();
        if (iMode == Msg::MODE_REPORT) {
            FormatInto([](std::string_view sPiece) { Msg_Console::Write(sPiece); });
            if (!bNested) Msg_Console::Flush();
            sys::SetLastError(uLastError);
            return;
        }
        if (!bNested && Msg::Banner()) {
            oBanner.Format(static_cast<i3_t>(oError.Time()));
            Msg_Console::Write(oBanner.Text());
            Msg_Console::Flush();
        }
        FormatInto([&](std::string_view s) { oError.Append(s.data(), s.size()); });
    }
    // A writer that raises runs under the message lock and must not wait for the log's.
    if (!bNested) Msg_LogFile::WriteMessage(oBanner.Text(), oError.what());
    sys::SetLastError(uLastError);
    if (iMode == Msg::MODE_RAISE) throw oError;
}

int Msg::Emit(int iMode, const char* sText, u2_t uSystemError, const char* a0, const char* a1,
              const char* a2, const char* a3, const char* a4, const char* a5, const char* a6,
              const char* a7, const char* a8, const char* a9) {
    Msg_Emit(iMode, Msg_Kind::Other, sText, uSystemError, {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9});
    return 0;
}

void Msg::Rethrow(const char* sName, const char* sDetail) {
    try {
        throw;
    } catch (Msg_Exception& oError) {
        oError.AddWhere(sName, sDetail);
        throw;
    } catch (const std::exception& oError) {
        const char* const sWhat = oError.what();
        const bool bWhat = sWhat != nullptr && *sWhat != 0;
        if (sDetail == nullptr) {
            bWhat ? UnexpectedException(sName, sWhat) : UnexpectedException(sName);
        } else {
            bWhat ? UnexpectedExceptionWithDetail(sName, sDetail, sWhat)
                  : UnexpectedExceptionWithDetail(sName, sDetail);
        }
        throw;
    }
}

}  // namespace vok
