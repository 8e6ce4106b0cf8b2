// Small inputs that want to cost much, in every form and wrapping: none gets more than its share of
// work and memory. And large ones that mean well: they load.
#include <functional>

#include "tests/dgraph/dgraph_support.h"

namespace vok {
namespace {

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
