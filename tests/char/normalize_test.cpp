// SPDX-License-Identifier: MIT
// Normalization forms: the file of conformance, laws, long runs of marks, memory that is refused.
#include "vok/char/normalize.h"

#include <chrono>
#include <set>

#include "tests/char/char_support.h"
#include "vok/char/char.h"
#include "vok/char/compare.h"

namespace vok {
namespace {

using Char::Form;
constexpr Form FORMS[] = {Form::NFC, Form::NFD, Form::NFKC, Form::NFKD};

std::string In(Form eForm, std::string_view sText) {
    return Appended([&](Arr<char>& o) { Char::Normalize(sText, eForm, o); });
}

void ExpectForm(Form eForm, const std::string& sText, const std::string& sExpected) {
    ASSERT_EQ(In(eForm, sText), sExpected) << Shown(sText) << "form " << static_cast<int>(eForm);
    ASSERT_EQ(Char::IsNormalized(sText, eForm), sText == sExpected) << Shown(sText);
}

// NFC, NFD, NFKC, NFKD of the first column are the columns behind it; those columns stay.
TEST(Normalize, EveryLineOfConformance) {
    const auto oRows = Rows(VOK_NORMALIZATION_TEST);
    VOK_SKIP_WITHOUT(oRows);
    ASSERT_GT(oRows.size(), 18000u);
    std::set<u2_t> oListed;
    bool bFirstPart = false;
    for (const Texts& oRow : oRows) {
        if (oRow[0][0] == '@') {
            bFirstPart = oRow[0].starts_with("@Part1");
            continue;
        }
        std::string as[5];
        for (unsigned u = 0; u < 5; ++u) as[u] = Utf8(CodesOf(oRow[u]));
        if (bFirstPart) oListed.insert(CodesOf(oRow[0])[0]);
        const unsigned auCanonical[] = {1, 1, 1, 3, 3};
        for (unsigned u = 0; u < 5; ++u) {
            const unsigned uC = auCanonical[u];
            ExpectForm(Form::NFC, as[u], as[uC]);
            ExpectForm(Form::NFD, as[u], as[uC + 1]);
            ExpectForm(Form::NFKC, as[u], as[3]);
            ExpectForm(Form::NFKD, as[u], as[4]);
            EXPECT_TRUE(Char::EqualNormalized(as[0], as[u], Form::NFKD));
        }
        EXPECT_TRUE(Char::EqualNormalized(as[0], as[1]));
        EXPECT_LT(Char::CompareNormalized(as[0], as[1] + "!"), 0);
    }
    // All others stay as they are.
    ForEveryCharacter([&](u2_t u) { return !oListed.contains(u); },
                      [](const std::string& s) {
                          for (const Form eForm : FORMS) ExpectForm(eForm, s, s);
                      });
}

TEST(Normalize, SmallTexts) {
    const struct {
        Form eForm;
        const char* sText;
        const char* sExpected;
    } CASES[] = {
        {Form::NFC, "", ""},
        {Form::NFC, "plain", "plain"},
        {Form::NFC, "e\u0301", "é"},
        {Form::NFC, "xe\u0301\u0301y", "xé\u0301y"},
        {Form::NFC, "\u0301e", "\u0301e"},        // no character before the mark
        {Form::NFC, "e\u0327\u0301", "ȩ\u0301"},  // classes 202, 230
        {Form::NFC, "e\u0301\u0327", "ȩ\u0301"},  // put in order first
        {Form::NFC, "e\u0338\u0301", "é\u0338"},  // class 1 does not block 230
        {Form::NFC, "\u1100\u1161\u11A8", "각"},  // Hangul
        {Form::NFC, "가\u11A8", "각"},
        {Form::NFC, "각\u11A8", "각\u11A8"},
        {Form::NFC, "\u1100\u0301\u1161", "\u1100\u0301\u1161"},  // blocked
        {Form::NFC, "\u0958", "\u0915\u093C"},                    // excluded from composition
        {Form::NFC, "\u212B", "Å"},
        {Form::NFC, "\u0344", "\u0308\u0301"},  // a mark that becomes two
        {Form::NFD, "각 é", "\u1100\u1161\u11A8 e\u0301"},
        {Form::NFD, "\u1EAD\u0302", "a\u0323\u0302\u0302"},
        {Form::NFKC, "ﬁ²", "fi2"},
        {Form::NFKC, "\uFF76\uFF9E", "ガ"},
        {Form::NFKD, "\u1E9B\u0323", "s\u0323\u0307"},
        // Bytes that are no UTF-8 are Latin-1.
        {Form::NFC, "\xE9", "é"},
        {Form::NFD, "a\xE9\xC3", "ae\u0301A\u0303"},
        {Form::NFC, "\xC3\u0301", "Ã\u0301"},
        {Form::NFKC, "x\xBD", "x1\u20442"},
    };
    for (const auto& o : CASES) {
        EXPECT_EQ(In(o.eForm, o.sText), o.sExpected) << Shown(o.sText);
        EXPECT_EQ(Char::IsNormalized(o.sText, o.eForm), std::string_view(o.sText) == o.sExpected);
    }
    const std::string sNul("a\0\u0301", 4);
    EXPECT_EQ(In(Form::NFC, sNul), sNul);
}

TEST(Normalize, UnknownFormIsReported) {
    const Msg_Capture oCapture;
    const auto eForm = static_cast<Form>(7);
    EXPECT_EQ(In(eForm, "e\u0301"), "e\u0301");
    EXPECT_TRUE(Has(Msg_Capture::TakeConsole(), "unknown normalization form 7"));
    EXPECT_TRUE(Char::IsNormalized("e\u0301", eForm));
    EXPECT_EQ(Char::Normalize(Str("e\u0301"), eForm), Str("e\u0301"));
    EXPECT_EQ(Char::CompareNormalized("e\u0301", "é", eForm), 0);
}

TEST(Normalize, StringsThatStayShareTheirBlock) {
    const Str oComposed("Größe");
    EXPECT_EQ(Char::Normalize(oComposed, Form::NFC).Data(), oComposed.Data());
    EXPECT_EQ(Char::Normalize(oComposed, Form::NFD), Str("Gro\u0308ße"));
    EXPECT_EQ(Char::Normalize(Str("Gro\u0308ße"), Form::NFC), oComposed);
    const Str oPlain("straße");
    EXPECT_EQ(Char::RemoveAccents(oPlain).Data(), oPlain.Data());
    EXPECT_EQ(Char::Normalize(Str(), Form::NFC), Str());
}

TEST(Normalize, AccentsAreRemoved) {
    const Pair CASES[] = {
        {"Ångström, naïve, Việt", "Angstrom, naive, Viet"},
        {"ёлка й", "елка и"},
        {"e\u0301\u0327o\u0338", "eo"},
        {"ø ł ß", "ø ł ß"},
        {"がば", "がば"},
        {"각", "각"},
        {"\u05E9\u05C1\u05B8", "\u05E9\u05B8\u05C1"},
        {"\u0301", ""},
        {"\xE9", "e"},
        {"", ""},
    };
    for (const auto& [sText, sExpected] : CASES) {
        const std::string s = Appended([&, t = sText](Arr<char>& o) { Char::RemoveAccents(t, o); });
        EXPECT_EQ(s, sExpected) << sText;
        EXPECT_EQ(Char::RemoveAccents(Str(sText.c_str())), Str(sExpected.c_str()));
    }
}

TEST(Normalize, LawsOnRandomTexts) {
    Texts_Random oRandom(1, [](u2_t u) {
        return Char::CombiningClass(u) != 0 || !Char::IsNormalized(Utf8({u}), Form::NFKD) ||
               (u >= 0x1100 && u < 0x1200) || (u > 0x60 && u < 0x80);
    });
    for (unsigned uRound = 0; uRound < 4000; ++uRound) {
        const std::string s = Utf8(oRandom.Next(40));
        const std::string sC = In(Form::NFC, s), sD = In(Form::NFD, s);
        ASSERT_EQ(In(Form::NFC, sD), sC) << Shown(s);
        ASSERT_EQ(In(Form::NFD, sC), sD) << Shown(s);
        ASSERT_EQ(In(Form::NFKC, sD), In(Form::NFKC, In(Form::NFKD, s))) << Shown(s);
        for (const Form eForm : FORMS) {
            ASSERT_TRUE(Char::IsNormalized(In(eForm, s), eForm)) << Shown(s);
        }
        ASSERT_TRUE(Char::EqualNormalized(sC, s));
        ASSERT_EQ(Char::CompareNormalized(s, sD + "x"), -Char::CompareNormalized(sC + "x", s));
    }
}

// Nobody's marks cost more than their number. What would be quadratic takes a minute and more.
TEST(Normalize, MarksWithoutEnd) {
    std::string s = "a";
    for (unsigned u = 0; u < 400000; ++u)
        s += u % 3 == 0 ? "\u0301" : u % 3 == 1 ? "\u0323" : "\u0F72";
    const auto oBefore = std::chrono::steady_clock::now();
    const std::string sC = In(Form::NFC, s);
    EXPECT_TRUE(sC.starts_with("\u1EA1\u0F72\u0F72")) << Shown(sC.substr(0, 12));
    EXPECT_EQ(In(Form::NFC, In(Form::NFD, s)), sC);
    EXPECT_FALSE(Char::IsNormalized(s, Form::NFC));
    const std::string sVowels = "\u1100" + Repeat("\u1161", 400000);
    EXPECT_EQ(In(Form::NFC, sVowels), "\uAC00" + Repeat("\u1161", 399999));
    EXPECT_LT(std::chrono::steady_clock::now() - oBefore, std::chrono::seconds(20));
}

TEST(Normalize, RefusedMemoryLeavesWhatWasThere) {
    std::string s = Repeat("plain e\u0301 \u1E9B\u0323 ", 20);
    for (unsigned u = 0; u < 200; ++u) s += u % 2 == 0 ? "\u0301" : "\u0323";
    const std::string sExpected = In(Form::NFKC, s);
    const Str oSource(s.c_str());
    const Mem_Probe oProbe;
    unsigned uRefused = 0;
    for (unsigned uNth = 1;; ++uNth) {
        Arr<char> oOut;
        oOut.Add("*", 1);
        Str oStr;
        const bool bRefused = Mem_Probe::HasRefused(uNth, [&] {
            Char::Normalize(s, Form::NFKC, oOut);
            Char::RemoveAccents(s, oOut);
            oStr = Char::Normalize(oSource, Form::NFKC);
            oStr = Char::RemoveAccents(oSource);
        });
        if (!bRefused) break;
        ++uRefused;
        const std::string sOut = Content(oOut);
        EXPECT_TRUE(sOut == "*" || sOut == "*" + sExpected || sOut.size() > sExpected.size());
        EXPECT_EQ(oSource.View(), s);
    }
    EXPECT_GT(uRefused, 10u);
}

// No character makes more than so many times its bytes.
TEST(Normalize, GrowthIsBounded) {
    for (u2_t u = 0x80; u < 0x30000; ++u) {
        const std::string s = Utf8({u});
        ASSERT_LE(In(Form::NFKD, s).size(), 11 * s.size()) << u;
    }
    for (int i = 0x80; i < 0x100; ++i) {
        ASSERT_LE(In(Form::NFKD, std::string(1, static_cast<char>(i))).size(), 11u) << i;
    }
}

}  // namespace
}  // namespace vok
