// SPDX-License-Identifier: MIT
// What a text that may be a decimal number is like. Internal.
#ifndef VOK_FILE_NUMBER_TEXT_H
#define VOK_FILE_NUMBER_TEXT_H

#include <charconv>
#include <optional>
#include <string_view>

#include "vok/base/types.h"

namespace vok {

// [+-] digits, or [+-] digits . digits with at least one of them, and maybe an exponent: no blanks,
// no hexadecimal, no words.
struct Number_Text {
    bool bInteger = false;  // digits alone
    bool bReal = false;     // either form
    bool bPlus = false;
    bool bMinus = false;
    bool bZeros = false;     // zeros in front of another digit, as in "007"
    unsigned uDigits = 0;    // from the first one that is not 0 to the last one of them that is not
    std::string_view sRest;  // behind the sign

    explicit Number_Text(std::string_view s) noexcept {
        bPlus = s.starts_with('+');
        bMinus = s.starts_with('-');
        s.remove_prefix(bPlus || bMinus);
        sRest = s;
        std::size_t u = 0;
        std::size_t uWhole = 0;
        std::size_t uParts = 0;
        unsigned uZeros = 0;  // behind the last digit that is not 0
        const auto oDigits = [&](std::size_t& uCount) {
            for (; u < s.size() && s[u] >= '0' && s[u] <= '9'; ++u, ++uCount) {
                if (s[u] != '0') {
                    uDigits += uZeros + 1;
                    uZeros = 0;
                } else if (uDigits != 0) {
                    ++uZeros;
                }
            }
        };
        oDigits(uWhole);
        bZeros = uWhole > 1 && s[0] == '0';
        bInteger = uWhole != 0 && u == s.size();
        if (u < s.size() && s[u] == '.') {
            ++u;
            oDigits(uParts);
        }
        if (uWhole + uParts == 0) return;
        if (u < s.size() && (s[u] == 'e' || s[u] == 'E')) {
            ++u;
            if (u < s.size() && (s[u] == '+' || s[u] == '-')) ++u;
            const std::size_t uBegin = u;
            while (u < s.size() && s[u] >= '0' && s[u] <= '9') ++u;
            if (u == uBegin) return;
        }
        bReal = u == s.size();
    }
};

// The integer that a text of that form is; nothing where its type has no room for it.
template <class T>
[[nodiscard]] inline std::optional<T> IntegerOf(std::string_view s) noexcept {
    if (s.starts_with('+')) s.remove_prefix(1);
    T tValue = 0;
    const auto oEnd = std::from_chars(s.data(), s.data() + s.size(), tValue);
    if (oEnd.ec != std::errc() || oEnd.ptr != s.data() + s.size()) return std::nullopt;
    return tValue;
}

}  // namespace vok

#endif  // VOK_FILE_NUMBER_TEXT_H
