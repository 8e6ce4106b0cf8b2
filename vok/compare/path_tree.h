// SPDX-License-Identifier: MIT
// Paths to some nodes of a tree, each part of them once. Internal.
#ifndef VOK_COMPARE_PATH_TREE_H
#define VOK_COMPARE_PATH_TREE_H

#include "vok/compare/side.h"

namespace vok {

// The nodes and what lies between them and the top. Where paths of all of them would take the
// square of a deep tree, those from one to the next below it take no more than the tree.
class Data_PathTree {
  public:
    static constexpr u2_t NONE = Data_Node::NONE;
    static constexpr u2_t TOP = 0;  // the twig of the top

    struct Twig {
        u2_t uId;
        u2_t uParent;    // twigs, NONE for none
        u2_t uFirst;     // child
        u2_t uLast;      // child
        u2_t uNext;      // sibling
        u2_t uChildren;  // how many
    };

    explicit Data_PathTree(Data_Side& oSide) : m_oSide(oSide), m_oTwigOf(Ids(oSide)) {
        m_oTwig.Add(Twig{oSide.m_uTop, NONE, NONE, NONE, NONE, 0});
        m_oTwigOf(oSide.m_uTop) = TOP + 1;
    }

    // The twig of a node below the top, or of the top. Amortised constant time, and the twigs made.
    u2_t Add(u2_t uId);
    [[nodiscard]] std::size_t Size() const noexcept { return m_oTwig.Size(); }
    [[nodiscard]] const Twig& operator()(u2_t uTwig) const noexcept { return m_oTwig(uTwig); }

    // Appends the path from one twig to another that is below it, "a[0]/b[2]".
    void AppendPath(Arr<char>& oPath, u2_t uFrom, u2_t uTo);

    // Calls oEnter(twig, base) for every twig, parents first, those of a parent in the order in
    // which they were added; what it returns tells whether the twig is the base of those below, and
    // whether there is an oLeave(twig) for it behind them. The top is its own base.
    template <class Enter, class Leave>
    void Visit(const Enter& oEnter, const Leave& oLeave) const {
        struct Level {
            u2_t uTwig;
            u2_t uNext;
            u2_t uBase;
        };
        Arr<Level> oOpen;
        for (Level oNew{TOP, m_oTwig(TOP).uFirst, TOP};;) {
            if (oEnter(oNew.uTwig, oNew.uBase)) oNew.uBase = oNew.uTwig;
            oOpen.Add(oNew);
            while (oOpen.Last().uNext == NONE) {
                if (oOpen.Last().uBase == oOpen.Last().uTwig) oLeave(oOpen.Last().uTwig);
                oOpen.Pop();
                if (oOpen.Size() == 0) return;
            }
            Level& o = oOpen.Last();
            oNew = Level{o.uNext, m_oTwig(o.uNext).uFirst, o.uBase};
            o.uNext = m_oTwig(o.uNext).uNext;
        }
    }

  private:
    [[nodiscard]] static std::size_t Ids(const Data_Side& o) noexcept {
        return o.m_oBase.m_oNode.Size();
    }

    Data_Side& m_oSide;
    Arr<Twig> m_oTwig;
    Data_IdMap<u2_t> m_oTwigOf;  // plus 1
    Arr<u2_t> m_oChain;
};

}  // namespace vok

#endif  // VOK_COMPARE_PATH_TREE_H
