// SPDX-License-Identifier: MIT
// Iterators over the successors of a node and over lists of nodes.
#ifndef VOK_DATA_SUCC_IT_H
#define VOK_DATA_SUCC_IT_H

#include <cstddef>
#include <iterator>

#include "vok/data/data.h"

namespace vok {

// Live nodes one after the other, for range-for, as an iterator below delivers them.
template <class It>
class Data_Range {
  public:
    using value_type = Data;
    using difference_type = std::ptrdiff_t;

    explicit Data_Range(const It& oIt) : m_oIt(oIt), m_bMore(m_oIt.SkipZombies()) {}
    [[nodiscard]] Data operator*() const { return m_oIt.GetData(); }
    Data_Range& operator++() {
        m_oIt.Advance();
        m_bMore = m_oIt.SkipZombies();
        return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const Data_Range& o, std::default_sentinel_t) noexcept {
        return !o.m_bMore;
    }

  private:
    It m_oIt;
    bool m_bMore;
};

// Walks the successors of one node, or those of one name, in their order. The position runs
// from 0 to Size() and counts removed nodes, which SkipZombies steps over:
//
//     for (const Data& oSucc : oNode.GetSuccIt("order")) Use(oSucc);
//     for (auto oIt = oNode.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) Use(oIt.GetData());
//
// It keeps the tree alive. Positions are those of the moment it was made: after a change to
// the successors of its node take a new one (an old one delivers other nodes or none).
class Data_SuccIt {
  public:
    // An iterator over nothing.
    Data_SuccIt() noexcept = default;

    // Nodes covered, removed ones included.
    [[nodiscard]] u2_t Size() const noexcept { return m_uSize; }
    [[nodiscard]] u2_t Pos() const noexcept { return m_uPos; }
    // Positions past the end count as the end.
    void SetPos(u2_t uPos) noexcept { m_uPos = uPos < m_uSize ? uPos : m_uSize; }
    void Advance() noexcept { m_uPos += m_uPos < m_uSize; }

    // Moves forward to the first live node; false when there is none.
    bool SkipZombies() noexcept;

    // Cursor on the node at the position; empty at the end.
    [[nodiscard]] Data GetData() const;
    // Its id, Data_Node::NONE at the end. Costs no reference count.
    [[nodiscard]] u2_t GetId() const noexcept;

    // The live nodes from the position on.
    [[nodiscard]] Data_Range<Data_SuccIt> begin() const { return Data_Range(*this); }
    [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  private:
    friend class Data;
    friend class Data_NodeIt;

    Mem::Ref<Data_Base> m_oBase;
    u2_t m_uParent = 0;
    u2_t m_uStart = 0;  // of the covered ones among all successors of the parent
    u2_t m_uSize = 0;
    u2_t m_uPos = 0;
};

// A list of nodes of one tree in the order in which they were added.
class Data_NodeIt {
  public:
    Data_NodeIt() noexcept = default;

    // Appends a node; an empty cursor adds nothing. The first one fixes the tree: a node of
    // another raises ""Root" with wrong data type" and adds nothing.
    void Add(const Data& oNode);
    // Appends all live nodes that oIt delivers from its beginning; it is left at its end.
    void Add(Data_SuccIt& oIt);

    [[nodiscard]] std::size_t Size() const noexcept { return m_oId.Size(); }
    [[nodiscard]] u3_t Pos() const noexcept { return m_uPos; }
    void SetPos(u3_t uPos) noexcept { m_uPos = uPos; }
    void Advance() noexcept { ++m_uPos; }

    // Moves forward to the first live node; false when there is none.
    bool SkipZombies() noexcept;
    // Cursor on the node at the position; empty past the end.
    [[nodiscard]] Data GetData() const;

  private:
    Mem::Ref<Data_Base> m_oBase;
    Arr<u2_t> m_oId;
    u3_t m_uPos = 0;
};

// Nodes of one tree by ascending id, each once.
class Data_NodeSet {
  public:
    Data_NodeSet() noexcept = default;

    // Adds a node; an empty cursor adds nothing. The first one fixes the tree: a node of
    // another raises ""Root" with wrong data type". Constant time, amortised, for ascending and for
    // descending ids; else linear in the nodes on one side of the new one, the lesser.
    void Add(const Data& oNode);

    [[nodiscard]] std::size_t Size() const noexcept { return m_oId.Size() - m_uGap; }
    // Cursor on the n-th node; empty when there are not so many.
    [[nodiscard]] Data GetNth(std::size_t uNth) const noexcept;

    // For range-for; good as long as the set is, and until it is changed.
    class Iterator {
      public:
        using value_type = Data;
        using difference_type = std::ptrdiff_t;

        Iterator(const Data_NodeSet& oSet, std::size_t uNth) noexcept
            : m_pSet(&oSet), m_uNth(uNth) {}
        [[nodiscard]] Data operator*() const noexcept { return m_pSet->GetNth(m_uNth); }
        Iterator& operator++() noexcept {
            ++m_uNth;
            return *this;
        }
        void operator++(int) noexcept { ++m_uNth; }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
            return a.m_uNth == b.m_uNth;
        }

      private:
        const Data_NodeSet* m_pSet;
        std::size_t m_uNth;
    };
    [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
    [[nodiscard]] Iterator end() const noexcept { return {*this, Size()}; }

  private:
    friend class Data;
    friend class Data_Xpath;

    void WidenGap();

    Mem::Ref<Data_Base> m_oBase;
    Arr<u2_t> m_oId;
    std::size_t m_uGap = 0;  // places in front that are free
};

}  // namespace vok

#endif  // VOK_DATA_SUCC_IT_H
