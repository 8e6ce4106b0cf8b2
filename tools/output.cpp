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
#include <system_error>

#include "tools/pager.h"
#include "tools/path.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

// The file to be removed when the program is interrupted; null when there is none.
std::atomic<const char*> g_sHalfWritten{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);
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

// Where links lead to, also to a file that is not there yet.
fs::path Followed(const fs::path& oPath) {
    fs::path oHere = oPath;
    for (int iLinks = 0; iLinks < 40 && fs::is_symlink(fs::symlink_status(oHere)); ++iLinks) {
        const fs::path oTarget = fs::read_symlink(oHere);
        oHere = oTarget.is_absolute() ? oTarget : oHere.parent_path() / oTarget;
    }
    return oHere;
}

}  // namespace

void HandleSignals() {
    for (const int iSignal : vok::sys::EndingSignals()) {
        // What was ignored when the program began, as under nohup, stays so.
        if (std::signal(iSignal, OnSignal) == SIG_IGN) std::signal(iSignal, SIG_IGN);
    }
    vok::sys::IgnoreFileSizeSignal();
}

Output::Output(const std::string& sPath, bool bOpen) : m_sPath(sPath) {
    if (sPath == "-") return;
    fs::path oPath = Followed(ToPath(sPath));
    // Some links lead to what has no path, such as the pipe that is the standard output.
    std::error_code oNone;
    const bool bStrange = fs::exists(ToPath(sPath)) && !fs::equivalent(ToPath(sPath), oPath, oNone);
    if (bStrange) oPath = ToPath(sPath);
    const fs::path oFolder = oPath.parent_path();
    if (!oFolder.empty() && !fs::is_directory(oFolder)) {
        throw std::invalid_argument("there is no folder \"" + ToText(oFolder) + "\"");
    }
    m_sPath = ToText(oPath);
    const fs::file_status oThere = fs::status(oPath);
    if (fs::is_directory(oThere)) throw std::invalid_argument("\"" + sPath + "\" is a folder");
    if (fs::exists(oThere) && !vok::sys::MayWrite(m_sPath.c_str())) {
        throw std::invalid_argument("\"" + sPath + "\" may not be written");
    }
    if (bStrange || (fs::exists(oThere) && !fs::is_regular_file(oThere))) {
        if (!bOpen) throw std::invalid_argument("\"" + sPath + "\" is no regular file");
        m_oFile.Open(vok::Str(m_sPath), "Tws");
        return;
    }
    MakeBeside();
    try {
        if (bOpen) m_oFile.Open(vok::Str(m_sBeside), "Tw");
    } catch (...) {
        RemoveBeside();
        throw;
    }
}

namespace {

// The name of the last file that was made beside its place, and that place.
std::string g_sLastBeside;
std::string g_sLastPlace;

}  // namespace

std::string WithPlace(std::string sMessage) {
    const std::size_t uAt = g_sLastBeside.empty() ? sMessage.npos : sMessage.find(g_sLastBeside);
    return uAt == sMessage.npos ? sMessage
                                : sMessage.replace(uAt, g_sLastBeside.size(), g_sLastPlace);
}

// A new file under a short name that nobody else has.
void Output::MakeBeside() {
    static unsigned s_uNames = 0;
    for (;;) {
        const fs::path oName = ToPath(".vok-" + std::to_string(vok::sys::ProcessId()) + '-' +
                                      std::to_string(s_uNames++));
        m_sBeside = ToText(ToPath(m_sPath).parent_path() / oName);
        g_sLastBeside = m_sBeside;
        g_sLastPlace = m_sPath;
        g_sHalfWritten.store(m_sBeside.c_str());  // in front: a signal may come at any time
        if (vok::sys::CreateNew(m_sBeside.c_str())) return;
        const vok::u2_t uError = vok::sys::RuntimeError();
        g_sHalfWritten.store(nullptr);
        if (fs::exists(fs::symlink_status(ToPath(m_sBeside)))) continue;
        m_sBeside.clear();
        vok::Msg::CouldNotOpenFile(m_sPath.c_str(), "w", vok::File::OpenFiles(), uError);
    }
}

void Output::RemoveBeside() noexcept {
    std::error_code oIgnored;
    try {
        fs::remove(ToPath(m_sBeside), oIgnored);
    } catch (const std::exception&) {
        vok::sys::RemoveOnInterrupt(m_sBeside.c_str());  // no memory for a path
    }
    g_sHalfWritten.store(nullptr);
}

Output::~Output() {
    if (m_sBeside.empty()) return;
    try {
        m_oFile.Close();
    } catch (const std::exception&) {
        // The file goes away anyhow.
    }
    RemoveBeside();
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

vok::File_Stream& Output::Stream() noexcept {
    return m_sPath == "-" ? static_cast<vok::File_Stream&>(m_oBuffer) : m_oFile;
}

void Output::Commit(bool bDurable) {
    if (m_sPath == "-") {
        vok::sys::SetBinary(stdout);
        Put({m_oBuffer.Data(), m_oBuffer.Size()});
        return FinishPrinting();
    }
    m_oFile.Close();
    if (m_sBeside.empty()) return;
    // On the disk before it takes the place of what was there, and its new name after that. Its
    // mode comes last: it may not let its owner read.
    if (bDurable && !vok::sys::SyncFile(m_sBeside.c_str())) {
        vok::Msg::FileWriteError(m_sPath.c_str(), 0, 0, vok::sys::RuntimeError());
    }
    vok::sys::CopyMode(m_sPath.c_str(), m_sBeside.c_str());
    const std::string sFolder = ToText(ToPath(m_sPath).parent_path());
    std::error_code oError;
    fs::rename(ToPath(m_sBeside), ToPath(m_sPath), oError);
    if (oError) {
        throw std::runtime_error("could not write \"" + m_sPath + "\": " + oError.message());
    }
    g_sHalfWritten.store(nullptr);
    m_sBeside.clear();
    if (bDurable) (void)vok::sys::SyncFile(sFolder.c_str());
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
            "the rest is left out: it would be much longer than what it was read from");
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
