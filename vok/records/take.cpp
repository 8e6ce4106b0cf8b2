// SPDX-License-Identifier: MIT
#include "vok/records/take.h"

#include <algorithm>
#include <string_view>

#include "vok/data/select.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/messages.h"

namespace vok::records {

using detail::Record_Source;
using dgraph::Access;

inline void Taker::TakeBelow(Data& oTree, Data_Base& b) {
    try {
        m_oSource.BuildBelow(oTree, b, m_oBuilt);
    } catch (...) {
        NoteFault(oTree, m_oBuilt.uNode);
        throw;
    }
    if (m_oBuilt.bGaps) NoteGaps(b);
}

void Taker::NoteGaps(const Data_Base& b) {
    for (u2_t u = 0; u < b.m_oNode.Size(); ++u) {
        if (b.m_oNode(u).GetType() == Data_Node::Zombi) m_oFree.Add(u);
    }
}

void Taker::NoteFault(const Data& oTree, u2_t uId) {
    const Str oPath = oTree.GetNodeFromID(uId).GetPath();
    if (m_uTop != 0) m_oFault = m_oSource.Trail().PathTo(m_uTop);
    if (m_uTop == 0 || oPath.Len() > 1) m_oFault.Add(oPath);
}

inline void Taker::TakeName(Data_Base& b) {
    const std::string_view sName = m_oSource.GetName();
    // Trees that follow each other mostly have the same name.
    const bool bSame = m_uName < b.m_oName.Size() && b.m_oName.IsText(m_uName, sName);
    if (!bSame) m_uName = b.m_oName.Intern(sName);
    b.m_oNode(0).uKey = m_uName;
}

// All else that the record says.
void Taker::TakeRoot(Data& oTree) {
    const Data_Record& r = m_oSource;
    const Data_Node::Type eType = r.GetType();
    if (eType != Data_Node::Tree && eType != Data_Node::Link) oTree.SetValue(r);
    for (const u3_t u : m_oSource.Numbers()) m_oBuilt.oNumber.Add(Built::Numbered{u, 0});
    const u3_t uLinked = m_oSource.LinkedNumber();
    const bool bEmpty = eType == Data_Node::Link;
    if (bEmpty || uLinked != Record_Source::NO_NUMBER) {
        m_oBuilt.aoLink.push_back({0, uLinked, bEmpty, Str(r.Text())});
    }
    for (const Data_Record::Attribute& o : r.GetAttributes()) oTree.SetAttVal(o.sName, o.sValue);
}

void Taker::Take(Data& oTree, Work& oWork) {
    m_aoOuter.clear();
    m_oBuilt.aoLink.clear();
    m_oBuilt.oNumber.Truncate(0);
    m_oBuilt.bGaps = false;
    m_oFree.Truncate(0);
    Data_Base& b = *Access::BaseOf(oTree);
    b.m_oUserTag.Set(m_oTag.View());
    m_uTop = m_oSource.GetDepth();
    const bool bTree = m_oSource.GetType() == Data_Node::Tree;
    TakeName(b);
    if (!m_oSource.IsBareTree()) TakeRoot(oTree);
    m_oSource.SkipNothing();
    if (bTree) TakeBelow(oTree, b);
    Access::ToRoot(oTree);
    if (!m_oBuilt.aoLink.empty()) ResolveLinks(oTree, oWork);
    if (m_oFree.Size() != 0) oTree.Shrink();
}

void Taker::ResolveLinks(Data& oTree, Work& oWork) {
    oWork.SetInput(m_oSource.Offset());
    oTree.SetAccessMode();
    // Of several nodes of one number the first one counts.
    std::stable_sort(m_oBuilt.oNumber.Beg(), m_oBuilt.oNumber.End(),
                     [](const auto& a, const auto& b) { return a.uNumber < b.uNumber; });
    for (const Built::Link& o : m_oBuilt.aoLink) {
        try {
            if (Resolve(oTree, o, oWork) || !o.bEmpty) continue;
        } catch (...) {
            NoteFault(oTree, o.uId);
            throw;
        }
        // Places that were free are gone in the end.
        const auto pBehind = std::lower_bound(m_oFree.begin(), m_oFree.end(), o.uId);
        m_aoOuter.push_back({o.uId - static_cast<u2_t>(pBehind - m_oFree.begin()), o.oTarget});
    }
}

// False where the target is not in the tree.
bool Taker::Resolve(Data& oTree, const Built::Link& o, Work& oWork) {
    u2_t uTarget = 0;
    const bool bNumber = o.uNumber != Record_Source::NO_NUMBER;
    if (!(bNumber ? FindNumbered(o.uNumber, uTarget)
                  : FindPath(oTree, o.oTarget, oWork, uTarget))) {
        return false;
    }
    oTree.GetNodeFromID(o.uId).SetValLink(oTree.GetNodeFromID(uTarget));
    return true;
}

bool Taker::FindNumbered(u3_t uNumber, u2_t& uTarget) const {
    const Arr<Built::Numbered>& oNumber = m_oBuilt.oNumber;
    const Built::Numbered* p = std::lower_bound(
        oNumber.begin(), oNumber.end(), uNumber,
        [](const Built::Numbered& a, u3_t uWanted) { return a.uNumber < uWanted; });
    if (p == oNumber.end() || p->uNumber != uNumber) return false;
    uTarget = p->uId;
    return true;
}

// False for a path out of the tree. Raises the errors of loading for one to nothing.
bool Taker::FindPath(const Data& oTree, const Str& oTarget, Work& oWork, u2_t& uTarget) const {
    std::string_view sPath = oTarget.View();
    if (m_uTop != 0) {
        const Str oTop = m_oSource.Trail().PathTo(m_uTop);
        const std::string_view sTop = oTop.View().substr(1);  // no slash in front
        if (!sPath.starts_with(sTop)) return false;
        if (sPath.size() > sTop.size() && sPath[sTop.size()] != '/') return false;
        sPath.remove_prefix(sTop.size());
    }
    Arr<u2_t> oFound;
    detail::SelectNodes(*Access::BaseOf(oTree), 0, sPath.empty() ? "/" : sPath.data(), oWork,
                        oFound);
    if (oFound.Size() == 0) dgraph::RaiseTargetMissing();
    if (oFound.Size() > 1) dgraph::RaiseTargetNotUnique();
    uTarget = oFound(0);
    return true;
}

}  // namespace vok::records
