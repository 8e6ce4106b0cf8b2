// vok info: what is in a file.
#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <string>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

// Nodes as they are, removed ones left out.
struct Census {
    std::array<std::size_t, 16> auType{};
    std::set<vok::u2_t> oKeys;
    std::size_t uNodes = 0;
    std::size_t uDepth = 0;
    std::size_t uAttributes = 0;

    explicit Census(const vok::Data& oTree) {
        vok::Arr<const char*> oNames;
        vok::Arr<const char*> oNone;
        vok::Data oNode = oTree;
        for (vok::Data_Walk o(oTree); o.Next();) {
            ++uNodes;
            ++auType[o.GetType()];
            oKeys.insert(o.GetKey().uKey);
            uDepth = std::max(uDepth, o.GetDepth() + 1);
            oNode.SetToNode(o.GetId());
            oNode.GetAttributes(oNames, oNone, false, true);
            uAttributes += oNames.Size();
        }
    }
};

template <class... Args>
void PrintF(const char* sFormat, Args... oArgs) {
    char s[512];
    const int iSize = std::snprintf(s, sizeof(s), sFormat, oArgs...);
    Print({s, std::min(static_cast<std::size_t>(iSize), sizeof(s) - 1)});
}

}  // namespace

int Info(const std::string& sFile) {
    const Input oIn = Load(sFile);
    const Census oCensus(oIn.oTree);
    PrintF("format      %s%s%s\n", oIn.sFormat.c_str(), oIn.sWrapping.empty() ? "" : " in ",
           oIn.sWrapping.c_str());
    const vok::Str oTag = oIn.oTree.GetUserTag();
    if (!oTag.IsEmpty()) PrintF("version     %s\n", Escaped(oTag.View()).c_str());
    PrintF("bytes       %llu\n", static_cast<unsigned long long>(oIn.uBytes));
    PrintF("nodes       %zu\n", oCensus.uNodes);
    PrintF("names       %zu\n", oCensus.oKeys.size());
    PrintF("depth       %zu\n", oCensus.uDepth);
    PrintF("attributes  %zu\n", oCensus.uAttributes);
    PrintF("text bytes  %zu\n", oIn.oTree.TextBytes());
    PrintF("heap bytes  %zu\n", oIn.oTree.HeapBytes());
    Print("types\n");
    for (vok::u2_t u = 0; u < oCensus.auType.size(); ++u) {
        if (oCensus.auType[u] == 0) continue;
        PrintF("  %-9s %zu\n", vok::Data_Node::TypeName(u), oCensus.auType[u]);
    }
    return EXIT_GOOD;
}

}  // namespace tools
