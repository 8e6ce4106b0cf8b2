// SPDX-License-Identifier: MIT
// Editing: inserting, moving, removing, resetting.
#include <algorithm>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/copy_tree.h"
#include "vok/data/data.h"

namespace vok {

// ---- store ------------------------------------------------------------------

u2_t Data_Base::Insert(u2_t uParent, u2_t uKey, u2_t uPos) {
    UpdateSucc();
    CheckIds(uParent, 1);
    m_oNode.ReserveMore(1);
    ReservePlaces(uParent, 1, 1);
    // From here on nothing fails.
    const u2_t uId = static_cast<u2_t>(m_oNode.Size());
    m_oNode.Add(Node{uKey, 0, 0, 0});
    m_uIndexed = uId + 1;
    Link(uId, uParent, uPos);
    return uId;
}

void Data_Base::Move(u2_t uId, u2_t uParent, u2_t uPos) {
    UpdateSucc();
    if (m_oNode(uId).Pred() == uParent) return Reorder(uId, uPos);
    CheckIds(uParent, 0);
    ReservePlaces(uParent, 1, 1);
    Unlink(uId);
    Link(uId, uParent, uPos);
}

// Room for one more successor has been reserved.
void Data_Base::Link(u2_t uId, u2_t uParent, u2_t uPos) noexcept {
    MakeTree(uParent);
    Node& oParent = m_oNode(uParent);
    ++oParent.uWord3;
    if (oParent.Start() == NONE || !m_oGroup.HasRoom(oParent.Start())) GrowGroup(oParent);
    Node& oNode = m_oNode(uId);
    oNode.SetPredField(uParent + 1);
    const u2_t uPlaced = m_oGroup.Placed(oParent.Start());
    u2_t* pFirst = m_oGroup.Ids(oParent.Start());
    const Run oRun = FindRun({pFirst, uPlaced}, oNode.uKey);
    u2_t* pPlace = pFirst + oRun.uFirst + std::min(uPos, oRun.uSize);
    if (oRun.uSize == 0) {
        pPlace = std::lower_bound(
            pFirst, pFirst + uPlaced, oNode.uKey,
            [this](u2_t uOther, u2_t uKey) { return m_oName.IsLess(m_oNode(uOther).uKey, uKey); });
    }
    m_oGroup.InsertAt(oParent.Start(), pPlace, uId);
}

void Data_Base::Unlink(u2_t uId) noexcept {
    const u2_t uPred = m_oNode(uId).Pred();
    if (uPred >= m_oNode.Size()) return;  // cut loose
    Node& oParent = m_oNode(uPred);
    oParent.uWord2 = m_oGroup.RemoveAt(oParent.Start(), PlaceOf(uId));
    if (--oParent.uWord3 != 0) return;
    AbandonGroup(oParent);
    oParent.SetType(Node::Empty);
    oParent.SetValue64(0);
}

void Data_Base::Reorder(u2_t uId, u2_t uPos) noexcept {
    const Node& oParent = m_oNode(m_oNode(uId).Pred());
    u2_t* pFirst = m_oGroup.Ids(oParent.Start());
    const Run oRun = FindRun({pFirst, oParent.Size()}, m_oNode(uId).uKey);
    pFirst += oRun.uFirst;
    u2_t* pOld = PlaceOf(uId);
    u2_t* pNew = pFirst + std::min(uPos, oRun.uSize - 1);
    if (pOld < pNew) {
        std::rotate(pOld, pOld + 1, pNew + 1);
    } else {
        std::rotate(pNew, pOld, pOld + 1);
    }
}

void Data_Base::Rename(u2_t uId, u2_t uKey, u2_t uPos) {
    const u2_t uPred = m_oNode(uId).Pred();
    if (uId != 0) {
        UpdateSucc();
        ReservePlaces(uPred, 1, 1);
        Unlink(uId);
    }
    m_oNode(uId).uKey = uKey;
    if (uId != 0) Link(uId, uPred, uPos);
}

void Data_Base::ListBelow(u2_t uId, Arr<u2_t>& oBelow) {
    if (m_oNode(uId).GetType() != Node::Tree) return;
    UpdateSucc();
    Group oGroup = SuccOf(uId);
    oBelow.Add(oGroup.pId, oGroup.uSize);
    for (std::size_t u = 0; u < oBelow.Size(); ++u) {
        oGroup = SuccOf(oBelow(u));
        oBelow.Add(oGroup.pId, oGroup.uSize);
    }
}

void Data_Base::Kill(u2_t uId) noexcept {
    Node& oNode = m_oNode(uId);
    if (oNode.GetType() == Node::Zombi) return;
    DropValue(oNode);
    if (oNode.GetType() == Node::Tree) AbandonGroup(oNode);
    oNode.SetType(Node::Zombi);
    oNode.SetValue64(0);
    ++m_uDead;
}

void Data_Base::CutLoose(const Arr<u2_t>& oBelow) noexcept {
    for (const u2_t* p = oBelow.Beg(); p != oBelow.End(); ++p) {
        Kill(*p);
        m_oNode(*p).SetPredField(Node::CUT_LOOSE);
    }
}

void Data_Base::Remove(u2_t uId) {
    // Everything that can fail comes first: the list of what hangs below.
    Arr<u2_t> oBelow;
    ListBelow(uId, oBelow);
    CutLoose(oBelow);
    Kill(uId);
}

void Data_Base::RemoveSuccs(u2_t uId) {
    if (m_oNode(uId).GetType() != Node::Tree) return;
    Arr<u2_t> oBelow;
    ListBelow(uId, oBelow);
    CutLoose(oBelow);
    Node& oNode = m_oNode(uId);
    AbandonGroup(oNode);
    oNode.SetType(Node::Empty);
    oNode.SetValue64(0);
}

bool Data_Base::IsBelow(u2_t uId, u2_t uTop) const noexcept {
    while (uId != uTop && uId < m_oNode.Size()) uId = m_oNode(uId).Pred();
    return uId == uTop;
}

void Data_Base::Reset() {
    ResetNodes();
    m_oUserTag.Clear();
}

void Data_Base::ResetNodes() {
    m_oNode.Resize(1);
    m_oNode(0) = {};
    m_oGroup.Reset();
    m_oHeap.Reset();
    m_oAtt.Reset();
    m_uIndexed = 0;
    m_uDead = 0;
}

void Data_Base::Restart() {
    const bool bDrop = Data_Names::IsWorthDropping(m_oName.Size(), m_oNode.Size());
    Reset();
    m_oAtt.Restart();
    if (bDrop) m_oName.Restart();
    m_bFormerNames = m_oName.Size() > 1;
}

void Data_Base::Trim() {
    m_oNode.TrimMost();
    m_oGroup.Trim();
    m_oHeap.Trim();
}

void Data_Base::Rollback(u2_t uFirst) noexcept {
    m_oAtt.Rollback(uFirst, m_oHeap);
    for (std::size_t u = uFirst; u < m_oNode.Size(); ++u) DropValue(m_oNode(u));
    m_oNode.Truncate(uFirst);
}

// ---- cursor -----------------------------------------------------------------

Data Data::Append(Data_Name oName) {
    return Where("vok::Data::Append", [&] { return CreateNewSucc(oName); });
}

Data Data::Insert(Data_Name oName, u2_t uPos) {
    return Where("vok::Data::Insert", [&] {
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        b.CheckAppend(m_uId);
        return Data(m_oBase, b.Insert(m_uId, b.KeyOf(oName), uPos));
    });
}

void Data::Remove() {
    return Where("vok::Data::Remove", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        if (m_uId == 0) Msg::NodeHasNoPredecessor();
        b.Remove(m_uId);
    });
}

void Data::RemoveSuccs() {
    return Where("vok::Data::RemoveSuccs",
                 [&] { detail::LiveNodeOf(m_oBase, m_uId).RemoveSuccs(m_uId); });
}

void Data::Erase() {
    return Where("vok::Data::Erase", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        Node& oNode = b.m_oNode(m_uId);
        if (oNode.GetType() != Node::Zombi) {
            Msg::NodeWithWrongDataTypeExpected(b.ShownName(m_uId), Node::TypeName(oNode.GetType()),
                                               Node::TypeName(Node::Zombi));
        }
        if (m_uId == 0) Msg::NodeHasNoPredecessor();
        b.UpdateSucc();
        b.Unlink(m_uId);
        oNode.SetPredField(Node::CUT_LOOSE);
    });
}

void Data::Delete() {
    return Where("vok::Data::Delete", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        if (m_uId == 0) Msg::NodeHasNoPredecessor();
        b.UpdateSucc();
        b.Remove(m_uId);
        b.Unlink(m_uId);
        b.m_oNode(m_uId).SetPredField(Node::CUT_LOOSE);
    });
}

void Data::Rename(Data_Name oName, u2_t uPos) {
    return Where("vok::Data::Rename", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        b.Rename(m_uId, b.KeyOf(oName), uPos);
    });
}

void Data::MoveTo(const Data& oParent, u2_t uPos) {
    return Where("vok::Data::MoveTo", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        Base& oTo = detail::NodeOf(oParent.m_oBase, oParent.m_uId);
        if (m_uId == 0) Msg::NodeHasNoPredecessor();
        oTo.CheckAppend(oParent.m_uId);
        if (m_oBase == oParent.m_oBase) {
            if (b.IsBelow(oParent.m_uId, m_uId)) Msg::CannotLinkWithOuterStructure();
            return b.Move(m_uId, oParent.m_uId, uPos);
        }
        Arr<u2_t> oBelow;
        b.ListBelow(m_uId, oBelow);
        const u2_t uCopy = Data_Copy(*this, b, oTo).Below(oParent.m_uId, uPos);
        b.CutLoose(oBelow);
        b.Kill(m_uId);
        *this = Data(oParent.m_oBase, uCopy);
    });
}

Data Data::MkCopy(const Data& oParent, u2_t uPos) const {
    return Where("vok::Data::MkCopy", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        Base& oTo = detail::NodeOf(oParent.m_oBase, oParent.m_uId);
        oTo.CheckAppend(oParent.m_uId);
        return Data(oParent.m_oBase, Data_Copy(*this, b, oTo).Below(oParent.m_uId, uPos));
    });
}

Data Data::MkClone() const {
    return Where("vok::Data::MkClone", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        const Mem::Ref<Base> oTo = Mem::Ref<Base>::Create();
        Data_Copy(*this, b, *oTo).AsRoot();
        oTo->m_oUserTag = b.m_oUserTag;
        return Data(oTo, 0);
    });
}

void Data::Reset() {
    return Where("vok::Data::Reset", [&] {
        if (!m_oBase) return SetToRoot();
        m_oBase->Reset();
        m_uId = 0;
    });
}

}  // namespace vok
