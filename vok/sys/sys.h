// SPDX-License-Identifier: MIT
// The one door to the operating system. Everything else in the library is
// written against this header, and disk.h for files and folders by their paths;
// posix*.cpp and win32*.cpp stand behind them, and no other file includes a
// system header. Internal.
//
// Texts and paths are UTF-8. Functions that can fail return false (or null); those for files
// leave the reason in RuntimeError(), the others in LastError(). What is noexcept keeps to it.
#ifndef VOK_SYS_SYS_H
#define VOK_SYS_SYS_H

#include <cstdio>
#include <string>
#include <vector>

#include "vok/sys/types.h"

namespace vok::sys {

#if defined(_WIN32)
inline constexpr bool IS_WINDOWS = true;
#else
inline constexpr bool IS_WINDOWS = false;
#endif

// ---- process and threads --------------------------------------------------

[[nodiscard]] u2_t ProcessId() noexcept;
[[nodiscard]] u2_t ThreadId() noexcept;
void SleepMs(unsigned uMilliseconds) noexcept;

// Calls pBefore in the thread that forks the process, and pAfter afterwards in it and in the child.
// Does nothing where processes do not fork.
void OnFork(void (*pBefore)(), void (*pAfter)()) noexcept;

// Puts off a request to end the calling thread as long as this lives: it would otherwise unwind
// code that lets nothing pass.
class NoCancel {
  public:
    NoCancel() noexcept;
    ~NoCancel();
    NoCancel(const NoCancel&) = delete;
    NoCancel& operator=(const NoCancel&) = delete;

  private:
    int m_iBefore = 0;
};

// Memory of the calling thread, at least uSize bytes: one block that grows and is freed when the
// thread ends. Null when there is none to be had; what was there is then kept.
[[nodiscard]] void* ThreadBlock(std::size_t uSize) noexcept;

// ---- errors ---------------------------------------------------------------

// errno on Linux, GetLastError() on Windows.
[[nodiscard]] u2_t LastError() noexcept;
void SetLastError(u2_t uCode) noexcept;

// The error of the C library's own calls (fread, fclose, also zlib's for files) and of the
// functions for files below: errno everywhere.
[[nodiscard]] u2_t RuntimeError() noexcept;
void SetRuntimeError(u2_t uCode) noexcept;

// Writes the system's own text for uCode, NUL-terminated, and returns its length
// without the NUL; 0 when the system has none.
std::size_t SystemErrorText(u2_t uCode, char* sBuf, std::size_t uSize) noexcept;

// uCode, a value of RuntimeError(), as the number that the error has in the C runtime of
// Windows, by which message texts go. Codes that runtime lacks keep clear of its numbers.
[[nodiscard]] u2_t RuntimeErrno(u2_t uCode) noexcept;

// ---- program --------------------------------------------------------------

// The words of the command line in UTF-8, from what main() was given or from what the system
// knows better. Throws std::bad_alloc.
[[nodiscard]] std::vector<std::string> Arguments(int iCount, char** asArgument);
// Lets a terminal show UTF-8 and colours, and standard input and output pass bytes as they
// are. A terminal is put back when the program ends through exit().
void PrepareConsole() noexcept;
// The signals that end a program: at the keyboard, by others, with its terminal or its pipe.
[[nodiscard]] std::vector<int> EndingSignals();
// A file that grows beyond the limit of the process is then an error of writing.
void IgnoreFileSizeSignal() noexcept;
// Removes a file that the program may still have open. For handlers of interrupts only: all
// files may be closed afterwards, and the program must end at once.
void RemoveOnInterrupt(const char* sPath) noexcept;

// Runs a command of the shell whose standard input is what standard output gets from now on. Tells
// less, unless it has been told otherwise, to show colours, and to end at once where all fits the
// screen. False where that cannot be. Once in a process.
[[nodiscard]] bool StartPager(const char* sCommand) noexcept;
// Closes standard output and waits until that command has ended, if there is one. For handlers of
// interrupts as well.
void FinishPager() noexcept;

// ---- time -----------------------------------------------------------------

struct Calendar {
    int iYear;    // full, 2026
    int iMonth;   // 1 to 12
    int iDay;     // 1 to 31
    int iHour;    // 0 to 23
    int iMinute;  // 0 to 59
    int iSecond;  // 0 to 60
};

// Whole seconds since 1970-01-01 00:00:00 UTC.
[[nodiscard]] i3_t UnixTime() noexcept;
// uTime in the time zone of the process.
[[nodiscard]] Calendar LocalTime(i3_t iTime) noexcept;

// ---- console and debugger -------------------------------------------------

// Writes to standard output (bError false) or standard error without buffering.
void WriteToConsole(bool bError, const char* pBytes, std::size_t uSize) noexcept;
// Whether a C stream leads to a terminal.
[[nodiscard]] bool IsTerminal(std::FILE* pFile) noexcept;
// Lets a C stream pass bytes as they are, where the system would change line breaks.
void SetBinary(std::FILE* pFile) noexcept;
// Hands a text to an attached debugger; standard error where there is no such thing.
void DebugOutput(const char* sText) noexcept;
// Whether DebugOutput() reaches a debugger's own channel rather than standard error.
[[nodiscard]] bool HasDebugger() noexcept;

// ---- files ----------------------------------------------------------------

enum class Sharing {
    All,           // others may do what they like
    DenyWrite,     // others may read
    DenyReadWrite  // nobody else
};

// What stands between the names of a path, and whether a file opened as text ("t") stores
// other bytes than were written to it.
inline constexpr const char* PATH_SEPARATORS = IS_WINDOWS ? "/\\" : "/";
inline constexpr bool HAS_TEXT_FILES = IS_WINDOWS;

// Makes an empty file that was not there, for its maker alone until CopyMode; links count as there.
[[nodiscard]] bool CreateNew(const char* sPath) noexcept;
// Whether a file that is there may be written by this process.
[[nodiscard]] bool MayWrite(const char* sPath) noexcept;
// Gives sTo the mode of sFrom and, if the process may do that, its owner; without sFrom the mode
// that new files have.
void CopyMode(const char* sFrom, const char* sTo) noexcept;
// Cuts a file back to a size.
[[nodiscard]] bool TruncateFile(const char* sPath, i3_t iSize) noexcept;
// Waits until a file, or the names in a folder, are on the disk. "" is the current folder.
[[nodiscard]] bool SyncFile(const char* sPath) noexcept;

// Opens sPath with a C mode string ("rb", "w+b", "at"; a "t" is dropped where the
// system has no text mode). Null on failure; a file that another open excludes
// fails with EACCES.
[[nodiscard]] std::FILE* OpenFile(const char* sPath, const char* sMode, Sharing eSharing) noexcept;
// The same for a raw descriptor, which the caller closes through its owner (gzdopen).
[[nodiscard]] int OpenDescriptor(const char* sPath, const char* sMode, Sharing eSharing) noexcept;
void CloseDescriptor(int iDescriptor) noexcept;

[[nodiscard]] bool Seek(std::FILE* pFile, i3_t iOffset, int iWhence) noexcept;
// -1 on failure.
[[nodiscard]] i3_t Tell(std::FILE* pFile) noexcept;
// The size of an open file, flushed or not; -1 on failure.
[[nodiscard]] i3_t SizeOf(std::FILE* pFile) noexcept;
// The size of a named file; -1 when there is none.
[[nodiscard]] i3_t SizeOf(const char* sPath) noexcept;
// Whether sPath itself is a link to another place: a symbolic link, on Windows also a junction.
[[nodiscard]] bool IsLink(const char* sPath) noexcept;
// Creates sPath and every missing directory above it; true when it exists afterwards.
bool MakeDirectories(const char* sPath) noexcept;

// ---- memory ---------------------------------------------------------------

// Blocks so large that growing them must not copy: page tables are moved instead. Their bytes
// are not initialised. Up to 64 MiB of freed blocks are kept for the next ones, and up to 256 MiB
// as long as the system has memory to spare. Null when there is none.
[[nodiscard]] void* AllocPages(std::size_t uSize) noexcept;
[[nodiscard]] void* ReallocPages(void* pPages, std::size_t uOldSize, std::size_t uNewSize) noexcept;
void FreePages(void* pPages, std::size_t uSize) noexcept;

}  // namespace vok::sys

#endif  // VOK_SYS_SYS_H
