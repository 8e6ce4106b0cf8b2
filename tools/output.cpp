// SPDX-License-Identifier: MIT
#include "tools/output.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "tools/pager.h"
#include "tools/path.h"
#include "tools/say.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

// The file to be removed when the program is interrupted; null when there is none.
vok::File_Replacement::Watch g_sHalfWritten{nullptr};
static_assert(vok::File_Replacement::Watch::is_always_lock_free);
// The file to be cut back then, and to which size.
std::atomic<const char*> g_sAppended{nullptr};
std::atomic<vok::i3_t> g_iSizeBefore{0};

extern "C" void OnSignal(int iSignal) {
    if (const char* sPath = g_sHalfWritten.load()) vok::sys::RemoveOnInterrupt(sPath);
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
    m_oFile.emplace(vok::Str(sPath), &g_sHalfWritten);
}

vok::File_Stream& Output::Stream() noexcept {
    return m_oFile.has_value() ? m_oFile->GetFile() : static_cast<vok::File_Stream&>(m_oBuffer);
}

vok::File* Output::GetFile() noexcept {
    return m_oFile.has_value() ? &m_oFile->GetFile() : nullptr;
}

namespace {

constexpr vok::u3_t UNBOUNDED = ~vok::u3_t{0};
// Bytes that may still be printed.
std::atomic<vok::u3_t> g_uAllowed{UNBOUNDED};

[[noreturn]] void RaiseUnprinted(std::size_t uBytes) {
    vok::Msg::FileWriteError("standard output", uBytes, 0, vok::sys::RuntimeError());
}

void Put(std::string_view s) {
    const std::size_t uWritten = s.empty() ? 0 : std::fwrite(s.data(), 1, s.size(), stdout);
    if (uWritten != s.size()) RaiseUnprinted(s.size() - uWritten);
}

}  // namespace

void Output::Commit(bool bDurable) {
    if (m_oFile.has_value()) return m_oFile->Commit(bDurable);
    vok::sys::SetBinary(stdout);
    Put({m_oBuffer.Data(), m_oBuffer.Size()});
    FinishPrinting();
}

Appending::Appending(const std::string& sPath) : m_sPath(sPath) {
    g_iSizeBefore.store(vok::File::Size(vok::Str(sPath)));
    g_sAppended.store(m_sPath.c_str());
}

Appending::~Appending() {
    g_sAppended.store(nullptr);
}

// ---- standard output --------------------------------------------------------

void Print(std::string_view s) {
    if (s.size() > g_uAllowed) {
        throw std::length_error(
            Say("the rest is left out: it would be much longer than what it was read from"));
    }
    StartPager();
    Put(s);
    g_uAllowed -= s.size();
}

void AllowPrinting(vok::u3_t uInputBytes) noexcept {
    constexpr vok::u3_t FREE = vok::u3_t{64} << 20;
    if (g_uAllowed == UNBOUNDED) g_uAllowed = 0;
    g_uAllowed += FREE;
    AllowMorePrinting(uInputBytes);
}

void AllowMorePrinting(vok::u3_t uInputBytes) noexcept {
    constexpr vok::u3_t PER_BYTE = 200;
    if (g_uAllowed != UNBOUNDED) g_uAllowed += PER_BYTE * uInputBytes;
}

vok::File_Stream& StandardOutput() {
    class Stream final : public vok::File_Stream {
      public:
        Stream() { vok::sys::SetBinary(stdout); }
        std::size_t Read(vok::Arr<char>&, std::size_t, bool) override {
            vok::Msg::StreamNotOpenForRead();
        }
        std::size_t Read(void*, std::size_t, bool) override { vok::Msg::StreamNotOpenForRead(); }
        std::size_t Write(const void* pSource, std::size_t uCount) override {
            Put({static_cast<const char*>(pSource), uCount});
            return uCount;
        }
        void Seek(vok::i3_t iOffset, int iWhence) override {
            vok::Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        [[nodiscard]] vok::i3_t Tell() override { return -1; }
        int Flush() override {
            FinishPrinting();
            return 0;
        }
        [[nodiscard]] const char* Name() const override { return "standard output"; }
    };
    static Stream s_oStream;
    return s_oStream;
}

void FinishPrinting() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) RaiseUnprinted(0);
}

}  // namespace tools
