// SPDX-License-Identifier: MIT
// Names known while compiling, and the beginnings of the records that bear them. Internal.
#ifndef SERIALIZER_FIELDS_STEPS_H
#define SERIALIZER_FIELDS_STEPS_H

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>

#include "serializer/fields/describe.h"
#include "vok/dgraph/known_step.h"

namespace Velmar::Q7R::Serializer::fields {

// Levels of nesting that objects may have: they are written and read by functions that call each
// other.
inline constexpr vok::u2_t MOST_DEPTH = 256;
// Bytes of a text or a block that go straight.
inline constexpr std::size_t MOST_BYTES = 0x40000000;

template <class T>
inline constexpr auto LIST = FieldsAccess::Of<T>();
template <class T>
inline constexpr std::size_t COUNT = std::tuple_size_v<decltype(LIST<T>.m_oFields)>;
template <class T>
inline constexpr bool HAS_VERSION = FieldsAccess::VersionOf<T>() != 0;
inline constexpr std::string_view VERSION_NAME = "version";

// The fields of T by the names of their nodes, which is how documents have them: their positions
// in its list, or COUNT for the version, which stands among them.
template <class T>
constexpr auto MakeOrder() {
    constexpr std::size_t N = COUNT<T> + HAS_VERSION<T>;
    std::array<std::string_view, N> asName{};
    std::apply(
        [&](const auto&... f) {
            std::size_t u = 0;
            ((asName[u++] = f.m_sName), ...);
        },
        LIST<T>.m_oFields);
    if constexpr (HAS_VERSION<T>) asName[COUNT<T>] = VERSION_NAME;
    std::array<std::size_t, N> auOrder{};
    for (std::size_t u = 0; u < N; ++u) {
        std::size_t uTo = u;
        for (; uTo != 0 && asName[u] < asName[auOrder[uTo - 1]]; --uTo)
            auOrder[uTo] = auOrder[uTo - 1];
        auOrder[uTo] = u;
    }
    return auOrder;
}
template <class T>
inline constexpr auto ORDER = MakeOrder<T>();

// Whether the list is of T itself, not inherited from a class that T is derived from.
template <class T>
inline constexpr bool HAS_OWN_LIST =
    std::is_same_v<typename std::remove_cvref_t<decltype(LIST<T>)>::Class, T>;

// The name of field I, and of the version where I is COUNT.
template <class T>
constexpr std::string_view NameOfField(std::size_t uField) {
    std::string_view sName = VERSION_NAME;
    std::size_t u = 0;
    std::apply([&](const auto&... f) { ((sName = u++ == uField ? f.m_sName : sName), ...); },
               LIST<T>.m_oFields);
    return sName;
}
template <class T>
inline constexpr bool HAS_FORMER_NAMES = std::apply(
    [](const auto&... f) { return (false || ... || !f.m_sWas.empty()); }, LIST<T>.m_oFields);
// The name that stands in front of that of a field; empty for the first. Null where names between
// the two may be others' former ones.
template <class T>
constexpr std::string_view NameBefore(std::size_t uField) {
    if (HAS_FORMER_NAMES<T>) return {};
    std::string_view sBefore = "";
    for (const std::size_t u : ORDER<T>) {
        if (u == uField) break;
        sBefore = NameOfField<T>(u);
    }
    return sBefore;
}
// That of the last field.
template <class T>
inline constexpr std::string_view BEHIND = NameBefore<T>(COUNT<T> + 1);

// ---- names ----------------------------------------------------------------------
//
// A type for every place that bears a name: NAME, and the names within it: KEY, VALUE, ITEM.

// What is asked of a place at run time.
struct Place {
    std::string_view sName;
    std::string_view sWas;
    std::string_view sBefore;
};
template <class S>
inline constexpr Place PLACE{S::NAME, S::WAS, S::BEFORE};

struct Outermost {
    static constexpr std::string_view WAS = {}, BEFORE = {};
    static constexpr std::string_view KEY = "key", VALUE = "value", ITEM = "item";
};
struct RootName : Outermost {
    static constexpr std::string_view NAME = "Root";
};
template <class T, std::size_t I>
struct FieldAt {
    static constexpr const auto& FIELD = std::get<I>(LIST<T>.m_oFields);
    static constexpr std::string_view NAME = FIELD.m_sName;
    static constexpr std::string_view WAS = FIELD.m_sWas;
    static constexpr std::string_view KEY = FIELD.m_sKey;
    static constexpr std::string_view VALUE = FIELD.m_sValue;
    static constexpr std::string_view ITEM = FIELD.m_sItem;
    static constexpr std::string_view BEFORE = NameBefore<T>(I);
};
template <class T>
struct VersionOf : Outermost {
    static constexpr std::string_view NAME = VERSION_NAME;
    static constexpr std::string_view BEFORE = NameBefore<T>(COUNT<T>);
};

// Whether two fields share a name, or one has none that a document can have.
template <class T>
constexpr bool AreNamesGood() {
    std::string_view sBefore = "";
    for (const std::size_t u : ORDER<T>) {
        const std::string_view sName = NameOfField<T>(u);
        if (sName == sBefore || sName.find('\0') != std::string_view::npos) return false;
        sBefore = sName;
    }
    return true;
}

// A name within the place S.
template <class S>
struct Inner {
    static constexpr std::string_view WAS = {}, BEFORE = {};
    static constexpr std::string_view KEY = S::KEY;
    static constexpr std::string_view VALUE = S::VALUE;
    static constexpr std::string_view ITEM = S::ITEM;
};
template <class S>
struct KeyOf : Inner<S> {
    static constexpr std::string_view NAME = S::KEY;
};
template <class S>
struct ValueOf : Inner<S> {
    static constexpr std::string_view NAME = S::VALUE;
};
template <class S>
struct ItemOf : Inner<S> {
    static constexpr std::string_view NAME = S::ITEM;
};
template <class S>
struct FirstOf : Inner<S> {
    static constexpr std::string_view NAME = "first";
};
template <class S>
struct SecondOf : Inner<S> {
    static constexpr std::string_view NAME = "second";
};
// "V1", "V2", ...: elements of a tuple, alternatives of a variant. I from 0.
template <class S, std::size_t I>
struct NumberedOf : Inner<S> {
    static_assert(I < 99, "a tuple or variant has at most 99 parts");
    static constexpr char TEXT[] = {
        'V', I < 9 ? static_cast<char>('1' + I) : static_cast<char>('0' + (I + 1) / 10),
        static_cast<char>('0' + (I + 1) % 10)};
    static constexpr std::string_view NAME{TEXT, I < 9 ? 2 : 3};
};
// Numbers from 0 to N - 1 in the order of their names.
template <std::size_t N>
constexpr auto OrderOfNumbers() {
    std::array<std::size_t, N> auOrder{};
    std::size_t uNext = 0;
    for (std::size_t u = 0; u < N && u < 9; ++u) {
        auOrder[uNext++] = u;
        // Those of two digits that begin with this one.
        for (std::size_t v = 10 * (u + 1) - 1; v < N && v < 10 * (u + 1) + 9; ++v)
            auOrder[uNext++] = v;
    }
    return auOrder;
}
// The kind I of Base, of which LISTED has the names.
template <class S, class Base, std::size_t I>
struct KindOf : Inner<S> {
    static constexpr auto LISTED = KindsOf(Type<Base>());
    static constexpr std::string_view NAME = std::get<I>(LISTED.m_oKinds).m_sName;
};

// ---- records --------------------------------------------------------------------

template <class S>
using Step = vok::dgraph::KnownStep<S>;

// The place of the only node of a name, and of the first of several.
struct First {};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_STEPS_H
