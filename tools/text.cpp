// SPDX-License-Identifier: MIT
#include "tools/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tools/pager.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "vok/base/base64.h"
#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/char/cluster.h"
#include "vok/data/view.h"
#include "vok/sys/sys.h"

namespace tools {

using vok::Data_Node;

std::string ValueText(const vok::Data_Value& o) {
    char s[128];
    switch (o.GetType()) {
        case Data_Node::Boolean: return o.Int() != 0 ? "true" : "false";
        case Data_Node::Integer:
        case Data_Node::Char: return std::to_string(o.Int());
        case Data_Node::Float:
        case Data_Node::Double: return {s, vok::FormatReal(o.Dbl(), s)};
        case Data_Node::Date: {
            const double dSeconds = o.Dbl();
            std::string sText(s, vok::FormatDate(dSeconds, 'T', s));
            const double dFraction = dSeconds - std::floor(dSeconds);
            if (dFraction > 0) {
                // All digits of the smallest one; dates have no exponents.
                char sFraction[512];
                const auto oEnd = std::to_chars(sFraction, sFraction + sizeof(sFraction), dFraction,
                                                std::chars_format::fixed);
                sText.append(sFraction + 1, oEnd.ptr);
            }
            return sText + 'Z';
        }
        case Data_Node::Binary: {
            std::string sText(vok::Base64Size(o.Text().size()), '\0');
            vok::EncodeBase64(o.Text().data(), o.Text().size(), sText.data());
            return sText;
        }
        case Data_Node::Long: return std::to_string(o.Lng());
        case Data_Node::Quad: {
            const auto& au = o.QuadWords();
            return std::to_string(au[0]) + ',' + std::to_string(au[1]) + ',' +
                   std::to_string(au[2]) + ',' + std::to_string(au[3]);
        }
        default: return std::string(o.Text());
    }
}

std::string ValueText(const vok::Data& oNode) {
    if (oNode.GetType() != Data_Node::Link) return ValueText(vok::Data_View(oNode).GetValue());
    const vok::Data oTarget = oNode.GetValLink();
    return oTarget.IsNode() ? ShownPath(oTarget.GetPath().View()) : "";
}

std::string Line(std::string_view sMessage) {
    return std::string(sMessage.substr(0, sMessage.find_last_not_of('\n') + 1));
}

namespace {

// Characters that are not shown as they are: control characters of every plane (Cc), those that
// change the direction of writing or cannot be seen (Cf), line and paragraph separators.
[[nodiscard]] bool IsHidden(vok::u2_t uCode) noexcept {
    struct Range {
        vok::u2_t uFirst, uLast;
    };
    constexpr Range RANGES[] = {
        {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},       {0x61C, 0x61C},
        {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},
        {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
    };
    for (const Range& o : RANGES) {
        if (uCode >= o.uFirst && uCode <= o.uLast) return true;
    }
    return false;
}

void AddHex(std::string& sOut, char cKind, unsigned uDigits, vok::u2_t uCode) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    sOut += '\\';
    sOut += cKind;
    while (uDigits-- > 0) sOut += DIGITS[uCode >> 4 * uDigits & 15];
}

std::string Escape(std::string_view sText, bool bBackslashes) {
    std::string sOut;
    sOut.reserve(sText.size());
    const char* p = sText.data();
    const char* const pEnd = p + sText.size();
    while (p != pEnd) {
        const auto uByte = static_cast<unsigned char>(*p);
        const unsigned uLength = vok::Utf8SequenceLength(p, static_cast<std::size_t>(pEnd - p));
        const char* const pFrom = p;
        const vok::u2_t uCode = uLength > 1 ? vok::DecodeUtf8(p, pEnd) : uByte;
        p = pFrom + (uLength > 1 ? uLength : 1);
        switch (uCode) {
            case '\\': sOut += bBackslashes ? "\\\\" : "\\"; continue;
            case '\n': sOut += "\\n"; continue;
            case '\r': sOut += "\\r"; continue;
            case '\t': sOut += "\\t"; continue;
            default: break;
        }
        const bool bByte = uByte >= 0x80 && uLength <= 1;
        if (bByte || (uCode < 0x80 && IsHidden(uCode))) {
            AddHex(sOut, 'x', 2, uByte);
        } else if (IsHidden(uCode)) {
            AddHex(sOut, uCode < 0x10000 ? 'u' : 'U', uCode < 0x10000 ? 4 : 8, uCode);
        } else {
            sOut.append(pFrom, p);
        }
    }
    return sOut;
}

}  // namespace

std::string Escaped(std::string_view sText) {
    return Escape(sText, true);
}

std::string Quoted(std::string_view sText) {
    std::string sOut = "\"";
    for (const char c : Escaped(sText)) {
        if (c == '"') sOut += '\\';
        c == '\'' ? void(sOut += "\\x27") : sOut.push_back(c);
    }
    return sOut + '"';
}

std::string Visible(std::string_view sText) {
    return Escape(sText, false);
}

std::string Hex(std::string_view sBytes, bool bBlanks) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string sHex;
    for (const char c : sBytes) {
        if (bBlanks && !sHex.empty()) sHex += ' ';
        const auto u = static_cast<unsigned char>(c);
        sHex += DIGITS[u >> 4];
        sHex += DIGITS[u & 15];
    }
    return sHex;
}

void Tell(std::string_view sName, std::string_view sWhat) {
    Complain('"' + Escaped(sName) + "\" " + Visible(sWhat));
}

std::string BehindText(vok::u3_t uBytes) {
    return Say("%0 bytes behind the archive: maybe of an append that was interrupted",
               {std::to_string(uBytes)});
}

std::string_view Beginning(std::string_view sText, std::size_t uMost) {
    if (sText.size() <= uMost) return sText;
    std::size_t uEnd = 0;
    for (std::size_t u = 0; u <= uMost; u = vok::Char::NextCluster(sText, u)) uEnd = u;
    if (uEnd != 0) return sText.substr(0, uEnd);
    // One of them is longer than that: not inside a code point.
    for (uEnd = uMost; uEnd != 0 && (sText[uEnd] & 0xC0) == 0x80;) --uEnd;
    return sText.substr(0, uEnd);
}

std::string Shortened(std::string_view sPath) {
    constexpr std::size_t HALF = 200;
    if (sPath.size() <= 2 * HALF) return std::string(sPath);
    const std::string_view sFirst = Beginning(sPath, HALF);
    std::size_t uLast = sFirst.size();
    while (sPath.size() - uLast > HALF) uLast = vok::Char::NextCluster(sPath, uLast);
    return std::string(sFirst) + " ... " + std::string(sPath.substr(uLast));
}

Palette::Palette(bool bColoured) noexcept {
    if (!bColoured) return;
    sName = "\x1b[1m";
    sType = "\x1b[2m";
    sAttribute = "\x1b[36m";
    sValue = "\x1b[32m";
    sFault = "\x1b[31m";
    sEnd = "\x1b[0m";
}

namespace {

enum class Colours { Auto, Always, Never };
Colours g_eColours = Colours::Auto;

}  // namespace

bool WantsColour() noexcept {
    if (g_eColours != Colours::Auto) return g_eColours == Colours::Always;
    const char* sNo = std::getenv("NO_COLOR");
    const char* sTerminal = std::getenv("TERM");
    const bool bDumb = sTerminal != nullptr && std::string_view(sTerminal) == "dumb";
    return (vok::sys::IsTerminal(stdout) || IsPaging()) && (sNo == nullptr || *sNo == 0) && !bDumb;
}

void SetColours(const std::string& sWhen) {
    g_eColours = sWhen == "always"  ? Colours::Always
                 : sWhen == "never" ? Colours::Never
                                    : Colours::Auto;
}

}  // namespace tools
