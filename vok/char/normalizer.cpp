// SPDX-License-Identifier: MIT
#include "vok/char/normalizer.h"

#include <algorithm>

namespace vok::Char::detail {

namespace {

// Hangul by arithmetic (The Unicode Standard, 3.12): a syllable is a leading consonant, a vowel,
// and a tail or none.
constexpr u2_t S_FIRST = 0xAC00;
constexpr u2_t L_FIRST = 0x1100;
constexpr u2_t V_FIRST = 0x1161;
constexpr u2_t T_NONE = 0x11A7;  // the one before the first tail
constexpr u2_t L_COUNT = 19;
constexpr u2_t V_COUNT = 21;
constexpr u2_t T_COUNT = 28;
constexpr u2_t S_COUNT = L_COUNT * V_COUNT * T_COUNT;

[[nodiscard]] bool IsSyllable(u2_t uCode) noexcept {
    return uCode - S_FIRST < S_COUNT;
}

// The two or three letters of a syllable; returns their number.
unsigned LettersOf(u2_t uSyllable, u2_t* pLetters) noexcept {
    const u2_t uNth = uSyllable - S_FIRST;
    pLetters[0] = L_FIRST + uNth / (V_COUNT * T_COUNT);
    pLetters[1] = V_FIRST + uNth % (V_COUNT * T_COUNT) / T_COUNT;
    pLetters[2] = T_NONE + uNth % T_COUNT;
    return pLetters[2] != T_NONE ? 3 : 2;
}

}  // namespace

const char* Normalizer::SkipSame() const noexcept {
    const u2_t uFrom = NORMAL_FROM[m_uForm];
    const char* p = m_pAt;
    const char* pBorder = p;  // the last one: what follows it may join with it
    u0_t uLast = 0;           // class of the character before
    while (p != m_pEnd) {
        if (static_cast<u0_t>(*p) < 0x80) {
            p = SkipAscii(p, m_pEnd);
            pBorder = p - 1;
            uLast = 0;
            continue;
        }
        const char* const pThis = p;
        const Decoded o = Decode(p, m_pEnd);
        if (!o.m_bGood) return pThis;  // Latin-1: below all that joins
        if (o.m_uCode < uFrom) {
            pBorder = pThis;
            uLast = 0;
            continue;
        }
        const Normal& oNormal = NormalOf(o.m_uCode);
        if (!Is(oNormal, STAYS)) return Is(oNormal, BORDER) ? pThis : pBorder;
        const u0_t uClass = oNormal.m_uCombining;
        if (uClass == 0) pBorder = pThis;
        if (uClass != 0 && uClass < uLast) return pBorder;
        uLast = uClass;
    }
    return m_pEnd;
}

bool Normalizer::Next() {
    if (m_pAt == m_pEnd) return false;
    m_oOut.Truncate(0);
    const char* const pSame = m_pAt;
    m_pAt = SkipSame();
    m_sSame = {pSame, static_cast<std::size_t>(m_pAt - pSame)};
    const char* const pSource = m_pAt;
    if (m_pAt != m_pEnd) Change();
    m_sSource = {pSource, static_cast<std::size_t>(m_pAt - pSource)};
    return true;
}

// Segments, up to one that is a single character which stays.
void Normalizer::Change() {
    const char* p = m_pAt;
    Decoded o = Decode(p, m_pEnd);
    for (bool bFirst = true;; bFirst = false) {
        const char* pThis = m_pEnd;
        Decoded oNext{0, true};
        bool bWhole = true;  // the segment is one character
        while (p != m_pEnd) {
            pThis = p;
            oNext = Decode(p, m_pEnd);
            if (Is(NormalOf(oNext.m_uCode), BORDER)) break;
            if (bWhole) Push(o.m_uCode);
            bWhole = false;
            Push(oNext.m_uCode);
            pThis = m_pEnd;
        }
        if (!bWhole) {
            AddSegment();
        } else if (!bFirst && o.m_bGood && Is(NormalOf(o.m_uCode), STAYS)) {
            return;
        } else if (Composes()) {
            Push(o.m_uCode);
            AddSegment();
        } else {
            AddDecomposed(o.m_uCode);
        }
        m_pAt = pThis;
        o = oNext;
        if (m_pAt == m_pEnd) return;
    }
}

void Normalizer::Push(u2_t uCode) {
    if (IsSyllable(uCode)) {
        u2_t auLetters[3];
        m_oSegment.Add(auLetters, LettersOf(uCode, auLetters));
        return;
    }
    const Normal& o = NormalOf(uCode);
    const u0_t* pText = DECOMPOSITIONS + PlaceOf(o);
    if (*pText == 0) {
        Add(u2_t{o.m_uCombining} << CLASS | uCode);
        return;
    }
    const char* p = reinterpret_cast<const char*>(pText + 1);
    const char* const pEnd = p + *pText;
    while (p != pEnd) {
        const u2_t uPart = Decode(p, pEnd).m_uCode;
        Add(u2_t{NormalOf(uPart).m_uCombining} << CLASS | uPart);
    }
}

void Normalizer::AddDecomposed(u2_t uCode) {
    if (IsSyllable(uCode)) {
        u2_t auLetters[3];
        const unsigned uCount = LettersOf(uCode, auLetters);
        m_oOut.ReserveMore(12);
        char* p = m_oOut.End();
        for (unsigned u = 0; u < uCount; ++u) p = Encode(auLetters[u], p);
        m_oOut.SetSize(static_cast<std::size_t>(p - m_oOut.Beg()));
        return;
    }
    const u0_t* pText = DECOMPOSITIONS + PlaceOf(NormalOf(uCode));
    if (*pText == 0) {
        AddChar(m_oOut, uCode);
    } else {
        m_oOut.Add(reinterpret_cast<const char*>(pText + 1), *pText);
    }
}

void Normalizer::AddSegment() {
    Order();
    if (Composes()) Compose();
    m_oOut.ReserveMore(4 * m_oSegment.Size());
    char* p = m_oOut.End();
    for (const Item uItem : m_oSegment) p = Encode(uItem & CODE, p);
    m_oOut.SetSize(static_cast<std::size_t>(p - m_oOut.Beg()));
    m_oSegment.Truncate(0);
}

// Canonical ordering: neighbouring marks by their class, and otherwise as they came.
void Normalizer::Order() {
    Item* const pEnd = m_oSegment.End();
    for (Item* p = m_oSegment.Beg(); p != pEnd;) {
        Item* const pRun = p;
        bool bOrdered = true;
        for (; p != pEnd && *p >> CLASS != 0; ++p) {
            bOrdered = bOrdered && (p == pRun || p[-1] >> CLASS <= *p >> CLASS);
        }
        if (!bOrdered) OrderRun(pRun, p);
        if (p != pEnd) ++p;
    }
}

void Normalizer::OrderRun(Item* pBegin, Item* pEnd) {
    const auto uCount = static_cast<std::size_t>(pEnd - pBegin);
    if (uCount <= 24) {
        for (Item* p = pBegin + 1; p != pEnd; ++p) {
            const Item uItem = *p;
            Item* pTo = p;
            for (; pTo != pBegin && pTo[-1] >> CLASS > uItem >> CLASS; --pTo) *pTo = pTo[-1];
            *pTo = uItem;
        }
        return;
    }
    // Where the marks of each class go.
    std::size_t auPlace[257] = {};
    for (const Item* p = pBegin; p != pEnd; ++p) ++auPlace[(*p >> CLASS) + 1];
    for (unsigned u = 1; u < 257; ++u) auPlace[u] += auPlace[u - 1];
    m_oOrdered.Truncate(0);
    Item* const pOrdered = m_oOrdered.AddSpace(uCount);
    for (const Item* p = pBegin; p != pEnd; ++p) pOrdered[auPlace[*p >> CLASS]++] = *p;
    std::copy(pOrdered, pOrdered + uCount, pBegin);
}

// Canonical composition: what is not blocked joins with the last character of class 0. One is
// blocked by a mark between them that stays and is not of a lower class.
void Normalizer::Compose() noexcept {
    Item* const pBegin = m_oSegment.Beg();
    Item* const pEnd = m_oSegment.End();
    Item* pStarter = nullptr;
    u2_t uKept = 0;  // class of the mark that stays before this one; 0 if it is the starter
    Item* pTo = pBegin;
    for (const Item* p = pBegin; p != pEnd; ++p) {
        const u2_t uClass = *p >> CLASS;
        if (pStarter != nullptr && (uKept == 0 || uKept < uClass)) {
            const u2_t uJoined = Pair(*pStarter, *p & CODE);
            if (uJoined != NONE) {
                *pStarter = uJoined;
                continue;
            }
        }
        if (uClass == 0) pStarter = pTo;
        uKept = uClass;
        *pTo++ = *p;
    }
    m_oSegment.Truncate(static_cast<std::size_t>(pTo - pBegin));
}

// What two characters become; NONE if they stay two.
u2_t Normalizer::Pair(u2_t uFirst, u2_t uSecond) noexcept {
    if (uFirst - L_FIRST < L_COUNT && uSecond - V_FIRST < V_COUNT) {
        return S_FIRST + ((uFirst - L_FIRST) * V_COUNT + uSecond - V_FIRST) * T_COUNT;
    }
    const bool bOpen = IsSyllable(uFirst) && (uFirst - S_FIRST) % T_COUNT == 0;
    if (bOpen && uSecond - T_NONE - 1 < T_COUNT - 1) return uFirst + uSecond - T_NONE;
    const u2_t* const pPairs = PAIRS + NormalOf(uFirst).m_uPairs;
    for (u2_t u = 0; u < *pPairs; ++u) {
        if (pPairs[1 + 2 * u] == uSecond) return pPairs[2 + 2 * u];
    }
    return NONE;
}

}  // namespace vok::Char::detail
