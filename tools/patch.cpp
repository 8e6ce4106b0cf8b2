// SPDX-License-Identifier: MIT
// vok patch: what vok diff has written, applied.

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/print.h"
#include "tools/text.h"
#include "tools/tree_file.h"
#include "vok/base/msg_exception.h"

namespace tools {

int Patch(const PatchOptions& o) {
    const Input oIn = Load(o.sIn);
    const Input oPatch = Load(o.sPatch);
    vok::Data oResult;
    try {
        oResult = oIn.oTree.ApplyPatch(oPatch.oTree);
    } catch (const vok::Msg_Exception& oError) {
        if (IsNoMemory(oError)) throw;
        Complain(o.sPatch, Line(oError.what()));
        return EXIT_NEGATIVE;
    }
    TellReadingLosses(o.sIn, oIn.oReport, oIn.sBehind);
    SaveTree(oResult, o.sOut, FormOf(o.sOut, o.sTo), o.sOut);
    return EXIT_GOOD;
}

}  // namespace tools
