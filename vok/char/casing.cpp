// SPDX-License-Identifier: MIT
#include "vok/char/casing.h"

#include "vok/base/where.h"
#include "vok/char/mapping.h"
#include "vok/char/text.h"

namespace vok::Char {

using namespace detail;

namespace {

constexpr u2_t CAPITAL_SIGMA = 0x3A3;
constexpr std::string_view FINAL_SIGMA = "\xCF\x82";
constexpr u2_t DOT_ABOVE = 0x307;
constexpr u0_t CLASS_ABOVE = 230;

class Mapper {
  public:
    Mapper(std::string_view sText, Kind eKind, Casing eCasing, Arr<char>& oOut) noexcept
        : m_pAt(sText.data()),
          m_pEnd(m_pAt + sText.size()),
          m_eKind(eKind),
          m_bTurkish(eCasing == Casing::Turkish),
          m_oOut(oOut) {}

    void Run() {
        m_oOut.ReserveMore(static_cast<std::size_t>(m_pEnd - m_pAt));
        while (m_pAt != m_pEnd) {
            const bool bPlain = m_eKind != Kind::Title && !m_bTurkish;
            if (bPlain && static_cast<u0_t>(*m_pAt) < 0x80) {
                AddAscii();
            } else if (bPlain) {
                AddOthers();
            } else {
                AddNext();
            }
        }
    }

  private:
    void Add(std::string_view s) { m_oOut.Add(s.data(), s.size()); }

    void AddAscii() {
        const char* const pTo = SkipAscii(m_pAt, m_pEnd);
        const auto uCount = static_cast<std::size_t>(pTo - m_pAt);
        const bool bUpper = m_eKind == Kind::Upper;
        char* pOut = m_oOut.AddSpace(uCount);
        std::size_t u = 0;
        for (; u + 8 <= uCount; u += 8) {
            u3_t uWord;
            std::memcpy(&uWord, m_pAt + u, 8);
            uWord = InCase(uWord, bUpper);
            std::memcpy(pOut + u, &uWord, 8);
        }
        for (; u < uCount; ++u) {
            pOut[u] = static_cast<char>(InCase(static_cast<u0_t>(m_pAt[u]), bUpper));
        }
        // What a sigma behind it wants to know.
        if (m_eKind == Kind::Lower) {
            const char* p = pTo;
            while (p != m_pAt && !SetCased(PropertiesOf(static_cast<u0_t>(p[-1])).m_uFlags)) --p;
        }
        m_pAt = pTo;
    }

    // Some characters that are not ASCII, each by itself, but for sigma.
    void AddOthers() {
        constexpr unsigned MOST = 64;
        constexpr unsigned LONGEST = 12;  // bytes that one may become
        const i2_t Case::*const pStep = StepOf(m_eKind);
        m_oOut.ReserveMore(MOST * LONGEST);
        char* p = m_oOut.End();
        for (unsigned u = 0; u < MOST && m_pAt != m_pEnd && static_cast<u0_t>(*m_pAt) >= 0x80;
             ++u) {
            const u2_t uCode = Decode(m_pAt, m_pEnd).m_uCode;
            const Properties& o = PropertiesOf(uCode);
            if ((o.m_uFlags & FULL_CASE) != 0) {
                const Mapped oMapped(uCode, m_eKind);
                p += oMapped.View().copy(p, LONGEST);
            } else if (uCode == CAPITAL_SIGMA && IsFinalSigma()) {
                p += FINAL_SIGMA.copy(p, LONGEST);
            } else {
                p = Encode(uCode + static_cast<u2_t>(CASES[o.m_uCase].*pStep), p);
            }
            SetCased(o.m_uFlags);
        }
        m_oOut.SetSize(static_cast<std::size_t>(p - m_oOut.Beg()));
    }

    // Notes whether a character is cased; false if it is ignored.
    bool SetCased(u0_t uFlags) noexcept {
        if ((uFlags & CASE_IGNORABLE) != 0) return false;
        m_bInWord = (uFlags & CASED) != 0;
        return true;
    }

    void AddNext() {
        const u2_t uCode = Decode(m_pAt, m_pEnd).m_uCode;
        const bool bLowers = Lowers();
        if (uCode == CAPITAL_SIGMA && IsFinalSigma()) {
            Add(FINAL_SIGMA);
        } else if (m_bTurkish && bLowers && uCode == 'I' && IsDotNext()) {
            m_oOut.Add('i');  // and its dot is left out
        } else if (!(m_bTurkish && bLowers && uCode == DOT_ABOVE && m_bAfterI)) {
            const Kind eKind = bLowers ? Kind::Lower : m_eKind;
            Add(Mapped(uCode, eKind, m_bTurkish ? Casing::Turkish : Casing::Standard).View());
        }
        const Properties& o = PropertiesOf(uCode);
        SetCased(o.m_uFlags);
        if (m_bTurkish) {
            const u0_t uClass = o.m_uCombining;
            if (uClass == 0 || uClass == CLASS_ABOVE) m_bAfterI = bLowers && uCode == 'I';
        }
    }

    [[nodiscard]] bool Lowers() const noexcept {
        return m_eKind == Kind::Lower || (m_eKind == Kind::Title && m_bInWord);
    }
    // Whether a capital sigma that has just been taken off becomes the one of an end.
    [[nodiscard]] bool IsFinalSigma() const noexcept {
        return Lowers() && m_bInWord && !IsCasedNext();
    }
    // Whether a cased letter follows, those aside that are ignored. Such lie between two sigmas
    // only once, so that all of these looks together are linear.
    [[nodiscard]] bool IsCasedNext() const noexcept {
        for (const char* p = m_pAt; p != m_pEnd;) {
            const u0_t uFlags = PropertiesOf(Decode(p, m_pEnd).m_uCode).m_uFlags;
            if ((uFlags & CASE_IGNORABLE) == 0) return (uFlags & CASED) != 0;
        }
        return false;
    }

    // Whether a dot stands above the letter before, no other mark above it between them.
    [[nodiscard]] bool IsDotNext() const noexcept {
        for (const char* p = m_pAt; p != m_pEnd;) {
            const u2_t uCode = Decode(p, m_pEnd).m_uCode;
            if (uCode == DOT_ABOVE) return true;
            const u0_t uClass = PropertiesOf(uCode).m_uCombining;
            if (uClass == 0 || uClass == CLASS_ABOVE) return false;
        }
        return false;
    }

    const char* m_pAt;
    const char* const m_pEnd;
    const Kind m_eKind;
    const bool m_bTurkish;
    Arr<char>& m_oOut;
    bool m_bInWord = false;  // the last character that is not ignored is cased
    bool m_bAfterI = false;  // Turkish: a dot that comes now belongs to an I
};

void AddMapped(std::string_view sText, Kind eKind, Casing eCasing, Arr<char>& oOut) {
    Appending oAppending(oOut);
    Mapper(sText, eKind, eCasing, oOut).Run();
    oAppending.Keep();
}

[[nodiscard]] Str MappedStr(const Str& oText, Kind eKind, Casing eCasing) {
    Arr<char> oOut;
    AddMapped(oText.View(), eKind, eCasing, oOut);
    const std::string_view sOut(oOut.Beg(), oOut.Size());
    return sOut == oText.View() ? oText : Str(sOut);
}

}  // namespace

void Upper(std::string_view sText, Arr<char>& oOut, Casing eCasing) {
    return Where("vok::Char::Upper", [&] { AddMapped(sText, Kind::Upper, eCasing, oOut); });
}

void Lower(std::string_view sText, Arr<char>& oOut, Casing eCasing) {
    return Where("vok::Char::Lower", [&] { AddMapped(sText, Kind::Lower, eCasing, oOut); });
}

void Title(std::string_view sText, Arr<char>& oOut, Casing eCasing) {
    return Where("vok::Char::Title", [&] { AddMapped(sText, Kind::Title, eCasing, oOut); });
}

void Fold(std::string_view sText, Arr<char>& oOut, Casing eCasing) {
    return Where("vok::Char::Fold", [&] { AddMapped(sText, Kind::Fold, eCasing, oOut); });
}

Str Upper(const Str& oText, Casing eCasing) {
    return Where("vok::Char::Upper", [&] { return MappedStr(oText, Kind::Upper, eCasing); });
}

Str Lower(const Str& oText, Casing eCasing) {
    return Where("vok::Char::Lower", [&] { return MappedStr(oText, Kind::Lower, eCasing); });
}

Str Title(const Str& oText, Casing eCasing) {
    return Where("vok::Char::Title", [&] { return MappedStr(oText, Kind::Title, eCasing); });
}

Str Fold(const Str& oText, Casing eCasing) {
    return Where("vok::Char::Fold", [&] { return MappedStr(oText, Kind::Fold, eCasing); });
}

}  // namespace vok::Char
