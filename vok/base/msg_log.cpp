// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/base/msg_channel.h"
#include "vok/base/utf8.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr std::size_t PATH_SIZE = 1024;
// A path this long is not tried at all.
constexpr std::size_t PATH_LIMIT = 1018;
constexpr const char* PATH_INSTEAD_OF_LONG = "c:/tmp/vok2.log";

constexpr const char* CANDIDATES[] = {
    "C:/tmp/vok2.log", "C:/temp/vok2.log", "D:/tmp/vok2.log", "D:/temp/vok2.log",
    "E:/tmp/vok2.log", "E:/temp/vok2.log", "F:/tmp/vok2.log", "F:/temp/vok2.log",
    "G:/tmp/vok2.log", "G:/temp/vok2.log", "C:/vok2.log",     "D:/vok2.log",
    "E:/vok2.log",     "F:/vok2.log",      "G:/vok2.log",     "/tmp/vok2.log",
};

constinit Msg_Lock g_oLock;
constinit char g_sPath[PATH_SIZE] = "";  // under g_oLock; empty: no log

std::FILE* OpenForAppend(const char* sPath) noexcept {
    return sys::OpenFile(sPath, "at", sys::Sharing::All);
}

bool CanAppend(const char* sPath) noexcept {
    std::FILE* const pFile = OpenForAppend(sPath);
    if (pFile == nullptr) return false;
    std::fclose(pFile);
    return true;
}

void SetPath(std::string_view sPath) noexcept {
    const std::size_t uSize = std::min(sPath.size(), PATH_SIZE - 1);
    std::memcpy(g_sPath, sPath.data(), uSize);
    g_sPath[uSize] = 0;
}

// Characters above 127 become "~".
void SetAsciiPath(const char* sPath) noexcept {
    const char* const pEnd = sPath + std::strlen(sPath);
    std::size_t uUsed = 0;
    while (sPath != pEnd && uUsed < PATH_SIZE - 1) {
        const u2_t uCode = DecodeUtf8(sPath, pEnd);
        g_sPath[uUsed++] = uCode > 127 ? '~' : static_cast<char>(uCode);
    }
    g_sPath[uUsed] = 0;
}

// The caller holds g_oLock.
void Write(const char* sText, int iFlags) noexcept {
    if ((iFlags & Msg::LOG_NO_DEBUG) == 0) {
        Msg_Debug::Write(sText);
        if ((iFlags & Msg::LOG_NEWLINE) != 0) Msg_Debug::Write("\n");
    }
    if (g_sPath[0] == 0) return;
    std::FILE* const pFile = OpenForAppend(g_sPath);
    if (pFile == nullptr) return;
    if ((iFlags & Msg::LOG_TIME) != 0) {
        const sys::Calendar oNow = sys::LocalTime(sys::UnixTime());
        std::fprintf(pFile, "%04d-%02d-%02d %02d:%02d:%02d ", oNow.iYear, oNow.iMonth, oNow.iDay,
                     oNow.iHour, oNow.iMinute, oNow.iSecond);
    }
    if ((iFlags & Msg::LOG_IDS) != 0) {
        std::fprintf(pFile, "<%lu,%lu> ", static_cast<unsigned long>(sys::ProcessId()),
                     static_cast<unsigned long>(sys::ThreadId()));
    }
    std::fputs(sText, pFile);
    if ((iFlags & Msg::LOG_NEWLINE) != 0) std::fputc('\n', pFile);
    std::fclose(pFile);
}

// As long as a write takes, also on a slow disk.
constexpr unsigned PATIENCE_MS = 500;

// A child of fork has one thread: locks that others held would never be given back. So they are
// taken around it, in their order. A thread that forks while it holds one, in a writer or a debug
// sink, goes on holding it in the child, under the ids it has there.
enum class Held : unsigned char { Not, Before, ForTheFork };
thread_local Held t_eLog = Held::Not;
thread_local Held t_eMessage = Held::Not;
thread_local u2_t t_uParent = 0;

Held Take(Msg_Lock& oLock) noexcept {
    if (oLock.IsMine()) return Held::Before;
    oLock.Enter();
    return Held::ForTheFork;
}

void GiveBack(Msg_Lock& oLock, Held eHeld) noexcept {
    const bool bChild = sys::ProcessId() != t_uParent;
    if (eHeld == Held::Before) {
        oLock.NoteHolder();
    } else if (eHeld == Held::ForTheFork || bChild) {  // nobody is left in the child to hold it
        oLock.Leave();
    }
}

void BeforeFork() {
    t_uParent = sys::ProcessId();
    // Who holds the message lock must not wait for the log lock.
    const bool bOrder = g_oLock.IsMine() || !Msg_Console::Lock().IsMine();
    t_eLog = bOrder ? Take(g_oLock) : Held::Not;
    t_eMessage = Take(Msg_Console::Lock());
}
void AfterFork() {
    GiveBack(Msg_Console::Lock(), t_eMessage);
    GiveBack(g_oLock, t_eLog);
}

// Switches the log off when the library is unloaded, unless a thread that is gone, or that waits
// for this one, is in the middle of a write.
struct Library {
    Library() { sys::OnFork(BeforeFork, AfterFork); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() {
        constexpr unsigned LAST_WAIT_MS = 50;
        const Msg_Guard oGuard(g_oLock, LAST_WAIT_MS);
        if (oGuard.IsHeld()) g_sPath[0] = 0;
    }
};
const Library g_oLibrary;

}  // namespace

void Msg_LogFile::WriteMessage(const char* sBanner, const char* sText) noexcept {
    const Msg_Guard oGuard(g_oLock);
    if (oGuard.IsNested()) return;
    if (*sBanner != 0) Write(sBanner, 0);
    Write(sText, Msg::LOG_IDS);
}

void Msg::Log(const char* sText, int iFlags) noexcept {
    if (sText == nullptr) return;
    if (Msg_Console::Lock().IsMine()) {
        const Msg_Guard oGuard(g_oLock, PATIENCE_MS);
        if (oGuard.IsHeld() && !oGuard.IsNested()) Write(sText, iFlags);
        return;
    }
    const Msg_Guard oGuard(g_oLock);
    if (!oGuard.IsNested()) Write(sText, iFlags);
}

void Msg::SetLogFile(const char* sPath) noexcept {
    const Msg_Guard oGuard(g_oLock);
    g_sPath[0] = 0;
    if (sPath == nullptr || *sPath == 0) return;
    SetAsciiPath(std::strlen(sPath) >= PATH_LIMIT ? PATH_INSTEAD_OF_LONG : sPath);
    if (CanAppend(g_sPath)) return;
    g_sPath[0] = 0;
    for (const char* sCandidate : CANDIDATES) {
        if (!CanAppend(sCandidate)) continue;
        SetPath(sCandidate);
        return;
    }
}

std::string Msg::LogFile() {
    const Msg_Guard oGuard(g_oLock);
    return g_sPath;
}

}  // namespace vok
