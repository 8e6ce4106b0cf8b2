// Removing nodes and compacting the tree.
#include <algorithm>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

void Data_Base::Remove(u2_t uId) {
    // Everything that can fail comes first: the list of what hangs below.
    Arr<u2_t> oBelow;
    if (m_oNode(uId).GetType() == Node::Tree) {
        UpdateSucc();
        Group oGroup = SuccOf(uId);
        oBelow.Add(oGroup.pId, oGroup.uSize);
        for (std::size_t u = 0; u < oBelow.Size(); ++u) {
            oGroup = SuccOf(oBelow(u));
            oBelow.Add(oGroup.pId, oGroup.uSize);
        }
    }
    const auto oKill = [this](Node& oNode) {
        if (oNode.GetType() == Node::Zombi) return;
        DropValue(oNode);
        if (oNode.GetType() == Node::Tree && oNode.Start() != NONE) {
            m_uDeadSucc += GROUP_HEADER + m_oSucc(oNode.Start() + 1);
        }
        oNode.SetType(Node::Zombi);
        oNode.SetValue64(0);
        ++m_uDead;
    };
    for (const u2_t* p = oBelow.Beg(); p != oBelow.End(); ++p) {
        oKill(m_oNode(*p));
        m_oNode(*p).SetPredField(Node::CUT_LOOSE);
    }
    oKill(m_oNode(uId));
}

void Data::Remove() {
    return Where("vok::Data::Remove", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (b.m_oNode(m_uId).GetType() == Node::Zombi) Msg::TryToAccessDeletedNode();
        if (m_uId == 0) Msg::NodeHasNoPredecessor();
        b.Remove(m_uId);
    });
}

// ---- compacting -------------------------------------------------------------

// One compaction. All new arrays are made before anything of the tree is changed.
class Data_Shrink {
  public:
    explicit Data_Shrink(Data_Base& oBase) : b(oBase) {}

    void Run(u2_t& uFollow) {
        NumberNodes();
        uFollow = m_oNewId(uFollow) != Data_Node::NONE ? m_oNewId(uFollow) : 0;
        FindTexts();
        CopyTexts();
        CopyNodes();
        CopyAttributes();
        m_oHeap.Reserve(m_oHeap.Size() + Data_Base::HEAP_SLACK);
        Commit();
    }

  private:
    void NumberNodes() {
        const std::size_t uNodes = b.m_oNode.Size();
        m_oNewId.Resize(uNodes);
        u2_t uNext = 0;
        for (std::size_t u = 0; u < uNodes; ++u) {
            const bool bLive = u == 0 || b.m_oNode(u).GetType() != Data_Node::Zombi;
            m_oNewId(u) = bLive ? uNext++ : Data_Node::NONE;
        }
        m_oNode.Reserve(uNext);
    }

    [[nodiscard]] u2_t NewId(u2_t uId) const noexcept {
        return uId < m_oNewId.Size() ? m_oNewId(uId) : Data_Node::NONE;
    }

    // A stretch of the text heap that is still referred to.
    struct Range {
        u2_t uBegin;
        u2_t uEnd;
        u2_t uNew;  // where it goes
    };

    // Nodes and attributes may refer to the same text, or to the end of another one.
    void FindTexts() {
        b.StartHeap();
        Keep(0, 1);
        for (std::size_t u = 0; u < b.m_oNode.Size(); ++u) {
            const Data_Node& oNode = b.m_oNode(u);
            switch (oNode.GetType()) {
                case Data_Node::String:
                case Data_Node::Binary: Keep(oNode.uWord2, oNode.uWord3); break;
                case Data_Node::Quad: Keep(oNode.uWord2, 12); break;
                default: break;
            }
        }
        for (std::size_t uName = 0; uName < b.m_oAttArr.Size(); ++uName) {
            const Arr<Data_Att>& oAtt = b.m_oAttArr(uName)->oAtt;
            for (const Data_Att* p = oAtt.Beg(); p != oAtt.End(); ++p) {
                if (NewId(p->uId) == Data_Node::NONE || p->uValue == Data_Att::NO_VALUE) continue;
                Keep(p->uValue, std::strlen(b.HeapAt(p->uValue)) + 1);
            }
        }
    }

    // Mostly texts stand in the order in which they are come upon: few ranges come of it.
    void Keep(u2_t uBegin, std::size_t uSize) {
        if (uSize == 0) return;
        const u2_t uEnd = static_cast<u2_t>(uBegin + uSize);
        Range* pLast = m_oRange.Size() != 0 ? m_oRange.End() - 1 : nullptr;
        if (pLast != nullptr && uBegin >= pLast->uBegin && uBegin <= pLast->uEnd) {
            pLast->uEnd = std::max(pLast->uEnd, uEnd);
            return;
        }
        m_oRange.Add(Range{uBegin, uEnd, 0});
    }

    void CopyTexts() {
        std::sort(m_oRange.Beg(), m_oRange.End(),
                  [](const Range& oA, const Range& oB) { return oA.uBegin < oB.uBegin; });
        Arr<Range> oFound;
        oFound.Swap(m_oRange);
        for (const Range* p = oFound.Beg(); p != oFound.End(); ++p) {
            Keep(p->uBegin, p->uEnd - p->uBegin);
        }
        for (Range* p = m_oRange.Beg(); p != m_oRange.End(); ++p) {
            p->uNew = static_cast<u2_t>(m_oHeap.Size());
            m_oHeap.Add(b.HeapAt(p->uBegin), p->uEnd - p->uBegin);
        }
    }

    [[nodiscard]] u2_t NewOffset(u2_t uOffset) const noexcept {
        const Range* p = std::upper_bound(
            m_oRange.Beg(), m_oRange.End(), uOffset,
            [](u2_t uWanted, const Range& oRange) { return uWanted < oRange.uBegin; });
        --p;  // the first range begins at 0
        return p->uNew + (uOffset - p->uBegin);
    }

    void CopyNodes() {
        // With removed nodes gone, parents are placed and counted anew.
        const bool bRenumbered = b.m_uDead != 0;
        for (std::size_t u = 0; u < b.m_oNode.Size(); ++u) {
            if (m_oNewId(u) == Data_Node::NONE) continue;
            Data_Node oNode = b.m_oNode(u);
            const u2_t uPred = NewId(oNode.Pred());
            oNode.SetPredField(uPred + 1);
            CopyValue(oNode);
            if (bRenumbered && oNode.GetType() == Data_Node::Tree) {
                oNode.SetType(Data_Node::Empty);
                oNode.SetValue64(0);
            }
            m_oNode.Add(oNode);
            if (!bRenumbered || uPred == Data_Node::NONE) continue;
            Data_Node& oParent = m_oNode(uPred);
            oParent.uWord2 = Data_Node::NONE;
            oParent.uWord3 = oParent.GetType() == Data_Node::Tree ? oParent.uWord3 + 1 : 1;
            oParent.SetType(Data_Node::Tree);
        }
    }

    void CopyValue(Data_Node& oNode) {
        switch (oNode.GetType()) {
            case Data_Node::String:
            case Data_Node::Quad: oNode.uWord2 = NewOffset(oNode.uWord2); break;
            case Data_Node::Binary:
                oNode.uWord2 = oNode.uWord3 != 0 ? NewOffset(oNode.uWord2) : 0;
                break;
            case Data_Node::Link: oNode.uWord2 = NewId(oNode.uWord2); break;
            default: break;
        }
    }

    void CopyAttributes() {
        if (b.m_oAttHead.Size() == 0) return;
        m_oHead.Resize(m_oNode.Size());
        m_oAtt.Reserve(b.m_oAttArr.Size());
        for (std::size_t uName = 0; uName < b.m_oAttArr.Size(); ++uName) {
            const Arr<Data_Att>& oOld = b.m_oAttArr(uName)->oAtt;
            m_oAtt.Add(m_oRecord.Size());
            for (const Data_Att* p = oOld.Beg(); p != oOld.End(); ++p) {
                const u2_t uId = NewId(p->uId);
                if (uId == Data_Node::NONE || p->uValue == Data_Att::NO_VALUE) continue;
                m_oRecord.Add(Data_Att{uId, NewOffset(p->uValue), m_oHead(uId)});
                m_oHead(uId) = static_cast<u2_t>(uName + 1);
            }
        }
    }

    void Commit() {
        // The attribute arrays only get shorter: nothing here needs memory any more.
        for (std::size_t uName = 0; uName < m_oAtt.Size(); ++uName) {
            Arr<Data_Att>& oAtt = b.m_oAttArr(uName)->oAtt;
            const std::size_t uEnd =
                uName + 1 < m_oAtt.Size() ? m_oAtt(uName + 1) : m_oRecord.Size();
            std::copy(m_oRecord.Beg() + m_oAtt(uName), m_oRecord.Beg() + uEnd, oAtt.Beg());
            oAtt.Truncate(uEnd - m_oAtt(uName));
        }
        const bool bRenumbered = b.m_uDead != 0;
        b.m_oNode.Swap(m_oNode);
        b.m_oStr.Swap(m_oHeap);
        b.m_oAttHead.Swap(m_oHead);
        b.m_uDead = b.m_oNode(0).GetType() == Data_Node::Zombi;  // the root stays, dead or not
        b.m_uGarbage = 0;
        b.m_uDeadAtts = 0;
        if (!bRenumbered) return;
        b.m_oSucc.Clear();
        b.m_oUnsorted.Clear();
        b.m_uIndexed = 0;
        b.m_uDeadSucc = 0;
    }

    Data_Base& b;
    Arr<u2_t> m_oNewId;  // by old id; NONE for the dropped ones
    Arr<Data_Node> m_oNode;
    Arr<Range> m_oRange;  // ascending, apart from each other
    Arr<char> m_oHeap;
    Arr<u2_t> m_oHead;
    Arr<Data_Att> m_oRecord;  // of all names, one after the other
    Arr<std::size_t> m_oAtt;  // by name: its first one
};

void Data_Base::Shrink(u2_t& uFollow) {
    // Without removed nodes it must be worth it: when a quarter of the heap is waste.
    const u3_t uWaste = m_uGarbage + m_uDeadAtts * sizeof(Data_Att);
    const bool bWaste = uWaste > 64 * 1024 && uWaste > m_oStr.Size() / 4;
    if (m_uDead == 0 && !bWaste) return;
    Data_Shrink(*this).Run(uFollow);
}

void Data::Shrink() {
    return Where("vok::Data::Shrink", [&] { detail::NodeOf(m_oBase, m_uId).Shrink(m_uId); });
}

}  // namespace vok
