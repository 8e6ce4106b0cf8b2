// SPDX-License-Identifier: MIT
#include "tools/print.h"

#include <atomic>
#include <cstdio>
#include <stdexcept>

#include "tools/pager.h"
#include "tools/say.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

constexpr vok::u3_t UNBOUNDED = ~vok::u3_t{0};
// Bytes that may still be printed.
std::atomic<vok::u3_t> g_uAllowed{UNBOUNDED};

[[noreturn]] void RaiseUnprinted(std::size_t uBytes) {
    vok::Msg::FileWriteError("standard output", uBytes, 0, vok::sys::RuntimeError());
}

// Where what this thread says goes instead; null: to where it belongs.
thread_local Spoken* t_pSpoken = nullptr;

void Keep(bool bComplaint, std::string_view s) {
    auto& ao = t_pSpoken->aoPiece;
    if (ao.empty() || ao.back().bComplaint != bComplaint) ao.push_back({bComplaint, {}});
    ao.back().sText += s;
}

void Put(std::string_view s) {
    const std::size_t uWritten = s.empty() ? 0 : std::fwrite(s.data(), 1, s.size(), stdout);
    if (uWritten != s.size()) RaiseUnprinted(s.size() - uWritten);
}

}  // namespace

void Print(std::string_view s) {
    vok::u3_t uAllowed = g_uAllowed;
    do {
        if (s.size() > uAllowed) {
            throw std::length_error(
                Say("the rest is left out: it would be much longer than what it was read from"));
        }
    } while (uAllowed != UNBOUNDED &&
             !g_uAllowed.compare_exchange_weak(uAllowed, uAllowed - s.size()));
    if (t_pSpoken != nullptr) return Keep(false, s);
    StartPager();
    Put(s);
}

void AllowPrinting(vok::u3_t uInputBytes) noexcept {
    constexpr vok::u3_t FREE = vok::u3_t{64} << 20;
    vok::u3_t uBefore = UNBOUNDED;
    g_uAllowed.compare_exchange_strong(uBefore, 0);
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

void Complain(const std::string& sText) {
    const std::string sLine = "vok: " + sText + '\n';
    if (t_pSpoken != nullptr) return Keep(true, sLine);
    std::fputs(sLine.c_str(), stderr);
}

void Complain(const std::string& sFile, const std::string& sText) {
    Complain(Visible(sFile) + ": " + Visible(sText));
}

SpeakLater::SpeakLater(Spoken& oSpoken) noexcept {
    t_pSpoken = &oSpoken;
}

SpeakLater::~SpeakLater() {
    t_pSpoken = nullptr;
}

void Speak(const Spoken& oSpoken) {
    for (const Spoken::Piece& o : oSpoken.aoPiece) {
        if (o.bComplaint) {
            std::fputs(o.sText.c_str(), stderr);
        } else {
            StartPager();
            Put(o.sText);
        }
    }
}

}  // namespace tools
