// SPDX-License-Identifier: MIT
// From form to form, and what is lost on the way.
#include <functional>
#include <limits>

#include "tests/tools/program_support.h"

namespace vok {
namespace {

TEST_F(Program, EveryFormToEveryForm) {
    for (const char* sName : {"icon.svg", "fonts.conf"}) {
        ASSERT_EQ(Run("convert " + Sample(sName) + " a.xml").iExit, 0) << OnDisk("err");
        const std::string sText = OnDisk("a.xml");
        for (const char* sTo :
             {"b.dgraph", "b.dump", "b.xml", "b --to dgraph --compress", "b.zip --to xml --zip",
              "b.dump.zip --to dump --zip", "b.json", "b.json.gz --compact", "b.dump --attachable",
              "b.json.zip --to json --zip"}) {
            const std::string sFile = std::string(sTo).substr(0, std::string(sTo).find(' '));
            EXPECT_EQ(Run("convert a.xml "s + sTo).iExit, 0) << sTo << OnDisk("err");
            EXPECT_EQ(Run("convert "s + sFile + " c.xml").iExit, 0) << sTo << OnDisk("err");
            EXPECT_EQ(OnDisk("c.xml"), sText) << sTo;
            EXPECT_EQ(Run("diff a.xml " + sFile).iExit, 0) << sTo << OnDisk("out");
        }
    }
    EXPECT_TRUE(Has(OnDisk("a.xml"), "für die Oberfläche"));
    // Pipes, and versions.
    Outcome o = Run("convert - - --to dgraph --dgraph-version 1.2.7", g_sTree);
    EXPECT_EQ(o.sOut.substr(0, 12), "DGraphBin\1\2\7");
    o = Run("convert - - --to xml", o.sOut);
    EXPECT_EQ(o.iExit, 0);
    EXPECT_TRUE(Has(o.sOut, "<n dt:dt=\"r8\">0.1</n>"));
}

// Each to a file of its name, in the order that they were named in however many are done at a time.
TEST_F(Program, ManyFilesAtOnce) {
    ToDisk("a.xml", "<a><r><x>1</x></r></a>");
    ToDisk("b.conf", "<b><!-- --></b>");
    ToDisk("bad.xml", "<a>");
    ToDisk("rows.tsv", "u\tt\n1\t2\n");
    ASSERT_EQ(Run("convert a.xml c.dgraph.gz").iExit, 0);
    const std::string sErr =
        "vok: b.conf: not kept: 1 comment\n"
        "vok: bad.xml: byte 3, line 1, column 4, at /: missing char '<' in XML stream\n";
    for (const char* sAtOnce : {"1", "4", "256"}) {
        const Outcome o =
            Run("convert a.xml b.conf bad.xml c.dgraph.gz rows.tsv --into new/out --to json -j "s +
                sAtOnce);
        EXPECT_EQ(o.iExit, 1);
        EXPECT_EQ(LinesOnDisk("err"), sErr);
        EXPECT_EQ(OnDisk("new/out/c.json"), OnDisk("new/out/a.json"));
        EXPECT_EQ(
            HashesIn(Run("hash -j 3 a.xml new/out/a.json rows.tsv new/out/rows.json").sOut).size(),
            4u);
        EXPECT_EQ(HashOf("new/out/b.conf.json"), HashOf("b.conf"));
        EXPECT_FALSE(fs::exists("new/out/bad.json"));
        EXPECT_EQ(LeftBehind(), "");
        fs::remove_all("new");
    }
    // The columns of one csv file are not those of another document.
    EXPECT_EQ(Run("convert rows.tsv a.xml --into made --to csv").iExit, 0);
    EXPECT_EQ(OnDisk("made/rows.csv") + OnDisk("made/a.csv"), "u,t\n1,2\nx\n1\n");
    EXPECT_EQ(Run("convert a.xml --into made --to xml --zip").iExit, 0);
    EXPECT_EQ(HashOf("made/a.xml.zip"), HashOf("a.xml"));
    EXPECT_EQ(Run("convert a.xml c.dgraph.gz --into made --to dump --attachable").iExit, 0);
    EXPECT_EQ(Run("convert a.xml --into made --to xml --records //x").iExit, 0);
    EXPECT_TRUE(fs::exists("made/a/00000001.xml") && fs::exists("made/c.dump"));
    const struct {
        const char* sArguments;
        const char* sErr;
    } CASES[] = {
        {"a.xml x.xml -j 2", "--jobs requires --into\nRun with --help for more information.\n"},
        {"a.xml rows.tsv --into made --to xml --compact", "vok: --compact is for JSON\n"},
        {"a.xml", "OUT is required\nRun with --help for more information.\n"},
        {"a.xml x.xml y.xml",
         "The following argument was not expected: y.xml\nRun with --help for more information.\n"},
        {"a.xml --into made", "vok: --into needs --to: the form of the files\n"},
        {"- a.xml --into made --to xml", "vok: --into needs files, not \"-\"\n"},
        {"b.conf a.xml --into . --to xml", "vok: \"./a.xml\" is read, and would be replaced\n"},
        {"a.xml a.json --into made --to dump",
         "vok: \"a.xml\" and \"a.json\" would both become \"made/a.dump\"\n"},
        {"a.xml b.dgraph --attachable", "vok: --attachable is for dumps that are not compressed\n"},
        {"a.xml --into a.xml/out --to json", "vok: could not create directory \"a.xml"},
    };
    for (const auto& oCase : CASES) {
        const Outcome o = Run("convert "s + oCase.sArguments);
        EXPECT_EQ(o.iExit, 2) << oCase.sArguments;
        EXPECT_EQ(LinesOnDisk("err").substr(0, std::strlen(oCase.sErr)), oCase.sErr);
    }
}

// By their endings or by --from, for every command; faults with their place, and nothing written.
TEST_F(Program, CsvFilesAreRead) {
    ToDisk("people.csv", "name;born\nAda;1815-12-10\n\"Grace \"\"A\"\"\";1906-12-09\n");
    ToDisk("DATA.TSV", "a;b\tc\n1\t2\n");
    ToDisk("plain", "1,2\n3,4\n");
    ToDisk("bad.csv", "a,b\n1,2\n3\n");
    const struct {
        const char* sArguments;
        int iExit;
        const char* sOut;
        const char* sErr;
    } CASES[] = {
        {"get people.csv /row/name", 0, "Ada\nGrace \"A\"\n", ""},
        {"get people.csv /row[0]/born", 0, "1815-12-10T00:00:00Z\n", ""},
        {"convert plain - --to json --compact --from csv --separator \";\"", 0,
         "{\"row\":{\"1,2\":\"3,4\"}}\n", ""},
        {"get DATA.TSV '/row/\"a;b\"'", 0, "1\n", ""},
        {"convert plain - --to json --compact --from csv --no-header", 0,
         "{\"row\":[{\"column1\":1,\"column2\":2},{\"column1\":3,\"column2\":4}]}\n", ""},
        {"convert bad.csv y.xml", 2, "",
         "vok: bad.csv: byte 8, line 3, column 1: error in csv file \"bad.csv\": too few (1 insted "
         "of "
         "2) columns in line 3: \\n3\n"},
        {"check bad.csv", 1,
         "bad.csv: byte 8, line 3, column 1: error in csv file \"bad.csv\": too few (1 insted of "
         "2) "
         "columns in line 3: \\n3\n",
         ""},
        {"convert people.csv y.xml --separator ab", 2, "",
         "vok: \"ab\" is no separator: it is one character of ASCII, or tab\n"},
        {"set people.csv /row/name x -i", 2, "",
         "vok: a csv file is not written: name another form with --to, or a file of one\n"},
    };
    for (const auto& o : Affordable(CASES, 3)) {
        SCOPED_TRACE(o.sArguments);
        const Outcome oMade = Run(o.sArguments);
        EXPECT_EQ(oMade.iExit, o.iExit);
        EXPECT_EQ(LinesOnDisk("out"), o.sOut);
        EXPECT_EQ(LinesOnDisk("err"), o.sErr);
    }
    EXPECT_FALSE(fs::exists("y.xml"));
    const Outcome oRagged = Run("convert bad.csv - --to json --compact --ragged");
    EXPECT_EQ(oRagged.sOut, "{\"row\":[{\"a\":1,\"b\":2},{\"a\":3}]}\n");
    EXPECT_EQ(LinesOnDisk("err"),
              "vok: \"bad.csv\" has 1 fault in its rows, which was passed over\n");
    // And written: columns stay in their order, and what is no row is told.
    ToDisk("in.csv", "b,a\n1,\"x,y\"\n2,\n");
    EXPECT_EQ(Run("convert in.csv out.tsv").iExit, 0);
    EXPECT_EQ(OnDisk("out.tsv"), "b\ta\n1\tx,y\n2\t\n");
    ToDisk("tree.xml", "<R><row><b>1</b><a>x;y</a></row><row k='v'><b>2</b><c><d/></c></row></R>");
    EXPECT_EQ(Run("convert tree.xml out.csv --separator \";\"").iExit, 0);
    EXPECT_EQ(OnDisk("out.csv"), "a;b\n\"x;y\";1\n;2\n");
    EXPECT_TRUE(Has(OnDisk("err"), "not kept: 2 nodes and attributes that do not fit into rows"));
    fs::remove("out.csv");
    EXPECT_EQ(Run("convert tree.xml out.csv --lossless").iExit, 2);
    EXPECT_FALSE(fs::exists("out.csv"));
    EXPECT_EQ(Run("convert tree.xml out.csv --records /row").iExit, 2);
    EXPECT_EQ(Run("convert - - --from csv --to json --compact", "a\ntrue\n").sOut,
              "{\"row\":{\"a\":true}}\n");
}

// What a form does not keep is told, and refused where nothing may be lost.
TEST_F(Program, LossesAreTold) {
    struct Case {
        std::string sIn;
        const char* sTo;
        const char* sLost;  // nullptr: nothing
    };
    const std::string sDt = "<R xmlns:dt='urn:schemas-microsoft-com:datatypes'>";
    const Case oCases[] = {
        {"<R><a/><b/></R>", "xml", nullptr},
        {"<R><b/><a/></R>", "xml", "1 element stands elsewhere: successors are ordered by name"},
        {"<R><a/>x<b/>y</R>", "xml", "2 texts beside elements"},
        {"<R><!-- c --><?p?><a/></R>", "xml", "1 comment"},
        {"<R><?p?><a/></R>", "xml", "1 processing instruction or document type"},
        {"<R>&x;</R>", "xml", "1 unknown reference, kept as text"},
        {"<R a=''/>", "dgraph", "1 empty attribute"},
        {"<R a=''/>", "dump", nullptr},
        {sDt + "<a dt:dt='r4'>0.1</a></R>", "dgraph", "1 real cut to 32 bits"},
        {sDt + "<a dt:dt='r4'>0.5</a></R>", "dgraph", nullptr},
        {sDt + "<a dt:dt='dateTime'>2026-11-24T18:35:56.5</a></R>", "xml",
         "1 fraction of a second"},
        {sDt + "<a dt:dt='char'>\xE2\x82\xAC</a></R>", "dgraph", "1 character beyond one byte"},
        {sDt + "<a dt:dt='i8'>1</a></R>", "dgraph --dgraph-version 1.2.0",
         "1 64-bit number, kept as text"},
        {"<R/>behind", "xml", "6 bytes behind the document"},
        {"<R/><!-- c --><?p?>\n", "xml", nullptr},
    };
    for (const Case& o : oCases) {
        SCOPED_TRACE(o.sIn);
        const std::string sLine = o.sLost == nullptr ? "" : "vok: -: not kept: "s + o.sLost + "\n";
        EXPECT_EQ(Run("convert - y --to "s + o.sTo, o.sIn).iExit, 0);
        const std::string sErr = LinesOnDisk("err");
        EXPECT_EQ(sErr.substr(0, sLine.size()), sLine);
        EXPECT_EQ(sErr.empty(), o.sLost == nullptr) << sErr;
        fs::remove("y");
        EXPECT_EQ(Run("convert - y --lossless --to "s + o.sTo, o.sIn).iExit,
                  o.sLost == nullptr ? 0 : 2);
        EXPECT_EQ(fs::exists("y"), o.sLost == nullptr);
    }
    const std::string sQuad = sDt + "<a dt:dt='quad'>1,2,3,4</a></R>";
    EXPECT_EQ(Run("convert - y --to dgraph --dgraph-version 1.2.0", sQuad).iExit, 2);
    EXPECT_TRUE(Has(LinesOnDisk("err"), "quadruples cannot be read back"));
    // Every prefix of a document is faulty, and so is one with something behind it.
    ASSERT_EQ(Run("convert - y.dgraph", g_sTree).iExit, 0);
    const std::string sWhole = OnDisk("y.dgraph");
    const std::size_t uStep = sys::IS_WINDOWS ? 47 : 7;
    for (std::size_t u = 1; u < sWhole.size(); u += uStep) {
        EXPECT_EQ(Run("check -", sWhole.substr(0, u)).iExit, 1) << u << OnDisk("out");
    }
    EXPECT_EQ(Run("check -", sWhole).iExit, 0);
    EXPECT_EQ(Run("check -", sWhole + '\0').iExit, 1);
    EXPECT_EQ(Run("check -", "<a/><b/>").iExit, 1);
    EXPECT_EQ(Run("check -", "<a/> <!-- c -->\n<?p?>").iExit, 0);
}

// Dates are compared with what would be read back.
TEST_F(Program, DatesThatChangeAreTold) {
    using Reals = std::numeric_limits<double>;
    const char* const FRACTION = "1 fraction of a second";
    const char* const OTHER = "1 date that becomes another";
    const struct {
        double dSeconds;
        const char* sXml;  // what is lost; nullptr: nothing
        const char* sDgraph;
        const char* sOldDgraph;  // besides being a text
    } CASES[] = {
        {0.0, nullptr, nullptr, nullptr},
        {-1.0, nullptr, nullptr, nullptr},
        {-62'200'000'000.0, nullptr, nullptr, nullptr},  // before the year 0
        {1'764'000'000.5, FRACTION, FRACTION, FRACTION},
        {-0.0, OTHER, OTHER, OTHER},
        {6.7e16, nullptr, OTHER, nullptr},        // days have fewer digits than seconds
        {0x1p40 * 86400, OTHER, nullptr, OTHER},  // behind the last year that is written
        {1e300, OTHER, nullptr, OTHER},
        {Reals::infinity(), nullptr, nullptr, OTHER},
        {Reals::quiet_NaN(), nullptr, nullptr, OTHER},
    };
    for (const auto& o : CASES) {
        Data oRoot = NewTree();
        oRoot.AddDbl("d", o.dSeconds, Data_Node::Date);
        ToDisk("in.dump", DumpOf(oRoot));
        for (const auto& [sTo, sLost] : {std::pair{"xml", o.sXml}, {"dgraph", o.sDgraph}}) {
            SCOPED_TRACE(std::to_string(o.dSeconds) + sTo);
            EXPECT_EQ(Run("convert in.dump y --lossless --to "s + sTo).iExit,
                      sLost != nullptr ? 2 : 0);
            EXPECT_TRUE(Has(LinesOnDisk("err"), sLost != nullptr ? sLost : ""));
        }
        EXPECT_EQ(Run("convert in.dump y --to dgraph --dgraph-version 1.0.0").iExit, 0);
        const std::string sLines = LinesOnDisk("err");
        EXPECT_TRUE(Has(sLines, "1 date, kept as text"));
        EXPECT_EQ(Has(sLines, OTHER), o.sOldDgraph == OTHER);
        EXPECT_EQ(Has(sLines, FRACTION), o.sOldDgraph == FRACTION);
    }
}

// Whatever --lossless lets pass is the same tree when it is read back, in every form.
TEST_F(Program, LosslessIsLossless) {
    std::vector<std::function<void(Data)>> oFills = {
        [](Data o) { o.CreateSucc("leaf").CreateSucc("x").Remove(); },
        [](Data o) { o.ClearVal(); },
        [](Data o) { o.SetValLink(o.GetRoot()); },
        [](Data o) { o.SetValLink(o.GetRoot().GetNthSucc("gone", 0)); },
        [](Data o) {
            o.SetValLink(o.GetRoot().GetNthSucc("gone", 0));
            o.GetValLink().Remove();
        },
        [](Data o) { o.SetAttVal("empty", ""); },
        [](Data o) { o.SetAttVal("dt:dt", "<\xE2\x82\xAC\t\n>"); },
        [](Data o) { o.SetValInt(-5); },
        [](Data o) { o.SetValBool(true); },
        [](Data o) { o.SetValLng(~u3_t{0}); },
        [](Data o) { o.SetValQuad(1, 2, 3, ~0u); },
        [](Data o) { o.SetValStr(""); },
        [](Data o) { o.SetValStr(" \r\n\1]]>"); },
        [](Data o) { o.SetValBin("", 0); },
        [](Data o) { o.SetValBin("\0\1", 2); },
        [](Data o) { o.CreateSucc("").SetValInt(1); },
    };
    for (const i2_t iCode : {0x20AC, 0xD800, -1, 0, 0x20}) {
        oFills.emplace_back([=](Data o) { o.SetValInt(iCode, Data_Node::Char); });
    }
    using Reals = std::numeric_limits<double>;
    const double INFINITE = Reals::infinity(), NOT_A_NUMBER = Reals::quiet_NaN();
    const std::pair<Data_Node::Type, std::vector<double>> REALS[] = {
        {Data_Node::Float, {0.1, 1e300, -0.0, -INFINITE, NOT_A_NUMBER}},
        {Data_Node::Double, {0.1, 1e300, -0.0, -INFINITE, NOT_A_NUMBER}},
        {Data_Node::Date,
         {0.25, -0.0, 1e10, -1e15, 6.7e16, 1e17 + 16, 1e300, INFINITE, NOT_A_NUMBER}},
    };
    for (const auto& [eType, oValues] : REALS) {
        for (const double d : oValues) {
            oFills.emplace_back([=, e = eType](Data o) { o.SetValDbl(d, e); });
        }
    }
    unsigned uNth = 0;
    for (const auto& oFill : Affordable(oFills, 6)) {
        Data oRoot = NewTree();
        oRoot.CreateNewSucc("gone");
        oFill(oRoot.CreateNewSucc("n"));
        ToDisk("in.dump", DumpOf(oRoot));
        for (const char* sTo : {"xml", "dump", "json", "dgraph", "dgraph --dgraph-version 1.2.0",
                                "dgraph --dgraph-version 1.0.0"}) {
            if (Run("convert in.dump out2 --lossless --to "s + sTo).iExit != 0) {
                EXPECT_NE(sTo, "dump"s) << "keeps everything";
                EXPECT_NE(sTo, "json"s) << "keeps everything";
                continue;
            }
            EXPECT_EQ(Run("diff in.dump out2").iExit, 0) << uNth << ' ' << sTo << OnDisk("out");
        }
        ++uNth;
    }
}

// JSON of anybody, wherever a file is read.
TEST_F(Program, Json) {
    const std::string sText = "\xEF\xBB\xBF \n{\"b\": [1, [2.5]],\n \"a\": {}}\n";
    const std::string sSame = "{\"a\":{},\"b\":[1,[2.5]]}\n";
    ToDisk("a.json", sText);
    EXPECT_EQ(Run("convert a.json - --to json --compact").sOut, sSame);
    for (const char* s : {"b.xml", "b.dgraph.gz", "b.zip --zip --to json", "b.dump"}) {
        const std::string sFile = std::string(s).substr(0, std::string(s).find(' '));
        EXPECT_EQ(Run("convert a.json --lossless "s + s).iExit, 0) << s << OnDisk("err");
        EXPECT_EQ(Run("convert "s + sFile + " - --to json --compact").sOut, sSame) << s;
        EXPECT_EQ(Run("diff a.json " + sFile).iExit, 0) << s;
    }
    EXPECT_EQ(Run("get - /b[0]", sText).sOut, "1\n");
    EXPECT_TRUE(Has(Run("show -", "[true]").sOut, "Root @#json=\"list\"\n"));
    EXPECT_TRUE(Has(Run("info b.zip").sOut, "format      json in zip\n"));
    EXPECT_EQ(Run("check - a.json", "{\"a\":\n{\"b\":}}").sOut,
              "-: byte 11, line 2, column 6, at /a[0]: invalid JSON: a value expected\n"
              "a.json: good (json, 5 nodes)\n");
    EXPECT_EQ(Run("check -", "[] x").sOut, "-: 1 byte behind the document\n");
    // A text or a number is only taken for a document where it is called one.
    EXPECT_EQ(Run("check -", "5").iExit, 1);
    EXPECT_EQ(Run("convert - - --from json --to json", "5").sOut, "5\n");
    EXPECT_EQ(Run("convert a.json - --from xml --to json").iExit, 2);
    EXPECT_EQ(Run("convert a.json b.xml --compact").iExit, 2);
    // Digits that no number has.
    EXPECT_EQ(Run("convert - - --to json --compact", "[0.1,123456789012345678901]").sOut,
              "[0.1,123456789012345683968.0]\n");
    EXPECT_EQ(LinesOnDisk("err"), "vok: -: not kept: 1 number rounded to 64 bits\n");
    EXPECT_EQ(Run("convert - c.xml --lossless", "[123456789012345678901]").iExit, 2);
    // A file for each record.
    EXPECT_EQ(Run("convert a.json d --to json --compact --records /b").iExit, 0) << OnDisk("err");
    EXPECT_EQ(OnDisk("d/00000001.json") + OnDisk("d/00000002.json"),
              "{\"#name\":\"b\",\"#value\":1}\n"
              "{\"#attributes\":{\"#json\":\"list\"},\"#name\":\"b\",\"\":2.5}\n");
    EXPECT_EQ(Run("convert b.xml e --to json --records /b").iExit, 0) << OnDisk("err");
    EXPECT_EQ(Run("diff d/00000002.json e/00000002.json").iExit, 0);
}

// Whatever a document takes to be read, record by record or as a whole, it says the same; a dump
// is read as a whole.
TEST_F(Program, RecordsSayWhatTreesSay) {
    const Texts aoDocument = {
        std::string(g_sTree).replace(g_sTree.find(".5<"), 2, ""),  // no form but a dump keeps it
        "<R><a k='1'>x</a><a k='2'/><b><c>1</c><c>2</c><b><c>3</c></b></b><d "
        "dt:dt='quad'>1,2,3,4</d></R>",
        "<R><b><z/><y/></b><a>1</a><b>2</b><a k='v'>3</a></R>",  // not in the order of names
        "<R><a CDNodeID='ID1' k='1' l='2' k='3'/><b CDNodeIDREF='ID1'/><c "
        "CDNodeIDREF='ID2'>t</c></R>",
        "<only/>",
    };
    for (const std::string& s : Affordable(aoDocument, 1)) {
        SCOPED_TRACE(s);
        ToDisk("a.xml", s);
        ASSERT_EQ(Run("convert a.xml a.dgraph").iExit, 0) << OnDisk("err");
        for (const std::string sForm : {"a.xml", "a.dgraph"}) {
            ASSERT_EQ(Run("convert " + sForm + " a.dump").iExit, 0) << OnDisk("err");
            const auto oSame = [&](const std::string& sBefore, const std::string& sBehind,
                                   const std::string& sFile) {
                const Outcome oWhole = Run(sBefore + " a.dump " + sBehind);
                const Outcome o = Run(sBefore + " " + sFile + " " + sBehind);
                EXPECT_EQ(o.sOut, oWhole.sOut) << sBefore << " " << sFile << sBehind << o.sErr;
                EXPECT_EQ(o.iExit, oWhole.iExit) << sBefore << " " << sFile << sBehind;
            };
            const char* const PATHS[] = {"/",       "/list",        "/list/n[1]", "//n",
                                         "/*",      "/a",           "/a[1]",      "//c",
                                         "/b/c[1]", "/a[@k=\"v\"]", "/b/..",      "/*[1]",
                                         "/to",     "/nothing",     "/b//c[0]",   "//b"};
            for (const char* const sPath : Affordable(PATHS, 5)) {
                const std::string sQuoted = "'" + std::string(sPath) + "'";
                oSame("get", sQuoted, sForm);
                oSame("show --plain", sQuoted, sForm);
                oSame("show --plain --depth 1", sQuoted, sForm);
                oSame("convert --to jsonl --records " + sQuoted, "-", sForm);
            }
            oSame("convert --to xml", "-", sForm);
            oSame("convert --to dgraph", "-", sForm);
            ASSERT_EQ(Run("convert " + sForm + " b.dgraph.gz").iExit, 0) << OnDisk("err");
            oSame("convert --to dgraph", "-", "b.dgraph.gz");
            EXPECT_EQ(Run("convert " + sForm + " b.zip --zip --to xml").iExit, 0) << OnDisk("err");
            oSame("convert --to xml", "-", "b.zip");
        }
    }
}

TEST_F(Program, RecordsAsJsonLinesAndFiles) {
    ToDisk(
        "a.xml",
        "<R><n><a>1</a><b dt:dt='r8'>NaN</b></n><n k='\"'><a>x</a><a>y</a><c dt:dt='i4'>7</c></n>"
        "<n><a/><c u='m' dt:dt='i4'>8</c><d dt:dt='char'>A</d><e dt:dt='i8'>9</e></n><o>z</o></R>");
    EXPECT_EQ(Run("convert a.xml a.jsonl --records /n").iExit, 0);
    EXPECT_EQ(OnDisk("a.jsonl"),
              "{\"a\":[\"1\"],\"b\":null}\n"
              "{\"@k\":\"\\\"\",\"a\":[\"x\",\"y\"],\"c\":{\"#value\":7}}\n"
              "{\"a\":[null],\"c\":{\"@u\":\"m\",\"#value\":8},\"d\":\"A\",\"e\":9}\n");
    EXPECT_TRUE(Has(OnDisk("err"), "1 number that JSON does not have"));
    EXPECT_EQ(Run("convert a.xml - --to jsonl --lossless").iExit, 2);
    EXPECT_EQ(OnDisk("out"), "");
    EXPECT_EQ(Run("convert a.xml - --to jsonl").iExit, 0);
    const std::string sLines = OnDisk("out");
    EXPECT_EQ(std::count(sLines.begin(), sLines.end(), '\n'), 4);

    for (const char* sIn : {"a.xml", "-"}) {
        EXPECT_EQ(
            Run("convert "s + sIn + " records --to dgraph --records \"/n[1]\"", OnDisk("a.xml"))
                .iExit,
            0);
        EXPECT_EQ(Run("get records/00000001.dgraph /a").sOut, "x\ny\n");
        fs::remove_all("records");
    }
    EXPECT_EQ(Run("convert a.xml - --to xml --records /n").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

}  // namespace
}  // namespace vok
