// SPDX-License-Identifier: MIT
#include <limits>

#include "tests/file/file_support.h"
#include "vok/file/ext_buf.h"

namespace vok {
namespace {

constexpr char NOT_WRITABLE[] = "file \"*** File_Buf ***\" is not open for write\n";
constexpr char AT_END[] = "unexpected end of file in \"*** File_Buf ***\"\n";

TEST(Buf, Modes) {
    // What "12345" is after "ab\n" was written in that mode; null: refused.
    const std::pair<const char*, const char*> oModes[] = {
        {nullptr, nullptr}, {"r", nullptr},         {"", nullptr},   {"rt", nullptr},
        {"r+", "ab\n45"},   {"+", "ab\n45"},        {"w", "ab\n"},   {"w+", "ab\n"},
        {"wb", "ab\n"},     {"wt", "ab\r\n"},       {"wtb", "ab\n"}, {"r+t", "ab\r\n5"},
        {"a", "12345ab\n"}, {"a+t", "12345ab\r\n"}, {"?w", "ab\n"},
    };
    for (const auto& [sMode, sWritten] : oModes) {
        SCOPED_TRACE(sMode != nullptr ? sMode : "(null)");
        File_Buf oBuf("w");
        oBuf.Write("12345");
        oBuf.Open(sMode);
        if (sWritten == nullptr) {
            EXPECT_EQ(Raised([&] { oBuf.Write("ab\n"); }), NOT_WRITABLE);
            EXPECT_EQ(Raised([&] { (void)oBuf.WriteSpace(1); }), NOT_WRITABLE);
            EXPECT_EQ(Content(oBuf), "12345");
            continue;
        }
        const std::string sResult = sWritten;
        EXPECT_EQ(oBuf.Write("ab\n"), 3u);
        EXPECT_EQ(Content(oBuf), sResult);
        if (sResult.find('\r') != std::string::npos) {
            EXPECT_NE(Raised([&] { (void)oBuf.WriteSpace(1); }), NOTHING_RAISED);
            oBuf.Open("wt");
            oBuf.Write("\na\r\nb");
            EXPECT_EQ(Content(oBuf), "\r\na\r\r\nb");
            continue;
        }
        const std::size_t uLineEnd = sResult.find('\n') + 1;
        EXPECT_EQ(oBuf.Tell(), static_cast<i3_t>(uLineEnd));
        EXPECT_EQ(oBuf.Remaining(), sResult.size() - uLineEnd) << "writable is readable";
    }
}

TEST(Buf, SeekAndShortReads) {
    constexpr i3_t iMost = std::numeric_limits<i3_t>::max();
    // Offset, whence, position; -1: refused.
    const std::tuple<i3_t, int, i3_t> oCases[] = {
        {3, 0, 3},         {0, 0, 0},      {-1, 0, -1},         {-1, 1, 1},  {1, 1, 3},
        {-3, 1, -1},       {0, 2, 5},      {-5, 2, 0},          {-6, 2, -1}, {9, 0, 9},
        {iMost, 0, iMost}, {iMost, 1, -1}, {-iMost - 1, 2, -1}, {0, 3, -1},  {0, -1, -1},
    };
    for (const auto& [iTo, iFrom, iPosition] : oCases) {
        SCOPED_TRACE(std::to_string(iTo) + "/" + std::to_string(iFrom));
        File_Buf oBuf("01234", 5);
        oBuf.Seek(2);
        const std::string sError = Raised([&, i = iTo, j = iFrom] { oBuf.Seek(i, j); });
        if (iPosition < 0) {
            EXPECT_EQ(sError, "file seek to position " + std::to_string(static_cast<u3_t>(iTo)) +
                                  " in mode " + std::to_string(static_cast<u3_t>(iFrom)) +
                                  " failed\n");
            EXPECT_EQ(oBuf.Tell(), 2);
            continue;
        }
        EXPECT_EQ(oBuf.Tell(), iPosition);
        const std::size_t uLeft = iPosition < 5 ? static_cast<std::size_t>(5 - iPosition) : 0;
        EXPECT_EQ(oBuf.Remaining(), uLeft);
        char sTarget[8];
        EXPECT_EQ(oBuf.Read(sTarget, 8, true), uLeft);
        oBuf.Seek(iPosition);
        EXPECT_EQ(Raised([&] { oBuf.Read(sTarget, 8); }), AT_END);
        oBuf.Seek(iPosition);
        EXPECT_EQ(oBuf.Read(sTarget, File_Stream::ALL), uLeft);

        Arr<char> oArr;
        oArr.Add("<", 1);
        oBuf.Seek(iPosition);
        EXPECT_EQ(oBuf.Read(oArr, 8, true), uLeft);
        EXPECT_EQ(oArr.Size(), 1 + uLeft);
        oArr.Truncate(1);
        oBuf.Seek(iPosition);
        EXPECT_EQ(oBuf.Read(oArr, File_Stream::ALL, true), uLeft);
        EXPECT_EQ(oArr.Size(), 1 + uLeft);
        oBuf.Seek(0);
        EXPECT_EQ(oBuf.Read(oArr, 2), 2u);
        EXPECT_EQ(Content(oArr), "01");
    }
}

TEST(Buf, WritingBehindTheEndFillsWithZeros) {
    File_Buf oBuf("w");
    oBuf.Write("ab");
    oBuf.Seek(4);
    EXPECT_EQ(oBuf.Write("", 0), 0u);
    EXPECT_EQ(oBuf.Size(), 2u) << "nothing written, nothing filled";
    oBuf.Write("c");
    EXPECT_EQ(Content(oBuf), std::string("ab\0\0c", 5));

    oBuf.Seek(std::numeric_limits<i3_t>::max() - 1);
    EXPECT_EQ(Raised([&] { oBuf.Write("xyz"); }),
              "file write error after position 9223372036854775806, 3 bytes not written: "
              "\"*** File_Buf ***\"\n");
    EXPECT_EQ(Raised([&] { oBuf.Write("x"); }).substr(0, 12), "reallocation") << "no such memory";
    EXPECT_EQ(Content(oBuf), std::string("ab\0\0c", 5));
}

TEST(Buf, DirectDoorsAndSharedStorage) {
    File_Buf oBuf("w");
    std::string sExpected;
    for (unsigned u = 0; u < 5000; ++u) {
        const std::string sNumber = std::to_string(u);
        if (u % 2 == 0) {
            oBuf.Write(sNumber.c_str());
        } else {
            char* pSpace = oBuf.WriteSpace(16);
            EXPECT_GE(oBuf.SpaceAtHand(), 16u);
            oBuf.Commit(sNumber.copy(pSpace, sNumber.size()));
        }
        sExpected += sNumber;
    }
    EXPECT_EQ(Content(oBuf), sExpected);

    Arr<char> oShared;
    oShared.Share(oBuf.GetBuffer());
    oBuf.Seek(0);
    *oBuf.WriteSpace(1) = '#';
    oBuf.Commit(1);
    EXPECT_EQ(Content(oBuf), "#" + sExpected.substr(1));
    EXPECT_EQ(Content(oShared), sExpected) << "the other holder keeps what it had";
    EXPECT_EQ(std::string(oBuf.Peek(), 3), sExpected.substr(1, 3));
    oBuf.Skip(oBuf.Remaining());
    EXPECT_EQ(oBuf.Tell(), static_cast<i3_t>(sExpected.size()));
    oBuf.Clear();
    EXPECT_EQ(oBuf.Size(), 0u);
    EXPECT_EQ(oBuf.Write("x"), 1u) << "still writable";
}

TEST(Buf, ExternalBlocks) {
    File_Buf oBuf("w");
    oBuf.Write("own");
    oBuf.Open("abc", 3);
    EXPECT_TRUE(oBuf.IsExternal());
    EXPECT_EQ(oBuf.GetBuffer().Size(), 0u);
    EXPECT_EQ(Raised([&] { oBuf.Write("x"); }), NOT_WRITABLE);
    oBuf.Open(nullptr, 0);
    EXPECT_EQ(oBuf.Remaining(), 0u);
    EXPECT_TRUE(oBuf.IsExternal());
    EXPECT_EQ(Raised([&] { oBuf.Open(nullptr, 1); }), "object points to nothing\n");
    oBuf.Open("w");
    oBuf.Write("new");
    EXPECT_EQ(Content(oBuf), "new");
}

TEST(ExtBuf, StaysInsideItsBlock) {
    char sBlock[] = "........";
    File_ExtBuf oBuf(sBlock, 6);
    oBuf.Write("abcd");
    EXPECT_EQ(Raised([&] { oBuf.Write("xyz"); }),
              "file write error after position 4, 3 bytes not written: \"*** File_ExtBuf ***\"\n");
    oBuf.Seek(-1, File_Stream::FROM_END);
    oBuf.Write("DEF");
    EXPECT_STREQ(sBlock, "abcDEF..");
    EXPECT_EQ(oBuf.Used(), 6u);
    EXPECT_NE(Raised([&] { oBuf.Seek(7); }), NOTHING_RAISED);
    EXPECT_NE(Raised([&] { oBuf.Seek(-1); }), NOTHING_RAISED);
    oBuf.Seek(4);
    Arr<char> oArr;
    EXPECT_EQ(oBuf.Read(oArr, File_Stream::ALL), 2u);
    EXPECT_EQ(Content(oArr), "EF");
    EXPECT_EQ(oBuf.Read(oArr, 1), 0u);
    EXPECT_EQ(oArr.Size(), 0u);
}

}  // namespace
}  // namespace vok
