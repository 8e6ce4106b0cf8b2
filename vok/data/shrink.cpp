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
    explicit Data_Shrink(Data_Base& oBase) : b(oBase) {}

    void Run(u2_t& uFollow) {
        if (b.m_uDead != 0) b.UpdateSucc();
        NumberNodes();
        NumberNames();
        NumberAttributes();
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

    // Names that no node bears any more are dropped once they are the greater part of many.
    void NumberNames() {
        Arr<u2_t> oKey;
        oKey.Resize(b.m_oName.Size());
        u2_t uUsed = 1;
        const auto oUse = [&](u2_t uKey) { uUsed += uKey != 0 && !std::exchange(oKey(uKey), 1u); };
        for (std::size_t u = 0; u < b.m_oNode.Size(); ++u) {
            if (m_oNewId(u) != Data_Node::NONE) oUse(b.m_oNode(u).uKey);
        }
        if (!IsWorthIt(b.m_oName.Size(), uUsed)) return;
        m_oName.Start();
        for (u2_t uKey = 1; uKey < oKey.Size(); ++uKey) {
            if (oKey(uKey) != 0) oKey(uKey) = m_oName.Insert(TextOf(b.m_oName, uKey));
        }
        m_oNewKey.Swap(oKey);
    }

    // The same for the names of attributes, in a compaction that keeps all of the others.
    void NumberAttributes() {
        Arr<u2_t> oKey;
        oKey.Resize(b.m_oAttArr.Size() + 1);
        u2_t uUsed = 0;
        for (u2_t uKey = 1; uKey < oKey.Size(); ++uKey) {
            b.SettleAttributes(*b.m_oAttArr(uKey - 1));
            const Arr<Data_Att>& oAtt = b.m_oAttArr(uKey - 1)->oAtt;
            const bool bUsed = std::any_of(oAtt.Beg(), oAtt.End(), [&](const Data_Att& o) {
                return o.uValue != Data_Att::NO_VALUE && NewId(o.uId) != Data_Node::NONE;
            });
            oKey(uKey) = bUsed;
            uUsed += bUsed;
        }
        const bool bDrop = m_oNewKey.Size() == 0 && IsWorthIt(b.m_oAttName.Size(), uUsed);
        for (u2_t uKey = 1; uKey < oKey.Size(); ++uKey) {
            if (!bDrop) {
                oKey(uKey) = uKey;
            } else if (oKey(uKey) != 0) {
                oKey(uKey) = m_oAttName.Insert(TextOf(b.m_oAttName, uKey));
            }
        }
        m_oNewAtt.Swap(oKey);
        m_bDropAtts = bDrop;
    }
    [[nodiscard]] static bool IsWorthIt(std::size_t uNames, std::size_t uUsed) noexcept {
        return uNames > Data_Base::MANY_NAMES && 2 * uUsed < uNames;
    }
    [[nodiscard]] static std::string_view TextOf(const Hash& oNames, u2_t uKey) noexcept {
        return {oNames(uKey).sText, oNames(uKey).uLength};
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
            if (m_oNewKey.Size() != 0) oNode.uKey = m_oNewKey(oNode.uKey);
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
            const u2_t uKey = m_oNewAtt(uName + 1);
            const Arr<Data_Att>& oOld = b.m_oAttArr(uName)->oAtt;
            m_oAtt.Add(m_oRecord.Size());
            for (const Data_Att* p = oOld.Beg(); p != oOld.End(); ++p) {
                const u2_t uId = NewId(p->uId);
                if (uId == Data_Node::NONE || p->uValue == Data_Att::NO_VALUE) continue;
                m_oRecord.Add(Data_Att{uId, m_oRanges.NewOffset(p->uValue), m_oHead(uId)});
                m_oHead(uId) = uKey;
            }
        }
    }

    void Commit() {
        // One of the two at the most, since it may fail.
        if (m_bDropAtts) b.m_oAttName.Replace(m_oAttName);
        if (m_oNewKey.Size() != 0) b.m_oName.Replace(m_oName);
        if (m_oNewKey.Size() != 0) b.m_oGuess = Hash_Guess();
        // The attribute arrays only get shorter: nothing here needs memory any more.
        for (std::size_t uName = 0; uName < m_oAtt.Size(); ++uName) {
            Arr<Data_Att>& oAtt = b.m_oAttArr(uName)->oAtt;
            const std::size_t uEnd =
                uName + 1 < m_oAtt.Size() ? m_oAtt(uName + 1) : m_oRecord.Size();
            std::copy(m_oRecord.Beg() + m_oAtt(uName), m_oRecord.Beg() + uEnd, oAtt.Beg());
            oAtt.Truncate(uEnd - m_oAtt(uName));
        }
        if (m_bDropAtts) DropAttributes();
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

    // The arrays of names that were dropped.
    void DropAttributes() noexcept {
        std::size_t uKept = 0;
        for (std::size_t u = 0; u < b.m_oAttArr.Size(); ++u) {
            Data_AttArr* const p = b.m_oAttArr(u);
            if (m_oNewAtt(u + 1) != 0) {
                b.m_oAttArr(uKept++) = p;
            } else {
                Mem::Dispose(p);
            }
        }
        b.m_oAttArr.Truncate(uKept);
    }

    Data_Base& b;
    Arr<u2_t> m_oNewId;   // by old id; NONE for the dropped ones
    Arr<u2_t> m_oNewKey;  // by old key of a name; empty when all are kept
    Arr<u2_t> m_oNewAtt;  // by old key of an attribute name; 0 for the dropped ones
    bool m_bDropAtts = false;
    Hash m_oName;
    Hash m_oAttName;
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
    // More names than nodes can bear: those of a tree that was emptied.
    const bool bNames = m_oName.Size() > MANY_NAMES && m_oName.Size() > 2 * m_oNode.Size();
    if (m_uDead == 0 && !bWaste && !bNames) return;
    Data_Shrink(*this).Run(uFollow);
}

void Data::Shrink() {
    return Where("vok::Data::Shrink", [&] { detail::NodeOf(m_oBase, m_uId).Shrink(m_uId); });
}

}  // namespace vok
