// SPDX-License-Identifier: MIT
#include "vok/char/mapping.h"

#include <algorithm>

namespace vok::Char::detail {

namespace {

// In the order of Kind.
constexpr u1_t Full_Case::*PLACES[] = {&Full_Case::m_uLower, &Full_Case::m_uUpper,
                                       &Full_Case::m_uTitle, &Full_Case::m_uFold};

// Where the text of a character with FULL_CASE stands; 0 if the simple mapping is the full one.
[[nodiscard]] u1_t FullPlace(u2_t uCode, Kind eKind) noexcept {
    const Full_Case* p = std::lower_bound(FULL_CASES, FULL_CASES + FULL_CASE_COUNT, uCode,
                                          [](const Full_Case& o, u2_t u) { return o.m_uCode < u; });
    return p->*PLACES[static_cast<int>(eKind)];
}

}  // namespace

void Mapped::Set(u2_t uCode, Kind eKind, const Properties& o) noexcept {
    const u1_t uPlace = (o.m_uFlags & FULL_CASE) != 0 ? FullPlace(uCode, eKind) : u1_t{0};
    if (uPlace != 0) {
        m_uSize = CASE_TEXTS[uPlace];
        m_pText = reinterpret_cast<const char*>(CASE_TEXTS + uPlace + 1);
        return;
    }
    SetOne(uCode + static_cast<u2_t>(CASES[o.m_uCase].*StepOf(eKind)));
}

void Mapped::SetTurkish(u2_t uCode, Kind eKind) noexcept {
    const bool bLower = eKind == Kind::Lower || eKind == Kind::Fold;
    if (bLower) {
        SetOne(uCode == 'I' ? I_WITHOUT_DOT : 'i');
    } else {
        SetOne(uCode == 'I' ? 'I' : I_WITH_DOT);
    }
}

}  // namespace vok::Char::detail
