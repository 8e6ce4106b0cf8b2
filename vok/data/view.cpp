// SPDX-License-Identifier: MIT
#include "vok/data/view.h"

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

inline void Data_View::Stand(const Data_Base& b, u2_t uId) noexcept {
    m_pNode = b.m_oNode.Beg() + uId;
    m_pNodes = b.m_oNode.Beg();
    m_pIds = b.m_oGroup.IdsAtZero();
    m_pHeap = b.m_oHeap.Begin();
    m_pNames = b.m_oName.Texts();
    m_pBase = &b;
}

Data_View::Data_View(const Data& oNode)
    : Data_View(Where("vok::Data_View::Data_View", [&] {
          Data_Base& b = detail::NodeOf(oNode.m_oBase, oNode.m_uId);
          b.UpdateSucc();
          return Data_View(b, oNode.m_uId);
      })) {}

bool Data_View::FindIfOrdered(const Data& oNode, std::string_view sName, u2_t uNth,
                              Data_View& oFound) {
    Data_Base* const p = oNode.m_oBase.Get();
    if (p == nullptr || oNode.m_uId >= p->m_oNode.Size() || !p->IsIndexed()) return false;
    const Data_Key oKey{p->m_oName.LookNext(sName)};
    const u2_t uId = Data_View(*p, oNode.m_uId).FindId(oKey, uNth);
    if (uId != Data_Node::NONE) {
        oFound.Stand(*p, uId);  // in place: what is copied right after it was written is waited for
    } else {
        oFound.m_pNode = nullptr;
    }
    return true;
}

Data Data_View::DataOf(const Data_Base& b, u2_t uId) {
    return {Mem::Ref<Data_Base>::Share(const_cast<Data_Base*>(&b)), uId};
}

bool Data_View::HasAttributes() const {
    if (!m_pBase->m_oAtt.Has(GetId())) return false;
    Arr<u2_t> oKeys;  // removed ones leave a trace
    m_pBase->m_oAtt.List(GetId(), oKeys);
    return oKeys.Size() != 0;
}

Data_Key Data_View::KeyOf(std::string_view sName) const {
    return {m_pBase->FindKey(sName)};
}

u2_t Data_View::FindAmongMany(const Data_Base& b, const Data_Node& oParent, Data_Key oKey,
                              u2_t uNth) noexcept {
    if (oKey.uKey >= b.m_oName.Size()) return Data_Node::NONE;
    const Data_Base::Group oGroup = b.m_oGroup.ViewOf(oParent.Start(), oParent.Size());
    const Data_Base::Run oRun = b.FindRun(oGroup, oKey.uKey);
    return uNth < oRun.uSize ? oGroup.pId[oRun.uFirst + uNth] : Data_Node::NONE;
}

}  // namespace vok
