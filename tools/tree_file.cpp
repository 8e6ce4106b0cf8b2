#include "tools/tree_file.h"

#include <cstdio>
#include <stdexcept>

#include "tools/loss.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/text.h"
#include "vok/dgraph/dgraph.h"
#include "vok/json/json.h"
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
    if (sLower.ends_with(".json")) o.sFormat = "json";
    if (sLower.ends_with(".jsonl") || sLower.ends_with(".ndjson")) o.sFormat = "jsonl";
    return o;
}

std::string NoFormatText(const std::string& sName, const char* sEndings) {
    return "\"" + sName + "\" does not tell a format by its ending (" + sEndings +
           "): name one with --to";
}

void SaveTree(vok::Data oTree, const std::string& sPath, const std::string& sFormat,
              const std::string& sWhat) {
    constexpr int MINOR = 3;
    const Endings oEndings = EndingsOf(sPath);
    const std::string sForm = sFormat.empty() ? oEndings.sFormat : sFormat;
    if (sForm.empty() || sForm == "jsonl") {
        throw std::invalid_argument(NoFormatText(sPath, ".xml, .dgraph, .dump, .json"));
    }
    LossCount oLosses(sForm, MINOR);
    if (sForm != "dump" && sForm != "json") CountTree(oTree, oLosses);
    const std::string sWhyNot = oLosses.WhyNot();
    if (!sWhyNot.empty()) throw std::invalid_argument(sWhyNot);
    for (const std::string& s : oLosses.Lines()) {
        std::fprintf(stderr, "vok: %s: not kept: %s\n", Visible(sWhat).c_str(), s.c_str());
    }
    const auto oSave = [&](vok::File_Stream& oOut) {
        if (sForm == "xml") return oTree.SaveToXML(oOut);
        if (sForm == "dump") return oTree.Dump(oOut);
        if (sForm == "json") return vok::Json_Save(oTree, oOut);
        vok::Dgraph_SetVersion(oTree, 1, MINOR, 0);
        vok::Dgraph_SaveDGraph(oTree, oOut);
    };
    Output oFile(sPath);
    if (oEndings.bGzip) {
        vok::Zip_Stream oPacked(oFile.Stream(), "wz");
        oSave(oPacked);
        oPacked.Close();
    } else {
        oSave(oFile.Stream());
    }
    oFile.Commit();
}

}  // namespace tools
