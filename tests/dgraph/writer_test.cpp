// SPDX-License-Identifier: MIT
// What trees are written as, against documents put together by hand.
#include <limits>

#include "tests/dgraph/dgraph_support.h"

namespace vok {
namespace {

// Values that are written in another form than they have, or had in older minor versions; the
// tests of the reader have the others.
TEST(DgraphWriter, ValuesThatChangeTheirForm) {
    struct {
        void (*pSet)(Data&);
        std::string sNow;  // type code and value
        std::string sOld = {};
        int iUpTo = 0;  // the old form is written below this minor version
    } const aCases[] = {
        {[](Data& o) { o.SetValInt(0x100, Data_Node::Boolean); }, U8(6) + U8(1)},
        {[](Data& o) { o.SetValInt(0x1C8, Data_Node::Char); }, U8(4) + "\xC8"s},
        {[](Data& o) { o.SetValDbl(1e300, Data_Node::Float); }, U8(2) + "\x00\x00\x80\x7F"s},
        {[](Data& o) { o.SetValStr("\xE4"); }, U8(5) + I32(3) + "\xC3\xA4\0"s},
        {[](Data& o) { o.SetValDbl(-0.5, Data_Node::Date); }, U8(9) + F64(-0.5 / 86400.0 + 25569.0),
         U8(5) + I32(20) + "1969-12-31 23:59:59\0"s, 2},
        {[](Data& o) { o.SetValLng(0xFFFFFFFFFFFFFFFE); }, U8(10) + U64(0xFFFFFFFFFFFFFFFE),
         U8(5) + I32(21) + "18446744073709551614\0"s, 3},
        {[](Data& o) { o.SetValQuad(1, 0, 4294967295, 65536); },
         U8(11) + I32(1) + I32(0) + I32(-1) + I32(65536),
         U8(11) + I32(21) + "1,0,4294967295,65536\0"s, 3},
    };
    for (const auto& o : aCases) {
        for (int iMinor = 0; iMinor < 5; ++iMinor) {
            Data oRoot = Versioned(iMinor);
            Data oNode = oRoot.CreateNewSucc("v");
            o.pSet(oNode);
            const std::string& sValue = iMinor < o.iUpTo ? o.sOld : o.sNow;
            EXPECT_EQ(Save(oNode), Document(1, Block("v[0]") + sValue, iMinor)) << iMinor;
        }
    }
}

TEST(DgraphWriter, StepTexts) {
    Data oNamed = Versioned();
    oNamed.SetRootName("my root");
    EXPECT_EQ(Save(oNamed), Header() + Open("my\b32;root[0]", 0));
    const Pair aCases[] = {
        {"plain-name_1:x", "plain-name_1:x"},
        {" /.[]=\"*\b", "\b32;\b47;\b46;\b91;\b93;\b61;\b34;\b42;\b8;"},
        {"\xC3\xA4\xF0\x9F\x98\x80", "\xC3\xA4\xF0\x9F\x98\x80"},
        {"\xE4", "\xC3\xA4"},
        {"", "\b0;"},
        {"sixteen-bytes-16", "sixteen-bytes-16"},
        {"seventeen-bytes17", "seventeen-bytes17"},
    };
    for (const auto& o : aCases) {
        SCOPED_TRACE(o.first);
        Data oRoot = Versioned();
        Data oNode = oRoot.CreateNewSucc(o.first);
        EXPECT_EQ(Save(oRoot), Document(1, Open(o.second + "[0]", 0)));
        // Attributes follow in the order in which their names first appeared; empty values
        // are left out.
        Data(oRoot).SetAttVal("second", "");
        Data oOther = oRoot.CreateNewSucc("\xF4\x8F\xBF\xBF");
        oOther.SetAttVal("first", "1");
        oNode.SetAttVal("dt:x", o.first.c_str());
        oNode.SetAttVal("second", "2");
        oNode.SetAttVal("gone", "3");
        oNode.SetAttVal("gone", nullptr);
        const std::string sValue = !o.first.empty() ? "[@dt:x=\"" + o.second + "\"]" : "";
        EXPECT_EQ(Save(oRoot), Document(2, Open(o.second + "[0][@second=\"2\"]" + sValue, 0) +
                                               Open("\xF4\x8F\xBF\xBF[0][@first=\"1\"]", 0)));
    }
}

TEST(DgraphWriter, RunIndexesFollowTheOrderOfNames) {
    Data oRoot = Versioned();
    for (const char* s : {"b", "a", "b", "a"}) oRoot.AddBool(s, true);
    EXPECT_EQ(Save(oRoot), Document(4, Leaf("a[0]", 6, U8(1)) + Leaf("a[1]", 6, U8(1)) +
                                           Leaf("b[0]", 6, U8(1)) + Leaf("b[1]", 6, U8(1))));
    Data oMany = Versioned();
    std::string sRecords;
    for (int i = 0; i < 1234; ++i) {
        oMany.AddInt("x", i);
        sRecords += Leaf("x[" + std::to_string(i) + "]", 1, I32(i));
    }
    EXPECT_EQ(Save(oMany), Document(1234, sRecords));
    // Removed nodes keep their place in the run.
    Data oGaps = Versioned();
    for (const char* s : {"b[0]", "b[1]", "a/below"}) oGaps.CreateNode(s);
    oGaps.GetNthSucc("a", 0).Remove();
    EXPECT_EQ(Save(oGaps), Document(2, Open("b[0]", 0) + Open("b[1]", 0)));
    oGaps.GetNthSucc("b", 0).Remove();
    EXPECT_EQ(Save(oGaps), Document(1, Open("b[1]", 0)));
    oGaps.GetNthSucc("b", 1).Remove();
    EXPECT_EQ(Save(oGaps), Document(0, ""));
}

TEST(DgraphWriter, Links) {
    Data oRoot = Versioned();
    Data oLink = oRoot.CreateNewSucc("link");
    Data oTarget = oRoot.CreateNewSucc("t.t");
    const auto oExpect = [&](const Data& o, const std::string& sRecord) {
        oLink.SetValLink(o);
        EXPECT_EQ(Save(oRoot), Document(2, sRecord + Open("t\b46;t[0]", 1) + Open("\b0;[0]", 0)));
    };
    const Data oUnnamed = oTarget.CreateNewSucc("");
    oExpect(oTarget, Link("link[0]", "t.t", "t\b46;t[0]"));
    oExpect(oLink, Link("link[0]", "link", "link[0]"));
    oExpect(oUnnamed, Link("link[0]", "\b0;", "t\b46;t[0]/\b0;[0]"));
    // What no document reaches is written as a node without value.
    oExpect(oRoot, Open("link[0]", 0));
    oExpect(Data(), Open("link[0]", 0));
    Data oGone = oRoot.CreateNewSucc("gone");
    const Data oDetached = oGone.CreateNewSucc("detached");
    oGone.Remove();
    oExpect(oGone, Open("link[0]", 0));
    oExpect(oDetached, Open("link[0]", 0));
    EXPECT_NE(Raised([&] { oLink.SetValLink(Versioned()); }), NOTHING_RAISED);
}

TEST(DgraphWriter, VersionTag) {
    const std::string sWrong = "Binary DGraph buffer has the wrong version!\n";
    const std::string sNone = "No DGraph!\n";
    const Pair aCases[] = {
        // clang-format off
        {"DGraphBin 1.2.0", "\1\2\0"s}, {"DGraphBin1.2.3", "\1\2\3"s},
        {"DGraphBin +1. 2.\t300", "\1\2\x2C"s}, {"DGraphBin 1.-1.0", "\1\xFF\0"s},
        {"DGraphBin 1..", "\1\0\0"s}, {"DGraphBin 3.0.0", sWrong}, {"DGraphBin 0.0.0", sWrong},
        {"DGraphBin 257.0.0", sWrong}, {"DGraphBin 4294967297.0.0", sWrong},
        {"DGraphBin..", sWrong}, {"DGraphBin 1.3", sNone}, {"DGraphBin 1.3.", "\1\3\0"s},
        {"DGraphBin 1.3.0x", sNone}, {"DGraphBin 1.3.0.0", sNone}, {"DGraphBin 1 .3.0", sNone},
        {"DGraphBin", sNone}, {"dgraphbin 1.3.0", sNone}, {" DGraphBin 1.3.0", sNone}, {"", sNone},
        // clang-format on
    };
    for (const auto& o : aCases) {
        SCOPED_TRACE(o.first);
        Data oRoot = NewTree();
        oRoot.SetUserTag(o.first.c_str());
        std::string sOutcome;
        const std::string sError = Raised([&] { sOutcome = Save(oRoot).substr(9, 3); });
        EXPECT_EQ(sOutcome.empty() ? sError : sOutcome, o.second);
    }
    EXPECT_EQ(Raised([] { (void)Save(Data()); }), sNone);
    EXPECT_EQ(Trail([] { (void)Save(Data()); }), "vok::Dgraph_SaveDGraph\n");

    Data oRoot = NewTree();
    Dgraph_SetVersion(oRoot, 1, -2147483647 - 1, 2147483647);
    EXPECT_STREQ(oRoot.GetUserTag().CStr(), "DGraphBin 1.-2147483648.2147483647");
    Data oEmpty;
    EXPECT_EQ(Raised([&] { Dgraph_SetVersion(oEmpty, 1, 2, 0); }), "node is empty\n");
}

TEST(DgraphWriter, OneWritePerField) {
    Data oRoot = Versioned();
    oRoot.AddStr("s", "hello");
    Data oTree = oRoot.CreateNewSucc("t");
    oTree.SetAttVal("k", "v");
    oTree.CreateNewSucc("q").SetValQuad(1, 2, 3, 4);
    oTree.AddBin("b", "xyz", 3);
    oTree.AddInt("i", 5);
    oRoot.CreateNewSucc("u").SetValLink(oTree);
    Drop_Stream oOut;
    Dgraph_SaveDGraph(oRoot, oOut);
    std::vector<std::size_t> oWidths;
    for (const std::string& s : oOut.m_oWritten) oWidths.push_back(s.size());
    const std::vector<std::size_t> oExpected = {
        30, 4,  7, 1, 4,        // header, root
        4,  4,  1, 4, 6,        // s
        4,  12, 1, 4,           // t
        4,  4,  1, 4, 3,        // b
        4,  4,  1, 4,           // i
        4,  4,  1, 4, 4, 4, 4,  // q
        4,  4,  1, 4, 1, 4, 4,  // u
    };
    EXPECT_EQ(oWidths, oExpected);
    EXPECT_EQ(oOut.m_uFlushes, 1u);
    EXPECT_EQ(Joined(oOut.m_oWritten), Save(oRoot));
}

// What a buffer may be besides empty.
TEST(DgraphWriter, IntoBuffers) {
    Data oRoot = Versioned();
    oRoot.AddStr("line", "a\nb");
    const std::string sBytes = Save(oRoot);

    File_Buf oBuf("w");
    oBuf.Write("before", 6);
    Dgraph_SaveDGraph(oRoot, oBuf);
    EXPECT_EQ(Content(oBuf), "before" + sBytes);
    EXPECT_EQ(static_cast<std::size_t>(oBuf.Tell()), oBuf.Size());

    oBuf.Open("w");
    oBuf.Write(std::string(200, 'x').c_str(), 200);
    oBuf.Seek(2);
    Dgraph_SaveDGraph(oRoot, oBuf);
    EXPECT_EQ(Content(oBuf), "xx" + sBytes + std::string(198 - sBytes.size(), 'x'));

    File_Buf oText("wt");
    Dgraph_SaveDGraph(oRoot, oText);
    EXPECT_EQ(oText.Size(), sBytes.size() + 1);  // the line break is two bytes

    File_Buf oReadOnly;
    EXPECT_NE(Raised([&] { Dgraph_SaveDGraph(oRoot, oReadOnly); }), NOTHING_RAISED);
    EXPECT_EQ(oReadOnly.Size(), 0u);
}

}  // namespace
}  // namespace vok
