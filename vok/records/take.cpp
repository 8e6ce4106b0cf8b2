// SPDX-License-Identifier: MIT
#include "vok/records/take.h"

#include <algorithm>
#include <string_view>

#include "vok/data/builder.h"
#include "vok/data/select.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/messages.h"

namespace vok::records {

using detail::Record_Source;
using dgraph::Access;

// The name of the record by its key in a tree, if that was looked up before.
[[gnu::always_inline]] inline Data_Name Taker::NameIn(Data_Base& b) {
    const u2_t uNth = m_oSource.Key();
    const Hash_Text& oName = m_oSource.Trail().NameText(uNth);
    if (uNth < m_oKeyOf.Size()) [[likely]] {
        // The tree may be another one by now, or have its names elsewhere.
        const u2_t uKey = m_oKeyOf(uNth);
        if (uKey < b.m_oName.Size() && b.m_oName(uKey).IsEqual(oName)) return Data_Key{uKey};
    }
    return FindName(b, uNth, oName);
}

Data_Name Taker::FindName(Data_Base& b, u2_t uNth, const Hash_Text& oName) {
    if (uNth >= m_oKeyOf.Size()) m_oKeyOf.Resize(uNth + std::size_t{1});
    m_oKeyOf(uNth) = b.m_oName.Intern(oName.View());
    return Data_Key{m_oKeyOf(uNth)};
}

inline void Taker::Note(u2_t uId) {
    const bool bEmpty = m_oSource.GetType() == Data_Node::Link;
    const bool bLink = bEmpty || m_oSource.LinkedNumber() != Record_Source::NO_NUMBER;
    if (bLink || m_oSource.Numbers().Size() != 0) NoteLinks(uId, bLink);
}

void Taker::NoteLinks(u2_t uId, bool bLink) {
    const bool bEmpty = m_oSource.GetType() == Data_Node::Link;
    if (bLink) {
        m_aoLink.push_back({uId, m_oSource.LinkedNumber(), bEmpty, Str(m_oSource.Text())});
    }
    for (const u3_t u : m_oSource.Numbers()) m_oNumber.Add(Numbered{u, uId});
}

inline void Taker::Append(Data_Builder& oBuilder, Data_Base& b) {
    const Data_Record& r = m_oSource;
    const Data_Name oName = NameIn(b);
    const u2_t uId = r.GetType() == Data_Node::Tree ? oBuilder.Open(oName) : oBuilder.Add(oName, r);
    Note(uId);
    for (const Data_Record::Attribute& o : r.GetAttributes()) oBuilder.SetAttVal(o.sName, o.sValue);
}

void Taker::TakeBelow(Data& oTree) {
    Data_Builder oBuilder(oTree);
    Data_Base& b = *Access::BaseOf(oTree);
    std::size_t uOpen = m_uTop + 1;  // the level that the builder appends to
    while (m_oSource.HasBelow(m_uTop) && m_oSource.Next()) {
        for (; uOpen > m_oSource.GetDepth(); --uOpen) oBuilder.Close();
        Append(oBuilder, b);
        uOpen += m_oSource.GetType() == Data_Node::Tree;
    }
    oBuilder.Finish();
}

bool Taker::BuildBelow(Data& oTree) {
    Record_Source::Built oBuilt;
    try {
        if (!m_oSource.BuildBelow(oTree, oBuilt)) return false;
    } catch (...) {
        NoteFault(oTree, oBuilt.uNode);
        throw;
    }
    for (auto& o : oBuilt.aoLink) {
        m_aoLink.push_back({o.uId, Record_Source::NO_NUMBER, true, std::move(o.oTarget)});
    }
    if (oBuilt.bGaps) NoteGaps(*Access::BaseOf(oTree));
    return true;
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

void Taker::Take(Data& oTree, Work& oWork) {
    m_aoOuter.clear();
    m_aoLink.clear();
    m_oFree.Truncate(0);
    m_oNumber.Truncate(0);
    oTree.SetUserTag(m_oTag.CStr());  // most trees have it from the record before
    m_uTop = m_oSource.GetDepth();
    const bool bTree = m_oSource.GetType() == Data_Node::Tree;
    TakeRoot(oTree);
    m_oSource.SkipNothing();
    if (bTree && !BuildBelow(oTree)) TakeBelow(oTree);
    oTree.SetToRoot();
    if (!m_aoLink.empty()) ResolveLinks(oTree, oWork);
    if (m_oFree.Size() != 0) oTree.Shrink();
}

void Taker::TakeRoot(Data& oTree) {
    const Data_Record& r = m_oSource;
    oTree.SetRootName(NameIn(*Access::BaseOf(oTree)));
    const Data_Node::Type eType = r.GetType();
    if (eType != Data_Node::Tree && eType != Data_Node::Link) oTree.SetValue(r);
    Note(0);
    for (const Data_Record::Attribute& o : r.GetAttributes()) oTree.SetAttVal(o.sName, o.sValue);
}

void Taker::ResolveLinks(Data& oTree, Work& oWork) {
    oWork.SetInput(m_oSource.Offset());
    oTree.SetAccessMode();
    // Of several nodes of one number the first one counts.
    std::stable_sort(m_oNumber.Beg(), m_oNumber.End(),
                     [](const Numbered& a, const Numbered& b) { return a.uNumber < b.uNumber; });
    for (const Pending_Link& o : m_aoLink) {
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
bool Taker::Resolve(Data& oTree, const Pending_Link& o, Work& oWork) {
    u2_t uTarget = 0;
    const bool bNumber = o.uNumber != Record_Source::NO_NUMBER;
    if (!(bNumber ? FindNumbered(o, uTarget) : FindPath(oTree, o, oWork, uTarget))) return false;
    oTree.GetNodeFromID(o.uId).SetValLink(oTree.GetNodeFromID(uTarget));
    return true;
}

bool Taker::FindNumbered(const Pending_Link& o, u2_t& uTarget) const {
    const Numbered* p =
        std::lower_bound(m_oNumber.begin(), m_oNumber.end(), o.uNumber,
                         [](const Numbered& a, u3_t uNumber) { return a.uNumber < uNumber; });
    if (p == m_oNumber.end() || p->uNumber != o.uNumber) return false;
    uTarget = p->uId;
    return true;
}

// False for a path out of the tree. Raises the errors of loading for one to nothing.
bool Taker::FindPath(const Data& oTree, const Pending_Link& o, Work& oWork, u2_t& uTarget) const {
    std::string_view sPath = o.oTarget.View();
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
