// Comparison of two subtrees.
#include "vok/data/diff.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>

#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/escape.h"
#include "vok/data/id_map.h"

namespace vok {

const char* Data_Difference::WhatName(What eWhat) noexcept {
    static constexpr const char* NAMES[] = {"only in A", "only in B", "name",
                                            "type",      "value",     "attribute"};
    return NAMES[eWhat];
}

namespace {

using Visit = std::function<bool(const Data_Difference&)>;

// One of the two subtrees.
class Side {
  public:
    Side(Data_Base& oBase, u2_t uTop) : m_oBase(oBase), m_oPlace(oBase.m_oNode.Size()) {
        m_oBase.UpdateSucc();
        m_oPlace(0) = OUTSIDE;
        m_oPlace(uTop) = INSIDE;
    }

    [[nodiscard]] const Data_Node& Node(u2_t uId) const noexcept { return m_oBase.m_oNode(uId); }
    [[nodiscard]] bool IsLive(u2_t uId) const noexcept {
        return m_oBase.m_oNode(uId).GetType() != Data_Node::Zombi;
    }
    [[nodiscard]] std::string_view Name(u2_t uKey) const noexcept {
        return m_oBase.m_oName(uKey).View();
    }
    // A node without successors is an empty one, whatever it had.
    [[nodiscard]] Data_Node::Type Type(u2_t uId) const noexcept {
        const Data_Node::Type eType = m_oBase.m_oNode(uId).GetType();
        return eType == Data_Node::Tree ? Data_Node::Empty : eType;
    }
    [[nodiscard]] std::string_view Block(const Data_Node& oNode) const noexcept {
        return {m_oBase.m_oHeap.At(oNode.uWord2), oNode.uWord3};
    }
    // Where a node hangs.
    enum Place : u0_t { UNKNOWN = 0, INSIDE, OUTSIDE, DETACHED };

    // The target of a link, NONE where it is gone.
    [[nodiscard]] u2_t Target(u2_t uLink) {
        const u2_t uTarget = m_oBase.m_oNode(uLink).uWord2;
        if (uTarget >= m_oBase.m_oNode.Size() || !IsLive(uTarget)) return Data_Node::NONE;
        return PlaceOf(uTarget) != DETACHED ? uTarget : Data_Node::NONE;
    }
    // Every node on the way up is looked at once for all targets.
    [[nodiscard]] Place PlaceOf(u2_t uId) {
        const std::size_t uNodes = m_oBase.m_oNode.Size();
        u2_t uUp = uId;
        while (uUp < uNodes && m_oPlace.Find(uUp) == UNKNOWN) uUp = m_oBase.m_oNode(uUp).Pred();
        const Place ePlace = uUp < uNodes ? m_oPlace.Find(uUp) : DETACHED;
        for (u2_t u = uId; u != uUp; u = m_oBase.m_oNode(u).Pred()) m_oPlace(u) = ePlace;
        return ePlace;
    }

    Data_Base& m_oBase;

  private:
    Data_IdMap<Place> m_oPlace;
};

class Comparison {
  public:
    Comparison(const Data& oA, const Data& oB, Data_Base& oBaseA, Data_Base& oBaseB,
               const Visit* pVisit)
        : m_oCursorA(oA),
          m_oCursorB(oB),
          a(oBaseA, oA.GetId()),
          b(oBaseB, oB.GetId()),
          m_bSameTree(&oBaseA == &oBaseB),
          m_pVisit(pVisit),
          m_oKeyOfA(oBaseA.m_oName.Size()) {}

    // The number of differences found.
    u3_t Run() {
        const u2_t uA = m_oCursorA.GetId();
        const u2_t uB = m_oCursorB.GetId();
        // The name that an unnamed root goes by is as good as none.
        if (a.Name(a.Node(uA).uKey) != b.Name(b.Node(uB).uKey) &&
            std::string_view(a.m_oBase.ShownName(uA)) != b.m_oBase.ShownName(uB)) {
            Report(Data_Difference::Name, uA, uB);
        }
        if (!m_bStopped) ComparePair(uA, uB);
        while (!m_bStopped && m_oFrame.Size() != 0) Step();
        CompareLinks();
        return m_uFound;
    }

  private:
    static constexpr u2_t NONE = Data_Node::NONE;

    // The successors of a pair on their way.
    struct Frame {
        Data_Base::Group oA;
        Data_Base::Group oB;
        u2_t uPosA;
        u2_t uPosB;
        // What came last: its name on the sides where it was there, its place in its run.
        u2_t uKeyA;
        u2_t uKeyB;
        u2_t uNth;
    };
    struct IdPair {
        u2_t uA;
        u2_t uB;
    };
    // How far the live successors of one name have been counted.
    struct Counted {
        u2_t uParent;
        u2_t uKey;
        u2_t uPos;
        u2_t uNth;
    };

    // ---- successors -------------------------------------------------------

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
        const u2_t uKeyA = uA != NONE ? a.Node(uA).uKey : NONE;
        const u2_t uKeyB = uB != NONE ? b.Node(uB).uKey : NONE;
        const int iOrder = uA == NONE ? 1 : uB == NONE ? -1 : CompareKeys(uKeyA, uKeyB);
        const bool bSameRun = iOrder <= 0 ? uKeyA == f.uKeyA : uKeyB == f.uKeyB;
        f.uNth = bSameRun ? f.uNth + 1 : 0;
        if (iOrder <= 0) {
            f.uKeyA = uKeyA;
            ++f.uPosA;
        }
        if (iOrder >= 0) {
            f.uKeyB = uKeyB;
            ++f.uPosB;
        }
        if (iOrder == 0) return ComparePair(uA, uB);
        if (iOrder < 0) return Report(Data_Difference::OnlyInA, uA, NONE);
        Report(Data_Difference::OnlyInB, NONE, uB);
    }

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

    // ---- one pair ---------------------------------------------------------

    void ComparePair(u2_t uA, u2_t uB) {
        const Data_Node::Type eType = a.Type(uA);
        if (eType != b.Type(uB)) {
            Report(Data_Difference::Type, uA, uB);
        } else if (eType == Data_Node::Link) {
            m_oLink.Add(IdPair{uA, uB});
        } else if (!IsSameValue(a.Node(uA), b.Node(uB), eType)) {
            Report(Data_Difference::Value, uA, uB);
        }
        if (!m_bStopped) CompareAttributes(uA, uB);
        if (m_bStopped) return;
        m_oPair.Add(IdPair{uA, uB});
        if (eType != Data_Node::Empty || b.Type(uB) != Data_Node::Empty) return;
        const Data_Base::Group oA = a.m_oBase.SuccOf(uA);
        const Data_Base::Group oB = b.m_oBase.SuccOf(uB);
        if (oA.uSize + u3_t{oB.uSize} != 0) m_oFrame.Add(Frame{oA, oB, 0, 0, NONE, NONE, 0});
    }

    [[nodiscard]] bool IsSameValue(const Data_Node& oA, const Data_Node& oB,
                                   Data_Node::Type eType) const noexcept {
        switch (eType) {
            case Data_Node::Boolean:
            case Data_Node::Integer:
            case Data_Node::Char: return oA.uWord2 == oB.uWord2;
            case Data_Node::Float:
            case Data_Node::Double:
            case Data_Node::Date:
            case Data_Node::Long: return oA.Value64() == oB.Value64();
            case Data_Node::String:
            case Data_Node::Binary: return a.Block(oA) == b.Block(oB);
            case Data_Node::Quad:
                return a.m_oBase.m_oHeap.QuadOf(oA) == b.m_oBase.m_oHeap.QuadOf(oB);
            default: return true;
        }
    }

    void CompareAttributes(u2_t uA, u2_t uB) {
        if (!a.m_oBase.m_oAtt.Has(uA) && !b.m_oBase.m_oAtt.Has(uB)) return;
        a.m_oBase.m_oAtt.ListByName(uA, m_oAttA);
        b.m_oBase.m_oAtt.ListByName(uB, m_oAttB);
        for (std::size_t uNthA = 0, uNthB = 0; !m_bStopped;) {
            const bool bA = uNthA != m_oAttA.Size();
            const bool bB = uNthB != m_oAttB.Size();
            if (!bA && !bB) return;
            const char* sA = bA ? a.m_oBase.m_oAtt.Names()(m_oAttA(uNthA)).sText : nullptr;
            const char* sB = bB ? b.m_oBase.m_oAtt.Names()(m_oAttB(uNthB)).sText : nullptr;
            const int iOrder = !bA ? 1 : !bB ? -1 : std::strcmp(sA, sB);
            const bool bSame =
                iOrder == 0 && std::strcmp(a.m_oBase.AttributeOf(uA, m_oAttA(uNthA)),
                                           b.m_oBase.AttributeOf(uB, m_oAttB(uNthB))) == 0;
            if (!bSame) Report(Data_Difference::Attribute, uA, uB, iOrder <= 0 ? sA : sB);
            uNthA += iOrder <= 0;
            uNthB += iOrder >= 0;
        }
    }

    // ---- links ------------------------------------------------------------

    // Targets are the same when they were compared with each other. Which nodes those are is
    // known at the end only.
    void CompareLinks() {
        if (m_bStopped || m_oLink.Size() == 0) return;
        std::sort(m_oPair.Beg(), m_oPair.End(),
                  [](const IdPair& x, const IdPair& y) { return x.uA < y.uA; });
        for (std::size_t u = 0; u < m_oLink.Size() && !m_bStopped; ++u) {
            const IdPair oLink = m_oLink(u);
            if (IsSameTarget(a.Target(oLink.uA), b.Target(oLink.uB))) continue;
            Report(Data_Difference::Value, oLink.uA, oLink.uB);
        }
    }

    [[nodiscard]] bool IsSameTarget(u2_t uA, u2_t uB) {
        if (uA == NONE || uB == NONE) return uA == uB;
        const bool bInA = a.PlaceOf(uA) == Side::INSIDE;
        if (bInA != (b.PlaceOf(uB) == Side::INSIDE)) return false;
        if (bInA) {
            const IdPair* p =
                std::lower_bound(m_oPair.Beg(), m_oPair.End(), uA,
                                 [](const IdPair& x, u2_t uId) { return x.uA < uId; });
            return p != m_oPair.End() && p->uA == uA && p->uB == uB;
        }
        if (m_bSameTree) return uA == uB;
        return m_oCursorA.GetNodeFromID(uA).GetPath() == m_oCursorB.GetNodeFromID(uB).GetPath();
    }

    // ---- reporting --------------------------------------------------------

    void Report(Data_Difference::What eWhat, u2_t uA, u2_t uB, const char* sAttribute = nullptr) {
        ++m_uFound;
        m_bStopped = true;
        if (m_pVisit == nullptr) return;
        MakePath(uA, uB);
        const Data_Difference oFound{eWhat, m_oPath.Beg(), sAttribute,
                                     uA != NONE ? m_oCursorA.GetNodeFromID(uA) : Data(),
                                     uB != NONE ? m_oCursorB.GetNodeFromID(uB) : Data()};
        m_bStopped = !(*m_pVisit)(oFound);
    }

    // The path of a node that is there on one side at least, counted on that side: up to it
    // everything is the same on both.
    void MakePath(u2_t uA, u2_t uB) {
        const bool bA = uA != NONE;
        const Side& oSide = bA ? a : b;
        const u2_t uTop = bA ? m_oCursorA.GetId() : m_oCursorB.GetId();
        m_oChain.Resize(0);
        for (u2_t u = bA ? uA : uB; u != uTop; u = oSide.Node(u).Pred()) m_oChain.Add(u);
        m_oPath.Resize(0);
        if (m_oChain.Size() == 0) m_oPath.Add('/');
        for (std::size_t u = m_oChain.Size(); u-- > 0;) {
            char sIndex[NUMBER_ROOM];
            const u2_t uId = m_oChain(u);
            m_oPath.Add('/');
            detail::AppendEncoded(m_oPath, oSide.Name(oSide.Node(uId).uKey),
                                  detail::RESERVED.data());
            m_oPath.Add('[');
            m_oPath.Add(sIndex,
                        FormatInteger(LivePosition(oSide, uId, m_oChain.Size() - u), sIndex));
            m_oPath.Add(']');
        }
        m_oPath.Add('\0');
    }

    // Differences come in pre-order: on every level the count goes on from where it stood.
    [[nodiscard]] u2_t LivePosition(const Side& oSide, u2_t uId, std::size_t uLevel) {
        Arr<Counted>& oLevels = &oSide == &a ? m_oCountedA : m_oCountedB;
        if (oLevels.Size() <= uLevel) oLevels.Resize(uLevel + 1);
        Counted& o = oLevels(uLevel);
        const u2_t uParent = oSide.Node(uId).Pred();
        const u2_t uKey = oSide.Node(uId).uKey;
        const Data_Base::Group oGroup = oSide.m_oBase.SuccOf(uParent);
        const Data_Base::Run oRun = oSide.m_oBase.FindRun(oGroup, uKey);
        const u2_t* pFirst = oGroup.pId + oRun.uFirst;
        const u2_t* pEnd = pFirst + oRun.uSize;
        const bool bGoOn = o.uParent == uParent && o.uKey == uKey && o.uPos < oRun.uSize;
        if (!bGoOn || std::find(pFirst + o.uPos, pEnd, uId) == pEnd) o = {uParent, uKey, 0, 0};
        for (; pFirst[o.uPos] != uId; ++o.uPos) o.uNth += oSide.IsLive(pFirst[o.uPos]);
        return o.uNth;
    }

    const Data& m_oCursorA;
    const Data& m_oCursorB;
    Side a;
    Side b;
    const bool m_bSameTree;
    const Visit* m_pVisit;       // null: the first difference will do
    Data_IdMap<u2_t> m_oKeyOfA;  // by key of A: that of B
    Arr<Frame> m_oFrame;
    Arr<IdPair> m_oPair;  // what was compared
    Arr<IdPair> m_oLink;
    Arr<u2_t> m_oAttA;
    Arr<u2_t> m_oAttB;
    Arr<u2_t> m_oChain;
    Arr<char> m_oPath;
    Arr<Counted> m_oCountedA;  // by level
    Arr<Counted> m_oCountedB;
    u3_t m_uFound = 0;
    bool m_bStopped = false;
};

}  // namespace

namespace {

// Both sides there, or the one difference that is to be seen.
u3_t Compare(const Data& oA, const Data& oB, Data_Base* pA, Data_Base* pB, const Visit* pVisit) {
    if (pA != nullptr && pB != nullptr) return Comparison(oA, oB, *pA, *pB, pVisit).Run();
    if (pA == pB) return 0;
    if (pVisit != nullptr) {
        const auto eWhat = pA != nullptr ? Data_Difference::OnlyInA : Data_Difference::OnlyInB;
        (*pVisit)(Data_Difference{eWhat, "/", nullptr, oA, oB});
    }
    return 1;
}

// Null for an empty cursor.
Data_Base* LiveTreeOf(const Mem::Ref<Data_Base>& oBase, u2_t uId) {
    if (!oBase) return nullptr;
    Data_Base& b = detail::NodeOf(oBase, uId);
    if (b.m_oNode(uId).GetType() == Data_Node::Zombi) Msg::TryToAccessDeletedNode();
    return &b;
}

}  // namespace

bool Data::Equal(const Data& oA, const Data& oB) {
    return Where("vok::Data::Equal", [&] {
        return Compare(oA, oB, LiveTreeOf(oA.m_oBase, oA.m_uId), LiveTreeOf(oB.m_oBase, oB.m_uId),
                       nullptr) == 0;
    });
}

u3_t Data::Diff(const Data& oA, const Data& oB, const Visit& oVisit) {
    return Where("vok::Data::Diff", [&] {
        return Compare(oA, oB, LiveTreeOf(oA.m_oBase, oA.m_uId), LiveTreeOf(oB.m_oBase, oB.m_uId),
                       &oVisit);
    });
}

}  // namespace vok
