// SPDX-License-Identifier: MIT
// The order of successors: names by their bytes, equal names by creation.
#include <algorithm>
#include <map>

#include "tests/support.h"
#include "vok/dgraph/access.h"

namespace vok {
namespace {

// Several parents grow by turns and are read in between, at random: some appends come in
// order, some do not, some parents are not read for long.
TEST(SuccOrder, AppendsAndReadsInTurns) {
    const Texts oNames = {
        "",  "a", "aa", "b",         "c",          "longer than 8", "longer than 9",
        "é", "x", "y",  "longer th", "longer than"};
    for (unsigned uSeed = 1; uSeed <= 30; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        const std::size_t uNames = 1 + RandomBelow(oRandom, oNames.size());
        const u2_t uParents = 1 + RandomBelow(oRandom, 300);
        const u2_t uReadEvery = 1 + RandomBelow(oRandom, 40);
        Data oRoot = NewTree();
        std::vector<std::multimap<std::string, u2_t>> oModel(uParents + 1);
        const auto Append = [&](u2_t uParent, const std::string& sName) {
            const Data oNew = oRoot.GetNodeFromID(uParent).CreateNewSucc(sName.c_str());
            oModel[uParent].emplace(sName, oNew.GetId());
        };
        const auto Check = [&](u2_t uParent) {
            const Data oParent = oRoot.GetNodeFromID(uParent);
            const std::string& sName = oNames[RandomBelow(oRandom, oNames.size())];
            Ids oAll, oNamed;
            for (const auto& [sOther, uId] : oModel[uParent]) {
                oAll.push_back(uId);
                if (sOther == sName) oNamed.push_back(uId);
            }
            ASSERT_EQ(IdsOf(oParent.GetSuccIt()), oAll);
            ASSERT_EQ(IdsOf(oParent.GetSuccIt(sName.c_str())), oNamed);
            oNamed.resize(oNamed.size() + 1);  // nothing, which is 0 here, stands behind the last
            const u2_t uNth = RandomBelow(oRandom, oNamed.size());
            ASSERT_EQ(oParent.GetNthSucc(sName.c_str(), uNth).GetId(), oNamed[uNth]);
        };
        for (u2_t u = 1; u <= uParents; ++u) Append(0, oNames[RandomBelow(oRandom, uNames)]);
        for (unsigned u = 0; u < 3000; ++u) {
            // Few parents get most of the nodes.
            const u2_t uParent = 1 + RandomBelow(oRandom, 1 + RandomBelow(oRandom, uParents));
            Append(uParent, oNames[RandomBelow(oRandom, uNames)]);
            if (RandomBelow(oRandom, uReadEvery) == 0) Check(1 + RandomBelow(oRandom, uParents));
        }
        for (u2_t u = 0; u <= uParents; ++u) Check(u);
    }
}

// Many objects of few kinds, whose successors come in the same order over and over, or nearly so.
TEST(SuccOrder, ObjectsOfFewKinds) {
    // Names that begin alike, and names that begin others; more than are compared one by one.
    Texts oNames = {"", "a", "a\x01", "aa", "\xC3\xA9", "\x7F"};
    for (std::size_t i = 0; i < 30; ++i) {
        oNames.push_back("a long common beginning, " + std::to_string(i));
        oNames.push_back("12345678" + std::string(i, 'x'));
    }
    for (unsigned uSeed = 1; uSeed <= 60; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        const std::size_t uNames = 1 + RandomBelow(oRandom, oNames.size());
        const auto oName = [&] { return oNames[RandomBelow(oRandom, uNames)]; };
        std::vector<Texts> oKinds(1 + RandomBelow(oRandom, 5));
        for (Texts& oKind : oKinds) {
            oKind.resize(1 + RandomBelow(oRandom, RandomBelow(oRandom, 4) == 0 ? 70 : 20));
            for (std::string& s : oKind) s = oName();
            if (RandomBelow(oRandom, 2) == 0) oKind[0] = oKinds[0][0];
        }
        Data oRoot = NewTree();
        std::vector<std::multimap<std::string, u2_t>> oModel(1);
        const auto oAppend = [&](u2_t uParent, const std::string& sName) {
            const u2_t uId = oRoot.GetNodeFromID(uParent).CreateNewSucc(sName).GetId();
            oModel.resize(uId + 1);
            oModel[uParent].emplace(sName, uId);
            return uId;
        };
        while (oRoot.GetNodes() < 3000) {
            const u2_t uObject = oAppend(0, oName());
            const Texts& oKind = oKinds[RandomBelow(oRandom, oKinds.size())];
            for (const std::string& s : oKind) {
                // Now and then one more or one less, or a subtree between them.
                const u2_t uCase = RandomBelow(oRandom, 40);
                if (uCase == 0) continue;
                const u2_t uId = oAppend(uObject, s);
                if (uCase == 1) oAppend(uObject, oName());
                if (uCase == 2) oAppend(uId, oName()), oAppend(uId, oName());
            }
            if (RandomBelow(oRandom, 200) == 0) oRoot.SetAccessMode();
        }
        for (u2_t u = 0; u < oModel.size(); ++u) {
            Ids oAll;
            for (const auto& [sName, uId] : oModel[u]) oAll.push_back(uId);
            ASSERT_EQ(IdsOf(oRoot.GetNodeFromID(u).GetSuccIt()), oAll) << uSeed << ' ' << u;
        }
    }
}

// Reading after every append must not move groups each time: memory asked for, which counts
// every copy, stays linear however parents and names alternate.
TEST(SuccOrder, ReadingWhileBuildingStaysLinear) {
    const auto Cost = [](unsigned uNodes) {
        const Mem_Probe oProbe;
        Data oRoot = NewTree();
        Data oParents[] = {oRoot.CreateNewSucc("a"), oRoot.CreateNewSucc("b")};
        for (unsigned u = 0; u < uNodes; ++u) {
            Data& oParent = oParents[u % 2];
            oParent.CreateNewSucc(u % 16 == 0 ? "a" : "m");
            EXPECT_EQ(oParent.GetSuccIt().Size(), u / 2 + 1);
        }
        return Mem_Probe::Asked();
    };
    const std::size_t uLarge = Cost(16000);
    EXPECT_LT(uLarge, 16 * Cost(2000));
    EXPECT_LT(uLarge, 16000u * 200);
}

TEST(SuccOrder, AccessModeLeavesNothingToDo) {
    const Mem_Probe oProbe;
    std::mt19937 oRandom(3);
    Data oRoot = NewTree();
    Grow(oRoot, oRandom, 500, {"b", "a", "c"});
    oRoot.SetAccessMode();
    const std::size_t uAsked = Mem_Probe::Asked();
    for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
        u2_t uSuccs = 0;
        for (const char* sName : {"a", "b", "c"}) {
            uSuccs += oRoot.GetNodeFromID(u).GetSuccIt(sName).Size();
        }
        EXPECT_EQ(oRoot.GetNodeFromID(u).GetSuccIt().Size(), uSuccs);
    }
    EXPECT_EQ(Mem_Probe::Asked(), uAsked);
}

TEST(SuccIt, WalksAndSkipsTheRemoved) {
    Data oRoot = NewTree();
    for (const char* sName : {"b", "a", "b", "a", "b"}) oRoot.CreateNewSucc(sName);
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt()), (Ids{2, 4, 1, 3, 5}));
    oRoot.GetNodeFromID(3).Remove();
    oRoot.GetNodeFromID(5).Remove();
    Data_SuccIt oIt = oRoot.GetSuccIt("b");
    EXPECT_EQ(oIt.Size(), 3u);
    EXPECT_EQ(IdsOf(oIt), (Ids{1}));
    oIt.SetPos(1);
    EXPECT_EQ(oIt.GetId(), 3u);  // removed, but still in its place
    EXPECT_FALSE(oIt.SkipZombies());
    EXPECT_FALSE(oIt.GetData().IsNode());
    for (const u2_t uPos : {3u, 99u}) {
        oIt.SetPos(uPos);
        oIt.Advance();
        EXPECT_EQ(oIt.Pos(), 3u);
    }
    // Made before a change it answers, with whatever stands there now.
    oRoot.CreateNewSucc("aa");
    oRoot.SetAccessMode();
    for (oIt.SetPos(0); oIt.Pos() < oIt.Size(); oIt.Advance()) (void)oIt.GetData();
    oRoot.Shrink();
    oIt.SetPos(0);
    EXPECT_LT(oIt.GetData().GetId(), oRoot.GetNodes());
    // Nor does it deliver what has lost its place.
    oIt = oRoot.GetSuccIt();
    oIt.SetPos(oIt.Size() - 1);
    Data oLast = oRoot.GetNthSucc(oIt.Size() - 1);
    oLast.Remove(), oLast.Erase();
    EXPECT_EQ(oIt.GetId(), Data_Node::NONE);
    EXPECT_FALSE(oIt.SkipZombies());
}

// Groups that were abandoned do not pile up.
TEST(SuccOrder, GroupsAreCompacted) {
    Data oRoot = NewTree();
    Data oKept = oRoot.CreateNewSucc("kept"), oOther = oRoot.CreateNewSucc("other");
    oKept.CreateNewSucc("b"), oKept.CreateNewSucc("a");
    for (int iRound = 0; iRound < 50; ++iRound) {
        for (int i = 0; i < 1000; ++i) oOther.CreateNewSucc("n");
        EXPECT_EQ(oOther.GetSuccIt().Size(), 1000u);
        oOther.RemoveSuccs();
    }
    oOther.CreateNewSucc("x");
    EXPECT_EQ(oOther.GetSuccIt().Size(), 1u);
    EXPECT_LT(dgraph::Access::BaseOf(oRoot)->m_oGroup.Words().Size(), 12'000u);
    EXPECT_STREQ(oKept.GetNthSucc(0).GetName(), "a");
    EXPECT_STREQ(oKept.GetNthSucc(1).GetName(), "b");
}

TEST(NodeIt, ListsNodesOfOneTree) {
    Data oRoot = NewTree();
    for (const char* sName : {"b", "a", "b"}) oRoot.CreateNewSucc(sName);
    oRoot.GetNodeFromID(3).Remove();
    Data_NodeIt oList;
    EXPECT_FALSE(oList.SkipZombies());
    oList.Add(Data());
    oList.Add(oRoot.GetNodeFromID(3));
    Data_SuccIt oIt = oRoot.GetSuccIt();
    oIt.SetPos(2);
    oList.Add(oIt);
    EXPECT_FALSE(oIt.GetData().IsNode());
    oList.Add(oRoot);
    EXPECT_EQ(Raised([&] { oList.Add(NewTree()); }), "\"Root\" with wrong data type\n");
    EXPECT_EQ(Trail([&] { oList.Add(NewTree()); }), "vok::Data_NodeIt::Add(const Data&)\n");
    Data_NodeSet oSet;
    for (const u2_t u : {1u, 3u, 0u, 3u, 2u, 1u}) oSet.Add(oRoot.GetNodeFromID(u));
    EXPECT_EQ(IdsOf(oSet), (Ids{0, 1, 2, 3}));
    EXPECT_EQ(Raised([&] { oSet.Add(NewTree()); }), "\"Root\" with wrong data type\n");
    EXPECT_FALSE(oSet.GetNth(4).IsNode());
    EXPECT_EQ(oList.Size(), 4u);
    Ids oIds;
    for (; oList.SkipZombies(); oList.Advance()) oIds.push_back(oList.GetData().GetId());
    EXPECT_EQ(oIds, (Ids{2, 1, 0}));
    EXPECT_FALSE(oList.GetData().IsNode());
    oRoot.Shrink();
    for (oList.SetPos(0); oList.SkipZombies(); oList.Advance()) {
        EXPECT_LT(oList.GetData().GetId(), 3u);
    }
}

}  // namespace
}  // namespace vok
