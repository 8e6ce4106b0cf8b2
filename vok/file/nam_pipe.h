// SPDX-License-Identifier: MIT
// Streams between processes of one machine, which find each other by a name.
#ifndef VOK_FILE_NAM_PIPE_H
#define VOK_FILE_NAM_PIPE_H

#include <memory>

#include "vok/base/str.h"
#include "vok/file/stream.h"

namespace vok {

namespace sys {
struct Pipe;
struct PipeServer;
}  // namespace sys

// One end of a connection: a File_NamPipe that has connected to a server, or that a server has
// accepted. Both sides read and write; what one writes comes to the other in order and whole.
//
// A name is 1 to 100 letters, digits and "._-", not "." in front. It is the user's own on Linux,
// where it becomes a socket below $XDG_RUNTIME_DIR, or below the folder for temporary files, in a
// folder that nobody else can look into; a path, which has a "/" in it, is a socket there. Windows
// has names only, which all users share: the first one has it.
//
// No wait is endless unless it is told to be FOREVER. Where one ends without what it was for, the
// operation raises its message with the system's error ETIMEDOUT, and HasTimedOut() says so.
//
// A pipe cannot seek, and documents do not all tell where they end: DGraph documents and dumps may
// follow each other as they are, and what comes behind stays to be read. Everything else - XML,
// JSON, whatever is compressed, and what Document_Load is to recognise - goes as a message.
//
// A pipe is used by one thread at a time. Two programs that both write and do not read wait for
// each other once the system holds no more, some 100 KiB, until the time of one of them is up:
// let one side speak at a time, or let it have two connections.
class File_NamPipe final : public File_Stream {
  public:
    // Times to wait, in milliseconds.
    static constexpr u2_t FOREVER = ~u2_t{0};
    static constexpr u2_t PATIENCE = 30000;
    // What a message may have unless it is told.
    static constexpr u3_t MESSAGE_BYTES = u3_t{64} << 20;

    // Closed.
    File_NamPipe() noexcept;
    // As after Connect().
    explicit File_NamPipe(const Str& oName, u2_t uMs = PATIENCE);
    File_NamPipe(File_NamPipe&& oOther) noexcept;
    File_NamPipe& operator=(File_NamPipe&& oOther) noexcept;
    File_NamPipe(const File_NamPipe&) = delete;
    File_NamPipe& operator=(const File_NamPipe&) = delete;
    // Closes without a word, and without waiting for a peer that does not read: who wants to know
    // whether the last bytes went calls Flush or Close.
    ~File_NamPipe() override;

    // Closes what is open, then connects to a server, for which it waits where it is not there yet
    // or has no time. Returns whether it did; with bRaise, else raises "Could not open Named pipe"
    // with the reason.
    bool Connect(const Str& oName, u2_t uMs = PATIENCE, bool bRaise = true);
    // Flushes, and closes in any case; the peer can still read what was written. A closed pipe
    // stays closed.
    void Close();
    [[nodiscard]] bool IsOpen() const noexcept { return m_pPipe != nullptr; }

    // How long reading waits for the next bytes, and writing until the peer has made room. At first
    // PATIENCE.
    void SetTimeouts(u2_t uReadMs, u2_t uWriteMs) noexcept;
    // Whether the last operation that failed did so because its time was up.
    [[nodiscard]] bool HasTimedOut() const noexcept { return m_bTimedOut; }
    // The process at the other side, for logs and for asking the system more: it may have ended,
    // and another one have its number. 0 where the system does not tell.
    [[nodiscard]] u2_t PeerProcess() const;

    // ---- the stream -------------------------------------------------------
    // Every operation but Seek, Name and those without an effect raises "object points to nothing"
    // on a closed pipe.

    // The end is where the peer has closed or its program has ended, however that came. Reading
    // hands over what was written before; what the peer has sent is taken ahead, up to 64 KiB, and
    // kept for the next call. A short read waits for the first byte only. Raises "Error reading to
    // named pipe" where the system does or the time is up; bytes that came for a longer read are
    // then at pTarget and stay consumed.
    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Keeps up to 64 KiB, until Flush, Close, the next Read, or more of them: many small pieces are
    // one call of the system. Raises "Error writing to named pipe", with the system's error EPIPE
    // where nobody is there to read. Then nobody knows what the peer has: nothing more is written.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    // Raises "file seek to position %0 in mode %1 failed".
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    [[nodiscard]] i3_t Tell() override { return -1; }
    // Hands what is kept over to the system. Raises as Write does.
    int Flush() override;
    [[nodiscard]] const char* Name() const override { return m_oName.CStr(); }

    // ---- messages ---------------------------------------------------------
    // What File::DumpBufStream64 writes: 8 bytes with the length, little-endian, and as many bytes.

    // Writes one, and flushes.
    void WriteMessage(const void* pSource, std::size_t uSize);
    // Reads one in place of what oMessage holds; false at the end of the stream in front of one.
    // Memory follows the bytes that come, not the length that is claimed. Raises "message of %1
    // bytes ..." above uMost, "unexpected end of file" within one, and what Read raises; a pipe is
    // good for nothing then but to be closed.
    bool ReadMessage(Arr<char>& oMessage, u3_t uMost = MESSAGE_BYTES);

  private:
    friend class File_NamPipeServer;
    struct Closer {
        void operator()(sys::Pipe* pPipe) const noexcept;
    };

    [[nodiscard]] sys::Pipe& Checked() const;
    [[nodiscard]] std::size_t Receive(char* pTarget, std::size_t uSize);
    void Send(const char* pSource, std::size_t uSize);
    void HandOver();
    void Drop() noexcept;

    std::unique_ptr<sys::Pipe, Closer> m_pPipe;
    Str m_oName;
    Arr<char> m_oAhead;       // what has come
    std::size_t m_uNext = 0;  // of it to be read
    Arr<char> m_oPending;     // what is to go
    u2_t m_uReadMs = PATIENCE;
    u2_t m_uWriteMs = PATIENCE;
    bool m_bBroken = false;  // a write has failed
    bool m_bTimedOut = false;
};

// A name that others connect to. As long as it is open no other server has it, and when its process
// ends, in whatever way, the next one can take it. A process that is forked off has it as well.
//
//     File_NamPipeServer oServer("orders");
//     for (File_NamPipe oClient; oServer.Accept(oClient, File_NamPipe::FOREVER);) { ... }
//
// Used by one thread at a time; the connections that it gives may be used by others.
class File_NamPipeServer {
  public:
    // Who may connect. For everyone of the machine, on Linux, a path is needed, in a folder that
    // lets them through.
    enum class Access : u0_t { Owner, Everyone };

    // Closed.
    File_NamPipeServer() noexcept;
    // As after Open().
    explicit File_NamPipeServer(const Str& oName, Access eAccess = Access::Owner);
    File_NamPipeServer(const File_NamPipeServer&) = delete;
    File_NamPipeServer& operator=(const File_NamPipeServer&) = delete;
    ~File_NamPipeServer();

    // Closes what is open, then takes a name; clients can connect from then on, and wait until they
    // are accepted. Nobody from another machine ever can. Raises "Cannot create named pipe": with
    // EADDRINUSE, on Windows EACCES, where another server has the name.
    void Open(const Str& oName, Access eAccess = Access::Owner);
    // Lets the name go. Connections stay.
    void Close() noexcept;
    [[nodiscard]] bool IsOpen() const noexcept { return m_pServer != nullptr; }
    [[nodiscard]] const char* Name() const noexcept { return m_oName.CStr(); }

    // Waits for a client and makes oClient the connection to it; what that was before is closed as
    // by its destructor. False when none has come in time. Raises "Named pipe '%0' could not be
    // connected", and "object points to nothing" on a closed server.
    bool Accept(File_NamPipe& oClient, u2_t uMs);

  private:
    struct Closer {
        void operator()(sys::PipeServer* pServer) const noexcept;
    };

    std::unique_ptr<sys::PipeServer, Closer> m_pServer;
    Str m_oName;
};

}  // namespace vok

#endif  // VOK_FILE_NAM_PIPE_H
