// SPDX-License-Identifier: MIT
// Paths as the file system wants them, from and to UTF-8.
#ifndef TOOLS_PATH_H
#define TOOLS_PATH_H

#include <filesystem>
#include <string>
#include <string_view>

namespace tools {

inline std::filesystem::path ToPath(std::string_view sUtf8) {
    return {std::u8string(sUtf8.begin(), sUtf8.end())};
}

// With "/" between the names.
inline std::string ToText(const std::filesystem::path& oPath) {
    const std::u8string sText = oPath.generic_u8string();
    return {sText.begin(), sText.end()};
}

}  // namespace tools

#endif  // TOOLS_PATH_H
