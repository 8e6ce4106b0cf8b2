// SPDX-License-Identifier: MIT
// Texts compared and found whatever their case, or whatever the normalization form they are in.
//
// Case is that of full folding (Fold in casing.h): "STRASSE" equals "straße". Characters that are
// normalized in another way are not equal then; who wants both normalizes first. Texts need not be
// valid: a byte that is in no well-formed sequence stands for the Latin-1 character of its value,
// and a NUL is a character. All is linear in the bytes of both texts, and any number of threads may
// use it. Orders are those of code points: the same everywhere, that of no language.
#ifndef VOK_CHAR_COMPARE_H
#define VOK_CHAR_COMPARE_H

#include <string_view>

#include "vok/char/casing.h"
#include "vok/char/normalize.h"

namespace vok::Char {

[[nodiscard]] bool EqualNoCase(std::string_view sA, std::string_view sB,
                               Casing eCasing = Casing::Standard) noexcept;
// Less than, equal to or greater than 0 as sA comes before, is equal to or comes behind sB.
[[nodiscard]] int CompareNoCase(std::string_view sA, std::string_view sB,
                                Casing eCasing = Casing::Standard) noexcept;

// Bytes of a text.
struct Found {
    static constexpr std::size_t NONE = std::string_view::npos;
    std::size_t m_uAt = NONE;
    std::size_t m_uSize = 0;  // may be another than that of what was looked for
    friend bool operator==(const Found&, const Found&) noexcept = default;
};
// The first place at or behind byte uFrom of sText where sWhat stands, in whole characters: "s" is
// not in "ß", "ss" is. The empty text stands everywhere. Raises the allocation errors of Mem: what
// is looked for is held in memory, folded.
[[nodiscard]] Found FindNoCase(std::string_view sText, std::string_view sWhat,
                               std::size_t uFrom = 0, Casing eCasing = Casing::Standard);

// Compare what texts are in a form, without making all of it: NFD, and NFC, for canonical
// equivalence, NFKD and NFKC for that of compatibility. Raise the allocation errors of Mem: a run
// of marks is held in memory. A form that there is none such is reported and taken for NFD.
[[nodiscard]] bool EqualNormalized(std::string_view sA, std::string_view sB,
                                   Form eForm = Form::NFD);
[[nodiscard]] int CompareNormalized(std::string_view sA, std::string_view sB,
                                    Form eForm = Form::NFD);

}  // namespace vok::Char

#endif  // VOK_CHAR_COMPARE_H
