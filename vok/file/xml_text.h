// SPDX-License-Identifier: MIT
// The letters of XML: names, references, escapes. Internal.
#ifndef VOK_FILE_XML_TEXT_H
#define VOK_FILE_XML_TEXT_H

#include <array>
#include <string_view>

#include "vok/base/arr.h"

namespace vok::xml {

// What a byte can be; the bits of CLASSES. A byte from 0x80 on counts as part of a name until
// NameLength has looked at its whole character.
enum Class : u0_t {
    NAME_START = 1,
    NAME = 2,
    BLANK = 4,
    INERT = 8,        // means nothing in a text or a value, and is no NUL
    CONTROL = 16,     // has to be written as a reference to survive in a value
    ASCII_NAME = 32,  // part of a name, and below 0x80
    ESCAPE = 64,      // starts an escape in a name if what follows does, too
};

inline constexpr std::array<u0_t, 256> CLASSES = [] {
    std::array<u0_t, 256> au{};
    for (unsigned u = 0; u < 256; ++u) {
        const bool bLetter = (u | 0x20) >= 'a' && (u | 0x20) <= 'z';
        const bool bStart = bLetter || u == '_' || u == ':' || u >= 0x80;
        if (bStart) au[u] |= NAME_START;
        if (bStart || (u >= '0' && u <= '9') || u == '-' || u == '.') au[u] |= NAME;
        if ((au[u] & NAME) != 0 && u < 0x80) au[u] |= ASCII_NAME;
        if (u == '_') au[u] |= ESCAPE;
        if (u == ' ' || u == '\t' || u == '\r' || u == '\n') au[u] |= BLANK;
        if (u != 0 && u != '<' && u != '&' && u != '>' && u != '"' && u != '\'') au[u] |= INERT;
        if (u < 0x20) au[u] |= CONTROL;
    }
    return au;
}();

[[nodiscard]] inline bool Is(char c, u0_t uClass) noexcept {
    return (CLASSES[static_cast<u0_t>(c)] & uClass) != 0;
}

[[nodiscard]] inline bool IsBlank(std::string_view sText) noexcept {
    for (const char c : sText) {
        if (!Is(c, BLANK)) return false;
    }
    return true;
}

// Bytes at the start of a text that are ASCII and may stand in a name; uSeen receives the classes
// that any of them has.
[[nodiscard]] inline std::size_t AsciiNameLength(std::string_view sText, u0_t& uSeen) noexcept {
    std::size_t u = 0;
    for (uSeen = 0; u < sText.size() && Is(sText[u], ASCII_NAME); ++u) {
        uSeen |= CLASSES[static_cast<u0_t>(sText[u])];
    }
    return u;
}

// Bytes of the name at the start of a text (XML 1.0, productions 4 and 4a); 0 when there is
// none. Bytes that are no UTF-8 end it.
[[nodiscard]] std::size_t NameLength(std::string_view sText) noexcept;

// Bytes of the processing instruction, or XML declaration, at the start of a text. It ends with
// "?>"; with a mere ">" like any other tag if there is one, and no "?>", in front of the next "<".
// 0 when it does not end, or when it takes more bytes to tell. bAll: there are no more.
[[nodiscard]] std::size_t InstructionLength(std::string_view sText, bool bAll) noexcept;

// ---- references -------------------------------------------------------------

// Appends a text with its references decoded: "&lt;", "&#228;", "&#xE4;", and amp, gt, quot,
// apos, nbsp. Any other "&" stays as it stands with bKeepUnknown, else it raises "unknown xml
// sequene "%0"". Returns how many stayed.
std::size_t DecodeText(Arr<char>& oOut, std::string_view sText, bool bKeepUnknown);
// The same for a value of an attribute: tabs and line breaks that are no references are blanks,
// "\r\n" is one (XML 1.0, 2.11 and 3.3.3).
std::size_t DecodeValue(Arr<char>& oOut, std::string_view sValue, bool bKeepUnknown);

// Appends a text with &, <, >, the double quote and control characters as references; with bAll
// also the apostrophe and the no-break space, which need it nowhere in what a Data writes.
void EncodeText(Arr<char>& oOut, std::string_view sText, bool bAll = false);

// ---- names ------------------------------------------------------------------
//
// A name that XML does not allow is written with its offending characters as _xHHHH_ (four
// hexadecimal digits, eight above U+FFFF), an underscore that would be taken for the start of
// such a sequence as _x005F_, and the empty name as _x0000_. That is the convention of .NET's
// XmlConvert, which knows no empty name.

// Whether decoding may change the name. Names are short and may be full of underscores, for
// each of which a search of the standard library would be a call.
[[nodiscard]] inline bool HasEscapes(std::string_view sName) noexcept {
    for (std::size_t u = 1; u < sName.size(); ++u) {
        if (sName[u] == 'x' && sName[u - 1] == '_') return true;
    }
    return false;
}
// Appends the name that a written one stands for; it ends at a NUL in it.
void DecodeName(Arr<char>& oOut, std::string_view sName);
// Whether a name is written as it stands.
[[nodiscard]] bool IsVerbatimName(std::string_view sName) noexcept;
// Appends the written form of a name. bEscapeFirst: also if its first character is allowed.
void EncodeName(Arr<char>& oOut, std::string_view sName, bool bEscapeFirst = false);

}  // namespace vok::xml

#endif  // VOK_FILE_XML_TEXT_H
