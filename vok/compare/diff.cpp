// SPDX-License-Identifier: MIT
// Comparison of two subtrees.
#include "vok/compare/diff.h"

#include <functional>

#include "vok/base/where.h"
#include "vok/compare/aligned_walk.h"
#include "vok/compare/pairs.h"
#include "vok/data/checks.h"

namespace vok {

const char* Data_Difference::WhatName(What eWhat) noexcept {
    static constexpr const char* NAMES[] = {"only in A", "only in B", "name", "type",
                                            "value",     "attribute", "moved"};
    return NAMES[eWhat];
}

namespace {

using Visit = std::function<bool(const Data_Difference&)>;

// Successors by their position: the first of a name with the first.
class PositionWalk : public Data_ComparePairs {
  public:
    PositionWalk(Data_Side& oA, Data_Side& oB, Data_FoundSink* pSink)
        : Data_ComparePairs(oA, oB, pSink, 0) {}

    // The number of differences found.
    u3_t Run() {
        CompareNames();
        if (!m_bStopped) Compare(a.m_uTop, b.m_uTop);
        while (!m_bStopped && m_oFrame.Size() != 0) Step();
        CompareLinks();
        return m_uFound;
    }

  private:
    // The successors of a pair on their way.
    struct Frame {
        Data_Base::Group oA;
        Data_Base::Group oB;
        u2_t uPosA;
        u2_t uPosB;
    };

    void Step() {
        Frame& f = m_oFrame.Last();
        while (f.uPosA != f.oA.uSize && !a.IsLive(f.oA.pId[f.uPosA])) ++f.uPosA;
        while (f.uPosB != f.oB.uSize && !b.IsLive(f.oB.pId[f.uPosB])) ++f.uPosB;
        const u2_t uA = f.uPosA != f.oA.uSize ? f.oA.pId[f.uPosA] : NONE;
        const u2_t uB = f.uPosB != f.oB.uSize ? f.oB.pId[f.uPosB] : NONE;
        if (uA == NONE && uB == NONE) {
            m_oFrame.Pop();
            return;
        }
        const int iOrder = uA == NONE   ? 1
                           : uB == NONE ? -1
                                        : CompareKeys(a.Node(uA).uKey, b.Node(uB).uKey);
        f.uPosA += iOrder <= 0;
        f.uPosB += iOrder >= 0;
        if (iOrder == 0) return Compare(uA, uB);
        if (iOrder < 0) return Report({Data_Difference::OnlyInA, uA, NONE});
        Report({Data_Difference::OnlyInB, NONE, uB});
    }

    void Compare(u2_t uA, u2_t uB) {
        if (!ComparePair(uA, uB)) return;
        const Data_Base::Group oA = a.m_oBase.SuccOf(uA);
        const Data_Base::Group oB = b.m_oBase.SuccOf(uB);
        if (oA.uSize + u3_t{oB.uSize} != 0) m_oFrame.Add(Frame{oA, oB, 0, 0});
    }

    Arr<Frame> m_oFrame;
};

// Hands on what is found.
class Reporter : public Data_FoundSink {
  public:
    Reporter(Data_Side& oA, Data_Side& oB, const Visit& oVisit) : a(oA), b(oB), m_oVisit(oVisit) {}

    bool Take(const Data_Found& o) override {
        const char* sA = PathOf(a, o.uA, m_oPathA);
        const char* sB = PathOf(b, o.uB, m_oPathB);
        return m_oVisit({o.eWhat, sA != nullptr ? sA : sB, o.sAttribute, CursorOf(a, o.uA),
                         CursorOf(b, o.uB), sB});
    }

  private:
    static const char* PathOf(Data_Side& oSide, u2_t uId, Arr<char>& oPath) {
        if (uId == Data_Node::NONE) return nullptr;
        oPath.Resize(0);
        oSide.AppendPath(oPath, uId);
        oPath.Add('\0');
        return oPath.Beg();
    }
    static Data CursorOf(const Data_Side& oSide, u2_t uId) {
        return uId != Data_Node::NONE ? oSide.Cursor(uId) : Data();
    }

    Data_Side& a;
    Data_Side& b;
    const Visit& m_oVisit;
    Arr<char> m_oPathA;
    Arr<char> m_oPathB;
};

// Both sides there, or the one difference that is to be seen.
u3_t Compare(const Data& oA, const Data& oB, Data_Base* pA, Data_Base* pB,
             const Data_DiffOptions* pOptions, const Visit* pVisit) {
    if (pA != nullptr && pB != nullptr) {
        Data_Side a(oA, *pA);
        Data_Side b(oB, *pB);
        if (pVisit == nullptr) return PositionWalk(a, b, nullptr).Run();
        Reporter oReporter(a, b, *pVisit);
        if (pOptions == nullptr) return PositionWalk(a, b, &oReporter).Run();
        a.Ignore(*pOptions);
        b.Ignore(*pOptions);
        return Data_AlignedWalk(a, b, *pOptions, &oReporter).Run();
    }
    if (pA == pB) return 0;
    if (pVisit != nullptr) {
        const auto eWhat = pA != nullptr ? Data_Difference::OnlyInA : Data_Difference::OnlyInB;
        (*pVisit)(Data_Difference{eWhat, "/", nullptr, oA, oB, pB != nullptr ? "/" : nullptr});
    }
    return 1;
}

// Null for an empty cursor.
Data_Base* LiveTreeOf(const Mem::Ref<Data_Base>& oBase, u2_t uId) {
    return oBase ? &detail::LiveNodeOf(oBase, uId) : nullptr;
}

}  // namespace

bool Data::Equal(const Data& oA, const Data& oB) {
    return Where("vok::Data::Equal", [&] {
        return Compare(oA, oB, LiveTreeOf(oA.m_oBase, oA.m_uId), LiveTreeOf(oB.m_oBase, oB.m_uId),
                       nullptr, nullptr) == 0;
    });
}

u3_t Data::Diff(const Data& oA, const Data& oB, const Visit& oVisit) {
    return Where("vok::Data::Diff", [&] {
        return Compare(oA, oB, LiveTreeOf(oA.m_oBase, oA.m_uId), LiveTreeOf(oB.m_oBase, oB.m_uId),
                       nullptr, &oVisit);
    });
}

u3_t Data::Diff(const Data& oA, const Data& oB, const Data_DiffOptions& oOptions,
                const Visit& oVisit) {
    return Where("vok::Data::Diff", [&] {
        return Compare(oA, oB, LiveTreeOf(oA.m_oBase, oA.m_uId), LiveTreeOf(oB.m_oBase, oB.m_uId),
                       &oOptions, &oVisit);
    });
}

}  // namespace vok
