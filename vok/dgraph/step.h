// SPDX-License-Identifier: MIT
// Parsing of step texts: name[index][@attribute="value"]... Internal.
#ifndef VOK_DGRAPH_STEP_H
#define VOK_DGRAPH_STEP_H

#include <string_view>

#include "vok/base/arr.h"
#include "vok/dgraph/messages.h"

namespace vok::dgraph {

// A parsed step text. Name and attributes stand decoded in the step's own copy of the text
// until the next parse.
class Step {
  public:
    struct Attribute {
        const char* sName;
        const char* sValue;
    };

    // Parses a step text, which ends at its first NUL. Linear. Raises the first fault of the text
    // through RaiseInvalidStep.
    void Parse(std::string_view sText) {
        if (const StepFault eFault = TryParse(sText); eFault != StepFault::None) {
            RaiseInvalidStep(eFault);
        }
    }
    // The same, telling the fault; what was parsed is then of no use.
    [[nodiscard]] StepFault TryParse(std::string_view sText);

    [[nodiscard]] const char* Name() const noexcept { return m_oText.Beg(); }
    // Grows without bounds over the digits: it wraps, as stored documents expect.
    [[nodiscard]] i2_t Index() const noexcept { return m_iIndex; }
    [[nodiscard]] const Arr<Attribute>& Attributes() const noexcept { return m_oAttribute; }

  private:
    StepFault ParseIndex(char*& p);
    StepFault ParseAttribute(char*& p, char* pEnd);

    Arr_Near<char, 64> m_oText;
    i2_t m_iIndex = 0;
    Arr<Attribute> m_oAttribute;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_STEP_H
