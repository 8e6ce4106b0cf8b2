// SPDX-License-Identifier: MIT
// The compressed streams, against zlib's own functions and over every kind of stream below.
#include <zlib.h>

#include "tests/zip/zip_support.h"

namespace vok {
namespace {

std::string Unzlib(const std::string& sBytes, std::size_t uSize) {
    std::string sOut(uSize + 1, 0);
    auto uOut = static_cast<uLongf>(sOut.size());
    EXPECT_EQ(::uncompress(reinterpret_cast<Bytef*>(sOut.data()), &uOut,
                           reinterpret_cast<const Bytef*>(sBytes.data()),
                           static_cast<uLong>(sBytes.size())),
              Z_OK);
    sOut.resize(uOut);
    return sOut;
}

TEST_F(Zip_Test, StreamsAgreeWithZlib) {
    std::mt19937 oRandom(5);
    for (const std::size_t uSize : {0u, 1u, 1000u, 65536u, 1000000u}) {
        const std::string sPlain = Noise(uSize, 3);
        File_Buf oBuf("w");
        {
            Zip_Buf oZip(oBuf, "w");
            WriteInPieces(oZip, sPlain, oRandom);
            EXPECT_EQ(oZip.Tell(), static_cast<i3_t>(uSize));
            oZip.Flush();
            EXPECT_EQ(Raised([&] { oZip.Write("x"); }), "stream not open for write\n");
        }
        const std::string sPacked = Content(oBuf);
        EXPECT_EQ(sPacked[0], 'x');
        EXPECT_TRUE(Unzlib(sPacked, uSize) == sPlain);

        // Below: memory, a file, and what cannot seek; with bytes in front and behind.
        Drop_Stream oDrop;
        Zip_Stream oPacker(oDrop, "w");
        WriteInPieces(oPacker, sPlain, oRandom);
        oPacker.Close();
        EXPECT_TRUE(Unzlib(Joined(oDrop.m_oWritten), uSize) == sPlain);
        EXPECT_EQ(oDrop.m_uFlushes, 1u);
        Drop_Stream oForeign(sPacked, 100);
        Arr<char> oRead;
        Zip_Stream(oForeign).Read(oRead, File_Stream::ALL);
        EXPECT_TRUE(Content(oRead) == sPlain);

        const std::string sAround = "front" + sPacked + "behind";
        ToDisk("around", sAround);
        File oFile("around");
        File_Buf oMemory(sAround.data(), sAround.size());
        for (File_Stream* pBelow : std::initializer_list<File_Stream*>{&oFile, &oMemory}) {
            pBelow->Seek(5);
            Zip_Stream oZip(*pBelow);
            EXPECT_EQ(oZip.Read(oRead, File_Stream::ALL), uSize);
            EXPECT_TRUE(Content(oRead) == sPlain);
            EXPECT_TRUE(oZip.Eof());
            EXPECT_EQ(pBelow->Tell(), static_cast<i3_t>(5 + sPacked.size())) << "right behind";
            oZip.Seek(static_cast<i3_t>(uSize / 2));
            EXPECT_EQ(oZip.Read(oRead, File_Stream::ALL), uSize - uSize / 2);
            EXPECT_TRUE(Content(oRead) == sPlain.substr(uSize / 2));
        }
        {
            Zip_File oOut("z", "w9");
            oOut.Write(sPlain.data(), sPlain.size());
        }
        EXPECT_TRUE(Unzlib(OnDisk("z"), uSize) == sPlain);
        EXPECT_EQ(Zip_File("z").Read(oRead, File_Stream::ALL), uSize);
    }
}

TEST_F(Zip_Test, StreamsReadGzip) {
    const std::string sPlain = Noise(200000, 4);
    {
        Zip_File("z.gz", "wz").Write(sPlain.data(), sPlain.size());
        File oFile("f.gz", "wz");
        oFile.Write("file");
    }
    Arr<char> oRead;
    File("z.gz", "rz").Read(oRead, File_Stream::ALL);
    EXPECT_TRUE(Content(oRead) == sPlain);
    const std::string sJoined = OnDisk("z.gz") + OnDisk("f.gz");
    for (const std::size_t uMost : {1u, 7u, 1000000u}) {
        Drop_Stream oBelow(sJoined, uMost);
        EXPECT_EQ(Zip_Stream(oBelow).Read(oRead, File_Stream::ALL), sPlain.size() + 4);
        EXPECT_TRUE(Content(oRead) == sPlain + "file");
    }
    for (const char* sBehind : {"\x1F", "\x1F\xFF", "no header"}) {
        const std::string sAll = sJoined + sBehind;
        Drop_Stream oBelow(sAll);
        EXPECT_EQ(Zip_Stream(oBelow).Read(oRead, File_Stream::ALL), sPlain.size() + 4);
    }
    ToDisk("j.gz", sJoined + "\x1F no header");
    Zip_File oTail("j.gz");
    EXPECT_EQ(oTail.Read(oRead, File_Stream::ALL), sPlain.size() + 4) << "what follows is left";
}

TEST_F(Zip_Test, StreamsRefuseBadInput) {
    Zip_Buf oBuf;
    oBuf.Open("w");
    oBuf.Write("some bytes, some bytes, some bytes");
    oBuf.Close();
    const std::string sGood = Content(oBuf.GetBuffer());
    const auto oRead = [&](const std::string& sBytes) {
        return Raised([&] {
            Arr<char> oOut;
            oBuf.Open(sBytes.data(), sBytes.size());
            oBuf.Read(oOut, File_Stream::ALL);
        });
    };
    EXPECT_EQ(oRead(sGood), NOTHING_RAISED);
    for (std::size_t u = 0; u < sGood.size(); ++u) {
        EXPECT_EQ(oRead(sGood.substr(0, u)), "unexpected end of file in \"*** File_Buf ***\"\n");
        std::string sBad = sGood;
        sBad[u] = static_cast<char>(sBad[u] ^ 0x21);
        EXPECT_NE(oRead(sBad), NOTHING_RAISED) << u;
    }
    EXPECT_EQ(oRead("x is no header"), "invalid or corrupted zip buffer\n");
    ToDisk("bad", "x is no header");
    EXPECT_EQ(Raised([] {
                  char c;
                  Zip_File("bad").Read(&c, 1, true);
              }),
              "invalid or corrupted zip file \"bad\"\n");

    char c;
    Zip_Stream oClosed;
    EXPECT_EQ(Raised([&] { oClosed.Read(&c, 1); }), "stream not open for read\n");
    EXPECT_EQ(Raised([&] { oClosed.Write("x"); }), "stream not open for write\n");
    Drop_Stream oForeign(sGood, 1000);
    Zip_Stream oZip(oForeign);
    oZip.Seek(20);
    oZip.Seek(3);
    EXPECT_EQ(oZip.Read(&c, 1), 1u);
    EXPECT_EQ(c, 'e') << "still in the buffer";
    EXPECT_EQ(Raised([&] { oZip.Seek(0, 2); }),
              "feature not yet implemented: \"Zip_Stream::Seek(i3_t pos, SEEK_END)\"\n");
    EXPECT_EQ(Raised([&] { oZip.Write("x"); }), "stream not open for write\n");
}

}  // namespace
}  // namespace vok
