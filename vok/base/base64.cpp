// SPDX-License-Identifier: MIT
#include "vok/base/base64.h"

#include <array>

#include "vok/base/base64_wide.h"
#include "vok/base/compare.h"
#include "vok/base/little_endian.h"

namespace vok {

namespace {

constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr u0_t NO_DIGIT = 64;
constexpr u0_t BLANK = 65;

constexpr std::array<u0_t, 256> VALUES = [] {
    std::array<u0_t, 256> au{};
    au.fill(NO_DIGIT);
    for (u0_t u = 0; u < 64; ++u) au[static_cast<u0_t>(DIGITS[u])] = u;
    for (const char c : {' ', '\t', '\r', '\n'}) au[static_cast<u0_t>(c)] = BLANK;
    return au;
}();

// Twelve bits as two digits.
using Pair = std::array<char, 2>;
constexpr std::array<Pair, 4096> PAIRS = [] {
    std::array<Pair, 4096> as{};
    for (std::size_t u = 0; u < as.size(); ++u) as[u] = Pair{DIGITS[u >> 6], DIGITS[u & 63]};
    return as;
}();

inline char* PutPair(char* p, u3_t uBits) noexcept {
    std::memcpy(p, PAIRS[uBits & 4095].data(), 2);
    return p + 2;
}

// What each of four characters gives to three bytes, the first of them lowest; those that are no
// digit give a bit above.
constexpr u2_t OTHER = u2_t{1} << 31;
constexpr std::array<std::array<u2_t, 256>, 4> PARTS = [] {
    std::array<std::array<u2_t, 256>, 4> aau{};
    for (unsigned u = 0; u < 256; ++u) {
        const u2_t uBits = VALUES[u];
        const bool bDigit = uBits < 64;
        aau[0][u] = bDigit ? uBits << 2 : OTHER;
        aau[1][u] = bDigit ? uBits >> 4 | (uBits & 15) << 12 : OTHER;
        aau[2][u] = bDigit ? uBits >> 2 << 8 | (uBits & 3) << 22 : OTHER;
        aau[3][u] = bDigit ? uBits << 16 : OTHER;
    }
    return aau;
}();

inline u2_t FourDigits(u2_t uText) noexcept {
    return PARTS[0][uText & 255] | PARTS[1][uText >> 8 & 255] | PARTS[2][uText >> 16 & 255] |
           PARTS[3][uText >> 24];
}

// Decodes characters, many at a time, as long as all of them are digits. Behind the bytes of the
// last ones it writes two more, for which DecodeBase64 has room.
inline void TakeWords(const char*& pText, const char* pEnd, char*& pOut) noexcept {
    if (base64::IsWide()) base64::DecodeWide(pText, pEnd, pOut);
    for (; pEnd - pText >= 8; pText += 8, pOut += 6) {
        const u3_t uText = le::Load<u3_t>(pText);
        const u2_t uFirst = FourDigits(static_cast<u2_t>(uText));
        const u2_t uSecond = FourDigits(static_cast<u2_t>(uText >> 32));
        if (((uFirst | uSecond) & OTHER) != 0) return;
        le::Store(pOut, u3_t{uSecond} << 24 | uFirst);
    }
}

}  // namespace

void EncodeBase64(const void* pData, std::size_t uSize, char* pOut) noexcept {
    const char* pBytes = static_cast<const char*>(pData);
    if (base64::IsWide()) base64::EncodeWide(pBytes, uSize, pOut);
    for (; uSize >= 8; uSize -= 6, pBytes += 6) {
        const u3_t uBits = BigEndianAt<u3_t>(pBytes);
        for (const int iShift : {52, 40, 28, 16}) pOut = PutPair(pOut, uBits >> iShift);
    }
    const u0_t* p = reinterpret_cast<const u0_t*>(pBytes);
    for (; uSize >= 3; uSize -= 3, p += 3) {
        const u2_t uBits = u2_t{p[0]} << 16 | u2_t{p[1]} << 8 | p[2];
        pOut = PutPair(PutPair(pOut, uBits >> 12), uBits);
    }
    if (uSize == 0) return;
    const u2_t uBits = u2_t{p[0]} << 16 | (uSize == 2 ? u2_t{p[1]} << 8 : 0);
    pOut = PutPair(pOut, uBits >> 12);
    *pOut++ = uSize == 2 ? DIGITS[uBits >> 6 & 63] : '=';
    *pOut = '=';
}

bool DecodeBase64(std::string_view sText, Arr<char>& oOut) {
    const std::size_t uBefore = oOut.Size();
    char* p = oOut.AddSpace(sText.size() / 4 * 3 + 3);
    const char* const pBegin = p;
    u2_t uBits = 0;
    unsigned uDigits = 0;
    unsigned uPadding = 0;
    const char* pText = sText.data();
    const char* const pEnd = pText + sText.size();
    for (;;) {
        if (uDigits % 4 == 0 && uPadding == 0) TakeWords(pText, pEnd, p);
        if (pText == pEnd) break;
        const char c = *pText++;
        const u0_t uValue = VALUES[static_cast<u0_t>(c)];
        if (uValue == BLANK) continue;
        if (c == '=') {
            ++uPadding;
            continue;
        }
        if (uValue == NO_DIGIT || uPadding != 0) {
            oOut.Truncate(uBefore);
            return false;
        }
        uBits = uBits << 6 | uValue;
        if (++uDigits % 4 != 0) continue;
        *p++ = static_cast<char>(uBits >> 16);
        *p++ = static_cast<char>(uBits >> 8);
        *p++ = static_cast<char>(uBits);
    }
    const unsigned uRest = uDigits % 4;
    if (uRest == 1 || uPadding > 2 || (uPadding != 0 && uRest + uPadding != 4)) {
        oOut.Truncate(uBefore);
        return false;
    }
    if (uRest >= 2) *p++ = static_cast<char>(uBits >> (uRest == 2 ? 4 : 10));
    if (uRest == 3) *p++ = static_cast<char>(uBits >> 2);
    oOut.Truncate(uBefore + static_cast<std::size_t>(p - pBegin));
    return true;
}

}  // namespace vok
