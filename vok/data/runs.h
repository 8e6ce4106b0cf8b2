// SPDX-License-Identifier: MIT
// Order kept in sorted runs. Internal.
//
// An array that takes elements in any order and is searched in between must not be put in order
// as a whole each time: that would take quadratic time. Its elements stand in runs instead, each
// sorted and more than four times as long as the next. A new element begins a run of its own, and
// runs are merged while they are too short for that. So there are few runs to search, log n of
// them, and an element is moved log n times until all of them have come (the logarithmic method:
// J. L. Bentley, J. B. Saxe, "Decomposable searching problems I").
#ifndef VOK_DATA_RUNS_H
#define VOK_DATA_RUNS_H

#include <algorithm>

#include "vok/base/types.h"

namespace vok::runs {

// Of fewer than 2^31 elements; one more than there can be stands there before it is merged.
inline constexpr u2_t MOST = 17;
inline constexpr u3_t FACTOR = 4;

// Where the runs of an array begin; the last one ends with the array, or where the caller says.
struct Starts {
    u2_t uCount;
    u2_t auStart[MOST];

    [[nodiscard]] u2_t End(u2_t uRun, u2_t uSize) const noexcept {
        return uRun + 1 < uCount ? auStart[uRun + 1] : uSize;
    }
};

// Makes what stands from the end uBegin of the last run up to uEnd a run, sorted already, and
// merges. Elements of earlier runs stay in front of equal ones of later runs. Returns how many
// elements were moved. Never fails.
template <class T, class Less>
u3_t Add(Starts& o, T* pFirst, u2_t uBegin, u2_t uEnd, const Less& oIsLess) noexcept {
    u3_t uMoved = 0;
    o.auStart[o.uCount++] = uBegin;
    while (o.uCount > 1) {
        const u2_t uMiddle = o.auStart[o.uCount - 1];
        const u2_t uFrom = o.auStart[o.uCount - 2];
        if (uMiddle - uFrom > FACTOR * (uEnd - uMiddle)) break;
        std::inplace_merge(pFirst + uFrom, pFirst + uMiddle, pFirst + uEnd, oIsLess);
        uMoved += uEnd - uFrom;
        --o.uCount;
    }
    return uMoved;
}

// Merges all runs into one.
template <class T, class Less>
u3_t MergeAll(Starts& o, T* pFirst, u2_t uEnd, const Less& oIsLess) noexcept {
    u3_t uMoved = 0;
    for (; o.uCount > 1; --o.uCount) {
        const u2_t uFrom = o.auStart[o.uCount - 2];
        std::inplace_merge(pFirst + uFrom, pFirst + o.auStart[o.uCount - 1], pFirst + uEnd,
                           oIsLess);
        uMoved += uEnd - uFrom;
    }
    return uMoved;
}

}  // namespace vok::runs

#endif  // VOK_DATA_RUNS_H
