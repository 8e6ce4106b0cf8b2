// SPDX-License-Identifier: MIT
// Three trees made one.
#include "vok/compare/merge.h"

#include "tests/data/random_tree.h"
#include "tests/support.h"
#include "vok/data/builder.h"

namespace vok {
namespace {

using Pick = Data_MergePick;

Data Loaded(const std::string& sXml) {
    Data oTree;
    oTree.LoadFromXMLString("<R>" + sXml + "</R>", 0);
    return oTree.GetRoot();
}

std::string Xml(const Data& o) {
    Str oText;
    if (o.IsNode()) o.SaveToXMLString(oText, 0);
    return oText.IsEmpty() ? "" : oText.CStr();
}

struct Merged {
    Data oTree;
    Texts oConflicts;  // "path@attribute: what A did, what B did"
};
Merged Merge(const Data& oBase, const Data& oA, const Data& oB, Pick ePick = Pick::None,
             const Data_DiffOptions& oOptions = {}) {
    Merged o;
    o.oTree = Data::Merge(oBase, oA, oB, oOptions, ePick, [&](const Data_Conflict& c) {
        std::string s = c.m_sPath;
        if (c.m_sAttribute != nullptr) s += std::string("@") + c.m_sAttribute;
        o.oConflicts.push_back(s + ": " + Data_Conflict::DidName(c.m_oA.eDid) + ", " +
                               Data_Conflict::DidName(c.m_oB.eDid));
        return o.oConflicts.size() < 1000;
    });
    return o;
}

TEST(Merge, TakesWhatBothHaveDone) {
    const struct {
        const char *sBase, *sA, *sB, *sMerged;
    } CASES[] = {
        {"<a>1</a><b>1</b>", "<a>2</a><b>1</b>", "<a>1</a><b>2</b>", "<a>2</a><b>2</b>"},
        {"<a>1</a>", "<a>2</a>", "<a>2</a>", "<a>2</a>"},
        {"<a k='1' l='1'/>", "<a k='2' l='1' m='3'/>", "<a k='1'/>", "<a k='2' m='3'/>"},
        {"<i>1</i><i>2</i><i>3</i>", "<i>0</i><i>1</i><i>2</i><i>3</i>", "<i>1</i><i>3</i><i>4</i>",
         "<i>0</i><i>1</i><i>3</i><i>4</i>"},
        {"<i>1</i><i>2</i><i>3</i><i>4</i>", "<i>1</i><i>x</i><i>2</i><i>3</i><i>4</i>",
         "<i>1</i><i>3</i><i>y</i><i>4</i>", "<i>1</i><i>x</i><i>3</i><i>y</i><i>4</i>"},
        {"<i>1</i><i>2</i>", "<i>1</i>", "<i>1</i>", "<i>1</i>"},
        {"<i>1</i>", "<i>1</i><i>2</i>", "<i>1</i><i>2</i><i>3</i>", "<i>1</i><i>2</i><i>3</i>"},
        // One moves what the other changes.
        {"<o><k>1</k><l>1</l><p>1</p></o><o><k>2</k><l>2</l></o><o><k>3</k><l>3</l></o>",
         "<o><k>2</k><l>2</l></o><o><k>3</k><l>3</l></o><o><k>1</k><l>1</l><p>1</p></o>",
         "<o><k>1</k><l>1</l><p>2</p></o><o><k>2</k><l>2</l></o><o><k>3</k><l>3</l></o>",
         "<o><k>2</k><l>2</l></o><o><k>3</k><l>3</l></o><o><k>1</k><l>1</l><p>2</p></o>"},
        {"<a/>", "<a><b>1</b></a>", "<a><c>1</c></a>", "<a><b>1</b><c>1</c></a>"},
        {"", "<a CDNodeID='ID1'/><b CDNodeIDREF='ID1'/>", "<c/>",
         "<a CDNodeID='ID1'/><b CDNodeIDREF='ID1'/><c/>"},
        {"", "<a CDNodeID='ID1'/>", "<a CDNodeID='ID1'/><b CDNodeIDREF='ID1'/>",
         "<a CDNodeID='ID1'/><b CDNodeIDREF='ID1'/>"},
        {"<a/><l/>", "<a CDNodeID='ID1'/><l CDNodeIDREF='ID1'/>",
         "<a CDNodeID='ID1'/><l CDNodeIDREF='ID1'/>", "<a CDNodeID='ID1'/><l CDNodeIDREF='ID1'/>"},
    };
    for (const auto& o : CASES) {
        const Data oBase = Loaded(o.sBase), oA = Loaded(o.sA), oB = Loaded(o.sB);
        for (const bool bSwap : {false, true}) {
            const Merged oMerged = bSwap ? Merge(oBase, oB, oA) : Merge(oBase, oA, oB);
            EXPECT_EQ(oMerged.oConflicts, Texts()) << o.sMerged;
            EXPECT_TRUE(oMerged.oTree.IsNode() && Data::Equal(oMerged.oTree, Loaded(o.sMerged)))
                << Xml(oMerged.oTree) << o.sMerged;
        }
    }
}

TEST(Merge, TellsConflicts) {
    const Data_DiffOptions oById{{"@id"}, {}, 0};
    const struct {
        const char *sBase, *sA, *sB;
        Texts oConflicts;
        const char *sWithA, *sWithB;
        Data_DiffOptions oOptions = {};
    } CASES[] = {
        {"<a>1</a>", "<a>2</a>", "<a>3</a>", {"/a[0]: changed, changed"}, "<a>2</a>", "<a>3</a>"},
        {"<a k='1'/>", "<a k='2'/>", "<a/>", {"/a[0]@k: changed, changed"}, "<a k='2'/>", "<a/>"},
        {"<a k='1'/>", "<a k='2' l=''/>", "", {"/a[0]: changed, removed"}, "<a k='2' l=''/>", ""},
        {"<a><b>1</b><c/></a>",
         "",
         "<a><b>2</b><c>x</c></a>",
         {"/a[0]: removed, changed below"},
         "",
         "<a><b>2</b><c>x</c></a>"},
        {"<a><b><c/></b></a>", "<a/>", "<a><b/></a>", {}, "<a/>", "<a/>"},
        {"<a/>",
         "<a>1</a>",
         "<a><b/></a>",
         {"/a[0]: changed, changed below"},
         "<a>1</a>",
         "<a><b/></a>"},
        {"<i>1</i>",
         "<i>1</i><i>2</i>",
         "<i>1</i><i>3</i>",
         {"/i[1]: inserted, inserted"},
         "<i>1</i><i>2</i>",
         "<i>1</i><i>3</i>"},
        {"<i id='1'/>",
         "<i id='1'/><i id='2'>a</i><i id='4'/>",
         "<i id='3'/><i id='1'/><i id='2'>b</i>",
         {"/i[1]: inserted, inserted"},
         "<i id='3'/><i id='1'/><i id='2'>a</i><i id='4'/>",
         "<i id='3'/><i id='1'/><i id='4'/><i id='2'>b</i>",
         oById},
        {"<i id='1'/><i id='2'/><i id='3'/>",
         "<i id='2'/><i id='3'/><i id='1'/>",
         "<i id='2'/><i id='1'/><i id='3'/>",
         {"/i[0]: moved, moved"},
         "<i id='2'/><i id='3'/><i id='1'/>",
         "<i id='2'/><i id='1'/><i id='3'/>",
         oById},
        {"<i id='1'/><i id='2'/><i id='3'/>",
         "<i id='2'/><i id='3'/><i id='1'/>",
         "<i id='2'/><i id='3'/>",
         {"/i[0]: moved, removed"},
         "<i id='2'/><i id='3'/><i id='1'/>",
         "<i id='2'/><i id='3'/>",
         oById},
    };
    for (const auto& o : CASES) {
        const Data oBase = Loaded(o.sBase), oA = Loaded(o.sA), oB = Loaded(o.sB);
        EXPECT_EQ(Merge(oBase, oA, oB, Pick::None, o.oOptions).oTree.IsNode(),
                  o.oConflicts.empty());
        for (const auto& [ePick, sWith] : {std::pair(Pick::A, o.sWithA), {Pick::B, o.sWithB}}) {
            const Merged oMerged = Merge(oBase, oA, oB, ePick, o.oOptions);
            EXPECT_EQ(oMerged.oConflicts, o.oConflicts) << o.sBase << o.sA;
            EXPECT_TRUE(Data::Equal(oMerged.oTree, Loaded(sWith))) << Xml(oMerged.oTree) << sWith;
            EXPECT_EQ(Fault(oMerged.oTree), "");
        }
    }
    Data oBase = Loaded(""), oA = Loaded(""), oB = Loaded("");
    oA.SetRootName("S"), oB.SetRootName("T");
    EXPECT_EQ(Merge(oBase, oA, oB).oConflicts, Texts{"/: changed, changed"});
    EXPECT_STREQ(Merge(oBase, oA, oB, Pick::B).oTree.GetName(), "T");
}

// What does not change on one side is what the other side has; either side wins where it is picked
// alone; and no pair of edits leads to anything that the plan does not hold.
TEST(Merge, RandomEdits) {
    for (unsigned uSeed = 0; uSeed < 3000; ++uSeed) {
        Random_Tree oRandom(uSeed);
        const Data oBase = oRandom.Make(1 + oRandom.Below(40));
        Data oA = oBase.MkClone(), oB = oBase.MkClone();
        oRandom.Edit(oA, oRandom.Below(uSeed % 2 == 0 ? 12 : 3));
        oRandom.Edit(oB, oRandom.Below(uSeed % 2 == 0 ? 12 : 3));
        Data_DiffOptions oOptions;
        if (uSeed % 3 == 0) oOptions.m_asKey = {"@id"};
        ASSERT_TRUE(Data::Equal(Merge(oBase, oA, oBase).oTree, oA)) << uSeed;
        ASSERT_TRUE(Data::Equal(Merge(oBase, oBase, oB, Pick::A, oOptions).oTree, oB)) << uSeed;
        ASSERT_TRUE(Data::Equal(Merge(oBase, oA, oA.MkClone(), Pick::B, oOptions).oTree, oA))
            << uSeed << Xml(oBase) << Xml(oA);
        for (const Pick ePick : {Pick::None, Pick::A, Pick::B}) {
            const Merged o = Merge(oBase, oA, oB, ePick, oOptions);
            ASSERT_EQ(o.oTree.IsNode(), ePick != Pick::None || o.oConflicts.empty()) << uSeed;
            ASSERT_EQ(Fault(o.oTree), "") << uSeed;
        }
    }
}

// Both change every level: paths of all of them would be the square of the tree.
TEST(Merge, StopsTelling) {
    const auto oDeep = [](i2_t iValue) {
        Data oTree = NewTree();
        Data_Builder oBuilder(oTree);
        for (unsigned u = 0; u < 50000 * LARGE; ++u) {
            oBuilder.AddInt("i", iValue);
            oBuilder.Open("d");
        }
        oBuilder.Finish();
        return oTree;
    };
    unsigned uTold = 0;
    const auto oVisit = [&](const Data_Conflict&) { return ++uTold < 3; };
    const Data oBase = oDeep(0), oA = oDeep(1), oB = oDeep(2);
    EXPECT_FALSE(Data::Merge(oBase, oA, oB, {}, Pick::None, oVisit).IsNode());
    EXPECT_EQ(uTold, 3u);
    EXPECT_TRUE(Data::Equal(Data::Merge(oBase, oA, oB, {}, Pick::B, oVisit), oB));
}

// The same for conflicts of texts.
TEST(Merge, StopsTellingOfAttributes) {
    const auto oWith = [](const char* sValue) {
        Data oTree = NewTree();
        for (const char* sName : {"a", "b", "c"}) oTree.SetAttVal(sName, sValue);
        oTree.SetRootName(sValue);
        return oTree;
    };
    unsigned uTold = 0;
    const auto oVisit = [&](const Data_Conflict&) { return ++uTold < 2; };
    const Data oBase = oWith("1"), oA = oWith("2"), oB = oWith("3");
    EXPECT_FALSE(Data::Merge(oBase, oA, oB, {}, Pick::None, oVisit).IsNode());
    EXPECT_EQ(uTold, 2u);
}

// What fails on the way leaves nothing behind, and the trees as they were.
TEST(Merge, MemoryRunsOut) {
    unsigned uRefused = 0;
    for (unsigned uNth = 1, uSeed = 1; uSeed < 4;) {
        const Mem_Probe oProbe;
        Random_Tree oRandom(uSeed);
        const Data oBase = oRandom.Make(60);
        Data oA = oBase.MkClone(), oB = oBase.MkClone();
        oRandom.Edit(oA, 12);
        oRandom.Edit(oB, 12);
        const Data oWas = oBase.MkClone();
        if (!Mem_Probe::HasRefused(uNth++, [&] {
                Merge(oBase, oA, oB, Pick::A, {{"@id"}, {}, 0});
            })) {
            uNth = 1;
            ++uSeed;
            continue;
        }
        ++uRefused;
        EXPECT_TRUE(Data::Equal(oBase, oWas));
        EXPECT_EQ(Fault(oBase) + Fault(oA) + Fault(oB), "");
    }
    EXPECT_GT(uRefused, 100u);
}

}  // namespace
}  // namespace vok
