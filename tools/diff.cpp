// vok diff: where two trees differ.
#include "vok/compare/diff.h"

#include <cstdio>
#include <cstring>
#include <string>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/output.h"
#include "tools/shell_path.h"
#include "tools/text.h"
#include "tools/tree_file.h"

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

// Differences for people.
class Lines {
  public:
    void Add(const Data_Difference& o) {
        Print(m_oPalette.sName + ShownPlace(o.m_sPath) + m_oPalette.sEnd + ' ' +
              Data_Difference::WhatName(o.m_eWhat) +
              (o.m_sAttribute != nullptr ? ' ' + Escaped(o.m_sAttribute) : "") + '\n');
        if (o.m_eWhat == Data_Difference::Moved) {
            return Print("  > " + ShownPlace(o.m_sPathB) + '\n');
        }
        const std::string sA = SideText(o, o.m_oA);
        const std::string sB = SideText(o, o.m_oB);
        if (!sA.empty()) Print("  < " + sA + '\n');
        if (!sB.empty()) Print("  > " + sB + '\n');
    }
    void Finish() noexcept {}

  private:
    const Palette m_oPalette{WantsColour()};
};

// Differences for programs: an object a line.
class Objects {
  public:
    void Add(const Data_Difference& o) {
        m_oOut.Reset(m_oStream);
        m_oOut.StartObject();
        AddText("what", Data_Difference::WhatName(o.m_eWhat));
        AddPath("a", o.m_oA.IsNode() ? o.m_sPath : nullptr);
        AddPath("b", o.m_sPathB);
        if (o.m_sAttribute != nullptr) AddText("attribute", o.m_sAttribute);
        if (o.m_eWhat != Data_Difference::Moved) {
            AddSide("old", o, o.m_oA);
            AddSide("new", o, o.m_oB);
        }
        m_oOut.EndObject();
        m_oStream.Put('\n');
    }
    void Finish() { m_oStream.Flush(); }

  private:
    void AddPath(const char* sKey, const char* sPath) {
        AddText(sKey, sPath != nullptr ? ShownPath(sPath).c_str() : nullptr);
    }
    void AddText(const char* sKey, const char* sText) {
        m_oOut.Key(sKey);
        if (sText == nullptr) {
            m_oOut.Null();
        } else {
            WriteText(m_oOut, sText);
        }
    }
    void AddSide(const char* sKey, const Data_Difference& o, const Data& oSide) {
        if (o.m_eWhat == Data_Difference::Name) return AddText(sKey, oSide.GetName());
        if (o.m_eWhat == Data_Difference::Attribute) {
            return AddText(sKey, oSide.GetAttVal(o.m_sAttribute));
        }
        m_oOut.Key(sKey);
        if (!oSide.IsNode()) {
            m_oOut.Null();
        } else if (o.m_eWhat == Data_Difference::Value) {
            m_oOut.StartObject();
            WriteTypeAndValue(m_oOut, oSide, false);
            m_oOut.EndObject();
        } else {
            WriteTree(m_oOut, oSide);
        }
    }

    JsonPrinter m_oStream;
    rapidjson::Writer<JsonPrinter> m_oOut{m_oStream};
};

template <class Output>
int List(const DiffOptions& o, const Input& oA, const Input& oB) {
    Output oOutput;
    // Paths of a deep tree are long: all of them together might be its square.
    const vok::u3_t uMost = (vok::u3_t{64} << 20) + 200 * (oA.uBytes + oB.uBytes);
    vok::u3_t uPaths = 0;
    const auto oAdd = [&](const Data_Difference& oFound) {
        uPaths += std::strlen(oFound.m_sPath);
        if (uPaths > uMost) {
            std::fputs("vok: there are more differences: too deep to list them all\n", stderr);
            return false;
        }
        oOutput.Add(oFound);
        return true;
    };
    const vok::u3_t uFound = o.bByPosition ? Data::Diff(oA.oTree, oB.oTree, oAdd)
                                           : Data::Diff(oA.oTree, oB.oTree, o.oCompare, oAdd);
    oOutput.Finish();
    return uFound == 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

// What is wrong with them is said whether they are needed or not.
void CheckOptions(const vok::Data_DiffOptions& o) {
    Data oNone;
    oNone.SetToRoot();
    Data::Diff(oNone, oNone, o, [](const Data_Difference&) { return false; });
}

int WritePatch(const DiffOptions& o, const Input& oA, const Input& oB) {
    const Data oPatch = Data::MakePatch(oA.oTree, oB.oTree, o.oCompare);
    SaveTree(oPatch, o.sPatch, FormOf(o.sPatch, o.sTo), o.sPatch);
    return oPatch.GetNodes() == 1 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace

int Diff(const DiffOptions& o) {
    CheckOptions(o.oCompare);
    const Input oA = Load(o.sA);
    const Input oB = Load(o.sB);
    if (!o.sPatch.empty()) return WritePatch(o, oA, oB);
    // To be the same takes less than to know what differs.
    if (Data::Equal(oA.oTree, oB.oTree)) return EXIT_GOOD;
    if (o.bQuiet) {
        const auto oStop = [](const Data_Difference&) { return false; };
        const bool bSame = !o.bByPosition && Data::Diff(oA.oTree, oB.oTree, o.oCompare, oStop) == 0;
        return bSame ? EXIT_GOOD : EXIT_NEGATIVE;
    }
    AllowPrinting(oA.uBytes + oB.uBytes);
    return o.bJson ? List<Objects>(o, oA, oB) : List<Lines>(o, oA, oB);
}

}  // namespace tools
