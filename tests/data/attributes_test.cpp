// Attributes against a plain model, and the corners of each operation.
#include <algorithm>
#include <map>

#include "tests/support.h"

namespace vok {
namespace {

// The attributes of a node as "name=value" texts in the order they are delivered.
Texts Listed(const Data& oNode, bool bSorted) {
    Arr<const char*> oNames;
    Arr<const char*> oValues;
    oNode.GetAttributes(oNames, oValues, bSorted);
    EXPECT_EQ(oNames.Size(), oValues.Size());
    Texts oListed;
    for (std::size_t u = 0; u < oNames.Size(); ++u) {
        oListed.push_back(oNames(u) + std::string("=") + oValues(u));
    }
    return oListed;
}

TEST(Attributes, RandomEdits) {
    const Texts oNames = {"b", "a",  "ä",  "Z", "a name longer than eight", "a name longer",
                          "é", "x1", "x2", "x3"};
    for (unsigned uSeed = 1; uSeed <= 5; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        Data oRoot = NewTree();
        Grow(oRoot, oRandom, 40, {"n"});
        std::vector<std::map<std::string, std::string>> oModel(oRoot.GetNodes());
        Texts oFirstUse;
        for (unsigned uOp = 0; uOp < 3000; ++uOp) {
            const u2_t uId = Below(oRandom, oRoot.GetNodes());
            Data oNode = oRoot.GetNodeFromID(uId);
            const std::string& sName = oNames[Below(oRandom, oNames.size())];
            const bool bKnown = std::ranges::find(oFirstUse, sName) != oFirstUse.end();
            switch (Below(oRandom, 5)) {
                case 0:
                    oNode.SetAttVal(sName.c_str(), nullptr);
                    oModel[uId].erase(sName);
                    break;
                case 1:
                    if (Below(oRandom, 20) != 0) break;
                    oNode.RemoveAttributes();
                    oModel[uId].clear();
                    break;
                case 2: {
                    Data oDst = oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes()));
                    oNode.CopyAtt(oDst);
                    oModel[oDst.GetId()] = std::map(oModel[uId]);
                    break;
                }
                default: {
                    const std::string sValue = std::to_string(Below(oRandom, 50)).substr(1);
                    oNode.SetAttVal(sName.c_str(), sValue.c_str());
                    oModel[uId][sName] = sValue;
                    if (!bKnown) oFirstUse.push_back(sName);
                }
            }
            const char* sGot = oNode.GetAttVal(sName.c_str());
            const auto oIt = oModel[uId].find(sName);
            ASSERT_EQ(sGot != nullptr, oIt != oModel[uId].end());
            if (sGot != nullptr) {
                ASSERT_EQ(sGot, oIt->second);
            }
        }
        for (u2_t uId = 0; uId < oRoot.GetNodes(); ++uId) {
            const Data oNode = oRoot.GetNodeFromID(uId);
            Texts oSorted;  // a map of std::string has the same byte order
            for (const auto& [sName, sValue] : oModel[uId]) oSorted.push_back(sName + "=" + sValue);
            EXPECT_EQ(Listed(oNode, true), oSorted);
            Texts oByUse;
            for (const std::string& sName : oFirstUse) {
                const auto oIt = oModel[uId].find(sName);
                if (oIt != oModel[uId].end()) oByUse.push_back(sName + "=" + oIt->second);
            }
            EXPECT_EQ(Listed(oNode, false), oByUse);
        }
    }
}

TEST(Attributes, NamesAndValues) {
    Data oNode = NewTree();
    EXPECT_EQ(oNode.GetAttVal("a"), nullptr);
    EXPECT_EQ(oNode.GetAttVal(nullptr), nullptr);
    EXPECT_EQ(oNode.GetAttVal(""), nullptr);
    for (const char* sBad : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Raised([&] { oNode.SetAttVal(sBad, "x"); }), "unallowed attribute \"\"\n");
        EXPECT_EQ(Raised([&] { oNode.SetAttVal(sBad, nullptr); }), "unallowed attribute \"\"\n");
    }
    oNode.SetAttVal("a", "");
    EXPECT_STREQ(oNode.GetAttVal("a"), "");
    oNode.SetAttVal("a\xFC", "\xE4");
    EXPECT_STREQ(oNode.GetAttVal("aü"), "ä");
    EXPECT_STREQ(oNode.GetAttVal("a\xFC"), "ä");
    oNode.SetAttVal("unknown", nullptr);

    Arr<const char*> oNames;
    Arr<const char*> oValues;
    oValues.Add("left over");
    oNode.GetAttributes(oNames, oValues, false, true);
    EXPECT_EQ(oNames.Size(), 2u);
    EXPECT_EQ(oValues.Size(), 0u);
    Data oOther = oNode.CreateNewSucc("n");
    oOther.GetAttributes(oNames, oValues);
    EXPECT_EQ(oNames.Size(), 0u);
}

// The heap grows by what is new, and by nothing else: the next string tells where it ends.
TEST(Attributes, TextsAreNotStoredTwice) {
    Data oNode = NewTree();
    const auto HeapEnd = [&] {
        Data oProbe = oNode.CreateSucc("probe");
        oProbe.SetValStr("p");
        return oProbe.GetNode().uWord2;
    };
    const auto Grows = [&](auto&& oBody) {
        const u2_t uBefore = HeapEnd();
        oBody();
        return HeapEnd() - uBefore - 2;
    };
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("a", "value"); }), 6u);
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("a", "value"); }), 0u);
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("b", oNode.GetAttVal("a")); }), 0u);
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("c", oNode.GetAttVal("a") + 3); }), 0u);
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("a", ""); }), 0u);
    EXPECT_EQ(Grows([&] { oNode.SetAttVal("a", "other"); }), 6u);
    EXPECT_STREQ(oNode.GetAttVal("b"), "value");
    EXPECT_STREQ(oNode.GetAttVal("c"), "ue");
    // A block without a NUL is no text to share.
    Data oBlock = oNode.CreateNewSucc("block");
    oBlock.SetValBin("xyz", 4);
    u2_t uSize = 0;
    EXPECT_EQ(
        Grows([&] { oNode.SetAttVal("d", static_cast<const char*>(oBlock.GetValBin(uSize))); }),
        0u);
    EXPECT_STREQ(oNode.GetAttVal("d"), "xyz");
}

TEST(Attributes, Copies) {
    Data oSrc = NewTree();
    oSrc.SetAttVal("a", "1");
    oSrc.SetAttVal("gone", "2");
    oSrc.SetAttVal("gone", nullptr);
    oSrc.SetAttVal("b", "ä");
    oSrc.CopyAtt(oSrc);
    EXPECT_EQ(Listed(oSrc, true), (Texts{"a=1", "b=ä"}));
    Data oOther = NewTree();
    oOther.SetAttVal("old", "x");
    oOther.SetAttVal("b", "x");
    oSrc.CopyAtt(oOther);
    EXPECT_EQ(Listed(oOther, true), (Texts{"a=1", "b=ä"}));
    EXPECT_EQ(Listed(oOther, false), (Texts{"b=ä", "a=1"}));
    Data oEmpty;
    oSrc.CopyAtt(oEmpty);
    EXPECT_FALSE(oEmpty.IsNode());
    oEmpty.CopyAtt(oOther);
    EXPECT_EQ(Listed(oOther, true).size(), 2u);
    // A source that is gone must not cost the destination its own.
    oSrc.CreateNewSucc("x").Remove();
    const Data oStale = oSrc.GetNodeFromID(1);
    oSrc.Shrink();
    EXPECT_EQ(Raised([&] { oStale.CopyAtt(oOther); }), "try to access deleted node\n");
    EXPECT_EQ(Listed(oOther, true).size(), 2u);
}

}  // namespace
}  // namespace vok
