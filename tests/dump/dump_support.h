// SPDX-License-Identifier: MIT
// A tree with something of everything that a dump keeps.
#ifndef TESTS_DUMP_DUMP_SUPPORT_H
#define TESTS_DUMP_DUMP_SUPPORT_H

#include "tests/data/kinds.h"

namespace vok {

// All types, attributes, placeholders, what was moved, texts that are shared.
inline Data Rich() {
    Data oRoot = NewTree();
    oRoot.SetUserTag("a tag");
    oRoot.SetRootName("top");
    for (const Kind& oKind : KINDS) {
        Data oNode = oRoot.CreateNewSucc(Data_Node::TypeName(oKind.eType));
        oKind.pSet(oNode);
    }
    Data oText = oRoot.GetNthSucc("String", 0), oLong = oRoot.GetNthSucc("Long", 0);
    oRoot.CreateNewSucc("");
    Data oShared = oRoot.CreateNewSucc("String"), oTree = oRoot.CreateNewSucc("tree");
    oText.SetValStr("größe");
    Data::CopyVal(oText, oShared);
    oRoot.GetNthSucc("Link", 0).SetValLink(oTree);
    oShared.SetAttVal("a", "one");
    oShared.SetAttVal("b", oText.GetValStr() + 4);
    oLong.SetAttVal("b", "");
    oLong.SetAttVal("a", "gone");
    oLong.SetAttVal("a", nullptr);
    oTree.CreateNewSucc("x").CreateNewSucc("y").SetValStr("deep");
    oRoot.GetNodeFromID(1).MoveTo(oTree.GetNthSucc(0), 0);  // below one of a later id
    oTree.CreateNode("z[2]").Remove();
    oRoot.CreateNode("w/v");
    oRoot.GetNthSucc("w", 0).Remove();
    return oRoot;
}

}  // namespace vok

#endif  // TESTS_DUMP_DUMP_SUPPORT_H
