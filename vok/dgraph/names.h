// SPDX-License-Identifier: MIT
// Which names a DGraph tree may carry, and children made at a position. The reader and the
// writer do not ask: what they cannot carry as it stands they escape.
#ifndef VOK_DGRAPH_NAMES_H
#define VOK_DGRAPH_NAMES_H

#include "vok/data/data.h"

namespace vok {

// Texts are bytes from a begin to an end pointer; a null end means up to the NUL. Each check
// returns when the text will do and raises otherwise; nothing is changed. Linear.

// Attribute names: not null, not empty ("Empty attribute name not allowed"), none of
// [ ] ' " = & < > \ ("The attribute name contains the invalid character '%c'", the first of
// these that occurs, in this order).
void Dgraph_CheckAttNam(const char* pBegin, const char* pEnd = nullptr);
// Attribute values: all of them will do, null as well.
void Dgraph_CheckAttVal(const char* pBegin, const char* pEnd = nullptr) noexcept;
// Node names: not null, not empty ("Empty node type is not allowed"), none of the reserved
// ".", ".." and "CDNodeReference" as a whole (an error that quotes it), none of / [ ] ' " ("The
// node type contains the invalid character '%c'", in this order).
void Dgraph_CheckName(const char* pBegin, const char* pEnd = nullptr);
// Paths: parsed as Data_Xpath does, with its errors; the name of every step, "." and ".."
// too, must pass Dgraph_CheckName. Of the attributes that a step asks for only one is looked
// at: in the first step the first, in the second step the second, and so on.
void Dgraph_CheckPath(const char* pBegin, const char* pEnd = nullptr);

// Sets oResult to a successor of oParent with that name at a position among those of its name,
// removed ones included. A removed node there is revived, without value but with its old
// attributes; otherwise a new node is inserted, past the end appended. A negative index appends
// two nodes and gives the second one. Errors are those of Data::Append and Data::Insert.
void Dgraph_InsertChild(Data& oResult, Data& oParent, const char* sName, i2_t iIndex);
inline void Dgraph_InsertChild(Data& oResult, Data& oParent, std::string_view sName, i2_t iIndex) {
    Dgraph_InsertChild(oResult, oParent, Str(sName).CStr(), iIndex);
}

}  // namespace vok

#endif  // VOK_DGRAPH_NAMES_H
