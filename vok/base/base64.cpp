#include "vok/base/base64.h"

#include <array>

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

}  // namespace

void EncodeBase64(const void* pData, std::size_t uSize, char* pOut) noexcept {
    const u0_t* p = static_cast<const u0_t*>(pData);
    for (; uSize >= 3; uSize -= 3, p += 3) {
        const u2_t uBits = u2_t{p[0]} << 16 | u2_t{p[1]} << 8 | p[2];
        *pOut++ = DIGITS[uBits >> 18];
        *pOut++ = DIGITS[uBits >> 12 & 63];
        *pOut++ = DIGITS[uBits >> 6 & 63];
        *pOut++ = DIGITS[uBits & 63];
    }
    if (uSize == 0) return;
    const u2_t uBits = u2_t{p[0]} << 16 | (uSize == 2 ? u2_t{p[1]} << 8 : 0);
    *pOut++ = DIGITS[uBits >> 18];
    *pOut++ = DIGITS[uBits >> 12 & 63];
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
    for (const char c : sText) {
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
