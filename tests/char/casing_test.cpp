// SPDX-License-Identifier: MIT
// Case mappings of texts, by the files and by hand; comparing and finding whatever the case.
#include "vok/char/casing.h"

#include "tests/char/char_support.h"
#include "vok/char/char.h"
#include "vok/char/compare.h"

namespace vok {
namespace {

using Char::Casing;
using Char::Found;

using Operation = void (*)(std::string_view, Arr<char>&, Casing);
std::string By(Operation pOperation, std::string_view sText, Casing eCasing = Casing::Standard) {
    return Appended([&](Arr<char>& o) { pOperation(sText, o, eCasing); });
}
std::string UpperOf(std::string_view s, Casing e = Casing::Standard) {
    return By(Char::Upper, s, e);
}
std::string LowerOf(std::string_view s, Casing e = Casing::Standard) {
    return By(Char::Lower, s, e);
}
std::string TitleOf(std::string_view s, Casing e = Casing::Standard) {
    return By(Char::Title, s, e);
}
std::string FoldOf(std::string_view s, Casing e = Casing::Standard) {
    return By(Char::Fold, s, e);
}

TEST(Casing, SpecialMappings) {
    const auto oRows = DatabaseRows("SpecialCasing.txt");
    VOK_SKIP_WITHOUT(oRows);
    for (const Texts& oRow : oRows) {
        const bool bTurkish = oRow[4].starts_with("tr");
        if (!oRow[4].empty() && !bTurkish) continue;
        if (oRow[4].find('_') != std::string::npos) continue;  // with what is around it: below
        const Casing eCasing = bTurkish ? Casing::Turkish : Casing::Standard;
        const std::string s = Utf8(CodesOf(oRow[0]));
        EXPECT_EQ(LowerOf(s, eCasing), Utf8(CodesOf(oRow[1]))) << oRow[0];
        EXPECT_EQ(TitleOf(s, eCasing), Utf8(CodesOf(oRow[2]))) << oRow[0];
        EXPECT_EQ(UpperOf(s, eCasing), Utf8(CodesOf(oRow[3]))) << oRow[0];
    }
}

TEST(Casing, Foldings) {
    const auto oRows = DatabaseRows("CaseFolding.txt");
    VOK_SKIP_WITHOUT(oRows);
    for (const Texts& oRow : oRows) {
        const u2_t uCode = CodesOf(oRow[0])[0];
        const std::string sFolded = Utf8(CodesOf(oRow[2]));
        if (oRow[1] == "C" || oRow[1] == "S") {
            EXPECT_EQ(Utf8({Char::ToFolded(uCode)}), sFolded) << oRow[0];
        }
        if (oRow[1] == "S") continue;
        const Casing eCasing = oRow[1] == "T" ? Casing::Turkish : Casing::Standard;
        EXPECT_EQ(FoldOf(Utf8({uCode}), eCasing), sFolded) << oRow[0];
    }
}

TEST(Casing, Texts) {
    constexpr auto TURKISH = Casing::Turkish;
    const std::string sAscii = "@AZ[`az{ ";
    for (unsigned u = 0; u < 20; ++u) {
        const std::string sPad(u, '-');
        EXPECT_EQ(LowerOf(sPad + sAscii + "\xC3\x84"), sPad + "@az[`az{ ä");
        EXPECT_EQ(UpperOf(sPad + sAscii + "\xC3\xA4"), sPad + "@AZ[`AZ{ Ä");
    }
    const struct {
        std::string sActual;
        const char* sExpected;
    } CASES[] = {
        {UpperOf("Straße ﬃ ŉ"), "STRASSE FFI ʼN"},
        {FoldOf("Straße ﬃ STRASSE"), "strasse ffi strasse"},
        {UpperOf("\xE4\xFF"), "ÄŸ"},  // Latin-1
        {LowerOf("ΑΣ ΟΔΥΣΣΕΥΣ"), "ας οδυσσευς"},
        {LowerOf("Σ ΑΣ\u0301. ΑΣ'Α Σ"), "σ ας\u0301. ασ'α σ"},
        {LowerOf("A'Σ"), "a'ς"},
        {LowerOf("A.:Σ-A"), "a.:ς-a"},
        {LowerOf("ΑΣ\xCC"), "ασì"},  // the byte is a letter
        {TitleOf("ΑΣ ΣΑΣ"), "Ας Σας"},
        {TitleOf("don't STOP o'Neil ǆabc ﬁn 3rd"), "Don't Stop O'neil ǅabc Fin 3Rd"},
        {TitleOf("ßa ŉb"), "Ssa ʼNb"},
        {LowerOf("İI"), "i\u0307i"},
        {LowerOf("İI", TURKISH), "iı"},
        {LowerOf("I\u0307 I\u0323\u0307 I\u0301\u0307 i\u0307", TURKISH),
         "i i\u0323 ı\u0301\u0307 i\u0307"},
        {UpperOf("iı", TURKISH), "İI"},
        {UpperOf("iı"), "II"},
        {TitleOf("istanbul ISPARTA", TURKISH), "İstanbul Isparta"},
        {TitleOf("ispIr", TURKISH), "İspır"},
        {FoldOf("İIiı", TURKISH), "iıiı"},
        {FoldOf("İIiı"), "i\u0307iiı"},
        {FoldOf("\u1E9E\u03C2"), "ssσ"},
        {LowerOf(std::string("A\0B", 3)), "a"},
    };
    for (const auto& o : CASES) EXPECT_EQ(o.sActual.substr(0, o.sActual.find('\0')), o.sExpected);
}

TEST(Casing, StringsThatStayShareTheirBlock) {
    const Str oText("größe");
    EXPECT_EQ(Char::Lower(oText).Data(), oText.Data());
    EXPECT_EQ(Char::Upper(oText), Str("GRÖSSE"));
    EXPECT_EQ(Char::Title(oText), Str("Größe"));
    EXPECT_EQ(Char::Fold(oText), Str("grösse"));
    EXPECT_EQ(Char::Upper(Str("i"), Casing::Turkish), Str("İ"));
}

TEST(Casing, RefusedMemoryLeavesWhatWasThere) {
    const std::string s = Repeat("Straße ΐ ", 50);
    const Mem_Probe oProbe;
    for (const Operation pOperation : {Operation{Char::Upper}, Operation{Char::Title}}) {
        unsigned uNth = 1;
        for (;; ++uNth) {
            Arr<char> oOut;
            oOut.Add("*", 1);
            if (!Mem_Probe::HasRefused(uNth, [&] { pOperation(s, oOut, Casing::Standard); })) break;
            EXPECT_EQ(Content(oOut), "*");
        }
        EXPECT_GT(uNth, 1u);
    }
}

TEST(Compare, Cases) {
    const struct {
        const char* sA;
        const char* sB;
        int iOrder;
        Casing eCasing = Casing::Standard;
    } CASES[] = {
        {"", "", 0},
        {"", "a", -1},
        {"Hello, large WORLD", "hELLO, LARGE world", 0},
        {"Hello, large WORLD", "hELLO, LARGE worle", -1},
        {"abcdefgh@", "ABCDEFGH`", -1},
        {"STRASSE", "straße", 0},
        {"ﬃ", "ffi", 0},
        {"ß", "s", 1},
        {"ΣΑΣ", "σας", 0},
        {"\xC4", "ä", 0},
        {"é", "e\u0301", 1},
        {"z", "ä", -1},
        {"I", "i", 0},
        {"I", "i", 1, Casing::Turkish},
        {"İ", "i", 0, Casing::Turkish},
    };
    for (const auto& o : CASES) {
        EXPECT_EQ(Char::CompareNoCase(o.sA, o.sB, o.eCasing), o.iOrder) << o.sA << ' ' << o.sB;
        EXPECT_EQ(Char::CompareNoCase(o.sB, o.sA, o.eCasing), -o.iOrder) << o.sA << ' ' << o.sB;
        EXPECT_EQ(Char::EqualNoCase(o.sA, o.sB, o.eCasing), o.iOrder == 0);
    }
}

TEST(Compare, Found) {
    const struct {
        const char* sText;
        const char* sWhat;
        std::size_t uFrom;
        Found oExpected;
    } CASES[] = {
        {"abc", "", 3, {3, 0}},
        {"abc", "", 4, {}},
        {"", "a", 0, {}},
        {"one TWO two", "two", 0, {4, 3}},
        {"one TWO two", "two", 5, {8, 3}},
        {"Die Straße hier", "STRASSE", 0, {4, 7}},
        {"Die STRASSE hier", "straße", 0, {4, 7}},
        {"ß", "s", 0, {}},
        {"ßs", "ss", 0, {0, 2}},
        {"sß", "ss", 0, {1, 2}},  // not half a character
        {"sßs", "sss", 0, {0, 3}},
        {"aßß", "ssss", 0, {1, 4}},
        {"aabaabaaab", "AABAAA", 0, {3, 6}},
        {"x\xC4y", "ä", 0, {1, 1}},
    };
    for (const auto& o : CASES) {
        const Found oFound = Char::FindNoCase(o.sText, o.sWhat, o.uFrom);
        EXPECT_EQ(oFound, o.oExpected) << o.sText << ' ' << o.sWhat << ' ' << oFound.m_uAt;
    }
    EXPECT_EQ(Char::FindNoCase("tIkI", "ki", 0, Casing::Turkish), (Found{}));
    const std::string sLong = Repeat("a", 300000);
    EXPECT_EQ(Char::FindNoCase(sLong + "B", Repeat("A", 150000) + "b"), (Found{150000, 150001}));
}

}  // namespace
}  // namespace vok
