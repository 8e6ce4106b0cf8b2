#include "vok/base/number.h"

#include <algorithm>
#include <limits>

namespace vok {

std::size_t FormatReal16(double dValue, char* sBuf) noexcept {
    char* pEnd =
        std::to_chars(sBuf, sBuf + NUMBER_ROOM - 1, dValue, std::chars_format::general, 16).ptr;
    *pEnd = 0;
    return static_cast<std::size_t>(pEnd - sBuf);
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
