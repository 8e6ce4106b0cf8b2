// SPDX-License-Identifier: MIT
// Filling load reports. Internal.
#ifndef VOK_DATA_REPORT_H
#define VOK_DATA_REPORT_H

#include <exception>

#include "vok/data/data.h"

namespace vok::detail {

// Notes the nodes made so far, and the path of the one that loading was at.
inline void ReportNode(Load_Report& oReport, const Data& oTree, u2_t uNode) noexcept {
    oReport.m_uNodes = oTree.GetNodes();
    try {
        oReport.m_oPath = oTree.GetNodeFromID(uNode).GetPath();
    } catch (const std::exception&) {
        oReport.m_oPath.Clear();
    }
}

// Does something where a scope is left, by an error as well.
template <class F>
class OnExit {
  public:
    explicit OnExit(F oDo) noexcept : m_oDo(oDo) {}
    ~OnExit() { m_oDo(); }
    OnExit(const OnExit&) = delete;
    OnExit& operator=(const OnExit&) = delete;

  private:
    F m_oDo;
};

// Has a report, unless it is null, filled where a scope is left, by an error as well.
template <class Fill>
[[nodiscard]] auto ReportOnExit(Load_Report* pReport, Fill oFill) noexcept {
    return OnExit([=] {
        if (pReport != nullptr) oFill(*pReport);
    });
}

}  // namespace vok::detail

#endif  // VOK_DATA_REPORT_H
