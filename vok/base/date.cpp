// SPDX-License-Identifier: MIT
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

namespace {

// Takes what a date is made of off the front of a text.
class DateScanner {
  public:
    explicit DateScanner(std::string_view sText) noexcept : m_sText(sText) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return m_sText.empty(); }
    bool Take(std::string_view sOneOf) noexcept {
        if (m_sText.empty() || sOneOf.find(m_sText[0]) == std::string_view::npos) return false;
        m_cTaken = m_sText[0];
        m_sText.remove_prefix(1);
        return true;
    }
    [[nodiscard]] char Taken() const noexcept { return m_cTaken; }
    // A number of uLeast to uMost digits, no larger than iLimit.
    bool Number(std::size_t uLeast, std::size_t uMost, i3_t iLimit, i3_t& iValue) noexcept {
        std::size_t u = 0;
        iValue = 0;
        for (; u < uMost && u < m_sText.size() && IsDigit(m_sText[u]); ++u) {
            iValue = 10 * iValue + (m_sText[u] - '0');
        }
        m_sText.remove_prefix(u);
        return u >= uLeast && iValue <= iLimit;
    }
    double Fraction() noexcept {
        double dValue = 0;
        for (double dPlace = 0.1; !m_sText.empty() && IsDigit(m_sText[0]); dPlace /= 10) {
            dValue += dPlace * (m_sText[0] - '0');
            m_sText.remove_prefix(1);
        }
        return dValue;
    }

  private:
    static bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

    std::string_view m_sText;
    char m_cTaken = 0;
};

// Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms", days_from_civil.
i3_t DaysOfCivil(i3_t iYear, i3_t iMonth, i3_t iDay) noexcept {
    iYear -= iMonth <= 2;
    const i3_t iEra = (iYear >= 0 ? iYear : iYear - 399) / 400;
    const i3_t iYearOfEra = iYear - iEra * 400;
    const i3_t iDayOfYear = (153 * (iMonth > 2 ? iMonth - 3 : iMonth + 9) + 2) / 5 + iDay - 1;
    return iEra * 146097 + iYearOfEra * 365 + iYearOfEra / 4 - iYearOfEra / 100 + iDayOfYear -
           719468;
}

}  // namespace

bool ParseDate(std::string_view sText, double& dSeconds) noexcept {
    constexpr std::string_view BLANKS = " \t\r\n";
    const std::size_t uFirst = std::min(sText.find_first_not_of(BLANKS), sText.size());
    sText.remove_prefix(uFirst);
    sText = sText.substr(0, sText.find_last_not_of(BLANKS) + 1);

    DateScanner o(sText);
    i3_t iYear, iMonth, iDay;
    i3_t iHour = 0, iMinute = 0, iSecond = 0;
    double dFraction = 0;
    const bool bBefore0 = o.Take("-");
    // FormatDate counts the sign as one of four places.
    if (!o.Number(bBefore0 ? 3 : 4, 10, i3_t{1} << 32, iYear) || !o.Take("-")) return false;
    if (!o.Number(2, 2, 12, iMonth) || !o.Take("-") || !o.Number(2, 2, 31, iDay)) return false;
    if (iMonth == 0 || iDay == 0) return false;
    const bool bTime = o.Take("T ");
    if (bTime) {
        if (!o.Number(2, 2, 24, iHour) || !o.Take(":")) return false;
        if (!o.Number(2, 2, 59, iMinute) || !o.Take(":")) return false;
        // 60 is a leap second.
        if (!o.Number(2, 2, 60, iSecond)) return false;
        if (o.Take(".,")) dFraction = o.Fraction();
    }
    i3_t iZone = 0;
    if (!o.Take("Z") && bTime && o.Take("+-")) {
        const bool bWest = o.Taken() == '-';
        i3_t iZoneHour, iZoneMinute = 0;
        if (!o.Number(2, 2, 24, iZoneHour)) return false;
        if (o.Take(":") && !o.Number(2, 2, 59, iZoneMinute)) return false;
        iZone = (iZoneHour * 60 + iZoneMinute) * (bWest ? -60 : 60);
    }
    if (!o.IsAtEnd()) return false;
    const i3_t iDays = DaysOfCivil(bBefore0 ? -iYear : iYear, iMonth, iDay);
    const i3_t iSeconds = iDays * 86400 + iHour * 3600 + iMinute * 60 + iSecond - iZone;
    dSeconds = static_cast<double>(iSeconds) + dFraction;
    return true;
}

}  // namespace vok
