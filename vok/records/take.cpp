#include "vok/records/take.h"

#include <algorithm>
#include <string_view>

#include "vok/data/builder.h"
#include "vok/data/select.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/messages.h"

namespace vok::records {

namespace {

using detail::Record_Source;
using dgraph::Access;

class Taker {
  public:
    Taker(Data& oTree, Record_Source& oSource)
        : m_oTree(oTree), m_oSource(oSource), m_uTop(oSource.GetDepth()) {}

    void TakeRoot();
    void TakeBelow();
    void ResolveLinks(Work& oWork, std::vector<Data_Reader::Outer_Link>& aoOuter, Str& oFault);

  private:
    // A node that is to lead to another.
    struct Pending_Link {
        u2_t uId;
        u3_t uNumber;  // of its target; NO_NUMBER where that is told by its path
        bool bEmpty;   // it is nothing else
        Str oTarget;
    };
    struct Numbered {
        u3_t uNumber;
        u2_t uId;
    };

    // Whether it is open now.
    bool Append(Data_Builder& oBuilder);
    void NoteLink(u2_t uId) {
        const bool bEmpty = m_oSource.GetType() == Data_Node::Link;
        if (!bEmpty && m_oSource.LinkedNumber() == Record_Source::NO_NUMBER) return;
        m_aoLink.push_back({uId, m_oSource.LinkedNumber(), bEmpty, Str(m_oSource.Text())});
    }
    void NoteNumbers(u2_t uId) {
        for (const u3_t u : m_oSource.Numbers()) m_oNumber.Add(Numbered{u, uId});
    }
    [[nodiscard]] bool Resolve(const Pending_Link& o, Work& oWork);
    [[nodiscard]] bool FindNumbered(const Pending_Link& o, u2_t& uTarget) const;
    [[nodiscard]] bool FindPath(const Pending_Link& o, Work& oWork, u2_t& uTarget);

    Data& m_oTree;
    Record_Source& m_oSource;
    const std::size_t m_uTop;
    Str m_oTopPath;     // "" for the root
    Arr<u2_t> m_oFree;  // ids of what stands for free places, ascending
    Arr<Numbered> m_oNumber;
    std::vector<Pending_Link> m_aoLink;
};

void Taker::TakeRoot() {
    const Data_Record& r = m_oSource;
    if (m_uTop != 0) m_oTopPath = m_oSource.Trail().PathTo(m_uTop);
    m_oTree.SetRootName(r.GetName());
    const std::string_view sText = r.Text();
    const auto& au = r.QuadWords();
    switch (const Data_Node::Type eType = r.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char: m_oTree.SetValInt(r.Int(), eType); break;
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date: m_oTree.SetValDbl(r.Dbl(), eType); break;
        case Data_Node::Long: m_oTree.SetValLng(r.Lng()); break;
        case Data_Node::String: m_oTree.SetValStr(sText); break;
        case Data_Node::Binary:
            m_oTree.SetValBin(sText.data(), static_cast<u2_t>(sText.size()));
            break;
        case Data_Node::Quad: m_oTree.SetValQuad(au[0], au[1], au[2], au[3]); break;
        default: break;
    }
    NoteLink(0);
    NoteNumbers(0);
    for (const Data_Record::Attribute& o : r.GetAttributes()) m_oTree.SetAttVal(o.sName, o.sValue);
}

void Taker::TakeBelow() {
    Data_Builder oBuilder(m_oTree);
    std::size_t uOpen = 0;
    while (m_oSource.HasBelow(m_uTop) && m_oSource.Next()) {
        for (; uOpen > m_oSource.GetDepth() - m_uTop - 1; --uOpen) oBuilder.Close();
        // They are nodes until links are resolved, which may count them.
        for (u2_t u = m_oSource.FreePlaces(); u != 0; --u) {
            m_oFree.Add(oBuilder.AddEmpty(m_oSource.GetName()));
        }
        uOpen += Append(oBuilder);
    }
    oBuilder.Finish();
    for (const u2_t u : m_oFree) m_oTree.GetNodeFromID(u).Remove();
}

bool Taker::Append(Data_Builder& oBuilder) {
    const Data_Record& r = m_oSource;
    const std::string_view sName = r.GetName();
    const std::string_view sText = r.Text();
    const auto& au = r.QuadWords();
    u2_t uId = 0;
    switch (r.GetType()) {
        case Data_Node::Tree: uId = oBuilder.Open(sName); break;
        case Data_Node::Boolean: uId = oBuilder.AddBool(sName, r.Int() != 0); break;
        case Data_Node::Integer: uId = oBuilder.AddInt(sName, r.Int()); break;
        case Data_Node::Char: uId = oBuilder.AddChar(sName, r.Int()); break;
        case Data_Node::Float: uId = oBuilder.AddFlt(sName, r.Dbl()); break;
        case Data_Node::Double: uId = oBuilder.AddDbl(sName, r.Dbl()); break;
        case Data_Node::Date: uId = oBuilder.AddDate(sName, r.Dbl()); break;
        case Data_Node::Long: uId = oBuilder.AddLng(sName, r.Lng()); break;
        case Data_Node::String: uId = oBuilder.AddStr(sName, sText); break;
        case Data_Node::Binary:
            uId = oBuilder.AddBin(sName, sText.data(), static_cast<u2_t>(sText.size()));
            break;
        case Data_Node::Quad: uId = oBuilder.AddQuad(sName, au[0], au[1], au[2], au[3]); break;
        default: uId = oBuilder.AddEmpty(sName); break;
    }
    NoteLink(uId);
    NoteNumbers(uId);
    for (const Data_Record::Attribute& o : r.GetAttributes()) oBuilder.SetAttVal(o.sName, o.sValue);
    return r.GetType() == Data_Node::Tree;
}

void Taker::ResolveLinks(Work& oWork, std::vector<Data_Reader::Outer_Link>& aoOuter, Str& oFault) {
    if (!m_aoLink.empty()) {
        oWork.SetInput(m_oSource.Offset());
        m_oTree.SetAccessMode();
        // Of several nodes of one number the first one counts.
        std::stable_sort(
            m_oNumber.Beg(), m_oNumber.End(),
            [](const Numbered& a, const Numbered& b) { return a.uNumber < b.uNumber; });
    }
    for (const Pending_Link& o : m_aoLink) {
        try {
            if (Resolve(o, oWork) || !o.bEmpty) continue;
        } catch (...) {
            oFault = m_oTopPath;
            const Str oPath = m_oTree.GetNodeFromID(o.uId).GetPath();
            if (oFault.IsEmpty() || oPath.Len() > 1) oFault.Add(oPath);
            throw;
        }
        // Places that were free are gone in the end.
        const auto pBehind = std::lower_bound(m_oFree.begin(), m_oFree.end(), o.uId);
        aoOuter.push_back({o.uId - static_cast<u2_t>(pBehind - m_oFree.begin()), o.oTarget});
    }
    if (m_oFree.Size() != 0) m_oTree.Shrink();
}

// False where the target is not in the tree.
bool Taker::Resolve(const Pending_Link& o, Work& oWork) {
    u2_t uTarget = 0;
    const bool bNumber = o.uNumber != Record_Source::NO_NUMBER;
    if (!(bNumber ? FindNumbered(o, uTarget) : FindPath(o, oWork, uTarget))) return false;
    m_oTree.GetNodeFromID(o.uId).SetValLink(m_oTree.GetNodeFromID(uTarget));
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
bool Taker::FindPath(const Pending_Link& o, Work& oWork, u2_t& uTarget) {
    std::string_view sPath = o.oTarget.View();
    if (m_uTop != 0) {
        const std::string_view sTop = m_oTopPath.View().substr(1);  // no slash in front
        if (!sPath.starts_with(sTop)) return false;
        if (sPath.size() > sTop.size() && sPath[sTop.size()] != '/') return false;
        sPath.remove_prefix(sTop.size());
    }
    Arr<u2_t> oFound;
    detail::SelectNodes(*Access::BaseOf(m_oTree), 0, sPath.empty() ? "/" : sPath.data(), oWork,
                        oFound);
    if (oFound.Size() == 0) dgraph::RaiseTargetMissing();
    if (oFound.Size() > 1) dgraph::RaiseTargetNotUnique();
    uTarget = oFound(0);
    return true;
}

}  // namespace

void TakeTree(Data& oTree, Record_Source& oSource, Work& oWork,
              std::vector<Data_Reader::Outer_Link>& aoOuter, Str& oFault) {
    oSource.Begin(oTree);
    Taker oTaker(oTree, oSource);
    const bool bTree = oSource.GetType() == Data_Node::Tree;
    oTaker.TakeRoot();
    if (bTree) oTaker.TakeBelow();
    oTaker.ResolveLinks(oWork, aoOuter, oFault);
}

}  // namespace vok::records
