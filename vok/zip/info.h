// SPDX-License-Identifier: MIT
// What a zip archive says about itself and its members.
#ifndef VOK_ZIP_INFO_H
#define VOK_ZIP_INFO_H

#include <string>
#include <string_view>

#include "vok/base/str.h"

namespace vok {

// The compression methods that are read and written.
inline constexpr u2_t ZIP_STORED = 0;
inline constexpr u2_t ZIP_DEFLATED = 8;

// 1980-01-01 00:00:00, the first moment that a zip archive can name.
inline constexpr u2_t ZIP_DOS_EPOCH = 0x00210000;

// Of a whole archive.
struct Zip_GlobalInfo {
    u2_t m_uEntries = 0;
    u2_t m_uCommentSize = 0;  // bytes as stored
    u3_t m_uBehind = 0;       // bytes behind the archive: maybe of an append that was interrupted
};

// Of one member, as its central header has it.
struct Zip_FileInfo {
    u2_t m_uVersionMadeBy = 0;  // low byte: version; high byte: system, 0 DOS, 3 Unix
    u2_t m_uVersionNeeded = 0;
    u2_t m_uFlags = 0;  // 1 encrypted, 8 sizes behind the data, 0x800 names in UTF-8
    u2_t m_uMethod = 0;
    u2_t m_uDosDate = 0;  // see Zip_DateFields
    u2_t m_uCrc = 0;
    u2_t m_uCompressedSize = 0;
    u2_t m_uUncompressedSize = 0;
    u2_t m_uDisk = 0;
    u2_t m_uInternalAttributes = 0;
    u2_t m_uExternalAttributes = 0;  // of DOS below, of Unix in the upper 16 bits
    u2_t m_uOffset = 0;              // of the local header, from the first byte of the zip data
    Str m_oName;                     // as UTF-8
    Str m_oComment;                  // as UTF-8
    std::string_view m_sExtra;       // raw; valid until the archive is opened or closed again

    // Names of folders end in a slash.
    [[nodiscard]] bool IsFolder() const noexcept { return m_oName.View().ends_with('/'); }
};

// What the maker of a member may say about it.
struct Zip_NewInfo {
    u2_t m_uDosDate = ZIP_DOS_EPOCH;
    u2_t m_uInternalAttributes = 0;
    u2_t m_uExternalAttributes = 0;
};

// The parts of a DOS date. What an archive says need not be a date at all: a month may be 0 to 15,
// a day 0 to 31, an hour 0 to 31, a minute 0 to 63, a second 0 to 62.
struct Zip_Date {
    unsigned m_uYear;  // 1980 to 2107
    unsigned m_uMonth;
    unsigned m_uDay;
    unsigned m_uHour;
    unsigned m_uMinute;
    unsigned m_uSecond;  // even
};
[[nodiscard]] Zip_Date Zip_DateFields(u2_t uDosDate) noexcept;
// The other way for seconds since 1970 UTC: rounded down to even seconds, clamped to the years
// 1980 to 2107.
[[nodiscard]] u2_t Zip_DosDate(double dSeconds) noexcept;
// The extra field that holds a time of modification, in seconds since 1970 UTC, to the second;
// empty beyond 1901 to 2038. For both headers of a member.
[[nodiscard]] std::string Zip_TimeField(double dSeconds);
// The time of modification: that of the extra field, else the DOS date taken as UTC.
[[nodiscard]] double Zip_Seconds(const Zip_FileInfo& oInfo) noexcept;

// Whether a file of this name, made below some folder, lies below that folder on every system:
// neither empty nor absolute, no "..", no drive letter, no control characters. A backslash counts
// as a slash; dots and blanks alone, which some systems take for "..", are refused as well.
[[nodiscard]] bool Zip_IsSafeName(std::string_view sName) noexcept;
// The same for a member, which must be a file or a folder as well: links and devices are refused.
[[nodiscard]] bool Zip_IsSafeMember(const Zip_FileInfo& oInfo) noexcept;

}  // namespace vok

#endif  // VOK_ZIP_INFO_H
