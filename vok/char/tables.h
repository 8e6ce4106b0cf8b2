// SPDX-License-Identifier: MIT
// The tables of vok/char/tables, made by generate.py there, and how they are read. Internal.
//
// A code point is looked up in stages: its upper bits lead to a block, its lower ones to a place in
// it, and blocks that are equal are there once. What stands there is the number of a row, each of
// which is there once, too.
#ifndef VOK_CHAR_TABLES_H
#define VOK_CHAR_TABLES_H

#include "vok/base/types.h"

namespace vok::Char::detail {

inline constexpr u2_t CODES = 0x110000;

struct Name {
    const char* m_sShort;
    const char* m_sLong;
};
extern const Name CATEGORIES[30];
extern const Name SCRIPTS[];
extern const std::size_t SCRIPT_COUNT;

// ---- properties ------------------------------------------------------------

// Grapheme_Cluster_Break. Extended_Pictographic is a property of its own, which only those have
// that would be Other.
enum class Break : u0_t {
    Other,
    CR,
    LF,
    Control,
    Extend,
    ZWJ,
    Regional_Indicator,
    Prepend,
    SpacingMark,
    L,
    V,
    T,
    LV,
    LVT,
    Pictographic
};

struct Properties {
    u0_t m_uCategory;   // of Category
    u0_t m_uScript;     // of Script
    u0_t m_uCombining;  // Canonical_Combining_Class
    u0_t m_uBreak;      // of Break
    u0_t m_uFlags;      // columns, 0 to 2, and what follows
    u0_t m_uCase;       // row of CASES
};
inline constexpr u0_t COLUMNS = 3;
inline constexpr u0_t ID_START = 4;
inline constexpr u0_t ID_CONTINUE = 8;
inline constexpr u0_t CASED = 16;
inline constexpr u0_t CASE_IGNORABLE = 32;
inline constexpr u0_t FULL_CASE = 64;  // in FULL_CASES
inline constexpr u0_t EMOJI = 128;

// What is added to a code point.
struct Case {
    i2_t m_iLower;
    i2_t m_iUpper;
    i2_t m_iTitle;
    i2_t m_iFold;
};

// Mappings to more than one character, or other than the simple one: places in CASE_TEXTS, 0 for
// those that are the simple one. In the order of the code points.
struct Full_Case {
    u2_t m_uCode;
    u1_t m_uLower;
    u1_t m_uTitle;
    u1_t m_uUpper;
    u1_t m_uFold;
};

// 32 code points are a block of BOTTOM, 64 of those one of MIDDLE.
extern const u0_t TOP[CODES >> 11];
extern const u1_t MIDDLE[];
extern const u1_t BOTTOM[];
extern const Properties PROPERTIES[];
extern const Case CASES[];
extern const Full_Case FULL_CASES[];
extern const std::size_t FULL_CASE_COUNT;
extern const u0_t CASE_TEXTS[];  // as DECOMPOSITIONS

// What is no code point has the properties of one that is not assigned.
[[nodiscard]] inline const Properties& PropertiesOf(u2_t uCode) noexcept {
    if (uCode >= CODES) uCode = CODES - 1;
    const u2_t uMiddle = MIDDLE[u2_t{TOP[uCode >> 11]} << 6 | (uCode >> 5 & 63)];
    return PROPERTIES[BOTTOM[uMiddle << 5 | (uCode & 31)]];
}

// ---- normalization ---------------------------------------------------------

struct Normal {
    u0_t m_uCombining;   // Canonical_Combining_Class
    u0_t m_uFlags;       // of the four forms: STAYS << form, BORDER << form
    u1_t m_uCanonical;   // place of the full decomposition in DECOMPOSITIONS; 0 for none
    u1_t m_uCompatible;  // the same with those of compatibility
    u1_t m_uPairs;       // place in PAIRS of what it makes with others; 0 for nothing
};
// Quick check "yes": the form never changes it.
inline constexpr unsigned STAYS = 1;
// What it becomes has nothing to do with characters before it: the first one of its decomposition
// has class 0 and joins with none before it. All that stay and have class 0 are such.
inline constexpr unsigned BORDER = 16;

extern const u2_t NORMAL_END;      // from here on nothing ever changes
extern const u2_t NORMAL_FROM[4];  // and below these, by form
extern const u1_t NORMAL_TOP[];
extern const u1_t NORMAL_BOTTOM[];
extern const Normal NORMALS[];  // row 0 is that of those that never change
// The number of pairs, and for each the second character and what the two become, in the order of
// the former. Without Hangul.
extern const u2_t PAIRS[];
// A byte for the length, and so many of UTF-8, in canonical order. Without Hangul.
extern const u0_t DECOMPOSITIONS[];

[[nodiscard]] inline const Normal& NormalOf(u2_t uCode) noexcept {
    if (uCode >= NORMAL_END) return NORMALS[0];
    return NORMALS[NORMAL_BOTTOM[u2_t{NORMAL_TOP[uCode >> 5]} << 5 | (uCode & 31)]];
}

}  // namespace vok::Char::detail

#endif  // VOK_CHAR_TABLES_H
