// SPDX-License-Identifier: MIT
// A file on disk as a stream, and the binary primitives that work on any stream.
#ifndef VOK_FILE_FILE_H
#define VOK_FILE_FILE_H

#include <functional>
#include <string_view>
#include <vector>

#include "vok/base/str.h"
#include "vok/file/buf.h"
#include "vok/file/stream.h"

namespace vok {

// What is known of a file or folder without opening it. Times are seconds since 1970-01-01 UTC, 0
// where the file system does not keep them.
struct File_Info {
    enum class Kind : u0_t {
        None,    // nothing is there
        File,    // a regular file
        Folder,  // a directory
        Link,    // a symbolic link, on Windows also a junction, that was not followed
        Other    // a pipe, a device
    };
    Kind m_eKind = Kind::None;
    bool m_bMayWrite = false;  // whether its mode, on Windows its attribute, lets anybody write
    u2_t m_uMode = 0;          // permission bits as chmod has them; on Windows 0666 or 0444
    u3_t m_uSize = 0;          // bytes of a file; 0 for others
    double m_dModified = 0;
    double m_dRead = 0;  // the last time it was read, as far as the system keeps that

    [[nodiscard]] bool IsThere() const noexcept { return m_eKind != Kind::None; }
    [[nodiscard]] bool IsFile() const noexcept { return m_eKind == Kind::File; }
    [[nodiscard]] bool IsFolder() const noexcept { return m_eKind == Kind::Folder; }
};

// A disk file, plain or gzip-compressed. Opening, reading and writing are tried again a
// few times before they fail, since other processes, network drives and virus scanners
// let go of a file a little later than one would like.
//
// A file is used by one thread at a time. The count of open files is the one thing that
// all share; it is atomic.
class File : public File_Stream {
  public:
    // What Flags() says of an open file.
    static constexpr u2_t FLAG_READ = 1;
    static constexpr u2_t FLAG_WRITE = 2;
    static constexpr u2_t FLAG_APPEND = 4;
    static constexpr u2_t FLAG_TEXT = 8;
    static constexpr u2_t FLAG_GZIP = 16;
    static constexpr u2_t FLAG_UNBUFFERED = 32;
    static constexpr u2_t FLAG_SHARED = 64;

    // Closed.
    File() noexcept = default;
    // As after Open().
    explicit File(const Str& oPath, const char* sAttributes = nullptr) { Open(oPath, sAttributes); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    // Closes, trying as Close() does, but without a word: who wants to know whether the last bytes
    // of a written file reached the disk calls Close().
    ~File() override;

    // Closes the file that is open, if any, as Close() does, then opens oPath; the directories
    // above a file to be written are made when they are missing. An empty path does nothing at all.
    // Returns whether oPath was opened; with bRaise a failure raises "could not open file".
    //
    // The letters of sAttributes, null meaning "r"; others are ignored:
    //   r  read             +  read and write ("r+", "w+", "a+")
    //   w  write, emptied   t  text where the system knows the difference
    //   a  append           b  binary, which is the default
    //   z  gzip: either read (plain files as well) or written, never both
    //   u  unbuffered       s  shared: others may do with the file what they like
    // Without "s" others may read what is open for reading and touch nothing that is open
    // for writing. A failed attempt is repeated after 5, 15, 25, ... ms, 4 times by
    // default (level 3): a "T" in front sets level 0, no repetition; each "R" adds a
    // level; level L gives 2^(L-1) repetitions, 4096 at most. Errors that waiting does
    // not cure end it at once.
    bool Open(const Str& oPath, const char* sAttributes = nullptr, bool bRaise = true);

    // Closes the file; a closed one stays closed. When bytes that were written cannot be
    // brought to the disk, the file is closed all the same and "file write error" raised
    // (with 0 bytes not written for a gzip file, where nobody knows the number).
    void Close();

    // What messages call the open file from now on, where that is not its path.
    void SetName(const Str& oName) { m_oName = oName; }

    [[nodiscard]] bool IsOpen() const noexcept { return m_pHandle != nullptr; }
    [[nodiscard]] u2_t Flags() const noexcept { return m_uFlags & FLAGS_PUBLIC; }

    // ---- the stream -------------------------------------------------------
    // Every operation but Name and CanSeek raises "object points to nothing" on a closed
    // file, Write "file ... is not open for write". In a gzip file positions and counts
    // are those of the plain bytes.

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    // What is missing is asked for 10 more times, 2, 4, ... 1024 ms apart, unless short
    // reads are allowed. An error of the system, or damaged gzip data, is raised as
    // "unexpected end of file" also where short reads are allowed: there it comes up
    // before the first byte of a Read, with ALL in any case.
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Tries again like Read before "file write error" is raised, which counts all bytes
    // that did not get to the system since the position it names. Bytes of earlier calls
    // among them are kept and tried again with the next operation.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    // A gzip file cannot seek from its end, nor back while it is written.
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    [[nodiscard]] i3_t Tell() override;
    int Flush() override;
    [[nodiscard]] bool CanSeek(int) const override { return true; }
    [[nodiscard]] const char* Name() const override { return m_oName.Data(); }
    [[nodiscard]] bool TakesPieces() const override { return true; }

    // The size in bytes of the open file, what is buffered included, or of a named file;
    // -1 when there is none. Of a gzip file: as it lies on disk.
    [[nodiscard]] i3_t Size();
    [[nodiscard]] static i3_t Size(const Str& oPath);

    // ---- files and folders by their paths ---------------------------------
    // Paths are UTF-8; on Windows both separators do, and paths may be as long as the system has
    // them. Errors carry the system's reason. Nothing is tried again here. All of them may be
    // called by several threads, as far as these keep to different files.

    // Told of a copy from time to time, and at its end: bytes done and all there are. False ends
    // the copy. May throw, which ends it as well.
    using CopyProgress = std::function<bool(u3_t uDone, u3_t uTotal)>;

    // Copies a file with its time and mode, by the system's own way where it has one, so that file
    // systems may share the blocks. Links of oFrom are followed. The copy is made beside oTo and
    // takes its place when it is complete: what stood there, a link too, is replaced at once, and
    // stays as it was when the copy fails or is ended. Folders above oTo are made when they are
    // missing. False when oProgress ended it. Raises "could not copy file".
    static bool Copy(const Str& oFrom, const Str& oTo, const CopyProgress& oProgress = {});
    // Gives a file or folder another name, at once. A file that has that name is replaced, without
    // bReplace it is an error, as an existing folder always is unless the system can do it. Onto
    // another file system a file is copied, as Copy does, and removed, a folder is an error. Links
    // are renamed themselves. Raises "could not rename file".
    static void Rename(const Str& oFrom, const Str& oTo, bool bReplace = true);
    // Removes a file, or a link itself. Whether it was there. Raises "could not remove file", also
    // for a folder.
    static bool Remove(const Str& oPath);
    // Makes a folder, and those above it. Whether it was not there. Raises "could not create
    // directory", also where something else has that name.
    static bool MkDir(const Str& oPath);
    // Removes an empty folder. Whether it was there. Raises "directory "%0" is not empty, file "%1"
    // found" with the first name in it, and "could not remove file".
    static bool RmDir(const Str& oPath);
    // Whether a path leads to something; a link that leads nowhere does not.
    [[nodiscard]] static bool Exists(const Str& oPath);
    // What is at a path, of a link's target or, without bFollow, of the link. Kind::None where
    // there is nothing. Raises "path or file "%0" does not exist" where the system does not say.
    [[nodiscard]] static File_Info Info(const Str& oPath, bool bFollow = true);
    // Sets the time of the last change. Raises "could not touch file".
    static void Touch(const Str& oPath, double dSeconds);

    // Makes an empty file, or a folder, under a name that nobody had, with sStart in front, for
    // this user alone where the system knows users. Without a folder it is that for temporary
    // files. Nobody removes it. Returns its path. Raises "could not open file" and "could not
    // create directory".
    [[nodiscard]] static Str Temp(std::string_view sStart = "vok-", const Str& oFolder = {});
    [[nodiscard]] static Str TempDir(std::string_view sStart = "vok-", const Str& oFolder = {});

    // ---- open files of the process ----------------------------------------

    [[nodiscard]] static u3_t OpenFiles() noexcept;
    [[nodiscard]] static u3_t PeakOpenFiles() noexcept;
    // Prints "%0 open files (peak %1)".
    static void ReportOpenFiles();
    // For the end of a program: raises "still %0 files open" unless all are closed.
    static void CheckAllClosed();

    // Replaces what waits between attempts, for tests and for hosts with an event loop;
    // null restores the system's sleep. Must not throw. Returns the previous one.
    // Process-wide.
    using SleepMs = void (*)(unsigned uMilliseconds);
    static SleepMs SetSleep(SleepMs pSleep) noexcept;

    // ---- binary primitives ------------------------------------------------
    // Building blocks of binary documents, on any stream. Fixed-width numbers are
    // little-endian. Unless said otherwise each returns the number of bytes written or
    // read; errors are those of the stream's own operations.
    //
    // A Cint is a 32-bit integer in 1 to 5 bytes. The code z of v is 2v, or 1 - 2v when v
    // is negative (1 is not used). It is written high byte first, its length in the high
    // bits of the first byte:
    //     z < 2^7    1zzzzzzz
    //     z < 2^14   01zzzzzz +1 byte
    //     z < 2^21   001zzzzz +2 bytes
    //     z < 2^28   0001zzzz +3 bytes
    //     else       00001zzz +4 bytes
    // Of the last form only the low 24 bits of z are read back. Stored files depend on
    // both oddities: never repair them.

    static unsigned DumpCint(File_Stream& oStream, i2_t iValue);
    static unsigned LoadCint(File_Stream& oStream, i2_t& iValue);
    // The bytes a Cint takes.
    [[nodiscard]] static unsigned DumpSizeCint(i2_t iValue) noexcept;

    // A block is its length in 4 or 8 bytes, then that many bytes. Written is everything
    // in oBuffer, whatever its position; the 32-bit form raises an assertion failure for
    // 2 GiB and more.
    static u3_t DumpBufStream32(const File_Buf& oBuffer, File_Stream& oStream);
    static u3_t DumpBufStream64(const File_Buf& oBuffer, File_Stream& oStream);
    // Appends the bytes of a block to the storage of oBuffer, whose position and mode stay.
    // A block of length 0 gives 0 and changes nothing, a failure leaves oBuffer as it was.
    // Memory follows the bytes present, not the length claimed. A buffer over an external
    // block raises "file ... is not open for write".
    static u3_t LoadBufStream32(File_Buf& oBuffer, File_Stream& oStream);
    static u3_t LoadBufStream64(File_Buf& oBuffer, File_Stream& oStream);
    // Seeks over a block; 0 for a block of length 0.
    static u3_t SkipBufStream32(File_Stream& oStream);
    static u3_t SkipBufStream64(File_Stream& oStream);

    // The end of a sequence of 32-bit blocks: a length of 0.
    static u3_t DumpEndMarker(File_Stream& oStream);
    // Skips blocks up to and including the end marker; a stream that cannot seek is read.
    static u3_t LoadEndMarker(File_Stream& oStream);

    // "No version" (WriteMagic), "the library's own" (its uLibraryVersion).
    static constexpr u2_t NO_VERSION = 0xFFFFFFFF;

    // Writes the header that names class and version of a dumped object; a null class name
    // becomes "Unknown". Without a version the header is a block of 32 bytes, and a class
    // name of more than 21 bytes raises an assertion failure.
    static u3_t WriteMagic(File_Stream& oStream, const char* sClassName, u2_t uVersion,
                           u2_t uLibraryVersion = NO_VERSION);
    // Reads such a header. True when it names sClassName, the writer's library version
    // lies between uMinLibraryVersion and the library's own, the object version between
    // uMinVersion and uMaxVersion. Versions that were read are set, also when they do not
    // fit; a header without version gives 0 for both and fits when both minima are 0.
    // Otherwise raises "binary data ... have wrong version" or "binary data is not a dump
    // of object", or without bRaise moves the stream back to where it was, if it can seek,
    // and returns false.
    static bool CheckMagic(File_Stream& oStream, const char* sClassName, u2_t& uLibraryVersion,
                           u2_t& uVersion, bool bRaise = true, u2_t uMinLibraryVersion = 0,
                           u2_t uMinVersion = 0, u2_t uMaxVersion = NO_VERSION);
    // The class that the header at the start of a file, or of a buffer, names. Empty when
    // there is no such header, or its name has more than 4096 bytes.
    [[nodiscard]] static Str GetFileStreamClass(const Str& oPath);
    [[nodiscard]] static Str GetBufStreamClass(const File_Buf& oBuffer);

    // ---- XML tokens -------------------------------------------------------
    // For programs that read or write XML without a tree; flags as Data::LoadFromXML has them.

    // Reads up to the next cEnd, "<" or ">", which is consumed and not part of oToken. False
    // when the stream ends before it; oToken then holds what was left. Up to a "<" it is a
    // text, whose references are decoded: one that is unknown raises "unknown xml sequene
    // "%0"" unless flag 1 keeps it.
    static bool ReadXML(File_Stream& oStream, Str& oToken, char cEnd, u2_t uFlags = 0);
    // Writes a text with "&", "<", ">", quotes, apostrophes, no-break spaces and control characters
    // as references.
    static u3_t WriteXML(File_Stream& oStream, std::string_view sText);
    // Takes a start tag without its brackets apart, names and values decoded; a tab or line break
    // in a value is a blank. Flag 8 lets values lack quotes and attributes values. Raises "missing
    // char '%0' in XML stream" and "invalid character '%0' after '%1'".
    struct XML_Attribute {
        Str m_oName;
        Str m_oValue;
    };
    static void SplitXMLToken(std::string_view sTag, Str& oName,
                              std::vector<XML_Attribute>& oAttributes, u2_t uFlags = 0);

  private:
    static constexpr u2_t FLAGS_PUBLIC = 0x7F;
    // The last transfer: C streams want a seek between reading and writing.
    static constexpr u2_t STATE_READ = 0x100;
    static constexpr u2_t STATE_WRITTEN = 0x200;
    // Small transfers go through m_oBuffer and the C library does not buffer. Its own
    // buffer is of no use where writing may fail: some libraries drop what is in it.
    static constexpr u2_t STATE_BUFFERED = 0x400;
    // Pending bytes could not be handed on, however long one waited.
    static constexpr u2_t STATE_STUCK = 0x800;

    static constexpr std::size_t BUFFER_SIZE = 0x10000;

    struct Failure {
        bool m_bFailed = false;
        u3_t m_uNotWritten = 0;
        i3_t m_iPosition = 0;
        u2_t m_uError = 0;
    };

    // file.cpp
    [[nodiscard]] bool TryOpen(const char* sPath, const char* sMode, u2_t uFlags) noexcept;
    [[nodiscard]] Failure Shut() noexcept;
    static void Sleep(unsigned uMilliseconds);

    // file_io.cpp
    template <class Transfer>
    [[nodiscard]] static std::size_t Retry(std::size_t uDone, std::size_t uWanted,
                                           Transfer oTransfer);
    [[nodiscard]] bool Is(u2_t uFlag) const noexcept { return (m_uFlags & uFlag) != 0; }
    void CheckOpen() const;
    void TurnTo(u2_t uState);
    [[nodiscard]] std::size_t Ahead() const noexcept { return m_uEnd - m_uNext; }
    [[nodiscard]] bool HasError() const noexcept;
    [[nodiscard]] std::size_t ReadChunk(char* pTarget, std::size_t uCount) noexcept;
    [[nodiscard]] std::size_t ReadPart(char* pTarget, std::size_t uCount) noexcept;
    [[nodiscard]] std::size_t WriteChunk(const char* pSource, std::size_t uCount) noexcept;
    std::size_t ReadMore(void* pTarget, std::size_t uCount, bool bAllowShort);
    std::size_t WriteMore(const void* pSource, std::size_t uCount);
    [[nodiscard]] bool HandOn(bool bRetry) noexcept;
    void Drain(std::size_t uBehind);
    [[noreturn]] void RaiseWriteError(std::size_t uNotWritten);
    [[nodiscard]] bool SeekGzip(i3_t iOffset, int iWhence) noexcept;

    void* m_pHandle = nullptr;  // FILE*, or gzFile with FLAG_GZIP; null when closed
    Str m_oName;
    u2_t m_uFlags = 0;  // FLAG_ and STATE_ bits

    // Either bytes read ahead, at [m_uNext, m_uEnd), or bytes written, at [0, m_uPending);
    // never both. Has BUFFER_SIZE bytes once it is used.
    Arr<char> m_oBuffer;
    std::size_t m_uNext = 0;
    std::size_t m_uEnd = 0;
    std::size_t m_uPending = 0;

    i3_t m_iGzip = 0;  // position in what a gzip file holds
};

}  // namespace vok

#endif  // VOK_FILE_FILE_H
