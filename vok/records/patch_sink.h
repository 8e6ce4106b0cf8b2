// SPDX-License-Identifier: MIT
// Where documents go whose counts are known later than they are written. Internal.
#ifndef VOK_RECORDS_PATCH_SINK_H
#define VOK_RECORDS_PATCH_SINK_H

#include <algorithm>
#include <cstring>

#include "vok/base/little_endian.h"
#include "vok/file/file.h"
#include "vok/records/messages.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace vok::records {

// A sink as those of vok/file/sinks.h: bytes are collected and written in pieces. What was written
// can be changed: in the piece, in the stream where that can seek, else everything from the first
// such place on is held back, MOST_HELD bytes at most.
class PatchSink {
  public:
    static constexpr bool COLLECTS = true;
    static constexpr std::size_t PIECE = std::size_t{256} << 10;
    static constexpr std::size_t MOST_HELD = std::size_t{64} << 20;
    static constexpr u3_t NOTHING = ~u3_t{0};

    explicit PatchSink(File_Stream& oOut)
        : m_oOut(oOut), m_iStart(oOut.Tell()), m_bSeeks(m_iStart >= 0 && CanPatch(oOut)) {
        m_oPiece.Reserve(PIECE);
        SetRoom(0);
    }
    PatchSink(const PatchSink&) = delete;
    PatchSink& operator=(const PatchSink&) = delete;

    [[nodiscard]] char* Space(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            MakeRoom(uSize);
        return m_p;
    }
    void Cut(char* pEnd) noexcept { m_p = pEnd; }
    void Payload(const char* pData, std::size_t uSize) {
        if (uSize > PIECE) {
            HandOn();
            if (Collected() == 0) {
                m_oOut.Write(pData, uSize);
                m_uWritten += uSize;
                return;
            }
        }
        char* const p = Space(uSize);
        if (uSize != 0) std::memcpy(p, pData, uSize);
        m_p = p + uSize;
    }
    void HeapText(const char* pText, std::size_t uSize) { Payload(pText, uSize); }
    void Finish() { HandOn(); }

    // Bytes so far: where the next one goes.
    [[nodiscard]] u3_t Offset() const noexcept { return m_uWritten + Collected(); }
    // Four bytes at a place will be changed. The first of those places that are open is the one
    // that counts: places are closed in the opposite order.
    void Keep(u3_t uOffset) noexcept { m_uKept = std::min(m_uKept, uOffset); }
    // Changes them.
    void Patch(u3_t uOffset, u2_t uValue) {
        if (uOffset == m_uKept) m_uKept = NOTHING;
        if (uOffset >= m_uWritten) {
            le::Store(m_oPiece.Beg() + (uOffset - m_uWritten), uValue);
            return;
        }
        char s[4];
        le::Store(s, uValue);
        HandOn();
        m_oOut.Seek(m_iStart + static_cast<i3_t>(uOffset));
        m_oOut.Write(s, sizeof(s));
        m_oOut.Seek(m_iStart + static_cast<i3_t>(m_uWritten));
    }

  private:
    // Streams that compress can seek only where they are read.
    [[nodiscard]] static bool CanPatch(File_Stream& oOut) {
        if (dynamic_cast<Zip_Stream*>(&oOut) != nullptr) return false;
        if (dynamic_cast<Zip_Archive*>(&oOut) != nullptr) return false;
        const File* pFile = dynamic_cast<File*>(&oOut);
        if (pFile != nullptr && (pFile->Flags() & (File::FLAG_GZIP | File::FLAG_APPEND)) != 0) {
            return false;
        }
        return oOut.CanSeek(File_Stream::FROM_START);
    }
    [[nodiscard]] std::size_t Collected() const noexcept {
        return static_cast<std::size_t>(m_p - m_oPiece.Beg());
    }
    void SetRoom(std::size_t uCollected) noexcept {
        m_p = m_oPiece.Beg() + uCollected;
        m_pEnd = m_oPiece.Beg() + m_oPiece.Capacity();
    }
    // Writes all that need not be held back.
    void HandOn() {
        std::size_t uReady = Collected();
        if (!m_bSeeks && m_uKept != NOTHING)
            uReady = static_cast<std::size_t>(m_uKept - m_uWritten);
        if (uReady == 0) return;
        m_oOut.Write(m_oPiece.Beg(), uReady);
        m_uWritten += uReady;
        const std::size_t uHeld = Collected() - uReady;
        if (uHeld != 0) std::memmove(m_oPiece.Beg(), m_oPiece.Beg() + uReady, uHeld);
        SetRoom(uHeld);
    }
    void MakeRoom(std::size_t uSize) {
        HandOn();
        const std::size_t uHeld = Collected();
        if (m_oPiece.Capacity() - uHeld >= uSize) return;
        // A field by itself may be larger.
        const std::size_t uLeast = uHeld + uSize;
        if (uHeld != 0 && uLeast > MOST_HELD) RaiseCountNeeded();
        m_oPiece.SetSize(uHeld);
        m_oPiece.Reserve(std::max(uLeast, std::min(2 * uHeld, MOST_HELD)));
        SetRoom(uHeld);
    }

    File_Stream& m_oOut;
    const i3_t m_iStart;
    const bool m_bSeeks;
    Arr<char> m_oPiece;
    char* m_p;
    const char* m_pEnd;
    u3_t m_uWritten = 0;
    u3_t m_uKept = NOTHING;
};

}  // namespace vok::records

#endif  // VOK_RECORDS_PATCH_SINK_H
