// SPDX-License-Identifier: MIT
// vok get: what is at a path.
#include <string>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/node_lines.h"
#include "tools/print.h"
#include "tools/shell_path.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"
#include "vok/json/json.h"
#include "vok/records/path.h"

namespace tools {

namespace {

// What was asked for and found, in the order of the document, whoever finds it: what was printed
// before is left out.
class Answers {
  public:
    explicit Answers(const GetOptions& o)
        : m_oOptions(o), m_oPath(ParseNodesOrAttribute(o.sPath)), m_oLines(WantsColour()) {}

    [[nodiscard]] const std::string& Nodes() const noexcept { return m_oPath.sNodes; }
    [[nodiscard]] const std::string& Attribute() const noexcept { return m_oPath.sAttribute; }
    [[nodiscard]] bool WantsPaths() const noexcept { return m_oOptions.bPaths; }
    [[nodiscard]] bool WantsJson() const noexcept {
        return m_oOptions.bJson && !m_oOptions.bPaths && !m_oOptions.bCount;
    }
    // Whether trees are printed, each a block of lines, or a line of JSON.
    [[nodiscard]] bool WantsTrees() const noexcept {
        return m_oPath.sAttribute.empty() && !m_oOptions.bPaths && !m_oOptions.bCount;
    }
    [[nodiscard]] NodeLines& Lines() noexcept { return m_oLines; }
    // Of which the memory is used again.
    [[nodiscard]] vok::Data& Part() noexcept { return m_oPart; }

    // One more; whether it is still to be printed.
    [[nodiscard]] bool IsNew() {
        if (++m_uFound <= m_uPrinted) return false;
        m_uPrinted = m_uFound;
        return !m_oOptions.bCount;
    }
    void PrintValue(const std::string& sValue) const {
        Print(m_oOptions.bNull ? sValue + '\0' : Escaped(sValue) + '\n');
    }
    void PrintPath(std::string_view sLibrary) const {
        std::string s = ShownPath(sLibrary);
        if (!Attribute().empty()) s = ShownAttribute(s, Attribute());
        if (m_oOptions.bJson) return PrintJson(s);
        Print(s + (m_oOptions.bNull ? '\0' : '\n'));
    }
    void PrintText(const std::string& s) const { m_oOptions.bJson ? PrintJson(s) : PrintValue(s); }
    // A tree of its own, whose name was asked for.
    static void PrintJson(vok::Data& oTree) {
        oTree.SetRootName("");
        vok::Str oLine;
        vok::Json_SaveString(oTree, oLine, vok::Json_Layout::Compact);
        Print(oLine.View());
    }
    static void PrintJson(const std::string& sText) {
        vok::Data oTree;
        oTree.SetValStr(sText);
        PrintJson(oTree);
    }
    void EndTree() const {
        if (m_oOptions.bNull) Print({"", 1});
    }
    void StartAgain() noexcept { m_uFound = 0; }

    // Says what there is to say when all was gone through.
    int Finish(const std::string_view sTop) {
        if (m_oOptions.bCount) Print(std::to_string(m_uFound) + '\n');
        if (m_uFound != 0) return EXIT_GOOD;
        if (m_oOptions.sDefault) {
            PrintText(*m_oOptions.sDefault);
            return EXIT_GOOD;
        }
        if (!m_oOptions.bCount) TellNothingAt(m_oPath.sNodes, m_oPath.sAttribute, sTop);
        return EXIT_NEGATIVE;
    }

  private:
    const GetOptions& m_oOptions;
    const NodesOrAttribute m_oPath;
    NodeLines m_oLines;
    vok::Data m_oPart;
    std::uint64_t m_uFound = 0;
    std::uint64_t m_uPrinted = 0;
};

void PrintTree(Answers& oAnswers, const vok::Data& oNode) {
    oAnswers.Lines().StartAt();
    for (vok::Data_Walk o(oNode); o.Next();) oAnswers.Lines().Add(o.GetData(), o.GetDepth());
    oAnswers.EndTree();
}

// ---- record by record ---------------------------------------------------------------

[[nodiscard]] bool HasLinks(const vok::Data& oTree) {
    for (vok::Data_Walk o(oTree); o.Next();) {
        if (o.GetType() == vok::Data_Node::Link) return true;
    }
    return false;
}

// A part of the document, which alone is held.
void AddTree(Answers& oAnswers, Document& oDocument) {
    vok::Data& oTree = oAnswers.Part();
    oDocument.Guard([&] { oDocument.Reader().Take(oTree); });
    if (!oDocument.Reader().GetOuterLinks().empty()) throw NeedsTree();
    // Lines show where in the document links lead to, JSON where in the part.
    if (!oAnswers.WantsJson() && HasLinks(oTree)) throw NeedsTree();
    if (!oAnswers.IsNew()) return;
    oAnswers.WantsJson() ? Answers::PrintJson(oTree) : PrintTree(oAnswers, oTree);
}

void AddRecord(Answers& oAnswers, Document& oDocument) {
    const vok::Data_Record& r = *oDocument;
    const vok::Data_Record::Attribute* const p =
        oAnswers.Attribute().empty() ? nullptr : r.FindAttribute(oAnswers.Attribute());
    if (!oAnswers.Attribute().empty() && p == nullptr) return;
    // Positions are those of a tree only where nothing is out of order, which XML may be yet.
    if (oAnswers.WantsPaths() && oDocument.IsXml()) throw NeedsTree();
    // Only a tree knows where a link in XML leads to.
    if (oAnswers.WantsTrees() && r.HasTarget() && oDocument.IsXml()) throw NeedsTree();
    if (!oAnswers.IsNew()) return;
    if (oAnswers.WantsPaths()) return oAnswers.PrintPath(oDocument.Reader().GetPath().View());
    if (p != nullptr) return oAnswers.PrintText(std::string(p->sValue));
    const bool bLink = r.GetType() == vok::Data_Node::Link;
    oAnswers.PrintValue(bLink ? ShownPath('/' + std::string(r.Text())) : ValueText(r));
}

int ByRecords(Answers& oAnswers, const std::string& sFile) {
    if (vok::records::Path::NeedsTree(oAnswers.Nodes())) throw NeedsTree();
    vok::records::Path oPath(oAnswers.Nodes());
    Document oDocument(sFile);
    std::string sTop;
    // Reading ends with the answer.
    while (oDocument.Next() && !oPath.IsThrough(oDocument->GetDepth())) {
        const vok::Data_Record& r = *oDocument;
        if (r.GetDepth() == 0) sTop = r.GetName();
        const vok::records::Path::Verdict oVerdict = oPath.Look(r);
        if (oVerdict.bSelected) {
            const bool bTree = oAnswers.WantsTrees() &&
                               (r.GetType() == vok::Data_Node::Tree || oAnswers.WantsJson());
            // Another one may be within; and who has no name is called Root as a tree of its own.
            if (bTree && (oVerdict.bBelow || r.GetName().empty())) throw NeedsTree();
            if (bTree) {
                AddTree(oAnswers, oDocument);
                continue;
            }
            AddRecord(oAnswers, oDocument);
        }
        if (!oVerdict.bBelow) oDocument.Reader().SkipSuccessors();
    }
    return oAnswers.Finish(sTop);
}

// ---- in a tree ------------------------------------------------------------------------

void AddNode(Answers& oAnswers, const vok::Data& oNode) {
    const char* const sValue =
        oAnswers.Attribute().empty() ? nullptr : oNode.GetAttVal(oAnswers.Attribute());
    if (!oAnswers.Attribute().empty() && sValue == nullptr) return;
    if (!oAnswers.IsNew()) return;
    if (oAnswers.WantsPaths()) return oAnswers.PrintPath(oNode.GetPath().View());
    if (sValue != nullptr) return oAnswers.PrintText(sValue);
    if (oAnswers.WantsJson()) {
        vok::Data oTree = oNode.MkClone();
        return Answers::PrintJson(oTree);
    }
    if (oNode.GetType() != vok::Data_Node::Tree) return oAnswers.PrintValue(ValueText(oNode));
    PrintTree(oAnswers, oNode);
}

int ByTree(Answers& oAnswers, const std::string& sFile) {
    const Input oIn = Load(sFile);
    const vok::Data_NodeSet oFound = oIn.oTree.GetNodeSet(oAnswers.Nodes().c_str());
    oAnswers.StartAgain();
    for (std::size_t u = 0; u < oFound.Size(); ++u) AddNode(oAnswers, oFound.GetNth(u));
    const char* sTop = oIn.oTree.GetName();
    return oAnswers.Finish(sTop != nullptr ? sTop : "");
}

}  // namespace

int Get(const GetOptions& o) {
    Answers oAnswers(o);
    return Answer(
        o.sFile, [&] { return ByRecords(oAnswers, o.sFile); },
        [&] { return ByTree(oAnswers, o.sFile); });
}

}  // namespace tools
