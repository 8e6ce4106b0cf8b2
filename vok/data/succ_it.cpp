// Iterators over successors and node lists, and the lookups made of them.
#include "vok/data/succ_it.h"

#include <algorithm>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

// ---- Data_SuccIt ------------------------------------------------------------

u2_t Data_SuccIt::GetId() const noexcept {
    if (!m_oBase || m_uPos >= m_uSize) return Data_Node::NONE;
    // The parent may have changed since: what it has now decides.
    const Data_Base& b = *m_oBase;
    if (m_uParent >= b.m_oNode.Size()) return Data_Node::NONE;
    const Data_Node& oParent = b.m_oNode(m_uParent);
    if (oParent.GetType() != Data_Node::Tree || oParent.Start() == Data_Node::NONE) {
        return Data_Node::NONE;
    }
    const u2_t* pGroup = b.m_oSucc.Beg() + oParent.Start();
    const u3_t uNth = u3_t{m_uStart} + m_uPos;
    if (uNth >= b.PlacedIn(oParent.Start())) return Data_Node::NONE;
    return pGroup[Data_Base::GROUP_HEADER + uNth];
}

bool Data_SuccIt::SkipZombies() noexcept {
    for (; m_uPos < m_uSize; ++m_uPos) {
        const u2_t uId = GetId();
        if (uId != Data_Node::NONE && m_oBase->m_oNode(uId).GetType() != Data_Node::Zombi) {
            return true;
        }
    }
    return false;
}

Data Data_SuccIt::GetData() const {
    const u2_t uId = GetId();
    return uId != Data_Node::NONE ? Data(m_oBase, uId) : Data();
}

// ---- Data_NodeIt ------------------------------------------------------------

void Data_NodeIt::Add(const Data& oNode) {
    return Where("vok::Data_NodeIt::Add(const Data&)", [&] {
        if (!oNode.m_oBase) return;
        if (m_oBase && m_oBase != oNode.m_oBase) Msg::WithWrongDataType("Root");
        m_oId.Add(oNode.m_uId);
        m_oBase = oNode.m_oBase;
    });
}

void Data_NodeIt::Add(Data_SuccIt& oIt) {
    return Where("vok::Data_NodeIt::Add(Data_SuccIt&)", [&] {
        for (oIt.SetPos(0); oIt.SkipZombies(); oIt.Advance()) Add(oIt.GetData());
    });
}

bool Data_NodeIt::SkipZombies() noexcept {
    if (!m_oBase) return false;
    for (; m_uPos < m_oId.Size(); ++m_uPos) {
        const u2_t uId = m_oId(m_uPos);
        if (uId < m_oBase->m_oNode.Size() && m_oBase->m_oNode(uId).GetType() != Data_Node::Zombi) {
            return true;
        }
    }
    return false;
}

Data Data_NodeIt::GetData() const {
    return m_oBase && m_uPos < m_oId.Size() ? Data(m_oBase, m_oId(m_uPos)) : Data();
}

// ---- Data_NodeSet -----------------------------------------------------------

void Data_NodeSet::Add(const Data& oNode) {
    return Where("vok::Data_NodeSet::Add", [&] {
        if (!oNode.m_oBase) return;
        if (m_oBase && m_oBase != oNode.m_oBase) Msg::WithWrongDataType("Root");
        const u2_t uId = oNode.m_uId;
        const u2_t* pBeg = std::as_const(m_oId).Beg() + m_uGap;
        const u2_t* pEnd = pBeg + Size();
        const u2_t* pFound = pEnd;
        if (pBeg != pEnd && pEnd[-1] >= uId) pFound = std::lower_bound(pBeg, pEnd, uId);
        const std::size_t uNth = static_cast<std::size_t>(pFound - pBeg);
        if (pFound != pEnd && *pFound == uId) return;
        if (2 * uNth >= Size()) {
            m_oId.Insert(m_uGap + uNth, uId);
        } else {
            if (m_uGap == 0) WidenGap();
            --m_uGap;
            u2_t* p = m_oId.Beg() + m_uGap;
            std::copy(p + 1, p + 1 + uNth, p);
            p[uNth] = uId;
        }
        m_oBase = oNode.m_oBase;
    });
}

// Room in front for as many as there are.
void Data_NodeSet::WidenGap() {
    constexpr std::size_t FIRST_GAP = 8;
    const std::size_t uGap = m_oId.Size() + FIRST_GAP;
    Arr<u2_t> oWide;
    oWide.Resize(uGap);
    oWide.Add(m_oId.Beg(), m_oId.Size());
    m_oId.Swap(oWide);
    m_uGap = uGap;
}

Data Data_NodeSet::GetNth(std::size_t uNth) const noexcept {
    return uNth < Size() ? Data(m_oBase, m_oId(m_uGap + uNth)) : Data();
}

// ---- Data -------------------------------------------------------------------

void Data::SetAccessMode() const {
    return Where("vok::Data::SetAccessMode", [&] { detail::TreeOf(m_oBase).UpdateSucc(); });
}

Data_SuccIt Data::GetSuccIt() const {
    return Where("vok::Data::GetSuccIt", [&] {
        Data_SuccIt oIt;
        if (!m_oBase) return oIt;
        const Base::Group oGroup = detail::NodeOf(m_oBase, m_uId).SuccOf(m_uId);
        if (oGroup.uSize == 0) return oIt;
        oIt.m_oBase = m_oBase;
        oIt.m_uParent = m_uId;
        oIt.m_uSize = oGroup.uSize;
        return oIt;
    });
}

Data_SuccIt Data::GetSuccIt(const char* sName) const {
    return Where("vok::Data::GetSuccIt", [&] {
        if (!m_oBase) return Data_SuccIt();
        return GetSuccIt(Data_Key{m_oBase->FindKey(sName)});
    });
}

Data_SuccIt Data::GetSuccIt(Data_Key oKey) const {
    return Where("vok::Data::GetSuccIt", [&] {
        Data_SuccIt oIt;
        if (!m_oBase) return oIt;
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (oKey.uKey >= b.m_oName.Size()) return oIt;
        const Base::Run oRun = b.FindRun(b.SuccOf(m_uId), oKey.uKey);
        if (oRun.uSize == 0) return oIt;
        oIt.m_oBase = m_oBase;
        oIt.m_uParent = m_uId;
        oIt.m_uStart = oRun.uFirst;
        oIt.m_uSize = oRun.uSize;
        return oIt;
    });
}

Data Data::GetNthSucc(u2_t uNth) const {
    return Where("vok::Data::GetNthSucc", [&] {
        if (!m_oBase) return Data();
        const Base::Group oGroup = detail::NodeOf(m_oBase, m_uId).SuccOf(m_uId);
        return uNth < oGroup.uSize ? Data(m_oBase, oGroup.pId[uNth]) : Data();
    });
}

Data Data::GetNthSucc(const char* sName, u2_t uNth) const {
    return Where("vok::Data::GetNthSucc", [&] {
        if (!m_oBase) return Data();
        return GetNthSucc(Data_Key{m_oBase->FindKey(sName)}, uNth);
    });
}

Data Data::GetNthSucc(Data_Key oKey, u2_t uNth) const {
    return Where("vok::Data::GetNthSucc", [&] {
        if (!m_oBase) return Data();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (oKey.uKey >= b.m_oName.Size()) return Data();
        const u2_t uFound = b.FindNamed(m_uId, oKey.uKey, uNth);
        return uFound != Node::NONE ? Data(m_oBase, uFound) : Data();
    });
}

u2_t Data::GetSuccCount(const char* sName) const {
    return Where("vok::Data::GetSuccCount",
                 [&] { return m_oBase ? GetSuccCount(Data_Key{m_oBase->FindKey(sName)}) : 0; });
}

u2_t Data::GetSuccCount(Data_Key oKey) const {
    return Where("vok::Data::GetSuccCount", [&]() -> u2_t {
        if (!m_oBase) return 0;
        Base& b = detail::NodeOf(m_oBase, m_uId);
        return oKey.uKey < b.m_oName.Size() ? b.CountNamed(m_uId, oKey.uKey) : 0;
    });
}

Data Data::GetCheckedSucc(const char* sName, u2_t uNth) const {
    return Where("vok::Data::GetCheckedSucc", [&] {
        Data oFound = GetNthSucc(sName, uNth);
        if (oFound.IsNode()) return oFound;
        if (uNth == 0) Msg::NodeHasNoSuccessorNamed(sName);
        Msg::NodeHasNotSuccessorsNamed(sName, uNth);
    });
}

}  // namespace vok
