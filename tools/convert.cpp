// vok convert: from one form to another.
#include <array>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/dgraph/dgraph.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace tools {

namespace {

// What a name asks for by its endings.
struct Endings {
    std::string sFormat;  // empty when none does
    bool bGzip = false;
};
Endings EndingsOf(const std::string& sName) {
    Endings o;
    std::string sLower = ToText(ToPath(sName).filename());
    for (char& c : sLower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    o.bGzip = sLower.ends_with(".gz");
    if (o.bGzip) sLower.resize(sLower.size() - 3);
    if (sLower.ends_with(".xml")) o.sFormat = "xml";
    if (sLower.ends_with(".dgraph") || sLower.ends_with(".dg")) o.sFormat = "dgraph";
    if (sLower.ends_with(".dump")) o.sFormat = "dump";
    return o;
}

// "1.2.0" as three numbers, each a byte of the header.
std::array<int, 3> ParseVersion(const std::string& sVersion) {
    std::array<int, 3> ai{};
    const char* p = sVersion.data();
    const char* const pEnd = p + sVersion.size();
    bool bGood = true;
    for (std::size_t u = 0; u < ai.size(); ++u) {
        if (u != 0) bGood = bGood && p != pEnd && *p++ == '.';
        const auto oResult = std::from_chars(p, pEnd, ai[u]);
        bGood = bGood && oResult.ec == std::errc() && ai[u] >= 0 && ai[u] <= 255;
        p = oResult.ptr;
    }
    if (!bGood || p != pEnd) {
        throw std::invalid_argument("\"" + sVersion + "\" is no version such as 1.2.0");
    }
    if (ai[0] != 1 && ai[0] != 2) {
        throw std::invalid_argument("there is no version " + sVersion + " of DGraph documents");
    }
    return ai;
}

using Version = std::array<int, 3>;

void Save(vok::Data& oTree, const std::string& sFormat, const Version& oVersion,
          vok::File_Stream& oOut) {
    if (sFormat == "xml") return oTree.SaveToXML(oOut);
    if (sFormat == "dump") return oTree.Dump(oOut);
    vok::Dgraph_SetVersion(oTree, oVersion[0], oVersion[1], oVersion[2]);
    vok::Dgraph_SaveDGraph(oTree, oOut);
}

// Says what is lost; with --lossless nothing may be.
void TellLosses(const Input& oIn, const ConvertOptions& o, const std::string& sFormat,
                const Version& oVersion) {
    // A document that holds a dump keeps all that a dump does.
    const bool bDump = sFormat == "dgraph" && oVersion[0] == 2;
    const std::string sForm = bDump ? "dump" : sFormat;
    const std::string sWhyNot = WhyNot(oIn.oTree, sForm, oVersion[1]);
    if (!sWhyNot.empty()) throw std::invalid_argument(sWhyNot);
    std::vector<std::string> asLost = LostByReading(oIn);
    for (std::string& s : LostByWriting(oIn.oTree, sForm, oVersion[1])) {
        asLost.push_back(std::move(s));
    }
    const vok::Load_Report& r = oIn.oReport;
    if (r.m_uMissingBytes + r.m_uMissingNodes != 0) asLost.push_back("the end: it was cut short");
    if (!oIn.sBehind.empty()) asLost.push_back(oIn.sBehind);
    for (const std::string& s : asLost) {
        std::fprintf(stderr, "vok: %s: not kept: %s\n", Visible(o.sIn).c_str(), s.c_str());
    }
    if (o.bLossless && !asLost.empty()) throw std::invalid_argument("nothing was written");
}

// Writes an archive of one member, named like the archive but for its ending.
void SaveZipped(vok::Data& oTree, const std::string& sFormat, const Version& oVersion,
                const ConvertOptions& o) {
    if (o.sOut == "-") throw std::invalid_argument("a zip archive needs a file, not \"-\"");
    const std::string sStem = ToText(ToPath(o.sOut).stem());
    const std::string sMember = EndingsOf(sStem).sFormat.empty() ? sStem + '.' + sFormat : sStem;
    Output oFile(o.sOut, false);
    vok::Zip_Archive oArchive(vok::Str(oFile.Beside()), "w");
    oArchive.OpenNewFile(vok::Str(sMember));
    Save(oTree, sFormat, oVersion, oArchive);
    oArchive.Close();
    oFile.Commit();
}

}  // namespace

int Convert(const ConvertOptions& o) {
    const Endings oEndings = EndingsOf(o.sOut);
    const std::string sFormat = o.sTo.empty() ? oEndings.sFormat : o.sTo;
    if (sFormat.empty()) {
        throw std::invalid_argument("\"" + o.sOut +
                                    "\" does not tell a format by its ending (.xml, .dgraph, "
                                    ".dump): name one with --to");
    }
    const Version oVersion = ParseVersion(o.sVersion);
    Input oIn = Load(o.sIn, o.sFrom);
    oIn.oTree.SetToRoot();
    TellLosses(oIn, o, sFormat, oVersion);
    Progress oProgress("writing");
    if (o.bZip) {
        SaveZipped(oIn.oTree, sFormat, oVersion, o);
        return EXIT_GOOD;
    }
    Output oFile(o.sOut);
    if (o.bCompress || oEndings.bGzip) {
        vok::Zip_Stream oPacked(oFile.Stream(), oEndings.bGzip ? "wz" : "w");
        Save(oIn.oTree, sFormat, oVersion, oPacked);
        oPacked.Close();
    } else {
        Save(oIn.oTree, sFormat, oVersion, oFile.Stream());
    }
    oFile.Commit();
    return EXIT_GOOD;
}

}  // namespace tools
