// SPDX-License-Identifier: MIT
// vok info: what is in a file.
#include <string>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/print.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

// What a file is, above what is in it.
struct Head {
    std::string sFormat;
    std::string sWrapping;  // empty for none
    std::string sVersion;   // empty for none
    std::uint64_t uBytes;
};

void PrintLines(const Head& o, const Census& oCensus) {
    Print("format      " + o.sFormat + (o.sWrapping.empty() ? "" : " in " + o.sWrapping) + '\n');
    if (!o.sVersion.empty()) Print("version     " + Escaped(o.sVersion) + '\n');
    Print("bytes       " + std::to_string(o.uBytes) + '\n');
    oCensus.Print();
}

void PrintJson(const Head& o, const Census& oCensus) {
    JsonPrinter oStream;
    rapidjson::Writer<JsonPrinter> oOut(oStream);
    const auto oText = [&](const char* sKey, const std::string& sValue) {
        oOut.Key(sKey);
        sValue.empty() ? void(oOut.Null()) : WriteText(oOut, sValue);
    };
    oOut.StartObject();
    oText("format", o.sFormat);
    oText("wrapping", o.sWrapping);
    oText("version", o.sVersion);
    oOut.Key("bytes");
    oOut.Uint64(o.uBytes);
    oCensus.PrintTo(oOut);
    oOut.EndObject();
    oStream.Put('\n');
    oStream.Flush();
}

using Printer = void (*)(const Head&, const Census&);

int ByRecords(const std::string& sFile, Printer pPrint) {
    Census oCensus;
    const Survey o = LookThrough(sFile, {}, &oCensus);
    // Whether a link in XML leads anywhere, or else is empty, shows when all nodes are there.
    if (o.bLinks && o.bXml) throw NeedsTree();
    pPrint({o.bXml ? "xml" : "dgraph", o.sWrapping, o.sVersion, o.uBytes}, oCensus);
    return EXIT_GOOD;
}

int ByTree(const std::string& sFile, Printer pPrint) {
    const Input oIn = Load(sFile);
    Census oCensus;
    vok::Arr<const char*> oNames;
    vok::Arr<const char*> oNone;
    vok::Data oNode = oIn.oTree;
    for (vok::Data_Walk o(oIn.oTree); o.Next();) {
        const char* sName = o.GetName();
        oCensus.Add(sName != nullptr ? sName : "", o.GetDepth(), o.GetValue());
        oNode.SetToNode(o.GetId());
        oNode.GetAttributes(oNames, oNone, false, true);
        oCensus.AddAttributes(oNames.Size());
    }
    pPrint({oIn.sFormat, vok::Zip_WrappingName(oIn.eWrapping), oIn.oTree.GetUserTag().CStr(),
            oIn.uBytes},
           oCensus);
    return EXIT_GOOD;
}

}  // namespace

int Info(const std::string& sFile, bool bJson) {
    const Printer pPrint = bJson ? PrintJson : PrintLines;
    return Answer(
        sFile, [&] { return ByRecords(sFile, pPrint); }, [&] { return ByTree(sFile, pPrint); });
}

}  // namespace tools
