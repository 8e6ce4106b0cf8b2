// SPDX-License-Identifier: MIT
// vok check: whether files can be loaded, and where they cannot.
#include <string>
#include <vector>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/each_file.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/loss.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/survey.h"
#include "tools/text.h"

namespace tools {

namespace {

// What there is to say of a file.
struct Verdict {
    int iExit = EXIT_GOOD;
    std::string sForm;
    std::uint64_t uNodes = 0;
    std::vector<std::string> asLost;
    // Of a faulty one: a line for people, the reason alone, and its place as far as it is known.
    std::string sFault;
    std::string sReason;
    vok::Load_Report oPlace;
};

Verdict VerdictOf(const std::string& sFile, const std::string& sForm, std::uint64_t uNodes,
                  const vok::Load_Report& oReport, const std::string& sBehind) {
    Verdict o;
    o.sForm = sForm;
    o.uNodes = uNodes;
    o.sReason = FaultOf(oReport, sBehind);
    if (!o.sReason.empty()) {
        o.iExit = EXIT_NEGATIVE;
        o.sFault = sFile + ": " + o.sReason;
    } else {
        o.asLost = LostByReading(oReport);
    }
    return o;
}

Verdict CheckOne(const std::string& sFile) {
    Verdict oVerdict;
    try {
        Answer(
            sFile,
            [&] {
                const Survey o = LookThrough(sFile);
                // Whether a link leads anywhere shows when all nodes are there.
                if (o.bXml ? o.bTreeLinks : o.bLinks) throw NeedsTree();
                oVerdict =
                    VerdictOf(sFile, o.bXml ? "xml" : "dgraph", o.uNodes, o.oReport, o.sBehind);
                return 0;
            },
            [&] {
                const Input o = Load(sFile);
                oVerdict = VerdictOf(sFile, o.sFormat, o.oTree.GetNodes(), o.oReport, o.sBehind);
                return 0;
            });
    } catch (const InputError& oError) {
        oVerdict.iExit = oError.m_bTrouble ? EXIT_TROUBLE : EXIT_NEGATIVE;
        oVerdict.sFault = oError.what();
        oVerdict.sReason = oError.m_sReason.empty() ? oError.what() : oError.m_sReason;
        oVerdict.oPlace = oError.m_oPlace;
    }
    return oVerdict;
}

void TellLine(const std::string& sFile, const Verdict& o) {
    if (!o.sFault.empty()) {
        Print(Visible(o.sFault) + '\n');
        return;
    }
    Print(Visible(sFile) + ": good (" + o.sForm + ", " + std::to_string(o.uNodes) + " nodes)\n");
    for (const std::string& sLost : o.asLost) {
        Complain(sFile, Say("not kept: %0", {sLost}));
    }
}

void TellJson(const std::string& sFile, const Verdict& o) {
    JsonPrinter oStream;
    rapidjson::Writer<JsonPrinter> oOut(oStream);
    const auto oNumber = [&](const char* sKey, std::uint64_t u) {
        if (u == 0) return;
        oOut.Key(sKey);
        oOut.Uint64(u);
    };
    const auto oText = [&](const char* sKey, std::string_view s) {
        if (s.empty()) return;
        oOut.Key(sKey);
        WriteText(oOut, s);
    };
    oOut.StartObject();
    oText("file", sFile);
    oOut.Key("good");
    oOut.Bool(o.sFault.empty());
    oText("form", o.sForm);
    oNumber("nodes", o.uNodes);
    oText("fault", o.sReason);
    oNumber("offset", o.oPlace.m_uOffset);
    oNumber("line", o.oPlace.m_uLine);
    oNumber("column", o.oPlace.m_uColumn);
    oText("path", o.oPlace.m_oPath.IsEmpty() ? "" : ShownPlace(o.oPlace.m_oPath.View()));
    if (!o.asLost.empty()) {
        oOut.Key("not kept");
        oOut.StartArray();
        for (const std::string& sLost : o.asLost) WriteText(oOut, sLost);
        oOut.EndArray();
    }
    oOut.EndObject();
    oStream.Put('\n');
    oStream.Flush();
}

}  // namespace

int Check(const CheckOptions& o) {
    return ForEachFile(o.asFile, o.uAtOnce, [&](const std::string& sFile) {
        const Verdict oVerdict = CheckOne(sFile);
        (o.bJson ? TellJson : TellLine)(sFile, oVerdict);
        return oVerdict.iExit;
    });
}

}  // namespace tools
