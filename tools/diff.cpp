// SPDX-License-Identifier: MIT
// vok diff: where two trees differ.
#include "vok/compare/diff.h"

#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/output.h"
#include "tools/page.h"
#include "tools/print.h"
#include "tools/say.h"
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

// A difference as an object of JSON, to a writer over any stream.
template <class Writer>
class ObjectOf {
  public:
    explicit ObjectOf(Writer& oOut) noexcept : m_oOut(oOut) {}

    void Add(const Data_Difference& o) {
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
    }

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

    Writer& m_oOut;
};

// Differences for programs: an object a line.
class Objects {
  public:
    void Add(const Data_Difference& o) {
        m_oOut.Reset(m_oStream);
        m_oObject.Add(o);
        m_oStream.Put('\n');
    }
    void Finish() { m_oStream.Flush(); }

  private:
    JsonPrinter m_oStream;
    rapidjson::Writer<JsonPrinter> m_oOut{m_oStream};
    ObjectOf<rapidjson::Writer<JsonPrinter>> m_oObject{m_oOut};
};

// Calls oAdd for every difference; returns how many there are. Paths of a deep tree are long: all
// of them together might be its square. oMore is called where there are more of them than that.
vok::u3_t ForEach(const DiffOptions& o, const Input& oA, const Input& oB,
                  const std::function<void(const Data_Difference&)>& oAdd,
                  const std::function<void()>& oMore) {
    const vok::u3_t uMost = (vok::u3_t{64} << 20) + 200 * (oA.uBytes + oB.uBytes);
    vok::u3_t uPaths = 0;
    const auto oVisit = [&](const Data_Difference& oFound) {
        uPaths += std::strlen(oFound.m_sPath);
        if (uPaths > uMost) {
            Complain(Say("there are more differences: too deep to list them all"));
            oMore();
            return false;
        }
        oAdd(oFound);
        return true;
    };
    return o.bByPosition ? Data::Diff(oA.oTree, oB.oTree, oVisit)
                         : Data::Diff(oA.oTree, oB.oTree, o.oCompare, oVisit);
}

template <class Output>
int List(const DiffOptions& o, const Input& oA, const Input& oB) {
    Output oOutput;
    const vok::u3_t uFound = ForEach(
        o, oA, oB, [&](const Data_Difference& oFound) { oOutput.Add(oFound); }, [] {});
    oOutput.Finish();
    return uFound == 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

int WritePageOf(const DiffOptions& o, const Input& oA, const Input& oB) {
    vok::u3_t uFound = 0;
    WritePage(DIFF_PAGE, o.sOut.empty() ? "-" : o.sOut, [&](ScriptSink& oStream) {
        rapidjson::Writer<ScriptSink> oOut(oStream);
        ObjectOf<rapidjson::Writer<ScriptSink>> oObject(oOut);
        bool bMore = false;
        oOut.StartObject();
        oOut.Key("a");
        WriteText(oOut, o.sA);
        oOut.Key("b");
        WriteText(oOut, o.sB);
        oOut.Key("differences");
        oOut.StartArray();
        uFound = ForEach(
            o, oA, oB, [&](const Data_Difference& oFound) { oObject.Add(oFound); },
            [&] { bMore = true; });
        oOut.EndArray();
        oOut.Key("more");
        oOut.Bool(bMore);
        oOut.EndObject();
    });
    return uFound == 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

// What is wrong with them is said whether they are needed or not.
void RequireGood(const vok::Data_DiffOptions& o) {
    Data oNone;
    oNone.SetToRoot();
    Data::Diff(oNone, oNone, o, [](const Data_Difference&) { return false; });
}

int WritePatch(const DiffOptions& o, const Input& oA, const Input& oB) {
    const Data oPatch = Data::MakePatch(oA.oTree, oB.oTree, o.oCompare);
    SaveTree(oPatch, o.sOut, FormOf(o.sOut, o.sTo), o.sOut);
    return oPatch.GetNodes() == 1 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace

int Diff(const DiffOptions& o) {
    RequireGood(o.oCompare);
    if (o.bByPosition && !o.bHtml && !o.sOut.empty()) {
        throw std::invalid_argument(Say("--by-position excludes --patch"));
    }
    const Input oA = Load(o.sA);
    const Input oB = Load(o.sB);
    if (o.bHtml) return WritePageOf(o, oA, oB);
    if (!o.sOut.empty()) return WritePatch(o, oA, oB);
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
