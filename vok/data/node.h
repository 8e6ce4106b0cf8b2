// SPDX-License-Identifier: MIT
// The record of one tree node. The whole tree is one array of these.
#ifndef VOK_DATA_NODE_H
#define VOK_DATA_NODE_H

#include <bit>
#include <cstring>

#include "vok/base/types.h"

namespace vok {

// Four 32-bit words:
//
//     word  bits   meaning
//     0     0-31   name handle, 0 = unnamed
//     1     0-3    type
//     1     4-31   predecessor id + 1; 0 = none (the root), all ones = cut loose
//     2, 3         the payload, by type (below)
//
// Payload: Boolean, Integer, Char: the number in word 2. Float, Double, Date, Long: 64 bits,
// word 2 the low half. String: offset in the text heap, bytes with the NUL. Binary: offset,
// bytes. Quad: offset of the other three words, first word. Link: id of the target or
// 0xFFFFFFFF. Tree: place of its successor group or 0xFFFFFFFF, number of successors.
struct Data_Node {
    // The codes are written to documents: do not change them. 11 and 14 are free.
    enum Type : u2_t {
        Empty = 0,
        Boolean = 1,
        Integer = 2,
        Char = 3,
        Float = 4,
        Double = 5,
        Date = 6,
        String = 7,
        Binary = 8,
        Long = 9,
        Quad = 10,
        Link = 12,
        Tree = 13,
        Zombi = 15,
    };

    static constexpr u2_t NONE = 0xFFFFFFFF;      // no node, no group
    static constexpr u2_t CUT_LOOSE = 0xFFFFFFF;  // predecessor field of a removed descendant

    u2_t uKey;
    u2_t uFlags;
    u2_t uWord2;
    u2_t uWord3;

    [[nodiscard]] Type GetType() const noexcept { return static_cast<Type>(uFlags & 0xFu); }
    void SetType(Type eType) noexcept { uFlags = (uFlags & ~0xFu) | eType; }

    [[nodiscard]] u2_t PredField() const noexcept { return uFlags >> 4; }
    void SetPredField(u2_t uField) noexcept { uFlags = (uFlags & 0xFu) | uField << 4; }
    // Id of the predecessor; NONE for the root and for a node cut loose.
    [[nodiscard]] u2_t Pred() const noexcept {
        const u2_t uField = PredField();
        return uField != CUT_LOOSE ? uField - 1 : NONE;
    }
    // Raises unless a node of that id can have successors, whose fields must not look like those of
    // nodes cut loose. Without successors a node may have any id below 2^31.
    [[nodiscard]] static bool MayPred(u2_t uId) noexcept { return uId < CUT_LOOSE - 1; }
    static void CheckPred(u2_t uId) {
        if (!MayPred(uId)) [[unlikely]]
            RaiseNoPred();
    }

    // Tree nodes: place of the successor group, number of successors.
    [[nodiscard]] u2_t Start() const noexcept { return uWord2; }
    [[nodiscard]] u2_t Size() const noexcept { return uWord3; }

    [[nodiscard]] u3_t Value64() const noexcept { return u3_t{uWord3} << 32 | uWord2; }
    void SetValue64(u3_t uValue) noexcept {
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(reinterpret_cast<char*>(this) + 8, &uValue, 8);  // in one go
        } else {
            uWord2 = static_cast<u2_t>(uValue);
            uWord3 = static_cast<u2_t>(uValue >> 32);
        }
    }

    // The flags of an empty node below uParent.
    [[nodiscard]] static u2_t FlagsBelow(u2_t uParent) noexcept { return (uParent + 1) << 4; }
    // Makes it the record of a new node, uBelow being the FlagsBelow of its parent.
    void Make(u2_t uBelow, u2_t uNewKey, Type eType = Empty, u3_t uValue = 0) noexcept {
        uKey = uNewKey;
        uFlags = uBelow | eType;
        SetValue64(uValue);
    }

    // "Empty", "Boolean", ...; "Unknown" for a code without a type.
    [[nodiscard]] static const char* TypeName(u2_t uType) noexcept;

  private:
    [[noreturn]] static void RaiseNoPred();
};
static_assert(sizeof(Data_Node) == 16, "the tree is an array of 16-byte records");

// The end of that array, for who appends many nodes: taken from the tree, which knows of them when
// it is given back. Parents get their counts from who holds it.
struct Data_Tail {
    Data_Node* pNodes = nullptr;  // all of them
    Data_Node* pNext = nullptr;   // the next one
    Data_Node* pEnd = nullptr;    // where there is no room, or there may be no more

    [[nodiscard]] bool IsFull() const noexcept { return pNext >= pEnd; }
    [[nodiscard]] std::size_t Left() const noexcept {
        return IsFull() ? 0 : static_cast<std::size_t>(pEnd - pNext);
    }
    // The id of the next node.
    [[nodiscard]] u2_t NextId() const noexcept { return static_cast<u2_t>(pNext - pNodes); }
    // Appends a node where it is not full, and returns its id.
    u2_t Add(u2_t uBelow, u2_t uKey, Data_Node::Type eType, u3_t uValue) noexcept {
        Data_Node* const pNode = pNext++;
        pNode->Make(uBelow, uKey, eType, uValue);
        return static_cast<u2_t>(pNode - pNodes);
    }
};

}  // namespace vok

#endif  // VOK_DATA_NODE_H
