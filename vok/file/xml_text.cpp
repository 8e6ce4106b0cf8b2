// SPDX-License-Identifier: MIT
#include "vok/file/xml_text.h"

#include <algorithm>
#include <charconv>

#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok::xml {

namespace {

// Characters above ASCII in names: XML 1.0, fifth edition, productions 4 and 4a.
struct Range {
    u2_t uFirst;
    u2_t uLast;
};
constexpr Range START_RANGES[] = {
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range MORE_RANGES[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t SIZE>
bool IsIn(const Range (&aoRange)[SIZE], u2_t uCode) noexcept {
    for (const Range& o : aoRange) {
        if (uCode >= o.uFirst && uCode <= o.uLast) return true;
    }
    return false;
}

bool IsNameCharacter(u2_t uCode, bool bFirst) noexcept {
    if (uCode < 0x80) return Is(static_cast<char>(uCode), bFirst ? NAME_START : NAME);
    return IsIn(START_RANGES, uCode) || (!bFirst && IsIn(MORE_RANGES, uCode));
}

// Bytes of the character at p if it may stand in a name, else 0.
unsigned NameCharacterLength(const char* p, const char* pEnd, bool bFirst) noexcept {
    if (static_cast<u0_t>(*p) < 0x80) return Is(*p, bFirst ? NAME_START : NAME) ? 1 : 0;
    const unsigned uLength = Utf8SequenceLength(p, static_cast<std::size_t>(pEnd - p));
    if (uLength == 0) return 0;
    const char* pNext = p;
    return IsNameCharacter(DecodeUtf8(pNext, pEnd), bFirst) ? uLength : 0;
}

void AddCode(Arr<char>& oOut, u2_t uCode) {
    char s[4];
    oOut.Add(s, EncodeUtf8(uCode, s));
}

// The code point of the reference that starts behind the "&" of sText; 0 when there is none.
// uLength receives its length without the "&".
u2_t DecodeReference(std::string_view sText, std::size_t& uLength) noexcept {
    struct Entity {
        std::string_view sName;
        u2_t uCode;
    };
    static constexpr Entity ENTITIES[] = {{"amp;", '&'},  {"lt;", '<'},    {"gt;", '>'},
                                          {"quot;", '"'}, {"apos;", '\''}, {"nbsp;", 0xA0}};
    for (const Entity& o : ENTITIES) {
        if (!sText.starts_with(o.sName)) continue;
        uLength = o.sName.size();
        return o.uCode;
    }
    if (sText.empty() || sText[0] != '#') return 0;
    const bool bHex = sText.size() > 1 && sText[1] == 'x';
    const char* pDigits = sText.data() + (bHex ? 2 : 1);
    const char* pEnd = sText.data() + sText.size();
    u2_t uCode = 0;
    const auto oResult = std::from_chars(pDigits, pEnd, uCode, bHex ? 16 : 10);
    if (oResult.ec != std::errc() || oResult.ptr == pEnd || *oResult.ptr != ';') return 0;
    uLength = static_cast<std::size_t>(oResult.ptr + 1 - sText.data());
    const bool bCharacter = uCode < 0xD800 || (uCode >= 0xE000 && uCode <= 0x10FFFF);
    return bCharacter ? uCode : 0;
}

// What a message shows of an "&" that starts no known reference.
[[noreturn]] void RaiseUnknown(std::string_view sText) {
    constexpr std::size_t LONGEST = 32;
    const std::size_t uEnd = sText.find(';');
    const std::size_t uShown = uEnd < LONGEST ? uEnd + 1 : std::min(sText.size(), LONGEST);
    Msg::UnknownXmlSequence(Str(sText.substr(0, uShown)).CStr());
}

// The value of the _xHHHH_ or _xHHHHHHHH_ at the start of a text; uLength is 0 when there is
// none.
u2_t EscapeAt(std::string_view sText, std::size_t& uLength) noexcept {
    uLength = 0;
    if (!sText.starts_with("_x")) return 0;
    for (const std::size_t uDigits : {std::size_t{4}, std::size_t{8}}) {
        if (sText.size() < uDigits + 3 || sText[uDigits + 2] != '_') continue;
        u2_t uCode = 0;
        const char* pEnd = sText.data() + 2 + uDigits;
        const auto oResult = std::from_chars(sText.data() + 2, pEnd, uCode, 16);
        const bool bCharacter = uCode < 0xD800 || (uCode >= 0xE000 && uCode <= 0x10FFFF);
        if (oResult.ec != std::errc() || oResult.ptr != pEnd || !bCharacter) continue;
        uLength = uDigits + 3;
        return uCode;
    }
    return 0;
}

// Whether an underscore here could be read as the start of an escape, whatever follows: a
// character behind the digits may itself be escaped, which starts with an underscore.
bool LooksLikeEscape(std::string_view sText) noexcept {
    return sText.starts_with("_x") && sText.size() >= 6 &&
           sText.substr(2, 4).find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

void AddEscape(Arr<char>& oOut, u2_t uCode) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    oOut.Add("_x", 2);
    for (int iShift = uCode > 0xFFFF ? 28 : 12; iShift >= 0; iShift -= 4) {
        oOut.Add(DIGITS[uCode >> iShift & 15]);
    }
    oOut.Add('_');
}

}  // namespace

std::size_t NameLength(std::string_view sText) noexcept {
    const char* p = sText.data();
    const char* pEnd = p + sText.size();
    if (p == pEnd || !Is(*p, NAME_START)) return 0;
    for (;;) {
        u0_t uSeen;
        p += AsciiNameLength({p, static_cast<std::size_t>(pEnd - p)}, uSeen);
        if (p == pEnd) break;
        const unsigned uLength = NameCharacterLength(p, pEnd, p == sText.data());
        if (uLength == 0) break;
        p += uLength;
    }
    return static_cast<std::size_t>(p - sText.data());
}

std::size_t InstructionLength(std::string_view sText, bool bAll) noexcept {
    constexpr std::string_view END = "?>";
    constexpr std::size_t START = 2;
    const std::size_t uNext = sText.find('<', START);
    const std::string_view sHere = sText.substr(0, uNext);
    if (const std::size_t uEnd = sHere.find(END, START); uEnd != std::string_view::npos) {
        return uEnd + END.size();
    }
    if (uNext == std::string_view::npos && !bAll) return 0;
    if (const std::size_t uEnd = sHere.find('>', START); uEnd != std::string_view::npos) {
        return uEnd + 1;
    }
    // One with a tag in it.
    const std::size_t uEnd = sText.find(END, START);
    return uEnd != std::string_view::npos ? uEnd + END.size() : 0;
}

// ---- references -------------------------------------------------------------

namespace {

// A run between two references of a value.
void AddBlanked(Arr<char>& oOut, std::string_view sRun) {
    for (std::size_t u = 0; u < sRun.size(); ++u) {
        if (sRun[u] == '\r' && sRun.substr(u + 1).starts_with('\n')) continue;
        oOut.Add(Is(sRun[u], BLANK) ? ' ' : sRun[u]);
    }
}

template <class AddRun>
std::size_t Decode(Arr<char>& oOut, std::string_view sText, bool bKeepUnknown,
                   const AddRun& oAddRun) {
    std::size_t uKept = 0;
    while (!sText.empty()) {
        const std::size_t uPlain = std::min(sText.find('&'), sText.size());
        oAddRun(sText.substr(0, uPlain));
        sText.remove_prefix(uPlain);
        if (sText.empty()) break;
        std::size_t uLength = 0;
        const u2_t uCode = DecodeReference(sText.substr(1), uLength);
        if (uCode != 0) {
            AddCode(oOut, uCode);
        } else if (bKeepUnknown) {
            oOut.Add('&');
            uLength = 0;
            ++uKept;
        } else {
            RaiseUnknown(sText);
        }
        sText.remove_prefix(uLength + 1);
    }
    return uKept;
}

}  // namespace

std::size_t DecodeText(Arr<char>& oOut, std::string_view sText, bool bKeepUnknown) {
    return Decode(oOut, sText, bKeepUnknown,
                  [&](std::string_view s) { oOut.Add(s.data(), s.size()); });
}

std::size_t DecodeValue(Arr<char>& oOut, std::string_view sValue, bool bKeepUnknown) {
    return Decode(oOut, sValue, bKeepUnknown, [&](std::string_view s) { AddBlanked(oOut, s); });
}

void EncodeText(Arr<char>& oOut, std::string_view sText, bool bAll) {
    constexpr std::string_view NO_BREAK_SPACE = "\xC2\xA0";
    const auto oAdd = [&](std::string_view s) { oOut.Add(s.data(), s.size()); };
    std::size_t uFrom = 0;
    for (std::size_t u = 0; u < sText.size(); ++u) {
        const char c = sText[u];
        const bool bSpace = bAll && sText.substr(u).starts_with(NO_BREAK_SPACE);
        if (Is(c, INERT) && !Is(c, CONTROL) && c != 0x7F && !bSpace) continue;
        if (c == '\'' && !bAll) continue;
        oAdd(sText.substr(uFrom, u - uFrom));
        uFrom = u + 1;
        if (bSpace) {
            oAdd("&#160;");
            uFrom = ++u + 1;
            continue;
        }
        switch (c) {
            case '\'': oAdd("&apos;"); break;
            case '&': oAdd("&amp;"); break;
            case '<': oAdd("&lt;"); break;
            case '>': oAdd("&gt;"); break;
            case '"': oAdd("&quot;"); break;
            default: {
                char sNumber[NUMBER_ROOM];
                oAdd("&#");
                oOut.Add(sNumber, FormatInteger(static_cast<u2_t>(c), sNumber));
                oOut.Add(';');
            }
        }
    }
    oAdd(sText.substr(uFrom));
}

// ---- names ------------------------------------------------------------------

void DecodeName(Arr<char>& oOut, std::string_view sName) {
    while (!sName.empty()) {
        std::size_t uLength = 0;
        const u2_t uCode = sName[0] == '_' ? EscapeAt(sName, uLength) : 0;
        if (uLength != 0) {
            if (uCode == 0) return;
            AddCode(oOut, uCode);
        } else {
            uLength = 1;
            oOut.Add(sName[0]);
        }
        sName.remove_prefix(uLength);
    }
}

bool IsVerbatimName(std::string_view sName) noexcept {
    if (sName.empty() || !Is(sName[0], NAME_START)) return false;
    u0_t uSeen;
    const bool bAscii = AsciiNameLength(sName, uSeen) == sName.size();
    if (!bAscii && NameLength(sName) != sName.size()) return false;
    if ((uSeen & ESCAPE) == 0 && bAscii) return true;
    if (!HasEscapes(sName)) return true;
    for (std::size_t u = 0; u < sName.size(); ++u) {
        std::size_t uLength;
        (void)EscapeAt(sName.substr(u), uLength);
        if (uLength != 0) return false;
    }
    return true;
}

void EncodeName(Arr<char>& oOut, std::string_view sName, bool bEscapeFirst) {
    if (sName.empty()) return AddEscape(oOut, 0);
    const char* p = sName.data();
    const char* pEnd = p + sName.size();
    while (p != pEnd) {
        const char* pFrom = p;
        const bool bFirst = p == sName.data();
        const u2_t uCode = DecodeUtf8(p, pEnd);
        const std::string_view sRest(pFrom, static_cast<std::size_t>(pEnd - pFrom));
        if ((bFirst && bEscapeFirst) || LooksLikeEscape(sRest) || !IsNameCharacter(uCode, bFirst)) {
            AddEscape(oOut, uCode);
        } else {
            oOut.Add(pFrom, static_cast<std::size_t>(p - pFrom));
        }
    }
}

}  // namespace vok::xml
