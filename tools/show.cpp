// vok show: a tree as indented lines.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Node;

// Longer texts end in "..." and their length.
constexpr std::size_t LONGEST_SHOWN = 200;

std::string Excerpt(std::string_view sText) {
    if (sText.size() <= LONGEST_SHOWN) return Escaped(sText);
    std::size_t uCut = LONGEST_SHOWN;
    while ((sText[uCut] & 0xC0) == 0x80) --uCut;  // not inside a character
    return Escaped(sText.substr(0, uCut)) + "... (" + std::to_string(sText.size()) + " bytes)";
}

class Lines {
  public:
    explicit Lines(bool bColoured) : m_oPalette(bColoured) {}

    void Show(const Data& oFrom, std::optional<unsigned> uMostDepth) {
        m_aoRun.clear();
        Data oNode = oFrom;
        for (vok::Data_Walk o(oFrom); o.Next();) {
            oNode.SetToNode(o.GetId());
            ShowLine(oNode, o.GetDepth(), o.GetDepth() != 0 ? IndexOf(o) : 0);
            if (uMostDepth && o.GetDepth() >= *uMostDepth) o.SkipSuccessors();
        }
    }

  private:
    struct Run {
        vok::u2_t uKey;
        unsigned uCount;
    };

    // The position among the siblings of the same name, which come one after the other.
    unsigned IndexOf(const vok::Data_Walk& o) {
        m_aoRun.resize(o.GetDepth(), Run{vok::Data_Key::UNKNOWN, 0});
        Run& oRun = m_aoRun.back();
        if (oRun.uKey != o.GetKey().uKey) oRun = {o.GetKey().uKey, 0};
        return oRun.uCount++;
    }

    void ShowLine(const Data& oNode, std::size_t uDepth, unsigned uIndex) {
        // Deeper lines do not get longer, so that deep trees stay readable for programs.
        std::string sLine(2 * std::min<std::size_t>(uDepth, 100), ' ');
        const auto oAdd = [&](const char* sColour, std::string_view s) {
            sLine.append(sColour).append(s);
            if (*sColour != 0) sLine += m_oPalette.sEnd;
        };
        const char* sName = oNode.GetName();
        oAdd(m_oPalette.sName, sName != nullptr ? Escaped(sName) : "\"\"");
        if (uIndex != 0) sLine += '[' + std::to_string(uIndex) + ']';
        ShowAttributes(oNode, oAdd);
        const Data_Node::Type eType = oNode.GetType();
        if (eType != Data_Node::Tree) {
            sLine += ' ';
            oAdd(m_oPalette.sType, Data_Node::TypeName(eType));
        }
        if (eType != Data_Node::Tree && eType != Data_Node::Empty) {
            sLine += ' ';
            const std::string sValue = Excerpt(ValueText(oNode));
            oAdd(m_oPalette.sValue, eType == Data_Node::String ? '"' + sValue + '"' : sValue);
        }
        sLine += '\n';
        Print(sLine);
    }

    template <class Add>
    void ShowAttributes(const Data& oNode, const Add& oAdd) {
        oNode.GetAttributes(m_oNames, m_oValues, true);
        for (std::size_t u = 0; u < m_oNames.Size(); ++u) {
            oAdd("", " ");
            oAdd(m_oPalette.sAttribute,
                 '@' + Escaped(m_oNames(u)) + "=\"" + Excerpt(m_oValues(u)) + '"');
        }
    }

    Palette m_oPalette;
    std::vector<Run> m_aoRun;  // by level
    vok::Arr<const char*> m_oNames;
    vok::Arr<const char*> m_oValues;
};

}  // namespace

int Show(const ShowOptions& o) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    Lines oLines(!o.bPlain && WantsColour());
    for (std::size_t u = 0; u < oFound.Size(); ++u) oLines.Show(oFound.GetNth(u), o.uDepth);
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools
