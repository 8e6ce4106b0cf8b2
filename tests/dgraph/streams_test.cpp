// The same document through every kind of stream.
#include <cmath>
#include <cstdio>
#include <limits>

#include "tests/dgraph/dgraph_support.h"
#include "vok/file/file.h"

namespace vok {
namespace {

// A value of any kind, links aside.
void SetRandomValue(Data& oNode, std::mt19937& oRandom, const Texts& sTexts) {
    const std::string& sText = sTexts[Below(oRandom, sTexts.size())];
    switch (oRandom() % 11) {
        case 0: oNode.SetValBool(oRandom() % 2 != 0); break;
        case 1: oNode.SetValInt(static_cast<i2_t>(oRandom())); break;
        case 2: oNode.SetValInt(static_cast<i2_t>(oRandom() % 256), Data_Node::Char); break;
        case 3: oNode.SetValDbl(std::ldexp(Below(oRandom, 1000), 3), Data_Node::Float); break;
        case 4: oNode.SetValDbl(Below(oRandom, 1 << 20) / 7.0); break;
        case 5: oNode.SetValDbl(std::floor(Below(oRandom, 1 << 30) / 3.0), Data_Node::Date); break;
        case 6:
        case 7: oNode.SetValStr(std::string_view(sText)); break;
        case 8: oNode.SetValBin(sText.data(), static_cast<u2_t>(sText.size())); break;
        case 9: oNode.SetValLng(u3_t{oRandom()} << 31); break;
        default: oNode.SetValQuad(static_cast<u2_t>(oRandom()), 0, 1, static_cast<u2_t>(oRandom()));
    }
}

Data RandomTree(unsigned uSeed) {
    std::mt19937 oRandom(uSeed);
    Texts sTexts = {
        "a",      "b", "abc",      "name",           "name2", "a name of more than sixteen bytes",
        "x.y[z]", "",  "\xC3\xA4", "\xE4 not UTF-8", "*",     " "};
    sTexts.push_back(std::string(70, 'l'));
    if (uSeed % 2 != 0) sTexts.resize(6);  // only names that are written as they stand
    Data oRoot = Versioned();
    const unsigned uNodes = 5 + Below(oRandom, 60);
    // The order of attributes is that in which their names first came up.
    for (const char* s : {"att.1", "b"}) oRoot.SetAttVal(s, "v");
    Grow(oRoot, oRandom, uNodes, sTexts);
    for (u2_t u = 1; u <= uNodes; ++u) {
        Data oNode = oRoot.GetNodeFromID(u);
        if (oRandom() % 8 == 0) oNode.SetAttVal("att.1", sTexts[Below(oRandom, 5)].c_str());
        if (oRandom() % 16 == 0) oNode.SetAttVal("b", "\xE4\"]");
        if (oNode.GetType() == Data_Node::Empty) SetRandomValue(oNode, oRandom, sTexts);
    }
    for (unsigned u = 0; u < uNodes / 8; ++u) {
        Data oLink = oRoot.GetNodeFromID(1 + Below(oRandom, uNodes));
        if (oLink.GetType() != Data_Node::Tree) {
            oLink.SetValLink(oRoot.GetNodeFromID(Below(oRandom, uNodes)));
        }
    }
    for (unsigned u = 0; uSeed % 4 == 0 && u < uNodes / 8; ++u) {
        Data oNode = oRoot.GetNodeFromID(1 + Below(oRandom, uNodes));
        if (oNode.GetType() != Data_Node::Zombi) oNode.Remove();
    }
    return oRoot;
}

TEST(DgraphStreams, MemoryAndForeignStreamsAgree) {
    for (unsigned uSeed = 0; uSeed < 200; ++uSeed) {
        SCOPED_TRACE(uSeed);
        const Data oTree = RandomTree(uSeed);
        const std::string sBytes = Save(oTree);
        Drop_Stream oOut;
        Dgraph_SaveDGraph(oTree, oOut);
        std::string sForeign;
        for (const std::string& s : oOut.m_oWritten) sForeign += s;
        ASSERT_EQ(sForeign, sBytes);

        // What is read is what was written, gaps in run indexes aside; so is the second time.
        const std::string sShown = Load(sBytes);
        if (uSeed % 4 != 0) {
            ASSERT_EQ(Save(LoadTree(sBytes)), sBytes);
        }
        ASSERT_EQ(Load(Save(LoadTree(sBytes))), sShown);
        // Cut off or damaged somewhere they still agree.
        std::mt19937 oRandom(uSeed);
        for (int i = 0; i < 8; ++i) {
            std::string sBad = sBytes.substr(0, 30 + Below(oRandom, sBytes.size() - 30));
            (void)Load(sBad);
            if (sBad.size() > 30) {
                sBad[30 + Below(oRandom, sBad.size() - 30)] = static_cast<char>(oRandom());
            }
            (void)Load(sBad + sBytes.substr(sBad.size()));
        }
    }
}

TEST(DgraphStreams, TheSameWithTheNamesOfAnotherOrder) {
    // Records in an order that the writer never uses.
    std::mt19937 oRandom(1);
    for (int iRound = 0; iRound < 200; ++iRound) {
        std::string sRecords;
        const int iCount = 1 + static_cast<int>(Below(oRandom, 40));
        std::string sRun;
        int iIndex = 0;
        for (int i = 0; i < iCount; ++i) {
            const std::string sName(1, static_cast<char>('a' + Below(oRandom, 4)));
            iIndex = sName == sRun ? iIndex + 1 : 0;
            sRun = sName;
            sRecords += Leaf(sName + "[" + std::to_string(iIndex) + "]", 1, I32(i));
        }
        const Data oTree = LoadTree(Document(iCount, sRecords));
        const std::string sShown = Load(Document(iCount, sRecords));
        for (u2_t u = 1; u < static_cast<u2_t>(iCount); ++u) {
            const std::string sBefore = oTree.GetNthSucc(u - 1).GetName();
            const std::string sName = oTree.GetNthSucc(u).GetName();
            ASSERT_LE(sBefore, sName) << sShown;
            if (sBefore == sName) {
                ASSERT_LT(oTree.GetNthSucc(u - 1).GetValInt(), oTree.GetNthSucc(u).GetValInt());
            }
        }
        ASSERT_EQ(Load(Save(oTree)), sShown);
    }
}

TEST(DgraphStreams, Files) {
    const std::string sPath = testing::TempDir() + "vok_dgraph_streams_test.dgraph";
    const Data oTree = RandomTree(7);
    File oFile(sPath.c_str(), "w");
    Dgraph_SaveDGraph(oTree, oFile);
    oFile.Open(sPath.c_str(), "r");
    Arr<char> oBytes;
    oFile.Read(oBytes, File_Stream::ALL);
    EXPECT_EQ(std::string(oBytes.Beg(), oBytes.Size()), Save(oTree));
    oFile.Seek(0);
    EXPECT_TRUE(Dgraph_CanLoadDGraph(oFile));
    EXPECT_EQ(LoadFrom(oFile), Load(Save(oTree)));
    oFile.Close();
    std::remove(sPath.c_str());
}

TEST(DgraphStreams, DocumentsFollowEachOther) {
    // Whatever the last record is, the position is right behind it.
    for (const std::string& sLast : {Open("z[0]", 0), Leaf("z[0]", 1, I32(1)), Text("z[0]", "t"),
                                     Leaf("z[0]", 200, ""), Leaf("z[0]", 8, Block(""))}) {
        const std::string sBytes = Document(2, Leaf("y[0]", 1, I32(1)) + sLast);
        File_Buf oBuf("w");
        oBuf.Write("ahead", 5);
        for (int i = 0; i < 2; ++i) oBuf.Write(sBytes.data(), sBytes.size());
        oBuf.Seek(5);
        const std::string sShown = LoadFrom(oBuf);
        EXPECT_EQ(static_cast<std::size_t>(oBuf.Tell()), 5 + sBytes.size());
        EXPECT_EQ(LoadFrom(oBuf), sShown);
        EXPECT_EQ(oBuf.Remaining(), 0u);
    }
}

TEST(DgraphStreams, CanLoad) {
    struct {
        std::string sBytes;
        bool bGood;
    } const aCases[] = {
        // clang-format off
        {"DGraphBin", true}, {"DGraphBin\xFF and more", true}, {Header(9, 9, 9), true},
        {"DGraphBi", false}, {"", false}, {"xDGraphBin", false},
        // clang-format on
    };
    for (const auto& o : aCases) {
        File_Buf oBuf("w");
        oBuf.Write("12", 2);
        oBuf.Write(o.sBytes.data(), o.sBytes.size());
        oBuf.Seek(2);
        EXPECT_EQ(Dgraph_CanLoadDGraph(oBuf), o.bGood) << o.sBytes;
        EXPECT_EQ(oBuf.Tell(), 2);
    }
    Drop_Stream oStream("DGraphBin");
    EXPECT_EQ(Trail([&] { (void)Dgraph_CanLoadDGraph(oStream); }), "vok::Dgraph_CanLoadDGraph\n");
}

}  // namespace
}  // namespace vok
