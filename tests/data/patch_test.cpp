// Patches: made, stored, applied, refused.
#include <functional>

#include "tests/data/random_tree.h"
#include "tests/support.h"
#include "vok/data/diff.h"
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

}  // namespace
}  // namespace vok
