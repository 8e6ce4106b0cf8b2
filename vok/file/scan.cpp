// SPDX-License-Identifier: MIT
#include "vok/file/scan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/file/messages.h"
#include "vok/file/number_text.h"
#include "vok/file/xml_source.h"

namespace vok {

namespace {

bool IsBreak(char c) noexcept {
    return c == '\n' || c == '\r';
}

bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || IsBreak(c);
}

// The first of three bytes in a text, or its end: eight bytes a step.
const char* FindAny(const char* p, const char* pEnd, char a, char b, char c) noexcept {
    constexpr u3_t ONES = 0x0101010101010101u;
    constexpr u3_t HIGH = 0x8080808080808080u;
    // Not 0 where a word has a byte that is 0.
    const auto oHasNul = [](u3_t u) { return (u - ONES) & ~u & HIGH; };
    const u3_t uA = ONES * static_cast<u0_t>(a);
    const u3_t uB = ONES * static_cast<u0_t>(b);
    const u3_t uC = ONES * static_cast<u0_t>(c);
    for (u3_t uWord; pEnd - p >= 8; p += 8) {
        std::memcpy(&uWord, p, 8);
        if ((oHasNul(uWord ^ uA) | oHasNul(uWord ^ uB) | oHasNul(uWord ^ uC)) != 0) break;
    }
    while (p != pEnd && *p != a && *p != b && *p != c) ++p;
    return p;
}

}  // namespace

// Tokens are looked at where they lie. What is at hand moves whenever more is fetched, so places in
// a token are kept as counts from m_p, and texts are made when all of it is there.
class File_Scan::Impl {
  public:
    Impl(File_Stream& oIn, const Limits& oLimits)
        : m_oIn(oIn),
          m_oSource(oIn, xml::Declares::No),
          m_oLimits(oLimits),
          m_p(m_oSource.Begin()),
          m_pEnd(m_oSource.End()),
          m_oPlace{m_p, 1, 1, false} {}

    [[nodiscard]] bool AtEnd() { return m_p == m_pEnd && !More(); }
    [[nodiscard]] const char* Here() const noexcept { return m_p; }
    [[nodiscard]] char At(std::size_t u) const noexcept { return m_p[u]; }
    [[nodiscard]] std::size_t AtHand() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_p);
    }
    // Whether there is a byte that far ahead.
    [[nodiscard]] bool Has(std::size_t u) {
        while (u >= AtHand()) {
            if (!More()) return false;
        }
        return true;
    }
    // How far it is from u on to a byte that oIs holds for, or to the end.
    template <class Is>
    [[nodiscard]] std::size_t Find(std::size_t u, Is oIs) {
        for (;;) {
            const char* const pFound = std::find_if(m_p + u, m_pEnd, oIs);
            u = static_cast<std::size_t>(pFound - m_p);
            if (pFound != m_pEnd || !More()) return u;
        }
    }
    // The same for a line break or another byte.
    [[nodiscard]] std::size_t FindEnd(std::size_t u, char c) {
        for (;;) {
            const char* const pFound = FindAny(m_p + u, m_pEnd, c, '\n', '\r');
            u = static_cast<std::size_t>(pFound - m_p);
            if (pFound != m_pEnd || !More()) return u;
        }
    }
    void Pass(std::size_t u) noexcept { m_p += u; }
    template <class Is>
    void PassAll(Is oIs) {
        do {
            m_p = std::find_if_not(m_p, m_pEnd, oIs);
        } while (m_p == m_pEnd && More());
    }
    // How long the line break is that begins there.
    [[nodiscard]] std::size_t BreakAt(std::size_t u) {
        return At(u) == '\r' && Has(u + 1) && At(u + 1) == '\n' ? 2 : 1;
    }
    // Of a token of that length, and of what is held with it.
    void CheckSize(std::size_t uToken) const {
        const std::size_t uHeld =
            m_pHold != nullptr ? static_cast<std::size_t>(m_p - m_pHold) : std::size_t{0};
        if (uHeld + uToken > m_oLimits.m_uTextBytes) {
            m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
        }
    }
    Field ReadField(char cSeparator, char cQuote);
    std::string_view ReadString(char cQuote);

    // ---- places -------------------------------------------------------------

    [[nodiscard]] u3_t Line() const {
        CountTo(m_p);
        return m_oPlace.uLine;
    }
    [[nodiscard]] u3_t Column() const {
        CountTo(m_p);
        return m_oPlace.uColumn;
    }
    [[nodiscard]] u3_t Offset() const noexcept {
        return m_bLeft ? m_uLeftAt : m_oSource.OffsetOf(m_p);
    }
    [[nodiscard]] const char* Name() const {
        const char* const sName = m_oIn.Name();
        return sName != nullptr ? sName : "";
    }
    void Hold() {
        CountTo(m_p);
        m_pHold = m_p;
        m_oHeld = m_oPlace;
    }
    void Release() noexcept { m_pHold = nullptr; }
    [[nodiscard]] std::string_view Held() const noexcept {
        if (m_pHold == nullptr) return {};
        return {m_pHold, static_cast<std::size_t>(m_p - m_pHold)};
    }
    void Rewind() noexcept {
        if (m_pHold == nullptr) return;
        m_p = m_pHold;
        m_oPlace = m_oHeld;
        m_oPlace.p = m_p;
    }
    u3_t Leave() {
        if (m_bLeft) return 0;
        CountTo(m_p);
        m_uLeftAt = Offset();
        const u3_t uBehind = m_oSource.Leave(m_p);
        m_bLeft = true;
        m_pEnd = m_p;
        return uBehind;
    }

  private:
    struct Place {
        const char* p;  // up to which it is counted
        u3_t uLine;
        u3_t uColumn;
        bool bCr;  // a CR stands in front, whose LF would be part of the same break
    };

    // Fetches more behind what is at hand, and drops what nobody needs. False at the end.
    bool More() {
        if (m_bLeft) return false;
        const char* pKept = m_pHold != nullptr ? m_pHold : m_p;
        if (m_oPlace.p < pKept) CountTo(pKept);
        const auto uHere = static_cast<std::size_t>(m_p - pKept);
        const auto uPlace = static_cast<std::size_t>(m_oPlace.p - pKept);
        const auto uSize = static_cast<std::size_t>(m_pEnd - pKept);
        // All of it is one token, or held, but for a line break.
        if (uSize > 2 && uSize - 2 > m_oLimits.m_uTextBytes)
            m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
        if (!m_oSource.Fetch(pKept, m_pEnd)) return false;
        if (m_pHold != nullptr) m_pHold = pKept;
        m_p = pKept + uHere;
        m_oPlace.p = pKept + uPlace;
        return static_cast<std::size_t>(m_pEnd - pKept) > uSize;
    }
    void CountTo(const char* pTo) const noexcept {
        for (; m_oPlace.p < pTo; ++m_oPlace.p) {
            const char c = *m_oPlace.p;
            if (IsBreak(c)) {
                m_oPlace.uLine += c == '\r' || !m_oPlace.bCr;
                m_oPlace.uColumn = 1;
            } else {
                m_oPlace.uColumn += (c & 0xC0) != 0x80;
            }
            m_oPlace.bCr = c == '\r';
        }
    }
    // A text in a token: [uFirst, uLast), or what is in m_oText where it is not as it stands there.
    struct Piece {
        std::size_t uFirst = 0;
        std::size_t uLast = 0;
        bool bCopied = false;
    };
    void Copy(Piece& o) {
        if (!o.bCopied) m_oText.Truncate(0);
        o.bCopied = true;
        m_oText.Add(m_p + o.uFirst, o.uLast - o.uFirst);
    }
    [[nodiscard]] std::string_view TextOf(const Piece& o) const noexcept {
        if (o.bCopied) return {m_oText.Beg(), m_oText.Size()};
        return {m_p + o.uFirst, o.uLast - o.uFirst};
    }
    // Goes through what begins with a quote. Where the quote is that ends it, or the end.
    [[nodiscard]] std::size_t FindQuoted(char cQuote, Piece& o);
    [[nodiscard]] std::size_t FindQuote(std::size_t u, char cQuote) {
        for (;;) {
            const void* const pFound = std::memchr(m_p + u, cQuote, AtHand() - u);
            if (pFound != nullptr) {
                return static_cast<std::size_t>(static_cast<const char*>(pFound) - m_p);
            }
            u = AtHand();
            if (!More()) return u;
        }
    }

    File_Stream& m_oIn;
    xml::Source m_oSource;
    const Limits m_oLimits;
    const char* m_p;
    const char* m_pEnd;
    const char* m_pHold = nullptr;
    mutable Place m_oPlace;
    Place m_oHeld{nullptr, 1, 1, false};
    Arr<char> m_oText;  // a field that is not as it stands there
    bool m_bLeft = false;
    u3_t m_uLeftAt = 0;
};

std::size_t File_Scan::Impl::FindQuoted(char cQuote, Piece& o) {
    o.uFirst = 1;
    for (std::size_t u = 1;;) {
        o.uLast = u = FindQuote(u, cQuote);
        CheckSize(u);
        if (u == AtHand() || !Has(u + 1) || At(u + 1) != cQuote) {
            if (o.bCopied) Copy(o);
            return u;
        }
        o.uLast = u + 1;
        Copy(o);
        o.uFirst = u += 2;
    }
}

File_Scan::Field File_Scan::Impl::ReadField(char cSeparator, char cQuote) {
    Field o;
    if (AtEnd()) return o;
    Piece oPiece;
    std::size_t u = 0;  // where it ends
    if (cQuote != 0 && At(0) == cQuote) {
        o.m_bQuoted = true;
        u = FindQuoted(cQuote, oPiece);
        o.m_bUnclosed = u == AtHand();
        const std::size_t uBehind = u + 1;
        if (!o.m_bUnclosed) u = FindEnd(uBehind, cSeparator);
        o.m_bBehind = !o.m_bUnclosed && u != uBehind;
        if (o.m_bBehind) {
            if (!oPiece.bCopied) Copy(oPiece);
            oPiece.uFirst = uBehind;
            oPiece.uLast = u;
            Copy(oPiece);
        }
    } else {
        oPiece.uLast = u = FindEnd(0, cSeparator);
    }
    CheckSize(u);
    std::size_t uEnd = 0;
    if (u != AtHand()) {
        const bool bBreak = At(u) != cSeparator;
        o.m_eEnd = bBreak ? Field::End::Line : Field::End::Separator;
        uEnd = bBreak ? BreakAt(u) : 1;
    }
    o.m_sText = TextOf(oPiece);
    Pass(u + uEnd);
    return o;
}

std::string_view File_Scan::Impl::ReadString(char cQuote) {
    PassAll(IsBlank);
    if (AtEnd() || At(0) != cQuote) {
        (void)Has(15);
        file::RaiseExpected(file::Expected::Quoted, Name(), Line(), Column(),
                            {m_p, std::min<std::size_t>(16, AtHand())});
    }
    Piece oPiece;
    const std::size_t u = FindQuoted(cQuote, oPiece);
    if (u == AtHand()) Msg::MissingCharInString(static_cast<u0_t>(cQuote));
    const std::string_view s = TextOf(oPiece);
    Pass(u + 1);
    return s;
}

File_Scan::File_Scan(File_Stream& oIn, const Limits& oLimits)
    : m_pImpl(Where("vok::File_Scan::File_Scan",
                    [&] { return std::make_unique<Impl>(oIn, oLimits); })) {}
File_Scan::File_Scan(File_Scan&&) noexcept = default;
File_Scan& File_Scan::operator=(File_Scan&&) noexcept = default;
File_Scan::~File_Scan() = default;

// ---- where it stands --------------------------------------------------------

bool File_Scan::AtEnd() {
    return Where("vok::File_Scan::AtEnd", [&] { return m_pImpl->AtEnd(); });
}

u3_t File_Scan::Line() const {
    return m_pImpl->Line();
}

u3_t File_Scan::Column() const {
    return m_pImpl->Column();
}

u3_t File_Scan::Offset() const {
    return m_pImpl->Offset();
}

const char* File_Scan::Name() const {
    return m_pImpl->Name();
}

void File_Scan::Hold() {
    m_pImpl->Hold();
}

std::string_view File_Scan::Held() const {
    return m_pImpl->Held();
}

void File_Scan::Rewind() {
    m_pImpl->Rewind();
}

void File_Scan::Release() {
    m_pImpl->Release();
}

u3_t File_Scan::Leave() {
    return Where("vok::File_Scan::Leave", [&] { return m_pImpl->Leave(); });
}

// ---- reading ----------------------------------------------------------------

int File_Scan::Peek() {
    return Where("vok::File_Scan::Peek",
                 [&] { return m_pImpl->AtEnd() ? -1 : int{static_cast<u0_t>(m_pImpl->At(0))}; });
}

bool File_Scan::Skip(char c) {
    return Where("vok::File_Scan::Skip", [&] {
        if (m_pImpl->AtEnd() || m_pImpl->At(0) != c) return false;
        m_pImpl->Pass(1);
        return true;
    });
}

std::string_view File_Scan::Ahead(std::size_t uMost) {
    return Where("vok::File_Scan::Ahead", [&]() -> std::string_view {
        if (uMost != 0) (void)m_pImpl->Has(uMost - 1);
        return {m_pImpl->Here(), std::min(uMost, m_pImpl->AtHand())};
    });
}

void File_Scan::SkipBlanks(bool bLines) {
    return Where("vok::File_Scan::SkipBlanks", [&] {
        m_pImpl->PassAll([bLines](char c) { return IsBlank(c) && (bLines || !IsBreak(c)); });
    });
}

bool File_Scan::ReadLine(std::string_view& sLine) {
    return Where("vok::File_Scan::ReadLine", [&] {
        sLine = {};
        Impl& o = *m_pImpl;
        if (o.AtEnd()) return false;
        const std::size_t u = o.FindEnd(0, '\n');
        o.CheckSize(u);
        const std::size_t uBreak = u != o.AtHand() ? o.BreakAt(u) : 0;
        sLine = {o.Here(), u};
        o.Pass(u + uBreak);
        return true;
    });
}

namespace {

// The word in front, which is not passed yet.
template <class Impl>
std::string_view Word(Impl& o, std::string_view sEnds) {
    o.PassAll(IsBlank);
    const std::size_t u = o.Find(
        0, [sEnds](char c) { return IsBlank(c) || sEnds.find(c) != std::string_view::npos; });
    o.CheckSize(u);
    return {o.Here(), u};
}

template <class Impl>
[[noreturn]] void RaiseAt(const Impl& o, file::Expected eWhat, std::string_view sFound) {
    file::RaiseExpected(eWhat, o.Name(), o.Line(), o.Column(), sFound);
}

}  // namespace

std::string_view File_Scan::ReadWord(std::string_view sEnds) {
    return Where("vok::File_Scan::ReadWord", [&] {
        const std::string_view s = Word(*m_pImpl, sEnds);
        if (s.empty()) RaiseAt(*m_pImpl, file::Expected::Word, Ahead(16));
        m_pImpl->Pass(s.size());
        return s;
    });
}

i3_t File_Scan::ReadInteger(i3_t iLeast, i3_t iMost, std::string_view sEnds) {
    return Where("vok::File_Scan::ReadInteger", [&] {
        const std::string_view s = Word(*m_pImpl, sEnds);
        if (!Number_Text(s).bInteger) RaiseAt(*m_pImpl, file::Expected::Integer, s);
        const std::optional<i3_t> oValue = IntegerOf<i3_t>(s);
        if (!oValue || *oValue < iLeast || *oValue > iMost) {
            file::RaiseOutOfRange(Name(), Line(), Column(), s);
        }
        m_pImpl->Pass(s.size());
        return *oValue;
    });
}

double File_Scan::ReadReal(std::string_view sEnds) {
    return Where("vok::File_Scan::ReadReal", [&] {
        const std::string_view s = Word(*m_pImpl, sEnds);
        if (!Number_Text(s).bReal) RaiseAt(*m_pImpl, file::Expected::Real, s);
        const double d = ParseReal(s);
        if (std::isinf(d)) file::RaiseOutOfRange(Name(), Line(), Column(), s);
        m_pImpl->Pass(s.size());
        return d;
    });
}

std::string_view File_Scan::ReadString(char cQuote) {
    return Where("vok::File_Scan::ReadString", [&] { return m_pImpl->ReadString(cQuote); });
}

File_Scan::Field File_Scan::ReadField(char cSeparator, char cQuote) {
    return Where("vok::File_Scan::ReadField",
                 [&] { return m_pImpl->ReadField(cSeparator, cQuote); });
}

}  // namespace vok
