/* SPDX-License-Identifier: MIT */
// Functions of a program as a stream. Internal.
#ifndef C_STREAM_H
#define C_STREAM_H

#include "c/internal.h"
#include "c/vok_tree_document.h"
#include "vok/file/stream.h"

namespace vok::c {

// Trusts nothing that the functions say: counts are held to what was asked for, and the position
// is counted here. What is read goes through a buffer, since a call of a program may cost as much
// as a hundred fields. A stream is either read or written.
class HostStream final : public File_Stream {
  public:
    explicit HostStream(const vok_tree_stream& oFunctions);

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override;
    std::size_t Write(const void* pSource, std::size_t uCount) override;
    void Seek(i3_t iOffset, int iWhence) override;
    [[nodiscard]] i3_t Tell() override;
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int iWhence) const override;
    [[nodiscard]] const char* Name() const override { return "stream"; }
    [[nodiscard]] bool TakesPieces() const override { return true; }

    // Leaves the program's stream where this one is, if it can seek.
    void GiveBack();
    // Bytes from the position to the end, 0 where that is not known.
    [[nodiscard]] u3_t Left() const;

  private:
    static constexpr std::size_t BUFFER = std::size_t{64} << 10;
    // Positions beyond are none; adding to one never overflows.
    static constexpr i3_t MOST = i3_t{1} << 62;

    [[nodiscard]] i3_t Position() const noexcept {
        return m_iBelow - static_cast<i3_t>(m_uEnd - m_uNext);
    }
    [[nodiscard]] std::size_t ReadBelow(char* pTarget, std::size_t uCount);
    void SeekBelow(i3_t iPosition);

    const vok_tree_stream m_o;
    bool m_bSeek = false;
    i3_t m_iBelow = 0;  // where the program's stream is
    Arr<char> m_oBuffer;
    std::size_t m_uNext = 0;  // what was read and not taken
    std::size_t m_uEnd = 0;
};

}  // namespace vok::c

#endif  // C_STREAM_H
