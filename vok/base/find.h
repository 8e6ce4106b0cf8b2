// SPDX-License-Identifier: MIT
// One text looked for in another, whatever both are: linear in the worst case. Internal.
#ifndef VOK_BASE_FIND_H
#define VOK_BASE_FIND_H

#include <string_view>

namespace vok {

// The first place at or behind byte uFrom where sWhat stands, and the last place of all;
// std::string_view::npos where there is none. The empty text stands everywhere up to the end. What
// one search costs is linear in what it walks over and in sWhat; no memory is asked for.
[[nodiscard]] std::size_t FindText(std::string_view sText, std::string_view sWhat,
                                   std::size_t uFrom = 0) noexcept;
[[nodiscard]] std::size_t FindLastText(std::string_view sText, std::string_view sWhat) noexcept;

}  // namespace vok

#endif  // VOK_BASE_FIND_H
