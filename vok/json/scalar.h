// SPDX-License-Identifier: MIT
// Values as JSON carries them. Internal.
#ifndef VOK_JSON_SCALAR_H
#define VOK_JSON_SCALAR_H

#include <string_view>

#include "vok/base/number.h"
#include "vok/data/node.h"

namespace vok::json {

// A value that is no object and no array, as it stands in the document.
struct Scalar {
    enum Kind : u0_t { Null, False, True, Number, Text };
    Kind eKind;
    std::string_view sText;  // of a number its characters, of a text what it means
    bool bNul = false;       // there is one in the text
};

// What a number is in a tree.
struct Number {
    Data_Node::Type eType;  // Integer, Long, or Double where neither holds it
    u3_t uBits;
    bool bRounded = false;  // a Double of which the digits of the text cannot be had again
};
// Of a well-formed number. Raises the error of one that is too large.
[[nodiscard]] Number ReadNumber(std::string_view sText);

// Reals that JSON has no numbers for: "INF", "-INF", "NaN", and any other that is not a number by
// its bits, "0x7FF8000000000001". sBuf has NUMBER_ROOM bytes.
[[nodiscard]] std::string_view FormatUnreal(double dValue, char* sBuf) noexcept;

// A date as "2026-11-24T18:35:56Z" where that is all of it, else an empty text. sBuf has room for
// 128 bytes.
[[nodiscard]] std::string_view FormatPlainDate(double dSeconds, char* sBuf) noexcept;

// The bits of a Boolean, Integer, Char, Float, Double, Date or Long from the value of its typed
// form; bRounded is set as in Number. False when it is none.
[[nodiscard]] bool ReadTyped(Data_Node::Type eType, const Scalar& o, u3_t& uBits, bool& bRounded);

// Four numbers of 32 bits with commas between them; false for any other text.
[[nodiscard]] bool ReadQuad(std::string_view sText, u2_t* pWords) noexcept;

}  // namespace vok::json

#endif  // VOK_JSON_SCALAR_H
