// SPDX-License-Identifier: MIT
#include "vok/data/undo.h"

#include <algorithm>

namespace vok {

void Data_Undo::TakeBack() noexcept {
    for (std::size_t u = m_oChange.Size(); u-- > 0;) {
        const Change& o = m_oChange(u);
        if (o.uAttribute == NO_ATTRIBUTE) {
            RestoreNode(o);
        } else {
            m_oBase.m_oAtt.Restore(o.uId, o.uAttribute, o.oOld.uWord2);
        }
    }
    // New nodes hang below new ones now, or below nothing.
    for (std::size_t u = m_uNodes; u < m_oBase.m_oNode.Size(); ++u) {
        const Data_Node& o = m_oBase.m_oNode(u);
        if (o.GetType() == Data_Node::Tree) m_oBase.AbandonGroup(o);
    }
    m_oBase.Rollback(m_uNodes);
    m_oBase.m_uIndexed = std::min(m_oBase.m_uIndexed, m_uNodes);
    m_oBase.m_oHeap.TakeBack(m_oHeap);
    m_oBase.m_uDead = m_uDead;
}

void Data_Undo::RestoreNode(const Change& o) noexcept {
    Data_Node& oNode = m_oBase.m_oNode(o.uId);
    if (oNode.GetType() != Data_Node::Tree) {
        oNode = o.oOld;
        return;
    }
    if (o.oOld.GetType() != Data_Node::Tree) {
        m_oBase.AbandonGroup(oNode);
        oNode = o.oOld;
        return;
    }
    // Its group may have moved since, and have new successors among the old ones.
    if (oNode.Start() != Data_Node::NONE) m_oBase.m_oGroup.DropFrom(oNode.Start(), m_uNodes);
    oNode.uWord3 = o.oOld.uWord3;
}

}  // namespace vok
