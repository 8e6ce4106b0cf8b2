// SPDX-License-Identifier: MIT
// Archives of other programs are read, and other programs take ours. What is not installed is
// left out.
#include "tests/zip/zip_support.h"

namespace vok {
namespace {

bool Has(const std::string& sTool) {
    return std::system(("command -v " + sTool + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a shell command; what it printed goes along with a failure.
bool Runs(const std::string& sCommand) {
    if (std::system(("(" + sCommand + ") >log 2>&1").c_str()) == 0) return true;
    ADD_FAILURE() << sCommand << "\n" << OnDisk("log").substr(0, 2000);
    return false;
}

// A tool, and what it is to do with x.zip.
struct Tool {
    const char* sName;
    const char* sCommand;
};

constexpr Tool CHECKERS[] = {
    {"unzip", "unzip -t x.zip"},
    {"zipinfo", "zipinfo -v x.zip"},
    {"7z", "7z t x.zip"},
    {"python3",
     "python3 -c 'import zipfile; z = zipfile.ZipFile(\"x.zip\"); assert z.testzip() is None'"},
    {"bsdtar", "cat x.zip | LC_ALL=C.UTF-8 bsdtar -tf -"},
};

// Tells the members of x.zip as another program sees them, one line each: name and CRC-32.
constexpr char LIST[] =
    "python3 -c 'import zipfile\n"
    "for i in zipfile.ZipFile(\"x.zip\").infolist(): print(i.filename, i.CRC)' > list";

TEST_F(Zip_Test, OthersTakeOurArchives) {
    const Members oMembers = {{"empty", ""},
                              {"text.txt", Noise(500, 4)},
                              {"folder/", ""},
                              {"folder/large", Noise(700000, 8)},
                              {"folder/zeros", std::string(3000000, 0)},
                              {"\xC3\xBC.txt", "umlaut"},
                              {"\xE2\x82\xAC.txt", "euro sign"}};
    struct Form {
        const char* sWhat;
        const char* sMode;
        std::string sBefore;
        u2_t uMethod;
    };
    WriteZip("old.zip", {{"old", "1"}, {"older", Noise(100, 8)}}, "w", "old comment");
    const std::string sOld = OnDisk("old.zip");
    for (const Form& oForm :
         {Form{"new", "w", "", ZIP_DEFLATED}, Form{"stored", "w", "", ZIP_STORED},
          Form{"appended", "a", sOld, ZIP_DEFLATED}, Form{"appended stored", "a", sOld, ZIP_STORED},
          Form{"cut append", "a", sOld + sOld.substr(0, 50), ZIP_DEFLATED}}) {
        ToDisk("x.zip", oForm.sBefore);
        WriteZip("x.zip", oMembers, oForm.sMode, "a comment", oForm.uMethod);
        for (const Tool& oTool : CHECKERS) {
            EXPECT_TRUE(!Has(oTool.sName) || Runs(oTool.sCommand)) << oForm.sWhat;
        }
        if (!Has("python3")) continue;
        ASSERT_TRUE(Runs(LIST));
        std::string sListed;
        Zip_Archive oZip("x.zip");
        for (bool b = oZip.GoToFirstFile(); b; b = oZip.GoToNextFile()) {
            const Zip_FileInfo oInfo = oZip.GetCurrentFileInfo();
            sListed += oInfo.m_oName.CStr() + " "s + std::to_string(oInfo.m_uCrc) + "\n";
        }
        EXPECT_EQ(OnDisk("list"), sListed) << oForm.sWhat;
    }
    ToDisk("x.zip", "#!/bin/sh\necho a stub\nexit 0\n");
    WriteZip("x.zip", oMembers, "a");
    for (const Tool& oTool : CHECKERS) {
        // Reading on from a pipe begins at the first byte.
        if (oTool.sName == "bsdtar"s) continue;
        EXPECT_TRUE(!Has(oTool.sName) || Runs(oTool.sCommand));
    }
    // Into a pipe, where nothing can be patched.
    if (Has("mkfifo")) {
        ASSERT_EQ(std::system("mkfifo p && { cat p > x.zip & }"), 0);
        WriteZip("p", oMembers);
        Zip_Archive oPiped;
        for (unsigned u = 0; u < 100 && Raised([&] { oPiped.Open("x.zip"); }) != NOTHING_RAISED;
             ++u) {
            sys::SleepMs(20);  // until the other end has it all
        }
        EXPECT_EQ(ReadAll(oPiped), oMembers);
        ASSERT_TRUE(oPiped.LocateFile("folder/large"));
        EXPECT_EQ(oPiped.GetCurrentFileInfo().m_uFlags & 8u, 8u) << "sizes behind the data";
        for (const Tool& oTool : CHECKERS) {
            EXPECT_TRUE(!Has(oTool.sName) || Runs(oTool.sCommand)) << "piped";
        }
    }
    Zip_Archive oZip("x.zip", "w");
    for (unsigned u = 0; u < 65535; ++u) AddMember(oZip, "m" + std::to_string(u), "");
    oZip.Close();
    for (const char* sCommand : {"7z l x.zip", "cat x.zip | bsdtar -tf -"}) {
        const std::string sTool = sCommand[0] == '7' ? "7z" : "bsdtar";
        EXPECT_TRUE(!Has(sTool) || Runs(sCommand)) << "65,535 members";
    }
}

// Makers of x.zip from the folder "in", which is the current one.
constexpr Tool MAKERS[] = {
    {"zip", "zip -r ../x.zip ."},
    {"zip", "zip -r -0 ../x.zip ."},
    {"zip", "zip -r - . | cat > ../x.zip"},
    {"zip", "zip -r ../x.zip . && echo 'of zip PK' | zip -z ../x.zip"},
    {"zip", "zip -r ../y.zip . && (echo 'a stub'; cat ../y.zip) > ../x.zip"},
    {"zip", "zip -r ../y.zip . && (echo 'a stub'; cat ../y.zip) > ../x.zip && zip -A ../x.zip"},
    {"7z", "7z a -tzip ../x.zip ."},
    {"7z", "7z a -tzip -mx=0 ../x.zip ."},
    {"bsdtar", "bsdtar -cf ../x.zip --format=zip *"},
    {"bsdtar", "bsdtar -cf - --format=zip * | cat > ../x.zip"},
    {"bsdtar", "bsdtar -cf ../x.zip --format=zip --options zip:compression=store *"},
    {"python3", "python3 -m zipfile -c ../x.zip *"},
    {"python3",
     "python3 -c '\n"
     "import zipfile, os, sys\n"
     "class Pipe:\n"
     "    def __init__(self, f): self.f = f\n"
     "    def write(self, b): return self.f.write(b)\n"
     "    def flush(self): self.f.flush()\n"
     "z = zipfile.ZipFile(Pipe(open(\"../x.zip\", \"wb\")), \"w\", zipfile.ZIP_DEFLATED)\n"
     "z.comment = b\"comment PK\\5\\6\"\n"
     "for d, _, fs in os.walk(\".\"):\n"
     "    for f in fs:\n"
     "        p = os.path.relpath(os.path.join(d, f), \".\")\n"
     "        i = zipfile.ZipInfo(p)\n"
     "        i.comment, i.extra = b\"member\", b\"\\x34\\x12\\2\\0xy\"\n"
     "        i.compress_type = len(p) % 2 * 8\n"
     "        with z.open(i, \"w\", force_zip64=True) as o: o.write(open(p, \"rb\").read())\n"
     "z.close()'"},
};

TEST_F(Zip_Test, WeTakeTheArchivesOfOthers) {
    const std::map<std::string, std::string> oFiles = {
        {"empty", ""},
        {"short", "s"},
        {"text", Noise(200000, 3)},
        {"noise", Noise(300000, 8)},
        {"deep/er/zeros", std::string(1000000, 0)},
        {"deep/\xC3\xA4\xE2\x82\xAC\xE6\x97\xA5", "a name in UTF-8"},
        {"\xC3\xA9t\xC3\xA9", "a name of code page 437"},
    };
    std::filesystem::create_directories("in/deep/er");
    for (const auto& [sName, sBytes] : oFiles) ToDisk("in/" + sName, sBytes);
    for (const Tool& oTool : MAKERS) {
        if (!Has(oTool.sName)) continue;
        SCOPED_TRACE(oTool.sCommand);
        std::remove("x.zip");
        ASSERT_TRUE(Runs("export LC_ALL=C.UTF-8; cd in && "s + oTool.sCommand));
        std::map<std::string, std::string> oRead;
        EXPECT_EQ(Raised([&] {
                      for (const auto& [sName, sBytes] : ReadZip("x.zip")) {
                          const bool bFolder = sName.back() == '/';
                          EXPECT_TRUE(Zip_IsSafeName(sName));
                          if (!bFolder)
                              oRead[sName.substr(sName.rfind("./", 0) == 0 ? 2 : 0)] = sBytes;
                      }
                  }),
                  NOTHING_RAISED);
        EXPECT_TRUE(oRead == oFiles);
    }
    if (!Has("python3")) return;
    ASSERT_TRUE(
        Runs("python3 -c 'import zipfile\n"
             "z = zipfile.ZipFile(\"x.zip\", \"w\")\n"
             "for i in range(65535): z.writestr(\"m%d\" % i, str(i))\n"
             "z.close()'"));
    const Members oMany = ReadZip("x.zip");
    ASSERT_EQ(oMany.size(), 65535u);
    EXPECT_EQ(oMany[54321], (std::pair<std::string, std::string>("m54321", "54321")));
}

TEST_F(Zip_Test, OthersNeedingMoreAreRefusedByName) {
    ToDisk("secret", Noise(5000, 2));
    const std::pair<Tool, const char*> oCases[] = {
        {{"zip", "zip -P pw x.zip secret"}, "is encrypted"},
        {{"7z", "7z a -tzip -mm=BZip2 x.zip secret"}, "is compressed by method 12, which is not"},
        {{"7z", "7z a -tzip -mm=LZMA x.zip secret"}, "is compressed by method 14, which is not"},
        {{"7z", "7z a -tzip -ppw -mem=AES256 x.zip secret"}, "is encrypted"},
    };
    for (const auto& [oTool, sError] : oCases) {
        if (!Has(oTool.sName)) continue;
        std::remove("x.zip");
        ASSERT_TRUE(Runs(oTool.sCommand));
        const std::string sRaised = Raised([] { (void)ReadZip("x.zip"); });
        EXPECT_EQ(sRaised.rfind("member \"secret\" of zip archive \"x.zip\" "s + sError, 0), 0u)
            << oTool.sCommand << ": " << sRaised;
    }
}

TEST_F(Zip_Test, GzipInterchange) {
    if (!Has("gzip")) GTEST_SKIP();
    const std::string sPlain = Noise(300000, 5);
    File("file.gz", "wz").Write(sPlain.data(), sPlain.size());
    Zip_File("stream.gz", "wz").Write(sPlain.data(), sPlain.size());
    ToDisk("plain", sPlain);
    EXPECT_TRUE(Runs("gzip -t file.gz stream.gz && gzip -dc stream.gz | cmp - plain"));
    ASSERT_TRUE(Runs("gzip -9 -c plain > theirs.gz"));
    Arr<char> oRead;
    Zip_File("theirs.gz").Read(oRead, File_Stream::ALL);
    EXPECT_TRUE(Content(oRead) == sPlain);
    File("theirs.gz", "rz").Read(oRead, File_Stream::ALL);
    EXPECT_TRUE(Content(oRead) == sPlain);
}

}  // namespace
}  // namespace vok
