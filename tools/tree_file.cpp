// SPDX-License-Identifier: MIT
#include "tools/tree_file.h"

#include <stdexcept>

#include "tools/loss.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/say.h"
#include "vok/dgraph/dgraph.h"
#include "vok/json/json.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace tools {

Endings EndingsOf(const std::string& sName) {
    Endings o;
    std::string sLower = ToText(ToPath(sName).filename());
    for (char& c : sLower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    o.bGzip = sLower.ends_with(".gz");
    if (o.bGzip) sLower.resize(sLower.size() - 3);
    if (sLower.ends_with(".xml")) o.sFormat = "xml";
    if (sLower.ends_with(".dgraph") || sLower.ends_with(".dg")) o.sFormat = "dgraph";
    if (sLower.ends_with(".dump")) o.sFormat = "dump";
    o.bTab = sLower.ends_with(".tsv");
    if (sLower.ends_with(".csv") || o.bTab) o.sFormat = "csv";
    if (sLower.ends_with(".json")) o.sFormat = "json";
    if (sLower.ends_with(".jsonl") || sLower.ends_with(".ndjson")) o.sFormat = "jsonl";
    return o;
}

std::string NoFormatText(const std::string& sName, const char* sEndings) {
    return Say("\"%0\" does not tell a format by its ending (%1): name one with --to",
               {sName, sEndings});
}

FileForm FormOf(const std::string& sPath, const std::string& sFormat) {
    const Endings oEndings = EndingsOf(sPath);
    FileForm o;
    o.sFormat = sFormat.empty() ? oEndings.sFormat : sFormat;
    if (o.sFormat.empty() || o.sFormat == "jsonl" || o.sFormat == "csv") {
        throw std::invalid_argument(NoFormatText(sPath, ".xml, .dgraph, .dump, .json"));
    }
    if (oEndings.bGzip) o.sWrapping = "gzip";
    return o;
}

void WriteTree(vok::Data& oTree, const FileForm& o, vok::File_Stream& oOut) {
    if (o.sFormat == "xml") return oTree.SaveToXML(oOut);
    if (o.sFormat == "dump") return oTree.Dump(oOut);
    if (o.sFormat == "json") {
        return vok::Json_Save(oTree, oOut,
                              o.bCompact ? vok::Json_Layout::Compact : vok::Json_Layout::Lines);
    }
    vok::Dgraph_SetVersion(oTree, o.auVersion[0], o.auVersion[1], o.auVersion[2]);
    vok::Dgraph_SaveDGraph(oTree, oOut);
}

void WriteFile(const std::string& sPath, const FileForm& o, bool bWhole,
               const std::function<void(vok::File_Stream&)>& oWrite) {
    if (o.sWrapping == "zip") {
        if (sPath == "-") throw std::invalid_argument(Say("a zip archive needs a file, not \"-\""));
        const std::string sStem = ToText(ToPath(sPath).stem());
        const bool bEnding = !EndingsOf(sStem).sFormat.empty();
        Output oFile(sPath, false);
        vok::Zip_Archive oArchive(vok::Str(oFile.Beside()), "w");
        oArchive.OpenNewFile(vok::Str(bEnding ? sStem : sStem + '.' + o.sFormat));
        oWrite(oArchive);
        oArchive.Close();
        return oFile.Commit();
    }
    const auto oPack = [&](vok::File_Stream& oOut) {
        if (o.sWrapping.empty()) return oWrite(oOut);
        vok::Zip_Stream oPacked(oOut, o.sWrapping == "gzip" ? "wz" : "w");
        oWrite(oPacked);
        oPacked.Close();
    };
    if (sPath == "-" && !bWhole) {
        oPack(StandardOutput());
        return FinishPrinting();
    }
    Output oFile(sPath);
    oPack(oFile.Stream());
    oFile.Commit();
}

void SaveTree(vok::Data oTree, const std::string& sPath, const FileForm& oForm,
              const std::string& sWhat) {
    LossCount oLosses(oForm.Keeps(), oForm.auVersion[1]);
    if (oForm.Keeps() != "dump") CountTree(oTree, oLosses);
    TellLosses(sWhat, {}, {}, oLosses, false);
    WriteFile(sPath, oForm, true, [&](vok::File_Stream& oOut) { WriteTree(oTree, oForm, oOut); });
}

}  // namespace tools
