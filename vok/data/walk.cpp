// SPDX-License-Identifier: MIT
#include "vok/data/walk.h"

#include "vok/base/where.h"

namespace vok {

Data_Walk::Data_Walk(const Data& oFrom)
    : Data_View(Where("vok::Data_Walk::Data_Walk", [&] { return Data_View(oFrom); })),
      m_oFrom(oFrom) {
    m_pNode = nullptr;  // until the first call of Next
}

bool Data_Walk::Start() noexcept {
    m_pNode = m_pNodes + m_oFrom.GetId();
    return m_pNode->GetType() != Data_Node::Zombi;
}

}  // namespace vok
