// SPDX-License-Identifier: MIT
// A tree of many nodes, once: run by hand.
#ifndef BENCHMARKS_LARGE_H
#define BENCHMARKS_LARGE_H

#include <cstddef>

namespace bench {

// Builds a tree of about uNodes nodes, saves, loads and shrinks it, and prints a Markdown table of
// seconds and bytes per node. Returns the exit status: not 0 when something did not come back.
// Takes about 80 bytes of memory a node.
int RunLarge(std::size_t uNodes);

}  // namespace bench

#endif  // BENCHMARKS_LARGE_H
