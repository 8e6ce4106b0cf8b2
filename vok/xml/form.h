// SPDX-License-Identifier: MIT
// What documents of this library use of XML to carry types and links. Internal.
#ifndef VOK_XML_FORM_H
#define VOK_XML_FORM_H

#include <array>
#include <string_view>

#include "vok/data/node.h"

namespace vok::xml {

inline constexpr std::string_view CDATA = "<![CDATA[";
inline constexpr std::string_view CDATA_END = "]]>";

inline constexpr std::string_view DT_DECLARATION = "xmlns:dt";
inline constexpr std::string_view DT_NAMESPACE = "urn:schemas-microsoft-com:datatypes";

// A link is a reference to the number that its target carries.
inline constexpr std::string_view NODE_ID = "CDNodeID";
inline constexpr std::string_view NODE_REFERENCE = "CDNodeIDREF";
inline constexpr std::string_view REFERENCE_TYPE = "CDNodeRefType";

// Whether an attribute of a node would be taken for one of the above.
[[nodiscard]] inline bool IsReserved(std::string_view sName) noexcept {
    return sName.starts_with("dt:") || sName.starts_with("CDNode") || sName == DT_DECLARATION;
}

// A value of dt:dt.
struct TypeName {
    std::string_view sName;
    Data_Node::Type eType;
    bool bZone = false;  // dates are an hour east of UTC
};
inline constexpr TypeName TYPES[] = {
    {"i4", Data_Node::Integer},
    {"r8", Data_Node::Double},
    {"boolean", Data_Node::Boolean},
    {"i8", Data_Node::Long},
    {"dateTime", Data_Node::Date},
    {"r4", Data_Node::Float},
    {"char", Data_Node::Char},
    {"quad", Data_Node::Quad},
    {"bin.base64", Data_Node::Binary},
    {"bool", Data_Node::Boolean},
    {"dateTime.tz", Data_Node::Date, true},
};
inline constexpr std::string_view TYPE = "dt:dt";

// The name that documents give a type; empty for one that they do not name.
[[nodiscard]] constexpr std::string_view NameOf(Data_Node::Type eType) noexcept {
    for (const TypeName& o : TYPES) {
        if (o.eType == eType) return o.sName;
    }
    return {};
}

// What stands between the name of an element and a value of that type: ` dt:dt="i4">`.
template <Data_Node::Type eType>
struct TypeTag {
    static constexpr std::string_view NAME = NameOf(eType);
    static constexpr auto CHARS = [] {
        std::array<char, TYPE.size() + NAME.size() + 5> sTag{};
        char* p = sTag.data();
        const auto oAdd = [&p](std::string_view s) {
            for (const char c : s) *p++ = c;
        };
        oAdd(" "), oAdd(TYPE), oAdd("=\""), oAdd(NAME), oAdd("\">");
        return sTag;
    }();
    static constexpr std::string_view TEXT{CHARS.data(), CHARS.size()};
};

// The same for a type that is told while running.
[[nodiscard]] constexpr std::string_view TagOf(Data_Node::Type eType) noexcept {
    switch (eType) {
        case Data_Node::Boolean: return TypeTag<Data_Node::Boolean>::TEXT;
        case Data_Node::Integer: return TypeTag<Data_Node::Integer>::TEXT;
        case Data_Node::Char: return TypeTag<Data_Node::Char>::TEXT;
        case Data_Node::Float: return TypeTag<Data_Node::Float>::TEXT;
        case Data_Node::Double: return TypeTag<Data_Node::Double>::TEXT;
        case Data_Node::Date: return TypeTag<Data_Node::Date>::TEXT;
        case Data_Node::Binary: return TypeTag<Data_Node::Binary>::TEXT;
        case Data_Node::Long: return TypeTag<Data_Node::Long>::TEXT;
        case Data_Node::Quad: return TypeTag<Data_Node::Quad>::TEXT;
        default: return {};
    }
}

// Null for any other text.
[[nodiscard]] inline const TypeName* FindType(std::string_view sName) noexcept {
    for (const TypeName& o : TYPES) {
        if (o.sName == sName) return &o;
    }
    return nullptr;
}

}  // namespace vok::xml

#endif  // VOK_XML_FORM_H
