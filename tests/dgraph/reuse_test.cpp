// Documents that are loaded into trees which had others before, and those that leave the fast way
// of the reader again and again.
#include "tests/dgraph/dgraph_support.h"

namespace vok {
namespace {

Data LoadInto(Data o, std::string_view sBytes) {
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Dgraph_LoadDGraph(o, oBuf);
    return o;
}

// A tree with names, attributes and values of many kinds, in no order.
std::string RandomDocument(unsigned uSeed) {
    static const Texts NAMES = {"a",  "b.c",           "\xC3\xA4",      "a b",
                                "id", "a longer name", "longest of all"};
    std::mt19937 oRandom(uSeed);
    Data oTree = Versioned();
    Grow(oTree, oRandom, uSeed, NAMES);
    // Runs with more than one digit, gaps in them, and texts for which the reader takes its time.
    for (unsigned u = 0; u < uSeed * 5; ++u) {
        const std::string& sName = NAMES[Below(oRandom, NAMES.size()) % (1 + uSeed % 7)];
        switch (Below(oRandom, 8)) {
            case 0: oTree.AddStr(sName, "\xC3\xA4\xC3\xB6"); break;
            case 1: oTree.AddStr(sName, ""); break;
            case 2: oTree.AddBin(sName, "\0\1", 2); break;
            case 3: oTree.AddLng(sName, oRandom()); break;
            case 4: oTree.CreateNewSucc(sName).SetAttVal("k", sName.c_str()); break;
            case 5: oTree.CreateNewSucc(sName).AddStr("text", "text of a name seen once"); break;
            case 6: oTree.CreateNewSucc(sName).Remove(); break;
            default: oTree.AddInt(sName, static_cast<i2_t>(oRandom()));
        }
    }
    return Save(oTree);
}

TEST(DgraphReader, LeavesItsFastWayAndComesBack) {
    for (unsigned uSeed = 0; uSeed < 60; ++uSeed) {
        const std::string sDocument = RandomDocument(uSeed);
        Data oFirst;
        FromBoth(sDocument, [&](File_Stream& oIn) {
            Data oTree;
            Dgraph_LoadDGraph(oTree, oIn);
            ASSERT_EQ(Fault(oTree), "");
            if (!oFirst.IsNode()) oFirst = oTree;
            ASSERT_EQ(DumpOf(oTree), DumpOf(oFirst)) << uSeed;
        });
    }
    // An empty node in the middle of a run, and names that are not what their documents say.
    EXPECT_EQ(
        Load(Document(3, Leaf("a[0]", 1, I32(1)) + Open("a[1]", 0) + Leaf("a[2]", 1, I32(2)))),
        "Root(a:1 a a:2)");
    EXPECT_EQ(Load(Document(3, Leaf("a\b46;b[0]", 1, I32(1)) + Leaf("a\b46;b[1]", 1, I32(2)) +
                                   Leaf("a\b92;b[0]", 1, I32(3)))),
              "Root(a.b:1 a.b:2 a\\b:3)");
    EXPECT_EQ(Load(Document(2, Leaf("a\b46;b[0]", 1, I32(1)) + Leaf("a.b[1]", 1, I32(2)))),
              "Root(a.b:1 a.b:2)");
}

// Whatever a tree was before, it is what the document makes of a new one, down to its dump.
TEST(DgraphReader, ATreeUsedAgainIsAsNew) {
    Texts sDocuments = {AllTypes(), Document(0, ""), Save(Versioned())};
    for (const unsigned uSeed : {3u, 20u, 59u}) sDocuments.push_back(RandomDocument(uSeed));
    Data oUsed;
    for (const std::string& sBefore : sDocuments) {
        for (const std::string& sDocument : sDocuments) {
            oUsed = LoadInto(LoadInto(std::move(oUsed), sBefore), sDocument);
            const Data oNew = LoadTree(sDocument);
            ASSERT_EQ(Fault(oUsed), "");
            ASSERT_EQ(DumpOf(oUsed), DumpOf(oNew));
            ASSERT_TRUE(Data::Equal(oUsed, oNew));
            // It goes on like any other.
            oUsed.CreateNewSucc("later").SetAttVal("k", "v");
            ASSERT_EQ(Show(LoadTree(Save(oUsed))), Show(oUsed));
        }
    }
    // Who else looks at the tree keeps it.
    const Data oOther = oUsed;
    const std::string sShown = Show(oOther);
    oUsed = LoadInto(std::move(oUsed), AllTypes());
    EXPECT_EQ(Show(oOther), sShown);
    EXPECT_EQ(Show(oUsed), Load(AllTypes()));
}

// A message needs one block for its tree, none for the tree that the last one had, and one for its
// document.
TEST(DgraphReader, AMessageNeedsOneBlock) {
    const auto oBuild = [] {
        Data oTree = Versioned();
        for (int i = 0; i < 20; ++i) {
            oTree.AddStr("name" + std::to_string(20 - i), std::string(10, 'x'));
        }
        Data oSub = oTree.CreateNewSucc("sub");
        for (int i = 0; i < 4; ++i) oSub.AddInt("n", i);
        return oTree;
    };
    const u3_t uBlocks = Mem::BlocksInUse();
    const Mem_Probe oProbe;
    Data oTree = oBuild();
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTree, oBuf);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 2);
    EXPECT_LT(oTree.HeapBytes(), oTree.GetNodes() * 120);
    const std::string_view sDocument(oBuf.Data(), oBuf.Size());
    Data oRead = LoadInto(Data(), sDocument);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 3);
    const std::size_t uAsked = Mem_Probe::Asked();
    oRead = LoadInto(std::move(oRead), sDocument);
    EXPECT_EQ(Mem_Probe::Asked(), uAsked);
    EXPECT_TRUE(Data::Equal(oRead, oTree));
}

TEST(DgraphReader, ASmallDocumentGivesTheMemoryOfALargeOneBack) {
    Data oLarge = Versioned();
    for (int i = 0; i < 20000; ++i) {
        oLarge.AddStr("name" + std::to_string(i), std::string(30, 'x'));
        oLarge.GetNodeFromID(1).SetAttVal(("k" + std::to_string(i % 2000)).c_str(), "v");
    }
    Data oTree = LoadInto(Data(), Save(oLarge));
    const std::size_t uLarge = oTree.HeapBytes();
    oTree = LoadInto(std::move(oTree), AllTypes());
    EXPECT_LT(oTree.HeapBytes(), uLarge / 10);
    EXPECT_FALSE(oTree.FindKey("name7").IsKnown());
    // Neither a failure nor a Reset in between changes what comes next.
    EXPECT_NE(Failing([&] { LoadInto(oTree, Document(1, Leaf("a", 1, I32(1)))); }), "");
    oTree.Reset();
    oTree.AddInt("n", 1);
    EXPECT_EQ(Fault(oTree), "");
    EXPECT_EQ(Show(LoadInto(std::move(oTree), AllTypes())), Load(AllTypes()));
}

}  // namespace
}  // namespace vok
