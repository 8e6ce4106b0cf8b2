// SPDX-License-Identifier: MIT
// Values that stand in documents as texts. Internal.
#ifndef VOK_XML_SCALAR_H
#define VOK_XML_SCALAR_H

#include <array>
#include <bit>
#include <string_view>

#include "vok/base/number.h"
#include "vok/xml/form.h"

namespace vok::xml {

// The value of an element of a type before its text is known: what the text says is added to it.
[[nodiscard]] inline u3_t SeedOf(const TypeName& oType) noexcept {
    return oType.bZone ? std::bit_cast<u3_t>(3600.0) : 0;
}

// The 64 bits of a Boolean, Integer, Char, Float, Double, Date or Long. Raises "unknown xml sequene
// "%0"" for a text that is no date.
[[nodiscard]] u3_t ParseScalar(Data_Node::Type eType, std::string_view sText, u3_t uSeed);
// Four numbers with commas between them; those that are missing are 0.
[[nodiscard]] std::array<u2_t, 4> ParseQuad(std::string_view sText);
// The number in "ID17"; NO_NUMBER for one beyond 64 bits, which is nobody's.
inline constexpr u3_t NO_NUMBER = ~u3_t{0};
[[nodiscard]] u3_t ParseNodeNumber(std::string_view sValue);
// That text, in sBuf.
[[nodiscard]] inline std::string_view FormatNodeNumber(u3_t uNumber,
                                                       char (&sBuf)[NUMBER_ROOM + 2]) noexcept {
    sBuf[0] = 'I';
    sBuf[1] = 'D';
    return {sBuf, 2 + FormatInteger(uNumber, sBuf + 2)};
}

[[noreturn]] void RaiseUnknownText(std::string_view sText);

}  // namespace vok::xml

#endif  // VOK_XML_SCALAR_H
