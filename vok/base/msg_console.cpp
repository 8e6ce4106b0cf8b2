// SPDX-License-Identifier: MIT
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"
#include "vok/base/msg_channel.h"
#include "vok/base/utf8.h"
#include "vok/sys/sys.h"

// The compiler's date, "Nov 22 2018"; packagers pin it.
#ifndef VOK_BUILD_DATE
#define VOK_BUILD_DATE __DATE__
#endif

namespace vok {

namespace {

// What the built-in writers collect until a message ends. Pieces that are longer go out
// in several parts, never within a character.
class Collection {
  public:
    // pChar: one UTF-8 sequence. pOut gets the collection when it is full.
    void Add(const char* pChar, std::size_t uSize, void (*pOut)()) noexcept {
        if (m_uUsed + uSize >= sizeof(m_sBuf)) pOut();
        std::memcpy(m_sBuf + m_uUsed, pChar, uSize);
        m_uUsed += uSize;
        m_sBuf[m_uUsed] = 0;
    }
    [[nodiscard]] const char* Text() const noexcept { return m_sBuf; }
    [[nodiscard]] std::size_t Size() const noexcept { return m_uUsed; }
    void Clear() noexcept { m_uUsed = 0; }

  private:
    char m_sBuf[2048] = "";
    std::size_t m_uUsed = 0;
};

// The end of a message that no writer took.
class Fallback {
  public:
    void Add(std::string_view sText) noexcept {
        // Room for the text, its NUL and one spare byte.
        const std::size_t uRoom = sizeof(m_sBuf) - 2 - m_uUsed;
        std::size_t uSize = std::min(sText.size(), uRoom);
        // Not within a character: back to where one starts.
        if (uSize < sText.size()) {
            while (uSize > 0 && (static_cast<u0_t>(sText[uSize]) & 0xC0) == 0x80) --uSize;
        }
        std::memcpy(m_sBuf + m_uUsed, sText.data(), uSize);
        m_uUsed += uSize;
        m_sBuf[m_uUsed] = 0;
    }
    [[nodiscard]] const char* Text() const noexcept { return m_sBuf; }
    void Clear() noexcept {
        m_uUsed = 0;
        m_sBuf[0] = 0;
    }

  private:
    char m_sBuf[1024] = "";
    std::size_t m_uUsed = 0;
};

void WriteClipped(const char* pText, std::size_t uSize);
void FlushToStream();
void WriteToDebugger(const char* pText, std::size_t uSize);
void FlushToDebugger();

constexpr Msg::Writer STREAM_WRITER{WriteClipped, FlushToStream};
constexpr Msg::Writer DEBUG_WRITER{WriteToDebugger, FlushToDebugger};

constinit Msg_Lock g_oLock;
constinit std::atomic<int> g_iLevel{0};
constinit std::atomic<bool> g_bBanner{true};
constinit std::atomic<bool> g_bDebugOutput{false};
constinit std::atomic<Msg::DebugSink> g_pDebugSink{nullptr};

// Under g_oLock:
constinit Msg::Writer g_oWriter = STREAM_WRITER;
constinit Collection g_oCollection;
constinit Fallback g_oFallback;
constinit bool g_bInWriter = false;

void WriteClipped(const char* pText, std::size_t uSize) {
    const char* const pEnd = pText + uSize;
    while (pText != pEnd) {
        char sChar[4];
        const u2_t uCode = std::min<u2_t>(DecodeUtf8(pText, pEnd), 255);
        g_oCollection.Add(sChar, EncodeUtf8(uCode, sChar), FlushToStream);
    }
}

void FlushToStream() {
    const bool bError = g_iLevel.load(std::memory_order_relaxed) > 0;
    if (g_oCollection.Size() > 0) {
        sys::WriteToConsole(bError, g_oCollection.Text(), g_oCollection.Size());
    }
    g_oCollection.Clear();
}

void WriteToDebugger(const char* pText, std::size_t uSize) {
    const char* const pEnd = pText + uSize;
    while (pText != pEnd) {
        char sChar[4];
        g_oCollection.Add(sChar, EncodeUtf8(DecodeUtf8(pText, pEnd), sChar), FlushToDebugger);
    }
}

void FlushToDebugger() {
    if (g_oCollection.Size() > 0) Msg_Debug::Write(g_oCollection.Text());
    g_oCollection.Clear();
}

const Msg::Writer& CurrentWriter() noexcept {
    return g_bDebugOutput.load(std::memory_order_relaxed) ? DEBUG_WRITER : g_oWriter;
}

// Calls out of the library. A writer that emits a message comes back here and finds
// g_bInWriter set; what it throws ends here.
template <class F>
bool CallOut(F&& oCall) noexcept {
    if (g_bInWriter) return false;
    g_bInWriter = true;
    bool bGood = true;
    try {
        oCall();
    } catch (...) {
        bGood = false;
    }
    g_bInWriter = false;
    return bGood;
}

}  // namespace

// ---- the private side -------------------------------------------------------

void Msg_Banner::Format(i3_t iTime) noexcept {
    const sys::Calendar oNow = sys::LocalTime(iTime);
    std::snprintf(m_sText, sizeof(m_sText),
                  "<%lu,%lu> ### ===== %04d-%02d-%02d %02d:%02d:%02d (vok %u.%u.%u-%u  %s) =====\n",
                  static_cast<unsigned long>(sys::ProcessId()),
                  static_cast<unsigned long>(sys::ThreadId()), oNow.iYear, oNow.iMonth, oNow.iDay,
                  oNow.iHour, oNow.iMinute, oNow.iSecond, VERSION_MAJOR, VERSION_MINOR,
                  VERSION_BUILD, VERSION_REVISION, VOK_BUILD_DATE);
}

Msg_Lock& Msg_Console::Lock() noexcept {
    return g_oLock;
}

void Msg_Console::Begin() noexcept {
    g_iLevel.store(0, std::memory_order_relaxed);
    g_oFallback.Clear();
}

void Msg_Console::Write(std::string_view sText) noexcept {
    if (sText.empty()) return;
    const Msg::Writer oWriter = CurrentWriter();
    const bool bTaken =
        oWriter.pWrite != nullptr && CallOut([&] { oWriter.pWrite(sText.data(), sText.size()); });
    if (!bTaken) g_oFallback.Add(sText);
}

void Msg_Console::Flush() noexcept {
    const Msg::Writer oWriter = CurrentWriter();
    if (oWriter.pFlush != nullptr) CallOut([&] { oWriter.pFlush(); });
}

namespace {

// False when there is no sink.
bool GiveToSink(const char* sText) noexcept {
    const Msg::DebugSink pSink = g_pDebugSink.load(std::memory_order_acquire);
    if (pSink == nullptr) return false;
    try {
        pSink(sText);
    } catch (...) {  // its errors are not ours to report
    }
    return true;
}

}  // namespace

void Msg_Debug::Trace(const char* sText) noexcept {
    if (!GiveToSink(sText)) sys::DebugOutput(sText);
}

void Msg_Debug::Write(const char* sText) noexcept {
    if (GiveToSink(sText)) return;
    if (sys::HasDebugger() || g_bDebugOutput.load(std::memory_order_relaxed)) {
        sys::DebugOutput(sText);
    }
}

// ---- the public side --------------------------------------------------------

Msg::Writer Msg::SetWriter(const Writer& oWriter) noexcept {
    const Msg_Guard oGuard(g_oLock);
    return std::exchange(g_oWriter, oWriter);
}

Msg::Writer Msg::DefaultWriter() noexcept {
    return STREAM_WRITER;
}

void Msg::SetConsoleLevel(int iLevel) noexcept {
    g_iLevel.store(iLevel, std::memory_order_relaxed);
}

int Msg::ConsoleLevel() noexcept {
    return g_iLevel.load(std::memory_order_relaxed);
}

std::string Msg::HeldBack() {
    const Msg_Guard oGuard(g_oLock);
    return g_oFallback.Text();
}

bool Msg::SetBanner(bool bOn) noexcept {
    return g_bBanner.exchange(bOn, std::memory_order_relaxed);
}

bool Msg::Banner() noexcept {
    return g_bBanner.load(std::memory_order_relaxed);
}

bool Msg::SetDebugOutput(bool bOn) noexcept {
    const Msg_Guard oGuard(g_oLock);
    return g_bDebugOutput.exchange(bOn, std::memory_order_relaxed);
}

Msg::DebugSink Msg::SetDebugSink(DebugSink pSink) noexcept {
    return g_pDebugSink.exchange(pSink, std::memory_order_acq_rel);
}

void Msg::LogException(const Msg_Exception& oError) noexcept {
    const Msg_Guard oGuard(g_oLock);
    Msg_Banner oBanner;
    oBanner.Format(static_cast<i3_t>(oError.Time()));
    Msg_Console::Write(oBanner.Text());
    Msg_Console::Write(oError.what());
    Msg_Console::Flush();
}

void Msg::Abort(int iArgc, const char* const* psArgv) noexcept {
    const Msg_Guard oGuard(g_oLock);
    Msg_Console::Write("******** PROGRAM ABORTED ********** \n");
    for (int iNth = 0; iNth < iArgc && psArgv[iNth] != nullptr; ++iNth) {
        Msg_Console::Write(psArgv[iNth]);
        Msg_Console::Write(" ");
    }
    Msg_Console::Write("\n");
    Msg_Console::Flush();
}

}  // namespace vok
