// SPDX-License-Identifier: MIT
// Where codecs put their bytes. Internal.
//
// A sink gives room for what has a bound, is told where it ends, and takes what has a length of
// its own. What lies behind the last cut is dropped by the next call of Space(). One that COLLECTS
// does not care where fields end.
#ifndef VOK_FILE_SINKS_H
#define VOK_FILE_SINKS_H

#include <algorithm>
#include <cstring>

#include "vok/file/buf.h"

namespace vok {

// A memory buffer: the bytes go straight to their place. What was written stays written when
// an error ends the sink early.
class BufferSink {
  public:
    static constexpr bool COLLECTS = true;

    // Text mode rewrites bytes on their way, and bytes behind the position must stay as they
    // are where this sink leaves garbage: both not for this sink. A buffer that cannot be
    // written reports that itself, through the other one.
    [[nodiscard]] static bool Fits(File_Buf& oOut) noexcept {
        return oOut.IsBinaryWritable() && oOut.Remaining() == 0;
    }

    explicit BufferSink(File_Buf& oOut) noexcept : m_oOut(oOut) {}
    BufferSink(const BufferSink&) = delete;
    BufferSink& operator=(const BufferSink&) = delete;
    ~BufferSink() { Finish(); }

    [[nodiscard]] char* Space(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            Grow(uSize);
        return m_p;
    }
    // The end of the room that Space gave, which may be more than was asked for.
    [[nodiscard]] const char* SpaceEnd() const noexcept { return m_pEnd; }
    void Cut(char* pEnd) noexcept { m_p = pEnd; }
    void Payload(const char* pData, std::size_t uSize) {
        char* p = Space(uSize);
        if (uSize != 0) std::memcpy(p, pData, uSize);
        m_p = p + uSize;
    }
    // A text with SLACK bytes behind it that can be read: short ones go in pieces of that size,
    // which is quicker than asking how many bytes there are.
    static constexpr std::size_t SLACK = 16;
    void HeapText(const char* pText, std::size_t uSize) {
        if (uSize > 64) return Payload(pText, uSize);
        char* p = Space(uSize + SLACK);
        for (std::size_t u = 0; u < uSize; u += SLACK) std::memcpy(p + u, pText + u, SLACK);
        m_p = p + uSize;
    }
    void Finish() noexcept {
        if (m_p != m_pBegin) m_oOut.Commit(static_cast<std::size_t>(m_p - m_pBegin));
        m_pBegin = m_p = m_pEnd = nullptr;
    }

  private:
    void Grow(std::size_t uSize) {
        Finish();
        m_pBegin = m_p = m_oOut.WriteSpace(uSize);
        m_pEnd = m_p + std::max(uSize, m_oOut.SpaceAtHand());
    }

    File_Buf& m_oOut;
    char* m_pBegin = nullptr;  // what lies before is committed
    char* m_p = nullptr;
    char* m_pEnd = nullptr;
};

// Any other stream: bytes are collected and written in pieces of at least PIECE bytes, so that no
// more than one piece is held, however large the document. What was not handed on when an error
// ends the sink early is dropped.
class PieceSink {
  public:
    static constexpr bool COLLECTS = true;
    static constexpr std::size_t PIECE = std::size_t{256} << 10;

    explicit PieceSink(File_Stream& oOut) : m_oOut(oOut) {
        m_oPiece.Reserve(PIECE + LARGEST_SPACE);
        m_p = m_oPiece.Beg();
        m_pEnd = m_p + PIECE + LARGEST_SPACE;
    }
    PieceSink(const PieceSink&) = delete;
    PieceSink& operator=(const PieceSink&) = delete;

    // At most LARGEST_SPACE bytes.
    static constexpr std::size_t LARGEST_SPACE = 4096;
    [[nodiscard]] char* Space(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            Finish();
        return m_p;
    }
    [[nodiscard]] const char* SpaceEnd() const noexcept { return m_pEnd; }
    void Cut(char* pEnd) noexcept { m_p = pEnd; }
    void Payload(const char* pData, std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) {
            Finish();
            if (uSize > PIECE) {
                m_oOut.Write(pData, uSize);
                return;
            }
        }
        if (uSize != 0) std::memcpy(m_p, pData, uSize);
        m_p += uSize;
    }
    void HeapText(const char* pText, std::size_t uSize) { Payload(pText, uSize); }
    // Hands on what was collected.
    void Finish() {
        const std::size_t uSize = static_cast<std::size_t>(m_p - m_oPiece.Beg());
        m_p = m_oPiece.Beg();
        if (uSize != 0) m_oOut.Write(m_p, uSize);
    }

  private:
    File_Stream& m_oOut;
    Arr<char> m_oPiece;
    char* m_p;
    const char* m_pEnd;
};

}  // namespace vok

#endif  // VOK_FILE_SINKS_H
