#include "vok/data/walk.h"

#include "vok/base/where.h"
#include "vok/data/checks.h"

namespace vok {

Data_Walk::Data_Walk(const Data& oFrom) : m_oFrom(oFrom) {
    Where("vok::Data_Walk::Data_Walk", [&] {
        Data_Base& b = detail::NodeOf(oFrom.m_oBase, oFrom.m_uId);
        b.UpdateSucc();
        m_pNodes = b.m_oNode.Beg();
        m_pIds = b.m_oGroup.IdsAtZero();
        m_pHeap = b.m_oHeap.Begin();
        m_pNames = b.m_oName.Texts();
        m_uId = oFrom.m_uId;
    });
}

bool Data_Walk::Start() noexcept {
    m_pNode = m_pNodes + m_uId;
    return m_pNode->GetType() != Data_Node::Zombi;
}

}  // namespace vok
