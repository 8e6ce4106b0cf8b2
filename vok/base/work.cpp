// SPDX-License-Identifier: MIT
#include "vok/base/work.h"

#include "vok/base/msg.h"

namespace vok {

void Work::RaiseWork() const {
    m_oLimits.RaiseExceeded(&Limits::m_uWorkPerByte);
}

void Work::RaiseSteps() const {
    m_oLimits.RaiseExceeded(&Limits::m_uPathSteps);
}

void Work::RaiseMemory() const {
    m_oLimits.RaiseExceeded(&Limits::m_uMemoryPerByte);
}

}  // namespace vok
