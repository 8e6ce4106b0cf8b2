// Conversions of values to text and numbers, and copies from node to node.
#include <cmath>
#include <limits>

#include "tests/support.h"

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
    constexpr double INF = std::numeric_limits<double>::infinity();
    const Row oRows[] = {
        {[](Data&) {}, "dflt", -7, NONE},
        {[](Data& o) { o.SetValBool(true); }, "1", 1, 1},
        {[](Data& o) { o.SetValInt(-2147483647 - 1); }, "-2147483648", -2147483648LL, -2147483648.},
        {[](Data& o) { o.SetValInt(255, Data_Node::Char); }, "255", 255, 255},
        {[](Data& o) { o.SetValDbl(0.1); }, "0.1", 0, 0.1},
        {[](Data& o) { o.SetValDbl(1.0 / 3); }, "0.3333333333333333", 0, 1.0 / 3},
        {[](Data& o) { o.SetValDbl(-1); }, "-1", 0, -1},
        {[](Data& o) { o.SetValDbl(123456789012345678.); }, "1.234567890123457e+17", 0,
         123456789012345678.},
        {[](Data& o) { o.SetValDbl(0.1F, Data_Node::Float); }, "0.1000000014901161", 0, 0.1F},
        {[](Data& o) { o.SetValDbl(INF); }, "inf", 0, INF},
        {[](Data& o) { o.SetValDbl(0, Data_Node::Date); }, "1970-01-01 00:00:00", 0, 0},
        {[](Data& o) { o.SetValDbl(-0.25, Data_Node::Date); }, "1969-12-31 23:59:59", 0, -0.25},
        {[](Data& o) { o.SetValDbl(951782399.9, Data_Node::Date); }, "2000-02-28 23:59:59", 0,
         951782399.9},
        {[](Data& o) { o.SetValStr("text"); }, "text", 0, 0},
        {[](Data& o) { o.SetValStr(""); }, "", 0, 0},
        {[](Data& o) { o.SetValStr(" \t-42.9e3x"); }, " \t-42.9e3x", -42, -42},
        {[](Data& o) { o.SetValStr("+17"); }, "+17", 17, 17},
        {[](Data& o) { o.SetValStr("2147483648"); }, "2147483648", 2147483647, 2147483647},
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
    // Without a tree as without a value.
    Str oText("rubbish");
    Data().CvtStr(oText);
    EXPECT_EQ(oText.Data(), nullptr);
    Data().CvtStr(oText, "dflt");
    EXPECT_STREQ(oText.CStr(), "dflt");
    EXPECT_EQ(Data().CvtInt(-7), -7);
    EXPECT_EQ(Data().CvtDbl(NONE), NONE);
    NewTree().CvtStr(oText);
    EXPECT_EQ(oText.Data(), nullptr);
}

TEST(Convert, TypesWithoutText) {
    const struct {
        void (*pSet)(Data&);
        const char* sType;
    } oRows[] = {
        {[](Data& o) { o.SetValBin("x", 1); }, "Binary"},
        {[](Data& o) { o.SetValLink(o); }, "Link"},
        {[](Data& o) { o.CreateNewSucc("x"); }, "Tree"},
        {[](Data& o) { o.Remove(); }, "Zombi"},
    };
    for (const auto& oRow : oRows) {
        Data oNode = NewTree().CreateNewSucc("n");
        oRow.pSet(oNode);
        const std::string sError =
            "node \"n\" with wrong data type: '" + std::string(oRow.sType) + "'\n";
        Str oText;
        EXPECT_EQ(Raised([&] { oNode.CvtStr(oText, "x"); }), sError);
        EXPECT_EQ(Raised([&] { (void)oNode.CvtInt(); }), sError);
        EXPECT_EQ(Raised([&] { (void)oNode.CvtDbl(); }), sError);
    }
}

// ---- copies -----------------------------------------------------------------

std::string Shown(const Data& oNode) {
    if (oNode.GetType() == Data_Node::Binary) {
        u2_t uSize = 0;
        const void* pData = oNode.GetValBin(uSize);
        return "Binary " + std::string(static_cast<const char*>(pData), uSize);
    }
    if (oNode.GetType() == Data_Node::Link) {
        return "Link " + std::to_string(static_cast<i2_t>(oNode.GetNode().uWord2));
    }
    Str oText;
    if (oNode.GetType() != Data_Node::Zombi) oNode.CvtStr(oText, "-");
    return std::string(Data_Node::TypeName(oNode.GetType())) + " " + oText.CStr();
}

TEST(CopyVal, WithinATreeAndBetweenTrees) {
    const struct {
        void (*pSet)(Data&);
        const char* sSame;
        const char* sOther;
    } oRows[] = {
        {[](Data& o) { o.SetValStr("ä"); }, "String ä", "String ä"},
        {[](Data& o) { o.SetValBin("a-b", 3); }, "Binary a-b", "Binary a-b"},
        {[](Data& o) { o.SetValQuad(1, 2, 3, 4); }, "Quad 0x00000001000000020000000300000004",
         "Quad 0x00000001000000020000000300000004"},
        {[](Data& o) { o.SetValInt(-3, Data_Node::Char); }, "Char -3", "Char -3"},
        {[](Data& o) { o.SetValDbl(2.5, Data_Node::Float); }, "Float 2.5", "Float 2.5"},
        {[](Data& o) { o.SetValLink(o); }, "Link 1", "Link -1"},
        {[](Data& o) { o.ClearVal(); }, "Empty -", "Empty -"},
        {[](Data& o) { o.Remove(); }, "Zombi ", "Zombi "},
    };
    for (const auto& oRow : oRows) {
        Data oSrc = NewTree().CreateNewSucc("src");
        oRow.pSet(oSrc);
        Data oSame = oSrc.GetRoot().CreateNewSucc("same");
        oSame.SetValStr("old");
        Data::CopyVal(oSrc, oSame);
        EXPECT_EQ(Shown(oSame), oRow.sSame);
        Data oOther;
        Data::CopyVal(oSrc, oOther);
        EXPECT_EQ(Shown(oOther), oRow.sOther);
        Data::CopyVal(oSrc, oSrc);
        EXPECT_EQ(Shown(oSrc), oRow.sSame);
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
