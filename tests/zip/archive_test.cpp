// SPDX-License-Identifier: MIT
#include <zlib.h>

#include <functional>

#include "tests/zip/zip_support.h"

namespace vok {
namespace {

const Members TWO = {{"a.txt", "first"}, {"b/c.txt", Noise(300000, 5)}};

TEST_F(Zip_Test, WritesTheKnownBytes) {
    {
        Zip_Archive oZip("x.zip", "w");
        oZip.OpenNewFile("\xC3\xA4", {0x59788F21, 1, 0x20}, "\x34\x12\x01\0L"s, "\x34\x12\0\0"s,
                         "hi", ZIP_STORED);
        oZip.Write("abc");
        EXPECT_EQ(oZip.Tell(), 3);
        oZip.Close("end");
    }
    EXPECT_EQ(OnDisk("x.zip"),
              Bytes("50 4B 03 04 14 00 00 00 00 00 21 8F 78 59 C2 41 24 35 03 00 00 00 03 00 00 00 "
                    "01 00 05 00 84 34 12 01 00 4C 61 62 63 "
                    "50 4B 01 02 00 00 14 00 00 00 00 00 21 8F 78 59 C2 41 24 35 03 00 00 00 03 00 "
                    "00 00 01 00 04 00 02 00 00 00 01 00 20 00 00 00 00 00 00 00 84 34 12 00 00 68 "
                    "69 50 4B 05 06 00 00 00 00 01 00 01 00 35 00 00 00 27 00 00 00 03 00 65 6E "
                    "64"));
    Zip_Archive oZip("x.zip");
    const Zip_FileInfo oInfo = oZip.GetCurrentFileInfo();
    EXPECT_EQ(oInfo.m_oName, Str("\xC3\xA4"));
    EXPECT_EQ(oInfo.m_oComment, Str("hi"));
    EXPECT_EQ(oInfo.m_sExtra, "\x34\x12\0\0"s);
    EXPECT_EQ(oInfo.m_uExternalAttributes, 0x20u);
    const Zip_Date oDate = Zip_DateFields(oInfo.m_uDosDate);
    EXPECT_EQ(oDate.m_uYear * 10000 + oDate.m_uMonth * 100 + oDate.m_uDay, 20241124u);
    EXPECT_EQ(oDate.m_uHour * 10000 + oDate.m_uMinute * 100 + oDate.m_uSecond, 175702u);
    Arr<char> oExtra;
    oZip.GetCurrentFileExtrafield(oExtra);
    EXPECT_EQ(Content(oExtra), "\x34\x12\x01\0L"s);
    EXPECT_EQ(oZip.GetGlobalInfo().m_uCommentSize, 3u);
    EXPECT_EQ(oZip.GetGlobalComment(), Str("end"));

    WriteZip("empty.zip", {});
    EXPECT_EQ(OnDisk("empty.zip"), "PK\5\6"s + std::string(18, 0));
    EXPECT_EQ(ReadZip("empty.zip"), Members());
    oZip.Open("empty.zip");
    EXPECT_FALSE(oZip.GoToFirstFile() || oZip.GoToNextFile() || oZip.LocateFile("a"));
    EXPECT_EQ(Raised([&] { oZip.OpenCurrentFile(); }),
              "current file of zip archive \"empty.zip\" is not open\n");
}

// Members of all sizes around those of buffers, written and read in pieces of all sizes.
TEST_F(Zip_Test, RoundTripsInPieces) {
    std::mt19937 oRandom(7);
    Members oMembers;
    for (const std::size_t uSize : {0u, 1u, 65535u, 65536u, 65537u, 196000u, 262144u, 700000u}) {
        const std::string s = std::to_string(uSize);
        oMembers.emplace_back("noise" + s, Noise(uSize, 8));
        oMembers.emplace_back("text" + s, Noise(uSize, 2));
    }
    for (const u2_t uMethod : {ZIP_STORED, ZIP_DEFLATED}) {
        for (const char* sMode : {"w", "a"}) {
            if (*sMode == 'a') ToDisk("x.zip", "no archive, but in front of one");
            Zip_Archive oZip("x.zip", sMode);
            for (const auto& [sName, sBytes] : oMembers) {
                oZip.OpenNewFile(sName.c_str(), {}, {}, {}, {}, uMethod,
                                 static_cast<int>(RandomBelow(oRandom, 11)) - 1);
                WriteInPieces(oZip, sBytes, oRandom);
                EXPECT_EQ(oZip.Tell(), static_cast<i3_t>(sBytes.size()));
            }
            oZip.Close();
            oZip.Open("x.zip");
            EXPECT_EQ(ReadAll(oZip), oMembers);
            for (const auto& [sName, sBytes] : oMembers) {
                ASSERT_TRUE(oZip.LocateFile(sName.c_str()));
                oZip.OpenCurrentFile();
                std::string sRead(sBytes.size(), 0);
                for (std::size_t u = 0; u < sBytes.size();) {
                    EXPECT_FALSE(oZip.Eof());
                    const std::size_t uPart =
                        1 + RandomBelow(oRandom, 1u << RandomBelow(oRandom, 20));
                    u += oZip.Read(sRead.data() + u, std::min(uPart, sBytes.size() - u));
                }
                EXPECT_TRUE(oZip.Eof());
                EXPECT_TRUE(sRead == sBytes) << sName;
                EXPECT_EQ(oZip.Read(sRead.data(), 1, true), 0u);
                EXPECT_EQ(Raised([&] { oZip.Read(sRead.data(), 1); }),
                          "unexpected end of file in \"x.zip\"\n");
            }
        }
    }
}

TEST_F(Zip_Test, SeeksInsideAMember) {
    WriteZip("x.zip", TWO);
    Zip_Archive oZip("x.zip");
    ASSERT_TRUE(oZip.LocateFile("b/c.txt"));
    EXPECT_FALSE(oZip.LocateFile("B/c.txt") || oZip.LocateFile(""));
    oZip.OpenCurrentFile();
    const std::string& sAll = TWO[1].second;
    std::mt19937 oRandom(3);
    i3_t iAt = 0;
    for (unsigned u = 0; u < 200; ++u) {
        const int iWhence = static_cast<int>(u % 2);
        const i3_t iOffset = static_cast<i3_t>(RandomBelow(oRandom, 500000)) - 150000;
        oZip.Seek(iOffset, iWhence);
        iAt =
            std::clamp<i3_t>(iOffset + (iWhence == 1 ? iAt : 0), 0, static_cast<i3_t>(sAll.size()));
        ASSERT_EQ(oZip.Tell(), iAt);
        char sBytes[100];
        const std::size_t uRead = oZip.Read(sBytes, 1 + RandomBelow(oRandom, 100), true);
        ASSERT_EQ(std::string(sBytes, uRead), sAll.substr(static_cast<std::size_t>(iAt), uRead));
        iAt += static_cast<i3_t>(uRead);
        Arr<char> oExtra;
        oZip.GoToFirstFile();
        oZip.GetCurrentFileExtrafield(oExtra);  // the open member does not mind
    }
    EXPECT_TRUE(oZip.CanSeek(0) && oZip.CanSeek(1) && !oZip.CanSeek(2));
    EXPECT_EQ(Raised([&] { oZip.Seek(0, 2); }),
              "feature not yet implemented: \"Zip_Archive::Seek(i3_t pos, SEEK_END)\"\n");
    EXPECT_EQ(Raised([&] { oZip.Seek(0, 3); }),
              "assertion failed: seekmode == SEEK_SET || seekmode == SEEK_CUR || seekmode == "
              "SEEK_END\n");
    EXPECT_EQ(Raised([&] { oZip.Read(&iAt, std::size_t{1} << 31); }),
              "assertion failed: vok::Msg::IsInt32(x)\n");
}

TEST_F(Zip_Test, RefusesWhatItsModeDoesNotAllow) {
    WriteZip("r.zip", TWO);
    Zip_Archive oZip;
    const std::string sRead = "zip file \"\" is not open for read\n";
    EXPECT_EQ(Raised([&] { oZip.GoToFirstFile(); }), sRead);
    EXPECT_EQ(Raised([&] { oZip.OpenNewFile("x"); }), "zip file \"\" is not open for write\n");
    oZip.Open("r.zip");
    char c;
    EXPECT_EQ(Raised([&] { oZip.Write("x"); }), "zip file \"r.zip\" is not open for write\n");
    for (const auto& oBody : std::vector<std::function<void()>>{
             [&] { oZip.Read(&c, 1); }, [&] { (void)oZip.Tell(); }, [&] { oZip.Seek(0); },
             [&] { (void)oZip.Eof(); }, [&] { oZip.CloseCurrentFile(); }}) {
        EXPECT_EQ(Raised(oBody), "current file of zip archive \"r.zip\" is not open\n");
    }
    oZip.Open("w.zip", "w");
    EXPECT_EQ(Raised([&] { oZip.Read(&c, 1); }), "zip file \"w.zip\" is not open for read\n");
    EXPECT_EQ(Raised([&] { oZip.Seek(0, 2); }), "zip file \"w.zip\" is not open for read\n");
    EXPECT_EQ(Raised([&] { oZip.Write("x"); }),
              "current file of zip archive \"w.zip\" is not open\n");
    const std::string sLong(65536, 'n');
    oZip.OpenNewFile(sLong.c_str() + 1);
    oZip.Write("open ");
    EXPECT_EQ(Raised([&] { oZip.OpenNewFile(sLong.c_str()); }),
              "assertion failed: size_filename == tmp\n");
    EXPECT_EQ(Raised([&] { oZip.OpenNewFile("n", {}, {}, {}, sLong.c_str()); }),
              "assertion failed: size_comment == tmp\n");
    EXPECT_EQ(Raised([&] { oZip.OpenNewFile("n", {}, {}, {}, {}, 12); }),
              "member \"n\" of zip archive \"w.zip\" is compressed by method 12, which is not "
              "supported\n");
    EXPECT_EQ(Trail([&] { oZip.OpenNewFile("n", {}, {}, {}, {}, 8, 10); }),
              "vok::Zip_Archive::OpenNewFile\n");
    oZip.Write("still");
    oZip.Close();
    EXPECT_EQ(ReadZip("w.zip"), (Members{{sLong.substr(1), "open still"}}))
        << "nothing was changed";
    EXPECT_EQ(Raised([&] { oZip.Open("none.zip"); }).substr(0, 67),
              "could not open file \"none.zip\" with attributes \"rb\", 0 files open: ");
    EXPECT_FALSE(oZip.IsOpen());
}

// Up to 65,535 members, found by name; one more is too many.
TEST_F(Zip_Test, ManyMembers) {
    for (const unsigned uCount : {65535u, 65536u}) {
        Zip_Archive oZip("x.zip", "w");
        for (unsigned u = 0; u < uCount; ++u) AddMember(oZip, std::to_string(u), "", ZIP_STORED);
        EXPECT_EQ(Raised([&] { oZip.Close(); }),
                  uCount == 65535 ? NOTHING_RAISED : "assertion failed: uTmp < 0x10000\n");
        if (uCount != 65535) break;
        oZip.Open("x.zip");
        EXPECT_EQ(oZip.GetGlobalInfo().m_uEntries, uCount);
        for (unsigned u = 0; u < uCount; u += 7) {
            ASSERT_TRUE(oZip.LocateFile(std::to_string(u).c_str()));
            ASSERT_EQ(oZip.GetCurrentFileInfo().m_oName, Str(std::to_string(u).c_str()));
        }
        Limits oLimits;
        oLimits.m_uZipEntries = uCount - 1;
        EXPECT_EQ(Raised([&] { oZip.Open("x.zip", "r", oLimits); }),
                  "limit \"zip entries\" of 65534 exceeded (raise Limits::m_uZipEntries)\n");
    }
}

// What an archive in memory says of its first member.
Zip_FileInfo FirstOf(const std::string& sZip) {
    Zip_Archive oZip;
    oZip.Open(sZip.data(), sZip.size());
    return oZip.GetCurrentFileInfo();
}

TEST_F(Zip_Test, NamesAndComments) {
    Zip_Archive oZip("x.zip", "w");
    // How a name and a comment are stored: in the code page while that can hold them, else in
    // Unicode.
    struct Stored {
        const char* sName;
        const char* sComment;
        u2_t uFlags;
        std::string sStoredName;
        std::string sExtra;  // of the central header, the CRC-32 left out
    };
    const Stored oStored[] = {
        {"\xC3\xBC\xE2\x96\x88", "\xC3\x9F", 0, "\x81\xDB", ""},
        {"\xC3\xBC\xE2\x82\xAC", "\xC3\x9F", 0x800, "\xC3\xBC\xE2\x82\xAC",
         "\x75\x70\x0A\0\1\xC3\xBC\xE2\x82\xAC"s},
        {"\xC3\xBC\xE2\x82\xAE", "", 0x800, "\xC3\xBC\xE2\x82\xAE",
         "\x75\x70\x0A\0\1\xC3\xBC\xE2\x82\xAE"s},
        {"plain", "\xE2\x82\xAC", 0, "plain", "\x75\x63\x08\0\1\xE2\x82\xAC"s},
    };
    for (const Stored& o : oStored) {
        oZip.OpenNewFile(o.sName, {}, {}, {}, o.sComment, ZIP_STORED);
        oZip.Write("x");
    }
    oZip.Close("\xC3\x9F");
    const std::string sZip = OnDisk("x.zip");
    oZip.Open("x.zip");
    for (const Stored& o : oStored) {
        SCOPED_TRACE(o.sName);
        ASSERT_TRUE(oZip.LocateFile(o.sName)) << "no two of them are one";
        const Zip_FileInfo oInfo = oZip.GetCurrentFileInfo();
        EXPECT_EQ(oInfo.m_oComment.View(), o.sComment);
        EXPECT_EQ(oInfo.m_uFlags, o.uFlags);
        EXPECT_EQ(sZip.substr(oInfo.m_uOffset + 30, o.sStoredName.size()), o.sStoredName);
        std::string sExtra(oInfo.m_sExtra);
        if (!sExtra.empty()) sExtra.erase(5, 4);
        EXPECT_EQ(sExtra, o.sExtra);
    }
    EXPECT_EQ(oZip.GetGlobalComment(), Str("\xC3\x9F"));
    oZip.Open(sZip.data(), sZip.size());
    EXPECT_EQ(oZip.GetGlobalComment(), Str("\xC3\x9F")) << "in memory as well";
    // The upper half of the code page, against the sum of what others make of it.
    std::string sUpper, sNames = ZipBytes({{std::string(128, 'n'), ""}});
    for (unsigned u = 128; u < 256; ++u) sUpper += static_cast<char>(u);
    const std::size_t uEntry = sNames.find("PK\1\2");
    sNames.replace(30, 128, sUpper).replace(uEntry + 46, 128, sUpper);
    const Str oUpper = FirstOf(sNames).m_oName;
    EXPECT_EQ(::crc32_z(0, reinterpret_cast<const Bytef*>(oUpper.CStr()), oUpper.Len()),
              0x3F4FC2B3u);
    EXPECT_TRUE(Has(ZipBytes({{oUpper.CStr(), ""}}), sUpper));
    // Unix makers who do not write UTF-8 write the code page.
    constexpr std::size_t SYSTEM = 5;
    sNames[uEntry + SYSTEM] = 3;
    EXPECT_EQ(FirstOf(sNames).m_oName, oUpper);
    // A field that belongs to another name does not count: the maker's program did not know it.
    std::string sRenamed = sZip;
    const std::size_t uFlags = sRenamed.find("PK\1\2", sRenamed.find("PK\1\2") + 1) + 9;
    sRenamed[uFlags] = 0;
    oZip.Open(sRenamed.data(), sRenamed.size());
    EXPECT_TRUE(oZip.LocateFile(oStored[1].sName)) << "by the field alone";
    sRenamed[uFlags + 37] = 'n';
    oZip.Open(sRenamed.data(), sRenamed.size());
    EXPECT_FALSE(oZip.LocateFile(oStored[1].sName));
    // Unix makers store both in UTF-8 and say nothing.
    std::string sUnix = ZipBytes({{"unix", ""}});
    const std::size_t uCentral = sUnix.find("PK\1\2");
    sUnix[uCentral + 5] = 3;
    sUnix[uCentral + 32] = 2;
    sUnix.insert(uCentral + 50, "\xC3\x9F");
    sUnix[sUnix.size() - 10] = static_cast<char>(sUnix[sUnix.size() - 10] + 2);
    EXPECT_EQ(FirstOf(sUnix).m_oComment, Str("\xC3\x9F"));
}

TEST_F(Zip_Test, SafetyAndTimes) {
    const std::pair<std::string_view, bool> oNames[] = {
        {"a", true},       {"a/b/", true},      {"a\\b", true},     {"./a", true},   {"..a", true},
        {"a..b/.c", true}, {"", false},         {"/a", false},      {"\\a", false},  {"..", false},
        {"a/../b", false}, {"a\\..\\b", false}, {"../a", false},    {"a/..", false}, {"C:a", false},
        {"c:\\a", false},  {"a/.. /b", false},  {"a\nb", false},    {"...", false},  {"ab:c", true},
        {"//host", false}, {"a/\x7F", false},   {"\xC3\xA4", true},
    };
    for (const auto& [sName, bSafe] : oNames) EXPECT_EQ(Zip_IsSafeName(sName), bSafe) << sName;
    const std::pair<u2_t, bool> oAttributes[] = {
        {0, true},           {0x81A40000, true},  {0x41ED0010, true},  {0xA1FF0000, false},
        {0x61B00000, false}, {0x11B00000, false}, {0xC1ED0000, false}, {0x420, false},
    };
    for (const auto& [uAttributes, bSafe] : oAttributes) {
        Zip_FileInfo oInfo;
        oInfo.m_oName = "a";
        oInfo.m_uExternalAttributes = uAttributes;
        EXPECT_EQ(Zip_IsSafeMember(oInfo), bSafe) << std::hex << uAttributes;
    }
    // Times to the second where the field for them is there, else those of the date.
    for (const double dSeconds : {0.0, -1.0, 1732471023.0, 2147483647.0, 2147483648.0}) {
        std::string sField = Zip_TimeField(dSeconds);
        Zip_FileInfo oInfo;
        oInfo.m_uDosDate = 0x59788F21;
        oInfo.m_sExtra = sField;
        EXPECT_EQ(Zip_Seconds(oInfo), sField.empty() ? 1732471022.0 : dSeconds);
        EXPECT_EQ(sField.empty(), dSeconds > 2147483647.0);
        if (sField.empty()) continue;
        sField[4] = 2;  // the only time is that of the last access
        oInfo.m_sExtra = sField;
        EXPECT_EQ(Zip_Seconds(oInfo), 1732471022.0);
    }
    EXPECT_EQ(Zip_DosDate(0), ZIP_DOS_EPOCH);
    EXPECT_EQ(Zip_DosDate(1732471023.5), 0x59788F21u);
    EXPECT_EQ(Zip_DosDate(1e12), 0xFF9FBF7Du);
}

// ---- appending ----------------------------------------------------------------

TEST_F(Zip_Test, Appends) {
    struct Case {
        const char* sStart;  // what the file holds at first
        bool bArchive;       // an archive behind that
        const char* sError;
    };
    const Case oCases[] = {
        {"", false, nullptr},
        {"", true, nullptr},
        {"#!/bin/sh\nexit\n", true, nullptr},
        {"some other file", false, nullptr},
        {"PK\3\4 cut", false, "invalid or corrupted zip file \"x.zip\"\n"},
    };
    for (const Case& oCase : oCases) {
        SCOPED_TRACE(oCase.sStart);
        const Members oOld = oCase.bArchive ? TWO : Members();
        const std::string sOld =
            oCase.sStart + (oCase.bArchive ? ZipBytes(TWO, "old comment") : "");
        ToDisk("x.zip", sOld);
        const Members oNew = {{"new", "1"}, {"a.txt", Noise(500000, 8)}, {"late", "2"}};
        const std::string sError = Raised([&] { WriteZip("x.zip", oNew, "a"); });
        if (oCase.sError != nullptr) {
            EXPECT_EQ(sError, oCase.sError);
            EXPECT_EQ(OnDisk("x.zip"), sOld);
            continue;
        }
        ASSERT_EQ(sError, NOTHING_RAISED);
        Members oAll = oOld;
        oAll.insert(oAll.end(), oNew.begin(), oNew.end());
        EXPECT_EQ(ReadZip("x.zip"), oAll);
        const std::string sNew = OnDisk("x.zip");
        EXPECT_EQ(sNew.substr(0, sOld.size()), sOld);
        {
            Zip_Archive oZip("x.zip");
            ASSERT_TRUE(oZip.LocateFile("a.txt"));
            EXPECT_EQ(CurrentBytes(oZip), oNew[1].second) << "the newer one of two";
        }
        Zip_Archive("x.zip", "a").Close();
        EXPECT_EQ(OnDisk("x.zip"), sNew) << "nothing added, nothing written";
        Zip_Archive("x.zip", "a").Close("other");
        EXPECT_EQ(ReadZip("x.zip"), oAll);
        EXPECT_EQ(Zip_Archive("x.zip").GetGlobalComment(), Str("other"));
        {
            Zip_Archive oZip("x.zip", "a");
            AddMember(oZip, "more", "3");
        }
        oAll.emplace_back("more", "3");
        EXPECT_EQ(ReadZip("x.zip"), oAll) << "the destructor closes";
    }
}

// Wherever an append is interrupted, the archive is what it was; and can be appended to again.
TEST_F(Zip_Test, AnInterruptedAppendLeavesTheOldArchive) {
    const std::string sNested = ZipBytes({{"inner", "i"}}, "PK\5\6 inner");
    // Whoever takes a part of a comment for the end would not see what is appended.
    ToDisk("x.zip", sNested);
    const std::string sRefused =
        "feature not supported: \"a zip archive's comment with an end record in it\"\n";
    EXPECT_EQ(Raised([] { WriteZip("x.zip", {{"n", ""}}, "a"); }), sRefused);
    EXPECT_EQ(OnDisk("x.zip"), sNested);
    const std::string sTwo = ZipBytes(TWO);
    ToDisk("x.zip", sTwo);
    EXPECT_EQ(Raised([] { WriteZip("x.zip", {{"n", ""}}, "a", "PK\5\6"); }), sRefused);
    EXPECT_EQ(OnDisk("x.zip"), sTwo) << "cut back";
    EXPECT_THROW(
        {
            Zip_Archive oZip("x.zip", "a");
            AddMember(oZip, "n", Noise(900000, 8), ZIP_STORED);
            EXPECT_GT(File::Size("x.zip"), i3_t(sTwo.size()));
            Msg::NodeIsEmpty();
        },
        Msg_Exception);
    EXPECT_EQ(OnDisk("x.zip"), sTwo) << "cut back";
    for (const char* sStub : {"", "stub"}) {
        const std::string sOld = sStub + ZipBytes(TWO, "PK 5 6");
        for (const bool bLarge : {false, true}) {
            ToDisk("x.zip", sOld);
            Members oNew = {{"nested.zip", sNested}, {"empty", ""}};
            if (bLarge) oNew.insert(oNew.begin(), {"large", Noise(400000, 8)});
            WriteZip("x.zip", oNew, "a", "new comment", ZIP_STORED);
            const std::string sNew = OnDisk("x.zip");
            for (std::size_t uCut = sOld.size(); uCut < sNew.size(); uCut += bLarge ? 997 : 1) {
                Zip_Archive oZip;
                oZip.Open(sNew.data(), uCut);
                ASSERT_EQ(oZip.GetGlobalInfo().m_uEntries, 2u) << uCut;
                ASSERT_EQ(oZip.GetGlobalInfo().m_uBehind, uCut - sOld.size());
                if (uCut % 8 == 0) {
                    ASSERT_EQ(ReadAll(oZip), TWO) << uCut;
                }
            }
            ToDisk("x.zip", sNew.substr(0, sOld.size() + 40));
            EXPECT_EQ(Zip_Archive("x.zip").GetGlobalInfo().m_uBehind, 40u);
            WriteZip("x.zip", {{"again", "x"}}, "a");
            EXPECT_EQ(ReadZip("x.zip"), (Members{TWO[0], TWO[1], {"again", "x"}}));
        }
    }
}

// Somebody else writes to the archive between the look at its directory and the first new member.
unsigned g_uWriteIn = 0;

TEST_F(Zip_Test, AnArchiveThatChangesIsNotAppendedTo) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "nobody else may write there";
    const auto oResize = [](void* p, std::size_t, std::size_t uSize) -> void* {
        if (g_uWriteIn != 0 && --g_uWriteIn == 0) {
            std::ofstream("x.zip", std::ios::app | std::ios::binary) << '!';
        }
        return std::realloc(p, uSize);
    };
    static void* (*s_pResize)(void*, std::size_t, std::size_t) = oResize;
    const Mem::Allocator oOld =
        Mem::SetAllocator({[](std::size_t u) { return s_pResize(nullptr, 0, u); }, oResize,
                           [](void* p, std::size_t) { std::free(p); }});
    const std::string sOld = ZipBytes(TWO);
    unsigned uNoticed = 0;
    for (unsigned u = 1; u < 100; ++u) {
        ToDisk("x.zip", sOld);
        g_uWriteIn = u;
        const std::string sError = Raised([] { Zip_Archive("x.zip", "a").Close(); });
        g_uWriteIn = 0;
        if (sError == "zip archive \"x.zip\" was changed by somebody else\n") ++uNoticed;
        const std::string sNow = OnDisk("x.zip");
        EXPECT_TRUE(sNow == sOld || sNow == sOld + '!');
    }
    EXPECT_NE(uNoticed, 0u);
    Mem::SetAllocator(oOld);
}

// ---- failures -----------------------------------------------------------------

// What no header could name is refused before it is written.
TEST_F(Zip_Test, FourGigabytesAreTooMuch) {
    Zip_Archive oZip("x.zip", "w");
    oZip.OpenNewFile("n");
    oZip.Write("x");
    for (const std::size_t uMore : {std::size_t{0xFFFFFFFE}, std::size_t{1} << 32}) {
        const std::string sError = Raised([&] { oZip.Write("", uMore); });
        EXPECT_TRUE(Has(sError, "\"n\""));
    }
    oZip.Close();
    EXPECT_EQ(ReadZip("x.zip"), (Members{{"n", "x"}})) << "nothing was changed";
    // An archive that ends just below them, most of it a hole.
    if (sys::IS_WINDOWS) GTEST_SKIP() << "no holes";
    constexpr u3_t DIRECTORY = 0xFFFFFF00;
    const std::string sZip = OnDisk("x.zip");
    std::string sEnd = sZip.substr(sZip.find("PK\1\2"));
    sEnd.replace(sEnd.size() - 6, 4, Number(static_cast<u2_t>(DIRECTORY)));
    std::error_code oError;
    std::filesystem::resize_file("x.zip", DIRECTORY, oError);
    if (oError) GTEST_SKIP() << "no room";
    std::ofstream("x.zip", std::ios::app | std::ios::binary) << sEnd;
    EXPECT_EQ(Raised([] {
                  WriteZip("x.zip", {{"m", Noise(1000, 8)}}, "a");
              }),
              "zip archive \"x.zip\" needs ZIP64, which is not supported\n");
    EXPECT_EQ(std::filesystem::file_size("x.zip"), DIRECTORY + sEnd.size()) << "cut back";
}

TEST_F(Zip_Test, AFullDiskIsReportedOnce) {
    if (File::Size("/dev/full") < 0) GTEST_SKIP() << "no such device";
    for (const std::size_t uSize : {10u, 900000u}) {
        Zip_Archive oZip("/dev/full", "w");
        const std::string sBytes = Noise(uSize, 8);
        std::string sError = Raised([&] { AddMember(oZip, "n", sBytes); });
        if (uSize > 100000) {
            EXPECT_EQ(sError.substr(0, 16), "file write error");
            EXPECT_EQ(Raised([&] { oZip.OpenNewFile("m"); }),
                      "zip archive \"/dev/full\" is incomplete since writing to it failed\n");
        }
        sError = Raised([&] { oZip.Close(); });
        EXPECT_EQ(sError.substr(0, 16), uSize > 100000 ? "zip archive \"/de" : "file write error");
        EXPECT_FALSE(oZip.IsOpen());
        EXPECT_EQ(File::OpenFiles(), 0u);
    }
    try {
        Zip_Archive oZip("x.zip", "w");
        AddMember(oZip, "n", "x");
        Msg::NodeIsEmpty();
    } catch (const Msg_Exception&) {
    }
    EXPECT_EQ(Raised([] { (void)ReadZip("x.zip"); }), "invalid or corrupted zip file \"x.zip\"\n")
        << "what an exception cut short is not completed";
}

// Every allocation may be refused: an error comes out, nothing leaks, a second try works.
TEST_F(Zip_Test, SurvivesRefusedMemory) {
    const auto oWork = [] {
        WriteZip("x.zip", TWO, "w", "c");
        WriteZip("x.zip", {{"n", Noise(400000, 8)}}, "a");
        EXPECT_EQ(ReadZip("x.zip").size(), 3u);
        Zip_Archive oZip("x.zip");
        EXPECT_TRUE(oZip.LocateFile("n"));
    };
    const Mem_Probe oProbe;
    for (unsigned u = 1;; ++u) {
        std::remove("x.zip");
        if (!Mem_Probe::HasRefused(u, oWork)) break;
        ASSERT_EQ(File::OpenFiles(), 0u);
    }
}

}  // namespace
}  // namespace vok
