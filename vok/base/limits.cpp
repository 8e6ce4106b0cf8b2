// SPDX-License-Identifier: MIT
#include "vok/base/limits.h"

#include <algorithm>
#include <iterator>

#include "vok/base/msg.h"

namespace vok {

namespace {

// What messages call a limit, and the field that raises it.
constexpr struct {
    u3_t Limits::*pField;
    const char* sLimit;
    const char* sField;
} NAMES[] = {
    {&Limits::m_uNodes, "nodes", "Limits::m_uNodes"},
    {&Limits::m_uDepth, "depth", "Limits::m_uDepth"},
    {&Limits::m_uSkippedSlots, "skipped slots", "Limits::m_uSkippedSlots"},
    {&Limits::m_uTextBytes, "text bytes", "Limits::m_uTextBytes"},
    {&Limits::m_uAttributes, "attributes", "Limits::m_uAttributes"},
    {&Limits::m_uInflatedBytes, "inflated bytes", "Limits::m_uInflatedBytes"},
    {&Limits::m_uInflationRatio, "inflation ratio", "Limits::m_uInflationRatio"},
    {&Limits::m_uZipEntries, "zip entries", "Limits::m_uZipEntries"},
    {&Limits::m_uPathSteps, "path steps", "Limits::m_uPathSteps"},
    {&Limits::m_uWorkPerByte, "work for a byte", "Limits::m_uWorkPerByte"},
    {&Limits::m_uMemoryPerByte, "memory for a byte", "Limits::m_uMemoryPerByte"},
};

}  // namespace

void Limits::RaiseExceeded(u3_t Limits::*pField) const {
    const auto* p = std::find_if(std::begin(NAMES), std::end(NAMES),
                                 [pField](const auto& o) { return o.pField == pField; });
    Msg::LimitExceeded(p->sLimit, this->*pField, p->sField);
}

}  // namespace vok
