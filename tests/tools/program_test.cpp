// SPDX-License-Identifier: MIT
// The program as a shell sees it: what it tells of a document.
#include <cctype>

#include "tests/tools/program_support.h"
#include "vok/data/builder.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"

namespace vok {
namespace {

TEST_F(Program, ShowGetInfo) {
    EXPECT_EQ(Run("show -", g_sTree).sOut,
              "R @v=\"1\"\n  b Binary AAE=\n  d Date 2026-11-24T18:35:56.5Z\n  from Empty\n  list\n"
              "    n Integer 1\n    n[1] Double 0.1\n    n[2] Boolean true\n"
              "  t String \"one\\ntwo\"\n  to Link /from[0]\n");
    EXPECT_EQ(Run("show - /list --depth 0", g_sTree).sOut, "list\n");
    const Outcome o = Run("show - --json /list", g_sTree);
    std::string sJson;
    for (const char c : o.sOut) sJson += c > ' ' ? std::string(1, c) : "";
    EXPECT_EQ(sJson, R"([{"name":"list","type":"Tree","successors":[{"name":"n","type":"Integer",)"
                     R"("value":1},{"name":"n","type":"Double","value":0.1},{"name":"n","type":)"
                     R"("Boolean","value":true}]}])");
    EXPECT_EQ(Run("get - //n", g_sTree).sOut, "1\n0.1\ntrue\n");
    EXPECT_EQ(Run("get - /t", g_sTree).sOut, "one\\ntwo\n");
    EXPECT_EQ(Run("get - /t -0", g_sTree).sOut, "one\ntwo\0"s);
    EXPECT_EQ(Run("get - /nothing", g_sTree).iExit, 1);
    EXPECT_EQ(Run("get - /list", g_sTree).sOut,
              "list\n  n Integer 1\n  n[1] Double 0.1\n  n[2] Boolean true\n");
    EXPECT_EQ(Run("get - /a", "<R><a><l CDNodeIDREF='I'/><x CDNodeID='I'/></a></R>").sOut,
              "a\n  l Link /a[0]/x[0]\n  x Empty\n");
    EXPECT_EQ(Run("get - //n --count", g_sTree).sOut, "3\n");
    EXPECT_EQ(Run("get - /@v", g_sTree).sOut, "1\n");
    EXPECT_EQ(Run("get - //n --json", g_sTree).sOut, "1\n0.1\ntrue\n");
    EXPECT_EQ(Run("get - /list --json", g_sTree).sOut, "{\"n\":[1,0.1,true]}\n");
    EXPECT_EQ(Run("get - /t --json", g_sTree).sOut, "\"one\\ntwo\"\n");
    EXPECT_EQ(Run("get - /@v --json", g_sTree).sOut, "\"1\"\n");
    EXPECT_EQ(Run("get - //@v --paths", "<R v='1'><a v='2'/><b/></R>").sOut, "/@v\n/a[0]/@v\n");
    EXPECT_EQ(Run("get - /list/@v", g_sTree).iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"), "vok: no attribute at /list/@v; \"/\" is the node \"R\"\n");
    EXPECT_EQ(Run("get - /nothing --default none", g_sTree).sOut, "none\n");
    EXPECT_EQ(Run("get - //n[2] --paths -0", g_sTree).sOut, "/list[0]/n[2]\0"s);
    EXPECT_EQ(Run("show - /R/list", g_sTree).iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"), "vok: no node at /R/list; \"/\" is the node \"R\"\n");
    const std::string sInfo = Run("info -", g_sTree).sOut;
    for (const char* s : {"format      xml\n", "nodes       10\n", "names       8\n",
                          "depth       3\n", "attributes  1\n", "  Tree      2\n"}) {
        EXPECT_TRUE(Has(sInfo, s));
    }
}

#ifndef _WIN32  // whose shell sets no variables for one command
TEST_F(Program, SpeaksGerman) {
    const auto oSaid = [&](const std::string& sLanguage, const std::string& sCommand) {
        Shell(sLanguage + " vok " + sCommand + " >out 2>err");
        return OnDisk("out") + OnDisk("err");
    };
    ToDisk("bad.xml", "<a>\n<b></a>");
    ToDisk("good.xml", "<a><!-- --></a>");
    const std::string sGerman = "LC_ALL= LC_MESSAGES= LANG=de_DE.UTF-8";
    EXPECT_EQ(oSaid(sGerman, "get good.xml /b"),
              "vok: kein Knoten bei /b; \"/\" ist der Knoten \"a\"\n");
    EXPECT_EQ(
        oSaid(sGerman, "check bad.xml good.xml"),
        "bad.xml: Byte 7, Zeile 2, Spalte 4, bei /b[0]: "
        "kein XML-Datenstrom, oder der Datenstrom ist beschädigt\ngood.xml: good (xml, 1 nodes)\n"
        "vok: good.xml: nicht erhalten: 1 Kommentar\n");
    EXPECT_EQ(oSaid(sGerman, "--limit depth=1 get bad.xml /"),
              "vok: bad.xml: Byte 4, Zeile 2, Spalte 1, bei /: Grenze \"Tiefe\" von 1 "
              "überschritten (mit --limit depth=... erhöhen)\n");
    EXPECT_TRUE(
        Has(oSaid(sGerman, "check --json bad.xml"), "no XML stream or stream is corrupted"));
    // The first of the three that is set counts; others are English.
    EXPECT_TRUE(Has(oSaid("LC_ALL=C LANG=de", "get good.xml /b"), "no node at /b"));
    EXPECT_TRUE(Has(oSaid("LC_ALL=de LANG=C", "get good.xml /b"), "kein Knoten bei /b"));
    EXPECT_TRUE(Has(oSaid("LC_ALL=den_XX", "get good.xml /b"), "no node at /b"));
}
#endif

TEST_F(Program, AnswersInJson) {
    EXPECT_EQ(Run("info - --json", "<R><a k='1'>x</a></R>").sOut,
              "{\"format\":\"xml\",\"wrapping\":null,\"version\":null,\"bytes\":21,\"nodes\":2,"
              "\"names\":2,\"depth\":2,\"attributes\":1,\"text bytes\":1,"
              "\"types\":{\"String\":1,\"Tree\":1}}\n");
    ToDisk("good.json", "{\"a\":1}");
    ToDisk("lossy.xml", "<a><!-- --></a>");
    ToDisk("cut.dgraph", "DGraphBin\1\3");
    ToDisk("bad.xml", "<a>\n<b></a>");
    const Outcome o = Run("check -j 2 --json good.json lossy.xml bad.xml cut.dgraph none");
    EXPECT_EQ(o.iExit, 2);
    EXPECT_TRUE(o.sOut.starts_with(
        "{\"file\":\"good.json\",\"good\":true,\"form\":\"json\",\"nodes\":2}\n"
        "{\"file\":\"lossy.xml\",\"good\":true,\"form\":\"xml\",\"nodes\":1,"
        "\"not kept\":[\"1 comment\"]}\n"
        "{\"file\":\"bad.xml\",\"good\":false,"
        "\"fault\":\"no XML stream or stream is corrupted\",\"offset\":7,\"line\":2,"
        "\"column\":4,\"path\":\"/b[0]\"}\n"
        "{\"file\":\"cut.dgraph\",\"good\":false,"))
        << o.sOut;
    EXPECT_TRUE(Has(o.sOut, "{\"file\":\"none\",\"good\":false,\"fault\":\"none: could not open"));
    EXPECT_EQ(OnDisk("err"), "");
    EXPECT_EQ(Run("hash --json good.json").sOut,
              "{\"file\":\"good.json\",\"path\":\"/\",\"hash\":\"" +
                  Run("hash good.json").sOut.substr(0, 32) + "\"}\n");
    EXPECT_TRUE(Run("hash --json --path /a good.json")
                    .sOut.starts_with("{\"file\":\"good.json\",\"path\":\"/a[0]\",\"hash\":\""));
#ifndef _WIN32  // where names of files are UTF-8
    const std::string sNone = Run("check --json no\xFF").sOut;
    EXPECT_TRUE(sNone.starts_with("{\"file\":\"no\xC3\xBF\",\"good\":false")) << sNone;
    EXPECT_EQ(sNone.find('\xFF'), std::string::npos);
#endif
    ASSERT_EQ(Run("zip add a.zip --store good.json").iExit, 0);
    const std::string sMember = Run("zip list --json a.zip").sOut;
    EXPECT_TRUE(
        sMember.starts_with("{\"name\":\"good.json\",\"size\":7,\"packed\":7,\"date\":\"20"))
        << sMember;
}

// However small they are.
TEST_F(Program, FractionsOfSeconds) {
    const std::pair<const char*, const char*> CASES[] = {
        {"0.5", "1970-01-01T00:00:00.5Z\n"},
        {"-0.25", "1969-12-31T23:59:59.75Z\n"},
        {"1e-5", "1970-01-01T00:00:00.00001Z\n"},
        {"60.0000152587890625", "1970-01-01T00:01:00.0000152587890625Z\n"},
    };
    for (const auto& [sSeconds, sDate] : CASES) {
        EXPECT_EQ(Run("get - /", R"({"#type":"Date","#value":)"s + sSeconds + '}').sOut, sDate);
    }
}

// Of a long path both ends are shown as they are in all of it, and no more is looked at.
TEST_F(Program, LongPathsAreShortened) {
    constexpr int LEVELS = 200;
    const auto oDeep = [](const char* sValue) {
        Data oTree = NewTree();
        Data_Builder oBuilder(oTree);
        for (int i = 0; i < LEVELS; ++i) {
            oBuilder.Open("/////////\"");
            oBuilder.SetAttVal("k", sValue);
        }
        oBuilder.Finish();
        return DumpOf(oTree);
    };
    ToDisk("a.dump", oDeep("1"));
    ToDisk("b.dump", oDeep("2"));
    const std::string sFull = Repeat("/\"/////////\\\"\"[0]", LEVELS);
    const std::string sOut = Run("diff a.dump b.dump").sOut;
    EXPECT_TRUE(Has(sOut, sFull.substr(0, 200) + " ... " + sFull.substr(sFull.size() - 200) +
                              " attribute k\n  < \"1\"\n"));
}

#ifndef _WIN32  // whose shell has other quotes
// Every path that is printed selects its node when it is pasted back between single quotes; so do
// those of attributes. Names are whatever a tree can have.
TEST_F(Program, PathsCanBePastedBack) {
    const char* const NAMES[] = {
        "plain", "two words", "a.b", "a/b[0]", "quote\"s'", "back\\sl", "new\nline",
        "@at",   "*",         "..",  "",       "x=y",       "\b7;",     "\xE2\x80\xAEr"};
    Data oTree = NewTree();
    int iNext = 0;
    for (const char* s : NAMES) {
        Data oNode = oTree.CreateNewSucc(s);
        for (int i = 0; i < 2; ++i) {
            oNode.CreateNewSucc(s).SetValInt(iNext++);
            oNode.SetAttVal(*s != 0 ? s : "empty", std::to_string(iNext).c_str());
        }
    }
    Dgraph_SetVersion(oTree, 1, 3, 0);
    File oOut;
    oOut.Open("t.dgraph", "Tcw");
    Dgraph_SaveDGraph(oTree, oOut);
    oOut.Close();
    Texts asPath;
    std::istringstream oLines(Run("get t.dgraph '//*' --paths").sOut);
    for (std::string s; std::getline(oLines, s);) asPath.push_back(s);
    ASSERT_EQ(asPath.size(), 3 * std::size(NAMES));
    for (const std::string& s : asPath) {
        EXPECT_EQ(Run("get t.dgraph '" + s + "' --paths").sOut, s + '\n') << OnDisk("err");
    }
    const auto [sFirst, sSecond] = std::pair(Run("get t.dgraph '//*'").sOut, [&] {
        std::string sAll;
        for (const std::string& s : asPath) sAll += Run("get t.dgraph '" + s + "'").sOut;
        return sAll;
    }());
    EXPECT_EQ(sSecond, sFirst);
    EXPECT_EQ(Run("get t.dgraph '/\"two words\"/@\"two words\"' --paths").sOut,
              "/\"two words\"[0]/@\"two words\"\n");
    EXPECT_EQ(Run("get t.dgraph '//*[@a.b=\"4\"]' --paths").sOut, "");
    EXPECT_EQ(Run("get t.dgraph '//*[@x=\"a]b\"]'").iExit, 1);
    for (const char* s : {"'/\"open'", "'/\"\\q\"'", "'/a/@'", "'/a/@b/c'"}) {
        EXPECT_EQ(Run("get t.dgraph "s + s).iExit, s == "'/a/@b/c'"s ? 1 : 2) << s;
    }
    EXPECT_EQ(Run("show t.dgraph /@a").iExit, 2);
}
#endif

TEST_F(Program, FaultsHavePlaces) {
    ToDisk("good.xml", g_sTree);
    ToDisk("bad.xml", "<a>\n <b></c></a>");
    ToDisk("bad.dgraph", "DGraphBin\1\3\0"s + std::string(18, '\0') + "\1\0\0\0x"s);
    ToDisk("deep.xml", Repeat("<ä>", 1000));
    const Outcome o = Run("check good.xml bad.xml bad.dgraph none deep.xml " + Sample("page.html"));
    EXPECT_EQ(o.iExit, 2) << "one is not there";
    EXPECT_EQ(o.sOut.substr(0, o.sOut.find("none:")),
              "good.xml: good (xml, 10 nodes)\n"
              "bad.xml: byte 8, line 2, column 5, at /b[0]: no XML stream or stream is corrupted\n"
              "bad.dgraph: byte 35, at /: Dgraph_LoadDGraph: Invalid path specification! No index "
              "specified\n");
    EXPECT_TRUE(Has(o.sOut,
                    "page.html: byte 18, line 2, column 12, at /p[0]: node \"p\" with wrong "
                    "data type: 'String'\n"));
    EXPECT_TRUE(Has(o.sOut, "/ä[0]/ ... 0]/ä[0]/"));
    // Blanks and comments may stand behind a document in any coding, and nothing else.
    std::string sWide = "\xFF\xFE";
    for (const char c : "<a>x</a>\n<!-- c -->\n"s) sWide += {c, '\0'};
    ToDisk("wide.xml", sWide);
    EXPECT_EQ(Run("check wide.xml").sOut, "wide.xml: good (xml, 1 nodes)\n");
    ToDisk("wide.xml", sWide + "Z\0"s);
    EXPECT_EQ(Run("check wide.xml").sOut, "wide.xml: 26 bytes behind the document\n");
    EXPECT_EQ(Run("show bad.xml").iExit, 2);
    EXPECT_TRUE(Has(OnDisk("err"), "vok: bad.xml: byte 8"));
    for (const char* s : {"", "nonsense", "convert good.xml", "convert good.xml x.unknown",
                          "get good.xml \"a[\"", "convert good.xml x.dgraph --dgraph-version 3.0.0",
                          "convert good.xml x.dgraph --dgraph-version one",
                          "convert good.xml none/x/y.xml/z.xml --to xml --zip --compress"}) {
        EXPECT_EQ(Run(s).iExit, 2) << s;
        EXPECT_NE(OnDisk("err"), "") << s;
    }
    // Nothing is left behind, half-written or beside.
    for (const auto& oEntry : fs::directory_iterator(".")) {
        EXPECT_EQ(oEntry.path().string().find("x."), std::string::npos) << oEntry.path();
    }
    EXPECT_EQ(Run("--version").sOut, "2.1.143\n");
    EXPECT_TRUE(Has(Run("convert --help").sOut, "--dgraph-version"));
}

TEST_F(Program, Hashes) {
    // docs/hash.md
    ToDisk("order.xml",
           "<order xmlns:dt=\"urn:schemas-microsoft-com:datatypes\" state=\"open\">"
           "<price dt:dt=\"r8\">2.5</price>\n<id dt:dt=\"i4\" CDNodeID=\"ID1\">17</id>"
           "<note>Gru\xC3\x9F</note><link CDNodeIDREF=\"ID1\"/></order>\n");
    EXPECT_EQ(Run("hash order.xml").sOut, "c45a463e9a18ea0b6431c455f7dc299d  order.xml\n");
    EXPECT_EQ(Run("hash --sha256 order.xml").sOut,
              "cbd0a28470effb2a6c244a63e11b1718399a17ef4531e7753482152e9a86df60  order.xml\n");
    // One tree by records and by itself, in all forms.
    ToDisk("a.xml", "<R><i a='2' b='1'>x</i><i/></R>");
    ToDisk("b.xml", "<R><i b='1' a='2'>x</i><!-- --><i></i></R>");
    ASSERT_EQ(Run("convert a.xml c.dgraph").iExit + Run("convert a.xml d.dump").iExit, 0);
    ASSERT_EQ(Run("convert a.xml e.xml.gz").iExit + Run("convert a.xml f.zip --zip --to xml").iExit,
              0);
    const Texts asHash =
        HashesIn(Run("hash a.xml b.xml c.dgraph d.dump e.xml.gz f.zip -", OnDisk("c.dgraph")).sOut);
    EXPECT_EQ(asHash, Texts(7, asHash.at(0)));
    // A part is a tree of its own.
    ToDisk("i.xml", "<i b='1' a='2'>x</i>");
    const Outcome oParts = Run("hash --path /i c.dgraph");
    EXPECT_EQ(HashesIn(oParts.sOut).at(0), HashesIn(Run("hash i.xml").sOut).at(0));
    EXPECT_TRUE(Has(oParts.sOut, "  c.dgraph /i[1]\n"));
    EXPECT_EQ(Run("hash --path /no c.dgraph").iExit, 1);
    // What is not whole has none; the others are hashed all the same.
    ToDisk("cut.dgraph", OnDisk("c.dgraph").substr(0, OnDisk("c.dgraph").size() - 3));
    ToDisk("behind.xml", "<R/>!");
    const Outcome oBad = Run("hash cut.dgraph behind.xml missing a.xml");
    EXPECT_EQ(oBad.iExit, 2);
    EXPECT_EQ(HashesIn(oBad.sOut), Texts{asHash[0]});
    for (const char* s : {"cut.dgraph: cut short", "behind.xml: 1 byte behind", "missing"}) {
        EXPECT_TRUE(Has(oBad.sErr, s));
    }
}

TEST_F(Program, CompletesWords) {
    ToDisk("t.xml", "<R><order><a/></order><order/><only><b.c/></only></R>");
    const Pair CASES[] = {
        {"ge", "get\n"},
        {"get --pa", "--paths\n"},
        {"get t.xml /o", "/only\n/order[0]\n/order[1]\n"},
        {"get t.xml /order[0]/", "/order[0]/a\n"},
        {"get t.xml /only/", "/only/\"b.c\"\n"},
        {"get --default x t.xml /onl", "/only\n"},
        {"move t.xml /a /onl", "/only\n"},
        {"convert --to js", "json\njsonl\n"},
        {"hash --path /o", ""},  // no file was named yet
        {"zip e", "extract\n"},
        {"get t", ""},  // files are the shell's
        {"get none.xml /", ""},
        {"comple", "completion\n"},
    };
    for (const auto& [sWords, sExpected] : CASES) {
        const Outcome o = Run("complete -- " + sWords);
        EXPECT_EQ(o.sOut, sExpected) << sWords;
        EXPECT_EQ(o.iExit, 0) << sWords;
        EXPECT_EQ(o.sErr, "") << sWords;
    }
    for (const char* s : {"bash", "zsh", "fish"}) {
        EXPECT_TRUE(Has(Run("completion "s + s).sOut, "complete --")) << s;
    }
    EXPECT_EQ(Run("completion csh").iExit, 2);
}

TEST_F(Program, ColoursWhereTheyAreWanted) {
    const std::string sPlain = Run("show -", g_sTree).sOut;
    EXPECT_EQ(Run("--color never show -", g_sTree).sOut, sPlain);
    const std::string sColoured = Run("show - --color always", g_sTree).sOut;
    EXPECT_TRUE(Has(sColoured, "\x1b[1mlist\x1b[0m"));
    EXPECT_EQ(Run("show - --color always --plain", g_sTree).sOut, sPlain);
    EXPECT_EQ(Run("show - --color sometimes", g_sTree).iExit, 2);
}

TEST_F(Program, TrustedInputHasNoLimits) {
    ToDisk("t.xml", "<R><a><b/></a></R>");
    EXPECT_EQ(Run("check t.xml --limit depth=2").iExit, 1);
    EXPECT_EQ(Run("check t.xml --limit depth=2 --trusted").iExit, 0);
}

TEST_F(Program, WordsAndEndings) {
    const std::string sDt = "<R xmlns:dt='urn:schemas-microsoft-com:datatypes' z='2' a='\"'>";
    EXPECT_EQ(Run("show - --json", sDt + "<c dt:dt='char'>\xC3\xA4</c><f dt:dt='r4'>0.5</f>"
                                         "<l dt:dt='i8'>18446744073709551615</l></R>")
                  .iExit,
              0);
    const std::string sJson = LinesOnDisk("out");
    for (const char* s :
         {"\"attributes\": {\n   \"a\": \"\\\"\",\n   \"z\": \"2\"\n  }", "\"value\": 228\n",
          "\"value\": 0.5\n", "\"value\": 18446744073709551615\n"}) {
        EXPECT_TRUE(Has(sJson, s));
    }
    // Endings in any case, compressed ones too.
    std::string sTree = g_sTree;
    sTree.erase(sTree.find(".5<"), 2);  // which no form but the dump keeps
    ToDisk("a.xml", sTree);
    for (const char* s : {"B.XML", "b.Dgraph", "c.dg.gz", "d.XML.GZ", "e.dump", "f.Json"}) {
        EXPECT_EQ(Run("convert a.xml "s + s).iExit, 0) << s << OnDisk("err");
        const bool bGzip = std::string_view("zZ").find(s[std::strlen(s) - 1]) < 2;
        EXPECT_EQ(OnDisk(s).starts_with("\x1f\x8b"), bGzip) << s;
        EXPECT_EQ(Run("diff a.xml "s + s).iExit, 0) << s;
    }
    for (const char* s : {"1", "1.2", "1.2.0.", "1.2.x", "1.-2.0", "1.256.0", " 1.2.0", ""}) {
        EXPECT_EQ(Run("convert a.xml x.dgraph --dgraph-version \""s + s + '"').iExit, 2) << s;
    }
    // Nothing that a file says plays with the terminal.
    const std::string sWild = "<a>\xE2\x80\xAE\xC2\x9B\xF0\x9D\x85\xB3\xF3\xA0\x81\x81</a>";
    EXPECT_EQ(Run("get - /", sWild).sOut, "\\u202E\\u009B\\U0001D173\\U000E0041\n");
    EXPECT_EQ(Run("check -", "<\xE2\x80\xAE/></x>").sOut.find("\xE2\x80\xAE"), std::string::npos);
    Data oTagged = NewTree();
    oTagged.SetUserTag("\xE2\x80\xAE\x1B[m");
    ToDisk("tagged", DumpOf(oTagged));
    EXPECT_EQ(Run("info tagged").iExit, 0);
    EXPECT_TRUE(Has(OnDisk("out"), "\\u202E"));
    EXPECT_EQ(OnDisk("out").find_first_of("\x1B\xAE"), std::string::npos) << OnDisk("out");
    Run("check none\xE2\x80\xAE");
    EXPECT_EQ(OnDisk("out").find("\xE2\x80\xAE"), std::string::npos);
    Run("check --\xE2\x80\xAE");
    EXPECT_EQ(OnDisk("err").find("\xE2\x80\xAE"), std::string::npos);
    EXPECT_EQ(Run("check -", "what is this").sOut, "-: not a document this program knows\n");
    // A limit is raised with what the message says.
    EXPECT_EQ(Run("check - --limit depth=2", g_sTree).iExit, 1);
    EXPECT_TRUE(Has(OnDisk("out"), "(raise it with --limit depth=...)"));
    EXPECT_EQ(Run("--limit depth=3 check -", g_sTree).iExit, 0);
    EXPECT_EQ(Run("check - --limit depth=many", g_sTree).iExit, 2);
}

// One file after the other or several at a time: the same words in the same order.
TEST_F(Program, ChecksManyFilesAtOnce) {
    std::string sFiles;
    for (int i = 0; i < 40; ++i) {
        const std::string sName = "f" + std::to_string(i) + ".xml";
        const char* const asText[] = {"<a/>", "<a><b></a>", "<a/>x", "<b CDNodeID='ID1'/>"};
        ToDisk(sName, asText[i % 4]);
        sFiles += " " + sName;
    }
    const Outcome oOne = Run("check" + sFiles);
    const Outcome oMany = Run("check -j 4" + sFiles);
    EXPECT_EQ(oMany.sOut, oOne.sOut);
    EXPECT_EQ(oMany.iExit, 1);
    EXPECT_EQ(oOne.iExit, 1);
    EXPECT_EQ(Run("check -j 4 gone.xml" + sFiles).iExit, 2);
}

}  // namespace
}  // namespace vok
