// Evaluation of paths: a table on one tree, and a naive evaluator on random ones.
#include <functional>
#include <set>

#include "tests/support.h"
#include "vok/data/xpath.h"

namespace vok {
namespace {

// The paths of the nodes that a path selects, in their order, each followed by a blank.
std::string Selected(const Data& oFrom, const char* sPath) {
    const Data_NodeSet oSet = oFrom.GetNodeSet(sPath);
    std::string sAll;
    for (std::size_t u = 0; u < oSet.Size(); ++u)
        sAll += oSet.GetNth(u).GetPath().CStr() + std::string(" ");
    return sAll;
}

class Paths : public ::testing::Test {
  protected:
    //  0 /   1 a   2 a   3 a   4 a/b   5 a/b   6 a[2]/b   7 a/b[1]/a   8 a/b[1]/c   9 b(removed)
    //  10 b   11 b/d (removed)   12 unnamed   13 a/b[1]/c/b
    void SetUp() override {
        for (const char* sName : {"a", "a", "a"}) oRoot.CreateNewSucc(sName);
        Data oA = oRoot.GetNodeFromID(1);
        oA.CreateNewSucc("b").SetAttVal("x", "1");
        Data oB = oA.CreateNewSucc("b");
        oB.SetAttVal("x", "1");
        oB.SetAttVal("y", "");
        oRoot.GetNodeFromID(3).CreateNewSucc("b").SetAttVal("x", "2");
        oB.CreateNewSucc("a");
        Data oC = oB.CreateNewSucc("c");
        Data oGone = oRoot.CreateNewSucc("b");
        Data oLast = oRoot.CreateNewSucc("b");
        oLast.CreateNewSucc("d").Remove();
        oRoot.CreateNewSucc("");
        oC.CreateNewSucc("b");
        oGone.Remove();
    }
    Data oRoot = NewTree();
};

TEST_F(Paths, Select) {
    constexpr const char* ALL =
        "/ /a[0] /a[1] /a[2] /a[0]/b[0] /a[0]/b[1] /a[2]/b[0] /a[0]/b[1]/a[0] /a[0]/b[1]/c[0] "
        "/b[1] /\b0;[0] /a[0]/b[1]/c[0]/b[0] ";
    const struct {
        u2_t uFrom;
        const char* sPath;
        const char* sSelected;
    } oRows[] = {
        {5, "", "/a[0]/b[1] "},
        {5, ".", "/a[0]/b[1] "},
        {5, "/", "/ "},
        {5, "//", "/ "},
        {5, "..", "/a[0] "},
        {5, "../..", "/ "},
        {5, "./.././../.", "/ "},
        {5, "../b", "/a[0]/b[0] /a[0]/b[1] "},
        {5, "b", ""},
        {5, "/a", "/a[0] /a[1] /a[2] "},
        {5, "/a/", "/a[0] /a[1] /a[2] "},
        {5, "/a//", "/a[0] /a[1] /a[2] "},
        {0, "a[1]", "/a[1] "},
        {0, "a[3]", ""},
        {0, "a[1000000009]", ""},
        {0, "a[*]", "/a[0] /a[1] /a[2] "},
        {0, "*", "/a[0] /a[1] /a[2] /b[1] /\b0;[0] "},
        {0, "./*", "/a[0] /a[1] /a[2] /b[1] /\b0;[0] "},
        {0, "*[0]", "/\b0;[0] "},
        {0, "*[3]", "/a[2] "},
        {0, "b", "/b[1] "},
        {0, "b[0]", ""},  // removed, but it keeps its place
        {0, "b[1]", "/b[1] "},
        {0, "b/d", ""},
        {0, "\b0;", "/\b0;[0] "},
        {0, "[0]", "/\b0;[0] "},
        {0, "nobody", ""},
        {0, "a/b", "/a[0]/b[0] /a[0]/b[1] /a[2]/b[0] "},
        {0, "a[0]/b[1]", "/a[0]/b[1] "},
        {0, "a/b[0]", "/a[0]/b[0] /a[2]/b[0] "},
        {0, "a/*[1]", "/a[0]/b[1] "},
        {4, "//b", "/a[0]/b[0] /a[0]/b[1] /a[2]/b[0] /b[1] /a[0]/b[1]/c[0]/b[0] "},
        {0, "a//b", "/a[0]/b[0] /a[0]/b[1] /a[2]/b[0] /a[0]/b[1]/c[0]/b[0] "},
        {0, "//b//b", "/a[0]/b[1]/c[0]/b[0] "},
        {0, "//a[0]", "/a[0] /a[0]/b[1]/a[0] "},
        {5, ".//a", "/a[0]/b[1]/a[0] "},
        {5, ".//*", "/a[0]/b[1]/a[0] /a[0]/b[1]/c[0] /a[0]/b[1]/c[0]/b[0] "},
        {5, "//.", ALL},  // in the order of ids, whatever the way to them
        {0, ".//./.", ALL},
        {0, "a/b/..", "/a[0] /a[2] "},
        {0, "//c/../a", "/a[0]/b[1]/a[0] "},
        {0, "//*[@x=\"1\"]", "/a[0]/b[0] /a[0]/b[1] "},
        {0, "//*[@x=\"1\"][@y=\"\"]", "/a[0]/b[1] "},
        {0, "//*[@y=\"\"]", "/a[0]/b[1] "},
        {0, "//*[@z=\"\"]", ""},
        {0, "a/b[1][@x=\"1\"]", "/a[0]/b[1] "},
        {0, "a/b[@x=\"1\"][0]", "/a[0]/b[0] "},
        {0, "a/b[0][@x=\"1\"]/nobody", ""},
    };
    for (const auto& oRow : oRows) {
        EXPECT_EQ(Selected(oRoot.GetNodeFromID(oRow.uFrom), oRow.sPath), oRow.sSelected)
            << oRow.uFrom << " " << oRow.sPath;
    }
    // From a removed node nothing but the root is to be seen.
    EXPECT_EQ(Selected(oRoot.GetNodeFromID(9), "."), "");
    EXPECT_EQ(Selected(oRoot.GetNodeFromID(9), "/a[0]"), "/a[0] ");
}

TEST_F(Paths, Fail) {
    for (const char* sPath : {"..", "/..", "a/../..", "//..", ".//.."}) {
        EXPECT_EQ(Raised([&] { (void)oRoot.GetNodeSet(sPath); }), "node has no predecessor\n");
    }
    EXPECT_EQ(Selected(oRoot, "nobody/../.."), "");
    EXPECT_EQ(Raised([&] { (void)oRoot.GetNodeSet("a[x]"); }), "invalid character 'x' after '['\n");
    Limits oLimits;
    oLimits.m_uPathSteps = 45;
    EXPECT_EQ(oRoot.GetNodeSet("//b", oLimits).Size(), 5u);
    EXPECT_EQ(Raised([&] { (void)oRoot.GetNodeSet("//*//*//*", oLimits); }),
              "limit \"path steps\" of 45 exceeded (raise Limits::m_uPathSteps)\n");
    oLimits = Limits::Trusted();
    EXPECT_EQ(oRoot.GetNodeSet("//*//*//*", oLimits).Size(), 3u);
}

TEST_F(Paths, TestOfAStep) {
    Data_Xpath oPath;
    oPath.Parse("name[7][@x=\"1\"][@y=\"\"]");
    EXPECT_TRUE(oRoot.GetNodeFromID(5).Test(oPath(0)));  // name and position are not its matter
    EXPECT_FALSE(oRoot.GetNodeFromID(4).Test(oPath(0)));
    EXPECT_FALSE(Data().Test(oPath(0)));
    Data_XpathStep oStep;
    EXPECT_TRUE(oRoot.Test(oStep));
    EXPECT_FALSE(oRoot.GetNodeFromID(9).Test(oStep));
    oStep.m_oAttName.Add("z");
    oStep.m_oAttVal.Add(nullptr);  // made by hand: a name without a value asks for nothing
    EXPECT_TRUE(oRoot.Test(oStep));
}

// ---- against a naive evaluator ----------------------------------------------

// Follows every way that a path allows, one after the other.
class Naive {
  public:
    Naive(const Data& oFrom, const char* sPath) {
        m_oPath.Parse(sPath);
        Visit(m_oPath.IsAbsolute() ? oFrom.GetRoot() : oFrom, 0, m_oPath.IsDescendantFromRoot());
    }
    [[nodiscard]] Ids Result() const { return {m_oIds.begin(), m_oIds.end()}; }

  private:
    void Visit(Data oNode, std::size_t uStep, bool bDescend) {
        if (oNode.GetType() == Data_Node::Zombi) return;
        if (uStep == m_oPath.Size()) {
            m_oIds.insert(oNode.GetId());
            return;
        }
        const bool bTree = oNode.GetType() == Data_Node::Tree;
        if (bDescend && bTree)
            ForEach(oNode.GetSuccIt(), [&](const Data& o) { Visit(o, uStep, true); });
        const Data_XpathStep& oStep = m_oPath(uStep);
        const auto Go = [&](const Data& o) { Visit(o, uStep + 1, oStep.m_bDescendant); };
        if (oStep.m_eKind == Data_XpathStep::Self) return Go(oNode);
        if (oStep.m_eKind == Data_XpathStep::Parent) {
            oNode.SetToPred();
            return Go(oNode);
        }
        if (!bTree) return;
        ForEach(oStep.m_bAnyName ? oNode.GetSuccIt() : oNode.GetSuccIt(oStep.m_sName),
                [&](const Data& o) {
                    if (oStep.m_iIndex >= 0 && m_uPos != static_cast<u2_t>(oStep.m_iIndex)) return;
                    if (o.Test(oStep)) Go(o);
                });
    }
    template <class F>
    void ForEach(Data_SuccIt oIt, F&& oBody) {
        for (; oIt.Pos() < oIt.Size(); oIt.Advance()) {
            m_uPos = oIt.Pos();
            oBody(oIt.GetData());
        }
    }

    Data_Xpath m_oPath;
    std::set<u2_t> m_oIds;
    u2_t m_uPos = 0;
};

std::string RandomPath(std::mt19937& oRandom) {
    static const char* const STEPS[] = {
        "a", "b", "c", "*", ".", "..", "a[0]", "b[1]", "*[2]", "*[@x=\"1\"]", "a[@x=\"0\"][0]",
        "d"};
    static const char* const SEPARATORS[] = {"/", "/", "//"};
    static const char* const STARTS[] = {"", "", "/", "//"};
    std::string sPath = STARTS[Below(oRandom, 4)];
    for (u2_t u = Below(oRandom, 5) + 1; u > 0; --u) {
        sPath += STEPS[Below(oRandom, std::size(STEPS))];
        if (u > 1 || Below(oRandom, 4) == 0) sPath += SEPARATORS[Below(oRandom, 3)];
    }
    return sPath;
}

TEST(NodeSet, SameAsTheNaiveWay) {
    unsigned uRaised = 0;
    unsigned uFound = 0;
    for (unsigned uSeed = 1; uSeed <= 60; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        Data oRoot = NewTree();
        Grow(oRoot, oRandom, 2 + Below(oRandom, 40), {"a", "b", "c", "a"});
        for (u2_t u = 1; u < oRoot.GetNodes(); ++u) {
            Data oNode = oRoot.GetNodeFromID(u);
            if (Below(oRandom, 3) == 0) oNode.SetAttVal("x", Below(oRandom, 2) == 0 ? "0" : "1");
            if (Below(oRandom, 12) == 0 && oNode.GetType() != Data_Node::Zombi) oNode.Remove();
        }
        for (unsigned u = 0; u < 60; ++u) {
            const std::string sPath = RandomPath(oRandom);
            const Data oFrom = oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes()));
            Ids oExpected;
            Ids oGot;
            const std::string sExpected =
                Raised([&] { oExpected = Naive(oFrom, sPath.c_str()).Result(); });
            const std::string sGot = Raised([&] { oGot = IdsOf(oFrom.GetNodeSet(sPath.c_str())); });
            ASSERT_EQ(sGot, sExpected) << uSeed << " " << sPath;
            ASSERT_EQ(oGot, oExpected) << uSeed << " " << sPath;
            uRaised += sGot[0] != '(';
            uFound += oGot.size() > 1;
        }
    }
    EXPECT_GT(uRaised, 100u);
    EXPECT_GT(uFound, 200u);
}

TEST(GetPath, LeadsToTheNodeAndNowhereElse) {
    std::mt19937 oRandom(5);
    Data oRoot = NewTree();
    Grow(oRoot, oRandom, 400, {"a", "b.c", "", "ä/ö", "*"});
    for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
        const Str oPath = oRoot.GetNodeFromID(u).GetPath();
        ASSERT_EQ(IdsOf(oRoot.GetNodeFromID(7).GetNodeSet(oPath.CStr())), (Ids{u}));
    }
    // Below a removed node there is no way any more, to the node itself there is its old one.
    const Data oTop = oRoot.CreateNewSucc("top");
    Data oDown = oRoot.GetCheckedSucc("top");
    oDown.SetToNewSucc("down");
    oDown.GetPred().Remove();
    EXPECT_EQ(oTop.GetPath(), Str("/top[0]"));
    EXPECT_EQ(Raised([&] { (void)oDown.GetPath(); }), "try to access deleted node\n");
    oDown.ClearVal();
    oDown.SetToNewSucc("further");
    EXPECT_EQ(Raised([&] { (void)oDown.GetPath(); }), "try to access deleted node\n");
    EXPECT_EQ(oDown.NodeDepth(), 2);
}

}  // namespace
}  // namespace vok
