// SPDX-License-Identifier: MIT
// Streams between processes of one machine, by names. posix_pipe.cpp and win32_pipe.cpp stand
// behind it. Internal.
//
// A name is plain (IsPlainName) and then the user's own, or, where pipes are files, a path: one
// with a "/" in it. Functions that fail leave the reason in RuntimeError(), and in LastError()
// where that is another one. No wait is longer than it is told to be, in milliseconds.
#ifndef VOK_SYS_PIPE_H
#define VOK_SYS_PIPE_H

#include "vok/sys/types.h"

namespace vok::sys {

inline constexpr u2_t FOREVER = ~u2_t{0};
inline constexpr u2_t NO_READER = 32;  // EPIPE, the same everywhere

struct Pipe;        // one end of a connection
struct PipeServer;  // a name that others may connect to

// How a wait ended; TimedOut leaves a reason as well.
enum class PipeEnd : u0_t {
    Done,
    TimedOut,
    Closed,  // there is no other side any more, or its program has ended
    Failed
};

// Takes a name that no living server has, one that was left behind as well. Nobody but the user,
// unless bEveryone is set, can connect, from the first moment on. Null on failure.
[[nodiscard]] PipeServer* ListenPipe(const char* sName, bool bEveryone) noexcept;
[[nodiscard]] PipeEnd AcceptPipe(PipeServer& oServer, u2_t uMs, Pipe*& pPipe) noexcept;
void CloseServer(PipeServer* pServer) noexcept;

// Waits for a server that is not there yet, and for one that has too much to do.
[[nodiscard]] PipeEnd ConnectPipe(const char* sName, u2_t uMs, Pipe*& pPipe) noexcept;
// Reads what is there, uSize bytes at most, or waits until something is: uDone is 0 unless it is
// Done, and never then.
[[nodiscard]] PipeEnd ReadPipe(Pipe& oPipe, char* pTarget, std::size_t uSize, u2_t uMs,
                               std::size_t& uDone) noexcept;
// Writes all of it, waiting for each part. After a failure nobody knows how much the other side
// has.
[[nodiscard]] PipeEnd WritePipe(Pipe& oPipe, const char* pSource, std::size_t uSize,
                                u2_t uMs) noexcept;
// What was written can still be read by the other side.
void ClosePipe(Pipe* pPipe) noexcept;
// The process at the other side; 0 where the system does not tell.
[[nodiscard]] u2_t PeerProcess(const Pipe& oPipe) noexcept;

}  // namespace vok::sys

#endif  // VOK_SYS_PIPE_H
