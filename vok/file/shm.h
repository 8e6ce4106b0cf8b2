// SPDX-License-Identifier: MIT
// Memory that processes share by a name, as a stream: one writes and publishes, others read.
#ifndef VOK_FILE_SHM_H
#define VOK_FILE_SHM_H

#include <memory>

#include "vok/base/str.h"
#include "vok/file/stream.h"

namespace vok {

namespace sys {
struct Shm;
}  // namespace sys

// What is written becomes visible to others with Publish, all of it at once, and then stays as it
// is: a writer only appends. Readers see what was published when they opened it, or called
// Refresh last, and never less, also where the writer is killed in the middle of writing: the next
// one goes on behind what was published.
//
// A name is 1 to 200 letters, digits and "._-", not "." in front. On Linux it outlives its
// processes, until Remove or the next start of the system; on Windows it ends with the last one
// that has it open. Only the processes of one user have access.
//
// The size is bounded by a limit that is given when it is made. Memory is taken as it grows, and
// where the system has none that is an error then, not a crash later. On Windows the limit itself
// costs some memory, 1 byte in 512.
//
// Nothing that another process has written is trusted: sizes are checked, and what one with the
// right to write cuts off under a reader is an end of file to Read. No operation of this library
// ever makes it shorter or changes what was published; a process of the same user that does so by
// other means can still end those that look at the memory itself - a writer, Refresh, Publish,
// trees that are attached to it - or have them see anything.
//
// Used by one thread at a time.
class File_Shm final : public File_Stream {
  public:
    // Bytes that there may be unless it is told.
    static constexpr u3_t LIMIT = u3_t{1} << 30;

    enum class Mode : u0_t {
        Read,         // what is there
        Write,        // what is there, at its end: by one at a time
        Create,       // the same, of what was not there
        CreateOrOpen  // whatever is the case
    };

    // Closed.
    File_Shm() noexcept;
    // As after Open().
    explicit File_Shm(const Str& oName, Mode eMode = Mode::Read, u3_t uLimit = LIMIT);
    File_Shm(const File_Shm&) = delete;
    File_Shm& operator=(const File_Shm&) = delete;
    // Closes. What was not published is lost.
    ~File_Shm() override;

    // Closes what is open, then opens shared memory; uLimit, 1 byte to 64 TiB, is for what is made.
    // A reader begins at the start. Raises "Cannot create shared memory", where it is to be made,
    // or "Cannot open shared memory": with EEXIST, ENOENT also where it is not ready yet, EBUSY
    // where there is another writer, EINVAL where it is none of this library or does not hold
    // together.
    void Open(const Str& oName, Mode eMode = Mode::Read, u3_t uLimit = LIMIT);
    void Close() noexcept;
    [[nodiscard]] bool IsOpen() const noexcept { return m_pShm != nullptr; }
    [[nodiscard]] bool CanWrite() const noexcept { return m_pBytes != nullptr; }

    // Takes a name away, so that another memory can have it; who has this one open keeps it.
    // Whether it was there; false on Windows. Raises "Cannot open shared memory".
    static bool Remove(const Str& oName);

    // Makes what was written visible to others, and counts; constant time. Raises "file ... is not
    // open for write".
    void Publish();
    // Looks what has been published meanwhile; whether anything has been. Raises "Cannot set shared
    // memory view" where what is said does not hold together, and then stays as it was. A writer
    // knows already.
    bool Refresh();

    // Of an open one, else 0: the bytes of the stream, for a writer with those that are not
    // published; those that are; how often Publish was called; the limit.
    [[nodiscard]] u3_t Size() const noexcept { return m_uSize; }
    [[nodiscard]] u3_t Published() const noexcept { return m_uPublished; }
    [[nodiscard]] u3_t Generation() const noexcept { return m_uGeneration; }
    [[nodiscard]] u3_t Limit() const noexcept { return m_uLimit; }

    // The published bytes from the position on, where they lie: their pages are shared until they
    // are written to, and what is written is this process' own. They are there as long as somebody
    // has them, whatever becomes of this. Raises "Cannot set shared memory view", and "object
    // points to nothing" where this is closed.
    struct Bytes {
        std::shared_ptr<char> pBegin;
        std::size_t uSize = 0;
    };
    [[nodiscard]] Bytes MapBytes() const;

    // Those that are open in this process. For the end of a program: raises "still %0 shared memory
    // in use" unless it is none.
    [[nodiscard]] static u3_t InUse() noexcept;
    static void CheckAllClosed();

    // ---- the stream -------------------------------------------------------
    // Every operation but Name and CanSeek raises "object points to nothing" where it is closed.
    // The position may lie behind the end: reading finds nothing there, writing fills the gap with
    // zeros.

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    // Bytes that another process has cut off raise "unexpected end of file" in any case.
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Raises "file ... is not open for write", "file write error" in front of what is published,
    // and "Cannot resize shared memory" above the limit (EFBIG) or without memory (ENOSPC, ENOMEM).
    // Then nothing is written.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    [[nodiscard]] i3_t Tell() override;
    // Nothing waits to be handed on. Returns 0.
    int Flush() override;
    [[nodiscard]] bool CanSeek(int) const override { return true; }
    [[nodiscard]] const char* Name() const override { return m_oName.CStr(); }
    [[nodiscard]] bool TakesPieces() const override { return true; }

  private:
    struct Closer {
        void operator()(sys::Shm* pShm) const noexcept;
    };
    using Handle = std::unique_ptr<sys::Shm, Closer>;

    [[nodiscard]] sys::Shm& Checked() const;
    [[nodiscard]] bool TakeUp(const Handle& pShm, bool bWrite, u3_t uLimit);
    [[nodiscard]] bool TakeHeader(const sys::Shm& oShm);
    void Grow(u3_t uEnd);
    [[nodiscard]] std::size_t ReadHere(char* pTarget, std::size_t uSize);

    Handle m_pShm;
    Str m_oName;
    char* m_pBytes = nullptr;  // of a writer: behind the header
    u3_t m_uLimit = 0;
    u3_t m_uRoom = 0;  // bytes that have memory, as far as a writer knows
    u3_t m_uSize = 0;
    u3_t m_uPublished = 0;
    u3_t m_uGeneration = 0;
    u3_t m_uPosition = 0;
    Arr<char> m_oAhead;  // bytes of the stream, from m_uAhead on
    u3_t m_uAhead = 0;
};

}  // namespace vok

#endif  // VOK_FILE_SHM_H
