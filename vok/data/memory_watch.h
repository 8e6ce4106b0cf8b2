// SPDX-License-Identifier: MIT
// How loaders keep to the limit on memory. Internal.
#ifndef VOK_DATA_MEMORY_WATCH_H
#define VOK_DATA_MEMORY_WATCH_H

#include <algorithm>

#include "vok/base/work.h"
#include "vok/data/store.h"

namespace vok::detail {

// Memory that a node with a new name takes at most, attributes by the piece.
inline constexpr u3_t MOST_PER_NODE = 512;
// Nodes, or attributes, that come without a look at memory.
inline constexpr u3_t NODES_BETWEEN_CHECKS = 4096;

// How many nodes a tree may have before this is asked again; uHeld is all that is held for it.
// Raises the error of the limit where that is too much, or would be as soon as arrays grow: large
// ones do so in large steps; or in the end, when all is put in order. Nodes are placed below
// uParent as they come, or in the end (NONE).
[[nodiscard]] inline u3_t NodesBeforeCheck(const Work& oWork, u3_t uHeld, const Data_Base& b,
                                           u2_t uParent = Data_Base::NONE) {
    uHeld += b.BytesToOrder();
    const u3_t uLeft = oWork.CheckMemory(uHeld);
    u3_t uNext = std::max(uLeft / MOST_PER_NODE, NODES_BETWEEN_CHECKS);
    if (b.GrowthFor(uNext, uParent) > uLeft) {
        uNext = NODES_BETWEEN_CHECKS;
        (void)oWork.CheckMemory(uHeld + b.GrowthFor(uNext, uParent));
    }
    return b.m_oNode.Size() + uNext;
}

}  // namespace vok::detail

#endif  // VOK_DATA_MEMORY_WATCH_H
