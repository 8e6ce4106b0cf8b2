// SPDX-License-Identifier: MIT
#include "vok/data/link_bytes.h"

#include "vok/data/id_map.h"

namespace vok::detail {

namespace {

// The lengths of paths: each node on the way up is looked at once for all links.
class PathLengths {
  public:
    explicit PathLengths(const Data_Base& oBase)
        : m_oBase(oBase), m_oLength(oBase.m_oNode.Size()) {}

    [[nodiscard]] u3_t Of(u2_t uId) {
        const std::size_t uNodes = m_oBase.m_oNode.Size();
        m_oWay.Truncate(0);
        u2_t uUp = uId;
        for (; uUp != 0 && uUp < uNodes && m_oLength.Find(uUp) == 0;
             uUp = m_oBase.m_oNode(uUp).Pred()) {
            m_oWay.Add(uUp);
        }
        u3_t uLength = uUp < uNodes ? m_oLength.Find(uUp) : 0;
        for (std::size_t u = m_oWay.Size(); u-- > 0;) {
            uLength += STEP + m_oBase.m_oName(m_oBase.m_oNode(m_oWay(u)).uKey).uLength;
            m_oLength(m_oWay(u)) = uLength;
        }
        return uLength;
    }

  private:
    static constexpr u3_t STEP = 4;  // "/", "[0]"

    const Data_Base& m_oBase;
    Data_IdMap<u3_t> m_oLength;
    Arr<u2_t> m_oWay;
};

}  // namespace

u3_t LinkBytes(const Data_Base& b) {
    PathLengths oLengths(b);
    u3_t uBytes = 0;
    for (const Data_Node& o : b.m_oNode) {
        if (o.GetType() != Data_Node::Link || o.uWord2 >= b.m_oNode.Size()) continue;
        uBytes += oLengths.Of(o.uWord2);
    }
    return uBytes;
}

}  // namespace vok::detail
