// SPDX-License-Identifier: MIT
// Constants of the DGraph document; docs/format.md explains it. All numbers are little-endian.
#ifndef VOK_DGRAPH_FORMAT_H
#define VOK_DGRAPH_FORMAT_H

#include <string_view>

#include "vok/base/little_endian.h"
#include "vok/base/types.h"

namespace vok::dgraph {

// The header of a document:
//
//      0   9  magic, without NUL
//      9   1  major version
//     10   1  minor version
//     11   1  patch version
//     12  18  zero
inline constexpr char MAGIC[] = "DGraphBin";
inline constexpr std::size_t MAGIC_SIZE = 9;
inline constexpr std::size_t HEADER_SIZE = 30;

// A version, on a tree "DGraphBin 1.2.0".
struct Version {
    i3_t iMajor = 0;
    i2_t iMinor = 0;
    i2_t iPatch = 0;
};
// The text on a tree.
class VersionTag {
  public:
    explicit VersionTag(const Version& oVersion) noexcept;
    [[nodiscard]] std::string_view View() const noexcept { return {m_sText, m_uSize}; }
    [[nodiscard]] const char* CStr() const noexcept { return m_sText; }

  private:
    char m_sText[64];
    std::size_t m_uSize;
};
// Reads it; false for any other text.
[[nodiscard]] bool ParseVersion(const char* sTag, Version& oVersion) noexcept;

// Writes the HEADER_SIZE bytes of a header, and reads one of which uSize bytes are there: false
// when it is none. What is not there counts as zero.
void StoreHeader(char* p, const Version& oVersion) noexcept;
[[nodiscard]] bool LoadHeader(const char* p, std::size_t uSize, Version& oVersion) noexcept;

// Type codes of records. They are stored: do not change them.
enum Code : u0_t {
    CODE_NONE = 0,     // no value; the number of successors follows
    CODE_INTEGER = 1,  // 4 bytes
    CODE_FLOAT = 2,    // binary32
    CODE_DOUBLE = 3,   // binary64
    CODE_CHAR = 4,     // 1 byte
    CODE_STRING = 5,   // length 4, text with NUL
    CODE_BOOLEAN = 6,  // 1 byte
    CODE_LINK = 7,     // length 4, name of target; length 4, its path without first slash
    CODE_BINARY = 8,   // length 4, bytes
    CODE_DATE = 9,     // binary64, days since 1899-12-30
    CODE_LONG = 10,    // 8 bytes
    CODE_QUAD = 11,    // four words
};

// Bytes of fixed size behind a type code: those of the value, of a count, or of the length that
// more bytes follow; of a link the first of its two.
[[nodiscard]] constexpr std::size_t FixedSize(u0_t uCode) noexcept {
    switch (uCode) {
        case CODE_CHAR:
        case CODE_BOOLEAN: return 1;
        case CODE_NONE:
        case CODE_INTEGER:
        case CODE_FLOAT:
        case CODE_STRING:
        case CODE_BINARY:
        case CODE_LINK: return 4;
        case CODE_DOUBLE:
        case CODE_DATE:
        case CODE_LONG: return 8;
        case CODE_QUAD: return 16;
        default: return 0;
    }
}

using le::Load;
using le::Store;

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_FORMAT_H
