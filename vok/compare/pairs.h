// SPDX-License-Identifier: MIT
// What every way through two subtrees does with a pair of nodes. Internal.
#ifndef VOK_COMPARE_PAIRS_H
#define VOK_COMPARE_PAIRS_H

#include "vok/compare/side.h"

namespace vok {

// A difference as a walk comes upon it.
struct Data_Found {
    static constexpr u2_t NONE = Data_Node::NONE;

    Data_Difference::What eWhat;
    u2_t uA;  // NONE where there is nothing on that side
    u2_t uB;
    const char* sAttribute = nullptr;  // null unless it is an attribute
    // Of what is only in B: the node of A that it would be a successor of.
    u2_t uParentA = NONE;
    // Of what is only in B, or was moved: its position among the successors of its name that there
    // are when everything is as in B, ignored nodes of A counted.
    u2_t uTo = 0;
};

class Data_FoundSink {
  public:
    // Whether to go on.
    virtual bool Take(const Data_Found& o) = 0;

  protected:
    ~Data_FoundSink() = default;
};

class Data_ComparePairs {
  public:
    struct IdPair {
        u2_t uA;
        u2_t uB;
    };
    // What was compared with each other.
    [[nodiscard]] const Arr<IdPair>& Pairs() const noexcept { return m_oPair; }

  protected:
    static constexpr u2_t NONE = Data_Node::NONE;

    // pSink null: the first difference will do. dDelta: by how much reals may differ.
    Data_ComparePairs(Data_Side& oA, Data_Side& oB, Data_FoundSink* pSink, double dDelta)
        : a(oA),
          b(oB),
          m_pSink(pSink),
          m_dDelta(dDelta),
          m_bSameTree(&oA.m_oBase == &oB.m_oBase),
          m_oKeyOfA(oA.m_oBase.m_oName.Size()) {}
    ~Data_ComparePairs() = default;

    void CompareNames();
    // Compares two nodes; whether their successors are still to be compared.
    [[nodiscard]] bool ComparePair(u2_t uA, u2_t uB) {
        const Data_Node::Type eType = a.Type(uA);
        if (eType != b.Type(uB)) {
            Report({Data_Difference::Type, uA, uB});
        } else if (eType == Data_Node::Link) {
            m_oLink.Add(IdPair{uA, uB});
        } else if (!a.IsSameValue(a.Node(uA), b, b.Node(uB)) && !IsWithinDelta(uA, uB)) {
            Report({Data_Difference::Value, uA, uB});
        }
        if (!m_bStopped && (a.m_oBase.m_oAtt.Has(uA) || b.m_oBase.m_oAtt.Has(uB))) {
            CompareAttributes(uA, uB);
        }
        if (m_bStopped) return false;
        m_oPair.Add(IdPair{uA, uB});
        return eType == Data_Node::Empty && b.Type(uB) == Data_Node::Empty;
    }
    // Byte order of names; 0 for the same.
    [[nodiscard]] int CompareKeys(u2_t uKeyA, u2_t uKeyB) {
        if (m_bSameTree) {
            if (uKeyA == uKeyB) return 0;
        } else {
            u2_t& uKnown = m_oKeyOfA(uKeyA);  // plus 1, 0 for not looked up yet
            if (uKnown == 0) uKnown = b.m_oBase.m_oName.Find(a.Name(uKeyA)) + 1;
            if (uKnown == uKeyB + 1) return 0;
        }
        return a.Name(uKeyA).compare(b.Name(uKeyB)) < 0 ? -1 : 1;
    }
    // Targets are the same when they were compared with each other. Which nodes those are is known
    // at the end only.
    void CompareLinks();
    void Report(const Data_Found& o) {
        ++m_uFound;
        m_bStopped = m_pSink == nullptr || !m_pSink->Take(o);
    }

    Data_Side& a;
    Data_Side& b;
    u3_t m_uFound = 0;
    bool m_bStopped = false;

  private:
    [[nodiscard]] bool IsWithinDelta(u2_t uA, u2_t uB) const noexcept;
    void CompareAttributes(u2_t uA, u2_t uB);
    [[nodiscard]] bool IsSameTarget(u2_t uA, u2_t uB);

    Data_FoundSink* const m_pSink;
    const double m_dDelta;
    const bool m_bSameTree;
    Data_IdMap<u2_t> m_oKeyOfA;  // by key of A: that of B
    Arr<IdPair> m_oPair;
    Arr<IdPair> m_oLink;
    Arr<u2_t> m_oAttA;
    Arr<u2_t> m_oAttB;
};

// Whether two reals are no further apart than a delta, or both no number.
[[nodiscard]] bool IsWithin(const Data_Node& oA, const Data_Node& oB, double dDelta) noexcept;

}  // namespace vok

#endif  // VOK_COMPARE_PAIRS_H
