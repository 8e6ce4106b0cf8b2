// SPDX-License-Identifier: MIT
// Nodes made along paths.
#include "tests/support.h"
#include "vok/data/xpath.h"

namespace vok {
namespace {

TEST(CreateNode, MakesWhatIsMissing) {
    Data oCursor;
    const struct {
        const char* sPath;
        u2_t uCreated;
        const char* sResult;
    } oRows[] = {
        // clang-format off
        {"", 0, "/"}, {"/", 0, "/"}, {"a/b/c", 3, "/a[0]/b[0]/c[0]"},
        {"/a/./b/../d", 1, "/a[0]/d[0]"}, {"a[2]", 2, "/a[2]"}, {"a[1]", 1, "/a[1]"},
        {"a[1]/", 0, "/a[1]"},
        {"x[3]/y[1]", 6, "/x[3]/y[1]"}, {"\b47;[0]", 1, "/\b47;[0]"}, {"\b0;", 1, "/\b0;[0]"},
        {"e[@k=\"1\"]", 1, "/e[0]"}, {"e[@k=\"2\"]", 1, "/e[1]"}, {"e[@k=\"2\"]", 0, "/e[1]"},
        {"e[1][@k=\"2\"]", 0, "/e[1]"}, {"e[3][@k=\"2\"][@l=\"\"]", 2, "/e[3]"},
        {"e[@l=\"\"]", 0, "/e[3]"}, {"e[2][@k=\"4\"]/f", 2, "/e[2]/f[0]"},
        // clang-format on
    };
    for (const auto& oRow : oRows) {
        u2_t uCreated = 99;
        const u2_t uBefore = oCursor.GetNodes();
        const Data oMade = oCursor.CreateNode(oRow.sPath, &uCreated);
        EXPECT_EQ(oMade.GetPath(), Str(oRow.sResult)) << oRow.sPath;
        EXPECT_EQ(uCreated, oRow.uCreated) << oRow.sPath;
        EXPECT_NE(oMade.GetType(), Data_Node::Zombi);
        // A revived placeholder is no new record.
        EXPECT_LE(oCursor.GetNodes(), (uBefore == 0 ? 1 : uBefore) + uCreated);
        EXPECT_EQ(oCursor.GetId(), 0u);
    }
    EXPECT_EQ(oCursor.GetSuccIt("x").Size(), 4u);
    EXPECT_EQ(IdsOf(oCursor.GetSuccIt("x")).size(), 1u);
    EXPECT_EQ(AttributesOf(oCursor.GetNthSucc("e", 2)), (Texts{"k=4"}));
}

TEST(CreateNode, RefusesBeforeAnythingIsMade) {
    Data oRoot = NewTree();
    oRoot.CreateNewSucc("v").SetValInt(1);
    oRoot.CreateNode("two[0]").SetAttVal("k", "1");
    oRoot.CreateNode("two[1]").SetAttVal("k", "1");
    const u2_t uNodes = oRoot.GetNodes();
    const std::pair<const char*, std::string> ROWS[] = {
        {"new/*", "invalid character '*'"},
        {"new//x", "invalid character '/'"},
        {"//x", "invalid character '/'"},
        {"new//", "invalid character '/'"},
        {"new/x[", "opening bracket '[' used without corresponding closing bracket"},
        {"..", "node has no predecessor"},
        {"two", "node is not unique"},
        {"two[@k=\"1\"]", "node is not unique"},
        {"two[1][@k=\"2\"]", "node already exists"},
        {"v/x", "node \"v\" with wrong data type: 'Integer'"},
        {"v/x[5]", "node \"v\" with wrong data type: 'Integer'"},
        {"x[1048577]", Exceeded(LIMIT_SLOTS, 1048576)},
    };
    for (const auto& [sPath, sError] : ROWS) {
        u2_t uCreated = 99;
        EXPECT_EQ(Failing([&, s = sPath] { oRoot.CreateNode(s, &uCreated); }), sError) << sPath;
        EXPECT_EQ(oRoot.GetNodes(), uNodes) << sPath;
        EXPECT_EQ(uCreated, 0u);
    }
    Data oEmpty;
    EXPECT_THROW(oEmpty.CreateNode("*"), Msg_Exception);
    EXPECT_FALSE(oEmpty.IsNode());
}

// A path that fails on its way leaves the tree as it was, to the byte of its dump, wherever its
// nodes had been placed by then.
TEST(CreateNode, TakesBackWhatItMade) {
    const char* const PATHS[] = {
        "new/../v/x",
        "new[3][@k=\"1\"]/deep/../../v/x",
        "blank/below/../../v/x",
        "p[0][@k=\"2\"][@new=\"3\"]/below/../../v/x",  // revives a placeholder
        "p[1]/../many[9]/../v/x",
        "big00/../a_first/../z_last/../v/x",
        "big/in/../../two",
        "a[1][@=\"1\"]",
    };
    for (const char* sPath : PATHS) {
        for (const bool bRead : {false, true}) {
            Data oRoot = NewTree();
            oRoot.CreateNewSucc("v").SetValInt(1);
            oRoot.CreateNewSucc("blank").SetValStr(" \n");
            oRoot.CreateNewSucc("two"), oRoot.CreateNewSucc("two");
            Data oPlace = oRoot.CreateNewSucc("p");
            oPlace.SetAttVal("k", "1");
            oPlace.Remove();
            oRoot.CreateNewSucc("p").SetAttVal("k", "1");
            for (int i = 60; i-- > 0;) oRoot.CreateNewSucc("big" + std::to_string(i));
            for (const char* s : {"k", "new"}) oRoot.SetAttVal(s, "x"), oRoot.SetAttVal(s, nullptr);
            for (const char* s = sPath; *s != 0; ++s)
                oRoot.MakeKey(std::string(s, strcspn(s, "/[")).c_str());
            if (bRead) oRoot.SetAccessMode();
            const Data oBefore = oRoot.MkClone();
            const std::string sBefore = DumpOf(oRoot);
            u2_t uCreated = 9;
            EXPECT_NE(Failing([&] { oRoot.CreateNode(sPath, &uCreated); }), "") << sPath;
            EXPECT_EQ(uCreated, 0u);
            EXPECT_TRUE(Data::Equal(oBefore, oRoot)) << sPath;
            EXPECT_EQ(DumpOf(oRoot), sBefore) << sPath;
        }
    }
    // Without memory at any point.
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        Data oRoot = NewTree();
        for (int i = 40; i-- > 0;) oRoot.CreateNewSucc("a" + std::to_string(i % 35));
        const Data oBefore = oRoot.MkClone();
        const auto oMake = [&] {
            oRoot.CreateNode("a20/b[3][@k=\"v\"][@l=\"w\"]/../c/d[@m=\"x\"]");
        };
        if (!Mem_Probe::HasRefused(uNth, oMake)) break;
        EXPECT_EQ(Fault(oRoot), "");
        EXPECT_TRUE(Data::Equal(oBefore, oRoot));
        oMake();
    }
    Data oNone;
    EXPECT_NE(Failing([&] { oNone.CreateNode("a/../.."); }), "");
    EXPECT_FALSE(oNone.IsNode());
    // Looking for a match is work.
    Data oMany = NewTree();
    for (int i = 0; i < 1000; ++i) oMany.CreateNewSucc("a").SetAttVal("k", "v");
    const std::string sLong = [] {
        std::string s;
        for (int i = 0; i < 50000; ++i) s += "a[@k=\"w\"][0]/../";
        return s;
    }();
    EXPECT_NE(Failing([&] { oMany.CreateNode(sLong.c_str()); }), "");
    EXPECT_EQ(
        Failing([&] { oMany.CreateNode("a[@k=\"w\"]", nullptr, AtMost(LIMIT_PATH_STEPS, 100)); }),
        Exceeded(LIMIT_PATH_STEPS, 100));
    EXPECT_EQ(oMany.GetNodes(), 1001u);
}

// Far more steps than a path has room for at first.
TEST(CreateNode, LongPaths) {
    Data oRoot = NewTree();
    std::string sPath;
    for (int i = 0; i < 500; ++i)
        sPath += "/n" + std::to_string(i) + "[@a=\"" + std::to_string(i) + "\"]";
    const Data oLast = oRoot.CreateNode(sPath.c_str());
    EXPECT_EQ(oLast.NodeDepth(), 500);
    EXPECT_EQ(IdsOf(oRoot.GetNodeSet(sPath.c_str())), (Ids{oLast.GetId()}));
    EXPECT_STREQ(oRoot.GetNodeFromID(41).GetAttVal("a"), "40");
}

// One limit for the placeholders of all steps: a path costs no more than its limit says.
TEST(CreateNode, PlaceholdersOfAWholePathAreLimited) {
    const Limits oLimits = AtMost(LIMIT_SLOTS, 10);
    Data oRoot = NewTree();
    u2_t uCreated = 0;
    oRoot.CreateNode("a[5]/b[5]", &uCreated, oLimits);
    EXPECT_EQ(uCreated, 12u);
    for (const char* sPath : {"a[5]/b[5]/c[1]", "a[11]"}) {
        EXPECT_EQ(Failing([&] { NewTree().CreateNode(sPath, nullptr, oLimits); }),
                  Exceeded(LIMIT_SLOTS, 10));
    }
    oRoot.CreateNode("a[15]", nullptr, oLimits);  // there are six already
}

// A step made by hand may ask for an attribute without a name; the node stays as it is.
TEST(CreateSucc, RefusesAnAttributeWithoutAName) {
    Data oRoot = NewTree();
    oRoot.CreateNewSucc("a").Remove();
    const Data oBefore = oRoot.MkClone();
    Data_XpathStep oStep;
    oStep.m_sName = "a";
    oStep.m_iIndex = 0;  // revives it
    oStep.m_oAttName.Add("");
    oStep.m_oAttVal.Add("v");
    EXPECT_EQ(Failing([&] { oRoot.CreateSucc(oStep); }), "unallowed attribute \"\"");
    EXPECT_EQ(Fault(oRoot), "");
    EXPECT_TRUE(Data::Equal(oBefore, oRoot));
    EXPECT_EQ(oRoot.GetNthSucc(0).GetType(), Data_Node::Zombi);
}

TEST(CreateSucc, ByStep) {
    Data_Xpath oPath;
    oPath.Parse("n[2][@k=\"v\"]/*");
    Data oEmpty;
    u2_t uCreated = 0;
    Data oMade = oEmpty.CreateSucc(oPath(0), &uCreated);
    EXPECT_EQ(uCreated, 3u);
    EXPECT_STREQ(oMade.GetAttVal("k"), "v");
    EXPECT_EQ(oEmpty.CreateSucc(oPath(0), &uCreated), oMade);
    EXPECT_EQ(uCreated, 0u);
    EXPECT_EQ(Raised([&] { oEmpty.CreateSucc(oPath(1)); }), "invalid character '*'\n");
    // A removed node gives its place to the next one, without its value and its successors.
    oMade.CreateNewSucc("below").SetValStr("text");
    oMade.Remove();
    EXPECT_EQ(oEmpty.CreateSucc(oPath(0), &uCreated), oMade);
    EXPECT_EQ(uCreated, 1u);
    EXPECT_EQ(oMade.GetType(), Data_Node::Empty);
}

}  // namespace
}  // namespace vok
