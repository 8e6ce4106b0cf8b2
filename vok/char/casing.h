// SPDX-License-Identifier: MIT
// Upper, lower and title case of texts, and folding, by which texts are compared whatever their
// case: the full mappings of Unicode 15.0.0 (SpecialCasing.txt, CaseFolding.txt C and F), in which
// a character may become several: "Straße" -> "STRASSE".
//
// Texts given as bytes need not be valid: a byte that is in no well-formed sequence stands for the
// Latin-1 character of its value, and a NUL is a character. What comes out is valid UTF-8; nothing
// is normalized. Linear in the bytes; ASCII goes eight bytes at a time.
//
// No operation looks at a locale, and any number of threads may use them. Memory asked for is
// bounded by the text, of which at most three times as many bytes are made. When there is none, the
// allocation errors of Mem are raised, and what was to be changed is as it was.
#ifndef VOK_CHAR_CASING_H
#define VOK_CHAR_CASING_H

#include <string_view>

#include "vok/base/str.h"

namespace vok::Char {

// In Turkish and Azerbaijani i without a dot and i with one are two letters: "ı" is the small one
// of "I", "İ" the capital one of "i". There are no other languages with rules here: that of
// Lithuanian, which keeps dots below accents, is left out.
enum class Casing { Standard, Turkish };

// Each appends what a text becomes; it must not lie in oOut.

void Upper(std::string_view sText, Arr<char>& oOut, Casing eCasing = Casing::Standard);
// A capital sigma becomes "ς" at the end of a word: behind a cased letter and before none,
// whatever case-ignorable characters - apostrophes, accents - are between them.
void Lower(std::string_view sText, Arr<char>& oOut, Casing eCasing = Casing::Standard);
// The first cased letter of each word in title case, the others in lower case: a word goes on where
// a cased letter follows one, case-ignorable characters between them aside. "don't" -> "Don't".
void Title(std::string_view sText, Arr<char>& oOut, Casing eCasing = Casing::Standard);
// Equal for texts that differ only in case: "STRASSE" and "straße" -> "strasse".
void Fold(std::string_view sText, Arr<char>& oOut, Casing eCasing = Casing::Standard);

// The same of strings; one that stays as it is shares its block.

[[nodiscard]] Str Upper(const Str& oText, Casing eCasing = Casing::Standard);
[[nodiscard]] Str Lower(const Str& oText, Casing eCasing = Casing::Standard);
[[nodiscard]] Str Title(const Str& oText, Casing eCasing = Casing::Standard);
[[nodiscard]] Str Fold(const Str& oText, Casing eCasing = Casing::Standard);

}  // namespace vok::Char

#endif  // VOK_CHAR_CASING_H
