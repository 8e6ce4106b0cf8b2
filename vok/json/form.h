// SPDX-License-Identifier: MIT
// What documents of this library use of JSON to carry what plain JSON does not. Internal.
#ifndef VOK_JSON_FORM_H
#define VOK_JSON_FORM_H

#include <string_view>

#include "vok/data/node.h"

namespace vok::json {

// Members that are no successors. They are written in byte order, which is that of programs that
// sort members; read in any.
inline constexpr std::string_view ATTRIBUTES = "#attributes";
inline constexpr std::string_view NAME = "#name";
inline constexpr std::string_view TYPE = "#type";
inline constexpr std::string_view VALUE = "#value";

// An attribute for what trees have no node for: "item" where the node is the only one of an array,
// and what it stands for itself, one behind the other.
inline constexpr std::string_view MARK = "#json";
struct Mark {
    enum Kind : u0_t {
        None,
        List,    // an array, whose items are its unnamed successors
        Object,  // an object without members
        Text,    // a text with a NUL in it: a Binary has its bytes
    };
    bool bItem = false;
    Kind eKind = None;

    // Empty for one that says nothing.
    [[nodiscard]] std::string_view Value() const noexcept {
        static constexpr std::string_view VALUES[] = {
            "", "list", "object", "text", "item", "item list", "item object", "item text"};
        return VALUES[(bItem ? 4 : 0) + eKind];
    }
    // The one with that value; one that says nothing for any other.
    [[nodiscard]] static Mark Of(std::string_view sValue) noexcept {
        for (const bool bIsItem : {false, true}) {
            for (const Kind e : {None, List, Object, Text}) {
                const Mark o{bIsItem, e};
                if (o.Value() == sValue) return o;
            }
        }
        return {};
    }
};

enum class Member : u0_t { Successor, Attributes, Name, Type, Value };

[[nodiscard]] inline Member MemberOf(std::string_view sName) noexcept {
    if (sName.empty() || sName[0] != '#') [[likely]]
        return Member::Successor;
    if (sName == VALUE) return Member::Value;
    if (sName == TYPE) return Member::Type;
    if (sName == ATTRIBUTES) return Member::Attributes;
    return sName == NAME ? Member::Name : Member::Successor;
}
[[nodiscard]] inline std::string_view WordOf(Member eMember) noexcept {
    switch (eMember) {
        case Member::Attributes: return ATTRIBUTES;
        case Member::Name: return NAME;
        case Member::Type: return TYPE;
        case Member::Value: return VALUE;
        default: return {};
    }
}
// Whether it is one of these words, behind any number of "#": as a name it is written with one more
// of them.
[[nodiscard]] inline bool IsMarked(std::string_view sName) noexcept {
    const std::size_t uMarks = sName.find_first_not_of('#');
    if (uMarks == 0 || uMarks == std::string_view::npos) return false;
    return MemberOf(sName.substr(uMarks - 1)) != Member::Successor;
}

// The type of that name, as Data_Node::TypeName gives it, of those that have a value; Tree for any
// other text.
[[nodiscard]] inline Data_Node::Type TypeOf(std::string_view sName) noexcept {
    for (u2_t u = Data_Node::Boolean; u <= Data_Node::Link; ++u) {
        if (u != 11 && sName == Data_Node::TypeName(u)) return static_cast<Data_Node::Type>(u);
    }
    return Data_Node::Tree;
}

}  // namespace vok::json

#endif  // VOK_JSON_FORM_H
