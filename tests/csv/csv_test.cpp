// SPDX-License-Identifier: MIT
#include <fstream>
#include <random>

#include "tests/support.h"
#include "vok/csv/csv.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"

namespace vok {
namespace {

using namespace std::string_literals;

class Csv_Test : public testing::Test {
  protected:
    Msg_Capture m_oCapture;
    Scratch_Dir m_oDir;
};

// Memory has a name of its own, other streams here have none.
std::string Unnamed(std::string s) {
    constexpr std::string_view NAME = "*** File_Buf ***";
    for (std::size_t u = 0; (u = s.find(NAME)) != std::string::npos;) s.erase(u, NAME.size());
    return s;
}

// The tree of a text, or the error; from a stream of single bytes it must be the same, and so must
// the tree of a document that was copied with the types that the columns turned out to have.
std::string Loaded(const std::string& sText, const Csv_Options& o = {},
                   Csv_Report* pReport = nullptr, const Limits& oLimits = {}) {
    Data oTree;
    Csv_Report oReport;
    const std::string sRaised = Unnamed(Failing([&] {
        File_Buf oIn(sText.data(), sText.size());
        Csv_Load(oTree, oIn, o, oLimits, &oReport);
    }));
    EXPECT_EQ(Fault(oTree), "");
    Data oOther;
    Csv_Report oOtherReport;
    Drop_Stream oDrops(sText);
    EXPECT_EQ(Failing([&] { Csv_Load(oOther, oDrops, o, oLimits, &oOtherReport); }), sRaised);
    EXPECT_EQ(PlaceOf(oReport), PlaceOf(oOtherReport));
    EXPECT_TRUE(Data::Equal(oTree, oOther));
    if (pReport != nullptr) *pReport = oReport;
    if (!sRaised.empty()) return sRaised;

    Csv_Options oTold = o;
    File_Buf oFirst(sText.data(), sText.size());
    oTold.m_aoColumn = Csv_Columns(oFirst, o, oLimits);
    // A header with fewer columns than some row has no names for the others.
    if (o.m_bStrict) {
        File_Buf oSecond(sText.data(), sText.size());
        File_Buf oDocument("w");
        Data_Writer oWriter(oDocument);
        oWriter.Open("Root");
        Csv_Copy(oWriter, oSecond, oTold, oLimits);
        oWriter.Close();
        oWriter.Finish();
        File_Buf oBack(oDocument.Data(), oDocument.Size());
        Data oCopy;
        Dgraph_LoadDGraph(oCopy, oBack);
        EXPECT_EQ(Show(oCopy), Show(oTree)) << sText;
    }
    return Show(oTree);
}

TEST_F(Csv_Test, RowsBecomeNodes) {
    const Pair CASES[] = {
        {"", "Root"},
        {"id,name\n", "Root"},
        {"id,name\n1,Ada\n2,Bob\n", "Root(row(id:1 name:'Ada') row(id:2 name:'Bob'))"},
        {"name,id\r\nAda,1\r\nBob,2", "Root(row(id:1 name:'Ada') row(id:2 name:'Bob'))"},
        {"a;b\r1;x,y\r", "Root(row(a:1 b:'x,y'))"},
        {"a\tb\n1\tx,y\n", "Root(row(a:1 b:'x,y'))"},
        {"a|b\n1|2\n", "Root(row(a:1 b:2))"},
        {"a\n1\n2\n", "Root(row(a:1) row(a:2))"},
        {"a,b\n\"x\n\"\"y\"\",\",\"\"\n", "Root(row(a:'x\n\"y\",' b:''))"},
        {"\xEF\xBB\xBF\"a\",b\n1,2\n", "Root(row(a:1 b:2))"},
        {"\xFF\xFE"s + "a\0,\0b\0\n\0001\0,\0\xE4\0"s, "Root(row(a:1 b:'ä'))"},
        {"a,a,,b\n1,2,3,4\n", "Root(row(a:1 a:2 b:4 column3:3))"},
        {"a,b,a\n1,2,x\n", "Root(row(a:1 a:'x' b:2))"},
        {"a,b\n\n1,2\n\r\n\n", "Root(row(a:1 b:2))"},
        {"a,b\n1,\n,\n", "Root(row(a:1 b:'') row(a:'' b:''))"},
        {"\xE4,b\nx\xFFy,1\n", "Root(row(b:1 ä:'xÿy'))"},
        {"a\n\"\"\n", "Root(row(a:''))"},
        // No XML declaration, whatever it looks like.
        {"<?xml encoding='x',b\n1,2?>\n", "Root(row(<?xml encoding='x':1 b:'2?>'))"},
    };
    for (const Pair& o : CASES) EXPECT_EQ(Loaded(o.first), o.second) << o.first;
    EXPECT_TRUE(
        Has(Unnamed(m_oCapture.TakeConsole()), "empty line 2 in csv file \"\" was ignored"));
}

TEST_F(Csv_Test, Options) {
    struct Case {
        const char* sText;
        void (*pSet)(Csv_Options&);
        const char* sTree;
    };
    const Case CASES[] = {
        {"1,x\n2,y\n", [](Csv_Options& o) { o.m_bHeader = false; },
         "Root(row(column1:1 column2:'x') row(column1:2 column2:'y'))"},
        {"1,x\n",
         [](Csv_Options& o) {
             o.m_bHeader = false;
             o.m_aoColumn = {{"id", Data_Node::Double}, {"text", Data_Node::Empty}};
         },
         "Root(row(id:1d text:'x'))"},
        {"b,a\n1,2\n",
         [](Csv_Options& o) {
             o.m_aoColumn = {{"a", Data_Node::String}};
         },
         "Root(row(a:'2' b:1))"},
        {"a,b\n1,true\n", [](Csv_Options& o) { o.m_bGuess = false; }, "Root(row(a:'1' b:'true'))"},
        {"a,b\n1,\n,2\n", [](Csv_Options& o) { o.m_bLeaveOutEmpty = true; },
         "Root(row(a:1) row(b:2))"},
        {"a,b\n,\n", [](Csv_Options& o) { o.m_bLeaveOutEmpty = true; }, "Root(row)"},
        {"a,b\n1;2,3\n", [](Csv_Options& o) { o.m_cSeparator = ','; }, "Root(row(a:'1;2' b:3))"},
        {"a,b\n'1,2',\"x\"\"\n", [](Csv_Options& o) { o.m_cQuote = '\''; },
         "Root(row(a:'1,2' b:'\"x\"\"'))"},
        {"a,b\n\"1,2\"\n", [](Csv_Options& o) { o.m_cQuote = 0; }, "Root(row(a:'\"1' b:'2\"'))"},
        {"a\n1\n", [](Csv_Options& o) { o.m_oRow = "order"; }, "Root(order(a:1))"},
        {"a,b,c,d,e\n1,+7,0.1,x,2026-11-24\n",
         [](Csv_Options& o) {
             o.m_aoColumn = {{"a", Data_Node::Boolean},
                             {"b", Data_Node::Long},
                             {"c", Data_Node::Float},
                             {"d", Data_Node::Char},
                             {"e", Data_Node::Date}};
         },
         "Root(row(a:yes b:7u c:0.1000000014901161f d:'120 e:2026-11-24 00:00:00))"},
    };
    for (const Case& o : CASES) {
        Csv_Options oOptions;
        o.pSet(oOptions);
        EXPECT_EQ(Loaded(o.sText, oOptions), o.sTree) << o.sText;
    }
}

// One type for all fields of a column, and never one that would change what they say.
TEST_F(Csv_Test, TypesAreThoseThatAllFieldsHave) {
    const struct {
        const char* sFields;
        const char* sType;
    } CASES[] = {
        {"true FALSE True", "Boolean"},
        {"true 1", "String"},
        {"1 -2147483648 2147483647 0", "Integer"},
        {"1 2147483648 18446744073709551615", "Long"},
        {"-1 2147483648", "Double"},
        {"-1 9007199254740993", "String"},
        {"-2147483649", "Double"},
        {"18446744073709551616", "String"},
        {"1 2.5", "Double"},
        {"9007199254740993 2.5", "String"},
        {"1e5 -.5 5.", "Double"},
        {"-0", "Double"},
        {"1e999", "String"},
        {"007", "String"},
        {"+49", "String"},
        {"0x1F", "String"},
        {"nan", "String"},
        {"inf", "String"},
        {"1.2.3", "String"},
        {"0.12345678901234567", "Double"},
        {"0.123456789012345678", "String"},
        {"0.1000000000000000000", "Double"},
        {"2026-11-24 2026-11-24T18:35:56 2026-11-24T18:35:56Z", "Date"},
        {"2026-11-24 2026", "String"},
        {"2026-13-24", "String"},
        {"24.11.2026", "String"},
        {"", "String"},
    };
    for (const auto& o : CASES) {
        std::string sText = "a,b\n";
        std::string_view sLeft = o.sFields;
        while (!sLeft.empty()) {
            const std::size_t u = std::min(sLeft.find(' '), sLeft.size());
            // An empty field says nothing, wherever it is.
            sText += std::string(sLeft.substr(0, u)) + ",\n,\n";
            sLeft.remove_prefix(std::min(u + 1, sLeft.size()));
        }
        Csv_Report oReport;
        (void)Loaded(sText, {}, &oReport);
        ASSERT_EQ(oReport.m_aoColumn.size(), 2u);
        EXPECT_STREQ(Data_Node::TypeName(oReport.m_aoColumn[0].m_eType), o.sType) << o.sFields;
        EXPECT_EQ(oReport.m_aoColumn[1].m_eType, Data_Node::String);
    }
}

TEST_F(Csv_Test, FaultsTellLineAndColumn) {
    Csv_Options oNumber;
    oNumber.m_aoColumn = {{"b", Data_Node::Integer}};
    Csv_Options oUnknown;
    oUnknown.m_aoColumn = {{"c", Data_Node::Integer}};
    struct Case {
        std::string sText;
        const Csv_Options& oOptions;
        const char* sRaised;
        const char* sPlace;  // byte, line and column
        const char* sLenient;
    };
    const Csv_Options oPlain;
    const Case CASES[] = {
        {"a,b\n1,2\n3\n", oPlain,
         "error in csv file \"\": too few (1 insted of 2) columns in line 3: \n3", "8 3:1 ",
         "Root(row(a:1 b:2) row(a:3))"},
        {"a,b\n1,2\nä,4,5\n", oPlain,
         "error in csv file \"\": too many (3 insted of 2) columns in line 3: \nä,4,5", "13 3:5 ",
         "Root(row(a:'1' b:2) row(a:'ä' b:4 column3:5))"},
        {"a,b\n\n\"x\ny\",\"z\n1,2\n", oPlain,
         "error in csv file \"\": missing char '\"' in line 3: \n\"x\ny\",\"z\n1,2", "11 4:4 ",
         "Root(row(a:'x\ny' b:'z\n1,2\n'))"},
        {"a,b\n1,\"x\"y\n", oPlain,
         "error in csv file \"\": missing char ',' in line 2: \n1,\"x\"y", "6 2:3 ",
         "Root(row(a:1 b:'xy'))"},
        {"a,b\n1,x\n", oNumber, "no Integer in csv file \"\", line 2, column \"b\": \"x\"",
         "6 2:3 ", "Root(row(a:1 b:'x'))"},
        {"a,b\n1,99999999999\n", oNumber,
         "no Integer in csv file \"\", line 2, column \"b\": \"99999999999\"", "6 2:3 ",
         "Root(row(a:1 b:'99999999999'))"},
        {"a,b\n1,2\n", oUnknown, "missing column \"c\" in table \"\"", "0 1:1 ", nullptr},
        {"a,b\n1,x\0y\n"s, oPlain, "a NUL in csv file \"\", line 2, column 3", "6 2:3 ", nullptr},
        {"\0\0"s, oPlain, "a NUL in csv file \"\", line 1, column 1", "0 1:1 ", nullptr},
    };
    for (const Case& o : CASES) {
        Csv_Report oReport;
        EXPECT_EQ(Loaded(o.sText, o.oOptions, &oReport), o.sRaised);
        EXPECT_EQ(PlaceOf(oReport), o.sPlace) << o.sRaised;
        Csv_Options oLenient = o.oOptions;
        oLenient.m_bStrict = false;
        (void)m_oCapture.TakeConsole();
        EXPECT_EQ(Loaded(o.sText, oLenient, &oReport),
                  o.sLenient != nullptr ? o.sLenient : o.sRaised);
        if (o.sLenient == nullptr) continue;
        EXPECT_EQ(oReport.m_uFaults, 1u);
        EXPECT_TRUE(Has(Unnamed(m_oCapture.TakeConsole()), o.sRaised));
    }
    const std::pair<const char*, void (*)(Csv_Options&)> BAD[] = {
        {"m_cSeparator", [](Csv_Options& o) { o.m_cSeparator = '\n'; }},
        {"m_cQuote", [](Csv_Options& o) { o.m_cQuote = o.m_cSeparator = ','; }},
        {"m_eType",
         [](Csv_Options& o) {
             o.m_aoColumn = {{"a", Data_Node::Tree}};
         }},
    };
    for (const auto& [sField, pSet] : BAD) {
        Csv_Options o;
        pSet(o);
        EXPECT_EQ(Loaded("a\n1\n", o), "parameter \""s + sField + "\" has invalid value");
    }
}

TEST_F(Csv_Test, ReportsAreFewHoweverManyFaultsThereAre) {
    Csv_Report oReport;
    Csv_Options o;
    o.m_bStrict = false;
    const std::string sText = "a,b\n" + Repeat("\n1\n", 1000);
    File_Buf oIn(sText.data(), sText.size());
    Data oTree;
    Csv_Load(oTree, oIn, o, {}, &oReport);
    EXPECT_EQ(oReport.m_uEmptyLines, 1000u);
    EXPECT_EQ(oReport.m_uFaults, 1000u);
    EXPECT_EQ(oReport.m_uRows, 1000u);
    const std::string sTold = m_oCapture.TakeConsole();
    EXPECT_EQ(std::count(sTold.begin(), sTold.end(), '|'), 20);
}

TEST_F(Csv_Test, LimitsHold) {
    EXPECT_EQ(Loaded("a\n1\n2\n", {}, nullptr, AtMost(LIMIT_NODES, 5)), "Root(row(a:1) row(a:2))");
    EXPECT_EQ(Loaded("a\n1\n2\n3\n", {}, nullptr, AtMost(LIMIT_NODES, 5)),
              Exceeded(LIMIT_NODES, 5));
    EXPECT_EQ(Loaded(std::string(100, ','), {}, nullptr, AtMost(LIMIT_NODES, 5)),
              Exceeded(LIMIT_NODES, 5));
    EXPECT_EQ(Loaded("a\n\"" + std::string(1000, 'x') + "\"\n", {}, nullptr,
                     AtMost(LIMIT_TEXT_BYTES, 900)),
              Exceeded(LIMIT_TEXT_BYTES, 900));
    // What was inflated a thousandfold.
    Limits oInflated;
    oInflated.m_uInputBytes = 1;
    Csv_Options o;
    o.m_bHeader = false;
    const std::string sCommas = Repeat(std::string(1000, ',') + "\n", 3000);
    File_Buf oIn(sCommas.data(), sCommas.size());
    Data oTree;
    EXPECT_TRUE(Has(Failing([&] { Csv_Load(oTree, oIn, o, oInflated); }), "memory for a byte"));
}

// Many columns and many short rows cost what their bytes are, not their product.
TEST_F(Csv_Test, ShortRowsOfWideTablesAreCheap) {
    constexpr unsigned MANY = 100000;
    std::string sText;
    for (unsigned u = 0; u < MANY; ++u) sText += "," + std::to_string(u * 7919u % MANY);
    sText += "\n" + Repeat("1\n", MANY);
    Csv_Options o;
    o.m_bStrict = o.m_bTell = false;
    File_Buf oIn(sText.data(), sText.size());
    Data oTree;
    Csv_Load(oTree, oIn, o);
    EXPECT_EQ(oTree.GetNodes(), 1 + 2 * MANY);
    // Nor does writing them fill a disk: the last one makes all of their columns.
    Data oLast = oTree.CreateNewSucc("row");
    for (unsigned u = 0; u < MANY; ++u) oLast.CreateNewSucc(std::to_string(u).c_str());
    File_Buf oOut("w");
    EXPECT_TRUE(Has(Failing([&] { (void)Csv_Save(oTree, oOut); }), "memory for a byte"));
    EXPECT_EQ(oOut.Size(), 0u);
}

// ---- writing ----------------------------------------------------------------

std::string Saved(const Data& oTop, const Csv_Form& o = {}) {
    std::string s;
    const std::string sRaised =
        Failing([&] { s = Written([&](File_Buf& oOut) { (void)Csv_Save(oTop, oOut, o); }); });
    return sRaised.empty() ? s : sRaised;
}

TEST_F(Csv_Test, WritesRowsOfScalars) {
    Data oTree = NewTree();
    EXPECT_EQ(Saved(oTree), "");
    Data oRow = oTree.CreateNewSucc("r");
    oRow.CreateNewSucc("i").SetValInt(-7);
    oRow.CreateNewSucc("d").SetValDbl(2);
    oRow.CreateNewSucc("f").SetValDbl(0.1f, Data_Node::Float);
    oRow.CreateNewSucc("l").SetValLng(~u3_t{0});
    oRow.CreateNewSucc("b").SetValBool(true);
    oRow.CreateNewSucc("t").SetValDbl(1e9 + 0.25, Data_Node::Date);
    oRow.CreateNewSucc("c").SetValInt(0xE4, Data_Node::Char);
    oRow.CreateNewSucc("s").SetValStr("say \"x, y\"\nz");
    oRow.CreateNewSucc("s").SetValStr(" second ");
    oRow = oTree.CreateNewSucc("r");
    oRow.CreateNewSucc("d").SetValDbl(1e300);
    oRow.CreateNewSucc("t").SetValDbl(86400, Data_Node::Date);
    oRow.CreateNewSucc("e");
    oTree.CreateNewSucc("r");
    EXPECT_EQ(Saved(oTree),
              "b,c,d,e,f,i,l,s,s,t\n"
              "true,ä,2.0,,0.1,-7,18446744073709551615,\"say \"\"x, y\"\"\nz\", second ,"
              "2001-09-09T01:46:40.25\n"
              ",,1e+300,,,,,,,1970-01-02\n,,,,,,,,,\n");
    Csv_Form o;
    o.m_cSeparator = ';';
    o.m_bHeader = false;
    o.m_bCrLf = true;
    o.m_bStrict = false;
    o.m_aoColumn = {{"i", {}}, {"none", {}}, {"b", {}}};
    EXPECT_EQ(Saved(oTree, o), "-7;;true\r\n;;\r\n;;\r\n");
    // What was told comes back as it was.
    Csv_Options oTold;
    oTold.m_oRow = "r";
    oTold.m_bLeaveOutEmpty = true;
    oTold.m_aoColumn = {{"f", Data_Node::Float}, {"c", Data_Node::Char}, {"s", Data_Node::String}};
    oTree.GetNthSucc("r", 1).GetNthSucc("e", 0).Remove();
    oTree.SetToRoot();
    EXPECT_EQ(Loaded(Saved(oTree), oTold), Show(oTree));
    // A line with nothing in it would be no row.
    Data oOne = NewTree();
    oOne.CreateNewSucc("row").CreateNewSucc("a").SetValStr("");
    EXPECT_EQ(Saved(oOne), "a\n\"\"\n");
    EXPECT_EQ(Loaded(Saved(oOne)), Show(oOne));
}

TEST_F(Csv_Test, WhatDoesNotFitIsRefusedOrCounted) {
    const std::pair<const char*, void (*)(Data)> CASES[] = {
        {"/scalar[0]", [](Data o) { o.CreateNewSucc("scalar").SetValInt(1); }},
        {"/other[0]", [](Data o) { o.CreateNewSucc("other").CreateNewSucc("a").SetValInt(1); }},
        {"/a[0]/tree[0]",
         [](Data o) { o.GetNthSucc("a", 0).CreateNewSucc("tree").CreateNewSucc("x"); }},
        {"/a[0]/bin[0]",
         [](Data o) { o.GetNthSucc("a", 0).CreateNewSucc("bin").SetValBin("x", 1); }},
        {"/a[0]/link[0]", [](Data o) { o.GetNthSucc("a", 0).CreateNewSucc("link").SetValLink(o); }},
        {"/a[0]", [](Data o) { o.GetNthSucc("a", 0).SetAttVal("k", "v"); }},
        {"/a[0]/x[0]", [](Data o) { o.GetNthSucc("a", 0).GetNthSucc("x", 0).SetAttVal("k", "v"); }},
    };
    for (const auto& [sPath, pAdd] : CASES) {
        Data oTree = NewTree();
        oTree.CreateNewSucc("a").CreateNewSucc("x").SetValInt(1);
        pAdd(oTree);
        EXPECT_EQ(Saved(oTree), "node \""s + sPath + "\" does not fit into a csv file");
        File_Buf oOut("w");
        Csv_Form o;
        o.m_bStrict = false;
        const Csv_Saved oSaved = Csv_Save(oTree, oOut, o);
        EXPECT_EQ(Content(oOut), "x\n1\n");
        EXPECT_EQ(oSaved.m_uLeftOut, 1u) << sPath;
        EXPECT_STREQ(oSaved.m_oFirst.CStr(), sPath);
        EXPECT_EQ(oSaved.m_uRows, 1u);
    }
    Data oTree = NewTree();
    oTree.CreateNewSucc("a");
    EXPECT_EQ(Saved(oTree), "node \"/a[0]\" does not fit into a csv file");
    oTree = NewTree();
    oTree.CreateNewSucc("a").CreateNewSucc("x").SetValStr("1,2");
    Csv_Form o;
    o.m_aoColumn = {{"y", {}}};
    EXPECT_EQ(Saved(oTree, o), "node \"/a[0]/x[0]\" does not fit into a csv file");
    o = {};
    o.m_cQuote = 0;
    EXPECT_EQ(Saved(oTree, o), "node \"/a[0]/x[0]\" does not fit into a csv file");
    EXPECT_EQ(Saved(Data()), "node is empty");
}

// ---- failures, and another program ------------------------------------------

TEST_F(Csv_Test, RefusedMemoryAndFailingStreams) {
    const std::string sText = "id,name,price\n" + Repeat("1,\"a\"\"b\",2.5\n", 20000);
    for (unsigned uNth = 1;; ++uNth) {
        Mem_Probe oProbe;
        Data oTree;
        File_Buf oIn(sText.data(), sText.size());
        if (!Mem_Probe::HasRefused(uNth, [&] { Csv_Load(oTree, oIn); })) break;
        EXPECT_EQ(Fault(oTree), "");
        ASSERT_LT(uNth, 1000u);
    }
    Data oTree;
    File_Buf oIn(sText.data(), sText.size());
    Csv_Load(oTree, oIn);
    for (const unsigned uNth : {1u, 2u, 3u}) {
        Drop_Stream oDrops(sText, 100000);
        oDrops.m_uFailIn = uNth;
        Data oOther;
        EXPECT_EQ(Failing([&] { Csv_Load(oOther, oDrops); }), "unexpected end of file in \"\"");
        Drop_Stream oOut;
        oOut.m_uFailIn = uNth;
        EXPECT_TRUE(Has(Failing([&] { (void)Csv_Save(oTree, oOut); }), "file write error"));
    }
}

// Random tables, written by python and by us, read by both.
TEST_F(Csv_Test, AgreesWithPython) {
    if (std::system("command -v python3 >/dev/null 2>&1") != 0) GTEST_SKIP() << "no python3";
    constexpr int TABLES = 60;
    // Rows are written down as the lengths of their fields and these.
    std::ofstream("common.py") << R"(
def write(path, rows):
    with open(path, 'w', newline='', encoding='utf-8') as f:
        for row in rows: f.write(''.join('%d:%s' % (len(s.encode()), s) for s in row) + '\n')
)";
    std::ofstream("tables.py") << R"(
import csv, random, sys
from common import write
pieces = ['a', 'ä', '日', ' ', ',', ';', '\t', '"', '""', '\n', '\r', '\r\n', '1', '|']
for i in range(int(sys.argv[1])):
    r = random.Random(i)
    n = r.randint(2, 5)
    rows = [[''.join(r.choice(pieces) for _ in range(r.randint(0, 6))) for _ in range(n)]
            for _ in range(r.randint(0, 30))]
    sep = r.choice(',;\t|')
    # What it does not quote otherwise is a line break to everybody else.
    form = r.choice([{'lineterminator': '\r\n'}, {'lineterminator': '\n', 'quoting': csv.QUOTE_ALL},
                     {'lineterminator': '\r', 'quoting': csv.QUOTE_ALL}])
    with open(f'in{i}', 'w', newline='', encoding='utf-8') as f:
        w = csv.writer(f, delimiter=sep, **form)
        w.writerow(['c%d' % c for c in range(n)])
        w.writerows(rows)
    open(f'sep{i}', 'w').write(sep)
    write(f'rows{i}', rows)
)";
    std::ofstream("back.py") << R"(
import csv, sys
from common import write
for i in range(int(sys.argv[1])):
    with open(f'out{i}', newline='', encoding='utf-8') as f:
        write(f'back{i}', list(csv.reader(f, delimiter=open(f'sep{i}').read()))[1:])
)";
    const std::string sTables = std::to_string(TABLES);
    ASSERT_EQ(std::system(("python3 tables.py " + sTables).c_str()), 0);
    for (int i = 0; i < TABLES; ++i) {
        const std::string sNth = std::to_string(i);
        Csv_Options o;
        o.m_cSeparator = OnDisk("sep" + sNth)[0];
        o.m_bGuess = false;
        File oIn(("in" + sNth).c_str());
        Data oTree;
        Csv_Load(oTree, oIn, o);
        std::string sRows;
        for (Data_SuccIt oRow = oTree.GetSuccIt(); oRow.SkipZombies(); oRow.Advance()) {
            for (Data_SuccIt oField = oRow.GetData().GetSuccIt(); oField.SkipZombies();
                 oField.Advance()) {
                const std::string s = oField.GetData().GetValStr();
                sRows += std::to_string(s.size()) + ":" + s;
            }
            sRows += '\n';
        }
        EXPECT_EQ(sRows, OnDisk("rows" + sNth)) << i;
        Csv_Form oForm;
        oForm.m_cSeparator = o.m_cSeparator;
        oForm.m_bCrLf = i % 2 == 0;
        File oOut(("out" + sNth).c_str(), "w");
        (void)Csv_Save(oTree, oOut, oForm);
        oOut.Close();
    }
    ASSERT_EQ(std::system(("python3 back.py " + sTables).c_str()), 0);
    for (int i = 0; i < TABLES; ++i) {
        const std::string sNth = std::to_string(i);
        EXPECT_EQ(OnDisk("back" + sNth), OnDisk("rows" + sNth)) << i;
    }
}

}  // namespace
}  // namespace vok
