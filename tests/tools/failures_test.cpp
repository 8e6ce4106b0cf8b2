// SPDX-License-Identifier: MIT
// Large and hostile input, full disks, killed processes: what is written is whole or not there.
#include <chrono>

#include "tests/tools/program_support.h"
#include "vok/file/file.h"
#include "vok/records/writer.h"

namespace vok {
namespace {

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
    const char* const QUESTIONS[] = {"show - \"//*\"", "show --json - \"//*\""};
    for (const char* s : Affordable(QUESTIONS, 1)) {
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
