// SPDX-License-Identifier: MIT
#include "vok/zip/reader.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"

namespace vok::zip {

Reader::Reader(Source&& oSource, const Limits& oLimits, Archive_Errors&& oErrors)
    : m_oSource(std::move(oSource)), m_oLimits(oLimits), m_oErrors(std::move(oErrors)) {
    if (!m_oDirectory.Load(m_oSource, m_oLimits, m_oErrors)) m_oErrors.Invalid();
}

bool Reader::GoTo(u2_t uNth) noexcept {
    if (uNth >= m_oDirectory.Count()) return false;
    m_uCurrent = uNth;
    return true;
}

bool Reader::GoToNext() noexcept {
    return m_oDirectory.Count() != 0 && GoTo(m_uCurrent + 1);
}

u2_t Reader::Current() const {
    if (m_oDirectory.Count() == 0) Msg::CurrentFileOfZipArchiveIsNotOpen(m_oErrors.Archive());
    return m_uCurrent;
}

void Reader::Extrafield(Arr<char>& oExtra) {
    const u2_t uNth = Current();
    // Not through the window, on whose bytes the open member is still working.
    Arr<char> oHeader;
    const Place oPlace = FindPlace(uNth, m_oDirectory.Name(uNth), &oHeader);
    oExtra.Truncate(0);
    const auto uSize = static_cast<std::size_t>(oPlace.m_uData - oPlace.m_uExtra);
    if (uSize != 0) (void)m_oSource.Read(oPlace.m_uExtra, oExtra.AddSpace(uSize), uSize);
}

// ---- finding the bytes ----------------------------------------------------------

// Reads the local header and holds it against the central one.
Reader::Place Reader::FindPlace(u2_t uNth, const Str& oName, Arr<char>* pCopy) {
    const Central oHeader = m_oDirectory(uNth);
    CheckReadable(oHeader, oName);
    const u3_t uStart = m_oDirectory.Prefix() + oHeader.Offset();
    const u3_t uBound = m_oDirectory.Bound(uNth);
    const std::string_view sName = oHeader.Name();
    const std::size_t uWanted = LOCAL_SIZE + sName.size();
    if (uStart >= m_oDirectory.Position()) m_oErrors.Invalid(oName);
    std::string_view sLocal;
    if (pCopy != nullptr) {
        char* pHeader = pCopy->AddSpace(uWanted);
        sLocal = {pHeader, m_oSource.Read(uStart, pHeader, uWanted)};
    } else {
        sLocal = m_oSource.View(uStart, uWanted);
    }
    if (sLocal.size() < uWanted) m_oErrors.Invalid(oName);
    const Local oLocal(sLocal.data());
    if (oLocal.Signature() != LOCAL_SIGNATURE) m_oErrors.Invalid(oName);
    if (uBound == uStart) m_oErrors.Raise(Member_Fault::Overlaps, oName);
    // Sizes may stand behind the data, or in a ZIP64 field that the other sizes make needless.
    const bool bSizes = (oLocal.Flags() & FLAG_DESCRIPTOR) == 0;
    const auto bDiffer = [](u2_t uLocal, u2_t uCentral) {
        return uLocal != uCentral && uLocal != IN_ZIP64;
    };
    if (oLocal.Method() != oHeader.Method() || (oLocal.Flags() & FLAG_ENCRYPTED) != 0 ||
        sLocal.substr(LOCAL_SIZE, oLocal.NameSize()) != sName ||
        (bSizes && (oLocal.Crc() != oHeader.Crc() ||
                    bDiffer(oLocal.CompressedSize(), oHeader.CompressedSize()) ||
                    bDiffer(oLocal.UncompressedSize(), oHeader.UncompressedSize())))) {
        m_oErrors.Invalid(oName);
    }
    Place oPlace;
    oPlace.m_uExtra = uStart + uWanted;
    oPlace.m_uData = oPlace.m_uExtra + oLocal.ExtraSize();
    const u3_t uEnd = oPlace.m_uData + oHeader.CompressedSize();
    if (uEnd > m_oDirectory.Position()) m_oErrors.Invalid(oName);
    if (uEnd > uBound) m_oErrors.Raise(Member_Fault::Overlaps, oName);
    return oPlace;
}

void Reader::CheckReadable(const Central& oHeader, const Str& oName) const {
    if ((oHeader.Flags() & (FLAG_ENCRYPTED | FLAG_MASKED)) != 0) {
        m_oErrors.Raise(Member_Fault::Encrypted, oName);
    }
    std::string_view sField;
    if ((oHeader.CompressedSize() == IN_ZIP64 || oHeader.UncompressedSize() == IN_ZIP64 ||
         oHeader.Offset() == IN_ZIP64) &&
        FindExtra(oHeader.Extra(), EXTRA_ZIP64, sField)) {
        m_oErrors.Raise(Member_Fault::NeedsZip64, oName);
    }
    if (oHeader.Disk() != 0) m_oErrors.Raise(Member_Fault::OtherDisk, oName);
    if (oHeader.Method() != ZIP_STORED && oHeader.Method() != ZIP_DEFLATED) {
        m_oErrors.Method(oName, oHeader.Method());
    }
    if (oHeader.Method() == ZIP_STORED && oHeader.CompressedSize() != oHeader.UncompressedSize()) {
        m_oErrors.Raise(Member_Fault::Size, oName);
    }
    if (oHeader.Method() == ZIP_DEFLATED &&
        oHeader.UncompressedSize() > m_oLimits.m_uInflatedBytes) {
        m_oLimits.RaiseExceeded(&Limits::m_uInflatedBytes);
    }
}

// ---- the open member ------------------------------------------------------------

void Reader::OpenMember() {
    const u2_t uNth = Current();
    m_bOpen = false;
    m_oOpenName = m_oDirectory.Name(uNth);
    const Place oPlace = FindPlace(uNth, m_oOpenName, nullptr);
    m_uOpen = uNth;
    m_uData = oPlace.m_uData;
    Restart();
    m_bOpen = true;
}

void Reader::Restart() {
    const Central oHeader = m_oDirectory(m_uOpen);
    m_uNext = m_uData;
    m_uLeft = oHeader.CompressedSize();
    m_oUnpacker.Open(*this, oHeader.Method() == ZIP_STORED ? Format::Stored : Format::Raw,
                     m_oLimits, oHeader.UncompressedSize(), oHeader.Crc());
}

void Reader::CloseMember() {
    (void)Member();
    m_bOpen = false;
    m_oOpenName.Clear();
}

Unpacker& Reader::Member() {
    if (!m_bOpen) [[unlikely]]
        Msg::CurrentFileOfZipArchiveIsNotOpen(m_oErrors.Archive());
    return m_oUnpacker;
}

u3_t Reader::Left() {
    return m_oDirectory(m_uOpen).UncompressedSize() - Member().Position();
}

void Reader::Seek(i3_t iOffset, int iWhence) {
    const u3_t uTarget = SeekTarget(iOffset, iWhence, Member().Position());
    if (m_oUnpacker.MoveTo(uTarget)) return;
    Restart();
    (void)m_oUnpacker.MoveTo(uTarget);
}

// ---- what the unpacker asks for -------------------------------------------------

std::string_view Reader::Next() {
    std::string_view sNext = m_oSource.View(m_uNext, 1);
    sNext = sNext.substr(0, static_cast<std::size_t>(std::min<u3_t>(m_uLeft, sNext.size())));
    m_uNext += sNext.size();
    m_uLeft -= sNext.size();
    return sNext;
}

std::size_t Reader::Copy(char* pTarget, std::size_t uCount) {
    uCount = static_cast<std::size_t>(std::min<u3_t>(uCount, m_uLeft));
    std::size_t uDone = 0;
    if (uCount < SMALL) {
        while (uDone < uCount) {
            const std::string_view sHere = m_oSource.View(m_uNext + uDone, 1);
            if (sHere.empty()) break;
            uDone += sHere.copy(pTarget + uDone, uCount - uDone);
        }
    } else {
        uDone = m_oSource.Read(m_uNext, pTarget, uCount);
    }
    m_uNext += uDone;
    m_uLeft -= uDone;
    return uDone;
}

Fault Reader::Done(std::size_t uUnused) {
    return uUnused == 0 && m_uLeft == 0 ? Fault::None : Fault::Size;
}

void Reader::Fail(Fault eFault) {
    switch (eFault) {
        case Fault::Crc: m_oErrors.Crc(m_oOpenName);
        case Fault::Ends: m_oErrors.Raise(Member_Fault::Ends, m_oOpenName);
        case Fault::Size: m_oErrors.Raise(Member_Fault::Size, m_oOpenName);
        case Fault::Damaged:
        case Fault::None: break;
    }
    m_oErrors.Raise(Member_Fault::Damaged, m_oOpenName);
}

}  // namespace vok::zip
