// vok check: whether files can be loaded, and where they cannot.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/output.h"
#include "tools/text.h"

namespace tools {

namespace {

// What a document that could be loaded lacks, or has too much of; empty when nothing.
std::string FaultOf(const Input& o) {
    const vok::Load_Report& r = o.oReport;
    if (r.m_uMissingBytes + r.m_uMissingNodes != 0) {
        return "cut short: " + std::to_string(r.m_uMissingBytes) + " bytes of its last field and " +
               std::to_string(r.m_uMissingNodes) + " nodes are missing";
    }
    return o.sBehind;
}

Exit CheckOne(const std::string& sFile) {
    try {
        const Input oIn = Load(sFile);
        if (const std::string sFault = FaultOf(oIn); !sFault.empty()) {
            Print(Visible(sFile) + ": " + sFault + '\n');
            return EXIT_NEGATIVE;
        }
        Print(Visible(sFile) + ": good (" + oIn.sFormat + ", " +
              std::to_string(oIn.oTree.GetNodes()) + " nodes)\n");
        for (const std::string& sLost : LostByReading(oIn)) {
            std::fprintf(stderr, "vok: %s: not kept: %s\n", Visible(sFile).c_str(), sLost.c_str());
        }
        return EXIT_GOOD;
    } catch (const InputError& oError) {
        Print(Visible(oError.what()) + '\n');
        return oError.m_bTrouble ? EXIT_TROUBLE : EXIT_NEGATIVE;
    }
}

}  // namespace

int Check(const std::vector<std::string>& asFile) {
    int iExit = EXIT_GOOD;
    for (const std::string& sFile : asFile) iExit = std::max<int>(iExit, CheckOne(sFile));
    return iExit;
}

}  // namespace tools
