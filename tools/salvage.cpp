// SPDX-License-Identifier: MIT
// vok salvage: what can be read of a damaged document.
#include <string>

#include "tools/commands.h"
#include "tools/limits.h"
#include "tools/output.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/standard_input.h"
#include "tools/text.h"
#include "vok/file/file.h"
#include "vok/inspect/salvage.h"

namespace tools {

namespace {

using vok::Inspect_Field;

// Where there are more faults than anybody reads, their number is told in the end.
constexpr vok::u3_t MOST_TOLD = 100;

void TellField(const std::string& sFile, const Inspect_Field& o) {
    std::string s;
    if (o.m_uDocument != 0) s += "document " + std::to_string(o.m_uDocument) + ", ";
    s += "byte " + std::to_string(o.m_uOffset);
    if (!o.m_sPath.empty()) s += ", at " + Shortened(ShownPath(Shortened(o.m_sPath)));
    s += ": ";
    if (o.IsSkipped()) {
        s += Say("%0 bytes skipped", {std::to_string(o.m_uLength)});
    } else {
        s += o.m_sName + (": " + std::string(o.m_sFault));
    }
    Complain(sFile, s);
}

void TellCount(const std::string& sFile, vok::u3_t uCount, const char* sOne, const char* sMany) {
    if (uCount == 0) return;
    Complain(sFile, std::to_string(uCount) + ' ' + Say(uCount == 1 ? sOne : sMany));
}

}  // namespace

int Salvage(const std::string& sIn, const std::string& sOut) {
    Output oOut(sOut);
    vok::u3_t uTold = 0;
    const auto oTell = [&](const Inspect_Field& o) {
        if (uTold++ < MOST_TOLD) TellField(sIn, o);
    };
    vok::Salvage_Report oReport;
    if (sIn == "-") {
        StandardInputStream oIn;
        oReport = vok::Dgraph_Salvage(oIn, oOut.Stream(), oTell, TheLimits());
    } else {
        vok::File oIn(vok::Str(sIn), "Tr");
        oReport = vok::Dgraph_Salvage(oIn, oOut.Stream(), oTell, TheLimits());
    }
    oOut.Commit();
    TellCount(sIn, uTold > MOST_TOLD ? uTold - MOST_TOLD : 0, "fault more", "faults more");
    TellCount(sIn, oReport.m_uNodes, "node written", "nodes written");
    TellCount(sIn, oReport.m_uWithoutValue, "of them has lost its value",
              "of them have lost their values");
    TellCount(sIn, oReport.m_uLinks, "of them is a link to what is gone",
              "of them are links to what is gone");
    TellCount(sIn, oReport.m_uLeftOut, "record left out: its place is taken, or too far",
              "records left out: their places are taken, or too far");
    return oReport.IsWhole() ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools
