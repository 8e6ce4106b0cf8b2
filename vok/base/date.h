// SPDX-License-Identifier: MIT
// Dates: seconds since 1970-01-01 00:00:00 UTC, day numbers, calendar fields. All of it is
// UTC in the proleptic Gregorian calendar; nothing depends on a time zone or a locale.
#ifndef VOK_BASE_DATE_H
#define VOK_BASE_DATE_H

#include <cmath>
#include <string_view>

#include "vok/base/types.h"

namespace vok {

inline constexpr double SECONDS_PER_DAY = 86400.0;
// Days from 1899-12-30 to 1970-01-01.
inline constexpr double UNIX_EPOCH_DAY = 25569.0;

struct Date_Fields {
    i3_t iYear;   // full; may be negative
    int iMonth;   // 1 to 12
    int iDay;     // 1 to 31
    int iHour;    // 0 to 23
    int iMinute;  // 0 to 59
    int iSecond;  // 0 to 59
};

// The calendar fields of a moment, rounded down to whole seconds. Moments beyond the years
// of a 32-bit number are clamped to them, not-a-number counts as 0.
[[nodiscard]] Date_Fields BreakDownDate(double dSeconds) noexcept;

// Days since 1899-12-30 and back; the way back rounds to whole seconds.
[[nodiscard]] inline double DaysOfSeconds(double dSeconds) noexcept {
    return dSeconds / SECONDS_PER_DAY + UNIX_EPOCH_DAY;
}
[[nodiscard]] inline double SecondsOfDays(double dDays) noexcept {
    return std::floor((dDays - UNIX_EPOCH_DAY) * SECONDS_PER_DAY + 0.5);
}

// Writes "2026-11-24 18:35:56" to sBuf, which has room for 128 bytes; cSeparator stands
// between day and hour. Returns the length.
std::size_t FormatDate(double dSeconds, char cSeparator, char* sBuf) noexcept;
// Reads "2026-11-24T18:35:56" (or with a blank in the middle), maybe with a fraction of the
// second and a zone behind it ("Z", "+01:00"); without a zone it is UTC, a date alone is its
// midnight. Blanks around it do not count. False when the text is anything else.
[[nodiscard]] bool ParseDate(std::string_view sText, double& dSeconds) noexcept;

}  // namespace vok

#endif  // VOK_BASE_DATE_H
