#include "vok/data/undo.h"

#include <algorithm>

namespace vok {

void Data_Undo::TakeBack() noexcept {
    for (std::size_t u = m_oChange.Size(); u-- > 0;) {
        const Change& o = m_oChange(u);
        if (o.uAttribute == NO_ATTRIBUTE) {
            RestoreNode(o);
        } else {
            b.m_oAtt.Restore(o.uId, o.uAttribute, o.oOld.uWord2);
        }
    }
    // New nodes hang below new ones now, or below nothing.
    for (std::size_t u = m_uNodes; u < b.m_oNode.Size(); ++u) {
        const Data_Node& o = b.m_oNode(u);
        if (o.GetType() == Data_Node::Tree) b.AbandonGroup(o);
    }
    b.Rollback(m_uNodes);
    b.m_uIndexed = std::min(b.m_uIndexed, m_uNodes);
    b.m_oHeap.TakeBack(m_oHeap);
    b.m_uDead = m_uDead;
}

void Data_Undo::RestoreNode(const Change& o) noexcept {
    Data_Node& oNode = b.m_oNode(o.uId);
    if (oNode.GetType() != Data_Node::Tree) {
        oNode = o.oOld;
        return;
    }
    if (o.oOld.GetType() != Data_Node::Tree) {
        b.AbandonGroup(oNode);
        oNode = o.oOld;
        return;
    }
    // Its group may have moved since, and have new successors among the old ones.
    if (oNode.Start() != Data_Node::NONE) b.m_oGroup.DropFrom(oNode.Start(), m_uNodes);
    oNode.uWord3 = o.oOld.uWord3;
}

}  // namespace vok
