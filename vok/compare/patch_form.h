// SPDX-License-Identifier: MIT
// What a patch looks like (docs/compare.md). Internal.
//
//     patch @version="1"          the edit of the top
//         attribute[]             name, old?, new?
//         edit[] @at              of a node below; @to where it moves to
//             ...                 as in patch
//         insert[] @at            new: what becomes that node
//         remove[] @at            old: what that node is
//         new, old                value or successors that take the place of others
//         name                    old, new: of the top, in patch only
//         nothing, target[] @at   what links in "old" and "new" lead to, in patch only
//
// Paths start at the node of the edit that they stand in. Positions are those before anything is
// changed, but for the last one of an insert and that in @to, which are those when all is done.
// Removed nodes do not count. The order of all these does not matter.
#ifndef VOK_COMPARE_PATCH_FORM_H
#define VOK_COMPARE_PATCH_FORM_H

#include "vok/compare/side.h"
#include "vok/data/builder.h"
#include "vok/data/walk.h"

namespace vok::patch {

inline constexpr const char* TOP = "patch";
inline constexpr const char* VERSION = "version";
inline constexpr const char* VERSION_1 = "1";
inline constexpr const char* AT = "at";
inline constexpr const char* TO = "to";
inline constexpr const char* ATTRIBUTE = "attribute";
inline constexpr const char* EDIT = "edit";
inline constexpr const char* INSERT = "insert";
inline constexpr const char* REMOVE = "remove";
inline constexpr const char* NAME = "name";
inline constexpr const char* NEW = "new";
inline constexpr const char* OLD = "old";
inline constexpr const char* TARGET = "target";
inline constexpr const char* NOTHING = "nothing";

inline void CopyAttributes(Data_Builder& oBuilder, const Data_Base& b, u2_t uId, Arr<u2_t>& oKeys) {
    if (!b.m_oAtt.Has(uId)) return;
    b.m_oAtt.List(uId, oKeys);
    for (const u2_t uKey : oKeys) {
        oBuilder.SetAttVal(b.m_oAtt.Names()(uKey).sText, b.AttributeOf(uId, uKey));
    }
}

// Builds a copy of a node and everything below it, removed nodes left out, under another name.
// oMade(id, new id, depth) is called for every node while it is the last one, and gives it its
// attributes; links are made as empty nodes. bTop false: only what is below it.
template <class Made>
void CopySubtree(Data_Builder& oBuilder, const Data& oFrom, const char* sName, bool bTop,
                 const Made& oMade) {
    const std::size_t uTop = bTop ? 0 : 1;
    std::size_t uOpen = uTop;
    for (Data_Walk oWalk(oFrom); oWalk.Next();) {
        if (oWalk.GetDepth() < uTop) continue;
        for (; uOpen > oWalk.GetDepth(); --uOpen) oBuilder.Close();
        const Data_Name oName = oWalk.GetDepth() == 0 ? sName : oWalk.GetName();
        u2_t uNew = 0;
        if (oWalk.GetType() == Data_Node::Tree) {
            uNew = oBuilder.Open(oName);
            ++uOpen;
        } else {
            uNew = oBuilder.Add(oName, oWalk.GetValue());
        }
        oMade(oWalk.GetId(), uNew, oWalk.GetDepth());
    }
    for (; uOpen > uTop; --uOpen) oBuilder.Close();
}

// Whether two subtrees are the same but for their names; bAttributes: those of the tops count.
// oSameLinks(x, y) tells it of two links.
template <class SameLinks>
[[nodiscard]] bool IsSameSubtree(Data_Side& oX, u2_t uX, Data_Side& oY, u2_t uY, bool bAttributes,
                                 const SameLinks& oSameLinks) {
    Data_Walk oWalkX(oX.Cursor(uX));
    Data_Walk oWalkY(oY.Cursor(uY));
    for (bool bTop = true;; bTop = false) {
        const bool bMoreX = oWalkX.Next();
        const bool bMoreY = oWalkY.Next();
        if (!bMoreX || !bMoreY) return bMoreX == bMoreY;
        const u2_t x = oWalkX.GetId();
        const u2_t y = oWalkY.GetId();
        const bool bSame =
            oWalkX.GetDepth() == oWalkY.GetDepth() && (bTop || oX.NameOf(x) == oY.NameOf(y)) &&
            oX.Type(x) == oY.Type(y) &&
            (oX.Type(x) == Data_Node::Link ? oSameLinks(x, y)
                                           : oX.IsSameValue(oX.Node(x), oY, oY.Node(y))) &&
            ((bTop && !bAttributes) || oX.HasSameAttributes(x, oY, y));
        if (!bSame) return false;
    }
}

}  // namespace vok::patch

#endif  // VOK_COMPARE_PATCH_FORM_H
