// SPDX-License-Identifier: MIT
// Cursors without a tree, outlived by their node, or on removed nodes: every operation answers or
// raises, none of them touches what is not there.
#include <algorithm>
#include <functional>

#include "tests/data/kinds.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"

namespace vok {
namespace {

constexpr const char* EMPTY = "node is empty";
constexpr const char* NOTHING = "object points to nothing";

struct Operation {
    std::string sName;
    std::function<void(Data&)> oCall;
    const char* sOfEmpty = "";  // what a cursor without a tree answers
};

Data_XpathStep StepNamed(const char* sName) {
    Data_XpathStep oStep;
    oStep.m_sName = sName;
    return oStep;
}

// What the operations work with besides the cursor; made anew for each of them.
struct Scratch {
    Data oOther = NewTree();
    Data oEmpty;
    Data_NodeIt oList;
    Data_NodeSet oSet;
    Str oText;
    Arr<const char*> oNames;
    Arr<const char*> oValues;
    u2_t u = 0;
};
Scratch g;

std::vector<Operation> Operations() {
    std::vector<Operation> oAll = {
        {"GetNode", [](Data& o) { (void)(o.IsNode() && o.GetNode().GetType() != 0); }},
        {"GetType", [](Data& o) { (void)o.GetType(); }, NOTHING},
        {"GetRoot", [](Data& o) { (void)o.GetRoot().GetType(); }, NOTHING},
        {"SetToPred", [](Data& o) { o.SetToPred(); }, EMPTY},
        {"GetPred", [](Data& o) { (void)o.GetPred(); }},
        {"NodeDepth", [](Data& o) { (void)o.NodeDepth(); }, EMPTY},
        {"GetName", [](Data& o) { (void)o.GetName(); }, EMPTY},
        {"SetRootName", [](Data& o) { o.SetRootName("r"); }, EMPTY},
        {"FindKey", [](Data& o) { (void)o.FindKey("a"); }, EMPTY},
        {"MakeKey", [](Data& o) { o.MakeKey("a"); }, EMPTY},
        {"UserTag", [](Data& o) { o.SetUserTag(o.GetUserTag().CStr()); }, EMPTY},
        {"SetAccessMode", [](Data& o) { o.SetAccessMode(); }, EMPTY},
        {"GetSuccIt", [](Data& o) { (void)o.GetSuccIt(); }},
        {"GetSuccIt(name)", [](Data& o) { (void)o.GetSuccIt("a"); }},
        {"GetSuccIt(key)", [](Data& o) { (void)o.GetSuccIt(Data_Key{1}); }},
        {"GetNthSucc", [](Data& o) { (void)o.GetNthSucc(0); }},
        {"GetNthSucc(name)", [](Data& o) { (void)o.GetNthSucc("a", 0); }},
        {"GetNthSucc(key)", [](Data& o) { (void)o.GetNthSucc(Data_Key{1}, 0); }},
        {"GetCheckedSucc", [](Data& o) { (void)o.GetCheckedSucc("a"); },
         "node has no successor named \"a\""},
        {"SetToNewSucc", [](Data& o) { o.SetToNewSucc("a"); }, EMPTY},
        {"SetToNewSucc(key)", [](Data& o) { o.SetToNewSucc(Data_Key{1}); }, EMPTY},
        {"CreateNewSucc", [](Data& o) { o.CreateNewSucc("a"); }},
        {"CreateNewSucc(key)", [](Data& o) { o.CreateNewSucc(Data_Key{1}); },
         "assertion failed: b.m_oName.ValidHndl(uHndl)"},
        {"CreateSucc", [](Data& o) { o.CreateSucc("a"); }},
        {"CreateSucc(step)", [](Data& o) { o.CreateSucc(StepNamed("a")); }},
        {"CreateNode", [](Data& o) { o.CreateNode("a"); }},
        {"CreateNode(.)", [](Data& o) { o.CreateNode("."); }},
        {"CreateNode(..)", [](Data& o) { o.CreateNode(".."); }, "node has no predecessor"},
        {"AddInt", [](Data& o) { o.AddInt("a", 1); }},
        {"AddStr", [](Data& o) { o.AddStr("a", "x"); }},
        {"SetValLink(to)", [](Data& o) { o.GetRoot().CreateNewSucc("l").SetValLink(o); }},
        {"ClearVal", [](Data& o) { o.ClearVal(); }},
        {"GetValText", [](Data& o) { (void)o.GetValText(); }, NOTHING},
        {"GetStr", [](Data& o) { (void)o.GetStr("x"); }},
        {"CvtStr", [](Data& o) { o.CvtStr(g.oText); }},
        {"CvtInt", [](Data& o) { (void)o.CvtInt(); }},
        {"CvtDbl", [](Data& o) { (void)o.CvtDbl(); }},
        {"CopyVal(from)", [](Data& o) { Data::CopyVal(o, g.oEmpty); }},
        {"CopyVal(to)", [](Data& o) { Data::CopyVal(g.oOther, o); }},
        {"SetAttVal", [](Data& o) { o.SetAttVal("x", "y"); }, EMPTY},
        {"SetAttVal(null)", [](Data& o) { o.SetAttVal("x", nullptr); }, EMPTY},
        {"GetAttVal", [](Data& o) { (void)o.GetAttVal("x"); }, EMPTY},
        {"GetAttributes", [](Data& o) { o.GetAttributes(g.oNames, g.oValues, true); }, EMPTY},
        {"RemoveAttributes", [](Data& o) { o.RemoveAttributes(); }, EMPTY},
        {"CopyAtt(from)", [](Data& o) { o.CopyAtt(g.oOther); }},
        {"CopyAtt(to)", [](Data& o) { g.oOther.CopyAtt(o); }},
        {"GetNodeSet", [](Data& o) { (void)o.GetNodeSet(".//a"); }, EMPTY},
        {"GetNodeSet(..)", [](Data& o) { (void)o.GetNodeSet(".."); }, EMPTY},
        {"GetNodeSet(/)", [](Data& o) { (void)o.GetNodeSet("/a"); }, EMPTY},
        {"Test", [](Data& o) { EXPECT_FALSE(o.Test(StepNamed("a"))); }},
        {"GetPath", [](Data& o) { (void)o.GetPath(); }, EMPTY},
        {"Insert", [](Data& o) { o.Insert("a", 0); }},
        {"MoveTo", [](Data& o) { o.MoveTo(g.oOther); }, EMPTY},
        {"MoveTo(to)", [](Data& o) { g.oOther.CreateNewSucc("a").MoveTo(o); }, EMPTY},
        {"MkCopy", [](Data& o) { (void)o.MkCopy(g.oOther); }, EMPTY},
        {"MkCopy(to)", [](Data& o) { (void)g.oOther.MkCopy(o); }, EMPTY},
        {"MkClone", [](Data& o) { (void)o.MkClone(); }, EMPTY},
        {"HasCycle", [](Data& o) { (void)o.HasCycle(); }, EMPTY},
        {"Erase", [](Data& o) { o.Erase(); }, EMPTY},
        {"RemoveSuccs", [](Data& o) { o.RemoveSuccs(); }, EMPTY},
        {"Remove", [](Data& o) { o.Remove(); }, EMPTY},
        {"Shrink", [](Data& o) { o.Shrink(); }, EMPTY},
        {"HeapBytes", [](Data& o) { (void)o.HeapBytes(); }},
        {"Data_Walk",
         [](Data& o) {
             for (Data_Walk oWalk(o); oWalk.Next();) (void)oWalk.GetName();
         },
         EMPTY},
        {"Data_NodeIt",
         [](Data& o) {
             g.oList.Add(o);
             EXPECT_FALSE(g.oList.SkipZombies());
         }},
        {"Data_NodeSet", [](Data& o) { g.oSet.Add(o); }},
    };
    for (const Kind& oKind : KINDS) {
        const std::string sName = Data_Node::TypeName(oKind.eType);
        oAll.push_back({"set " + sName, oKind.pSet, oKind.eType == Data_Node::Link ? NOTHING : ""});
        oAll.push_back({"get " + sName, oKind.pGet, NOTHING});
    }
    return oAll;
}

// A tree of a root, b and b/a with an attribute; n, n/a and n/a/a are removed.
Data RemovedNode(u2_t uId) {
    Data oRoot = NewTree();
    oRoot.CreateNode("b/a").SetAttVal("x", "1");
    oRoot.CreateNode("n/a/a").SetAttVal("x", "1");
    oRoot.GetCheckedSucc("n").GetNthSucc(0).SetAttVal("x", "2");
    oRoot.GetCheckedSucc("n").Remove();
    return oRoot.GetNodeFromID(uId);
}

void ExpectSound(const Data& oRoot) {
    EXPECT_EQ(Fault(oRoot), "");
    EXPECT_EQ(oRoot.GetNodeSet("b/a").Size(), 1u);
    EXPECT_STREQ(oRoot.GetNodeSet("b/a").GetNth(0).GetAttVal("x"), "1");
    u2_t uWalked = 0;
    for (Data_Walk oWalk(oRoot); oWalk.Next();) ++uWalked;
    EXPECT_EQ(uWalked, oRoot.GetNodeSet("//*").Size() + 1);
}

TEST(Stale, WithoutATree) {
    for (const Operation& oOperation : Operations()) {
        g = Scratch();
        Data oEmpty;
        EXPECT_EQ(Failing([&] { oOperation.oCall(oEmpty); }), oOperation.sOfEmpty)
            << oOperation.sName;
    }
}

void OnRemovedNode(const Operation& oOperation, u2_t uId, bool bShrunk) {
    SCOPED_TRACE(oOperation.sName + std::to_string(uId));
    g = Scratch();
    Data oGone = RemovedNode(uId);
    Data oRoot = oGone.GetRoot();
    if (bShrunk) oRoot.Shrink();
    ASSERT_EQ(oRoot.GetNodes(), bShrunk ? 3u : 6u);
    ASSERT_EQ(oGone.GetType(), Data_Node::Zombi);
    const std::string sError = Failing([&] { oOperation.oCall(oGone); });
    const Texts oKnown = {"", "try to access deleted node", "node has no predecessor"};
    if (bShrunk) {
        EXPECT_NE(std::ranges::find(oKnown, sError), oKnown.end()) << sError;
    }
    ExpectSound(oRoot);
    oRoot.Shrink();
    ExpectSound(oRoot);
}

TEST(Stale, OnRemovedNodes) {
    for (const Operation& oOperation : Operations()) {
        for (const u2_t uId : {3u, 4u, 5u}) {
            for (const bool bShrunk : {false, true}) OnRemovedNode(oOperation, uId, bShrunk);
        }
    }
}

}  // namespace
}  // namespace vok
