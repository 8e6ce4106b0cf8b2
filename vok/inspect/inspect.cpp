#include "vok/inspect/inspect.h"

#include <optional>

#include "vok/base/where.h"
#include "vok/dgraph/wrapping.h"
#include "vok/file/buf.h"
#include "vok/file/rest.h"
#include "vok/inspect/document.h"
#include "vok/inspect/dump.h"
#include "vok/inspect/wrapped.h"

namespace vok {

namespace inspect {

namespace {

using dgraph::Wrapping;

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

void Run(File_Stream& oIn, u3_t uSize, Output& oOut, const Limits& oLimits) {
    const i3_t iStart = oIn.Tell();
    Contents oContents;
    {
        Fields f(oIn, uSize, oOut);
        const std::string_view s = f.Look(dgraph::SNIFFED);
        switch (dgraph::WrappingOf(s)) {
            case Wrapping::None: return PutDocument(f, oLimits);
            case Wrapping::Zlib: PutZlib(f, oLimits, oContents); break;
            case Wrapping::Gzip: PutGzip(f, oLimits, oContents); break;
            case Wrapping::Zip: PutZip(f, oLimits, oContents); break;
        }
    }
    for (const Content& o : oContents.aoContent) {
        if (oOut.IsOver()) return;
        const Piece* const p = oContents.aoPiece.data();
        u3_t uPlain = 0;
        for (std::size_t u = o.uFirst; u < o.uEnd; ++u) uPlain += p[u].uPlain;
        oOut.StartDocument(o.oMember.View());
        Plain_Stream oPlain(oIn, iStart, p + o.uFirst, p + o.uEnd);
        Fields f(oPlain, uPlain, oOut);
        PutDocument(f, oLimits);
    }
}

}  // namespace

}  // namespace inspect

void Inspect(File_Stream& in, const std::function<bool(const Inspect_Field&)>& oVisit,
             const Limits& oLimits) {
    return Where("vok::Inspect", [&] {
        inspect::Output oOut(oVisit);
        const u3_t uSize = BytesLeft(in);
        if (uSize != 0) return inspect::Run(in, uSize, oOut, oLimits);
        Arr<char> oBytes;
        in.Read(oBytes, File_Stream::ALL);
        File_Buf oBuf(oBytes.Beg(), oBytes.Size());
        inspect::Run(oBuf, oBytes.Size(), oOut, oLimits);
    });
}

}  // namespace vok
