// SPDX-License-Identifier: MIT
// Values of nodes: every type against every getter, conversions, copies, texts that stand in the
// tree, links.
#include <functional>

#include "tests/data/kinds.h"
#include "vok/data/builder.h"
#include "vok/data/walk.h"
#include "vok/dgraph/access.h"

namespace vok {
namespace {

TEST(Values, EveryTypeAgainstEveryGetter) {
    const std::string sWrong = "node \"n\" with wrong data type: '";
    for (const Kind& oKind : KINDS) {
        const std::string sGot = Data_Node::TypeName(oKind.eType);
        // Whatever stood there before.
        for (const Kind& oBefore : KINDS) {
            Data oNode = NewTree().CreateNewSucc("n");
            oBefore.pSet(oNode);
            oKind.pSet(oNode);
            EXPECT_EQ(oNode.GetType(), oKind.eType);
            EXPECT_TRUE(oKind.pGet(oNode)) << oKind.eType << " after " << oBefore.eType;
            if (oBefore.eType == oKind.eType) continue;
            EXPECT_EQ(Raised([&] { oBefore.pGet(oNode); }),
                      sWrong + Data_Node::TypeName(oBefore.eType) + "' expected but got '" + sGot +
                          "'\n");
        }
        Data oTree = NewTree().CreateNewSucc("n"), oLoose = oTree.CreateNewSucc("below");
        EXPECT_EQ(Raised([&] { oKind.pSet(oTree); }), WrongType("Tree"));
        EXPECT_EQ(Raised([&] { oTree.ClearVal(); }), WrongType("Tree"));
        EXPECT_EQ(IdsOf(oTree.GetSuccIt()), (Ids{2}));
        // Removed: nothing but ClearVal brings a node back, and that in its place only.
        oTree.Remove();
        for (Data* p : {&oTree, &oLoose}) EXPECT_EQ(Raised([&] { oKind.pSet(*p); }), DELETED);
        EXPECT_EQ(Raised([&] { oTree.SetAttVal("a", "v"); }), DELETED);
        EXPECT_EQ(Raised([&] { oLoose.ClearVal(); }), DELETED);
        oTree.ClearVal();
        oKind.pSet(oTree);
        EXPECT_TRUE(oKind.pGet(oTree));
        Data oNone;
        if (oKind.eType == Data_Node::Link) continue;
        oKind.pSet(oNone);  // makes a tree
        EXPECT_EQ(oNone.GetNodes(), 1u);
        EXPECT_TRUE(oKind.pGet(oNone));
    }
}

TEST(Values, Refusals) {
    Data oNode;
    const std::string sInt = "assertion failed: eType >= Node::Boolean && eType <= Node::Char";
    const std::string sDbl = "assertion failed: eType >= Node::Float && eType <= Node::Date";
    Data oText = NewTree();
    oText.SetValStr("the heap");
    EXPECT_EQ(Failing([&] { oNode.SetValInt(1, Data_Node::Double); }), sInt);
    EXPECT_EQ(Failing([&] { oNode.SetValDbl(1, Data_Node::Integer); }), sDbl);
    EXPECT_EQ(Failing([&] { (void)oText.GetValInt(Data_Node::String); }), sInt);
    EXPECT_EQ(Failing([&] { (void)oText.GetValDbl(Data_Node::String); }), sDbl);
    EXPECT_EQ(Failing([&] { oNode.SetValBin(nullptr, 1); }), "object points to nothing");
    EXPECT_NE(Failing([&] { oNode.AddInt("n", 1, Data_Node::Tree); }), "");
    for (const auto eType : {Data_Node::Integer, Data_Node::String}) {
        EXPECT_NE(Failing([&] { oNode.AddDbl("n", 1, eType); }), "");
    }
    EXPECT_EQ(Failing([&] { oNode.AddBin("n", nullptr, 1); }), "object points to nothing");
    EXPECT_FALSE(oNode.IsNode());
    oNode.SetValBin(nullptr, 0);
    EXPECT_EQ(BlockOf(oNode), "");
    EXPECT_NE(Failing([&] { oNode.AddStr(oNode.FindKey("unknown"), ""); }), "");
    EXPECT_EQ(oNode.GetNodes(), 1u);
    Data oRoot = NewTree();
    EXPECT_EQ(oRoot.GetNodeFromID(oRoot.AddStr("n", nullptr)).GetValText(), "");
}

TEST(Values, Texts) {
    const std::pair<std::string_view, const char*> ROWS[] = {
        // clang-format off
        {"", ""}, {"plain", "plain"}, {"Grüße 😀", "Grüße 😀"}, {{"cut\0off", 7}, "cut"}, {{}, ""},
        {"\xE4\xC3\xA4", "ää"}, {"\xF0\x9F\x98", "ð\u009F\u0098"},  // Latin-1 beside UTF-8
        // clang-format on
    };
    Data oRoot = NewTree();
    for (const auto& [sText, sStored] : ROWS) {
        const Data oAdded = oRoot.GetNodeFromID(oRoot.AddStr("n", sText));
        Data oSet = oRoot.CreateNewSucc("n");
        oSet.SetValStr(sText);
        for (const Data& o : {oAdded, oSet}) {
            EXPECT_STREQ(o.GetValStr(), sStored);
            EXPECT_EQ(o.GetValText(), sStored);
            EXPECT_STREQ(o.GetStr("the default"), sStored);
            EXPECT_EQ(o.GetNode().uWord2 == 0, *sStored == 0);  // one empty text for all
        }
    }
}

TEST(Values, TextsThatStandInTheTreeItself) {
    Data oNode = NewTree();
    oNode.SetValStr("0123456789");
    // Doubling makes the heap move again and again under the text that is appended.
    for (int i = 0; i < 14; ++i) {
        const std::string sBefore(oNode.GetValText());
        oNode.SetValStr(oNode.GetValText().substr(1));
        ASSERT_EQ(oNode.GetValText(), sBefore.substr(1)) << i;
        oNode.SetValStr(sBefore + sBefore);
    }
    u2_t uSize = 0;
    oNode.SetValBin(oNode.GetValStr(), 1000);
    const std::string sBlock = BlockOf(oNode);
    for (int i = 0; i < 200; ++i) oNode.SetValBin(oNode.GetValBin(uSize), 1000);
    EXPECT_EQ(BlockOf(oNode), sBlock);
}

TEST(Values, Links) {
    Data oRoot = NewTree();
    Data oLink = oRoot.CreateNewSucc("n");
    Data oTarget = oRoot.CreateNewSucc("target");
    oLink.SetValLink(oTarget);
    EXPECT_EQ(Raised([&] { oLink.SetValLink(NewTree()); }), "\"Root\" with wrong data type\n");
    EXPECT_EQ(oLink.GetValLink(), oTarget);
    oLink.SetValLink(Data());
    EXPECT_FALSE(oLink.GetValLink().IsNode());
    oLink.SetValLink(oLink);
    EXPECT_EQ(oLink.GetValLink(), oLink);
    // A cursor on a node that is gone must not become a link to whoever gets its id next.
    oRoot.CreateNewSucc("x").Remove();
    const Data oStale = oRoot.GetNodeFromID(3);
    oRoot.Shrink();
    EXPECT_EQ(Raised([&] { oLink.SetValLink(oStale); }), DELETED);
    EXPECT_EQ(oLink.GetValLink(), oLink);
}

constexpr double NONE = 7.5;  // the default of CvtDbl below; -7 and "dflt" of the others

struct Row {
    void (*pSet)(Data&);
    const char* sText;
    i3_t iInt;
    double dDbl;
};

TEST(Convert, EveryType) {
    const Row oRows[] = {
        {[](Data& o) { o.SetValBool(true); }, "1", 1, 1},
        {[](Data& o) { o.SetValInt(-2147483647 - 1); }, "-2147483648", -2147483648LL, -2147483648.},
        {[](Data& o) { o.SetValInt(255, Data_Node::Char); }, "255", 255, 255},
        {[](Data& o) { o.SetValDbl(0.1); }, "0.1", 0, 0.1},
        {[](Data& o) { o.SetValDbl(0.1F, Data_Node::Float); }, "0.1000000014901161", 0, 0.1F},
        {[](Data& o) { o.SetValDbl(-0.25, Data_Node::Date); }, "1969-12-31 23:59:59", 0, -0.25},
        {[](Data& o) { o.SetValDbl(951782399.9, Data_Node::Date); }, "2000-02-28 23:59:59", 0,
         951782399.9},
        {[](Data& o) { o.SetValStr(""); }, "", 0, 0},
        {[](Data& o) { o.SetValStr(" \t-42.9e3x"); }, " \t-42.9e3x", -42, -42},
        {[](Data& o) { o.SetValStr("-99999999999999999999"); }, "-99999999999999999999",
         -2147483648LL, -2147483648.},
        {[](Data& o) { o.SetValLng(~u3_t{0}); }, "18446744073709551615", -1, -1},
        {[](Data& o) { o.SetValLng(u3_t{1} << 40); }, "1099511627776", i3_t{1} << 40,
         1099511627776.},
        {[](Data& o) { o.SetValQuad(0xABCDEF01, 2, 3, 0xFFFFFFFF); },
         "0xABCDEF010000000200000003FFFFFFFF", 0x2ABCDEF01, 2882400001.},
        {[](Data& o) { o.SetValQuad(1, 0x80000000, 0, 0); }, "0x00000001800000000000000000000000",
         std::numeric_limits<i3_t>::min() + 1, 1},
    };
    for (const Row& oRow : oRows) {
        Data oNode = NewTree();
        oRow.pSet(oNode);
        SCOPED_TRACE(oRow.sText);
        Str oText("rubbish");
        oNode.CvtStr(oText, "dflt");
        EXPECT_STREQ(oText.CStr(), oRow.sText);
        EXPECT_EQ(oNode.CvtInt(-7), oRow.iInt);
        EXPECT_EQ(oNode.CvtDbl(NONE), oRow.dDbl);
    }
    // What the text replaces may be the default.
    Str oSelf("dflt");
    NewTree().CvtStr(oSelf, oSelf.CStr() + 1);
    EXPECT_STREQ(oSelf.CStr(), "flt");
    for (const auto& [sText, iNumber] :
         {std::pair{" -12x", -12}, {"4294967296", 2147483647}, {"x", 0}}) {
        EXPECT_EQ(Data::StrToInt(sText), iNumber);
    }
    EXPECT_EQ(Data::StrToInt(nullptr), 0);
    // Without a tree as without a value.
    for (const Data& o : {Data(), NewTree()}) {
        Str oText("rubbish");
        o.CvtStr(oText);
        EXPECT_EQ(oText.Data(), nullptr);
        o.CvtStr(oText, "dflt");
        EXPECT_STREQ(oText.CStr(), "dflt");
        EXPECT_EQ(o.CvtInt(-7), -7);
        EXPECT_EQ(o.CvtDbl(NONE), NONE);
    }
}

TEST(Convert, TypesWithoutText) {
    const std::pair<const char*, void (*)(Data&)> ROWS[] = {
        {"Binary", [](Data& o) { o.SetValBin("x", 1); }},
        {"Link", [](Data& o) { o.SetValLink(o); }},
        {"Tree", [](Data& o) { o.CreateNewSucc("x"); }},
        {"Zombi", [](Data& o) { o.Remove(); }},
    };
    for (const auto& [sType, pSet] : ROWS) {
        Data oNode = NewTree().CreateNewSucc("n");
        pSet(oNode);
        Str oText;
        EXPECT_EQ(Raised([&] { oNode.CvtStr(oText, "x"); }), WrongType(sType));
        EXPECT_EQ(Raised([&] { (void)oNode.CvtInt(); }), WrongType(sType));
        EXPECT_EQ(Raised([&] { (void)oNode.CvtDbl(); }), WrongType(sType));
    }
}

TEST(CopyVal, WithinATreeAndBetweenTrees) {
    for (const Kind& oKind : KINDS) {
        Data oRoot = NewTree(), oOther;
        Data oSrc = oRoot.CreateNewSucc("src"), oSame = oRoot.CreateNewSucc("same");
        oKind.pSet(oSrc);
        oSame.SetValStr("old");
        for (Data* pDst : {&oSame, &oSrc, &oOther}) {
            Data::CopyVal(oSrc, *pDst);
            EXPECT_EQ(pDst->GetType(), oKind.eType);
            // A link leads to nothing in another tree.
            const bool bLost = oKind.eType == Data_Node::Link && pDst == &oOther;
            EXPECT_EQ(oKind.pGet(*pDst), !bLost) << oKind.eType;
        }
        EXPECT_EQ(oOther.GetNodes(), 1u);
        oRoot.GetNodeFromID(1).Remove();
        for (const auto eType : {Data_Node::Zombi, Data_Node::Empty}) {
            for (Data* pDst : {&oSame, &oOther}) {
                Data::CopyVal(oSrc, *pDst);
                EXPECT_EQ(pDst->GetType(), eType);
                if (eType == Data_Node::Empty) continue;
                EXPECT_EQ(Raised([&] { Data::CopyVal(oRoot, *pDst); }), DELETED);
                pDst->ClearVal();
            }
            oSrc.ClearVal();
        }
    }
}

TEST(CopyVal, Refusals) {
    Data oRoot = NewTree();
    Data oValue = oRoot.CreateNewSucc("value");
    oValue.SetValInt(5);
    EXPECT_EQ(Raised([&] { Data::CopyVal(oValue, oRoot); }), "\"Root\" with wrong data type\n");
    EXPECT_EQ(Raised([&] { Data::CopyVal(Data(), oRoot); }), "\"Root\" with wrong data type\n");
    EXPECT_EQ(Raised([&] { Data::CopyVal(oRoot, oValue); }),
              "node \"Root\" with wrong data type: 'Tree'\n");
    Data::CopyVal(Data(), oValue);
    EXPECT_EQ(oValue.GetValInt(), 5);
}

TEST(Values, AsAWalkGivesThem) {
    Data oRoot = NewTree();
    for (const Kind& oKind : KINDS) {
        Data oNode = oRoot.CreateNewSucc("n");
        oKind.pSet(oNode);
    }
    Texts oSeen;
    for (Data_Walk o(oRoot); o.Next();) {
        EXPECT_STREQ(o.GetName(), o.GetData().GetName());
        if (o.GetType() == Data_Node::String) oSeen.emplace_back(o.Text());
        if (o.GetType() == Data_Node::Binary) oSeen.emplace_back(o.Block());
        if (o.GetType() == Data_Node::Quad) oSeen.push_back(std::to_string(o.QuadWord(3)));
    }
    EXPECT_EQ(oSeen, (Texts{"text", {"\0\xFF\0", 3}, "4294967295"}));
    // What is below a node can be left out.
    for (Data o : {oRoot.GetNodeFromID(oRoot.AddInt("m", 1)), oRoot.CreateNewSucc("tree")}) {
        if (o.GetType() == Data_Node::Empty) o.CreateNewSucc("below").CreateNewSucc("further");
    }
    // Behind leaves, of which nothing is left out.
    oRoot.CreateNewSucc("nz").CreateNewSucc("below");
    oRoot.CreateNewSucc("z");
    std::string sNames;
    Data_Walk o(oRoot);
    o.SkipSuccessors();  // of no node yet
    while (o.Next()) {
        sNames += o.GetName()[0];
        if (std::string_view(o.GetName()) == "tree" || o.GetType() == Data_Node::Integer)
            o.SkipSuccessors();
        EXPECT_TRUE(o.GetType() != Data_Node::Link || o.LinkId() == 0);
        EXPECT_TRUE(o.GetType() != Data_Node::Long || o.Lng() == ~u3_t{0});
    }
    EXPECT_EQ(sNames, "Rmnnnnnnnnnnnnbtz");
}

// Levels that a walk holds itself, and those that it needs memory for; it keeps its tree alive.
TEST(Values, AWalkGoesDownAndUpAgain) {
    const u3_t uBlocks = Mem::BlocksInUse();
    for (const std::size_t uLevels : {1u, 15u, 16u, 17u, 32u, 33u, 1000u}) {
        Data oTree;
        {
            Data_Builder oBuilder(oTree);
            for (std::size_t u = 0; u < uLevels; ++u) {
                oBuilder.AddInt("a", 1);
                oBuilder.Open("b");
            }
            for (std::size_t u = 0; u < uLevels; ++u) {
                oBuilder.Close();
                oBuilder.AddInt("c", 2);
            }
        }
        Data_Walk o(oTree);
        oTree.Clear();
        ASSERT_TRUE(o.Next());
        for (std::size_t u = 1; u <= uLevels; ++u) {
            for (const char* sName : {"a", "b"}) {
                ASSERT_TRUE(o.Next());
                ASSERT_STREQ(o.GetName(), sName);
                ASSERT_EQ(o.GetDepth(), u);
            }
        }
        for (std::size_t u = uLevels; u > 0; --u) {
            ASSERT_TRUE(o.Next());
            ASSERT_STREQ(o.GetData().GetName(), "c");
            ASSERT_EQ(o.GetDepth(), u);
        }
        ASSERT_FALSE(o.Next());
        ASSERT_FALSE(o.Next());
    }
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

// Few successors and many, removed ones among them, names that are not there.
TEST(Values, AViewFindsWhatCursorsFind) {
    for (const int iNames : {1, 3, 30}) {
        Data oRoot = NewTree();
        for (int i = 0; i < 60; ++i) oRoot.AddInt("n" + std::to_string(i * 7 % iNames), i);
        oRoot.GetNthSucc(20).Remove();
        const Data_View oView(oRoot);
        ASSERT_EQ(oView.GetSuccs(), 60u);
        EXPECT_EQ(oView.GetSucc(20).GetType(), Data_Node::Zombi);
        for (const char* sName : {"n0", "n2", "n29", "n\xFF", ""}) {
            for (u2_t uNth = 0; uNth < 62; ++uNth) {
                const Data oNode = oRoot.GetNthSucc(sName, uNth);
                const Data_View oFound = oView.Find(sName, uNth);
                ASSERT_EQ(oFound.IsNode(), oNode.IsNode()) << sName << uNth;
                if (!oNode.IsNode()) continue;
                EXPECT_EQ(oFound.GetId(), oNode.GetId());
                EXPECT_EQ(oFound.Int(), static_cast<i2_t>(oNode.GetNode().uWord2));
            }
        }
        EXPECT_FALSE(oView.GetSucc(0).Find("n0").IsNode());
    }
    EXPECT_EQ(Failing([] { (void)Data_View(Data()); }), "node is empty");
}

// Texts and blocks share 2 GiB, here some bytes: what does not fit is refused before anything is
// changed. Each step asks for more than is left, some for it in parts of which the first would fit.
TEST(Values, TheHeapHasALimit) {
    const char* const sLong = "a text that is longer";
    const char* const sUmlaut = "a text that has an \u00FC";
    Data oRoot = NewTree();
    Data oText = oRoot.CreateNewSucc("s"), oQuad = oRoot.CreateNewSucc("q");
    oText.SetValStr("text");
    oQuad.SetValQuad(1, 2, 3, 4);
    oText.SetAttVal("a", "value");
    oText.SetAttVal("b", "value");
    for (const char* sName : {"n", "x", "y", "top"}) (void)oRoot.MakeKey(sName);
    const Data oOther = NewTree().CreateNewSucc("top");
    Data(oOther).SetAttVal("a", "small");
    Data(oOther).SetAttVal("b", sLong);
    Data(oOther).AddStr("n", "small");
    Data(oOther).AddStr("n", sLong);
    Data oLong = oOther.GetNthSucc("n", 1);
    Data oBlock = NewTree(), oWords = NewTree();
    oBlock.SetValBin(sLong, 20);
    oWords.SetValQuad(5, 6, 7, 8);
    const std::function<void()> STEPS[] = {
        [&] { oRoot.AddStr("n", sLong); },
        [&] { oRoot.AddStr("n", sUmlaut); },
        [&] { oRoot.AddBin("n", sLong, 22); },
        [&] { oText.SetValStr(sLong); },
        [&] { oText.SetValBin(sLong, 22); },
        [&] { oQuad.SetValQuad(5, 6, 7, 8); },
        [&] { oText.SetAttVal("a", sLong); },
        [&] { oQuad.SetAttVal("a", sLong); },
        [&] { oRoot.CreateNode("x/y[@a=\"small\"][@b=\"a text that is longer\"]"); },
        [&] { (void)oOther.MkCopy(oRoot); },
        [&] { oOther.CopyAtt(oText); },
        [&] { Data::CopyVal(oLong, oText); },
        [&] { Data::CopyVal(oBlock, oText); },
        [&] { Data::CopyVal(oWords, oText); },
        [&] { Data_Builder(oRoot).AddStr("n", sLong); },
        [&] { Data_Builder(oRoot).AddStr("n", sUmlaut); },
        [&] { Data_Builder(oRoot).AddBin("n", sLong, 22); },
        [&] { Data_Builder(oRoot).AddQuad("n", 5, 6, 7, 8); },
        [&] { Data(oOther).MoveTo(oRoot); },  // after which it is gone
    };
    Data_Heap& oHeap = dgraph::Access::BaseOf(oRoot)->m_oHeap;
    const std::string sBefore = DumpOf(oRoot), sOther = DumpOf(oOther);  // heap and names as well
    for (const auto& oStep : STEPS) {
        oHeap.SetMost(oHeap.Size() + 8);
        EXPECT_EQ(Failing(oStep), "assertion failed: vok::Msg::IsInt32(x)");
        EXPECT_EQ(DumpOf(oRoot), sBefore);
        EXPECT_EQ(DumpOf(oOther), sOther);
    }
    // To the last byte, by either way in.
    for (const std::size_t uMost : {oHeap.Size() + 6, std::size_t{0x7FFFFFFF}}) {
        oHeap.SetMost(uMost);
        const u2_t uId = oRoot.AddStr("n", "small");
        EXPECT_STREQ(oRoot.GetNodeFromID(uId).GetValStr(), "small");
    }
    for (const auto& oStep : STEPS) EXPECT_EQ(Failing(oStep), "");
}

#ifndef _WIN32
// The border itself: where offsets end.
TEST(Values, TheHeapEndsAt2GiB) {
    Data oRoot = NewTree();
    Data_Heap& oHeap = dgraph::Access::BaseOf(oRoot)->m_oHeap;
    Arr<char> oBytes;
    oBytes.Reserve((std::size_t{1} << 31) + 4096);  // which costs no memory before it is used
    oBytes.SetSize(0x7FFFFFF8);
    oHeap.Swap(oBytes);
    EXPECT_EQ(Failing([&] { oRoot.AddStr("n", "seven b"); }),
              "assertion failed: vok::Msg::IsInt32(x)");
    EXPECT_EQ(oRoot.GetNodes(), 1u);
    oRoot.AddStr("n", "six by");
    EXPECT_EQ(oRoot.GetNthSucc(0).GetValText(), "six by");
    EXPECT_EQ(oHeap.Size(), 0x7FFFFFFFu);
}
#endif

}  // namespace
}  // namespace vok
