// SPDX-License-Identifier: MIT
// Steps of names that are known while compiling. Internal.
#ifndef VOK_DGRAPH_KNOWN_STEP_H
#define VOK_DGRAPH_KNOWN_STEP_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "vok/data/escape.h"

namespace vok::dgraph {

// What a record of the name S::NAME begins with, of which nothing is left to do at run time: the
// length of its step, its step; behind it stands the type code. HEAD is that of the first one of
// the name, STEM the step up to and with the "[" of its index.
template <class S>
class KnownStep {
    static_assert(!S::NAME.empty(), "a field needs a name");

  public:
    static constexpr std::size_t STEM_SIZE = [] {
        char sEscape[detail::MOST_ENCODED]{};
        std::ptrdiff_t iSize = 1;
        for (const char c : S::NAME) {
            iSize += detail::EncodeByte(c, sEscape, detail::RESERVED.data()) - sEscape;
        }
        return static_cast<std::size_t>(iSize);
    }();
    static constexpr std::array<char, STEM_SIZE> STEM = [] {
        std::array<char, STEM_SIZE> s{};
        char* p = s.data();
        for (const char c : S::NAME) p = detail::EncodeByte(c, p, detail::RESERVED.data());
        *p = '[';
        return s;
    }();
    static constexpr std::size_t HEAD_SIZE = 4 + STEM_SIZE + 2;
    static constexpr std::array<char, HEAD_SIZE> HEAD = [] {
        std::array<char, HEAD_SIZE> s{};
        for (std::size_t u = 0; u < 4; ++u) s[u] = static_cast<char>((STEM_SIZE + 2) >> 8 * u);
        std::copy(STEM.begin(), STEM.end(), s.begin() + 4);
        s[HEAD_SIZE - 2] = '0';
        s[HEAD_SIZE - 1] = ']';
        return s;
    }();
    // The name as steps have it.
    static constexpr std::string_view STEP_NAME{STEM.data(), STEM_SIZE - 1};
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_KNOWN_STEP_H
