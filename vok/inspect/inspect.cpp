// SPDX-License-Identifier: MIT
#include "vok/inspect/inspect.h"

#include "vok/base/where.h"
#include "vok/inspect/document.h"
#include "vok/inspect/dump.h"
#include "vok/inspect/run.h"
#include "vok/inspect/wrapped.h"
#include "vok/zip/wrapping.h"

namespace vok {

namespace inspect {

namespace {

void PutDocument(Fields& f, const Limits& oLimits) {
    const std::string_view s = f.Look(DUMP_HEADER_SIZE);
    if (s.empty()) return;
    if (IsDump(s)) return PutDump(f);
    Document oDocument(f, oLimits);
    dgraph::Version oVersion;
    if (!dgraph::LoadHeader(s.data(), s.size(), oVersion)) return oDocument.PutWithoutHeader();
    if (!oDocument.PutHeader()) return PutDump(f);
    oDocument.PutRecords();
}

}  // namespace

void Run(Whole& oWhole, Output& oOut, const Limits& oLimits) {
    File_Stream& oIn = oWhole.In();
    Contents oContents;
    {
        Fields f(oIn, oWhole.Size(), oOut);
        const std::string_view s = f.Look(ZIP_SNIFFED);
        switch (Zip_WrappingOf(s)) {
            case Zip_Wrapping::None: return PutDocument(f, oLimits);
            case Zip_Wrapping::Zlib: PutZlib(f, oLimits, oContents); break;
            case Zip_Wrapping::Gzip: PutGzip(f, oLimits, oContents); break;
            case Zip_Wrapping::Zip: PutZip(f, oLimits, oContents); break;
        }
    }
    for (const Content& o : oContents.aoContent) {
        if (oOut.IsOver()) return;
        const Piece* const p = oContents.aoPiece.data();
        u3_t uPlain = 0;
        for (std::size_t u = o.uFirst; u < o.uEnd; ++u) uPlain += p[u].uPlain;
        oOut.StartDocument(o.oMember.View());
        Plain_Stream oPlain(oIn, oWhole.Start(), p + o.uFirst, p + o.uEnd);
        Fields f(oPlain, uPlain, oOut);
        PutDocument(f, oLimits);
    }
}

}  // namespace inspect

void Inspect(File_Stream& in, const std::function<bool(const Inspect_Field&)>& oVisit,
             const Limits& oLimits) {
    return Where("vok::Inspect", [&] {
        inspect::Output oOut(oVisit);
        inspect::Whole oIn(in);
        inspect::Run(oIn, oOut, oLimits);
    });
}

}  // namespace vok
