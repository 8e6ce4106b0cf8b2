// SPDX-License-Identifier: MIT
// Several threads read one tree that SetAccessMode has prepared.
#include <atomic>
#include <thread>

#include "tests/support.h"
#include "vok/data/walk.h"

namespace vok {
namespace {

// What a reader can find out, as one number.
u3_t Read(Data oRoot, unsigned uSeed) {
    u3_t uSum = 0;
    std::mt19937 oRandom(uSeed);
    for (Data_Walk oWalk(oRoot); oWalk.Next();) uSum += oWalk.GetId() * (oWalk.GetDepth() + 1);
    for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
        const Data oNode = oRoot.GetNodeFromID(u);
        uSum += AttributesOf(oNode).size() + oNode.GetSuccIt("b").Size();
        for (const u2_t uSucc : IdsOf(oNode.GetSuccIt())) uSum += uSucc;
    }
    for (unsigned u = 0; u < 20; ++u) {
        const Data oNode = oRoot.GetNodeFromID(RandomBelow(oRandom, oRoot.GetNodes()));
        const Str oPath = oNode.GetPath();
        EXPECT_EQ(oRoot.GetNodeSet(oPath.CStr()).GetNth(0), oNode);
    }
    const Str oTag = oRoot.GetUserTag();
    EXPECT_EQ(Raised([&] { (void)oRoot.GetValInt(); }),
              "node \"Root\" with wrong data type: 'Integer' expected but got 'Tree'\n");
    return uSum + oRoot.GetNodeSet("//a/b").Size() + oTag.Len();
}

// Runs oBody on eight threads at a time, which it gets the numbers of.
template <class F>
void OnThreads(const F& oBody) {
    std::vector<std::thread> oThreads;
    for (unsigned u = 0; u < 8; ++u) oThreads.emplace_back(oBody, u);
    for (std::thread& oThread : oThreads) oThread.join();
}

TEST(Threads, ReadOneTree) {
    std::mt19937 oRandom(1);
    Data oRoot = NewTree();
    Grow(oRoot, oRandom, 2000, {"b", "a", "c", "name of some length"});
    oRoot.SetUserTag("shared");
    for (u2_t u = 0; u < oRoot.GetNodes(); u += 3) oRoot.GetNodeFromID(u).SetAttVal("mark", "xy");
    oRoot.SetAccessMode();
    std::atomic<u3_t> uSum{0};
    OnThreads([&uSum, oRoot](unsigned u) { uSum += Read(oRoot, u); });
    EXPECT_EQ(uSum, 8 * Read(oRoot, 1));
}

// Threads that own trees of their own share nothing but the allocator and the messages.
TEST(Threads, BuildTreesOfTheirOwn) {
    const u3_t uBlocks = Mem::BlocksInUse();
    OnThreads([](unsigned u) {
        std::mt19937 oRandom(u);
        Data oRoot = NewTree();
        for (int i = 0; i < 20; ++i) {
            Grow(oRoot, oRandom, 100, {"b", "a"});
            oRoot.GetNodeFromID(1).Remove();
            oRoot.Shrink();
            oRoot.CreateNewSucc("a");
        }
    });
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

}  // namespace
}  // namespace vok
