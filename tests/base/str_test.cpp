// Strings, their UTF-16 companion, and the table of distinct texts.
#include "vok/base/str.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vok/base/hash.h"

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

}  // namespace
}  // namespace vok
