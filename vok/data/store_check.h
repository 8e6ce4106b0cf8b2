// SPDX-License-Identifier: MIT
// Whether a store is what the rest of the code takes it for. Internal, for tests.
#ifndef VOK_DATA_STORE_CHECK_H
#define VOK_DATA_STORE_CHECK_H

#include "vok/data/store.h"

namespace vok {

// Verifies every invariant of a tree: records and their types, predecessors and groups, the order
// of names, texts, links, attributes, and all that is counted. Changes nothing; n log n. Null, or
// the first thing that does not hold.
[[nodiscard]] const char* CheckStore(const Data_Base& b);

}  // namespace vok

#endif  // VOK_DATA_STORE_CHECK_H
