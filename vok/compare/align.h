// SPDX-License-Identifier: MIT
// What two sequences have in common. Internal.
#ifndef VOK_COMPARE_ALIGN_H
#define VOK_COMPARE_ALIGN_H

#include "vok/base/arr.h"

namespace vok {

// Aligns two sequences of tokens: what is the same on both sides, in the same order. Stages, each
// for what the one before leaves:
//
//     the beginning and the end that both have
//     the fewest edits (Myers 1986) where there are no more than MOST_EDITS of them
//     tokens that are there once on each side, as many of them as are in the same order on both
//     ("patience"), then the same again between them, MOST_LEVELS deep
//     the way that MOST_EDITS edits get furthest, and on from there
//
// So a few edits are found exactly, moved blocks and shuffled ones for the most part, and no input
// takes more than MOST_LEVELS times (n log n + n * MOST_EDITS).
class Data_Align {
  public:
    static constexpr u2_t NONE = 0xFFFFFFFF;
    static constexpr u2_t MOST_EDITS = 64;
    static constexpr u2_t MOST_LEVELS = 16;

    // Fills oMate, which has an element for each of oA, with positions in oB: ascending, NONE for
    // those that are not there.
    void Run(const Arr<u3_t>& oA, const Arr<u3_t>& oB, Arr<u2_t>& oMate);

    // A token or another number that stands for an element, and where that is.
    struct Place {
        u3_t uToken;
        u2_t uPos;

        friend bool operator<(const Place& x, const Place& y) noexcept {
            return x.uToken != y.uToken ? x.uToken < y.uToken : x.uPos < y.uPos;
        }
    };
    struct Match {
        u2_t uA;
        u2_t uB;
    };
    // Leaves as many of the matches, which ascend on side A, as ascend on side B too. n log n.
    static void KeepAscending(Arr<Match>& oMatch);

  private:
    struct Range {
        u2_t uA, uEndA;
        u2_t uB, uEndB;
        u2_t uLevel;
    };

    void RunRange(Range r);
    bool SplitAtUnique(const Range& r);
    // The shortest way through, if MOST_EDITS allow for it; with bForce as far as they go. Returns
    // whether it has moved r on.
    bool FollowEdits(Range& r, bool bForce);
    void Trace(const Range& r, u2_t uEdits, i3_t iDiagonal);
    void Pair(u2_t uA, u2_t uB) noexcept { (*m_pMate)(uA) = uB; }

    const u3_t* m_pA = nullptr;
    const u3_t* m_pB = nullptr;
    Arr<u2_t>* m_pMate = nullptr;
    Arr<Range> m_oOpen;
    Arr<i3_t> m_oFront;  // by edits, then by diagonal: how far it gets on side A
    Arr<Place> m_oPlaceA;
    Arr<Place> m_oPlaceB;
};

}  // namespace vok

#endif  // VOK_COMPARE_ALIGN_H
