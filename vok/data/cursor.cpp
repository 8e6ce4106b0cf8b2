// SPDX-License-Identifier: MIT
// Cursors: moving about, names, the user tag, appending.
#include <bit>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/store.h"
#include "vok/data/succ_it.h"

namespace vok {

void Data::Clear() noexcept {
    m_oBase.Reset();
    m_uId = 0;
}

const Data_Node& Data::GetNode() const noexcept {
    // What a cursor outlived by its node gets to see.
    static constexpr Node GONE{0, Node::Zombi, 0, 0};
    return m_uId < m_oBase->m_oNode.Size() ? m_oBase->m_oNode(m_uId) : GONE;
}

Data_Node::Type Data::GetType() const {
    return Where("vok::Data::GetType", [&] {
        if (!m_oBase) Msg::ObjectPointsToNothing();
        return GetNode().GetType();
    });
}

u2_t Data::GetNodes() const noexcept {
    return m_oBase ? static_cast<u2_t>(m_oBase->m_oNode.Size()) : 0;
}

void Data::SetToRoot() {
    return Where("vok::Data::SetToRoot", [&] {
        if (!m_oBase) m_oBase = Mem::Ref<Base>::Create();
        m_uId = 0;
    });
}

Data Data::GetRoot() const noexcept {
    return Data(m_oBase, 0);
}

u2_t Data::SetToNode(u2_t uId) {
    return Where("vok::Data::SetToNode", [&] {
        if (uId >= GetNodes()) Msg::AssertionFailed("uId < GetNodes()");
        return m_uId = uId;
    });
}

Data Data::GetNodeFromID(u2_t uId) const noexcept {
    return uId < GetNodes() ? Data(m_oBase, uId) : Data();
}

void Data::SetToPred() {
    return Where("vok::Data::SetToPred", [&] {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        const u2_t uPred = b.m_oNode(m_uId).Pred();
        if (uPred >= b.m_oNode.Size()) Msg::NodeHasNoPredecessor();
        m_uId = uPred;
    });
}

Data Data::GetPred() const noexcept {
    return m_oBase ? GetNodeFromID(GetNode().Pred()) : Data();
}

i2_t Data::NodeDepth() const {
    return Where("vok::Data::NodeDepth", [&] {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        i2_t iDepth = 0;
        for (u2_t uId = m_uId; uId != 0 && uId < b.m_oNode.Size(); uId = b.m_oNode(uId).Pred()) {
            ++iDepth;
        }
        return iDepth;
    });
}

// ---- names ------------------------------------------------------------------

const char* Data::GetName() const {
    return Where("vok::Data::GetName",
                 [&] { return detail::NodeOf(m_oBase, m_uId).NameOf(m_uId); });
}

void Data::SetRootName(Data_Name oName) {
    return Where("vok::Data::SetRootName", [&] {
        Base& b = detail::TreeOf(m_oBase);
        b.m_oNode(0).uKey = b.KeyOf(oName);
    });
}

Data_Key Data::FindKey(Data_Name oName) const {
    return Where("vok::Data::FindKey",
                 [&] { return Data_Key{detail::TreeOf(m_oBase).FindKey(oName)}; });
}

Data_Key Data::MakeKey(Data_Name oName) {
    return Where("vok::Data::MakeKey",
                 [&] { return Data_Key{detail::TreeOf(m_oBase).KeyOf(oName)}; });
}

Mem::Str Data::GetUserTag() const {
    return Where("vok::Data::GetUserTag", [&] { return detail::TreeOf(m_oBase).m_oUserTag.Get(); });
}

void Data::SetUserTag(const char* sTag) {
    return Where("vok::Data::SetUserTag",
                 [&] { detail::TreeOf(m_oBase).m_oUserTag.Set(sTag != nullptr ? sTag : ""); });
}

// ---- appending --------------------------------------------------------------

namespace {

// Appends a successor to the node of a cursor.
inline u2_t AppendTo(const Mem::Ref<Data_Base>& oBase, u2_t uParent, Data_Name oName,
                     Data_Node::Type eType = Data_Node::Empty, u3_t uValue = 0) {
    Data_Base& b = detail::NodeOf(oBase, uParent);
    b.CheckAppend(uParent);
    return b.Append(uParent, b.KeyOf(oName), eType, uValue);
}

}  // namespace

void Data::SetToNewSucc(Data_Name oName) {
    return Where("vok::Data::SetToNewSucc", [&] { m_uId = AppendTo(m_oBase, m_uId, oName); });
}

Data Data::CreateNewSucc(Data_Name oName) {
    return Where("vok::Data::CreateNewSucc(const char*)", [&] {
        if (!m_oBase) SetToRoot();
        return Data(m_oBase, AppendTo(m_oBase, m_uId, oName));
    });
}

u2_t Data::AddInt(Data_Name oName, i2_t iValue, Node::Type eType) {
    return Where("vok::Data::AddInt", [&] {
        detail::CheckIntType(eType);
        if (!m_oBase) SetToRoot();
        return AppendTo(m_oBase, m_uId, oName, eType, static_cast<u2_t>(iValue));
    });
}

u2_t Data::AddBool(Data_Name oName, bool bValue) {
    return Where("vok::Data::AddBool", [&] { return AddInt(oName, bValue, Node::Boolean); });
}

u2_t Data::AddDbl(Data_Name oName, double dValue, Node::Type eType) {
    return Where("vok::Data::AddDbl", [&] {
        detail::CheckDblType(eType);
        if (!m_oBase) SetToRoot();
        return AppendTo(m_oBase, m_uId, oName, eType, std::bit_cast<u3_t>(dValue));
    });
}

u2_t Data::AddLng(Data_Name oName, u3_t uValue) {
    return Where("vok::Data::AddLng", [&] {
        if (!m_oBase) SetToRoot();
        return AppendTo(m_oBase, m_uId, oName, Node::Long, uValue);
    });
}

u2_t Data::AddStr(Data_Name oName, std::string_view sText) {
    return Where("vok::Data::AddStr", [&] {
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        b.CheckAppend(m_uId);
        return b.AppendText(m_uId, b.KeyOf(oName), sText);
    });
}

u2_t Data::AddStr(Data_Name oName, const char* sText) {
    return AddStr(oName, std::string_view(sText != nullptr ? sText : ""));
}

u2_t Data::AddBin(Data_Name oName, const void* pData, u2_t uSize) {
    return Where("vok::Data::AddBin", [&] {
        if (pData == nullptr && uSize != 0) Msg::ObjectPointsToNothing();
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        b.CheckAppend(m_uId);
        const u2_t uKey = b.KeyOf(oName);
        const u2_t uOffset = b.m_oHeap.Add(pData, uSize);
        return b.Append(m_uId, uKey, Node::Binary, u3_t{uSize} << 32 | uOffset);
    });
}

Data Data::CreateSucc(Data_Name oName, u2_t* pCreated) {
    return Where("vok::Data::CreateSucc(const char*)", [&] {
        if (pCreated != nullptr) *pCreated = 0;
        Data oFound = m_oBase ? GetNthSucc(oName, 0) : Data();
        if (oFound.IsNode()) return oFound;
        if (!m_oBase) SetToRoot();
        oFound = *this;
        oFound.SetToNewSucc(oName);
        if (pCreated != nullptr) *pCreated = 1;
        return oFound;
    });
}

// ---- memory -----------------------------------------------------------------

std::size_t Data::HeapBytes() const noexcept {
    return m_oBase ? m_oBase->HeapBytes() : 0;
}

std::size_t Data::TextBytes() const noexcept {
    return m_oBase ? m_oBase->m_oHeap.Capacity() : 0;
}

}  // namespace vok
