// vok show: a tree as indented lines.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/standard_input.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"
#include "vok/records/path.h"

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

// A node as it is shown.
struct Shown {
    std::string_view sName;
    Data_Node::Type eType;
    std::string sValue;
    std::vector<vok::Data_Record::Attribute> aoAttribute;  // by name, each once
};

class Lines {
  public:
    explicit Lines(bool bColoured) : m_oPalette(bColoured) {}

    // For the node that is shown from, which nothing stands in front of.
    void StartAt() noexcept { m_aoRun.clear(); }
    // A node at a depth below that, in pre-order.
    void Add(const Shown& o, std::size_t uDepth) {
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

  private:
    struct Run {
        std::string sName;
        unsigned uCount = 0;
    };

    // The position among the siblings of the same name, which come one after the other.
    unsigned IndexOf(std::string_view sName, std::size_t uDepth) {
        m_aoRun.resize(uDepth);
        Run& oRun = m_aoRun.back();
        if (oRun.sName != sName) oRun = {std::string(sName), 0};
        return oRun.uCount++;
    }

    Palette m_oPalette;
    std::vector<Run> m_aoRun;  // by level
};

[[nodiscard]] bool IsBeyond(const ShowOptions& o, std::size_t uDepth) {
    return o.uDepth && uDepth >= *o.uDepth;
}

int ByRecords(const ShowOptions& o, Lines& oLines) {
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
        oLines.Add({r.GetName(), r.GetType(), ValueText(r), AttributesOf(r)}, r.GetDepth() - uFrom);
        if (IsBeyond(o, r.GetDepth() - uFrom)) oDocument.Reader().SkipSuccessors();
    }
    if (uFound == 0) TellNothingAt(o.sPath, sTop);
    return uFound != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

int ByTree(const ShowOptions& o, Lines& oLines) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    vok::Arr<const char*> oNames;
    vok::Arr<const char*> oValues;
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        Data oNode = oFound.GetNth(u);
        oLines.StartAt();
        for (vok::Data_Walk oWalk(oNode); oWalk.Next();) {
            oNode.SetToNode(oWalk.GetId());
            const char* sName = oNode.GetName();
            Shown oShown{sName != nullptr ? sName : "", oWalk.GetType(), ValueText(oNode), {}};
            oNode.GetAttributes(oNames, oValues, true);
            for (std::size_t v = 0; v < oNames.Size(); ++v) {
                oShown.aoAttribute.push_back({oNames(v), oValues(v)});
            }
            oLines.Add(oShown, oWalk.GetDepth());
            if (IsBeyond(o, oWalk.GetDepth())) oWalk.SkipSuccessors();
        }
    }
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace

int Show(const ShowOptions& o) {
    Lines oLines(!o.bPlain && WantsColour());
    return Answer(
        o.sFile, [&] { return ByRecords(o, oLines); }, [&] { return ByTree(o, oLines); });
}

}  // namespace tools
