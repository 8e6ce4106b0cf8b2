// The program as a shell sees it: output, messages, exit status, files.
#include "tests/support.h"

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
    static Outcome Run(const std::string& sArguments, const std::string& sIn = {}) {
        ToDisk("in", sIn);
        const int iStatus =
            std::system((s_sProgram + ' ' + sArguments + " <in >out 2>err").c_str());
#ifdef WEXITSTATUS
        return {WEXITSTATUS(iStatus), OnDisk("out"), OnDisk("err")};
#else
        return {iStatus, OnDisk("out"), OnDisk("err")};
#endif
    }
    static std::string Sample(const char* sName) {
        return Native(VOK_SAMPLES "/"s + sName);
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
                                "b.zip --to xml --zip", "b.dump.zip --to dump --zip"}) {
            const std::string sFile = std::string(sTo).substr(0, std::string(sTo).find(' '));
            EXPECT_EQ(Run("convert a.xml "s + sTo).iExit, 0) << sTo << OnDisk("err");
            EXPECT_EQ(Run("convert "s + sFile + " c.xml").iExit, 0) << sTo << OnDisk("err");
            EXPECT_EQ(OnDisk("c.xml"), sText) << sTo;
            EXPECT_EQ(Run("diff a.xml " + sFile).iExit, 0) << sTo << OnDisk("out");
        }
    }
    EXPECT_NE(OnDisk("a.xml").find("für die Oberfläche"), std::string::npos);
    // Pipes, and versions.
    Outcome o = Run("convert - - --to dgraph --dgraph-version 1.2.7", g_sTree);
    EXPECT_EQ(o.sOut.substr(0, 12), "DGraphBin\1\2\7");
    o = Run("convert - - --to xml", o.sOut);
    EXPECT_EQ(o.iExit, 0);
    EXPECT_NE(o.sOut.find("<n dt:dt=\"r8\">0.1</n>"), std::string::npos);
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
    EXPECT_EQ(Run("show - /R/list", g_sTree).iExit, 1);
    EXPECT_EQ(LinesOnDisk("err"), "vok: no node at \"/R/list\"; \"/\" is the node \"R\"\n");
    const std::string sInfo = Run("info -", g_sTree).sOut;
    for (const char* s : {"format      xml\n", "nodes       10\n", "names       8\n",
                          "depth       3\n", "attributes  1\n", "  Tree      2\n"}) {
        EXPECT_NE(sInfo.find(s), std::string::npos) << s << sInfo;
    }
}

TEST_F(Program, FaultsHavePlaces) {
    ToDisk("good.xml", g_sTree);
    ToDisk("bad.xml", "<a>\n <b></c></a>");
    ToDisk("bad.dgraph", "DGraphBin\1\3\0"s + std::string(18, '\0') + "\1\0\0\0x"s);
    std::string sDeep;
    for (unsigned u = 0; u < 1000; ++u) sDeep += "<ä>";
    ToDisk("deep.xml", sDeep);
    const Outcome o = Run("check good.xml bad.xml bad.dgraph none deep.xml " + Sample("page.html"));
    EXPECT_EQ(o.iExit, 2) << "one was not there";
    EXPECT_EQ(Run("check good.xml bad.xml").iExit, 1);
    EXPECT_EQ(o.sOut.substr(0, o.sOut.find("none:")),
              "good.xml: good (xml, 10 nodes)\n"
              "bad.xml: byte 8, line 2, column 5, at /b[0]: no XML stream or stream is corrupted\n"
              "bad.dgraph: byte 35, at /: Dgraph_LoadDGraph: Invalid path specification! No index "
              "specified\n");
    EXPECT_NE(o.sOut.find("page.html: byte 18, line 2, column 12, at /p[0]: node \"p\" with wrong "
                          "data type: 'String'\n"),
              std::string::npos)
        << o.sOut;
    EXPECT_NE(o.sOut.find("/ä[0]/ ... 0]/ä[0]/"), std::string::npos) << o.sOut;
    EXPECT_EQ(Run("show bad.xml").iExit, 2);
    EXPECT_NE(OnDisk("err").find("vok: bad.xml: byte 8"), std::string::npos);
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
    EXPECT_NE(Run("convert --help").sOut.find("--dgraph-version"), std::string::npos);
}

TEST_F(Program, Differences) {
    ToDisk("a.xml", g_sTree);
    std::string sOther = g_sTree;
    sOther.replace(sOther.find(">1<"), 3, ">2<").replace(sOther.find("v='1'"), 5, "w='1'");
    ToDisk("b.xml", sOther);
    const Outcome o = Run("diff a.xml b.xml");
    EXPECT_EQ(o.iExit, 1);
    EXPECT_NE(o.sOut.find("/list[0]/n[0] value\n  < Integer 1\n  > Integer 2\n"), std::string::npos)
        << o.sOut;
    EXPECT_NE(o.sOut.find("/ attribute v\n  < \"1\"\n  > (none)\n"), std::string::npos) << o.sOut;
    EXPECT_EQ(Run("diff -q a.xml b.xml").sOut, "");
    EXPECT_EQ(Run("diff a.xml a.xml").iExit, 0);
}

TEST_F(Program, Archives) {
    fs::create_directories("d/e");
    ToDisk("d/e/one", std::string(100000, 'x'));
    ToDisk("two", "2");
    EXPECT_EQ(Run("zip add a.zip d two").iExit, 0) << OnDisk("err");
    EXPECT_EQ(Run("zip add a.zip a.zip in --store").iExit, 0) << OnDisk("err");  // never itself
    EXPECT_NE(Run("zip list a.zip").sOut.find("5 members"), std::string::npos) << OnDisk("out");
    EXPECT_EQ(Run("zip test a.zip").sOut,
              "d/: good\nd/e/: good\nd/e/one: good\ntwo: good\nin: good\n");
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
        EXPECT_NE(OnDisk("err").find("\"d/e/one\" would follow a link out"), std::string::npos);
    }
    std::string sBroken = OnDisk("a.zip");
    sBroken[sBroken.find("two") + 3] ^= 1;  // the byte of a stored member's data, or its header
    ToDisk("broken.zip", sBroken);
    EXPECT_NE(Run("zip test broken.zip").iExit, 0);
    // No limit stands in the way of a large member, real or not.
    for (const std::size_t u : {sBroken.find("d/e/one") - 8, sBroken.rfind("d/e/one") - 22}) {
        sBroken.replace(u, 4, "\xFE\xFF\xFF\xFF");
    }
    ToDisk("broken.zip", sBroken);
    EXPECT_NE(Run("zip test broken.zip").sOut.find("has another size"), std::string::npos)
        << OnDisk("out");
}

}  // namespace
}  // namespace vok
