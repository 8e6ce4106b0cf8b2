// SPDX-License-Identifier: MIT
#include "vok/data/store.h"

#include <cstring>
#include <string_view>

#include "vok/base/copy.h"
#include "vok/base/utf8.h"

namespace vok {

void Dispose(Data_Base* pBase) noexcept {
    pBase->~Data_Base();
    Mem::Free(pBase);
}

const char* Data_Node::TypeName(u2_t uType) noexcept {
    static constexpr const char* NAMES[16] = {
        "Empty",  "Boolean", "Integer", "Char",    "Float", "Double", "Date",    "String",
        "Binary", "Long",    "Quad",    "Unknown", "Link",  "Tree",   "Unknown", "Zombi"};
    return NAMES[uType & 15];
}

void Data_Node::RaiseNoPred() {
    Msg::AssertionFailed("uParent + 1 < 0xFFFFFFF");
}

Data_Base::Data_Base() {
    m_oNode.Add(Node{0, 0, 0, 0});
}

std::size_t Data_Base::HeapBytes() const noexcept {
    return sizeof(Data_Base) + Mem::HEADER_SIZE + m_oNode.HeapBytes() + m_oName.HeapBytes() +
           m_oGroup.HeapBytes() + m_oHeap.HeapBytes() + m_oAtt.HeapBytes() + m_oUserTag.HeapBytes();
}

std::size_t Data_Base::BytesToOrder() const noexcept {
    const std::size_t uCompacted =
        m_oGroup.IsWorthCompacting() ? m_oGroup.LivingWords() * sizeof(u2_t) : 0;
    if (IsIndexed()) return uCompacted;
    const std::size_t uPlaced = (m_oNode.Size() - m_uIndexed) * sizeof(u2_t);
    const std::size_t uSorted =
        m_oNode.Size() * sizeof(u2_t) + m_oName.Size() * Data_Names::BYTES_TO_RANK;
    return uPlaced + std::max(uSorted, uCompacted);
}

std::size_t Data_Base::GrowthFor(std::size_t uNodes, u2_t uParent) const noexcept {
    constexpr std::size_t TEXTS = std::size_t{1} << 20;
    std::size_t uBytes =
        m_oNode.GrowthFor(uNodes) + m_oName.GrowthFor(uNodes) + m_oHeap.GrowthFor(TEXTS);
    if (uParent != NONE) {
        const Node& o = m_oNode(uParent);
        if (o.GetType() == Node::Tree && o.Start() != NONE) {
            uBytes += m_oGroup.GrowthFor(o.Start(), uNodes);
        }
    }
    return uBytes;
}

// ---- nodes ------------------------------------------------------------------

void Data_Base::CheckAppendSlow(u2_t uParent) const {
    const Node& oNode = m_oNode(uParent);
    const Node::Type eType = oNode.GetType();
    if (eType == Node::Zombi) Msg::TryToAccessDeletedNode();
    // White space between elements is no value.
    const bool bBlank =
        eType == Node::String &&
        m_oHeap.At(oNode.uWord2)[std::strspn(m_oHeap.At(oNode.uWord2), " \t\n\r\f")] == 0;
    if (eType != Node::Empty && !bBlank) {
        Msg::NodeWithWrongDataType(ShownName(uParent), Node::TypeName(eType));
    }
    Node::CheckPred(uParent);
}

void Data_Base::CheckIds(u2_t uParent, std::size_t uCount) const {
    Node::CheckPred(uParent);
    if (m_oNode.GetRefCnt() != 0) Msg::AssertionFailed("oNodes.GetRefCnt() == 0");
    if (uCount != 0) (void)Msg::ToInt32(m_oNode.Size() + uCount - 1);
}

void Data_Base::MakeTree(u2_t uId) noexcept {
    Node& oNode = m_oNode(uId);
    if (oNode.GetType() == Node::Tree) return;
    DropValue(oNode);
    oNode.SetType(Node::Tree);
    oNode.uWord2 = NONE;
    oNode.uWord3 = 0;
}

// The rare part of appending: room for one more record, and a parent that becomes a tree.
void Data_Base::PrepareAppend(u2_t uParent) {
    CheckIds(uParent, 1);
    m_oNode.ReserveMore(1);
    MakeTree(uParent);
}

// ---- attributes -------------------------------------------------------------

void Data_Base::SetOutsideAttribute(u2_t uId, std::string_view sName, std::string_view sValue) {
    const Utf8_Text oName(sName);
    if (oName.Len() == 0) Msg::UnallowedAttribute("");
    const Utf8_Text oValue(sValue);
    SetAttribute(uId, oName.View(), oValue.View());
}

// ---- values -----------------------------------------------------------------

u3_t Data_Base::AddText(std::string_view sText) {
    if (IsAsciiText(sText.data(), sText.size())) [[likely]] {
        const u2_t uOffset = m_oHeap.AddText(sText);
        return u3_t{sText.size() + 1} << 32 | uOffset;
    }
    const Utf8_Text oText(sText);
    const u2_t uOffset = m_oHeap.AddText(oText.View());
    return u3_t{oText.Len() + 1} << 32 | uOffset;
}

void Data_Base::SetNewText(u2_t uId, std::string_view sText) {
    const u3_t uValue = AddText(sText);
    SetNewValue(uId, Node::String, static_cast<u2_t>(uValue), static_cast<u2_t>(uValue >> 32));
}

void Data_Base::DropValueSlow(Node& oNode) noexcept {
    m_oHeap.Drop(Data_Heap::BytesOf(oNode));
    m_uDead -= oNode.GetType() == Node::Zombi;
}

}  // namespace vok
