// Attributes: one array of (node, text) per attribute name, and from node to name a chain.
#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

namespace {

[[nodiscard]] bool IsBefore(const Data_Att& oA, const Data_Att& oB) noexcept {
    return oA.uId < oB.uId;
}

// The first record of a run whose node is not below uId.
[[nodiscard]] const Data_Att* Search(const Data_Att* pBegin, const Data_Att* pEnd,
                                     u2_t uId) noexcept {
    return std::lower_bound(pBegin, pEnd, uId, [](const Data_Att& a, u2_t u) { return a.uId < u; });
}

// The record of a node, null when there is none.
[[nodiscard]] const Data_Att* FindAtt(const Data_AttArr& o, u2_t uId) noexcept {
    const Arr<Data_Att>& oAtt = o.oAtt;
    const u2_t uSize = static_cast<u2_t>(oAtt.Size());
    const runs::Starts* pRuns = o.oRuns.Size() != 0 ? o.oRuns.Beg() : nullptr;
    const u2_t uRuns = pRuns != nullptr ? pRuns->uCount : 1;
    for (u2_t u = 0; u < uRuns; ++u) {
        const u2_t uFrom = pRuns != nullptr ? pRuns->auStart[u] : 0;
        const Data_Att* pEnd = oAtt.Beg() + (pRuns != nullptr ? pRuns->End(u, uSize) : uSize);
        const Data_Att* pFound = Search(oAtt.Beg() + uFrom, pEnd, uId);
        if (pFound != pEnd && pFound->uId == uId) return pFound;
    }
    return nullptr;
}

}  // namespace

// ---- store ------------------------------------------------------------------

u2_t Data_Base::InternAttribute(std::string_view sName) {
    const u2_t uName = m_oAttName.Insert(sName);
    // Also those of earlier attempts that ran out of memory right here.
    while (uName > m_oAttArr.Size()) {
        m_oAttArr.ReserveMore(1);
        void* pData = Mem::Create(sizeof(Data_AttArr));
        m_oAttArr.Add(new (pData) Data_AttArr);
    }
    return uName;
}

void Data_Base::SetAttribute(u2_t uId, std::string_view sName, std::string_view sValue) {
    const u2_t uName = InternAttribute(sName);
    Data_AttArr& oArr = *m_oAttArr(uName - 1);
    Arr<Data_Att>& oAtt = oArr.oAtt;
    // Loaders and copies come in the order of ids: no search for them.
    const bool bLast =
        oAtt.Size() == 0 || (oArr.oRuns.Size() == 0 && oAtt(oAtt.Size() - 1).uId < uId);
    const Data_Att* pFound = bLast ? nullptr : FindAtt(oArr, uId);
    const u2_t uOld = pFound != nullptr ? pFound->uValue : Data_Att::NO_VALUE;
    if (uOld != Data_Att::NO_VALUE && sValue == HeapAt(uOld)) return;

    StartHeap();
    if (m_oAttHead.Size() <= uId) m_oAttHead.Resize(m_oNode.Size());
    const u2_t uValue = sValue.empty()       ? 0
                        : IsHeapText(sValue) ? static_cast<u2_t>(sValue.data() - m_oStr.Beg())
                                             : AddText(sValue);
    if (pFound == nullptr) {
        AddRecord(oArr, Data_Att{uId, uValue, m_oAttHead(uId)});
        m_oAttHead(uId) = uName;
        return;
    }
    m_uDeadAtts -= uOld == Data_Att::NO_VALUE;
    DropText(uOld);
    oAtt(static_cast<std::size_t>(pFound - oAtt.Beg())).uValue = uValue;
}

// Behind all others, where it begins a run unless it belongs there.
void Data_Base::AddRecord(Data_AttArr& o, const Data_Att& oNew) {
    Arr<Data_Att>& oAtt = o.oAtt;
    const u2_t uSize = static_cast<u2_t>(oAtt.Size());
    oAtt.ReserveMore(1);
    const bool bInOrder = uSize == 0 || oAtt(uSize - 1).uId < oNew.uId;
    if (!bInOrder && o.oRuns.Size() == 0) o.oRuns.Add(runs::Starts{1, {0}});
    oAtt.Add(oNew);
    if (o.oRuns.Size() == 0) return;
    runs::Starts& oRuns = o.oRuns(0);
    // The last run took it; it may be long enough now to be merged.
    const u2_t uBegin = bInOrder ? oRuns.auStart[--oRuns.uCount] : uSize;
    m_uMoved += runs::Add(oRuns, oAtt.Beg(), uBegin, uSize + 1, IsBefore);
    if (oRuns.uCount == 1) o.oRuns.Clear();
}

void Data_Base::SettleAttributes(Data_AttArr& o) noexcept {
    if (o.oRuns.Size() == 0) return;
    m_uMoved +=
        runs::MergeAll(o.oRuns(0), o.oAtt.Beg(), static_cast<u2_t>(o.oAtt.Size()), IsBefore);
    o.oRuns.Clear();
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

// Gives an attribute the value back that it had, which may be none.
void Data_Base::RestoreValue(u2_t uId, u2_t uName, u2_t uValue) noexcept {
    const Data_Att* pFound = FindRecord(uId, uName);
    if (pFound == nullptr || pFound->uValue == uValue) return;
    Arr<Data_Att>& oAtt = m_oAttArr(uName - 1)->oAtt;
    m_uDeadAtts -= pFound->uValue == Data_Att::NO_VALUE;
    m_uDeadAtts += uValue == Data_Att::NO_VALUE;
    oAtt(static_cast<std::size_t>(pFound - oAtt.Beg())).uValue = uValue;
}

const Data_Att* Data_Base::FindRecord(u2_t uId, u2_t uName) const noexcept {
    if (uName == 0 || uName > m_oAttArr.Size()) return nullptr;
    return FindAtt(*m_oAttArr(uName - 1), uId);
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
        if (b.m_oNode(m_uId).GetType() == Node::Zombi) Msg::TryToAccessDeletedNode();
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
