// SPDX-License-Identifier: MIT
// vok show: a tree as indented lines.
#include <string>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/node_lines.h"
#include "tools/standard_input.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"
#include "vok/records/path.h"

namespace tools {

namespace {

[[nodiscard]] bool IsBeyond(const ShowOptions& o, std::size_t uDepth) {
    return o.uDepth && uDepth >= *o.uDepth;
}

int ByRecords(const ShowOptions& o, NodeLines& oLines) {
    // Who is within another one is shown twice.
    if (vok::records::Path::NeedsTree(o.sPath) || vok::records::Path(o.sPath).MayNest()) {
        throw NeedsTree();
    }
    if (o.sFile == "-" && !StandardInput::The().IsWhole()) throw NeedsTree();
    const Survey oSurvey = LookThrough(o.sFile);
    // Only a tree knows where links lead to, and puts names in order.
    if (oSurvey.bLinks || !oSurvey.bInOrder) throw NeedsTree();
    Document oDocument(o.sFile);
    vok::records::Path oPath(o.sPath);
    std::string sTop;
    std::size_t uFound = 0;
    std::size_t uFrom = 0;  // depth of the node that is shown from
    bool bShowing = false;
    while (oDocument.Next()) {
        const vok::Data_Record& r = *oDocument;
        if (r.GetDepth() == 0) sTop = r.GetName();
        bShowing = bShowing && r.GetDepth() > uFrom;
        if (!bShowing) {
            const auto oVerdict = oPath.Look(r);
            if (!oVerdict.bSelected) {
                if (!oVerdict.bBelow) oDocument.Reader().SkipSuccessors();
                continue;
            }
            ++uFound;
            bShowing = true;
            uFrom = r.GetDepth();
            oLines.StartAt();
        }
        oLines.Add(r, r.GetDepth() - uFrom);
        if (IsBeyond(o, r.GetDepth() - uFrom)) oDocument.Reader().SkipSuccessors();
    }
    if (uFound == 0) TellNothingAt(o.sPath, {}, sTop);
    return uFound != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

int ByTree(const ShowOptions& o, NodeLines& oLines) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        oLines.StartAt();
        for (vok::Data_Walk oWalk(oFound.GetNth(u)); oWalk.Next();) {
            oLines.Add(oWalk.GetData(), oWalk.GetDepth());
            if (IsBeyond(o, oWalk.GetDepth())) oWalk.SkipSuccessors();
        }
    }
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace

int Show(const ShowOptions& o) {
    NodeLines oLines(!o.bPlain && WantsColour());
    return Answer(
        o.sFile, [&] { return ByRecords(o, oLines); }, [&] { return ByTree(o, oLines); });
}

}  // namespace tools
