// SPDX-License-Identifier: MIT
#include "vok/char/compare.h"

#include <algorithm>

#include "vok/base/where.h"
#include "vok/char/mapping.h"
#include "vok/char/normalizer.h"
#include "vok/char/text.h"

namespace vok::Char {

using namespace detail;

namespace {

// The folded characters of a text.
class Folded {
  public:
    Folded(std::string_view sText, Casing eCasing) noexcept
        : m_pText(sText.data()),
          m_pAt(m_pText),
          m_pEnd(m_pText + sText.size()),
          m_eCasing(eCasing) {}

    static constexpr u2_t END = CODES;  // behind the last one

    u2_t Next() noexcept {
        if (m_uNth == m_uCount && !Fill()) return END;
        return m_auCode[m_uNth++];
    }
    // Of the character that the last one is of, or one of those: where it begins and ends.
    [[nodiscard]] std::size_t From() const noexcept { return Offset(m_pFrom); }
    [[nodiscard]] std::size_t To() const noexcept { return Offset(m_pAt); }
    // Whether the last one is the first, or the last one, of it.
    [[nodiscard]] bool IsFirst() const noexcept { return m_uNth == 1; }
    [[nodiscard]] bool IsLast() const noexcept { return m_uNth == m_uCount; }

  private:
    [[nodiscard]] std::size_t Offset(const char* p) const noexcept {
        return static_cast<std::size_t>(p - m_pText);
    }
    bool Fill() noexcept {
        if (m_pAt == m_pEnd) return false;
        m_pFrom = m_pAt;
        const Mapped oMapped(Decode(m_pAt, m_pEnd).m_uCode, Kind::Fold, m_eCasing);
        const char* p = oMapped.View().data();
        const char* const pEnd = p + oMapped.View().size();
        m_uNth = m_uCount = 0;
        while (p != pEnd) m_auCode[m_uCount++] = Decode(p, pEnd).m_uCode;
        return true;
    }

    const char* const m_pText;
    const char* m_pAt;
    const char* const m_pEnd;
    const char* m_pFrom = nullptr;
    const Casing m_eCasing;
    u2_t m_auCode[4] = {};
    unsigned m_uNth = 0;
    unsigned m_uCount = 0;
};

// How many bytes both begin with that are ASCII and, whatever their case, the same.
[[nodiscard]] std::size_t EqualAscii(std::string_view sA, std::string_view sB) noexcept {
    constexpr u3_t uHigh = 0x8080808080808080u;
    const std::size_t uSize = std::min(sA.size(), sB.size());
    std::size_t u = 0;
    for (; u + 8 <= uSize; u += 8) {
        u3_t uA, uB;
        std::memcpy(&uA, sA.data() + u, 8);
        std::memcpy(&uB, sB.data() + u, 8);
        if (((uA | uB) & uHigh) != 0 || InCase(uA, false) != InCase(uB, false)) break;
    }
    return u;
}

// A text to be looked for, folded, and where to go on when a character does not fit (Knuth, Morris
// and Pratt): a character of the text that is searched is never looked at twice.
class Pattern {
  public:
    Pattern(std::string_view sWhat, Casing eCasing) {
        Folded oWhat(sWhat, eCasing);
        for (u2_t u; (u = oWhat.Next()) != Folded::END;) m_oCodes.Add(u);
        // m_oBack(n): how many characters, less than n, the first n both begin and end with.
        m_oBack.Resize(m_oCodes.Size() + 1);
        std::size_t uSame = 0;
        for (std::size_t u = 1; u < m_oCodes.Size(); ++u) {
            uSame = Advance(uSame, m_oCodes(u));
            m_oBack(u + 1) = uSame;
        }
    }
    [[nodiscard]] std::size_t Size() const noexcept { return m_oCodes.Size(); }
    [[nodiscard]] std::size_t Back(std::size_t uSame) const noexcept { return m_oBack(uSame); }
    // How many characters fit once one more has come; uSame, which is less than Size(), did before.
    [[nodiscard]] std::size_t Advance(std::size_t uSame, u2_t uCode) const noexcept {
        while (uSame != 0 && m_oCodes(uSame) != uCode) uSame = m_oBack(uSame);
        return m_oCodes(uSame) == uCode ? uSame + 1 : 0;
    }

  private:
    Arr<u2_t> m_oCodes;
    Arr<std::size_t> m_oBack;
};

[[nodiscard]] Found Find(std::string_view sText, const Pattern& oWhat, Casing eCasing) {
    // Where the character begins of each of the last folded ones; NONE for those that begin none.
    Arr<std::size_t> oFrom;
    oFrom.Resize(oWhat.Size());
    Folded oText(sText, eCasing);
    std::size_t uSame = 0;
    std::size_t uPlace = 0;
    for (u2_t u; (u = oText.Next()) != Folded::END;) {
        oFrom(uPlace) = oText.IsFirst() ? oText.From() : Found::NONE;
        uPlace = uPlace + 1 == oWhat.Size() ? 0 : uPlace + 1;
        uSame = oWhat.Advance(uSame, u);
        if (uSame != oWhat.Size()) continue;
        const std::size_t uFrom = oFrom(uPlace);  // the oldest one
        if (uFrom != Found::NONE && oText.IsLast()) return {uFrom, oText.To() - uFrom};
        uSame = oWhat.Back(uSame);
    }
    return {};
}

// The pieces of a normalized text.
class Pieces {
  public:
    Pieces(std::string_view sText, Form eForm) noexcept : m_oNormalizer(sText, eForm) {}

    // What is there and has not been taken; empty at the end.
    [[nodiscard]] std::string_view Rest() {
        while (m_sRest.empty()) {
            if (m_bChanged) {
                m_sRest = m_oNormalizer.Changed();
                m_bChanged = false;
            } else {
                if (!m_oNormalizer.Next()) break;
                m_sRest = m_oNormalizer.Same();
                m_bChanged = true;
            }
        }
        return m_sRest;
    }
    void Take(std::size_t uBytes) noexcept { m_sRest.remove_prefix(uBytes); }

  private:
    Normalizer m_oNormalizer;
    std::string_view m_sRest;
    bool m_bChanged = false;  // what is changed of the last piece comes next
};

// Bytes of UTF-8 are in the order of the code points.
[[nodiscard]] int Compare(std::string_view sA, std::string_view sB, Form eForm) {
    if (eForm > Form::NFKD) {
        Msg::UnknownNormalizationForm(static_cast<u3_t>(eForm));
        eForm = Form::NFD;
    }
    Pieces oA(sA, eForm);
    Pieces oB(sB, eForm);
    while (true) {
        const std::string_view sRestA = oA.Rest();
        const std::string_view sRestB = oB.Rest();
        const std::size_t uBytes = std::min(sRestA.size(), sRestB.size());
        if (uBytes == 0) return int{!sRestA.empty()} - int{!sRestB.empty()};
        const int iOrder = std::memcmp(sRestA.data(), sRestB.data(), uBytes);
        if (iOrder != 0) return iOrder;
        oA.Take(uBytes);
        oB.Take(uBytes);
    }
}

}  // namespace

bool EqualNoCase(std::string_view sA, std::string_view sB, Casing eCasing) noexcept {
    return CompareNoCase(sA, sB, eCasing) == 0;
}

int CompareNoCase(std::string_view sA, std::string_view sB, Casing eCasing) noexcept {
    if (eCasing == Casing::Standard) {
        const std::size_t uEqual = EqualAscii(sA, sB);
        sA.remove_prefix(uEqual);
        sB.remove_prefix(uEqual);
    }
    Folded oA(sA, eCasing);
    Folded oB(sB, eCasing);
    while (true) {
        // The end is before all characters.
        const u2_t uA = (oA.Next() + 1) % (Folded::END + 1);
        const u2_t uB = (oB.Next() + 1) % (Folded::END + 1);
        if (uA != uB) return uA < uB ? -1 : 1;
        if (uA == 0) return 0;
    }
}

Found FindNoCase(std::string_view sText, std::string_view sWhat, std::size_t uFrom,
                 Casing eCasing) {
    return Where("vok::Char::FindNoCase", [&]() -> Found {
        if (uFrom > sText.size()) return {};
        if (sWhat.empty()) return {uFrom, 0};
        const Pattern oWhat(sWhat, eCasing);
        Found o = Find(sText.substr(uFrom), oWhat, eCasing);
        if (o.m_uAt != Found::NONE) o.m_uAt += uFrom;
        return o;
    });
}

bool EqualNormalized(std::string_view sA, std::string_view sB, Form eForm) {
    return Where("vok::Char::EqualNormalized", [&] { return Compare(sA, sB, eForm) == 0; });
}

int CompareNormalized(std::string_view sA, std::string_view sB, Form eForm) {
    return Where("vok::Char::CompareNormalized", [&] { return Compare(sA, sB, eForm); });
}

}  // namespace vok::Char
