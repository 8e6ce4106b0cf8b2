// SPDX-License-Identifier: MIT
// Loads DGraph documents, of which those of major version 2 are a header and a native dump, and
// tells the forms of a stored tree apart.
#include <algorithm>
#include <exception>

#include "vok/base/where.h"
#include "vok/data/report.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/messages.h"
#include "vok/dgraph/reader.h"
#include "vok/file/forward.h"
#include "vok/file/rest.h"

namespace vok {

namespace dgraph {

namespace {

template <class Source>
void ReadRecords(Data& oData, Source& oSource, const Limits& oLimits, Load_Report* pReport) {
    Reader<Source> oReader(oSource, oLimits);
    const auto oOnExit = vok::detail::ReportOnExit(pReport, [&](Load_Report& oReport) {
        oReport.m_uOffset += oSource.Offset();  // behind the header, counted before
        oReader.AddTo(oReport);
        vok::detail::ReportNode(oReport, oData, oReader.CurrentNode());
    });
    oReader.Run(oData);
    oReader.ResolveLinks();
}

// Whether a stream may be read ahead: who reads on finds it behind the document, or does not.
bool MayReadAhead(File_Stream& oIn) {
    if (dynamic_cast<const File_Forward*>(&oIn) != nullptr) return true;
    const File* pFile = dynamic_cast<const File*>(&oIn);
    return pFile != nullptr && (pFile->Flags() & File::FLAG_GZIP) == 0 && oIn.Tell() >= 0;
}

// Where the first error is on its way.
void LeaveQuietly(File_Window& oWindow) noexcept {
    try {
        (void)oWindow.GiveBack();
    } catch (const std::exception&) {
        // Nobody reads on in a stream that fails.
    }
}

// The body of major version 2. Offsets count from the header on.
void LoadDump(Data& oData, File_Stream& oIn, const Limits& oLimits, Load_Report* pReport) {
    const u3_t uHeader = pReport != nullptr ? pReport->m_uOffset : 0;
    const auto oOnExit = vok::detail::ReportOnExit(
        pReport, [uHeader](Load_Report& oReport) { oReport.m_uOffset += uHeader; });
    oData.Load(oIn, oLimits, pReport);
}

}  // namespace

}  // namespace dgraph

void Dgraph_LoadDGraph(Data& data, File_Stream& in, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Dgraph_LoadDGraph", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        dgraph::Access::Restart(data);
        data.SetRootName("Root");
        char sHeader[dgraph::HEADER_SIZE];
        const std::size_t uRead = ReadUpTo(in, sHeader, sizeof(sHeader));
        if (pReport != nullptr) pReport->m_uOffset = uRead;
        dgraph::Version oVersion;
        if (!dgraph::LoadHeader(sHeader, uRead, oVersion)) dgraph::RaiseNoBinaryDGraph();
        if (oVersion.iMajor == 2) return dgraph::LoadDump(data, in, oLimits, pReport);
        if (oVersion.iMajor != 1) dgraph::RaiseWrongVersion();
        u3_t uLeft = 0;
        if (File_Buf* pBuffer = dynamic_cast<File_Buf*>(&in); pBuffer != nullptr) {
            dgraph::BufferSource oSource(*pBuffer);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        } else if (dgraph::MayReadAhead(in)) {
            File_Window oWindow(in);
            dgraph::WindowSource oSource(oWindow);
            try {
                dgraph::ReadRecords(data, oSource, oLimits, pReport);
            } catch (...) {
                dgraph::LeaveQuietly(oWindow);
                throw;
            }
            uLeft = oWindow.GiveBack();
        } else {
            dgraph::StreamSource oSource(in);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        }
        if (pReport != nullptr) pReport->m_uBytesLeft = std::max(uLeft, BytesLeft(in));
        dgraph::Access::BaseOf(data)->m_oUserTag.Set(dgraph::VersionTag(oVersion).View());
        data.Shrink();
    });
}

void Dgraph_Load(Data& data, File_Stream& in, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Dgraph_Load", [&] {
        data.Clear();
        if (Data::CanLoad(in)) {
            data.Load(in, oLimits, pReport);
        } else if (Dgraph_CanLoadDGraph(in)) {
            Dgraph_LoadDGraph(data, in, oLimits, pReport);
        } else {
            data.LoadFromXML(in, Data::XML_KEEP_UNKNOWN, oLimits, pReport);
        }
    });
}

}  // namespace vok
