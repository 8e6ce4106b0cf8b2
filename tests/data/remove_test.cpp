// Removal and compaction beyond what the model test reaches.
#include <functional>

#include "tests/support.h"
#include "vok/dgraph/access.h"

namespace vok {
namespace {

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
    oRoot.Shrink();
    oRoot.ClearVal();
    oRoot.SetValInt(1);
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 1u);
    EXPECT_EQ(oRoot.GetValInt(), 1);
}

}  // namespace
}  // namespace vok
