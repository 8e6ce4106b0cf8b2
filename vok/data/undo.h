// SPDX-License-Identifier: MIT
// Taking back what an operation has made of a tree before it failed. Internal.
#ifndef VOK_DATA_UNDO_H
#define VOK_DATA_UNDO_H

#include <string_view>

#include "vok/data/store.h"

namespace vok {

// Remembers how far the tree had got. Whoever changes a node that was there before then calls Keep
// or KeepAttribute first; nodes made since need nothing. Names stay, as they do everywhere.
class Data_Undo {
  public:
    explicit Data_Undo(Data_Base& oBase) noexcept
        : m_oBase(oBase),
          m_uNodes(static_cast<u2_t>(oBase.m_oNode.Size())),
          m_uDead(oBase.m_uDead),
          m_oHeap(oBase.m_oHeap.GetMark()) {}
    Data_Undo(const Data_Undo&) = delete;
    Data_Undo& operator=(const Data_Undo&) = delete;

    // The record of a node, or the value of one of its attributes, is about to change.
    void Keep(u2_t uId) {
        if (uId < m_uNodes) m_oChange.Add(Change{uId, NO_ATTRIBUTE, m_oBase.m_oNode(uId)});
    }
    void KeepAttribute(u2_t uId, std::string_view sName) {
        if (uId >= m_uNodes) return;
        const u2_t uKey = m_oBase.m_oAtt.Intern(sName);
        if (uKey == NO_ATTRIBUTE) return;  // an empty name, which nobody can set
        m_oChange.Add(Change{uId, uKey, {0, 0, m_oBase.m_oAtt.Find(uId, uKey), 0}});
    }
    // Makes the tree what it was. Never fails.
    void TakeBack() noexcept;

  private:
    static constexpr u2_t NO_ATTRIBUTE = 0;
    struct Change {
        u2_t uId;
        u2_t uAttribute;  // key of its name; NO_ATTRIBUTE for the record
        Data_Node oOld;   // the record; of an attribute the place of its value, in word 2
    };

    void RestoreNode(const Change& o) noexcept;

    Data_Base& m_oBase;
    const u2_t m_uNodes;
    const u2_t m_uDead;
    const Data_Heap::Mark m_oHeap;
    Arr<Change> m_oChange;
};

}  // namespace vok

#endif  // VOK_DATA_UNDO_H
