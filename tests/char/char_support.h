// SPDX-License-Identifier: MIT
// Texts of code points, and the files that come with the character database.
#ifndef TESTS_CHAR_CHAR_SUPPORT_H
#define TESTS_CHAR_CHAR_SUPPORT_H

#include <sstream>

#include "tests/support.h"
#include "vok/base/utf8.h"

namespace vok {

using Codes = std::vector<u2_t>;

inline std::string Utf8(const Codes& oCodes) {
    std::string s;
    for (const u2_t uCode : oCodes) {
        char sCode[4];
        s.append(sCode, EncodeUtf8(uCode, sCode));
    }
    return s;
}

// "0044 0307", and what is between the numbers as it is in GraphemeBreakTest.txt.
inline Codes CodesOf(const std::string& sHex) {
    Codes oCodes;
    std::istringstream oIn(sHex);
    for (std::string s; oIn >> s;) {
        if (s[0] > 0) oCodes.push_back(static_cast<u2_t>(std::stoul(s, nullptr, 16)));
    }
    return oCodes;
}

// Code points as numbers, for messages.
inline std::string Shown(std::string_view sText) {
    std::ostringstream oOut;
    for (const char* p = sText.data(); p != sText.data() + sText.size();) {
        oOut << std::hex << DecodeUtf8(p, sText.data() + sText.size()) << ' ';
    }
    return oOut.str();
}

// The fields of the lines of a file, without comments; none if the file is not there.
inline std::vector<Texts> Rows(const std::string& sPath) {
    std::vector<Texts> oRows;
    std::ifstream oIn(sPath);
    for (std::string sLine; std::getline(oIn, sLine);) {
        sLine = sLine.substr(0, sLine.find('#'));
        if (sLine.find_first_not_of(" \t\r") == std::string::npos) continue;
        Texts oFields;
        std::istringstream oFieldsIn(sLine);
        for (std::string s; std::getline(oFieldsIn, s, ';');) {
            s.erase(0, s.find_first_not_of(' '));
            oFields.push_back(s.substr(0, s.find_last_not_of(" \t\r") + 1));
        }
        oRows.push_back(oFields);
    }
    return oRows;
}
inline std::vector<Texts> DatabaseRows(const std::string& sName) {
    return Rows(VOK_UNICODE "/" + sName);
}
#define VOK_SKIP_WITHOUT(oRows) \
    if ((oRows).empty()) GTEST_SKIP() << "no such file: the package unicode-data is not installed"

// What is made of a text by an operation that appends; what was there before must stay.
template <class F>
std::string Appended(F&& oAppend) {
    Arr<char> oOut;
    oOut.Add("*", 1);
    oAppend(oOut);
    const std::string s = Content(oOut);
    EXPECT_EQ(s[0], '*');
    return s.substr(1);
}

// oVisit(text) for texts that have every character once, where oIsWanted(code point) lets it.
// Between two of them is a space, which keeps them apart.
template <class F, class G>
void ForEveryCharacter(F&& oIsWanted, G&& oVisit) {
    std::string s;
    for (u2_t u = 0; u < 0x110000; ++u) {
        const bool bSurrogate = u >= 0xD800 && u < 0xE000;
        if (!bSurrogate && oIsWanted(u)) s += Utf8({u}) + ' ';
        if (u % 128 == 127) oVisit(std::exchange(s, {}));
        if (testing::Test::HasFatalFailure()) return;
    }
}

// Random texts of those characters that do something, and of some that do not.
class Texts_Random {
  public:
    template <class F>
    Texts_Random(unsigned uSeed, F&& oIsWanted) : m_oRandom(uSeed) {
        for (u2_t u = 0; u < 0x110000; ++u) {
            if ((u < 0xD800 || u >= 0xE000) && oIsWanted(u)) m_oWanted.push_back(u);
        }
    }
    // Up to uMost characters. Half of them are of the first ones of the last text.
    Codes Next(std::size_t uMost) {
        Codes oCodes(1 + RandomBelow(m_oRandom, uMost));
        for (u2_t& u : oCodes) {
            const bool bAgain = !m_oLast.empty() && RandomBelow(m_oRandom, 2) != 0;
            u = bAgain ? m_oLast[RandomBelow(m_oRandom, m_oLast.size())]
                       : m_oWanted[RandomBelow(m_oRandom, m_oWanted.size())];
        }
        m_oLast.assign(oCodes.begin(),
                       oCodes.begin() + std::min<std::ptrdiff_t>(4, std::ssize(oCodes)));
        return oCodes;
    }

  private:
    std::mt19937 m_oRandom;
    Codes m_oWanted;
    Codes m_oLast;
};

}  // namespace vok

#endif  // TESTS_CHAR_CHAR_SUPPORT_H
