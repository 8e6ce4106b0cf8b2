// SPDX-License-Identifier: MIT
// A stream that writes into a block of fixed size.
#ifndef VOK_FILE_EXT_BUF_H
#define VOK_FILE_EXT_BUF_H

#include "vok/file/stream.h"

namespace vok {

// The block belongs to the caller and must stay alive as long as the stream is used. What
// was written can be read back; the position never leaves what was written.
//
// A stream is used by one thread at a time.
class File_ExtBuf final : public File_Stream {
  public:
    // Without a block: every write fails.
    File_ExtBuf() noexcept = default;
    File_ExtBuf(void* pBlock, std::size_t uCapacity) { Open(pBlock, uCapacity); }

    // Starts an empty stream over the block. A null block must have the capacity 0
    // ("object points to nothing").
    void Open(void* pBlock, std::size_t uCapacity);

    [[nodiscard]] const char* Data() const noexcept { return m_pBlock; }
    [[nodiscard]] std::size_t Capacity() const noexcept { return m_uCapacity; }
    // Bytes written so far, counted from the start of the block.
    [[nodiscard]] std::size_t Used() const noexcept { return m_uUsed; }

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Bytes that do not all fit raise "file write error"; nothing is written then.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    // From the start to what is used; anything else raises "file seek ... failed".
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    [[nodiscard]] i3_t Tell() override { return static_cast<i3_t>(m_uPosition); }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int) const override { return true; }
    [[nodiscard]] const char* Name() const override;

  private:
    char* m_pBlock = nullptr;
    std::size_t m_uCapacity = 0;
    std::size_t m_uUsed = 0;      // at most m_uCapacity
    std::size_t m_uPosition = 0;  // at most m_uUsed
};

}  // namespace vok

#endif  // VOK_FILE_EXT_BUF_H
