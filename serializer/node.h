// One node of the tree that an object is written to or read from.
#ifndef SERIALIZER_NODE_H
#define SERIALIZER_NODE_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "serializer/exception.h"
#include "serializer/string.h"
#include "vok/data/data.h"

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

    // The same with index 0.
    bool TryGetValue(StringRef name, String& value) const { return TryGetValue(name, 0, value); }
    bool TryGetValue(StringRef name, std::string& value) const {
        return TryGetValue(name, 0, value);
    }
    bool TryGetValue(StringRef name, Int32& value) const { return TryGetValue(name, 0, value); }
    bool TryGetValue(StringRef name, double& value) const { return TryGetValue(name, 0, value); }
    bool TryGetValue(StringRef name, bool& value) const { return TryGetValue(name, 0, value); }
    bool TryGetValue(StringRef name, std::vector<Byte>& value) const {
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

  protected:
    virtual void Dispose(bool bDisposing);

  private:
    friend class Document;

    // The root of a fresh tree, stamped with the version that is written.
    explicit Node(bool isRootNode);
    // The native cursor; null once the node is disposed of.
    explicit operator vok::Data*() { return m_bDisposed ? nullptr : &m_oData; }
    explicit operator const vok::Data*() const { return m_bDisposed ? nullptr : &m_oData; }

    // The bytes of a successor where they lie, until the tree is changed; its text likewise, with
    // the failures of reading it.
    bool PeekBytes(StringRef name, Int32 index, std::span<const Byte>& value) const;
    bool PeekText(StringRef name, Int32 index, std::string_view& value) const;

    [[nodiscard]] const vok::Data& Cursor() const;
    [[nodiscard]] vok::Data& Cursor();

    vok::Data m_oData;
    bool m_bDisposed = false;
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_NODE_H
