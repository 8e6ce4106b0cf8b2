// SPDX-License-Identifier: MIT
// Streams that cannot go back, or should not. Internal.
#ifndef VOK_FILE_FORWARD_H
#define VOK_FILE_FORWARD_H

#include <algorithm>
#include <cstring>

#include "vok/base/msg.h"
#include "vok/file/rest.h"
#include "vok/file/stream.h"

namespace vok {

// A stream that is read from front to end in pieces, as one that inflates, or a pipe. Loaders may
// look at its beginning and go back there, but not once they are past the first piece.
class File_Forward final : public File_Stream {
  public:
    explicit File_Forward(File_Stream& oIn) : m_oIn(oIn) {
        m_oPiece.Resize(PIECE);
        Fill();
    }

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        char* p = static_cast<char*>(pTarget);
        std::size_t uDone = 0;
        while (uDone < uCount && (m_uNext != m_uEnd || Fill())) {
            const std::size_t uPart = std::min(uCount - uDone, m_uEnd - m_uNext);
            std::memcpy(p + uDone, m_oPiece.Beg() + m_uNext, uPart);
            m_uNext += uPart;
            uDone += uPart;
        }
        if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    }
    std::size_t Write(const void*, std::size_t) override { Msg::FileIsNotOpenForWrite(Name()); }
    void Seek(i3_t iOffset, int iWhence) override {
        const bool bHere = CanSeek(iWhence) && iOffset >= 0 && iOffset <= static_cast<i3_t>(m_uEnd);
        if (!bHere) Msg::FileSeekFailed(iOffset, iWhence, 0);
        m_uNext = static_cast<std::size_t>(iOffset);
    }
    i3_t Tell() override { return static_cast<i3_t>(m_uBefore + m_uNext); }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int iWhence) const override {
        return iWhence == FROM_START && m_uBefore == 0;
    }
    [[nodiscard]] const char* Name() const override { return m_oIn.Name(); }
    [[nodiscard]] bool TakesPieces() const override { return true; }

    // Goes to the end and returns how many bytes there were. Whether what was compressed is sound
    // shows there only; limits hold on the way.
    u3_t SkipRest() {
        u3_t uRest = m_uEnd - m_uNext;
        while (Fill()) uRest += m_uEnd;
        return uRest;
    }

  private:
    static constexpr std::size_t PIECE = std::size_t{64} << 10;

    bool Fill() {
        const std::size_t uRead = ReadUpTo(m_oIn, m_oPiece.Beg(), PIECE);
        if (uRead == 0) return false;
        m_uBefore += m_uEnd;
        m_uNext = 0;
        m_uEnd = uRead;
        return true;
    }

    File_Stream& m_oIn;
    Arr<char> m_oPiece;
    std::size_t m_uNext = 0;
    std::size_t m_uEnd = 0;
    u3_t m_uBefore = 0;  // bytes of the pieces before
};

}  // namespace vok

#endif  // VOK_FILE_FORWARD_H
