// SPDX-License-Identifier: MIT
// The path parser.
#include "vok/data/xpath.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "vok/base/utf8.h"
#include "vok/base/where.h"

namespace vok {

namespace {

[[nodiscard]] char* Find(char* pBegin, char* pEnd, char c) noexcept {
    return static_cast<char*>(std::memchr(pBegin, c, static_cast<std::size_t>(pEnd - pBegin)));
}

// The character at p for a message, whole even when it takes several bytes.
[[nodiscard]] u2_t CharAt(const char* p, const char* pEnd) noexcept {
    return DecodeUtf8(p, pEnd);
}

// Parses the predicates of one step, each of which begins at "[".
class PredicateParser {
  public:
    PredicateParser(Data_XpathStep& oStep, char* pPos, char* pEnd)
        : m_oStep(oStep), p(pPos), m_pEnd(pEnd) {}

    // Returns the place behind the last "]".
    char* Run() {
        while (p < m_pEnd && *p == '[') {
            ++p;
            if (p == m_pEnd) Msg::OpeningBracketWithoutClosing('[');
            if (*p == '@') {
                ParseAttribute();
            } else {
                ParsePosition();
            }
        }
        return p;
    }

  private:
    void ParsePosition() {
        if (m_bPosition) Msg::CharacterExpectedAfter('@', '[');
        m_bPosition = true;
        u2_t uBefore = '*';
        if (*p == '*') {
            ++p;
        } else if (*p >= '0' && *p <= '9') {
            m_oStep.m_iIndex = 0;
            for (; p < m_pEnd && *p >= '0' && *p <= '9'; ++p) {
                if (m_oStep.m_iIndex > 100000000) Msg::IntegerValueToBig();
                m_oStep.m_iIndex = 10 * m_oStep.m_iIndex + (*p - '0');
                uBefore = static_cast<u0_t>(*p);
            }
        } else {
            Msg::InvalidCharacterAfter(CharAt(p, m_pEnd), '[');
        }
        if (p == m_pEnd) Msg::OpeningBracketWithoutClosing('[');
        if (*p != ']') Msg::InvalidCharacterAfter(CharAt(p, m_pEnd), uBefore);
        ++p;
    }

    void ParseAttribute() {
        char* pName = ++p;
        p = Find(p, m_pEnd, '=');
        if (p == nullptr) Msg::MissingCharInString('=');
        if (p == pName) Msg::EmptyAttributeNameInXpath();
        *p++ = 0;
        if (p == m_pEnd || *p != '"') Msg::CharacterExpectedAfter('"', '=');
        char* pValue = ++p;
        p = Find(p, m_pEnd, '"');
        if (p == nullptr) Msg::MissingCharInString('"');
        *p++ = 0;
        if (p == m_pEnd || *p != ']') Msg::CharacterExpectedAfter(']', '"');
        ++p;
        m_oStep.m_oAttName.Add(pName);
        m_oStep.m_oAttVal.Add(pValue);
    }

    Data_XpathStep& m_oStep;
    char* p;
    char* m_pEnd;
    bool m_bPosition = false;
};

}  // namespace

// ---- Data_XpathStep ---------------------------------------------------------

char* Data_XpathStep::Parse(char* pBegin, char* pEnd) {
    return Where("vok::Data_Xpath::Step::Parse", [&] {
        if (pBegin >= pEnd) Msg::AssertionFailed("sXpath < sEnd");
        char* p = pBegin;
        while (p < pEnd && *p != '/' && *p != '[') ++p;
        const char cEnd = p < pEnd ? *p : '\0';
        const std::string_view sName(pBegin, static_cast<std::size_t>(p - pBegin));
        m_sName = pBegin;
        m_bAnyName = sName == "*";
        m_eKind = sName == "." ? Self : sName == ".." ? Parent : Named;
        if (cEnd == '[') {
            if (m_eKind != Named) Msg::InvalidCharacterAfter('[', '.');
            // The NUL behind the name takes the place of the bracket.
            p = PredicateParser(*this, p, pEnd).Run();
            pBegin[sName.size()] = 0;
        }
        if (p == pEnd) return p;
        if (*p != '/') Msg::InvalidCharacterAfter(CharAt(p, pEnd), ']');
        *p++ = 0;
        m_bDescendant = p < pEnd && *p == '/';
        return m_bDescendant ? p + 1 : p;
    });
}

// ---- Data_Xpath -------------------------------------------------------------

Data_Xpath::~Data_Xpath() {
    Clear();
    Mem::Free(m_pSteps);
}

void Data_Xpath::Clear() noexcept {
    for (std::size_t u = 0; u < m_uSteps; ++u) m_pSteps[u].~Data_XpathStep();
    m_uSteps = 0;
    m_bAbsolute = false;
    m_bDescendantFromRoot = false;
}

Data_XpathStep& Data_Xpath::AddStep() {
    if (m_uSteps == m_uCapacity) {
        const std::size_t uCapacity = 2 * m_uCapacity + 4;
        Step* pSteps = static_cast<Step*>(Mem::Create(uCapacity * sizeof(Step)));
        for (std::size_t u = 0; u < m_uSteps; ++u) {
            new (pSteps + u) Step(std::move(m_pSteps[u]));
            m_pSteps[u].~Data_XpathStep();
        }
        Mem::Free(m_pSteps);
        m_pSteps = pSteps;
        m_uCapacity = uCapacity;
    }
    return *new (m_pSteps + m_uSteps++) Step;
}

void Data_Xpath::Parse(const char* sText) {
    return Where("vok::Data_Xpath::Parse", [&] {
        Clear();
        const Utf8_Text oText(sText);
        m_oText.Resize(0);
        m_oText.Add(oText.Data(), oText.Len());
        m_oText.Add('\0');
        char* p = m_oText.Beg();
        char* pEnd = p + oText.Len();
        try {
            if (p < pEnd && *p == '/') {
                m_bAbsolute = true;
                ++p;
                m_bDescendantFromRoot = p < pEnd && *p == '/';
                p += m_bDescendantFromRoot;
            }
            while (p < pEnd) {
                if (*p == '/') Msg::EmptyXpathNotAllowed();
                p = AddStep().Parse(p, pEnd);
            }
        } catch (...) {
            Clear();
            throw;
        }
        // Piece by piece: an escape decoded in one must not move the others.
        for (std::size_t u = 0; u < m_uSteps; ++u) {
            Step& oStep = m_pSteps[u];
            Data::DecodeXpath(const_cast<char*>(oStep.m_sName));
            for (std::size_t uAtt = 0; uAtt < oStep.m_oAttName.Size(); ++uAtt) {
                Data::DecodeXpath(const_cast<char*>(oStep.m_oAttName(uAtt)));
                Data::DecodeXpath(const_cast<char*>(oStep.m_oAttVal(uAtt)));
            }
        }
    });
}

void Data_Xpath::Debug(Str& oOut) const {
    return Where("vok::Data_Xpath::Debug", [&] {
        if (m_bAbsolute) oOut.Add("Absolute\n");
        if (m_bDescendantFromRoot) oOut.Add("StopEach\n");
        for (std::size_t uNth = 0; uNth < m_uSteps; ++uNth) {
            const Step& oStep = m_pSteps[uNth];
            oOut.Add("Name=\"");
            oOut.Add(oStep.m_sName);
            oOut.Add("\"");
            if (*oStep.m_sName == 0) oOut.Add(" Empty");
            if (oStep.m_iIndex >= 0) {
                char sIndex[32];
                std::snprintf(sIndex, sizeof(sIndex), " [%d]", oStep.m_iIndex);
                oOut.Add(sIndex);
            }
            for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
                oOut.Add(" @");
                oOut.Add(oStep.m_oAttName(u));
                oOut.Add("=\"");
                oOut.Add(oStep.AttVal(u));
                oOut.Add("\"");
            }
            if (oStep.m_bDescendant) oOut.Add(" StopEach");
            oOut.Add("\n");
        }
    });
}

}  // namespace vok
