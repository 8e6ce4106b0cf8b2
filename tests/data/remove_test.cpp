// Removal and compaction against a copy of the tree taken by value.
#include <map>

#include "tests/support.h"

namespace vok {
namespace {

// All that is to be known of a live node, its id left out.
struct Seen {
    std::string sName, sValue, sAttributes, sLink;
    std::vector<std::string> oSuccessors;
    bool operator==(const Seen&) const = default;
};

std::string ValueOf(const Data& oNode) {
    Str oText;
    u2_t uSize = 0;
    switch (oNode.GetType()) {
        case Data_Node::Binary: {
            const void* pData = oNode.GetValBin(uSize);
            return "B" + std::string(static_cast<const char*>(pData), uSize);
        }
        case Data_Node::Link: return "L";
        case Data_Node::Tree: return "-";
        default:
            oNode.CvtStr(oText, "-");
            return Data_Node::TypeName(oNode.GetType()) + std::string(oText.CStr());
    }
}

// Live nodes by the mark that every node carries as an attribute.
using Snapshot = std::map<std::string, Seen>;

Snapshot Take(const Data& oRoot) {
    Snapshot oAll;
    for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
        const Data oNode = oRoot.GetNodeFromID(u);
        if (oNode.GetType() == Data_Node::Zombi) continue;
        Seen& oSeen = oAll[oNode.GetAttVal("mark")];
        oSeen.sName = oNode.GetName() != nullptr ? oNode.GetName() : "";
        // A node whose last successor is gone for good is empty again.
        oSeen.sValue = ValueOf(oNode) == "Empty-" ? "-" : ValueOf(oNode);
        Arr<const char*> oNames;
        Arr<const char*> oValues;
        oNode.GetAttributes(oNames, oValues);
        for (std::size_t uAtt = 0; uAtt < oNames.Size(); ++uAtt) {
            oSeen.sAttributes += oNames(uAtt) + std::string("=") + oValues(uAtt) + ";";
        }
        if (oNode.GetType() == Data_Node::Link) {
            const Data oTarget = oNode.GetValLink();
            const bool bLive = oTarget.IsNode() && oTarget.GetType() != Data_Node::Zombi;
            oSeen.sLink = bLive ? oTarget.GetAttVal("mark") : "nothing";
        }
        for (auto oIt = oNode.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) {
            oSeen.oSuccessors.push_back(oIt.GetData().GetAttVal("mark"));
        }
    }
    return oAll;
}

void SetRandomValue(const Data& oRoot, Data oNode, std::mt19937& oRandom) {
    if (oNode.GetType() == Data_Node::Tree || oNode.GetType() == Data_Node::Zombi) return;
    const std::string sText(Below(oRandom, 30), static_cast<char>('a' + Below(oRandom, 26)));
    const Data oOther = oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes()));
    switch (Below(oRandom, 8)) {
        case 0: return oNode.SetValStr(sText.c_str());
        case 1: return oNode.SetValBin(sText.data(), static_cast<u2_t>(sText.size()));
        case 2: return oNode.SetValQuad(1, 2, oOther.GetId(), 4);
        case 3: return oNode.SetValLink(oOther);
        case 4: return oNode.SetValLng(oRandom());
        case 5:
            if (oOther.GetType() != Data_Node::Tree && oOther.GetType() != Data_Node::Zombi) {
                Data::CopyVal(oOther, oNode);  // the two share a text
            }
            return;
        case 6: return oNode.SetAttVal("text", sText.c_str());
        default: return oNode.ClearVal();
    }
}

TEST(Remove, RandomTreesBeforeAndAfterShrink) {
    for (unsigned uSeed = 1; uSeed <= 40; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        Data oRoot = NewTree();
        oRoot.SetRootName(uSeed % 2 == 0 ? "top" : nullptr);
        unsigned uMark = 0;
        const auto Mark = [&](Data oNode) {
            oNode.SetAttVal("mark", std::to_string(uMark++).c_str());
        };
        Mark(oRoot);
        for (unsigned uRound = 0; uRound < 6; ++uRound) {
            const u2_t uOld = oRoot.GetNodes();
            Grow(oRoot, oRandom, 60, {"a", "b", "", "name of some length"});
            for (u2_t u = uOld; u < oRoot.GetNodes(); ++u) Mark(oRoot.GetNodeFromID(u));
            for (unsigned u = 0; u < 60; ++u) {
                SetRandomValue(oRoot, oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes())),
                               oRandom);
            }
            // Some removals come before the order of what they remove was ever asked for.
            for (unsigned u = 0; u < 8; ++u) {
                Data oNode = oRoot.GetNodeFromID(1 + Below(oRandom, oRoot.GetNodes() - 1));
                if (oNode.GetType() == Data_Node::Zombi) continue;
                oNode.Remove();
                EXPECT_EQ(oNode.GetType(), Data_Node::Zombi);
            }
            const Snapshot oBefore = Take(oRoot);
            Data oFollow = oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes()));
            const bool bLive = oFollow.GetType() != Data_Node::Zombi;
            const std::string sFollow = bLive ? oFollow.GetAttVal("mark") : "0";
            if (uRound % 3 == 2) continue;
            oFollow.Shrink();
            EXPECT_EQ(oRoot.GetNodes(), oBefore.size());
            EXPECT_EQ(oFollow.GetAttVal("mark"), sFollow);
            ASSERT_EQ(Take(oRoot), oBefore) << uSeed << " " << uRound;
            for (u2_t u = 1; u < oRoot.GetNodes(); ++u) {
                ASSERT_LT(std::stoi(oRoot.GetNodeFromID(u - 1).GetAttVal("mark")),
                          std::stoi(oRoot.GetNodeFromID(u).GetAttVal("mark")));
            }
        }
    }
}

TEST(Remove, CutsLooseWhatIsBelow) {
    Data oRoot = NewTree();
    Data oTop = oRoot.CreateNewSucc("n");
    const Data oDown = oTop.CreateNewSucc("down");
    const Data oDeep = Data(oDown).CreateNewSucc("deep");
    oRoot.CreateNewSucc("n");
    oTop.Remove();
    for (const Data& oNode : {oTop, oDown, oDeep}) EXPECT_EQ(oNode.GetType(), Data_Node::Zombi);
    EXPECT_EQ(oTop.GetPred(), oRoot);  // its own place is kept
    EXPECT_EQ(oDown.GetNode().PredField(), Data_Node::CUT_LOOSE);
    EXPECT_FALSE(oDeep.GetPred().IsNode());
    EXPECT_EQ(oTop.GetSuccIt().Size(), 0u);
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt()), (Ids{4}));
    EXPECT_EQ(oRoot.GetNthSucc("n", 1).GetId(), 4u);
    EXPECT_EQ(Raised([&] { oTop.Remove(); }), "try to access deleted node\n");
    EXPECT_EQ(Raised([&] { oTop.CreateNewSucc("x"); }), "try to access deleted node\n");
    EXPECT_EQ(Raised([&] { oRoot.Remove(); }), "node has no predecessor\n");
    // Brought back to life it starts anew.
    oTop.ClearVal();
    EXPECT_EQ(oTop.GetType(), Data_Node::Empty);
    oTop.CreateNewSucc("new");
    EXPECT_EQ(IdsOf(oRoot.GetNodeSet("//new")), (Ids{5}));
    oTop.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 4u);
    EXPECT_EQ(IdsOf(oRoot.GetNodeSet("n/new")), (Ids{3}));
}

// Nodes may share a long text; apart from each other the copies would not fit into memory.
TEST(Shrink, KeepsSharedTextsShared) {
    Data oRoot = NewTree();
    Data oFirst = oRoot.CreateNewSucc("n");
    oFirst.SetValStr(std::string(1 << 20, 'x').c_str());
    for (int i = 0; i < 3000; ++i) {
        Data oNode = oRoot.CreateNewSucc("n");
        Data::CopyVal(oFirst, oNode);
        oNode.SetAttVal("tail", oNode.GetValStr() + (1 << 20) - 5);
    }
    oFirst.Remove();
    oRoot.Shrink();
    EXPECT_LT(oRoot.TextBytes(), std::size_t{1} << 22);
    const Data oLast = oRoot.GetNthSucc("n", 2999);
    EXPECT_EQ(oLast.GetValText().size(), std::size_t{1} << 20);
    EXPECT_STREQ(oLast.GetAttVal("tail"), "xxxxx");
    EXPECT_EQ(oLast.GetAttVal("tail") + 5, oLast.GetValStr() + (1 << 20));
}

TEST(Shrink, DropsWasteWhenItIsWorthIt) {
    Data oRoot = NewTree();
    oRoot.SetValStr("kept");
    oRoot.Shrink();
    EXPECT_STREQ(oRoot.GetValStr(), "kept");
    const std::string sText(1000, 'x');
    for (int i = 0; i < 500; ++i) oRoot.SetAttVal("a", (sText + std::to_string(i)).c_str());
    const std::size_t uBefore = oRoot.TextBytes();
    oRoot.Shrink();
    EXPECT_LT(oRoot.TextBytes(), uBefore / 10);
    EXPECT_EQ(oRoot.GetAttVal("a"), sText + "499");
    EXPECT_STREQ(oRoot.GetValStr(), "kept");
    const char* pBefore = oRoot.GetValStr();
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetValStr(), pBefore);  // nothing to do, nothing moved
}

// A copied value can make the root itself a removed node: it stays, and can be revived.
TEST(Shrink, KeepsARemovedRoot) {
    Data oGone = NewTree().CreateNewSucc("n");
    oGone.Remove();
    Data oRoot = NewTree();
    Data::CopyVal(oGone, oRoot);
    EXPECT_EQ(oRoot.GetType(), Data_Node::Zombi);
    oRoot.Shrink();
    oRoot.SetValInt(1);
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 1u);
    EXPECT_EQ(oRoot.GetValInt(), 1);
}

// Nothing recurses: one node below the other a million times.
TEST(Remove, AMillionLevels) {
    constexpr int LEVELS = 1000000;
    Data oRoot = NewTree();
    Data oNode = oRoot;
    for (int i = 0; i < LEVELS; ++i) oNode.SetToNewSucc("n");
    oNode.SetAttVal("x", "bottom");
    EXPECT_EQ(oNode.NodeDepth(), LEVELS);
    EXPECT_EQ(oNode.GetPath().Len(), std::size_t{LEVELS} * 5);
    EXPECT_EQ(oRoot.GetNodeSet("//n[@x=\"bottom\"]").GetNth(0), oNode);
    EXPECT_EQ(oRoot.GetNodeSet("n//n/..//n").Size(), std::size_t{LEVELS - 1});
    Data oTop = oRoot.GetNthSucc(0).GetNthSucc(0);
    oTop.Remove();
    EXPECT_EQ(oRoot.GetNodeSet("//n").Size(), 1u);
    EXPECT_EQ(oNode.GetType(), Data_Node::Zombi);
    EXPECT_EQ(oNode.NodeDepth(), 1);
    oRoot.Shrink();
    EXPECT_EQ(oRoot.GetNodes(), 2u);
    for (int i = 0; i < LEVELS; ++i) oRoot.SetToNewSucc("m");
}

}  // namespace
}  // namespace vok
