// SPDX-License-Identifier: MIT
// Comparison of trees.
#include "vok/compare/diff.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <functional>
#include <numeric>

#include "tests/support.h"
#include "vok/data/builder.h"

namespace vok {
namespace {

// Every difference as "what path@attribute", at most uMost of them.
Texts Differences(const Data& oA, const Data& oB, unsigned uMost = 1000) {
    Texts oFound;
    const u3_t uCount = Data::Diff(oA, oB, [&](const Data_Difference& o) {
        std::string s = Data_Difference::WhatName(o.m_eWhat) + std::string(" ") + o.m_sPath;
        if (o.m_sAttribute != nullptr) s += std::string("@") + o.m_sAttribute;
        EXPECT_EQ(o.m_oA.IsNode(), o.m_eWhat != Data_Difference::OnlyInB);
        EXPECT_EQ(o.m_oB.IsNode(), o.m_eWhat != Data_Difference::OnlyInA);
        oFound.push_back(s);
        return oFound.size() < uMost;
    });
    EXPECT_EQ(uCount, oFound.size());
    EXPECT_EQ(Data::Equal(oA, oB), oFound.empty());
    const bool bBoth = oA.IsNode() && oB.IsNode();
    EXPECT_EQ(bBoth ? oA.Hash() == oB.Hash() : oFound.empty(), oFound.empty());
    return oFound;
}

Data Sample() {
    Data oRoot = NewTree();
    for (const char* sPath : {"a", "list/i[0]", "list/i[1]", "list/i[2]/deep", "z"}) {
        oRoot.CreateNode(sPath).SetValStr("x");
    }
    oRoot.CreateNode("a").SetAttVal("k", "v");
    oRoot.CreateNode("link").SetValLink(oRoot.CreateNode("list/i[2]"));
    return oRoot;
}

TEST(Diff, FindsWhatWasChanged) {
    const auto At = [](Data& o, const char* sPath) { return o.GetNodeSet(sPath).GetNth(0); };
    const std::pair<std::function<void(Data&)>, Texts> CASES[] = {
        {[](Data&) {}, {}},
        {[](Data& o) { o.SetRootName("other"); }, {"name /"}},
        {[&](Data& o) { At(o, "z").SetValStr("y"); }, {"value /z[0]"}},
        {[&](Data& o) { At(o, "z").SetValInt(1); }, {"type /z[0]"}},
        {[&](Data& o) { At(o, "z").ClearVal(), At(o, "z").CreateNewSucc("n"); }, {"type /z[0]"}},
        {[&](Data& o) { At(o, "a").SetAttVal("k", "w"); }, {"attribute /a[0]@k"}},
        {[&](Data& o) { At(o, "a").SetAttVal("k", nullptr), At(o, "a").SetAttVal("b", ""); },
         {"attribute /a[0]@b", "attribute /a[0]@k"}},
        {[&](Data& o) { At(o, "list/i[0]").Remove(); },
         {"type /list[0]/i[1]", "only in A /list[0]/i[2]", "value /link[0]"}},
        {[](Data& o) { o.CreateNode("list/i[4]"), o.CreateNode("list/h"); },
         {"only in B /list[0]/h[0]", "only in B /list[0]/i[3]"}},
        {[](Data& o) { o.CreateNewSucc("b/c"); }, {"only in B /b\b47;c[0]"}},
        {[&](Data& o) { At(o, "link").SetValLink(At(o, "list/i[1]")); }, {"value /link[0]"}},
        {[&](Data& o) { At(o, "link").SetValLink(Data()); }, {"value /link[0]"}},
        {[&](Data& o) { At(o, "list").RemoveSuccs(); },
         {"only in A /list[0]/i[0]", "only in A /list[0]/i[1]", "only in A /list[0]/i[2]",
          "value /link[0]"}},
        // Not to be seen: ids, gaps, the order of attributes, texts that are not used.
        {[](Data& o) { o.CreateNode("list/i[9]").Remove(), o.Insert("b", 0).Remove(); }, {}},
        {[&](Data& o) { At(o, "a").MoveTo(At(o, "list")), At(o, "list/a").MoveTo(o); }, {}},
        {[](Data& o) { o.CreateNewSucc("q").Remove(), o.Shrink(); }, {}},
    };
    const Data oBefore = Sample();
    for (const auto& [oChange, oFound] : CASES) {
        Data oAfter = Sample();
        oChange(oAfter);
        EXPECT_EQ(Differences(oBefore, oAfter), oFound);
        EXPECT_EQ(Differences(oAfter, oBefore).size(), oFound.size());
        EXPECT_EQ(Differences(oBefore, oAfter, 1).size(), oFound.empty() ? 0u : 1u);
        EXPECT_EQ(Differences(oAfter, oAfter.MkClone()), Texts());
    }
}

// Values are compared bit for bit; a pair of different ones per row.
TEST(Diff, EveryKindOfValue) {
    using Set = std::function<void(Data)>;
    const std::pair<Set, Set> PAIRS[] = {
        {[](Data o) { o.SetValBool(true); }, [](Data o) { o.SetValBool(false); }},
        {[](Data o) { o.SetValInt(1); }, [](Data o) { o.SetValInt(1, Data_Node::Char); }},
        {[](Data o) { o.SetValDbl(0.0); }, [](Data o) { o.SetValDbl(-0.0); }},
        {[](Data o) { o.SetValDbl(std::nan("1")); }, [](Data o) { o.SetValDbl(std::nan("2")); }},
        {[](Data o) { o.SetValLng(1); }, [](Data o) { o.SetValLng(u3_t{1} << 32); }},
        {[](Data o) { o.SetValStr(""); }, [](Data o) { o.ClearVal(); }},
        {[](Data o) { o.SetValBin("a\0b", 3); }, [](Data o) { o.SetValBin("a\0c", 3); }},
        {[](Data o) { o.SetValBin("a", 1); }, [](Data o) { o.SetValBin("a", 0); }},
        {[](Data o) { o.SetValQuad(1, 2, 3, 4); }, [](Data o) { o.SetValQuad(1, 2, 3, 5); }},
        {[](Data o) { o.SetValQuad(1, 2, 3, 4); }, [](Data o) { o.SetValQuad(0, 2, 3, 4); }},
    };
    for (const auto& [oFirst, oSecond] : PAIRS) {
        const Data oA = NewTree(), oB = NewTree(), oC = NewTree();
        oFirst(oA), oSecond(oB), oFirst(oC);
        EXPECT_TRUE(Data::Equal(oA, oC));
        EXPECT_FALSE(Data::Equal(oA, oB));
        EXPECT_EQ(oA.Hash(), oC.Hash());
        EXPECT_NE(oA.Hash(), oB.Hash());
    }
}

TEST(Diff, SubtreesAndCursors) {
    Data oRoot = NewTree();
    Data oX = oRoot.CreateNewSucc("x"), oY = oRoot.CreateNewSucc("x");
    Data oOut = oRoot.CreateNewSucc("out");
    for (Data o : {oX, oY}) {
        const Data oTarget = o.CreateNewSucc("t");
        o.CreateNewSucc("in").SetValLink(oTarget);
        o.CreateNewSucc("up").SetValLink(o);
        o.CreateNewSucc("out").SetValLink(oOut);
    }
    EXPECT_EQ(Differences(oX, oY), Texts());
    EXPECT_EQ(Differences(oX, oX.MkCopy(oOut)), Texts());
    // In another tree the target outside has the same path, or has not.
    Data oOther = oRoot.MkClone();
    EXPECT_EQ(Differences(oX, oOther.GetNthSucc("x", 1)), Texts());
    oOther.Insert("out", 0);
    EXPECT_EQ(Differences(oX, oOther.GetNthSucc("x", 1)), (Texts{"value /out[0]"}));
    // An unnamed root against its copy, and as it comes back from a document.
    Data oAside = NewTree();
    EXPECT_EQ(Differences(oRoot, oRoot.MkCopy(oAside)), Texts());
    oOther = oRoot.MkClone();
    oOther.SetRootName("Root");
    EXPECT_EQ(Differences(oRoot, oOther), Texts());
    oOther.SetRootName("");
    EXPECT_EQ(Differences(oRoot, oOther), Texts());
    oOut.Remove();
    EXPECT_EQ(Differences(oX, oX.MkClone()), Texts());  // both lead to nothing
    const Data oNone;
    EXPECT_EQ(Differences(oX, oNone), (Texts{"only in A /"}));
    EXPECT_EQ(Differences(oNone, oX), (Texts{"only in B /"}));
    EXPECT_TRUE(Data::Equal(oNone, oNone));
    EXPECT_EQ(Raised([&] { (void)Data::Equal(oX, oOut); }), DELETED);
}

// Long lists in which everything differs take no longer than their length asks for.
TEST(Diff, CountsOnFromTheLastDifference) {
    Data oA = NewTree(), oB = NewTree();
    const Data_Key oKeyA = oA.MakeKey("i"), oKeyB = oB.MakeKey("i");
    for (i2_t i = 0; i < 200000; ++i) oA.AddInt(oKeyA, i), oB.AddInt(oKeyB, i + 1);
    const Texts oFound = Differences(oA, oB, 1000000);
    EXPECT_EQ(oFound.size(), 200000u);
    EXPECT_EQ(oFound.back(), "value /i[199999]");
}

// ---- aligned -----------------------------------------------------------------

Data Loaded(const std::string& sXml) {
    Data oTree;
    oTree.LoadFromXMLString("<R xmlns:dt='urn:schemas-microsoft-com:datatypes'>" + sXml + "</R>",
                            0);
    return oTree.GetRoot();
}

// Every difference as "what path in A > path in B@attribute".
Texts Aligned(const Data& oA, const Data& oB, const Data_DiffOptions& oOptions = {}) {
    Texts oFound;
    Data::Diff(oA, oB, oOptions, [&](const Data_Difference& o) {
        std::string s = Data_Difference::WhatName(o.m_eWhat) + std::string(" ");
        if (o.m_oA.IsNode()) s += o.m_sPath;
        if (o.m_sPathB != nullptr && (o.m_sPathB != std::string(o.m_sPath) || !o.m_oA.IsNode())) {
            s += std::string(">") + o.m_sPathB;
        }
        if (o.m_sAttribute != nullptr) s += std::string("@") + o.m_sAttribute;
        oFound.push_back(s);
        return true;
    });
    return oFound;
}

std::string Order(int iId, int iPrice, const char* sMore = "") {
    const std::string sId = std::to_string(iId);
    return "<o id='" + sId + "'><id>" + sId + "</id><price dt:dt='i4'>" + std::to_string(iPrice) +
           "</price><side>buy</side><state>open</state>" + sMore + "</o>";
}

TEST(Diff, AlignsRuns) {
    const std::string s1 = Order(1, 10), s2 = Order(2, 20), s3 = Order(3, 30), s4 = Order(4, 40);
    const std::string sBare = "<o><price dt:dt='i4'>1</price></o>";
    struct Case {
        std::string sA, sB;
        Texts oFound;
        Data_DiffOptions oOptions = {};
    };
    const Case CASES[] = {
        {s1 + s2 + s3, s1 + s3, {"only in A /o[1]"}},
        {s1 + s3, s1 + s2 + s3, {"only in B >/o[1]"}},
        {s1 + s2 + s3, s1 + Order(2, 21) + s3, {"value /o[1]/price[0]"}},
        // One is gone, and the next one was changed.
        {s1 + s2 + s3 + s4,
         s1 + Order(3, 31) + s4,
         {"only in A /o[1]", "value /o[2]/price[0]>/o[1]/price[0]"}},
        {s1 + s2 + s3, Order(3, 31) + s1 + s2, {"only in B >/o[0]", "only in A /o[2]"}},
        {s1 + s2 + s3, s3 + s1 + s2, {"moved /o[2]>/o[0]"}},
        {s1 + s2 + s3,
         Order(3, 31) + s1 + s2,
         {"moved /o[2]>/o[0]", "value /o[2]/price[0]>/o[0]/price[0]"},
         {{"@id"}, {}, 0}},
        {s1 + s2 + s3,
         Order(3, 31) + s1 + s2,
         {"moved /o[2]>/o[0]", "value /o[2]/price[0]>/o[0]/price[0]"},
         {{"none", "id"}, {}, 0}},
        // A key has one partner only, and none where it is new.
        {s1 + s2, s1 + Order(3, 20), {"only in B >/o[1]", "only in A /o[1]"}, {{"id"}, {}, 0}},
        {s1 + Order(1, 11) + s2,
         s2 + Order(1, 12) + s1,
         {"moved /o[2]>/o[0]", "value /o[0]/price[0]>/o[1]/price[0]",
          "value /o[1]/price[0]>/o[2]/price[0]"},
         {{"@id"}, {}, 0}},
        // Those without a key go by what they hold.
        {s1 + sBare + s2, s2 + sBare, {"only in A /o[0]", "moved /o[1]"}, {{"@id"}, {}, 0}},
        // What is ignored.
        {s1 + s2, s1 + Order(2, 21, "<t>x</t>"), {}, {{}, {"//price", "o/t"}, 0}},
        {s1 + s2, Order(1, 12) + "<n/>" + s2, {"only in B >/n[0]"}, {{}, {"/o/price"}, 0}},
        {"<o id='1'/><o id='2'/>",
         "<o id='2'/><o id='3' k=''/>",
         {"attribute /o[1]@k"},
         {{}, {"//@id"}, 0}},
        {"<o id='1'/>", "<o id='2' k='1'/>", {"attribute /o[0]@k"}, {{}, {"//o/@id"}, 0}},
        // Reals.
        {"<r dt:dt='r8'>1</r><r dt:dt='r8'>2</r><r dt:dt='r8'>3</r>",
         "<r dt:dt='r8'>1.05</r><r dt:dt='r8'>2.96</r>",
         {"only in A /r[1]"},
         {{}, {}, 0.1}},
        {"<r dt:dt='r4'>1</r>", "<r dt:dt='r4'>1.2</r>", {"value /r[0]"}, {{}, {}, 0.1}},
        {"<r dt:dt='r8'>NaN</r>", "<r dt:dt='r8'>1</r>", {"value /r[0]"}, {{}, {}, 0.1}},
        // Short runs of values.
        {"<v>a</v><v>b</v><v>c</v>", "<v>b</v><v>x</v>", {"only in A /v[0]", "value /v[2]>/v[1]"}},
        {"<a>1</a><c>1</c>",
         "<b>1</b><c>2</c>",
         {"only in A /a[0]", "only in B >/b[0]", "value /c[0]"}},
    };
    for (const Case& o : CASES) {
        const Data oA = Loaded(o.sA), oB = Loaded(o.sB);
        EXPECT_EQ(Aligned(oA, oB, o.oOptions), o.oFound) << o.sA << '\n' << o.sB;
        // What a patch makes has no differences left.
        const Data oPatched = oA.ApplyPatch(Data::MakePatch(oA, oB, o.oOptions));
        EXPECT_EQ(Aligned(oPatched, oB, o.oOptions), Texts()) << o.sA << '\n' << o.sB;
        EXPECT_EQ(Fault(oPatched), "");
    }
    const Data oTree = Loaded(s1);
    for (const char* sKey : {"", "@", "/id", "a//b", "..", "*", "a[@id=\"1\"]", "a/@"}) {
        EXPECT_NE(Failing([&] { Aligned(oTree, oTree, {{sKey}, {}, 0}); }), "") << sKey;
    }
    EXPECT_EQ(Failing([&] {
                  Aligned(oTree, oTree, {{"a/*"}, {}, 0});
              }),
              "key \"a/*\" is no path of names");
}

// A link is the same where it leads to what its target has become.
TEST(Diff, AlignedLinks) {
    Data oA = Sample();
    Data oB = Sample();
    oB.GetNodeSet("list/i[0]").GetNth(0).Remove();
    EXPECT_EQ(Aligned(oA, oB), (Texts{"only in A /list[0]/i[1]"}));
    oB.GetNodeSet("link").GetNth(0).SetValLink(oB.GetNodeSet("list/i[1]").GetNth(0));
    EXPECT_EQ(Aligned(oA, oB), (Texts{"only in A /list[0]/i[1]", "value /link[0]"}));
}

// ---- what aligning takes ---------------------------------------------------------

// Successors of one name with a successor and an attribute each, in an order.
Data RunOf(const std::vector<i2_t>& oOrder, bool bSubtrees) {
    Data oTree = NewTree();
    for (const i2_t i : oOrder) {
        if (!bSubtrees) {
            oTree.AddInt("o", i);
            continue;
        }
        Data o = oTree.CreateNewSucc("o");
        o.AddInt("id", i);
        o.AddStr("side", "buy");
    }
    return oTree;
}

TEST(Diff, LongRuns) {
    constexpr i2_t COUNT = 25000 * LARGE;
    std::vector<i2_t> oAll(COUNT);
    std::iota(oAll.begin(), oAll.end(), 0);
    const auto oChanged = [&](const std::function<void(std::vector<i2_t>&)>& oChange) {
        std::vector<i2_t> o = oAll;
        oChange(o);
        return o;
    };
    using Ints = std::vector<i2_t>;
    struct Case {
        const char* sWhat;
        std::function<void(Ints&)> oChange;
        std::size_t uMost;  // differences
        Data_DiffOptions oOptions = {};
    };
    const Case CASES[] = {
        {"one out", [](Ints& o) { o.erase(o.begin() + COUNT / 2); }, 1},
        {"one in", [](Ints& o) { o.insert(o.begin() + COUNT / 2, -1); }, 1},
        {"every tenth out", [](Ints& o) { std::erase_if(o, [](i2_t i) { return i % 10 == 5; }); },
         COUNT / 10},
        {"the beginning to the end",
         [](Ints& o) { std::rotate(o.begin(), o.begin() + COUNT / 100, o.end()); }, COUNT / 50},
        {"all others, one out",
         [](Ints& o) {
             o.erase(o.begin() + 7);
             for (i2_t& i : o) i += COUNT;
         },
         2 * COUNT + 1},
        {"reversed", [](Ints& o) { std::reverse(o.begin(), o.end()); }, COUNT},
        {"shuffled", [](Ints& o) { std::shuffle(o.begin(), o.end(), std::mt19937(1)); }, COUNT},
        {"shuffled, by key",
         [](Ints& o) { std::shuffle(o.begin(), o.end(), std::mt19937(1)); },
         COUNT,
         {{"id"}, {}, 0}},
        // Much of the same.
        {"twos and threes",
         [](Ints& o) {
             for (i2_t& i : o) i = i % 2 + (i % 3 == 0);
         },
         COUNT * 2},
    };
    for (const Case& o : CASES) {
        for (const bool bSubtrees : {true, false}) {
            const Data oA = RunOf(oAll, bSubtrees);
            const Data oB = RunOf(oChanged(o.oChange), bSubtrees);
            const auto oStart = std::chrono::steady_clock::now();
            const u3_t uFound = Data::Diff(oA, oB, o.oOptions, [](const auto&) { return true; });
            const std::chrono::duration<double> oTook = std::chrono::steady_clock::now() - oStart;
            EXPECT_LE(uFound, o.uMost) << o.sWhat << bSubtrees;
            // Each with each would be 10^10, or 10^9.
            EXPECT_LT(oTook.count(), 30) << o.sWhat << bSubtrees;
            if (std::getenv("VOK_TIMES") != nullptr) {
                std::printf("%-26s %d %8.3f s %llu\n", o.sWhat, bSubtrees, oTook.count(),
                            static_cast<unsigned long long>(uFound));
            }
            if (!bSubtrees) continue;
            const Data oPatch = Data::MakePatch(oA, oB, o.oOptions);
            EXPECT_TRUE(Data::Equal(oA.ApplyPatch(oPatch), oB)) << o.sWhat;
        }
    }
}

// Every level differs: paths from the top would be the square of it.
TEST(Diff, DeepTrees) {
    constexpr unsigned LEVELS = 250000 * LARGE;
    Data oA = NewTree(), oB = NewTree();
    for (Data* pTree : {&oA, &oB}) {
        Data_Builder oBuilder(*pTree);
        for (unsigned u = 0; u < LEVELS; ++u) {
            oBuilder.AddInt("i", pTree == &oB && u % 4 == 0);
            oBuilder.Open("d");
        }
        oBuilder.AddStr("last", pTree == &oB ? "b" : "a");
    }
    const Data oPatch = Data::MakePatch(oA, oB);
    EXPECT_LT(oPatch.GetNodes(), 2 * LEVELS);
    EXPECT_LT(oPatch.TextBytes(), 40 * LEVELS);
    EXPECT_TRUE(Data::Equal(oA.ApplyPatch(oPatch), oB));
    oB.RemoveSuccs();
    EXPECT_TRUE(Data::Equal(oB.ApplyPatch(Data::MakePatch(oB, oA)), oA));
    EXPECT_TRUE(Data::Equal(oA.ApplyPatch(Data::MakePatch(oA, oB)), oB));
}

}  // namespace
}  // namespace vok
