// SPDX-License-Identifier: MIT
// What archives and compressed streams are refused with. Internal.
#ifndef VOK_ZIP_MESSAGES_H
#define VOK_ZIP_MESSAGES_H

#include <string_view>

#include "vok/base/str.h"
#include "vok/zip/codec.h"

namespace vok::zip {

// What is wrong with a member, or with what is asked of it.
enum class Member_Fault {
    Encrypted,
    NeedsZip64,
    OtherDisk,
    Overlaps,  // its bytes belong to another one as well
    Damaged,
    Ends,
    Size,
    TooLarge,  // to be written
};

// An archive as messages call it, and all that can be said of it.
class Archive_Errors {
  public:
    // Of an archive in memory.
    Archive_Errors() : m_oArchive("*** Zip_Archive ***"), m_bMemory(true) {}
    explicit Archive_Errors(const Str& oPath) : m_oArchive(oPath), m_bMemory(false) {}

    [[nodiscard]] const char* Archive() const noexcept { return m_oArchive.CStr(); }

    // "invalid or corrupted zip file", or "buffer".
    [[noreturn]] void Invalid() const;
    // The same, and the "CRC error", with the member's name in the where-trail, since their
    // texts have no room for it.
    [[noreturn]] void Invalid(const Str& oMember) const;
    [[noreturn]] void Crc(const Str& oMember) const;

    [[noreturn]] void Raise(Member_Fault eFault, const Str& oMember) const;
    [[noreturn]] void Method(const Str& oMember, u2_t uMethod) const;
    [[noreturn]] void NeedsZip64() const;
    // Writing failed before: what was asked for since cannot be done.
    [[noreturn]] void Incomplete() const;
    // The file changed between reading its directory and appending to it.
    [[noreturn]] void Changed() const;

  private:
    Str m_oArchive;
    bool m_bMemory;
};

// Refuses the comment of an archive that is appended to if readers could take a part of it for the
// end of the archive: "feature not supported".
void CheckComment(std::string_view sComment);

// Decompressing a bare stream failed: "unexpected end of file" or "invalid or corrupted zip file",
// for a stream in memory "... buffer".
[[noreturn]] void RaiseStream(Fault eFault, const char* sName, bool bMemory);

}  // namespace vok::zip

#endif  // VOK_ZIP_MESSAGES_H
