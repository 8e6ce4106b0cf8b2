// DGraph documents record by record.
#include <sstream>

#include "tests/dgraph/dgraph_support.h"
#include "vok/dgraph/records.h"

namespace vok {
namespace {

// The tree of all records, or the error, as loading shows it.
std::string Taken(File_Stream& oIn, const Limits& oLimits = {}) {
    Data oTree;
    const std::string sError = Failing([&] {
        Dgraph_Reader oReader(oIn, oLimits);
        oReader.Next();
        oReader.Take(oTree);
        while (oReader.Next()) {
        }
    });
    return sError.empty() ? Show(oTree) : sError;
}

void ExpectSame(const std::string& sDocument, const Limits& oLimits = {}) {
    const std::string sLoaded = Load(sDocument, oLimits);
    File_Buf oBuf(sDocument.data(), sDocument.size());
    EXPECT_EQ(Taken(oBuf, oLimits), sLoaded);
    Drop_Stream oStream(sDocument);
    EXPECT_EQ(Taken(oStream, oLimits), sLoaded);
}

const std::string g_sGaps =
    Document(4, Leaf("a[2]", 1, I32(1)) + Leaf("a[5]", 1, I32(2)) + Open("b[0]", 2) +
                    Link("l[0]", "a", "a[5]") + Link("m[3]", "m", "b[0]/m[3]") + Text("c[0]", "x"));

TEST(DgraphRecords, AllOfADocumentIsItsTree) {
    ExpectSame(AllTypes());
    ExpectSame(g_sGaps);
    // An index that wraps is a negative one, and its run is one all the same.
    ExpectSame(Document(2, Leaf("a[4294967295]", 1, I32(1)) + Leaf("a[4294967295]", 1, I32(2))));
    ExpectSame(Header() + Leaf("Me[0][@a=\"b\"]", 5, Block("text\0"s)));
    ExpectSame(
        Document(3, Leaf("a[0]", 1, I32(1)) + Leaf("b[0]", 1, I32(2)) + Leaf("a[0]", 1, I32(3))));
}

TEST(DgraphRecords, DamageIsToldAsByLoading) {
    const std::string sDocument = AllTypes();
    for (std::size_t u = 0; u < sDocument.size(); ++u) ExpectSame(sDocument.substr(0, u));
    for (std::size_t u = 12; u < sDocument.size(); ++u) {
        for (const char c : {'\0', '\1', '\xFF', '[', '7'}) {
            std::string sDamaged = sDocument;
            sDamaged[u] = c;
            ExpectSame(sDamaged);
        }
    }
}

TEST(DgraphRecords, LimitsAreThoseOfLoading) {
    const Limit ALL[] = {LIMIT_NODES,      LIMIT_DEPTH,      LIMIT_SLOTS,
                         LIMIT_TEXT_BYTES, LIMIT_ATTRIBUTES, LIMIT_PATH_STEPS};
    for (const Limit& o : ALL) {
        for (u3_t uMost = 0; uMost < 25; ++uMost) {
            ExpectSame(AllTypes(), AtMost(o, uMost));
            ExpectSame(g_sGaps, AtMost(o, uMost));
        }
    }
}

TEST(DgraphRecords, WhatARecordSays) {
    const std::string sDocument = AllTypes() + "behind";
    File_Buf oIn(sDocument.data(), sDocument.size());
    Dgraph_Reader oReader(oIn);
    std::string sAll;
    while (oReader.Next()) {
        if (oReader.GetDepth() == 1 && oReader.GetName() == "tree") {
            EXPECT_EQ(oReader.GetSuccs(), 2u);
            EXPECT_EQ(sDocument.substr(oReader.GetOffset() + 4, 7), "tree[0]");
            oReader.SkipSuccessors();
        }
        if (oReader.GetType() == Data_Node::String) {
            EXPECT_EQ(oReader.GetAttributes()(0).sName, "a b");
            EXPECT_EQ(oReader.GetAttributes()(0).sValue, "c.");
            EXPECT_EQ(oReader.Text(), "some text");
        }
        if (oReader.GetType() == Data_Node::Link) {
            EXPECT_EQ(oReader.Text(), "tree[0]/x[1]");
        }
        sAll += std::string(oReader.GetPath().View()) + ' ';
    }
    EXPECT_EQ(sAll,
              "/ /binary[0] /char[0] /date[0] /double[0] /empty[0] /float[0] /int[0] /link[0] "
              "/long[0] /quad[0] "
              "/string[0] /tree[0] /yes[0] ");
    EXPECT_EQ(oIn.Remaining(), 6u);
    EXPECT_EQ(oReader.MissingNodes() + oReader.MissingBytes(), 0u);
}

// 3 orders, of which the second links into itself, the third to the first.
const std::string g_sOrders = Document(
    4, Open("order[0][@state=\"open\"]", 1) + Leaf("id[0]", 1, I32(10)) + Open("order[1]", 2) +
           Leaf("id[0]", 1, I32(11)) + Link("me[0]", "id", "order[1]/id[0]") +
           Open("order[2][@state=\"open\"]", 2) + Leaf("id[0]", 1, I32(12)) +
           Link("other[0]", "order", "order[0]") + Text("z[0]", "end"));

TEST(DgraphRecords, SubtreesThatAPathSelects) {
    const Pair CASES[] = {{"/order", "10 11 12 "},
                          {"order[1]", "11 "},
                          {"/order[@state=\"open\"]", "10 12 "},
                          {"/*", "10 11 12 - "},
                          {"/order/id", "- - - "},
                          {"/order[2]/*[@a=\"b\"]", ""},
                          {"/order[3]", ""},
                          {"/", "- "}};
    for (const auto& [sPath, sExpected] : CASES) {
        Drop_Stream oIn(g_sOrders);
        std::string sIds;
        for (const Data& oOrder : Dgraph_Records(oIn, sPath)) {
            const Data oId = oOrder.GetNthSucc("id", 0);
            sIds += (oId.IsNode() ? std::to_string(oId.GetValInt()) : "-") + " ";
        }
        EXPECT_EQ(sIds, sExpected) << sPath;
    }
    Drop_Stream oIn(g_sOrders);
    for (const char* sPath : {"//id", "/order//id", "/order/..", "/*[1]", "//"}) {
        EXPECT_EQ(Failing([&] { Dgraph_Records(oIn, sPath); }),
                  "path \"" + std::string(sPath) + "\" needs the whole tree");
        oIn = Drop_Stream(g_sOrders);
    }
}

TEST(DgraphRecords, LinksWithinASubtreeAndOutOfIt) {
    Drop_Stream oIn(g_sOrders);
    Dgraph_Records oRecords(oIn, "/order");
    EXPECT_TRUE(oRecords.Next() && oRecords.Next());
    const Data oMe = oRecords.GetData().GetNthSucc("me", 0);
    EXPECT_EQ(oMe.GetValLink(), oRecords.GetData().GetNthSucc("id", 0));
    EXPECT_TRUE(oRecords.GetReader().GetOuterLinks().empty());
    EXPECT_TRUE(oRecords.Next());
    const auto& aoOuter = oRecords.GetReader().GetOuterLinks();
    ASSERT_EQ(aoOuter.size(), 1u);
    EXPECT_EQ(aoOuter[0].uId, oRecords.GetData().GetNthSucc("other", 0).GetId());
    EXPECT_EQ(aoOuter[0].oPath.View(), "order[0]");
    // It is a document of its own.
    EXPECT_EQ(Load(Save(oRecords.GetData())), Show(oRecords.GetData()));
}

TEST(DgraphRecords, MemoryDoesNotGrowWithTheDocument) {
    std::string sRecords;
    for (int i = 0; i < 100000; ++i) {
        sRecords +=
            Open("order[" + std::to_string(i) + "]", 1) + Text("t[0]", std::string(20, 'x'));
    }
    const std::string sDocument = Document(100000, sRecords);
    Drop_Stream oIn(sDocument);
    const Mem_Probe oProbe;
    u2_t uOrders = 0;
    for (const Data& oOrder : Dgraph_Records(oIn, "/order")) uOrders += oOrder.GetNodes() == 2;
    EXPECT_EQ(uOrders, 100000u);
    EXPECT_LT(Mem_Probe::Peak(), 400000u);
}

}  // namespace
}  // namespace vok
