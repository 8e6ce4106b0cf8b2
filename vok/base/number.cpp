// SPDX-License-Identifier: MIT
#include "vok/base/number.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vok {

std::size_t FormatReal16(double dValue, char* sBuf) noexcept {
    char* pEnd =
        std::to_chars(sBuf, sBuf + NUMBER_ROOM - 1, dValue, std::chars_format::general, 16).ptr;
    *pEnd = 0;
    return static_cast<std::size_t>(pEnd - sBuf);
}

std::size_t FormatReal(double dValue, char* sBuf) noexcept {
    if (!std::isfinite(dValue)) {
        std::strcpy(sBuf, std::isnan(dValue) ? "NaN" : dValue < 0 ? "-INF" : "INF");
        return std::strlen(sBuf);
    }
    char* pEnd = std::to_chars(sBuf, sBuf + NUMBER_ROOM - 1, dValue).ptr;
    *pEnd = 0;
    return static_cast<std::size_t>(pEnd - sBuf);
}

namespace {

// Takes blanks and a sign off the front of a text; tells whether it was a minus.
bool TakeSign(std::string_view& sText) noexcept {
    while (!sText.empty() && (sText[0] == ' ' || (sText[0] >= '\t' && sText[0] <= '\r'))) {
        sText.remove_prefix(1);
    }
    const bool bNegative = !sText.empty() && sText[0] == '-';
    if (bNegative || (!sText.empty() && sText[0] == '+')) sText.remove_prefix(1);
    return bNegative;
}

// The number that a text of digits starts with, clamped.
u3_t ParseDigits(std::string_view sText, int iBase) noexcept {
    u3_t uValue = 0;
    const auto oResult = std::from_chars(sText.data(), sText.data() + sText.size(), uValue, iBase);
    return oResult.ec == std::errc::result_out_of_range ? ~u3_t{0} : uValue;
}

bool IsHexPrefix(std::string_view sText) noexcept {
    const auto oIsDigit = [](char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
    };
    return sText.size() > 2 && sText[0] == '0' && (sText[1] | 0x20) == 'x' &&
           (oIsDigit(sText[2]) || (sText[2] == '.' && sText.size() > 3 && oIsDigit(sText[3])));
}

// Whether the number that from_chars found to be out of range is large, not small.
bool IsLarge(std::string_view sNumber, bool bHex) noexcept {
    const std::size_t uExponent = sNumber.find_first_of(bHex ? "pP" : "eE");
    if (uExponent != std::string_view::npos) {
        // An exponent decides, unless as many digits stand against it.
        std::string_view sExponent = sNumber.substr(uExponent + 1);
        const bool bNegative = TakeSign(sExponent);
        const u3_t uValue = std::min<u3_t>(ParseDigits(sExponent, 10), u3_t{1} << 62);
        const i3_t iExponent = bNegative ? -static_cast<i3_t>(uValue) : static_cast<i3_t>(uValue);
        const std::size_t uPoint = std::min(sNumber.find('.'), uExponent);
        const std::size_t uFirst = sNumber.find_first_not_of("0.");
        const i3_t iPlace = static_cast<i3_t>(uPoint) - static_cast<i3_t>(uFirst);
        return iExponent + iPlace * (bHex ? 4 : 1) > 0;
    }
    return sNumber.find_first_not_of('0') < sNumber.find('.');
}

}  // namespace

i2_t ParseLongAnyBase(std::string_view sText) noexcept {
    const bool bNegative = TakeSign(sText);
    int iBase = 10;
    if (IsHexPrefix(sText) && sText[2] != '.') {
        iBase = 16;
        sText.remove_prefix(2);
    } else if (!sText.empty() && sText[0] == '0') {
        iBase = 8;
    }
    const i3_t iMost = i3_t{std::numeric_limits<i2_t>::max()} + bNegative;
    const i3_t iValue =
        static_cast<i3_t>(std::min<u3_t>(ParseDigits(sText, iBase), static_cast<u3_t>(iMost)));
    return static_cast<i2_t>(bNegative ? -iValue : iValue);
}

u3_t ParseLong64(std::string_view sText) noexcept {
    const bool bNegative = TakeSign(sText);
    const u3_t uValue = ParseDigits(sText, 10);
    return bNegative ? 0 - std::min(uValue, u3_t{1} << 63) : uValue;
}

double ParseReal(std::string_view sText) noexcept {
    const bool bNegative = TakeSign(sText);
    if (sText.empty() || sText[0] == '-') return 0;
    const bool bHex = IsHexPrefix(sText);
    if (bHex) sText.remove_prefix(2);
    const auto eFormat = bHex ? std::chars_format::hex : std::chars_format::general;
    double dValue = 0;
    const char* pEnd = sText.data() + sText.size();
    const auto oResult = std::from_chars(sText.data(), pEnd, dValue, eFormat);
    if (oResult.ec == std::errc::invalid_argument) return 0;
    if (oResult.ec == std::errc::result_out_of_range) {
        sText = sText.substr(0, static_cast<std::size_t>(oResult.ptr - sText.data()));
        dValue = IsLarge(sText, bHex) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return bNegative ? -dValue : dValue;
}

i2_t ParseLong(const char* sText, const char** pEnd) noexcept {
    const char* p = sText;
    while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
    const bool bNegative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    const char* pDigits = p;
    i3_t iValue = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        // Anything this large is clamped below, however many digits follow.
        if (iValue < i3_t{1} << 40) iValue = 10 * iValue + (*p - '0');
    }
    if (pEnd != nullptr) *pEnd = p != pDigits ? p : sText;
    using Limit = std::numeric_limits<i2_t>;
    return static_cast<i2_t>(
        std::clamp<i3_t>(bNegative ? -iValue : iValue, Limit::min(), Limit::max()));
}

}  // namespace vok
