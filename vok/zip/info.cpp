// SPDX-License-Identifier: MIT
#include "vok/zip/info.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>

#include "vok/base/date.h"
#include "vok/zip/records.h"

namespace vok {

namespace {

// The type of a file in the upper half of its external attributes, where Unix keeps it.
constexpr u2_t UNIX_TYPE = 0xF0000000;
constexpr u2_t UNIX_FILE = 0x80000000;
constexpr u2_t UNIX_FOLDER = 0x40000000;
// DOS attributes of Windows: a link of one kind or another.
constexpr u2_t REPARSE_POINT = 0x400;

constexpr i3_t FIRST_YEAR = 1980;
constexpr i3_t LAST_YEAR = 2107;

[[nodiscard]] bool IsLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

Zip_Date Zip_DateFields(u2_t uDosDate) noexcept {
    return {1980 + (uDosDate >> 25), uDosDate >> 21 & 15, uDosDate >> 16 & 31,
            uDosDate >> 11 & 31,     uDosDate >> 5 & 63,  2 * (uDosDate & 31)};
}

u2_t Zip_DosDate(double dSeconds) noexcept {
    const Date_Fields o = BreakDownDate(dSeconds);
    if (o.iYear < FIRST_YEAR) return ZIP_DOS_EPOCH;
    if (o.iYear > LAST_YEAR) return 0xFF9FBF7D;  // 2107-12-31 23:59:58
    return static_cast<u2_t>(o.iYear - FIRST_YEAR) << 25 | static_cast<u2_t>(o.iMonth) << 21 |
           static_cast<u2_t>(o.iDay) << 16 | static_cast<u2_t>(o.iHour) << 11 |
           static_cast<u2_t>(o.iMinute) << 5 | static_cast<u2_t>(o.iSecond) / 2;
}

// Flag 1 says that the first time, the only one here, is that of modification.
std::string Zip_TimeField(double dSeconds) {
    const double dWhole = std::floor(dSeconds);
    if (!(dWhole >= -2147483648.0 && dWhole <= 2147483647.0)) return {};
    constexpr u1_t uSize = 5;
    std::string sField(4 + uSize, '\1');
    char* p = le::Store(sField.data(), zip::EXTRA_TIME);
    (void)le::Store(le::Store(p, uSize) + 1, static_cast<i2_t>(dWhole));
    return sField;
}

double Zip_Seconds(const Zip_FileInfo& oInfo) noexcept {
    std::string_view sField;
    if (zip::FindExtra(oInfo.m_sExtra, zip::EXTRA_TIME, sField) && sField.size() >= 5 &&
        (sField[0] & 1) != 0) {
        return le::Load<i2_t>(sField.data() + 1);
    }
    const Zip_Date o = Zip_DateFields(oInfo.m_uDosDate);
    // What is no date counts on from the nearest month.
    const auto oMonth = std::chrono::year(static_cast<int>(o.m_uYear)) /
                        std::chrono::month(std::clamp(o.m_uMonth, 1u, 12u));
    const std::chrono::sys_days oFirst(oMonth / 1);
    const auto dDay = static_cast<double>(oFirst.time_since_epoch().count());
    return SECONDS_PER_DAY * (dDay + o.m_uDay - 1) + 3600 * o.m_uHour + 60 * o.m_uMinute +
           o.m_uSecond;
}

bool Zip_IsSafeName(std::string_view sName) noexcept {
    constexpr std::string_view sSeparators = "/\\";
    if (sName.empty() || sSeparators.find(sName[0]) != std::string_view::npos) return false;
    if (sName.size() > 1 && sName[1] == ':' && IsLetter(sName[0])) return false;
    const auto bControl = [](char c) { return static_cast<u0_t>(c) < 0x20 || c == 0x7F; };
    if (std::any_of(sName.begin(), sName.end(), bControl)) return false;
    while (!sName.empty()) {
        const std::size_t uEnd = std::min(sName.find_first_of(sSeparators), sName.size());
        const std::string_view sPart = sName.substr(0, uEnd);
        if (sPart.size() > 1 && sPart.find_first_not_of(". ") == std::string_view::npos) {
            return false;
        }
        sName.remove_prefix(std::min(uEnd + 1, sName.size()));
    }
    return true;
}

bool Zip_IsSafeMember(const Zip_FileInfo& oInfo) noexcept {
    const u2_t uType = oInfo.m_uExternalAttributes & UNIX_TYPE;
    if (uType != 0 && uType != UNIX_FILE && uType != UNIX_FOLDER) return false;
    if ((oInfo.m_uExternalAttributes & REPARSE_POINT) != 0) return false;
    return Zip_IsSafeName(oInfo.m_oName.View());
}

}  // namespace vok
