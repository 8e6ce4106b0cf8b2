// SPDX-License-Identifier: MIT
// Values as documents have them, to those of fields. Internal.
#ifndef SERIALIZER_FIELDS_CONVERT_H
#define SERIALIZER_FIELDS_CONVERT_H

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "vok/base/types.h"
#include "vok/base/utf8.h"

namespace Velmar::Q7R::Serializer::fields {

// A text that a tree takes as it stands: others are re-encoded, and end at their first NUL.
[[nodiscard]] inline bool IsTreeText(std::string_view s) noexcept {
    return vok::IsAsciiText(s.data(), s.size()) ||
           (vok::IsUtf8(s.data(), s.size()) && s.find('\0') == std::string_view::npos);
}

// A whole number: 64 bits, negative ones as their two's complement.
struct Number {
    vok::u3_t uBits = 0;
    bool bNegative = false;

    [[nodiscard]] static Number Of(std::int64_t i) noexcept {
        return {static_cast<vok::u3_t>(i), i < 0};
    }
    // The bits of a Long, which does not say whether it has a sign.
    [[nodiscard]] static Number OfLong(vok::u3_t u, bool bSigned) noexcept {
        return {u, bSigned && std::bit_cast<std::int64_t>(u) < 0};
    }
    [[nodiscard]] bool IsWithin(std::int64_t iLowest, std::uint64_t uHighest) const noexcept {
        return bNegative ? std::bit_cast<std::int64_t>(uBits) >= iLowest : uBits <= uHighest;
    }
};

// A decimal number that is all of a text: how documents of minor versions before 3 have a Long.
// False for any other text, and for a number that 64 bits do not hold.
[[nodiscard]] inline bool ParseNumber(std::string_view sText, bool bSigned, Number& o) noexcept {
    const char* const pEnd = sText.data() + sText.size();
    std::from_chars_result oResult{};
    if (sText.starts_with('-')) {
        std::int64_t i = 0;
        oResult = std::from_chars(sText.data(), pEnd, i);
        o = Number::Of(i);
    } else {
        vok::u3_t u = 0;
        oResult = std::from_chars(sText.data(), pEnd, u);
        o = Number::OfLong(u, bSigned);
    }
    return oResult.ec == std::errc() && oResult.ptr == pEnd;
}

// A real number that is all of a text.
[[nodiscard]] inline bool ParseReal(std::string_view sText, double& d) noexcept {
    const char* const pEnd = sText.data() + sText.size();
    const auto oResult = std::from_chars(sText.data(), pEnd, d);
    return oResult.ec == std::errc() && oResult.ptr == pEnd;
}

// The seconds of a Date as a whole number of periods; false where they are none, or too many.
[[nodiscard]] inline bool TicksOf(double dSeconds, std::int64_t iPeriod,
                                  std::int64_t& iTicks) noexcept {
    const double dTicks = dSeconds / static_cast<double>(iPeriod);
    if (!(std::fabs(dTicks) < 0x1p63) || dTicks != std::floor(dTicks)) return false;
    iTicks = static_cast<std::int64_t>(dTicks);
    return true;
}

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_CONVERT_H
