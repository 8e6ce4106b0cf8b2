// The fast way through a whole subtree: every node and its value in pre-order.
#ifndef VOK_DATA_WALK_H
#define VOK_DATA_WALK_H

#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/hash_text.h"
#include "vok/data/data.h"

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
// A value must be asked for by its own type: unlike those of a cursor, the getters here do
// not check it again after the caller has looked at GetType().
class Data_Walk {
  public:
    // Brings the order of successors up to date. Raises "node is empty".
    explicit Data_Walk(const Data& oFrom);

    // Moves to the next node; false behind the last one.
    bool Next() {
        if (m_pNode == nullptr) [[unlikely]]
            return Start();
        if (m_pNode->GetType() == Data_Node::Tree && m_pNode->Size() != 0) Descend();
        for (;;) {
            while (m_pNext == m_pEnd) {
                if (m_oOpen.Size() == 0) return false;
                Ascend();
            }
            m_uId = *m_pNext++;
            m_pNode = m_pNodes + m_uId;
            if (m_pNode->GetType() != Data_Node::Zombi) [[likely]]
                return true;
        }
    }
    // Leaves out what is below the current node.
    void SkipSuccessors() noexcept { m_pNode = &LEAF; }

    [[nodiscard]] u2_t GetId() const noexcept { return m_uId; }
    // 0 for the node that the walk began at.
    [[nodiscard]] std::size_t GetDepth() const noexcept { return m_oOpen.Size(); }
    [[nodiscard]] Data_Node::Type GetType() const noexcept { return m_pNode->GetType(); }
    [[nodiscard]] Data_Key GetKey() const noexcept { return {m_pNode->uKey}; }
    // As Data::GetName: null for an unnamed node, "Root" for an unnamed root.
    [[nodiscard]] const char* GetName() const noexcept { return NameOf(m_pNodes[m_uId].uKey); }
    [[nodiscard]] Data GetData() const { return m_oFrom.GetNodeFromID(m_uId); }

    // Boolean, Integer, Char.
    [[nodiscard]] i2_t Int() const noexcept { return static_cast<i2_t>(m_pNode->uWord2); }
    // Float, Double, Date.
    [[nodiscard]] double Dbl() const noexcept { return std::bit_cast<double>(m_pNode->Value64()); }
    // Long.
    [[nodiscard]] u3_t Lng() const noexcept { return m_pNode->Value64(); }
    // String, NUL-terminated; valid until the tree is changed.
    [[nodiscard]] std::string_view Text() const noexcept {
        return {m_pHeap + m_pNode->uWord2, m_pNode->uWord3 - std::size_t{1}};
    }
    // Binary.
    [[nodiscard]] std::string_view Block() const noexcept {
        return {m_pHeap + m_pNode->uWord2, m_pNode->uWord3};
    }
    // Quad: word uNth from 0 to 3.
    [[nodiscard]] u2_t QuadWord(unsigned uNth) const noexcept {
        u2_t uWord = m_pNode->uWord3;
        if (uNth != 0) std::memcpy(&uWord, m_pHeap + m_pNode->uWord2 + 4 * (uNth - 1), 4);
        return uWord;
    }
    // Link: id of the target or Data_Node::NONE.
    [[nodiscard]] u2_t LinkId() const noexcept { return m_pNode->uWord2; }

  private:
    // Successors still to come on a level that was left for a deeper one.
    struct Open {
        const u2_t* pNext;
        const u2_t* pEnd;
    };
    static constexpr Data_Node LEAF{0, Data_Node::Empty, 0, 0};

    bool Start() noexcept;
    [[nodiscard]] const char* NameOf(u2_t uKey) const noexcept {
        if (uKey != 0) [[likely]]
            return m_pNames[uKey].sText;
        return m_uId != 0 ? nullptr : "Root";
    }
    void Descend() {
        m_oOpen.Add(Open{m_pNext, m_pEnd});
        m_pNext = m_pIds + m_pNode->Start();
        m_pEnd = m_pNext + m_pNode->Size();
    }
    void Ascend() noexcept {
        const Open& oOpen = m_oOpen.Last();
        m_pNext = oOpen.pNext;
        m_pEnd = oOpen.pEnd;
        m_oOpen.Pop();
    }

    const Data_Node* m_pNode = nullptr;  // null before the first call of Next
    const Data_Node* m_pNodes;
    const u2_t* m_pNext = nullptr;
    const u2_t* m_pEnd = nullptr;
    const u2_t* m_pIds;  // those of a group begin as far behind as its place
    const char* m_pHeap;
    const Hash_Text* m_pNames;
    u2_t m_uId;
    Arr<Open> m_oOpen;
    Data m_oFrom;
};

}  // namespace vok

#endif  // VOK_DATA_WALK_H
