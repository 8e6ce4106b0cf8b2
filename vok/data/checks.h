// SPDX-License-Identifier: MIT
// What every operation on a cursor asks first. Internal.
#ifndef VOK_DATA_CHECKS_H
#define VOK_DATA_CHECKS_H

#include "vok/data/store.h"

namespace vok::detail {

// The tree of a cursor. Raises "node is empty".
inline Data_Base& TreeOf(const Mem::Ref<Data_Base>& oBase) {
    if (!oBase) [[unlikely]]
        Msg::NodeIsEmpty();
    return *oBase;
}

// The same, with the node still there. Raises "try to access deleted node".
inline Data_Base& NodeOf(const Mem::Ref<Data_Base>& oBase, u2_t uId) {
    Data_Base& b = TreeOf(oBase);
    if (uId >= b.m_oNode.Size()) [[unlikely]]
        Msg::TryToAccessDeletedNode();
    return b;
}

// The same, with the node not removed. Raises the same.
inline Data_Base& LiveNodeOf(const Mem::Ref<Data_Base>& oBase, u2_t uId) {
    Data_Base& b = NodeOf(oBase, uId);
    if (b.m_oNode(uId).GetType() == Data_Node::Zombi) [[unlikely]]
        Msg::TryToAccessDeletedNode();
    return b;
}

// NodeOf for getters of values: an empty cursor raises "object points to nothing".
inline Data_Base& ValueOf(const Mem::Ref<Data_Base>& oBase, u2_t uId) {
    if (!oBase) [[unlikely]]
        Msg::ObjectPointsToNothing();
    return NodeOf(oBase, uId);
}

// Whether a type is one of those that an operation on numbers, or on reals, is for.
inline void CheckIntType(Data_Node::Type eType) {
    if (eType < Data_Node::Boolean || eType > Data_Node::Char) [[unlikely]]
        Msg::AssertionFailed("eType >= Node::Boolean && eType <= Node::Char");
}
inline void CheckDblType(Data_Node::Type eType) {
    if (eType < Data_Node::Float || eType > Data_Node::Date) [[unlikely]]
        Msg::AssertionFailed("eType >= Node::Float && eType <= Node::Date");
}

}  // namespace vok::detail

#endif  // VOK_DATA_CHECKS_H
