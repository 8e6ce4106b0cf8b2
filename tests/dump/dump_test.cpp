// SPDX-License-Identifier: MIT
// The native dump: its bytes, what it keeps, and what is refused. What else can be done with a
// tree that was not refused is for the fuzz target dump.
#include <functional>

#include "tests/dump/dump_support.h"
#include "vok/data/walk.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

using namespace std::string_literals;
using Words = std::vector<u2_t>;

std::string Bytes(const Words& oWords) {
    std::string s;
    for (const u2_t u : oWords) s += Number(u);
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
    std::string sMagic = "\x0B\x17\x01\x01\x78\x56\x34\x12\2\0\0\0\2\0\0\0\x0A\0\0\0vok::Data\0"s;
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

    [[nodiscard]] Parts OfVersion(u2_t uVersion) const {
        Parts o = *this;
        o.sMagic.replace(12, 4, Number(uVersion));
        return o;
    }
    [[nodiscard]] std::string All() const {
        std::string s = sMagic + I32(static_cast<i3_t>(sTag.size())) + sTag;
        for (const std::string& sBlock :
             {sNames, Bytes(oNodes), Bytes(oGroups), sHeap, sAttNames, Bytes(oAttributes)}) {
            s += U64(sBlock.size()) + sBlock;
        }
        return s + sEnd;
    }
};

// The message that loading raises; "" and the tree when there is none.
std::string Load(std::string_view sBytes, Data& oTree, const Limits& oLimits = {},
                 Load_Report* pReport = nullptr) {
    // A block of its own size: reading past its end is noticed.
    const std::unique_ptr<char[]> pBytes(new char[sBytes.size()]);
    sBytes.copy(pBytes.get(), sBytes.size());
    File_Buf oBuf(pBytes.get(), sBytes.size());
    return Failing([&] { oTree.Load(oBuf, oLimits, pReport); });
}

TEST(Dump, BytesOfASmallTree) {
    Data oRoot = NewTree();
    oRoot.SetUserTag("t");
    oRoot.CreateNewSucc("b").SetValStr("hi");
    Data oA = oRoot.CreateNewSucc("a");
    oA.SetValInt(7);
    oA.SetAttVal("k", "v");
    oRoot.CreateNewSucc("b").Remove();
    EXPECT_EQ(DumpOf(oA), Parts().All());  // from anywhere in the tree
    Data oLoaded = oA;
    EXPECT_EQ(Load(Parts().All(), oLoaded), "");
    EXPECT_EQ(oLoaded.GetId(), 0u);
    EXPECT_TRUE(Data::Equal(oRoot, oLoaded));
    EXPECT_EQ(DumpOf(oLoaded), Parts().All());
    EXPECT_EQ(Load(Parts().OfVersion(1).All(), oLoaded), "");
    EXPECT_EQ(DumpOf(oLoaded), Parts().All());
    EXPECT_STREQ(oLoaded.GetUserTag().CStr(), "t");
    EXPECT_EQ(oLoaded.GetNthSucc("b", 1).GetType(), Data_Node::Zombi);
    EXPECT_EQ(Raised([&] { Data().Dump(*std::make_unique<File_Buf>("w")); }), "node is empty\n");
}

// Through memory, through a stream that gives a byte at a time, and as a document.
TEST(Dump, KeepsEverything) {
    const Data oRich = Rich();
    const std::string sBytes = DumpOf(oRich);
    Drop_Stream oOut, oIn(sBytes);
    oRich.Dump(oOut);
    EXPECT_EQ(Joined(oOut.m_oWritten), sBytes);
    Data oFirst, oSecond;
    Load_Report oReport;
    EXPECT_EQ(Load(sBytes, oFirst, {}, &oReport), "");
    EXPECT_EQ(oReport.m_uOffset, sBytes.size());
    EXPECT_EQ(oReport.m_uNodes, oRich.GetNodes());
    oSecond.Load(oIn);
    EXPECT_TRUE(oIn.m_sBytes.empty());
    for (const Data& o : {oFirst, oSecond}) {
        EXPECT_TRUE(Data::Equal(oRich, o));
        EXPECT_EQ(DumpOf(o), sBytes);
    }
    Data oTagged = oRich.MkClone(), oLoaded;
    Dgraph_SetVersion(oTagged, 2, 5, 7);
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTagged, oBuf);
    EXPECT_EQ(Content(oBuf), "DGraphBin\2\5\7"s + std::string(18, '\0') + DumpOf(oTagged));
    oBuf.Seek(0);
    Dgraph_LoadDGraph(oLoaded, oBuf, {}, &oReport);
    EXPECT_EQ(oReport.m_uOffset, oBuf.Size());
    EXPECT_TRUE(Data::Equal(oTagged, oLoaded));
    EXPECT_STREQ(oLoaded.GetUserTag().CStr(), "DGraphBin 2.5.7");
}

TEST(Dump, Refuses) {
    const std::string sInvalid = "binary data is a dump of an invalid object \"Data\"";
    const std::string sForeign = "binary data is not a dump of object \"Data\"";
    const std::string sVersion = "binary data of object \"Data\" have wrong version ";
    const std::string sEnd = "unexpected end of file in \"*** File_Buf ***\"";
    using enum Data_Node::Type;
    const u2_t uNone = 0xFFFFFFFF, uPlain = Flags(1, Integer), uQuad = Flags(1, Quad);
    const std::string sUmlaut = "\0\xC3\xBC\0v\0"s, sHeap = Parts().sHeap;
    const auto Magic = [](std::size_t u, char c) { return Parts().sMagic.replace(u, 1, 1, c); };
    using Changes = std::vector<std::pair<std::size_t, u2_t>>;  // which word becomes what
    const auto Nodes = [](const Changes& oChanges, const Words& oBehind = {}) {
        Words o = Parts().oNodes;
        for (const auto& [uNth, uWord] : oChanges) o[uNth] = uWord;
        o.insert(o.end(), oBehind.begin(), oBehind.end());
        return o;
    };
    std::vector<std::pair<std::string, Parts>> oCases = {
        {sForeign, {.sMagic = Magic(0, 1)}},
        {sForeign, {.sMagic = Magic(25, 'd')}},
        {sVersion + "2-4, expected 2-3", {.sMagic = Magic(12, 4)}},
        {sVersion + "2-0, expected 2-3", {.sMagic = Magic(12, 0)}},
        {sVersion + "3-2, expected 2-3", {.sMagic = Magic(8, 3)}},
        {sEnd, {.sEnd = ""}},
        {"", {.sEnd = "\3\0\0\0new\0\0\0\0"s}},  // of a later writer
        {"", {.oGroups = {3, 3, 2, 3, 1}}},      // nodes of one name in another order
        {"", {.oAttributes = {1, 2, 2}}},        // the end of another text
        {"", {.oAttributes = {2, 1, 2, 2, 1}}},  // and all of it
        {"", {.sHeap = sUmlaut}},
        {sInvalid, {.sHeap = sUmlaut, .oAttributes = {1, 2, 2}}},
        {sInvalid, {.sHeap = sUmlaut, .oAttributes = {2, 1, 1, 2, 2}}},
        {"", {.oNodes = Nodes({{5, Flags(1, Binary)}})}},
        {sInvalid, {.oNodes = Nodes({{5, uQuad}}), .sHeap = sHeap + std::string(6, '\0')}},
        {"", {.oNodes = Nodes({{5, uQuad}}), .sHeap = sHeap + std::string(7, '\0')}},
        // b[1] names a predecessor that does not have it.
        {sInvalid, {.oNodes = Nodes({{3, 2}}), .oGroups = {2, 2, 2, 1}}},
        // b[0] becomes its own predecessor, or it and a third b each other's.
        {sInvalid,
         {.oNodes = Nodes({{3, 2}, {5, Flags(2, Tree)}, {6, 4}, {7, 1}}),
          .oGroups = {2, 2, 2, 3, 1, 1, 1}}},
        {sInvalid,
         {.oNodes = Nodes({{3, 2}, {5, Flags(5, Tree)}, {6, 4}, {7, 1}}, {1, Flags(2, Tree), 7, 1}),
          .oGroups = {2, 2, 2, 3, 1, 1, 4, 1, 1, 1}}},
    };
    // Names, predecessors, types, links to node 7, which there is not; groups; texts and blocks.
    const Changes oWords = {
        // clang-format off
        {4, 3}, {1, Flags(1, Tree)}, {9, Flags(2, Integer)}, {9, Flags(99, Integer)},
        {9, Flags(0, Integer)}, {9, Flags(0xFFFFFF, Zombi)}, {9, Flags(0xFFFFFFF, Zombi)},
        {9, uPlain | 11}, {9, uPlain | 14}, {9, Flags(1, Link)}, {2, 1}, {2, uNone}, {3, 2}, {3, uNone}, {6, uNone}, {7, 0}, {7, 2},
        {7, 0x1000}, {5, uQuad},
        // clang-format on
    };
    for (const auto& o : oWords) oCases.push_back({sInvalid, {.oNodes = Nodes({o})}});
    const auto Invalid = [&](auto Parts::*pBlock, const auto& oValues) {
        for (const auto& o : oValues) {
            oCases.emplace_back(sInvalid, Parts());
            oCases.back().second.*pBlock = o;
        }
    };
    Words oShort = Parts().oNodes;
    oShort.pop_back();
    Invalid(&Parts::oNodes, std::vector<Words>{{}, oShort});
    Invalid(&Parts::oGroups, std::vector<Words>{{2, 3, 2, 1, 3},
                                                {3, 4, 2, 1, 3},
                                                {3, 3, 0, 1, 3},
                                                {3, 3, 4, 1, 3},
                                                {3, 3, 2, 1, 1},
                                                {3, 3, 1, 2, 3},
                                                {3, 3, 2, 1},
                                                {3, 3, 2, 1, 3, 0}});
    Invalid(&Parts::oAttributes,
            std::vector<Words>{{2, 2, 4}, {1, 4, 4}, {1, 2, 6}, {1, 2, uNone}, {2, 2, 4, 2, 4}});
    Invalid(&Parts::sNames, Texts{"b\0b\0"s, "b\0\0"s, "b\0a"s, "b\0\xFF\0"s, "b\0"s});
    Invalid(&Parts::sHeap, Texts{"", "\0hi"s, "xhi\0v\0"s, "\0hixv\0"s, "\0hi\0vw"s, "\0h\0\0v\0"s,
                                 "\0h\xC3\0v\0"s});
    Invalid(&Parts::sAttNames, Texts{"k\0k\0"s, ""});
    for (std::size_t u = 0; u < oCases.size(); ++u) {
        SCOPED_TRACE(u);
        const auto& [sMessage, oParts] = oCases[u];
        Data oTree = NewTree();
        const Data oBefore = oTree;
        EXPECT_EQ(Load(oParts.All(), oTree), sMessage);
        EXPECT_EQ(oTree == oBefore, !sMessage.empty());
        EXPECT_TRUE(Data::Equal(oTree, oTree.MkClone()));
    }
    // The same in the version before, but for the bits that no predecessor had there.
    for (std::size_t u = 0; u < oCases.size(); ++u) {
        SCOPED_TRACE(u);
        const auto& [sMessage, oParts] = oCases[u];
        if (oParts.sMagic != Parts().sMagic) continue;
        Data oTree, oNow;
        EXPECT_EQ(Load(oParts.OfVersion(1).All(), oTree), sMessage);
        if (!sMessage.empty()) continue;
        EXPECT_EQ(Load(oParts.All(), oNow), "");
        EXPECT_EQ(DumpOf(oTree), DumpOf(oNow));
    }
    Load_Report oReport;
    Data oTree;
    Parts o;
    o.oNodes[9] |= 14;
    EXPECT_NE(Load(o.All(), oTree, {}, &oReport), "");
    EXPECT_EQ(oReport.m_uOffset, 0x57u);  // of the third record
}

// Records with 24 bits for the predecessor: all ones are nobody, the bits above them nothing.
TEST(Dump, RecordsOfTheVersionBefore) {
    using enum Data_Node::Type;
    const Words oLoose = {2, Flags(0xFFFFFF, Zombi), 0, 0, 2, Flags(0xFFFFFFF, Zombi), 0, 0};
    Parts oOld;
    for (std::size_t u = 1; u < oOld.oNodes.size(); u += 4) oOld.oNodes[u] |= 0xA0000000;
    oOld.oNodes.insert(oOld.oNodes.end(), oLoose.begin(), oLoose.end());
    Data oTree, oAgain;
    EXPECT_EQ(Load(oOld.OfVersion(1).All(), oTree), "");
    for (const u2_t uId : {4u, 5u}) {
        const Data oNode = oTree.GetNodeFromID(uId);
        EXPECT_EQ(oNode.GetNode().uFlags, Flags(Data_Node::CUT_LOOSE, Zombi));
    }
    EXPECT_NE(Load(oOld.All(), oAgain), "");  // read as records of today
    EXPECT_EQ(Load(DumpOf(oTree), oAgain), "");
    EXPECT_EQ(DumpOf(oAgain), DumpOf(oTree));
    EXPECT_TRUE(Data::Equal(oTree, oAgain));
    oTree.Shrink();
    EXPECT_EQ(oTree.GetNodes(), 3u);
}

TEST(Dump, HasLimits) {
    Data oTree = NewTree();
    Data oDeep = oTree;
    for (int i = 0; i < 5; ++i) oDeep.SetToNewSucc("n");
    oDeep.SetAttVal("a", "123456"), oDeep.SetAttVal("b", "1"), oDeep.SetValStr("1234");
    const std::string sBytes = DumpOf(oTree);
    const std::pair<Limit, u3_t> ENOUGH[] = {
        {LIMIT_NODES, 6}, {LIMIT_DEPTH, 6}, {LIMIT_TEXT_BYTES, 6}, {LIMIT_ATTRIBUTES, 2}};
    for (const auto& [oLimit, uEnough] : ENOUGH) {
        EXPECT_EQ(Load(sBytes, oTree, AtMost(oLimit, uEnough)), "");
        EXPECT_EQ(Load(sBytes, oTree, AtMost(oLimit, uEnough - 1)), Exceeded(oLimit, uEnough - 1));
    }
    EXPECT_EQ(Load(sBytes, oTree, Limits::Trusted()), "");
}

// A claim of much costs no more than what is there.
TEST(Dump, MemoryFollowsTheBytes) {
    Parts o;
    std::string sBytes = o.sMagic + I32(1) + "t";
    for (const u3_t uClaim : {u3_t{1} << 30, u3_t{1} << 40, ~u3_t{0}}) {
        const std::string sClaim = sBytes + U64(uClaim) + "b\0"s;
        Mem_Probe oProbe;
        Data oTree;
        EXPECT_NE(Load(sClaim, oTree), "");
        Drop_Stream oIn(sClaim);
        EXPECT_NE(Raised([&] { oTree.Load(oIn); }), NOTHING_RAISED);
        EXPECT_LT(Mem_Probe::Peak(), std::size_t{1} << 20);
    }
}

// A heap, or groups, beyond what places can name are refused by their length.
TEST(Dump, PlacesHaveALimit) {
    const Parts o;
    const std::string sFront = o.sMagic + I32(1) + "t" + U64(o.sNames.size()) + o.sNames +
                               U64(4 * o.oNodes.size()) + Bytes(o.oNodes);
    const std::string sGroups = U64(4 * o.oGroups.size()) + Bytes(o.oGroups);
    const std::pair<std::string, u3_t> TOO_LONG[] = {{sFront, u3_t{1} << 33},
                                                     {sFront + sGroups, u3_t{1} << 31}};
    for (const auto& [sBefore, uBytes] : TOO_LONG) {
        Data oTree = NewTree();
        const Data oWas = oTree;
        Load_Report oReport;
        EXPECT_EQ(Load(sBefore + U64(uBytes), oTree, {}, &oReport),
                  "binary data is a dump of an invalid object \"Data\"");
        EXPECT_EQ(oReport.m_uOffset, sBefore.size());
        EXPECT_EQ(oTree, oWas);
    }
}

// Every byte changed in some ways, every length: refused, or a tree as good as any.
TEST(Dump, SurvivesEveryChange) {
    const std::string sNow = DumpOf(Rich());
    for (const char cVersion : {'\2', '\1'}) {
        const std::string sBytes = std::string(sNow).replace(12, 1, 1, cVersion);
        Data oTree;
        for (std::size_t u = 0; u < sBytes.size(); ++u) {
            const auto uOld = static_cast<u0_t>(sBytes[u]);
            for (const unsigned uNew :
                 {0u, 1u, 255u, uOld ^ 1u, uOld ^ 128u, uOld + 1u, uOld + 16u}) {
                std::string sChanged = sBytes;
                sChanged[u] = static_cast<char>(uNew);
                if (!Load(sChanged, oTree).empty()) continue;
                EXPECT_TRUE(Data::Equal(oTree, oTree.MkClone()));
                oTree.RemoveSuccs();
                oTree.Shrink();
            }
            EXPECT_NE(Load(sBytes.substr(0, u), oTree), "");
        }
    }
}

TEST(Dump, MemoryRunsOut) {
    const std::string sBytes = DumpOf(Rich());
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        File_Buf oBuf(sBytes.data(), sBytes.size());
        Data oTree = NewTree();
        const Data oBefore = oTree;
        if (!Mem_Probe::HasRefused(uNth, [&] { oTree.Load(oBuf); })) break;
        EXPECT_EQ(oTree, oBefore);
    }
}

}  // namespace
}  // namespace vok
