// SPDX-License-Identifier: MIT
// Zip archives.
#ifndef VOK_ZIP_ARCHIVE_H
#define VOK_ZIP_ARCHIVE_H

#include <memory>
#include <string_view>

#include "vok/base/limits.h"
#include "vok/file/file.h"
#include "vok/zip/info.h"

namespace vok {

// Reads, writes and appends archives in the standard format: deflated and stored members, one
// disk, no ZIP64, no encryption. Anything else is refused with the name of the member.
//
//     Zip_Archive oZip("tree.zip", "w");          Zip_Archive oZip("tree.zip");
//     oZip.OpenNewFile("tree.dgraph");            if (oZip.LocateFile("tree.dgraph")) {
//     Dgraph_SaveDGraph(oTree, oZip);                 oZip.OpenCurrentFile();
//     oZip.Close();                                   Dgraph_LoadDGraph(oTree, oZip);
//                                                     oZip.CloseCurrentFile();
//                                                 }
//
// One member at a time is open, and the archive is the stream of its plain bytes. Names and
// comments are kept in code page 437 and given as UTF-8; names of others that are marked as UTF-8,
// or were made under Unix and are UTF-8, are read as such. Offsets, sizes and counts of an archive
// that is read are checked before they are used; members that share bytes are refused; memory is
// the directory, and about 600 KiB.
//
// Operations on an archive in the wrong mode raise "zip file ... is not open for read" or "...
// write". Those on a member raise "current file of zip archive ... is not open" when there is none.
//
// An archive is used by one thread at a time.
class Zip_Archive final : public File_Stream {
  public:
    // Closed.
    Zip_Archive() noexcept;
    // As after Open().
    explicit Zip_Archive(const Str& oPath, const char* sMode = "r", const Limits& oLimits = {});
    Zip_Archive(const Zip_Archive&) = delete;
    Zip_Archive& operator=(const Zip_Archive&) = delete;
    // Closes without a word, as the destructor of File does. When an exception is passing, an
    // archive that is being written gets no directory: a new one cannot be read then, one that was
    // being appended to still can, as it was.
    ~Zip_Archive() override;

    // Closes the archive that is open, as Close() does, then opens oPath. An empty path does no
    // more than that. The first letter of sMode counts, null means "r":
    //   r  reads the directory and goes to the first member. Bytes in front of the zip data and
    //      behind the archive are ignored. Takes linear time in the directory, and in the bytes
    //      behind the archive, which may be an append that was interrupted.
    //   w  makes a new archive.
    //   a  adds members to an archive. Nothing that is there is touched: new members and then a
    //      directory of all members are appended, so that the archive can be read as it was until
    //      Close() is through; an append that fails is cut off again. Members whose names exist
    //      already are added beside the old ones, and LocateFile finds the new ones. An archive
    //      whose comment holds an end record is refused with "feature not supported". A missing or
    //      empty file is made as with "w". A file that is no archive keeps its bytes in front of
    //      the zip data, unless it begins like an archive.
    // oLimits bounds the number of members, and what each one inflates to.
    // Raises "invalid or corrupted zip file", "could not open file", limits, ZIP64.
    void Open(const Str& oPath, const char* sMode = "r", const Limits& oLimits = {});
    // Makes a new archive in a file that is open for writing and empty. The file must outlive the
    // archive, and stays open.
    void Open(File& oFile);
    // Opens an archive in memory for reading: uSize bytes which must stay alive and unchanged.
    // Messages call it "*** Zip_Archive ***". Raises "invalid or corrupted zip buffer", "object
    // points to nothing" for a null block with a size, limits, ZIP64.
    void Open(const void* pBlock, std::size_t uSize, const Limits& oLimits = {});

    // Closes an open member and the archive; in a written one the directory and sComment go to its
    // end. Null keeps the comment that an archive had before it was appended to. Appending no
    // member and no other comment leaves the file as it is. The archive is closed also when an
    // error is raised: "uTmp < 0x10000" (65,536 members or more), "size_comment == tmp" (a comment
    // beyond 65,535 bytes), those of CloseCurrentFile, "file write error".
    void Close(const char* sComment = nullptr);

    [[nodiscard]] bool IsOpen() const noexcept;

    // ---- members of an archive that is read -------------------------------

    [[nodiscard]] Zip_GlobalInfo GetGlobalInfo() const;
    // The archive's comment as UTF-8.
    [[nodiscard]] Str GetGlobalComment() const;

    // Makes a member the current one; false, without any change, when there is none. An open
    // member stays open. LocateFile takes the name as UTF-8 and finds the last member that has
    // exactly this one, in constant time on average; its first call is linear in the directory.
    bool GoToFirstFile();
    bool GoToNextFile();
    bool LocateFile(const Str& oName);

    // Of the current member, from the directory.
    [[nodiscard]] Zip_FileInfo GetCurrentFileInfo() const;
    // Replaces oExtra by the extra field of its local header, which may differ from that of the
    // directory. Raises what OpenCurrentFile raises.
    void GetCurrentFileExtrafield(Arr<char>& oExtra);

    // Opens the current member for reading; one that is open is closed first. Raises "invalid or
    // corrupted zip file" when its headers are wrong or disagree, an error with its name when it is
    // encrypted, needs ZIP64 or another method, lies on another disk or overlaps another member,
    // and limits.
    void OpenCurrentFile();
    // Whether the position is at the end of the member.
    [[nodiscard]] bool Eof();
    // Closes the open member, read or written. A written one gets its sizes.
    void CloseCurrentFile();
    // Opens the current member, replaces oBuffer by its plain bytes and closes it.
    void Uncompress(Arr<char>& oBuffer);

    // ---- members of an archive that is written ----------------------------

    static constexpr int DEFAULT_LEVEL = -1;

    // Starts a member; an open one is closed first. Names should be relative, with slashes, and
    // end in a slash for folders (see Zip_IsSafeName). A name that code page 437 cannot hold is
    // stored as UTF-8, flagged as such, and in the Unicode path field as well. The extra fields for
    // its two headers are written as they are. The level is that of zlib, 0 to 9, or its default.
    // Raises "size_filename == tmp", "size_comment == tmp" for more than 65,535 bytes, assertion
    // failures for an empty name, extra fields of that size, another level, and the error of other
    // methods; nothing is changed then, and an open member stays open. Raises also the errors of
    // CloseCurrentFile, and that of archives beyond 4 GiB with the open member closed.
    void OpenNewFile(const Str& oName, const Zip_NewInfo& oInfo = {},
                     std::string_view sLocalExtra = {}, std::string_view sCentralExtra = {},
                     const Str& oComment = {}, u2_t uMethod = ZIP_DEFLATED,
                     int iLevel = DEFAULT_LEVEL);

    // ---- the open member as a stream --------------------------------------

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend = false) override;
    // With the last byte of a member its size and CRC-32 are checked: "CRC error in current file of
    // zip archive", an error that names the member, or a limit is raised by the read that would
    // give that byte. A count that is neither ALL nor fits a signed 32-bit number raises an
    // assertion failure.
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort = false) override;
    // Raises "file write error", and an error that names the member when it gets larger than 4 GiB.
    // After an error the archive cannot be completed.
    std::size_t Write(const void* pSource, std::size_t uCount = ALL) override;
    // In a member that is read, from the start and from the position; in front of the start means
    // the start, behind the end the end. Going forward reads, going back starts again from the
    // beginning unless the target is in the buffer. Raises "feature not yet implemented" for a seek
    // from the end.
    void Seek(i3_t iOffset, int iWhence = FROM_START) override;
    // Plain bytes in front of the position.
    [[nodiscard]] i3_t Tell() override;
    // Returns 0. A member is complete in the file only when it is closed.
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int iWhence) const override {
        return iWhence == FROM_START || iWhence == FROM_POSITION;
    }
    // The path of the archive, "*** Zip_Archive ***" in memory, null when closed.
    [[nodiscard]] const char* Name() const override;
    [[nodiscard]] bool TakesPieces() const override { return true; }

  private:
    struct State;

    void OpenForReading(const Str& oPath, const Limits& oLimits);
    void OpenForWriting(const Str& oPath);
    void OpenForAppending(const Str& oPath, const Limits& oLimits);
    void CloseState(const char* sComment);
    [[nodiscard]] State& Reading() const;
    [[nodiscard]] State& Writing() const;

    std::unique_ptr<State> m_pState;  // null when closed
};

}  // namespace vok

#endif  // VOK_ZIP_ARCHIVE_H
