// SPDX-License-Identifier: MIT
// Lists and sets of nodes.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/succ_it.h"

namespace vok {

// ---- Data_NodeIt ------------------------------------------------------------

void Data_NodeIt::Add(const Data& oNode) {
    return Where("vok::Data_NodeIt::Add(const Data&)", [&] {
        if (!oNode.m_oBase) return;
        if (m_oBase && m_oBase != oNode.m_oBase) Msg::WithWrongDataType("Root");
        m_oId.Add(oNode.m_uId);
        m_oBase = oNode.m_oBase;
    });
}

void Data_NodeIt::Add(Data_SuccIt& oIt) {
    return Where("vok::Data_NodeIt::Add(Data_SuccIt&)", [&] {
        for (oIt.SetPos(0); oIt.SkipZombies(); oIt.Advance()) Add(oIt.GetData());
    });
}

bool Data_NodeIt::SkipZombies() noexcept {
    if (!m_oBase) return false;
    for (; m_uPos < m_oId.Size(); ++m_uPos) {
        const u2_t uId = m_oId(m_uPos);
        if (uId < m_oBase->m_oNode.Size() && m_oBase->m_oNode(uId).GetType() != Data_Node::Zombi) {
            return true;
        }
    }
    return false;
}

Data Data_NodeIt::GetData() const {
    return m_oBase && m_uPos < m_oId.Size() ? Data(m_oBase, m_oId(m_uPos)) : Data();
}

// ---- Data_NodeSet -----------------------------------------------------------

void Data_NodeSet::Add(const Data& oNode) {
    return Where("vok::Data_NodeSet::Add", [&] {
        if (!oNode.m_oBase) return;
        if (m_oBase && m_oBase != oNode.m_oBase) Msg::WithWrongDataType("Root");
        const u2_t uId = oNode.m_uId;
        const u2_t* pBeg = std::as_const(m_oId).Beg() + m_uGap;
        const u2_t* pEnd = pBeg + Size();
        const u2_t* pFound = pEnd;
        if (pBeg != pEnd && pEnd[-1] >= uId) pFound = std::lower_bound(pBeg, pEnd, uId);
        const std::size_t uNth = static_cast<std::size_t>(pFound - pBeg);
        if (pFound != pEnd && *pFound == uId) return;
        if (2 * uNth >= Size()) {
            m_oId.Insert(m_uGap + uNth, uId);
        } else {
            if (m_uGap == 0) WidenGap();
            --m_uGap;
            u2_t* p = m_oId.Beg() + m_uGap;
            std::copy(p + 1, p + 1 + uNth, p);
            p[uNth] = uId;
        }
        m_oBase = oNode.m_oBase;
    });
}

// Room in front for as many as there are.
void Data_NodeSet::WidenGap() {
    constexpr std::size_t FIRST_GAP = 8;
    const std::size_t uGap = m_oId.Size() + FIRST_GAP;
    Arr<u2_t> oWide;
    oWide.Resize(uGap);
    oWide.Add(m_oId.Beg(), m_oId.Size());
    m_oId.Swap(oWide);
    m_uGap = uGap;
}

Data Data_NodeSet::GetNth(std::size_t uNth) const noexcept {
    return uNth < Size() ? Data(m_oBase, m_oId(m_uGap + uNth)) : Data();
}

}  // namespace vok
