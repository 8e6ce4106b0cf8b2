// SPDX-License-Identifier: MIT
#include "tools/tree_file.h"

#include <stdexcept>

#include "tools/loss.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/print.h"
#include "tools/say.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/document.h"
#include "vok/document/sink.h"

namespace tools {

Endings EndingsOf(const std::string& sName) {
    const vok::Document_Format oKnown = vok::Document_FormatNamed(sName);
    Endings o;
    o.sFormat = vok::Document_FormName(oKnown.eForm);
    o.eWrapping = oKnown.eWrapping;
    std::string sLower = ToText(ToPath(sName).filename());
    for (char& c : sLower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    if (o.eWrapping == vok::Zip_Wrapping::Gzip) sLower.resize(sLower.size() - 3);
    if (o.eWrapping == vok::Zip_Wrapping::Zip) sLower.resize(sLower.size() - 4);
    o.bTab = sLower.ends_with(".tsv");
    if (sLower.ends_with(".csv") || o.bTab) o.sFormat = "csv";
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
    o.eWrapping = oEndings.eWrapping;
    return o;
}

void WriteTree(vok::Data& oTree, const FileForm& o, vok::File_Stream& oOut) {
    vok::Document_SaveOptions oOptions;
    oOptions.oFormat.eForm = vok::Document_FormNamed(o.sFormat);
    oOptions.bCompact = o.bCompact;
    oOptions.bAttachable = o.bAttachable;
    if (oOptions.oFormat.eForm == vok::Document_Form::Dgraph) {
        vok::Dgraph_SetVersion(oTree, o.auVersion[0], o.auVersion[1], o.auVersion[2]);
    }
    vok::Document_Save(oTree, oOut, oOptions);
}

namespace {

// "orders.xml" for "data/orders.zip" and for "data/orders.xml.zip".
vok::Str MemberName(const std::string& sPath, const FileForm& o) {
    const std::string sStem = ToText(ToPath(sPath).stem());
    return vok::Str(EndingsOf(sStem).sFormat.empty() ? sStem + '.' + o.sFormat : sStem);
}

}  // namespace

void WriteFile(const std::string& sPath, const FileForm& o, bool bWhole,
               const std::function<void(vok::File_Stream&)>& oWrite) {
    const auto oWrap = [&](vok::Document_Sink oSink) {
        oWrite(oSink.Stream());
        oSink.Close();
    };
    const bool bArchive = o.eWrapping == vok::Zip_Wrapping::Zip;
    if (sPath == "-" && bArchive) {
        throw std::invalid_argument(Say("a zip archive needs a file, not \"-\""));
    }
    if (sPath == "-" && !bWhole) {
        oWrap({StandardOutput(), o.eWrapping});
        return FinishPrinting();
    }
    Output oFile(sPath);
    if (bArchive) {
        oWrap({*oFile.GetFile(), o.eWrapping, MemberName(sPath, o)});
    } else {
        oWrap({oFile.Stream(), o.eWrapping});
    }
    oFile.Commit(o.bDurable);
}

void SaveTree(vok::Data oTree, const std::string& sPath, const FileForm& oForm,
              const std::string& sWhat) {
    LossCount oLosses(oForm.Keeps(), oForm.auVersion[1]);
    if (oForm.Keeps() != "dump") CountTree(oTree, oLosses);
    TellLosses(sWhat, {}, {}, oLosses, false);
    WriteFile(sPath, oForm, true, [&](vok::File_Stream& oOut) { WriteTree(oTree, oForm, oOut); });
}

}  // namespace tools
