#include "tests/file/file_support.h"

namespace vok {
namespace {

constexpr char LONG_DATA[] =
    "0B 17 01 01 78 56 34 12 02 00 00 00 03 00 00 00 0A 00 00 00 76 6F 6B 3A 3A 44 61 74 61 00";
constexpr char SHORT_DATA[] =
    "0B 17 01 01 63 68 72 3A 3A 43 44 61 74 61 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00";
constexpr char NO_DUMP[] = "binary data is not a dump of object \"Data\"\n";

struct Written {
    const char* sClass;
    u2_t uVersion;
    u2_t uLibraryVersion;
    const char* sBytes;
    const char* sReadBack;
};

TEST(Magic, GoldenBytes) {
    const Written oCases[] = {
        {"Data", 3, File::NO_VERSION, LONG_DATA, "Data"},
        {"Data", File::NO_VERSION, 7, SHORT_DATA, "Data"},
        {nullptr, 0, 1,
         "0B 17 01 01 78 56 34 12 01 00 00 00 00 00 00 00 0D 00 00 00 76 6F 6B 3A 3A "
         "55 6E 6B 6E 6F 77 6E 00",
         "Unknown"},
        {"abcdefghijklmnopqrstu", File::NO_VERSION, 0,
         "0B 17 01 01 63 68 72 3A 3A 43 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70 71 72 73 "
         "74 75 00",
         "abcdefghijklmnopqrstu"},
    };
    for (const Written& oCase : oCases) {
        File_Buf oBuf("w");
        const u3_t uSize =
            File::WriteMagic(oBuf, oCase.sClass, oCase.uVersion, oCase.uLibraryVersion);
        EXPECT_EQ(uSize, oBuf.Size());
        EXPECT_EQ(Content(oBuf), Bytes(oCase.sBytes));
        EXPECT_EQ(File::GetBufStreamClass(oBuf), Str(oCase.sReadBack));
        oBuf.Seek(0);
        u2_t uLibraryVersion = 99;
        u2_t uVersion = 99;
        EXPECT_TRUE(File::CheckMagic(oBuf, oCase.sClass, uLibraryVersion, uVersion));
        EXPECT_EQ(oBuf.Remaining(), 0u);
        EXPECT_EQ(uVersion, oCase.uVersion == File::NO_VERSION ? 0 : oCase.uVersion);
    }
    File_Buf oBuf("w");
    EXPECT_EQ(Raised([&] { File::WriteMagic(oBuf, "abcdefghijklmnopqrstuv", File::NO_VERSION); }),
              "assertion failed: magicAndClassnameLen <= tmp\n");
    EXPECT_EQ(oBuf.Size(), 0u);
}

// A header with the bytes from uNth on replaced, and the versions that are asked for.
struct Checked {
    const char* sHeader;
    std::size_t uNth;
    const char* sChange;
    u2_t uMinLibrary;
    u2_t uMin;
    u2_t uMax;
    const char* sError;  // null: accepted
};

constexpr char WRONG_MIN[] =
    "binary data of object \"Data\" have wrong version 2-3, expected 2-9\n";
constexpr char WRONG_MAX[] =
    "binary data of object \"Data\" have wrong version 2-3, expected 2-2\n";
constexpr char WRONG_3[] = "binary data of object \"Data\" have wrong version 3-3, expected 2-9\n";
constexpr char WRONG_0[] = "binary data of object \"Data\" have wrong version 0-3, expected 2-9\n";

constexpr Checked CHECKS[] = {
    {LONG_DATA, 0, "", 0, 0, File::NO_VERSION, nullptr},
    {LONG_DATA, 0, "", 2, 3, 3, nullptr},
    {LONG_DATA, 0, "", 2, 4, 9, WRONG_MIN},
    {LONG_DATA, 0, "", 2, 0, 2, WRONG_MAX},
    {LONG_DATA, 8, "03", 0, 0, 9, WRONG_3},
    {LONG_DATA, 8, "00", 0, 0, 9, nullptr},
    {LONG_DATA, 8, "00", 1, 0, 9, WRONG_0},
    {LONG_DATA, 0, "0C", 0, 0, 9, NO_DUMP},           // another magic
    {LONG_DATA, 4, "12 34 56 78", 0, 0, 9, NO_DUMP},  // high byte first
    {LONG_DATA, 16, "0B", 0, 0, 9, NO_DUMP},
    {LONG_DATA, 19, "FF", 0, 0, 9, NO_DUMP},
    {LONG_DATA, 20, "56", 0, 0, 9, NO_DUMP},  // another prefix
    {LONG_DATA, 27, "00", 0, 0, 9, NO_DUMP},  // "Da"
    {LONG_DATA, 28, "62", 0, 0, 9, NO_DUMP},  // "Datb"
    {LONG_DATA, 29, "61", 0, 0, 9, NO_DUMP},  // no NUL
    {SHORT_DATA, 0, "", 0, 0, 0, nullptr},
    {SHORT_DATA, 0, "", 1, 0, 9, NO_DUMP},
    {SHORT_DATA, 0, "", 0, 1, 9, NO_DUMP},
    {SHORT_DATA, 9, "44", 0, 0, 9, NO_DUMP},
    {SHORT_DATA, 13, "00", 0, 0, 9, NO_DUMP},
    {SHORT_DATA, 14, "62", 0, 0, 9, NO_DUMP},
    {SHORT_DATA, 31, "01", 0, 0, 9, NO_DUMP},
};

// What is said about the header in sBytes, behind two bytes that are not of it; "" for a good one.
std::string About(const std::string& sBytes, const Checked& o) {
    const std::string sAll = "##" + sBytes;
    File_Buf oBuf(sAll.data(), sAll.size());
    const auto oCheck = [&](bool bRaise) {
        u2_t uLibraryVersion = 0;
        u2_t uVersion = 0;
        oBuf.Seek(2);
        return File::CheckMagic(oBuf, "Data", uLibraryVersion, uVersion, bRaise, o.uMinLibrary,
                                o.uMin, o.uMax);
    };
    const std::string sError = Raised([&] { oCheck(true); });
    const bool bGood = sError == NOTHING_RAISED;
    EXPECT_EQ(oCheck(false), bGood);
    EXPECT_EQ(oBuf.Tell(), bGood ? static_cast<i3_t>(sAll.size()) : 2);
    return bGood ? "" : sError;
}

TEST(Magic, Check) {
    for (const Checked& o : CHECKS) {
        SCOPED_TRACE(std::to_string(o.uNth) + ": " + o.sChange);
        const std::string sChange = Bytes(o.sChange), sHeader = Bytes(o.sHeader);
        EXPECT_EQ(About(std::string(sHeader).replace(o.uNth, sChange.size(), sChange), o),
                  o.sError != nullptr ? o.sError : "");
        if (*o.sChange != 0 || o.sError != nullptr) continue;
        for (std::size_t u = 0; u < sHeader.size(); ++u) {
            EXPECT_EQ(About(sHeader.substr(0, u), o), NO_DUMP) << "cut at " << u;
            EXPECT_TRUE(File::GetBufStreamClass(File_Buf(sHeader.data(), u)).IsEmpty());
        }
    }
}

using Magic_File = File_Test;

TEST_F(Magic_File, ClassOfAFile) {
    const std::string sPath = "dump";
    ToDisk(sPath, Bytes(LONG_DATA) + "more");
    EXPECT_EQ(File::GetFileStreamClass(sPath.c_str()), Str("Data"));
    ToDisk(sPath, "DGraphBin");
    EXPECT_TRUE(File::GetFileStreamClass(sPath.c_str()).IsEmpty());
    EXPECT_TRUE(s_uSleeps.empty()) << "a file that is too short is no reason to wait";
    EXPECT_EQ(Trail([&] { (void)File::GetFileStreamClass("missing"); }),
              "vok::File::Open\nvok::File::GetFileStreamClass\n");
}

}  // namespace
}  // namespace vok
