// SPDX-License-Identifier: MIT
// The native dump of a tree; docs/native-dump.md explains it. All numbers are little-endian.
// Internal.
//
//     magic header of class "Data", VERSION
//     32-bit block   user tag, without NUL
//     64-bit block   node names in the order of their keys from 1 on, each with its NUL
//     64-bit block   node records, 16 bytes each (vok/data/node.h)
//     64-bit block   successor groups, words: for every tree node by ascending id its number of
//                    successors twice, then their ids in order
//     64-bit block   text heap
//     64-bit block   attribute names in the order of their keys from 1 on, each with its NUL
//     64-bit block   attributes, words: for every name the number of its records, then those by
//                    ascending node, each the node and the place of the value in the text heap
//     32-bit blocks  of later writers, skipped
//     end marker
//
// Of an attachable dump the lengths of nodes, groups and heap are each followed by a 64-bit number
// of bytes to be skipped, by which what comes lies at a multiple of 64 and has room for a header in
// front; and the first block behind the attributes is the summary, two 64-bit numbers: nodes that
// were removed, and bytes of the heap that are referred to, once for each reference.
//
// Tree nodes carry the place of their group in the words of the groups. So the records, the
// groups and the heap are the arrays of a tree that has just been built.
#ifndef VOK_DUMP_FORMAT_H
#define VOK_DUMP_FORMAT_H

#include <bit>
#include <cstring>

#include "vok/base/little_endian.h"
#include "vok/data/store.h"

namespace vok::dump {

inline constexpr char CLASS_NAME[] = "Data";
// Records of version 1 have 24 bits for the predecessor, and four above it without a meaning.
inline constexpr u2_t VERSION = 2;
inline constexpr u2_t NARROW_VERSION = 1;
// That of an attachable dump.
inline constexpr u2_t ATTACHABLE_VERSION = 3;
inline constexpr std::size_t ALIGNMENT = 64;
inline constexpr std::size_t MOST_PADDING = 4096;
inline constexpr std::size_t SUMMARY_SIZE = 16;

// Bytes in front of a block, and of one attribute.
inline constexpr std::size_t NARROW_LENGTH = 4;
inline constexpr std::size_t WIDE_LENGTH = 8;
inline constexpr std::size_t ATTRIBUTE_SIZE = 8;

// Where the host's byte order differs arrays are turned around on their way.
inline constexpr bool IS_NATIVE = std::endian::native == std::endian::little;

// Turns words from the host's byte order to that of a dump, or back.
inline void TurnWords(void* pWords, std::size_t uWords) noexcept {
    char* p = static_cast<char*>(pWords);
    for (std::size_t u = 0; u < uWords; ++u, p += 4) {
        u2_t uWord;
        std::memcpy(&uWord, p, 4);
        le::Store<u2_t>(p, uWord);
    }
}

// The same for the words of quads in a copy of the text heap; nodes may share them.
void TurnQuads(const Arr<Data_Node>& oNode, char* pHeap);

}  // namespace vok::dump

#endif  // VOK_DUMP_FORMAT_H
