// SPDX-License-Identifier: MIT
#include "vok/csv/types.h"

#include <cmath>
#include <limits>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/file/number_text.h"

namespace vok::csv {

namespace {

// Decimal digits that every Double gives back.
constexpr unsigned REAL_DIGITS = 17;
// Up to here every whole number is a Double.
constexpr u3_t EXACT = u3_t{1} << 53;

std::optional<bool> BooleanOf(std::string_view s) noexcept {
    if (s == "true" || s == "True" || s == "TRUE") return true;
    if (s == "false" || s == "False" || s == "FALSE") return false;
    return std::nullopt;
}

std::optional<double> RealOf(std::string_view s) noexcept {
    if (!Number_Text(s).bReal) return std::nullopt;
    const double d = ParseReal(s);
    if (std::isinf(d)) return std::nullopt;
    return d;
}

// "2026-11-24", maybe with a time behind it.
std::optional<double> DateOf(std::string_view s) noexcept {
    double dSeconds = 0;
    const bool bDay = s.size() >= 10 && s[4] == '-' && s[7] == '-' && s.front() != ' ' &&
                      s.front() != '-' && s.back() != ' ';
    if (!bDay || !ParseDate(s, dSeconds)) return std::nullopt;
    return dSeconds;
}

}  // namespace

bool IsColumnType(Data_Node::Type eType) noexcept {
    constexpr u2_t TYPES = 1u << Data_Node::Boolean | 1u << Data_Node::Integer |
                           1u << Data_Node::Long | 1u << Data_Node::Float |
                           1u << Data_Node::Double | 1u << Data_Node::Date | 1u << Data_Node::Char |
                           1u << Data_Node::String;
    return eType < 32 && (TYPES >> eType & 1u) != 0;
}

std::optional<Data_Value> ValueOf(std::string_view sField, Data_Node::Type eType) noexcept {
    switch (eType) {
        case Data_Node::Boolean: {
            if (const std::optional<bool> o = BooleanOf(sField)) return Data_Value(*o);
            if (sField == "1" || sField == "0") return Data_Value(sField == "1");
            return std::nullopt;
        }
        case Data_Node::Integer: {
            const std::optional<i2_t> o = IntegerOf<i2_t>(sField);
            return o ? std::optional(Data_Value(*o)) : std::nullopt;
        }
        case Data_Node::Long: {
            if (const std::optional<u3_t> o = IntegerOf<u3_t>(sField)) return Data_Value(*o);
            const std::optional<i3_t> o = IntegerOf<i3_t>(sField);
            return o ? std::optional(Data_Value(static_cast<u3_t>(*o))) : std::nullopt;
        }
        case Data_Node::Float:
        case Data_Node::Double: {
            const std::optional<double> o = RealOf(sField);
            if (!o) return std::nullopt;
            if (eType == Data_Node::Double) return Data_Value(*o);
            const auto fValue = static_cast<float>(*o);
            return std::isinf(fValue) ? std::nullopt : std::optional(Data_Value(fValue));
        }
        case Data_Node::Date: {
            const std::optional<double> o = DateOf(sField);
            return o ? std::optional(Data_Value::Date(*o)) : std::nullopt;
        }
        case Data_Node::Char: {
            const char* p = sField.data();
            const char* const pEnd = p + sField.size();
            if (p == pEnd) return std::nullopt;
            const u2_t uCode = DecodeUtf8(p, pEnd);
            return p == pEnd ? std::optional(Data_Value::Char(uCode)) : std::nullopt;
        }
        default: return Data_Value(sField);
    }
}

void Guess::Look(std::string_view sField) noexcept {
    if (sField.empty()) return;
    m_bSeen = true;
    if (m_uMay == 0) return;
    if ((m_uMay & BOOLEAN) != 0 && !BooleanOf(sField)) m_uMay &= ~unsigned{BOOLEAN};
    if ((m_uMay & DATE) != 0 && !DateOf(sField)) m_uMay &= ~unsigned{DATE};
    if ((m_uMay & (WHOLE | REAL)) != 0) LookAtNumber(sField);
}

void Guess::LookAtNumber(std::string_view sField) noexcept {
    const Number_Text o(sField);
    if (!o.bReal || o.bPlus || o.bZeros) {
        m_uMay &= ~unsigned{WHOLE | REAL};
        return;
    }
    if (!o.bInteger || (o.bMinus && o.sRest == "0")) {
        m_uMay &= ~unsigned{WHOLE};
        if (o.uDigits > REAL_DIGITS || !RealOf(sField)) m_uMay &= ~unsigned{REAL};
        return;
    }
    const std::optional<u3_t> oSize = IntegerOf<u3_t>(o.sRest);
    if (!oSize) {
        m_uMay &= ~unsigned{WHOLE | REAL};  // more than any number keeps
        return;
    }
    constexpr u3_t MOST = std::numeric_limits<i2_t>::max();
    m_bNegative = m_bNegative || o.bMinus;
    m_bLarge = m_bLarge || *oSize > MOST + o.bMinus;
    m_bInexact = m_bInexact || *oSize > EXACT;
}

Data_Node::Type Guess::Result() const noexcept {
    if (!m_bSeen) return Data_Node::String;
    if ((m_uMay & BOOLEAN) != 0) return Data_Node::Boolean;
    if ((m_uMay & WHOLE) != 0) {
        if (!m_bLarge) return Data_Node::Integer;
        if (!m_bNegative) return Data_Node::Long;
    }
    if ((m_uMay & REAL) != 0 && !m_bInexact) return Data_Node::Double;
    return (m_uMay & DATE) != 0 ? Data_Node::Date : Data_Node::String;
}

}  // namespace vok::csv
