// SPDX-License-Identifier: MIT
// Every type of value: how it is set, and whether it reads back.
#ifndef TESTS_DATA_KINDS_H
#define TESTS_DATA_KINDS_H

#include <bit>
#include <cmath>
#include <limits>

#include "tests/support.h"

namespace vok {

struct Kind {
    Data_Node::Type eType;
    void (*pSet)(Data&);
    bool (*pGet)(const Data&);  // reads it back; false when it is another value
};

inline const Kind KINDS[] = {
    {Data_Node::Boolean, [](Data& o) { o.SetValBool(true); },
     [](const Data& o) { return o.GetValBool(); }},
    {Data_Node::Integer, [](Data& o) { o.SetValInt(std::numeric_limits<i2_t>::min()); },
     [](const Data& o) { return o.GetValInt() == std::numeric_limits<i2_t>::min(); }},
    {Data_Node::Char, [](Data& o) { o.SetValInt(-1, Data_Node::Char); },
     [](const Data& o) { return o.GetValInt(Data_Node::Char) == -1; }},
    {Data_Node::Float, [](Data& o) { o.SetValDbl(0.1, Data_Node::Float); },
     [](const Data& o) { return o.GetValDbl(Data_Node::Float) == 0.1; }},
    {Data_Node::Double, [](Data& o) { o.SetValDbl(std::bit_cast<double>(0x7FF8DEADBEEF0001)); },
     [](const Data& o) { return std::bit_cast<u3_t>(o.GetValDbl()) == 0x7FF8DEADBEEF0001; }},
    {Data_Node::Date, [](Data& o) { o.SetValDbl(-0.0, Data_Node::Date); },
     [](const Data& o) { return std::signbit(o.GetValDbl(Data_Node::Date)); }},
    {Data_Node::String, [](Data& o) { o.SetValStr("text"); },
     [](const Data& o) { return o.GetValText() == "text" && o.GetValStr()[4] == 0; }},
    {Data_Node::Binary, [](Data& o) { o.SetValBin("\0\xFF\0", 3); },
     [](const Data& o) { return BlockOf(o) == std::string("\0\xFF\0", 3); }},
    {Data_Node::Long, [](Data& o) { o.SetValLng(~u3_t{0}); },
     [](const Data& o) { return o.GetValLng() == ~u3_t{0}; }},
    {Data_Node::Quad, [](Data& o) { o.SetValQuad(1, 0x80000000, 3, 0xFFFFFFFF); },
     [](const Data& o) {
         u2_t u0, u1, u2, u3;
         o.GetValQuad(u0, u1, u2, u3);
         return u0 == 1 && u1 == 0x80000000 && u2 == 3 && u3 == 0xFFFFFFFF;
     }},
    {Data_Node::Link, [](Data& o) { o.SetValLink(o.GetRoot()); },
     [](const Data& o) { return o.GetValLink() == o.GetRoot(); }},
};

// The message of a node "n" that takes no successors, or no value.
inline std::string WrongType(const std::string& sType) {
    return "node \"n\" with wrong data type: '" + sType + "'\n";
}

}  // namespace vok

#endif  // TESTS_DATA_KINDS_H
