// Cursors outlived by their node, and cursors on removed nodes: every operation answers or
// raises, none of them touches what is not there.
#include "tests/data/data_support.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"

namespace vok {
namespace {

struct Operation {
    const char* sName;
    void (*pCall)(Data&);
};

Data_XpathStep StepNamed(const char* sName) {
    Data_XpathStep oStep;
    oStep.m_sName = sName;
    return oStep;
}

const Operation OPERATIONS[] = {
    {"GetNode", [](Data& o) { (void)o.GetNode().GetType(); }},
    {"GetType", [](Data& o) { (void)o.GetType(); }},
    {"GetRoot", [](Data& o) { (void)o.GetRoot().GetType(); }},
    {"SetToPred", [](Data& o) { o.SetToPred(); }},
    {"GetPred", [](Data& o) { (void)o.GetPred(); }},
    {"NodeDepth", [](Data& o) { (void)o.NodeDepth(); }},
    {"GetName", [](Data& o) { (void)o.GetName(); }},
    {"SetRootName", [](Data& o) { o.SetRootName("r"); }},
    {"FindKey", [](Data& o) { (void)o.FindKey("a"); }},
    {"MakeKey", [](Data& o) { o.MakeKey("a"); }},
    {"UserTag", [](Data& o) { o.SetUserTag(o.GetUserTag().CStr()); }},
    {"SetAccessMode", [](Data& o) { o.SetAccessMode(); }},
    {"GetSuccIt", [](Data& o) { (void)o.GetSuccIt(); }},
    {"GetSuccIt(name)", [](Data& o) { (void)o.GetSuccIt("a"); }},
    {"GetSuccIt(key)", [](Data& o) { (void)o.GetSuccIt(Data_Key{1}); }},
    {"GetNthSucc", [](Data& o) { (void)o.GetNthSucc(0); }},
    {"GetNthSucc(name)", [](Data& o) { (void)o.GetNthSucc("a", 0); }},
    {"GetNthSucc(key)", [](Data& o) { (void)o.GetNthSucc(Data_Key{1}, 0); }},
    {"GetCheckedSucc", [](Data& o) { (void)o.GetCheckedSucc("a"); }},
    {"SetToNewSucc", [](Data& o) { o.SetToNewSucc("a"); }},
    {"SetToNewSucc(key)", [](Data& o) { o.SetToNewSucc(Data_Key{1}); }},
    {"CreateNewSucc", [](Data& o) { o.CreateNewSucc("a"); }},
    {"CreateNewSucc(key)", [](Data& o) { o.CreateNewSucc(Data_Key{1}); }},
    {"CreateSucc", [](Data& o) { o.CreateSucc("a"); }},
    {"CreateSucc(step)", [](Data& o) { o.CreateSucc(StepNamed("a")); }},
    {"CreateNode", [](Data& o) { o.CreateNode("a"); }},
    {"CreateNode(.)", [](Data& o) { o.CreateNode("."); }},
    {"CreateNode(..)", [](Data& o) { o.CreateNode(".."); }},
    {"SetValInt", [](Data& o) { o.SetValInt(1); }},
    {"SetValBool", [](Data& o) { o.SetValBool(true); }},
    {"SetValDbl", [](Data& o) { o.SetValDbl(1); }},
    {"SetValLng", [](Data& o) { o.SetValLng(1); }},
    {"SetValStr", [](Data& o) { o.SetValStr("x"); }},
    {"SetValBin", [](Data& o) { o.SetValBin("x", 1); }},
    {"SetValQuad", [](Data& o) { o.SetValQuad(1, 2, 3, 4); }},
    {"SetValLink", [](Data& o) { o.SetValLink(o); }},
    {"SetValLink(to)", [](Data& o) { o.GetRoot().CreateNewSucc("l").SetValLink(o); }},
    {"ClearVal", [](Data& o) { o.ClearVal(); }},
    {"GetValInt", [](Data& o) { (void)o.GetValInt(); }},
    {"GetValBool", [](Data& o) { (void)o.GetValBool(); }},
    {"GetValDbl", [](Data& o) { (void)o.GetValDbl(); }},
    {"GetValLng", [](Data& o) { (void)o.GetValLng(); }},
    {"GetValStr", [](Data& o) { (void)o.GetValStr(); }},
    {"GetValText", [](Data& o) { (void)o.GetValText(); }},
    {"GetValBin",
     [](Data& o) {
         u2_t u;
         (void)o.GetValBin(u);
     }},
    {"GetValQuad",
     [](Data& o) {
         u2_t u;
         o.GetValQuad(u, u, u, u);
     }},
    {"GetValLink", [](Data& o) { (void)o.GetValLink(); }},
    {"GetStr", [](Data& o) { (void)o.GetStr("x"); }},
    {"CvtStr",
     [](Data& o) {
         Str oText;
         o.CvtStr(oText);
     }},
    {"CvtInt", [](Data& o) { (void)o.CvtInt(); }},
    {"CvtDbl", [](Data& o) { (void)o.CvtDbl(); }},
    {"CopyVal(from)",
     [](Data& o) {
         Data oDst;
         Data::CopyVal(o, oDst);
     }},
    {"CopyVal(to)",
     [](Data& o) {
         Data oSrc = NewTree();
         Data::CopyVal(oSrc, o);
     }},
    {"SetAttVal", [](Data& o) { o.SetAttVal("x", "y"); }},
    {"SetAttVal(null)", [](Data& o) { o.SetAttVal("x", nullptr); }},
    {"GetAttVal", [](Data& o) { (void)o.GetAttVal("x"); }},
    {"GetAttributes",
     [](Data& o) {
         Arr<const char*> a, b;
         o.GetAttributes(a, b, true);
     }},
    {"RemoveAttributes", [](Data& o) { o.RemoveAttributes(); }},
    {"CopyAtt(from)",
     [](Data& o) {
         Data oDst = NewTree();
         o.CopyAtt(oDst);
     }},
    {"CopyAtt(to)", [](Data& o) { NewTree().CopyAtt(o); }},
    {"GetNodeSet", [](Data& o) { (void)o.GetNodeSet(".//a"); }},
    {"GetNodeSet(..)", [](Data& o) { (void)o.GetNodeSet(".."); }},
    {"GetNodeSet(/)", [](Data& o) { (void)o.GetNodeSet("/a"); }},
    {"Test", [](Data& o) { EXPECT_FALSE(o.Test(StepNamed("a"))); }},
    {"GetPath", [](Data& o) { (void)o.GetPath(); }},
    {"Remove", [](Data& o) { o.Remove(); }},
    {"Shrink", [](Data& o) { o.Shrink(); }},
    {"HeapBytes", [](Data& o) { (void)o.HeapBytes(); }},
    {"Data_Walk",
     [](Data& o) {
         for (Data_Walk oWalk(o); oWalk.Next();) (void)oWalk.GetName();
     }},
    {"Data_NodeIt",
     [](Data& o) {
         Data_NodeIt oIt;
         oIt.Add(o);
         EXPECT_FALSE(oIt.SkipZombies());
         (void)oIt.GetData();
     }},
    {"Data_NodeSet",
     [](Data& o) {
         Data_NodeSet oSet;
         oSet.Add(o);
         (void)oSet.GetNth(0);
     }},
};

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
    EXPECT_EQ(oRoot.GetNodeSet("b/a").Size(), 1u);
    EXPECT_STREQ(oRoot.GetNodeSet("b/a").GetNth(0).GetAttVal("x"), "1");
    u2_t uWalked = 0;
    for (Data_Walk oWalk(oRoot); oWalk.Next();) ++uWalked;
    EXPECT_EQ(uWalked, oRoot.GetNodeSet("//*").Size() + 1);
}

TEST(Stale, AfterShrink) {
    for (const Operation& oOperation : OPERATIONS) {
        SCOPED_TRACE(oOperation.sName);
        Data oStale = RemovedNode(5);
        Data oRoot = oStale.GetRoot();
        oRoot.Shrink();
        ASSERT_EQ(oRoot.GetNodes(), 3u);
        const std::string sError = Raised([&] { oOperation.pCall(oStale); });
        const bool bKnown = sError == "try to access deleted node\n" ||
                            sError == "node has no predecessor\n" || sError == "(nothing raised)";
        EXPECT_TRUE(bKnown) << sError;
        ExpectSound(oRoot);
    }
}

TEST(Stale, OnRemovedNodes) {
    for (const Operation& oOperation : OPERATIONS) {
        for (const u2_t uId : {3u, 4u, 5u}) {
            SCOPED_TRACE(oOperation.sName + std::to_string(uId));
            Data oGone = RemovedNode(uId);
            Data oRoot = oGone.GetRoot();
            ASSERT_EQ(oGone.GetType(), Data_Node::Zombi);
            (void)Raised([&] { oOperation.pCall(oGone); });
            ExpectSound(oRoot);
            oRoot.Shrink();
            ExpectSound(oRoot);
        }
    }
}

}  // namespace
}  // namespace vok
