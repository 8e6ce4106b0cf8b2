// SPDX-License-Identifier: MIT
// Sorting by numbers that stand beside what is sorted. Internal.
#ifndef VOK_BASE_KEYED_SORT_H
#define VOK_BASE_KEYED_SORT_H

#include "vok/base/types.h"

namespace vok {

struct Keyed {
    u3_t uKey;
    u2_t uValue;
};

// Sorts by keys. Values come in ascending order, and equal keys leave them so. Takes uSize more
// elements of memory at pRoom; linear in uSize, and in the bytes in which keys differ.
void SortByKey(Keyed* pFirst, std::size_t uSize, Keyed* pRoom) noexcept;

}  // namespace vok

#endif  // VOK_BASE_KEYED_SORT_H
