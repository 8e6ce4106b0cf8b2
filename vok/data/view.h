// SPDX-License-Identifier: MIT
// A node to be read, without a share in its tree.
#ifndef VOK_DATA_VIEW_H
#define VOK_DATA_VIEW_H

#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/hash_text.h"
#include "vok/data/data.h"
#include "vok/data/value.h"

namespace vok {

// Where a node of a tree is, for reading it in place: no reference counts, and for the most part no
// calls.
//
//     const Data_View oOrder(oCursor);
//     if (const Data_View oPrice = oOrder.Find(oPriceKey); oPrice.IsNode()) Use(oPrice.Dbl());
//
// A view does not keep its tree alive, and is good until the tree is changed. Several threads may
// look at a tree that SetAccessMode has prepared.
//
// Only IsNode may be asked of a view of nothing. A value must be asked for by its own type: unlike
// those of a cursor, the getters here do not check it again after the caller has looked at
// GetType().
class Data_View {
  public:
    // A view of nothing.
    Data_View() noexcept = default;
    // Brings the order of successors up to date. Raises "node is empty" and "try to access deleted
    // node".
    explicit Data_View(const Data& oNode);

    // Finds as Find does, in oFound, for those who ask in turns with changing the tree: false, with
    // nothing done, where the order is not up to date, or there is no such node; then cursors
    // answer without putting all in order. One thread has the tree for itself: names that are asked
    // for in the same order over and over are not searched for.
    [[nodiscard]] static bool FindIfOrdered(const Data& oNode, std::string_view sName, u2_t uNth,
                                            Data_View& oFound);

    [[nodiscard]] bool IsNode() const noexcept { return m_pNode != nullptr; }
    [[nodiscard]] u2_t GetId() const noexcept { return static_cast<u2_t>(m_pNode - m_pNodes); }
    [[nodiscard]] Data_Node::Type GetType() const noexcept { return m_pNode->GetType(); }
    [[nodiscard]] Data_Key GetKey() const noexcept { return {m_pNode->uKey}; }
    // As Data::GetName: null for an unnamed node, "Root" for an unnamed root.
    [[nodiscard]] const char* GetName() const noexcept {
        const u2_t uKey = m_pNode->uKey;
        if (uKey != 0) [[likely]]
            return m_pNames[uKey].sText;
        return m_pNode != m_pNodes ? nullptr : "Root";
    }

    // A cursor at it, which has a share in the tree.
    [[nodiscard]] Data GetData() const { return DataOf(*m_pBase, GetId()); }
    // Whether it has attributes, which a cursor lists.
    [[nodiscard]] bool HasAttributes() const;

    // ---- values -----------------------------------------------------------

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

    // All of it, apart from the tree; texts and bytes stay where they are. A Link has no text, and
    // a type without a value is Empty, but for Tree and Zombi.
    [[nodiscard]] Data_Value GetValue() const noexcept { return Data_Value::In(*m_pNode, m_pHeap); }

    // ---- successors -------------------------------------------------------

    // How many there are, removed ones included.
    [[nodiscard]] u2_t GetSuccs() const noexcept {
        return m_pNode->GetType() == Data_Node::Tree ? m_pNode->Size() : 0;
    }
    // The n-th of them, of which there must be more; removed ones are of type Zombi.
    [[nodiscard]] Data_View GetSucc(u2_t uNth) const noexcept {
        return At(m_pIds[m_pNode->Start() + uNth]);
    }
    // The n-th of one name, removed ones counted; a view of nothing when there are not so many.
    // Linear in the successors up to 24 of them, logarithmic beyond.
    [[nodiscard]] Data_View Find(Data_Key oKey, u2_t uNth = 0) const noexcept {
        const u2_t uId = FindId(oKey, uNth);
        return uId != Data_Node::NONE ? At(uId) : Data_View();
    }
    // The same by a text, which is looked for among the names of the tree first.
    [[nodiscard]] Data_View Find(std::string_view sName, u2_t uNth = 0) const {
        return Find(KeyOf(sName), uNth);
    }
    // The key of a name, not known where no node of the tree ever bore it.
    [[nodiscard]] Data_Key KeyOf(std::string_view sName) const;

  protected:
    [[nodiscard]] Data_View At(u2_t uId) const noexcept {
        Data_View o = *this;
        o.m_pNode = m_pNodes + uId;
        return o;
    }

    const Data_Node* m_pNode = nullptr;
    const Data_Node* m_pNodes = nullptr;
    const u2_t* m_pIds = nullptr;  // those of a group begin as far behind as its place
    const char* m_pHeap = nullptr;
    const Hash_Text* m_pNames = nullptr;
    const Data_Base* m_pBase = nullptr;

  private:
    static constexpr u2_t FEW = 24;

    Data_View(const Data_Base& b, u2_t uId) noexcept { Stand(b, uId); }
    void Stand(const Data_Base& b, u2_t uId) noexcept;
    // The id of what Find gives; NONE for a view of nothing.
    [[nodiscard]] u2_t FindId(Data_Key oKey, u2_t uNth) const noexcept {
        const u2_t uSize = GetSuccs();
        if (uSize - 1 >= FEW) [[unlikely]]
            return uSize != 0 ? FindAmongMany(*m_pBase, *m_pNode, oKey, uNth) : Data_Node::NONE;
        const u2_t* p = m_pIds + m_pNode->Start();
        for (const u2_t* const pEnd = p + uSize; p != pEnd; ++p) {
            if (m_pNodes[*p].uKey != oKey.uKey) continue;
            // Those of a name stand together.
            if (uNth == 0) return *p;
            p += uNth;
            return p < pEnd && m_pNodes[*p].uKey == oKey.uKey ? *p : Data_Node::NONE;
        }
        return Data_Node::NONE;
    }
    // Not members of a view, which then need not lie in memory.
    [[nodiscard]] static Data DataOf(const Data_Base& b, u2_t uId);
    [[nodiscard]] static u2_t FindAmongMany(const Data_Base& b, const Data_Node& oParent,
                                            Data_Key oKey, u2_t uNth) noexcept;
};

}  // namespace vok

#endif  // VOK_DATA_VIEW_H
