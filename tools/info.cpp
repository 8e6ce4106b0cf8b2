// vok info: what is in a file.
#include <string>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

void PrintHead(const std::string& sFormat, const std::string& sWrapping,
               const std::string& sVersion, std::uint64_t uBytes) {
    Print("format      " + sFormat + (sWrapping.empty() ? "" : " in " + sWrapping) + '\n');
    if (!sVersion.empty()) Print("version     " + Escaped(sVersion) + '\n');
    Print("bytes       " + std::to_string(uBytes) + '\n');
}

int ByRecords(const std::string& sFile) {
    Census oCensus;
    const Survey o = LookThrough(sFile, {}, &oCensus);
    // Whether a link in XML leads anywhere, or else is empty, shows when all nodes are there.
    if (o.bLinks && o.bXml) throw NeedsTree();
    PrintHead(o.bXml ? "xml" : "dgraph", o.sWrapping, o.sVersion, o.uBytes);
    oCensus.Print();
    return EXIT_GOOD;
}

int ByTree(const std::string& sFile) {
    const Input oIn = Load(sFile);
    PrintHead(oIn.sFormat, oIn.sWrapping, oIn.oTree.GetUserTag().CStr(), oIn.uBytes);
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
    oCensus.Print();
    return EXIT_GOOD;
}

}  // namespace

int Info(const std::string& sFile) {
    return Answer(
        sFile, [&] { return ByRecords(sFile); }, [&] { return ByTree(sFile); });
}

}  // namespace tools
