// SPDX-License-Identifier: MIT
#include "vok/inspect/plausible.h"

#include <algorithm>

#include "vok/dgraph/plain_step.h"

namespace vok::inspect {

using dgraph::Load;

std::size_t TextQuadLength(std::string_view s) noexcept {
    if (s.size() < 4) return 0;
    const std::size_t uLength = Load<u2_t>(s.data());
    if (uLength < 8 || uLength > LONGEST_TEXT_QUAD || uLength > s.size() - 4) return 0;
    const std::string_view sText = s.substr(4, uLength);
    if (sText.find_first_not_of("0123456789,") != uLength - 1 || sText.back() != 0) return 0;
    return std::count(sText.begin(), sText.end(), ',') == 3 ? uLength : 0;
}

bool Plausible::Follow(std::string_view s, unsigned uRecords) {
    while (uRecords < ENOUGH) {
        // What is cut off may be the end of the document, or of what can be seen of it.
        if (s.size() < 4) return uRecords != 0;
        const std::size_t uStep = Load<u2_t>(s.data());
        if (uStep < 4 || uStep > LONGEST_STEP) return false;
        if (s.size() - 4 <= uStep) return uRecords != 0;
        if (s[4 + uStep - 1] != ']') return false;
        const std::size_t uValue = ValueSize(s.substr(4 + uStep));
        if (uValue == 0 || !IsStep(s.substr(4, uStep))) return false;
        ++uRecords;
        if (s.size() - 4 - uStep < uValue) return true;
        s.remove_prefix(4 + uStep + uValue);
    }
    return true;
}

bool Plausible::IsStep(std::string_view s) {
    for (const char c : s) {
        if (static_cast<u0_t>(c) < ' ' && c != '\b') return false;
    }
    dgraph::PlainStep oPlain;
    if (oPlain.Parse(s.data(), s.size())) return true;
    return m_oStep.TryParse(s) == dgraph::StepFault::None;
}

std::size_t Plausible::ValueSize(std::string_view s) const noexcept {
    constexpr std::size_t CODE = 1;
    if (s.empty()) return 0;
    const auto uCode = static_cast<u0_t>(s[0]);
    if (uCode > dgraph::CODE_QUAD) return 0;
    const std::string_view sValue = s.substr(CODE);
    if (uCode == dgraph::CODE_QUAD && m_bTextQuads) {
        if (const std::size_t uText = TextQuadLength(sValue); uText != 0) return CODE + 4 + uText;
    }
    const std::size_t uFixed = dgraph::FixedSize(uCode);
    if (sValue.size() < uFixed) return CODE + uFixed;
    switch (uCode) {
        case dgraph::CODE_BOOLEAN: return static_cast<u0_t>(sValue[0]) <= 1 ? CODE + 1 : 0;
        case dgraph::CODE_STRING:
        case dgraph::CODE_BINARY: {
            const std::size_t uLength = Load<u2_t>(sValue.data());
            if (uLength > 0x7FFFFFFF) return 0;
            const bool bText = uCode == dgraph::CODE_STRING && uLength != 0;
            if (bText && uLength <= sValue.size() - 4 && sValue[4 + uLength - 1] != 0) return 0;
            return CODE + 4 + uLength;
        }
        case dgraph::CODE_LINK: {
            const std::size_t uName = Load<u2_t>(sValue.data());
            if (uName == 0 || uName > 0x7FFFFFFF) return 0;
            if (sValue.size() - 4 < uName || sValue.size() - 4 - uName < 4) {
                return CODE + 4 + uName + 4;
            }
            const std::size_t uPath = Load<u2_t>(sValue.data() + 4 + uName);
            return uPath != 0 && uPath <= 0x7FFFFFFF ? CODE + 4 + uName + 4 + uPath : 0;
        }
        default: return CODE + uFixed;
    }
}

}  // namespace vok::inspect
