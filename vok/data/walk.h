// SPDX-License-Identifier: MIT
// The fast way through a whole subtree: every node and its value in pre-order.
#ifndef VOK_DATA_WALK_H
#define VOK_DATA_WALK_H

#include "vok/data/view.h"

namespace vok {

// Visits a node and everything below it, removed nodes left out, each parent before its
// successors and those in their order:
//
//     for (Data_Walk oWalk(oRoot); oWalk.Next();) Use(oWalk.GetKey(), oWalk.GetType());
//
// Reads the tree's arrays in place: no reference counts, no calls, no recursion; memory for
// one entry per open level. Keeps the tree alive, but the tree must not be changed while a
// walk is under way. Several threads may walk a tree that SetAccessMode has prepared.
//
// The walk is a view of the node that it has come to.
//
// Nothing takes the address of a walk, so that a compiler may keep it in registers: what is not
// in line is given values, and of levels that do not fit into it a pointer.
class Data_Walk : public Data_View {
  public:
    // Brings the order of successors up to date. Raises "node is empty".
    [[gnu::always_inline]] explicit Data_Walk(const Data& oFrom) : m_uFrom(oFrom.GetId()) {
        const Data_View oView = ViewOf(oFrom);
        static_cast<Data_View&>(*this) = oView;
        Mem::AddRef(const_cast<Data_Base*>(m_pBase));
        m_pNode = nullptr;  // until the first call of Next
    }
    Data_Walk(const Data_Walk&) = delete;
    Data_Walk& operator=(const Data_Walk&) = delete;
    [[gnu::always_inline]] ~Data_Walk() { End(m_pBase, m_pFar); }

    // Moves to the next node; false behind the last one.
    bool Next() {
        if (m_pNode == nullptr) [[unlikely]] {
            m_pNode = m_pNodes + m_uFrom;
            return m_pNode->GetType() != Data_Node::Zombi;
        }
        if (HasSuccessors()) {
            if (!m_bSkip) [[likely]]
                Descend();
            m_bSkip = false;
        }
        for (;;) {
            while (m_pNext == m_pEnd) {
                if (m_uOpen == 0) return false;
                Ascend();
            }
            m_pNode = m_pNodes + *m_pNext++;
            if (m_pNode->GetType() != Data_Node::Zombi) [[likely]]
                return true;
        }
    }
    // Leaves out what is below the current node, if there is one.
    void SkipSuccessors() noexcept { m_bSkip = m_pNode != nullptr && HasSuccessors(); }

    // 0 for the node that the walk began at.
    [[nodiscard]] std::size_t GetDepth() const noexcept { return m_uOpen; }

  private:
    // Successors still to come on a level that was left for a deeper one.
    struct Open {
        const u2_t* pNext;
        const u2_t* pEnd;
    };
    static constexpr std::size_t NEAR = 16;

    [[nodiscard]] static Data_View ViewOf(const Data& oFrom);
    // Gives up its share in the tree, and levels.
    static void End(const Data_Base* pBase, Open* pFar) noexcept;
    // Levels, those that are near left out, with twice the room, which counts both.
    [[nodiscard]] static Open* Deepen(Open* pFar, std::size_t uRoom);

    [[nodiscard]] bool HasSuccessors() const noexcept {
        return m_pNode->GetType() == Data_Node::Tree && m_pNode->Size() != 0;
    }
    void Descend() {
        if (m_uOpen < NEAR) [[likely]] {
            m_aoNear[m_uOpen] = {m_pNext, m_pEnd};
        } else {
            if (m_uOpen == m_uRoom) [[unlikely]] {
                m_pFar = Deepen(m_pFar, m_uRoom);
                m_uRoom *= 2;
            }
            m_pFar[m_uOpen - NEAR] = {m_pNext, m_pEnd};
        }
        ++m_uOpen;
        m_pNext = m_pIds + m_pNode->Start();
        m_pEnd = m_pNext + m_pNode->Size();
    }
    void Ascend() noexcept {
        --m_uOpen;
        if (m_uOpen < NEAR) [[likely]] {
            m_pNext = m_aoNear[m_uOpen].pNext;
            m_pEnd = m_aoNear[m_uOpen].pEnd;
        } else {
            m_pNext = m_pFar[m_uOpen - NEAR].pNext;
            m_pEnd = m_pFar[m_uOpen - NEAR].pEnd;
        }
    }

    const u2_t* m_pNext = nullptr;
    const u2_t* m_pEnd = nullptr;
    std::size_t m_uOpen = 0;  // levels
    bool m_bSkip = false;     // what is below the current node, where there is something
    Open* m_pFar = nullptr;   // levels behind those that are near
    std::size_t m_uRoom = NEAR;
    const u2_t m_uFrom;
    Open m_aoNear[NEAR];
};

}  // namespace vok

#endif  // VOK_DATA_WALK_H
