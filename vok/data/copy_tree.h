// SPDX-License-Identifier: MIT
// Copies of subtrees, within a tree or into another. Internal.
#ifndef VOK_DATA_COPY_TREE_H
#define VOK_DATA_COPY_TREE_H

#include "vok/data/data.h"
#include "vok/data/store.h"
#include "vok/data/text_ranges.h"

namespace vok {

// One copy: names, values, attributes and order of a node and everything below it, removed
// nodes left out. Links within the copied part lead to the copies; others keep their target
// within a tree and lose it between trees. A failed copy leaves the target as it was but for
// names and texts that nobody refers to.
class Data_Copy {
  public:
    // Lists what is to be copied: what is done to either tree later does not change it.
    // oTop is a live node of oFrom.
    Data_Copy(const Data& oTop, Data_Base& oFrom, Data_Base& oTo);

    // Makes the copy a successor of uParent, which CheckAppend has passed, and returns its id.
    u2_t Below(u2_t uParent, u2_t uPos);
    // Makes it the root of oTo, which is new.
    void AsRoot();

  private:
    struct Entry {
        u2_t uId;      // in the tree copied from
        u2_t uParent;  // index of the entry of its parent
        u2_t uSuccs;   // successors that are copied
    };

    void CopyTexts();
    // Entry n becomes node uFirst + n; the parent of the first one is uParent.
    void AddNodes(u2_t uFirst, u2_t uParent);
    void CopyAttributes(u2_t uFirst);
    void SortEntries();
    [[nodiscard]] u2_t KeyFor(const Data_Node& oNode);
    [[nodiscard]] u2_t TargetFor(u2_t uTarget, u2_t uFirst) const noexcept;

    Data_Base& m_oFrom;
    Data_Base& m_oTo;
    const bool m_bSame;
    Arr<Entry> m_oEntry;  // in pre-order
    std::size_t m_uGroups = 0;
    u2_t m_uLastPred = 0;  // index of the last entry with successors
    bool m_bLinks = false;
    Arr<u2_t> m_oById;  // indexes of entries by id, where there are links
    Data_TextRanges m_oRanges;
};

}  // namespace vok

#endif  // VOK_DATA_COPY_TREE_H
