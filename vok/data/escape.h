// The characters that the path syntax reserves. Internal.
#ifndef VOK_DATA_ESCAPE_H
#define VOK_DATA_ESCAPE_H

#include <array>
#include <string_view>

#include "vok/base/arr.h"

namespace vok::detail {

// By byte: whether names and values carry it as an escape.
inline constexpr std::array<bool, 256> RESERVED = [] {
    std::array<bool, 256> abSet{};
    for (const char c : {' ', '/', '.', '[', ']', '=', '"', '*', '\b'}) {
        abSet[static_cast<u0_t>(c)] = true;
    }
    return abSet;
}();

[[nodiscard]] inline bool HasReserved(std::string_view sText) noexcept {
    for (const char c : sText) {
        if (RESERVED[static_cast<u0_t>(c)]) return true;
    }
    return false;
}

// Appends a valid UTF-8 text with every byte of the set (256 flags) escaped; an empty text
// as the escape of code 0.
void AppendEncoded(Arr<char>& oOut, std::string_view sText, const bool* pSet);

}  // namespace vok::detail

#endif  // VOK_DATA_ESCAPE_H
