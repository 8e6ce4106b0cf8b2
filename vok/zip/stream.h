// SPDX-License-Identifier: MIT
// Streams that compress what is written to them and decompress what is read from them.
#ifndef VOK_ZIP_STREAM_H
#define VOK_ZIP_STREAM_H

#include <memory>

#include "vok/base/limits.h"
#include "vok/file/stream.h"

namespace vok {

// A compressed stream over any other stream: a zlib stream (2 bytes of header, Adler-32 behind)
// or a gzip stream. Reading tells them apart and takes gzip streams joined end to end for one.
//
// Small reads and writes go through a buffer, large ones straight to and from the caller's
// memory; what lies below sees pieces of 256 KiB, and a File_Buf there is worked on in place.
// Memory is about 350 KiB for writing, 100 KiB for reading, plus 256 KiB below which is no
// File_Buf. Everything is linear in the bytes that pass.
//
// A stream is used by one thread at a time.
class Zip_Stream : public File_Stream {
  public:
    // Closed.
    Zip_Stream() noexcept;
    // As after Open().
    explicit Zip_Stream(File_Stream& oBelow, const char* sMode = "r", const Limits& oLimits = {});
    Zip_Stream(const Zip_Stream&) = delete;
    Zip_Stream& operator=(const Zip_Stream&) = delete;
    // Closes without a word, as the destructor of File does; when an exception is passing a
    // stream that is being written stays incomplete.
    ~Zip_Stream() override;

    // Closes the stream and starts a new one at the position of oBelow, which must stay alive
    // and be left alone until Close(). The letters of sMode, others are ignored, null means "r":
    //   r  read      0 to 9  write with that level instead of zlib's default
    //   w  write     z       write gzip instead of zlib
    // While reading, oLimits bounds the bytes that come out, altogether and per byte that went in.
    // Raises what Close() raises, "out of memory", and an assertion failure for oBelow being this
    // stream.
    void Open(File_Stream& oBelow, const char* sMode = "r", const Limits& oLimits = {});

    // Completes a stream that is being written, as Flush() does, and lets go of what lies below.
    // A closed stream stays closed. The stream is closed also when an error is raised.
    virtual void Close();

    [[nodiscard]] bool IsOpen() const noexcept { return m_pState != nullptr; }
    // Whether everything was read. Raises what Read raises.
    [[nodiscard]] bool Eof();

    // ---- the stream -------------------------------------------------------
    // Counts and positions are those of the plain bytes. Reading from a stream that is not open
    // for reading raises "stream not open for read", writing "stream not open for write".

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    // Raises "unexpected end of file" for a stream that was cut, also where short reads are
    // allowed, "invalid or corrupted zip file" (in memory: "buffer") for damaged bytes, limits,
    // and what lies below raises. At the end the stream below is moved back to right behind the
    // compressed bytes, if it can seek from its position.
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    // While reading, from the start and from the position ("feature not yet implemented" from the
    // end). A negative target means the start, one behind the end the end. Going forward reads;
    // going back starts again from the beginning unless the target is in the buffer, and raises
    // "file seek ... failed" when the stream below cannot seek.
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    // Plain bytes read or written so far.
    [[nodiscard]] i3_t Tell() override;
    // Completes a stream that is being written and flushes what lies below: nothing can be written
    // after it. Does nothing while reading.
    int Flush() override;
    [[nodiscard]] bool CanSeek(int iWhence) const override {
        return iWhence == FROM_START || iWhence == FROM_POSITION;
    }
    // The name of what lies below.
    [[nodiscard]] const char* Name() const override;
    [[nodiscard]] bool TakesPieces() const override { return true; }

  protected:
    // For streams that own what lies below them: to be called by their destructors.
    void CloseQuietly() noexcept;

  private:
    struct State;

    void OpenState(File_Stream& oBelow, const char* sMode, const Limits& oLimits);
    [[nodiscard]] State& Reading() const;
    [[nodiscard]] State& Writing() const;

    std::unique_ptr<State> m_pState;  // null when closed
};

}  // namespace vok

#endif  // VOK_ZIP_STREAM_H
