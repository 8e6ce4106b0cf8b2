// SPDX-License-Identifier: MIT
// Two subtrees side by side, each node beside the one that it belongs to. Internal.
#ifndef VOK_COMPARE_ALIGNED_WALK_H
#define VOK_COMPARE_ALIGNED_WALK_H

#include "vok/compare/match_runs.h"
#include "vok/compare/pairs.h"

namespace vok {

// Goes through both in pre-order, in the order of B, with what is only in A where it stood; links
// come last. Keeps of every open level its successors; nothing recurses. Nothing is taken for the
// same that was not compared.
class Data_AlignedWalk : public Data_ComparePairs {
  public:
    // Raises the errors of the options.
    Data_AlignedWalk(Data_Side& oA, Data_Side& oB, const Data_DiffOptions& oOptions,
                     Data_FoundSink* pSink);

    // The number of differences found.
    u3_t Run();

  private:
    struct Item {
        u2_t uA;  // NONE for one that is only in B
        u2_t uB;  // NONE for one that is only in A, or ignored
        bool bMoved;
        bool bFirst;  // of its run
    };
    // A pair whose successors are on their way.
    struct Frame {
        u2_t uParentA;
        std::size_t uFirst;  // of its items
        std::size_t uNext;
        u2_t uTo;  // position in the run that the next one has when everything is as in B
    };

    void Step();
    void Open(u2_t uA, u2_t uB);
    void AddRun(const Arr<u2_t>& oA, const Arr<u2_t>& oB);
    void AddItem(u2_t uA, u2_t uB, bool bMoved = false) {
        m_oItem.Add(Item{uA, uB, bMoved, false});
    }

    Data_MatchRuns m_oMatch;
    Arr<Frame> m_oFrame;
    Arr<Item> m_oItem;  // of all frames
    // Of the run at hand: live nodes, of A also those that are ignored; and those that are not.
    Arr<u2_t> m_oRunA;
    Arr<u2_t> m_oRunB;
    Arr<u2_t> m_oSeenA;
    Arr<u2_t> m_oMate;  // of m_oSeenA
    Arr<bool> m_oMoved;
    Arr<u2_t> m_oMateOfB;
};

}  // namespace vok

#endif  // VOK_COMPARE_ALIGNED_WALK_H
