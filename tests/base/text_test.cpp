// SPDX-License-Identifier: MIT
// UTF-8 sequences, numbers, dates and bytes as text, texts in texts, the table of distinct texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vok/base/base64.h"
#include "vok/base/date.h"
#include "vok/base/find.h"
#include "vok/base/hash.h"
#include "vok/base/number.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok {
namespace {

TEST(Utf8, EveryCodePoint) {
    for (u2_t uCode = 0; uCode <= 0x110000; ++uCode) {
        char sText[4];
        const unsigned uLength = EncodeUtf8(uCode, sText);
        const bool bValid = uCode <= 0x10FFFF && (uCode < 0xD800 || uCode > 0xDFFF);
        const unsigned uExpected = !bValid           ? 3
                                   : uCode < 0x80    ? 1
                                   : uCode < 0x800   ? 2
                                   : uCode < 0x10000 ? 3
                                                     : 4;
        ASSERT_EQ(uLength, uExpected);
        ASSERT_EQ(Utf8SequenceLength(sText, uLength), uLength);
        ASSERT_EQ(Utf8SequenceLength(sText, uLength - 1), 0u);
        const char* p = sText;
        ASSERT_EQ(DecodeUtf8(p, sText + uLength), bValid ? uCode : 0xFFFD);
        ASSERT_EQ(p, sText + uLength);
    }
}

// Every pair of first and second byte, against the ranges of the standard.
TEST(Utf8, WellFormedBeginnings) {
    for (unsigned u0 = 0x80; u0 < 0x100; ++u0) {
        for (unsigned u1 = 0; u1 < 0x100; ++u1) {
            const char s[4] = {static_cast<char>(u0), static_cast<char>(u1), '\x80', '\x80'};
            const bool bTail = u1 >= 0x80 && u1 <= 0xBF;
            unsigned uExpected = 0;
            if (u0 >= 0xC2 && u0 <= 0xDF && bTail) uExpected = 2;
            if (u0 >= 0xE0 && u0 <= 0xEF && bTail) uExpected = 3;
            if (u0 >= 0xF0 && u0 <= 0xF4 && bTail) uExpected = 4;
            if ((u0 == 0xE0 && u1 < 0xA0) || (u0 == 0xED && u1 > 0x9F)) uExpected = 0;
            if ((u0 == 0xF0 && u1 < 0x90) || (u0 == 0xF4 && u1 > 0x8F)) uExpected = 0;
            ASSERT_EQ(Utf8SequenceLength(s, 4), uExpected) << u0 << " " << u1;
            ASSERT_EQ(IsUtf8(s, uExpected), true);
            const char* p = s;
            if (uExpected == 0) {
                ASSERT_EQ(DecodeUtf8(p, s + 4), u0);
            }
        }
    }
}

TEST(Utf8, OneByteAtEveryPlace) {
    for (std::size_t uSize = 0; uSize < 40; ++uSize) {
        std::string sText(uSize, 'a');
        EXPECT_TRUE(IsAscii(sText.data(), uSize) && IsAsciiText(sText.data(), uSize));
        for (std::size_t u = 0; u < uSize; ++u) {
            for (const int iByte : {0, 1, 0x7F, 0x80, 0x81, 0xFF}) {
                sText[u] = static_cast<char>(iByte);
                EXPECT_EQ(IsAscii(sText.data(), uSize), iByte < 0x80);
                EXPECT_EQ(IsUtf8(sText.data(), uSize), iByte < 0x80);
                EXPECT_EQ(IsAsciiText(sText.data(), uSize), iByte < 0x80 && iByte != 0) << iByte;
            }
            sText[u] = 'a';
        }
    }
}

TEST(Number, Text) {
    constexpr double LEAST = std::numeric_limits<double>::denorm_min();
    for (const double d :
         {0.0, -0.0, 0.1, 1e15, 1e16, 123456.789, 1.0 / 3, -2e-5, 1e-4, LEAST,
          std::numeric_limits<double>::max(), -std::numeric_limits<double>::infinity()}) {
        char sText[NUMBER_ROOM];
        char sExpected[64];
        std::snprintf(sExpected, sizeof(sExpected), "%.16g", d);
        EXPECT_EQ(FormatReal16(d, sText), std::strlen(sExpected));
        EXPECT_STREQ(sText, sExpected);
    }
    const struct {
        const char* sText;
        i2_t iValue;
        int iUsed;
    } oRows[] = {
        // clang-format off
        {"", 0, 0}, {"x", 0, 0}, {" \t\n\v\f\r+5 ", 5, 8}, {"-0", 0, 2}, {"--1", 0, 0},
        {"- 1", 0, 0}, {"0x10", 0, 1}, {"2147483647", 2147483647, 10},
        {"2147483648", 2147483647, 10}, {"-2147483648", -2147483647 - 1, 11},
        {"-2147483649", -2147483647 - 1, 11}, {"999999999999999999999999", 2147483647, 24},
        // clang-format on
    };
    for (const auto& oRow : oRows) {
        const char* pEnd = nullptr;
        EXPECT_EQ(ParseLong(oRow.sText, &pEnd), oRow.iValue) << oRow.sText;
        EXPECT_EQ(pEnd - oRow.sText, oRow.iUsed) << oRow.sText;
    }
}

// Bit by bit, as the standard tells it. The bytes of a text, or nothing for one that is none.
std::optional<std::string> SlowBase64(std::string_view sText) {
    constexpr std::string_view DIGITS =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<bool> abBit;
    std::size_t uPadding = 0;
    for (const char c : sText) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
        const std::size_t uDigit = DIGITS.find(c);
        if (c == '=') {
            ++uPadding;
        } else if (uDigit == std::string_view::npos || uPadding != 0) {
            return std::nullopt;
        } else {
            for (int i = 5; i >= 0; --i) abBit.push_back((uDigit >> i & 1) != 0);
        }
    }
    const std::size_t uRest = abBit.size() / 6 % 4;
    if (uRest == 1 || uPadding > 2 || (uPadding != 0 && uRest + uPadding != 4)) return std::nullopt;
    std::string sBytes(abBit.size() / 8, '\0');
    for (std::size_t u = 0; u < 8 * sBytes.size(); ++u) {
        sBytes[u / 8] = static_cast<char>(static_cast<u0_t>(sBytes[u / 8]) << 1 | abBit[u]);
    }
    return sBytes;
}

void CheckBase64(const std::string& sText) {
    Arr<char> oOut;
    oOut.Add("before", 6);
    const std::optional<std::string> sExpected = SlowBase64(sText);
    EXPECT_EQ(DecodeBase64(sText, oOut), sExpected.has_value()) << sText;
    EXPECT_EQ(std::string(oOut.Beg(), oOut.Size()), "before" + sExpected.value_or("")) << sText;
}

TEST(Base64, AgainstASlowOne) {
    std::mt19937 oRandom(7);
    std::string sBytes;
    for (unsigned uSize = 0; uSize < 70; ++uSize) {
        std::string sText(Base64Size(uSize), '\0');
        EncodeBase64(sBytes.data(), uSize, sText.data());
        EXPECT_EQ(SlowBase64(sText), sBytes) << uSize;
        // Whole, without its padding, cut off, with more behind it.
        for (std::size_t u = sText.size() < 5 ? 0 : sText.size() - 5; u <= sText.size(); ++u) {
            CheckBase64(sText.substr(0, u));
            CheckBase64(sText.substr(0, u) + "AAAAAAAAA");
        }
        // Another character at every place, and a line break in front of every place.
        for (std::size_t u = 0; u < sText.size(); ++u) {
            for (const char c :
                 {' ', '\n', '=', '-', '\0', '\x80', '\xFF', '@', '[', '`', '{', ':'}) {
                std::string sOther = sText;
                sOther[u] = c;
                CheckBase64(sOther);
            }
            CheckBase64(std::string(sText).insert(u, "\r\n"));
        }
        sBytes += static_cast<char>(oRandom());
    }
    // Every character at every place.
    for (int i = 0; i < 256; ++i) {
        for (std::size_t u = 0; u < 44; ++u) {
            std::string sText(44, 'A');
            sText[u] = static_cast<char>(i);
            CheckBase64(sText);
        }
    }
}

TEST(Date, FieldsAgainstTheCalendarOfTheStandardLibrary) {
    for (i3_t iDay = -800000; iDay < 800000; iDay += 13) {
        const std::chrono::year_month_day o{std::chrono::sys_days{std::chrono::days{iDay}}};
        const Date_Fields oFields = BreakDownDate(static_cast<double>(iDay) * 86400 + 86399.5);
        ASSERT_EQ(oFields.iYear, static_cast<int>(o.year()));
        ASSERT_EQ(oFields.iMonth, static_cast<int>(static_cast<unsigned>(o.month())));
        ASSERT_EQ(oFields.iDay, static_cast<int>(static_cast<unsigned>(o.day())));
        ASSERT_EQ(oFields.iHour * 3600 + oFields.iMinute * 60 + oFields.iSecond, 86399);
    }
}

TEST(Date, TextAndDayNumbers) {
    constexpr double INF = std::numeric_limits<double>::infinity();
    const struct {
        double dSeconds;
        const char* sText;
    } oRows[] = {
        {0, "1970-01-01T00:00:00"},
        {-0.001, "1969-12-31T23:59:59"},
        {1795545356, "2026-11-24T18:35:56"},
        {951782400, "2000-02-29T00:00:00"},
        {-62135596801, "0000-12-31T23:59:59"},
        {253402300800, "10000-01-01T00:00:00"},
        {std::numeric_limits<double>::quiet_NaN(), "1970-01-01T00:00:00"},
    };
    char sText[128];
    for (const auto& oRow : oRows) {
        EXPECT_EQ(FormatDate(oRow.dSeconds, 'T', sText), std::strlen(oRow.sText));
        EXPECT_STREQ(sText, oRow.sText);
    }
    for (const double d : {INF, -INF, 1e300}) EXPECT_LT(FormatDate(d, ' ', sText), 40u);
    for (const double dSeconds : {0.0, -1.0, -86401.0, 1795545356.0, -2209161600.0, 1.0}) {
        EXPECT_EQ(SecondsOfDays(DaysOfSeconds(dSeconds)), dSeconds);
    }
    EXPECT_EQ(DaysOfSeconds(0), 25569.0);
    EXPECT_EQ(SecondsOfDays(25569.0 - 0.6 / 86400), -1.0);
    EXPECT_EQ(SecondsOfDays(INF), INF);
    EXPECT_TRUE(std::isnan(SecondsOfDays(std::numeric_limits<double>::quiet_NaN())));
}

// Against std::string, over texts that are their own beginnings.
TEST(Find, AgainstTheStandardLibrary) {
    std::mt19937 oRandom(11);
    for (int i = 0; i < 20000; ++i) {
        std::string sText;
        std::string sWhat;
        const std::size_t uLetters = 1 + oRandom() % 3;
        for (std::size_t u = oRandom() % 12; u != 0; --u) {
            sWhat += static_cast<char>('a' + oRandom() % uLetters);
        }
        // Whole pieces of what is looked for, and a little between them, up to far more than what
        // is tried in the plain way.
        for (std::size_t u = oRandom() % (i % 100 == 0 ? 2000 : 12); u != 0; --u) {
            sText += sWhat.substr(0, oRandom() % (sWhat.size() + 1));
            if (oRandom() % 4 == 0) sText += static_cast<char>('a' + oRandom() % uLetters);
        }
        const std::size_t uFrom = oRandom() % (sText.size() + 2);
        ASSERT_EQ(FindText(sText, sWhat, uFrom), sText.find(sWhat, uFrom)) << sText << " " << sWhat;
        ASSERT_EQ(FindLastText(sText, sWhat), sText.rfind(sWhat)) << sText << " " << sWhat;
    }
    // What would take days, if every place were tried.
    for (const auto& [sMiddle, uPlace] : {std::pair("b", 700000u), {"", 0u}}) {
        const std::string sHalf(700000, 'a');
        const std::string sText = sHalf + sHalf + sMiddle + sHalf;
        const std::string sWhat = sHalf + sMiddle + sHalf;
        EXPECT_EQ(FindText(sText, sWhat), uPlace);
        EXPECT_EQ(FindLastText(sText, sWhat), std::size_t{700000});
        EXPECT_EQ(FindText(sText, sWhat + "b"), sText.npos);
        EXPECT_EQ(FindLastText(sText, "b" + sWhat), sText.npos);
    }
}

TEST(Hash, KeysAndOrder) {
    std::mt19937 oRandom(1);
    Hash oHash;
    EXPECT_EQ(oHash.Find(""), 0u);
    std::vector<std::string> oTexts = {""};
    EXPECT_EQ(oHash.Insert(""), 0u);
    EXPECT_EQ(oHash.Size(), 1u);
    // Few letters and lengths around a word: many common beginnings, of whole words as well.
    for (std::size_t i = 0; i < 3000; ++i) {
        std::string sText = std::string("the same beginnings").substr(0, i % 3 * 8);
        for (auto u = oRandom() % 20; u > 0; --u) sText += "ab\xC3\xFF"[oRandom() % 4];
        const auto oFound = std::ranges::find(oTexts, sText);
        const auto uKnown = static_cast<u2_t>(oFound - oTexts.begin());
        const bool bKnown = oFound != oTexts.end();
        EXPECT_EQ(oHash.Find(sText), bKnown ? uKnown : Hash::NONE);
        EXPECT_EQ(oHash.Insert(sText), uKnown);
        if (!bKnown) oTexts.push_back(sText);
        ASSERT_EQ(oHash.Size(), oTexts.size());
    }
    const std::string sLong(100000, 'x');
    const u2_t uLong = oHash.Insert(sLong);
    EXPECT_EQ(oHash(uLong).sText, sLong);
    ASSERT_EQ(oHash.Size(), oTexts.size() + 1);
    for (u2_t u = 0; u < oTexts.size(); ++u) {
        ASSERT_EQ(oHash(u).sText, oTexts[u]);
        const u2_t uOther = static_cast<u2_t>(oRandom() % oTexts.size());
        ASSERT_EQ(oHash.IsLess(u, uOther), oTexts[u] < oTexts[uOther]);
    }
}

// Texts of every length with a byte at every place that no name may have: the first one of a table,
// one of few whose memory is nearly used up, one of many.
TEST(Hash, TextsFromOutside) {
    for (const std::size_t uBefore : {0u, 15u, 16u, 30u, 31u, 97u}) {
        for (std::size_t uSize = 1; uSize <= 40; ++uSize) {
            Hash oHash;
            for (std::size_t u = 0; u < uBefore; ++u) {
                (void)oHash.Insert("the other text " + std::to_string(u));
            }
            for (std::size_t uAt = 0; uAt < uSize; ++uAt) {
                std::string sText(uSize, 'n');
                sText[uAt] = "\x80\0\xFF\x7F"[uAt % 4];
                const std::string sName(Utf8_Text(sText).View());
                const u2_t uKey = oHash.InsertOutside(sText);
                ASSERT_EQ(oHash(uKey).View(), sName);
                ASSERT_EQ(oHash.Find(sName), uKey);
                ASSERT_EQ(oHash.InsertOutside(sName), uKey);
                ASSERT_EQ(uKey == 0, sText[0] == '\0');
            }
        }
    }
}

}  // namespace
}  // namespace vok
