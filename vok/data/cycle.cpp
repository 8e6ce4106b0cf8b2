// SPDX-License-Identifier: MIT
// Whether successors and links close a loop.
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/id_map.h"

namespace vok {

namespace {

// A search in depth with a stack of its own. A node is open as long as what it leads to is
// still being looked at: coming back to an open one closes a loop.
class CycleSearch {
  public:
    explicit CycleSearch(Data_Base& oBase) : m_oBase(oBase), m_oState(oBase.m_oNode.Size()) {
        m_oBase.UpdateSucc();
    }

    [[nodiscard]] bool Run(u2_t uId) {
        Enter(uId);
        while (m_oOpen.Size() != 0) {
            Open& oTop = m_oOpen.Last();
            if (oTop.pNext == oTop.pEnd) {
                m_oState(oTop.uId) = DONE;
                m_oOpen.Pop();
                continue;
            }
            const u2_t uNext = *oTop.pNext++;
            if (uNext >= m_oBase.m_oNode.Size() ||
                m_oBase.m_oNode(uNext).GetType() == Data_Node::Zombi) {
                continue;
            }
            const State eState = m_oState.Find(uNext);
            if (eState == OPEN) return true;
            if (eState == UNSEEN) Enter(uNext);
        }
        return false;
    }

  private:
    enum State : u0_t { UNSEEN = 0, OPEN, DONE };
    struct Open {
        u2_t uId;
        const u2_t* pNext;  // what it leads to
        const u2_t* pEnd;
    };

    void Enter(u2_t uId) {
        m_oState(uId) = OPEN;
        const Data_Node& oNode = m_oBase.m_oNode(uId);
        if (oNode.GetType() == Data_Node::Link) {
            m_oOpen.Add(Open{uId, &oNode.uWord2, &oNode.uWord2 + 1});
            return;
        }
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        m_oOpen.Add(Open{uId, oGroup.pId, oGroup.pId + oGroup.uSize});
    }

    Data_Base& m_oBase;
    Data_IdMap<State> m_oState;
    Arr<Open> m_oOpen;
};

}  // namespace

bool Data::HasCycle() const {
    return Where("vok::Data::HasCycle",
                 [&] { return CycleSearch(detail::NodeOf(m_oBase, m_uId)).Run(m_uId); });
}

}  // namespace vok
