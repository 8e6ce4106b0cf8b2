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

}  // namespace
}  // namespace vok
