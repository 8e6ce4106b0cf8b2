// SPDX-License-Identifier: MIT
#include "vok/file/file.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string_view>
#include <utility>

#include <zlib.h>

#include "vok/base/where.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr unsigned DEFAULT_LEVEL = 3;
constexpr unsigned MAX_LEVEL = 13;  // what lies above repeats 4096 times as well
constexpr unsigned FIRST_WAIT_MS = 5;
constexpr unsigned MORE_WAIT_MS = 10;
constexpr unsigned GZIP_BUFFER = 0x10000;

// Why an open failed when trying again would not help: bad arguments, no memory, no
// handles left, nothing there that can be opened. Numbers below 35 mean the same on every
// platform.
constexpr u2_t LASTING_ERRORS[] = {3, 4, 7, 8, 10, 12, 14, 18, 22, 23, 24, 25, 29, 30, 31, 33, 34};

constexpr u2_t INVALID_ARGUMENT = 22;

std::atomic<u3_t> g_uOpenFiles{0};
std::atomic<u3_t> g_uPeakOpenFiles{0};

void DefaultSleep(unsigned uMilliseconds) {
    sys::SleepMs(uMilliseconds);
}
std::atomic<File::SleepMs> g_pSleep{&DefaultSleep};

void CountOpen() noexcept {
    const u3_t uOpen = g_uOpenFiles.fetch_add(1) + 1;
    u3_t uPeak = g_uPeakOpenFiles.load();
    while (uPeak < uOpen && !g_uPeakOpenFiles.compare_exchange_weak(uPeak, uOpen)) {
    }
}

// The letters given to Open, made sense of.
struct Attributes {
    explicit Attributes(const char* sText) noexcept;

    u2_t m_uFlags = 0;
    u2_t m_uRetries = 0;
    char m_sMode[5] = {};  // for the C library: "r+bz"
};

Attributes::Attributes(const char* sText) noexcept {
    unsigned uLevel = DEFAULT_LEVEL;
    if (*sText == 'T') {
        uLevel = 0;
        ++sText;
    }
    bool bPlus = false;
    for (; *sText != 0; ++sText) {
        switch (*sText) {
            case 'R': uLevel = std::min(uLevel + 1, MAX_LEVEL); break;
            case 'r': m_uFlags |= File::FLAG_READ; break;
            case 'w': m_uFlags |= File::FLAG_WRITE; break;
            case 'a': m_uFlags |= File::FLAG_WRITE | File::FLAG_APPEND; break;
            case '+': bPlus = true; break;
            case 't': m_uFlags |= File::FLAG_TEXT; break;
            case 'b': m_uFlags &= ~File::FLAG_TEXT; break;
            case 'z': m_uFlags |= File::FLAG_GZIP; break;
            case 'u': m_uFlags |= File::FLAG_UNBUFFERED; break;
            case 's': m_uFlags |= File::FLAG_SHARED; break;
            default: break;
        }
    }
    constexpr u2_t uBoth = File::FLAG_READ | File::FLAG_WRITE;
    if ((m_uFlags & uBoth) == 0) m_uFlags |= File::FLAG_READ;
    if (uLevel > 0) m_uRetries = u2_t{1} << (uLevel - 1);

    char* sMode = m_sMode;
    const bool bRead = (m_uFlags & File::FLAG_READ) != 0;
    *sMode++ = (m_uFlags & File::FLAG_APPEND) != 0 ? 'a' : bRead ? 'r' : 'w';
    if (bPlus || (m_uFlags & uBoth) == uBoth) {
        *sMode++ = '+';
        m_uFlags |= uBoth;
    }
    *sMode++ = (m_uFlags & File::FLAG_TEXT) != 0 ? 't' : 'b';
    if ((m_uFlags & File::FLAG_GZIP) != 0) *sMode++ = 'z';
}

void MakeParent(const Str& oPath) {
    const std::string_view sPath = oPath.View();
    const std::size_t uEnd = sPath.find_last_of(sys::PATH_SEPARATORS);
    if (uEnd == std::string_view::npos || uEnd == 0) return;
    // When it cannot be made, opening the file will say why.
    sys::MakeDirectories(Str(sPath.substr(0, uEnd)).CStr());
}

}  // namespace

// ---- opening and closing ----------------------------------------------------

File::~File() {
    (void)Shut();
}

bool File::Open(const Str& oPath, const char* sAttributes, bool bRaise) {
    return Where("vok::File::Open", [&] {
        if (oPath.IsEmpty()) return false;
        if (sAttributes == nullptr) sAttributes = "r";
        Close();
        const Attributes oAttributes(sAttributes);
        Str oName(oPath);
        if ((oAttributes.m_uFlags & FLAG_WRITE) != 0) MakeParent(oName);

        unsigned uWait = FIRST_WAIT_MS;
        for (u2_t uLeft = oAttributes.m_uRetries;; --uLeft, uWait += MORE_WAIT_MS) {
            if (TryOpen(oName.CStr(), oAttributes.m_sMode, oAttributes.m_uFlags)) break;
            const u2_t uError = Msg::SystemError();
            const bool bLasting = std::find(std::begin(LASTING_ERRORS), std::end(LASTING_ERRORS),
                                            uError) != std::end(LASTING_ERRORS);
            if (uLeft > 0 && !bLasting) {
                Sleep(uWait);
                continue;
            }
            if (bRaise) Msg::CouldNotOpenFile(oName.CStr(), sAttributes, OpenFiles(), uError);
            return false;
        }
        m_oName = std::move(oName);
        CountOpen();
        return true;
    });
}

bool File::TryOpen(const char* sPath, const char* sMode, u2_t uFlags) noexcept {
    sys::Sharing eSharing = sys::Sharing::DenyWrite;
    if ((uFlags & FLAG_WRITE) != 0) eSharing = sys::Sharing::DenyReadWrite;
    if ((uFlags & FLAG_SHARED) != 0) eSharing = sys::Sharing::All;

    if ((uFlags & FLAG_GZIP) == 0) {
        std::FILE* pFile = sys::OpenFile(sPath, sMode, eSharing);
        if (pFile == nullptr) return false;
        // What cannot seek is not read ahead of what is asked for (a pipe would block), and
        // where stored and written bytes differ in number positions are the C library's.
        const bool bBuffered = (uFlags & FLAG_UNBUFFERED) == 0 &&
                               ((uFlags & FLAG_READ) == 0 || sys::Tell(pFile) >= 0) &&
                               !(sys::HAS_TEXT_FILES && (uFlags & FLAG_TEXT) != 0);
        if (bBuffered || (uFlags & FLAG_UNBUFFERED) != 0) std::setvbuf(pFile, nullptr, _IONBF, 0);
        m_pHandle = pFile;
        m_uFlags = uFlags | (bBuffered ? STATE_BUFFERED : 0);
        return true;
    }

    if (sMode[1] == '+') {
        sys::SetRuntimeError(INVALID_ARGUMENT);
        return false;
    }
    const int iDescriptor = sys::OpenDescriptor(sPath, sMode, eSharing);
    if (iDescriptor < 0) return false;
    const char sRawMode[] = {sMode[0], 'b', 0};
    gzFile pFile = ::gzdopen(iDescriptor, sRawMode);
    if (pFile == nullptr) {
        const u2_t uError = sys::RuntimeError();
        sys::CloseDescriptor(iDescriptor);
        sys::SetRuntimeError(uError);
        return false;
    }
    ::gzbuffer(pFile, GZIP_BUFFER);
    m_pHandle = pFile;
    m_uFlags = uFlags;
    return true;
}

void File::Close() {
    return Where("vok::File::Close", [&] {
        const Str oName(std::move(m_oName));
        const Failure oFailure = Shut();
        if (!oFailure.m_bFailed) return;
        Msg::FileWriteError(oName.CStr(), oFailure.m_uNotWritten, oFailure.m_iPosition,
                            oFailure.m_uError);
    });
}

File::Failure File::Shut() noexcept {
    Failure oFailure;
    if (m_pHandle == nullptr) return oFailure;
    const auto oNote = [&](bool bGood) {
        if (bGood || oFailure.m_bFailed) return;
        oFailure.m_bFailed = true;
        oFailure.m_uError = sys::RuntimeError();
    };
    const bool bWritten = (m_uFlags & FLAG_WRITE) != 0;
    if ((m_uFlags & FLAG_GZIP) != 0) {
        const auto pFile = static_cast<gzFile>(m_pHandle);
        if (bWritten) oFailure.m_iPosition = m_iGzip;
        sys::SetRuntimeError(0);
        oNote(::gzclose(pFile) == Z_OK || !bWritten);
    } else {
        const auto pFile = static_cast<std::FILE*>(m_pHandle);
        // One who knows already that the disk is full does not wait again.
        oNote(HandOn((m_uFlags & STATE_STUCK) == 0));
        oFailure.m_uNotWritten = m_uPending;
        if (bWritten) oFailure.m_iPosition = sys::Tell(pFile);
        sys::SetRuntimeError(0);
        oNote(std::fclose(pFile) == 0 || !bWritten);
    }
    m_pHandle = nullptr;
    m_oName.Clear();
    m_uFlags = 0;
    m_oBuffer.Clear();
    m_uNext = m_uEnd = m_uPending = 0;
    m_iGzip = 0;
    g_uOpenFiles.fetch_sub(1);
    return oFailure;
}

// ---- open files of the process ----------------------------------------------

u3_t File::OpenFiles() noexcept {
    return g_uOpenFiles.load();
}

u3_t File::PeakOpenFiles() noexcept {
    return g_uPeakOpenFiles.load();
}

void File::ReportOpenFiles() {
    Msg::OpenFiles(OpenFiles(), PeakOpenFiles());
}

void File::CheckAllClosed() {
    return Where("vok::File::CheckAllClosed", [&] {
        const u3_t uOpen = OpenFiles();
        if (uOpen != 0) Msg::StillFilesOpen(uOpen);
    });
}

void File::Sleep(unsigned uMilliseconds) {
    g_pSleep.load(std::memory_order_relaxed)(uMilliseconds);
}

File::SleepMs File::SetSleep(SleepMs pSleep) noexcept {
    return g_pSleep.exchange(pSleep != nullptr ? pSleep : &DefaultSleep);
}

}  // namespace vok
