// SPDX-License-Identifier: MIT
// Hashes of trees: a contract, so the values below never change. They were made with xxhsum of
// bytes that were put together by hand.
#include "vok/data/hash.h"

#include "tests/support.h"

namespace vok {
namespace {

std::string Hex(std::string_view sBytes) {
    std::string s;
    for (const char c : sBytes) {
        s += "0123456789abcdef"[static_cast<u0_t>(c) >> 4];
        s += "0123456789abcdef"[static_cast<u0_t>(c) & 15u];
    }
    return s;
}

Data Order() {
    Data oTree = NewTree();
    oTree.SetRootName("order");
    oTree.SetAttVal("state", "open");
    oTree.CreateNewSucc("price").SetValDbl(2.5);
    Data oId = oTree.CreateNewSucc("id");
    oId.SetValInt(17);
    oTree.CreateNewSucc("note").SetValStr("Gru\xC3\x9F");
    oTree.CreateNewSucc("link").SetValLink(oId);
    return oTree;
}

Data EveryType() {
    Data oTree = NewTree();
    oTree.CreateNewSucc("a").SetValBool(true);
    oTree.CreateNewSucc("b").SetValInt(-1);
    oTree.CreateNewSucc("c").SetValInt(0xE4, Data_Node::Char);
    oTree.CreateNewSucc("d").SetValDbl(0.5, Data_Node::Float);
    oTree.CreateNewSucc("e").SetValDbl(-0.0);
    oTree.CreateNewSucc("f").SetValDbl(1e9, Data_Node::Date);
    oTree.CreateNewSucc("g").SetValStr("");
    oTree.CreateNewSucc("h").SetValBin("\0\1", 2);
    oTree.CreateNewSucc("i").SetValLng(u3_t{1} << 40);
    oTree.CreateNewSucc("j").SetValQuad(1, 2, 3, 4);
    oTree.CreateNewSucc("k").SetValLink(Data());
    return oTree;
}

TEST(Hash, IsAContract) {
    const struct {
        Data oTree;
        const char* sForm;
        const char* sHash;
    } CASES[] = {
        {NewTree(), "766f6b0101000000001000", "b9b22d55cffbe5700c02b1b98ab77812"},
        {Order(),
         "766f6b0101050000006f7264657202050000007374617465040000006f70656e1001020000006964"
         "12110000000001040000006c696e6b1c0001040000006e6f74651705000000477275c39f00010500"
         "0000707269636515000000000000044000000301000000",
         "c45a463e9a18ea0b6431c455f7dc299d"},
        {EveryType(),
         "766f6b0101000000001001010000006111010000000001010000006212ffffffff00010100000063"
         "13e40000000001010000006414000000000000e03f00010100000065150000000000000080000101"
         "00000066160000000065cdcd41000101000000671700000000000101000000681802000000000100"
         "0101000000691900000000000100000001010000006a1a0100000002000000030000000400000000"
         "01010000006b1c000005",
         "ca16d62b644ae86be58acb98556ee670"},
    };
    for (const auto& o : CASES) {
        std::string sForm;
        o.oTree.Canonical([&](std::string_view s) { sForm += s; });
        EXPECT_EQ(Hex(sForm), o.sForm);
        EXPECT_STREQ(o.oTree.Hash().ToHex().CStr(), o.sHash);
    }
}

// However the pieces are cut: texts that are longer than one, and many that are not.
TEST(Hash, PiecesDoNotMatter) {
    Data oTree = NewTree();
    for (const std::size_t uSize : {3u, 16383u, 16384u, 16385u, 100000u}) {
        oTree.CreateNewSucc("t").SetValStr(std::string(uSize, 'x'));
    }
    for (int i = 0; i < 5000; ++i) oTree.CreateNewSucc("i").SetValInt(i);
    Data_Hasher oByBytes;
    std::size_t uMost = 0;
    oTree.Canonical([&](std::string_view s) {
        uMost = std::max(uMost, s.size());
        for (const char c : s) oByBytes.Add({&c, 1});
    });
    EXPECT_EQ(oByBytes.Get(), oTree.Hash());
    EXPECT_EQ(uMost, 100000u);
}

TEST(Hash, RefusesWhatIsNoNode) {
    Data oTree = NewTree();
    Data oGone = oTree.CreateNewSucc("a");
    oGone.Remove();
    EXPECT_EQ(Raised([&] { (void)oGone.Hash(); }), DELETED);
    EXPECT_NE(Raised([] { (void)Data().Hash(); }), NOTHING_RAISED);
}

}  // namespace
}  // namespace vok
