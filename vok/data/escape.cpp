// SPDX-License-Identifier: MIT
// Escapes of the path syntax: backspace, decimal code, semicolon.
#include "vok/data/escape.h"

#include <cstring>

#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/data/data.h"

namespace vok {

namespace detail {

void AppendEncoded(Arr<char>& oOut, std::string_view sText, const bool* pSet) {
    if (sText.empty()) {
        oOut.Add("\b0;", 3);
        return;
    }
    for (const char c : sText) {
        if (!pSet[static_cast<u0_t>(c)]) {
            oOut.Add(c);
            continue;
        }
        char sEscape[MOST_ENCODED];
        oOut.Add(sEscape, static_cast<std::size_t>(EncodeByte(c, sEscape, pSet) - sEscape));
    }
}

void AppendStep(Arr<char>& oOut, std::string_view sName, u2_t uIndex) {
    AppendEncoded(oOut, sName, RESERVED.data());
    char sIndex[NUMBER_ROOM];
    oOut.Add('[');
    oOut.Add(sIndex, FormatInteger(uIndex, sIndex));
    oOut.Add(']');
}

}  // namespace detail

void Data::EncodeXpath(Str& oOut, const char* sText, const char* sSet) {
    return Where("vok::Data::EncodeXpath", [&] {
        const Utf8_Text oText(sText);
        Arr<char> oEncoded;
        if (sSet == nullptr) {
            detail::AppendEncoded(oEncoded, oText.View(), detail::RESERVED.data());
        } else {
            bool abSet[256] = {};
            for (; *sSet != 0; ++sSet) abSet[static_cast<u0_t>(*sSet)] = true;
            detail::AppendEncoded(oEncoded, oText.View(), abSet);
        }
        oOut.Add(std::string_view(oEncoded.Beg(), oEncoded.Size()));
    });
}

char* Data::DecodeXpath(char* pBegin, char* pEnd) {
    if (pBegin == nullptr) return pBegin;
    if (pEnd == nullptr) pEnd = pBegin + std::strlen(pBegin);
    char* pRead =
        static_cast<char*>(std::memchr(pBegin, '\b', static_cast<std::size_t>(pEnd - pBegin)));
    if (pRead == nullptr) return pEnd;
    char* pWrite = pRead;
    while (pRead < pEnd) {
        if (*pRead != '\b') {
            *pWrite++ = *pRead++;
            continue;
        }
        char* p = pRead + 1;
        u2_t uCode = 0;
        while (p < pEnd && *p >= '0' && *p <= '9' && uCode <= 0x10FFFF) {
            uCode = 10 * uCode + static_cast<u2_t>(*p++ - '0');
        }
        // What is no escape of a character stays as it stands.
        const bool bGood = p > pRead + 1 && p < pEnd && *p == ';' && uCode <= 0x10FFFF;
        char sCode[4];
        const unsigned uLength = bGood ? EncodeUtf8(uCode, sCode) : 0;
        if (!bGood) {
            *pWrite++ = *pRead++;
            continue;
        }
        // A character longer than its escape ("\b9;" never is) ends the decoding.
        if (uLength > static_cast<unsigned>(p + 1 - pRead)) {
            while (pRead < pEnd) *pWrite++ = *pRead++;
            break;
        }
        std::memcpy(pWrite, sCode, uLength);
        pWrite += uLength;
        pRead = p + 1;
    }
    if (pWrite < pEnd) *pWrite = 0;
    return pWrite;
}

}  // namespace vok
