// SPDX-License-Identifier: MIT
// The Unicode character database, version 15.0.0: what is known of single code points. Texts:
// casing.h, normalize.h, cluster.h, compare.h.
//
// All operations take constant time, allocate nothing, and depend on no locale; any number of
// threads may use them. Where a u2_t is no code point - above U+10FFFF - it is taken for one that
// is not assigned.
#ifndef VOK_CHAR_CHAR_H
#define VOK_CHAR_CHAR_H

#include <string_view>

#include "vok/base/types.h"
#include "vok/char/script.h"

namespace vok::Char {

// The version of the tables.
inline constexpr const char* UNICODE_VERSION = "15.0.0";

// ---- general category ------------------------------------------------------

// The values of General_Category (UnicodeData.txt). Cn is what is not assigned.
enum class Category : u0_t {
    Cn,
    Lu,
    Ll,
    Lt,
    Lm,
    Lo,
    Mn,
    Mc,
    Me,
    Nd,
    Nl,
    No,
    Pc,
    Pd,
    Ps,
    Pe,
    Pi,
    Pf,
    Po,
    Sm,
    Sc,
    Sk,
    So,
    Zs,
    Zl,
    Zp,
    Cc,
    Cf,
    Co,
    Cs
};

[[nodiscard]] Category GeneralCategory(u2_t uChar) noexcept;
// "Lu".
[[nodiscard]] const char* CategoryName(Category eCategory) noexcept;
// The category of a name, short or long: "Lu", "Uppercase_Letter". Names are told apart by every
// byte. Raises "unknown unicode general category '%0'".
[[nodiscard]] Category CategoryOfName(std::string_view sName);

// ---- script ----------------------------------------------------------------

// The script of a character; Common and Inherited are those of many, Unknown has none.
[[nodiscard]] Script ScriptOf(u2_t uChar) noexcept;
// "Old_Italic".
[[nodiscard]] const char* ScriptName(Script eScript) noexcept;
// The script of a name, long or of four letters: "Old_Italic", "Ital". Names are told apart by
// every byte. Raises "unknown unicode script name '%0".
[[nodiscard]] Script ScriptOfName(std::string_view sName);

// ---- normalization and case, one character for one ------------------------

// Canonical_Combining_Class: 0 for what stands by itself, 230 for an accent above, and so on.
[[nodiscard]] u0_t CombiningClass(u2_t uChar) noexcept;

// The simple mappings of UnicodeData.txt and CaseFolding.txt (C and S); what has none stays. Texts
// need more than these: see casing.h.
[[nodiscard]] u2_t ToUpper(u2_t uChar) noexcept;
[[nodiscard]] u2_t ToLower(u2_t uChar) noexcept;
[[nodiscard]] u2_t ToTitle(u2_t uChar) noexcept;
[[nodiscard]] u2_t ToFolded(u2_t uChar) noexcept;

// ---- identifiers -----------------------------------------------------------

// XID_Start and XID_Continue (DerivedCoreProperties.txt): what identifiers of programs begin with
// and go on with. Names in XML have rules of their own, which are not these.
[[nodiscard]] bool IsIdStart(u2_t uChar) noexcept;
[[nodiscard]] bool IsIdContinue(u2_t uChar) noexcept;
// Whether a text is an identifier; the empty one is none, and a byte that is no UTF-8 is in none.
// Linear.
[[nodiscard]] bool IsIdentifier(std::string_view sText) noexcept;

// ---- columns ---------------------------------------------------------------

// The columns of a terminal that a character takes by itself: 2 where its East_Asian_Width is W or
// F; 0 for marks that do not space (Mn, Me), for what is not seen (Cc, Cf but the soft hyphen, Zl,
// Zp, Cs) and for the vowels and tails of Hangul syllables; 1 for others. Of texts: Width in
// cluster.h.
[[nodiscard]] unsigned Columns(u2_t uChar) noexcept;

}  // namespace vok::Char

#endif  // VOK_CHAR_CHAR_H
