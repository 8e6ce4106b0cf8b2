#include "vok/base/date.h"

#include <algorithm>
#include <cstdio>

namespace vok {

Date_Fields BreakDownDate(double dSeconds) noexcept {
    constexpr double dMost = 6.7e16;  // a little below the year 2^31
    const double dClamped = std::isnan(dSeconds) ? 0.0 : std::clamp(dSeconds, -dMost, dMost);
    const i3_t iSeconds = static_cast<i3_t>(std::floor(dClamped));
    i3_t iDays = iSeconds / 86400;
    int iRest = static_cast<int>(iSeconds % 86400);
    if (iRest < 0) {
        iRest += 86400;
        --iDays;
    }
    // Days to civil date in eras of 400 years that begin on 1 March:
    // Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms", civil_from_days.
    iDays += 719468;
    const i3_t iEra = (iDays >= 0 ? iDays : iDays - 146096) / 146097;
    const i3_t iDayOfEra = iDays - iEra * 146097;
    const i3_t iYearOfEra =
        (iDayOfEra - iDayOfEra / 1460 + iDayOfEra / 36524 - iDayOfEra / 146096) / 365;
    const i3_t iDayOfYear = iDayOfEra - (365 * iYearOfEra + iYearOfEra / 4 - iYearOfEra / 100);
    const i3_t iMonth = (5 * iDayOfYear + 2) / 153;
    const int iDay = static_cast<int>(iDayOfYear - (153 * iMonth + 2) / 5 + 1);
    const int iCivilMonth = static_cast<int>(iMonth < 10 ? iMonth + 3 : iMonth - 9);
    const i3_t iYear = iYearOfEra + iEra * 400 + (iCivilMonth <= 2);
    return {iYear, iCivilMonth, iDay, iRest / 3600, iRest / 60 % 60, iRest % 60};
}

std::size_t FormatDate(double dSeconds, char cSeparator, char* sBuf) noexcept {
    const Date_Fields o = BreakDownDate(dSeconds);
    const int iLength = std::snprintf(sBuf, 128, "%04lld-%02d-%02d%c%02d:%02d:%02d",
                                      static_cast<long long>(o.iYear), o.iMonth, o.iDay, cSeparator,
                                      o.iHour, o.iMinute, o.iSecond);
    return static_cast<std::size_t>(iLength);
}

}  // namespace vok
