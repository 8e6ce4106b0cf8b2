// SPDX-License-Identifier: MIT
// What differs, and how documents are changed.
#include <cctype>
#include <functional>

#include "tests/tools/program_support.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"

namespace vok {
namespace {

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
    for (const std::string& sFile : Affordable(FILES, 1)) {
        const std::string sName = sFile.substr(0, sFile.find(' '));
        for (const auto& [sCommand, oChange] : CASES) {
            ASSERT_EQ(Run("convert made.dgraph " + sFile + " --dgraph-version 1.2.0").iExit, 0);
            const std::string sKind = Run("info " + sName).sOut.substr(0, 60);
            std::string sLine(sCommand);
            const Outcome o = Run(sLine.replace(sLine.find("FILE"), 4, sName));
            ASSERT_EQ(o.iExit, 0) << sLine << o.sErr;
            Data oExpected = oMake();
            oChange(oExpected);
            EXPECT_EQ(HashOf(sName), std::string(oExpected.Hash().ToHex().CStr())) << sLine;
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

}  // namespace
}  // namespace vok
