#include "vok/data/store.h"

#include <cstring>

#include "vok/base/utf8.h"

namespace vok {

void Dispose(Data_Base* pBase) noexcept {
    pBase->~Data_Base();
    Mem::Free(pBase);
}

const char* Data_Node::TypeName(u2_t uType) noexcept {
    static constexpr const char* NAMES[16] = {
        "Empty",  "Boolean", "Integer", "Char", "Float",   "Double", "Date", "String",
        "Binary", "Long",    "Quad",    "Unknown", "Link", "Tree",   "Unknown", "Zombi"};
    return NAMES[uType & 15];
}

Data_Base::Data_Base() {
    m_oNode.Add(Node{0, 0, 0, 0});
}

Data_Base::~Data_Base() {
    for (std::size_t u = 0; u < m_oAttArr.Size(); ++u) Mem::Dispose(m_oAttArr(u));
}

// ---- names ------------------------------------------------------------------

u2_t Data_Base::Intern(const char* sName) {
    return sName != nullptr ? Intern(std::string_view(sName)) : 0;
}

u2_t Data_Base::Intern(std::string_view sName) {
    bool bNew;
    if (IsAscii(sName.data(), sName.size())) return m_oName.Insert(sName, bNew);
    return m_oName.Insert(Utf8_Text(sName).View(), bNew);
}

u2_t Data_Base::FindKey(const char* sName) const {
    if (sName == nullptr) return 0;
    return m_oName.Find(Utf8_Text(sName).View());
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

void Data_Base::RaiseFull(u2_t uParent) const {
    if (uParent >= Node::CUT_LOOSE - 1) Msg::AssertionFailed("uParent + 1 < 0xFFFFFF");
    Msg::AssertionFailed("vok::Msg::IsInt32(x)");
}

void Data_Base::MakeTree(Node& oNode) noexcept {
    DropValue(oNode);
    oNode.SetType(Node::Tree);
    oNode.uWord2 = NONE;
    oNode.uWord3 = 1;
}

// ---- values -----------------------------------------------------------------

u2_t Data_Base::AddHeap(const void* pData, std::size_t uSize) {
    StartHeap();
    const char* pSrc = static_cast<const char*>(pData);
    const std::size_t uOffset = m_oStr.Size();
    if (uSize > 0x7FFFFFFF - uOffset || uOffset > 0x7FFFFFFF) {
        Msg::AssertionFailed("vok::Msg::IsInt32(x)");
    }
    const bool bOwn = pSrc >= m_oStr.Beg() && pSrc < m_oStr.End();
    const std::size_t uFrom = bOwn ? static_cast<std::size_t>(pSrc - m_oStr.Beg()) : 0;
    char* pDst = m_oStr.AddSpace(uSize);
    if (uSize != 0) std::memcpy(pDst, bOwn ? m_oStr.Beg() + uFrom : pSrc, uSize);
    return static_cast<u2_t>(uOffset);
}

u2_t Data_Base::AddText(std::string_view sText) {
    StartHeap();
    if (sText.empty()) return 0;
    const std::size_t uOffset = m_oStr.Size();
    if (sText.size() > 0x7FFFFFFE - uOffset || uOffset > 0x7FFFFFFE) [[unlikely]] {
        Msg::AssertionFailed("vok::Msg::IsInt32(x)");
    }
    const char* pSrc = sText.data();
    const bool bOwn = pSrc >= m_oStr.Beg() && pSrc < m_oStr.End();
    const std::size_t uFrom = bOwn ? static_cast<std::size_t>(pSrc - m_oStr.Beg()) : 0;
    char* pDst = m_oStr.AddSpace(sText.size() + 1);
    std::memcpy(pDst, bOwn ? m_oStr.Beg() + uFrom : pSrc, sText.size());
    pDst[sText.size()] = 0;
    return static_cast<u2_t>(uOffset);
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
