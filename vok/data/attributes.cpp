// Attributes: one array of (node, text) per attribute name, and from node to name a chain.
#include <algorithm>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

namespace {

[[nodiscard]] const Data_Att* FindAtt(const Arr<Data_Att>& oAtt, u2_t uId) noexcept {
    return std::lower_bound(oAtt.Beg(), oAtt.End(), uId,
                            [](const Data_Att& a, u2_t u) { return a.uId < u; });
}

}  // namespace

// ---- store ------------------------------------------------------------------

u2_t Data_Base::InternAttribute(std::string_view sName) {
    m_oAttArr.Reserve(m_oAttArr.Size() == m_oAttArr.Capacity() ? 2 * m_oAttArr.Size() + 4 : 0);
    const u2_t uName = m_oAttName.Insert(sName);
    // Also after an earlier attempt that ran out of memory right here.
    if (uName > m_oAttArr.Size()) {
        void* pData = Mem::Create(sizeof(Data_AttArr));
        m_oAttArr.Add(new (pData) Data_AttArr);
    }
    return uName;
}

void Data_Base::SetAttribute(u2_t uId, std::string_view sName, std::string_view sValue) {
    const u2_t uName = InternAttribute(sName);
    Arr<Data_Att>& oAtt = m_oAttArr(uName - 1)->oAtt;
    // Loaders and copies come in the order of ids: no search for them.
    const bool bLast = oAtt.Size() == 0 || oAtt(oAtt.Size() - 1).uId < uId;
    const std::size_t uNth =
        bLast ? oAtt.Size() : static_cast<std::size_t>(FindAtt(oAtt, uId) - oAtt.Beg());
    const bool bFound = uNth < oAtt.Size() && oAtt(uNth).uId == uId;
    const u2_t uOld = bFound ? oAtt(uNth).uValue : Data_Att::NO_VALUE;
    if (uOld != Data_Att::NO_VALUE && sValue == HeapAt(uOld)) return;

    StartHeap();
    if (m_oAttHead.Size() <= uId) m_oAttHead.Resize(m_oNode.Size());
    const u2_t uValue = sValue.empty()       ? 0
                        : IsHeapText(sValue) ? static_cast<u2_t>(sValue.data() - m_oStr.Beg())
                                             : AddText(sValue);
    if (!bFound) {
        oAtt.Insert(uNth, Data_Att{uId, uValue, m_oAttHead(uId)});
        m_oAttHead(uId) = uName;
        return;
    }
    m_uDeadAtts -= uOld == Data_Att::NO_VALUE;
    DropText(uOld);
    oAtt(uNth).uValue = uValue;
}

void Data_Base::RemoveAttribute(u2_t uId, std::string_view sName) {
    const u2_t uName = m_oAttName.Find(sName);
    const Data_Att* pFound = FindRecord(uId, uName);
    if (pFound == nullptr || pFound->uValue == Data_Att::NO_VALUE) return;
    Arr<Data_Att>& oAtt = m_oAttArr(uName - 1)->oAtt;
    DropText(pFound->uValue);
    oAtt(static_cast<std::size_t>(pFound - oAtt.Beg())).uValue = Data_Att::NO_VALUE;
    ++m_uDeadAtts;
}

const Data_Att* Data_Base::FindRecord(u2_t uId, u2_t uName) const noexcept {
    if (uName == 0 || uName > m_oAttArr.Size()) return nullptr;
    Arr<Data_Att>& oAtt = m_oAttArr(uName - 1)->oAtt;
    const Data_Att* pAtt = FindAtt(oAtt, uId);
    return pAtt != oAtt.End() && pAtt->uId == uId ? pAtt : nullptr;
}

u2_t Data_Base::FindAttribute(u2_t uId, u2_t uName) const noexcept {
    const Data_Att* pAtt = FindRecord(uId, uName);
    return pAtt != nullptr ? pAtt->uValue : Data_Att::NO_VALUE;
}

void Data_Base::ListAttributes(u2_t uId, Arr<u2_t>& oKeys) const {
    oKeys.Resize(0);
    if (!HasAttributes(uId)) return;
    for (u2_t uName = m_oAttHead(uId); uName != 0;) {
        const Data_Att* pAtt = FindRecord(uId, uName);
        if (pAtt->uValue != Data_Att::NO_VALUE) oKeys.Add(uName);
        uName = pAtt->uNext;
    }
    std::sort(oKeys.Beg(), oKeys.End());
}

void Data_Base::DropText(u2_t uOffset) noexcept {
    if (uOffset == 0 || uOffset == Data_Att::NO_VALUE) return;
    m_uGarbage += std::strlen(HeapAt(uOffset)) + 1;
}

bool Data_Base::IsHeapText(std::string_view sText) const noexcept {
    return sText.data() >= m_oStr.Beg() && sText.data() + sText.size() < m_oStr.End() &&
           sText.data()[sText.size()] == 0;
}

// ---- cursor -----------------------------------------------------------------

void Data::SetAttVal(const char* sName, const char* sValue) {
    return Where("vok::Data::SetAttVal", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        const Utf8_Text oName(sName);
        if (oName.Len() == 0) Msg::UnallowedAttribute("");
        if (sValue == nullptr) return b.RemoveAttribute(m_uId, oName.View());
        const Utf8_Text oValue(sValue);
        b.SetAttribute(m_uId, oName.View(), oValue.View());
    });
}

const char* Data::GetAttVal(const char* sName) const {
    return Where("vok::Data::GetAttVal", [&]() -> const char* {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        if (sName == nullptr || *sName == 0 || !b.HasAttributes(m_uId)) return nullptr;
        const Utf8_Text oName(sName);
        const u2_t uValue = b.FindAttribute(m_uId, b.m_oAttName.Find(oName.View()));
        return uValue != Data_Att::NO_VALUE ? b.HeapAt(uValue) : nullptr;
    });
}

void Data::GetAttributes(Arr<const char*>& oNames, Arr<const char*>& oValues, bool bSorted,
                         bool bNamesOnly) const {
    return Where("vok::Data::GetAttributes", [&] {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        oNames.Resize(0);
        oValues.Resize(0);
        Arr<u2_t> oKeys;
        b.ListAttributes(m_uId, oKeys);
        if (bSorted) {
            std::sort(oKeys.Beg(), oKeys.End(),
                      [&](u2_t uA, u2_t uB) { return b.m_oAttName.IsLess(uA, uB); });
        }
        for (const u2_t* p = oKeys.Beg(); p != oKeys.End(); ++p) {
            oNames.Add(b.m_oAttName(*p).sText);
            if (!bNamesOnly) oValues.Add(b.HeapAt(b.FindAttribute(m_uId, *p)));
        }
    });
}

void Data::RemoveAttributes() {
    return Where("vok::Data::RemoveAttributes", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        Arr<const char*> oNames;
        Arr<const char*> oNone;
        GetAttributes(oNames, oNone, false, true);
        for (const char** p = oNames.Beg(); p != oNames.End(); ++p) b.RemoveAttribute(m_uId, *p);
    });
}

void Data::CopyAtt(Data& oDst) const {
    return Where("vok::Data::CopyAtt", [&] {
        if (!m_oBase || !oDst.m_oBase || *this == oDst) return;
        Arr<const char*> oNames;
        Arr<const char*> oValues;
        GetAttributes(oNames, oValues);
        oDst.RemoveAttributes();
        // Setting values may move the heap they stand in when both nodes share a tree.
        const char* pHeap = m_oBase->m_oStr.Beg();
        for (std::size_t u = 0; u < oNames.Size(); ++u) {
            oDst.SetAttVal(oNames(u), m_oBase->m_oStr.Beg() + (oValues(u) - pHeap));
        }
    });
}

}  // namespace vok
