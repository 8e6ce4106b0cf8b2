// SPDX-License-Identifier: MIT
// vok show --json: a tree for other programs.
#include <rapidjson/prettywriter.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

bool IsDeep(const vok::Data_NodeSet& oFound) {
    constexpr std::size_t DEEP = 100;
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        for (vok::Data_Walk o(oFound.GetNth(u)); o.Next();) {
            if (o.GetDepth() > DEEP) return true;
        }
    }
    return false;
}

}  // namespace

int ShowJson(const ShowOptions& o) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    JsonPrinter oStream;
    rapidjson::PrettyWriter<JsonPrinter> oOut(oStream);
    // Lines of a deep tree would be longer than all that is in them.
    oOut.SetIndent(' ', IsDeep(oFound) ? 0 : 1);
    oOut.StartArray();
    for (std::size_t u = 0; u < oFound.Size(); ++u) WriteTree(oOut, oFound.GetNth(u), o.uDepth);
    oOut.EndArray();
    oStream.Put('\n');
    oStream.Flush();
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools
