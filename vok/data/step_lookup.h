// SPDX-License-Identifier: MIT
// Steps of a path as a tree sees them. Internal.
#ifndef VOK_DATA_STEP_LOOKUP_H
#define VOK_DATA_STEP_LOOKUP_H

#include <cstring>

#include "vok/base/work.h"
#include "vok/data/store.h"
#include "vok/data/xpath.h"

namespace vok::detail {

// A step with its names looked up in a tree.
class Step_Lookup {
  public:
    Step_Lookup(const Data_Base& b, const Data_XpathStep& oStep)
        : m_oStep(oStep),
          m_uKey(oStep.m_bAnyName ? Hash::NONE : b.m_oName.Find(oStep.m_sName)),
          m_oBase(b) {
        for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
            m_oAttKeys.Add(b.m_oAtt.Names().Find(oStep.m_oAttName(u)));
            m_oAttWork.Add(FIND_ATTRIBUTE + Work::OfText(std::strlen(oStep.AttVal(u))));
        }
    }

    // Whether a node has the attributes that the step asks for.
    [[nodiscard]] bool HasAttributes(u2_t uId, Work& oWork) const {
        for (std::size_t u = 0; u < m_oAttKeys.Size(); ++u) {
            if (*m_oStep.m_oAttName(u) == 0) continue;
            oWork.Charge(m_oAttWork(u));
            if (!m_oBase.m_oAtt.Has(uId)) return false;
            const char* sValue = m_oBase.AttributeOf(uId, m_oAttKeys(u));
            if (sValue == nullptr || std::strcmp(sValue, m_oStep.AttVal(u)) != 0) return false;
        }
        return true;
    }

    const Data_XpathStep& m_oStep;
    const u2_t m_uKey;  // Hash::NONE for a name that no node bears, and for any name

  private:
    // Units of work for a search among the nodes of one attribute name.
    static constexpr u3_t FIND_ATTRIBUTE = 8;

    const Data_Base& m_oBase;
    Arr<u2_t> m_oAttKeys;  // parallel to the predicates; Hash::NONE for unknown names
    Arr<u3_t> m_oAttWork;  // units that one test of each takes
};

}  // namespace vok::detail

#endif  // VOK_DATA_STEP_LOOKUP_H
