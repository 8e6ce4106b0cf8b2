// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "vok/base/msg.h"
#include "vok/zip/packer.h"

namespace vok::zip {

namespace {

constexpr char ZLIB_INTERFACE[] = "1.2.11";
constexpr int Z_STREAM_SIZE = static_cast<int>(sizeof(z_stream));
constexpr int MEMORY_LEVEL = 8;  // zlib's own default

constexpr int RAW_WINDOW = -15;
constexpr int GZIP_WINDOW = 15 + 16;

constexpr std::size_t MOST = std::size_t{1} << 30;

}  // namespace

Packer::~Packer() {
    if (m_bInit) ::deflateEnd(&m_oZ);
}

void Packer::Open(Sink& oSink, Format eFormat, int iLevel) {
    Msg::Assert(iLevel >= DEFAULT_LEVEL && iLevel <= MAX_LEVEL,
                "iLevel >= DEFAULT_LEVEL && iLevel <= MAX_LEVEL");
    m_pSink = &oSink;
    m_bCrc = eFormat == Format::Stored || eFormat == Format::Raw;
    m_uCrc = 0;
    m_uIn = m_uOut = 0;
    m_uRoom = m_uPending = 0;
    if (eFormat == Format::Stored) {
        m_eFormat = eFormat;
        return;
    }
    if (m_oBuffer.Size() == 0) (void)m_oBuffer.AddSpace(SMALL);

    if (m_bInit && (m_eFormat != eFormat || m_iLevel != iLevel)) {
        ::deflateEnd(&m_oZ);
        m_bInit = false;
    }
    int iResult;
    if (m_bInit) {
        iResult = ::deflateReset(&m_oZ);
    } else if (eFormat == Format::Zlib) {
        iResult = ::deflateInit_(&m_oZ, iLevel, ZLIB_INTERFACE, Z_STREAM_SIZE);
    } else {
        iResult = ::deflateInit2_(&m_oZ, iLevel, Z_DEFLATED,
                                  eFormat == Format::Raw ? RAW_WINDOW : GZIP_WINDOW, MEMORY_LEVEL,
                                  Z_DEFAULT_STRATEGY, ZLIB_INTERFACE, Z_STREAM_SIZE);
    }
    if (iResult != Z_OK) Msg::OutOfMemory();
    m_bInit = true;
    m_eFormat = eFormat;
    m_iLevel = iLevel;
    m_uRoom = SMALL;
}

void Packer::WriteMore(const char* pSource, std::size_t uCount) {
    if (uCount == 0) return;
    if (m_eFormat == Format::Stored) {
        m_pSink->Put(pSource, uCount);
        m_uCrc = static_cast<u2_t>(::crc32_z(m_uCrc, reinterpret_cast<const Bytef*>(pSource),
                                             static_cast<z_size_t>(uCount)));
        m_uIn += uCount;
        m_uOut += uCount;
        return;
    }
    Drain();
    if (uCount < m_uRoom) {
        std::memcpy(m_oBuffer.Beg(), pSource, uCount);
        m_uPending = uCount;
        return;
    }
    Deflate(pSource, uCount, Z_NO_FLUSH);
}

void Packer::Finish() {
    if (m_eFormat == Format::Stored) return;
    const std::size_t uPending = m_uPending;
    m_uPending = 0;
    Deflate(m_oBuffer.Beg(), uPending, Z_FINISH);
    m_uRoom = 0;
}

void Packer::Drain() {
    const std::size_t uPending = m_uPending;
    m_uPending = 0;
    if (uPending != 0) Deflate(m_oBuffer.Beg(), uPending, Z_NO_FLUSH);
}

void Packer::Deflate(const char* pSource, std::size_t uCount, int iFlush) {
    if (m_bCrc) {
        m_uCrc = static_cast<u2_t>(::crc32_z(m_uCrc, reinterpret_cast<const Bytef*>(pSource),
                                             static_cast<z_size_t>(uCount)));
    }
    m_uIn += uCount;
    for (;;) {
        const std::size_t uPart = std::min(uCount, MOST);
        // zlib takes the input without const and leaves it alone.
        m_oZ.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pSource));
        m_oZ.avail_in = static_cast<uInt>(uPart);
        const int iHere = uPart == uCount ? iFlush : Z_NO_FLUSH;
        int iResult;
        do {
            std::size_t uRoom = 0;
            char* pSpace = m_pSink->Space(uRoom);
            uRoom = std::min(uRoom, MOST);
            m_oZ.next_out = reinterpret_cast<Bytef*>(pSpace);
            m_oZ.avail_out = static_cast<uInt>(uRoom);
            iResult = ::deflate(&m_oZ, iHere);
            // Anything else but "no progress possible" is a fault of this program.
            Msg::Assert(iResult != Z_STREAM_ERROR, "iResult != Z_STREAM_ERROR");
            const std::size_t uMade = uRoom - m_oZ.avail_out;
            m_pSink->Commit(uMade);
            m_uOut += uMade;
        } while (m_oZ.avail_out == 0 || (iHere == Z_FINISH && iResult != Z_STREAM_END));
        pSource += uPart;
        uCount -= uPart;
        if (uCount == 0) return;
    }
}

}  // namespace vok::zip
