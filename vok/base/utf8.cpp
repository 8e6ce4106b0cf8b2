// SPDX-License-Identifier: MIT
#include "vok/base/utf8.h"

#include <cstring>

namespace vok {

namespace {

[[nodiscard]] bool IsTail(char c) noexcept {
    return (static_cast<u0_t>(c) & 0xC0u) == 0x80u;
}

}  // namespace

unsigned Utf8SequenceLength(const char* pText, std::size_t uSize) noexcept {
    if (uSize == 0) return 0;
    const u0_t u0 = static_cast<u0_t>(pText[0]);
    if (u0 < 0x80) return 1;
    if (u0 < 0xC2 || u0 > 0xF4) return 0;
    const unsigned uLength = u0 < 0xE0 ? 2 : u0 < 0xF0 ? 3 : 4;
    if (uSize < uLength) return 0;
    for (unsigned u = 1; u < uLength; ++u) {
        if (!IsTail(pText[u])) return 0;
    }
    // The second byte is narrower where it would give an overlong form, a surrogate or a
    // value above U+10FFFF.
    const u0_t u1 = static_cast<u0_t>(pText[1]);
    if (u0 == 0xE0 && u1 < 0xA0) return 0;
    if (u0 == 0xED && u1 > 0x9F) return 0;
    if (u0 == 0xF0 && u1 < 0x90) return 0;
    if (u0 == 0xF4 && u1 > 0x8F) return 0;
    return uLength;
}

u2_t DecodeUtf8(const char*& pText, const char* pEnd) noexcept {
    const u2_t u0 = static_cast<u0_t>(*pText);
    const unsigned uLength = Utf8SequenceLength(pText, static_cast<std::size_t>(pEnd - pText));
    if (uLength <= 1) {
        ++pText;
        return u0;
    }
    u2_t uCode = u0 & (0xFFu >> (uLength + 1));
    for (unsigned u = 1; u < uLength; ++u) {
        uCode = uCode << 6 | (static_cast<u0_t>(pText[u]) & 0x3Fu);
    }
    pText += uLength;
    return uCode;
}

unsigned EncodeUtf8(u2_t uCode, char* sOut) noexcept {
    if (uCode > 0x10FFFF || (uCode >= 0xD800 && uCode < 0xE000)) uCode = 0xFFFD;
    if (uCode < 0x80) {
        sOut[0] = static_cast<char>(uCode);
        return 1;
    }
    const unsigned uLength = uCode < 0x800 ? 2 : uCode < 0x10000 ? 3 : 4;
    for (unsigned u = uLength; u-- > 1;) {
        sOut[u] = static_cast<char>(0x80u | (uCode & 0x3Fu));
        uCode >>= 6;
    }
    sOut[0] = static_cast<char>((0xF00u >> uLength & 0xFFu) | uCode);
    return uLength;
}

bool IsUtf8(const char* pText, std::size_t uSize) noexcept {
    if (IsAscii(pText, uSize)) return true;
    for (std::size_t u = 0; u < uSize;) {
        if (uSize - u >= 8 && IsAscii(pText + u, 8)) {
            u += 8;
            continue;
        }
        const unsigned uLength = Utf8SequenceLength(pText + u, uSize - u);
        if (uLength == 0) return false;
        u += uLength;
    }
    return true;
}

bool IsUtf8Text(const char* pText, std::size_t uSize) noexcept {
    return std::memchr(pText, 0, uSize) == nullptr && IsUtf8(pText, uSize);
}

std::size_t CountUtf8(const char* pText, std::size_t uSize) noexcept {
    std::size_t uCount = 0;
    for (std::size_t u = 0; u < uSize; ++u) uCount += !IsTail(pText[u]);
    return uCount;
}

}  // namespace vok
