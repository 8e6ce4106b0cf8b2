// SPDX-License-Identifier: MIT
// Paths: what texts parse to, what is refused with which words, escapes. Their evaluation: a table
// on one tree, and a naive evaluator on random ones.
#include <cstring>
#include <set>

#include "tests/support.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"
#include "vok/dgraph/plain_step.h"

namespace vok {
namespace {

std::string Parsed(const char* sPath) {
    Data_Xpath oPath;
    oPath.Parse(sPath);
    Str oText;
    oPath.Debug(oText);
    return oText.CStr();
}

TEST(Xpath, Parses) {
    const std::pair<const char*, const char*> ROWS[] = {
        // clang-format off
        {"", ""}, {nullptr, ""}, {"/", "Absolute\n"}, {"//", "Absolute\nStopEach\n"},
        {"a/", "Name=\"a\"\n"}, {"a//", "Name=\"a\" StopEach\n"}, {"a[*]", "Name=\"a\"\n"},
        {"a[1000000009]", "Name=\"a\" [1000000009]\n"}, {"[3]", "Name=\"\" Empty [3]\n"},
        {"a[@x y=\"=\"]", "Name=\"a\" @x y=\"=\"\n"}, {"a]b\"@=c", "Name=\"a]b\"@=c\"\n"},
        {"\xE4[@\xFC=\"\xF6\"]", "Name=\"ä\" @ü=\"ö\"\n"},
        // clang-format on
        {"//a//b/c", "Absolute\nStopEach\nName=\"a\" StopEach\nName=\"b\"\nName=\"c\"\n"},
        {"*[@x=\"\"][7][@y=\"a/b]\"]/c", "Name=\"*\" [7] @x=\"\" @y=\"a/b]\"\nName=\"c\"\n"},
        {"./../.a/...", "Name=\".\"\nName=\"..\"\nName=\".a\"\nName=\"...\"\n"},
        // Escapes are undone where they stand, without effect on what follows.
        {"a\b0;b/c\b47;d", "Name=\"a\"\nName=\"c/d\"\n"},
        {"a[@x\b61;=\"\b34;\b0;lost\"][@y=\"1\"]", "Name=\"a\" @x==\"\"\" @y=\"1\"\n"},
    };
    for (const auto& [sPath, sSteps] : ROWS) EXPECT_EQ(Parsed(sPath), sSteps);
    Data_Xpath oPath;
    oPath.Parse("\b42;/*/.");
    EXPECT_FALSE(oPath(0).m_bAnyName);
    EXPECT_TRUE(oPath(1).m_bAnyName);
    EXPECT_EQ(oPath(2).m_eKind, Data_XpathStep::Self);
}

TEST(Xpath, Refuses) {
    const std::pair<const char*, std::vector<const char*>> ROWS[] = {
        {"empty xpath not allowed", {"///", "///a", "a///b"}},
        {"invalid character '[' after '.'", {".[0]", "..[@a=\"\"]"}},
        {"opening bracket '[' used without corresponding closing bracket",
         {"a[", "a[0][", "a[12", "a[*"}},
        {"invalid character ']' after '['", {"a[]"}},
        {"invalid character 'x' after '['", {"a[x]"}},
        {"invalid character '-' after '['", {"a[-1]"}},
        {"invalid character 'ä' after '['", {"a[\xE4]"}},
        {"invalid character '😀' after '['", {"a[😀"}},
        {"invalid character 'x' after '1'", {"a[1x]"}},
        {"invalid character 'ä' after '0'", {"a[10ä]"}},
        {"invalid character 'x' after '*'", {"a[*x]"}},
        {"character '@' expected after '['", {"a[0][1]", "a[*][0]", "a[0][@x=\"1\"][*]"}},
        {"invalid character 'b' after ']'", {"a[0]b"}},
        {"invalid character ']' after ']'", {"a[0]]"}},
        {"integer value to big", {"a[10000000000]", "a[1000000010]", "a[99999999999999999999]"}},
        {"missing char '=' in string", {"a[@", "a[@x]/b"}},
        {"empty attribute name in xpath not allowed", {"a[@=\"1\"]"}},
        {"character '\"' expected after '='", {"a[@x=", "a[@x=1]"}},
        {"missing char '\"' in string", {"a[@x=\"1]"}},
        {"character ']' expected after '\"'", {"a[@x=\"1\"", "a[@x=\"1\"x]"}},
    };
    for (const auto& [sError, oPaths] : ROWS) {
        for (const char* sPath : oPaths) {
            EXPECT_EQ(Failing([&] { Parsed(sPath); }), sError) << sPath;
        }
    }
    // What failed leaves nothing behind; the next path does not see it.
    Data_Xpath oPath;
    EXPECT_THROW(oPath.Parse("//a/b["), Msg_Exception);
    EXPECT_EQ(oPath.Size(), 0u);
    EXPECT_FALSE(oPath.IsAbsolute() || oPath.IsDescendantFromRoot());
    char sNothing[] = "";
    Data_XpathStep oStep;
    EXPECT_EQ(Raised([&] { oStep.Parse(sNothing, sNothing); }),
              "assertion failed: sXpath < sEnd\n");
}

std::string Encoded(const char* sText, const char* sSet = nullptr) {
    Str oText;
    Data::EncodeXpath(oText, sText, sSet);
    return oText.CStr();
}

std::string Decoded(std::string sText) {
    const char* pEnd = Data::DecodeXpath(sText.data());
    EXPECT_EQ(*pEnd, 0);
    return sText.c_str();
}

// The reserved characters are for the tests of the writer.
TEST(Escapes, Encode) {
    EXPECT_EQ(Encoded("\xE4 "), "ä\b32;");
    EXPECT_EQ(Encoded(nullptr), "\b0;");
    EXPECT_EQ(Encoded("a.b", "ab"), "\b97;.\b98;");
    EXPECT_EQ(Encoded("a.b", ""), "a.b");
    Str oText("kept ");
    Data::EncodeXpath(oText, ".");
    EXPECT_EQ(oText, Str("kept \b46;"));
}

TEST(Escapes, DecodeLeavesWhatIsNone) {
    const Pair ROWS[] = {
        // clang-format off
        {"", ""}, {"\b", "\b"}, {"\b;", "\b;"}, {"\b46", "\b46"}, {"\b46x;", "\b46x;"},
        {"\b\b46;", "\b."}, {"\b1114112;", "\b1114112;"}, {"\b000046;", "."}, {"a\b0;b", "a"},
        {"\b99999999999999999999;", "\b99999999999999999999;"},
        {"\b228;\b8364;\b128512;", "ä€😀"}, {"\b8;46;", "\b46;"},  // undone once, not twice
        // clang-format on
    };
    for (const auto& [sText, sDecoded] : ROWS) EXPECT_EQ(Decoded(sText), sDecoded);
    char sText[] = "\b46;\b47;";
    EXPECT_EQ(Data::DecodeXpath(sText, sText + 4), sText + 1);
    EXPECT_STREQ(sText + 4, "\b47;");
    EXPECT_EQ(Data::DecodeXpath(nullptr), nullptr);
}

// Names are looked at in words: every byte in every place of short ones and long ones.
TEST(Escapes, ReservedBytesAreSeenEverywhere) {
    for (std::size_t uSize = 1; uSize <= 20; ++uSize) {
        for (std::size_t uAt = 0; uAt < uSize; ++uAt) {
            for (unsigned uByte = 0; uByte < 256; ++uByte) {
                std::string sName(uSize, uAt % 2 != 0 ? 'x' : '-');
                sName[uAt] = static_cast<char>(uByte);
                const bool bReserved =
                    uByte != 0 && std::strchr("/.[]=\"* \b", static_cast<int>(uByte)) != nullptr;
                ASSERT_EQ(detail::HasReserved(sName), bReserved) << uSize << ' ' << uByte;
                ASSERT_EQ(dgraph::IsVerbatim(sName.data(), uSize),
                          !bReserved && uByte != 0 && uByte < 128)
                    << uSize << ' ' << uByte;
            }
        }
    }
}

// The paths of the nodes that a path selects, in their order, each followed by a blank.
std::string Selected(const Data& oFrom, const char* sPath) {
    const Data_NodeSet oSet = oFrom.GetNodeSet(sPath);
    std::string sAll;
    for (std::size_t u = 0; u < oSet.Size(); ++u)
        sAll += oSet.GetNth(u).GetPath().CStr() + std::string(" ");
    return sAll;
}

//  0 /   1 a   2 a   3 a   4 a/b   5 a/b   6 a[2]/b   7 a/b[1]/a   8 a/b[1]/c   9 b (removed)
//  10 b   11 b/d (removed)   12 unnamed   13 a/b[1]/c/b
Data Sample() {
    Data oRoot = NewTree();
    for (const char* sPath : {"a[0]", "a[1]", "a[2]", "a[0]/b[0][@x=\"1\"]",
                              "a[0]/b[1][@x=\"1\"][@y=\"\"]", "a[2]/b[@x=\"2\"]", "a[0]/b[1]/a",
                              "a[0]/b[1]/c", "b[1]", "b[1]/d", "\b0;", "a[0]/b[1]/c/b"}) {
        oRoot.CreateNode(sPath);
    }
    oRoot.GetNodeFromID(11).Remove();
    return oRoot;
}

// What random paths below do not have.
TEST(NodeSet, Selects) {
    constexpr const char* ALL =
        "/ /a[0] /a[1] /a[2] /a[0]/b[0] /a[0]/b[1] /a[2]/b[0] /a[0]/b[1]/a[0] /a[0]/b[1]/c[0] "
        "/b[1] /\b0;[0] /a[0]/b[1]/c[0]/b[0] ";
    const struct {
        u2_t uFrom;
        const char* sPath;
        const char* sSelected;
    } oRows[] = {
        // clang-format off
        {5, "", "/a[0]/b[1] "}, {5, "/", "/ "}, {5, "//", "/ "}, {5, "/a", "/a[0] /a[1] /a[2] "},
        {5, "/a//", "/a[0] /a[1] /a[2] "}, {0, "a[*]", "/a[0] /a[1] /a[2] "},
        {0, "*[0]", "/\b0;[0] "}, {0, "\b0;", "/\b0;[0] "}, {0, "[0]", "/\b0;[0] "},
        {0, "b[0]", ""}, {0, "b[1]", "/b[1] "}, {0, "b/d", ""},  // a removed one keeps its place
        {5, "//.", ALL}, {0, ".//./.", ALL},  // in the order of ids, whatever the way to them
        {0, "//*[@x=\"1\"][@y=\"\"]", "/a[0]/b[1] "}, {0, "//*[@y=\"\"]", "/a[0]/b[1] "},
        {0, "//*[@z=\"\"]", ""}, {0, "a/b[1][@x=\"1\"]", "/a[0]/b[1] "},
        {0, "a[1000000009]", ""}, {0, "nobody/../..", ""},
        {9, ".", ""}, {9, "/a[0]", "/a[0] "},  // from a removed node only the root is to be seen
        // clang-format on
    };
    const Data oRoot = Sample();
    for (const auto& oRow : oRows) {
        EXPECT_EQ(Selected(oRoot.GetNodeFromID(oRow.uFrom), oRow.sPath), oRow.sSelected)
            << oRow.uFrom << " " << oRow.sPath;
    }
    const Limits oLimits = AtMost(LIMIT_PATH_STEPS, 45);
    EXPECT_EQ(oRoot.GetNodeSet("//b", oLimits).Size(), 5u);
    EXPECT_EQ(Failing([&] { (void)oRoot.GetNodeSet("//*//*//*", oLimits); }),
              Exceeded(LIMIT_PATH_STEPS, 45));
    EXPECT_EQ(oRoot.GetNodeSet("//*//*//*", Limits::Trusted()).Size(), 3u);
}

TEST(NodeSet, TestOfAStep) {
    const Data oRoot = Sample();
    Data_Xpath oPath;
    oPath.Parse("name[7][@x=\"1\"][@y=\"\"]");
    EXPECT_TRUE(oRoot.GetNodeFromID(5).Test(oPath(0)));  // name and position are not its matter
    EXPECT_FALSE(oRoot.GetNodeFromID(4).Test(oPath(0)));
    Data_XpathStep oStep;
    EXPECT_TRUE(oRoot.Test(oStep));
    EXPECT_FALSE(oRoot.GetNodeFromID(9).Test(oStep));
    oStep.m_oAttName.Add("z");
    oStep.m_oAttVal.Add(nullptr);  // made by hand: a name without a value asks for nothing
    EXPECT_TRUE(oRoot.Test(oStep));
}

// The naive way to follow a path, in trees whose nodes come behind their predecessors.
Ids Naive(const Data& oFrom, const char* sPath) {
    Data_Xpath oPath;
    oPath.Parse(sPath);
    const Data oRoot = oFrom.GetRoot();
    const auto At = [&](u2_t uId) { return oRoot.GetNodeFromID(uId); };
    std::set<u2_t> oSet = {oPath.IsAbsolute() ? 0 : oFrom.GetId()};
    std::erase_if(oSet, [&](u2_t uId) { return At(uId).GetType() == Data_Node::Zombi; });
    bool bDescend = oPath.IsDescendantFromRoot();
    for (std::size_t uStep = 0; uStep < oPath.Size(); ++uStep) {
        const Data_XpathStep& oStep = oPath(uStep);
        for (u2_t uId = 1; bDescend && uId < oRoot.GetNodes(); ++uId) {
            const bool bLive = At(uId).GetType() != Data_Node::Zombi;
            if (bLive && oSet.contains(At(uId).GetPred().GetId())) oSet.insert(uId);
        }
        std::set<u2_t> oNext;
        for (const u2_t uId : oSet) {
            Data oNode = At(uId);
            if (oStep.m_eKind == Data_XpathStep::Parent) oNode.SetToPred();
            if (oStep.m_eKind != Data_XpathStep::Named) {
                oNext.insert(oNode.GetId());
                continue;
            }
            auto oIt = oStep.m_bAnyName ? oNode.GetSuccIt() : oNode.GetSuccIt(oStep.m_sName);
            for (; oIt.Pos() < oIt.Size(); oIt.Advance()) {
                const bool bHere =
                    oStep.m_iIndex < 0 || oIt.Pos() == static_cast<u2_t>(oStep.m_iIndex);
                if (bHere && oIt.GetData().Test(oStep)) oNext.insert(oIt.GetId());
            }
        }
        oSet = oNext;
        bDescend = oStep.m_bDescendant;
    }
    return {oSet.begin(), oSet.end()};
}

std::string RandomPath(std::mt19937& oRandom) {
    static const char* const STEPS[] = {
        "a", "b", "c", "*", ".", "..", "a[0]", "b[1]", "*[2]", "*[@x=\"1\"]", "a[@x=\"0\"][0]",
        "d"};
    static const char* const SEPARATORS[] = {"/", "/", "//"};
    static const char* const STARTS[] = {"", "", "/", "//"};
    std::string sPath = STARTS[RandomBelow(oRandom, 4)];
    for (u2_t u = RandomBelow(oRandom, 5) + 1; u > 0; --u) {
        sPath += STEPS[RandomBelow(oRandom, std::size(STEPS))];
        if (u > 1 || RandomBelow(oRandom, 4) == 0) sPath += SEPARATORS[RandomBelow(oRandom, 3)];
    }
    return sPath;
}

// A path that is kept selects the same, and first the one that comes first in a walk.
void CheckKept(const Data& oFrom, const std::string& sPath, const Ids& oGot,
               const std::string& sRaised) {
    Data_Xpath oPath;
    oPath.Parse(sPath.c_str());
    if (sRaised != NOTHING_RAISED) {
        ASSERT_EQ(Raised([&] { (void)oPath.Evaluate(oFrom); }), sRaised) << sPath;
        ASSERT_EQ(Raised([&] { (void)oPath.EvaluateFirst(oFrom); }), sRaised) << sPath;
        return;
    }
    ASSERT_EQ(IdsOf(oPath.Evaluate(oFrom)), oGot) << sPath;
    u2_t uFirst = Data_Node::NONE;
    for (Data_Walk o(oFrom.GetRoot()); uFirst == Data_Node::NONE && o.Next();) {
        if (std::ranges::binary_search(oGot, o.GetId())) uFirst = o.GetId();
    }
    const Data oFirst = oPath.EvaluateFirst(oFrom);
    ASSERT_EQ(oFirst.IsNode() ? oFirst.GetId() : Data_Node::NONE, uFirst) << sPath;
}

// It looks no further: a million successors behind it cost nothing, nor do steps beyond what it
// has bits for.
TEST(NodeSet, TheFirstOneIsEnough) {
    Data oTree = NewTree();
    const Data_Key oKey = oTree.MakeKey("a");
    for (int i = 0; i < 1000000; ++i) oTree.AddInt(oKey, i);
    Data_Xpath oPath;
    for (const char* s : {"/a", "//a", "/*", "//*"}) {
        oPath.Parse(s);
        EXPECT_EQ(oPath.EvaluateFirst(oTree, AtMost(LIMIT_PATH_STEPS, 3)).GetId(), 1u) << s;
    }
    oPath.Parse("/a[999999]");
    EXPECT_EQ(oPath.EvaluateFirst(oTree).GetValInt(), 999999);
    std::string sLong = "a";
    for (int i = 0; i < 100; ++i) sLong += "/.";
    oPath.Parse(sLong.c_str());
    EXPECT_EQ(oPath.EvaluateFirst(oTree).GetId(), 1u);
}

TEST(NodeSet, SameAsTheNaiveWay) {
    unsigned uRaised = 0;
    unsigned uFound = 0;
    for (unsigned uSeed = 1; uSeed <= 60; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        Data oRoot = NewTree();
        Grow(oRoot, oRandom, 2 + RandomBelow(oRandom, 40), {"a", "b", "c", "a"});
        for (u2_t u = 1; u < oRoot.GetNodes(); ++u) {
            Data oNode = oRoot.GetNodeFromID(u);
            if (oNode.GetType() == Data_Node::Zombi) continue;
            if (RandomBelow(oRandom, 3) == 0)
                oNode.SetAttVal("x", RandomBelow(oRandom, 2) == 0 ? "0" : "1");
            if (RandomBelow(oRandom, 12) == 0) oNode.Remove();
        }
        for (unsigned u = 0; u < 60; ++u) {
            const std::string sPath = RandomPath(oRandom);
            const Data oFrom = oRoot.GetNodeFromID(RandomBelow(oRandom, oRoot.GetNodes()));
            Ids oExpected;
            Ids oGot;
            const std::string sExpected = Raised([&] { oExpected = Naive(oFrom, sPath.c_str()); });
            const std::string sGot = Raised([&] { oGot = IdsOf(oFrom.GetNodeSet(sPath.c_str())); });
            ASSERT_EQ(sGot, sExpected) << uSeed << " " << sPath;
            ASSERT_EQ(oGot, oExpected) << uSeed << " " << sPath;
            CheckKept(oFrom, sPath, oGot, sGot);
            uRaised += sGot[0] != '(';
            uFound += oGot.size() > 1;
        }
    }
    EXPECT_GT(uRaised, 100u);
    EXPECT_GT(uFound, 200u);
}

TEST(GetPath, LeadsToTheNodeAndNowhereElse) {
    std::mt19937 oRandom(5);
    Data oRoot = NewTree();
    Texts oNames = {"", "aa", "ä/ö", "..", "//", "\b46;", "46;", "a[0]", "[@a=\"b\"]"};
    for (char c = 1; c > 0; ++c) oNames.emplace_back(1, c);
    Grow(oRoot, oRandom, 600, oNames);
    for (u2_t u = 0; u < oRoot.GetNodes(); ++u) {
        const Str oPath = oRoot.GetNodeFromID(u).GetPath();
        ASSERT_EQ(IdsOf(oRoot.GetNodeFromID(7).GetNodeSet(oPath.CStr())), (Ids{u}));
    }
    // Below a removed node there is no way any more, to the node itself there is its old one.
    const Data oTop = oRoot.CreateNewSucc("top");
    Data oDown = oRoot.GetCheckedSucc("top");
    oDown.SetToNewSucc("down");
    oDown.GetPred().Remove();
    EXPECT_EQ(oTop.GetPath(), Str("/top[0]"));
    EXPECT_EQ(Raised([&] { (void)oDown.GetPath(); }), DELETED);
    EXPECT_EQ(oDown.NodeDepth(), 1);
}

}  // namespace
}  // namespace vok
