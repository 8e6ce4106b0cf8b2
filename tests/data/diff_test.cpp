// Comparison of trees.
#include "vok/data/diff.h"

#include <bit>
#include <cmath>
#include <functional>

#include "tests/support.h"

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

}  // namespace
}  // namespace vok
