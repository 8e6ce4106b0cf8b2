// SPDX-License-Identifier: MIT
// A stream in memory: a buffer that grows, or a block of somebody else's to read.
#ifndef VOK_FILE_BUF_H
#define VOK_FILE_BUF_H

#include "vok/file/stream.h"

namespace vok {

// Reads and writes its own storage, or reads an external block, which is not copied and
// must stay alive and unchanged until the buffer is opened again, cleared or destroyed.
//
// The position may lie behind the end: reading finds nothing there, writing fills the gap
// with zero bytes. Reading is always possible, writing as Open() says.
//
// A codec that handles many small fields does not pay a virtual call for each: the direct
// doors below give it the bytes themselves.
//
// A buffer is used by one thread at a time.
class File_Buf final : public File_Stream {
  public:
    // Empty, to be read: as after Open("r").
    File_Buf() noexcept = default;
    // As after Open().
    explicit File_Buf(const char* sMode) { Open(sMode); }
    File_Buf(const void* pBlock, std::size_t uSize) { Open(pBlock, uSize); }

    // Opens the buffer's own storage; an external block is let go. The letters of sMode:
    //   r  read from the start
    //   w  drop what is there, write from the start
    //   a  write from the end on
    //   +  write as well: "r+" reads and overwrites what is there
    //   t  text: each "\n" is written as "\r\n"; reading changes nothing
    //   b  binary, which is the default
    // Of r, w and a the last one counts; other letters are ignored; null means "r".
    void Open(const char* sMode);
    // Opens an external block for reading; its own storage is emptied. A null block must
    // have the size 0 ("object points to nothing").
    void Open(const void* pBlock, std::size_t uSize);
    // Empties the storage, lets an external block go and sets the position to 0. Whether
    // the buffer can be written stays; memory is kept for what is written next.
    void Clear() noexcept;

    // The storage, empty while an external block is read. What is changed there is what
    // the stream reads next.
    [[nodiscard]] Arr<char>& GetBuffer() noexcept { return m_oBuffer; }
    [[nodiscard]] const Arr<char>& GetBuffer() const noexcept { return m_oBuffer; }

    // The bytes of the stream, wherever they are.
    [[nodiscard]] const char* Data() const noexcept {
        return m_pExternal != nullptr ? m_pExternal : m_oBuffer.Beg();
    }
    [[nodiscard]] std::size_t Size() const noexcept {
        return m_pExternal != nullptr ? m_uEnd : m_oBuffer.Size();
    }
    [[nodiscard]] bool IsExternal() const noexcept { return m_pExternal != nullptr; }

    // ---- direct doors for codecs ------------------------------------------

    // Whether WriteSpace works: open for writing, and not in text mode.
    [[nodiscard]] bool IsBinaryWritable() const noexcept {
        return (m_uFlags & (WRITABLE | TEXT_MODE)) == WRITABLE;
    }

    // The bytes at the position, Remaining() of them; valid until something is written.
    [[nodiscard]] const char* Peek() const noexcept { return Data() + Position(); }
    [[nodiscard]] std::size_t Remaining() const noexcept { return Size() - Position(); }
    // Consumes uCount bytes, at most Remaining().
    void Skip(std::size_t uCount) noexcept { m_uPosition += uCount; }

    // Room for uCount bytes at the position, to be filled by the caller and then declared
    // written with Commit(); valid until any other operation. Bytes that are already
    // there keep their values until they are overwritten, those behind the end are
    // uninitialised. Raises "file ... is not open for write", "file write error" on an
    // overflow of the position, and an assertion failure in text mode, which needs Write.
    [[nodiscard]] char* WriteSpace(std::size_t uCount) {
        if ((m_uFlags & (WRITABLE | TEXT_MODE)) == WRITABLE && m_uPosition <= m_oBuffer.Size() &&
            m_oBuffer.Capacity() - m_uPosition >= uCount && m_oBuffer.GetRefCnt() == 0) [[likely]] {
            return m_oBuffer.Beg() + m_uPosition;
        }
        return WriteSpaceSlow(uCount);
    }
    // Bytes that WriteSpace can give without moving anything. What it gave for a smaller
    // count may be used up to this one.
    [[nodiscard]] std::size_t SpaceAtHand() const noexcept {
        return m_uPosition < m_oBuffer.Capacity() ? m_oBuffer.Capacity() - m_uPosition : 0;
    }
    // Declares the first uCount bytes of the space written and moves the position behind
    // them. Only directly after WriteSpace().
    void Commit(std::size_t uCount) noexcept {
        m_uPosition += uCount;
        if (m_uPosition <= m_oBuffer.Size()) return;
        (void)m_oBuffer.AddSpace(m_uPosition - m_oBuffer.Size());  // room is there
    }

    // ---- the stream -------------------------------------------------------

    // oBuffer must not be the storage of this stream.
    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Overwrites at the position and grows the storage by doubling. Returns uCount, also
    // in text mode, where more bytes may be stored. pSource must not lie in the storage.
    // When an error is raised nothing is written.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    [[nodiscard]] i3_t Tell() override { return static_cast<i3_t>(m_uPosition); }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int) const override { return true; }
    [[nodiscard]] const char* Name() const override;
    [[nodiscard]] bool TakesPieces() const override { return true; }

  private:
    static constexpr u2_t WRITABLE = 2;
    static constexpr u2_t TEXT_MODE = 8;

    // The position, or the end when it lies behind that.
    [[nodiscard]] std::size_t Position() const noexcept {
        return m_uPosition < Size() ? static_cast<std::size_t>(m_uPosition) : Size();
    }
    [[nodiscard]] char* WriteSpaceSlow(std::size_t uCount);
    [[nodiscard]] char* MakeSpace(std::size_t uCount);
    void WriteText(const char* pSource, std::size_t uCount);

    Arr<char> m_oBuffer;
    const char* m_pExternal = nullptr;  // null: the stream is m_oBuffer
    std::size_t m_uEnd = 0;             // size of the external block
    u3_t m_uPosition = 0;               // at most MAX_POSITION
    u2_t m_uFlags = 0;
};

}  // namespace vok

#endif  // VOK_FILE_BUF_H
