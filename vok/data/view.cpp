// SPDX-License-Identifier: MIT
#include "vok/data/view.h"

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

Data_View::Data_View(const Data_Base& b, u2_t uId) noexcept
    : m_pNode(b.m_oNode.Beg() + uId),
      m_uId(uId),
      m_pNodes(b.m_oNode.Beg()),
      m_pIds(b.m_oGroup.IdsAtZero()),
      m_pHeap(b.m_oHeap.Begin()),
      m_pNames(b.m_oName.Texts()),
      m_pBase(&b) {}

Data_View::Data_View(const Data& oNode)
    : Data_View(Where("vok::Data_View::Data_View", [&] {
          Data_Base& b = detail::NodeOf(oNode.m_oBase, oNode.m_uId);
          b.UpdateSucc();
          return Data_View(b, oNode.m_uId);
      })) {}

Data_View Data_View::IfOrdered(const Data& oNode) noexcept {
    const Data_Base* const p = oNode.m_oBase.Get();
    if (p == nullptr || oNode.m_uId >= p->m_oNode.Size() || !p->IsIndexed()) return {};
    return Data_View(*p, oNode.m_uId);
}

bool Data_View::HasAttributes() const {
    if (!m_pBase->m_oAtt.Has(m_uId)) return false;
    Arr<u2_t> oKeys;  // removed ones leave a trace
    m_pBase->m_oAtt.List(m_uId, oKeys);
    return oKeys.Size() != 0;
}

Data_Key Data_View::KeyOf(std::string_view sName) const {
    return {m_pBase->FindKey(sName)};
}

Data_View Data_View::FindAmongMany(Data_Key oKey, u2_t uNth) const noexcept {
    if (oKey.uKey >= m_pBase->m_oName.Size()) return {};
    const Data_Base::Group oGroup{m_pIds + m_pNode->Start(), m_pNode->Size()};
    const Data_Base::Run oRun = m_pBase->FindRun(oGroup, oKey.uKey);
    return uNth < oRun.uSize ? At(oGroup.pId[oRun.uFirst + uNth]) : Data_View();
}

}  // namespace vok
