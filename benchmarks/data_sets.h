// SPDX-License-Identifier: MIT
// The trees that every contender builds, as one neutral list of nodes.
#ifndef BENCHMARKS_DATA_SETS_H
#define BENCHMARKS_DATA_SETS_H

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace bench {

enum class Kind : std::uint8_t { Map, List, Integer, Double, Boolean, Text, Binary };

// A node in pre-order. The children of a map have different names, those of a list all the
// same one, which formats without names for elements leave out.
struct Item {
    Kind eKind;
    std::uint32_t uName;      // in Set::names
    std::uint32_t uChildren;  // Map, List
    union {
        std::int32_t iValue;  // Integer, Boolean
        double dValue;        // Double
        const char* pText;    // Text, Binary, in Set::texts, NUL-terminated
    };
    std::uint32_t uText = 0;  // its length
};

struct Set {
    const char* sName;
    std::vector<std::string> names;
    std::vector<Item> items;
    std::deque<std::string> texts;

    // A way to look fields up by name: for every node at depth 1 (every map below the root,
    // or the root itself when it has none) this field is asked for.
    std::vector<std::uint32_t> lookups;
    std::size_t uMaps = 0;  // maps that lookups are made in
};

// 100,000 orders with id, symbol, price, quantity, active flag, note, three tags and a leg of
// four integers: 1,600,001 nodes, 15 names.
const Set& Orders();
// A configuration tree of 20,000 nodes with 2,000 distinct names, sections of sections.
const Set& Config();
// One object of 25 nodes.
const Set& Small();
// A million integers of one name.
const Set& Numbers();
// 200,000 integers of as many names.
const Set& Names();
// 100 chains of 200 objects, each inside the one before: 60,001 nodes.
const Set& Deep();
// 64 blocks of 64 KiB.
const Set& Blobs();

}  // namespace bench

#endif  // BENCHMARKS_DATA_SETS_H
