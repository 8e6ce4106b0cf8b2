// SPDX-License-Identifier: MIT
#include "tools/limits.h"

#include <charconv>
#include <stdexcept>

namespace tools {

namespace {

using vok::Limits;

struct Name {
    const char* sOption;
    const char* sField;
    vok::u3_t Limits::*pField;
};
constexpr Name NAMES[] = {
    {"nodes", "m_uNodes", &Limits::m_uNodes},
    {"depth", "m_uDepth", &Limits::m_uDepth},
    {"slots", "m_uSkippedSlots", &Limits::m_uSkippedSlots},
    {"text", "m_uTextBytes", &Limits::m_uTextBytes},
    {"attributes", "m_uAttributes", &Limits::m_uAttributes},
    {"inflated", "m_uInflatedBytes", &Limits::m_uInflatedBytes},
    {"inflation", "m_uInflationRatio", &Limits::m_uInflationRatio},
    {"members", "m_uZipEntries", &Limits::m_uZipEntries},
    {"steps", "m_uPathSteps", &Limits::m_uPathSteps},
    {"work", "m_uWorkPerByte", &Limits::m_uWorkPerByte},
    {"memory", "m_uMemoryPerByte", &Limits::m_uMemoryPerByte},
};

}  // namespace

Limits& TheLimits() noexcept {
    static Limits s_oLimits;
    return s_oLimits;
}

void SetLimit(const std::string& sText) {
    const std::size_t uEqual = sText.find('=');
    for (const Name& o : NAMES) {
        if (uEqual == std::string::npos || sText.compare(0, uEqual, o.sOption) != 0) continue;
        const std::string sValue = sText.substr(uEqual + 1);
        vok::u3_t uValue = ~vok::u3_t{0};
        const char* const pEnd = sValue.data() + sValue.size();
        const auto oResult = std::from_chars(sValue.data(), pEnd, uValue);
        const bool bNumber = oResult.ec == std::errc() && oResult.ptr == pEnd;
        if (sValue != "none" && !bNumber) break;
        TheLimits().*o.pField = sValue == "none" ? ~vok::u3_t{0} : uValue;
        return;
    }
    throw std::invalid_argument("\"" + sText + "\" is no limit: NAME=NUMBER or NAME=none, with " +
                                LimitNames());
}

std::string LimitNames() {
    std::string s;
    for (const Name& o : NAMES) s += (s.empty() ? "" : ", ") + std::string(o.sOption);
    return s;
}

std::string InOptions(std::string sMessage) {
    for (const Name& o : NAMES) {
        const std::string sField = "Limits::" + std::string(o.sField) + ")";
        const std::size_t uAt = sMessage.find(sField);
        if (uAt == std::string::npos) continue;
        return sMessage.replace(uAt, sField.size(),
                                "it with --limit " + std::string(o.sOption) + "=...)");
    }
    return sMessage;
}

}  // namespace tools
