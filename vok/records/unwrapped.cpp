// SPDX-License-Identifier: MIT
#include "vok/records/unwrapped.h"

#include "vok/file/buf.h"
#include "vok/file/rest.h"
#include "vok/records/messages.h"

namespace vok {

Unwrapped::Unwrapped(File_Stream& oIn, const Limits& oLimits) : m_oLimits(oLimits) {
    File_Stream* pIn = &oIn;
    char s[ZIP_SNIFFED];
    std::size_t uStart;
    if (oIn.CanSeek(File_Stream::FROM_POSITION) && oIn.Tell() >= 0) {
        uStart = ReadUpTo(oIn, s, ZIP_SNIFFED);
        oIn.Seek(-static_cast<i3_t>(uStart), File_Stream::FROM_POSITION);
    } else {
        pIn = &m_oAhead.emplace(oIn);
        uStart = ReadUpTo(*pIn, s, ZIP_SNIFFED);
        pIn->Seek(0);
    }
    Unwrap(*pIn, {s, uStart}, BytesLeft(oIn));
}

Unwrapped::Unwrapped(const Str& oPath, const Limits& oLimits) : m_oLimits(oLimits) {
    char s[ZIP_SNIFFED];
    m_oFile.emplace(oPath, "Tr");
    // What is no file, as a pipe, cannot go back.
    const bool bPipe = m_oFile->Tell() < 0;
    File_Stream& oIn = bPipe ? static_cast<File_Stream&>(m_oAhead.emplace(*m_oFile)) : *m_oFile;
    const std::size_t uStart = ReadUpTo(oIn, s, ZIP_SNIFFED);
    oIn.Seek(0);
    const i3_t iSize = bPipe ? 0 : m_oFile->Size();
    const u3_t uSize = iSize > 0 ? static_cast<u3_t>(iSize) : 0;
    if (Zip_WrappingOf({s, uStart}) != Zip_Wrapping::Zip || bPipe) {
        Unwrap(oIn, {s, uStart}, uSize);
        return;
    }
    m_oFile.reset();
    m_oLimits.m_uInputBytes = uSize;
    m_oArchive.emplace(oPath, "r", m_oLimits);
    OpenMember();
}

void Unwrapped::Unwrap(File_Stream& oIn, std::string_view sStart, u3_t uSize) {
    m_pIn = &oIn;
    m_eWrapping = Zip_WrappingOf(sStart);
    if (m_eWrapping == Zip_Wrapping::None) return;
    m_oLimits.m_uInputBytes = uSize;
    if (m_eWrapping == Zip_Wrapping::Zip) {
        const auto* pBuffer = dynamic_cast<const File_Buf*>(&oIn);
        if (pBuffer == nullptr) records::RaiseArchiveInStream();
        m_oArchive.emplace().Open(pBuffer->Peek(), pBuffer->Remaining(), m_oLimits);
        return OpenMember();
    }
    m_oPacked.emplace(oIn, "r", m_oLimits);
    m_pIn = &m_oPlain.emplace(*m_oPacked);
}

void Unwrapped::OpenMember() {
    m_eWrapping = Zip_Wrapping::Zip;
    Msg::Assert(m_oArchive->GetGlobalInfo().m_uEntries == 1, "oGlobalInfo.number_entry == 1");
    m_oArchive->GoToFirstFile();
    m_oArchive->OpenCurrentFile();
    m_pIn = &m_oPlain.emplace(*m_oArchive);
}

u3_t Unwrapped::Finish(u3_t uLeft) {
    return m_oPlain.has_value() ? uLeft + m_oPlain->SkipRest() : uLeft;
}

}  // namespace vok
