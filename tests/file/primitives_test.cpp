// SPDX-License-Identifier: MIT
// Numbers, blocks and headers as bytes.
#include <limits>

#include "tests/file/file_support.h"
#include "vok/file/ext_buf.h"

namespace vok {
namespace {

constexpr i2_t LOWEST = std::numeric_limits<i2_t>::min();
constexpr i2_t HIGHEST = std::numeric_limits<i2_t>::max();

struct Cint_Case {
    i2_t iValue;
    const char* sBytes;
    i2_t iReadBack;
};

// Both ends of every length, and what five bytes lose: they keep 24 bits of the code.
constexpr Cint_Case CINTS[] = {
    // clang-format off
    {0, "80", 0}, {1, "82", 1}, {-1, "83", -1}, {63, "FE", 63}, {-63, "FF", -63}, {64, "40 80", 64},
    {-64, "40 81", -64}, {8191, "7F FE", 8191}, {-8191, "7F FF", -8191}, {8192, "20 40 00", 8192},
    {1048575, "3F FF FE", 1048575}, {1048576, "10 20 00 00", 1048576},
    {-1048576, "10 20 00 01", -1048576}, {134217727, "1F FF FF FE", 134217727},
    {-134217727, "1F FF FF FF", -134217727}, {134217728, "08 10 00 00 00", 0},
    {-134217728, "08 10 00 00 01", 0}, {134217728 + 5, "08 10 00 00 0A", 5},
    {-134217728 - 5, "08 10 00 00 0B", -5}, {HIGHEST, "08 FF FF FF FE", 8388607},
    {-HIGHEST, "08 FF FF FF FF", -8388607}, {LOWEST, "09 00 00 00 01", 0},
    // clang-format on
};

// Minus zero; longer than it need be; a first byte without any mark; bits that do not count.
constexpr Cint_Case FOREIGN[] = {
    {0, "81", 0},
    {0, "40 02", 1},
    {0, "00 00 00 00 04", 2},
    {0, "07 FF 00 00 05", -2},
    {0, "0F FF 12 34 56", 0x091A2B},
};

TEST(Primitives, CintBytesAndBack) {
    const auto ExpectReads = [](const Cint_Case& oCase) {
        const std::string sBytes = Bytes(oCase.sBytes);
        File_Buf oBuf(sBytes.data(), sBytes.size());
        i2_t iValue = -77;
        EXPECT_EQ(File::LoadCint(oBuf, iValue), sBytes.size());
        EXPECT_EQ(iValue, oCase.iReadBack) << oCase.sBytes;
    };
    for (const Cint_Case& oCase : CINTS) {
        File_Buf oBuf("w");
        const unsigned uSize = File::DumpCint(oBuf, oCase.iValue);
        EXPECT_EQ(uSize, oBuf.Size());
        EXPECT_EQ(Content(oBuf), Bytes(oCase.sBytes));
        EXPECT_EQ(File::DumpSizeCint(oCase.iValue), oBuf.Size());
        ExpectReads(oCase);
    }
    for (const Cint_Case& oCase : FOREIGN) ExpectReads(oCase);
}

// A stream that ends inside a number, or has no room for it, says so, through whom, and
// leaves the value alone.
TEST(Primitives, CintCutAnywhere) {
    for (const Cint_Case& oCase : CINTS) {
        const std::string sBytes = Bytes(oCase.sBytes);
        for (std::size_t uSize = 0; uSize < sBytes.size(); ++uSize) {
            File_Buf oIn(sBytes.data(), uSize);
            i2_t iValue = -77;
            EXPECT_EQ(Trail([&] { File::LoadCint(oIn, iValue); }),
                      "vok::File_Buf::Read\nvok::File::LoadCint\n");
            EXPECT_EQ(iValue, -77);

            char sRoom[5];
            File_ExtBuf oOut(sRoom, uSize);
            EXPECT_EQ(Trail([&] { File::DumpCint(oOut, oCase.iValue); }),
                      "vok::File_ExtBuf::Write\nvok::File::DumpCint\n");
            EXPECT_EQ(oOut.Used(), uSize) << "byte by byte";
        }
    }
}

struct Block_Form {
    u3_t (*pDump)(const File_Buf&, File_Stream&);
    u3_t (*pLoad)(File_Buf&, File_Stream&);
    u3_t (*pSkip)(File_Stream&);
    std::size_t uWidth;  // of the length

    // A block that claims so many bytes and brings these.
    [[nodiscard]] std::string Block(u3_t uClaim, const char* sBytes) const {
        return Number(uClaim).substr(0, uWidth) + sBytes;
    }
};

constexpr Block_Form FORMS[] = {
    {File::DumpBufStream32, File::LoadBufStream32, File::SkipBufStream32, 4},
    {File::DumpBufStream64, File::LoadBufStream64, File::SkipBufStream64, 8},
};

TEST(Primitives, BlocksAreAppended) {
    for (const Block_Form& oForm : FORMS) {
        SCOPED_TRACE(oForm.uWidth);
        const std::string sBlock = oForm.Block(3, "abc"), sEmpty = oForm.Block(0, "");
        const File_Buf oSource("abc", 3);
        File_Buf oStream("w");
        EXPECT_EQ(oForm.pDump(oSource, oStream), sBlock.size());
        EXPECT_EQ(Content(oStream), sBlock);
        EXPECT_EQ(oForm.pDump(File_Buf(), oStream), sEmpty.size());
        oForm.pDump(oSource, oStream);
        EXPECT_EQ(Content(oStream), sBlock + sEmpty + sBlock);

        File_Buf oTarget("w");
        oTarget.Write("<");
        oStream.Seek(0);
        EXPECT_EQ(oForm.pLoad(oTarget, oStream), sBlock.size());
        EXPECT_EQ(oForm.pLoad(oTarget, oStream), 0u);
        EXPECT_EQ(oForm.pLoad(oTarget, oStream), sBlock.size());
        EXPECT_EQ(Content(oTarget), "<abcabc");
        EXPECT_EQ(oTarget.Tell(), 1);

        oStream.Seek(0);
        EXPECT_EQ(oForm.pSkip(oStream), sBlock.size());
        EXPECT_EQ(oForm.pSkip(oStream), 0u);
        EXPECT_EQ(oForm.pSkip(oStream), sBlock.size());
        EXPECT_EQ(oStream.Remaining(), 0u);
    }
}

TEST(Primitives, MemoryFollowsTheBytesNotTheClaim) {
    const Mem_Probe oProbe;
    for (const Block_Form& oForm : FORMS) {
        for (const u3_t uClaim : {u3_t{1} << 31, ~u3_t{0}, ~u3_t{1}}) {
            const std::string sClaim = oForm.Block(uClaim, "ab");
            Drop_Stream oStream(sClaim, 3);
            File_Buf oMemory(sClaim.data(), sClaim.size());
            for (File_Stream* pStream : std::initializer_list<File_Stream*>{&oStream, &oMemory}) {
                File_Buf oTarget("w");
                oTarget.Write("kept");
                const char* sName = pStream->Name() != nullptr ? pStream->Name() : "";
                EXPECT_EQ(Raised([&] { oForm.pLoad(oTarget, *pStream); }),
                          "unexpected end of file in \"" + std::string(sName) + "\"\n");
                EXPECT_EQ(Content(oTarget), "kept");
            }
        }
    }
    EXPECT_LT(Mem_Probe::Peak(), 0x40000u);
}

TEST(Primitives, BlockErrors) {
    File_Buf oExternal("abc", 3);
    File_Buf oStream("w");
    File::DumpBufStream32(oExternal, oStream);
    oStream.Seek(0);
    EXPECT_EQ(Raised([&] { File::LoadBufStream32(oExternal, oStream); }),
              "file \"*** File_Buf ***\" is not open for write\n");
    EXPECT_EQ(Raised([&] { File::LoadBufStream32(oStream, oStream); }),
              "assertion failed: &oBuffer != &oStream\n");
    // Nothing is read from the source before its size is known to fit.
    const File_Buf oTooLong("", std::size_t{1} << 31);
    EXPECT_EQ(Raised([&] { File::DumpBufStream32(oTooLong, oStream); }),
              "assertion failed: vok::Msg::IsInt32(x)\n");
    // As a signed distance this length would lead backwards.
    const std::string sBack = Bytes("F8 FF FF FF FF FF FF FF");
    File_Buf oBack(sBack.data(), sBack.size());
    EXPECT_EQ(Raised([&] { File::SkipBufStream64(oBack); }),
              "unexpected end of file in \"*** File_Buf ***\"\n");
}

TEST(Primitives, EndMarkerSkipsUnknownBlocks) {
    File_Buf oBuf("w");
    const std::string sLong(70000, 'x');
    File::DumpBufStream32(File_Buf("abc", 3), oBuf);
    File::DumpBufStream32(File_Buf(sLong.data(), sLong.size()), oBuf);
    EXPECT_EQ(File::DumpEndMarker(oBuf), 4u);
    const u3_t uSize = oBuf.Size();
    EXPECT_EQ(uSize, 7u + 70004u + 4u);
    oBuf.Write("!");

    oBuf.Seek(0);
    Drop_Stream oForward({oBuf.Data(), oBuf.Size()}, 3);
    for (File_Stream* pStream : std::initializer_list<File_Stream*>{&oBuf, &oForward}) {
        EXPECT_EQ(File::LoadEndMarker(*pStream), uSize);
        char cNext = 0;
        pStream->Read(&cNext, 1);
        EXPECT_EQ(cNext, '!');
        EXPECT_EQ(Raised([&] { File::LoadEndMarker(*pStream); }).substr(0, 22),
                  "unexpected end of file");
    }
}

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
