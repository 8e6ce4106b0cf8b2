// SPDX-License-Identifier: MIT
#include "vok/zip/directory.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"
#include "vok/base/utf8.h"
#include "vok/zip/cp437.h"

namespace vok::zip {

namespace {

constexpr std::string_view END_MAGIC("PK\x05\x06", 4);
// How far the search for the end record goes at a time.
constexpr std::size_t STEP = 64 * 1024;
// Records that look right are looked at more closely, which takes a transfer each. An archive
// with so many false ones was made for that.
constexpr unsigned MOST_CANDIDATES = 1000;

// Who made a member, in the upper byte of the version.
constexpr unsigned SYSTEM_UNIX = 3;
constexpr unsigned SYSTEM_DARWIN = 19;

[[nodiscard]] u2_t SignatureAt(Source& oSource, u3_t uPosition) {
    char sSignature[4] = {};
    (void)oSource.Read(uPosition, sSignature, sizeof(sSignature));
    return le::Load<u2_t>(sSignature);
}

// Whether the data of a stored member begins at uPosition, right behind its local header. An
// archive there is a member of another one whose end was cut off, and not what is looked for.
[[nodiscard]] bool IsStoredMember(Source& oSource, u3_t uPosition) {
    constexpr std::string_view sMagic("PK\x03\x04", 4);
    constexpr u3_t uLongest = LOCAL_SIZE + 2 * 0xFFFF;
    const auto uSize = static_cast<std::size_t>(std::min(uPosition, uLongest));
    Arr<char> oCopy;
    const std::string_view sBefore = oSource.All(uPosition - uSize, uSize, oCopy);
    if (uSize < LOCAL_SIZE) return false;
    for (std::size_t uAt = uSize - LOCAL_SIZE + 1; uAt > 0;) {
        uAt = sBefore.rfind(sMagic, uAt - 1);
        if (uAt == std::string_view::npos) return false;
        const Local oLocal(sBefore.data() + uAt);
        if (uAt + LOCAL_SIZE + oLocal.NameSize() + oLocal.ExtraSize() == uSize) {
            return oLocal.Method() == ZIP_STORED;
        }
    }
    return false;
}

}  // namespace

bool Directory::Load(Source& oSource, const Limits& oLimits, const Archive_Errors& oErrors) {
    Found oFound;
    if (!Find(oSource, oErrors, oFound)) return false;
    if (oFound.m_uEntries > oLimits.m_uZipEntries) {
        oLimits.RaiseExceeded(&Limits::m_uZipEntries);
    }
    m_uPosition = oFound.m_uPosition - oFound.m_uSize;
    m_uPrefix = m_uPosition - oFound.m_uOffset;
    m_sBytes = oSource.All(m_uPosition, oFound.m_uSize, m_oBytes);
    Arr<char> oCopy;
    const u3_t uComment = oFound.m_uPosition + END_SIZE;
    const std::string_view sComment = oSource.All(uComment, oFound.m_uComment, oCopy);
    m_oComment.Add(sComment.data(), sComment.size());
    m_uBehind = oSource.Size() - uComment - sComment.size();
    if (!Split(oFound.m_uEntries)) oErrors.Invalid();
    return true;
}

// ---- the end record -------------------------------------------------------------

// The last record that is right, whatever lies behind it.
bool Directory::Find(Source& oSource, const Archive_Errors& oErrors, Found& oFound) {
    if (oSource.Size() < END_SIZE) return false;
    unsigned uCandidates = 0;
    // Records from uEnd on have been looked at.
    u3_t uEnd = oSource.Size() - END_SIZE + 1;
    Arr<char> oCopy;
    while (uEnd > 0) {
        const u3_t uStart = uEnd > STEP ? uEnd - STEP : 0;
        const auto uRecords = static_cast<std::size_t>(uEnd - uStart);
        const std::string_view sHere = oSource.All(uStart, uRecords + END_SIZE - 1, oCopy);
        for (std::size_t uAt = uRecords; uAt > 0;) {
            uAt = sHere.rfind(END_MAGIC, uAt - 1);
            if (uAt == std::string_view::npos) break;
            switch (Judge(oSource, oErrors, uStart + uAt, sHere.data() + uAt, oFound)) {
                case Verdict::Yes: return true;
                case Verdict::Costly:
                    if (++uCandidates > MOST_CANDIDATES) return false;
                    break;
                case Verdict::No: break;
            }
        }
        uEnd = uStart;
    }
    return false;
}

Directory::Verdict Directory::Judge(Source& oSource, const Archive_Errors& oErrors, u3_t uPosition,
                                    const char* pRecord, Found& oFound) {
    const End oEnd(pRecord);
    const u3_t uBehind = oSource.Size() - uPosition - END_SIZE;
    if (oEnd.CommentSize() > uBehind) return Verdict::No;
    const bool bLast = oEnd.CommentSize() == uBehind;
    const u3_t uSize = oEnd.DirectorySize();
    const bool bGood =
        oEnd.Disk() == 0 && oEnd.DirectoryDisk() == 0 && oEnd.EntriesHere() == oEnd.Entries() &&
        uSize + oEnd.DirectoryOffset() <= uPosition && oEnd.Entries() * CENTRAL_SIZE <= uSize &&
        (oEnd.Entries() != 0 || uSize == 0);
    if (!bGood || (uSize != 0 && SignatureAt(oSource, uPosition - uSize) != CENTRAL_SIGNATURE)) {
        // With ZIP64 the fields refer to other records, or those lie in between.
        if (bLast && uPosition >= ZIP64_LOCATOR_SIZE &&
            SignatureAt(oSource, uPosition - ZIP64_LOCATOR_SIZE) == ZIP64_LOCATOR_SIGNATURE) {
            oErrors.NeedsZip64();
        }
        return bLast || bGood ? Verdict::Costly : Verdict::No;
    }
    const u3_t uPrefix = uPosition - uSize - oEnd.DirectoryOffset();
    if (uPrefix != 0 && IsStoredMember(oSource, uPrefix)) return Verdict::Costly;
    oFound = {uPosition, oEnd.Entries(), oEnd.DirectorySize(), oEnd.DirectoryOffset(),
              oEnd.CommentSize()};
    return Verdict::Yes;
}

// ---- the headers ----------------------------------------------------------------

bool Directory::Split(u2_t uEntries) {
    m_oHeaders.Reserve(uEntries);
    std::size_t uAt = 0;
    for (u2_t u = 0; u < uEntries; ++u) {
        if (m_sBytes.size() - uAt < CENTRAL_SIZE) return false;
        const Central oHeader(m_sBytes.data() + uAt);
        if (oHeader.Signature() != CENTRAL_SIGNATURE) return false;
        if (m_sBytes.size() - uAt < oHeader.Size()) return false;
        m_oHeaders.Add(static_cast<u2_t>(uAt));
        uAt += oHeader.Size();
    }
    const std::string_view sRest = m_sBytes.substr(uAt);
    m_sBytes = m_sBytes.substr(0, uAt);
    return sRest.empty() ||
           (sRest.size() >= 6 && le::Load<u2_t>(sRest.data()) == DIGITAL_SIGNATURE &&
            le::Load<u1_t>(sRest.data() + 4) == sRest.size() - 6);
}

namespace {

// A text of a header: its name or its comment. uField is the extra field that has it in Unicode.
Str TextOf(const Central& oHeader, std::string_view sText, u1_t uField) {
    if ((oHeader.Flags() & FLAG_UTF8) != 0) return FromUtf8(sText);
    // A maker that had no other way put it into an extra field, which counts as long as it belongs
    // to this very text.
    std::string_view sUnicode;
    if (FindExtra(oHeader.Extra(), uField, sUnicode) && sUnicode.size() > 5 && sUnicode[0] == 1 &&
        CrcOf(sText) == le::Load<u2_t>(sUnicode.data() + 1)) {
        return FromUtf8(sUnicode.substr(5));
    }
    // Unix programs store texts as they are there, and often say nothing about it.
    const unsigned uSystem = oHeader.VersionMadeBy() >> 8;
    const bool bUnix = uSystem == SYSTEM_UNIX || uSystem == SYSTEM_DARWIN;
    return bUnix && IsUtf8(sText.data(), sText.size()) ? FromUtf8(sText) : FromCp437(sText);
}

}  // namespace

Str Directory::Name(u2_t uNth) const {
    const Central oHeader = (*this)(uNth);
    return TextOf(oHeader, oHeader.Name(), EXTRA_UNICODE_NAME);
}

Zip_FileInfo Directory::Info(u2_t uNth) const {
    const Central oHeader = (*this)(uNth);
    Zip_FileInfo oInfo;
    oInfo.m_uVersionMadeBy = oHeader.VersionMadeBy();
    oInfo.m_uVersionNeeded = oHeader.VersionNeeded();
    oInfo.m_uFlags = oHeader.Flags();
    oInfo.m_uMethod = oHeader.Method();
    oInfo.m_uDosDate = oHeader.DosDate();
    oInfo.m_uCrc = oHeader.Crc();
    oInfo.m_uCompressedSize = oHeader.CompressedSize();
    oInfo.m_uUncompressedSize = oHeader.UncompressedSize();
    oInfo.m_uDisk = oHeader.Disk();
    oInfo.m_uInternalAttributes = oHeader.InternalAttributes();
    oInfo.m_uExternalAttributes = oHeader.ExternalAttributes();
    oInfo.m_uOffset = oHeader.Offset();
    oInfo.m_oName = Name(uNth);
    oInfo.m_oComment = TextOf(oHeader, oHeader.Comment(), EXTRA_UNICODE_COMMENT);
    oInfo.m_sExtra = oHeader.Extra();
    return oInfo;
}

u2_t Directory::Locate(std::string_view sName) {
    if (m_pNames == nullptr) {
        auto pNames = std::make_unique<Hash>();
        Arr<u2_t> oLast;
        oLast.Add(Count());  // of the empty name
        for (u2_t u = 0; u < Count(); ++u) {
            const u2_t uKey = pNames->Insert(Name(u).View());
            if (uKey == oLast.Size()) oLast.Add(u);
            oLast(uKey) = u;
        }
        m_oLast.Swap(oLast);
        m_pNames = std::move(pNames);
    }
    const u2_t uKey = m_pNames->Find(sName);
    return uKey != Hash::NONE ? m_oLast(uKey) : Count();
}

bool Directory::IsInside() const noexcept {
    for (u2_t u = 0; u < Count(); ++u) {
        if (m_uPrefix + (*this)(u).Offset() >= m_uPosition) return false;
    }
    return true;
}

u3_t Directory::Bound(u2_t uNth) {
    if (m_oStarts.Size() == 0) {
        Arr<u2_t> oStarts;
        oStarts.Reserve(Count());
        for (u2_t u = 0; u < Count(); ++u) oStarts.Add((*this)(u).Offset());
        if (!std::is_sorted(oStarts.Beg(), oStarts.End())) {
            std::sort(oStarts.Beg(), oStarts.End());
        }
        m_oStarts.Swap(oStarts);
    }
    const u2_t uStart = (*this)(uNth).Offset();
    const u2_t* pBegin = m_oStarts.Beg();
    const u2_t* pEnd = pBegin + m_oStarts.Size();
    const auto [pFirst, pNext] = std::equal_range(pBegin, pEnd, uStart);
    if (pNext - pFirst > 1) return m_uPrefix + uStart;
    return pNext != pEnd ? std::min(m_uPrefix + *pNext, m_uPosition) : m_uPosition;
}

}  // namespace vok::zip
