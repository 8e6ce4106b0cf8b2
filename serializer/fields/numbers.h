// SPDX-License-Identifier: MIT
// Kinds of numbers and times, and what of them a node holds. Internal.
#ifndef SERIALIZER_FIELDS_NUMBERS_H
#define SERIALIZER_FIELDS_NUMBERS_H

#include <concepts>
#include <cstddef>
#include <type_traits>

namespace Velmar::Q7R::Serializer::fields {

template <class T>
concept Character = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;
template <class T>
concept Whole = std::integral<T> && !std::same_as<T, bool> && !Character<T>;
// Those that the 32 bits of an Integer hold.
template <class T>
concept ShortWhole = Whole<T> &&(sizeof(T) < 4 || (sizeof(T) == 4 && std::signed_integral<T>));
template <class T>
concept Enumeration = std::is_enum_v<T> && !std::same_as<T, std::byte>;
template <class T>
concept Real = std::same_as<T, float> || std::same_as<T, double>;
template <class T>
concept Clocked = requires(const T& t) {
    typename T::clock;
    typename T::period;
    t.time_since_epoch().count();
};
// Ticks of a whole number of seconds, which are what a Date keeps.
template <class T>
concept Dated = Clocked<T> && T::period::den == 1 && std::integral<typename T::rep>;
template <Dated T>
[[nodiscard]] double SecondsOf(const T& oTime) {
    return static_cast<double>(oTime.time_since_epoch().count()) *
           static_cast<double>(T::period::num);
}

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_NUMBERS_H
