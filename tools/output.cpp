// SPDX-License-Identifier: MIT
#include "tools/output.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "tools/pager.h"
#include "tools/path.h"
#include "tools/print.h"
#include "tools/say.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

// A file that is being written, to be removed when the program is interrupted.
struct HalfWritten {
    vok::File_Replacement::Watch sPath{nullptr};
    std::atomic<bool> bTaken{false};
};
static_assert(vok::File_Replacement::Watch::is_always_lock_free);
HalfWritten g_aoHalfWritten[MOST_AT_ONCE];
// No other file is begun.
std::atomic<bool> g_bEnding{false};
// The file to be cut back then, and to which size.
std::atomic<const char*> g_sAppended{nullptr};
std::atomic<vok::i3_t> g_iSizeBefore{0};

void RemoveHalfWritten() noexcept {
    for (const HalfWritten& o : g_aoHalfWritten) {
        if (const char* sPath = o.sPath.load()) vok::sys::RemoveOnInterrupt(sPath);
    }
}

extern "C" void OnSignal(int iSignal) {
    g_bEnding = true;
    RemoveHalfWritten();
    // What another thread was about to make when it was looked for is there by now.
    vok::sys::SleepMs(5);
    RemoveHalfWritten();
    if (const char* sPath = g_sAppended.load()) {
        (void)vok::sys::TruncateFile(sPath, g_iSizeBefore.load());
    }
    vok::sys::FinishPager();
    std::_Exit(128 + iSignal);
}

}  // namespace

void HandleSignals() {
    for (const int iSignal : vok::sys::EndingSignals()) {
        // What was ignored when the program began, as under nohup, stays so.
        if (std::signal(iSignal, OnSignal) == SIG_IGN) std::signal(iSignal, SIG_IGN);
    }
    vok::sys::IgnoreFileSizeSignal();
}

Output::Output(const std::string& sPath) {
    if (sPath == "-") return;
    const fs::path oPath = ToPath(sPath);
    const fs::path oFolder = oPath.parent_path();
    if (!oFolder.empty() && !fs::is_directory(oFolder)) {
        throw std::invalid_argument(Say("there is no folder \"%0\"", {ToText(oFolder)}));
    }
    const fs::file_status oThere = fs::status(oPath);
    if (fs::is_directory(oThere)) throw std::invalid_argument(Say("\"%0\" is a folder", {sPath}));
    if (fs::exists(oThere) && !vok::sys::MayWrite(sPath.c_str())) {
        throw std::invalid_argument(Say("\"%0\" may not be written", {sPath}));
    }
    HalfWritten* p = g_aoHalfWritten;
    while (p->bTaken.exchange(true)) {
        if (++p == std::end(g_aoHalfWritten)) throw std::length_error("too many files");
    }
    m_pTaken.reset(&p->bTaken);
    while (g_bEnding) vok::sys::SleepMs(1000);
    m_oFile.emplace(vok::Str(sPath), &p->sPath);
}

vok::File_Stream& Output::Stream() noexcept {
    return m_oFile.has_value() ? m_oFile->GetFile() : static_cast<vok::File_Stream&>(m_oBuffer);
}

vok::File* Output::GetFile() noexcept {
    return m_oFile.has_value() ? &m_oFile->GetFile() : nullptr;
}

void Output::Commit(bool bDurable) {
    if (m_oFile.has_value()) return m_oFile->Commit(bDurable);
    StandardOutput().Write(m_oBuffer.Data(), m_oBuffer.Size());
    FinishPrinting();
}

Appending::Appending(const std::string& sPath) : m_sPath(sPath) {
    g_iSizeBefore.store(vok::File::Size(vok::Str(sPath)));
    g_sAppended.store(m_sPath.c_str());
}

Appending::~Appending() {
    g_sAppended.store(nullptr);
}

}  // namespace tools
