// SPDX-License-Identifier: MIT
// Characters of a text, taken off quickly. Internal.
#ifndef VOK_CHAR_TEXT_H
#define VOK_CHAR_TEXT_H

#include <bit>
#include <cstring>

#include "vok/base/arr.h"
#include "vok/base/utf8.h"

namespace vok::Char::detail {

// The first byte that is not ASCII; pEnd if all are.
[[nodiscard]] inline const char* SkipAscii(const char* p, const char* pEnd) noexcept {
    constexpr u3_t uHigh = 0x8080808080808080u;
    u3_t auWord[4];
    while (pEnd - p >= 32) {
        std::memcpy(auWord, p, 32);
        if (((auWord[0] | auWord[1] | auWord[2] | auWord[3]) & uHigh) != 0) break;
        p += 32;
    }
    while (pEnd - p >= 8) {
        std::memcpy(auWord, p, 8);
        const u3_t uFound = auWord[0] & uHigh;
        if (uFound != 0) {
            if constexpr (std::endian::native == std::endian::little) {
                return p + std::countr_zero(uFound) / 8;
            }
            break;
        }
        p += 8;
    }
    while (p != pEnd && static_cast<u0_t>(*p) < 0x80) ++p;
    return p;
}

// The bytes of a word, no high bit set in it, with letters of ASCII in the other case than bUpper
// tells put into that one.
[[nodiscard]] inline u3_t InCase(u3_t uWord, bool bUpper) noexcept {
    constexpr u3_t uOnes = 0x0101010101010101u;
    const u3_t uFirst = bUpper ? 'a' : 'A';
    // The high bit of a byte tells: at least the first letter, and beyond the last one.
    const u3_t uFrom = uWord + (0x80 - uFirst) * uOnes;
    const u3_t uBeyond = uWord + (0x80 - (uFirst + 26)) * uOnes;
    return uWord ^ ((uFrom & ~uBeyond & 0x80 * uOnes) >> 2);
}

// A character and whether it was well-formed; what is not is a byte read as Latin-1.
struct Decoded {
    u2_t m_uCode;
    bool m_bGood;
};

// The character at p, which is below pEnd and moves behind it.
[[nodiscard]] inline Decoded Decode(const char*& p, const char* pEnd) noexcept {
    const auto oTail = [&](int i) { return static_cast<u0_t>(p[i]) ^ u2_t { 0x80 }; };
    const u2_t u0 = static_cast<u0_t>(*p);
    if (u0 < 0x80) {
        ++p;
        return {u0, true};
    }
    if (u0 >= 0xC2 && u0 < 0xE0 && pEnd - p >= 2 && oTail(1) < 0x40) {
        const u2_t uCode = (u0 & 0x1F) << 6 | oTail(1);
        p += 2;
        return {uCode, true};
    }
    if ((u0 & 0xF0) == 0xE0 && pEnd - p >= 3 && (oTail(1) | oTail(2)) < 0x40) {
        const u2_t uCode = (u0 & 0xF) << 12 | oTail(1) << 6 | oTail(2);
        if (uCode >= 0x800 && (uCode & 0xF800) != 0xD800) {
            p += 3;
            return {uCode, true};
        }
    }
    const bool bGood = Utf8SequenceLength(p, static_cast<std::size_t>(pEnd - p)) != 0;
    return {DecodeUtf8(p, pEnd), bGood};
}

// Writes a character, as EncodeUtf8 does, and gives the place behind it.
[[nodiscard]] inline char* Encode(u2_t uCode, char* p) noexcept {
    const auto oTail = [](u2_t u) { return static_cast<char>(0x80 | (u & 0x3F)); };
    if (uCode - 0x80 < 0x780) {
        p[0] = static_cast<char>(0xC0 | uCode >> 6);
        p[1] = oTail(uCode);
        return p + 2;
    }
    if (uCode - 0x800 < 0xD000) {
        p[0] = static_cast<char>(0xE0 | uCode >> 12);
        p[1] = oTail(uCode >> 6);
        p[2] = oTail(uCode);
        return p + 3;
    }
    return p + EncodeUtf8(uCode, p);
}

inline void AddChar(Arr<char>& oOut, u2_t uCode) {
    char sCode[4];
    oOut.Add(sCode, static_cast<std::size_t>(Encode(uCode, sCode) - sCode));
}

// What is appended while this lives is dropped unless it is kept: a text that cannot be made whole
// is not made at all.
class Appending {
  public:
    explicit Appending(Arr<char>& oOut) noexcept : m_oOut(oOut), m_uSize(oOut.Size()) {}
    Appending(const Appending&) = delete;
    ~Appending() { m_oOut.Truncate(m_uSize); }
    void Keep() noexcept { m_uSize = m_oOut.Size(); }

  private:
    Arr<char>& m_oOut;
    std::size_t m_uSize;
};

}  // namespace vok::Char::detail

#endif  // VOK_CHAR_TEXT_H
