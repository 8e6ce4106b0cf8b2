// SPDX-License-Identifier: MIT
#include "vok/compare/path_tree.h"

#include "vok/data/escape.h"

namespace vok {

u2_t Data_PathTree::Add(u2_t uId) {
    m_oChain.Resize(0);
    for (; m_oTwigOf.Find(uId) == 0; uId = m_oSide.Node(uId).Pred()) m_oChain.Add(uId);
    u2_t uParent = m_oTwigOf.Find(uId) - 1;
    for (std::size_t u = m_oChain.Size(); u-- > 0;) {
        const u2_t uNew = static_cast<u2_t>(m_oTwig.Size());
        m_oTwig.Add(Twig{m_oChain(u), uParent, NONE, NONE, NONE, 0});
        Twig& oParent = m_oTwig(uParent);
        if (oParent.uLast != NONE) m_oTwig(oParent.uLast).uNext = uNew;
        if (oParent.uFirst == NONE) oParent.uFirst = uNew;
        oParent.uLast = uNew;
        ++oParent.uChildren;
        m_oTwigOf(m_oChain(u)) = uNew + 1;
        uParent = uNew;
    }
    return uParent;
}

void Data_PathTree::AppendPath(Arr<char>& oPath, u2_t uFrom, u2_t uTo) {
    m_oChain.Resize(0);
    for (u2_t u = uTo; u != uFrom; u = m_oTwig(u).uParent) m_oChain.Add(m_oTwig(u).uId);
    for (std::size_t u = m_oChain.Size(); u-- > 0;) {
        detail::AppendStep(oPath, m_oSide.NameOf(m_oChain(u)), m_oSide.Position(m_oChain(u)));
        if (u != 0) oPath.Add('/');
    }
}

}  // namespace vok
