// SPDX-License-Identifier: MIT
// Base64, sixteen characters at a time, on processors that can look up bytes in a register.
// Internal: for base64.cpp, which does the rest.
//
// After W. Muła and D. Lemire, "Faster Base64 Encoding and Decoding using AVX2 Instructions", ACM
// Transactions on the Web 12 (2018), in registers of half the size.
#ifndef VOK_BASE_BASE64_WIDE_H
#define VOK_BASE_BASE64_WIDE_H

#include <cstddef>

#ifdef __x86_64__
#include <tmmintrin.h>
#endif

namespace vok::base64 {

#ifdef __x86_64__

[[nodiscard]] inline bool IsWide() noexcept {
    return __builtin_cpu_supports("ssse3") != 0;
}

// Encodes twelve bytes at a time as long as there are sixteen.
[[gnu::target("ssse3")]] inline void EncodeWide(const char*& pBytes, std::size_t& uSize,
                                                char*& pOut) noexcept {
    // Of three bytes a, b, c each four get b, a, c, b, so that each of their digits is within two.
    const __m128i oSpread = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    // By class of a digit: what takes it to its character.
    const __m128i oOffset =
        _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    for (; uSize >= 16; uSize -= 12, pBytes += 12, pOut += 16) {
        const __m128i oIn =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pBytes)), oSpread);
        // The first and third digit of four, moved down, the second and fourth, moved up.
        const __m128i oOdd = _mm_mulhi_epu16(_mm_and_si128(oIn, _mm_set1_epi32(0x0FC0FC00)),
                                             _mm_set1_epi32(0x04000040));
        const __m128i oEven = _mm_mullo_epi16(_mm_and_si128(oIn, _mm_set1_epi32(0x003F03F0)),
                                              _mm_set1_epi32(0x01000010));
        const __m128i oDigit = _mm_or_si128(oOdd, oEven);
        // 0 from "a" to "z", 1 to 10 for "0" to "9", 11 and 12 for the last two, 13 from "A" on.
        const __m128i oLow = _mm_cmpgt_epi8(_mm_set1_epi8(26), oDigit);
        const __m128i oClass = _mm_or_si128(_mm_subs_epu8(oDigit, _mm_set1_epi8(51)),
                                            _mm_and_si128(oLow, _mm_set1_epi8(13)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut),
                         _mm_add_epi8(_mm_shuffle_epi8(oOffset, oClass), oDigit));
    }
}

// Decodes sixteen characters at a time as long as all of them are digits, and eight more are there.
// Behind the twelve bytes of each it writes four more.
[[gnu::target("ssse3")]] inline void DecodeWide(const char*& pText, const char* pEnd,
                                                char*& pOut) noexcept {
    // By the low and by the high half of a character: bits of the groups that it is not in. It is
    // no digit where both have one in common.
    const __m128i oLowHalf = _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                           0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m128i oHighHalf = _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                            0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    // By the high half, one less for "/": what takes a character to its digit.
    const __m128i oOffset = _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i oHalf = _mm_set1_epi8(0x2F);  // bits that a shift has moved in do not matter
    for (; pEnd - pText >= 24; pText += 16, pOut += 12) {
        const __m128i oText = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pText));
        const __m128i oHigh = _mm_and_si128(_mm_srli_epi32(oText, 4), oHalf);
        const __m128i oBad = _mm_and_si128(_mm_shuffle_epi8(oLowHalf, _mm_and_si128(oText, oHalf)),
                                           _mm_shuffle_epi8(oHighHalf, oHigh));
        if (_mm_movemask_epi8(_mm_cmpgt_epi8(oBad, _mm_setzero_si128())) != 0) return;
        const __m128i oSlash = _mm_cmpeq_epi8(oText, _mm_set1_epi8('/'));
        const __m128i oDigit =
            _mm_add_epi8(oText, _mm_shuffle_epi8(oOffset, _mm_add_epi8(oSlash, oHigh)));
        // Four digits to three bytes, the last of them lowest, then the other way round.
        const __m128i oPair = _mm_maddubs_epi16(oDigit, _mm_set1_epi32(0x01400140));
        const __m128i oFour = _mm_madd_epi16(oPair, _mm_set1_epi32(0x00011000));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut),
                         _mm_shuffle_epi8(oFour, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13,
                                                               12, -1, -1, -1, -1)));
    }
}

#else

[[nodiscard]] constexpr bool IsWide() noexcept {
    return false;
}
inline void EncodeWide(const char*&, std::size_t&, char*&) noexcept {}
inline void DecodeWide(const char*&, const char*, char*&) noexcept {}

#endif

}  // namespace vok::base64

#endif  // VOK_BASE_BASE64_WIDE_H
