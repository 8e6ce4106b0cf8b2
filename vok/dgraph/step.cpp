#include "vok/dgraph/step.h"

#include <cstring>

#include "vok/data/data.h"
#include "vok/dgraph/messages.h"

namespace vok::dgraph {

namespace {

[[nodiscard]] bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

[[nodiscard]] char* Find(char* p, char* pEnd, char c) noexcept {
    return static_cast<char*>(std::memchr(p, c, static_cast<std::size_t>(pEnd - p)));
}

}  // namespace

void Step::Parse(std::string_view sText) {
    sText = sText.substr(0, sText.find('\0'));
    if (sText.empty()) RaiseInvalidStep(StepFault::Empty);
    if (sText[0] == '/') RaiseInvalidStep(StepFault::BeginsWithSlash);
    if (sText[0] == '.') RaiseInvalidStep(StepFault::BeginsWithDot);
    // The NUL behind the text ends every scan below.
    m_oText.Truncate(0);
    m_oText.Add(sText.data(), sText.size());
    m_oText.Add('\0');
    m_oAttribute.Truncate(0);

    char* const pBegin = m_oText.Beg();
    char* const pEnd = pBegin + sText.size();
    char* p = Find(pBegin, pEnd, '[');
    if (p == nullptr || !IsDigit(p[1])) RaiseInvalidStep(StepFault::NoIndex);
    *p = 0;
    p = ParseIndex(p + 1);
    while (*p == '[') p = ParseAttribute(p + 1, pEnd);

    Data::DecodeXpath(pBegin);
    for (std::size_t u = 0; u < m_oAttribute.Size(); ++u) {
        Data::DecodeXpath(const_cast<char*>(m_oAttribute(u).sName));
        Data::DecodeXpath(const_cast<char*>(m_oAttribute(u).sValue));
    }
}

char* Step::ParseIndex(char* p) {
    u2_t uIndex = 0;
    for (; IsDigit(*p); ++p) uIndex = 10 * uIndex + static_cast<u2_t>(*p - '0');
    if (*p != ']') RaiseInvalidStep(StepFault::IndexNotClosed);
    m_iIndex = static_cast<i2_t>(uIndex);
    return p + 1;
}

char* Step::ParseAttribute(char* p, char* pEnd) {
    if (*p != '@') RaiseInvalidStep(StepFault::NoAttributeSign);
    char* const pName = p + 1;
    if (*pName == '=') RaiseInvalidStep(StepFault::EmptyAttributeName);
    p = Find(pName, pEnd, '=');
    if (p == nullptr) RaiseInvalidStep(StepFault::NoAttributeValue);
    *p++ = 0;
    if (*p != '"') RaiseInvalidStep(StepFault::NoBeginningQuote);
    char* const pValue = p + 1;
    p = Find(pValue, pEnd, '"');
    if (p == nullptr) RaiseInvalidStep(StepFault::NoEndQuote);
    *p++ = 0;
    if (*p != ']') RaiseInvalidStep(StepFault::AttributeNotClosed);
    m_oAttribute.Add(Attribute{pName, pValue});
    return p + 1;
}

}  // namespace vok::dgraph
