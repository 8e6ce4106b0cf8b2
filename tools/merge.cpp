// SPDX-License-Identifier: MIT
// vok merge: what two trees have made of a third one, in one.
#include "vok/compare/merge.h"

#include <cstring>
#include <string>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/text.h"
#include "tools/tree_file.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Conflict;

std::string NodeText(const Data& oNode) {
    const std::string sType = vok::Data_Node::TypeName(oNode.GetType());
    const std::string sValue = Escaped(ValueText(oNode));
    return sValue.empty() ? sType : sType + ' ' + sValue;
}

// What one side has made of it.
std::string SideText(const Data_Conflict& o, const Data_Conflict::Side& oSide) {
    if (oSide.sText != nullptr) return '"' + Escaped(oSide.sText) + '"';
    if (o.m_sAttribute != nullptr) return "(none)";
    if (oSide.oNode.IsNode()) return NodeText(oSide.oNode);
    std::string sDid("(");
    sDid.append(Data_Conflict::DidName(oSide.eDid));
    sDid.push_back(')');
    return sDid;
}

void Report(const Data_Conflict& o) {
    std::string sBase = o.m_oBase.IsNode() ? NodeText(o.m_oBase) : "(none)";
    if (o.m_sBase != nullptr) {
        sBase = '"' + Escaped(o.m_sBase) + '"';
    } else if (o.m_sAttribute != nullptr) {
        sBase = "(none)";
    }
    const std::string sAttribute =
        o.m_sAttribute != nullptr ? ' ' + Escaped(o.m_sAttribute) : std::string();
    Complain(Say("conflict at %0", {ShownPlace(o.m_sPath) + sAttribute}) + "\n  = " + sBase +
             "\n  < " + SideText(o, o.m_oA) + "\n  > " + SideText(o, o.m_oB));
}

}  // namespace

int Merge(const MergeOptions& o) {
    const Input oBase = Load(o.sBase);
    const Input oA = Load(o.sA);
    const Input oB = Load(o.sB);
    const auto ePick = o.bOurs     ? vok::Data_MergePick::A
                       : o.bTheirs ? vok::Data_MergePick::B
                                   : vok::Data_MergePick::None;
    // Paths of a deep tree are long: all of them together might be its square.
    const vok::u3_t uMost = (vok::u3_t{64} << 20) + 200 * (oBase.uBytes + oA.uBytes + oB.uBytes);
    vok::u3_t uPaths = 0;
    const auto oTell = [&](const Data_Conflict& oConflict) {
        if (ePick != vok::Data_MergePick::None) return false;
        uPaths += std::strlen(oConflict.m_sPath);
        if (uPaths > uMost) {
            Complain(Say("there are more conflicts: too deep to list them all"));
            return false;
        }
        Report(oConflict);
        return true;
    };
    const Data oMerged = Data::Merge(oBase.oTree, oA.oTree, oB.oTree, o.oCompare, ePick, oTell);
    if (!oMerged.IsNode()) return EXIT_NEGATIVE;
    TellReadingLosses(o.sA, oA.oReport, oA.sBehind);
    TellReadingLosses(o.sB, oB.oReport, oB.sBehind);
    SaveTree(oMerged, o.sOut, FormOf(o.sOut, o.sTo), o.sOut);
    return EXIT_GOOD;
}

}  // namespace tools
