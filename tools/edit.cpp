// SPDX-License-Identifier: MIT
#include "tools/edit.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <stdexcept>

#include "tools/input.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/text.h"
#include "vok/base/base64.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/data/succ_it.h"
#include "vok/json/scalar.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Node;

constexpr Data_Node::Type TYPES[] = {
    Data_Node::Empty,  Data_Node::Boolean, Data_Node::Integer, Data_Node::Long,
    Data_Node::Float,  Data_Node::Double,  Data_Node::Char,    Data_Node::Date,
    Data_Node::String, Data_Node::Binary,  Data_Node::Quad,    Data_Node::Link,
};

std::string LowerName(Data_Node::Type eType) {
    std::string s = Data_Node::TypeName(eType);
    s[0] = static_cast<char>(s[0] + ('a' - 'A'));
    return s;
}

Data_Node::Type TypeOf(const std::string& sName) {
    for (const Data_Node::Type e : TYPES) {
        if (LowerName(e) == sName) return e;
    }
    throw std::invalid_argument(Say("there is no type \"%0\"", {sName}));
}

std::string Place(const Data& oNode) {
    return ShownPlace(oNode.GetPath().View());
}

[[noreturn]] void RaiseNothingAt(const Data& oTree, const NodesOrAttribute& oPath) {
    const char* sTop = oTree.GetName();
    TellNothingAt(oPath.sNodes, oPath.sAttribute, sTop != nullptr ? sTop : "");
    throw NothingThere();
}

// ---- values -----------------------------------------------------------------------

// The only node at a path.
Data TargetAt(const Data& oTree, const std::string& sShell) {
    const std::string sPath = LibraryPath(sShell);
    const vok::Data_NodeSet oFound = oTree.GetNodeSet(sPath);
    if (oFound.Size() > 1) {
        throw std::invalid_argument(Say("there are %0 nodes at %1, not one",
                                        {std::to_string(oFound.Size()), Visible(sShell)}));
    }
    if (oFound.Size() == 0) RaiseNothingAt(oTree, {sPath, {}});
    return oFound.GetNth(0);
}

// Whether a text is a number as JSON has it; others, as "NaN", are taken as texts.
[[nodiscard]] bool IsNumber(std::string_view s) {
    if (s.starts_with('-')) s.remove_prefix(1);
    if (s.empty() || s[0] < '0' || s[0] > '9' ||
        (s.size() > 1 && s[0] == '0' && s[1] >= '0' && s[1] <= '9'))
        return false;
    double d = 0;
    const auto o = std::from_chars(s.data(), s.data() + s.size(), d);
    return o.ptr == s.data() + s.size() && s.back() != '.' && o.ec != std::errc::invalid_argument;
}

[[nodiscard]] bool SetBits(Data& oNode, Data_Node::Type eType, const std::string& sText) {
    using vok::json::Scalar;
    vok::u3_t uBits = 0;
    bool bRounded = false;
    Scalar o{Scalar::Number, sText};
    if (eType == Data_Node::Boolean && sText == "true") o.eKind = Scalar::True;
    if (eType == Data_Node::Boolean && sText == "false") o.eKind = Scalar::False;
    const bool bNumber = IsNumber(sText);
    if (bNumber && std::isinf(vok::ParseReal(sText))) return false;
    if (o.eKind == Scalar::Number && !bNumber) o.eKind = Scalar::Text;
    if (!vok::json::ReadTyped(eType, o, uBits, bRounded)) return false;
    if (eType == Data_Node::Float) {
        const double dValue = std::bit_cast<double>(uBits);
        const auto dNarrow = static_cast<double>(static_cast<float>(dValue));
        if (std::isinf(dNarrow) && !std::isinf(dValue)) return false;
        uBits = std::bit_cast<vok::u3_t>(dNarrow);
    }
    oNode.SetValue(vok::Data_Value::OfType(eType, uBits));
    return true;
}

[[nodiscard]] bool SetBlock(Data& oNode, const std::string& sText) {
    vok::Arr<char> oBlock;
    if (!vok::DecodeBase64(sText, oBlock)) return false;
    oNode.SetValBin(oBlock.Beg(), static_cast<vok::u2_t>(oBlock.Size()));
    return true;
}

[[nodiscard]] bool SetQuad(Data& oNode, const std::string& sText) {
    vok::u2_t au[4];
    if (!vok::json::ReadQuad(sText, au)) return false;
    oNode.SetValQuad(au[0], au[1], au[2], au[3]);
    return true;
}

void SetValue(Data& oNode, Data_Node::Type eType, const std::string& sText) {
    bool bGood = true;
    switch (eType) {
        case Data_Node::Empty:
            oNode.ClearVal();
            bGood = sText.empty();
            break;
        case Data_Node::String: oNode.SetValStr(sText); break;
        case Data_Node::Binary: bGood = SetBlock(oNode, sText); break;
        case Data_Node::Quad: bGood = SetQuad(oNode, sText); break;
        case Data_Node::Link:
            oNode.SetValLink(sText.empty() ? Data() : TargetAt(oNode.GetRoot(), sText));
            break;
        default: bGood = SetBits(oNode, eType, sText); break;
    }
    if (!bGood) {
        throw std::invalid_argument(
            Say("%0: \"%1\" is no %2", {Place(oNode), Escaped(sText), Data_Node::TypeName(eType)}));
    }
}

// The type that a value for the node has where none is told.
Data_Node::Type TypeFor(const Data& oNode) {
    const Data_Node::Type e = oNode.GetType();
    return e == Data_Node::Empty || e == Data_Node::Tree ? Data_Node::String : e;
}

void SetTyped(Data& oNode, const Edit& o) {
    if (oNode.GetType() == Data_Node::Tree) {
        throw std::invalid_argument(Say("%0 has successors, and takes no value", {Place(oNode)}));
    }
    SetValue(oNode, o.sType.empty() ? TypeFor(oNode) : TypeOf(o.sType), *o.sValue);
}

// ---- edits --------------------------------------------------------------------------

[[nodiscard]] vok::u2_t PlaceOf(const Edit& o) {
    return o.uPlace ? *o.uPlace : Data::LAST;
}

void SetAt(Data& oNode, const Edit& o, const std::string& sAttribute) {
    if (sAttribute.empty()) return SetTyped(oNode, o);
    if (!o.sType.empty())
        throw std::invalid_argument(Say("attributes are texts: they have no type"));
    oNode.SetAttVal(sAttribute.c_str(), o.sValue->c_str());
}

void AddTo(Data& oNode, const Edit& o) {
    Data oNew = oNode.Insert(o.sName, PlaceOf(o));
    if (o.sValue) SetTyped(oNew, o);
}

void DeleteAt(Data& oNode, const std::string& sAttribute) {
    if (!sAttribute.empty()) return oNode.SetAttVal(sAttribute.c_str(), nullptr);
    if (oNode.GetId() == 0) throw std::invalid_argument(Say("the top node cannot be deleted"));
    oNode.Delete();
}

void MoveTo(Data& oNode, const Data& oParent, const Edit& o) {
    if (oNode.GetId() == 0) throw std::invalid_argument(Say("the top node cannot be moved"));
    for (Data oUp = oParent; oUp.IsNode(); oUp = oUp.GetPred()) {
        if (oUp != oNode) continue;
        throw std::invalid_argument(Say("%0 cannot be moved into itself", {Place(oNode)}));
    }
    oNode.MoveTo(oParent, PlaceOf(o));
}

// Whether an edit does something to a node.
[[nodiscard]] bool Concerns(const Data& oNode, const Edit& o, const std::string& sAttribute) {
    // Within one that was deleted before.
    if (oNode.GetType() == Data_Node::Zombi) return false;
    return o.eKind != Edit::Delete || sAttribute.empty() || oNode.GetAttVal(sAttribute) != nullptr;
}

void ApplyTo(Data oNode, const Edit& o, const std::string& sAttribute, const Data& oTarget) {
    switch (o.eKind) {
        case Edit::Set: return SetAt(oNode, o, sAttribute);
        case Edit::Add: return AddTo(oNode, o);
        case Edit::Delete: return DeleteAt(oNode, sAttribute);
        case Edit::Move: return MoveTo(oNode, oTarget, o);
        case Edit::Rename: return oNode.Rename(o.sName, PlaceOf(o));
    }
}

}  // namespace

void Apply(const Edit& oEdit, vok::Data& oTree) {
    const NodesOrAttribute oPath = ParseNodesOrAttribute(oEdit.sPath);
    if (!oPath.sAttribute.empty() && oEdit.eKind != Edit::Set && oEdit.eKind != Edit::Delete) {
        (void)LibraryPath(oEdit.sPath);  // which says so
    }
    const vok::Data_NodeSet oFound = oTree.GetNodeSet(oPath.sNodes);
    const Data oTarget = oEdit.eKind == Edit::Move ? TargetAt(oTree, oEdit.sTo) : Data();
    std::size_t uDone = 0;
    for (const Data oNode : oFound) {
        if (!Concerns(oNode, oEdit, oPath.sAttribute)) continue;
        ApplyTo(oNode, oEdit, oPath.sAttribute, oTarget);
        ++uDone;
    }
    if (uDone == 0) RaiseNothingAt(oTree, oPath);
}

std::vector<std::string> WordsOf(const std::string& sLine) {
    std::vector<std::string> asWord;
    const char* const BLANKS = " \t\n";
    std::size_t u = sLine.find_first_not_of(BLANKS);
    while (u != std::string::npos) {
        const char cQuote = sLine[u] == '"' || sLine[u] == '\'' ? sLine[u] : '\0';
        std::size_t uEnd = cQuote != '\0' ? ++u : u;
        bool bInner = false;
        for (; uEnd < sLine.size(); ++uEnd) {
            const char c = sLine[uEnd];
            if (cQuote != '\0' ? c == cQuote : !bInner && (c == ' ' || c == '\t' || c == '\n')) {
                break;
            }
            bInner = bInner != (cQuote == '\0' && c == '"');
        }
        if (bInner || (cQuote != '\0' && uEnd == sLine.size())) {
            throw std::invalid_argument(Say("a quote that does not end: %0", {Visible(sLine)}));
        }
        asWord.push_back(sLine.substr(u, uEnd - u));
        u = sLine.find_first_not_of(BLANKS, uEnd + (cQuote != '\0'));
    }
    return asWord;
}

std::vector<std::string> TypeNames() {
    std::vector<std::string> as;
    for (const Data_Node::Type e : TYPES) as.push_back(LowerName(e));
    return as;
}

}  // namespace tools
