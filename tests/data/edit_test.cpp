// Editing: what the model test does not reach: errors, cursors, links, memory that runs out.
#include <functional>

#include "tests/support.h"

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
    Data oEmpty;
    const char* const sIsEmpty = "node is empty\n";
    const char* const sDeleted = "try to access deleted node\n";
    const char* const sValue = "node \"b\" with wrong data type: 'String'\n";
    const char* const sTop = "node has no predecessor\n";
    struct Case {
        std::function<void(Sample&)> oBody;
        const char* sMessage;
    };
    const Case CASES[] = {
        {[&](Sample& o) { o.oA.MoveTo(oEmpty); }, sIsEmpty},
        {[&](Sample& o) { oEmpty.MoveTo(o.oA); }, sIsEmpty},
        {[&](Sample& o) { (void)oEmpty.MkCopy(o.oA); }, sIsEmpty},
        {[&](Sample&) { (void)oEmpty.MkClone(); }, sIsEmpty},
        {[&](Sample&) { oEmpty.RemoveSuccs(); }, sIsEmpty},
        {[&](Sample&) { oEmpty.Erase(); }, sIsEmpty},
        {[&](Sample&) { (void)oEmpty.HasCycle(); }, sIsEmpty},
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
        {[&](Sample& o) { o.oB2.MoveTo(o.oB2); }, "cannot link with outer structure\n"},
        {[&](Sample& o) { o.oC.ClearVal(), o.oB2.MoveTo(o.oC); },
         "cannot link with outer structure\n"},
        {[&](Sample& o) { o.oA.Erase(); },
         "node \"a\" with wrong data type: 'Zombi' expected but got 'Empty'\n"},
    };
    for (const Case& oCase : CASES) {
        Sample o;
        EXPECT_EQ(Raised([&] { oCase.oBody(o); }), oCase.sMessage);
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
    Data oEmpty;
    oEmpty.Reset();
    EXPECT_EQ(oEmpty.GetNodes(), 1u);
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
    const std::function<void(Sample&, Data&)> STEPS[] = {
        [](Sample& o, Data&) { o.oRoot.Insert("b", 0); },
        [](Sample& o, Data&) { o.oA.Insert("new name", 0); },
        [](Sample& o, Data&) { o.oC.MoveTo(o.oA); },
        [](Sample& o, Data&) { (void)o.oB2.MkCopy(o.oA, 0); },
        [](Sample& o, Data&) { (void)o.oRoot.MkCopy(o.oB2); },
        [](Sample& o, Data&) { (void)o.oRoot.MkClone(); },
        [](Sample& o, Data& oOther) { o.oB2.MoveTo(oOther); },
        [](Sample& o, Data&) { o.oRoot.RemoveSuccs(); },
        [](Sample& o, Data&) { o.oRoot.Shrink(); },
        [](Sample& o, Data&) { o.oRoot.Reset(); },
    };
    for (const auto& oStep : STEPS) {
        for (unsigned uNth = 1;; ++uNth) {
            Mem_Probe oProbe;
            Sample o;
            o.oRoot.Insert("gone", 0).Remove();
            Data oOther = NewTree();
            const Data oBefore = o.oRoot.MkClone();
            const u2_t uNodes = o.oRoot.GetNodes();
            Mem_Probe::FailIn(uNth);
            const std::string sRaised = Raised([&] { oStep(o, oOther); });
            const bool bRefused = !Mem_Probe::IsArmed();
            Mem_Probe::FailIn(0);
            EXPECT_EQ(sRaised != NOTHING_RAISED, bRefused) << sRaised;
            if (!bRefused) break;
            EXPECT_EQ(o.oRoot.GetNodes(), uNodes);
            EXPECT_TRUE(Data::Equal(oBefore, o.oRoot));
            EXPECT_EQ(oOther.GetNodes(), 1u);
            oStep(o, oOther);  // what failed can be done again
        }
    }
}

// A parent beyond what a predecessor field holds is refused.
TEST(Edit, ParentsHaveALimit) {
    Data oRoot = NewTree();
    Data oChild = oRoot.CreateNewSucc("c");
    const Data_Key oKey = oRoot.MakeKey("n");
    u2_t uId = 0;
    while (uId < Data_Node::CUT_LOOSE - 1) uId = oRoot.AddBool(oKey, true);
    Data oLast = oRoot.GetNodeFromID(uId);
    oLast.ClearVal();
    const std::string sRefused = "assertion failed: uParent + 1 < 0xFFFFFF\n";
    EXPECT_EQ(Raised([&] { oLast.Insert("x", 0); }), sRefused);
    EXPECT_EQ(Raised([&] { oChild.MoveTo(oLast); }), sRefused);
    EXPECT_EQ(Raised([&] { (void)oChild.MkCopy(oLast); }), sRefused);
    oChild.CreateNewSucc("d");
    EXPECT_EQ(Raised([&] { (void)oChild.MkCopy(oRoot); }), sRefused);  // the copy has one
    EXPECT_EQ(oRoot.GetNodes(), uId + 2);
}

TEST(Edit, AMillionLevels) {
    constexpr int LEVELS = 1000000;
    Data oRoot = NewTree();
    Data oNode = oRoot;
    for (int i = 0; i < LEVELS; ++i) oNode.SetToNewSucc("n");
    oNode.SetValLink(oRoot);
    Data oClone = oRoot.MkClone();
    EXPECT_TRUE(Data::Equal(oRoot, oClone));
    EXPECT_TRUE(oClone.HasCycle());
    File_Buf oBuf("w");
    oClone.Dump(oBuf);
    Data oLoaded;
    oBuf.Seek(0);
    oLoaded.Load(oBuf);
    EXPECT_TRUE(Data::Equal(oRoot, oLoaded));
    Data oTop = oLoaded.GetNthSucc(0);
    oTop.MoveTo(oRoot);
    EXPECT_EQ(oRoot.GetNodes(), 2u * LEVELS + 1);
    oRoot.RemoveSuccs();
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 1u);
}

}  // namespace
}  // namespace vok
