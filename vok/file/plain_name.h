// SPDX-License-Identifier: MIT
// Names by which processes find what they share. Internal.
#ifndef VOK_FILE_PLAIN_NAME_H
#define VOK_FILE_PLAIN_NAME_H

#include <algorithm>
#include <string_view>

namespace vok::file {

// Whether a name means the same on all systems: letters, digits and "._-", no "." in front, at most
// uMost bytes.
[[nodiscard]] constexpr bool IsPlainName(std::string_view sName, std::size_t uMost) noexcept {
    return !sName.empty() && sName.size() <= uMost && sName[0] != '.' &&
           std::all_of(sName.begin(), sName.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '.' || c == '_' || c == '-';
           });
}

}  // namespace vok::file

#endif  // VOK_FILE_PLAIN_NAME_H
