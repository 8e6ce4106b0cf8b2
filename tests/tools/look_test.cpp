// SPDX-License-Identifier: MIT
// Bytes beside their meaning, what is left of damaged documents, pages for a browser.
#include <cctype>

#include "tests/tools/program_support.h"

namespace vok {
namespace {

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

// A document that would like to be more than data.
const std::string g_sHostile =
    "<R><a k='&lt;img src=x onerror=document.title=1&gt;'>&lt;/script&gt;&lt;script&gt;"
    "document.title='taken'&lt;/script&gt;</a><_x003C_b_x003E_>&lt;!--</_x003C_b_x003E_>"
    "<list><i>1</i><i>two</i><to CDNodeIDREF='ID1'/></list><t CDNodeID='ID1'/></R>";

// The data of a page.
std::string DataOf(const std::string& sPage) {
    const std::string sBegin = "<script type=\"application/json\" id=\"data\">";
    const std::size_t uData = sPage.find(sBegin) + sBegin.size();
    return sPage.substr(uData, sPage.find('<', uData) - uData);
}

TEST_F(Program, Pages) {
    ToDisk("t.xml", g_sHostile);
    ASSERT_EQ(Run("show --html t.xml -o t.html").iExit, 0) << OnDisk("err");
    const std::string sPage = OnDisk("t.html");
    EXPECT_LT(sPage.size(), 100u * 1024);
    const std::string sData = DataOf(sPage);
    EXPECT_TRUE(sPage.substr(sPage.find(sData) + sData.size()).starts_with("</script>"));
    EXPECT_TRUE(Has(sData, "\\u003c/script>"));
    EXPECT_TRUE(Has(sData, "[6,12,3,7],"));  // "to", a Link below node 3, to node 7
    EXPECT_EQ(Run("show --html t.xml").sOut, sPage);
    EXPECT_EQ(Run("show --html t.xml /list/i[1]").iExit, 0);
    EXPECT_EQ(Run("show --html t.xml /list/i").iExit, 2);
    EXPECT_EQ(Run("show --html t.xml /none").iExit, 1);
    EXPECT_EQ(Run("show t.xml -o x").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

TEST_F(Program, PagesWithBytes) {
    const auto oBytes = [&](const std::string& sFile) {
        EXPECT_EQ(Run("show --html --bytes " + sFile + " -o t.html").iExit, 0) << OnDisk("err");
        const std::string sData = DataOf(OnDisk("t.html"));
        return sData.substr(sData.find("\"bytes\""));
    };
    // Elements out of order are the nodes that they became.
    ToDisk("t.xml", "<R><b>1</b><a/><b>2</b></R>");
    EXPECT_EQ(oBytes("t.xml"),
              "\"bytes\":[[0,3,\"3c523e\"],[11,4,\"3c612f3e\"],[3,8,\"3c623e313c2f623e\"],"
              "[15,12,\"3c623e323c2f623e3c2f523e\"]]}");
    ToDisk("t16.xml", std::string("\xFE\xFF\0<\0R\0/\0>", 10));
    EXPECT_EQ(oBytes("t16.xml"), "\"bytes\":[[2,8,\"003c0052002f003e\"]]}");
    // Of what is wrapped the place in the document.
    ASSERT_EQ(Run("convert t.xml t.dgraph.gz").iExit, 0);
    const std::string sData = oBytes("t.dgraph.gz");
    EXPECT_TRUE(Has(sData, "[30,13,\"04000000525b305d0003000000\"]")) << sData;
    EXPECT_TRUE(Has(sData, "[43,13,\"04000000615b305d0000000000\"]")) << sData;
    ASSERT_EQ(Run("convert t.xml t.dump").iExit, 0);
    EXPECT_EQ(Run("show --html --bytes t.dump").iExit, 2);
    EXPECT_EQ(Run("show --bytes t.xml").iExit, 2);
}

TEST_F(Program, PagesOfDifferences) {
    ToDisk("a.xml", g_sHostile);
    std::string sOther = g_sHostile;
    sOther.replace(sOther.find(">two<"), 5, ">three<");
    ToDisk("b.xml", sOther);
    ASSERT_EQ(Run("diff --html a.xml b.xml -o d.html").iExit, 1) << OnDisk("err");
    EXPECT_EQ(DataOf(OnDisk("d.html")),
              "{\"a\":\"a.xml\",\"b\":\"b.xml\",\"differences\":["
              "{\"what\":\"value\",\"a\":\"/list[0]/i[1]\",\"b\":\"/list[0]/i[1]\","
              "\"old\":{\"type\":\"String\",\"value\":\"two\"},"
              "\"new\":{\"type\":\"String\",\"value\":\"three\"}}],\"more\":false}");
    const Outcome oEqual = Run("diff --html a.xml a.xml");
    EXPECT_EQ(oEqual.iExit, 0);
    EXPECT_TRUE(Has(DataOf(oEqual.sOut), "\"differences\":[]"));
    // Texts never end the script that they are in.
    sOther.replace(sOther.find("</a>"), 4, "!</a>");
    ToDisk("b.xml", sOther);
    const std::string sData = DataOf(Run("diff --html a.xml b.xml").sOut);
    EXPECT_TRUE(Has(sData, "\\u003c/script>\\u003cscript>document.title='taken'"));
    EXPECT_TRUE(sData.ends_with("\"more\":false}"));
    EXPECT_EQ(Run("diff --by-position -o p.xml a.xml b.xml").iExit, 2);
    EXPECT_EQ(LeftBehind(), "");
}

// Long texts are cut where people see two characters; where there are none, between code points.
TEST_F(Program, CutsWholeCharacters) {
    const std::string sLetter = "e\u0323\u0301";  // five bytes
    const Pair CASES[] = {
        {Repeat("a", 201), Repeat("a", 200)},
        {Repeat("\u00E4", 101), Repeat("\u00E4", 100)},
        {"a" + Repeat(sLetter, 41), "a" + Repeat(sLetter, 39)},
        {"a" + Repeat("\u0301", 200), "a" + Repeat("\u0301", 99)},
    };
    for (const auto& [sText, sShown] : CASES) {
        const std::string sBytes = "... (" + std::to_string(sText.size()) + " bytes)\"\n";
        const Outcome o = Run("show --plain -", "<R><a>" + sText + "</a></R>");
        EXPECT_EQ(o.sOut, "R\n  a String \"" + sShown + sBytes);
    }
}

#ifndef _WIN32
// On a terminal, which script(1) makes, what is printed goes through a pager.
TEST_F(Program, Pager) {
    if (Shell("script -qec true typescript >where 2>&1 </dev/null") != 0) {
        GTEST_SKIP() << "there is no script, or no terminal to be had";
    }
    ToDisk("t.xml", "<R><a>1</a></R>");
    const auto oShown = [&](const std::string& sEnvironment, const std::string& sCommand) {
        Shell("env -u NO_COLOR -u VOK_PAGER -u PAGER TERM=xterm " + sEnvironment +
              " script -qec '" + s_sProgram + ' ' + sCommand + "' typescript >out 2>&1 </dev/null");
        std::string s = OnDisk("out");
        std::erase(s, '\r');
        return s;
    };
    const std::string sPlain = "R\n  a String \"1\"\n";
    EXPECT_EQ(oShown("PAGER=\"sed s/^/:/\"", "show --plain t.xml"), ":R\n:  a String \"1\"\n");
    EXPECT_EQ(oShown("VOK_PAGER=\"sed s/^/:/\" PAGER=false", "get t.xml /a"), ":1\n");
    EXPECT_EQ(oShown("PAGER=\"sed s/^/:/\"", "--no-pager show --plain t.xml"), sPlain);
    EXPECT_EQ(oShown("PAGER=", "show --plain t.xml"), sPlain);
    // Others, and what goes elsewhere, are not paged; colours are those of the terminal behind it.
    EXPECT_TRUE(Has(oShown("PAGER=\"sed s/^/:/\"", "check t.xml"), "t.xml: good"));
    EXPECT_EQ(oShown("PAGER=\"sed s/^/:/\"", "get t.xml /a >to; cat to"), "1\n");
    EXPECT_TRUE(Has(oShown("PAGER=\"sed s/^/:/\"", "show t.xml"), "\x1b[1m"));
    // It may end before all is printed, or not be there.
    std::string sMany = "<R>";
    for (int i = 0; i < 100000; ++i) sMany += "<a>1</a>";
    ToDisk("many.xml", sMany + "</R>");
    EXPECT_EQ(oShown("PAGER=\"head -1\"", "get many.xml /a"), "1\n");
    EXPECT_TRUE(Has(oShown("PAGER=no-such-pager", "get t.xml /a"), "no-such-pager"));
    // What is told on standard error comes nonetheless, and the status stays.
    EXPECT_TRUE(Has(oShown("PAGER=cat", "get t.xml /b || echo status $?"), "status 1\n"));
}

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

}  // namespace
}  // namespace vok
