// SPDX-License-Identifier: MIT
// How a type says which fields it has.
#ifndef SERIALIZER_FIELDS_DESCRIBE_H
#define SERIALIZER_FIELDS_DESCRIBE_H

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Velmar::Q7R::Serializer {

// Stands for a type where a function is chosen by it.
template <class T>
struct Type {
    using type = T;
};

// A field: the name of its nodes, UTF-8, and how an object hands it out: a pointer to a member, or
// a function object that takes the object and returns a reference.
template <class Access>
struct Field {
    constexpr Field(std::string_view sName, Access oAccess) : m_sName(sName), m_oAccess(oAccess) {}

    // Documents of former times have it under another name.
    [[nodiscard]] constexpr Field Was(std::string_view sName) const {
        Field o = *this;
        o.m_sWas = sName;
        return o;
    }
    // An empty or zero value is not written; where there is none it becomes empty or zero.
    [[nodiscard]] constexpr Field OmitEmpty() const {
        Field o = *this;
        o.m_bOmitEmpty = true;
        return o;
    }
    // A value that stands as an attribute of the object's node, where it would be a node in it.
    [[nodiscard]] constexpr Field Attribute() const {
        Field o = *this;
        o.m_bAttribute = true;
        return o;
    }
    // The names of a map's keys and values; "key" and "value" unless told.
    [[nodiscard]] constexpr Field Entries(std::string_view sKey, std::string_view sValue) const {
        Field o = *this;
        o.m_sKey = sKey;
        o.m_sValue = sValue;
        return o;
    }
    // The name of what stands in a container within a container; "item" unless told.
    [[nodiscard]] constexpr Field Items(std::string_view sItem) const {
        Field o = *this;
        o.m_sItem = sItem;
        return o;
    }

    std::string_view m_sName;
    Access m_oAccess;
    std::string_view m_sWas = {};
    std::string_view m_sKey = "key";
    std::string_view m_sValue = "value";
    std::string_view m_sItem = "item";
    bool m_bOmitEmpty = false;
    bool m_bAttribute = false;
};

// The fields of one class.
template <class T, class... F>
struct FieldList {
    using Class = T;
    std::tuple<F...> m_oFields;
};

// What a polymorphic type or a variant may be, and the name of the node for each.
template <class T>
struct Kind {
    using type = T;
    explicit constexpr Kind(std::string_view sName) : m_sName(sName) {}
    std::string_view m_sName;
};
template <class... K>
struct KindList {
    std::tuple<K...> m_oKinds;
};
template <class... T>
[[nodiscard]] constexpr auto Kinds(Kind<T>... oKind) {
    return KindList<Kind<T>...>{{oKind...}};
}

// The names of an enumeration's values.
template <class E, std::size_t N>
struct EnumNames {
    std::array<std::pair<E, std::string_view>, N> m_aoName;
};
template <class E, class... Name>
[[nodiscard]] constexpr auto EnumValues(std::pair<E, Name>... oName) {
    return EnumNames<E, sizeof...(oName)>{{std::pair<E, std::string_view>(oName)...}};
}

// Reads and writes the parts of a class that are its own business; a class whose Fields or
// AfterReading is private makes it a friend.
struct FieldsAccess {
    template <class T>
    static constexpr bool HasMember() {
        return requires {
            T::Fields();
        };
    }
    template <class T>
    static constexpr bool HasFunction() {
        return requires {
            Fields(Type<T>());
        };
    }
    template <class T>
    static constexpr auto Of() {
        if constexpr (HasMember<T>()) {
            return T::Fields();
        } else {
            return Fields(Type<T>());
        }
    }
    // The version that a class gives its documents, 0 for none.
    template <class T>
    static constexpr int VersionOf() {
        if constexpr (requires { T::FIELDS_VERSION; }) {
            return T::FIELDS_VERSION;
        } else {
            return 0;
        }
    }
    template <class T>
    static constexpr bool HasHook() {
        return requires(T & oObject) {
            oObject.AfterReading(1);
        }
        || requires(T & oObject) {
            oObject.AfterReading();
        };
    }
    template <class T>
    static void AfterReading(T& oObject, int iVersion) {
        if constexpr (requires { oObject.AfterReading(iVersion); }) {
            oObject.AfterReading(iVersion);
        } else if constexpr (requires { oObject.AfterReading(); }) {
            oObject.AfterReading();
        }
    }
};

// Whether a type says which fields it has.
template <class T>
concept Described = FieldsAccess::HasMember<T>() || FieldsAccess::HasFunction<T>();

namespace fields {

template <class T, class... F>
constexpr auto Part(const FieldList<T, F...>& oBase) {
    return oBase.m_oFields;
}
template <class Access>
constexpr auto Part(const Field<Access>& oField) {
    return std::tuple(oField);
}
template <class T, class... F>
constexpr auto ListOf(std::tuple<F...> oFields) {
    return FieldList<T, F...>{oFields};
}

}  // namespace fields

// The fields of class T: fields, and the lists of classes that it is derived from.
template <class T, class... Entry>
[[nodiscard]] constexpr auto List(Entry... oEntry) {
    return fields::ListOf<T>(std::tuple_cat(fields::Part(oEntry)...));
}
// The fields of a class that another one is derived from.
template <class T>
[[nodiscard]] constexpr auto Base() {
    return FieldsAccess::Of<T>();
}

}  // namespace Velmar::Q7R::Serializer

// ---- macros -------------------------------------------------------------------
//
// What each stands for is written out above it; whatever they do not do, the functions do.

// In a class, its fields under their own names:
//
//     static constexpr auto Fields() { return List<Leg>(Field("ratio", &Leg::ratio), ...); }
#define VOK_FIELDS(CLASS, ...)                                          \
    static constexpr auto Fields() {                                    \
        return ::Velmar::Q7R::Serializer::List<CLASS>(                  \
            VOK_DETAIL_FOR_EACH(VOK_DETAIL_FIELD, CLASS, __VA_ARGS__)); \
    }
// The same for a class that is derived from one with fields, which come first.
#define VOK_FIELDS_AND_BASE(CLASS, BASE, ...)                               \
    static constexpr auto Fields() {                                        \
        return ::Velmar::Q7R::Serializer::List<CLASS>(                      \
            ::Velmar::Q7R::Serializer::Base<BASE>() __VA_OPT__(, )          \
                VOK_DETAIL_FOR_EACH(VOK_DETAIL_FIELD, CLASS, __VA_ARGS__)); \
    }
// Beside an enumeration: its values are written by name.
//
//     constexpr auto NamesOf(Type<Side>) { return EnumValues(std::pair(Side::Buy, "Buy"), ...); }
#define VOK_ENUM(ENUM, ...)                                            \
    constexpr auto NamesOf(::Velmar::Q7R::Serializer::Type<ENUM>) {    \
        return ::Velmar::Q7R::Serializer::EnumValues(                  \
            VOK_DETAIL_FOR_EACH(VOK_DETAIL_VALUE, ENUM, __VA_ARGS__)); \
    }
// Beside a polymorphic class: what a pointer to it may point to.
//
//     constexpr auto KindsOf(Type<Shape>) { return Kinds(Kind<Circle>("Circle"), ...); }
#define VOK_KINDS(CLASS, ...)                                          \
    constexpr auto KindsOf(::Velmar::Q7R::Serializer::Type<CLASS>) {   \
        return ::Velmar::Q7R::Serializer::Kinds(                       \
            VOK_DETAIL_FOR_EACH(VOK_DETAIL_KIND, CLASS, __VA_ARGS__)); \
    }

#define VOK_DETAIL_FIELD(CLASS, NAME) ::Velmar::Q7R::Serializer::Field(#NAME, &CLASS::NAME)
#define VOK_DETAIL_VALUE(ENUM, NAME) std::pair(ENUM::NAME, #NAME)
#define VOK_DETAIL_KIND(CLASS, NAME) ::Velmar::Q7R::Serializer::Kind<NAME>(#NAME)

// MACRO(CONTEXT, argument) for each of up to 255 arguments, with commas between.
#define VOK_DETAIL_FOR_EACH(MACRO, CONTEXT, ...) \
    __VA_OPT__(VOK_DETAIL_SCAN(VOK_DETAIL_NEXT(MACRO, CONTEXT, __VA_ARGS__)))
#define VOK_DETAIL_NEXT(MACRO, CONTEXT, FIRST, ...) \
    MACRO(CONTEXT, FIRST)                           \
    __VA_OPT__(, VOK_DETAIL_NEXT_LATER VOK_DETAIL_PARENS(MACRO, CONTEXT, __VA_ARGS__))
#define VOK_DETAIL_NEXT_LATER() VOK_DETAIL_NEXT
#define VOK_DETAIL_PARENS ()
// Each scan of a preprocessor expands one more argument.
#define VOK_DETAIL_SCAN(...) \
    VOK_DETAIL_SCAN3(VOK_DETAIL_SCAN3(VOK_DETAIL_SCAN3(VOK_DETAIL_SCAN3(__VA_ARGS__))))
#define VOK_DETAIL_SCAN3(...) \
    VOK_DETAIL_SCAN2(VOK_DETAIL_SCAN2(VOK_DETAIL_SCAN2(VOK_DETAIL_SCAN2(__VA_ARGS__))))
#define VOK_DETAIL_SCAN2(...) \
    VOK_DETAIL_SCAN1(VOK_DETAIL_SCAN1(VOK_DETAIL_SCAN1(VOK_DETAIL_SCAN1(__VA_ARGS__))))
#define VOK_DETAIL_SCAN1(...) \
    VOK_DETAIL_SCAN0(VOK_DETAIL_SCAN0(VOK_DETAIL_SCAN0(VOK_DETAIL_SCAN0(__VA_ARGS__))))
#define VOK_DETAIL_SCAN0(...) __VA_ARGS__

#endif  // SERIALIZER_FIELDS_DESCRIBE_H
