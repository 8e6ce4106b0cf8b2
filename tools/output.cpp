#include "tools/output.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tools/path.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

// The file to be removed when the program is interrupted; null when there is none.
std::atomic<const char*> g_sHalfWritten{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);

extern "C" void OnInterrupt(int) {
    if (const char* sPath = g_sHalfWritten.load()) vok::sys::RemoveOnInterrupt(sPath);
    std::_Exit(130);
}

}  // namespace

void HandleInterrupts() {
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

Output::Output(const std::string& sPath, bool bOpen) : m_sPath(sPath) {
    if (sPath == "-") return;
    m_sBeside = sPath + '.' + std::to_string(vok::sys::ProcessId()) + ".part";
    g_sHalfWritten.store(m_sBeside.c_str());
    if (bOpen) m_oFile.Open(vok::Str(m_sBeside), "Tw");
}

Output::~Output() {
    if (m_sBeside.empty()) return;
    try {
        m_oFile.Close();
    } catch (const std::exception&) {
        // The file goes away anyhow.
    }
    std::error_code oIgnored;
    std::filesystem::remove(ToPath(m_sBeside), oIgnored);
    g_sHalfWritten.store(nullptr);
}

vok::File_Stream& Output::Stream() noexcept {
    return m_sPath == "-" ? static_cast<vok::File_Stream&>(m_oBuffer) : m_oFile;
}

void Output::Commit() {
    if (m_sPath == "-") {
        vok::sys::SetBinary(stdout);
        const std::size_t uSize = m_oBuffer.Size();
        const std::size_t uWritten = std::fwrite(m_oBuffer.Data(), 1, uSize, stdout);
        if (uWritten != uSize || std::fflush(stdout) != 0) {
            vok::Msg::FileWriteError("-", uSize - uWritten, 0, vok::sys::RuntimeError());
        }
        return;
    }
    m_oFile.Close();
    std::filesystem::rename(ToPath(m_sBeside), ToPath(m_sPath));
    g_sHalfWritten.store(nullptr);
    m_sBeside.clear();
}

}  // namespace tools
