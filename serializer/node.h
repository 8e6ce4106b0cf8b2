// SPDX-License-Identifier: MIT
// One node of the tree that an object is written to or read from.
#ifndef SERIALIZER_NODE_H
#define SERIALIZER_NODE_H

#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "serializer/exception.h"
#include "serializer/fields/numbers.h"
#include "serializer/string.h"
#include "vok/data/data.h"
#include "vok/data/succ_it.h"

namespace Velmar::Q7R::Serializer {

// A pointer that is no text: L"wide", for one, which is UTF-16 on some systems only.
template <class T>
concept ForeignPointer = (std::is_pointer_v<T> ||
                          std::is_member_pointer_v<T>)&&!std::is_convertible_v<T, StringRef>;

using Byte = std::uint8_t;
using Int32 = std::int32_t;

// Writing appends named successors to the node, in the order of the calls; a name may be used
// any number of times. Reading takes the successor of a name by its index from 0 among those
// of that name. Nodes of one tree share it; it lives as long as one of them.
//
// Every failure raises System::ApplicationException with the text given at the operation. What
// an operation had done before it failed stays done.
//
// A node and its tree are used from one thread at a time.
class Node {
  public:
    // A node of a tree that is there already.
    explicit Node(const vok::Data& data) : m_oData(data) {}
    // A node of no tree; the first value or subnode added gives it one.
    Node() = default;
    // Nodes are handles: a copy designates the same node of the same tree.
    Node(const Node&) = default;
    Node(Node&&) noexcept = default;
    Node& operator=(const Node&) = default;
    Node& operator=(Node&&) noexcept = default;
    virtual ~Node() { Dispose(true); }

    // Gives up the tree; every later operation fails. May be called again.
    void Dispose() { Dispose(true); }

    // The node of the tree beneath, with all that a tree can do. Raises "object points to nothing"
    // once the node is disposed of.
    [[nodiscard]] const vok::Data& Data() const { return Cursor(); }
    [[nodiscard]] vok::Data& Data() { return Cursor(); }

    // ---- writing ----------------------------------------------------------

    // Null is written as the empty text. "Failed to add Node String value".
    void AddValue(StringRef name, StringRef value);
    // A literal is a text, not a bool.
    void AddValue(StringRef name, const char* value) { AddValue(name, StringRef(value)); }
    void AddValue(StringRef name, const char8_t* value) { AddValue(name, StringRef(value)); }
    void AddValue(StringRef name, const char16_t* value) { AddValue(name, StringRef(value)); }
    // Nor is any other pointer one.
    template <ForeignPointer T>
    void AddValue(StringRef name, T value) = delete;
    // "Failed to add Node int value".
    void AddValue(StringRef name, Int32 value);
    // "Failed to add Node double value".
    void AddValue(StringRef name, double value);
    // "Failed to add Node bool value".
    void AddValue(StringRef name, bool value);
    // A span without data counts as one of length 0. "Failed to add Node byte array".
    void AddValue(StringRef name, std::span<const Byte> value);
    void AddValue(StringRef name, const std::vector<Byte>& value) {
        AddValue(name, std::span<const Byte>(value));
    }
    // A subnode with the integers "V1" to "V4". "Failed to add Node quad tuple".
    void AddValue(StringRef name, Int32 v1, Int32 v2, Int32 v3, Int32 v4);
    // Other integers: as an Integer where 32 bits with sign hold all of their type, else as a Long,
    // negative ones as their two's complement. "Failed to add Node int value".
    template <fields::Whole T>
    requires(!std::same_as<T, Int32>) void AddValue(StringRef name, T value) {
        if constexpr (fields::ShortWhole<T>) {
            AddValue(name, Int32{value});
        } else {
            AddLong(name, static_cast<std::uint64_t>(value));
        }
    }
    // A time point: a Date where it counts in whole seconds, else its ticks, since a Date keeps no
    // fractions. "Failed to add Node int value".
    template <fields::Clocked T>
    void AddValue(StringRef name, const T& value) {
        if constexpr (fields::Dated<T>) {
            AddDate(name, fields::SecondsOf(value));
        } else {
            AddValue(name, value.time_since_epoch().count());
        }
    }
    // What there is; nothing where there is none.
    template <class T>
    void AddValue(StringRef name, const std::optional<T>& value) {
        if (value) AddValue(name, *value);
    }
    // A subnode to be filled by the caller. "Failed to add subnode".
    Node AddSubnode(StringRef name);

    // ---- reading ----------------------------------------------------------
    //
    // True with the value, or false with the output untouched when there is no such
    // successor. A successor with a value of another type is a failure.

    // An empty node reads as the empty text. Fails with the native message and its trail.
    bool TryGetValue(StringRef name, Int32 index, String& value) const;
    // The same as UTF-8, which costs no conversion.
    bool TryGetValue(StringRef name, Int32 index, std::string& value) const;
    // "Failed to get Node int value".
    bool TryGetValue(StringRef name, Int32 index, Int32& value) const;
    // "Failed to get Node double value".
    bool TryGetValue(StringRef name, Int32 index, double& value) const;
    // "Failed to get Node bool value".
    bool TryGetValue(StringRef name, Int32 index, bool& value) const;
    // "Failed to get Node byte array".
    bool TryGetValue(StringRef name, Int32 index, std::vector<Byte>& value) const;
    // Each output whose integer exists is set; true when all four do. "Failed to get Node
    // int value".
    bool TryGetValue(StringRef name, Int32 index, Int32& v1, Int32& v2, Int32& v3, Int32& v4) const;

    // Where they lie in the tree, for as long as it is not changed: a text as UTF-8, and bytes.
    // Errors are those of copies.
    bool TryGetValue(StringRef name, Int32 index, std::string_view& value) const;
    bool TryGetValue(StringRef name, Int32 index, std::span<const Byte>& value) const;
    // Other numbers, taken from an Integer, a Long or the decimal text that older documents have
    // for one; from Float or Double. What the type does not hold is a failure that says so:
    // "/price: a number from 0 to 255 expected, Integer 300 found".
    template <fields::Whole T>
    requires(!std::same_as<T, Int32>) bool TryGetValue(StringRef name, Int32 index,
                                                       T& value) const {
        using Range = std::numeric_limits<T>;
        std::uint64_t bits = 0;
        if (!TryGetWhole(name, index, Range::min(), Range::max(), bits)) return false;
        value = static_cast<T>(bits);
        return true;
    }
    bool TryGetValue(StringRef name, Int32 index, float& value) const;
    // As AddValue stores it.
    template <fields::Clocked T>
    bool TryGetValue(StringRef name, Int32 index, T& value) const {
        using Range = std::numeric_limits<typename T::rep>;
        typename T::rep ticks{};
        if constexpr (fields::Dated<T>) {
            std::int64_t whole = 0;
            if (!TryGetTicks(name, index, T::period::num, Range::min(), Range::max(), whole)) {
                return false;
            }
            ticks = static_cast<typename T::rep>(whole);
        } else {
            if (!TryGetValue(name, index, ticks)) return false;
        }
        value = T(typename T::duration(ticks));
        return true;
    }
    template <class T>
    bool TryGetValue(StringRef name, Int32 index, std::optional<T>& value) const {
        T found{};
        if (!TryGetValue(name, index, found)) return false;
        value = std::move(found);
        return true;
    }

    // The same with index 0.
    template <class T>
    bool TryGetValue(StringRef name, T& value) const {
        return TryGetValue(name, 0, value);
    }
    bool TryGetValue(StringRef name, Int32& v1, Int32& v2, Int32& v3, Int32& v4) const {
        return TryGetValue(name, 0, v1, v2, v3, v4);
    }

    // "Failed to get subnode".
    bool TryGetSubnode(StringRef name, Int32 index, Node& node) const;
    bool TryGetSubnode(StringRef name, Node& node) const { return TryGetSubnode(name, 0, node); }
    // The number of successors of that name. "Failed to get subnode count".
    [[nodiscard]] Int32 GetSubnodeCount(StringRef name) const;

    // The subnodes for range-for, all of them or those of one name, in order:
    //
    //     for (const Node leg : node.GetSubnodes("leg")) ...
    //
    // "Failed to get subnode".
    class Subnodes;
    [[nodiscard]] Subnodes GetSubnodes() const;
    [[nodiscard]] Subnodes GetSubnodes(StringRef name) const;
    // Its name, for as long as the tree is not changed; empty where it has none.
    [[nodiscard]] std::string_view GetName() const;

  protected:
    virtual void Dispose(bool bDisposing);

  private:
    friend class Document;

    // The root of a fresh tree, stamped with the version that is written.
    explicit Node(bool isRootNode);
    // The native cursor; null once the node is disposed of.
    explicit operator vok::Data*() { return m_bDisposed ? nullptr : &m_oData; }
    explicit operator const vok::Data*() const { return m_bDisposed ? nullptr : &m_oData; }

    void AddLong(StringRef name, std::uint64_t value);
    void AddDate(StringRef name, double seconds);
    // A number between two others, as 64 bits; a Date as a number of periods of so many seconds.
    bool TryGetWhole(StringRef name, Int32 index, std::int64_t lowest, std::uint64_t highest,
                     std::uint64_t& bits) const;
    bool TryGetTicks(StringRef name, Int32 index, std::int64_t period, std::int64_t lowest,
                     std::uint64_t highest, std::int64_t& ticks) const;

    [[nodiscard]] const vok::Data& Cursor() const;
    [[nodiscard]] vok::Data& Cursor();

    vok::Data m_oData;
    bool m_bDisposed = false;
};

class Node::Subnodes {
  public:
    explicit Subnodes(vok::Data_SuccIt oSuccessors) : m_oSuccessors(std::move(oSuccessors)) {}

    class Iterator {
      public:
        using value_type = Node;
        using difference_type = std::ptrdiff_t;

        explicit Iterator(const vok::Data_SuccIt& oSuccessors) : m_oAt(oSuccessors) {}
        [[nodiscard]] Node operator*() const { return Node(*m_oAt); }
        Iterator& operator++() {
            ++m_oAt;
            return *this;
        }
        void operator++(int) { ++m_oAt; }
        friend bool operator==(const Iterator& o, std::default_sentinel_t oEnd) {
            return o.m_oAt == oEnd;
        }

      private:
        vok::Data_Range<vok::Data_SuccIt> m_oAt;
    };
    [[nodiscard]] Iterator begin() const { return Iterator(m_oSuccessors); }
    [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  private:
    vok::Data_SuccIt m_oSuccessors;
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_NODE_H
