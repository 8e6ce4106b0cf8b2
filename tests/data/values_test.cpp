// Values of nodes: every type against every getter, texts that stand in the tree, links.
#include <bit>
#include <cmath>
#include <limits>

#include "tests/support.h"

namespace vok {
namespace {

struct Kind {
    Data_Node::Type eType;
    void (*pSet)(Data&);
    bool (*pGet)(const Data&);  // reads it back; false when it is another value
};

const Kind KINDS[] = {
    {Data_Node::Boolean, [](Data& o) { o.SetValBool(true); },
     [](const Data& o) { return o.GetValBool(); }},
    {Data_Node::Integer, [](Data& o) { o.SetValInt(std::numeric_limits<i2_t>::min()); },
     [](const Data& o) { return o.GetValInt() == std::numeric_limits<i2_t>::min(); }},
    {Data_Node::Char, [](Data& o) { o.SetValInt(-1, Data_Node::Char); },
     [](const Data& o) { return o.GetValInt(Data_Node::Char) == -1; }},
    {Data_Node::Float, [](Data& o) { o.SetValDbl(0.1, Data_Node::Float); },
     [](const Data& o) { return o.GetValDbl(Data_Node::Float) == 0.1; }},
    {Data_Node::Double, [](Data& o) { o.SetValDbl(std::bit_cast<double>(0x7FF8DEADBEEF0001)); },
     [](const Data& o) { return std::bit_cast<u3_t>(o.GetValDbl()) == 0x7FF8DEADBEEF0001; }},
    {Data_Node::Date, [](Data& o) { o.SetValDbl(-0.0, Data_Node::Date); },
     [](const Data& o) { return std::signbit(o.GetValDbl(Data_Node::Date)); }},
    {Data_Node::String, [](Data& o) { o.SetValStr("text"); },
     [](const Data& o) { return o.GetValText() == "text" && o.GetValStr()[4] == 0; }},
    {Data_Node::Binary, [](Data& o) { o.SetValBin("\0\xFF\0", 3); },
     [](const Data& o) {
         u2_t uSize = 0;
         const void* pData = o.GetValBin(uSize);
         return uSize == 3 && std::memcmp(pData, "\0\xFF\0", 3) == 0;
     }},
    {Data_Node::Long, [](Data& o) { o.SetValLng(~u3_t{0}); },
     [](const Data& o) { return o.GetValLng() == ~u3_t{0}; }},
    {Data_Node::Quad, [](Data& o) { o.SetValQuad(1, 0x80000000, 3, 0xFFFFFFFF); },
     [](const Data& o) {
         u2_t u0, u1, u2, u3;
         o.GetValQuad(u0, u1, u2, u3);
         return u0 == 1 && u1 == 0x80000000 && u2 == 3 && u3 == 0xFFFFFFFF;
     }},
    {Data_Node::Link, [](Data& o) { o.SetValLink(o.GetRoot()); },
     [](const Data& o) { return o.GetValLink() == o.GetRoot(); }},
};

std::string WrongType(const std::string& sType) {
    return "node \"n\" with wrong data type: '" + sType + "'\n";
}

TEST(Values, EveryTypeAgainstEveryGetter) {
    for (const Kind& oKind : KINDS) {
        // Whatever stood there before, a Zombi included.
        for (const Kind& oBefore : KINDS) {
            Data oNode = NewTree().CreateNewSucc("n");
            oBefore.pSet(oNode);
            if (oBefore.eType == oKind.eType) oNode.Remove();
            oKind.pSet(oNode);
            EXPECT_EQ(oNode.GetType(), oKind.eType);
            EXPECT_TRUE(oKind.pGet(oNode)) << oKind.eType << " after " << oBefore.eType;
            if (oBefore.eType == oKind.eType) continue;
            const std::string sGot = Data_Node::TypeName(oKind.eType);
            const std::string sWanted = Data_Node::TypeName(oBefore.eType);
            EXPECT_EQ(Raised([&] { oBefore.pGet(oNode); }), "node \"n\" with wrong data type: '" +
                                                                sWanted + "' expected but got '" +
                                                                sGot + "'\n");
        }
    }
}

TEST(Values, NodesWithSuccessorsTakeNone) {
    Data oNode = NewTree().CreateNewSucc("n");
    oNode.CreateNewSucc("below");
    const auto oCheck = [&](auto&& oSet) {
        EXPECT_EQ(Raised([&] { oSet(oNode); }), WrongType("Tree"));
        EXPECT_EQ(oNode.GetType(), Data_Node::Tree);
        EXPECT_EQ(IdsOf(oNode.GetSuccIt()), (Ids{2}));
    };
    for (const Kind& oKind : KINDS) oCheck(oKind.pSet);
    oCheck([](Data& o) { o.ClearVal(); });
}

TEST(Values, SettersMakeATreeAndGettersDoNot) {
    for (const Kind& oKind : KINDS) {
        Data oNode;
        EXPECT_EQ(Raised([&] { oKind.pGet(oNode); }), "object points to nothing\n");
        if (oKind.eType == Data_Node::Link) continue;
        oKind.pSet(oNode);
        EXPECT_EQ(oNode.GetNodes(), 1u);
        EXPECT_TRUE(oKind.pGet(oNode));
    }
    Data oNode;
    EXPECT_NE(Raised([&] { oNode.SetValInt(1, Data_Node::Double); }), "(nothing raised)");
    EXPECT_NE(Raised([&] { oNode.SetValDbl(1, Data_Node::Integer); }), "(nothing raised)");
    EXPECT_EQ(Raised([&] { oNode.SetValBin(nullptr, 1); }), "object points to nothing\n");
    EXPECT_FALSE(oNode.IsNode());
    oNode.SetValBin(nullptr, 0);
    u2_t uSize = 9;
    (void)oNode.GetValBin(uSize);
    EXPECT_EQ(uSize, 0u);
}

TEST(Values, Texts) {
    Data oNode = NewTree();
    for (const char* sText : {"", "plain", "Grüße 😀"}) {
        oNode.SetValStr(sText);
        EXPECT_STREQ(oNode.GetValStr(), sText);
        EXPECT_EQ(oNode.GetValText(), sText);
    }
    oNode.SetValStr("\xE4\xC3\xA4");  // Latin-1 beside UTF-8
    EXPECT_EQ(oNode.GetValText(), "ää");
    oNode.SetValStr(std::string_view("cut\0off", 7));
    EXPECT_EQ(oNode.GetValText(), "cut");
    oNode.SetValStr(nullptr);
    EXPECT_STREQ(oNode.GetValStr(), "");
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
    const std::string sBlock(static_cast<const char*>(oNode.GetValBin(uSize)), 1000);
    for (int i = 0; i < 200; ++i) oNode.SetValBin(oNode.GetValBin(uSize), 1000);
    EXPECT_EQ(std::string(static_cast<const char*>(oNode.GetValBin(uSize)), 1000), sBlock);
}

TEST(Values, Links) {
    Data oRoot = NewTree();
    Data oLink = oRoot.CreateNewSucc("n");
    Data oTarget = oRoot.CreateNewSucc("target");
    oLink.SetValLink(oTarget);
    EXPECT_EQ(oLink.GetValLink(), oTarget);
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
    EXPECT_EQ(Raised([&] { oLink.SetValLink(oStale); }), "try to access deleted node\n");
    EXPECT_EQ(oLink.GetValLink(), oLink);
}

TEST(Values, NodesMadeWithTheirValue) {
    Data oRoot;
    const u2_t auIds[] = {oRoot.AddBool("n", true),
                          oRoot.AddInt("n", std::numeric_limits<i2_t>::min()),
                          oRoot.AddInt("n", -1, Data_Node::Char),
                          oRoot.AddDbl("n", 0.1, Data_Node::Float),
                          oRoot.AddDbl("n", std::bit_cast<double>(0x7FF8DEADBEEF0001)),
                          oRoot.AddDbl("n", -0.0, Data_Node::Date),
                          oRoot.AddStr("n", "text"),
                          oRoot.AddBin("n", "\0\xFF\0", 3),
                          oRoot.AddLng("n", ~u3_t{0})};
    for (std::size_t u = 0; u < std::size(auIds); ++u) {
        EXPECT_EQ(auIds[u], u + 1);
        EXPECT_TRUE(KINDS[u].pGet(oRoot.GetNodeFromID(auIds[u])));
    }
    EXPECT_EQ(oRoot.GetSuccIt("n").Size(), std::size(auIds));
    EXPECT_EQ(oRoot.GetNodeFromID(oRoot.AddStr("x", "\xE4")).GetValText(), "ä");
    EXPECT_EQ(oRoot.GetNodeFromID(oRoot.AddStr("x", {"a\0b", 3})).GetValText(), "a");
    EXPECT_EQ(oRoot.GetNodeFromID(oRoot.AddStr("x", {})).GetNode().uWord2, 0u);
    const u2_t uNodes = oRoot.GetNodes();
    EXPECT_NE(Raised([&] { oRoot.AddInt("n", 1, Data_Node::Tree); }), "(nothing raised)");
    EXPECT_NE(Raised([&] { oRoot.AddDbl("n", 1, Data_Node::Empty); }), "(nothing raised)");
    EXPECT_EQ(Raised([&] { oRoot.AddBin("n", nullptr, 1); }), "object points to nothing\n");
    EXPECT_NE(Raised([&] { oRoot.AddStr(oRoot.FindKey("unknown"), ""); }), "(nothing raised)");
    EXPECT_EQ(oRoot.GetNodes(), uNodes);
}

TEST(Values, GetStr) {
    Data oNode;
    EXPECT_EQ(oNode.GetStr(nullptr), nullptr);
    EXPECT_STREQ(oNode.GetStr("x"), "x");
    oNode = NewTree();
    EXPECT_STREQ(oNode.GetStr("x"), "x");
    oNode.SetValStr("");
    EXPECT_STREQ(oNode.GetStr("x"), "");
    oNode.SetValInt(5);
    EXPECT_EQ(Raised([&] { (void)oNode.GetStr("x"); }),
              "node \"Root\" with wrong data type: 'String' expected but got 'Integer'\n");
    oNode.ClearVal();
    EXPECT_EQ(oNode.GetNode().Value64(), 0u);
    EXPECT_EQ(oNode.GetStr(nullptr), nullptr);
}

}  // namespace
}  // namespace vok
