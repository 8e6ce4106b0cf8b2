// SPDX-License-Identifier: MIT
// What is done with files and folders by their paths.
#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>

#include "tests/file/file_support.h"
#include "vok/base/mem.h"
#include "vok/file/path.h"
#include "vok/file/tree.h"

namespace vok {
namespace {

namespace fs = std::filesystem;

using Disk_Test = File_Test;

// Every name below the current folder, folders with a "/" behind them.
Texts Names() {
    Texts asName;
    for (const auto& o : fs::recursive_directory_iterator(".")) {
        const std::u8string s = o.path().lexically_relative(".").generic_u8string();
        asName.emplace_back(s.begin(), s.end());
        if (o.is_directory() && !o.is_symlink()) asName.back() += '/';
    }
    std::sort(asName.begin(), asName.end());
    return asName;
}

TEST_F(Disk_Test, CopiesBytesTimeAndMode) {
    // Nothing, less than a piece, several steps of the system's own copy.
    for (const std::size_t uSize : {std::size_t{0}, std::size_t{5}, std::size_t{20} << 20}) {
        const std::string sBytes = Repeat(Noise(1 << 20, 8), 20).substr(0, uSize);
        ToDisk("größe", sBytes);
        if (!sys::IS_WINDOWS) fs::permissions(ToPath("größe"), fs::perms(0640));
        File::Touch("größe", 1234567890.0);
        std::vector<std::pair<u3_t, u3_t>> aoTold;
        EXPECT_TRUE(File::Copy("größe", "new/folder/copy", [&](u3_t uDone, u3_t uTotal) {
            aoTold.emplace_back(uDone, uTotal);
            return true;
        }));
        EXPECT_EQ(OnDisk("new/folder/copy"), sBytes);
        const File_Info o = File::Info("new/folder/copy");
        EXPECT_EQ(o.m_dModified, 1234567890.0);
        EXPECT_EQ(o.m_uSize, uSize);
        EXPECT_EQ(o.m_uMode, sys::IS_WINDOWS ? 0666u : 0640u);
        ASSERT_FALSE(aoTold.empty());
        EXPECT_TRUE(std::is_sorted(aoTold.begin(), aoTold.end()));
        EXPECT_EQ(aoTold.back(), std::pair(u3_t{uSize}, u3_t{uSize}));
        EXPECT_EQ(Names(), (Texts{"größe", "new/", "new/folder/", "new/folder/copy"}));
    }
}

TEST_F(Disk_Test, ACopyThatIsEndedOrFailsLeavesWhatWasThere) {
    ToDisk("from", "new");
    ToDisk("to", "old");
    fs::create_directory("folder");
    EXPECT_FALSE(File::Copy("from", "to", [](u3_t, u3_t) { return false; }));
    EXPECT_THROW(
        File::Copy("from", "to", [](u3_t, u3_t) -> bool { throw std::runtime_error("no"); }),
        std::runtime_error);
    struct Case {
        const char* sFrom;
        const char* sTo;
        const char* sWhy;
    };
    const Case CASES[] = {{"none", "to", "ENOENT"},     {"from", "folder", "EISDIR"},
                          {"folder", "to", "EISDIR"},   {"from", "from", "EINVAL"},
                          {"from", "./from", "EINVAL"}, {"", "to", "ENOENT"},
                          {"from", "", "EINVAL"}};
    for (const Case& o : CASES) {
        const std::string s = Failing([&] { File::Copy(o.sFrom, o.sTo); });
        EXPECT_TRUE(Has(s, std::string("could not copy file \"") + o.sFrom + "\" to \"" + o.sTo +
                               "\": errno=" + o.sWhy));
    }
    EXPECT_EQ(OnDisk("to"), "old");
    EXPECT_EQ(Names(), (Texts{"folder/", "from", "to"}));
    EXPECT_TRUE(File::Copy("from", "to"));
    EXPECT_EQ(OnDisk("to"), "new");
}

TEST_F(Disk_Test, RenamesAndRemoves) {
    ToDisk("a", "1");
    ToDisk("b", "2");
    EXPECT_TRUE(Has(Failing([] { File::Rename("a", "b", false); }),
                    "could not rename file \"a\" into \"b\": errno=EEXIST"));
    EXPECT_EQ(OnDisk("b"), "2");
    File::Rename("a", "b");
    EXPECT_EQ(OnDisk("b"), "1");
    File::Rename("b", "c", false);
    EXPECT_TRUE(Has(Failing([] { File::Rename("a", "b"); }), "errno=ENOENT"));
    EXPECT_TRUE(File::Remove("c"));
    EXPECT_FALSE(File::Remove("c"));
    fs::create_directory("d");
    EXPECT_TRUE(Has(Failing([] { File::Remove("d"); }), "could not remove file \"d\": errno="));
    File::Rename("d", "e");
    EXPECT_EQ(Names(), Texts{"e/"});
}

TEST_F(Disk_Test, FilesMoveToAnotherFileSystem) {
    const char* const sOther = "/dev/shm";
    if (!fs::is_directory(sOther)) GTEST_SKIP() << "no other file system";
    ToDisk("a", "bytes");
    const Str oThere = File::Temp("vok-test-", sOther);
    EXPECT_TRUE(Has(Failing([&] { File::Rename("a", oThere, false); }), "errno=EEXIST"));
    File::Rename("a", oThere);
    EXPECT_EQ(OnDisk(oThere.CStr()), "bytes");
    EXPECT_FALSE(File::Exists("a"));
    File::Remove(oThere);
}

// Some files tell no size, and not every system call reads them.
TEST_F(Disk_Test, CopiesWhatItsSizeDoesNotTell) {
    const char* const sSource = "/proc/version";
    if (!fs::exists(sSource)) GTEST_SKIP() << "no such files";
    EXPECT_EQ(File::Info(sSource).m_uSize, 0u);
    EXPECT_TRUE(File::Copy(sSource, "copy"));
    EXPECT_EQ(OnDisk("copy"), OnDisk(sSource));
    EXPECT_FALSE(OnDisk("copy").empty());
}

TEST_F(Disk_Test, MakesAndRemovesFolders) {
    EXPECT_TRUE(File::MkDir("a/b/größe/"));
    EXPECT_FALSE(File::MkDir("a/b/größe"));
    ToDisk("file", "");
    for (const char* sPath : {"file", "file/below", ""}) {
        EXPECT_TRUE(Has(Failing([&] { File::MkDir(sPath); }),
                        std::string("could not create directory \"") + sPath + "\": errno="));
    }
    ToDisk("a/x", "");
    EXPECT_EQ(Failing([] { File::RmDir("a"); }), "directory \"a\" is not empty, file \"b\" found");
    EXPECT_TRUE(Has(Failing([] { File::RmDir("file"); }), "could not remove file \"file\""));
    EXPECT_TRUE(File::RmDir("a/b/größe"));
    EXPECT_FALSE(File::RmDir("a/b/größe"));
    EXPECT_EQ(Names(), (Texts{"a/", "a/b/", "a/x", "file"}));
}

TEST_F(Disk_Test, TellsWhatIsThere) {
    ToDisk("file", "12345");
    File::MkDir("folder");
    File::Touch("file", 1e9 + 0.5);
    EXPECT_EQ(File::Info("file").m_eKind, File_Info::Kind::File);
    EXPECT_EQ(File::Info("file").m_uSize, 5u);
    EXPECT_EQ(File::Info("file").m_dModified, 1e9 + 0.5);
    EXPECT_TRUE(File::Info("file").m_bMayWrite);
    EXPECT_EQ(File::Info("folder").m_eKind, File_Info::Kind::Folder);
    for (const char* sPath : {"none", "file/none", "none/none", ""}) {
        EXPECT_FALSE(File::Info(sPath).IsThere()) << sPath;
        EXPECT_FALSE(File::Exists(sPath)) << sPath;
    }
    EXPECT_TRUE(Has(Failing([] { File::Touch("none", 0); }),
                    "could not touch file \"none\" to time 1970-01-01 00:00:00: errno=ENOENT"));
    EXPECT_TRUE(Has(Failing([] { File::Touch("file", std::nan("")); }), "errno=EINVAL"));
    if (sys::IS_WINDOWS) return;
    fs::create_symlink("file", "link");
    fs::create_symlink("nowhere", "dangling");
    EXPECT_EQ(File::Info("link").m_eKind, File_Info::Kind::File);
    EXPECT_EQ(File::Info("link", false).m_eKind, File_Info::Kind::Link);
    EXPECT_FALSE(File::Exists("dangling"));
    EXPECT_TRUE(File::Remove("link"));
    EXPECT_TRUE(File::Exists("file"));
    // The copy stands in the place of a link, not in that of its target.
    ToDisk("other", "other");
    File::Copy("other", "dangling");
    EXPECT_EQ(File::Info("dangling", false).m_eKind, File_Info::Kind::File);
    EXPECT_FALSE(File::Exists("nowhere"));
}

TEST_F(Disk_Test, TemporaryNamesAreNobodyElses) {
    const Str oFile = File::Temp("größe-", ".");
    const Str oOther = File::Temp("größe-", ".");
    const Str oFolder = File::TempDir("größe-", "./");
    EXPECT_FALSE(oFile == oOther);
    EXPECT_TRUE(File_Path::Name(oFile.View()).starts_with("größe-"));
    EXPECT_TRUE(File::Info(oFile).IsFile() && File::Info(oFolder).IsFolder());
    if (!sys::IS_WINDOWS) {
        EXPECT_EQ(File::Info(oFile).m_uMode, 0600u);
        EXPECT_EQ(File::Info(oFolder).m_uMode, 0700u);
    }
    EXPECT_TRUE(Has(Failing([] { (void)File::Temp("x", "none"); }),
                    "could not open file \"none/x\" with attributes \"w\""));
    EXPECT_TRUE(Has(Failing([] { (void)File::TempDir("x", "none"); }),
                    "could not create directory \"none/x\": errno=ENOENT"));
    const Str oSystem = File::Temp();
    EXPECT_TRUE(File::Remove(oSystem));
}

// ---- walking ----------------------------------------------------------------

// What a walk comes to, and what it tells, which begins with "!".
Texts Walk(const char* sFolder, File_Tree::Options o = {},
           const std::function<void(File_Tree&)>& oVisit = {}) {
    Texts asSeen;
    o.m_oTold = [&](const Str& oPath, u2_t uError) {
        asSeen.push_back("!" + std::string(oPath.View()) + " " + std::to_string(uError));
    };
    File_Tree oTree(sFolder, o);
    while (oTree.Next()) {
        asSeen.push_back(std::string(oTree.Below()) + (oTree.Info().IsFolder() ? "/" : ""));
        EXPECT_EQ(oTree.Name(), File_Path::Name(oTree.Path().View()));
        EXPECT_EQ(oTree.Depth(), 1u + static_cast<std::size_t>(std::count(
                                          asSeen.back().begin(), asSeen.back().end() - 1, '/')));
        if (oVisit) oVisit(oTree);
    }
    EXPECT_FALSE(oTree.Next());
    return asSeen;
}

void MakeFiles() {
    for (const char* s : {"t/b/2.txt", "t/b/1.csv", "t/a.txt", "t/c/d/e/f.csv", "t/ä"}) {
        File oFile(s, "w");
    }
    File::MkDir("t/empty");
}

TEST_F(Disk_Test, WalksInTheOrderOfNames) {
    MakeFiles();
    const Texts ALL = {"a.txt", "b/",     "b/1.csv",     "b/2.txt", "c/",
                       "c/d/",  "c/d/e/", "c/d/e/f.csv", "empty/",  "ä"};
    EXPECT_EQ(Walk("t"), ALL);
    EXPECT_EQ(Walk("t/"), ALL);
    EXPECT_EQ(Walk("t/empty"), Texts{});
    using Verdict = File_Tree::Verdict;
    File_Tree::Options o;
    o.m_oFilter = [](const File_Tree& oTree) {
        if (oTree.Name() == "b") return Verdict::Leave;
        return File_Path::Ext(oTree.Name()) == ".csv" ? Verdict::Take : Verdict::Below;
    };
    EXPECT_EQ(Walk("t", o), Texts{"c/d/e/f.csv"});
    EXPECT_EQ(Walk("t", {}, [](File_Tree& oTree) { oTree.Leave(); }),
              (Texts{"a.txt", "b/", "c/", "empty/", "ä"}));
    for (const char* sPath : {"none", "t/a.txt", ""}) {
        EXPECT_TRUE(Has(Failing([&] { File_Tree oTree(sPath); }),
                        std::string("source directory \"") + sPath + "\" not found: errno="));
    }
}

TEST_F(Disk_Test, WhatVanishesIsTold) {
    MakeFiles();
    const Texts asSeen = Walk("t", {}, [](File_Tree& oTree) {
        if (oTree.Name() == "a.txt") fs::remove_all("t/empty");  // listed, and gone
        if (oTree.Name() == "c") fs::remove_all("t/c");          // about to be entered
        if (oTree.Name() == "1.csv") fs::remove("t/b/2.txt");
    });
    EXPECT_EQ(asSeen,
              (Texts{"a.txt", "b/", "b/1.csv", "!t/b/2.txt 2", "c/", "!t/c 2", "!t/empty 2", "ä"}));
}

TEST_F(Disk_Test, LinksAreFollowedOnlyWhenAskedAndNeverBack) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "links need rights there";
    MakeFiles();
    fs::create_directory_symlink("..", "t/b/up");
    fs::create_directory_symlink("../../c", "t/c/d/back");
    fs::create_directory_symlink("b", "t/to_b");
    fs::create_symlink("nowhere", "t/x");
    File_Tree::Options o;
    o.m_oFilter = [](const File_Tree& oTree) {
        const bool bPlain = oTree.Info().IsFile() || oTree.Name() == "e";
        return bPlain ? File_Tree::Verdict::Below : File_Tree::Verdict::Take;
    };
    EXPECT_EQ(Walk("t", o), (Texts{"b/", "b/up", "c/", "c/d/", "c/d/back", "empty/", "to_b", "x"}));
    o.m_bFollowLinks = true;
    EXPECT_EQ(Walk("t", o),
              (Texts{"b/", "b/up/", "!t/b/up 40", "c/", "c/d/", "c/d/back/", "!t/c/d/back 40",
                     "empty/", "to_b/", "to_b/up/", "!t/to_b/up 40", "x"}));
    // A name that is no UTF-8 leads nowhere by its text.
    std::ofstream("t/b/\xFF");
    EXPECT_TRUE(Has(Joined(Walk("t")), "!t/b/ÿ 84"));
}

TEST_F(Disk_Test, DepthTakesNoStack) {
    std::string sPath = "deep";
    // Beyond 260 on Windows, of which some imitations are slow.
    while (sPath.size() < (sys::IS_WINDOWS ? 600u : 1500u)) sPath += "/d";
    File::MkDir(sPath.c_str());
    EXPECT_EQ(Walk("deep").size(), (sPath.size() - 4) / 2);
    std::vector<Str> aoPath = {"deep"};
    for (File_Tree oTree("deep"); oTree.Next();) aoPath.push_back(oTree.Path());
    for (; !aoPath.empty(); aoPath.pop_back()) EXPECT_TRUE(File::RmDir(aoPath.back()));
}

TEST_F(Disk_Test, RefusedMemoryLeavesNothingBehind) {
    ToDisk("from", "bytes");
    for (unsigned uNth = 1;; ++uNth) {
        Mem_Probe oProbe;
        const bool bRefused = Mem_Probe::HasRefused(uNth, [] { File::Copy("from", "to"); });
        if (!bRefused) break;
        EXPECT_EQ(Names(), Texts{"from"});
        ASSERT_LT(uNth, 100u);
    }
    EXPECT_EQ(OnDisk("to"), "bytes");
}

}  // namespace
}  // namespace vok
