// SPDX-License-Identifier: MIT
// Base64 (RFC 4648, section 4). Internal.
#ifndef VOK_BASE_BASE64_H
#define VOK_BASE_BASE64_H

#include <string_view>

#include "vok/base/arr.h"

namespace vok {

// Characters that uSize bytes take.
[[nodiscard]] constexpr std::size_t Base64Size(std::size_t uSize) noexcept {
    return (uSize + 2) / 3 * 4;
}
// Writes uSize bytes as Base64Size(uSize) characters to pOut.
void EncodeBase64(const void* pData, std::size_t uSize, char* pOut) noexcept;
// Appends the bytes of a text; blanks and line breaks do not count, padding may be missing.
// False when the text is anything else; oOut is then as it was.
[[nodiscard]] bool DecodeBase64(std::string_view sText, Arr<char>& oOut);

}  // namespace vok

#endif  // VOK_BASE_BASE64_H
