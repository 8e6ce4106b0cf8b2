// SPDX-License-Identifier: MIT
// UTF-8 and UTF-16 in the Unicode sense: no overlong forms, no surrogates, nothing
// above U+10FFFF (The Unicode Standard, table 3-7).
#ifndef VOK_BASE_UTF8_H
#define VOK_BASE_UTF8_H

#include <cstring>

#include "vok/base/text_words.h"
#include "vok/base/types.h"

namespace vok {

// Length in bytes, 1 to 4, of the well-formed sequence at pText, which has uSize bytes;
// 0 when there is none.
[[nodiscard]] unsigned Utf8SequenceLength(const char* pText, std::size_t uSize) noexcept;

// The code point at pText, which moves behind it. A byte that starts no well-formed
// sequence stands for the Latin-1 character of its value. pText must be below pEnd.
[[nodiscard]] u2_t DecodeUtf8(const char*& pText, const char* pEnd) noexcept;

// Writes uCode (a surrogate or a value above U+10FFFF as U+FFFD) to sOut, which has room
// for 4 bytes; returns the number written.
unsigned EncodeUtf8(u2_t uCode, char* sOut) noexcept;

// Writes a code point as UTF-16 to pOut, which has room for two units; returns how many it took.
inline std::size_t EncodeUtf16(u2_t uCode, char16_t* pOut) noexcept {
    if (uCode < 0x10000) {
        pOut[0] = static_cast<char16_t>(uCode);
        return 1;
    }
    pOut[0] = static_cast<char16_t>(0xD7C0 + (uCode >> 10));
    pOut[1] = static_cast<char16_t>(0xDC00 + (uCode & 0x3FF));
    return 2;
}

// The code point at pText, which moves behind it. A surrogate without its partner stands for
// itself, which EncodeUtf8 writes as U+FFFD. pText must be below pEnd.
[[nodiscard]] inline u2_t DecodeUtf16(const char16_t*& pText, const char16_t* pEnd) noexcept {
    const u2_t uUnit = *pText++;
    const bool bHigh = uUnit >= 0xD800 && uUnit < 0xDC00;
    if (!bHigh || pText == pEnd || *pText < 0xDC00 || *pText >= 0xE000) return uUnit;
    return 0x10000 + ((uUnit - 0xD800) << 10) + (u2_t{*pText++} - 0xDC00);
}

[[nodiscard]] bool IsUtf8(const char* pText, std::size_t uSize) noexcept;
// The same, and that no byte is NUL.
[[nodiscard]] bool IsUtf8Text(const char* pText, std::size_t uSize) noexcept;

// The number of code points in a valid text.
[[nodiscard]] std::size_t CountUtf8(const char* pText, std::size_t uSize) noexcept;

// True when no byte has its high bit set; eight bytes a step.
[[nodiscard]] inline bool IsAscii(const char* pText, std::size_t uSize) noexcept {
    constexpr u3_t uHigh = 0x8080808080808080u;
    u3_t uWord;
    if (uSize < 8) {
        uWord = 0;
        for (std::size_t u = 0; u < uSize; ++u) uWord |= static_cast<u0_t>(pText[u]);
        return (uWord & 0x80) == 0;
    }
    const char* pLast = pText + uSize - 8;
    for (; pText < pLast; pText += 8) {
        std::memcpy(&uWord, pText, 8);
        if ((uWord & uHigh) != 0) return false;
    }
    std::memcpy(&uWord, pLast, 8);
    return (uWord & uHigh) == 0;
}

namespace detail {

// A word without high bits has a NUL in it exactly when taking 1 from each byte sets one.
struct NoAsciiText {
    [[nodiscard]] u3_t operator()(u3_t uWord) const noexcept {
        return uWord | (uWord - words::EACH);
    }
};

}  // namespace detail

// True when every byte is from 1 to 127; eight bytes a step.
[[nodiscard]] inline bool IsAsciiText(const char* pText, std::size_t uSize) noexcept {
    return words::AreGood(pText, uSize, words::EACH, detail::NoAsciiText());
}

// The same of a text that is copied on the way, whatever it is; the two do not overlap.
[[nodiscard]] inline bool CopyAsciiText(char* pTo, const char* pText, std::size_t uSize) noexcept {
    return words::AreGood(
        pText, uSize, words::EACH, detail::NoAsciiText(),
        [pTo](auto uWord, std::size_t uAt) { std::memcpy(pTo + uAt, &uWord, sizeof(uWord)); });
}

}  // namespace vok

#endif  // VOK_BASE_UTF8_H
