// Compacting the tree.
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/text_ranges.h"

namespace vok {

// One compaction. All new arrays are made before anything of the tree is changed.
class Data_Shrink {
  public:
    explicit Data_Shrink(Data_Base& oBase) : b(oBase) {}

    void Run(u2_t& uFollow) {
        if (b.m_uDead != 0) b.UpdateSucc();
        NumberNodes();
        uFollow = m_oNewId(uFollow) != Data_Node::NONE ? m_oNewId(uFollow) : 0;
        FindTexts();
        m_oRanges.Copy(b, [this](const char* pText, std::size_t uSize) {
            const u2_t uOffset = static_cast<u2_t>(m_oHeap.Size());
            m_oHeap.Add(pText, uSize);
            return uOffset;
        });
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

    void FindTexts() {
        b.StartHeap();
        for (std::size_t u = 0; u < b.m_oNode.Size(); ++u) m_oRanges.Keep(b.m_oNode(u));
        for (std::size_t uName = 0; uName < b.m_oAttArr.Size(); ++uName) {
            const Arr<Data_Att>& oAtt = b.m_oAttArr(uName)->oAtt;
            for (const Data_Att* p = oAtt.Beg(); p != oAtt.End(); ++p) {
                if (NewId(p->uId) == Data_Node::NONE || p->uValue == Data_Att::NO_VALUE) continue;
                m_oRanges.KeepText(b, p->uValue);
            }
        }
    }

    void CopyNodes() {
        const bool bRenumbered = b.m_uDead != 0;
        for (std::size_t u = 0; u < b.m_oNode.Size(); ++u) {
            if (m_oNewId(u) == Data_Node::NONE) continue;
            Data_Node oNode = b.m_oNode(u);
            oNode.SetPredField(NewId(oNode.Pred()) + 1);
            m_oRanges.Renew(oNode);
            if (oNode.GetType() == Data_Node::Link) oNode.uWord2 = NewId(oNode.uWord2);
            if (bRenumbered && oNode.GetType() == Data_Node::Tree) CopyGroup(oNode);
            m_oNode.Add(oNode);
        }
    }

    // The live successors of a node in their order; without any it is empty.
    void CopyGroup(Data_Node& oNode) {
        if (oNode.Size() == 0) {
            oNode.SetType(Data_Node::Empty);
            return oNode.SetValue64(0);
        }
        const std::size_t uStart = m_oSucc.Size();
        const u2_t* pFirst = b.m_oSucc.Beg() + oNode.Start() + Data_Base::GROUP_HEADER;
        u2_t* pNew = m_oSucc.AddSpace(std::size_t{Data_Base::GROUP_HEADER} + oNode.Size());
        u2_t uSize = 0;
        for (u2_t u = 0; u < oNode.Size(); ++u) {
            const u2_t uId = m_oNewId(pFirst[u]);
            if (uId != Data_Node::NONE) pNew[Data_Base::GROUP_HEADER + uSize++] = uId;
        }
        pNew[0] = pNew[1] = uSize;
        m_oSucc.Truncate(uSize != 0 ? uStart + Data_Base::GROUP_HEADER + uSize : uStart);
        oNode.SetType(uSize != 0 ? Data_Node::Tree : Data_Node::Empty);
        oNode.SetValue64(uSize != 0 ? u3_t{uSize} << 32 | uStart : 0);
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
                m_oRecord.Add(Data_Att{uId, m_oRanges.NewOffset(p->uValue), m_oHead(uId)});
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
        b.m_oSucc.Swap(m_oSucc);
        b.m_uIndexed = static_cast<u2_t>(b.m_oNode.Size());
        b.m_uDeadSucc = 0;
    }

    Data_Base& b;
    Arr<u2_t> m_oNewId;  // by old id; NONE for the dropped ones
    Arr<Data_Node> m_oNode;
    Arr<u2_t> m_oSucc;
    Data_TextRanges m_oRanges;
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
