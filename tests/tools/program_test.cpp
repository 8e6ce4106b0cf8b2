// The program as a shell sees it: output, messages, exit status, files.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <functional>
#include <limits>
#include <span>
#include <sstream>

#include "tests/support.h"
#include "vok/data/builder.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"
#include "vok/records/writer.h"
#include "vok/zip/archive.h"

namespace vok {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

struct Outcome {
    int iExit;
    std::string sOut;
    std::string sErr;
};

class Program : public testing::Test {
  protected:
    static Outcome Run(const std::string& sArguments, const std::string& sIn = {},
                       const std::string& sBefore = {}) {
        ToDisk("in", sIn);
        const std::string sLine = sBefore + s_sProgram + ' ' + sArguments + " <in >out 2>err";
        int iStatus = std::system(sLine.c_str());
        // On a busy machine Wine does not get every shell to start.
        if (iStatus == -1) iStatus = std::system(sLine.c_str());
#ifdef WEXITSTATUS
        return {WEXITSTATUS(iStatus), OnDisk("out"), OnDisk("err")};
#else
        return {iStatus, OnDisk("out"), OnDisk("err")};
#endif
    }
    static std::string Sample(const char* sName) {
        return Native(VOK_SAMPLES "/"s + sName);
    }

    // Whether a shell line ends well; "vok" in it is the program.
    static int Shell(const std::string& sLine) {
        return std::system(("vok() { " + s_sProgram + " \"$@\"; }; " + sLine).c_str());
    }
    // What the program leaves beside its files when it should not.
    static std::string LeftBehind() {
        std::string sNames;
        for (const auto& oEntry : fs::recursive_directory_iterator(".")) {
            const std::string sName = oEntry.path().filename().string();
            if (sName.starts_with(".vok-")) sNames += sName + ' ';
        }
        return sNames;
    }

    // Of cases that take a program each: where starting one takes long, the first few.
    template <class Cases>
    static auto Affordable(const Cases& o, [[maybe_unused]] std::size_t uFew) {
#ifdef _WIN32
        return std::span(std::data(o), std::min(std::size(o), uFew));
#else
        return std::span(std::data(o), std::size(o));
#endif
    }

  private:
    // A path as the shell takes it, from whatever drive and folder it is called.
    static std::string Native(const std::string& sPath) {
        return fs::absolute(sPath).make_preferred().string();
    }
    static inline const std::string s_sProgram = Native(VOK_PROGRAM_PATH);
    Scratch_Dir m_oDir;
};

const std::string g_sTree =
    "<R xmlns:dt='urn:schemas-microsoft-com:datatypes' v='1'><list><n dt:dt='i4'>1</n>"
    "<n dt:dt='r8'>0.1</n><n dt:dt='boolean'>1</n></list><t>one\ntwo</t>"
    "<d dt:dt='dateTime'>2026-11-24T18:35:56.5</d><b dt:dt='bin.base64'><![CDATA[AAE=]]></b>"
    "<to CDNodeIDREF='ID1'/><from CDNodeID='ID1'/></R>";

TEST_F(Program, EveryFormToEveryForm) {
    for (const char* sName : {"icon.svg", "fonts.conf"}) {
        ASSERT_EQ(Run("convert " + Sample(sName) + " a.xml").iExit, 0) << OnDisk("err");
        const std::string sText = OnDisk("a.xml");
        for (const char* sTo : {"b.dgraph", "b.dump", "b.xml", "b --to dgraph --compress",
                                "b.zip --to xml --zip", "b.dump.zip --to dump --zip", "b.json",
                                "b.json.gz --compact", "b.json.zip --to json --zip"}) {
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

// The lines of every example in the docs are what is printed of the bytes in them.
TEST_F(Program, InspectsExamples) {
    for (const char* sFile : {"/format.md", "/inspect.md"}) {
        const std::string sText = LinesOnDisk(VOK_DOCS + std::string(sFile));
        std::size_t uAt = 0;
        int iExamples = 0;
        while ((uAt = sText.find("\n00000000  ", uAt)) != std::string::npos) {
            const std::string sLines = sText.substr(uAt + 1, sText.find("```", uAt) - uAt - 1);
            std::string sBytes;
            for (std::size_t u = 0; u < sLines.size(); u = sLines.find('\n', u) + 1) {
                const std::string sLine = sLines.substr(u, sLines.find('\n', u) - u);
                const std::string sHex = sLine.substr(10, 3 * 12);
                for (std::size_t v = 0; v < sHex.size() && std::isxdigit(sHex[v]); v += 3) {
                    sBytes += static_cast<char>(std::stoi(sHex.substr(v, 2), nullptr, 16));
                }
            }
            const Outcome o = Run("inspect -", sBytes);
            EXPECT_EQ(o.sOut, sLines);
            EXPECT_EQ(o.iExit, Has(sLines, "!") ? 1 : 0);
            ++iExamples;
            ++uAt;
        }
        EXPECT_EQ(iExamples, 1) << sFile;
    }
}

TEST_F(Program, Inspects) {
    ASSERT_EQ(Run("convert - a.dgraph.gz", g_sTree).iExit, 0);
    Outcome o = Run("inspect a.dgraph.gz");
    EXPECT_EQ(o.iExit, 0);
    EXPECT_TRUE(o.sOut.starts_with("00000000  1f 8b  "));
    EXPECT_TRUE(Has(o.sOut, "\nwithin, document 1:\n00000000  44 47 72 61 70 68"));
    // The same from a pipe, at a place.
    const std::string sStored = OnDisk("a.dgraph.gz");
    EXPECT_EQ(Run("inspect -", sStored).sOut, o.sOut);
    o = Run("inspect - --path /list/n[1] --fields 2", sStored);
    EXPECT_EQ(o.sOut,
              "\nwithin, document 1:\n"
              "00000080  04 00 00 00                              length of step    4\n"
              "00000084  6e 5b 31 5d                              step              n[1]  at "
              "/list[0]/n[1]\n");
    o = Run("inspect a.dgraph.gz --offset 0x8a --fields 1 --json");
    EXPECT_EQ(o.sOut,
              "{\"document\":1,\"offset\":137,\"length\":8,\"hex\":\"9a9999999999b93f\","
              "\"field\":\"value\",\"value\":\"0.1\",\"path\":\"/list[0]/n[1]\"}\n");
    EXPECT_EQ(Run("inspect a.dgraph.gz --path /list/*").iExit, 0);
    for (const char* s : {"--path /nothing", "--path /list/n[3]", "--offset 9999"}) {
        EXPECT_EQ(Run("inspect a.dgraph.gz "s + s).iExit, 1) << s;
        EXPECT_EQ(LinesOnDisk("err"), "vok: nothing at that place\n");
    }
    EXPECT_EQ(Run("inspect a.dgraph.gz --path //n").iExit, 2);
    EXPECT_EQ(Run("inspect missing").iExit, 2);
    EXPECT_EQ(Run("inspect -", g_sTree).iExit, 1);
    EXPECT_TRUE(Has(OnDisk("out"), "! neither a DGraph document nor a native dump"));
}

TEST_F(Program, Salvages) {
    ASSERT_EQ(Run("convert - a.dgraph", g_sTree).iExit, 0);
    EXPECT_EQ(Run("salvage a.dgraph b.dgraph").iExit, 0);
    EXPECT_EQ(LinesOnDisk("err"), "vok: a.dgraph: 10 nodes written\n");
    EXPECT_EQ(OnDisk("b.dgraph"), OnDisk("a.dgraph"));
    std::string sDamaged = OnDisk("a.dgraph");
    sDamaged[0x80 + 3] = 0x7F;
    ToDisk("a.dgraph", sDamaged);
    EXPECT_EQ(Run("check a.dgraph").iExit, 1);
    const Outcome o = Run("salvage - b.dgraph", sDamaged);
    EXPECT_EQ(o.iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"),
              "vok: -: byte 128: length of step: more than the bytes that are left\n"
              "vok: -: byte 132: 13 bytes skipped\n"
              "vok: -: 9 nodes written\n");
    EXPECT_EQ(Run("check b.dgraph").iExit, 0);
    EXPECT_EQ(Run("get b.dgraph //n").sOut, "1\ntrue\n");
    // Nothing is written where nothing is left.
    const std::string sBefore = OnDisk("b.dgraph");
    EXPECT_EQ(Run("salvage - b.dgraph", g_sTree).iExit, 2);
    EXPECT_EQ(OnDisk("b.dgraph"), sBefore);
    EXPECT_EQ(LeftBehind(), "");
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

TEST_F(Program, Differences) {
    ToDisk("a.xml", g_sTree);
    std::string sOther = g_sTree;
    sOther.replace(sOther.find(">1<"), 3, ">2<").replace(sOther.find("v='1'"), 5, "w='1'");
    ToDisk("b.xml", sOther);
    const Outcome o = Run("diff a.xml b.xml");
    EXPECT_EQ(o.iExit, 1);
    EXPECT_TRUE(Has(o.sOut, "/list[0]/n[0] value\n  < Integer 1\n  > Integer 2\n"));
    EXPECT_TRUE(Has(o.sOut, "/ attribute v\n  < \"1\"\n  > (none)\n"));
    EXPECT_EQ(Run("diff -q a.xml b.xml").sOut, "");
    EXPECT_EQ(Run("diff a.xml a.xml").iExit, 0);
}

// The first words of the lines that "hash" prints.
Texts HashesIn(const std::string& sOut) {
    Texts asHash;
    std::istringstream oLines(sOut);
    for (std::string sLine; std::getline(oLines, sLine);) {
        asHash.push_back(sLine.substr(0, sLine.find(' ')));
    }
    return asHash;
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

TEST_F(Program, AlignedDifferences) {
    std::string sOrders, sOthers;
    for (int i = 0; i < 100; ++i) {
        const std::string s =
            "<o id='" + std::to_string(i) + "'><p>" + std::to_string(i) + "</p></o>";
        sOrders += s;
        if (i != 50) sOthers += s;
    }
    ToDisk("a.xml", "<R>" + sOrders + "</R>");
    ToDisk("b.xml", "<R>" + sOthers + "</R>");
    EXPECT_EQ(Run("diff a.xml b.xml").sOut, "/o[50] only in A\n  < Tree\n");
    EXPECT_GT(Run("diff a.xml b.xml --by-position").sOut.size(), 1000u);
    for (const char* s : {"--ignore /o", "--ignore o --key @id", "-q -i //o"}) {
        EXPECT_EQ(Run("diff a.xml b.xml "s + s).iExit, 0) << s;
    }
    for (const char* s : {"-q --by-position", "-q", "--key @id -q", "-k p --json"}) {
        EXPECT_EQ(Run("diff a.xml b.xml "s + s).iExit, 1) << s;
    }
    for (const char* s :
         {"--key /id", "--ignore 'a['", "--delta -1", "--delta x", "-q --json", "-o x.jsonl",
          "-o x", "--to xml", "-o none/x.xml", "--by-position -k id"}) {
        EXPECT_EQ(Run("diff a.xml a.xml "s + s).iExit, 2) << s;
        EXPECT_NE(OnDisk("err"), "") << s;
    }
    // Patches in every form; a file may be patched in its place.
    for (const char* s : {"p.xml", "p.dgraph.gz", "p.dump"}) {
        EXPECT_EQ(Run("diff a.xml b.xml -o "s + s).iExit, 1) << s;
        EXPECT_EQ(Run("convert a.xml c.dgraph").iExit, 0);
        EXPECT_EQ(Run("patch c.dgraph "s + s + " -o c.dgraph").iExit, 0) << OnDisk("err");
        EXPECT_EQ(Run("diff b.xml c.dgraph").iExit, 0) << s;
        const std::string sOld = OnDisk("c.dgraph");
        EXPECT_EQ(Run("patch c.dgraph "s + s + " -o c.dgraph").iExit, 1) << s;
        EXPECT_TRUE(Has(OnDisk("err"), s + ": patch does not fit at \"/o[50]\": "s)) << s;
        EXPECT_EQ(OnDisk("c.dgraph"), sOld);
    }
    EXPECT_EQ(Run("diff a.xml a.xml -o same.xml").iExit, 0);
    EXPECT_EQ(Run("patch a.xml same.xml -o - --to xml").iExit, 0);
    ToDisk("d.xml", OnDisk("out"));
    EXPECT_EQ(Run("diff a.xml d.xml").iExit, 0);
    ToDisk("d.xml", OnDisk("a.xml") + "<R/>");
    EXPECT_EQ(Run("patch d.xml same.xml -o d.xml").iExit, 0);
    EXPECT_EQ(LinesOnDisk("err"), "vok: d.xml: not kept: 4 bytes behind the document\n");
    EXPECT_EQ(Run("patch a.xml none.xml -o c.xml").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

TEST_F(Program, Merging) {
    ToDisk("base.xml", "<R k='1'><a>1</a><b>1</b></R>");
    ToDisk("a.xml", "<R k='2'><a>2</a><b>1</b></R>");
    ToDisk("b.xml", "<R k='3'><a>1</a><b>2</b><c/></R>");
    ToDisk("old", "old");
    EXPECT_EQ(Run("merge base.xml a.xml b.xml -o old --to xml").iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"), "vok: conflict at / k\n  = \"1\"\n  < \"2\"\n  > \"3\"\n");
    EXPECT_EQ(OnDisk("old"), "old");
    const Pair CASES[] = {
        {"--ours", "<R k='2'><a>2</a><b>2</b><c/></R>"},
        {"--theirs", "<R k='3'><a>2</a><b>2</b><c/></R>"},
        {"--ignore /@k --ignore @k", "<R k='1'><a>2</a><b>2</b><c/></R>"},
    };
    for (const auto& [sOptions, sMerged] : CASES) {
        EXPECT_EQ(Run("merge base.xml a.xml b.xml -o m.dgraph " + sOptions).iExit, 0) << sOptions;
        EXPECT_EQ(OnDisk("err"), "") << sOptions;
        ToDisk("m.xml", sMerged);
        EXPECT_EQ(Run("diff m.xml m.dgraph").sOut, "") << sOptions;
    }
    ToDisk("b.xml", "<R k='1'><b>1</b></R>");
    EXPECT_EQ(Run("merge base.xml a.xml b.xml -o m.xml").iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"),
              "vok: conflict at /a[0]\n  = String 1\n  < String 2\n  > (removed)\n");
    ToDisk("a.xml", "<R k='1'><!-- a --><b>1</b></R>");
    EXPECT_EQ(Run("merge base.xml a.xml b.xml -o m.xml").iExit, 0);
    EXPECT_EQ(LinesOnDisk("err"), "vok: a.xml: not kept: 1 comment\n");
    EXPECT_EQ(Run("merge base.xml a.xml none.xml -o m.xml").iExit, 2);
    EXPECT_EQ(Run("merge base.xml a.xml b.xml -o m.xml --ours --theirs").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

#ifndef _WIN32  // whose shell is another
// The examples of docs/compare.md: files, and what commands print.
TEST_F(Program, ComparisonAsDocumented) {
    std::istringstream oDocument(OnDisk(VOK_DOCS "/compare.md"));
    ASSERT_TRUE(oDocument.good());
    unsigned uCommands = 0;
    std::string sBlock, sFile, sCommand, sPrinted;
    const auto oCheck = [&] {
        if (sCommand.empty()) return;
        Shell("{ " + sCommand + "; } >printed 2>&1");
        EXPECT_EQ(OnDisk("printed"), sPrinted) << sCommand;
        ++uCommands;
        sCommand.clear();
        sPrinted.clear();
    };
    for (std::string sLine; std::getline(oDocument, sLine);) {
        if (sLine.starts_with("```")) {
            oCheck();
            if (!sFile.empty()) ToDisk(sFile, sPrinted);
            sPrinted.clear();
            sBlock = sBlock.empty() ? sLine.substr(3) : "";
            sFile = sBlock.starts_with("xml ") ? sBlock.substr(4) : "";
        } else if (sBlock == "console" && sLine.starts_with("$ ")) {
            oCheck();
            sCommand = sLine.substr(2);
        } else if (!sBlock.empty()) {
            sPrinted += sLine + '\n';
        }
    }
    EXPECT_GE(uCommands, 7u);
}
#endif

// What is done in every form and wrapping, in its place, is what the library does.
TEST_F(Program, Editing) {
    const auto oMake = [] {
        Data oTree = NewTree();
        oTree.SetRootName("R");
        for (int i = 0; i < 3; ++i) {
            Data oOrder = oTree.CreateNewSucc("order");
            oOrder.SetAttVal("id", std::to_string(i).c_str());
            oOrder.CreateNewSucc("price").SetValDbl(i + 0.5);
            oOrder.CreateNewSucc("note").SetValStr("n");
        }
        return oTree;
    };
    const auto At = [](Data& o, const char* sPath) { return o.GetNodeSet(sPath).GetNth(0); };
    using Change = std::function<void(Data&)>;
    const std::pair<const char*, Change> CASES[] = {
        {"set FILE /order[1]/price 9.25 -i",
         [&](Data& o) { At(o, "order[1]/price").SetValDbl(9.25); }},
        {"set FILE /order[1]/price 9 --type integer -i",
         [&](Data& o) { At(o, "order[1]/price").SetValInt(9); }},
        {"set FILE /order/@id 5 -i",
         [](Data& o) {
             for (Data oOrder : o.GetNodeSet("order")) oOrder.SetAttVal("id", "5");
         }},
        {"add FILE /order[0] note first --at 0 -i",
         [&](Data& o) { At(o, "order[0]").Insert("note", 0).SetValStr("first"); }},
        {"add FILE / inner -i", [](Data& o) { o.Append("inner"); }},
        {"add FILE / to /order[2] --type link -i",
         [&](Data& o) { o.Append("to").SetValLink(At(o, "order[2]")); }},
        {"delete FILE //note -i",
         [](Data& o) {
             for (Data oNote : o.GetNodeSet("//note")) oNote.Delete();
         }},
        {"delete FILE \"//*\" -i", [](Data& o) { o.RemoveSuccs(); }},
        {"delete FILE /order/@id -i",
         [](Data& o) {
             for (Data oOrder : o.GetNodeSet("order")) oOrder.RemoveAttributes();
         }},
        {"move FILE /order[2] /order[0] -i",
         [&](Data& o) { At(o, "order[2]").MoveTo(At(o, "order[0]")); }},
        {"move FILE /order[2] / --at 0 -i", [&](Data& o) { At(o, "order[2]").MoveTo(o, 0); }},
        {"rename FILE /order[1] done -i", [&](Data& o) { At(o, "order[1]").Rename("done"); }},
        {"rename FILE / top -i", [](Data& o) { o.SetRootName("top"); }},
        {"edit FILE -i -e \"add / a 1 --type integer\" -e \"rename /a b\" -e \"set /b 2\"",
         [](Data& o) { o.Append("b").SetValInt(2); }},
    };
    Data oTree = oMake();
    Dgraph_SetVersion(oTree, 1, 2, 0);
    File oOut;
    oOut.Open("made.dgraph", "Tcw");
    Dgraph_SaveDGraph(oTree, oOut);
    oOut.Close();
    const std::string FILES[] = {"t.xml.gz",
                                 "t.dgraph",
                                 "t.dump",
                                 "t.json",
                                 "t.xml",
                                 "t.zip --zip --to dgraph",
                                 "t.z --compress --to json"};
    for (const std::string& sFile : Affordable(FILES, 2)) {
        const std::string sName = sFile.substr(0, sFile.find(' '));
        for (const auto& [sCommand, oChange] : CASES) {
            ASSERT_EQ(Run("convert made.dgraph " + sFile + " --dgraph-version 1.2.0").iExit, 0);
            const std::string sKind = Run("info " + sName).sOut.substr(0, 60);
            std::string sLine(sCommand);
            const Outcome o = Run(sLine.replace(sLine.find("FILE"), 4, sName));
            ASSERT_EQ(o.iExit, 0) << sLine << o.sErr;
            Data oExpected = oMake();
            oChange(oExpected);
            EXPECT_EQ(HashesIn(Run("hash " + sName).sOut).at(0),
                      std::string(oExpected.Hash().ToHex().CStr()))
                << sLine;
            const auto oForm = [](const std::string& s) { return s.substr(0, s.find("bytes")); };
            EXPECT_EQ(oForm(Run("info " + sName).sOut), oForm(sKind)) << sLine;
        }
    }
}

// All of it is done, or nothing.
TEST_F(Program, EditsThatFail) {
    ToDisk("t.xml", "<R><a>1</a><b><c/></b></R>");
    const std::string sOld = OnDisk("t.xml");
    const std::pair<const char*, int> CASES[] = {
        {"set t.xml /none 1 -i", 1},
        {"delete t.xml /a/@none -i", 1},
        {"move t.xml /a /none -i", 1},
        {"set t.xml /b 1 -i", 2},
        {"set t.xml /a x --type integer -i", 2},
        {"set t.xml /a 4294967295 --type integer -i", 2},
        {"set t.xml /a 1e39 --type float -i", 2},
        {"set t.xml /a 1 --type huge -i", 2},
        {"set t.xml /a/@k 1 --type integer -i", 2},
        {"add t.xml /a n -i", 2},
        {"rename t.xml /a/@k n -i", 2},
        {"delete t.xml / -i", 2},
        {"move t.xml /b /b/c -i", 2},
        {"set t.xml /a 1", 2},
        {"set - /a 1 -i", 2},
        {"edit t.xml -i -e \"delete /b\" -e \"set /none 1\"", 1},
        {"edit t.xml -i -e \"delete /b\" -e nonsense", 2},
        {"edit t.xml -i -e \"set /a\"", 2},
        {"edit t.xml -i -e \"set /a 'open\"", 2},
        {"set t.xml /a 1 -o none/t.xml", 2},
        {"set t.xml /a 1 -i -o u.xml", 2},
    };
    for (const auto& [sCommand, iExit] : CASES) {
        const Outcome o = Run(sCommand);
        EXPECT_EQ(o.iExit, iExit) << sCommand;
        EXPECT_EQ(o.sOut, "") << sCommand;
        EXPECT_NE(o.sErr, "") << sCommand;
        EXPECT_EQ(OnDisk("t.xml"), sOld) << sCommand;
    }
    (void)Run("set t.xml /a 1e400 --type double -i");
    EXPECT_EQ(LinesOnDisk("err"), "vok: /a[0]: \"1e400\" is no Double\n");
    ToDisk("t.xml", "<R><!-- c --><a>1</a></R>");
    EXPECT_EQ(Run("set t.xml /a 2 -i --lossless").iExit, 2);
    EXPECT_EQ(Run("set t.xml /a 2 -o -").sOut,
              "<?xml version='1.0' encoding='UTF-8'?>\n<R xmlns:dt=\"urn:schemas-microsoft-com:"
              "datatypes\">\n\t<a><![CDATA[2]]></a>\n</R>\n");
    EXPECT_EQ(LinesOnDisk("err"), "vok: t.xml: not kept: 1 comment\n");
    // A name that tells the wrapping alone.
    EXPECT_EQ(Run("set t.xml /a 2 -o u.gz").iExit, 0);
    EXPECT_EQ(OnDisk("u.gz").substr(0, 2), "\x1F\x8B");
    EXPECT_EQ(LeftBehind(), "");
}

// A document that would like to be more than data.
const std::string g_sHostile =
    "<R><a k='&lt;img src=x onerror=document.title=1&gt;'>&lt;/script&gt;&lt;script&gt;"
    "document.title='taken'&lt;/script&gt;</a><_x003C_b_x003E_>&lt;!--</_x003C_b_x003E_>"
    "<list><i>1</i><i>two</i><to CDNodeIDREF='ID1'/></list><t CDNodeID='ID1'/></R>";

TEST_F(Program, Pages) {
    ToDisk("t.xml", g_sHostile);
    ASSERT_EQ(Run("show --html t.xml -o t.html").iExit, 0) << OnDisk("err");
    const std::string sPage = OnDisk("t.html");
    EXPECT_LT(sPage.size(), 100u * 1024);
    const std::string sBegin = "<script type=\"application/json\" id=\"data\">";
    const std::size_t uData = sPage.find(sBegin) + sBegin.size();
    const std::string sData = sPage.substr(uData, sPage.find('<', uData) - uData);
    EXPECT_TRUE(sPage.substr(uData + sData.size()).starts_with("</script>"));
    EXPECT_TRUE(Has(sData, "\\u003c/script>"));
    EXPECT_TRUE(Has(sData, "[6,12,3,7],"));  // "to", a Link below node 3, to node 7
    EXPECT_EQ(Run("show --html t.xml").sOut, sPage);
    EXPECT_EQ(Run("show --html t.xml /list/i[1]").iExit, 0);
    EXPECT_EQ(Run("show --html t.xml /list/i").iExit, 2);
    EXPECT_EQ(Run("show --html t.xml /none").iExit, 1);
    EXPECT_EQ(Run("show t.xml -o x").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

#ifndef _WIN32
TEST_F(Program, PagesInABrowser) {
    if (Shell("command -v chromium >where") != 0) GTEST_SKIP() << "there is no chromium";
    std::string sXml = g_sHostile;
    std::string sMany = "<m>";
    for (int i = 0; i < 2000; ++i) sMany += "<x>" + std::to_string(i) + "</x>";
    sXml.insert(sXml.rfind("</R>"), sMany + "</m>");
    ToDisk("t.xml", sXml);
    ASSERT_EQ(Run("show --html t.xml -o t.html").iExit, 0);
    const auto oShown = [&](const std::string& sHash) {
        const std::string sUrl = "'file://" + fs::absolute("t.html").string() + sHash + "'";
        Shell(
            "timeout 60 chromium --headless --no-sandbox --disable-gpu --user-data-dir=profile "
            "--virtual-time-budget=3000 --dump-dom " +
            sUrl + " >dom 2>/dev/null");
        return OnDisk("dom");
    };
    const Pair CASES[] = {
        {"", "id=\"path\">/<"},
        {"#/list[0]/i[1]", "id=\"path\">/list[0]/i[1]<"},
        {"#/%3Cb%3E[0]", "id=\"path\">/&lt;b&gt;[0]<"},
        {"#?two", "id=\"path\">/list[0]/i[1]<"},
        {"#?1999", "id=\"path\">/m[0]/x[1999]<"},
        {"#/m[0]/x[1200]", ">\xE2\x80\xA6 1000 more<"},
        {"#/list[0]/to[0]", "class=\"Link\">/t[0]<"},
    };
    for (const auto& [sHash, sExpected] : CASES) {
        const std::string sDom = oShown(sHash);
        EXPECT_TRUE(Has(sDom, sExpected)) << sHash;
        EXPECT_TRUE(Has(sDom, "<title>t.xml</title>")) << sHash;
        EXPECT_EQ(sDom.find("<img"), std::string::npos) << sHash;
    }
}
#endif

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

TEST_F(Program, Archives) {
    fs::create_directories("d/e");
    ToDisk("d/e/one", std::string(100000, 'x'));
    ToDisk("two", "2");
    EXPECT_EQ(Run("zip add a.zip d two").iExit, 0) << OnDisk("err");
    EXPECT_EQ(Run("zip add a.zip a.zip in --store").iExit, 0) << OnDisk("err");  // never itself
    EXPECT_TRUE(Has(Run("zip list a.zip").sOut, "5 members"));
    EXPECT_EQ(Run("zip test a.zip").sOut,
              "d/: good\nd/e/: good\nd/e/one: good\ntwo: good\nin: good\n");
    EXPECT_EQ(Run("zip add a.zip two two ./two").iExit, 0);
    EXPECT_TRUE(Has(LinesOnDisk("err"), "\"two\" was in the archive already"));
    EXPECT_TRUE(Has(Run("zip list a.zip").sOut, "6 members")) << "once";
    EXPECT_EQ(Run("zip extract a.zip -d to").iExit, 0) << OnDisk("err");
    EXPECT_EQ(OnDisk("to/d/e/one"), OnDisk("d/e/one"));
    EXPECT_EQ(Run("zip extract a.zip -d to2 two none").iExit, 1);
    EXPECT_EQ(OnDisk("to2/two"), "2");
    // A link in the target folder must not lead out of it.
    fs::create_directories("to3");
    std::error_code oError;
    fs::create_directory_symlink("../d", "to3/d", oError);
    if (!oError) {  // not everybody may make links
        EXPECT_EQ(Run("zip extract a.zip -d to3").iExit, 1);
        EXPECT_TRUE(Has(OnDisk("err"), "\"d/e/one\" would follow a link out"));
    }
    std::string sBroken = OnDisk("a.zip");
    sBroken[sBroken.find("two") + 12] ^= 1;  // behind the field for the time: data
    ToDisk("broken.zip", sBroken);
    EXPECT_EQ(Run("zip test broken.zip").iExit, 1);
    // What is bad does not stand in the way of the rest.
    EXPECT_EQ(Run("zip extract broken.zip -d to4").iExit, 1);
    EXPECT_EQ(OnDisk("to4/in") + OnDisk("to4/d/e/one"), OnDisk("d/e/one"));
    ToDisk("behind.zip", OnDisk("a.zip") + "PK\3\4 cut off");
    EXPECT_EQ(Run("zip test behind.zip").iExit, 1);
    EXPECT_TRUE(Has(LinesOnDisk("out"), "12 bytes behind the archive"));
    EXPECT_EQ(Run("zip test in").iExit, 1) << "no archive";
    EXPECT_EQ(Run("zip test none.zip").iExit, 2);
    EXPECT_EQ(Run("zip test a.zip --limit inflated=150000").iExit, 0);
    EXPECT_EQ(Run("zip add a.zip d/e/one").iExit, 0);
    EXPECT_EQ(Run("zip test a.zip --limit inflated=150000").iExit, 2) << "all together";
    EXPECT_TRUE(Has(LinesOnDisk("err"), "raise it with --limit inflated"));
    // No limit stands in the way of a large member, real or not.
    for (const std::size_t u : {sBroken.find("d/e/one") - 8, sBroken.rfind("d/e/one") - 22}) {
        sBroken.replace(u, 4, "\xFE\xFF\xFF\xFF");
    }
    ToDisk("broken.zip", sBroken);
    EXPECT_TRUE(Has(Run("zip test broken.zip").sOut, "has another size"));
}

// Times and the right to be run go into an archive and come out.
TEST_F(Program, MembersKeepTimesAndModes) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "no such modes";
    for (const char* sName : {"run", "b", "a"}) ToDisk(sName, "#!/bin/sh\n");
    ASSERT_EQ(Shell("chmod 755 run && touch -d '2001-02-03 04:05:07 UTC' run &&"
                    "vok zip add x.zip run b a && vok zip extract x.zip -d to && test -x to/run &&"
                    "test ! -x to/a && test ! to/run -nt run && test ! to/run -ot run &&"
                    "vok zip list x.zip | grep -q '2001-02-03 04:05:06.*run$' &&"
                    "vok zip list x.zip | tail -n +2 | grep -o '[a-z]*$' | tr '\\n' ' ' > out"),
              0);
    EXPECT_EQ(OnDisk("out"), "a b run members ");
    ASSERT_EQ(Shell("vok zip add folder.zip to"), 0);
    EXPECT_EQ(Zip_Archive("folder.zip").GetCurrentFileInfo().m_uExternalAttributes & 0xF0000010u,
              0x40000010u)
        << "a folder for every system";
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
    for (std::size_t u = 1; u < sWhole.size(); u += 7) {
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
    for (const auto& oFill : oFills) {
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
            for (const char* sPath : {"/", "/a", "/a[1]", "//c", "/*", "/b/c[1]", "/a[@k=\"v\"]",
                                      "/b/..", "/*[1]", "/to", "/nothing", "/b//c[0]", "//b"}) {
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

#ifdef VOK_FAIL_SHIM  // where memory can be bounded
// A document of 500 MB, where the process may have no more than 128 MB of addresses.
TEST_F(Program, LargeDocumentsInLittleMemory) {
    constexpr int ORDERS = 2000000;
    {
        File oFile("big.dgraph", "w");
        Data_Writer o(oFile);
        const std::string sNote(180, 'x');
        o.Open("orders");
        for (int i = 0; i < ORDERS; ++i) {
            o.Open("order");
            o.Add("id", i);
            o.Add("note", sNote);
            o.Add("price", 0.25 * i);
            o.Close();
        }
        o.Close();
        o.Finish();
    }
    EXPECT_GT(fs::file_size("big.dgraph"), 500000000u);
    const auto oRun = [](const std::string& sLine) { return Run(sLine, {}, "ulimit -v 131072; "); };
    EXPECT_EQ(oRun("get big.dgraph '/order[1999999]/id'").sOut, "1999999\n");
    EXPECT_EQ(oRun("check big.dgraph").sOut, "big.dgraph: good (dgraph, 8000001 nodes)\n");
    EXPECT_TRUE(Has(oRun("info big.dgraph").sOut, "nodes       8000001"));
    EXPECT_EQ(oRun("convert big.dgraph big.xml").iExit, 0) << OnDisk("err");
    EXPECT_EQ(oRun("get big.xml '/order[7]/price'").sOut, "1.75\n");
    EXPECT_EQ(oRun("convert big.dgraph big.jsonl").iExit, 0) << OnDisk("err");
    EXPECT_EQ(oRun("diff big.dgraph big.dgraph").iExit, 2);  // which takes the trees
}
#endif

// What compressed input may cost goes by the bytes that were there.
TEST_F(Program, CompressedInputIsSmall) {
    const std::string sMany = "<R>" + Repeat("<a/>", 4000000) + "</R>";
    ToDisk("plain.xml", sMany);
    EXPECT_EQ(Run("check plain.xml").iExit, 0) << OnDisk("out");
    {
        File oFile("many.xml.gz", "wz");
        oFile.Write(sMany.data(), sMany.size());
    }
    EXPECT_EQ(Run("check many.xml.gz").iExit, 0) << OnDisk("out");
    EXPECT_EQ(Run("diff many.xml.gz plain.xml").iExit, 2);
    EXPECT_TRUE(Has(OnDisk("err"), "(raise it with --limit "));
}

// What is small and deep does not give much to read.
TEST_F(Program, PrintsInProportion) {
    constexpr unsigned DEPTH = 60000;
    const std::string sDeep = Repeat("<a>", DEPTH) + Repeat("</a>", DEPTH);
    EXPECT_EQ(Run("show --json -", sDeep).iExit, 0);
    EXPECT_LT(OnDisk("out").size(), 100 * DEPTH);
    for (const char* s : {"show - \"//*\"", "show --json - \"//*\""}) {
        EXPECT_EQ(Run(s, sDeep).iExit, 2) << s;
        EXPECT_LE(fs::file_size("out"), (64u << 20) + 200 * sDeep.size()) << s;
        EXPECT_TRUE(Has(LinesOnDisk("err"), "the rest is left out"));
    }
}

TEST_F(Program, ManyAttributesAreGoneThroughOnce) {
    std::string sMany = "<a x='1'";
    for (int i = 0; i < 100000; ++i) sMany += " n" + std::to_string(i) + "=''";
    sMany += " x='2'/>";
    const auto oStart = std::chrono::steady_clock::now();
    EXPECT_TRUE(Has(Run("info -", sMany).sOut, "attributes  100001"));
    EXPECT_TRUE(Run("show -", sMany).sOut.ends_with(" @x=\"2\" Empty\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - oStart, std::chrono::seconds(10));
}

// ---- files and standard output ---------------------------------------------------

TEST_F(Program, OutputTakesItsPlace) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "no such files";
    ToDisk("a.xml", g_sTree);
    const char* const oLines[] = {
        "vok convert a.xml new.xml && test $(stat -c %a new.xml) = $(printf %o $((0666 & "
        "~$(umask))))",
        "cp new.xml b && chmod 640 b && vok convert a.xml b --to dump && test $(stat -c %a b) = "
        "640",
        "test $(id -u) != 0 || { chown 1234:1235 b && vok convert a.xml b --to xml && "
        "test $(stat -c %u:%g:%a b) = 1234:1235:640; }",
        "ln -s b link && vok convert a.xml link --to dgraph && test -L link && vok info b | grep "
        "-q dgraph",
        "ln -s made dangling && vok convert a.xml dangling --to xml && test -L dangling && cmp "
        "made new.xml",
        "mkfifo p && { cat p > got & } && vok convert a.xml p --to xml && wait && test -p p && cmp "
        "got new.xml",
        "vok convert a.xml /dev/stdout --to xml | cmp - new.xml",
        // A pipe cannot be gone through again.
        "mkfifo q && { cat new.xml > q & } && vok convert q again.xml && cmp again.xml new.xml",
        "for c in show check info 'get --null'; do p=''; test \"$c\" != 'get --null' || p=/; "
        "{ cat new.xml > q & }; vok $c q $p > piped && vok $c new.xml $p > named && "
        "test $(wc -l < piped) = $(wc -l < named) || exit 1; done",
        "cp b kept && chmod 400 b && ! vok convert a.xml b --to xml 2>err && cmp b kept && grep -q "
        "'may not be written' err",
        "! vok convert a.xml no/such.xml 2>err && test ! -e no && grep -q 'there is no folder' err",
        "mkdir d && ! vok convert a.xml d --to xml 2>err && grep -q 'is a folder' err",
        "vok convert a.xml $(printf %0251d 0).xml",
        "(ulimit -f 0; vok convert a.xml limited.xml 2>/dev/null; test $? = 2) && test ! -e "
        "limited.xml",
        "(ulimit -f 0; vok convert a.xml limited.xml 2>&1) | grep -q '\"limited.xml\"'",
        "vok zip add limited.zip a.xml && (ulimit -f 0; vok zip extract limited.zip -d limited "
        "2>/dev/null; test $? = 2) && test ! -e limited/a.xml",
        // One name that is no text does not stand in the way of the others.
        "mkdir n && touch n/b n/$(printf 'a\\377') && (vok zip add n.zip n 2>err; test $? = 1) && "
        "grep -q 'not added' err && vok zip list n.zip | grep -q 'n/b$'",
    };
    for (const char* sLine : oLines) EXPECT_EQ(Shell(sLine), 0) << sLine << OnDisk("err");
    EXPECT_EQ(LeftBehind(), "");
    if (!fs::exists("/dev/full")) return;
    ASSERT_EQ(Run("zip add a.zip a.xml").iExit, 0);
    for (const char* s :
         {"--help", "--version", "get a.xml //n", "show a.xml", "show a.xml --json", "info a.xml",
          "check a.xml", "diff a.xml d.xml", "convert a.xml - --to xml", "zip list a.zip",
          "zip test a.zip", "convert a.xml /dev/full --to xml"}) {
        ToDisk("d.xml", "<R/>");
        EXPECT_EQ(Shell("vok "s + s + " >/dev/full 2>err; test $? = 2"), 0) << s;
        EXPECT_TRUE(Has(OnDisk("err"), "vok: file write error"));
    }
}

#ifdef VOK_FAIL_SHIM

// A command, what it writes, and that with the command done.
struct Work {
    std::string sCommand;
    std::string sTarget;  // empty: standard output
    std::string sOld;
    std::string sNew;
};

class Failing_Program : public Program {
  protected:
    // Lets the nth call of a kind fail; what it is not is told by "reached" not being there.
    static Outcome RunFailing(const Work& o, const std::string& sKind, unsigned uNth) {
        fs::remove("reached");
        if (!o.sTarget.empty()) ToDisk(o.sTarget, o.sOld);
        return Run(
            o.sCommand, g_sTree,
            "FAIL_CALL=" + sKind + ':' + std::to_string(uNth) + " LD_PRELOAD=" VOK_FAIL_SHIM " ");
    }
    static std::string Result(const Work& o, const Outcome& oOutcome) {
        return o.sTarget.empty() ? oOutcome.sOut : OnDisk(o.sTarget);
    }
    void SetUp() override {
        for (const char* s : {"one", "two"}) ToDisk(s, Repeat(s, 100000));
        ASSERT_EQ(Run("zip add old.zip one").iExit, 0);
        const std::string sOld = OnDisk("old.zip");
        m_aoWork = {{"convert - x.xml", "x.xml", "old", ""},
                    {"convert - x.zip --to dgraph --zip", "x.zip", "old", ""},
                    {"zip add x.zip two --store", "x.zip", sOld, ""},
                    {"zip add x.zip two --store", "x.zip", "", ""},
                    {"zip extract old.zip -d .", "one", "old", ""},
                    {"get - //n", "", "", ""}};
        for (Work& o : m_aoWork) {
            const Outcome oOutcome = RunFailing(o, "none", 0);
            ASSERT_EQ(oOutcome.iExit, 0) << o.sCommand << oOutcome.sErr;
            o.sNew = Result(o, oOutcome);
            ASSERT_NE(o.sNew, o.sOld) << o.sCommand;
        }
    }

    std::vector<Work> m_aoWork;
};

// Whatever fails, there is the old file or the new one, and a message when it is the old one.
TEST_F(Failing_Program, LeavesTheOldFileOrTheNewOne) {
    for (const Work& o : m_aoWork) {
        for (const char* sKind : {"open", "close", "write", "fsync", "rename", "malloc"}) {
            const bool bMany = sKind == "malloc"s;
            unsigned uRuns = 0;
            for (unsigned u = 1;; u += bMany ? 1 + u / 16 : 1, ++uRuns) {
                SCOPED_TRACE(o.sCommand + ' ' + sKind + ' ' + std::to_string(u));
                const Outcome oOutcome = RunFailing(o, sKind, u);
                const std::string sResult = Result(o, oOutcome);
                ASSERT_EQ(LeftBehind(), "");
                if (!fs::exists("reached")) break;
                ASSERT_TRUE(oOutcome.iExit == 0 || oOutcome.iExit == 2) << oOutcome.iExit;
                if (oOutcome.iExit == 0) {
                    ASSERT_EQ(sResult, o.sNew);
                    continue;
                }
                ASSERT_NE(oOutcome.sErr, "");
                // What was appended but perhaps is not on the disk yet is there, and told.
                const bool bAppended = o.sOld.starts_with("PK") && sResult == o.sNew;
                ASSERT_TRUE(o.sTarget.empty() || sResult == o.sOld || bAppended);
            }
            // An append renames nothing, and what is extracted need not be on the disk at once.
            const bool bAppends = o.sOld.starts_with("PK") && sKind == "rename"s;
            const bool bExtracts = o.sCommand.starts_with("zip extract") && sKind == "fsync"s;
            EXPECT_TRUE(uRuns > 0 || bAppends || bExtracts || o.sTarget.empty())
                << o.sCommand << ' ' << sKind;
        }
    }
}

// Killed at any write; or interrupted, when nothing is left behind either.
TEST_F(Failing_Program, CanBeKilled) {
    // What is ignored as under nohup does not end it.
    const Work& oFirst = m_aoWork[0];
    ToDisk(oFirst.sTarget, oFirst.sOld);
    const std::string sVariables = "trap '' HUP; FAIL_CALL=1:1 LD_PRELOAD=" VOK_FAIL_SHIM " ";
    EXPECT_EQ(Run(oFirst.sCommand, g_sTree, sVariables).iExit, 0);
    EXPECT_NE(OnDisk(oFirst.sTarget), oFirst.sOld);
    for (const int iSignal : {9, 2, 15, 1, 3}) {
        for (const Work& o : m_aoWork) {
            for (unsigned u = 1;; ++u) {
                SCOPED_TRACE(o.sCommand + ' ' + std::to_string(iSignal) + ' ' + std::to_string(u));
                const Outcome oOutcome = RunFailing(o, std::to_string(iSignal), u);
                if (!fs::exists("reached")) break;
                EXPECT_NE(oOutcome.iExit, 0);
                const std::string sResult = Result(o, oOutcome);
                if (o.sTarget.empty()) continue;
                if (iSignal != 9) {
                    EXPECT_EQ(oOutcome.iExit, 128 + iSignal);
                    EXPECT_EQ(LeftBehind(), "");
                    EXPECT_TRUE(sResult == o.sOld);
                    continue;
                }
                for (const auto& oEntry : fs::directory_iterator(".")) {
                    if (oEntry.path().filename().string().starts_with(".vok-")) {
                        fs::remove(oEntry.path());
                    }
                }
                if (sResult == o.sOld) continue;
                // Only an append is made in place: the old archive is there, and the next one
                // works.
                ASSERT_TRUE(o.sOld.starts_with("PK") && sResult.starts_with(o.sOld));
                EXPECT_EQ(Run("zip test x.zip").iExit, 1);
                EXPECT_TRUE(Has(OnDisk("out"), "one: good\n"));
                EXPECT_TRUE(Has(OnDisk("out"), " behind the archive"));
                EXPECT_EQ(Run("zip add x.zip two").iExit, 0);
                EXPECT_EQ(Run("zip test x.zip").sOut, "one: good\ntwo: good\n");
            }
        }
    }
}

#endif

}  // namespace
}  // namespace vok
