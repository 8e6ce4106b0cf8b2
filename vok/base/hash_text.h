// SPDX-License-Identifier: MIT
// One of the texts that a tree keeps once each: a name.
#ifndef VOK_BASE_HASH_TEXT_H
#define VOK_BASE_HASH_TEXT_H

#include <cstddef>
#include <string_view>

#include "vok/base/types.h"

namespace vok {

// The prefix holds the first eight bytes, the first one on top and zeros behind the end: comparing
// two prefixes as numbers compares the texts as bytes, and only texts that share all eight are
// looked at any further. The suffix holds the last four, of texts of more than eight bytes only:
// up to twelve bytes two texts are compared without looking at their bytes.
struct Hash_Text {
    const char* sText;  // NUL-terminated; stays where it is as long as the table lives
    u3_t uPrefix;
    u2_t uLength;  // bytes without the NUL
    u2_t uSuffix;

    [[nodiscard]] std::string_view View() const noexcept { return {sText, uLength}; }
    // The prefix of a text that is not empty.
    [[nodiscard]] static u3_t PrefixOf(const char* p, std::size_t uSize) noexcept;
    // Of a text of at most twelve bytes those behind the prefix, likewise.
    [[nodiscard]] u2_t Tail() const noexcept {
        return uLength > 8 ? uSuffix << 8 * (12 - uLength) : 0;
    }
    // Whether the text is that of its length at p.
    [[nodiscard]] bool IsText(const char* p) const noexcept;
    // Whether it is equal to a text that was taken apart in the same way.
    [[nodiscard]] bool IsEqual(const Hash_Text& o) const noexcept;
    // Whether the text stands at p, where uSize bytes can be read. False also where the eight
    // bytes behind it cannot be read: they are not looked at one by one.
    [[nodiscard]] bool StandsAt(const char* p, std::size_t uSize) const noexcept;
};

}  // namespace vok

#endif  // VOK_BASE_HASH_TEXT_H
