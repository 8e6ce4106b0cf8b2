// SPDX-License-Identifier: MIT
// Iterators over successors, and looking up successors by name and number.
#include "vok/data/succ_it.h"

#include <algorithm>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

// ---- iterator ---------------------------------------------------------------

u2_t Data_SuccIt::GetId() const noexcept {
    if (!m_oBase || m_uPos >= m_uSize) return Data_Node::NONE;
    // The parent may have changed since: what it has now decides.
    const Data_Base& b = *m_oBase;
    if (m_uParent >= b.m_oNode.Size()) return Data_Node::NONE;
    const Data_Node& oParent = b.m_oNode(m_uParent);
    if (oParent.GetType() != Data_Node::Tree || oParent.Start() == Data_Node::NONE) {
        return Data_Node::NONE;
    }
    const u3_t uNth = u3_t{m_uStart} + m_uPos;
    if (uNth >= b.m_oGroup.Placed(oParent.Start())) return Data_Node::NONE;
    return b.m_oGroup.Ids(oParent.Start())[uNth];
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

// ---- cursor -----------------------------------------------------------------

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

Data_SuccIt Data::GetSuccIt(Data_Name oName) const {
    return Where("vok::Data::GetSuccIt", [&] {
        Data_SuccIt oIt;
        if (!m_oBase) return oIt;
        Base& b = detail::NodeOf(m_oBase, m_uId);
        const u2_t uKey = b.FindKey(oName);
        if (uKey == Node::NONE) return oIt;
        const Base::Run oRun = b.FindRun(b.SuccOf(m_uId), uKey);
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

Data Data::GetNthSucc(Data_Name oName, u2_t uNth) const {
    return Where("vok::Data::GetNthSucc", [&] {
        if (!m_oBase) return Data();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        const u2_t uKey = b.FindKey(oName);
        const u2_t uFound = uKey != Node::NONE ? b.FindNamed(m_uId, uKey, uNth) : Node::NONE;
        return uFound != Node::NONE ? Data(m_oBase, uFound) : Data();
    });
}

u2_t Data::GetSuccCount(Data_Name oName) const {
    return Where("vok::Data::GetSuccCount", [&]() -> u2_t {
        if (!m_oBase) return 0;
        Base& b = detail::NodeOf(m_oBase, m_uId);
        const u2_t uKey = b.FindKey(oName);
        return uKey != Node::NONE ? b.CountNamed(m_uId, uKey) : 0;
    });
}

u2_t Data::GetLiveSuccs() const {
    return Where("vok::Data::GetLiveSuccs",
                 [&] { return detail::NodeOf(m_oBase, m_uId).LiveSuccs(m_uId); });
}

Data Data::GetNext() const {
    return Where("vok::Data::GetNext", [&] { return Sibling(1); });
}

Data Data::GetPrev() const {
    return Where("vok::Data::GetPrev", [&] { return Sibling(-1); });
}

Data Data::Sibling(int iStep) const {
    const u2_t uId = detail::NodeOf(m_oBase, m_uId).Sibling(m_uId, iStep);
    return uId != Node::NONE ? Data(m_oBase, uId) : Data();
}

Data Data::GetCheckedSucc(Data_Name oName, u2_t uNth) const {
    return Where("vok::Data::GetCheckedSucc", [&] {
        Data oFound = GetNthSucc(oName, uNth);
        if (oFound.IsNode()) return oFound;
        const Str oShown(Base::TextOf(oName, m_oBase.Get()));
        if (uNth == 0) Msg::NodeHasNoSuccessorNamed(oShown.CStr());
        Msg::NodeHasNotSuccessorsNamed(oShown.CStr(), uNth);
    });
}

}  // namespace vok
