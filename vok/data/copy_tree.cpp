// SPDX-License-Identifier: MIT
#include "vok/data/copy_tree.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "vok/data/walk.h"

namespace vok {

Data_Copy::Data_Copy(const Data& oTop, Data_Base& oFrom, Data_Base& oTo)
    : m_oFrom(oFrom), m_oTo(oTo), m_bSame(&oFrom == &oTo) {
    Arr_Near<u2_t, 16> oOpen;  // by depth: the entry that the walk went down from
    for (Data_Walk oWalk(oTop); oWalk.Next();) {
        const std::size_t uDepth = oWalk.GetDepth();
        const u2_t uParent = uDepth != 0 ? oOpen(uDepth - 1) : 0;
        if (uDepth != 0) {
            m_uGroups += m_oEntry(uParent).uSuccs++ == 0;
            m_uLastPred = std::max(m_uLastPred, uParent);
        }
        oOpen.Truncate(uDepth);
        oOpen.Add(static_cast<u2_t>(m_oEntry.Size()));
        m_oEntry.Add(Entry{oWalk.GetId(), uParent, 0});
        m_bLinks = m_bLinks || oWalk.GetType() == Data_Node::Link;
    }
}

u2_t Data_Copy::Below(u2_t uParent, u2_t uPos) {
    m_oTo.UpdateSucc();
    m_oTo.CheckIds(uParent, m_oEntry.Size());
    const u2_t uFirst = static_cast<u2_t>(m_oTo.m_oNode.Size());
    if (m_uGroups != 0) Data_Node::CheckPred(uFirst + m_uLastPred);
    CopyTexts();
    try {
        AddNodes(uFirst, uParent);
        m_oTo.ReservePlaces(uParent, m_oEntry.Size(), m_uGroups);
    } catch (...) {
        m_oTo.Rollback(uFirst);
        throw;
    }
    // From here on nothing fails.
    m_oTo.MakeTree(uParent);
    ++m_oTo.m_oNode(uParent).uWord3;
    m_oTo.PlacePending();
    if (uPos != Data_Node::NONE) m_oTo.Reorder(uFirst, uPos);
    return uFirst;
}

void Data_Copy::AsRoot() {
    if (m_uGroups != 0) Data_Node::CheckPred(m_uLastPred);
    CopyTexts();
    m_oTo.m_oNode.Truncate(0);
    AddNodes(0, Data_Node::NONE);
}

void Data_Copy::AddNodes(u2_t uFirst, u2_t uParent) {
    if (m_bLinks) SortEntries();
    m_oTo.m_oNode.ReserveMore(m_oEntry.Size());
    for (std::size_t u = 0; u < m_oEntry.Size(); ++u) {
        const Entry& oEntry = m_oEntry(u);
        Data_Node oNode = m_oFrom.m_oNode(oEntry.uId);
        oNode.uKey = KeyFor(oNode);
        oNode.SetPredField((u == 0 ? uParent : uFirst + oEntry.uParent) + 1);
        if (oNode.GetType() == Data_Node::Tree) {
            oNode.SetType(oEntry.uSuccs != 0 ? Data_Node::Tree : Data_Node::Empty);
            oNode.uWord2 = oEntry.uSuccs != 0 ? Data_Node::NONE : 0;
            oNode.uWord3 = oEntry.uSuccs;
        } else if (oNode.GetType() == Data_Node::Link) {
            oNode.uWord2 = TargetFor(oNode.uWord2, uFirst);
        } else {
            if (!m_bSame) m_oRanges.Renew(oNode);
            m_oTo.m_oHeap.Share(Data_Heap::BytesOf(oNode));
        }
        m_oTo.m_oNode.Add(oNode);
    }
    if (!m_oFrom.m_oAtt.IsUnused()) CopyAttributes(uFirst);
}

// Within a tree copies share the texts.
void Data_Copy::CopyTexts() {
    if (m_bSame || m_oFrom.m_oHeap.Size() == 0) return;
    Arr<u2_t> oKeys;
    for (const Entry* p = m_oEntry.Beg(); p != m_oEntry.End(); ++p) {
        m_oRanges.Keep(m_oFrom.m_oNode(p->uId));
        m_oFrom.m_oAtt.List(p->uId, oKeys);
        for (const u2_t uKey : oKeys) {
            const u2_t uText = m_oFrom.m_oAtt.Find(p->uId, uKey);
            m_oRanges.Keep(uText, m_oFrom.m_oHeap.BytesOf(uText));
        }
    }
    m_oTo.m_oHeap.CheckRoom(m_oRanges.Join());
    // Nobody refers to what is copied yet.
    m_oRanges.Copy(m_oFrom.m_oHeap, [this](const char* pText, std::size_t uSize) {
        const u2_t uOffset = m_oTo.m_oHeap.Add(pText, uSize);
        m_oTo.m_oHeap.Drop(uSize);
        return uOffset;
    });
}

// Ids ascend with the entries: every record is appended to its name.
void Data_Copy::CopyAttributes(u2_t uFirst) {
    Arr<u2_t> oKeys;
    for (std::size_t u = 0; u < m_oEntry.Size(); ++u) {
        const u2_t uOld = m_oEntry(u).uId;
        m_oFrom.m_oAtt.List(uOld, oKeys);
        for (const u2_t uKey : oKeys) {
            u2_t uText = m_oFrom.m_oAtt.Find(uOld, uKey);
            if (!m_bSame) uText = m_oRanges.NewOffset(uText);
            // A text in the heap is referred to, not copied.
            m_oTo.SetAttribute(static_cast<u2_t>(uFirst + u), m_oFrom.m_oAtt.Names()(uKey).View(),
                               m_oTo.m_oHeap.At(uText));
        }
    }
}

u2_t Data_Copy::KeyFor(const Data_Node& oNode) {
    if (m_bSame) return oNode.uKey;
    return m_oTo.m_oName.Intern(m_oFrom.m_oName(oNode.uKey).View());
}

void Data_Copy::SortEntries() {
    m_oById.Resize(m_oEntry.Size());
    std::iota(m_oById.Beg(), m_oById.End(), u2_t{0});
    const auto oIsLess = [this](u2_t uA, u2_t uB) { return m_oEntry(uA).uId < m_oEntry(uB).uId; };
    if (std::is_sorted(m_oById.Beg(), m_oById.End(), oIsLess)) return;
    std::sort(m_oById.Beg(), m_oById.End(), oIsLess);
}

u2_t Data_Copy::TargetFor(u2_t uTarget, u2_t uFirst) const noexcept {
    const u2_t* p =
        std::lower_bound(m_oById.Beg(), m_oById.End(), uTarget,
                         [this](u2_t uEntry, u2_t uId) { return m_oEntry(uEntry).uId < uId; });
    if (p != m_oById.End() && m_oEntry(*p).uId == uTarget) return uFirst + *p;
    return m_bSame ? uTarget : Data_Node::NONE;
}

}  // namespace vok
