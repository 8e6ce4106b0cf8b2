// SPDX-License-Identifier: MIT
// The characters that the path syntax reserves, and how names and texts carry them.
#ifndef VOK_DATA_ESCAPE_H
#define VOK_DATA_ESCAPE_H

#include <array>
#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/text_words.h"

namespace vok::detail {

// By byte: whether names and values carry it as an escape.
inline constexpr std::array<bool, 256> RESERVED = [] {
    std::array<bool, 256> abSet{};
    for (const char c : {' ', '/', '.', '[', ']', '=', '"', '*', '\b'}) {
        abSet[static_cast<u0_t>(c)] = true;
    }
    return abSet;
}();

// True for most names: their bytes are ASCII from '0' on, none of "=[]}", or '-'. False says
// nothing.
[[nodiscard]] inline bool IsPlain(std::string_view sText) noexcept {
    return words::AreGood(sText.data(), sText.size(), 'a' * words::EACH, [](u3_t uWord) noexcept {
        // With its high bit no byte is less than what is taken from it; the bit then says whether
        // the others were not.
        const u3_t uHigh = uWord | words::HIGH_BITS;
        const auto oDiffers = [](u3_t u, char c) {
            return (u ^ static_cast<u0_t>(c) * words::EACH) - words::EACH;
        };
        const u3_t uDash = ~oDiffers(uHigh, '-');
        const u3_t uFromDigits = uHigh - '0' * words::EACH;
        // "=" and "]" are "}" but for two bits.
        const u3_t uOther = oDiffers(uHigh, '[') & oDiffers(uHigh | '`' * words::EACH, '}');
        return uWord | ~((uFromDigits | uDash) & uOther);
    });
}

[[nodiscard]] inline bool HasReserved(std::string_view sText) noexcept {
    if (IsPlain(sText)) return false;
    for (const char c : sText) {
        if (RESERVED[static_cast<u0_t>(c)]) return true;
    }
    return false;
}

// Writes a byte as paths and step texts carry it to p, which has room for MOST_ENCODED, and returns
// the place behind it: itself, or as an escape, which is a backspace, its decimal code and a
// semicolon.
inline constexpr std::size_t MOST_ENCODED = 5;
constexpr char* EncodeByte(char c, char* p, const bool* pSet) noexcept {
    const auto uByte = static_cast<u0_t>(c);
    if (!pSet[uByte]) {
        *p++ = c;
        return p;
    }
    *p++ = '\b';
    if (uByte >= 100) *p++ = static_cast<char>('0' + uByte / 100);
    if (uByte >= 10) *p++ = static_cast<char>('0' + uByte / 10 % 10);
    *p++ = static_cast<char>('0' + uByte % 10);
    *p++ = ';';
    return p;
}

// Appends a valid UTF-8 text with every byte of the set (256 flags) escaped; an empty text
// as the escape of code 0.
void AppendEncoded(Arr<char>& oOut, std::string_view sText, const bool* pSet);

// What a path is put together in: most need no memory.
using Path_Text = Arr_Near<char, 240>;

// Appends a step of a path: the name, encoded, and the index in brackets.
void AppendStep(Arr<char>& oOut, std::string_view sName, u2_t uIndex);

}  // namespace vok::detail

#endif  // VOK_DATA_ESCAPE_H
