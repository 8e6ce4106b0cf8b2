// SPDX-License-Identifier: MIT
// Names of categories and scripts, identifiers, grapheme clusters, columns.
#include "vok/char/char.h"

#include "tests/char/char_support.h"
#include "vok/char/cluster.h"

namespace vok {
namespace {

TEST(Char, NamesBothWays) {
    for (unsigned u = 0; u < 30; ++u) {
        const auto e = static_cast<Char::Category>(u);
        EXPECT_EQ(Char::CategoryOfName(Char::CategoryName(e)), e);
    }
    for (u2_t u = 0; u < 0x110000; ++u) {
        const Char::Script e = Char::ScriptOf(u);
        ASSERT_EQ(Char::ScriptOfName(Char::ScriptName(e)), e);
    }
    EXPECT_EQ(Char::CategoryOfName("Uppercase_Letter"), Char::Category::Lu);
    EXPECT_EQ(Char::ScriptOfName("Grek"), Char::Script::Greek);
    EXPECT_STREQ(Char::CategoryName(static_cast<Char::Category>(30)), "Cn");
    EXPECT_STREQ(Char::ScriptName(static_cast<Char::Script>(255)), "Unknown");
    const auto oCategory = [](const char* s) { return [s] { (void)Char::CategoryOfName(s); }; };
    EXPECT_EQ(Raised(oCategory("LU")), "unknown unicode general category 'LU'\n");
    EXPECT_EQ(Trail(oCategory("")), "vok::Char::CategoryOfName\n");
    EXPECT_EQ(Raised([] { (void)Char::ScriptOfName("latin"); }),
              "unknown unicode script name 'latin\n");
}

TEST(Char, BeyondTheCodeSpace) {
    for (const u2_t u : {0x110000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Char::GeneralCategory(u), Char::Category::Cn);
        EXPECT_EQ(Char::ScriptOf(u), Char::Script::Unknown);
        EXPECT_EQ(Char::CombiningClass(u), 0);
        EXPECT_EQ(Char::ToUpper(u), u);
        EXPECT_FALSE(Char::IsIdStart(u) || Char::IsIdContinue(u));
    }
}

TEST(Char, Identifiers) {
    for (const char* s : {"a", "größe9", "x_1", "日本", "x\u0301", "e·x"}) {
        EXPECT_TRUE(Char::IsIdentifier(s)) << s;
    }
    for (const char* s : {"", "9a", "_x", "a b", "a-b", "\u0301x", "gr\xF6sse", "a\xC3"}) {
        EXPECT_FALSE(Char::IsIdentifier(s)) << s;
    }
}

TEST(Cluster, EveryLineOfConformance) {
    const auto oRows = DatabaseRows("auxiliary/GraphemeBreakTest.txt");
    VOK_SKIP_WITHOUT(oRows);
    ASSERT_GT(oRows.size(), 600u);
    for (const Texts& oRow : oRows) {
        // "÷ 0020 × 0308 ÷": what stands between two borders.
        Texts oExpected;
        std::istringstream oIn(oRow[0]);
        for (std::string sMark, sCode; oIn >> sMark >> sCode;) {
            if (sMark == "÷") oExpected.emplace_back();
            oExpected.back() += Utf8(CodesOf(sCode));
        }
        const std::string sText = Joined(oExpected);
        Texts oClusters;
        for (const std::string_view s : Char::Clusters(sText)) oClusters.emplace_back(s);
        EXPECT_EQ(oClusters, oExpected) << oRow[0];
        EXPECT_EQ(Char::CountClusters(sText), oExpected.size());
    }
}

TEST(Cluster, Columns) {
    const struct {
        const char* sText;
        std::size_t uClusters;
        std::size_t uWidth;
    } CASES[] = {
        {"", 0, 0},
        {"plain", 5, 5},
        {"more than eight bytes \x7F of ASCII ~", 34, 33},
        {"12345678\u0301 12345678\t2345678", 25, 24},
        {"a\r\nb\tc", 5, 3},
        {"Größe", 5, 5},
        {"e\u0301\u0301x", 2, 2},
        {"\u0301", 1, 0},
        {"日本", 2, 4},
        {"ｶﾞ", 1, 1},
        {"각", 1, 2},
        {"\u1100\u1161\u11A8", 1, 2},
        {"🇩🇪🇫🇷🇮", 3, 5},
        {"👩‍👩‍👧 ok", 4, 5},
        {"☺", 1, 1},
        {"☺\uFE0F", 1, 2},
        {"1\uFE0F\u20E3", 1, 2},
        {"a\uFE0F", 1, 1},
        {"हिन्दी", 3, 3},
        {"soft\u00ADly\u200B", 8, 7},
        {"\xE9\xCC", 2, 2},  // Latin-1
    };
    for (const auto& o : CASES) {
        EXPECT_EQ(Char::CountClusters(o.sText), o.uClusters) << o.sText;
        EXPECT_EQ(Char::Width(o.sText), o.uWidth) << o.sText;
    }
}

TEST(Cluster, CutToColumns) {
    const std::string_view sText = "a日e\u0301本\u200B!";
    const std::size_t BYTES[] = {0, 1, 1, 4, 7, 7, 13, 14, 14};
    for (std::size_t u = 0; u < std::size(BYTES); ++u) {
        const std::size_t uBytes = Char::FitColumns(sText, u);
        EXPECT_EQ(uBytes, BYTES[u]) << u;
        EXPECT_LE(Char::Width(sText.substr(0, uBytes)), u);
    }
    EXPECT_EQ(Char::NextCluster(sText, 14), 14u);
    EXPECT_EQ(Char::NextCluster(sText, 99), 14u);
}

}  // namespace
}  // namespace vok
