// SPDX-License-Identifier: MIT
// The one byte-stream interface: everything that is serialised goes through it.
#ifndef VOK_FILE_STREAM_H
#define VOK_FILE_STREAM_H

#include "vok/base/arr.h"
#include "vok/base/types.h"

namespace vok {

// A position in a sequence of bytes, from which reading and writing go on.
//
// The order of the virtual operations is part of the binary interface: add new ones at
// the end. A stream object is used by one thread at a time.
class File_Stream {
  public:
    // As a count: everything that remains (Read), up to the terminating NUL (Write).
    static constexpr std::size_t ALL = static_cast<std::size_t>(-1);

    // Where Seek counts from.
    static constexpr int FROM_START = 0;
    static constexpr int FROM_POSITION = 1;
    static constexpr int FROM_END = 2;

    virtual ~File_Stream() = default;

    // Reads up to uCount bytes, or all that remain, into oBuffer: behind what it holds with
    // bAppend, in place of it without. Returns the number of bytes read; who needs all of
    // uCount compares. Memory follows the bytes that are there, never the count that is asked
    // for. When an error is raised the buffer is as long as it was before (empty without
    // bAppend).
    virtual std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) = 0;

    // Reads up to uCount bytes, or all that remain, to pTarget, which has room for them.
    // Returns the number of bytes read. Fewer than uCount raise "unexpected end of file"
    // unless bAllowShort is set; those that came are at pTarget and stay consumed.
    virtual std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) = 0;

    // Writes uCount bytes, or the text up to its NUL, and returns their number, which is
    // never less: what cannot be written whole raises "file write error".
    virtual std::size_t Write(const void* pSource, std::size_t uCount = ALL) = 0;

    // Moves the position. Raises "file seek to position %0 in mode %1 failed".
    virtual void Seek(i3_t iOffset, int iWhence = FROM_START) = 0;

    // Bytes from the start of the stream; -1 where there is no such thing (a pipe).
    [[nodiscard]] virtual i3_t Tell() = 0;

    // Hands written bytes on to whatever lies below. Returns 0; raises "file write error".
    virtual int Flush() = 0;

    // Whether Seek works from there.
    [[nodiscard]] virtual bool CanSeek(int iWhence) const;

    // What messages call the stream; null when it has no name. Valid until the stream is
    // opened or closed again.
    [[nodiscard]] virtual const char* Name() const;

    // Whether who writes or reads a document may do so in larger pieces than its fields are. The
    // base says no: then a stream of a host sees every field by itself, and nothing is read behind
    // the last one.
    [[nodiscard]] virtual bool TakesPieces() const;

  protected:
    File_Stream() noexcept = default;
    File_Stream(const File_Stream&) noexcept = default;
    File_Stream& operator=(const File_Stream&) noexcept = default;

    // The first operation in terms of the second: reads in chunks that double from 64 KiB
    // up to 8 MiB, so that no more memory is asked for than about twice what has come.
    std::size_t ReadInChunks(Arr<char>& oBuffer, std::size_t uCount, bool bAppend);
};

}  // namespace vok

#endif  // VOK_FILE_STREAM_H
