// SPDX-License-Identifier: MIT
#include "vok/data/builder.h"

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

Data_Builder::Data_Builder(Data& oParent) {
    Where("vok::Data_Builder::Data_Builder", [&] {
        if (!oParent.IsNode()) oParent.SetToRoot();
        m_oTree = oParent;
        m_pBase = &detail::NodeOf(oParent.m_oBase, oParent.m_uId);
        const u2_t uParent = oParent.m_uId;
        m_pBase->CheckAppend(uParent);
        m_pBase->CheckIds(uParent, 1);
        const Data_Node& oNode = m_pBase->m_oNode(uParent);
        Load();
        m_uFirst = m_oTail.NextId();
        m_uBelow = Data_Node::FlagsBelow(uParent);
        m_uBase = m_uFirst - (oNode.GetType() == Data_Node::Tree ? oNode.Size() : 0);
    });
}

void Data_Builder::Finish() noexcept {
    if (m_oTail.pNodes == nullptr) return;
    while (m_oOpen.Size() != 0) Close();
    StoreCount();
    m_pBase->GiveBack(m_oTail);
    m_oTail = {};
}

void Data_Builder::Load() noexcept {
    m_oTail = m_pBase->TakeTail();
    m_uNames = static_cast<u2_t>(m_pBase->m_oName.Size());
}

// Keys made after the builder was are known from the first time on.
u2_t Data_Builder::Intern(Data_Name oName) {
    if (oName.m_sName == nullptr) m_uNames = static_cast<u2_t>(m_pBase->m_oName.Size());
    return m_pBase->KeyOf(oName);
}

void Data_Builder::Deepen() {
    Where("vok::Data_Builder::Open", [&] { m_oOpen.ReserveMore(1); });
}

void Data_Builder::Grow() {
    Where("vok::Data_Builder::Append", [&] {
        if (m_oTail.pNodes == nullptr) Msg::ObjectPointsToNothing();
        m_pBase->GiveBack(m_oTail);
        m_pBase->CheckIds(Parent(), 1);
        m_pBase->m_oNode.ReserveMore(1);
        Load();
    });
}

// Calls nothing as long as there is room and the text needs no second look.
u2_t Data_Builder::AddText(u2_t uKey, std::string_view sText) {
    if (!m_oTail.IsFull()) [[likely]] {
        const u2_t uOffset = m_pBase->m_oHeap.TryAddNext(sText);
        if (uOffset != 0) [[likely]]
            return AppendHere(uKey, Data_Node::String, u3_t{sText.size() + 1} << 32 | uOffset);
    }
    return AddTextSlowly(uKey, sText);
}

[[gnu::noinline]] u2_t Data_Builder::AddTextSlowly(u2_t uKey, std::string_view sText) {
    return Where("vok::Data_Builder::AddStr", [&] {
        if (m_oTail.IsFull()) Grow();
        const u2_t uOffset = m_pBase->m_oHeap.TryAddText(sText);  // it may be the first one
        const u3_t uValue =
            uOffset != 0 ? u3_t{sText.size() + 1} << 32 | uOffset : m_pBase->AddText(sText);
        return AppendHere(uKey, Data_Node::String, uValue);
    });
}

u2_t Data_Builder::AddBin(Data_Name oName, const void* pData, u2_t uSize) {
    return Where("vok::Data_Builder::AddBin", [&] {
        if (pData == nullptr && uSize != 0) Msg::ObjectPointsToNothing();
        const u2_t uKey = KeyOf(oName);
        if (m_oTail.IsFull()) Grow();
        const u2_t uOffset = m_pBase->m_oHeap.Add(pData, uSize);
        return AppendHere(uKey, Data_Node::Binary, u3_t{uSize} << 32 | uOffset);
    });
}

u2_t Data_Builder::AddQuad(Data_Name oName, u2_t uW0, u2_t uW1, u2_t uW2, u2_t uW3) {
    return Where("vok::Data_Builder::AddQuad", [&] {
        const u2_t uKey = KeyOf(oName);
        if (m_oTail.IsFull()) Grow();
        const u2_t uOffset = m_pBase->m_oHeap.AddQuad({uW0, uW1, uW2, uW3});
        return AppendHere(uKey, Data_Node::Quad, u3_t{uW0} << 32 | uOffset);
    });
}

u2_t Data_Builder::AddOther(Data_Name oName, const Data_Value& oValue) {
    const std::string_view s = oValue.Text();
    switch (oValue.GetType()) {
        case Data_Node::String: return AddStr(oName, s);
        case Data_Node::Binary:
            return AddBin(oName, s.data(), static_cast<u2_t>(Msg::ToInt32(s.size())));
        case Data_Node::Quad: {
            const auto& au = oValue.QuadWords();
            return AddQuad(oName, au[0], au[1], au[2], au[3]);
        }
        default: return AddEmpty(oName);
    }
}

void Data_Builder::SetAttVal(const char* sName, const char* sValue) {
    Where("vok::Data_Builder::SetAttVal", [&] {
        if (m_oTail.NextId() <= m_uFirst) Msg::ObjectPointsToNothing();
        m_pBase->GiveBack(m_oTail);
        Data oNode = m_oTree;
        oNode.SetToNode(m_oTail.NextId() - 1);
        oNode.SetAttVal(sName, sValue);
    });
}

void Data_Builder::DropBlanks() noexcept {
    m_pBase->MakeTree(Parent());
}

void Data_Builder::RaiseNothingOpen() {
    Msg::NodeHasNoPredecessor();
}

}  // namespace vok
