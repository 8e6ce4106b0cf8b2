// Conversions of values to text and numbers, and copies from node to node.
#include "tests/data/kinds.h"

namespace vok {
namespace {

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

}  // namespace
}  // namespace vok
