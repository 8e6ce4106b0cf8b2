// SPDX-License-Identifier: MIT
#include "tools/node_lines.h"

#include <algorithm>

#include "tools/document.h"
#include "tools/print.h"

namespace tools {

using vok::Data_Node;

namespace {

// Longer texts end in "..." and their length.
constexpr std::size_t LONGEST_SHOWN = 200;

std::string Excerpt(std::string_view sText) {
    if (sText.size() <= LONGEST_SHOWN) return Escaped(sText);
    return Escaped(Beginning(sText, LONGEST_SHOWN)) + "... (" + std::to_string(sText.size()) +
           " bytes)";
}

}  // namespace

void NodeLines::Add(const vok::Data_Record& r, std::size_t uDepth) {
    Add(Shown{r.GetName(), r.GetType(), ValueText(r), AttributesOf(r)}, uDepth);
}

void NodeLines::Add(const vok::Data& oNode, std::size_t uDepth) {
    const char* sName = oNode.GetName();
    Shown o{sName != nullptr ? sName : "", oNode.GetType(), ValueText(oNode), {}};
    for (const auto& [sAttribute, sValue] : oNode.GetAttributes()) {
        o.aoAttribute.push_back({sAttribute, sValue});
    }
    Add(o, uDepth);
}

void NodeLines::Add(const Shown& o, std::size_t uDepth) {
    const unsigned uIndex = uDepth != 0 ? IndexOf(o.sName, uDepth) : 0;
    // Deeper lines do not get longer, so that deep trees stay readable for programs.
    std::string sLine(2 * std::min<std::size_t>(uDepth, 100), ' ');
    const auto oAdd = [&](const char* sColour, std::string_view s) {
        sLine.append(sColour).append(s);
        if (*sColour != 0) sLine += m_oPalette.sEnd;
    };
    oAdd(m_oPalette.sName, !o.sName.empty() ? Escaped(o.sName) : "\"\"");
    if (uIndex != 0) sLine += '[' + std::to_string(uIndex) + ']';
    for (const vok::Data_Record::Attribute& a : o.aoAttribute) {
        oAdd("", " ");
        oAdd(m_oPalette.sAttribute, '@' + Escaped(a.sName) + "=\"" + Excerpt(a.sValue) + '"');
    }
    if (o.eType != Data_Node::Tree) {
        sLine += ' ';
        oAdd(m_oPalette.sType, Data_Node::TypeName(o.eType));
    }
    if (o.eType != Data_Node::Tree && o.eType != Data_Node::Empty) {
        sLine += ' ';
        const std::string sValue = Excerpt(o.sValue);
        oAdd(m_oPalette.sValue, o.eType == Data_Node::String ? '"' + sValue + '"' : sValue);
    }
    Print(sLine + '\n');
}

// The position among the siblings of the same name, which come one after the other.
unsigned NodeLines::IndexOf(std::string_view sName, std::size_t uDepth) {
    m_aoRun.resize(uDepth);
    Run& oRun = m_aoRun.back();
    if (oRun.sName != sName) oRun = {std::string(sName), 0};
    return oRun.uCount++;
}

}  // namespace tools
