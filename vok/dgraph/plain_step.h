// SPDX-License-Identifier: MIT
// Step texts that are a name as it stands and an index: name[index]. Internal.
#ifndef VOK_DGRAPH_PLAIN_STEP_H
#define VOK_DGRAPH_PLAIN_STEP_H

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

#include "vok/base/number.h"
#include "vok/data/escape.h"
#include "vok/dgraph/format.h"

namespace vok::dgraph {

// The bytes of names that need no second look: ASCII without the reserved ones.
inline constexpr std::array<bool, 256> VERBATIM = [] {
    std::array<bool, 256> abVerbatim{};
    for (std::size_t u = 1; u < 128; ++u) abVerbatim[u] = !detail::RESERVED[u];
    return abVerbatim;
}();

// The bytes of the name in a step text that begins at p, up to its "[", which is looked for where
// short indexes have it first; 0 where there is none.
[[nodiscard]] inline std::size_t NameBytes(const char* p, std::size_t uStep) noexcept {
    if (uStep > 3 && p[uStep - 3] == '[') return uStep - 3;
    const void* pBracket = std::memchr(p, '[', uStep);
    return pBracket != nullptr ? static_cast<std::size_t>(static_cast<const char*>(pBracket) - p)
                               : 0;
}
[[nodiscard]] inline bool IsVerbatim(const char* p, std::size_t uName) noexcept {
    if (detail::IsPlain({p, uName})) return true;
    bool bVerbatim = true;
    for (std::size_t u = 0; u < uName; ++u) bVerbatim &= VERBATIM[static_cast<u0_t>(p[u])];
    return bVerbatim;
}

[[nodiscard, gnu::noinline]] inline bool IsLongIndex(const char* p, std::size_t uSize,
                                                     u2_t uIndex) noexcept {
    char sIndex[32];
    const std::size_t uDigits = FormatInteger(uIndex, sIndex);
    sIndex[uDigits] = ']';
    return uSize == uDigits + 1 && std::memcmp(p, sIndex, uSize) == 0;
}

// The same for one of more than one digit: out of line, what calls it has its registers full.
[[nodiscard, gnu::noinline]] inline bool IsManyDigits(const char* p, std::size_t uSize,
                                                      u2_t uIndex) noexcept {
    constexpr u3_t ZEROS = 0x3030303030303030u;
    const std::size_t uDigits = uSize - 1;
    if (uDigits - 2 > 6) return IsLongIndex(p, uSize, uIndex);
    // Eight digits, the first ones zeros, as numbers of one digit, of two, of four, of eight. A
    // name and a length stand in front of p, so that there is something to read.
    const unsigned uOther = 64 - 8 * static_cast<unsigned>(uDigits);
    u3_t uText = Load<u3_t>(p + uDigits - 8) >> uOther << uOther;
    uText |= ((u3_t{1} << uOther) - 1) & ZEROS;
    const u3_t uDigit = uText ^ ZEROS;
    if (((uDigit | (uDigit + 0x0606060606060606u)) & 0xF0F0F0F0F0F0F0F0u) != 0) return false;
    u3_t uValue = uDigit * (10 * 0x100 + 1) >> 8 & 0x00FF00FF00FF00FFu;
    uValue = uValue * (100 * 0x10000 + 1) >> 16 & 0x0000FFFF0000FFFFu;
    uValue = uValue * (10000 * 0x100000000u + 1) >> 32;
    return uValue == uIndex && p[0] != '0' && p[uDigits] == ']';
}
// Whether the rest of a step text, behind its "[", is this index in decimal and its bracket.
[[nodiscard]] inline bool IsIndex(const char* p, std::size_t uSize, u2_t uIndex) noexcept {
    if (uIndex >= 10) [[unlikely]]
        return IsManyDigits(p, uSize, uIndex);
    return uSize == 2 && static_cast<u2_t>(p[0] - '0') == uIndex && p[1] == ']';
}

// Any name and any index that a node can have.
struct PlainStep {
    std::string_view sName;
    u2_t uIndex;

    // False for any other text.
    [[nodiscard]] bool Parse(const char* p, std::size_t uStep) noexcept {
        const std::size_t uName = NameBytes(p, uStep);
        if (uName == 0 || !IsVerbatim(p, uName)) return false;
        sName = {p, uName};
        const char* const pEnd = p + uStep - 1;
        const auto o = std::from_chars(p + uName + 1, pEnd, uIndex);
        return o.ec == std::errc() && o.ptr == pEnd && *pEnd == ']' && uIndex <= 0x7FFFFFFF;
    }
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_PLAIN_STEP_H
