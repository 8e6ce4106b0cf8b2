// SPDX-License-Identifier: MIT
#include "vok/json/scalar.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

#include "vok/base/date.h"
#include "vok/base/utf8.h"
#include "vok/json/messages.h"

namespace vok::json {

namespace {

// That of operations on numbers.
constexpr u3_t QUIET_NAN = 0x7FF8000000000000;

// All of a text as a number; false where it is none, or out of range.
template <class T>
[[nodiscard]] bool Parse(std::string_view sText, T& tValue, int iBase = 10) noexcept {
    const char* const pEnd = sText.data() + sText.size();
    const auto oResult = std::from_chars(sText.data(), pEnd, tValue, iBase);
    return oResult.ec == std::errc() && oResult.ptr == pEnd;
}

// The digits of a number without the zeros around them, at most MOST of them.
class Digits {
  public:
    // No double has more.
    static constexpr int MOST = 768;

    explicit Digits(std::string_view sNumber) noexcept {
        int iZeros = 0;  // that count if another digit follows
        for (const char c : sNumber) {
            if (c == 'e' || c == 'E') break;
            if (c == '0' && m_iCount != 0) ++iZeros;
            if (c < '1' || c > '9') continue;
            for (; iZeros > 0 && m_iCount <= MOST; --iZeros) Add('0');
            iZeros = 0;
            Add(c);
        }
    }
    [[nodiscard]] int Count() const noexcept { return m_iCount; }
    [[nodiscard]] bool operator==(const Digits& o) const noexcept {
        return m_iCount == o.m_iCount &&
               std::memcmp(m_sDigits, o.m_sDigits, static_cast<std::size_t>(m_iCount)) == 0;
    }

  private:
    // One more than MOST is enough to know that there are too many.
    void Add(char c) noexcept {
        if (m_iCount <= MOST) m_sDigits[m_iCount++] = c;
    }
    char m_sDigits[MOST + 1];
    int m_iCount = 0;
};

// Whether the double that a number was taken for does not give its digits again.
[[nodiscard]] bool IsRounded(std::string_view sText, double dValue) noexcept {
    // Up to 15 digits come back from every double but the smallest ones.
    constexpr int SURE = 15;
    const double dSize = std::fabs(dValue);
    if (sText.size() <= SURE && dSize >= 1e-290) return false;
    const Digits oDigits(sText);
    if (oDigits.Count() == 0 || (oDigits.Count() <= SURE && dSize >= 1e-290)) return false;
    if (oDigits.Count() > Digits::MOST) return true;
    char s[Digits::MOST + 32];
    const auto oEnd =
        std::to_chars(s, s + sizeof(s), dSize, std::chars_format::scientific, oDigits.Count() - 1);
    return !(oDigits == Digits({s, static_cast<std::size_t>(oEnd.ptr - s)}));
}

[[nodiscard]] Number ReadReal(std::string_view sText) {
    double dValue = 0;
    const char* const pEnd = sText.data() + sText.size();
    if (std::from_chars(sText.data(), pEnd, dValue).ec == std::errc()) {
        return {Data_Node::Double, std::bit_cast<u3_t>(dValue), IsRounded(sText, dValue)};
    }
    // Out of range: to either side, which the reader of texts tells.
    dValue = ParseReal(sText);
    if (std::isinf(dValue)) RaiseSyntax(Syntax::TooLarge);
    return {Data_Node::Double, std::bit_cast<u3_t>(dValue), IsRounded(sText, dValue)};
}

[[nodiscard]] bool ReadUnreal(std::string_view sText, double& dValue) noexcept {
    u3_t uBits = 0;
    if (sText == "INF") {
        uBits = std::bit_cast<u3_t>(HUGE_VAL);
    } else if (sText == "-INF") {
        uBits = std::bit_cast<u3_t>(-HUGE_VAL);
    } else if (sText == "NaN") {
        uBits = QUIET_NAN;
    } else if (!sText.starts_with("0x") || !Parse(sText.substr(2), uBits, 16)) {
        return false;
    }
    dValue = std::bit_cast<double>(uBits);
    return true;
}

[[nodiscard]] bool ReadChar(std::string_view sText, u3_t& uBits) noexcept {
    const bool bOne =
        !sText.empty() && Utf8SequenceLength(sText.data(), sText.size()) == sText.size();
    if (!bOne) return false;
    const char* p = sText.data();
    uBits = DecodeUtf8(p, p + sText.size());
    return true;
}

// A number of 32 bits, signed or not.
[[nodiscard]] bool ReadWord(std::string_view sText, u3_t& uBits) noexcept {
    i3_t iValue = 0;
    if (!Parse(sText, iValue) || iValue < -0x80000000ll || iValue > 0xFFFFFFFFll) return false;
    uBits = static_cast<u2_t>(iValue);
    return true;
}

}  // namespace

Number ReadNumber(std::string_view sText) {
    const bool bWhole = sText.find_first_of(".eE") == std::string_view::npos;
    i2_t iValue = 0;
    u3_t uValue = 0;
    if (bWhole && sText != "-0") {
        if (Parse(sText, iValue)) return {Data_Node::Integer, static_cast<u2_t>(iValue)};
        if (Parse(sText, uValue)) return {Data_Node::Long, uValue};
    }
    return ReadReal(sText);
}

std::string_view FormatUnreal(double dValue, char* sBuf) noexcept {
    const u3_t uBits = std::bit_cast<u3_t>(dValue);
    if (uBits == QUIET_NAN) return "NaN";
    if (std::isinf(dValue)) return dValue > 0 ? "INF" : "-INF";
    sBuf[0] = '0';
    sBuf[1] = 'x';
    for (int i = 0; i < 16; ++i) sBuf[2 + i] = "0123456789ABCDEF"[uBits >> (60 - 4 * i) & 15];
    return {sBuf, 18};
}

std::string_view FormatPlainDate(double dSeconds, char* sBuf) noexcept {
    std::size_t uSize = FormatDate(dSeconds, 'T', sBuf);
    sBuf[uSize++] = 'Z';
    double dRead = 0;
    const bool bSame = ParseDate({sBuf, uSize}, dRead) &&
                       std::bit_cast<u3_t>(dRead) == std::bit_cast<u3_t>(dSeconds);
    return {sBuf, bSame ? uSize : 0};
}

bool ReadTyped(Data_Node::Type eType, const Scalar& o, u3_t& uBits, bool& bRounded) {
    const bool bNumber = o.eKind == Scalar::Number;
    const bool bText = o.eKind == Scalar::Text;
    double dValue = 0;
    switch (eType) {
        case Data_Node::Boolean:
            uBits = o.eKind == Scalar::True;
            if (o.eKind == Scalar::True || o.eKind == Scalar::False) return true;
            return bNumber && ReadWord(o.sText, uBits);
        case Data_Node::Integer: {
            i2_t iValue = 0;
            if (!bNumber || !Parse(o.sText, iValue)) return false;
            uBits = static_cast<u2_t>(iValue);
            return true;
        }
        case Data_Node::Char:
            return bText ? ReadChar(o.sText, uBits) : bNumber && ReadWord(o.sText, uBits);
        case Data_Node::Long: return bNumber && Parse(o.sText, uBits);
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date:
            if (bNumber) {
                const Number oNumber = ReadReal(o.sText);
                uBits = oNumber.uBits;
                bRounded = oNumber.bRounded;
                return true;
            }
            if (!bText) return false;
            if (!ReadUnreal(o.sText, dValue)) {
                if (eType != Data_Node::Date || !ParseDate(o.sText, dValue)) return false;
            }
            uBits = std::bit_cast<u3_t>(dValue);
            return true;
        default: return false;
    }
}

bool ReadQuad(std::string_view sText, u2_t* pWords) noexcept {
    for (int i = 0; i < 4; ++i) {
        const std::size_t uEnd = i < 3 ? sText.find(',') : sText.size();
        if (uEnd == std::string_view::npos || !Parse(sText.substr(0, uEnd), pWords[i]))
            return false;
        sText.remove_prefix(i < 3 ? uEnd + 1 : uEnd);
    }
    return true;
}

}  // namespace vok::json
