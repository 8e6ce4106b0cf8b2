// SPDX-License-Identifier: MIT
#include "vok/compare/side.h"

#include <cstring>

#include "vok/data/escape.h"
#include "vok/data/select.h"

namespace vok {

void Data_Side::Ignore(std::string_view sPath) {
    std::string_view sNodes = sPath;
    std::string_view sAttribute;
    const std::size_t uAt = sPath.starts_with('@') ? 0 : sPath.rfind("/@") + 1;
    if (sPath.substr(uAt).starts_with('@') &&
        sPath.find_first_of("/[]\"", uAt) == std::string_view::npos) {
        sNodes = sPath.substr(0, uAt);
        sAttribute = sPath.substr(uAt + 1);
    }
    // "//@name" is of all nodes; the top is one of them.
    const bool bAll = !sAttribute.empty() && sNodes == "//";
    std::string sSelect(sNodes);
    if (sSelect.empty()) sSelect.push_back('.');
    if (!sAttribute.empty() && sSelect.ends_with("//")) sSelect.push_back('*');
    const Limits oLimits;
    Work oWork(oLimits, sSelect.size() + m_oBase.m_oNode.Size() * sizeof(Data_Node));
    Arr<u2_t> oFound;
    detail::SelectNodes(m_oBase, m_uTop, sSelect.c_str(), oWork, oFound);
    if (bAll) oFound.Add(m_uTop);
    if (sAttribute.empty()) {
        m_bIgnores = true;
        for (const u2_t uId : oFound) {
            m_oIgnored(uId) = true;
            m_oPlace(uId) = HIDDEN;
        }
        return;
    }
    Data_IdMap<bool> oNodes(m_oBase.m_oNode.Size());
    for (const u2_t uId : oFound) oNodes(uId) = true;
    m_oAttribute.push_back({std::string(sAttribute), std::move(oNodes)});
}

bool Data_Side::IsIgnored(u2_t uId, std::string_view sAttribute) const noexcept {
    for (const Attribute& o : m_oAttribute) {
        if (o.sName == sAttribute && o.oNodes.Find(uId)) return true;
    }
    return false;
}

bool Data_Side::HasSameAttributes(u2_t uId, const Data_Side& oOther, u2_t uIdThere) const {
    const Data_Base& b = m_oBase;
    const Data_Base& o = oOther.m_oBase;
    if (!b.m_oAtt.Has(uId) && !o.m_oAtt.Has(uIdThere)) return true;
    Arr<u2_t> oKeys;
    Arr<u2_t> oKeysThere;
    b.m_oAtt.ListByName(uId, oKeys);
    o.m_oAtt.ListByName(uIdThere, oKeysThere);
    if (oKeys.Size() != oKeysThere.Size()) return false;
    for (std::size_t u = 0; u < oKeys.Size(); ++u) {
        if (b.m_oAtt.Names()(oKeys(u)).View() != o.m_oAtt.Names()(oKeysThere(u)).View() ||
            std::strcmp(b.AttributeOf(uId, oKeys(u)), o.AttributeOf(uIdThere, oKeysThere(u))) !=
                0) {
            return false;
        }
    }
    return true;
}

Data_Side::Place Data_Side::PlaceOf(u2_t uId) {
    const std::size_t uNodes = m_oBase.m_oNode.Size();
    u2_t uUp = uId;
    while (uUp < uNodes && m_oPlace.Find(uUp) == UNKNOWN) uUp = m_oBase.m_oNode(uUp).Pred();
    const Place ePlace = uUp < uNodes ? m_oPlace.Find(uUp) : DETACHED;
    for (u2_t u = uId; u != uUp; u = m_oBase.m_oNode(u).Pred()) m_oPlace(u) = ePlace;
    return ePlace;
}

u2_t Data_Side::Position(u2_t uId) {
    if (const u2_t uKnown = m_oPosition.Find(uId); uKnown != 0) return uKnown - 1;
    const Data_Base::Group oGroup = m_oBase.SuccOf(Node(uId).Pred());
    const Data_Base::Run oRun = m_oBase.FindRun(oGroup, Node(uId).uKey);
    u2_t uLive = 0;
    for (u2_t u = 0; u < oRun.uSize; ++u) {
        const u2_t uSucc = oGroup.pId[oRun.uFirst + u];
        if (IsLive(uSucc)) m_oPosition(uSucc) = ++uLive;
    }
    return m_oPosition.Find(uId) - 1;
}

void Data_Side::AppendPath(Arr<char>& oPath, u2_t uId, std::string_view sSlash) {
    m_oChain.Resize(0);
    for (u2_t u = uId; u != m_uTop; u = Node(u).Pred()) m_oChain.Add(u);
    oPath.Add(sSlash.data(), sSlash.size());
    for (std::size_t u = m_oChain.Size(); u-- > 0;) {
        if (u + 1 != m_oChain.Size()) oPath.Add('/');
        detail::AppendStep(oPath, NameOf(m_oChain(u)), Position(m_oChain(u)));
    }
}

}  // namespace vok
