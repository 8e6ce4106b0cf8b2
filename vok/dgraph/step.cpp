// SPDX-License-Identifier: MIT
#include "vok/dgraph/step.h"

#include <cstring>

#include "vok/data/data.h"

namespace vok::dgraph {

namespace {

[[nodiscard]] bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

[[nodiscard]] char* Find(char* p, char* pEnd, char c) noexcept {
    return static_cast<char*>(std::memchr(p, c, static_cast<std::size_t>(pEnd - p)));
}

}  // namespace

StepFault Step::TryParse(std::string_view sText) {
    sText = sText.substr(0, sText.find('\0'));
    if (sText.empty()) return StepFault::Empty;
    if (sText[0] == '/') return StepFault::BeginsWithSlash;
    if (sText[0] == '.') return StepFault::BeginsWithDot;
    // The NUL behind the text ends every scan below.
    m_oText.Truncate(0);
    m_oText.Add(sText.data(), sText.size());
    m_oText.Add('\0');
    m_oAttribute.Truncate(0);

    char* const pBegin = m_oText.Beg();
    char* const pEnd = pBegin + sText.size();
    char* p = Find(pBegin, pEnd, '[');
    if (p == nullptr || !IsDigit(p[1])) return StepFault::NoIndex;
    *p = 0;
    StepFault eFault = ParseIndex(++p);
    while (eFault == StepFault::None && *p == '[') eFault = ParseAttribute(++p, pEnd);
    if (eFault != StepFault::None) return eFault;

    Data::DecodeXpath(pBegin);
    for (std::size_t u = 0; u < m_oAttribute.Size(); ++u) {
        Data::DecodeXpath(const_cast<char*>(m_oAttribute(u).sName));
        Data::DecodeXpath(const_cast<char*>(m_oAttribute(u).sValue));
    }
    return StepFault::None;
}

StepFault Step::ParseIndex(char*& p) {
    u2_t uIndex = 0;
    for (; IsDigit(*p); ++p) uIndex = 10 * uIndex + static_cast<u2_t>(*p - '0');
    if (*p != ']') return StepFault::IndexNotClosed;
    m_iIndex = static_cast<i2_t>(uIndex);
    ++p;
    return StepFault::None;
}

StepFault Step::ParseAttribute(char*& p, char* pEnd) {
    if (*p != '@') return StepFault::NoAttributeSign;
    char* const pName = p + 1;
    if (*pName == '=') return StepFault::EmptyAttributeName;
    p = Find(pName, pEnd, '=');
    if (p == nullptr) return StepFault::NoAttributeValue;
    *p++ = 0;
    if (*p != '"') return StepFault::NoBeginningQuote;
    char* const pValue = p + 1;
    p = Find(pValue, pEnd, '"');
    if (p == nullptr) return StepFault::NoEndQuote;
    *p++ = 0;
    if (*p != ']') return StepFault::AttributeNotClosed;
    m_oAttribute.Add(Attribute{pName, pValue});
    ++p;
    return StepFault::None;
}

}  // namespace vok::dgraph
