// SPDX-License-Identifier: MIT
// Zip archives.
#include "tests/tools/program_support.h"
#include "vok/zip/archive.h"

namespace vok {
namespace {

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

}  // namespace
}  // namespace vok
