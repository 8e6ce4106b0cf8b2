// SPDX-License-Identifier: MIT
// The value of a node, apart from a tree.
#ifndef VOK_DATA_VALUE_H
#define VOK_DATA_VALUE_H

#include <array>
#include <bit>
#include <concepts>
#include <cstring>
#include <string_view>

#include "vok/data/node.h"

namespace vok {

// A type and what belongs to it. Made of what a program has at hand, where that tells the type;
// texts and bytes are referred to, not copied. It must be asked for by its own type.
class Data_Value {
  public:
    // Empty.
    Data_Value() noexcept = default;
    // Boolean; Integer for signed numbers of up to 32 bits and unsigned ones of up to 16; Long for
    // others.
    template <class T>
    requires std::same_as<T, bool> || std::same_as<T, signed char> ||
        std::same_as<T, unsigned char> ||(std::integral<T> && sizeof(T) >= 2) Data_Value(
            T tValue) noexcept {  // NOLINT(google-explicit-constructor): numbers are values
        if constexpr (std::same_as<T, bool>) {
            SetValue(Data_Node::Boolean, tValue);
        } else if constexpr (sizeof(T) < 4 || (sizeof(T) == 4 && std::signed_integral<T>)) {
            SetValue(Data_Node::Integer, static_cast<u2_t>(static_cast<i2_t>(tValue)));
        } else {
            SetValue(Data_Node::Long, static_cast<u3_t>(tValue));
        }
    }
    // Float, and Double.
    Data_Value(float fValue) noexcept {  // NOLINT(google-explicit-constructor)
        SetValue(Data_Node::Float, std::bit_cast<u3_t>(double{fValue}));
    }
    Data_Value(double dValue) noexcept {  // NOLINT(google-explicit-constructor)
        SetValue(Data_Node::Double, std::bit_cast<u3_t>(dValue));
    }
    // String, which ends at its first NUL.
    template <class T>
    requires std::convertible_to<const T&, std::string_view> Data_Value(const T& oText)
    noexcept  // NOLINT(google-explicit-constructor)
        : m_eType(Data_Node::String), m_sText(oText) {}

    // With what a tree may hold beyond 32 bits; documents but XML do not.
    [[nodiscard]] static Data_Value Float(double dValue) noexcept {
        return {Data_Node::Float, std::bit_cast<u3_t>(dValue)};
    }
    // A code point.
    [[nodiscard]] static Data_Value Char(u2_t uCode) noexcept { return {Data_Node::Char, uCode}; }
    // Seconds since 1970-01-01 UTC.
    [[nodiscard]] static Data_Value Date(double dSeconds) noexcept {
        return {Data_Node::Date, std::bit_cast<u3_t>(dSeconds)};
    }
    // At most 2^31 - 1 bytes.
    [[nodiscard]] static Data_Value Binary(const void* pData, std::size_t uSize) noexcept {
        Data_Value o(Data_Node::Binary, 0);
        o.m_sText = {static_cast<const char*>(pData), uSize};
        return o;
    }
    [[nodiscard]] static Data_Value Quad(u2_t uW0, u2_t uW1, u2_t uW2, u2_t uW3) noexcept {
        Data_Value o(Data_Node::Quad, 0);
        o.m_auQuad = {uW0, uW1, uW2, uW3};
        return o;
    }
    // To the node at a path as Data::GetPath gives it, from the root of the document.
    [[nodiscard]] static Data_Value Link(std::string_view sPath) noexcept {
        Data_Value o(Data_Node::Link, 0);
        o.m_sText = sPath;
        return o;
    }

    // Of a type whose value is the 64 bits that a tree has; others are Empty.
    [[nodiscard]] static Data_Value OfType(Data_Node::Type eType, u3_t uBits) noexcept {
        constexpr u2_t BITS = 1u << Data_Node::Boolean | 1u << Data_Node::Integer |
                              1u << Data_Node::Char | 1u << Data_Node::Float |
                              1u << Data_Node::Double | 1u << Data_Node::Date |
                              1u << Data_Node::Long;
        if ((BITS >> eType & 1u) != 0) return {eType, uBits};
        const bool bKept = eType == Data_Node::Tree || eType == Data_Node::Zombi;
        return {bKept ? eType : Data_Node::Empty, 0};
    }

    // That of a node of a tree, whose texts and bytes begin at pHeap. A Link has no text, and a
    // type without a value is Empty, but for Tree and Zombi. Internal.
    [[nodiscard]] static Data_Value In(const Data_Node& oNode, const char* pHeap) noexcept {
        const char* const pBytes = pHeap + oNode.uWord2;
        switch (const Data_Node::Type eType = oNode.GetType()) {
            case Data_Node::String: return std::string_view(pBytes, oNode.uWord3 - std::size_t{1});
            case Data_Node::Binary: return Binary(pBytes, oNode.uWord3);
            case Data_Node::Quad: {
                u2_t au[3];
                std::memcpy(au, pBytes, sizeof(au));
                return Quad(oNode.uWord3, au[0], au[1], au[2]);
            }
            case Data_Node::Link: return Link({});
            default: return OfType(eType, oNode.Value64());
        }
    }

    [[nodiscard]] Data_Node::Type GetType() const noexcept { return m_eType; }
    // Boolean, Integer, Char.
    [[nodiscard]] i2_t Int() const noexcept { return static_cast<i2_t>(m_uValue); }
    // Float, Double, Date (seconds since 1970).
    [[nodiscard]] double Dbl() const noexcept { return std::bit_cast<double>(m_uValue); }
    // Long. Of all others but texts, blocks and Quads the 64 bits that a tree has.
    [[nodiscard]] u3_t Lng() const noexcept { return m_uValue; }
    // String; the bytes of a Binary; of a Link what is said of its target. Not NUL-terminated.
    [[nodiscard]] std::string_view Text() const noexcept { return m_sText; }
    // Quad: its four words.
    [[nodiscard]] const std::array<u2_t, 4>& QuadWords() const noexcept { return m_auQuad; }

  protected:
    Data_Value(Data_Node::Type eType, u3_t uValue) noexcept : m_eType(eType), m_uValue(uValue) {}
    void SetValue(Data_Node::Type eType, u3_t uValue) noexcept {
        m_eType = eType;
        m_uValue = uValue;
    }

    Data_Node::Type m_eType = Data_Node::Empty;
    u3_t m_uValue = 0;
    std::string_view m_sText;
    std::array<u2_t, 4> m_auQuad{};
};

}  // namespace vok

#endif  // VOK_DATA_VALUE_H
