// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"
#include "vok/zip/unpacker.h"

namespace vok::zip {

namespace {

// The interface that is asked of zlib; any release since offers it.
constexpr char ZLIB_INTERFACE[] = "1.2.11";

constexpr int RAW_WINDOW = -15;
// A window of 32 KiB, and the header tells zlib from gzip.
constexpr int ANY_WINDOW = 47;

// What one call of zlib may be given: its counts have 32 bits.
constexpr std::size_t MOST = std::size_t{1} << 30;

constexpr Bytef GZIP_MAGIC[] = {0x1F, 0x8B};

}  // namespace

Unpacker::~Unpacker() {
    if (m_bInit) ::inflateEnd(&m_oZ);
}

void Unpacker::Open(Feed& oFeed, Format eFormat, const Limits& oLimits, u3_t uSize, u2_t uCrc) {
    m_pFeed = &oFeed;
    m_oLimits = oLimits;
    m_uSize = uSize;
    m_uCrcExpected = uCrc;
    m_uCrc = 0;
    m_uOut = m_uIn = 0;
    m_bDry = m_bEnd = m_bGzip = false;
    m_uHeld = 0;
    m_eFault = Fault::None;
    m_uNext = m_uEnd = 0;
    Start(eFormat);
    if (m_uSize == 0) CheckAtSize();
}

void Unpacker::Start(Format eFormat) {
    m_eFormat = eFormat;
    m_oZ.next_in = nullptr;
    m_oZ.avail_in = 0;
    if (eFormat == Format::Stored) return;
    const int iWindow = eFormat == Format::Raw ? RAW_WINDOW : ANY_WINDOW;
    const int iResult = m_bInit ? ::inflateReset2(&m_oZ, iWindow)
                                : ::inflateInit2_(&m_oZ, iWindow, ZLIB_INTERFACE,
                                                  static_cast<int>(sizeof(z_stream)));
    if (iResult != Z_OK) Msg::OutOfMemory();
    m_bInit = true;
}

void Unpacker::Fail(Fault eFault) {
    m_eFault = eFault;
    m_pFeed->Fail(eFault);
    Msg::AssertionFailed("Feed::Fail raises");
}

// ---- the buffer -----------------------------------------------------------------

std::size_t Unpacker::ReadMore(char* pTarget, std::size_t uCount) {
    std::size_t uDone = 0;
    while (uDone < uCount) {
        if (m_uNext == m_uEnd) {
            if (uCount - uDone >= SMALL) {
                m_uNext = m_uEnd = 0;
                const std::size_t uMade = Produce(pTarget + uDone, uCount - uDone);
                if (uMade == 0) break;
                uDone += uMade;
                continue;
            }
            Fill();
            if (m_uNext == m_uEnd) break;
        }
        const std::size_t uPart = std::min(uCount - uDone, m_uEnd - m_uNext);
        std::memcpy(pTarget + uDone, m_oBuffer.Beg() + m_uNext, uPart);
        m_uNext += uPart;
        uDone += uPart;
    }
    return uDone;
}

// Replaces the buffer by the bytes that follow. Known to be at the end it is left as it is, so
// that going back finds it.
void Unpacker::Fill() {
    if (m_bEnd && m_eFault == Fault::None) return;
    if (m_oBuffer.Size() == 0) (void)m_oBuffer.AddSpace(SMALL);
    m_uNext = m_uEnd = 0;
    m_uEnd = Produce(m_oBuffer.Beg(), SMALL);
}

bool Unpacker::MoveTo(u3_t uPosition) {
    const u3_t uStart = m_uOut - m_uEnd;  // of the buffer
    if (uPosition < uStart) return false;
    while (uPosition > m_uOut) {
        m_uNext = m_uEnd;
        const u3_t uBefore = m_uOut;
        Fill();
        if (m_uOut == uBefore) return true;
    }
    m_uNext = m_uEnd - static_cast<std::size_t>(m_uOut - uPosition);
    return true;
}

bool Unpacker::AtEnd() {
    if (m_uNext < m_uEnd) return false;
    if (m_uSize != ANY_SIZE && m_eFault == Fault::None) return m_uOut == m_uSize;
    // The buffer may still serve to go back, and is left alone where the end is known.
    if (m_bEnd && m_eFault == Fault::None) return true;
    Fill();
    return m_uNext == m_uEnd;
}

// ---- decompressing --------------------------------------------------------------

// Makes up to uCount bytes, at least one unless the stream is complete.
std::size_t Unpacker::Produce(char* pTarget, std::size_t uCount) {
    if (m_eFault != Fault::None) m_pFeed->Fail(m_eFault);
    uCount = static_cast<std::size_t>(std::min<u3_t>(uCount, m_uSize - m_uOut));
    if (uCount == 0 || m_bEnd) return 0;

    std::size_t uMade;
    if (m_eFormat == Format::Stored) {
        uMade = m_pFeed->Copy(pTarget, uCount);
        m_uOut += uMade;
        if (uMade < uCount) Fail(Fault::Ends);
    } else {
        uMade = Inflate(pTarget, uCount);
    }
    if (m_uSize == ANY_SIZE) return uMade;
    m_uCrc = static_cast<u2_t>(
        ::crc32_z(m_uCrc, reinterpret_cast<const Bytef*>(pTarget), static_cast<z_size_t>(uMade)));
    if (m_uOut == m_uSize) {
        CheckAtSize();
    } else if (m_bEnd) {
        Fail(Fault::Size);
    }
    return uMade;
}

// Inflates until uCount bytes are made or the stream is complete.
std::size_t Unpacker::Inflate(char* pTarget, std::size_t uCount) {
    std::size_t uDone = 0;
    while (uDone < uCount && !m_bEnd) {
        if (m_oZ.avail_in == 0) Refill();
        // One byte more than the limit shows whether it is broken.
        const u3_t uAllowed =
            m_uOut < m_oLimits.m_uInflatedBytes ? m_oLimits.m_uInflatedBytes - m_uOut : 0;
        const std::size_t uWanted = std::min(uCount - uDone, MOST);
        m_oZ.next_out = reinterpret_cast<Bytef*>(pTarget + uDone);
        m_oZ.avail_out = static_cast<uInt>(std::min<u3_t>(uWanted, std::max<u3_t>(uAllowed, 1)));
        const uInt uRoom = m_oZ.avail_out;
        const int iResult = ::inflate(&m_oZ, Z_NO_FLUSH);
        const std::size_t uMade = uRoom - m_oZ.avail_out;
        uDone += uMade;
        m_uOut += uMade;
        CheckLimits();
        switch (iResult) {
            case Z_OK: break;
            case Z_STREAM_END:
                if (HasAnotherMember()) break;
                m_bEnd = true;
                if (const Fault eFault = m_pFeed->Done(m_oZ.avail_in + m_uHeld);
                    eFault != Fault::None) {
                    Fail(eFault);
                }
                break;
            case Z_BUF_ERROR:
                if (m_bDry) Fail(Fault::Ends);
                break;
            case Z_MEM_ERROR: Msg::OutOfMemory();
            default: Fail(Fault::Damaged);
        }
    }
    return uDone;
}

void Unpacker::Refill() {
    if (m_bDry) return;
    const std::string_view sNext = m_pFeed->Next();
    m_bDry = sNext.empty();
    // No zlib stream starts with this byte.
    if (m_uIn == 0 && !m_bDry && m_eFormat != Format::Raw) {
        m_bGzip = static_cast<Bytef>(sNext[0]) == GZIP_MAGIC[0];
    }
    m_uIn += sNext.size();
    // zlib takes the input without const and leaves it alone.
    m_oZ.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(sNext.data()));
    m_oZ.avail_in = static_cast<uInt>(sNext.size());
}

// Gzip files may be joined end to end and then count as one. Goes on with the next one.
bool Unpacker::HasAnotherMember() {
    m_uHeld = 0;
    if (!m_bGzip) return false;
    if (m_oZ.avail_in == 0) Refill();
    if (m_oZ.avail_in == 0 || *m_oZ.next_in != GZIP_MAGIC[0]) return false;
    if (m_oZ.avail_in > 1) {
        return m_oZ.next_in[1] == GZIP_MAGIC[1] && ::inflateReset(&m_oZ) == Z_OK;
    }
    // The two bytes that tell come in different pieces.
    m_uHeld = 1;
    m_oZ.avail_in = 0;
    Refill();
    if (m_oZ.avail_in == 0 || *m_oZ.next_in != GZIP_MAGIC[1]) return false;
    m_uHeld = 0;
    if (::inflateReset(&m_oZ) != Z_OK) return false;
    Bytef cFirst = GZIP_MAGIC[0];
    Bytef* pRest = std::exchange(m_oZ.next_in, &cFirst);
    const uInt uRest = std::exchange(m_oZ.avail_in, 1u);
    (void)::inflate(&m_oZ, Z_NO_FLUSH);
    m_oZ.next_in = pRest;
    m_oZ.avail_in = uRest;
    return true;
}

// All bytes that were announced are made: there must not be more, and they must be right.
void Unpacker::CheckAtSize() {
    if (m_eFormat == Format::Stored) {
        m_bEnd = true;
        if (const Fault eFault = m_pFeed->Done(0); eFault != Fault::None) Fail(eFault);
    } else if (!m_bEnd) {
        char cMore;
        if (Inflate(&cMore, 1) != 0) {
            --m_uOut;
            Fail(Fault::Size);
        }
    }
    if (m_uCrc != m_uCrcExpected) Fail(Fault::Crc);
}

void Unpacker::CheckLimits() {
    if (m_uOut > m_oLimits.m_uInflatedBytes) {
        m_oLimits.RaiseExceeded(&Limits::m_uInflatedBytes);
    }
    if (m_uOut <= Limits::FREE_INFLATION) return;
    if (m_uOut / std::max<u3_t>(m_oLimits.m_uInflationRatio, 1) > BytesIn()) {
        m_oLimits.RaiseExceeded(&Limits::m_uInflationRatio);
    }
}

}  // namespace vok::zip
