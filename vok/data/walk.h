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
class Data_Walk : public Data_View {
  public:
    // Brings the order of successors up to date. Raises "node is empty".
    explicit Data_Walk(const Data& oFrom);

    // Moves to the next node; false behind the last one.
    bool Next() {
        if (m_pNode == nullptr) [[unlikely]]
            return Start();
        if (HasSuccessors()) {
            if (!m_bSkip) [[likely]]
                Descend();
            m_bSkip = false;
        }
        for (;;) {
            while (m_pNext == m_pEnd) {
                if (m_oOpen.Size() == 0) return false;
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
    [[nodiscard]] std::size_t GetDepth() const noexcept { return m_oOpen.Size(); }
    [[nodiscard]] Data GetData() const { return m_oFrom.GetNodeFromID(GetId()); }

  private:
    // Successors still to come on a level that was left for a deeper one.
    struct Open {
        const u2_t* pNext;
        const u2_t* pEnd;
    };

    bool Start() noexcept;
    [[nodiscard]] bool HasSuccessors() const noexcept {
        return m_pNode->GetType() == Data_Node::Tree && m_pNode->Size() != 0;
    }
    void Descend() {
        if (m_oOpen.Size() == m_oOpen.Capacity()) [[unlikely]]
            m_oOpen.ReserveMore(1);
        *m_oOpen.AddSpacePrivate() = {m_pNext, m_pEnd};
        m_pNext = m_pIds + m_pNode->Start();
        m_pEnd = m_pNext + m_pNode->Size();
    }
    void Ascend() noexcept {
        const Open& oOpen = m_oOpen.Last();
        m_pNext = oOpen.pNext;
        m_pEnd = oOpen.pEnd;
        m_oOpen.Pop();
    }

    // The two are not neighbours: what was written in two pieces is waited for when it is read in
    // one, as a compiler would when it puts them aside.
    const u2_t* m_pNext = nullptr;
    bool m_bSkip = false;  // what is below the current node, where there is something
    const u2_t* m_pEnd = nullptr;
    Arr_Near<Open, 16> m_oOpen;
    Data m_oFrom;
};

}  // namespace vok

#endif  // VOK_DATA_WALK_H
