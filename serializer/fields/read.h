// SPDX-License-Identifier: MIT
// From nodes to objects. Internal.
//
// In is RecordIn or TreeIn. Next tells whether the node of a name is there and goes to it; then it
// is read by one Get, or entered and left. What RecordIn does not like it fails at, and nothing
// more is there: the whole document is then read through a tree, which says what is wrong if
// anything is.
#ifndef SERIALIZER_FIELDS_READ_H
#define SERIALIZER_FIELDS_READ_H

#include <functional>
#include <limits>
#include <utility>

#include "serializer/fields/steps.h"
#include "serializer/fields/types.h"
#include "serializer/fields/write.h"

namespace Velmar::Q7R::Serializer::fields {

template <class S, class In, class T>
void ReadNode(In& in, T& value);
template <class S, class In, class T>
void ReadField(In& in, T& value);
template <class In, class T>
void ReadFields(In& in, T& object);

template <class T>
constexpr bool IsView() {
    return std::same_as<T, std::string_view> || std::same_as<T, std::u16string_view>;
}

// The value of an enumeration that bears a name; false where none does.
template <NamedEnumeration T>
[[nodiscard]] bool ValueNamed(std::string_view sName, T& value) {
    static constexpr auto NAMES = NamesOf(Type<T>());
    for (const auto& [eOne, sOne] : NAMES.m_aoName) {
        if (sOne != sName) continue;
        value = eOne;
        return true;
    }
    return false;
}

template <class In, Scalar T>
void ReadScalar(In& in, T& value) {
    if constexpr (std::same_as<T, bool> || Whole<T> || Real<T> || Text<T>) {
        if constexpr (IsView<T>()) {
            static_assert(
                NEVER<T>,
                "a view owns no text that could be read into it: make the field a string");
        } else {
            in.Get(value);
        }
    } else if constexpr (NamedEnumeration<T>) {
        std::string_view sName;
        in.Get(sName);
        if (in.HasFailed() || ValueNamed(sName, value)) return;
        static constexpr auto NAMES = NamesOf(Type<T>());
        in.FailName(NAMES.m_aoName.size(), [](std::size_t u) { return NAMES.m_aoName[u].second; });
    } else if constexpr (Enumeration<T>) {
        auto eValue = static_cast<std::underlying_type_t<T>>(value);
        ReadScalar(in, eValue);
        value = static_cast<T>(eValue);
    } else if constexpr (Dated<T>) {
        std::int64_t iTicks = 0;
        if (in.GetDate(iTicks, T::period::num, std::numeric_limits<typename T::rep>::min(),
                       std::numeric_limits<typename T::rep>::max())) {
            value = T(typename T::duration(static_cast<typename T::rep>(iTicks)));
        }
    } else if constexpr (Clocked<T>) {
        auto oTicks = value.time_since_epoch().count();
        ReadScalar(in, oTicks);
        value = T(typename T::duration(oTicks));
    } else {
        auto oTicks = value.count();
        ReadScalar(in, oTicks);
        value = T(oTicks);
    }
}

template <class In, Bytes T>
void ReadBytes(In& in, T& value) {
    using Element = typename T::value_type;
    static_assert(
        requires { value.resize(1); } || FixedRange<T>,
        "a view owns no bytes that could be read into it: make the field a vector");
    std::span<const Byte> oBytes;
    if (!in.GetBytes(oBytes)) return;
    const auto* const pBegin = reinterpret_cast<const Element*>(oBytes.data());
    if constexpr (FixedRange<T>) {
        if (oBytes.size() != value.size()) return in.FailCount(value.size(), oBytes.size());
        std::copy(pBegin, pBegin + oBytes.size(), value.begin());
    } else {
        value.assign(pBegin, pBegin + oBytes.size());
    }
}

// The nodes of one name, as many as there are: into an array, of which all or none must be there.
template <class S, class In, FixedRange T>
void ReadElements(In& in, T& range) {
    vok::u2_t uIndex = 0;
    for (; in.template Next<S>(uIndex); ++uIndex) {
        if (uIndex == range.size()) return in.FailCount(range.size(), uIndex + std::size_t{1});
        ReadNode<S>(in, range[uIndex]);
    }
    if (uIndex != 0 && uIndex != range.size()) in.FailCount(range.size(), uIndex);
}

// Into a map: an entry of each, its parts by the order of their names.
template <class S, class In, Map T>
void ReadElements(In& in, T& range) {
    range.clear();
    for (vok::u2_t uIndex = 0; in.template Next<S>(uIndex); ++uIndex) {
        typename T::key_type key{};
        typename T::mapped_type mapped{};
        if (auto oOpen = in.Enter()) {
            if constexpr (S::KEY < S::VALUE) ReadField<KeyOf<S>>(in, key);
            ReadField<ValueOf<S>>(in, mapped);
            if constexpr (S::VALUE < S::KEY) ReadField<KeyOf<S>>(in, key);
            in.Leave(oOpen);
        }
        const std::size_t uBefore = range.size();
        range.emplace(std::move(key), std::move(mapped));
        if (range.size() == uBefore) return in.FailDouble();
    }
}

// Into whatever else takes elements: in their place where it gives one.
template <class S, class In, class T>
void ReadElements(In& in, T& range) {
    range.clear();
    for (vok::u2_t uIndex = 0; in.template Next<S>(uIndex); ++uIndex) {
        if constexpr (Sequence<T> && std::same_as<typename T::reference, typename T::value_type&>) {
            ReadNode<S>(in, range.emplace_back());
        } else {
            typename T::value_type element{};
            ReadNode<S>(in, element);
            const std::size_t uBefore = range.size();
            range.insert(range.end(), std::move(element));
            if (range.size() == uBefore) return in.FailDouble();
        }
    }
}

// What the pointer may point to, made by oMake<Kind>() and handed to it.
template <class S, class T, class In, class Make>
void ReadKind(In& in, const Make& oMake) {
    bool bKnown = false;
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        const auto oTry = [&]<std::size_t K>() {
            using Listed = typename std::remove_cvref_t<decltype(std::get<K>(
                KindOf<S, T, K>::LISTED.m_oKinds))>::type;
            if (bKnown || !in.template Is<KindOf<S, T, K>>()) return;
            bKnown = true;
            ReadNode<KindOf<S, T, K>>(in, oMake.template operator()<Listed>());
        };
        (oTry.template operator()<I>(), ...);
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(KindsOf(Type<T>()).m_oKinds)>>());
    if (!bKnown) in.FailKind();
}

// What is in a node that has been entered.
template <class S, class In, class T>
void ReadContent(In& in, T& value) {
    if constexpr (Container<T>) {
        ReadElements<ItemOf<S>>(in, value);
    } else if constexpr (Variant<T>) {
        const bool bKnown = [&]<std::size_t... I>(std::index_sequence<I...>) {
            return ((in.template Is<NumberedOf<S, I>>()
                         ? (ReadNode<NumberedOf<S, I>>(in, value.template emplace<I>()), true)
                         : false) ||
                    ...);
        }
        (std::make_index_sequence<std::variant_size_v<T>>());
        if (!bKnown) in.FailKind();
    } else if constexpr (Pair<T>) {
        ReadField<FirstOf<S>>(in, value.first);
        ReadField<SecondOf<S>>(in, value.second);
    } else if constexpr (Tuple<T>) {
        static constexpr auto TUPLE_ORDER = OrderOfNumbers<std::tuple_size_v<T>>();
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            (ReadField<NumberedOf<S, TUPLE_ORDER[I]>>(in, std::get<TUPLE_ORDER[I]>(value)), ...);
        }
        (std::make_index_sequence<std::tuple_size_v<T>>());
    } else if constexpr (std::same_as<T, std::monostate>) {
    } else {
        ReadFields(in, value);
    }
}

// A value into what a pointer or an optional is to hold.
template <class S, class In, class T>
void ReadPointee(In& in, T& value) {
    if constexpr (IS_OF<T, std::optional>) {
        ReadNode<S>(in, value.emplace());
    } else {
        using Element = typename T::element_type;
        if constexpr (Polymorphic<Element>) {
            if (auto oOpen = in.Enter()) {
                ReadKind<S, Element>(in, [&]<class K>() -> K& {
                    auto p = std::make_unique<K>();
                    K& made = *p;
                    value = std::move(p);
                    return made;
                });
                in.Leave(oOpen);
            }
        } else {
            value = std::make_unique<Element>();
            ReadNode<S>(in, *value);
        }
    }
}

template <class S, class In, class T>
void ReadNode(In& in, T& value) {
    if constexpr (Adapted<T>) {
        typename StoredAs<T>::Stored stored{};
        ReadNode<S>(in, stored);
        if (!in.HasFailed()) StoredAs<T>::Load(value, std::move(stored));
    } else if constexpr (Scalar<T>) {
        ReadScalar(in, value);
    } else if constexpr (Bytes<T>) {
        ReadBytes(in, value);
    } else if constexpr (Shared<T>) {
        in.template GetPointer<S>(value);
    } else if constexpr (Nullable<T>) {
        value.reset();
        if (!in.SkipNull()) ReadPointee<S>(in, value);
    } else if constexpr (HostObject<T>) {
        in.GetHost(value);
    } else if constexpr (Opened<T>) {
        if (auto oOpen = in.Enter()) {
            ReadContent<S>(in, value);
            in.Leave(oOpen);
        }
    }
}

// What is not there keeps its value; what is written as no node at all becomes empty.
template <class S, class In, class T>
void ReadField(In& in, T& value) {
    if constexpr (Adapted<T>) {
        using Stored = typename StoredAs<T>::Stored;
        if constexpr (Container<Stored> || Nullable<Stored>) {
            Stored stored{};
            ReadField<S>(in, stored);
            if (!in.HasFailed()) StoredAs<T>::Load(value, std::move(stored));
        } else {
            if (in.template Next<S>(First())) ReadNode<S>(in, value);
        }
    } else if constexpr (Container<T>) {
        ReadElements<S>(in, value);
    } else if constexpr (Nullable<T>) {
        value.reset();
        if (!in.template Next<S>(First())) return;
        if constexpr (Shared<T>) {
            ReadNode<S>(in, value);
        } else {
            ReadPointee<S>(in, value);
        }
    } else if constexpr (requires { in.template Fetch<S>(value); }) {
        in.template Fetch<S>(value);
    } else {
        if (in.template Next<S>(First())) ReadNode<S>(in, value);
    }
}

template <class In, class T>
void ReadFields(In& in, T& object) {
    CheckList<T>();
    if constexpr (FieldsAccess::HasHook<T>() && !In::RUNS_HOOKS) return in.FailKind();
    int iVersion = 0;
    const auto oRead = [&]<std::size_t I>() {
        if constexpr (I == COUNT<T>) {
            ReadField<VersionOf<T>>(in, iVersion);
        } else {
            using S = FieldAt<T, I>;
            auto& value = std::invoke(S::FIELD.m_oAccess, object);
            if constexpr (S::FIELD.m_bAttribute) {
                in.template GetAttribute<S>(value);
            } else if constexpr (S::FIELD.m_bOmitEmpty) {
                value = std::remove_cvref_t<decltype(value)>();
                ReadField<S>(in, value);
            } else {
                ReadField<S>(in, value);
            }
        }
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (oRead.template operator()<ORDER<T>[I]>(), ...);
    }
    (std::make_index_sequence<ORDER<T>.size()>());
    in.template FinishFields<T>();
    if (!in.HasFailed()) FieldsAccess::AfterReading(object, iVersion);
}

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_READ_H
