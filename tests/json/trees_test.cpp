// SPDX-License-Identifier: MIT
// Trees of every kind go out and come back: random ones, kept ones, deep ones; and documents that
// are cut short, or memory and streams that fail.
#include <bit>

#include "tests/json/json_support.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

const Texts NAMES = {"",       "a",           "b",        "a b",    "#type", "#value",
                     "##name", "#attributes", "\xC3\xA4", "a/b[0]", "\x01"};

void SetRandomValue(Data& o, std::mt19937& oRandom) {
    const u3_t uBits = u3_t{oRandom()} << 32 | oRandom();
    const auto iWord = static_cast<i2_t>(uBits);
    const double d = std::bit_cast<double>(uBits);
    const std::string sText =
        Noise(oRandom() % 40, 3 + RandomBelow(oRandom, 6), static_cast<unsigned>(oRandom()));
    switch (oRandom() % 14) {
        case 0: return o.SetValInt(iWord % 3, Data_Node::Boolean);
        case 1: return o.SetValInt(iWord);
        case 2: return o.SetValInt(iWord % 0x120000, Data_Node::Char);
        case 3: return o.SetValDbl(d, Data_Node::Float);
        case 4: return o.SetValDbl(d);
        case 5: return o.SetValDbl(iWord, Data_Node::Date);
        case 6: return o.SetValDbl(d, Data_Node::Date);
        case 7: return o.SetValStr(sText);
        case 8: return o.SetValBin(sText.data(), static_cast<u2_t>(sText.size()));
        case 9: return o.SetValLng(uBits >> oRandom() % 64);
        case 10:
            return o.SetValQuad(1, static_cast<u2_t>(uBits), 0, static_cast<u2_t>(uBits >> 32));
        case 11: return o.SetValLink(o.GetNodeFromID(RandomBelow(oRandom, o.GetNodes())));
        case 12: return o.SetValDbl(iWord / 4.0);
        default: return;
    }
}

void SetRandomAttributes(Data& o, std::mt19937& oRandom) {
    const Texts oMarks = {"item", "list", "item list", "object", "text", "item text", "x", ""};
    if (oRandom() % 2 == 0)
        o.SetAttVal("#json", oMarks[RandomBelow(oRandom, oMarks.size())].c_str());
    if (oRandom() % 3 == 0) o.SetAttVal("#type", "\"\\\n");
    if (oRandom() % 3 == 0) o.SetAttVal("k", "v");
}

TEST(JsonTrees, Random) {
    std::mt19937 oRandom(20261126);
    for (int iTree = 0; iTree < 400; ++iTree) {
        Data oRoot = NewTree();
        if (iTree % 4 == 0) oRoot.SetRootName(NAMES[RandomBelow(oRandom, NAMES.size())]);
        const Texts oNames(NAMES.begin(), NAMES.begin() + 1 + RandomBelow(oRandom, NAMES.size()));
        Grow(oRoot, oRandom, 1 + RandomBelow(oRandom, 80), oNames);
        for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
            Data oNode = oRoot.GetNodeFromID(u);
            if (oNode.GetType() != Data_Node::Tree) SetRandomValue(oNode, oRandom);
            if (oRandom() % 4 == 0) SetRandomAttributes(oNode, oRandom);
        }
        for (unsigned u = RandomBelow(oRandom, 8); u > 0 && iTree % 2 == 0; --u) {
            Data oNode = oRoot.GetNodeFromID(RandomBelow(oRandom, oRoot.GetNodes()));
            if (oNode.GetId() != 0 && oNode.GetPred().IsNode() &&
                oNode.GetType() != Data_Node::Zombi) {
                oNode.Remove();
            }
        }
        ASSERT_TRUE(ComesBack(oRoot)) << Show(oRoot);
    }
}

// Everything that fuzzing has kept, and the samples: as far as it loads, in any form.
TEST(JsonTrees, Kept) {
    std::size_t uTrees = 0;
    for (const char* sFolder : {VOK_SOURCES "/fuzz/corpus", VOK_SOURCES "/tests/tools/samples"}) {
        for (const auto& oFile : std::filesystem::recursive_directory_iterator(sFolder)) {
            if (!oFile.is_regular_file()) continue;
            const std::string sBytes = OnDisk(oFile.path().string());
            for (const bool bJson : {false, true}) {
                Data oTree;
                File_Buf oIn(sBytes.data(), sBytes.size());
                (void)Raised([&] { bJson ? Json_Load(oTree, oIn) : Dgraph_Load(oTree, oIn); });
                if (!oTree.IsNode() || oTree.GetNodes() < 2) continue;
                ++uTrees;
                oTree.SetToRoot();
                EXPECT_TRUE(ComesBack(oTree)) << oFile.path();
            }
        }
    }
    EXPECT_GT(uTrees, 400u);
}

// Depth costs no stack, and lines are no longer than they are at 32 levels.
TEST(JsonTrees, Deep) {
    constexpr std::size_t LEVELS = 250000 * LARGE;
    for (const auto& [sOpen, sClose] : {Pair{"[", "]"}, {"{\"a\":", "}"}, {"{\"a\":[[", "]]}"}}) {
        const std::string sJson = Repeat(sOpen, LEVELS) + "1" + Repeat(sClose, LEVELS);
        const Data oTree = FromJson(sJson);
        EXPECT_GE(oTree.GetNodes(), LEVELS);
        EXPECT_TRUE(JsonOf(oTree) == sJson);
        // Without its end.
        Data oPart;
        EXPECT_TRUE(Has(Failing([&] { Json_LoadString(oPart, sJson.substr(0, sJson.size() / 2)); }),
                        "invalid JSON"));
    }
    const Data oTree = FromJson(Repeat("[", LEVELS / 10) + Repeat("]", LEVELS / 10));
    EXPECT_LT(JsonOf(oTree, Json_Layout::Lines).size(), 66 * 2 * LEVELS / 10);
}

// A document of several pieces: what stands at their borders, and where an error is.
TEST(JsonTrees, Pieces) {
    std::mt19937 oRandom(3);
    std::string sJson = "[";
    while (sJson.size() < 900000) {
        sJson += "{\"\u00e4\xC3\xA4\": -1.25e3,\n\"x\\ny\": [true , null,\"" +
                 std::string(RandomBelow(oRandom, 3000), 'x') + "\xE2\x82\xAC\\\"\"]}\n,";
    }
    std::string sBad = sJson + "\"\\uD83D\"]";
    sJson += "0]\n";
    for (const std::string& s : {sJson, sBad}) {
        Data oMemory;
        Data oStream;
        Load_Report oReport;
        Load_Report oStreamReport;
        Drop_Stream oIn(s, 100000);
        const std::string sFault = Failing([&] { Json_LoadString(oMemory, s, {}, &oReport); });
        EXPECT_EQ(Failing([&] { Json_Load(oStream, oIn, {}, &oStreamReport); }), sFault);
        EXPECT_EQ(PlaceOf(oStreamReport), PlaceOf(oReport));
        EXPECT_EQ(oReport.m_uOffset, s.size() - (sFault.empty() ? 0 : 8));
        EXPECT_TRUE(Data::Equal(oMemory, oStream));
        EXPECT_TRUE(ComesBack(oMemory));
    }
}

const char* const ALL = R"({"#attributes":{"k":"v"},"#name":"top","a":[1,{"b":[[],[2]]},null],)"
                        R"("c":{"#type":"Binary","#value":"AAH/"},"d":"\u00e4\ud83d\ude00\"x",)"
                        R"("l":{"#type":"Link","#value":"/a[1]/b[0]"},"n":[-1.5e-7],"t":true})";

TEST(JsonTrees, CutShort) {
    const std::string sAll(ALL);
    for (std::size_t u = 0; u < sAll.size(); ++u) {
        Data oTree;
        Load_Report oReport;
        const auto oLoad = [&] { Json_LoadString(oTree, sAll.substr(0, u), {}, &oReport); };
        EXPECT_TRUE(Has(Failing(oLoad), "invalid JSON: ")) << u;
        EXPECT_GE(oReport.m_uOffset + 12, u);
        EXPECT_EQ(Fault(oTree), "");
        // What there is of it comes back like any tree.
        EXPECT_TRUE(ComesBack(oTree)) << u;
    }
}

// A byte changed: the document is refused, or another tree that comes back.
TEST(JsonTrees, Damaged) {
    const std::string sAll(ALL);
    for (std::size_t u = 0; u < sAll.size(); ++u) {
        for (const char c : std::string("\"{}[],:#\\0\xFF ", 12)) {
            std::string sBad = sAll;
            sBad[u] = c;
            Data oTree;
            (void)Raised([&] { Json_LoadString(oTree, sBad); });
            ASSERT_EQ(Fault(oTree), "") << sBad;
            ASSERT_TRUE(ComesBack(oTree)) << sBad;
        }
    }
}

// Every allocation and every operation of the stream fails once: nothing leaks, and the same
// succeeds right afterwards.
TEST(JsonTrees, Failures) {
    const std::string sJson = JsonOf(FromJson(ALL), Json_Layout::Lines);
    const std::string sLong = "{\"z\":[" +
                              Repeat("\"a text that is longer than any small buffer\",", 100) +
                              Repeat("{\"x\":[", 100) + Repeat("]}", 100) + "]," + sJson.substr(1);
    for (const std::string& s : {sJson, sLong}) {
        const u3_t uBytes = Mem::BytesInUse();
        {
            Data oTree;
            const Mem_Probe oProbe;
            unsigned uNth = 1;
            while (Mem_Probe::HasRefused(uNth, [&] {
                Drop_Stream oIn(s, 100);
                Json_Load(oTree, oIn);
            })) {
                ASSERT_EQ(Fault(oTree), "");
                if (uNth % 2 == 0) oTree.Clear();
                ++uNth;
            }
            EXPECT_GT(uNth, 3u);
            Drop_Stream oOut;
            const auto oSave = [&] { Json_Save(oTree, oOut); };
            for (uNth = 1; Mem_Probe::HasRefused(uNth, oSave);) ++uNth;
            EXPECT_GT(uNth, 1u);
            oTree.Clear();
        }
        EXPECT_EQ(Mem::BytesInUse(), uBytes);
    }
    for (unsigned uNth = 1; uNth <= 2; ++uNth) {
        Drop_Stream oOut;
        oOut.m_uFailIn = uNth;
        EXPECT_EQ(Failing([&] { Json_Save(FromJson(ALL), oOut); }).empty(), uNth > 1);
        Drop_Stream oIn(ALL);
        oIn.m_uFailIn = uNth;
        Data oTree;
        EXPECT_TRUE(Has(Failing([&] { Json_Load(oTree, oIn); }), "unexpected end of file"));
    }
}

}  // namespace
}  // namespace vok
