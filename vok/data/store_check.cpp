// SPDX-License-Identifier: MIT
#include "vok/data/store_check.h"

#include <algorithm>

namespace vok {

namespace {

class StoreCheck {
  public:
    explicit StoreCheck(const Data_Base& oBase) : m_oBase(oBase) {}

    const char* Run() {
        const std::size_t uNodes = m_oBase.m_oNode.Size();
        if (uNodes == 0 || m_oBase.m_oNode(0).PredField() != 0) return "no root";
        if (m_oBase.m_uIndexed > uNodes) return "more nodes indexed than there are";
        m_oPending.Resize(uNodes);
        for (u2_t uId = 0; uId < uNodes; ++uId) {
            const char* sFault = CheckNode(uId, m_oBase.m_oNode(uId));
            if (sFault != nullptr) return sFault;
        }
        for (u2_t uId = 0; uId < uNodes; ++uId) {
            const char* sFault = CheckGroup(uId, m_oBase.m_oNode(uId));
            if (sFault != nullptr) return sFault;
        }
        if (m_uPlaced != m_uHung) return "a node stands in no group";
        if (HasCircle()) return "predecessors lead in a circle";
        if (m_uDead != m_oBase.m_uDead) return "removed nodes miscounted";
        if (!m_oBase.m_oGroup.Check(m_uLiving)) return "words of groups miscounted";
        if (!m_oBase.m_oAtt.Check(uNodes, m_oBase.m_oHeap, m_uReferred)) return "attributes";
        if (!m_oBase.m_oHeap.IsWithin(m_uReferred)) return "texts in use taken for unused";
        return nullptr;
    }

  private:
    const char* CheckNode(u2_t uId, const Data_Node& o) {
        if (o.uKey >= m_oBase.m_oName.Size()) return "a name without a text";
        const u2_t uPred = o.Pred();
        if (uPred != Data_Node::NONE) {
            if (uPred >= m_oBase.m_oNode.Size()) return "a predecessor that is not there";
            if (m_oBase.m_oNode(uPred).GetType() != Data_Node::Tree)
                return "a predecessor without group";
            m_uHung += uId < m_oBase.m_uIndexed;
            m_oPending(uPred) += uId >= m_oBase.m_uIndexed;
        }
        m_uReferred += Data_Heap::BytesOf(o);
        const u3_t uEnd = u3_t{o.uWord2} + Data_Heap::BytesOf(o);
        switch (o.GetType()) {
            case Data_Node::String:
                if (o.uWord3 == 0 || u3_t{o.uWord2} + o.uWord3 > m_oBase.m_oHeap.Size())
                    return "a text";
                return m_oBase.m_oHeap.At(o.uWord2)[o.uWord3 - 1] != 0 ? "a text without end"
                                                                       : nullptr;
            case Data_Node::Binary:
            case Data_Node::Quad: return uEnd > m_oBase.m_oHeap.Size() ? "a block" : nullptr;
            case Data_Node::Link:
                return o.uWord2 != Data_Node::NONE && o.uWord2 >= m_oBase.m_oNode.Size() ? "a link"
                                                                                         : nullptr;
            case Data_Node::Zombi: ++m_uDead; return nullptr;
            default: return *Data_Node::TypeName(o.GetType()) == 'U' ? "a type" : nullptr;
        }
    }

    const char* CheckGroup(u2_t uId, const Data_Node& o) {
        if (o.GetType() != Data_Node::Tree) return nullptr;
        const Data_Groups& oGroup = m_oBase.m_oGroup;
        if (o.Start() == Data_Node::NONE) {
            return o.Size() != m_oPending(uId) ? "successors miscounted" : nullptr;
        }
        if (u3_t{o.Start()} + Data_Groups::HEADER > oGroup.Words().Size()) return "a group's place";
        const u2_t uPlaced = oGroup.Placed(o.Start());
        const u3_t uEnd = u3_t{o.Start()} + Data_Groups::HEADER + oGroup.Room(o.Start());
        if (uPlaced > oGroup.Room(o.Start()) || uEnd > oGroup.Words().Size())
            return "a group's room";
        if (uPlaced + m_oPending(uId) != o.Size()) return "successors miscounted";
        m_uLiving += Data_Groups::HEADER + oGroup.Room(o.Start());
        m_uPlaced += uPlaced;
        const Data_Groups::View oIds = oGroup.ViewOf(o.Start(), uPlaced);
        for (const u2_t u : oIds) {
            const bool bOwn = u < m_oBase.m_uIndexed && m_oBase.m_oNode(u).Pred() == uId;
            if (!bOwn) return "a successor of another node";
        }
        m_oSorted.Truncate(0);
        m_oSorted.Add(oIds.pId, oIds.uSize);
        std::sort(m_oSorted.Beg(), m_oSorted.End());
        const bool bTwice =
            std::adjacent_find(m_oSorted.begin(), m_oSorted.end()) != m_oSorted.end();
        if (bTwice) return "a successor stands twice";
        const bool bOrdered =
            !oGroup.IsSorted(o.Start()) ||
            std::is_sorted(oIds.begin(), oIds.end(), [this](u2_t uA, u2_t uB) {
                return m_oBase.m_oName.IsLess(m_oBase.m_oNode(uA).uKey, m_oBase.m_oNode(uB).uKey);
            });
        return bOrdered ? nullptr : "successors out of order";
    }

    // Each way up is gone once: where it meets one that is known it ends.
    [[nodiscard]] bool HasCircle() const {
        const std::size_t uNodes = m_oBase.m_oNode.Size();
        Arr<u2_t> oWay;  // by id: the node from which it was first come to, plus one
        oWay.Resize(uNodes);
        for (u2_t uId = 0; uId < uNodes; ++uId) {
            u2_t uUp = uId;
            for (; uUp < uNodes && oWay(uUp) == 0; uUp = m_oBase.m_oNode(uUp).Pred())
                oWay(uUp) = uId + 1;
            if (uUp < uNodes && oWay(uUp) == uId + 1) return true;
        }
        return false;
    }

    const Data_Base& m_oBase;
    Arr<u2_t> m_oPending;  // by id: successors that are not placed
    Arr<u2_t> m_oSorted;
    u3_t m_uHung = 0;    // indexed nodes that name a predecessor
    u3_t m_uPlaced = 0;  // nodes in groups
    u3_t m_uReferred = 0;
    u2_t m_uDead = 0;
    std::size_t m_uLiving = 0;  // words of groups
};

}  // namespace

const char* CheckStore(const Data_Base& b) {
    return StoreCheck(b).Run();
}

}  // namespace vok
