// SPDX-License-Identifier: MIT
// All code points, and random texts, beside what ICU says of them.
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/uscript.h>
#include <unicode/ustring.h>

#include "tests/char/char_support.h"
#include "vok/char/casing.h"
#include "vok/char/char.h"
#include "vok/char/normalize.h"

namespace vok {
namespace {

using Char::Casing;
using Char::Form;

// ICU knows the same version, or there is nothing to compare.
bool IsSameVersion() {
    return std::string_view(Char::UNICODE_VERSION).starts_with(U_UNICODE_VERSION);
}
#define VOK_SKIP_OTHER_VERSION() \
    if (!IsSameVersion()) GTEST_SKIP() << "ICU knows Unicode " U_UNICODE_VERSION

TEST(Icu, EveryCodePoint) {
    VOK_SKIP_OTHER_VERSION();
    for (u2_t uCode = 0; uCode < 0x110000; ++uCode) {
        const auto i = static_cast<UChar32>(uCode);
        const auto oValueName = [&](UProperty eProperty, UPropertyNameChoice eChoice) {
            return u_getPropertyValueName(eProperty, u_getIntPropertyValue(i, eProperty), eChoice);
        };
        ASSERT_STREQ(Char::CategoryName(Char::GeneralCategory(uCode)),
                     oValueName(UCHAR_GENERAL_CATEGORY, U_SHORT_PROPERTY_NAME))
            << uCode;
        ASSERT_STREQ(Char::ScriptName(Char::ScriptOf(uCode)),
                     oValueName(UCHAR_SCRIPT, U_LONG_PROPERTY_NAME))
            << uCode;
        ASSERT_EQ(Char::CombiningClass(uCode), u_getCombiningClass(i)) << uCode;
        ASSERT_EQ(Char::ToUpper(uCode), static_cast<u2_t>(u_toupper(i))) << uCode;
        ASSERT_EQ(Char::ToLower(uCode), static_cast<u2_t>(u_tolower(i))) << uCode;
        ASSERT_EQ(Char::ToTitle(uCode), static_cast<u2_t>(u_totitle(i))) << uCode;
        ASSERT_EQ(Char::ToFolded(uCode), static_cast<u2_t>(u_foldCase(i, U_FOLD_CASE_DEFAULT)))
            << uCode;
        ASSERT_EQ(Char::IsIdStart(uCode), u_hasBinaryProperty(i, UCHAR_XID_START) != 0) << uCode;
        ASSERT_EQ(Char::IsIdContinue(uCode), u_hasBinaryProperty(i, UCHAR_XID_CONTINUE) != 0)
            << uCode;
        const int iWidth = u_getIntPropertyValue(i, UCHAR_EAST_ASIAN_WIDTH);
        const bool bWide = iWidth == U_EA_WIDE || iWidth == U_EA_FULLWIDTH;
        const int iHangul = u_getIntPropertyValue(i, UCHAR_HANGUL_SYLLABLE_TYPE);
        const u2_t uMask = U_MASK(u_charType(i));
        const bool bNone = (uMask & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CC_MASK | U_GC_CF_MASK |
                                     U_GC_ZL_MASK | U_GC_ZP_MASK | U_GC_CS_MASK)) != 0;
        const bool bJoins = iHangul == U_HST_VOWEL_JAMO || iHangul == U_HST_TRAILING_JAMO;
        const unsigned uColumns = (bNone && uCode != 0xAD) || bJoins || uCode == 0x115F ? 0
                                  : bWide                                               ? 2
                                                                                        : 1;
        ASSERT_EQ(Char::Columns(uCode), uColumns) << uCode;
    }
}

using Utf16 = std::u16string;
Utf16 ToIcu(const std::string& s) {
    Utf16 sOut;
    for (const char* p = s.data(); p != s.data() + s.size();) {
        char16_t aUnits[2];
        sOut.append(aUnits, EncodeUtf16(DecodeUtf8(p, s.data() + s.size()), aUnits));
    }
    return sOut;
}
std::string FromIcu(const Utf16& s) {
    Codes oCodes;
    for (const char16_t* p = s.data(); p != s.data() + s.size();) {
        oCodes.push_back(DecodeUtf16(p, s.data() + s.size()));
    }
    return Utf8(oCodes);
}
// What a function of ICU makes of a text: oCall(target, capacity, source, size, error).
template <class F>
std::string ByIcu(const std::string& s, F&& oCall) {
    const Utf16 sIn = ToIcu(s);
    Utf16 sOut(sIn.size() * 20 + 20, u'\0');
    UErrorCode eError = U_ZERO_ERROR;
    const int32_t iSize = oCall(sOut.data(), static_cast<int32_t>(sOut.size()), sIn.data(),
                                static_cast<int32_t>(sIn.size()), &eError);
    EXPECT_TRUE(U_SUCCESS(eError));
    sOut.resize(static_cast<std::size_t>(iSize));
    return FromIcu(sOut);
}

void ExpectForms(const std::string& s) {
    UErrorCode eError = U_ZERO_ERROR;
    const UNormalizer2* FORMS[] = {unorm2_getNFCInstance(&eError), unorm2_getNFDInstance(&eError),
                                   unorm2_getNFKCInstance(&eError),
                                   unorm2_getNFKDInstance(&eError)};
    for (unsigned u = 0; u < 4; ++u) {
        const auto oCall = [&](char16_t* pOut, int32_t iMost, const char16_t* pIn, int32_t iSize,
                               UErrorCode* pError) {
            return unorm2_normalize(FORMS[u], pIn, iSize, pOut, iMost, pError);
        };
        const auto eForm = static_cast<Form>(u);
        const std::string sOurs = Appended([&](Arr<char>& o) { Char::Normalize(s, eForm, o); });
        ASSERT_EQ(sOurs, ByIcu(s, oCall)) << Shown(s) << "form " << u;
    }
}

void ExpectCases(const std::string& s) {
    for (const Casing eCasing : {Casing::Standard, Casing::Turkish}) {
        const bool bTurkish = eCasing == Casing::Turkish;
        const char* sLocale = bTurkish ? "tr" : "";
        const auto oUpper = [&](auto* pOut, int32_t iMost, auto* pIn, int32_t iSize, auto* pError) {
            return u_strToUpper(pOut, iMost, pIn, iSize, sLocale, pError);
        };
        const auto oLower = [&](auto* pOut, int32_t iMost, auto* pIn, int32_t iSize, auto* pError) {
            return u_strToLower(pOut, iMost, pIn, iSize, sLocale, pError);
        };
        const auto oFold = [&](auto* pOut, int32_t iMost, auto* pIn, int32_t iSize, auto* pError) {
            const u2_t uOption = bTurkish ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
            return u_strFoldCase(pOut, iMost, pIn, iSize, uOption, pError);
        };
        const auto oOurs = [&](auto pOperation) {
            return Appended([&](Arr<char>& o) { pOperation(s, o, eCasing); });
        };
        using Operation = void (*)(std::string_view, Arr<char>&, Casing);
        ASSERT_EQ(oOurs(Operation{Char::Upper}), ByIcu(s, oUpper)) << Shown(s) << sLocale;
        ASSERT_EQ(oOurs(Operation{Char::Lower}), ByIcu(s, oLower)) << Shown(s) << sLocale;
        ASSERT_EQ(oOurs(Operation{Char::Fold}), ByIcu(s, oFold)) << Shown(s) << sLocale;
    }
}

TEST(Icu, FormsAndCasesOfEveryCharacter) {
    VOK_SKIP_OTHER_VERSION();
    // Of those to which nothing happens, as most letters without case, some will do: that their
    // simple mappings are none is seen above, and that forms leave them, in normalize_test.cpp.
    const auto oIsWanted = [](u2_t u) {
        const auto i = static_cast<UChar32>(u);
        const bool bPlain =
            (U_MASK(u_charType(i)) & (U_GC_LO_MASK | U_GC_CO_MASK | U_GC_CN_MASK)) != 0;
        return !bPlain || u % 61 == 0 ||
               u_getIntPropertyValue(i, UCHAR_NFKD_QUICK_CHECK) != UNORM_YES;
    };
    ForEveryCharacter(oIsWanted, [](const std::string& s) {
        ASSERT_NO_FATAL_FAILURE(ExpectForms(s));
        ASSERT_NO_FATAL_FAILURE(ExpectCases(s));
    });
}

TEST(Icu, RandomTexts) {
    VOK_SKIP_OTHER_VERSION();
    Texts_Random oForms(2, [](u2_t u) {
        return u_getCombiningClass(static_cast<UChar32>(u)) != 0 ||
               u_getIntPropertyValue(static_cast<UChar32>(u), UCHAR_NFKD_QUICK_CHECK) !=
                   UNORM_YES ||
               u_getIntPropertyValue(static_cast<UChar32>(u), UCHAR_NFC_QUICK_CHECK) != UNORM_YES ||
               (u >= 'a' && u < 0x80);
    });
    Texts_Random oCases(3, [](u2_t u) {
        const bool bSigma = u == 0x3A3 || u == 'I' || u == 'i' || u == 0x307 || u == 0x130;
        return bSigma || u_hasBinaryProperty(static_cast<UChar32>(u), UCHAR_CASED) != 0 ||
               (u < 0x400 && u_hasBinaryProperty(static_cast<UChar32>(u), UCHAR_CASE_IGNORABLE));
    });
    std::mt19937 oRandom(4);
    const u2_t OFTEN[] = {0x3A3, 'I', 'i', 0x307, 0x130, ' ', '\'', 0x323, 0x301};
    for (unsigned uRound = 0; uRound < 5000; ++uRound) {
        ASSERT_NO_FATAL_FAILURE(ExpectForms(Utf8(oForms.Next(30))));
        Codes oCodes = oCases.Next(12);
        for (u2_t& u : oCodes) {
            if (RandomBelow(oRandom, 2) == 0) u = OFTEN[RandomBelow(oRandom, std::size(OFTEN))];
        }
        ASSERT_NO_FATAL_FAILURE(ExpectCases(Utf8(oCodes)));
    }
}

}  // namespace
}  // namespace vok
