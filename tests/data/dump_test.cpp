// The native dump: its bytes, what it keeps, and what is refused.
#include <functional>

#include "tests/support.h"
#include "vok/data/walk.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

using namespace std::string_literals;
using Words = std::vector<u2_t>;

std::string Little(u3_t uValue, unsigned uBytes) {
    std::string s;
    for (unsigned u = 0; u < uBytes; ++u) s += static_cast<char>(uValue >> 8 * u & 0xFF);
    return s;
}
std::string Bytes(const Words& oWords) {
    std::string s;
    for (const u2_t u : oWords) s += Little(u, 4);
    return s;
}

u2_t Flags(u2_t uPredField, Data_Node::Type eType) {
    return uPredField << 4 | eType;
}

// A dump in its parts; to begin with that of the tree
//     Root (user tag "t")
//       a     Integer 7, attribute k = v
//       b[0]  String "hi"
//       b[1]  removed
struct Parts {
    std::string sMagic = "\x0B\x17\x01\x01\x78\x56\x34\x12\2\0\0\0\1\0\0\0\x0A\0\0\0vok::Data\0"s;
    std::string sTag = "t";
    std::string sNames = "b\0a\0"s;
    Words oNodes = {
        0, Flags(0, Data_Node::Tree),    0, 3,  // successors at word 0 of the groups
        1, Flags(1, Data_Node::String),  1, 3,  // text at 1, 3 bytes with its NUL
        2, Flags(1, Data_Node::Integer), 7, 0, 1, Flags(1, Data_Node::Zombi), 0, 0,
    };
    Words oGroups = {3, 3, 2, 1, 3};
    std::string sHeap = "\0hi\0v\0"s;
    std::string sAttNames = "k\0"s;
    Words oAttributes = {1, 2, 4};
    std::string sEnd = "\0\0\0\0"s;

    [[nodiscard]] std::string All() const {
        std::string s = sMagic + Little(sTag.size(), 4) + sTag;
        for (const std::string& sBlock :
             {sNames, Bytes(oNodes), Bytes(oGroups), sHeap, sAttNames, Bytes(oAttributes)}) {
            s += Little(sBlock.size(), 8) + sBlock;
        }
        return s + sEnd;
    }
};

std::string Dump(const Data& oTree) {
    File_Buf oBuf("w");
    oTree.Dump(oBuf);
    return Content(oBuf);
}

// The message that loading raises, without its line break; "" and the tree when there is none.
std::string Load(std::string_view sBytes, Data& oTree, const Limits& oLimits = {},
                 Load_Report* pReport = nullptr) {
    // A block of its own size: reading past its end is noticed.
    const std::unique_ptr<char[]> pBytes(new char[sBytes.size()]);
    sBytes.copy(pBytes.get(), sBytes.size());
    File_Buf oBuf(pBytes.get(), sBytes.size());
    std::string s = Raised([&] { oTree.Load(oBuf, oLimits, pReport); });
    if (s == NOTHING_RAISED) return "";
    if (!s.empty() && s.back() == '\n') s.pop_back();
    return s;
}

// Everything that trusts the arrays of a tree.
void Exercise(Data oTree) {
    u3_t uSum = 0;
    for (Data_Walk o(oTree); o.Next();) {
        uSum += o.GetName() != nullptr;
        if (o.GetType() == Data_Node::String) uSum += o.Text().size();
        if (o.GetType() == Data_Node::Binary) uSum += o.Block().find('x');
        if (o.GetType() == Data_Node::Quad) uSum += o.QuadWord(3);
        if (o.GetType() == Data_Node::Link) uSum += o.GetData().GetValLink().GetId();
        uSum += AttributesOf(o.GetData()).size() + o.GetData().GetPath().Len();
    }
    EXPECT_NE(uSum, ~u3_t{0});
    (void)oTree.HasCycle();
    EXPECT_TRUE(Data::Equal(oTree, oTree.MkClone()));
    Dgraph_SetVersion(oTree, 1, 3, 0);
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTree, oBuf);
    for (u2_t u = 0; u < oTree.GetNodes() && u < 10; ++u) {
        Data oNode = oTree.GetNodeFromID(u);
        (void)Raised([&] { oNode.SetAttVal("k", "w"); });
        (void)Raised([&] { oNode.Insert("b", 0).MoveTo(oTree, 1); });
        (void)Raised([&] { oNode.ClearVal(); });
        if (u % 3 == 2) (void)Raised([&] { oNode.Remove(); });
    }
    oTree.Shrink();
    EXPECT_TRUE(Data::Equal(oTree, oTree.MkClone()));
    oTree.RemoveSuccs();
}

// All types, attributes, placeholders, what was moved, texts that are shared.
Data Rich() {
    Data oRoot = NewTree();
    oRoot.SetUserTag("a tag");
    oRoot.SetRootName("top");
    for (const char* sName : {"bool", "int", "char", "float", "double", "date", "text", "bytes",
                              "long", "quad", "link", "", "text", "tree"}) {
        oRoot.CreateNewSucc(sName);
    }
    const auto At = [&](u2_t uId) { return oRoot.GetNodeFromID(uId); };
    At(1).SetValBool(true);
    At(2).SetValInt(-5);
    At(3).SetValInt(200, Data_Node::Char);
    At(4).SetValDbl(0.5, Data_Node::Float);
    At(5).SetValDbl(1e300);
    At(6).SetValDbl(1e9, Data_Node::Date);
    At(7).SetValStr(
        "gr\xC3\xBC\xC3\x9F"
        "e");
    At(8).SetValBin("\0\x80\xFF", 3);
    At(9).SetValLng(~u3_t{0});
    At(10).SetValQuad(1, 2, 3, 4);
    At(11).SetValLink(At(14));
    Data oShared = At(13);
    Data::CopyVal(At(7), oShared);
    At(2).SetAttVal("a", "one");
    At(2).SetAttVal("b", oRoot.GetNodeFromID(7).GetValStr() + 4);
    At(9).SetAttVal("b", "");
    At(9).SetAttVal("a", "gone");
    At(9).SetAttVal("a", nullptr);
    Data oTree = At(14);
    oTree.CreateNewSucc("x").CreateNewSucc("y").SetValStr("deep");
    At(1).MoveTo(oTree.GetNthSucc(0), 0);  // an id below that of its predecessor
    oTree.CreateNode("z[2]").Remove();
    oRoot.CreateNewSucc("w").CreateNewSucc("v");
    oRoot.GetNthSucc("w", 0).Remove();
    oRoot.GetNodeFromID(oRoot.GetNodes() - 1).ClearVal();  // lives on, attached to nothing
    return oRoot;
}

TEST(Dump, BytesOfASmallTree) {
    Data oRoot = NewTree();
    oRoot.SetUserTag("t");
    oRoot.CreateNewSucc("b").SetValStr("hi");
    Data oA = oRoot.CreateNewSucc("a");
    oA.SetValInt(7);
    oA.SetAttVal("k", "v");
    oRoot.CreateNewSucc("b").Remove();
    EXPECT_EQ(Dump(oA), Parts().All());  // from anywhere in the tree
    Data oLoaded = oA;
    EXPECT_EQ(Load(Parts().All(), oLoaded), "");
    EXPECT_EQ(oLoaded.GetId(), 0u);
    EXPECT_TRUE(Data::Equal(oRoot, oLoaded));
    EXPECT_EQ(Dump(oLoaded), Parts().All());
    EXPECT_STREQ(oLoaded.GetUserTag().CStr(), "t");
    EXPECT_EQ(oLoaded.GetNthSucc("b", 1).GetType(), Data_Node::Zombi);
    EXPECT_EQ(Raised([&] { Data().Dump(*std::make_unique<File_Buf>("w")); }), "node is empty\n");
}

// Through memory, through a stream that gives a byte at a time, and as a document.
TEST(Dump, KeepsEverything) {
    const Data oRich = Rich();
    const std::string sBytes = Dump(oRich);
    Drop_Stream oOut, oIn(sBytes);
    oRich.Dump(oOut);
    std::string sPieces;
    for (const std::string& s : oOut.m_oWritten) sPieces += s;
    EXPECT_EQ(sPieces, sBytes);
    Data oFirst, oSecond;
    Load_Report oReport;
    EXPECT_EQ(Load(sBytes, oFirst, {}, &oReport), "");
    EXPECT_EQ(oReport.m_uOffset, sBytes.size());
    EXPECT_EQ(oReport.m_uNodes, oRich.GetNodes());
    oSecond.Load(oIn);
    EXPECT_TRUE(oIn.m_sBytes.empty());
    for (const Data& o : {oFirst, oSecond}) {
        EXPECT_TRUE(Data::Equal(oRich, o));
        EXPECT_EQ(o.GetNodes(), oRich.GetNodes());
        for (u2_t u = 0; u < o.GetNodes(); ++u) {
            const Data x = o.GetNodeFromID(u), y = oRich.GetNodeFromID(u);
            EXPECT_EQ(x.GetType(), y.GetType());
            EXPECT_EQ(x.GetPred().GetId(), y.GetPred().GetId());
            EXPECT_EQ(AttributesOf(x), AttributesOf(y));
        }
        EXPECT_EQ(Dump(o), sBytes);
        Exercise(o);
    }
    Data oTagged = oRich.MkClone(), oLoaded;
    Dgraph_SetVersion(oTagged, 2, 5, 7);
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTagged, oBuf);
    EXPECT_EQ(Content(oBuf), "DGraphBin\2\5\7"s + std::string(18, '\0') + Dump(oTagged));
    oBuf.Seek(0);
    Dgraph_LoadDGraph(oLoaded, oBuf, {}, &oReport);
    EXPECT_EQ(oReport.m_uOffset, oBuf.Size());
    EXPECT_TRUE(Data::Equal(oTagged, oLoaded));
    EXPECT_STREQ(oLoaded.GetUserTag().CStr(), "DGraphBin 2.5.7");
}

TEST(Dump, CanLoadLooksOnly) {
    const std::string sMagic = Parts().sMagic;
    const std::string sOther = std::string(sMagic).replace(25, 4, "Test");
    const std::string sLater = std::string(sMagic).replace(12, 1, "\x63");
    for (const auto& [sBytes, bCan] : {std::pair(sMagic, true), std::pair(sLater, true),
                                       std::pair(sOther, false), std::pair("abc"s, false)}) {
        const std::string sAll = "abc" + sBytes;
        File_Buf oBuf(sAll.data(), sAll.size());
        oBuf.Seek(3);
        EXPECT_EQ(Data::CanLoad(oBuf), bCan);
        EXPECT_EQ(oBuf.Tell(), 3);
    }
}

TEST(Dump, Refuses) {
    const std::string sInvalid = "binary data is a dump of an invalid object \"Data\"";
    const std::string sForeign = "binary data is not a dump of object \"Data\"";
    const std::string sVersion = "binary data of object \"Data\" have wrong version ";
    const std::string sEnd = "unexpected end of file in \"*** File_Buf ***\"";
    const auto Check = [](const Parts& o, const std::string& sMessage, const auto& uCase) {
        Data oTree = NewTree();
        const Data oBefore = oTree;
        EXPECT_EQ(Load(o.All(), oTree), sMessage) << "case " << uCase;
        EXPECT_EQ(oTree == oBefore, !sMessage.empty());
        if (sMessage.empty()) Exercise(oTree);
    };

    // One word after the other.
    struct Word {
        Words Parts::*pBlock;
        std::size_t uNth;
        u2_t uValue;
        bool bGood;
    };
    const auto N = &Parts::oNodes, G = &Parts::oGroups, A = &Parts::oAttributes;
    using enum Data_Node::Type;
    const u2_t uNone = 0xFFFFFFFF;
    const Word WORDS[] = {
        // names, predecessors, types
        {N, 4, 3, false},
        {N, 1, Flags(1, Tree), false},
        {N, 9, Flags(2, Integer), false},
        {N, 9, Flags(99, Integer), false},
        {N, 9, Flags(0, Integer), false},
        {N, 9, Flags(0xFFFFFF, Zombi), false},
        {N, 9, Flags(1, Integer) | 11, false},
        {N, 9, Flags(1, Integer) | 14, false},
        {N, 9, Flags(1, Integer) | 0xF0000000, true},
        // links: to node 7, which there is not
        {N, 9, Flags(1, Link), false},
        // groups
        {N, 2, 1, false},
        {N, 2, uNone, false},
        {N, 3, 2, false},
        {N, 3, uNone, false},
        {G, 0, 2, false},
        {G, 1, 4, false},
        {G, 2, 0, false},
        {G, 2, 4, false},
        {G, 4, 1, false},
        // texts and blocks
        {N, 6, uNone, false},
        {N, 7, 0, false},
        {N, 7, 2, false},
        {N, 7, 0x1000, false},
        {N, 5, Flags(1, Binary), true},
        {N, 5, Flags(1, Quad), false},
        // attributes
        {A, 0, 2, false},
        {A, 1, 4, false},
        {A, 2, 6, false},
        {A, 2, uNone, false},
        {A, 2, 2, true},
    };
    for (const Word& oWord : WORDS) {
        Parts o;
        (o.*oWord.pBlock)[oWord.uNth] = oWord.uValue;
        Check(o, oWord.bGood ? "" : sInvalid, &oWord - WORDS);
    }

    // Other texts.
    struct Text {
        std::string Parts::*pBlock;
        std::string sBytes, sMessage;
    };
    const auto H = &Parts::sHeap, M = &Parts::sMagic, K = &Parts::sNames;
    const auto Magic = [](std::size_t u, char c) { return Parts().sMagic.replace(u, 1, 1, c); };
    const Text TEXTS[] = {
        {M, Magic(0, 1), sForeign},
        {M, Magic(25, 'd'), sForeign},
        {M, Magic(12, 2), sVersion + "2-2, expected 2-1"},
        {M, Magic(8, 3), sVersion + "3-1, expected 2-1"},
        {&Parts::sEnd, "", sEnd},
        {&Parts::sEnd, "\3\0\0\0new\0\0\0\0"s, ""},  // of a later writer
        {K, "b\0b\0"s, sInvalid},
        {K, "b\0\0"s, sInvalid},
        {K, "b\0a"s, sInvalid},
        {K, "b\0\xFF\0"s, sInvalid},
        {K, "b\0"s, sInvalid},
        {&Parts::sAttNames, "k\0k\0"s, sInvalid},
        {&Parts::sAttNames, "", sInvalid},
        {H, "", sInvalid},
        {H, "\0hi"s, sInvalid},
        {H, "xhi\0v\0"s, sInvalid},
        {H, "\0hixv\0"s, sInvalid},
        {H, "\0h\0\0v\0"s, sInvalid},
        {H, "\0h\xC3\0v\0"s, sInvalid},
        {H, "\0hi\0vw"s, sInvalid},
        {H, "\0\xC3\xBC\0v\0"s, ""},
    };
    for (const Text& oText : TEXTS) {
        Parts o;
        o.*oText.pBlock = oText.sBytes;
        Check(o, oText.sMessage, oText.sBytes);
    }

    // More than one thing at a time.
    const std::pair<std::function<void(Parts&)>, bool> OTHERS[] = {
        {[](Parts& o) { o.oNodes.clear(); }, false},
        {[](Parts& o) { o.oNodes.pop_back(); }, false},
        {[](Parts& o) { o.oGroups.pop_back(); }, false},
        {[](Parts& o) { o.oGroups.push_back(0); }, false},
        {[](Parts& o) { std::swap(o.oGroups[2], o.oGroups[3]); }, false},  // out of order
        {[](Parts& o) { std::swap(o.oGroups[3], o.oGroups[4]); }, true},   // of one name
        {[](Parts& o) {
             o.oAttributes = Words{2, 2, 4, 2, 4};
         },
         false},
        {[](Parts& o) {
             o.oAttributes = Words{2, 1, 2, 2, 1};
         },
         true},  // inside a text
        {[](Parts& o) { o.sHeap = "\0\xC3\xBC\0v\0"s, o.oAttributes[2] = 2; }, false},
        // b[0] becomes its own predecessor, or it and a third b each other's.
        {[](Parts& o) {
             o.oNodes[3] = 2, o.oNodes[5] = Flags(2, Tree), o.oNodes[6] = 4, o.oNodes[7] = 1;
             o.oGroups = Words{2, 2, 2, 3, 1, 1, 1};
         },
         false},
        {[](Parts& o) {
             o.oNodes[3] = 2, o.oNodes[5] = Flags(5, Tree), o.oNodes[6] = 4, o.oNodes[7] = 1;
             for (const u2_t u : {1u, Flags(2, Tree), 7u, 1u}) o.oNodes.push_back(u);
             o.oGroups = Words{2, 2, 2, 3, 1, 1, 4, 1, 1, 1};
         },
         false},
    };
    for (const auto& [oChange, bGood] : OTHERS) {
        Parts o;
        oChange(o);
        Check(o, bGood ? "" : sInvalid, o.All());
    }
    Load_Report oReport;
    Data oTree;
    Parts o;
    o.oNodes[9] |= 14;
    EXPECT_NE(Load(o.All(), oTree, {}, &oReport), "");
    EXPECT_EQ(oReport.m_uOffset, 0x57u);  // of the third record
}

TEST(Dump, HasLimits) {
    const auto Exceeded = [](const char* sWhat, int iLimit, const char* sField) {
        return std::string("limit \"") + sWhat + "\" of " + std::to_string(iLimit) +
               " exceeded (raise Limits::" + sField + ")";
    };
    Data oTree = NewTree();
    Data oDeep = oTree;
    for (int i = 0; i < 5; ++i) oDeep.SetToNewSucc("n");
    oDeep.SetAttVal("a", "123456"), oDeep.SetAttVal("b", "1"), oDeep.SetValStr("1234");
    const std::string sBytes = Dump(oTree);
    struct Case {
        u3_t Limits::*pLimit;
        int iEnough;
        std::string sMessage;
    };
    const Case CASES[] = {
        {&Limits::m_uNodes, 6, Exceeded("nodes", 5, "m_uNodes")},
        {&Limits::m_uDepth, 5, Exceeded("depth", 4, "m_uDepth")},
        {&Limits::m_uTextBytes, 6, Exceeded("text bytes", 5, "m_uTextBytes")},
        {&Limits::m_uAttributes, 2, Exceeded("attributes", 1, "m_uAttributes")},
    };
    for (const Case& oCase : CASES) {
        Limits oLimits;
        Data oLoaded;
        oLimits.*oCase.pLimit = static_cast<u3_t>(oCase.iEnough);
        EXPECT_EQ(Load(sBytes, oLoaded, oLimits), "");
        oLimits.*oCase.pLimit -= 1;
        EXPECT_EQ(Load(sBytes, oLoaded, oLimits), oCase.sMessage);
    }
    EXPECT_EQ(Load(sBytes, oTree, Limits::Trusted()), "");
}

// A claim of much costs no more than what is there.
TEST(Dump, MemoryFollowsTheBytes) {
    Parts o;
    std::string sBytes = o.sMagic + Little(1, 4) + "t";
    for (const u3_t uClaim : {u3_t{1} << 30, u3_t{1} << 40, ~u3_t{0}}) {
        const std::string sClaim = sBytes + Little(uClaim, 8) + "b\0"s;
        Mem_Probe oProbe;
        Data oTree;
        EXPECT_NE(Load(sClaim, oTree), "");
        Drop_Stream oIn(sClaim);
        EXPECT_NE(Raised([&] { oTree.Load(oIn); }), NOTHING_RAISED);
        EXPECT_LT(Mem_Probe::Peak(), std::size_t{1} << 20);
    }
}

// Every byte changed in some ways, every length: refused, or a tree as good as any.
TEST(Dump, SurvivesEveryChange) {
    const std::string sBytes = Dump(Rich());
    unsigned uLoaded = 0;
    for (std::size_t u = 0; u < sBytes.size(); ++u) {
        const auto uOld = static_cast<u0_t>(sBytes[u]);
        for (const unsigned uNew : {0u, 1u, 255u, uOld ^ 1u, uOld ^ 128u, uOld + 1u, uOld + 16u}) {
            std::string sChanged = sBytes;
            sChanged[u] = static_cast<char>(uNew);
            Data oTree;
            if (!Load(sChanged, oTree).empty()) continue;
            ++uLoaded;
            Exercise(oTree);
        }
        Data oTree;
        EXPECT_NE(Load(sBytes.substr(0, u), oTree), "");
    }
    EXPECT_GT(uLoaded, 500u);
}

TEST(Dump, MemoryRunsOut) {
    const std::string sBytes = Dump(Rich());
    for (unsigned uNth = 1;; ++uNth) {
        Mem_Probe oProbe;
        Data oTree = NewTree();
        const Data oBefore = oTree;
        Mem_Probe::FailIn(uNth);
        const std::string sRaised = Load(sBytes, oTree);
        const bool bRefused = !Mem_Probe::IsArmed();
        Mem_Probe::FailIn(0);
        if (!bRefused) break;
        EXPECT_NE(sRaised, "");
        EXPECT_EQ(oTree, oBefore);
    }
}

}  // namespace
}  // namespace vok
