// SPDX-License-Identifier: MIT
// Editing, removal and compaction: what the model test does not reach: errors, cursors, links,
// memory that runs out, what is given back.
#include <functional>

#include "tests/support.h"
#include "vok/data/builder.h"
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
        {[&](Sample&) { oGone.Rename("x"); }, sDeleted},
        {[&](Sample&) { oGone.Delete(); }, sDeleted},
        {[&](Sample& o) { o.oRoot.Delete(); }, sTop},
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
    EXPECT_EQ(Raised([&] { (void)o.oA.GetName(); }), DELETED);
    EXPECT_STREQ(o.oRoot.CreateNewSucc(oKey).GetName(), "b");
    EXPECT_EQ(o.oRoot.GetNthSucc(0).GetAttVal("k"), nullptr);
    o.oA = Data();
    o.oA.Reset();
    EXPECT_EQ(o.oA.GetNodes(), 1u);
}

TEST(Edit, HasCycle) {
    // By the id of the node that the link in c, below the second b, leads to; the last is no node.
    constexpr bool CYCLES[] = {true, false, false, true, true, false};
    for (u2_t uId = 0; uId < std::size(CYCLES); ++uId) {
        Sample o;
        o.oC.SetValLink(o.oRoot.GetNodeFromID(uId));
        EXPECT_EQ(o.oRoot.HasCycle(), CYCLES[uId]) << uId;
        EXPECT_FALSE(o.oB.HasCycle());  // nothing leads there
    }
    Sample o;
    o.oA.Remove();
    o.oC.SetValLink(o.oA);
    EXPECT_FALSE(o.oRoot.HasCycle());
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
        [](Sample& o, Data&) { o.oB2.Delete(); },
        [](Sample& o, Data&) { o.oC.Rename("another"); },
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

#ifndef _WIN32
constexpr u2_t BOUND = Data_Node::CUT_LOOSE - 1;  // the first id that takes no successors
const char* const TOO_HIGH = "assertion failed: uParent + 1 < 0xFFFFFFF";

// Makes a tree one of so many nodes, which hang nowhere: records that nobody has written cost no
// memory.
Data_Base& Widen(const Data& oTree, u2_t uNodes) {
    Data_Base& b = *dgraph::Access::BaseOf(oTree);
    b.UpdateSucc();
    b.m_oNode.Reserve(std::size_t{BOUND} + 4096);
    b.m_oNode.SetSize(uNodes);
    b.m_uIndexed = uNodes;
    return b;
}

// Parents have 28 bits in a record: one that does not fit must never become another one.
TEST(Edit, ParentsHaveALimit) {
    Data oRoot = NewTree();
    Data oChild = oRoot.CreateNewSucc("c");
    const Data_Base& b = Widen(oRoot, BOUND + 2);
    for (const u2_t uId : {BOUND, BOUND + 1}) {
        Data oHigh = oRoot.GetNodeFromID(uId);
        const std::function<void()> STEPS[] = {
            [&] { oHigh.CreateNewSucc("x"); },   [&] { oHigh.AddInt("x", 1); },
            [&] { oHigh.Insert("x", 0); },       [&] { oChild.MoveTo(oHigh); },
            [&] { (void)oChild.MkCopy(oHigh); }, [&] { const Data_Builder oBuilder(oHigh); },
            [&] { oHigh.AddStr("x", "text"); },  [&] { oHigh.AddBin("x", "block", 5); },
            [&] { oHigh.CreateNode("x/y"); },    [&] { Data_Builder(oRoot).Open("x"); },
        };
        for (const auto& oStep : STEPS) {
            EXPECT_EQ(Failing(oStep), TOO_HIGH);
            EXPECT_EQ(oHigh.GetType(), Data_Node::Empty);
            EXPECT_EQ(b.m_oHeap.Size(), 0u);
            EXPECT_EQ(oRoot.GetNodes(), BOUND + 2);
            EXPECT_EQ(oRoot.GetNthSucc(0), oChild);
        }
    }
    EXPECT_EQ(oRoot.AddInt("leaf", 7), BOUND + 2);  // which any id will do for
    EXPECT_EQ(oRoot.GetNthSucc("leaf", 0).GetPred(), oRoot);
    // Far behind where 24 bits end, and the last one.
    for (const u2_t uId : {u2_t{1} << 24, BOUND - 1}) {
        Data oHigh = oRoot.GetNodeFromID(uId), oNew = oHigh.CreateNewSucc("x");
        EXPECT_EQ(oNew.GetPred(), oHigh);
        EXPECT_EQ(oHigh.GetNthSucc("x", 0), oNew);
        EXPECT_EQ(oChild.MkCopy(oHigh).GetPred(), oHigh);
        Data oMoved = oHigh.Insert("a", 0);
        oMoved.MoveTo(oRoot);
        EXPECT_EQ(oMoved.GetPred(), oRoot);
        oNew.Remove();
        EXPECT_EQ(oNew.GetNode().uFlags, (uId + 1) << 4 | Data_Node::Zombi);
    }
    EXPECT_EQ(b.m_oNode.Size(), BOUND + 9);
}

// Whatever of a copy has successors must fit as well; texts are not copied before that is known.
TEST(Edit, ParentsInCopiesHaveALimit) {
    for (const bool bOtherTree : {false, true}) {
        Data oRoot = NewTree(), oOther = bOtherTree ? NewTree() : oRoot;
        Data oTop = oOther.CreateNewSucc("top");
        oTop.AddStr("a", "text");
        oTop.CreateNewSucc("b").CreateNewSucc("c");
        const Data_Base& b = Widen(oRoot, BOUND - 2);
        const std::size_t uHeap = b.m_oHeap.Size();
        EXPECT_EQ(Failing([&] { (void)oTop.MkCopy(oRoot); }), TOO_HIGH);
        EXPECT_EQ(oRoot.GetNodes(), BOUND - 2);
        EXPECT_EQ(b.m_oHeap.Size(), uHeap);
        Widen(oRoot, BOUND - 3);
        EXPECT_TRUE(Data::Equal(oTop.MkCopy(oRoot), oTop));
    }
}
#endif

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

TEST(Remove, CutsLooseWhatIsBelow) {
    Data oRoot = NewTree();
    Data oTop = oRoot.CreateNewSucc("n");
    const Data oDown = oTop.CreateNewSucc("down");
    Data oDeep = Data(oDown).CreateNewSucc("deep");
    oRoot.CreateNewSucc("n");
    oTop.Remove();
    for (const Data& oNode : {oTop, oDown, oDeep}) EXPECT_EQ(oNode.GetType(), Data_Node::Zombi);
    EXPECT_EQ(oTop.GetPred(), oRoot);  // its own place is kept
    EXPECT_EQ(oDown.GetNode().PredField(), Data_Node::CUT_LOOSE);
    EXPECT_FALSE(oDeep.GetPred().IsNode());
    EXPECT_EQ(oTop.GetSuccIt().Size(), 0u);
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt()), (Ids{4}));
    EXPECT_EQ(oRoot.GetNthSucc("n", 1).GetId(), 4u);
    EXPECT_EQ(Raised([&] { oTop.Remove(); }), DELETED);
    EXPECT_EQ(Raised([&] { oTop.CreateNewSucc("x"); }), DELETED);
    EXPECT_EQ(Raised([&] { oRoot.Remove(); }), "node has no predecessor\n");
    // Brought back to life it starts anew.
    oTop.ClearVal();
    EXPECT_EQ(oTop.GetType(), Data_Node::Empty);
    oTop.CreateNewSucc("new");
    EXPECT_EQ(IdsOf(oRoot.GetNodeSet("//new")), (Ids{5}));
    oDeep.Shrink();
    EXPECT_EQ(oDeep, oRoot);  // where a cursor ends whose node is gone
    EXPECT_EQ(oRoot.GetNodes(), 4u);
    EXPECT_EQ(IdsOf(oRoot.GetNodeSet("n/new")), (Ids{3}));
}

// Nodes may share a long text; apart from each other the copies would not fit into memory.
TEST(Shrink, KeepsSharedTextsShared) {
    Data oRoot = NewTree();
    Data oFirst = oRoot.CreateNewSucc("n");
    oFirst.SetValStr(std::string(1 << 20, 'x').c_str());
    for (int i = 0; i < 3000; ++i) {
        Data oNode = oRoot.CreateNewSucc("n");
        Data::CopyVal(oFirst, oNode);
        oNode.SetAttVal("tail", oNode.GetValStr() + (1 << 20) - 5);
    }
    oFirst.Remove();
    oRoot.Shrink();
    EXPECT_LT(oRoot.TextBytes(), std::size_t{1} << 22);
    const Data oLast = oRoot.GetNthSucc("n", 2999);
    EXPECT_EQ(oLast.GetValText().size(), std::size_t{1} << 20);
    EXPECT_STREQ(oLast.GetAttVal("tail"), "xxxxx");
    EXPECT_EQ(oLast.GetAttVal("tail") + 5, oLast.GetValStr() + (1 << 20));
}

TEST(Shrink, DropsWasteWhenItIsWorthIt) {
    Data oRoot = NewTree();
    oRoot.SetValStr("kept");
    oRoot.Shrink();
    EXPECT_STREQ(oRoot.GetValStr(), "kept");
    const std::string sText(1000, 'x');
    for (int i = 0; i < 500; ++i) oRoot.SetAttVal("a", (sText + std::to_string(i)).c_str());
    const std::size_t uBefore = oRoot.TextBytes();
    oRoot.Shrink();
    EXPECT_LT(oRoot.TextBytes(), uBefore / 10);
    EXPECT_EQ(oRoot.GetAttVal("a"), sText + "499");
    EXPECT_STREQ(oRoot.GetValStr(), "kept");
    const char* pBefore = oRoot.GetValStr();
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetValStr(), pBefore);  // nothing to do, nothing moved

    // Everything that leaves something behind counts, once a quarter of the heap is waste.
    const std::string sLong(70'000, 'x');
    const auto SetLong = [&](Data& o) { o.SetValStr(sLong.c_str()); };
    const std::function<void(Data&)> WASTES[] = {
        [&](Data& o) { SetLong(o), o.SetValStr(""); },
        [&](Data& o) { SetLong(o), o.ClearVal(); },
        [&](Data& o) { o.SetValBin(sLong.data(), 70'000), o.SetValInt(1); },
        [&](Data& o) {
            for (u2_t u = 0; u < 7000; ++u) o.SetValQuad(u, u, u, u);
        },
        [&](Data& o) { o.SetAttVal("a", sLong.c_str()), o.SetAttVal("a", nullptr); },
        [&](Data& o) { o.SetAttVal("a", sLong.c_str()), o.SetAttVal("a", ""); },
        [&](Data& o) { o.SetValStr((std::string(70'000, ' ')).c_str()), o.CreateNewSucc("below"); },
    };
    for (const auto& oWaste : WASTES) {
        for (const std::size_t uKept : {0u, 300'000u}) {
            Data oTree = NewTree();
            oTree.SetAttVal("kept", std::string(uKept, 'k').c_str());
            Data oNode = oTree.CreateNewSucc("n");
            oWaste(oNode);
            const std::size_t uHeap = dgraph::Access::BaseOf(oTree)->m_oHeap.Size();
            oTree.Shrink();
            const bool bShrunk = dgraph::Access::BaseOf(oTree)->m_oHeap.Size() < uHeap;
            EXPECT_EQ(bShrunk, uKept == 0);
        }
    }
    // So do attributes without a value, whose records stay.
    Data oTree = NewTree();
    for (int i = 0; i < 6000; ++i) oTree.CreateNewSucc("n").SetAttVal("a", "");
    for (u2_t u = 1; u <= 6000; ++u) oTree.GetNodeFromID(u).SetAttVal("a", nullptr);
    const std::size_t uHeld = oTree.HeapBytes();
    oTree.Shrink();
    EXPECT_LT(oTree.HeapBytes(), uHeld);
}

// Names that nobody bears any more go as well, once they are the greater part of many.
TEST(Shrink, DropsNames) {
    Data oRoot = NewTree();
    Data oKept = oRoot.CreateNewSucc("kept");
    oKept.SetAttVal("kept", "1");
    const auto oFill = [&] {
        for (int i = 0; i < 3000; ++i) {
            Data o = oRoot.CreateNewSucc("name" + std::to_string(i));
            if (i > 0) o.SetAttVal(("attribute" + std::to_string(i)).c_str(), "1");
        }
        for (auto oIt = oRoot.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) {
            Data o = oIt.GetData();
            if (*o.GetName() == 'n') o.Remove();
        }
    };
    oFill();
    const std::size_t uBefore = oRoot.HeapBytes();
    oRoot.Shrink();
    EXPECT_FALSE(oRoot.FindKey("name7").IsKnown());
    EXPECT_TRUE(oRoot.FindKey("kept").IsKnown());
    oFill();  // the names of attributes go when those of nodes stay
    for (int i = 0; i < 3000; ++i) oRoot.CreateNewSucc("name" + std::to_string(i));
    oRoot.Shrink();
    EXPECT_TRUE(oRoot.FindKey("name7").IsKnown());
    oRoot.RemoveSuccs();
    Data oNew = oRoot.CreateNewSucc("kept");
    for (const char* s : {"kept", "attribute7", "x"}) oNew.SetAttVal(s, "2");
    oRoot.Shrink();
    oRoot.Shrink();
    EXPECT_LT(oRoot.HeapBytes(), uBefore / 10);
    EXPECT_EQ(AttributesOf(oRoot.GetNthSucc("kept", 0), true),
              (Texts{"attribute7=2", "kept=2", "x=2"}));
    // A tree that was emptied, and no memory for what is to take their place.
    oFill();
    oRoot.Reset();
    for (unsigned uNth = 1; Mem_Probe().HasRefused(uNth, [&] { oRoot.Shrink(); }); ++uNth) {
        ASSERT_TRUE(oRoot.FindKey("name7").IsKnown());
        ASSERT_EQ(Fault(oRoot), "");
    }
    EXPECT_FALSE(oRoot.FindKey("name7").IsKnown());
    for (int i = 0; i < 100; ++i) oRoot.CreateNewSucc("n" + std::to_string(i));
    EXPECT_STREQ(oRoot.GetCheckedSucc("n77").GetName(), "n77");
}

// What a tree says it holds is what was asked for, in all of its parts.
TEST(Shrink, HeapBytesAreThoseInUse) {
    for (const int iNodes : {1, 30, 3000}) {
        const u3_t uBytes = Mem::BytesInUse() + Mem::HEADER_SIZE * Mem::BlocksInUse();
        Data oRoot = NewTree();
        oRoot.SetUserTag("a tag");
        for (int i = iNodes; i-- > 0;) {
            Data o = oRoot.CreateNewSucc("n" + std::to_string(i));
            o.SetAttVal(("a" + std::to_string(i % 50)).c_str(), "value");
            o.CreateNewSucc("text").SetValStr("some text");
        }
        (void)oRoot.GetSuccCount("n7");
        const u3_t uHeld = Mem::BytesInUse() + Mem::HEADER_SIZE * Mem::BlocksInUse() - uBytes;
        EXPECT_EQ(oRoot.HeapBytes(), uHeld) << iNodes;
    }
}

// A text that many nodes share is garbage when the last of them has let go.
TEST(Shrink, SharedTextsAreNoGarbage) {
    const auto oHeap = [](const Data& o) -> const Data_Heap& {
        return dgraph::Access::BaseOf(o)->m_oHeap;
    };
    Data oRoot = NewTree();
    Data oText = oRoot.CreateNewSucc("t");
    oText.SetValStr(std::string(200'000, 'x'));
    for (int i = 0; i < 50; ++i) {
        Data oCopy = oRoot.CreateNewSucc("c");
        Data::CopyVal(oText, oCopy);
    }
    (void)oText.MkCopy(oRoot);
    oText.SetAttVal("k", oText.GetValStr());
    for (Data_SuccIt o = oRoot.GetSuccIt(); o.SkipZombies(); o.Advance()) {
        EXPECT_EQ(oHeap(oRoot).Unused(), 0u);
        o.GetData().SetValInt(1);
    }
    EXPECT_EQ(oHeap(oRoot).Unused(), 0u);
    oText.SetAttVal("k", nullptr);
    EXPECT_EQ(oHeap(oRoot).Unused(), 200'001u);
    oRoot.Shrink();
    EXPECT_LT(oHeap(oRoot).Size(), 10u);
}

// A copied value can make the root itself a removed node: it stays, and can be revived.
TEST(Shrink, KeepsARemovedRoot) {
    Data oGone = NewTree().CreateNewSucc("n");
    oGone.Remove();
    Data oRoot = NewTree();
    Data::CopyVal(oGone, oRoot);
    EXPECT_EQ(oRoot.GetType(), Data_Node::Zombi);
    EXPECT_EQ(Fault(oRoot), "");
    // What could not be loaded again is not written.
    File_Buf oBuf("w");
    EXPECT_EQ(Failing([&] { oRoot.Dump(oBuf); }), "try to access deleted node");
    EXPECT_EQ(Failing([&] { Dgraph_SaveDGraph(oRoot, oBuf); }), "No DGraph!");
    EXPECT_EQ(oBuf.Size(), 0u);
    oRoot.Shrink();
    oRoot.ClearVal();
    oRoot.SetValInt(1);
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 1u);
    EXPECT_EQ(oRoot.GetValInt(), 1);
}

}  // namespace
}  // namespace vok
