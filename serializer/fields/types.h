// SPDX-License-Identifier: MIT
// What kinds of types there are, told by what they can do: so no header of a container needs to be
// included here. Internal.
#ifndef SERIALIZER_FIELDS_TYPES_H
#define SERIALIZER_FIELDS_TYPES_H

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

#include "serializer/fields/describe.h"
#include "serializer/fields/numbers.h"
#include "serializer/serializer.h"

namespace Velmar::Q7R::Serializer {

// How a type of another library is stored: as one of the types that are known here. A
// specialisation has
//
//     using Stored = std::string;
//     static Stored Store(const T& value);
//     static void Load(T& value, Stored&& stored);   // may raise
template <class T>
struct StoredAs;

// Four integers as one value: a subnode with "V1" to "V4", as Node::AddValue(name, v1, v2, v3, v4)
// makes it.
struct Quad {
    Int32 V1 = 0, V2 = 0, V3 = 0, V4 = 0;

    bool operator==(const Quad&) const = default;
    VOK_FIELDS(Quad, V1, V2, V3, V4)
};

// A null text has no node.
template <>
struct StoredAs<String> {
    using Stored = std::optional<std::u16string>;
    static Stored Store(const String& value) {
        return value.IsNull() ? Stored() : Stored(value.Text());
    }
    static void Load(String& value, Stored&& stored) {
        value = stored ? String(std::move(*stored)) : String();
    }
};

namespace fields {

template <class T, template <class...> class Template>
inline constexpr bool IS_OF = false;
template <template <class...> class Template, class... Arg>
inline constexpr bool IS_OF<Template<Arg...>, Template> = true;

template <class T>
concept Adapted = requires {
    typename StoredAs<T>::Stored;
};

// Every number of its type is a value of it: not so of one that names no type.
template <class T>
concept TypedEnumeration = Enumeration<T> && requires {
    T{0};
};
template <class T>
concept NamedEnumeration = Enumeration<T> && requires {
    NamesOf(Type<T>());
};
template <class T>
concept Utf8Text = std::same_as<T, std::string> || std::same_as<T, std::string_view>;
template <class T>
concept Text =
    Utf8Text<T> || std::same_as<T, std::u16string> || std::same_as<T, std::u16string_view>;
template <class T>
concept Ticking = requires(const T& t) {
    typename T::rep;
    typename T::period;
    t.count();
};

// One value in one node.
template <class T>
concept Scalar = std::same_as<T, bool> || Whole<T> || Real<T> || Enumeration<T> || Text<T> ||
    Clocked<T> || Ticking<T>;

template <class T>
concept Range = requires(const T& t) {
    typename T::value_type;
    t.begin();
    t.end();
    t.size();
};
template <class T>
concept FixedRange = Range<T> && requires {
    std::tuple_size<T>::value;
};
// Bytes that stand behind each other.
template <class T>
concept Bytes = Range<T> && requires(const T& t) {
    { t.data() } -> std::convertible_to<const typename T::value_type*>;
} &&(std::same_as<std::remove_cv_t<typename T::value_type>, std::uint8_t> ||
     std::same_as<std::remove_cv_t<typename T::value_type>, std::byte>);
template <class T>
concept Container = Range<T> && !Text<T> && !Bytes<T>;
template <class T>
concept Map = Container<T> && requires {
    typename T::key_type;
    typename T::mapped_type;
};
template <class T>
concept Sequence = Container<T> && !Map<T> && requires(T & t) {
    t.emplace_back();
};

template <class T>
concept Shared = IS_OF<T, std::shared_ptr> || IS_OF<T, std::weak_ptr>;
// What may hold a value or none.
template <class T>
concept Nullable = IS_OF<T, std::optional> || IS_OF<T, std::unique_ptr> || Shared<T>;

template <class T>
concept HostObject = std::derived_from<T, ISerialisable> && !Described<T>;

template <class T>
concept Polymorphic = std::is_polymorphic_v<T> && requires {
    KindsOf(Type<T>());
};
template <class T>
concept Variant = IS_OF<T, std::variant>;
template <class T>
concept Tuple = IS_OF<T, std::tuple>;
template <class T>
concept Pair = IS_OF<T, std::pair>;

}  // namespace fields

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_FIELDS_TYPES_H
