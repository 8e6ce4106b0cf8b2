// SPDX-License-Identifier: MIT
// Compressed bytes as far as they can be inflated. Internal.
#ifndef VOK_INSPECT_INFLATED_H
#define VOK_INSPECT_INFLATED_H

#include <vector>

#include <zlib.h>

#include "vok/base/limits.h"
#include "vok/inspect/fields.h"

namespace vok::inspect {

// Where a part of a document lies in its wrapping: stored, or as raw deflate.
struct Piece {
    u3_t uOffset = 0;
    u3_t uStored = 0;
    u3_t uPlain = 0;
    bool bPacked = true;
};

// What inflates one piece after the other. It stops at damage with all that came before.
class Inflater {
  public:
    Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater();

    enum class State { Going, Complete, Damaged };
    // Starts a new piece.
    void Restart() noexcept;
    // Inflates from sIn, of which it drops what it has used, to uRoom bytes; returns their number.
    std::size_t Run(std::string_view& sIn, char* pOut, std::size_t uRoom);
    [[nodiscard]] State GetState() const noexcept { return m_eState; }

  private:
    z_stream m_oZ{};
    State m_eState = State::Going;
};

// What a first pass over a compressed piece finds.
struct Survey {
    Piece oPiece;
    Fault eFault = Fault::None;
    u2_t uCrc = 0;
    u2_t uAdler = 1;
};

// Puts deflate of at most uMost bytes as a field. Raises the limits on what may be inflated; uTotal
// counts it.
Survey PutPacked(Fields& f, const char* sName, u3_t uMost, const Limits& oLimits, u3_t& uTotal);
// Stored bytes.
Survey PutStored(Fields& f, const char* sName, u3_t uSize);

// The plain bytes of pieces that were surveyed, one behind the other, read forward.
class Plain_Stream final : public File_Stream {
  public:
    // The pieces count from iStart on in oIn, which must be able to seek.
    Plain_Stream(File_Stream& oIn, i3_t iStart, const Piece* pBegin, const Piece* pEnd);

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override;
    std::size_t Write(const void*, std::size_t) override;
    void Seek(i3_t iOffset, int iWhence) override;
    [[nodiscard]] i3_t Tell() override { return -1; }
    int Flush() override { return 0; }

  private:
    void StartPiece();
    std::size_t ReadPiece(char* pTarget, std::size_t uCount);

    File_Stream& m_oIn;
    const i3_t m_iStart;
    const Piece* m_p;
    const Piece* const m_pEnd;
    u3_t m_uLeft = 0;    // plain bytes of the piece
    u3_t m_uUnread = 0;  // stored bytes of it
    Inflater m_oInflater;
    Arr<char> m_oRoom;
    std::string_view m_sIn;  // of m_oRoom
};

}  // namespace vok::inspect

#endif  // VOK_INSPECT_INFLATED_H
