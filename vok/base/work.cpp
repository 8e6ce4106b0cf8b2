#include "vok/base/work.h"

#include "vok/base/msg.h"

namespace vok {

void Work::RaiseWork() const {
    Msg::LimitExceeded("work for a byte", m_oLimits.m_uWorkPerByte, "Limits::m_uWorkPerByte");
}

void Work::RaiseSteps() const {
    Msg::LimitExceeded("path steps", m_oLimits.m_uPathSteps, "Limits::m_uPathSteps");
}

void Work::RaiseMemory() const {
    Msg::LimitExceeded("memory for a byte", m_oLimits.m_uMemoryPerByte, "Limits::m_uMemoryPerByte");
}

}  // namespace vok
