// SPDX-License-Identifier: MIT
#include "vok/compare/pairs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace vok {

bool IsWithin(const Data_Node& oA, const Data_Node& oB, double dDelta) noexcept {
    const double dA = std::bit_cast<double>(oA.Value64());
    const double dB = std::bit_cast<double>(oB.Value64());
    return dA == dB || std::fabs(dA - dB) <= dDelta || (std::isnan(dA) && std::isnan(dB));
}

bool Data_ComparePairs::IsWithinDelta(u2_t uA, u2_t uB) const noexcept {
    const Data_Node::Type eType = a.Node(uA).GetType();
    const bool bReal = eType == Data_Node::Float || eType == Data_Node::Double;
    return bReal && m_dDelta > 0 && IsWithin(a.Node(uA), b.Node(uB), m_dDelta);
}

void Data_ComparePairs::CompareNames() {
    const u2_t uA = a.m_uTop;
    const u2_t uB = b.m_uTop;
    // The name that an unnamed root goes by is as good as none.
    if (a.NameOf(uA) != b.NameOf(uB) &&
        std::string_view(a.m_oBase.ShownName(uA)) != b.m_oBase.ShownName(uB)) {
        Report({Data_Difference::Name, uA, uB});
    }
}

void Data_ComparePairs::CompareAttributes(u2_t uA, u2_t uB) {
    const Data_Attributes& oOfA = a.m_oBase.m_oAtt;
    const Data_Attributes& oOfB = b.m_oBase.m_oAtt;
    oOfA.ListByName(uA, m_oAttA);
    oOfB.ListByName(uB, m_oAttB);
    for (std::size_t uNthA = 0, uNthB = 0; !m_bStopped;) {
        const bool bA = uNthA != m_oAttA.Size();
        const bool bB = uNthB != m_oAttB.Size();
        if (!bA && !bB) return;
        const char* sA = bA ? oOfA.Names()(m_oAttA(uNthA)).sText : nullptr;
        const char* sB = bB ? oOfB.Names()(m_oAttB(uNthB)).sText : nullptr;
        const int iOrder = !bA ? 1 : !bB ? -1 : std::strcmp(sA, sB);
        const bool bSame =
            iOrder == 0 && std::strcmp(a.m_oBase.AttributeOf(uA, m_oAttA(uNthA)),
                                       b.m_oBase.AttributeOf(uB, m_oAttB(uNthB))) == 0;
        uNthA += iOrder <= 0;
        uNthB += iOrder >= 0;
        if (bSame || (iOrder <= 0 && a.IsIgnored(uA, sA)) || (iOrder >= 0 && b.IsIgnored(uB, sB))) {
            continue;
        }
        Report({Data_Difference::Attribute, uA, uB, iOrder <= 0 ? sA : sB});
    }
}

void Data_ComparePairs::CompareLinks() {
    if (m_bStopped || m_oLink.Size() == 0) return;
    std::sort(m_oPair.Beg(), m_oPair.End(),
              [](const IdPair& x, const IdPair& y) { return x.uA < y.uA; });
    for (std::size_t u = 0; u < m_oLink.Size() && !m_bStopped; ++u) {
        const IdPair oLink = m_oLink(u);
        if (IsSameTarget(a.Target(oLink.uA), b.Target(oLink.uB))) continue;
        Report({Data_Difference::Value, oLink.uA, oLink.uB});
    }
}

bool Data_ComparePairs::IsSameTarget(u2_t uA, u2_t uB) {
    if (a.IsHidden(uA) || b.IsHidden(uB)) return true;
    if (uA == NONE || uB == NONE) return uA == uB;
    const bool bInA = a.PlaceOf(uA) == Data_Side::INSIDE;
    if (bInA != (b.PlaceOf(uB) == Data_Side::INSIDE)) return false;
    if (bInA) {
        const IdPair* p = std::lower_bound(m_oPair.Beg(), m_oPair.End(), uA,
                                           [](const IdPair& x, u2_t uId) { return x.uA < uId; });
        return p != m_oPair.End() && p->uA == uA && p->uB == uB;
    }
    if (m_bSameTree) return uA == uB;
    return a.Cursor(uA).GetPath() == b.Cursor(uB).GetPath();
}

}  // namespace vok
