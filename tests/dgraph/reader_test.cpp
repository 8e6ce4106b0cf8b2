// SPDX-License-Identifier: MIT
// What documents are read as, into new trees and into such as had others before. Each goes through
// memory and through a stream that gives one byte at a time, which have to agree; for random trees,
// damaged ones too, that is for the fuzz targets dgraph and roundtrip.
#include <limits>

#include "tests/dgraph/dgraph_support.h"
#include "vok/file/file.h"

namespace vok {
namespace {

const std::string g_sBroken = "Dgraph_LoadDGraph: Input stream is corrupted! ";

TEST(DgraphReader, Values) {
    struct {
        int iCode;
        std::string sBytes;
        std::string sShown;
        bool bWritten = true;  // by this version, as the same bytes
    } const aCases[] = {
        // clang-format off
        {0, I32(0), ""}, {1, "\xFE\xFF\xFF\xFF", ":-2"}, {2, F32(0.1f), ":0.1000000014901161f"},
        {2, I32(0x7F800000), ":inff"}, {3, "\0\0\0\0\0\0\0\x80"s, ":-0d"}, {4, "\xC8", ":'200"},
        {5, I32(7) + "a b/\xC3\xA4\0"s, ":'a b/\xC3\xA4'"}, {5, I32(1) + "\0"s, ":''"},
        {5, Block("h\xE4 a text of more than one word\0"s),
         ":'h\xC3\xA4 a text of more than one word'", false},
        {5, Block("no NUL"), ":'no NUL'", false}, {5, Block("first\0second\0"s), ":'first'", false},
        {5, Block("\0\0"s), ":''", false}, {5, Block(""), ":''", false},
        {6, U8(0), ":no"}, {6, U8(1), ":yes"}, {6, U8(2), ":yes", false},
        {6, U8(0x80), ":yes", false}, {8, Block("\0\xFF"s), ":#00FF"}, {8, Block(""), ":#"},
        {9, F64(25569.5), ":1970-01-01 12:00:00"},
        {9, F64(25568.999994), ":1969-12-31 23:59:59", false},
        {10, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, ":18446744073709551614u"},
        {11, I32(1) + I32(0) + I32(-1) + I32(65536), ":0x0000000100000000FFFFFFFF00010000"},
        {12, "", "", false}, {255, "", "", false},
        // clang-format on
    };
    for (const auto& o : aCases) {
        SCOPED_TRACE(o.sShown);
        const std::string sRecord = Leaf("v[0]", o.iCode, o.sBytes);
        // Twice, and in front of another record: the second one is read the fast way.
        const std::string sDocument =
            Document(3, sRecord + Leaf("v[1]", o.iCode, o.sBytes) + Leaf("w[0]", 1, I32(7)));
        EXPECT_EQ(Load(sDocument), "Root(v" + o.sShown + " v" + o.sShown + " w:7)");
        // A root with a value is a whole document, whatever follows; where that is, the stream
        // stands.
        const Loaded oRoot = LoadFromBoth(Header() + sRecord + "rest")[0];
        EXPECT_EQ(oRoot.sShown, "v" + o.sShown);
        EXPECT_EQ(oRoot.oReport.m_uBytesLeft, 4u);
        EXPECT_EQ(Save(LoadTree(sDocument)) == sDocument, o.bWritten);
    }
}

TEST(DgraphReader, Structure) {
    const std::string sNone = "No binary DGraph buffer!";
    const std::string sWrong = "Binary DGraph buffer has the wrong version!";
    const std::string sNoStep = g_sBroken + "Empty path for node read.";
    const Pair aCases[] = {
        // clang-format off
        {"", sNone}, {"DGraphBi", sNone}, {"DGraphBim\1", sNone}, {"dGraphBin\1", sNone},
        {"DGraphBin", sWrong}, {Header(0, 0, 0), sWrong}, {Header(0, 0, 3), sWrong},
        {Header(0, 0, 255), sWrong}, {"DGraphBin" + U8(1), sNoStep}, {Header(), sNoStep},
        {"DGraphBin\1\2\3 anything at all.." + Open("r[0]", 0), "r"},
        // clang-format on
        // Names restart their run; the order of a tree is that of names.
        {Document(3, Open("a[0]", 0) + Open("b[0]", 0) + Open("a[0]", 0)), "Root(a a b)"},
        {Document(3, Leaf("b[0]", 1, I32(1)) + Leaf("a[0]", 1, I32(2)) + Leaf("b[0]", 1, I32(3))),
         "Root(a:2 b:1 b:3)"},
        // Behind a name out of order nothing is at the end any more.
        {Document(4, Leaf("c[0]", 1, I32(1)) + Leaf("b[0]", 1, I32(2)) + Leaf("b[1]", 1, I32(3)) +
                         Leaf("b[2]", 1, I32(4))),
         "Root(b:2 b:3 b:4 c:1)"},
        // A root index is not looked at; nor is what follows the last bracket.
        {Header() + Open("R[77]", 1) + Open("a[0]junk[", 0), "R(a)"},
        // Levels close where their counts run out.
        {Document(2, Open("a[0]", 1) + Open("b[0]", 1) + Leaf("c[0]", 1, I32(1)) +
                         Leaf("d[0]", 1, I32(2))),
         "Root(a(b(c:1)) d:2)"},
        {Document(2, Open("a[0]", 1) + Leaf("c[0]", 255, "") + Open("a[1]", 0)), "Root(a(c) a)"},
        // Where a count is cut off the document ends.
        {Document(2, Open("a[0]", 0)).substr(0, 46 + 9), "Root(a)"},
        {Document(5, Open("a[0]", 1)).substr(0, 46 + 12), "Root(a)"},
        // Forms of older versions are texts.
        {Document(2, Text("d[0]", "1970-01-01 12:00:00") + Text("q[0]", "1,2,3,4"), 1),
         "Root(d:'1970-01-01 12:00:00' q:'1,2,3,4')"},
        // No more records than announced are read.
        {Document(1, Open("a[0]", 0) + "rest"), "Root(a)"},
        {Document(0, Open("a[0]", 0)), "Root"},
        // A negative count is one that no document can fill.
        {Document(-1, Open("a[0]", 0)), sNoStep},
        {Document(std::numeric_limits<i2_t>::min(), Open("a[0]", 0) + Open("a[1]", 0)), sNoStep},
        {Document(1, Open("a[0]", std::numeric_limits<i2_t>::min()) + Leaf("b[0]", 1, I32(1)) +
                         Leaf("b[1]", 1, I32(1))),
         sNoStep},
        // Unnamed nodes, with and without the escape.
        {Document(2, Open("[0]", 0) + Open("\b0;[1]", 0)), "Root(? ?)"},
        // Attributes belong to their record; the last of one name counts.
        {Document(
             2, Open("a[0][@k=\"\"][@\b47;=\"\b34;]\"]", 0) + Open("a[1][@k=\"1\"][@k=\"2\"]", 0)),
         "Root(a@k=@/=\"] a@k=2)"},
        {Document(1, Open("a[0][@\b0;=\"1\"]", 0)), "unallowed attribute \"\""},
    };
    for (const auto& [sDocument, sOutcome] : aCases) EXPECT_EQ(Load(sDocument), sOutcome);
    const Data oTree = LoadTree(Header(200, 255) + Open("Root[0]", 0));
    EXPECT_STREQ(oTree.GetUserTag().CStr(), "DGraphBin 1.200.255");
}

TEST(DgraphReader, RunIndexes) {
    const std::string sExists = "CreateChild failed, element already exists";
    struct {
        Texts oSteps;
        std::string sOutcome;
        unsigned uNodes;  // made, with the slots that indexes used up
    } const aCases[] = {
        {{"x[0]", "x[2]"}, "Root(x:0 x:1)", 4},
        {{"x[3]"}, "Root(x:0)", 5},
        {{"b[1]", "a[1]", "b[0]"}, "Root(a:1 b:0 b:2)", 6},
        {{"x[1]", "x[0]"}, sExists, 4},
        {{"x[0]", "x[0]"}, sExists, 3},
        {{"x[0]", "x[1]", "x[1]"}, sExists, 4},
        {{"x[00]", "x[01]", "x[0000000002]"}, "Root(x:0 x:1 x:2)", 4},
        // Indexes have 32 bits: 2^32 is 0, 2^32 - 1 is negative.
        {{"x[4294967296]", "x[4294967297]"}, "Root(x:0 x:1)", 3},
        {{"x[4294967294]", "x[4294967295]", "x[0]"}, "Root(x:0 x:1 x:2)", 4},
        {{"x[8]", "x[9]", "x[10]", "x[11]", "x[012]"}, "Root(x:0 x:1 x:2 x:3 x:4)", 14},
        {{"x[9]", "x[11]", "x[10]"}, sExists, 14},
    };
    for (const auto& o : aCases) {
        std::string sRecords;
        for (std::size_t u = 0; u < o.oSteps.size(); ++u) {
            sRecords += Leaf(o.oSteps[u], 1, I32(static_cast<i3_t>(u)));
        }
        const std::string sDocument = Document(static_cast<i3_t>(o.oSteps.size()), sRecords);
        SCOPED_TRACE(o.oSteps.back());
        for (const auto& [sShown, bGood, oReport] : LoadFromBoth(sDocument)) {
            EXPECT_EQ(sShown, o.sOutcome);
            EXPECT_EQ(oReport.m_uNodes, o.uNodes);
        }
    }
}

TEST(DgraphReader, StepTexts) {
    const Pair aCases[] = {
        // clang-format off
        {"\0"s, "Empty Path not allowed"}, {"\0x[0]"s, "Empty Path not allowed"},
        {"/x[0]", "Path begins with '/'"}, {".x[0]", "Path begins with '.'"},
        {"x", "No index specified"}, {"x[", "No index specified"}, {"x[]", "No index specified"},
        {"x[-1]", "No index specified"}, {"x[a]", "No index specified"},
        {"x[\0000]"s, "No index specified"}, {"x[0", "Missing ']' after index"},
        {"x[0 ]", "Missing ']' after index"}, {"x[0\0]"s, "Missing ']' after index"},
        {"x[0][", "Attribute name must begin with '@'"},
        {"x[0][a=\"1\"]", "Attribute name must begin with '@'"},
        {"x[0][0]", "Attribute name must begin with '@'"},
        {"x[0][@=\"1\"]", "Empty attribute name not allowed"},
        {"x[0][@", "No value for attribute specified"},
        {"x[0][@a]", "No value for attribute specified"},
        {"x[0][@a\0=\"1\"]"s, "No value for attribute specified"},
        {"x[0][@a=", "Missing beginning quote for attribue value"},
        {"x[0][@a='1']", "Missing beginning quote for attribue value"},
        {"x[0][@a=\"", "Missing end quote for attribue value"},
        {"x[0][@a=\"1]", "Missing end quote for attribue value"},
        {"x[0][@a=\"1\"", "Missing ']' after attribute"},
        {"x[0][@a=\"1\" ]", "Missing ']' after attribute"},
        {"x[0][@a=\"1\"][@b=\"2\"", "Missing ']' after attribute"}, {"x[0]\0[bad"s, "x"},
        {"x[0] [bad", "x"}, {"x y.z[0]", "x y.z"}, {"x]/*[0]", "x]/*"},
        {"x[0][@a]b=\"[]/\"]", "x@a]b=[]/"}, {"a\b47;b\b8;47;[0]", "a/b\b47;"}, {"a\b0;b[0]", "a"},
        {"a\b228;\b8364;[0]", "a\xC3\xA4\xE2\x82\xAC"}, {"a\bb\b;\b12[0]", "a\bb\b;\b12"},
        {"\xE4[0]", "\xC3\xA4"},
        // clang-format on
    };
    for (const auto& o : aCases) {
        const std::string sShown = Load(Document(1, Leaf(o.first, 1, I32(1))));
        const bool bGood = sShown.rfind("Root(", 0) == 0;
        EXPECT_EQ(sShown, bGood ? "Root(" + o.second + ":1)" : BAD_STEP + o.second) << o.first;
    }
    EXPECT_EQ(Load(Document(1, I32(0))), g_sBroken + "Empty path for node read.");
}

TEST(DgraphReader, MessagesEndInOneLineBreakAndNameTheFunction) {
    const std::string sBytes = Document(1, Block("x"));
    Data oTree;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    const auto oLoad = [&] { Dgraph_LoadDGraph(oTree, oBuf); };
    EXPECT_EQ(Raised(oLoad), BAD_STEP + "No index specified\n");
    oBuf.Seek(0);
    EXPECT_EQ(Trail(oLoad), "vok::Dgraph_LoadDGraph\n");
    EXPECT_EQ(Show(oTree), "Root()");  // the old tree is gone, what was read is there
}

TEST(DgraphReader, Links) {
    const std::string sNothing = "Dgraph_LoadDGraph: referenced node points to nothing.";
    const std::string sTwo = "Dgraph_LoadDGraph: referenced node is not unique.";
    struct {
        std::string sName;
        std::string sPath;
        std::string sOutcome;  // target or message
    } const aCases[] = {
        // clang-format off
        {"b", "b[0]", "/b[0]"}, {"name is not compared", "b[1]/c[0]", "/b[1]/c[0]"},
        {"b", "b[1]", "/b[1]"}, {"a", "a[0]", "/a[0]"}, {"c", "/b[1]/c[0]", "/b[1]/c[0]"},
        {"c", "//c", "/b[1]/c[0]"}, {"c", "b[1]/c[0]\0/d"s, "/b[1]/c[0]"}, {"r", ".", "/"},
        {"e", "\b0;[0]", "/\b0;[0]"}, {"b", "b", sTwo}, {"b", "*", sTwo}, {"b", "b[2]", sNothing},
        {"b", "x[0]", sNothing}, {"b", "x[1]", "/x[0]"},  // the slot in front of it goes away
        // clang-format on
        {"b", "b[0", "opening bracket '[' used without corresponding closing bracket"},
        {"b", "..", "node has no predecessor"},
        {"", "b[0]", g_sBroken + "Empty type for refferred node read."},
        {"b", "", g_sBroken + "Empty path for refferred node read."},
    };
    for (const auto& o : aCases) {
        const std::string sShown =
            Load(Document(5, Link("a[0]", o.sName, o.sPath) + Open("b[0]", 0) + Open("b[1]", 1) +
                                 Open("c[0]", 0) + Open("x[1]", 0) + Open("\b0;[0]", 0)));
        const bool bGood = o.sOutcome[0] == '/';
        EXPECT_EQ(sShown, bGood ? "Root(? a->" + o.sOutcome + " b b(c) x)" : o.sOutcome) << o.sPath;
    }
}

TEST(DgraphReader, NegativeLengths) {
    const std::string sNegative = g_sBroken + "Negative length read.";
    for (const std::string& sLength : {I32(-1), I32(std::numeric_limits<i2_t>::min())}) {
        for (const std::string& s :
             {sLength, Leaf("w[0]", 5, sLength), Leaf("w[0]", 8, sLength), Leaf("w[0]", 7, sLength),
              Leaf("w[0]", 7, Block("b") + sLength)}) {
            EXPECT_EQ(Load(Document(1, s)), sNegative);
            EXPECT_EQ(Load(Document(2, Leaf("v[0]", 1, I32(1)) + s + std::string(99, 'x'))),
                      sNegative);
        }
    }
}

TEST(DgraphReader, EveryKind) {
    EXPECT_EQ(Load(AllTypes()),
              "Root(binary:#010203 char:'200 date:2009-07-06 06:00:00 double:2.5d empty float:1.5f "
              "int:-5 link->/tree[0]/x[1] long:77u quad:0x00000001000000020000000300000004 "
              "string@a b=c.:'some text' tree(x:'y' x:yes) yes:yes)");
    Drop_Stream oOut;
    Dgraph_SaveDGraph(LoadTree(AllTypes()), oOut);
    EXPECT_EQ(Joined(oOut.m_oWritten), AllTypes());
}

TEST(DgraphReader, MissingBytesAreZero) {
    // Long fields in front leave something stale behind to be found.
    const std::string sBefore = Text("a[0]", std::string(64, '\x55'));
    const Pair aCases[] = {
        // clang-format off
        {Leaf("v[0]", 1, "\x11"), "v:17"}, {Leaf("v[0]", 3, "\x01"), "v:4.940656458412465e-324d"},
        {Leaf("v[0]", 10, ""), "v:0u"}, {Leaf("v[0]", 6, ""), "v:no"},
        {Leaf("v[0]", 11, I32(1) + "\x02"), "v:0x00000001000000020000000000000000"},
        {Leaf("v[0]", 5, I32(20) + "abc"), "v:'abc'"}, {Leaf("v[0]", 5, "\x14"), "v:''"},
        {Leaf("v[0]", 8, I32(5) + "\x01\x02"), "v:#0102000000"}, {Block("v[0]"), "v"},
        // clang-format on
    };
    for (const auto& o : aCases) {
        EXPECT_EQ(Load(Document(2, sBefore + o.first)),
                  "Root(a:'" + std::string(64, '\x55') + "' " + o.second + ")");
    }
}

Data LoadInto(Data o, std::string_view sBytes) {
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Dgraph_LoadDGraph(o, oBuf);
    return o;
}

// A tree with names, attributes and values of many kinds, in no order.
std::string RandomDocument(unsigned uSeed) {
    static const Texts NAMES = {"a",  "b.c",           "\xC3\xA4",      "a b",
                                "id", "a longer name", "longest of all"};
    std::mt19937 oRandom(uSeed);
    Data oTree = Versioned();
    Grow(oTree, oRandom, uSeed, NAMES);
    // Runs with more than one digit, gaps in them, and texts for which the reader takes its time.
    for (unsigned u = 0; u < uSeed * 5; ++u) {
        const std::string& sName = NAMES[RandomBelow(oRandom, NAMES.size()) % (1 + uSeed % 7)];
        switch (RandomBelow(oRandom, 8)) {
            case 0: oTree.AddStr(sName, "\xC3\xA4\xC3\xB6"); break;
            case 1: oTree.AddStr(sName, ""); break;
            case 2: oTree.AddBin(sName, "\0\1", 2); break;
            case 3: oTree.AddLng(sName, oRandom()); break;
            case 4: oTree.CreateNewSucc(sName).SetAttVal("k", sName.c_str()); break;
            case 5: oTree.CreateNewSucc(sName).AddStr("text", "text of a name seen once"); break;
            case 6: oTree.CreateNewSucc(sName).Remove(); break;
            default: oTree.AddInt(sName, static_cast<i2_t>(oRandom()));
        }
    }
    return Save(oTree);
}

TEST(DgraphReader, LeavesItsFastWayAndComesBack) {
    for (unsigned uSeed = 0; uSeed < 60; ++uSeed) {
        const std::string sDocument = RandomDocument(uSeed);
        Data oFirst;
        FromBoth(sDocument, [&](File_Stream& oIn) {
            Data oTree;
            Dgraph_LoadDGraph(oTree, oIn);
            ASSERT_EQ(Fault(oTree), "");
            if (!oFirst.IsNode()) oFirst = oTree;
            ASSERT_EQ(DumpOf(oTree), DumpOf(oFirst)) << uSeed;
        });
    }
    // An empty node in the middle of a run, and names that are not what their documents say.
    EXPECT_EQ(
        Load(Document(3, Leaf("a[0]", 1, I32(1)) + Open("a[1]", 0) + Leaf("a[2]", 1, I32(2)))),
        "Root(a:1 a a:2)");
    EXPECT_EQ(Load(Document(3, Leaf("a\b46;b[0]", 1, I32(1)) + Leaf("a\b46;b[1]", 1, I32(2)) +
                                   Leaf("a\b92;b[0]", 1, I32(3)))),
              "Root(a.b:1 a.b:2 a\\b:3)");
    EXPECT_EQ(Load(Document(4, Leaf("[0]", 1, I32(1)) + Leaf("[1]", 1, I32(2)) +
                                   Leaf("a[0]", 1, I32(3)) + Text("b[0]", "text enough behind"))),
              "Root(?:1 ?:2 a:3 b:'text enough behind')");
    EXPECT_EQ(Load(Document(2, Leaf("a\b46;b[0]", 1, I32(1)) + Leaf("a.b[1]", 1, I32(2)))),
              "Root(a.b:1 a.b:2)");
}

// Records that are all but what is expected: they are what they are where nothing is.
TEST(DgraphReader, RecordsThatAreNearlyExpected) {
    std::vector<std::size_t> oHeads;
    const std::string sDocument = Repeating(oHeads);
    ASSERT_TRUE(LoadFromBoth(sDocument)[0].bGood);
    std::string sOther = sDocument;
    for (const std::size_t uHead : oHeads) {
        const std::size_t uEnd = sDocument.find(']', uHead) + 2;
        for (std::size_t u = uHead; u < uEnd; ++u) {
            for (const int iBy : {1, 2}) {
                const auto c = static_cast<char>(sDocument[u] + iBy);
                sOther[u] = c;
                const std::vector<Loaded> oBoth = LoadFromBoth(sOther);
                ASSERT_EQ(PlaceOf(oBoth[0].oReport), PlaceOf(oBoth[1].oReport)) << u;
            }
            sOther[u] = sDocument[u];
        }
    }
    for (const std::string& s : Misleading()) {
        Data oFirst;
        FromBoth(s, [&](File_Stream& oIn) {
            Data oTree;
            (void)Raised([&] { Dgraph_LoadDGraph(oTree, oIn); });
            EXPECT_EQ(Fault(oTree), "");
            if (!oFirst.IsNode()) oFirst = oTree;
            EXPECT_EQ(Show(oTree), Show(oFirst));
        });
        (void)LoadFromBoth(s);
    }
    // No text may be longer, so that no head may be.
    for (u3_t uMost = 0; uMost < 40; ++uMost) {
        (void)LoadFromBoth(sDocument, AtMost(LIMIT_TEXT_BYTES, uMost));
    }
}

// Where a level is opened that there is no memory for yet, the record behind it is compared with
// none: one that is the next of an earlier run is of that name, and one that came already is
// refused.
TEST(DgraphReader, LevelsThatNeedMemory) {
    const std::string sEnd = Text("z[0]", std::string(60, 'z'));
    for (const int iBelow : {1, 2, 3}) {
        std::string sBelow;
        for (int i = 0; i < iBelow; ++i) sBelow += Leaf("x[" + std::to_string(i) + "]", 1, I32(i));
        std::string sRecords;
        for (int iBefore = 0; iBefore < 100; ++iBefore) {
            const std::string sRun = sRecords + Leaf("b[0]", 1, I32(2));
            for (const char* sOpened : {"b[1]", "c[0]"}) {
                (void)LoadFromBoth(Document(iBefore + 4, sRun + Open(sOpened, iBelow) + sBelow +
                                                             Leaf("b[1]", 1, I32(3)) + sEnd));
            }
            sRecords += Open("a[" + std::to_string(iBefore) + "]", iBelow) + sBelow;
        }
    }
}

// What is read ahead ends anywhere: a file gives what memory gives, and is left behind the
// document.
TEST(DgraphReader, FilesAreReadAhead) {
    std::string sRecords;
    u2_t uRecords = 0;
    for (; sRecords.size() < 200000; ++uRecords) {
        const std::string sStep = "r[" + std::to_string(uRecords) + "]";
        switch (uRecords % 6) {
            case 0: sRecords += Text(sStep, std::string(uRecords % 977, 'x')); break;
            case 1: sRecords += Leaf(sStep, 8, Block(std::string(uRecords % 499, '\1'))); break;
            case 2: sRecords += Leaf(sStep, 11, I32(1) + I32(2) + I32(3) + I32(4)); break;
            case 3: sRecords += Open(sStep, 1) + Leaf("z[0]", 1, I32(7)); break;
            case 4: sRecords += Link(sStep, "r", "r[0]"); break;
            default: sRecords += Leaf(sStep, 3, F64(2.5)); break;
        }
    }
    const std::string sDocument = Document(uRecords, sRecords);
    const Scratch_Dir oDir;
    std::vector<std::size_t> oCuts = {sDocument.size()};
    for (std::size_t u = 65500; u < 65580; ++u) oCuts.push_back(u);
    for (const std::size_t uCut : oCuts) {
        const bool bWhole = uCut == sDocument.size();
        ToDisk("f", sDocument.substr(0, uCut) + (bWhole ? "rest" : ""));
        File oFile("f", "Tr");
        const Loaded oAhead = LoadFrom(oFile);
        File_Buf oBuf(sDocument.data(), uCut);
        const Loaded oWhole = LoadFrom(oBuf);
        EXPECT_EQ(oAhead.sShown, oWhole.sShown) << uCut;
        EXPECT_EQ(PlaceOf(oAhead.oReport), PlaceOf(oWhole.oReport)) << uCut;
        EXPECT_EQ(oAhead.oReport.m_uMissingBytes, oWhole.oReport.m_uMissingBytes) << uCut;
        EXPECT_EQ(oAhead.oReport.m_uBytesLeft, bWhole ? 4u : 0u);
        EXPECT_EQ(oFile.Tell(), static_cast<i3_t>(oAhead.oReport.m_uOffset)) << uCut;
    }
}

// Whatever a tree was before, it is what the document makes of a new one, down to its dump.
TEST(DgraphReader, ATreeUsedAgainIsAsNew) {
    Texts sDocuments = {AllTypes(), Document(0, ""), Save(Versioned())};
    for (const unsigned uSeed : {3u, 20u, 59u}) sDocuments.push_back(RandomDocument(uSeed));
    Data oUsed;
    for (const std::string& sBefore : sDocuments) {
        for (const std::string& sDocument : sDocuments) {
            oUsed = LoadInto(LoadInto(std::move(oUsed), sBefore), sDocument);
            const Data oNew = LoadTree(sDocument);
            ASSERT_EQ(Fault(oUsed), "");
            ASSERT_EQ(DumpOf(oUsed), DumpOf(oNew));
            ASSERT_TRUE(Data::Equal(oUsed, oNew));
            // It goes on like any other.
            oUsed.CreateNewSucc("later").SetAttVal("k", "v");
            ASSERT_EQ(Show(LoadTree(Save(oUsed))), Show(oUsed));
        }
    }
    // Who else looks at the tree keeps it.
    const Data oOther = oUsed;
    const std::string sShown = Show(oOther);
    oUsed = LoadInto(std::move(oUsed), AllTypes());
    EXPECT_EQ(Show(oOther), sShown);
    EXPECT_EQ(Show(oUsed), Load(AllTypes()));
}

// A message needs one block for its tree, none for the tree that the last ones had, and one for its
// document. The second one has its tree note what the records of its names begin with.
TEST(DgraphReader, AMessageNeedsOneBlock) {
    const auto oBuild = [] {
        Data oTree = Versioned();
        for (int i = 0; i < 20; ++i) {
            oTree.AddStr("name" + std::to_string(20 - i), std::string(10, 'x'));
        }
        Data oSub = oTree.CreateNewSucc("sub");
        for (int i = 0; i < 4; ++i) oSub.AddInt("n", i);
        return oTree;
    };
    const u3_t uBlocks = Mem::BlocksInUse();
    const Mem_Probe oProbe;
    Data oTree = oBuild();
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTree, oBuf);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 2);
    EXPECT_LT(oTree.HeapBytes(), oTree.GetNodes() * 120);
    const std::string_view sDocument(oBuf.Data(), oBuf.Size());
    Data oRead = LoadInto(Data(), sDocument);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 3);
    oRead = LoadInto(std::move(oRead), sDocument);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 4);
    const std::size_t uAsked = Mem_Probe::Asked();
    oRead = LoadInto(std::move(oRead), sDocument);
    EXPECT_EQ(Mem_Probe::Asked(), uAsked);
    EXPECT_TRUE(Data::Equal(oRead, oTree));
}

TEST(DgraphReader, ASmallDocumentGivesTheMemoryOfALargeOneBack) {
    Data oLarge = Versioned();
    for (int i = 0; i < 20000; ++i) {
        oLarge.AddStr("name" + std::to_string(i), std::string(30, 'x'));
        oLarge.GetNodeFromID(1).SetAttVal(("k" + std::to_string(i % 2000)).c_str(), "v");
    }
    Data oTree = LoadInto(Data(), Save(oLarge));
    const std::size_t uLarge = oTree.HeapBytes();
    oTree = LoadInto(std::move(oTree), AllTypes());
    EXPECT_LT(oTree.HeapBytes(), uLarge / 10);
    EXPECT_FALSE(oTree.FindKey("name7").IsKnown());
    // Neither a failure nor a Reset in between changes what comes next.
    EXPECT_NE(Failing([&] { LoadInto(oTree, Document(1, Leaf("a", 1, I32(1)))); }), "");
    oTree.Reset();
    oTree.AddInt("n", 1);
    EXPECT_EQ(Fault(oTree), "");
    EXPECT_EQ(Show(LoadInto(std::move(oTree), AllTypes())), Load(AllTypes()));
}

}  // namespace
}  // namespace vok
