// SPDX-License-Identifier: MIT
// Reading the members of an archive. Internal.
#ifndef VOK_ZIP_READER_H
#define VOK_ZIP_READER_H

#include <string_view>

#include "vok/zip/directory.h"
#include "vok/zip/unpacker.h"

namespace vok::zip {

// A cursor over the members, and at most one of them open. The open member stays open when the
// cursor moves.
class Reader final : Feed {
  public:
    Reader(Source&& oSource, const Limits& oLimits, Archive_Errors&& oErrors);
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() = default;

    [[nodiscard]] const Archive_Errors& Who() const noexcept { return m_oErrors; }
    [[nodiscard]] Directory& Dir() noexcept { return m_oDirectory; }

    // ---- the cursor -------------------------------------------------------

    [[nodiscard]] bool GoTo(u2_t uNth) noexcept;
    [[nodiscard]] bool GoToNext() noexcept;
    // Its number; raises "current file ... is not open" in an archive without members.
    [[nodiscard]] u2_t Current() const;
    // The extra field of its local header.
    void Extrafield(Arr<char>& oExtra);

    // ---- the open member --------------------------------------------------

    void OpenMember();
    void CloseMember();
    [[nodiscard]] Unpacker& Member();
    // Plain bytes that are still to come.
    [[nodiscard]] u3_t Left();
    void Seek(i3_t iOffset, int iWhence);

  private:
    struct Place {
        u3_t m_uExtra = 0;  // positions in the source
        u3_t m_uData = 0;
    };
    // The local header is read to pCopy, or seen through the window.
    [[nodiscard]] Place FindPlace(u2_t uNth, const Str& oName, Arr<char>* pCopy);
    void CheckReadable(const Central& oHeader, const Str& oName) const;
    void Restart();

    std::string_view Next() override;
    std::size_t Copy(char* pTarget, std::size_t uCount) override;
    Fault Done(std::size_t uUnused) override;
    [[noreturn]] void Fail(Fault eFault) override;

    Source m_oSource;
    const Limits m_oLimits;
    const Archive_Errors m_oErrors;
    Directory m_oDirectory;
    u2_t m_uCurrent = 0;

    bool m_bOpen = false;
    u2_t m_uOpen = 0;  // number of the open member
    Str m_oOpenName;
    Unpacker m_oUnpacker;
    u3_t m_uData = 0;  // where its compressed bytes begin
    u3_t m_uNext = 0;  // where those begin that were not handed out
    u3_t m_uLeft = 0;  // how many these are
};

}  // namespace vok::zip

#endif  // VOK_ZIP_READER_H
