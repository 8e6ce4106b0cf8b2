// What loading may cost, and what it says about where it stopped.
#include <algorithm>

#include "tests/dgraph/dgraph_support.h"

namespace vok {
namespace {

constexpr i3_t MOST = 0x7FFFFFFF;

// Records of one name.
std::string RunOf(int iCount) {
    std::string s;
    for (int i = 0; i < iCount; ++i) s += Leaf("1234[" + std::to_string(i) + "]", 1, I32(i));
    return s;
}

TEST(DgraphLimits, EachStopsTheFirstDocumentBeyondIt) {
    struct {
        Limit oLimit;
        u3_t uMost;
        std::string sGood;
        std::string sBad;
    } const aCases[] = {
        {LIMIT_NODES, 3, Document(2, Open("a[0]", 0) + Leaf("a[1]", 1, I32(1))),
         Document(3, Open("a[0]", 0) + Leaf("a[1]", 1, I32(1)) + Leaf("a[2]", 1, I32(1)))},
        {LIMIT_NODES, 3, Document(1, Open("a[1]", 0)), Document(1, Open("a[2]", 0))},
        {LIMIT_DEPTH, 3, Document(1, Open("a[0]", 1) + Open("a[0]", 0)),
         Document(1, Open("a[0]", 1) + Open("a[0]", 1) + Open("a[0]", 0))},
        {LIMIT_DEPTH, 1, Document(0, ""), Document(1, Open("a[0]", 0))},
        {LIMIT_SLOTS, 3, Document(2, Open("a[2]", 0) + Open("b[1]", 0)),
         Document(2, Open("a[2]", 0) + Open("b[2]", 0))},
        {LIMIT_TEXT_BYTES, 7, Document(2, Text("a[0]", "123456") + Text("a[1]", "123456")),
         Document(2, Text("a[0]", "123456") + Text("a[1]", "1234567"))},
        {LIMIT_TEXT_BYTES, 7, Document(1, Leaf("a[0]", 8, Block("1234567"))),
         Document(1, Leaf("a[0]", 8, Block("12345678")))},
        {LIMIT_TEXT_BYTES, 7, Document(2, Open("x23[0]", 0) + Link("y[0]", "t", "./././x")),
         Document(2, Open("x23[0]", 0) + Link("y[0]", "t", "./././x2"))},
        {LIMIT_TEXT_BYTES, 7, Document(1, Open("1234[0]", 0)), Document(1, Open("12345[0]", 0))},
        {LIMIT_TEXT_BYTES, 7, Document(10, RunOf(10)), Document(11, RunOf(11))},
        {LIMIT_ATTRIBUTES, 1, Document(1, Open("a[0][@a=\"\"]", 0)),
         Document(1, Open("a[0][@a=\"\"][@a=\"\"]", 0))},
        {LIMIT_PATH_STEPS, 6, Document(2, Link("a[0]", "b", "b") + Open("b[0]", 0)),
         Document(5, Link("a[0]", "b", "b") + Link("a[1]", "b", "b") + Link("a[2]", "b", "b") +
                         Link("a[3]", "b", "b") + Open("b[0]", 0))},
    };
    for (const auto& o : aCases) {
        const Limits oLimits = AtMost(o.oLimit, o.uMost);
        EXPECT_EQ(Load(o.sBad, oLimits), Exceeded(o.oLimit, o.uMost)) << o.sBad;
        EXPECT_EQ(Load(o.sBad), Load(o.sBad, Limits::Trusted()));
        const std::string sGood = Load(o.sGood, oLimits);
        EXPECT_EQ(sGood, Load(o.sGood));
        EXPECT_EQ(sGood.find("limit"), std::string::npos);
    }
}

TEST(DgraphLimits, ReportSaysWhereLoadingStopped) {
    struct {
        std::string sBytes;
        u3_t uOffset;
        u3_t uNodes;
        const char* sPath;
    } const aCases[] = {
        {"DGraph", 6, 0, ""},
        {Header(0, 0, 3), 30, 0, ""},
        {Header(), 30, 1, "/"},
        {Document(0, "rest"), 46, 1, "/"},
        // The step text of the second record, whose name is not known.
        {Document(2, Leaf("a[0]", 1, I32(1)) + Block("b[0")), 46 + 13 + 7, 2, "/"},
        // Inside a level: the length of a text.
        {Document(2, Open("a[0]", 1) + Leaf("b b[0]", 5, I32(-1))), 46 + 13 + 15, 3,
         "/a[0]/b\b32;b[0]"},
        {Document(1, Open("a[0]", 1) + I32(-1)), 46 + 13 + 4, 2, "/a[0]"},
        // A run index that is there already.
        {Document(3, Open("a[0]", 1) + Open("x[0]", 0) + Open("b[3]", 0) + Open("b[1]", 0)),
         46 + 13 + 13 + 13 + 8, 8, "/b[4]"},
        // A link that leads nowhere, after everything was read.
        {Document(2, Open("a[0]", 1) + Link("l[0]", "x", "x") + Open("b[0]", 0)), 46 + 13 + 19 + 13,
         4, "/a[0]/l[0]"},
    };
    for (const auto& o : aCases) {
        for (const auto& [sShown, bGood, r] : LoadFromBoth(o.sBytes)) {
            SCOPED_TRACE(sShown);
            EXPECT_EQ(PlaceOf(r), std::to_string(o.uOffset) + " 0:0 " + o.sPath);
            EXPECT_EQ(r.m_uNodes, o.uNodes);
        }
    }
}

// A document that is cut short may load all the same: the report tells, and what lacks.
TEST(DgraphLimits, ReportSaysWhetherTheDocumentWasComplete) {
    const std::string sWhole = AllTypes();
    for (std::size_t uSize = 0; uSize <= sWhole.size() + 3; ++uSize) {
        const auto oBoth = LoadFromBoth((sWhole + "xyz").substr(0, uSize));
        for (const auto& [sShown, bGood, r] : oBoth) {
            EXPECT_EQ(bGood && r.m_uMissingBytes + r.m_uMissingNodes == 0, uSize >= sWhole.size());
        }
        EXPECT_EQ(oBoth[0].oReport.m_uBytesLeft, uSize - std::min(uSize, sWhole.size()));
        EXPECT_EQ(oBoth[1].oReport.m_uBytesLeft, 0u);
    }
    struct {
        std::string sBytes;
        u3_t uBytes, uNodes;
    } const aCases[] = {
        {Document(2, Open("a[0]", 3).substr(0, 10)), 3, 1},
        {Document(1, Leaf("a[0]", 5, Block("abc").substr(0, 5))), 2, 0},
        {Document(1, Leaf("a[0]", 11, "12345")), 11, 0},
        {Document(1, ""), 4, 1},
    };
    for (const auto& o : aCases) {
        for (const auto& [sShown, bGood, r] : LoadFromBoth(o.sBytes)) {
            EXPECT_EQ(r.m_uMissingBytes, o.uBytes);
            EXPECT_EQ(r.m_uMissingNodes, o.uNodes);
            EXPECT_FALSE(r.IsComplete());
        }
    }
}

// Claims that no bytes stand behind cost no memory.
TEST(DgraphLimits, ClaimsWithoutBytesCostNothing) {
    const std::string sSkipped = Exceeded(LIMIT_SLOTS, 1 << 20);
    const std::string sText = Exceeded(LIMIT_TEXT_BYTES, 1 << 30);
    const std::string sEnd =
        "Dgraph_LoadDGraph: Input stream is corrupted! Empty path for node read.";
    const Pair aCases[] = {
        {Document(1, Open("a[2000000000]", 0)), sSkipped},
        {Document(1, Open("a[2147483647]", 0)), sSkipped},
        {Document(2, Open("a[1048576]", 0) + Open("a[1048578]", 0)), sSkipped},
        {Document(1, I32(MOST) + "a[0]"), sText},
        {Document(1, I32(1 << 30) + "a[0"), BAD_STEP + "Missing ']' after index"},
        {Document(1, Leaf("a[0]", 5, I32(MOST) + "x")), sText},
        {Document(1, Leaf("a[0]", 5, I32(1 << 30) + "x")), "Root(a:'x')"},
        {Document(1, Leaf("a[0]", 8, I32(MOST) + "x")), sText},
        {Document(1, Leaf("a[0]", 7, Block("t") + I32(1 << 30) + ".")), "Root(a->/)"},
        {Document(MOST, ""), sEnd},
        {Document(MOST, Repeat(Open("a[0]", MOST), 3)), sEnd},
    };
    for (const auto& o : aCases) {
        SCOPED_TRACE(o.second);
        const Mem_Probe oProbe;
        EXPECT_EQ(Load(o.first), o.second);
        EXPECT_LT(Mem_Probe::Peak(), std::size_t{33} << 20);
    }
    const Mem_Probe oProbe;
    const Data oTree = LoadTree(Document(1, Leaf("a[0]", 8, I32(1 << 30) + "x")));
    EXPECT_LT(BlockOf(oTree.GetNthSucc(0)).size(), 1u << 20);
}

// Out of order in a large group: nothing may be sorted record by record.
TEST(DgraphLimits, ALargeGroupOutOfOrder) {
    constexpr int COUNT = 150000;
    std::string sRecords;
    for (int i = 0; i < COUNT; ++i) sRecords += Leaf(i % 2 != 0 ? "a[0]" : "b[0]", 1, I32(i));
    const Data oTree = LoadTree(Document(COUNT, sRecords));
    EXPECT_EQ(oTree.GetNthSucc("a", COUNT / 2 - 1).GetValInt(), COUNT - 1);
    EXPECT_EQ(oTree.GetNthSucc(COUNT / 2).GetValInt(), 0);
}

// A predecessor has 24 bits: what lies beyond is refused, never cut off.
TEST(DgraphLimits, ParentsBeyondTheirRangeAreRefused) {
    const Limits oLimits = Limits::Trusted();
    const std::string sBytes = Document(1, Open("x[16777213]", 1) + Open("y[0]", 0));
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Data oTree;
    EXPECT_EQ(Raised([&] { Dgraph_LoadDGraph(oTree, oBuf, oLimits); }),
              "assertion failed: uParent + 1 < 0xFFFFFF\n");
}

}  // namespace
}  // namespace vok
