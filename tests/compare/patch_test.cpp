// SPDX-License-Identifier: MIT
// Patches: made, stored, applied, refused.
#include <cstring>

#include "tests/data/random_tree.h"
#include "tests/support.h"
#include "vok/compare/diff.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

Texts Differences(const Data& oA, const Data& oB, const Data_DiffOptions& oOptions = {}) {
    Texts oFound;
    Data::Diff(oA, oB, oOptions, [&](const Data_Difference& o) {
        oFound.push_back(Data_Difference::WhatName(o.m_eWhat) + std::string(" ") + o.m_sPath);
        return oFound.size() < 20;
    });
    return oFound;
}

std::string Xml(const Data& o) {
    Str oText;
    o.SaveToXMLString(oText, 0);
    return oText.CStr();
}

Data ThroughXml(const Data& o) {
    Data oLoaded;
    oLoaded.LoadFromXMLString(Xml(o), Data::XML_KEEP_UNKNOWN);
    return oLoaded.GetRoot();
}

Data ThroughDGraph(Data o) {
    Dgraph_SetVersion(o, 1, 3, 0);
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(o, oBuf);
    oBuf.Open("r");
    Data oLoaded;
    Dgraph_LoadDGraph(oLoaded, oBuf);
    return oLoaded;
}

// Edits of one tree, every kind of them, and trees that have nothing to do with each other.
TEST(Patch, MakesTheOtherTree) {
    for (unsigned uSeed = 0; uSeed < 10000; ++uSeed) {
        Random_Tree oRandom(uSeed);
        Data oA = oRandom.Make(1 + oRandom.Below(uSeed % 50 == 0 ? 400 : 40));
        Data oB = uSeed % 4 == 0 ? oRandom.Make(1 + oRandom.Below(40)) : oA.MkClone();
        oRandom.Edit(oB, oRandom.Below(uSeed % 3 == 0 ? 30 : 4));
        Data_DiffOptions oOptions;
        if (uSeed % 5 == 0) oOptions.m_asKey = {"@id", "a"};
        const Data oBefore = oA.MkClone();
        const Data oPatch = Data::MakePatch(oA, oB, oOptions);
        ASSERT_EQ(Fault(oPatch), "") << uSeed;
        const Data oResult = oA.ApplyPatch(oPatch);
        ASSERT_EQ(Fault(oResult), "") << uSeed;
        ASSERT_TRUE(Data::Equal(oResult, oB)) << uSeed << Xml(oA) << Xml(oB) << Xml(oPatch)
                                              << testing::PrintToString(Differences(oResult, oB));
        ASSERT_TRUE(Data::Equal(oA, oBefore)) << uSeed;
        ASSERT_EQ(Differences(oA, oB, oOptions).empty(), Data::Equal(oA, oB)) << uSeed;
        // A stored patch does the same.
        if (uSeed % 4 != 1) continue;
        ASSERT_TRUE(Data::Equal(oA.ApplyPatch(ThroughXml(oPatch)), oB)) << uSeed << Xml(oPatch);
        // An empty attribute is nothing that DGraph keeps.
        if (Has(Xml(oPatch), "=\"\"")) continue;
        ASSERT_TRUE(Data::Equal(oA.ApplyPatch(ThroughDGraph(oPatch)), oB)) << uSeed << Xml(oPatch);
    }
}

Data Loaded(const std::string& sXml) {
    Data oTree;
    oTree.LoadFromXMLString(sXml, 0);
    return oTree.GetRoot();
}

// What a patch expects is not there any more; what it does not speak of may be another.
TEST(Patch, DoesNotFit) {
    const std::string sOld =
        "<R k='1'><a>x</a><l><i n='1'>1</i><i>2</i><i>3</i></l><o><p>1</p></o><o/><z/></R>";
    const std::string sNew =
        "<R k='2' m=''><a>y</a><l><i "
        "n='2'>1</i><i>2</i><i>3</i><i>4</i></l><o/><q/><z><b/></z></R>";
    const Data oPatch = Data::MakePatch(Loaded(sOld), Loaded(sNew));
    const std::string sAt = "patch does not fit at ";
    const struct {
        const char *sWas, *sIs;
        std::string sMessage;  // empty: fits
    } CASES[] = {
        {"<i>2", "<i>two", ""},
        {"<z/>", "<z/><z>other</z>", ""},
        {"k='1'", "k='3'", sAt + "\"/\": attribute \"k\" is another"},
        {"k='1'", "k='1' m='x'", sAt + "\"/\": attribute \"m\" is another"},
        {"<a>x", "<a>z", sAt + "\"/a[0]\": the value is another"},
        {"<a>x</a>", "", sAt + "\"/a[0]\": there is no such node"},
        {"<a>x</a>", "<a/>", sAt + "\"/a[0]\": type 'String' expected, but it is 'Empty'"},
        {"<i>2</i>", "", sAt + "\"/l[0]/i[3]\": there are fewer or more nodes in front of it"},
        {"<i>2</i>", "<i/><i/>", ""},
        {"<p>1", "<p>2", sAt + "\"/o[0]\": what it removes is another"},
        {"<o><p>", "<o t='1'><p>", sAt + "\"/o[0]\": what it removes is another"},
        {"<p>1</p>", "<p>1</p><q/>", sAt + "\"/o[0]\": what it removes is another"},
        {"<z/>", "<z>1</z>", sAt + "\"/z[0]\": type 'Tree' expected, but it is 'String'"},
        {"<z/>", "", sAt + "\"/z[0]\": there is no such node"},
    };
    for (const auto& o : CASES) {
        std::string s = sOld;
        s.replace(s.find(o.sWas), std::strlen(o.sWas), o.sIs);
        const Data oTree = Loaded(s);
        EXPECT_EQ(Failing([&] { (void)oTree.ApplyPatch(oPatch); }), o.sMessage) << s;
        EXPECT_EQ(Fault(oTree), "");
        Msg::SetLanguageIndex(Msg::GERMAN);
        const std::string sGerman = Failing([&] { (void)oTree.ApplyPatch(oPatch); });
        Msg::SetLanguageIndex(Msg::ENGLISH);
        EXPECT_EQ(sGerman.starts_with("Flicken passt nicht bei "), !o.sMessage.empty()) << sGerman;
    }
    // The name of the top, and what links lead to.
    Data oA = Loaded("<R><a>x</a><b/></R>"), oB = Loaded("<S><a>x</a><b/></S>");
    oA.CreateNode("l").SetValLink(oA.CreateNode("a"));
    oB.CreateNode("l").SetValLink(oB.CreateNode("b"));
    const Data oLinked = Data::MakePatch(oA, oB);
    EXPECT_TRUE(Data::Equal(oA.ApplyPatch(oLinked), oB));
    oA.CreateNode("l").SetValLink(Data());
    EXPECT_EQ(Failing([&] { (void)oA.ApplyPatch(oLinked); }),
              sAt + "\"/l[0]\": the value is another");
    oA.SetRootName("T");
    EXPECT_EQ(Failing([&] { (void)oA.ApplyPatch(oLinked); }),
              sAt + "\"/\": name \"R\" expected, but it is \"T\"");
}

// Trees that no patch looks like.
TEST(Patch, IsNoPatch) {
    const Data oTree = Loaded("<R><a>x</a><b><c/></b></R>");
    const std::pair<const char*, const char*> CASES[] = {
        {"<x/>", "/x[0]"},
        {"<edit/>", "/edit[0]"},
        {"<edit at=''/>", "/edit[0]"},
        {"<edit at='a'/>", "/edit[0]"},
        {"<edit at='/a[0]'/>", "/edit[0]"},
        {"<edit at='a[0]//c[0]'/>", "/edit[0]"},
        {"<edit at='*[0]'/>", "/edit[0]"},
        {"<edit at='..'/>", "/edit[0]"},
        {"<edit at='a[0]' to='-1'/>", "/edit[0]"},
        {"<edit at='a[0]' to='1x'/>", "/edit[0]"},
        {"<edit at='a[0]'/><edit at='a[0]'/>", "/edit[1]"},
        {"<edit at='a[0]'><name/></edit>", "/edit[0]/name[0]"},
        {"<edit at='a[0]'><new>y</new></edit>", "/edit[0]"},
        {"<edit at='a[0]'><old>x</old></edit>", "/edit[0]"},
        {"<insert at='d[0]'/>", "/insert[0]"},
        {"<remove at='a[0]'/>", "/remove[0]"},
        {"<remove at='b[0]'><old><c/></old></remove><edit at='b[0]/c[0]'/>", "/edit[0]"},
        {"<remove at='b[0]'><old><c/></old></remove><insert at='b[0]/c[0]'><new/></insert>",
         "/insert[0]"},
        {"<edit at='b[0]'><old><c/></old><new>x</new><insert at='d[0]'><new/></insert></edit>",
         "/edit[0]/insert[0]"},
        {"<attribute/>", "/attribute[0]"},
        {"<attribute><name>k</name></attribute>", "/attribute[0]"},
        {"<attribute><name/><new>1</new></attribute>", "/attribute[0]"},
        {"<attribute><name>k</name><new><x/></new></attribute>", "/attribute[0]/new[0]"},
        {"<attribute><name>k</name><new>1</new></attribute>"
         "<attribute><name>k</name><new>2</new></attribute>",
         "/"},
        {"<name><new>S</new></name>", "/name[0]"},
        {"<target at='a'/>", "/target[0]"},
        {"<target at='b[0]'><x/></target>", "/target[0]/x[0]"},
        {"<insert at='d[0]'><new CDNodeIDREF='ID1'/></insert><edit at='a[0]' CDNodeID='ID1'/>",
         "/insert[0]/new[0]"},
    };
    for (const auto& [sParts, sPath] : CASES) {
        const Data oPatch = Loaded("<patch version='1'>" + std::string(sParts) + "</patch>");
        EXPECT_EQ(Failing([&] { (void)oTree.ApplyPatch(oPatch); }),
                  "no patch: \"" + std::string(sPath) + "\" does not belong there")
            << sParts;
    }
    for (const char* s : {"<patch/>", "<patch version='2'/>", "<R><a>x</a></R>"}) {
        EXPECT_EQ(Failing([&] { (void)oTree.ApplyPatch(Loaded(s)); }),
                  "no patch: \"/\" does not belong there");
    }
    // The order of its parts does not matter, nor do removed nodes.
    Data oPatch = Loaded(
        "<patch version='1'><insert at='b[2]'><new>2</new></insert><insert at='b[0]'>"
        "<new>0</new></insert><x/></patch>");
    oPatch.GetNodeSet("x").GetNth(0).Remove();
    EXPECT_TRUE(Data::Equal(Loaded("<R><a>x</a><b>0</b><b><c/></b><b>2</b></R>"),
                            oTree.ApplyPatch(oPatch)));
    EXPECT_EQ(Failing([&] { (void)oTree.ApplyPatch(Data()); }), "node is empty");
    EXPECT_EQ(Trail([&] { (void)Data().ApplyPatch(oPatch); }), "vok::Data::ApplyPatch\n");
}

// With options there is nothing left to be seen with the same options.
TEST(Patch, LeavesNoDifferences) {
    for (unsigned uSeed = 0; uSeed < 3000; ++uSeed) {
        Random_Tree oRandom(uSeed);
        const Data oA = oRandom.Make(1 + oRandom.Below(40));
        Data oB = oA.MkClone();
        oRandom.Edit(oB, 1 + oRandom.Below(20));
        Data_DiffOptions oOptions{{}, {"//b", "//@k"}, 0.3};
        if (uSeed % 2 != 0) oOptions = {{"b", "@id"}, {"*/a", "order//*", "@id"}, 0};
        const Data oPatch = Data::MakePatch(oA, oB, oOptions);
        const Data oResult = oA.ApplyPatch(oPatch);
        ASSERT_EQ(Fault(oResult), "") << uSeed;
        ASSERT_EQ(Differences(oResult, oB, oOptions), Texts())
            << uSeed << Xml(oA) << Xml(oB) << Xml(oPatch) << Xml(oResult);
    }
}

// Patches that somebody has played with do something or are refused; either way all trees hold
// together.
TEST(Patch, Altered) {
    unsigned uApplied = 0, uRefused = 0;
    for (unsigned uSeed = 0; uSeed < 5000; ++uSeed) {
        Random_Tree oRandom(uSeed);
        const Data oA = oRandom.Make(1 + oRandom.Below(30));
        Data oB = oA.MkClone();
        oRandom.Edit(oB, 1 + oRandom.Below(10));
        Data oPatch = Data::MakePatch(oA, oB);
        const auto oAny = [&] { return oPatch.GetNodeFromID(oRandom.Below(oPatch.GetNodes())); };
        for (unsigned u = oRandom.Below(3); u != 0; --u) {
            // A path, or a position, of one part for another.
            Data oTo = oAny();
            if (oTo.GetType() == Data_Node::Zombi || oTo == oPatch) continue;
            const char* sName = oRandom.Below(3) != 0 ? "at" : "to";
            const char* sValue = oRandom.Below(4) != 0 ? oAny().GetAttVal("at") : "1";
            oTo.SetAttVal(sName, sValue != nullptr ? std::string(sValue).c_str() : nullptr);
        }
        if (oRandom.Below(2) != 0) oRandom.Edit(oPatch, 1);
        const std::string sFailure = Failing([&] {
            const Data oResult = oA.ApplyPatch(oPatch);
            EXPECT_EQ(Fault(oResult), "") << uSeed;
        });
        ++(sFailure.empty() ? uApplied : uRefused);
        EXPECT_EQ(Fault(oA), "");
    }
    EXPECT_GT(uApplied, 1000u);
    EXPECT_GT(uRefused, 1000u);
}

// Ignored nodes stay as they are, and where they are.
TEST(Patch, LeavesWhatIsIgnored) {
    const Data oA =
        Loaded("<R><i>0</i><i s='1'>1</i><i>2</i><t>old</t><o u='1'><t>old</t></o></R>");
    const Data oB =
        Loaded("<R><i>x</i><i>0</i><i s='2'>9</i><t>new</t><o u='2'><t>new</t><p/></o></R>");
    const Data oPatch =
        Data::MakePatch(oA, oB, {{}, {"i[@s=\"1\"]", "i[@s=\"2\"]", "//t", "//@u"}, 0});
    EXPECT_TRUE(Data::Equal(
        oA.ApplyPatch(oPatch),
        Loaded("<R><i>x</i><i>0</i><i s='1'>1</i><t>old</t><o u='1'><t>old</t><p/></o></R>")));
}

// A subtree is patched as a tree of its own.
TEST(Patch, Subtrees) {
    Data oRoot = Loaded("<R><x><v>1</v><v>2</v></x><y k='1'><v>2</v></y></R>");
    const Data oX = oRoot.GetNodeSet("x").GetNth(0), oY = oRoot.GetNodeSet("y").GetNth(0);
    oRoot.CreateNode("y/out").SetValLink(oX);
    const Data oResult = oX.ApplyPatch(Data::MakePatch(oX, oY));
    EXPECT_TRUE(Data::Equal(oResult, oY.MkClone()));
    EXPECT_STREQ(oResult.GetName(), "y");
}

}  // namespace
}  // namespace vok
