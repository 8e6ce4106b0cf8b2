// vok diff: where two trees differ.
#include "vok/data/diff.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Difference;

// What one side has, for a line of its own; empty when it has nothing.
std::string SideText(const Data_Difference& o, const Data& oSide) {
    if (!oSide.IsNode()) return {};
    if (o.m_eWhat == Data_Difference::Name) {
        const char* sName = oSide.GetName();
        return Escaped(sName != nullptr ? sName : "");
    }
    if (o.m_eWhat == Data_Difference::Attribute) {
        const char* sValue = oSide.GetAttVal(o.m_sAttribute);
        return sValue != nullptr ? '"' + Escaped(sValue) + '"' : "(none)";
    }
    const std::string sType = vok::Data_Node::TypeName(oSide.GetType());
    const std::string sValue = Escaped(ValueText(oSide));
    return sValue.empty() ? sType : sType + ' ' + sValue;
}

}  // namespace

int Diff(const DiffOptions& o) {
    const Input oA = Load(o.sA);
    const Input oB = Load(o.sB);
    if (o.bQuiet) return Data::Equal(oA.oTree, oB.oTree) ? EXIT_GOOD : EXIT_NEGATIVE;
    const Palette oPalette(WantsColour());
    // Paths of a deep tree are long: all of them together might be its square.
    const vok::u3_t uMost = (vok::u3_t{64} << 20) + 200 * (oA.uBytes + oB.uBytes);
    vok::u3_t uPaths = 0;
    const auto oPrint = [&](const Data_Difference& oFound) {
        uPaths += std::strlen(oFound.m_sPath);
        if (uPaths > uMost) {
            std::fputs("vok: there are more differences: too deep to list them all\n", stderr);
            return false;
        }
        Print(oPalette.sName + Escaped(Shortened(oFound.m_sPath)) + oPalette.sEnd + ' ' +
              Data_Difference::WhatName(oFound.m_eWhat) +
              (oFound.m_sAttribute != nullptr ? ' ' + Escaped(oFound.m_sAttribute) : "") + '\n');
        const std::string sA = SideText(oFound, oFound.m_oA);
        const std::string sB = SideText(oFound, oFound.m_oB);
        if (!sA.empty()) Print("  < " + sA + '\n');
        if (!sB.empty()) Print("  > " + sB + '\n');
        return true;
    };
    return Data::Diff(oA.oTree, oB.oTree, oPrint) == 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools
