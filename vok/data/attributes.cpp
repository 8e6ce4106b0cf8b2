// SPDX-License-Identifier: MIT
// Attributes as a cursor gives them.
#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

void Data::SetAttVal(const char* sName, const char* sValue) {
    return Where("vok::Data::SetAttVal", [&] {
        Base& b = detail::LiveNodeOf(m_oBase, m_uId);
        if (sValue != nullptr) {
            return b.SetOutsideAttribute(m_uId, sName != nullptr ? sName : "", sValue);
        }
        const Utf8_Text oName(sName);
        if (oName.Len() == 0) Msg::UnallowedAttribute("");
        b.RemoveAttribute(m_uId, oName.View());
    });
}

const char* Data::GetAttVal(Data_Name oName) const {
    return Where("vok::Data::GetAttVal", [&]() -> const char* {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        const std::string_view sName = Base::TextOf(oName, &b);
        if (sName.empty() || !b.m_oAtt.Has(m_uId)) return nullptr;
        return b.AttributeOf(m_uId, Data_Names::LookIn(b.m_oAtt.Names(), sName));
    });
}

std::vector<std::pair<std::string_view, std::string_view>> Data::GetAttributes() const {
    Arr<const char*> oNames, oValues;
    GetAttributes(oNames, oValues, true);
    std::vector<std::pair<std::string_view, std::string_view>> asAttribute;
    asAttribute.reserve(oNames.Size());
    for (std::size_t u = 0; u < oNames.Size(); ++u) asAttribute.emplace_back(oNames(u), oValues(u));
    return asAttribute;
}

void Data::GetAttributes(Arr<const char*>& oNames, Arr<const char*>& oValues, bool bSorted,
                         bool bNamesOnly) const {
    return Where("vok::Data::GetAttributes", [&] {
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        oNames.Resize(0);
        oValues.Resize(0);
        Arr<u2_t> oKeys;
        bSorted ? b.m_oAtt.ListByName(m_uId, oKeys) : b.m_oAtt.List(m_uId, oKeys);
        for (const u2_t uKey : oKeys) {
            oNames.Add(b.m_oAtt.Names()(uKey).sText);
            if (!bNamesOnly) oValues.Add(b.AttributeOf(m_uId, uKey));
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
        u3_t uCopied = 0;
        for (const char* sValue : oValues) uCopied += *sValue != 0 ? std::strlen(sValue) + 1 : 0;
        // Within a tree values are shared.
        if (m_oBase != oDst.m_oBase) oDst.m_oBase->m_oHeap.CheckRoom(uCopied);
        oDst.RemoveAttributes();
        // Setting values may move the heap they stand in when both nodes share a tree.
        const char* pHeap = m_oBase->m_oHeap.Begin();
        for (std::size_t u = 0; u < oNames.Size(); ++u) {
            oDst.SetAttVal(oNames(u), m_oBase->m_oHeap.Begin() + (oValues(u) - pHeap));
        }
    });
}

}  // namespace vok
