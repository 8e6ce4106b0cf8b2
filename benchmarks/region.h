// SPDX-License-Identifier: MIT
// The part of a benchmark that counts.
#ifndef BENCHMARKS_REGION_H
#define BENCHMARKS_REGION_H

#include <valgrind/callgrind.h>

namespace bench {

// Run under callgrind with --instr-atstart=no a program executes everything else unseen, so that
// the instructions collected are those of one column. Elsewhere it costs a few instructions.
class Region {
  public:
    Region() { CALLGRIND_START_INSTRUMENTATION; }
    ~Region() { CALLGRIND_STOP_INSTRUMENTATION; }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;
};

}  // namespace bench

#endif  // BENCHMARKS_REGION_H
