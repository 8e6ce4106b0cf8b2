// SPDX-License-Identifier: MIT
// Which nodes of two runs belong together. Internal.
#ifndef VOK_COMPARE_MATCH_RUNS_H
#define VOK_COMPARE_MATCH_RUNS_H

#include <deque>
#include <string>

#include "vok/base/hash.h"
#include "vok/compare/align.h"
#include "vok/compare/side.h"
#include "vok/compare/subtree_hash.h"
#include "vok/data/xpath.h"

namespace vok {

// A way from a node to the text that tells it from the others of its run: "@id", "id", "head/@id".
class Data_RunKey {
  public:
    // Raises the errors of Data_Xpath::Parse, and "key "%0" is no path of names".
    explicit Data_RunKey(const std::string& sPath);

    // The number of its text for a node of oSide, 0 where it has none.
    [[nodiscard]] u2_t Find(Data_Side& oSide, u2_t uId, Hash& oTexts) const;

  private:
    Data_Xpath m_oPath;
    std::string m_sAttribute;  // empty: the value counts
};

// Matches the live successors of one name of two nodes:
//
//     those with keys by their keys, of several with the same one the first with the first
//     the others that look the same, as far as their order allows (Data_Align)
//     subtrees that look the same out of order
//     what is left between two that were matched, by how much they have in common: an element or
//     attribute that only one node on each side has makes them one; few are compared each with
//     each; the rest goes by position
//     values without successors all by position, where fewer differ that way
//
// Takes n log n, and SMALL_GAP / n times the parts of n nodes in a gap.
class Data_MatchRuns {
  public:
    static constexpr u2_t NONE = 0xFFFFFFFF;

    Data_MatchRuns(Data_Side& oA, Data_Side& oB, const Data_DiffOptions& oOptions);

    // Finds for each of oA its place in oB, or NONE. Where the bit of an element of oA is set in
    // oMoved, what belongs together stands in another order; all others ascend.
    void Run(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate, Arr<bool>& oMoved);

  private:
    using Place = Data_Align::Place;
    using Match = Data_Align::Match;
    // Of a node those that are looked at, fewer in a long gap: they take memory.
    static constexpr std::size_t MOST_PARTS = 64;
    static constexpr std::size_t LEAST_PARTS = 4;
    static constexpr std::size_t MOST_PARTS_OF_ALL = std::size_t{1} << 24;
    static constexpr std::size_t SMALL_GAP = 4096;

    struct Half {
        Half(Data_Side& oOf, double dDelta) : oSide(oOf), oHash(oOf, dDelta) {}

        Data_Side& oSide;
        Data_SubtreeHash oHash;
        Arr<u3_t> oToken;
        Arr<bool> oKeyed;
        // Of a gap: which nodes, and their parts, sorted.
        Arr<u2_t> oGap;
        Arr<u3_t> oParts;
        Arr<std::size_t> oPartsEnd;
    };

    void MakeTokens(Half& o, const Arr<u2_t>& oIds);
    void MatchMoved(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate, Arr<bool>& oMoved);
    [[nodiscard]] bool MayMove(const Half& o, u2_t uId, std::size_t uNth) const noexcept;
    [[nodiscard]] bool HasOnlyValues(const Half& o, const Arr<u2_t>& oIds) const noexcept;
    void PreferPositions(Arr<u2_t>& oMate, std::size_t uSizeB) const noexcept;
    void MatchGaps(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate,
                   const Arr<bool>& oMoved);
    void MatchGap(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate);
    static void MakeParts(Half& o, const Arr<u2_t>& oIds, std::size_t uMost);
    void FindAnchors(Arr<Match>& oAnchor);
    void MatchFew(const Arr<u2_t>& oA, const Arr<u2_t>& oB, const Match& oFrom, const Match& oTo,
                  Arr<u2_t>& oMate);
    [[nodiscard]] u2_t Alike(u2_t uA, u2_t uIdA, u2_t uB, u2_t uIdB) const noexcept;

    Half a;
    Half b;
    const double m_dDelta;
    std::deque<Data_RunKey> m_oKeys;
    Hash m_oTexts;  // those of keys
    Data_Align m_oAlign;
    Arr<bool> m_oTaken;  // by place in oB
    Arr<Place> m_oPlaceA;
    Arr<Place> m_oPlaceB;
    Arr<u2_t> m_oScore;
};

}  // namespace vok

#endif  // VOK_COMPARE_MATCH_RUNS_H
