// SPDX-License-Identifier: MIT
// Numbers that stand for subtrees. Internal.
#ifndef VOK_COMPARE_SUBTREE_HASH_H
#define VOK_COMPARE_SUBTREE_HASH_H

#include "vok/compare/side.h"

namespace vok {

[[nodiscard]] inline u3_t MixHash(u3_t uHash, u3_t uValue) noexcept {
    uHash = (uHash ^ uValue) * 0x9E3779B97F4A7C15u;
    return uHash ^ uHash >> 29;
}

// For every node that is seen a number that is the same for what looks the same: name, type, value,
// attributes, successors in their order. What differs has the same number by accident, so it may
// propose what is alike and not decide. Of links only that they are some is part of it; reals
// within a delta often have the same number, and those that have lie within it.
class Data_SubtreeHash {
  public:
    // Linear; nothing recurses.
    Data_SubtreeHash(Data_Side& oSide, double dDelta);

    [[nodiscard]] u3_t operator()(u2_t uId) const noexcept { return m_oHash.Find(uId); }
    // Appends at most uMost numbers of what a node consists of: attributes, successors.
    void AppendParts(u2_t uId, std::size_t uMost, Arr<u3_t>& oParts);

  private:
    [[nodiscard]] u3_t Own(u2_t uId);
    [[nodiscard]] u3_t Value(const Data_Node& oNode) const noexcept;
    [[nodiscard]] u3_t Attribute(u2_t uId, u2_t uKey) const noexcept;

    Data_Side& m_oSide;
    const double m_dDelta;
    Data_IdMap<u3_t> m_oName;  // by key
    Data_IdMap<u3_t> m_oHash;
    Arr<u2_t> m_oKeys;
};

}  // namespace vok

#endif  // VOK_COMPARE_SUBTREE_HASH_H
