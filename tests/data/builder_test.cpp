// SPDX-License-Identifier: MIT
#include "vok/data/builder.h"

#include "tests/support.h"

namespace vok {
namespace {

// One random step, told to the builder and, node by node, to cursors.
class Twins {
  public:
    Twins(Data& oBuilt, Data& oMade) : m_oBuilder(oBuilt), m_oOpen{oMade} {}

    void Step(std::mt19937& oRandom) {
        static const std::string NAMES[] = {"b", "a", "", "a name that is longer", "\xFF", "c"};
        static const std::string TEXTS[] = {"", "text", "\xC3\xA4", "\xFF", std::string(300, 'x')};
        const std::string& sName = NAMES[RandomBelow(oRandom, std::size(NAMES))];
        const std::string& sText = TEXTS[RandomBelow(oRandom, std::size(TEXTS))];
        const i2_t iValue = static_cast<i2_t>(oRandom());
        constexpr u3_t FAR = u3_t{1} << 40;
        Data& o = m_oOpen.back();
        switch (RandomBelow(oRandom, 12)) {
            case 0:
                m_oBuilder.Open(sName);
                m_oOpen.push_back(o.CreateNewSucc(sName));
                break;
            case 1:
                if (m_oOpen.size() == 1) break;
                m_oBuilder.Close();
                m_oOpen.pop_back();
                break;
            case 2:
                m_oBuilder.AddEmpty(sName);
                m_oBuilder.SetAttVal("k", sText.c_str());
                o.CreateNewSucc(sName).SetAttVal("k", sText.c_str());
                break;
            case 3:
                m_oBuilder.AddQuad(sName, 1, 2, 3, static_cast<u2_t>(iValue));
                o.CreateNewSucc(sName).SetValQuad(1, 2, 3, static_cast<u2_t>(iValue));
                break;
            case 4:
                m_oBuilder.AddDate(sName, iValue);
                o.AddDbl(sName, iValue, Data_Node::Date);
                break;
            case 5: EXPECT_EQ(m_oBuilder.AddDbl(sName, iValue), o.AddDbl(sName, iValue)); break;
            case 6: EXPECT_EQ(m_oBuilder.AddBool(sName, true), o.AddBool(sName, true)); break;
            case 7: EXPECT_EQ(m_oBuilder.AddLng(sName, FAR), o.AddLng(sName, FAR)); break;
            case 8:
                EXPECT_EQ(m_oBuilder.AddBin(sName, sText.data(), 2),
                          o.AddBin(sName, sText.data(), 2));
                break;
            case 9: EXPECT_EQ(m_oBuilder.AddInt(sName, iValue), o.AddInt(sName, iValue)); break;
            default: EXPECT_EQ(m_oBuilder.AddStr(sName, sText), o.AddStr(sName, sText));
        }
    }
    void Finish() { m_oBuilder.Finish(); }

  private:
    Data_Builder m_oBuilder;
    std::vector<Data> m_oOpen;
};

TEST(Builder, BuildsWhatCursorsBuild) {
    for (unsigned uSeed = 0; uSeed < 200; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        Data oBuilt;
        Data oMade = NewTree();
        // Below nodes that have successors, or blanks, or nothing; twice in one tree.
        for (Data* p : {&oBuilt, &oMade}) {
            if (uSeed % 3 == 1) p->AddInt("b", 1);
            if (uSeed % 3 == 2) p->SetValStr(" \n");
        }
        for (int iTwice = 0; iTwice < 2; ++iTwice) {
            Twins oTwins(oBuilt, oMade);
            for (unsigned u = 0; u < uSeed; ++u) oTwins.Step(oRandom);
            if (uSeed % 2 == 0) oTwins.Finish();
        }
        ASSERT_EQ(Fault(oBuilt), "") << uSeed;
        ASSERT_EQ(DumpOf(oBuilt), DumpOf(oMade)) << uSeed;
    }
}

TEST(Builder, Refuses) {
    Data oRoot = NewTree();
    Data oNode = oRoot.CreateNewSucc("n");
    oNode.SetValInt(1);
    EXPECT_EQ(Failing([&] { Data_Builder o(oNode); }),
              "node \"n\" with wrong data type: 'Integer'");
    {
        Data_Builder o(oRoot);
        EXPECT_EQ(Failing([&] { o.Close(); }), "node has no predecessor");
        EXPECT_EQ(Failing([&] { o.SetAttVal("k", "v"); }), "object points to nothing");
        EXPECT_EQ(Failing([&] { o.AddBin("n", nullptr, 1); }), "object points to nothing");
        EXPECT_EQ(Failing([&] { o.AddInt(Data_Key{77}, 1); }),
                  "assertion failed: b.m_oName.ValidHndl(uHndl)");
        o.AddInt("m", 2);
        o.Finish();
        o.Finish();
        for (const auto& oAdd : {+[](Data_Builder& b) { b.AddInt("n", 1); },
                                 +[](Data_Builder& b) { b.AddStr("n", "text"); },
                                 +[](Data_Builder& b) { b.SetAttVal("n", "1"); }}) {
            EXPECT_EQ(Failing([&] { oAdd(o); }), "object points to nothing");
        }
    }
    EXPECT_EQ(Fault(oRoot), "");
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt()), (Ids{2, 1}));
}

// Whatever is refused, what was built before is there.
TEST(Builder, OutOfMemory) {
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        Data oRoot = NewTree();
        u2_t uBuilt = 0;
        const bool bRefused = Mem_Probe::HasRefused(uNth, [&] {
            Data_Builder o(oRoot);
            for (int i = 0; i < 40; ++i) {
                o.Open("name" + std::to_string(i));
                o.AddStr("a", std::string(40, 'a'));
                o.AddBin("b", "123", 3);
                o.Close();
                uBuilt += 3;
            }
        });
        ASSERT_EQ(Fault(oRoot), "") << uNth;
        EXPECT_GE(oRoot.GetNodes(), uBuilt);
        if (!bRefused) break;
    }
    // A level that is refused is not there.
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        Data oRoot = NewTree();
        u2_t uOpened = 0;
        const bool bRefused = Mem_Probe::HasRefused(uNth, [&] {
            Data_Builder o(oRoot);
            for (; uOpened < 200; ++uOpened) o.Open("level");
        });
        EXPECT_EQ(oRoot.GetNodes(), uOpened + 1) << uNth;
        if (!bRefused) break;
    }
}

}  // namespace
}  // namespace vok
