// SPDX-License-Identifier: MIT
// Writing members into an archive. Internal.
#ifndef VOK_ZIP_WRITER_H
#define VOK_ZIP_WRITER_H

#include <exception>
#include <string_view>

#include "vok/file/file.h"
#include "vok/zip/info.h"
#include "vok/zip/messages.h"
#include "vok/zip/packer.h"

namespace vok::zip {

// Appends members and, at the end, the directory. What is written collects in a buffer: a member
// that still lies there when it is complete gets its sizes in memory. Of a larger one the local
// header is patched in the file or, where that must not be touched or cannot seek, its sizes go
// behind the data.
class Writer final : Sink {
  public:
    // What lies in the archive before the first new member.
    struct Base {
        u3_t m_uPrefix = 0;      // bytes in front of the zip data
        u3_t m_uSize = 0;        // of the file
        u2_t m_uEntries = 0;     // members
        Arr<char> m_oDirectory;  // their headers
        Arr<char> m_oComment;    // in code page 437
    };

    // The file is open for writing, its position at its end.
    Writer(File& oFile, Archive_Errors&& oErrors, Base&& oBase, bool bPatch);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() = default;

    [[nodiscard]] const Archive_Errors& Who() const noexcept { return m_oErrors; }
    [[nodiscard]] bool IsBroken() const noexcept { return m_bBroken; }
    // Whether an exception has come up since the archive was opened.
    [[nodiscard]] bool IsUnwinding() const noexcept {
        return std::uncaught_exceptions() > m_iExceptions;
    }
    // Plain bytes of the open member.
    [[nodiscard]] u3_t Position() const;

    void OpenMember(const Str& oName, const Zip_NewInfo& oInfo, std::string_view sLocalExtra,
                    std::string_view sCentralExtra, const Str& oComment, u2_t uMethod, int iLevel);
    void Write(const char* pSource, std::size_t uCount);
    void CloseMember();
    // Closes an open member, writes the directory. Null keeps the old comment.
    void Finish(const Str* pComment);

  private:
    // Runs what writes. What failed cannot be completed.
    template <class F>
    void Change(F&& oBody);
    void CheckMember() const;
    void CheckSize(u3_t uMore) const;
    // Name and comment as they are stored.
    void AddHeaders(std::string_view sName, const Zip_NewInfo& oInfo, std::string_view sLocalExtra,
                    std::string_view sCentralExtra, std::string_view sComment, u1_t uFlags,
                    u2_t uMethod);
    void EndMember();
    void SetFlag(u1_t uFlag);
    void HandOn();
    void HandOnFull();
    void Append(const void* pBytes, std::size_t uCount);

    char* Space(std::size_t& uSize) override;
    void Commit(std::size_t uCount) override;
    void Put(const char* pSource, std::size_t uCount) override;

    // Where the open member's local header is.
    [[nodiscard]] bool IsHeaderHere() const noexcept { return m_uHeader >= m_uWritten; }

    File& m_oFile;
    const Archive_Errors m_oErrors;
    const bool m_bPatch;  // the file may be patched
    const int m_iExceptions = std::uncaught_exceptions();
    const u3_t m_uPrefix;
    Arr<char> m_oDirectory;
    Arr<char> m_oComment;
    u3_t m_uEntries;
    const bool m_bAppends;   // something is in front of the first new member
    bool m_bNew;             // something is to be written
    bool m_bBroken = false;  // something was not written

    Arr<char> m_oOut;  // bytes that follow what is in the file
    u3_t m_uWritten;   // bytes in the file

    bool m_bOpen = false;
    Str m_oOpenName;
    u3_t m_uHeader = 0;          // position of its local header
    std::size_t m_uCentral = 0;  // of its central one in m_oDirectory
    Packer m_oPacker;
};

}  // namespace vok::zip

#endif  // VOK_ZIP_WRITER_H
