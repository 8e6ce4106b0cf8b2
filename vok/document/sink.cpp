// SPDX-License-Identifier: MIT
#include "vok/document/sink.h"

#include "vok/document/messages.h"

namespace vok {

Document_Sink::Document_Sink(File_Stream& oBelow, Zip_Wrapping eWrapping) : m_oBelow(oBelow) {
    switch (eWrapping) {
        case Zip_Wrapping::None: m_pStream = &oBelow; break;
        case Zip_Wrapping::Zlib: m_pStream = &m_oPacked.emplace(oBelow, "w"); break;
        case Zip_Wrapping::Gzip: m_pStream = &m_oPacked.emplace(oBelow, "wz"); break;
        case Zip_Wrapping::Zip: document::RaiseArchiveNeedsFile();
    }
}

Document_Sink::Document_Sink(File& oBelow, Zip_Wrapping eWrapping, const Str& oMember)
    : Document_Sink(oBelow, eWrapping == Zip_Wrapping::Zip ? Zip_Wrapping::None : eWrapping) {
    if (eWrapping != Zip_Wrapping::Zip) return;
    Zip_Archive& oArchive = m_oArchive.emplace();
    oArchive.Open(oBelow);
    oArchive.OpenNewFile(oMember);
    m_pStream = &oArchive;
}

void Document_Sink::Close() {
    if (m_oPacked.has_value()) m_oPacked->Close();
    if (m_oArchive.has_value()) m_oArchive->Close();
    m_oBelow.Flush();
}

}  // namespace vok
