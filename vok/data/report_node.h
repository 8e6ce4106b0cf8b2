// What the load reports of all formats say about the tree. Internal.
#ifndef VOK_DATA_REPORT_NODE_H
#define VOK_DATA_REPORT_NODE_H

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

}  // namespace vok::detail

#endif  // VOK_DATA_REPORT_NODE_H
