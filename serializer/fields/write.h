// SPDX-License-Identifier: MIT
// From objects to nodes. Internal.
//
// Out is RecordOut or TreeOut. Fields go in the order of their names, in which documents have
// them.
#ifndef SERIALIZER_FIELDS_WRITE_H
#define SERIALIZER_FIELDS_WRITE_H

#include <cmath>
#include <functional>
#include <typeinfo>

#include "serializer/fields/steps.h"
#include "serializer/fields/types.h"

namespace Velmar::Q7R::Serializer::fields {

template <class T>
inline constexpr bool NEVER = false;

// What is a node with nodes in it.
template <class T>
concept Opened = Described<T> || Container<T> || Variant<T> || Pair<T> || Tuple<T> ||
    std::same_as<T, std::monostate>;

template <class T>
constexpr void CheckList() {
    static_assert(HAS_OWN_LIST<T>,
                  "these fields are those of a base: give the class its own, VOK_FIELDS_AND_BASE");
    static_assert(AreNamesGood<T>(), "a field has no name, or two have the same");
}

// The name of a value of an enumeration; fails at the place of the field where it has none.
template <class S, class Out, class E>
[[nodiscard]] std::string_view NameOf(Out& out, E eValue) {
    static constexpr auto NAMES = NamesOf(Type<E>());
    for (const auto& [eOne, sName] : NAMES.m_aoName) {
        if (eOne == eValue) return sName;
    }
    out.template FailAt<S>("a value without a name");
    return {};
}

template <class S, class Out, class At, Scalar T>
void WriteScalar(Out& out, At at, const T& value) {
    if constexpr (std::same_as<T, bool>) {
        out.template Bool<S>(at, value);
    } else if constexpr (ShortWhole<T>) {
        out.template Int<S>(at, value);
    } else if constexpr (Whole<T>) {
        // Negative ones as their two's complement.
        out.template Long<S>(at, static_cast<vok::u3_t>(value));
    } else if constexpr (std::same_as<T, float>) {
        out.template Float<S>(at, value);
    } else if constexpr (std::same_as<T, double>) {
        out.template Double<S>(at, value);
    } else if constexpr (NamedEnumeration<T>) {
        out.template Utf8<S>(at, NameOf<S>(out, value));
    } else if constexpr (Enumeration<T>) {
        static_assert(TypedEnumeration<T>,
                      "an enumeration by number needs a type, as in enum E : int; or VOK_ENUM");
        WriteScalar<S>(out, at, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (Utf8Text<T>) {
        out.template Utf8<S>(at, value);
    } else if constexpr (Text<T>) {
        out.template Utf16<S>(at, value);
    } else if constexpr (Dated<T>) {
        out.template Date<S>(at, SecondsOf(value));
    } else if constexpr (Clocked<T>) {
        WriteScalar<S>(out, at, value.time_since_epoch().count());
    } else {
        WriteScalar<S>(out, at, value.count());
    }
}

template <class Out, class T>
void WriteFields(Out& out, const T& object);
template <class S, class Out, class At, class T>
void WriteNode(Out& out, At at, const T& value);
template <class S, class Out, class At, class T>
void WritePointee(Out& out, At at, const T& value);
template <class S, class Out, class T>
void WriteField(Out& out, const T& value);

// One node for every element, under one name.
template <class S, class Out, class T>
void WriteElements(Out& out, const T& range) {
    vok::u2_t uIndex = 0;
    const std::size_t uBegin = out.Size();
    for (const auto& element : range) {
        if (out.HasFailed()) return;
        if constexpr (Map<T>) {
            // Keys and values by their names.
            if (auto oOpen = out.template Open<S>(uIndex)) {
                if constexpr (S::KEY < S::VALUE) WriteNode<KeyOf<S>>(out, First(), element.first);
                WriteField<ValueOf<S>>(out, element.second);
                if constexpr (S::VALUE < S::KEY) WriteNode<KeyOf<S>>(out, First(), element.first);
                out.Close(oOpen);
            }
        } else {
            // A proxy, as those of vector<bool>, becomes the value.
            const typename T::value_type& value = element;
            WriteNode<S>(out, uIndex, value);
        }
        // Now and then, what the rest may take if it is like what there was: at powers of two,
        // which not every processor counts the bits of.
        if (++uIndex >= 32 && (uIndex & (uIndex - 1)) == 0) {
            out.Expect((out.Size() - uBegin) / uIndex * (range.size() - uIndex));
        }
    }
}

// A node that the kind of what is in it names.
template <class S, class Out, class T>
void WriteKind(Out& out, const T& object) {
    bool bKnown = false;
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        const auto oTry = [&]<std::size_t K>() {
            using Listed = typename std::remove_cvref_t<decltype(std::get<K>(
                KindOf<S, T, K>::LISTED.m_oKinds))>::type;
            if (bKnown || typeid(object) != typeid(Listed)) return;
            bKnown = true;
            WriteNode<KindOf<S, T, K>>(out, First(), static_cast<const Listed&>(object));
        };
        (oTry.template operator()<I>(), ...);
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(KindsOf(Type<T>()).m_oKinds)>>());
    if (!bKnown) out.Fail("a type that is not among the kinds of its base");
}

// What is in a node that has been opened.
template <class S, class Out, class T>
void WriteContent(Out& out, const T& value) {
    if constexpr (Container<T>) {
        WriteElements<ItemOf<S>>(out, value);
    } else if constexpr (Variant<T>) {
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            ((value.index() == I
                  ? WriteNode<NumberedOf<S, I>>(out, First(), *std::get_if<I>(&value))
                  : void()),
             ...);
        }
        (std::make_index_sequence<std::variant_size_v<T>>());
        if (value.valueless_by_exception()) out.Fail("a variant without value");
    } else if constexpr (Pair<T>) {
        WriteField<FirstOf<S>>(out, value.first);
        WriteField<SecondOf<S>>(out, value.second);
    } else if constexpr (Tuple<T>) {
        // "V10" stands between "V1" and "V2".
        static constexpr auto TUPLE_ORDER = OrderOfNumbers<std::tuple_size_v<T>>();
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            (WriteField<NumberedOf<S, TUPLE_ORDER[I]>>(out, std::get<TUPLE_ORDER[I]>(value)), ...);
        }
        (std::make_index_sequence<std::tuple_size_v<T>>());
    } else if constexpr (std::same_as<T, std::monostate>) {
    } else {
        WriteFields(out, value);
    }
}

// Exactly one node.
template <class S, class Out, class At, class T>
void WriteNode(Out& out, At at, const T& value) {
    if constexpr (Adapted<T>) {
        WriteNode<S>(out, at, StoredAs<T>::Store(value));
    } else if constexpr (Scalar<T>) {
        WriteScalar<S>(out, at, value);
    } else if constexpr (Bytes<T>) {
        out.template Binary<S>(at, value.data(), value.size() * sizeof(typename T::value_type));
    } else if constexpr (Shared<T>) {
        out.template Pointer<S>(at, value);
    } else if constexpr (Nullable<T>) {
        if (!value) return out.template Null<S>(at);
        WritePointee<S>(out, at, *value);
    } else if constexpr (HostObject<T>) {
        out.template Host<S>(at, value);
    } else if constexpr (Opened<T>) {
        if (auto oOpen = out.template Open<S>(at)) {
            WriteContent<S>(out, value);
            out.Close(oOpen);
        }
    } else if constexpr (Character<T>) {
        static_assert(NEVER<T>, "a char is no number and no text: make the field one of them");
    } else {
        static_assert(NEVER<T>,
                      "a type without fields: give it VOK_FIELDS, a function Fields or a StoredAs");
    }
}

// What a pointer or an optional has.
template <class S, class Out, class At, class T>
void WritePointee(Out& out, At at, const T& value) {
    if constexpr (Polymorphic<T>) {
        if (auto oOpen = out.template Open<S>(at)) {
            WriteKind<S>(out, value);
            out.Close(oOpen);
        }
    } else {
        WriteNode<S>(out, at, value);
    }
}

template <Shared T>
[[nodiscard]] bool IsNull(const T& pointer) {
    if constexpr (IS_OF<T, std::weak_ptr>) {
        return pointer.expired();
    } else {
        return pointer == nullptr;
    }
}

// All nodes of a field: none for what is not there, one for each element of a container.
template <class S, class Out, class T>
void WriteField(Out& out, const T& value) {
    if constexpr (Adapted<T>) {
        WriteField<S>(out, StoredAs<T>::Store(value));
    } else if constexpr (Container<T>) {
        WriteElements<S>(out, value);
    } else if constexpr (Shared<T>) {
        if (!IsNull(value)) WriteNode<S>(out, First(), value);
    } else if constexpr (Nullable<T>) {
        if (value) WritePointee<S>(out, First(), *value);
    } else {
        WriteNode<S>(out, First(), value);
    }
}

template <class T>
[[nodiscard]] bool IsEmptyValue(const T& value) {
    if constexpr (requires { value.empty(); }) {
        return value.empty();
    } else if constexpr (Real<T>) {
        return value == 0 && !std::signbit(value);
    } else {
        return value == T();
    }
}

template <class Out, class T>
void WriteFields(Out& out, const T& object) {
    CheckList<T>();
    const auto oWrite = [&]<std::size_t I>() {
        if constexpr (I == COUNT<T>) {
            out.template Int<VersionOf<T>>(First(), FieldsAccess::VersionOf<T>());
        } else {
            using S = FieldAt<T, I>;
            const auto& value = std::invoke(S::FIELD.m_oAccess, object);
            if constexpr (S::FIELD.m_bOmitEmpty) {
                if (IsEmptyValue(value)) return;
            }
            if constexpr (S::FIELD.m_bAttribute) {
                out.template Attribute<S>(value);
            } else {
                WriteField<S>(out, value);
            }
        }
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (oWrite.template operator()<ORDER<T>[I]>(), ...);
    }
    (std::make_index_sequence<ORDER<T>.size()>());
}

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_WRITE_H
