// SPDX-License-Identifier: MIT
// Normalization forms (Unicode Standard Annex 15) of Unicode 15.0.0, and letters without accents.
//
// Texts given as bytes need not be valid: a byte that is in no well-formed sequence stands for the
// Latin-1 character of its value, as everywhere in this library, and a NUL is a character. What
// comes out is valid UTF-8. ASCII is found eight bytes at a time and copied; text that is in the
// form already is looked at once and copied. Everything is linear in the bytes: marks behind each
// other, however many, are put in order by counting them.
//
// Any number of threads may use these; they depend on no locale. Memory asked for is bounded by
// the text: a form makes at most 11 times as many bytes of it (U+FDFA). When there is none, the
// allocation errors of Mem are raised, and what was to be changed is as it was.
#ifndef VOK_CHAR_NORMALIZE_H
#define VOK_CHAR_NORMALIZE_H

#include <string_view>

#include "vok/base/str.h"

namespace vok::Char {

enum class Form : u0_t {
    NFC,   // composed: what most texts are
    NFD,   // decomposed
    NFKC,  // the same, and characters of compatibility - ligatures, wide letters - become the
    NFKD   //   plain ones: a loss
};

// Appends sText in a form; it must not lie in oOut. Text in a form that there is none such is
// reported - "unknown normalization form %0" - and taken as it is.
void Normalize(std::string_view sText, Form eForm, Arr<char>& oOut);
// A text in a form. It shares the block of one that is in it.
[[nodiscard]] Str Normalize(const Str& oText, Form eForm);

// Whether Normalize would give the same bytes. Stops at the first one that it would not.
[[nodiscard]] bool IsNormalized(std::string_view sText, Form eForm);

// Letters without their accents, composed (NFC): decomposed, and without the marks that stand
// above, below or across, combining classes 1 and 200 to 240: "Ångström" -> "Angstrom", "ё" -> "е".
// Marks that make other letters or other sounds stay: voicing of Kana, vowels of Hebrew, Arabic
// and of Indic scripts. So do letters whose stroke is no mark: "ø", "ł".
void RemoveAccents(std::string_view sText, Arr<char>& oOut);
[[nodiscard]] Str RemoveAccents(const Str& oText);

}  // namespace vok::Char

#endif  // VOK_CHAR_NORMALIZE_H
