// SPDX-License-Identifier: MIT
// Compacting the tree.
#include <algorithm>
#include <string_view>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/text_ranges.h"

namespace vok {

// One compaction. All new arrays are made before anything of the tree is changed.
class Data_Shrink {
  public:
    explicit Data_Shrink(Data_Base& oBase) : m_oBase(oBase) {}

    void Run(u2_t& uFollow) {
        if (m_oBase.m_uDead != 0) m_oBase.UpdateSucc();
        NumberNodes();
        NumberNames();
        // Names are dropped in one of the two tables, since doing so may fail.
        Data_Attributes::Rewrite oAtt(m_oBase.m_oAtt, m_oNewKey.Size() == 0, m_oNewId);
        uFollow = m_oNewId(uFollow) != Data_Node::NONE ? m_oNewId(uFollow) : 0;
        m_oBase.m_oHeap.Start();
        for (const Data_Node& o : m_oBase.m_oNode) m_oRanges.Keep(o);
        m_uReferred = oAtt.KeepValues(m_oRanges, m_oBase.m_oHeap);
        m_oRanges.Join();
        m_oRanges.Copy(m_oBase.m_oHeap, [this](const char* pText, std::size_t uSize) {
            const u2_t uOffset = static_cast<u2_t>(m_oHeap.Size());
            m_oHeap.Add(pText, uSize);
            return uOffset;
        });
        CopyNodes();
        oAtt.Copy(m_oNode.Size(), m_oRanges);
        m_oHeap.Reserve(m_oHeap.Size() + Data_Heap::SLACK);
        if (m_oNewKey.Size() != 0) {
            m_oBase.m_oName.Renew(m_oName);
            m_oBase.m_bFormerNames = false;
        }
        oAtt.Commit();
        Commit();
    }

  private:
    void NumberNodes() {
        const std::size_t uNodes = m_oBase.m_oNode.Size();
        m_oNewId.Resize(uNodes);
        u2_t uNext = 0;
        for (std::size_t u = 0; u < uNodes; ++u) {
            const bool bLive = u == 0 || m_oBase.m_oNode(u).GetType() != Data_Node::Zombi;
            m_oNewId(u) = bLive ? uNext++ : Data_Node::NONE;
        }
        m_oNode.Reserve(uNext);
    }

    // Names that no node bears any more are dropped once they are the greater part of many.
    void NumberNames() {
        Arr<u2_t> oKey;
        oKey.Resize(m_oBase.m_oName.Size());
        u2_t uUsed = 1;
        const auto oUse = [&](u2_t uKey) { uUsed += uKey != 0 && !std::exchange(oKey(uKey), 1u); };
        for (std::size_t u = 0; u < m_oBase.m_oNode.Size(); ++u) {
            if (m_oNewId(u) != Data_Node::NONE) oUse(m_oBase.m_oNode(u).uKey);
        }
        if (!Data_Names::IsWorthDropping(m_oBase.m_oName.Size(), uUsed)) return;
        m_oName.Start();
        for (u2_t uKey = 1; uKey < oKey.Size(); ++uKey) {
            if (oKey(uKey) != 0) oKey(uKey) = m_oName.Insert(m_oBase.m_oName(uKey).View());
        }
        m_oNewKey.Swap(oKey);
    }

    [[nodiscard]] u2_t NewId(u2_t uId) const noexcept {
        return uId < m_oNewId.Size() ? m_oNewId(uId) : Data_Node::NONE;
    }

    void CopyNodes() {
        const bool bRenumbered = m_oBase.m_uDead != 0;
        for (std::size_t u = 0; u < m_oBase.m_oNode.Size(); ++u) {
            if (m_oNewId(u) == Data_Node::NONE) continue;
            Data_Node oNode = m_oBase.m_oNode(u);
            if (m_oNewKey.Size() != 0) oNode.uKey = m_oNewKey(oNode.uKey);
            oNode.SetPredField(NewId(oNode.Pred()) + 1);
            m_oRanges.Renew(oNode);
            m_uReferred += Data_Heap::BytesOf(oNode);
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
        const Data_Groups::View oOld = m_oBase.m_oGroup.ViewOf(oNode.Start(), oNode.Size());
        u2_t uSize = 0;
        const u2_t uStart = Data_Groups::Write(m_oGroup, oOld.uSize, [&](u2_t* pNew) {
            for (const u2_t uOld : oOld) {
                if (m_oNewId(uOld) != Data_Node::NONE) pNew[uSize++] = m_oNewId(uOld);
            }
            return uSize;
        });
        if (uSize == 0) m_oGroup.Truncate(uStart);
        oNode.SetType(uSize != 0 ? Data_Node::Tree : Data_Node::Empty);
        oNode.SetValue64(uSize != 0 ? u3_t{uSize} << 32 | uStart : 0);
    }

    void Commit() {
        const bool bRenumbered = m_oBase.m_uDead != 0;
        m_oBase.m_oNode.Swap(m_oNode);
        m_oBase.m_oHeap.Swap(m_oHeap);
        m_oBase.m_oHeap.SetReferred(m_uReferred);
        m_oBase.m_uDead =
            m_oBase.m_oNode(0).GetType() == Data_Node::Zombi;  // the root stays, dead or not
        if (!bRenumbered) return;
        m_oBase.m_oGroup.Swap(m_oGroup);
        m_oBase.m_uIndexed = static_cast<u2_t>(m_oBase.m_oNode.Size());
    }

    Data_Base& m_oBase;
    Arr<u2_t> m_oNewId;   // by old id; NONE for the dropped ones
    Arr<u2_t> m_oNewKey;  // by old key of a name; empty when all are kept
    Hash m_oName;
    Arr<Data_Node> m_oNode;
    Arr<u2_t> m_oGroup;
    Data_TextRanges m_oRanges;
    Arr<char> m_oHeap;
    u3_t m_uReferred = 0;  // bytes of the heap, each reference counted
};

void Data_Base::Shrink(u2_t& uFollow) {
    Trim();
    // Without removed nodes it must be worth it: when a quarter of the heap is waste.
    const u3_t uWaste = m_oHeap.Unused() + m_oAtt.DeadBytes();
    const bool bWaste = uWaste > 64 * 1024 && uWaste > m_oHeap.Size() / 4;
    // More names than nodes can bear: those of a tree that was emptied.
    const bool bNames = Data_Names::IsWorthDropping(m_oName.Size(), m_oNode.Size());
    if (m_uDead == 0 && !bWaste && !bNames) return;
    Data_Shrink(*this).Run(uFollow);
}

void Data::Shrink() {
    return Where("vok::Data::Shrink", [&] { detail::NodeOf(m_oBase, m_uId).Shrink(m_uId); });
}

}  // namespace vok
