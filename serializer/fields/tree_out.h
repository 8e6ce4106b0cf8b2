// SPDX-License-Identifier: MIT
// Nodes of a tree, from objects. Internal.
#ifndef SERIALIZER_FIELDS_TREE_OUT_H
#define SERIALIZER_FIELDS_TREE_OUT_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <typeindex>
#include <utility>
#include <vector>

#include "serializer/fields/steps.h"
#include "serializer/fields/types.h"
#include "vok/data/builder.h"

namespace Velmar::Q7R::Serializer::fields {

// Appends what objects write below a node. Everything that documents can hold goes this way;
// what they cannot raises a System::ApplicationException that begins with the path of the node.
class TreeOut {
  public:
    explicit TreeOut(vok::Data& oParent);

    // Sets what could not be set while nodes were appended: attributes, links, the values of
    // objects that write themselves. To be called once, at the end.
    void Finish();

    // At the node that was appended last, or at one that was to be.
    [[noreturn]] void Fail(const char* sReason);
    template <class S>
    [[noreturn]] void FailAt(const char* sReason) {
        Put(m_oBuilder.AddEmpty(S::NAME));
        Fail(sReason);
    }
    [[nodiscard]] static bool HasFailed() noexcept { return false; }
    [[nodiscard]] static std::size_t Size() noexcept { return 0; }
    static void Expect(std::size_t) noexcept {}

    // ---- values -----------------------------------------------------------

    template <class S, class At>
    void Bool(At, bool b) {
        AddBool(PLACE<S>, b);
    }
    template <class S, class At>
    void Int(At, vok::i2_t i) {
        AddInt(PLACE<S>, i);
    }
    template <class S, class At>
    void Long(At, vok::u3_t u) {
        AddLong(PLACE<S>, u);
    }
    template <class S, class At>
    void Float(At, float f) {
        AddFloat(PLACE<S>, f);
    }
    template <class S, class At>
    void Double(At, double d) {
        AddDouble(PLACE<S>, d);
    }
    template <class S, class At>
    void Date(At, double dSeconds) {
        AddDate(PLACE<S>, dSeconds);
    }
    template <class S, class At>
    void Utf8(At, std::string_view sText) {
        AddText(PLACE<S>, sText);
    }
    template <class S, class At>
    void Utf16(At, std::u16string_view sText) {
        AddText(PLACE<S>, sText);
    }
    template <class S, class At>
    void Binary(At, const void* pData, std::size_t uSize) {
        AddBinary(PLACE<S>, pData, uSize);
    }
    template <class S, class At>
    void Null(At) {
        AddNull(PLACE<S>);
    }
    // Of the object whose node is open.
    template <class S, class T>
    void Attribute(const T& value) {
        static_assert(Scalar<T> && !Clocked<T> && !Ticking<T>,
                      "an attribute is a text, a number, a bool or an enumeration");
        if constexpr (std::same_as<T, bool>) {
            SetAttribute(S::NAME, value ? "true" : "false");
        } else if constexpr (Whole<T>) {
            SetAttribute(S::NAME, std::to_string(value));
        } else if constexpr (Real<T>) {
            SetAttribute(S::NAME, TextOf(static_cast<double>(value)));
        } else if constexpr (NamedEnumeration<T>) {
            SetAttribute(S::NAME, std::string(NameOf<S>(*this, value)));
        } else if constexpr (Enumeration<T>) {
            static_assert(TypedEnumeration<T>,
                          "an enumeration by number needs a type, as in enum E : int; or VOK_ENUM");
            SetAttribute(S::NAME, std::to_string(static_cast<std::underlying_type_t<T>>(value)));
        } else {
            static_assert(Utf8Text<T>, "an attribute's text is UTF-8");
            SetAttribute(S::NAME, std::string(value));
        }
    }

    // ---- nodes in nodes ---------------------------------------------------

    // The id of the node around the one that is open.
    using Mark = std::optional<vok::u2_t>;
    template <class S, class At>
    [[nodiscard]] Mark Open(At) {
        return OpenNode(PLACE<S>);
    }
    void Close(const Mark& oMark);

    template <class S, class At>
    void Host(At, const ISerialisable& oHost) {
        AddHost(PLACE<S>, oHost);
    }

    // An object that others may point to as well: stored where it is met first, and linked to from
    // everywhere else.
    template <class S, class At, class T>
    void Pointer(At at, const std::shared_ptr<T>& p) {
        if (p == nullptr) return Null<S>(at);
        if (IsStored(KeyOf(p))) return PutLink(PLACE<S>, KeyOf(p));
        m_oNextIs = KeyOf(p);
        WritePointee<S>(*this, at, *p);
    }
    // Linked to, wherever it is.
    template <class S, class At, class T>
    void Pointer(At at, const std::weak_ptr<T>& pWeak) {
        const std::shared_ptr<T> p = pWeak.lock();
        if (p == nullptr) return Null<S>(at);
        PutLink(PLACE<S>, KeyOf(p));
    }

  private:
    // An object: an address alone may be that of its first member as well.
    using Key = std::pair<const void*, std::type_index>;
    struct LaterAttribute {
        vok::u2_t uId;
        std::string_view sName;  // of a field
        std::string sValue;
    };

    template <class T>
    [[nodiscard]] static Key KeyOf(const std::shared_ptr<T>& p) {
        if constexpr (std::is_polymorphic_v<T>) {
            return {dynamic_cast<const void*>(p.get()), typeid(T)};
        } else {
            return {p.get(), typeid(T)};
        }
    }

    // A node was appended.
    void Put(vok::u2_t uId);
    void AddBool(const Place& oPlace, bool b);
    void AddInt(const Place& oPlace, vok::i2_t i);
    void AddLong(const Place& oPlace, vok::u3_t u);
    void AddFloat(const Place& oPlace, float f);
    void AddDouble(const Place& oPlace, double d);
    void AddDate(const Place& oPlace, double dSeconds);
    void AddText(const Place& oPlace, std::string_view sText);
    void AddText(const Place& oPlace, std::u16string_view sText);
    void AddBinary(const Place& oPlace, const void* pData, std::size_t uSize);
    void AddNull(const Place& oPlace);
    void AddHost(const Place& oPlace, const ISerialisable& oHost);
    [[nodiscard]] vok::u2_t OpenNode(const Place& oPlace);
    void SetAttribute(std::string_view sName, std::string sValue);
    [[nodiscard]] static std::string TextOf(double dValue);
    [[nodiscard]] bool IsStored(const Key& oKey) const;
    void PutLink(const Place& oPlace, const Key& oKey);
    [[noreturn]] void FailAtNode(vok::u2_t uId, const char* sReason);

    vok::Data m_oTree;
    vok::Data_Builder m_oBuilder;
    vok::u2_t m_uOpen;
    vok::u2_t m_uLast;  // the node that was appended last
    vok::u2_t m_uDepth = 0;
    std::vector<LaterAttribute> m_oLater;
    std::vector<std::pair<vok::u2_t, const ISerialisable*>> m_oHost;
    std::optional<Key> m_oNextIs;
    std::map<Key, vok::u2_t> m_oStored;
    std::vector<std::pair<vok::u2_t, Key>> m_oLink;
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_TREE_OUT_H
