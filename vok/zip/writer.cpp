// SPDX-License-Identifier: MIT
#include "vok/zip/writer.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"
#include "vok/zip/cp437.h"
#include "vok/zip/records.h"

namespace vok::zip {

namespace {

// Levels as zip programs note them in the flags of a deflated member.
[[nodiscard]] u1_t LevelFlags(int iLevel) noexcept {
    switch (iLevel) {
        case 1: return 6;
        case 2: return 4;
        case 8:
        case 9: return 2;
        default: return 0;
    }
}

template <class... T>
void AddNumbers(Arr<char>& oBytes, T... tNumbers) {
    ((void)le::Store(oBytes.AddSpace(sizeof(T)), tNumbers), ...);
}

void AddStored(Arr<char>& oBytes, const Str& oText, bool bUtf8) {
    if (!bUtf8) return AddCp437(oBytes, oText);
    oBytes.Add(oText.CStr(), oText.Len());
}

// The extra field that has a text of the header in Unicode.
void AddUnicode(Arr<char>& oExtra, u1_t uField, const Arr<char>& oStored, const Str& oText) {
    constexpr u0_t uVersion = 1;
    const u2_t uCrc = CrcOf({oStored.Beg(), oStored.Size()});
    const std::size_t uSize = sizeof(uVersion) + sizeof(uCrc) + oText.Len();
    Msg::Assert(uSize <= 0xFFFF, "size_filename == tmp");
    AddNumbers(oExtra, uField, static_cast<u1_t>(uSize), uVersion, uCrc);
    oExtra.Add(oText.CStr(), oText.Len());
}

// The largest size and offset that is not a reference to a ZIP64 record.
constexpr u3_t MOST = IN_ZIP64 - 1;

}  // namespace

Writer::Writer(File& oFile, Archive_Errors&& oErrors, Base&& oBase, bool bPatch)
    : m_oFile(oFile),
      m_oErrors(std::move(oErrors)),
      m_bPatch(bPatch),
      m_uPrefix(oBase.m_uPrefix),
      m_oDirectory(std::move(oBase.m_oDirectory)),
      m_oComment(std::move(oBase.m_oComment)),
      m_uEntries(oBase.m_uEntries),
      m_bAppends(oBase.m_uSize != 0),
      m_bNew(!m_bAppends),
      m_uWritten(oBase.m_uSize) {
    m_oOut.Reserve(CHUNK);
}

template <class F>
void Writer::Change(F&& oBody) {
    if (m_bBroken) m_oErrors.Incomplete();
    m_bBroken = true;
    oBody();
    m_bBroken = false;
}

u3_t Writer::Position() const {
    CheckMember();
    return m_oPacker.BytesIn();
}

void Writer::CheckMember() const {
    if (!m_bOpen) [[unlikely]]
        Msg::CurrentFileOfZipArchiveIsNotOpen(m_oErrors.Archive());
}

// ---- one member -----------------------------------------------------------------

void Writer::OpenMember(const Str& oName, const Zip_NewInfo& oInfo, std::string_view sLocalExtra,
                        std::string_view sCentralExtra, const Str& oComment, u2_t uMethod,
                        int iLevel) {
    Msg::Assert(!oName.IsEmpty(), "!oName.IsEmpty()");
    Msg::Assert(iLevel >= Packer::DEFAULT_LEVEL && iLevel <= Packer::MAX_LEVEL,
                "level >= -1 && level <= 9");
    if (uMethod != ZIP_STORED && uMethod != ZIP_DEFLATED) m_oErrors.Method(oName, uMethod);
    // A name that the code page cannot hold is stored in Unicode, and so is then the comment.
    const bool bUtf8 = !IsCp437(oName);
    Arr<char> oStored;
    AddStored(oStored, oName, bUtf8);
    Msg::Assert(oStored.Size() <= 0xFFFF, "size_filename == tmp");
    Arr<char> oStoredComment;
    AddStored(oStoredComment, oComment, bUtf8);
    Msg::Assert(oStoredComment.Size() <= 0xFFFF, "size_comment == tmp");
    // Readers that do not look at the flag may know the field.
    Arr<char> oLocalExtra;
    oLocalExtra.Add(sLocalExtra.data(), sLocalExtra.size());
    Arr<char> oCentralExtra;
    oCentralExtra.Add(sCentralExtra.data(), sCentralExtra.size());
    if (bUtf8) {
        AddUnicode(oLocalExtra, EXTRA_UNICODE_NAME, oStored, oName);
        AddUnicode(oCentralExtra, EXTRA_UNICODE_NAME, oStored, oName);
    } else if (!IsCp437(oComment)) {
        AddUnicode(oCentralExtra, EXTRA_UNICODE_COMMENT, oStoredComment, oComment);
    }
    Msg::Assert(oLocalExtra.Size() <= 0xFFFF, "size_extrafield_local == tmp");
    Msg::Assert(oCentralExtra.Size() <= 0xFFFF, "size_extrafield_global == tmp");
    if (m_bOpen) CloseMember();
    Change([&] { HandOnFull(); });

    const u3_t uHeader = m_uWritten + m_oOut.Size();
    if (uHeader - m_uPrefix > MOST) m_oErrors.Raise(Member_Fault::TooLarge, oName);
    Change([&] {
        const std::size_t uDirectory = m_oDirectory.Size();
        const std::size_t uOut = m_oOut.Size();
        m_uHeader = uHeader;
        try {
            const u1_t uLevel = uMethod == ZIP_DEFLATED ? LevelFlags(iLevel) : u1_t{0};
            AddHeaders({oStored.Beg(), oStored.Size()}, oInfo,
                       {oLocalExtra.Beg(), oLocalExtra.Size()},
                       {oCentralExtra.Beg(), oCentralExtra.Size()},
                       {oStoredComment.Beg(), oStoredComment.Size()},
                       static_cast<u1_t>(uLevel | (bUtf8 ? FLAG_UTF8 : 0)), uMethod);
            m_oPacker.Open(*this, uMethod == ZIP_STORED ? Format::Stored : Format::Raw, iLevel);
        } catch (...) {
            // Nothing is written yet: the archive stays as it was.
            m_oDirectory.Truncate(uDirectory);
            m_oOut.Truncate(uOut);
            m_bBroken = false;
            throw;
        }
        m_uCentral = uDirectory;
        m_oOpenName = oName;
        m_bOpen = m_bNew = true;
        ++m_uEntries;
    });
}

void Writer::AddHeaders(std::string_view sName, const Zip_NewInfo& oInfo,
                        std::string_view sLocalExtra, std::string_view sCentralExtra,
                        std::string_view sComment, u1_t uFlags, u2_t uMethod) {
    const auto uNameSize = static_cast<u1_t>(sName.size());
    AddNumbers(m_oDirectory, CENTRAL_SIGNATURE, u1_t{0}, VERSION_NEEDED, uFlags,
               static_cast<u1_t>(uMethod), oInfo.m_uDosDate, u2_t{0}, u2_t{0}, u2_t{0}, uNameSize,
               static_cast<u1_t>(sCentralExtra.size()), static_cast<u1_t>(sComment.size()), u1_t{0},
               static_cast<u1_t>(oInfo.m_uInternalAttributes), oInfo.m_uExternalAttributes,
               static_cast<u2_t>(m_uHeader - m_uPrefix));
    m_oDirectory.Add(sName.data(), sName.size());
    m_oDirectory.Add(sCentralExtra.data(), sCentralExtra.size());
    m_oDirectory.Add(sComment.data(), sComment.size());

    AddNumbers(m_oOut, LOCAL_SIGNATURE, VERSION_NEEDED, uFlags, static_cast<u1_t>(uMethod),
               oInfo.m_uDosDate, u2_t{0}, u2_t{0}, u2_t{0}, uNameSize,
               static_cast<u1_t>(sLocalExtra.size()));
    m_oOut.Add(sName.data(), sName.size());
    m_oOut.Add(sLocalExtra.data(), sLocalExtra.size());
}

void Writer::Write(const char* pSource, std::size_t uCount) {
    CheckMember();
    CheckSize(uCount);
    Change([&] { m_oPacker.Write(pSource, uCount); });
}

// Before anything is written that no header could name.
void Writer::CheckSize(u3_t uMore) const {
    if (uMore > MOST || m_oPacker.BytesIn() + uMore > MOST || m_oPacker.BytesOut() > MOST) {
        m_oErrors.Raise(Member_Fault::TooLarge, m_oOpenName);
    }
}

void Writer::CloseMember() {
    CheckMember();
    Change([&] { EndMember(); });
    m_bOpen = false;
    m_oOpenName.Clear();
}

void Writer::EndMember() {
    m_oPacker.Finish();
    CheckSize(0);
    char sSizes[12];
    char* p = le::Store(sSizes, m_oPacker.Crc());
    p = le::Store(p, static_cast<u2_t>(m_oPacker.BytesOut()));
    (void)le::Store(p, static_cast<u2_t>(m_oPacker.BytesIn()));
    std::memcpy(m_oDirectory.Beg() + m_uCentral + CENTRAL_CRC, sSizes, sizeof(sSizes));
    if (IsHeaderHere()) {
        const auto uHeader = static_cast<std::size_t>(m_uHeader - m_uWritten);
        std::memcpy(m_oOut.Beg() + uHeader + LOCAL_CRC, sSizes, sizeof(sSizes));
    } else if (m_bPatch) {
        m_oFile.Seek(static_cast<i3_t>(m_uHeader + LOCAL_CRC));
        m_oFile.Write(sSizes, sizeof(sSizes));
        m_oFile.Seek(static_cast<i3_t>(m_uWritten));
    } else {
        (void)le::Store(m_oOut.AddSpace(4), DESCRIPTOR_SIGNATURE);
        m_oOut.Add(sSizes, sizeof(sSizes));
    }
}

// ---- the end --------------------------------------------------------------------

void Writer::Finish(const Str* pComment) {
    if (m_bBroken) m_oErrors.Incomplete();
    if (m_bOpen) CloseMember();
    if (pComment != nullptr) {
        Arr<char> oComment;
        AddCp437(oComment, *pComment);
        if (m_bAppends) CheckComment({oComment.Beg(), oComment.Size()});
        const std::string_view sOld(m_oComment.Beg(), m_oComment.Size());
        if (sOld != std::string_view(oComment.Beg(), oComment.Size())) m_bNew = true;
        m_oComment.Swap(oComment);
    }
    if (!m_bNew) return;
    const u3_t uTmp = m_uEntries;
    Msg::Assert(uTmp < 0x10000, "uTmp < 0x10000");
    const auto tmp = static_cast<u1_t>(m_oComment.Size());
    Msg::Assert(m_oComment.Size() == tmp, "size_comment == tmp");
    const u3_t uOffset = m_uWritten + m_oOut.Size() - m_uPrefix;
    if (uOffset > MOST || m_oDirectory.Size() > MOST) m_oErrors.NeedsZip64();
    Change([&] {
        Append(m_oDirectory.Beg(), m_oDirectory.Size());
        const auto uEntries = static_cast<u1_t>(uTmp);
        Arr<char> oEnd;
        AddNumbers(oEnd, END_SIGNATURE, u1_t{0}, u1_t{0}, uEntries, uEntries,
                   static_cast<u2_t>(m_oDirectory.Size()), static_cast<u2_t>(uOffset), tmp);
        Append(oEnd.Beg(), oEnd.Size());
        Append(m_oComment.Beg(), m_oComment.Size());
        HandOn();
    });
}

// ---- the way into the file ------------------------------------------------------

char* Writer::Space(std::size_t& uSize) {
    HandOnFull();
    uSize = m_oOut.Capacity() - m_oOut.Size();
    return m_oOut.End();
}

void Writer::Commit(std::size_t uCount) {
    m_oOut.SetSize(m_oOut.Size() + uCount);
}

void Writer::Put(const char* pSource, std::size_t uCount) {
    Append(pSource, uCount);
}

// Appends to the buffer, large pieces straight to the file.
void Writer::Append(const void* pBytes, std::size_t uCount) {
    const auto* p = static_cast<const char*>(pBytes);
    if (uCount < SMALL) {
        HandOnFull();
        m_oOut.Add(p, uCount);
        return;
    }
    HandOn();
    m_oFile.Write(p, uCount);
    m_uWritten += uCount;
}

void Writer::HandOnFull() {
    if (m_oOut.Size() > CHUNK - SMALL) HandOn();
}

void Writer::HandOn() {
    if (m_oOut.Size() == 0) return;
    // The header leaves without sizes: where it cannot be patched they will follow the data.
    if (m_bOpen && IsHeaderHere() && !m_bPatch) SetFlag(FLAG_DESCRIPTOR);
    m_oFile.Write(m_oOut.Beg(), m_oOut.Size());
    m_uWritten += m_oOut.Size();
    m_oOut.Truncate(0);
}

void Writer::SetFlag(u1_t uFlag) {
    for (char* p : {m_oOut.Beg() + (m_uHeader - m_uWritten) + LOCAL_FLAGS,
                    m_oDirectory.Beg() + m_uCentral + CENTRAL_FLAGS}) {
        (void)le::Store(p, static_cast<u1_t>(le::Load<u1_t>(p) | uFlag));
    }
}

}  // namespace vok::zip
