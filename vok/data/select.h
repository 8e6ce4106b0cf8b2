// Evaluation of many paths as one operation. Internal.
#ifndef VOK_DATA_SELECT_H
#define VOK_DATA_SELECT_H

#include "vok/data/store.h"

namespace vok::detail {

// The ids of the nodes that a path selects, seen from uStart, ascending and without
// duplicates. uSeen counts the nodes looked at from call to call: the limit on them is one
// for all. Errors are those of Data::GetNodeSet.
void SelectNodes(Data_Base& b, u2_t uStart, const char* sPath, const Limits& oLimits, u3_t& uSeen,
                 Arr<u2_t>& oResult);

}  // namespace vok::detail

#endif  // VOK_DATA_SELECT_H
