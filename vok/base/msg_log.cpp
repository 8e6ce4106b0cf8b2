#include <algorithm>
#include <cstdio>
#include <cstring>

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

// Switches the log off when the library is unloaded.
struct AtShutdown {
    AtShutdown() = default;
    AtShutdown(const AtShutdown&) = delete;
    AtShutdown& operator=(const AtShutdown&) = delete;
    ~AtShutdown() { Msg::SetLogFile(nullptr); }
};
const AtShutdown g_oAtShutdown;

}  // namespace

void Msg_LogFile::WriteMessage(const char* sBanner, const char* sText) noexcept {
    const Msg_Guard oGuard(g_oLock);
    if (oGuard.IsNested()) return;
    if (*sBanner != 0) Write(sBanner, 0);
    Write(sText, Msg::LOG_IDS);
}

void Msg::Log(const char* sText, int iFlags) noexcept {
    const Msg_Guard oGuard(g_oLock);
    if (oGuard.IsNested() || sText == nullptr) return;
    Write(sText, iFlags);
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
