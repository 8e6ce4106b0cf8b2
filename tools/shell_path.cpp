// SPDX-License-Identifier: MIT
#include "tools/shell_path.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "tools/text.h"
#include "vok/base/utf8.h"
#include "vok/data/data.h"
#include "vok/data/escape.h"

namespace tools {

namespace {

[[noreturn]] void RaiseAt(const std::string& sShell, std::size_t uPlace, const char* sWhat) {
    throw std::invalid_argument("path " + sShell + ": " + sWhat + " at character " +
                                std::to_string(uPlace + 1));
}

// Appends a name or a value as the library's paths carry it.
void AppendEncoded(std::string& sOut, std::string_view sText) {
    vok::Arr<char> oEncoded;
    vok::detail::AppendEncoded(oEncoded, sText, vok::detail::RESERVED.data());
    sOut.append(oEncoded.Beg(), oEncoded.Size());
}

class ShellReader {
  public:
    explicit ShellReader(const std::string& sShell) : m_sShell(sShell) {}

    // Up to a step that is an attribute, if there is one.
    std::string ReadPath() {
        std::string sOut;
        while (m_uAt < m_sShell.size() && !IsAttribute(sOut)) {
            const char c = m_sShell[m_uAt];
            if (c == '"') {
                AppendEncoded(sOut, ReadQuoted());
            } else if (c == '[') {
                ReadPredicate(sOut);
            } else {
                sOut += c;
                ++m_uAt;
            }
        }
        return sOut;
    }
    // The name behind "@", which ends the path; empty where there is none.
    std::string ReadAttribute() {
        if (m_uAt == m_sShell.size()) return {};
        ++m_uAt;
        std::string sName;
        if (m_uAt != m_sShell.size() && m_sShell[m_uAt] == '"') {
            sName = ReadQuoted();
        } else {
            sName = m_sShell.substr(m_uAt);
            m_uAt = m_sShell.size();
        }
        if (m_uAt != m_sShell.size()) RaiseAt(m_sShell, m_uAt, "nothing follows an attribute, but");
        if (sName.empty()) RaiseAt(m_sShell, m_uAt - 1, "an attribute has a name, but not");
        return sName;
    }

  private:
    [[nodiscard]] bool IsAttribute(const std::string& sOut) const {
        return m_sShell[m_uAt] == '@' && (sOut.empty() || sOut.back() == '/');
    }
    // [3], [*], [@name="value"]: the value goes as it is but for its escapes.
    void ReadPredicate(std::string& sOut) {
        for (; m_uAt < m_sShell.size(); ++m_uAt) {
            const char c = m_sShell[m_uAt];
            if (c == '"') {
                sOut += '"';
                AppendEncoded(sOut, ReadQuoted());
                sOut += '"';
                --m_uAt;
            } else {
                sOut += c;
                if (c == ']') break;
            }
        }
        if (m_uAt < m_sShell.size()) ++m_uAt;
    }
    std::string ReadQuoted() {
        const std::size_t uBegin = m_uAt++;
        std::string sOut;
        while (m_uAt < m_sShell.size() && m_sShell[m_uAt] != '"') {
            const char c = m_sShell[m_uAt++];
            c == '\\' ? ReadEscape(sOut) : sOut.push_back(c);
        }
        if (m_uAt == m_sShell.size()) RaiseAt(m_sShell, uBegin, "a quote that does not end");
        ++m_uAt;
        return sOut;
    }
    void ReadEscape(std::string& sOut) {
        const std::size_t uBegin = m_uAt - 1;
        const char c = m_uAt < m_sShell.size() ? m_sShell[m_uAt++] : '\0';
        switch (c) {
            case '"':
            case '\\': sOut += c; return;
            case 'n': sOut += '\n'; return;
            case 'r': sOut += '\r'; return;
            case 't': sOut += '\t'; return;
            case 'x': return ReadCode(sOut, uBegin, 2);
            case 'u': return ReadCode(sOut, uBegin, 4);
            case 'U': return ReadCode(sOut, uBegin, 8);
            default: RaiseAt(m_sShell, uBegin, "no escape");
        }
    }
    void ReadCode(std::string& sOut, std::size_t uBegin, std::size_t uDigits) {
        const std::string_view s = std::string_view(m_sShell).substr(m_uAt, uDigits);
        vok::u2_t uCode = 0;
        const auto o = std::from_chars(s.data(), s.data() + s.size(), uCode, 16);
        if (s.size() != uDigits || o.ptr != s.data() + s.size() || uCode == 0 || uCode > 0x10FFFF) {
            RaiseAt(m_sShell, uBegin, "no escape");
        }
        m_uAt += uDigits;
        char sCode[4];
        sOut.append(sCode, vok::EncodeUtf8(uCode, sCode));
    }

    const std::string& m_sShell;
    std::size_t m_uAt = 0;
};

// A name in quotes where it cannot stand as it is.
std::string ShownName(std::string_view sName) {
    const bool bPlain = !sName.empty() && sName[0] != '@' && !vok::detail::HasReserved(sName) &&
                        sName.find('\'') == std::string_view::npos && Escaped(sName) == sName;
    return bPlain ? std::string(sName) : Quoted(sName);
}

std::string Decoded(std::string_view sEncoded) {
    std::string s(sEncoded);
    const char* const pEnd = vok::Data::DecodeXpath(s.data(), s.data() + s.size());
    s.resize(static_cast<std::size_t>(pEnd - s.data()));
    return s.substr(0, s.find('\0'));
}

}  // namespace

std::string LibraryPath(const std::string& sShell) {
    const NodesOrAttribute o = ParseNodesOrAttribute(sShell);
    if (!o.sAttribute.empty()) {
        throw std::invalid_argument("path " + sShell + ": an attribute is not a node");
    }
    return o.sNodes;
}

NodesOrAttribute ParseNodesOrAttribute(const std::string& sShell) {
    ShellReader oReader(sShell);
    NodesOrAttribute o;
    o.sNodes = oReader.ReadPath();
    o.sAttribute = oReader.ReadAttribute();
    if (o.sAttribute.empty()) return o;
    // The node that the path without it leads to.
    if (o.sNodes.empty()) o.sNodes.assign(1, '.');
    if (o.sNodes.ends_with("//")) {
        o.sNodes += '.';  // of every node from there on
    } else if (o.sNodes.size() > 1 && o.sNodes.ends_with('/')) {
        o.sNodes.pop_back();
    }
    return o;
}

std::string ShownPath(std::string_view sLibrary) {
    std::string sOut;
    while (!sLibrary.empty()) {
        const char c = sLibrary[0];
        if (c == '/') {
            sOut += c;
            sLibrary.remove_prefix(1);
            continue;
        }
        if (c == '[') {
            const std::size_t uEnd = std::min(sLibrary.find(']'), sLibrary.size() - 1) + 1;
            const std::string_view s = sLibrary.substr(0, uEnd);
            const std::size_t uQuote = std::min(s.find('"'), s.size());
            sOut += Visible(s.substr(0, uQuote));
            if (uQuote != s.size()) {
                const std::string_view sValue = s.substr(uQuote + 1);
                const std::size_t uLast = std::min(sValue.rfind('"'), sValue.size());
                sOut += Quoted(Decoded(sValue.substr(0, uLast))) + ']';
            }
            sLibrary.remove_prefix(uEnd);
            continue;
        }
        const std::string_view sStep = sLibrary.substr(0, sLibrary.find_first_of("/["));
        const bool bSign = sStep == "." || sStep == ".." || sStep == "*";
        sOut += bSign ? std::string(sStep) : ShownName(Decoded(sStep));
        sLibrary.remove_prefix(sStep.size());
    }
    return sOut;
}

std::string ShownPlace(std::string_view sLibrary) {
    // At least twice of what is kept of either end: five bytes, an escape, may become one.
    constexpr std::size_t END = 2048;
    const std::size_t uHead = sLibrary.find('/', std::min(END, sLibrary.size()));
    const std::size_t uTail =
        sLibrary.size() > END ? sLibrary.rfind('/', sLibrary.size() - END) : 0;
    if (uHead >= uTail) return Shortened(ShownPath(sLibrary));
    return Shortened(ShownPath(sLibrary.substr(0, uHead)) + ShownPath(sLibrary.substr(uTail)));
}

std::string ShownAttribute(const std::string& sShown, std::string_view sName) {
    const bool bQuotes = vok::detail::HasReserved(sName) || ShownName(sName) != sName;
    return sShown + (sShown.ends_with('/') ? "@" : "/@") +
           (bQuotes ? Quoted(sName) : std::string(sName));
}

}  // namespace tools
