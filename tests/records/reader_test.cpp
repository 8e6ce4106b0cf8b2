// SPDX-License-Identifier: MIT
// Documents record by record.
#include <map>
#include <random>

#include "tests/records/records_support.h"
#include "vok/data/walk.h"
#include "vok/file/window.h"

namespace vok {
namespace {

// From memory and from a stream the same tree or the same error as by loading, at the same place.
void ExpectSame(const std::string& sDocument, const Limits& oLimits = {}) {
    File_Buf oWhole(sDocument.data(), sDocument.size());
    Reading oLoaded = LoadWhole(oWhole, oLimits);
    File_Buf oBuf(sDocument.data(), sDocument.size());
    const Reading oTaken = TakeWhole(oBuf, oLimits);
    if (oTaken.sReport.empty()) oLoaded.sReport.clear();
    EXPECT_EQ(oTaken, oLoaded) << testing::PrintToString(sDocument);
    Drop_Stream oStream(sDocument, 100);
    EXPECT_EQ(TakeWhole(oStream, oLimits).sShown, oLoaded.sShown);
    File_Buf oEach(sDocument.data(), sDocument.size());
    const Reading oRecords = EachRecord(oEach, oLimits);
    Drop_Stream oFew(sDocument, 7);
    EXPECT_EQ(EachRecord(oFew, oLimits), oRecords);
}
// The same of a document without links, whose every error is met record by record.
void ExpectToldByRecords(const std::string& sDocument) {
    ExpectSame(sDocument);
    const Reading oRecords = [&] {
        File_Buf oIn(sDocument.data(), sDocument.size());
        return EachRecord(oIn);
    }();
    File_Buf oIn(sDocument.data(), sDocument.size());
    const Reading oLoaded = LoadWhole(oIn);
    if (oLoaded.bFailed) {
        EXPECT_TRUE(Has(oRecords.sShown, oLoaded.sShown));
    }
}

TEST(Reader, TheCanonicalFormIsThatOfTheTree) {
    const std::string sLinks = Document(2, Leaf("a[0]", 1, I32(1)) + Link("l[0]", "a", "a[0]"));
    const std::string XML = "<?xml version='1.0'?>";
    const std::pair<std::string, bool> CASES[] = {
        {Document(3, Leaf("a[2]", 1, I32(1)) + Leaf("a[5]", 1, I32(2)) +
                         Leaf("b[0][@z=\"1\"][@a=\"2\"][@z=\"3\"]", 5, Block("x\0"s))),
         true},
        {Header() + Leaf("Root[0][@a=\"\"]", 5, Block("text\0"s)), true},
        {Header() + Leaf("\b0;[0]", 0, I32(0)), true},
        {XML + "<R b='2' a='1' b2=''><a>1</a><b><c/><c dt:dt='r4'>0.1</c></b></R>", true},
        {XML + "<R><b/><a/></R>", false},
        {sLinks, false},
        {XML + "<R><a CDNodeIDREF='ID1'>kept</a></R>", false},
    };
    for (const auto& [sDocument, bByRecords] : CASES) {
        File_Buf oBuf(sDocument.data(), sDocument.size());
        Drop_Stream oIn(sDocument, 5);
        Data oTree;
        Dgraph_Load(oTree, oBuf);
        EXPECT_EQ(FormByRecords(oIn), bByRecords ? FormOf(oTree) : "") << sDocument;
    }
}

// Whether trees are made on the way or not, reading comes to the same place, with the same error
// if there is one, counts the same, and hits the same limits.
void ExpectSameInParts(const std::string& sDocument, const Limits& oLimits = {}) {
    constexpr u2_t NEVER = 99;
    Drop_Stream oIn(sDocument, 7);
    const Reading oPlain = ReadThrough(oIn, oLimits, NEVER);
    for (const u2_t uLevel : {1u, 2u, 3u}) {
        Drop_Stream oAgain(sDocument, 7);
        EXPECT_EQ(ReadThrough(oAgain, oLimits, uLevel), oPlain)
            << uLevel << ' ' << testing::PrintToString(sDocument);
    }
}

// Elements of every kind.
const std::string g_sXml =
    "<?xml version='1.0'?><!DOCTYPE R><R a='1' b='x &amp; y' a='2'> <!-- c --><?p i?>\n"
    "<bin dt:dt='bin.base64'><![CDATA[AQID]]></bin><bool dt:dt='boolean'>1</bool>"
    "<char dt:dt='char'>\xC3\xA4</char><date dt:dt='dateTime.tz'>2001-02-03T04:05:06</date>"
    "<dbl dt:dt='r8'>2.5e300</dbl><empty/><flt dt:dt='r4'>0.1</flt><int dt:dt='i4'>0x10</int>"
    "<l CDNodeIDREF='ID7' CDNodeRefType='link'/><lng dt:dt='i8'>123456789012</lng>"
    "<none dt:dt='i4'/><quad dt:dt='quad'>1,2,-3</quad><text> a &lt; b <![CDATA[<c>]]>&auml;</text>"
    "<tree k='v'>\n\t<x CDNodeID='ID7'>1</x><x></x>beside<y CDNodeIDREF='ID7'>kept</y>"
    "<z CDNodeIDREF='ID99'>kept</z></tree><u _x0061_='A' dt:dt='huh'><![CDATA[]]></u></R>";

const std::string g_sGaps =
    Document(4, Leaf("a[2]", 1, I32(1)) + Leaf("a[5]", 1, I32(2)) + Open("b[0]", 2) +
                    Link("l[0]", "a", "a[5]") + Link("m[3]", "m", "b[0]/m[3]") + Text("c[0]", "x"));

TEST(Reader, AllOfADocumentIsItsTree) {
    ExpectSame(AllTypes());
    ExpectSame(g_sGaps);
    ExpectSame(g_sXml);
    // An index that wraps is a negative one, and its run is one all the same.
    const std::string sWrapped =
        Document(2, Leaf("a[4294967295]", 1, I32(1)) + Leaf("a[4294967295]", 1, I32(2)));
    File_Buf oWrapped(sWrapped.data(), sWrapped.size());
    EXPECT_EQ(TakeWhole(oWrapped).sShown, Load(sWrapped));
    ExpectSame(Header() + Leaf("Me[0][@a=\"b\"]", 5, Block("text\0"s)));
    ExpectSame(
        Document(3, Leaf("a[0]", 1, I32(1)) + Leaf("b[0]", 1, I32(2)) + Leaf("a[0]", 1, I32(3))));
}

// Runs of one name in which values that need a second look stand between others, longer than what
// is read ahead.
std::string Runs(std::size_t uLeast = 200000) {
    std::string sRecords;
    i3_t iObjects = 0;
    for (; sRecords.size() < uLeast; ++iObjects) {
        std::string sObject;
        i3_t iCount = 0;
        for (const std::size_t uName : {1u, 4u, 5u, 12u, 30u}) {
            const std::string sName(uName, static_cast<char>('a' + uName));
            for (unsigned i = 0; i < 23; ++i, ++iCount) {
                const std::string sStep = sName + '[' + std::to_string(i) + ']';
                switch ((static_cast<unsigned>(iObjects) + i * i) % 11) {
                    case 0: sObject += Text(sStep, std::string(i, 'x')); break;
                    case 1: sObject += Text(sStep, "\xC3\xA4"); break;
                    case 2: sObject += Leaf(sStep, 8, Block(std::string(i, '\1'))); break;
                    case 3: sObject += Open(sStep, 1) + Leaf("z[0]", 1, I32(7)); break;
                    case 4: sObject += Leaf(sStep, 0, I32(0)); break;
                    default: sObject += Leaf(sStep, 1, I32(static_cast<int>(i)));
                }
            }
        }
        sRecords += Open("o[" + std::to_string(iObjects) + "]", iCount) + sObject;
    }
    return Document(iObjects, sRecords);
}

// Where there are no gaps each record is a node of the tree, at its place.
TEST(Reader, RecordsAreTheNodesOfTheTree) {
    std::vector<std::size_t> oHeads;
    for (const std::string& sDocument : {Repeating(oHeads), AllTypes(), Runs()}) {
        File_Buf oWhole(sDocument.data(), sDocument.size());
        Data oTree;
        Dgraph_Load(oTree, oWhole);
        std::vector<std::string> oNodes;
        std::map<std::pair<u2_t, std::string>, u2_t> oSeen;
        for (Data_Walk o(oTree); o.Next();) {
            const std::string sName = o.GetName();
            const std::pair oRun(o.GetData().GetPred().GetId(), sName);
            const u2_t uIndex = o.GetDepth() != 0 ? oSeen[oRun]++ : 0;
            oNodes.push_back(std::to_string(o.GetDepth()) + ' ' + sName + ' ' +
                             std::to_string(uIndex) + ' ' + std::to_string(o.GetType()));
        }
        File_Buf oBuf(sDocument.data(), sDocument.size());
        Drop_Stream oStream(sDocument, 1000);
        for (File_Stream* pIn :
             {static_cast<File_Stream*>(&oBuf), static_cast<File_Stream*>(&oStream)}) {
            std::size_t u = 0;
            for (Data_Reader r(*pIn); r.Next(); ++u) {
                ASSERT_LT(u, oNodes.size());
                ASSERT_EQ(std::to_string(r->GetDepth()) + ' ' + std::string(r->GetName()) + ' ' +
                              std::to_string(r->GetIndex()) + ' ' + std::to_string(r->GetType()),
                          oNodes[u]);
            }
            EXPECT_EQ(u, oNodes.size());
        }
    }
}

TEST(Reader, DamageIsToldAsByLoading) {
    for (const std::string& sDocument : {AllTypes(), g_sGaps, g_sXml}) {
        for (std::size_t u = 0; u < sDocument.size(); ++u) ExpectSame(sDocument.substr(0, u));
        for (std::size_t u = 12; u < sDocument.size(); ++u) {
            for (const char c : {'\0', '\1', '\xFF', '[', '7', '<', '/'}) {
                std::string sDamaged = sDocument;
                sDamaged[u] = c;
                ExpectSame(sDamaged);
            }
        }
    }
    std::vector<std::size_t> oHeads;
    const std::string sRepeating = Repeating(oHeads);
    for (const std::size_t uHead : oHeads) {
        // The last digit of the index, the name, the length.
        for (const std::size_t u : {sRepeating.find(']', uHead) - 1, uHead + 4, uHead}) {
            std::string sDamaged = sRepeating;
            ++sDamaged[u];
            ExpectToldByRecords(sDamaged);
        }
    }
    for (const std::string& s : Misleading()) ExpectToldByRecords(s);
    // The index of the one behind it once more, or of one that is no leaf.
    for (const std::string& sBetween : {Leaf("x[1]", 4, U8('c')), Text("x[1]", "\xC3\xA4"),
                                        Open("x[1]", 1) + Leaf("x[0]", 1, I32(1))}) {
        for (const char* sNext : {"x[1]", "x[2]", "x[3]"}) {
            ExpectToldByRecords(Document(3, Leaf("x[0]", 1, I32(1)) + sBetween +
                                                Leaf(sNext, 1, I32(1)) +
                                                Text("y[0]", std::string(60, 'y'))));
        }
    }
    const std::string sOutOfOrder = Misleading()[0];
    File_Buf oOutOfOrder(sOutOfOrder.data(), sOutOfOrder.size());
    EXPECT_TRUE(EachRecord(oOutOfOrder).sReport.ends_with("!"));
    // What is in front of an element is a value or nothing; what links is no tree.
    for (const char* s : {"<a>x<b/></a>", "<a>\f<b/></a>", "<a dt:dt='i4'><b/></a>", "<a><b></a>",
                          "<a CDNodeID='ID1' CDNodeIDREF='ID1'><b/></a>", "<a></b>",
                          "<r><c/><a/><b/><c/><d/><a/></r>", "<a =''/>"}) {
        ExpectSame(s);
    }
}

// Objects of several levels, each a little larger than the one in front of it; with sLast in the
// last one, behind names that were seen to follow each other.
std::string Nested(const std::string& sLast = {}) {
    std::string sRecords;
    for (int i = 0; i < 9; ++i) {
        std::string sList;
        for (int u = 0; u <= i % 4; ++u) {
            sList += Open("e[" + std::to_string(u) + "]", 2) + Leaf("p[0]", 1, I32(u)) +
                     Text("q[0]", std::string(static_cast<std::size_t>(u), 'q'));
        }
        const bool bLast = i == 8 && !sLast.empty();
        sRecords += Open("o[" + std::to_string(i) + "]", bLast ? 6 : 5) + Leaf("a[0]", 1, I32(i)) +
                    Open("l[0]", i % 4 + 1) + sList + Leaf("m[0]", 6, U8(1)) +
                    Leaf("x[0]", 1, I32(2)) + Open("y[0]", 1) + Leaf("w[0]", 1, I32(3)) +
                    (bLast ? sLast : "");
    }
    return Document(10, sRecords + Text("z[0]", std::string(60, 'z')));
}

TEST(Reader, LimitsAreThoseOfLoading) {
    const Limit ALL[] = {LIMIT_NODES,      LIMIT_DEPTH,      LIMIT_SLOTS,
                         LIMIT_TEXT_BYTES, LIMIT_ATTRIBUTES, LIMIT_PATH_STEPS};
    for (const Limit& o : ALL) {
        for (u3_t uMost = 0; uMost < 25; ++uMost) {
            ExpectSame(AllTypes(), AtMost(o, uMost));
            ExpectSame(g_sGaps, AtMost(o, uMost));
            ExpectSame(g_sXml, AtMost(o, uMost));
        }
    }
    for (u3_t uMost = 1; uMost < 130; ++uMost) ExpectSame(Nested(), AtMost(LIMIT_NODES, uMost));
    const std::string sDeeper = Nested(Open("y[1]", 1) + Open("l[0]", 1) + Open("e[0]", 2) +
                                       Leaf("p[0]", 1, I32(5)) + Text("q[0]", "q"));
    for (u3_t uMost = 1; uMost < 9; ++uMost) ExpectSame(sDeeper, AtMost(LIMIT_DEPTH, uMost));
}

// Gaps, nodes out of order and a level without end, three levels down.
const std::string g_sDeep = Document(
    3, Open("a[1][@k=\"v\"]", 3) + Leaf("x[2]", 1, I32(1)) + Open("x[4]", 2) +
           Leaf("y[0]", 1, I32(2)) + Open("y[3]", 2) + Leaf("z[0]", 1, I32(3)) + Text("z[1]", "t") +
           Text("w[0]", "u") + Open("b[0]", 2) + Leaf("c[0]", 0, I32(0)) + Open("c[1]", 2) +
           Leaf("d[1]", 1, I32(5)) + Text("d[2]", "v") + Open("b[1]", 0xFFFFFFFF) +
           Leaf("e[0]", 1, I32(6)) + Text("e[1]", "w"));

TEST(Reader, TreesOnTheWayChangeNothing) {
    ExpectSameInParts(g_sDeep);
    for (std::size_t u = 0; u < g_sDeep.size(); ++u) {
        ExpectSameInParts(g_sDeep.substr(0, u));
        for (const char c : {'\0', '\1', '\xFF', '[', '7'}) {
            std::string sDamaged = g_sDeep;
            sDamaged[u] = c;
            ExpectSameInParts(sDamaged);
        }
    }
    for (const Limit& o : {LIMIT_NODES, LIMIT_DEPTH, LIMIT_SLOTS, LIMIT_TEXT_BYTES}) {
        for (u3_t uMost = 0; uMost < 40; ++uMost) ExpectSameInParts(g_sDeep, AtMost(o, uMost));
    }
}

// 3 orders, of which the second links into itself, the third to the first.
const std::string g_sOrders = Document(
    4, Open("order[0][@state=\"open\"]", 1) + Leaf("id[0]", 1, I32(10)) + Open("order[1]", 2) +
           Leaf("id[0]", 1, I32(11)) + Link("me[0]", "id", "order[1]/id[0]") +
           Open("order[2][@state=\"open\"]", 2) + Leaf("id[0]", 1, I32(12)) +
           Link("other[0]", "order", "order[0]") + Text("z[0]", "end"));

TEST(Reader, ASubtreeLeftOutCanBeTakenStill) {
    for (const std::string& sDocument :
         {g_sOrders, "<r><order><id dt:dt='i4'>10</id></order><z/></r>"s}) {
        Drop_Stream oIn(sDocument);
        Data_Reader oReader(oIn);
        while (oReader.Next() && oReader->GetName() != "order") {
        }
        Data oTree;
        oReader.SkipSuccessors();
        oReader.Take(oTree);
        EXPECT_EQ(oTree.GetNthSucc("id", 0).GetValInt(), 10);
        ASSERT_TRUE(oReader.Next());
        EXPECT_EQ(oReader->GetDepth(), 1u);
    }
}

// Objects with attributes, the same ones again and again; the last one may have a name behind one
// that it was seen to follow before, but now belongs in front of.
std::string Ladder(bool bInOrder) {
    const std::string sInner = Open("a[0][@k=\"v\"]", 1) + Leaf("o[0]", 1, I32(1));
    const std::string sTop = Open("o[0]", 2) + Leaf("k[0]", 1, I32(2)) + Text("l[0]", "text");
    const std::string sLast =
        bInOrder ? sInner : Open("a[0]", 2) + Leaf("o[0]", 1, I32(1)) + Leaf("k[0]", 1, I32(2));
    std::string sRecords;
    for (int i = 0; i < 4; ++i) {
        sRecords += Open("b[" + std::to_string(i) + "]", 2) + sInner + sTop;
    }
    return Document(6,
                    sRecords + Open("c[0]", 2) + sLast + sTop + Text("d[0]", std::string(60, 'd')));
}

// Levels that are closed together and opened anew, more of them than records are read ahead for, in
// each a name that comes twice; texts of other letters.
std::string Steep() {
    std::string sRecords;
    for (int i = 0; i < 12; ++i) {
        const std::string sIndex = "[" + std::to_string(i) + "]";
        sRecords += Open("a" + sIndex, 2) + Open("b[0]", 1) + Open("c[0]", 1) + Open("d[0]", 1) +
                    Open("e[0]", 2) + Text("f[0]", "\xC3\xA9t\xC3\xA9") + Leaf("f[1]", 1, I32(7)) +
                    Text(i == 6 ? "new[0]" : "b[1]", "\xE2\x82\xAC");
    }
    return Document(13, sRecords + Text("z[0]", std::string(60, 'z')));
}
// The same name on every level, with places that were left out at the beginning of some; and such
// that only the index of a level above would be one less than theirs.
std::string Alike() {
    std::string sRecords;
    for (int i = 0; i < 12; ++i) {
        const std::string sGap = i % 4 == 3 ? "1" : "0";
        sRecords += Open("a[" + std::to_string(i) + "]", 3) + Open("a[" + sGap + "]", 2) +
                    Leaf("a[0]", 1, I32(1)) + Leaf("a[1]", 1, I32(2)) +
                    Open("a[" + std::to_string(i % 4 >= 2 ? i + 1 : 1) + "]", 1) +
                    Leaf("a[" + sGap + "]", 1, I32(3)) + Text("b[0]", "t");
    }
    return Document(13, sRecords + Text("z[0]", std::string(60, 'z')));
}
std::string SteepXml() {
    std::string s = "<r>\n";
    for (int i = 0; i < 12; ++i) {
        s += "<a>\n<b><c><d><e><f>\xC3\xA9t\xC3\xA9</f><f dt:dt='i4'>7</f></e></d></c></b>";
        // Some are not in order, the first of them like any other.
        s += i == 4 || i == 8 ? "<new>n</new><b>x</b>" : "<b><![CDATA[\xE2\x82\xAC]]></b>\n";
        s += i == 6 ? "<a>&lt;</a></a>" : "</a>\n";
    }
    return s + "<z>" + std::string(60, 'z') + "</z></r>";
}

// Whatever a reader is asked, and wherever, it says what one says that is asked at every record:
// what it has read ahead does not show.
TEST(Reader, WhereARecordIsAskedFor) {
    std::vector<std::size_t> oHeads;
    const std::string sRepeating = Repeating(oHeads);
    const std::string sXml = "<r><o><a>1</a><b/>text</o><o><a>2</a><b><c/></b></o></r>";
    const auto oSaidBy = [](const Data_Reader& r) {
        return std::string(r->GetName()) + std::to_string(r->GetType()) +
               std::string(r.GetPath().View()) + ' ' + Line(r.GetReport()) +
               (r.IsInOrder() ? "" : "!");
    };
    for (const std::string& sDocument :
         {sRepeating, sRepeating.substr(0, oHeads.back() - 20), AllTypes(), g_sOrders, sXml, g_sXml,
          Ladder(false), Steep(), SteepXml(), Alike(), Nested(), Nested(Leaf("y[0]", 1, I32(4))),
          Nested(Open("y[1]", 1) + Leaf("y[2]", 1, I32(4))), Nested(Leaf("x[1]", 1, I32(4)))}) {
        Texts sSaid;
        File_Buf oIn(sDocument.data(), sDocument.size());
        Data_Reader oEach(oIn);
        const std::string sError = Failing([&] {
            while (oEach.Next()) sSaid.push_back(oSaidBy(oEach));
        });
        const std::string sEnd = Line(oEach.GetReport());
        for (std::size_t uAsked = 0; uAsked < sSaid.size(); ++uAsked) {
            Drop_Stream oStream(sDocument, 50);
            Data_Reader oReader(oStream);
            std::size_t u = 0;
            const std::string sAgain = Failing([&] {
                for (; oReader.Next(); ++u) {
                    const bool bAsked = u == uAsked || u == uAsked + 3;
                    EXPECT_EQ(bAsked ? oSaidBy(oReader) : sSaid[u], sSaid[u]);
                }
            });
            EXPECT_EQ(u, sSaid.size());
            EXPECT_EQ(sAgain, sError);
            if (sError.empty()) continue;
            EXPECT_EQ(Line(oReader.GetReport()), sEnd);
        }
    }
}

// What is behind a tree that was taken is compared with its step where that is a name and an index:
// elsewhere a last character that is one more says nothing.
TEST(Reader, WhatIsBehindATakenTreeIsReadAsByLoading) {
    const std::string sInner = Leaf("x[0]", 1, I32(1));
    for (const std::string sFirst : {"a[0]", "a[0][@k=\"v\"]", "a[4]", "\b97;[0]"}) {
        for (const std::size_t uFrom : {sFirst.size() - 2, sFirst.find(']') - 1}) {
            std::string sSecond = sFirst;
            ++sSecond[uFrom];
            const std::string sDocument =
                Document(3, Open(sFirst, 1) + sInner + Open(sSecond, 1) + sInner +
                                Text("y[0]", std::string(60, 'y')));
            File_Buf oWhole(sDocument.data(), sDocument.size());
            Data oTree;
            const std::string sError = Failing([&] { Dgraph_Load(oTree, oWhole); });
            File_Buf oIn(sDocument.data(), sDocument.size());
            Texts oTaken;
            const std::string sTold = Failing([&] {
                for (const Data& o : Records(oIn, "/*")) oTaken.push_back(Show(o));
            });
            EXPECT_EQ(sError.empty(), sTold.empty()) << sError << sTold;
            EXPECT_TRUE(Has(sTold, sError.substr(sError.rfind(':') + 1))) << sSecond;
            if (!sError.empty()) continue;
            Texts oLoaded;
            for (const Data& o : oTree.GetNodeSet("/*")) oLoaded.push_back(Show(o));
            EXPECT_EQ(oTaken, oLoaded) << sSecond;
        }
    }
}

TEST(Reader, EveryRecordIsTakenOrLeftOut) {
    std::vector<std::size_t> oHeads;
    for (const std::string& sDocument :
         {Repeating(oHeads), Runs(9000), Ladder(true), Steep(), Nested()}) {
        File_Buf oWhole(sDocument.data(), sDocument.size());
        Data oTree;
        Dgraph_Load(oTree, oWhole);
        std::vector<std::pair<u2_t, std::size_t>> oNodes;  // id and depth
        for (Data_Walk o(oTree); o.Next();) oNodes.emplace_back(o.GetId(), o.GetDepth());
        for (std::size_t uAt = 0; uAt < oNodes.size(); ++uAt) {
            std::size_t uNext = uAt + 1;
            while (uNext < oNodes.size() && oNodes[uNext].second > oNodes[uAt].second) ++uNext;
            const Data oNode = oTree.GetNodeFromID(oNodes[uAt].first);
            enum : unsigned { SKIP = 1, ASK = 2, TAKE = 4 };
            for (const unsigned uDoes : {SKIP | 0, SKIP | ASK, TAKE | 0, SKIP | TAKE}) {
                File_Buf oIn(sDocument.data(), sDocument.size());
                Data_Reader oReader(oIn);
                for (std::size_t u = 0; u <= uAt; ++u) ASSERT_TRUE(oReader.Next());
                if ((uDoes & SKIP) != 0) oReader.SkipSuccessors();
                if ((uDoes & ASK) != 0) {
                    EXPECT_EQ(oReader.GetPath(), oNode.GetPath());
                    EXPECT_EQ(oReader.GetReport().m_oPath, oNode.GetPath());
                }
                if ((uDoes & TAKE) != 0) {
                    Data oTaken;
                    const u3_t uOffset = oReader->GetOffset();
                    oReader.Take(oTaken);
                    EXPECT_EQ(oReader->GetOffset(), uOffset);
                    EXPECT_EQ(Show(oTaken), Show(oNode));
                }
                // All that is behind it comes, and nothing else is asked for.
                for (std::size_t u = uNext; u < oNodes.size(); ++u) {
                    ASSERT_TRUE(oReader.Next()) << uAt;
                    ASSERT_EQ(oReader->GetDepth(), oNodes[u].second) << uAt;
                    ASSERT_EQ(oReader->GetName(), oTree.GetNodeFromID(oNodes[u].first).GetName());
                }
                ASSERT_FALSE(oReader.Next()) << uAt;
            }
        }
        // Several of them, some one behind the other.
        for (u2_t uSeed = 1; uSeed < 60; ++uSeed) {
            std::mt19937 oRandom(uSeed);
            File_Buf oIn(sDocument.data(), sDocument.size());
            Data_Reader oReader(oIn);
            for (std::size_t u = 0; u < oNodes.size();) {
                ASSERT_TRUE(oReader.Next()) << uSeed;
                const auto [uId, uDepth] = oNodes[u++];
                ASSERT_EQ(oReader->GetDepth(), uDepth) << uSeed;
                ASSERT_EQ(oReader->GetName(), oTree.GetNodeFromID(uId).GetName()) << uSeed;
                const auto uAsked = oRandom() % 16;
                if (uAsked < 2) {
                    const Str oPath = oTree.GetNodeFromID(uId).GetPath();
                    ASSERT_EQ(oReader.GetPath(), oPath) << uSeed;
                    if (uAsked == 0) {
                        ASSERT_EQ(oReader.GetReport().m_oPath, oPath) << uSeed;
                    }
                }
                if (u == 1 || oRandom() % (1 + uSeed % 4) != 0) continue;
                oReader.SkipSuccessors();
                while (u < oNodes.size() && oNodes[u].second > uDepth) ++u;
            }
            ASSERT_FALSE(oReader.Next()) << uSeed;
        }
    }
}

TEST(Reader, AWindowIsAsLargeAsItsLargestField) {
    constexpr std::size_t FIELD = 4 << 20;
    const std::string sBytes(2 * FIELD + 1, 'x');
    Drop_Stream oIn(sBytes, 100'000);
    File_Window oWindow(oIn);
    EXPECT_EQ(oWindow.View(1).size(), 1u);
    EXPECT_LE(oWindow.Held(), 2 * File_Window::CHUNK);
    EXPECT_EQ(oWindow.View(FIELD).size(), FIELD);
    EXPECT_LE(oWindow.Held(), FIELD + FIELD / 2 + 2 * File_Window::CHUNK);
}

TEST(Reader, WhatARecordSays) {
    const std::string sDocument = AllTypes() + "behind";
    File_Buf oIn(sDocument.data(), sDocument.size());
    Data_Reader oReader(oIn);
    std::string sAll;
    while (oReader.Next()) {
        if (oReader->GetDepth() == 1 && oReader->GetName() == "tree") {
            EXPECT_EQ(oReader->GetSuccs(), 2u);
            EXPECT_EQ(sDocument.substr(oReader->GetOffset() + 4, 7), "tree[0]");
            oReader.SkipSuccessors();
        }
        if (oReader->GetType() == Data_Node::String) {
            EXPECT_EQ(oReader->GetAttributes()(0).sName, "a b");
            EXPECT_EQ(oReader->GetAttributes()(0).sValue, "c.");
            EXPECT_EQ(oReader->Text(), "some text");
        }
        if (oReader->GetType() == Data_Node::Link) {
            EXPECT_EQ(oReader->Text(), "tree[0]/x[1]");
        }
        sAll += std::string(oReader.GetPath().View()) + ' ';
    }
    EXPECT_EQ(sAll,
              "/ /binary[0] /char[0] /date[0] /double[0] /empty[0] /float[0] /int[0] /link[0] "
              "/long[0] /quad[0] "
              "/string[0] /tree[0] /yes[0] ");
    EXPECT_EQ(oIn.Remaining(), 6u);
    EXPECT_EQ(oReader.GetReport().m_uBytesLeft, 6u);
}

TEST(Reader, SubtreesThatAPathSelects) {
    const Pair CASES[] = {{"/order", "10 11 12 "},
                          {"order[1]", "11 "},
                          {"/order[@state=\"open\"]", "10 12 "},
                          {"/*", "10 11 12 - "},
                          {"/order/id", "- - - "},
                          {"/order[2]/*[@a=\"b\"]", ""},
                          {"/order[3]", ""},
                          {"/", "- "},
                          {"//order[2]", "12 "},
                          {"//*[@state=\"open\"]", "10 12 "},
                          {"/./order[0]/.", "10 "}};
    for (const auto& [sPath, sExpected] : CASES) {
        Drop_Stream oIn(g_sOrders);
        std::string sIds;
        for (const Data& oOrder : Records(oIn, sPath)) {
            const Data oId = oOrder.GetNthSucc("id", 0);
            sIds += (oId.IsNode() ? std::to_string(oId.GetValInt()) : "-") + " ";
        }
        EXPECT_EQ(sIds, sExpected) << sPath;
    }
    Drop_Stream oIn(g_sOrders);
    for (const char* sPath : {"/order/..", "/*[1]", "//.", "/order//./id"}) {
        EXPECT_EQ(Failing([&] { Records(oIn, sPath); }),
                  "path \"" + std::string(sPath) + "\" needs the whole tree");
        oIn = Drop_Stream(g_sOrders);
    }
}

TEST(Reader, LinksWithinASubtreeAndOutOfIt) {
    Drop_Stream oIn(g_sOrders);
    Records oRecords(oIn, "/order");
    EXPECT_TRUE(oRecords.Next() && oRecords.Next());
    const Data oMe = oRecords.GetData().GetNthSucc("me", 0);
    EXPECT_EQ(oMe.GetValLink(), oRecords.GetData().GetNthSucc("id", 0));
    EXPECT_TRUE(oRecords.GetReader().GetOuterLinks().empty());
    EXPECT_TRUE(oRecords.Next());
    const auto& aoOuter = oRecords.GetReader().GetOuterLinks();
    ASSERT_EQ(aoOuter.size(), 1u);
    EXPECT_EQ(aoOuter[0].uId, oRecords.GetData().GetNthSucc("other", 0).GetId());
    EXPECT_EQ(aoOuter[0].oTarget.View(), "order[0]");
    // It is a document of its own.
    EXPECT_EQ(Load(Save(oRecords.GetData())), Show(oRecords.GetData()));
}

TEST(Reader, TreesThatAreKept) {
    const std::string_view sDocument = "<o><a n=\"1\"><a n=\"2\"/></a><a n=\"3\"/><a n=\"4\"/></o>";
    for (const std::string_view sPath : {"/a", "//a"}) {
        File_Buf oIn(sDocument.data(), sDocument.size());
        Records oRecords(oIn, sPath);
        std::vector<Data> aoKept;
        while (oRecords.Next()) {
            aoKept.push_back(oRecords.Release());
            // The ones that are still to come do not see it.
            if (aoKept.back().GetNodes() > 1) aoKept.back().RemoveSuccs();
        }
        std::string sNumbers;
        for (const Data& o : aoKept) sNumbers += o.GetAttVal("n");
        EXPECT_EQ(sNumbers, sPath == "/a" ? "134" : "1234");
    }
}

// Names with escapes are remembered for the tree that they are taken into, and no other.
TEST(Reader, TreesOfWhichNamesChange) {
    std::string sRecords;
    for (u2_t uNth = 0; uNth < 5; ++uNth) {
        sRecords += Open("o[" + std::to_string(uNth) + "]", 2) +
                    Leaf(uNth % 3 == 0 ? "a\b46;b[0]" : "c\b46;d[0]", 1, I32(1)) +
                    Leaf("z[0]", 1, I32(2));
    }
    const std::string sDocument = Document(5, sRecords);
    File_Buf oIn(sDocument.data(), sDocument.size());
    Data_Reader oReader(oIn);
    Data oOne, oOther;
    std::string sNames;
    for (u2_t uNth = 0; oReader.Next();) {
        if (oReader->GetDepth() == 0) continue;
        Data& oTree = uNth % 2 != 0 ? oOther : oOne;
        if (uNth == 4) oTree.Clear();
        oReader.Take(oTree);
        sNames += oTree.GetNthSucc(0).GetName() + " "s;
        oTree.AddInt("name " + std::to_string(uNth++), 1);
        oTree.GetNthSucc(0).Remove();
        oTree.Shrink();  // and all keys are others
    }
    EXPECT_EQ(sNames, "a.b c.d c.d a.b c.d ");
}

// What a document is wrapped in, and how it is coded.
TEST(Reader, EveryFormAndWrapping) {
    const Scratch_Dir oDir;
    const auto oNames = [](Data_Reader&& oReader) {
        std::string s;
        while (oReader.Next()) s += std::string(oReader->GetName()) + ' ';
        return s + std::to_string(oReader.GetReport().m_uBytesLeft);
    };
    const std::string sDGraph = Document(2, Open("a[0]", 0) + Text("b[0]", "x"));
    const std::string sXml = "<Root><a/><b>x</b></Root>\n";
    for (const std::string& sPlain : {sDGraph, sXml}) {
        const std::string sLeft = sPlain == sXml ? "1" : "0";
        for (const std::string& s : {sPlain, Compressed(sPlain), Zipped({sPlain})}) {
            ToDisk("f", s);
            EXPECT_EQ(oNames(Data_Reader("f")), "Root a b " + sLeft);
            File_Buf oBuf(s.data(), s.size());
            EXPECT_EQ(oNames(Data_Reader(oBuf)), "Root a b " + sLeft);
            Drop_Stream oStream(s);
            const std::string sFailure = Failing([&] { oNames(Data_Reader(oStream)); });
            EXPECT_EQ(sFailure, !s.starts_with("PK") ? ""
                                                     : "a zip archive is read from a file or from "
                                                       "memory only");
            // Cut short, which shows at the end of what is compressed.
            if (s == sPlain) continue;
            File_Buf oCut(s.data(), s.size() - 3);
            EXPECT_NE(Failing([&] { oNames(Data_Reader(oCut)); }), "");
        }
    }
    std::string sWide = "\xFF\xFE";
    for (const char c : sXml) (sWide += c) += '\0';
    Drop_Stream oWide(sWide);
    EXPECT_EQ(oNames(Data_Reader(oWide)), "Root a b 2");
    const std::string sDump = DumpOf(LoadTree(sDGraph));
    File_Buf oDump(sDump.data(), sDump.size());
    EXPECT_EQ(Failing([&] { Data_Reader oReader(oDump); }),
              "a native dump cannot be read record by record");
    EXPECT_TRUE(Has(Failing([] { Data_Reader("gone"); }), "could not open file"));
}

// Places are those in the stream, of which the one that was asked for last is known: a document of
// many records would else be counted through for each of them.
TEST(Reader, PlacesInOtherCodings) {
    constexpr int COUNT = 60000;
    const std::string sRecord = "<a>\xE9</a>";
    const std::string sLatin = "<?xml version='1.0' encoding='ISO-8859-1'?><r>";
    std::string sWide = "\xFF\xFE";
    const auto oWiden = [&](const std::string& s) {
        for (const char c : s) (sWide += c) += '\0';
    };
    oWiden("<r>" + Repeat(sRecord, COUNT) + "</r>");
    const auto oExpectPlaces = [&](const std::string& sDocument, u3_t uFirst, u3_t uEach) {
        File_Buf oIn(sDocument.data(), sDocument.size());
        Data_Reader oReader(oIn);
        ASSERT_TRUE(oReader.Next());
        u3_t uAt = uFirst;
        for (; oReader.Next(); uAt += uEach) {
            ASSERT_EQ(oReader->GetOffset(), uAt);
            ASSERT_EQ(oReader->Text(), "\xC3\xA9");
            if (uAt % 1000 != 0) continue;
            ASSERT_EQ(oReader.GetReport().m_uOffset, uAt + uEach);
        }
        EXPECT_EQ(uAt, uFirst + COUNT * uEach);
        EXPECT_EQ(oReader.GetReport().m_uOffset, sDocument.size());
    };
    oExpectPlaces(sLatin + Repeat(sRecord, COUNT) + "</r>", sLatin.size(), sRecord.size());
    oExpectPlaces(sWide, 2 + 3 * 2, 2 * sRecord.size());
}

// Depth takes 16 bytes a level, width and length nothing; who has seen enough may leave.
TEST(Reader, DeepDocuments) {
    constexpr int DEPTH = 1000000;
    const std::string sDGraph = Header() + Repeat(Open("a[0]", 1), DEPTH - 1) + Open("a[0]", 0);
    const std::string sXml = Repeat("<a>", DEPTH) + Repeat("</a>", DEPTH);
    for (const std::string& s : {sDGraph, sXml}) {
        Drop_Stream oIn(s, 1000);
        const Mem_Probe oProbe;
        Data_Reader oReader(oIn);
        int iDepth = 0;
        while (oReader.Next()) iDepth = std::max(iDepth, static_cast<int>(oReader->GetDepth()));
        EXPECT_EQ(iDepth, DEPTH - 1);
        // An array of so many levels has room for twice as many.
        EXPECT_LT(Mem_Probe::Peak(), 33u * DEPTH + 1000000);
    }
    for (const std::string& s : {sDGraph, sXml}) {
        Drop_Stream oIn(s, 1000);
        for (const Data& o : Records(oIn, "/a/a")) {
            EXPECT_EQ(o.GetNodes(), static_cast<u2_t>(DEPTH - 2));
            break;
        }
    }
}

TEST(Reader, MemoryDoesNotGrowWithTheDocument) {
    std::string sRecords;
    for (int i = 0; i < 100000; ++i) {
        sRecords +=
            Open("order[" + std::to_string(i) + "]", 1) + Text("t[0]", std::string(20, 'x'));
    }
    const std::string sDocument = Document(100000, sRecords);
    Drop_Stream oIn(sDocument);
    const Mem_Probe oProbe;
    u2_t uOrders = 0;
    for (const Data& oOrder : Records(oIn, "/order")) uOrders += oOrder.GetNodes() == 2;
    EXPECT_EQ(uOrders, 100000u);
    EXPECT_LT(Mem_Probe::Peak(), 400000u);
}

}  // namespace
}  // namespace vok
