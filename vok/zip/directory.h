// SPDX-License-Identifier: MIT
// The central directory of an archive: finding, checking and keeping it. Internal.
#ifndef VOK_ZIP_DIRECTORY_H
#define VOK_ZIP_DIRECTORY_H

#include <memory>
#include <string_view>

#include "vok/base/hash.h"
#include "vok/base/limits.h"
#include "vok/zip/info.h"
#include "vok/zip/messages.h"
#include "vok/zip/records.h"
#include "vok/zip/source.h"

namespace vok::zip {

// Every header in it was checked to lie inside. Offsets count from the first byte of the zip data,
// which may have other bytes in front of it.
class Directory {
  public:
    Directory() = default;
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;

    // Reads the directory of the last archive in oSource that is complete; false when there is
    // none. An append that was interrupted leaves the old end record in front of its debris: it is
    // found again. Linear in the bytes behind the end record and in the directory. Raises
    // "invalid or corrupted" for a directory that does not hold what its end record says, ZIP64,
    // and the limit of members.
    [[nodiscard]] bool Load(Source& oSource, const Limits& oLimits, const Archive_Errors& oErrors);

    [[nodiscard]] u2_t Count() const noexcept { return static_cast<u2_t>(m_oHeaders.Size()); }
    // The header of member uNth, below Count().
    [[nodiscard]] Central operator()(u2_t uNth) const noexcept {
        return Central(m_sBytes.data() + m_oHeaders(uNth));
    }
    [[nodiscard]] Zip_FileInfo Info(u2_t uNth) const;
    [[nodiscard]] Str Name(u2_t uNth) const;
    // The last member of that name, which is the newest; Count() when there is none. The first call
    // takes linear time, later ones constant time on average.
    [[nodiscard]] u2_t Locate(std::string_view sName);

    // The headers, one behind the other.
    [[nodiscard]] std::string_view Bytes() const noexcept { return m_sBytes; }
    // The archive's own comment, in code page 437.
    [[nodiscard]] std::string_view Comment() const noexcept {
        return {m_oComment.Beg() != nullptr ? m_oComment.Beg() : "", m_oComment.Size()};
    }
    // Bytes behind the archive.
    [[nodiscard]] u3_t Behind() const noexcept { return m_uBehind; }
    // Bytes in front of the zip data.
    [[nodiscard]] u3_t Prefix() const noexcept { return m_uPrefix; }
    // Where the directory begins in the source.
    [[nodiscard]] u3_t Position() const noexcept { return m_uPosition; }
    // Whether every member begins in front of the directory.
    [[nodiscard]] bool IsInside() const noexcept;
    // Where the bytes of member uNth end at the latest: at the next one, or at the directory.
    // Equal to its start when another member starts at the same place.
    [[nodiscard]] u3_t Bound(u2_t uNth);

  private:
    // An end record whose fields agree with each other and the source.
    struct Found {
        u3_t m_uPosition = 0;
        u2_t m_uEntries = 0;
        u2_t m_uSize = 0;  // of the directory
        u2_t m_uOffset = 0;
        u2_t m_uComment = 0;
    };
    enum class Verdict { No, Yes, Costly };

    [[nodiscard]] bool Find(Source& oSource, const Archive_Errors& oErrors, Found& oFound);
    [[nodiscard]] static Verdict Judge(Source& oSource, const Archive_Errors& oErrors,
                                       u3_t uPosition, const char* pRecord, Found& oFound);
    [[nodiscard]] bool Split(u2_t uEntries);

    std::string_view m_sBytes;
    Arr<char> m_oBytes;  // what m_sBytes views unless that is the source's own memory
    Arr<u2_t> m_oHeaders;
    Arr<char> m_oComment;
    u3_t m_uPrefix = 0;
    u3_t m_uPosition = 0;
    u3_t m_uBehind = 0;

    std::unique_ptr<Hash> m_pNames;  // made by the first Locate()
    Arr<u2_t> m_oLast;               // per key the last member of that name
    Arr<u2_t> m_oStarts;             // of all members, ascending; made by the first Bound()
};

}  // namespace vok::zip

#endif  // VOK_ZIP_DIRECTORY_H
