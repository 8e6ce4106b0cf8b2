// SPDX-License-Identifier: MIT
// Successors whose names came in the same order as those of a node before. Internal.
#ifndef VOK_DATA_SUCC_SHAPES_H
#define VOK_DATA_SUCC_SHAPES_H

#include "vok/data/node.h"

namespace vok {

// Objects of one kind get their successors in one order, so what is learned by sorting those of one
// of them serves the next: it is found by the name of its first successor, and its names are
// compared, not sorted. Good for as long as the order of names is. Only runs are looked at, the
// successors of a node that were made one behind the other, before it had any others in its group.
class Data_Shapes {
  public:
    // Whether so many nodes from the one at pFirst, in the array up to pEnd, have one parent that
    // it pays to look for them: fewer are put in order as quickly as they are compared.
    [[nodiscard]] static bool IsRun(const Data_Node* pFirst, const Data_Node* pEnd) noexcept {
        return pEnd - pFirst >= LEAST && pFirst[LEAST - 1].PredField() == pFirst->PredField();
    }
    // How many nodes from the one at pFirst on are a run whose order is known; 0 for none.
    [[nodiscard]] u2_t Match(const Data_Node* pFirst, const Data_Node* pEnd) const noexcept {
        const Shape& o = At(pFirst->uKey);
        if (o.uCount == 0 || o.auKey[0] != pFirst->uKey || o.uCount > pEnd - pFirst) return 0;
        u2_t uOther = 0;
        for (u2_t u = 1; u < o.uCount; ++u) {
            uOther |= (pFirst[u].uKey ^ o.auKey[u]) | (pFirst[u].PredField() ^ pFirst->PredField());
        }
        return uOther == 0 ? o.uCount : 0;
    }
    // Writes their ids in order; the first of them has uFirst.
    void Place(u2_t uKey, u2_t uFirst, u2_t* pId) const noexcept {
        const Shape& o = At(uKey);
        for (u2_t u = 0; u < o.uCount; ++u) pId[u] = uFirst + o.auOffset[u];
    }
    // A run of uCount nodes from the one at pFirst on, which has id uFirst, was sorted: to pId. It
    // is noted when one with that first name comes for the second time.
    void Note(const Data_Node* pFirst, u2_t uFirst, u2_t uCount, const u2_t* pId) noexcept {
        if (uCount < LEAST || uCount > MOST) return;
        Shape& o = At(pFirst->uKey);
        if (o.auKey[0] != pFirst->uKey) {
            o.auKey[0] = pFirst->uKey;
            o.uCount = 0;
            return;
        }
        o.uCount = uCount;
        for (u2_t u = 0; u < uCount; ++u) {
            o.auKey[u] = pFirst[u].uKey;
            o.auOffset[u] = pId[u] - uFirst;
        }
    }

  private:
    static constexpr u2_t LEAST = 4;
    static constexpr u2_t MOST = 16;
    static constexpr u2_t SHAPES = 8;

    struct Shape {
        u2_t uCount = 0;
        u2_t auKey[MOST] = {};     // in the order of the nodes
        u2_t auOffset[MOST] = {};  // of ids from the first one on, in the order of names
    };

    [[nodiscard]] Shape& At(u2_t uKey) noexcept { return m_ao[uKey % SHAPES]; }
    [[nodiscard]] const Shape& At(u2_t uKey) const noexcept { return m_ao[uKey % SHAPES]; }

    Shape m_ao[SHAPES];
};

}  // namespace vok

#endif  // VOK_DATA_SUCC_SHAPES_H
