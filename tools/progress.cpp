// SPDX-License-Identifier: MIT
#include "tools/progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "vok/sys/sys.h"

namespace tools {

namespace {

std::atomic<bool> g_bShown{false};
std::atomic<bool> g_bHidden{false};
std::atomic<bool> g_bDrawn{false};

}  // namespace

Progress::Progress(const char* sWhat, std::uint64_t uTotal) : m_sWhat(sWhat), m_uTotal(uTotal) {
    if (vok::sys::IsTerminal(stderr) && !g_bShown.exchange(true))
        m_oThread = std::thread([this] { Run(); });
}

Progress::~Progress() {
    if (!m_oThread.joinable()) return;
    {
        const std::lock_guard oLock(m_oMutex);
        m_bEnd = true;
    }
    m_oWake.notify_one();
    m_oThread.join();
    g_bShown = false;
}

void Progress::Run() {
    using namespace std::chrono;
    const auto oStart = steady_clock::now();
    std::unique_lock oLock(m_oMutex);
    bool bDrawn = false;
    while (!m_oWake.wait_for(oLock, bDrawn ? milliseconds(100) : seconds(1),
                             [this] { return m_bEnd; })) {
        Draw(duration<double>(steady_clock::now() - oStart).count());
        bDrawn = true;
    }
    if (bDrawn && !g_bHidden) std::fputs("\r\x1b[K", stderr);
}

void HideProgress() noexcept {
    if (!g_bHidden.exchange(true) && g_bDrawn) std::fputs("\r\x1b[K", stderr);
}

void Progress::Draw(double dSeconds) const {
    if (g_bHidden) return;
    g_bDrawn = true;
    constexpr unsigned WIDTH = 30;
    const double dDone = static_cast<double>(m_uDone.load(std::memory_order_relaxed));
    std::string sLine = m_sWhat;
    char s[64];
    if (m_uTotal != 0) {
        const double dShare = std::min(dDone / static_cast<double>(m_uTotal), 1.0);
        const auto uBar = static_cast<std::size_t>(dShare * WIDTH);
        std::snprintf(s, sizeof(s), "] %3.0f %%", 100 * dShare);
        sLine += " [" + std::string(uBar, '#') + std::string(WIDTH - uBar, '.') + s;
    }
    if (dDone > 0) {
        std::snprintf(s, sizeof(s), " %.0f MB, %.0f MB/s", dDone / 1e6, dDone / 1e6 / dSeconds);
    } else {
        std::snprintf(s, sizeof(s), " %.1f s", dSeconds);
    }
    std::fprintf(stderr, "\r\x1b[K%s%s", sLine.c_str(), s);
    std::fflush(stderr);
}

}  // namespace tools
