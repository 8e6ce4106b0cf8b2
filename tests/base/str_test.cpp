// SPDX-License-Identifier: MIT
// Strings, how they are edited, and their UTF-16 companion.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok {
namespace {

TEST(Str, AppendsItself) {
    Str oText("ab");
    const Str oBefore = oText;
    std::string sModel = "ab";
    for (int i = 0; i < 10; ++i) {
        oText.Add(oText);
        oText.Add(oText.CStr() + sModel.size());  // its second half
        oText.Add(oText.View().substr(1, 3));
        sModel += sModel;
        sModel += sModel.substr(sModel.size() / 2);
        sModel += sModel.substr(1, 3);
        ASSERT_EQ(oText.View(), sModel);
        ASSERT_EQ(oText.Chars(), sModel.size());
    }
    EXPECT_STREQ(oBefore.CStr(), "ab");
}

// A block with room to spare, which the other owner must not see filled.
TEST(Str, CopiesAreTheirOwn) {
    const std::string_view sText = "0123456789";
    for (const auto& [sMore, sAdded] : {std::pair("x", "x"), {"\xE4", "ä"}, {"", ""}}) {
        Str oText;
        while (oText.Len() < 100) oText.Add(sText);
        Str oCopy = oText;
        oCopy.Add(sMore);
        oText.Add("y");
        EXPECT_EQ(oCopy.View().substr(99), std::string("9") + sAdded);
        EXPECT_EQ(oText.View().substr(99), "9y");
        Str oShared;
        oShared.Add(oText);
        oText.Clear();
        EXPECT_EQ(oShared.View().substr(99), "9y");
    }
}

TEST(Str, Utf16) {
    const struct {
        std::u16string sIn;
        const char* sUtf8;
        std::u16string sBack;
    } oRows[] = {
        {u"", "", u""},
        {u"aä€😀", "aä€😀", u"aä€😀"},
        {u"\xFFFF\xE000\xD7FF", "\uFFFF\uE000\uD7FF", u"\xFFFF\xE000\xD7FF"},
        {u"\xDBFF\xDFFF", "\U0010FFFF", u"\xDBFF\xDFFF"},
        {u"a\xD83D", "a\uFFFD", u"a\xFFFD"},
        {u"\xDE00\xD83D", "\uFFFD\uFFFD", u"\xFFFD\xFFFD"},
        {u"\xD83D\xD83D\xDE00", "\uFFFD😀", u"\xFFFD\xD83D\xDE00"},
    };
    for (const auto& oRow : oRows) {
        Str oText;
        oText.Add(oRow.sIn.c_str());
        EXPECT_STREQ(oText.CStr(), oRow.sUtf8);
        const Str::Utf16 oBack(oText);
        EXPECT_EQ(oBack.CStr(), oRow.sBack);
        EXPECT_EQ(oBack.Len(), oRow.sBack.size());
    }
    Str oText;
    const char16_t* sLong = u"abc\xD83D\xDE00";
    oText.Add(sLong, sLong + 4);
    EXPECT_EQ(oText, Str("abc\uFFFD"));
}

// Random editing in bytes and in characters, beside a text of code points that is edited likewise.
TEST(Str, EditingAgainstAModel) {
    const std::u32string sAlphabet = U"ab ä€😀,";
    std::mt19937 oRandom(5);
    const auto ToUtf8 = [](const std::u32string& sText) {
        std::string sUtf8;
        for (const char32_t c : sText) {
            char sCode[4];
            sUtf8.append(sCode, EncodeUtf8(c, sCode));
        }
        return sUtf8;
    };
    const auto Random = [&](std::size_t uMost) {
        std::u32string sText;
        for (std::size_t u = oRandom() % (uMost + 1); u != 0; --u) {
            sText += sAlphabet[oRandom() % sAlphabet.size()];
        }
        return sText;
    };
    Str oText;
    std::u32string sModel;
    for (int i = 0; i < 30000; ++i) {
        // Half of the time the block has another owner, who must not see a change.
        const Str oOther = oRandom() % 2 == 0 ? oText : Str();
        const std::string sBefore(oOther.View());
        std::size_t uFrom = oRandom() % (sModel.size() + 1);
        std::size_t uTo = oRandom() % (sModel.size() + 1);
        if (uFrom > uTo) std::swap(uFrom, uTo);
        const Str::CharPos oFrom{uFrom};
        const Str::CharPos oTo{uTo};
        const Str::BytePos oFromByte = oText.ToByte(oFrom);
        const Str::BytePos oToByte = oText.ToByte(oTo);
        ASSERT_EQ(oFromByte.m_uAt, ToUtf8(sModel.substr(0, uFrom)).size());
        ASSERT_EQ(oText.ToChar(oFromByte), oFrom);
        ASSERT_EQ(oText.ViewOf(oFrom, oTo), ToUtf8(sModel.substr(uFrom, uTo - uFrom)));
        if (uFrom < sModel.size()) {
            ASSERT_EQ(oText.CharAt(oFrom), sModel[uFrom]);
        }
        const std::u32string sNew = Random(4);
        const std::string sUtf8 = ToUtf8(sNew);
        switch (oRandom() % 8) {
            case 0:
                oText.Insert(oFrom, sUtf8);
                sModel.insert(uFrom, sNew);
                break;
            case 1:  // of itself
                oText.Insert(oFromByte, oText.ViewOf(oFrom, oTo));
                sModel.insert(uFrom, sModel.substr(uFrom, uTo - uFrom));
                break;
            case 2:
                oText.Remove(oFromByte, oToByte);
                sModel.erase(uFrom, uTo - uFrom);
                break;
            case 3:
                oText.Replace(oFrom, oTo, sUtf8);
                sModel.replace(uFrom, uTo - uFrom, sNew);
                break;
            case 4: {
                const std::u32string sWhat = Random(2);
                std::size_t uCount = 0;
                for (std::size_t u = 0;
                     !sWhat.empty() && (u = sModel.find(sWhat, u)) != sModel.npos; ++uCount) {
                    sModel.replace(u, sWhat.size(), sNew);
                    u += sNew.size();
                }
                ASSERT_EQ(oText.ReplaceAll(ToUtf8(sWhat), sUtf8), uCount);
                break;
            }
            case 5: {
                oText.Trim();
                const std::size_t uFirst = sModel.find_first_not_of(U' ');
                const std::size_t uLast = sModel.find_last_not_of(U' ');
                sModel = uLast == sModel.npos ? U"" : sModel.substr(uFirst, uLast + 1 - uFirst);
                break;
            }
            case 6: {
                Str oJoined = Str::Join(oText.Split(","), ";");
                oJoined.ReplaceAll(";", ",");
                ASSERT_EQ(oJoined, oText);
                break;
            }
            default:
                if (sModel.size() > 40) {
                    oText.Truncate(oFrom);
                    sModel.erase(uFrom);
                }
        }
        ASSERT_EQ(oText.View(), ToUtf8(sModel));
        ASSERT_EQ(oText.Chars(), sModel.size());
        ASSERT_EQ(oText.CStr()[oText.Len()], 0);
        ASSERT_EQ(oOther.View(), sBefore);
    }
}

TEST(Str, PartsAndEnds) {
    const struct {
        const char* sText;
        const char* sSeparator;
        std::vector<std::string> asPart;
    } oRows[] = {
        {"", ",", {""}},
        {",", ",", {"", ""}},
        {"a,b,,c", ",", {"a", "b", "", "c"}},
        {"a--b---c", "--", {"a", "b", "-c"}},
        {"aäbäc", "ä", {"a", "b", "c"}},
        {"aäb", "\xE4", {"a", "b"}},  // Latin-1
    };
    for (const auto& oRow : oRows) {
        std::vector<std::string> asPart;
        for (const std::string_view sPart : Str(oRow.sText).Split(oRow.sSeparator)) {
            asPart.emplace_back(sPart);
        }
        EXPECT_EQ(asPart, oRow.asPart) << oRow.sText;
    }
    const Str oText("xäyäx");
    EXPECT_TRUE(oText.StartsWith("xä") && oText.EndsWith("äx") && oText.Contains("yä"));
    EXPECT_TRUE(oText.StartsWith("") && oText.EndsWith("") && oText.Contains(""));
    EXPECT_FALSE(oText.StartsWith("y") || oText.EndsWith("y") || oText.Contains("xx"));
    EXPECT_EQ(oText.Find("ä", Str::BytePos{3})->m_uAt, 4u);
    EXPECT_EQ(oText.FindLast("\xE4")->m_uAt, 4u);
    EXPECT_FALSE(oText.Find("x", oText.End()) || oText.FindLast("z"));
    Str oTrimmed = oText;
    oTrimmed.Trim("äx");
    EXPECT_EQ(oTrimmed, "y");
    oTrimmed.TrimStart("\xC3");  // a character that is not in it, though the byte is in that of ä
    EXPECT_EQ(oTrimmed, "y");
    EXPECT_TRUE(Str("Z") < "a" && Str("a") < "ä" && Str("\uFFFD") < "\U00010000");
}

TEST(Str, Numbers) {
    Str oText("=");
    oText.AddNumber(std::numeric_limits<i3_t>::min());
    oText.AddNumber(std::numeric_limits<u3_t>::max());
    oText.AddNumber(-1);
    oText.AddNumber(0u);
    EXPECT_EQ(oText, "=-922337203685477580818446744073709551615-10");
    Str oReals;
    for (const double d : {0.1, -0.0, 1e300, -std::numeric_limits<double>::infinity()}) {
        oReals.AddNumber(d);
        oReals.Add(" ");
    }
    oReals.AddNumber(0.5f);
    EXPECT_EQ(oReals, "0.1 -0 1e+300 -INF 0.5");
}

TEST(Str, PlacesThatAreNone) {
    const Str oText("aä");
    const struct {
        std::function<void(Str&)> oCall;
        const char* sText;
    } oRows[] = {
        {[](Str& o) { o.Insert(Str::BytePos{4}, "x"); }, "index 4 out of range 3"},
        {[](Str& o) { o.Insert(Str::CharPos{3}, "x"); }, "index 3 out of range 2"},
        {[](Str& o) { o.Truncate(Str::BytePos{2}); }, "byte 2 is within a character"},
        {[](Str& o) { o.Remove(Str::CharPos{2}, Str::CharPos{1}); }, "index 3 out of range 1"},
        {[](Str& o) { (void)o.CharAt(o.End()); }, "index 3 out of range 3"},
        {[](Str& o) { (void)o.Find("", Str::BytePos{2}); }, "byte 2 is within a character"},
        {[](Str& o) { (void)o.Split(""); }, "parameter \"sSeparator\" has invalid value"},
    };
    for (const auto& oRow : oRows) {
        Str oEdited = oText;
        EXPECT_EQ(Failing([&] { oRow.oCall(oEdited); }), oRow.sText);
        EXPECT_EQ(oEdited, oText);
    }
}

}  // namespace
}  // namespace vok
