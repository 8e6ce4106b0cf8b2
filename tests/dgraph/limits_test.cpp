// SPDX-License-Identifier: MIT
// What loading may cost, and what it says about where it stopped. Small inputs that want to cost
// much, in every form and wrapping: none gets more than its share of work and memory. And large
// ones that mean well: they load.
#include <algorithm>
#include <functional>
#include <utility>

#include "tests/dgraph/dgraph_support.h"
#include "vok/dgraph/access.h"

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
        {Document(1000, Repeat(Open("a[0]", 1000), 20'000)), sEnd},
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

#ifndef _WIN32
// A stream in which something happens before the last bytes are read.
class Hooked_Stream : public Drop_Stream {
  public:
    Hooked_Stream(std::string_view sBytes, std::size_t uRest, std::function<void()> oHook)
        : Drop_Stream(sBytes), m_uRest(uRest), m_oHook(std::move(oHook)) {}

    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        if (m_sBytes.size() == m_uRest) std::exchange(m_oHook, [] {})();
        return Drop_Stream::Read(pTarget, uCount, bAllowShort);
    }

  private:
    const std::size_t m_uRest;
    std::function<void()> m_oHook;
};

// A predecessor has 28 bits: what lies beyond is refused, never cut off.
TEST(DgraphLimits, ParentsBeyondTheirRangeAreRefused) {
    constexpr u2_t BOUND = Data_Node::CUT_LOOSE - 1;  // the first id that takes no successors
    const std::string sRest = Open("x[0]", 1) + Open("y[0]", 0);
    const std::string sBytes = Document(1, sRest);
    const Limits oLimits = Limits::Trusted();
    for (const u2_t uId : {BOUND - 1, BOUND}) {
        Data oTree;
        // Records that nobody has written cost no memory: empty nodes that hang nowhere.
        Hooked_Stream oIn(sBytes, sRest.size(), [&] {
            Data_Base& b = *dgraph::Access::BaseOf(oTree);
            b.m_oNode.Reserve(std::size_t{BOUND} + 4096);
            b.m_oNode.SetSize(uId);
            b.m_uIndexed = uId;
        });
        EXPECT_EQ(Failing([&] { Dgraph_LoadDGraph(oTree, oIn, oLimits); }),
                  uId == BOUND ? "assertion failed: uParent + 1 < 0xFFFFFFF" : "");
        const Data oX = oTree.GetNthSucc("x", 0);
        EXPECT_EQ(oX.GetId(), uId);
        EXPECT_EQ(oX.GetNthSucc("y", 0).IsNode(), uId != BOUND);
    }
}
#endif

constexpr Limit WORK{&Limits::m_uWorkPerByte, "work for a byte", "m_uWorkPerByte"};
constexpr Limit MEMORY{&Limits::m_uMemoryPerByte, "memory for a byte", "m_uMemoryPerByte"};

// Records b[0], b[1], ... with an attribute each.
std::string Wide(int iCount) {
    std::string s;
    for (int i = 0; i < iCount; ++i) {
        s += Open("b[" + std::to_string(i) + "][@a=\"1\"]", 0);
    }
    return s;
}

// A thousand nodes of one name, each of them looked at again for every other step.
std::string LinkAlong(const std::string& sPath) {
    return Document(1001, Link("a[0]", "t", sPath) + Wide(1000));
}

// uCount nodes one below the other, then as many links to the last one.
std::string DeepXml(unsigned uLevels, unsigned uLinks) {
    return "<r>" + Repeat("<a>", uLevels) + "<a CDNodeID='ID1'/>" + Repeat("</a>", uLevels) +
           Repeat("<b CDNodeIDREF='ID1'/>", uLinks) + "</r>";
}
std::string DeepDgraph(int iLevels, int iLinks) {
    std::string s;
    for (int i = 0; i < iLevels; ++i) s += Open("a[0]", 1);
    s += Open("t[0]", 0);
    for (int i = 0; i < iLinks; ++i) s += Link("b[" + std::to_string(i) + "]", "t", "//t");
    return Document(iLinks + 1, s);
}

// A text of a megabyte that many nodes have, or a name.
Data Shared(bool bName) {
    const std::string sLong(1'000'000, 'x');
    Data oRoot = NewTree();
    const Data_Key oKey = oRoot.MakeKey(bName ? sLong.c_str() : "n");
    Data oFirst = oRoot.CreateNewSucc(oKey);
    if (!bName) oFirst.SetValStr(sLong);
    for (int i = 0; i < 5000; ++i) {
        Data oNext = oRoot.CreateNewSucc(oKey);
        Data::CopyVal(oFirst, oNext);
    }
    return oRoot;
}

std::string Numbered(unsigned uCount, const std::string& sBefore, const std::string& sBehind) {
    std::string s;
    for (unsigned u = 0; u < uCount; ++u) s += sBefore + std::to_string(u) + sBehind;
    return s;
}

// XML of lines that differ in a number only.
std::string Log(unsigned uLines) {
    return "<log>" + Numbered(uLines, "<e n='", "'>" + std::string(860, 't') + "</e>\n") + "</log>";
}

struct Case {
    const char* sWhat;
    std::function<std::string()> oMake;
    std::string sSaid;  // the limit that refuses it, or nothing
};

const Case HOSTILE[] = {
    {"predicates", [] { return LinkAlong("b" + Repeat("[@a=\"1\"]", 40'000)); },
     Exceeded(WORK, 100)},
    {"predicates, compressed",
     [] { return Compressed(LinkAlong("b" + Repeat("[@a=\"1\"]", 400'000))); },
     Exceeded(WORK, 100)},
    {"up and down", [] { return LinkAlong(Repeat("*/../", 200'000) + "a"); }, Exceeded(WORK, 100)},
    {"everything again", [] { return LinkAlong(Repeat("//*//..", 200'000)); }, Exceeded(WORK, 100)},
    {"slots", [] { return Document(1, Open("a[1000000]", 0)); }, ""},
    {"too many slots", [] { return Document(1, Open("a[1100000]", 0)); },
     Exceeded(LIMIT_SLOTS, 1 << 20)},
    {"elements, compressed", [] { return Compressed("<r>" + Repeat("<a/>", 4'000'000) + "</r>"); },
     Exceeded(MEMORY, 200)},
    {"elements, zipped", [] { return Zipped({"<r>" + Repeat("<a/>", 3'000'000) + "</r>"}); },
     Exceeded(MEMORY, 200)},
    {"names of elements", [] { return Compressed("<r>" + Numbered(200'000, "<a", "/>") + "</r>"); },
     ""},
    {"names of attributes",
     [] { return Compressed("<r " + Numbered(200'000, "a", "='' ") + "/>"); }, ""},
    {"records",
     [] {
         return Compressed(
             Document(3'000'000, Repeat(Open("a[0]", 0) + Open("b[0]", 0), 1'500'000)));
     },
     Exceeded(MEMORY, 200)},
    {"nothing but blanks", [] { return Compressed(std::string(70'000'000, ' ')); },
     Exceeded(MEMORY, 200)},
    {"texts that nodes of a dump share", [] { return DumpOf(Shared(false)); },
     Exceeded(MEMORY, 200)},
    {"names that nodes of a dump share", [] { return DumpOf(Shared(true)); },
     Exceeded(MEMORY, 200)},
    {"links into the depth, by number", [] { return DeepXml(50'000, 50'000); },
     Exceeded(MEMORY, 200)},
    {"links into the depth, by search", [] { return DeepDgraph(10'000, 20'000); },
     Exceeded(WORK, 100)},
};

TEST(Hostile, NothingCostsMoreThanItsShare) {
    const Scratch_Dir oDir;
    for (const Case& o : HOSTILE) {
        SCOPED_TRACE(o.sWhat);
        const std::string sBytes = o.oMake();
        const Mem_Probe oProbe;
        Data oTree;
        Load_Report oReport;
        EXPECT_EQ(Failing([&] {
                      Dgraph_LoadFromBuffer(oTree, sBytes.data(), sBytes.size(), {}, &oReport);
                  }),
                  o.sSaid);
        EXPECT_LE(Mem_Probe::Peak(), (std::size_t{64} << 20) + 200 * sBytes.size());
        // What goes beyond the limit is counted, and then not done.
        constexpr u3_t ONE_STEP = 1 << 20;
        EXPECT_LE(oReport.m_uWork, Limits::FREE_WORK + 100 * sBytes.size() + ONE_STEP);
    }
}

// Large arrays grow in large steps, and order takes memory in the end: wherever the limit is, it is
// not passed.
TEST(Hostile, NoStepPassesTheLimitOnMemory) {
    const std::string asDocument[] = {
        Compressed(Document(3'000'000, Repeat(Open("a[0]", 0) + Open("b[0]", 0), 1'500'000))),
        Compressed("<r>" + Repeat("<b/><a/>", 1'500'000) + "</r>"),
        Compressed("<r>" + Numbered(1'000'000, "<a", "/>") + "</r>"),
    };
    for (const std::string& sBytes : asDocument) {
        unsigned uRefused = 0;
        for (unsigned u = 6; u <= 1'600; u *= 4) {
            SCOPED_TRACE(u);
            Limits oLimits;
            oLimits.m_uMemoryPerByte = u;
            const Mem_Probe oProbe;
            Data oTree;
            const auto oLoad = [&] {
                Dgraph_LoadFromBuffer(oTree, sBytes.data(), sBytes.size(), oLimits);
            };
            uRefused += Failing(oLoad) == Exceeded(MEMORY, u);
            EXPECT_LE(Mem_Probe::Peak(), Limits::FREE_MEMORY + u * sBytes.size());
        }
        EXPECT_GT(uRefused, 0u);
        EXPECT_LT(uRefused, 5u);
    }
}

TEST(Hostile, LargeOnesThatMeanWellLoad) {
    const std::string sLog = Log(80'000);
    const std::string sPacked = Compressed(sLog);
    EXPECT_GT(sLog.size() / sPacked.size(), 150u);
    EXPECT_LT(sLog.size() / sPacked.size(), 200u);
    Data oTree;
    Load_Report oReport;
    Dgraph_LoadFromBuffer(oTree, sPacked.data(), sPacked.size(), {}, &oReport);
    EXPECT_EQ(oTree.GetNodes(), 80'001u);
    EXPECT_TRUE(oReport.IsComplete());
    const std::string sDeep = DeepDgraph(1'000'000, 0);
    Dgraph_LoadFromBuffer(oTree, sDeep.data(), sDeep.size());
    EXPECT_EQ(oTree.GetNodes(), 1'000'002u);
    const std::string sLinks = Document(
        200'001, Open("a[0]", 0) + [] {
            std::string s;
            for (int i = 0; i < 200'000; ++i)
                s += Link("l[" + std::to_string(i) + "]", "a", "a[0]");
            return s;
        }());
    Dgraph_LoadFromBuffer(oTree, sLinks.data(), sLinks.size());
    EXPECT_EQ(oTree.GetNodes(), 200'002u);
}

}  // namespace
}  // namespace vok
