// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <thread>

#include "tests/file/file_support.h"

namespace vok {
namespace {

using Sleeps = std::vector<unsigned>;
const Sleeps TRANSFER_WAITS = {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024};

struct Mode {
    const char* sAttributes;
    const char* sResult;   // "old" after "XY" was written; null: not for writing
    const char* sReading;  // what is read from the start then; null: not for reading
    bool bCreates;
};

TEST_F(File_Test, Modes) {
    const Mode oModes[] = {
        {nullptr, nullptr, "old", false}, {"r", nullptr, "old", false},
        {"", nullptr, "old", false},      {"rt", nullptr, "old", false},
        {"ru?", nullptr, "old", false},   {"w", "XY", nullptr, true},
        {"wu", "XY", nullptr, true},      {"wtb", "XY", nullptr, true},
        {"w+", "XY", "XY", true},         {"rw", "XYd", "XYd", false},
        {"r+u", "XYd", "XYd", false},     {"+", "XYd", "XYd", false},
        {"a", "oldXY", nullptr, true},    {"a+", "oldXY", "oldXY", true},
        {"ra", "oldXY", "oldXY", true},   {"TRw+s", "XY", "XY", true},
    };
    for (const Mode& oMode : oModes) {
        SCOPED_TRACE(oMode.sAttributes != nullptr ? oMode.sAttributes : "(null)");
        std::filesystem::remove("file");
        File oFile;
        EXPECT_EQ(oFile.Open("file", oMode.sAttributes, false), oMode.bCreates);
        oFile.Close();
        ToDisk("file", "old");
        oFile.Open("file", oMode.sAttributes);
        const std::string sResult = oMode.sResult != nullptr ? oMode.sResult : "old";
        EXPECT_EQ(Failing([&] { oFile.Write("XY"); }),
                  oMode.sResult != nullptr ? "" : "file \"file\" is not open for write");
        EXPECT_EQ(oFile.Size(), static_cast<i3_t>(sResult.size()));
        oFile.Seek(0);
        Arr<char> oArr;
        EXPECT_EQ(Failing([&] { oFile.Read(oArr, File::ALL); }),
                  oMode.sReading != nullptr
                      ? ""
                      : "unexpected end of file in \"file\": errno=EBADF (Bad file number)");
        EXPECT_EQ(Content(oArr), oMode.sReading != nullptr ? oMode.sReading : "");
        oFile.Close();
        EXPECT_EQ(OnDisk("file"), sResult);
    }
}

// Reads, writes and moves at random, against bytes and a position of our own. What is read in a row
// passes the border of the buffer at every place there is.
void AgainstAModel(const char* sAttributes, unsigned uSeed) {
    std::mt19937 oRandom(uSeed);
    const std::string sMode = sAttributes;
    const bool bGzip = sMode.find('z') != std::string::npos;
    const bool bWrite = sMode.find_first_of("wa+") != std::string::npos;
    const bool bAppend = sMode.find('a') != std::string::npos;
    const bool bRead = sMode.find_first_of("r+") != std::string::npos;
    std::string sModel = sMode.find('w') == std::string::npos ? Noise(200'000, 8, uSeed) : "";
    if (bGzip && !bWrite) {
        File("file", "wz").Write(sModel.data(), sModel.size());
    } else {
        ToDisk("file", sModel);
    }
    File oFile("file", sAttributes);
    std::size_t uAt = static_cast<std::size_t>(oFile.Tell());
    std::string sBytes;
    for (int iStep = 0; iStep < 400; ++iStep) {
        const std::size_t uSize =
            RandomBelow(oRandom, RandomBelow(oRandom, 4) == 0 ? 100'000 : 300);
        switch (RandomBelow(oRandom, 5)) {
            case 0:
                if (!bRead) break;
                sBytes.resize(uSize);
                sBytes.resize(oFile.Read(sBytes.data(), uSize, true));
                ASSERT_EQ(sBytes, uAt < sModel.size() ? sModel.substr(uAt, uSize) : "");
                uAt += sBytes.size();
                break;
            case 1:
                if (!bWrite) break;
                sBytes = Noise(uSize, 8, static_cast<unsigned>(iStep));
                oFile.Write(sBytes.data(), uSize);
                if (bAppend) uAt = sModel.size();
                if (sModel.size() < uAt + uSize) sModel.resize(uAt + uSize);
                sModel.replace(uAt, uSize, sBytes);
                uAt += uSize;
                break;
            case 2: {
                if (bGzip && bWrite) break;
                const std::size_t uTo =
                    RandomBelow(oRandom, static_cast<unsigned>(sModel.size() + 1));
                const auto iTo = static_cast<i3_t>(uTo);
                const int iWhence = static_cast<int>(RandomBelow(oRandom, bGzip ? 2 : 3));
                const i3_t aiFrom[] = {0, static_cast<i3_t>(uAt), static_cast<i3_t>(sModel.size())};
                oFile.Seek(iTo - aiFrom[iWhence], iWhence);
                uAt = uTo;
                break;
            }
            case 3: oFile.Flush(); break;
            default: ASSERT_TRUE(bGzip || oFile.Size() == static_cast<i3_t>(sModel.size()));
        }
        ASSERT_EQ(oFile.Tell(), static_cast<i3_t>(uAt)) << "step " << iStep;
    }
    oFile.Close();
    Arr<char> oAll;
    File("file", bGzip ? "rz" : "r").Read(oAll, File::ALL);
    EXPECT_EQ(Content(oAll), sModel);
}

TEST_F(File_Test, AgainstAModel) {
    for (const char* s : {"r", "ru", "w", "wu", "w+", "r+", "r+u", "a", "a+", "rz", "wz"}) {
        SCOPED_TRACE(s);
        for (unsigned uSeed = 1; uSeed <= 5; ++uSeed) AgainstAModel(s, uSeed);
    }
    // In front of the file, and a way back that is longer than any.
    ToDisk("file", "0123456789");
    File oFile("file", "r");
    char c;
    oFile.Read(&c, 1);
    EXPECT_EQ(Raised([&] { oFile.Seek(-1); }),
              "file seek to position 18446744073709551615 in mode 0 failed: errno=EINVAL (Invalid "
              "argument)\n");
    EXPECT_THROW(oFile.Seek(std::numeric_limits<i3_t>::min(), File::FROM_POSITION), Msg_Exception);
    EXPECT_EQ(oFile.Tell(), 1);
    EXPECT_EQ(File::Size("file"), 10);
    EXPECT_EQ(File::Size("missing"), -1);
}

TEST_F(File_Test, ClosedFile) {
    File oFile;
    char cByte = 0;
    Arr<char> oArr;
    oFile.Close();
    const std::string sNothing = "object points to nothing\n";
    const std::function<void()> aoUses[] = {
        [&] { oFile.Read(&cByte, 1); }, [&] { oFile.Read(oArr, 1); }, [&] { oFile.Seek(0); },
        [&] { (void)oFile.Tell(); },    [&] { oFile.Flush(); },       [&] { (void)oFile.Size(); },
    };
    for (const auto& oUse : aoUses) EXPECT_EQ(Raised(oUse), sNothing);
    EXPECT_EQ(Raised([&] { oFile.Write("x"); }), "file \"\" is not open for write\n");
    EXPECT_FALSE(oFile.Open(nullptr));
    EXPECT_FALSE(oFile.Open("", "w"));
    EXPECT_EQ(oFile.Name(), nullptr);

    oFile.Open("file", "w+");
    EXPECT_EQ(Raised([&] { oFile.Write(nullptr, 1); }), sNothing);
    EXPECT_EQ(Raised([&] { oFile.Read(nullptr, 1); }), "null pointer assignment\n");
    EXPECT_FALSE(oFile.Open(nullptr)) << "does nothing";
    EXPECT_TRUE(oFile.IsOpen());
}

TEST_F(File_Test, OpeningIsRepeated) {
    const std::pair<const char*, std::size_t> oCases[] = {
        {"r", 4},  {nullptr, 4}, {"Tr", 0}, {"TRr", 1}, {"TrRR", 2},
        {"rR", 8}, {"rRR", 16},  {"rT", 4}, {"TTr", 0}, {"TrRRRRRRRRRRRRRRRRRR", 4096},
    };
    for (const auto& [sAttributes, uRetries] : oCases) {
        const std::string sLetters = sAttributes != nullptr ? sAttributes : "r";
        SCOPED_TRACE(sLetters);
        s_uSleeps.clear();
        const u3_t uOpen = File::OpenFiles();
        File oFile;
        EXPECT_EQ(Raised([&, s = sAttributes] { oFile.Open("missing", s); }),
                  "could not open file \"missing\" with attributes \"" + sLetters + "\", " +
                      std::to_string(uOpen) +
                      " files open: errno=ENOENT (No such file or directory)\n");
        EXPECT_FALSE(oFile.IsOpen());
        EXPECT_EQ(File::OpenFiles(), uOpen);
        ASSERT_EQ(s_uSleeps.size(), uRetries);
        for (std::size_t u = 0; u < s_uSleeps.size(); ++u) EXPECT_EQ(s_uSleeps[u], 5 + 10 * u);
    }

    // What appears meanwhile is opened.
    s_uSleeps.clear();
    s_pOnSleep = [] {
        if (s_uSleeps.size() == 3) ToDisk("missing", "here");
    };
    EXPECT_TRUE(File().Open("missing"));
    EXPECT_EQ(s_uSleeps, (Sleeps{5, 15, 25}));

    // Gzip cannot do both, and waiting does not teach it.
    s_uSleeps.clear();
    EXPECT_FALSE(File().Open("missing", "w+z", false));
    EXPECT_TRUE(s_uSleeps.empty());
    EXPECT_EQ(OnDisk("missing"), "here");
}

TEST_F(File_Test, DirectoriesAreMadeForWriting) {
    const std::string sDeep = "a/b/c/file";
    EXPECT_FALSE(File().Open(sDeep.c_str(), "Tr", false));
    EXPECT_FALSE(std::filesystem::exists("a"));
    EXPECT_TRUE(File().Open(sDeep.c_str(), "w"));
    EXPECT_TRUE(std::filesystem::exists(sDeep));
    EXPECT_EQ(Raised([&] { File oFile("a/b", "Tw"); }).substr(0, 19), "could not open file");
}

TEST_F(File_Test, SharingBetweenOpenFiles) {
    // Whether one who asks for nothing gets past one who denies.
    constexpr bool bFree = !sys::IS_WINDOWS;
    const std::tuple<const char*, const char*, bool> oCases[] = {
        // clang-format off
        {"Tr", "Tr", true},    {"Tr", "Tw", false},  {"Tr", "Ta", false},  {"Tw", "Tr", false},
        {"Tw", "Tw", false},   {"Ta+", "Tr", false}, {"Trz", "Tw", false}, {"Twz", "Tr", false},
        {"Tws", "Trs", true},  {"Tws", "Tws", true}, {"Twsz", "Trs", true},
        {"Tr", "Tws", bFree},  {"Tws", "Tr", bFree}, {"Trs", "Tw", bFree}, {"Twsz", "Tr", bFree},
        // clang-format on
    };
    const std::string sPath = "file";
    for (const auto& [sFirst, sSecond, bAllowed] : oCases) {
        SCOPED_TRACE(std::string(sFirst) + " " + sSecond);
        ToDisk(sPath, "old");
        File oFirst(sPath.c_str(), sFirst);
        const std::string sBefore = OnDisk(sPath);
        File oSecond;
        const std::string sError = Raised([&, s = sSecond] { oSecond.Open(sPath.c_str(), s); });
        EXPECT_EQ(oSecond.IsOpen(), bAllowed);
        if (bAllowed) continue;
        EXPECT_TRUE(Has(sError, "errno=EACCES (Permission denied)"));
        EXPECT_EQ(OnDisk(sPath), sBefore) << "nothing emptied by an open that fails";
        oFirst.Close();
        EXPECT_TRUE(oSecond.Open(sPath.c_str(), sSecond));
    }
}

TEST_F(File_Test, ShortReadsAreAskedForAgain) {
    ToDisk("file", "abc");
    File oFile("file", "rs");
    char sFive[6] = {};
    EXPECT_EQ(oFile.Read(sFive, 5, true), 3u);
    EXPECT_TRUE(s_uSleeps.empty());
    EXPECT_EQ(Raised([&] { oFile.Read(sFive, 5); }), "unexpected end of file in \"file\"\n");
    EXPECT_EQ(s_uSleeps, TRANSFER_WAITS);

    // Somebody else goes on writing.
    s_uSleeps.clear();
    s_pOnSleep = [] { std::ofstream("file", std::ios::app) << s_uSleeps.size(); };
    EXPECT_EQ(oFile.Read(sFive, 5), 5u);
    EXPECT_STREQ(sFive, "12345");
    EXPECT_EQ(s_uSleeps.size(), 5u);

    s_pOnSleep = nullptr;
    oFile.Seek(1);
    Arr<char> oArr;
    oArr.Add("<", 1);
    // Into an array what there is, however much is asked for.
    EXPECT_EQ(oFile.Read(oArr, 2147483648u, true), 7u);
    EXPECT_EQ(Content(oArr), "<bc12345");
    EXPECT_LT(oArr.Capacity(), 0x40000u);
    oArr.Truncate(1);
    oFile.Seek(1);
    EXPECT_EQ(oFile.Read(oArr, File::ALL, true), 7u);
    EXPECT_EQ(Content(oArr), "<bc12345");
}

TEST_F(File_Test, LargeTransfersPlainAndGzip) {
    const std::string sBytes = Noise(0x800000 + 0x12345, 8);  // more than one chunk
    for (const std::string sKind : {"", "z", "u"}) {
        SCOPED_TRACE(sKind);
        File oFile("large", ("w" + sKind).c_str());
        EXPECT_EQ(oFile.Write(sBytes.data(), sBytes.size()), sBytes.size());
        EXPECT_EQ(oFile.Tell(), static_cast<i3_t>(sBytes.size()));
        oFile.Open("large", ("r" + sKind).c_str());
        std::string sBack(sBytes.size() + 10, '\0');
        EXPECT_EQ(oFile.Read(sBack.data(), sBack.size(), true), sBytes.size());
        sBack.resize(sBytes.size());
        EXPECT_TRUE(sBack == sBytes);
        oFile.Seek(0);
        Arr<char> oArr;
        EXPECT_EQ(oFile.Read(oArr, File::ALL), sBytes.size());
        EXPECT_TRUE(Content(oArr) == sBytes);
    }
}

// "hello gzip\n", made by another program.
constexpr char GZIP[] =
    "1F 8B 08 00 00 00 00 00 02 FF CB 48 CD C9 C9 57 48 AF CA 2C E0 02 00 39 7C 63 56 0B 00 00 00";

TEST_F(File_Test, GzipOfOthersAndDamage) {
    const std::string sPath = "file.gz";
    const std::string sGood = Bytes(GZIP);
    const std::string sText = "hello gzip\n";
    Arr<char> oArr;

    ToDisk(sPath, sGood + sGood);  // members one after the other are one text
    File oFile(sPath.c_str(), "rz");
    oFile.Read(oArr, File::ALL);
    EXPECT_EQ(Content(oArr), sText + sText);
    EXPECT_EQ(oFile.Size(), static_cast<i3_t>(2 * sGood.size()));
    EXPECT_NE(Raised([&] { oFile.Seek(0, File::FROM_END); }), NOTHING_RAISED);
    EXPECT_THROW(oFile.Seek(std::numeric_limits<i3_t>::max(), File::FROM_POSITION), Msg_Exception);
    oFile.Seek(i3_t{5} << 30);  // farther than some builds of zlib can count
    EXPECT_EQ(oFile.Tell(), i3_t{5} << 30);
    oFile.Seek(i3_t{1} << 62);  // a claim that must cost nothing
    EXPECT_EQ(oFile.Tell(), i3_t{1} << 62);
    oFile.Seek(-(i3_t{1} << 62) + 7, File::FROM_POSITION);
    oFile.Read(oArr, 3);
    EXPECT_EQ(Content(oArr), "zip");
    oFile.Close();

    ToDisk(sPath, sText);  // no gzip at all
    oFile.Open(sPath.c_str(), "rz");
    oFile.Read(oArr, File::ALL);
    EXPECT_EQ(Content(oArr), sText);

    std::string sBadCrc = sGood;
    sBadCrc[sGood.size() - 8] ^= 1;
    for (const std::string& sBad : {sBadCrc, sGood.substr(0, 20), sGood.substr(0, 26)}) {
        oFile.Close();
        ToDisk(sPath, sBad);
        oFile.Open(sPath.c_str(), "rz");
        EXPECT_EQ(Raised([&] { oFile.Read(oArr, File::ALL); }).substr(0, 22),
                  "unexpected end of file");
        // Read in pieces the error comes in the place of the end.
        oFile.Open(sPath.c_str(), "rz");
        EXPECT_NE(Raised([&] {
                      char cByte;
                      while (oFile.Read(&cByte, 1, true) == 1) {
                      }
                  }),
                  NOTHING_RAISED);
    }

    oFile.Open(sPath.c_str(), "wz");
    oFile.Write("one,");
    oFile.Flush();
    oFile.Open(sPath.c_str(), "az");
    oFile.Write("two");
    oFile.Open(sPath.c_str(), "rz");
    oFile.Read(oArr, File::ALL);
    EXPECT_EQ(Content(oArr), "one,two");
}

TEST_F(File_Test, FullDisk) {
    if (File::Size("/dev/full") < 0) GTEST_SKIP() << "no such device";
    const u3_t uOpen = File::OpenFiles();
    const std::string sLost =
        "bytes not written: \"/dev/full\": errno=ENOSPC (No space left on device)\n";
    File oFile("/dev/full", "wsu");
    EXPECT_EQ(Raised([&] { oFile.Write("abc"); }), "file write error after position 0, 3 " + sLost);
    EXPECT_EQ(s_uSleeps, TRANSFER_WAITS);
    oFile.Close();
    oFile.Open("/dev/full", "ws");
    oFile.Write("abc");
    EXPECT_EQ(Raised([&] { oFile.Flush(); }), "file write error after position 0, 3 " + sLost);
    EXPECT_EQ(Raised([&] { oFile.Close(); }), "file write error after position 0, 3 " + sLost);
    EXPECT_FALSE(oFile.IsOpen());
    EXPECT_EQ(File::OpenFiles(), uOpen);
    oFile.Close();

    oFile.Open("/dev/full", "wsz");
    oFile.Write("abc");
    EXPECT_EQ(Raised([&] { oFile.Close(); }), "file write error after position 3, 0 " + sLost);
    {
        File oSilent("/dev/full", "ws");
        oSilent.Write("abc");
    }
    EXPECT_EQ(File::OpenFiles(), uOpen);
}

// A disk that fails must not look like an end, wherever short reads are allowed.
TEST_F(File_Test, FailingDisk) {
    if (sys::IS_WINDOWS || File::Size("/proc/self/mem") < 0) GTEST_SKIP() << "no file that fails";
    for (const char* sAttributes : {"rs", "rsu", "rsz"}) {
        SCOPED_TRACE(sAttributes);
        Arr<char> oArr;
        char cByte = 0;
        const std::function<void(File&)> aoReads[] = {
            [&](File& o) { o.Read(&cByte, 1, true); },
            [&](File& o) { o.Read(oArr, 10); },
            [&](File& o) { o.Read(oArr, File::ALL); },
        };
        for (const auto& oRead : aoReads) {
            File oFile("/proc/self/mem", sAttributes);
            EXPECT_EQ(Raised([&] { oRead(oFile); }),
                      "unexpected end of file in \"/proc/self/mem\": errno=EIO (I/O error)\n");
        }
    }
}

// Two that append to one file take turns; nobody writes over what the other wrote.
TEST_F(File_Test, AppendersTakeTurns) {
    for (const char* sAttributes : {"as", "asu", "a+s"}) {
        ToDisk("log", "0");
        File oFirst("log", sAttributes), oSecond("log", sAttributes);
        for (const char* s : {"1", "3"}) {
            oFirst.Write(s);
            oFirst.Flush();
            oSecond.Write("2");
            oSecond.Flush();
        }
        EXPECT_EQ(OnDisk("log"), "01232") << sAttributes;
    }
    std::filesystem::remove("log");
    File oFirst("log", "asz"), oSecond("log", "asz");
    for (File* p : {&oFirst, &oSecond}) {
        p->Write(p == &oFirst ? "1" : "2");
        p->Close();
    }
    Arr<char> oArr;
    File("log", "rz").Read(oArr, File::ALL);
    EXPECT_EQ(Content(oArr), "12");
}

// Nobody waits for more than was asked for.
TEST_F(File_Test, Pipes) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "no such pipes";
    ASSERT_EQ(std::system("mkfifo pipe"), 0);
    const std::string sText = Noise(100'000, 8);
    std::atomic<bool> bRead{false};
    bool bInTime = false;
    std::thread oWriter([&] {
        File oFile("pipe", "ws");
        oFile.Write("abc");
        EXPECT_EQ(oFile.Tell(), -1);
        oFile.Flush();
        for (int i = 0; i < 5000 && !bRead; ++i) sys::SleepMs(1);
        bInTime = bRead;
        oFile.Write(sText.data(), sText.size());
        oFile.Close();
    });
    File oFile("pipe", "rs");
    Arr<char> oArr;
    char aFirst[3];
    EXPECT_EQ(oFile.Read(aFirst, 3), 3u);
    bRead = true;
    EXPECT_EQ(oFile.Read(oArr, File::ALL), sText.size());
    oWriter.join();
    EXPECT_TRUE(bInTime);
    EXPECT_EQ(std::string(aFirst, 3) + Content(oArr), "abc" + sText);
    EXPECT_EQ(oFile.Tell(), -1);
    EXPECT_EQ(oFile.Size(), -1);
    EXPECT_EQ(Raised([&] { oFile.Seek(0); }),
              "file seek to position 0 in mode 0 failed: errno=ESPIPE (Illegal seek)\n");
}

TEST_F(File_Test, OpenFilesAreCounted) {
    const u3_t uOpen = File::OpenFiles();
    File oFiles[3];
    for (unsigned u = 0; u < 3; ++u) {
        oFiles[u].Open(std::to_string(u).c_str(), u == 2 ? "wz" : "w");
        EXPECT_EQ(File::OpenFiles(), uOpen + u + 1);
    }
    EXPECT_GE(File::PeakOpenFiles(), uOpen + 3);
    EXPECT_EQ(Raised([] { File::CheckAllClosed(); }),
              "still " + std::to_string(uOpen + 3) + " files open\n");
    oFiles[0].Open("0", "r");  // closes first
    EXPECT_EQ(File::OpenFiles(), uOpen + 3);
    const u3_t uPeak = File::PeakOpenFiles();
    for (File& oFile : oFiles) oFile.Close();
    EXPECT_EQ(File::OpenFiles(), uOpen);
    EXPECT_EQ(File::PeakOpenFiles(), uPeak);
    (void)Msg_Capture::TakeConsole();
    File::ReportOpenFiles();
    EXPECT_EQ(Msg_Capture::TakeConsole(),
              std::to_string(uOpen) + " open files (peak " + std::to_string(uPeak) + ")\n|");
}

}  // namespace
}  // namespace vok
