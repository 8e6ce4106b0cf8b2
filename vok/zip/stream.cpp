// SPDX-License-Identifier: MIT
#include "vok/zip/stream.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <string_view>
#include <utility>

#include "vok/base/where.h"
#include "vok/file/buf.h"
#include "vok/zip/file.h"
#include "vok/zip/messages.h"
#include "vok/zip/packer.h"
#include "vok/zip/unpacker.h"

namespace vok {

using zip::CHUNK;
using zip::Fault;
using zip::Format;

// A stream in use. One of the two engines runs.
struct Zip_Stream::State final : zip::Feed, zip::Sink {
    State(File_Stream& oBelow, const Limits& oLimits)
        : m_oBelow(oBelow), m_pBuf(dynamic_cast<File_Buf*>(&oBelow)), m_oLimits(oLimits) {}

    void Start() {
        m_oUnpacker.Open(*this, Format::Zlib, m_oLimits);
        m_bGaveBack = false;
    }

    // ---- from what lies below ---------------------------------------------

    std::string_view Next() override {
        if (m_pBuf != nullptr) {
            constexpr std::size_t uMost = std::size_t{1} << 30;
            const std::string_view sNext(m_pBuf->Peek(), std::min(m_pBuf->Remaining(), uMost));
            m_pBuf->Skip(sNext.size());
            return sNext;
        }
        if (m_oChunk.Size() == 0) (void)m_oChunk.AddSpace(CHUNK);
        return {m_oChunk.Beg(), std::min(m_oBelow.Read(m_oChunk.Beg(), CHUNK, true), CHUNK)};
    }
    std::size_t Copy(char*, std::size_t) override { return 0; }
    Fault Done(std::size_t uUnused) override {
        if (uUnused != 0 && !m_bGaveBack && m_iStart >= 0 && m_oBelow.CanSeek(FROM_POSITION)) {
            m_oBelow.Seek(-static_cast<i3_t>(uUnused), FROM_POSITION);
        }
        m_bGaveBack = true;
        return Fault::None;
    }
    [[noreturn]] void Fail(Fault eFault) override {
        zip::RaiseStream(eFault, m_oBelow.Name(), m_pBuf != nullptr);
    }

    // ---- to what lies below -----------------------------------------------

    char* Space(std::size_t& uSize) override {
        if (m_pBuf != nullptr && m_pBuf->IsBinaryWritable()) {
            constexpr std::size_t uLeast = 4096;
            char* pSpace = m_pBuf->WriteSpace(uLeast);
            uSize = std::max(uLeast, std::min(m_pBuf->SpaceAtHand(), CHUNK));
            return pSpace;
        }
        if (m_oChunk.Size() == 0) (void)m_oChunk.AddSpace(CHUNK);
        uSize = CHUNK - m_uChunk;
        return m_oChunk.Beg() + m_uChunk;
    }
    void Commit(std::size_t uCount) override {
        if (m_pBuf != nullptr && m_pBuf->IsBinaryWritable()) {
            m_pBuf->Commit(uCount);
            return;
        }
        m_uChunk += uCount;
        if (m_uChunk == CHUNK) HandOn();
    }
    void Put(const char* pSource, std::size_t uCount) override { m_oBelow.Write(pSource, uCount); }
    void HandOn() {
        const std::size_t uChunk = std::exchange(m_uChunk, 0);
        if (uChunk != 0) m_oBelow.Write(m_oChunk.Beg(), uChunk);
    }

    // Runs what writes. What failed cannot be completed.
    template <class F>
    void Change(F&& oBody) {
        Msg::Assert(!m_bBroken, "!m_bBroken");
        m_bBroken = true;
        oBody();
        m_bBroken = false;
    }
    void Finish() {
        if (m_bFinished) return;
        Change([&] {
            m_oPacker.Finish();
            HandOn();
        });
        m_bFinished = true;
        m_oBelow.Flush();
    }

    File_Stream& m_oBelow;
    File_Buf* m_pBuf;  // what lies below, when it is one
    const Limits m_oLimits;
    bool m_bWrite = false;
    bool m_bFinished = false;
    bool m_bBroken = false;
    bool m_bGaveBack = false;
    i3_t m_iStart = 0;  // position below; negative in a pipe
    const int m_iExceptions = std::uncaught_exceptions();
    zip::Unpacker m_oUnpacker;
    zip::Packer m_oPacker;
    Arr<char> m_oChunk;  // read from below, or [0, m_uChunk) still to be written there
    std::size_t m_uChunk = 0;
};

Zip_Stream::Zip_Stream() noexcept = default;

Zip_Stream::Zip_Stream(File_Stream& oBelow, const char* sMode, const Limits& oLimits) {
    Open(oBelow, sMode, oLimits);
}

Zip_Stream::~Zip_Stream() {
    CloseQuietly();
}

void Zip_Stream::CloseQuietly() noexcept {
    const std::unique_ptr<State> pState = std::move(m_pState);
    if (pState == nullptr || !pState->m_bWrite || pState->m_bBroken) return;
    if (std::uncaught_exceptions() > pState->m_iExceptions) return;
    try {
        pState->Finish();
    } catch (const std::exception&) {
        // Who wants to know calls Close().
    }
}

void Zip_Stream::Open(File_Stream& oBelow, const char* sMode, const Limits& oLimits) {
    return Where("vok::Zip_Stream::Open", [&] {
        Msg::Assert(&oBelow != this, "&oBelow != this");
        // Not what closes the file that is to be read.
        Zip_Stream::Close();
        OpenState(oBelow, sMode, oLimits);
    });
}

void Zip_Stream::OpenState(File_Stream& oBelow, const char* sMode, const Limits& oLimits) {
    auto pState = std::make_unique<State>(oBelow, oLimits);
    Format eFormat = Format::Zlib;
    int iLevel = zip::Packer::DEFAULT_LEVEL;
    for (const char* s = sMode != nullptr ? sMode : "r"; *s != 0; ++s) {
        if (*s == 'w') pState->m_bWrite = true;
        if (*s == 'r') pState->m_bWrite = false;
        if (*s == 'z') eFormat = Format::Gzip;
        if (*s >= '0' && *s <= '9') iLevel = *s - '0';
    }
    if (pState->m_bWrite) {
        pState->m_oPacker.Open(*pState, eFormat, iLevel);
    } else {
        pState->m_iStart = oBelow.Tell();
        pState->Start();
    }
    m_pState = std::move(pState);
}

void Zip_Stream::Close() {
    return Where("vok::Zip_Stream::Close", [&] {
        const std::unique_ptr<State> pState = std::move(m_pState);
        if (pState != nullptr && pState->m_bWrite) pState->Finish();
    });
}

Zip_Stream::State& Zip_Stream::Reading() const {
    if (m_pState == nullptr || m_pState->m_bWrite) [[unlikely]]
        Msg::StreamNotOpenForRead();
    return *m_pState;
}

Zip_Stream::State& Zip_Stream::Writing() const {
    if (m_pState == nullptr || !m_pState->m_bWrite || m_pState->m_bFinished) [[unlikely]]
        Msg::StreamNotOpenForWrite();
    return *m_pState;
}

bool Zip_Stream::Eof() {
    return Where("vok::Zip_Stream::Eof", [&] { return Reading().m_oUnpacker.AtEnd(); });
}

std::size_t Zip_Stream::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::Zip_Stream::Read", [&] {
        (void)Reading();
        return ReadInChunks(oBuffer, uCount, bAppend);
    });
}

std::size_t Zip_Stream::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::Zip_Stream::Read", [&]() -> std::size_t {
        State& oState = Reading();
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        const std::size_t uDone = oState.m_oUnpacker.Read(pTarget, uCount);
        if (uDone < uCount && uCount != ALL && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    });
}

std::size_t Zip_Stream::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::Zip_Stream::Write", [&]() -> std::size_t {
        State& oState = Writing();
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        const char* pBytes = static_cast<const char*>(pSource);
        if (uCount == ALL) uCount = std::strlen(pBytes);
        oState.Change([&] { oState.m_oPacker.Write(pBytes, uCount); });
        return uCount;
    });
}

void Zip_Stream::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::Zip_Stream::Seek", [&] {
        State& oState = Reading();
        if (iWhence == FROM_END)
            Msg::FeatureNotYetImplemented("Zip_Stream::Seek(i3_t pos, SEEK_END)");
        if (iWhence != FROM_START && iWhence != FROM_POSITION) {
            Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        const u3_t uTarget = zip::SeekTarget(iOffset, iWhence, oState.m_oUnpacker.Position());
        if (oState.m_oUnpacker.MoveTo(uTarget)) return;
        if (oState.m_iStart < 0 || !oState.m_oBelow.CanSeek(FROM_START)) {
            Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        oState.m_oBelow.Seek(oState.m_iStart);
        oState.Start();
        (void)oState.m_oUnpacker.MoveTo(uTarget);
    });
}

i3_t Zip_Stream::Tell() {
    return Where("vok::Zip_Stream::Tell", [&] {
        if (m_pState == nullptr) Msg::StreamNotOpenForRead();
        return static_cast<i3_t>(m_pState->m_bWrite ? m_pState->m_oPacker.BytesIn()
                                                    : m_pState->m_oUnpacker.Position());
    });
}

int Zip_Stream::Flush() {
    return Where("vok::Zip_Stream::Flush", [&] {
        if (m_pState != nullptr && m_pState->m_bWrite) m_pState->Finish();
        return 0;
    });
}

const char* Zip_Stream::Name() const {
    return m_pState != nullptr ? m_pState->m_oBelow.Name() : nullptr;
}

// ---- in a file ------------------------------------------------------------------

void Zip_File::Open(const Str& oPath, const char* sMode, const Limits& oLimits) {
    return Where("vok::Zip_File::Open", [&] {
        Close();
        const bool bWrite = sMode != nullptr && std::strchr(sMode, 'w') != nullptr;
        if (!m_oFile.Open(oPath, bWrite ? "wb" : "rb")) return;
        Zip_Stream::Open(m_oFile, sMode, oLimits);
    });
}

void Zip_File::Close() {
    return Where("vok::Zip_File::Close", [&] {
        struct Closer {
            File& m_oFile;
            bool m_bDone = false;
            ~Closer() {
                if (m_bDone) return;
                try {
                    m_oFile.Close();
                } catch (const std::exception&) {
                    // The first error is on its way.
                }
            }
        } oCloser{m_oFile};
        Zip_Stream::Close();
        oCloser.m_bDone = true;
        m_oFile.Close();
    });
}

}  // namespace vok
