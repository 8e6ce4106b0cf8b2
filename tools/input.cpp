#include "tools/input.h"

#include <cstdio>

#include "tools/progress.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/data/succ_it.h"
#include "vok/dgraph/container.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace tools {

namespace {

using vok::Arr;

// Programs that read a file do not wait for one that is not there.
constexpr char READ_AT_ONCE[] = "Tr";

void ReadStandardInput(Arr<char>& oBytes) {
    vok::sys::SetBinary(stdin);
    Progress oProgress("reading");
    char sPiece[65536];
    while (const std::size_t uRead = std::fread(sPiece, 1, sizeof(sPiece), stdin)) {
        oBytes.Add(sPiece, uRead);
        oProgress.Add(uRead);
    }
    if (std::ferror(stdin) != 0) vok::Msg::UnexpectedEndOfFile("-", vok::sys::RuntimeError());
}

void ReadFile(const std::string& sPath, Arr<char>& oBytes) {
    vok::File oFile(vok::Str(sPath), READ_AT_ONCE);
    const auto uTotal = static_cast<std::size_t>(oFile.Size());
    Progress oProgress("reading", uTotal);
    constexpr std::size_t PIECE = 4 * 1024 * 1024;
    oBytes.Reserve(uTotal + PIECE);
    for (std::size_t uSize = 0, uRead = PIECE; uRead == PIECE;) {
        uRead = oFile.Read(oBytes.AddSpace(PIECE), PIECE, true);
        oBytes.Truncate(uSize += uRead);
        oProgress.Add(uRead);
    }
}

// Inflates what the first bytes say is compressed.
void Unwrap(const Arr<char>& oStored, Arr<char>& oPlain, std::string& sWrapping) {
    const std::string_view sBytes(oStored.Beg(), oStored.Size());
    if (sBytes.starts_with("PK")) {
        sWrapping = "zip";
        vok::Zip_Archive oArchive;
        oArchive.Open(sBytes.data(), sBytes.size());
        vok::Msg::Assert(oArchive.GetGlobalInfo().m_uEntries == 1, "oGlobalInfo.number_entry == 1");
        oArchive.GoToFirstFile();
        oArchive.Uncompress(oPlain);
    } else if (sBytes.starts_with('x') || sBytes.starts_with("\x1f\x8b")) {
        sWrapping = sBytes[0] == 'x' ? "zlib" : "gzip";
        vok::Zip_Buf oBuf;
        oBuf.Open(sBytes.data(), sBytes.size());
        oBuf.Read(oPlain, vok::File_Stream::ALL);
        oBuf.Close();
    }
}

std::string FormatOf(vok::File_Buf& oIn) {
    if (vok::Data::CanLoad(oIn)) return "dump";
    return vok::Dgraph_CanLoadDGraph(oIn) ? "dgraph" : "xml";
}

// "byte 17, line 2, column 5, at /a[0]: " as far as it is known.
std::string PlaceText(const vok::Load_Report& oReport) {
    std::string s;
    if (oReport.m_uOffset != 0) s += "byte " + std::to_string(oReport.m_uOffset);
    if (oReport.m_uLine != 0) {
        s += (s.empty() ? "line " : ", line ") + std::to_string(oReport.m_uLine) + ", column " +
             std::to_string(oReport.m_uColumn);
    }
    if (!oReport.m_oPath.IsEmpty()) {
        s += (s.empty() ? "at " : ", at ") + Escaped(Shortened(oReport.m_oPath.View()));
    }
    return s.empty() ? s : s + ": ";
}

void LoadInto(Input& o, const std::string& sPath, const std::string& sFormat,
              vok::Load_Report& oReport) {
    Arr<char> oStored;
    Arr<char> oPlain;
    if (sPath == "-") {
        ReadStandardInput(oStored);
    } else {
        ReadFile(sPath, oStored);
    }
    o.uBytes = oStored.Size();
    Progress oProgress("loading");
    Unwrap(oStored, oPlain, o.sWrapping);
    const Arr<char>& oBytes = o.sWrapping.empty() ? oStored : oPlain;
    vok::File_Buf oIn(oBytes.Beg(), oBytes.Size());
    o.sFormat = sFormat.empty() ? FormatOf(oIn) : sFormat;
    if (o.sFormat == "dump") {
        o.oTree.Load(oIn, {}, &oReport);
    } else if (o.sFormat == "dgraph") {
        vok::Dgraph_LoadDGraph(o.oTree, oIn, {}, &oReport);
    } else {
        o.oTree.LoadFromXML(oIn, vok::Data::XML_KEEP_UNKNOWN, {}, &oReport);
    }
}

}  // namespace

vok::Data_NodeSet Input::Find(const std::string& sPath) const {
    vok::Data_NodeSet oFound = oTree.GetNodeSet(sPath.c_str());
    if (oFound.Size() == 0) {
        const char* sTop = oTree.GetName();
        std::fprintf(stderr, "vok: no node at \"%s\"; \"/\" is the node \"%s\"\n",
                     Escaped(Shortened(sPath)).c_str(),
                     Escaped(Shortened(sTop != nullptr ? sTop : "")).c_str());
    }
    return oFound;
}

Input Load(const std::string& sPath, const std::string& sFormat) {
    Input o;
    vok::Load_Report oReport;
    try {
        LoadInto(o, sPath, sFormat, oReport);
    } catch (const vok::Msg_Exception& oError) {
        throw InputError(sPath + ": " + PlaceText(oReport) + Line(oError.what()));
    }
    return o;
}

}  // namespace tools
