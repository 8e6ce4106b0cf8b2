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
    const Msg_Capture oCapture;
    File_Buf oBuf("w");
    EXPECT_EQ(Raised([&] { File::WriteMagic(oBuf, "abcdefghijklmnopqrstuv", File::NO_VERSION); }),
              "assertion failed: magicAndClassnameLen <= tmp\n");
    EXPECT_EQ(oBuf.Size(), 0u);
}

struct Checked {
    const char* sBytes;
    u2_t uMinLibrary;
    u2_t uMin;
    u2_t uMax;
    const char* sError;  // null: accepted
};

TEST(Magic, Check) {
    const Msg_Capture oCapture;
    const std::string sLong = LONG_DATA;
    // LONG_DATA with one byte changed.
    const auto oWith = [&](std::size_t uNth, const char* sByte) {
        return std::string(sLong).replace(3 * uNth, 2, sByte);
    };
    const std::string sLibrary3 = oWith(8, "03");
    const std::string sLibrary0 = oWith(8, "00");
    const std::string sOtherName = oWith(28, "62");
    const std::string sInnerNul = oWith(27, "00");
    const std::string sNoNul = oWith(29, "61");
    const std::string sPrefix = oWith(20, "56");
    const std::string sBigEndian = oWith(4, "12").replace(15, 8, "34 56 78");
    const std::string sLonger = oWith(16, "0B") + " 00";
    const std::string sHuge = oWith(19, "FF");
    const std::string sForeign = oWith(0, "0C");
    const std::string sShort = SHORT_DATA;
    const std::string sShortFull = std::string(sShort).replace(3 * 31, 2, "01");
    const std::string sShortOther = std::string(sShort).replace(3 * 14, 2, "62");
    const std::string sShortLess = std::string(sShort).replace(3 * 13, 2, "00");
    const std::string sShortD = std::string(sShort).replace(3 * 9, 2, "44");
    constexpr char WRONG_3_3[] =
        "binary data of object \"Data\" have wrong version 3-3, expected 2-9\n";
    const Checked oCases[] = {
        {LONG_DATA, 0, 0, File::NO_VERSION, nullptr},
        {LONG_DATA, 2, 3, 3, nullptr},
        {LONG_DATA, 2, 4, 9,
         "binary data of object \"Data\" have wrong version 2-3, expected 2-9\n"},
        {LONG_DATA, 2, 0, 2,
         "binary data of object \"Data\" have wrong version 2-3, expected 2-2\n"},
        {sLibrary3.c_str(), 0, 0, 9, WRONG_3_3},
        {sLibrary0.c_str(), 0, 0, 9, nullptr},
        {sLibrary0.c_str(), 1, 0, 9,
         "binary data of object \"Data\" have wrong version 0-3, expected 2-9\n"},
        {sOtherName.c_str(), 0, 0, 9, NO_DUMP},
        {sInnerNul.c_str(), 0, 0, 9, NO_DUMP},
        {sNoNul.c_str(), 0, 0, 9, NO_DUMP},
        {sPrefix.c_str(), 0, 0, 9, NO_DUMP},
        {sBigEndian.c_str(), 0, 0, 9, NO_DUMP},
        {sLonger.c_str(), 0, 0, 9, NO_DUMP},
        {sHuge.c_str(), 0, 0, 9, NO_DUMP},
        {sForeign.c_str(), 0, 0, 9, NO_DUMP},
        {SHORT_DATA, 0, 0, 0, nullptr},
        {SHORT_DATA, 1, 0, 9, NO_DUMP},
        {SHORT_DATA, 0, 1, 9, NO_DUMP},
        {sShortFull.c_str(), 0, 0, 9, NO_DUMP},
        {sShortOther.c_str(), 0, 0, 9, NO_DUMP},
        {sShortLess.c_str(), 0, 0, 9, NO_DUMP},
        {sShortD.c_str(), 0, 0, 9, NO_DUMP},
    };
    for (const Checked& oCase : oCases) {
        SCOPED_TRACE(oCase.sBytes);
        const std::string sBytes = "##" + Bytes(oCase.sBytes);
        File_Buf oBuf(sBytes.data(), sBytes.size());
        const auto oCheck = [&](bool bRaise) {
            u2_t uLibraryVersion = 0;
            u2_t uVersion = 0;
            oBuf.Seek(2);
            return File::CheckMagic(oBuf, "Data", uLibraryVersion, uVersion, bRaise,
                                    oCase.uMinLibrary, oCase.uMin, oCase.uMax);
        };
        const bool bGood = oCase.sError == nullptr;
        EXPECT_EQ(Raised([&] { oCheck(true); }), bGood ? "(nothing raised)" : oCase.sError);
        EXPECT_EQ(oCheck(false), bGood);
        EXPECT_EQ(oBuf.Tell(), bGood ? static_cast<i3_t>(sBytes.size()) : 2);
    }
}

TEST(Magic, TruncatedAnywhere) {
    const Msg_Capture oCapture;
    for (const char* sHex : {LONG_DATA, SHORT_DATA}) {
        const std::string sBytes = Bytes(sHex);
        for (std::size_t uSize = 0; uSize < sBytes.size(); ++uSize) {
            File_Buf oBuf(sBytes.data(), uSize);
            u2_t uLibraryVersion = 0;
            u2_t uVersion = 0;
            EXPECT_FALSE(File::CheckMagic(oBuf, "Data", uLibraryVersion, uVersion, false));
            EXPECT_EQ(oBuf.Tell(), 0);
            EXPECT_EQ(Raised([&] { File::CheckMagic(oBuf, "Data", uLibraryVersion, uVersion); }),
                      NO_DUMP);
            EXPECT_TRUE(File::GetBufStreamClass(oBuf).IsEmpty());
        }
    }
}

using Magic_File = File_Test;

TEST_F(Magic_File, ClassOfAFile) {
    const std::string sPath = Path("dump");
    ToDisk(sPath, Bytes(LONG_DATA) + "more");
    EXPECT_EQ(File::GetFileStreamClass(sPath.c_str()), Str("Data"));
    ToDisk(sPath, "DGraphBin");
    EXPECT_TRUE(File::GetFileStreamClass(sPath.c_str()).IsEmpty());
    EXPECT_TRUE(s_uSleeps.empty()) << "a file that is too short is no reason to wait";
    EXPECT_EQ(Trail([&] { (void)File::GetFileStreamClass(Path("missing").c_str()); }),
              "vok::File::Open\nvok::File::GetFileStreamClass\n");
}

}  // namespace
}  // namespace vok
