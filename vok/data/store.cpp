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

Data_Base::Data_Base() {
    m_oName.Start();
    m_oNode.Reserve(FIRST_NODES);
    m_oNode.Add(Node{0, 0, 0, 0});
}

Data_Base::~Data_Base() {
    for (std::size_t u = 0; u < m_oAttArr.Size(); ++u) Mem::Dispose(m_oAttArr(u));
}

std::size_t Data_Base::HeapBytes() const noexcept {
    std::size_t uBytes = sizeof(Data_Base) + Mem::HEADER_SIZE + m_oName.HeapBytes() +
                         m_oGuess.HeapBytes() + m_oAttName.HeapBytes() + m_oUserTag.Size();
    uBytes += m_oNode.Capacity() * sizeof(Node) + m_oStr.Capacity();
    uBytes += 4 * (m_oSucc.Capacity() + m_oAttHead.Capacity());
    uBytes += m_oUnsorted.Capacity() * sizeof(Data_Unsorted);
    for (const Data_AttArr* p : m_oAttArr) {
        uBytes += sizeof(Data_AttArr) + p->oAtt.Capacity() * sizeof(Data_Att) +
                  p->oRuns.Capacity() * sizeof(runs::Starts);
    }
    return uBytes + m_oAttArr.Capacity() * sizeof(void*);
}

// ---- names ------------------------------------------------------------------

u2_t Data_Base::InternSlow(std::string_view sName) {
    const u2_t uKey = IsPlainText(sName.data(), sName.size())
                          ? m_oName.Insert(sName)
                          : m_oName.Insert(Utf8_Text(sName).View());
    m_oGuess.Note(uKey, uKey != 0, m_oName.Size());
    return uKey;
}

u2_t Data_Base::FindKey(const char* sName) const {
    if (sName == nullptr) return 0;
    const std::string_view sText(sName);
    if (IsPlainText(sText.data(), sText.size())) [[likely]]
        return m_oName.Find(sText);
    return m_oName.Find(Utf8_Text(sText).View());
}

// ---- nodes ------------------------------------------------------------------

void Data_Base::CheckAppendSlow(u2_t uParent) const {
    const Node& oNode = m_oNode(uParent);
    const Node::Type eType = oNode.GetType();
    if (eType == Node::Zombi) Msg::TryToAccessDeletedNode();
    // White space between elements is no value.
    const bool bBlank = eType == Node::String &&
                        HeapAt(oNode.uWord2)[std::strspn(HeapAt(oNode.uWord2), " \t\n\r\f")] == 0;
    if (!bBlank) Msg::NodeWithWrongDataType(ShownName(uParent), Node::TypeName(eType));
}

void Data_Base::CheckIds(u2_t uParent, std::size_t uCount) const {
    // The id plus one must not look like a node cut loose.
    if (uParent >= Node::CUT_LOOSE - 1) Msg::AssertionFailed("uParent + 1 < 0xFFFFFF");
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

// ---- values -----------------------------------------------------------------

char* Data_Base::HeapSpace(std::size_t uSize) {
    StartHeap();
    const std::size_t uOffset = m_oStr.Size();
    if (uSize > 0x7FFFFFFF || uOffset > 0x7FFFFFFF - uSize) [[unlikely]] {
        Msg::AssertionFailed("vok::Msg::IsInt32(x)");
    }
    char* pSpace = m_oStr.AddSpace(uSize + HEAP_SLACK);
    m_oStr.Truncate(uOffset + uSize);
    return pSpace;
}

// Copies to the end of the heap, from where it may itself have been moved by making room.
u2_t Data_Base::AppendHeap(const char* pSrc, std::size_t uSize, std::size_t uExtra) {
    const bool bOwn = pSrc >= m_oStr.Beg() && pSrc < m_oStr.End();
    const std::size_t uFrom = bOwn ? static_cast<std::size_t>(pSrc - m_oStr.Beg()) : 0;
    char* pDst = HeapSpace(uSize + uExtra);
    CopyBytes(pDst, bOwn ? m_oStr.Beg() + uFrom : pSrc, uSize);
    if (uExtra != 0) pDst[uSize] = 0;
    return static_cast<u2_t>(pDst - m_oStr.Beg());
}

u2_t Data_Base::AddHeap(const void* pData, std::size_t uSize) {
    return AppendHeap(static_cast<const char*>(pData), uSize, 0);
}

u2_t Data_Base::AddText(std::string_view sText) {
    StartHeap();
    return sText.empty() ? 0 : AppendHeap(sText.data(), sText.size(), 1);
}

void Data_Base::SetNewText(u2_t uId, std::string_view sText) {
    if (IsPlainText(sText.data(), sText.size())) [[likely]] {
        SetNewValue(uId, Node::String, AddText(sText), static_cast<u2_t>(sText.size() + 1));
        return;
    }
    const Utf8_Text oText(sText);
    SetNewValue(uId, Node::String, AddText(oText.View()), static_cast<u2_t>(oText.Len() + 1));
}

void Data_Base::DropValueSlow(Node& oNode) noexcept {
    switch (oNode.GetType()) {
        case Node::String:
            if (oNode.uWord2 != 0) m_uGarbage += oNode.uWord3;
            break;
        case Node::Binary: m_uGarbage += oNode.uWord3; break;
        case Node::Quad: m_uGarbage += 12; break;
        case Node::Zombi: --m_uDead; break;
        default: break;
    }
}

}  // namespace vok
