// Editing: what the model test does not reach: errors, cursors, links, memory that runs out.
#include <functional>

#include "tests/support.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

struct Sample {
    Sample() {
        oB.SetValStr("text of b");
        oC = oB2.CreateNewSucc("c");
        oC.SetValInt(1);
        oC.SetAttVal("k", "v");
    }
    Data oRoot = NewTree();
    Data oA = oRoot.CreateNewSucc("a");
    Data oB = oRoot.CreateNewSucc("b");
    Data oB2 = oRoot.CreateNewSucc("b");
    Data oC;
};

TEST(Edit, Refuses) {
    Data oGone = NewTree().CreateNewSucc("g");
    oGone.Remove();
    const char* const sDeleted = "try to access deleted node";
    const char* const sValue = "node \"b\" with wrong data type: 'String'";
    const char* const sTop = "node has no predecessor";
    const char* const sOuter = "cannot link with outer structure";
    const std::pair<std::function<void(Sample&)>, const char*> CASES[] = {
        {[&](Sample& o) { o.oA.MoveTo(oGone); }, sDeleted},
        {[&](Sample& o) { oGone.MoveTo(o.oA); }, sDeleted},
        {[&](Sample& o) { (void)oGone.MkCopy(o.oA); }, sDeleted},
        {[&](Sample&) { (void)oGone.MkClone(); }, sDeleted},
        {[&](Sample&) { oGone.RemoveSuccs(); }, sDeleted},
        {[&](Sample&) { oGone.Insert("x", 0); }, sDeleted},
        {[&](Sample& o) { o.oA.MoveTo(o.oB); }, sValue},
        {[&](Sample& o) { o.oB.Insert("x", 0); }, sValue},
        {[&](Sample& o) { (void)o.oA.MkCopy(o.oB); }, sValue},
        {[&](Sample& o) { o.oRoot.MoveTo(o.oA); }, sTop},
        {[&](Sample& o) { o.oRoot.MoveTo(NewTree()); }, sTop},
        {[&](Sample& o) { o.oB2.MoveTo(o.oB2); }, sOuter},
        {[&](Sample& o) { o.oC.ClearVal(), o.oB2.MoveTo(o.oC); }, sOuter},
        {[&](Sample& o) { o.oA.Erase(); },
         "node \"a\" with wrong data type: 'Zombi' expected but got 'Empty'"},
    };
    for (const auto& [oBody, sMessage] : CASES) {
        Sample o;
        EXPECT_EQ(Failing([&o, &f = oBody] { f(o); }), sMessage);
        EXPECT_EQ(IdsOf(o.oRoot.GetNodeSet("//*")), (Ids{1, 2, 3, 4}));
        EXPECT_STREQ(o.oC.GetPath().CStr(), "/b[1]/c[0]");
    }
    EXPECT_EQ(Trail([&] { oGone.MoveTo(NewTree()); }), "vok::Data::MoveTo\n");
}

TEST(Edit, ResetIsSeenByAllCursors) {
    Sample o;
    const Data_Key oKey = o.oRoot.FindKey("b");
    o.oRoot.SetUserTag("tag");
    o.oC.Reset();
    EXPECT_EQ(o.oC, o.oRoot);
    EXPECT_EQ(o.oRoot.GetType(), Data_Node::Empty);
    EXPECT_TRUE(o.oRoot.GetUserTag().IsEmpty());
    EXPECT_EQ(Raised([&] { (void)o.oA.GetName(); }), "try to access deleted node\n");
    EXPECT_STREQ(o.oRoot.CreateNewSucc(oKey).GetName(), "b");
    EXPECT_EQ(o.oRoot.GetNthSucc(0).GetAttVal("k"), nullptr);
    o.oA = Data();
    o.oA.Reset();
    EXPECT_EQ(o.oA.GetNodes(), 1u);
}

TEST(Edit, HasCycle) {
    // What the link in c, below the second b, leads to.
    const std::pair<std::function<Data(Sample&)>, bool> CASES[] = {
        {[](Sample&) { return Data(); }, false},
        {[](Sample& o) { return o.oA; }, false},
        {[](Sample& o) { return o.oB; }, false},
        {[](Sample& o) { return o.oC; }, true},
        {[](Sample& o) { return o.oB2; }, true},
        {[](Sample& o) { return o.oRoot; }, true},
        {[](Sample& o) { return o.oA.Remove(), o.oA; }, false},
    };
    for (const auto& [oTarget, bCycle] : CASES) {
        Sample o;
        o.oC.SetValLink(oTarget(o));
        EXPECT_EQ(o.oRoot.HasCycle(), bCycle);
        EXPECT_FALSE(o.oB.HasCycle());  // nothing leads there
    }
}

// A step that runs out of memory changes nothing that can be seen.
TEST(Edit, MemoryRunsOut) {
    const auto oNeedsNone = [](Sample& o, Data&) { o.oB.MoveTo(o.oRoot, 1); };
    const std::function<void(Sample&, Data&)> STEPS[] = {
        [](Sample& o, Data&) { o.oRoot.Insert("b", 0); },
        [](Sample& o, Data&) { o.oA.Insert("new name", 0); },
        [](Sample& o, Data&) { o.oC.MoveTo(o.oA); },
        [](Sample& o, Data&) { (void)o.oB2.MkCopy(o.oA, 0); },
        [](Sample& o, Data&) { (void)o.oRoot.MkCopy(o.oB2); },
        [](Sample& o, Data&) { (void)o.oRoot.MkClone(); },
        [](Sample& o, Data& oOther) { o.oB2.MoveTo(oOther); },
        [](Sample& o, Data&) { o.oB2.Remove(); },
        [](Sample& o, Data&) { o.oRoot.RemoveSuccs(); },
        [](Sample& o, Data&) { o.oRoot.Shrink(); },
    };
    // There is no room for another node, or for another group.
    const auto oFillNodes = [](Sample& o) {
        while (o.oRoot.GetNodes() % 32 != 0) o.oRoot.CreateNewSucc("filler");
    };
    const auto oFillGroups = [](Sample& o) {
        const Arr<u2_t>& oWords = dgraph::Access::BaseOf(o.oRoot)->m_oGroup.Words();
        for (Data oNode = o.oA; oWords.Capacity() - oWords.Size() > 4;) {
            oNode = oNode.Insert("filler", 0);
        }
    };
    for (const auto& oStep : STEPS) {
        unsigned uRefused = 0;
        for (unsigned uNth = 1, uFull = 0; uFull < 2;) {
            const Mem_Probe oProbe;
            Sample o;
            o.oRoot.Insert("gone", 0).Remove();
            o.oB2.CreateNewSucc("text").SetValStr(std::string(300, 'x'));
            uFull == 0 ? oFillNodes(o) : oFillGroups(o);
            Data oOther = NewTree();
            const Data oBefore = o.oRoot.MkClone();
            const u2_t uNodes = o.oRoot.GetNodes();
            if (!Mem_Probe::HasRefused(uNth++, [&] { oStep(o, oOther); })) {
                uNth = 1;
                ++uFull;
                continue;
            }
            ++uRefused;
            EXPECT_EQ(o.oRoot.GetNodes(), uNodes);
            EXPECT_TRUE(Data::Equal(oBefore, o.oRoot));
            EXPECT_EQ(Fault(o.oRoot) + Fault(oOther), "");
            EXPECT_EQ(oOther.GetNodes(), 1u);
            // Attributes of what was taken back are not there for the next node of its id.
            Data oNew = o.oRoot.CreateNewSucc("zzz");
            for (const char* s : {"k", "l"}) oNew.SetAttVal(s, "new");
            EXPECT_EQ(AttributesOf(oNew, true), (Texts{"k=new", "l=new"}));
            oNew.Remove(), oNew.Erase();
            oStep(o, oOther);  // what failed can be done again
        }
        EXPECT_GT(uRefused, 0u) << "step " << &oStep - STEPS;
    }
    const Mem_Probe oProbe;
    Sample o;
    EXPECT_FALSE(Mem_Probe::HasRefused(1, [&] { oNeedsNone(o, o.oRoot); }));
    EXPECT_FALSE(Mem_Probe::HasRefused(1, [&] { o.oRoot.Reset(); }));
}

// Parents have 24 bits in a record: one that does not fit must never become another one.
TEST(Edit, ParentsHaveALimit) {
    Data oRoot = NewTree();
    Data oChild = oRoot.CreateNewSucc("c");
    const Data_Key oKey = oRoot.MakeKey("n");
    u2_t uId = 0;
    while (uId < Data_Node::CUT_LOOSE) uId = oRoot.AddBool(oKey, true);
    const u2_t uNodes = oRoot.GetNodes();
    for (const u2_t u : {uId - 1, uId}) {
        Data oLast = oRoot.GetNodeFromID(u);
        oLast.ClearVal();
        const std::function<void()> STEPS[] = {
            [&] { oLast.CreateNewSucc("x"); },
            [&] { oLast.Insert("x", 0); },
            [&] { oChild.MoveTo(oLast); },
            [&] { (void)oChild.MkCopy(oLast); },
        };
        for (const auto& oStep : STEPS) {
            EXPECT_EQ(Raised(oStep), "assertion failed: uParent + 1 < 0xFFFFFF\n");
        }
    }
    Data oGood = oRoot.GetNodeFromID(Data_Node::CUT_LOOSE - 2);
    oGood.ClearVal();
    EXPECT_EQ(oGood.CreateNewSucc("x").GetPred(), oGood);
    oChild.CreateNewSucc("d");
    EXPECT_EQ(Raised([&] { (void)oChild.MkCopy(oRoot); }),  // the copy has a successor
              "assertion failed: uParent + 1 < 0xFFFFFF\n");
    EXPECT_EQ(oRoot.GetNodes(), uNodes + 2);
}

// Nothing recurses: one node below the other a million times.
TEST(Edit, AMillionLevels) {
    constexpr int LEVELS = 1000000;
    Data oRoot = NewTree();
    Data oNode = oRoot;
    for (int i = 0; i < LEVELS; ++i) oNode.SetToNewSucc("n");
    oNode.SetAttVal("x", "bottom");
    EXPECT_EQ(oNode.NodeDepth(), LEVELS);
    EXPECT_EQ(oNode.GetPath().Len(), std::size_t{LEVELS} * 5);
    EXPECT_EQ(oRoot.GetNodeSet("//n[@x=\"bottom\"]").GetNth(0), oNode);
    EXPECT_EQ(oRoot.GetNodeSet("n//n/..//n").Size(), std::size_t{LEVELS - 1});
    oNode.SetValLink(oRoot.GetNthSucc(0));
    const Data oClone = oRoot.MkClone();
    EXPECT_TRUE(Data::Equal(oRoot, oClone));
    EXPECT_TRUE(oClone.HasCycle());
    for (const int iMajor : {1, 2}) {
        Dgraph_SetVersion(oRoot, iMajor, 3, 0);
        File_Buf oBuf("w");
        Dgraph_SaveDGraph(oRoot, oBuf);
        oBuf.Seek(0);
        Data oLoaded;
        Dgraph_LoadDGraph(oLoaded, oBuf);
        EXPECT_TRUE(Data::Equal(oRoot, oLoaded));
    }
    oClone.GetNthSucc(0).MoveTo(oRoot);
    EXPECT_EQ(oRoot.GetNodes(), 2u * LEVELS + 1);
    oRoot.GetNthSucc(0).GetNthSucc(0).Remove();
    EXPECT_EQ(oNode.GetType(), Data_Node::Zombi);
    EXPECT_EQ(oNode.NodeDepth(), 1);
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), LEVELS + 2u);
    oRoot.RemoveSuccs();
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 1u);
}

}  // namespace
}  // namespace vok
