// SPDX-License-Identifier: MIT
// Evaluation of many paths as one operation. Internal.
#ifndef VOK_DATA_SELECT_H
#define VOK_DATA_SELECT_H

#include "vok/base/work.h"
#include "vok/data/store.h"

namespace vok::detail {

// The ids of the nodes that a path selects, seen from uStart, ascending and without
// duplicates. What it looks at is charged to oWork, for all paths of one operation together.
// Errors are those of Data::GetNodeSet.
void SelectNodes(Data_Base& b, u2_t uStart, const char* sPath, Work& oWork, Arr<u2_t>& oResult);

}  // namespace vok::detail

#endif  // VOK_DATA_SELECT_H
