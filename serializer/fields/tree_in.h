// SPDX-License-Identifier: MIT
// Objects from the nodes of a tree. Internal.
#ifndef SERIALIZER_FIELDS_TREE_IN_H
#define SERIALIZER_FIELDS_TREE_IN_H

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <typeindex>
#include <utility>

#include "serializer/fields/read.h"
#include "vok/data/view.h"

namespace Velmar::Q7R::Serializer::fields {

template <class T>
concept Common = std::same_as<T, bool> || std::same_as<T, std::int32_t> ||
    std::same_as<T, std::int64_t> || std::same_as<T, double> || std::same_as<T, std::string>;

// Finds nodes by their names, in whatever order they stand, and takes every form of a value that
// a document may have for it. What does not fit raises a Fault.
class TreeIn {
  public:
    // Reads below a node. bRefuseUnknown: nodes that no field asked for are an error.
    TreeIn(const vok::Data& oNode, bool bRefuseUnknown);

    template <class T>
    void ReadObject(T& object) {
        ReadContent<RootName>(*this, object);
        CheckTaken();
    }

    [[nodiscard]] static bool HasFailed() noexcept { return false; }

    // ---- finding ----------------------------------------------------------

    template <class S>
    [[nodiscard]] bool Next(First) {
        return Find(PLACE<S>, 0);
    }
    template <class S>
    [[nodiscard]] bool Next(vok::u2_t uIndex) {
        return Find(PLACE<S>, uIndex);
    }
    template <class S>
    [[nodiscard]] bool Is() {
        return Find(PLACE<S>, 0);
    }
    template <class T>
    static void FinishFields() noexcept {}
    static constexpr bool RUNS_HOOKS = true;
    // Whether the node stands for what is not there.
    [[nodiscard]] bool SkipNull() const;

    // The node around the one that is entered.
    using Mark = std::optional<vok::u2_t>;
    [[nodiscard]] Mark Enter();
    void Leave(const Mark& oMark);

    // ---- values -----------------------------------------------------------

    void Get(bool& b) const;
    void Get(float& f) const;
    void Get(double& d) const;
    template <Whole T>
    void Get(T& value) const {
        using Limits = std::numeric_limits<T>;
        value = static_cast<T>(WholeOf(Limits::min(), Limits::max()));
    }
    // A number between two others, its bits.
    [[nodiscard]] vok::u3_t WholeOf(std::int64_t iLowest, std::uint64_t uHighest) const;
    void Get(std::string_view& sText) const;
    void Get(std::string& sText) const;
    void Get(std::u16string& sText) const;
    // Next and Get in one, for the most common types: a call for each field.
    template <class S, Common T>
    void Fetch(T& value) {
        FetchAt(PLACE<S>, value);
    }
    void FetchAt(const Place& oPlace, bool& b);
    void FetchAt(const Place& oPlace, std::int32_t& i);
    void FetchAt(const Place& oPlace, std::int64_t& i);
    void FetchAt(const Place& oPlace, double& d);
    void FetchAt(const Place& oPlace, std::string& sText);
    // Ticks of iPeriod seconds.
    bool GetDate(std::int64_t& iTicks, std::int64_t iPeriod, std::int64_t iLowest,
                 std::uint64_t uHighest) const;
    bool GetBytes(std::span<const Byte>& oBytes) const;
    void GetHost(ISerialisable& oHost);

    // Of the object whose fields are read.
    template <class S, class T>
    void GetAttribute(T& value) const {
        const char* const sText = AttributeOf(m_uParent, S::NAME);
        if constexpr (Utf8Text<T>) {
            // One without text is not stored.
            value = sText != nullptr ? sText : "";
        } else {
            if (sText != nullptr && !ParseAttribute(sText, value)) FailAttribute(S::NAME, sText);
        }
    }

    // ---- pointers ---------------------------------------------------------

    template <class S, class T>
    void GetPointer(std::shared_ptr<T>& p) {
        p = nullptr;
        if (SkipNull()) return;
        const vok::u2_t uId = TargetId();
        if (const auto pKnown = m_oShared.find(uId); pKnown != m_oShared.end()) {
            if (pKnown->second.second != typeid(T)) FailPointer();
            p = std::static_pointer_cast<T>(pKnown->second.first);
            return;
        }
        const vok::u2_t uNode = std::exchange(m_uNode, uId);
        const auto oShare = [&](const std::shared_ptr<T>& pNew) {
            m_oShared.insert_or_assign(
                uId, std::pair(std::static_pointer_cast<void>(pNew), std::type_index(typeid(T))));
            p = pNew;
        };
        if constexpr (Polymorphic<T>) {
            if (auto oOpen = Enter()) {
                ReadKind<S, T>(*this, [&]<class K>() -> K& {
                    auto pNew = std::make_shared<K>();
                    oShare(pNew);
                    return *pNew;
                });
                Leave(oOpen);
            }
        } else {
            auto pNew = std::make_shared<T>();
            oShare(pNew);
            ReadNode<S>(*this, *pNew);
        }
        m_uNode = uNode;
    }
    template <class S, class T>
    void GetPointer(std::weak_ptr<T>& pWeak) {
        std::shared_ptr<T> p;
        GetPointer<S>(p);
        pWeak = p;
    }

    // ---- failures ---------------------------------------------------------

    template <class NameAt>
    [[noreturn]] void FailName(std::size_t uNames, const NameAt& oNameAt) const {
        std::string sReason = "one of";
        for (std::size_t u = 0; u < uNames; ++u) {
            sReason += u != 0 ? ", " : " ";
            sReason += oNameAt(u);
        }
        FailFound(sReason);
    }
    [[noreturn]] void FailCount(std::size_t uExpected, std::size_t uFound) const;
    [[noreturn]] void FailKind() const;
    [[noreturn]] void FailDouble() const;

  private:
    // A view of any node of the tree.
    struct View : vok::Data_View {
        using vok::Data_View::Data_View;
        [[nodiscard]] vok::Data_View Of(vok::u2_t uId) const noexcept { return At(uId); }
    };

    [[nodiscard]] vok::Data_View NodeView() const noexcept { return m_oView.Of(m_uNode); }
    bool Find(const Place& oPlace, vok::u2_t uIndex);
    [[nodiscard]] double RealOf(const char* sExpected) const;
    template <class T>
    [[nodiscard]] static bool ParseAttribute(std::string_view sText, T& value) {
        if constexpr (std::same_as<T, bool>) {
            return ParseFlag(sText, value);
        } else if constexpr (Whole<T>) {
            using Limits = std::numeric_limits<T>;
            vok::u3_t uBits = 0;
            const bool bGood = ParseWhole(sText, Limits::min(), Limits::max(), uBits);
            if (bGood) value = static_cast<T>(uBits);
            return bGood;
        } else if constexpr (Real<T>) {
            return ParseReal(sText, value);
        } else if constexpr (NamedEnumeration<T>) {
            return ValueNamed(sText, value);
        } else {
            std::underlying_type_t<T> number{};
            const bool bGood = ParseAttribute(sText, number);
            if (bGood) value = static_cast<T>(number);
            return bGood;
        }
    }
    [[nodiscard]] static bool ParseFlag(std::string_view sText, bool& b);
    [[nodiscard]] static bool ParseWhole(std::string_view sText, std::int64_t iLowest,
                                         std::uint64_t uHighest, vok::u3_t& uBits);
    [[nodiscard]] static bool ParseReal(std::string_view sText, double& d);
    [[nodiscard]] static bool ParseReal(std::string_view sText, float& f);
    [[nodiscard]] const char* AttributeOf(vok::u2_t uId, std::string_view sName) const;
    [[nodiscard]] vok::u2_t TargetId() const;
    void CheckTaken() const;

    // "... expected, TYPE found", with the value where there is one.
    [[noreturn]] void FailFound(std::string_view sExpected) const;
    [[noreturn]] void FailAttribute(std::string_view sName, std::string_view sText) const;
    [[noreturn]] void FailPointer() const;
    [[noreturn]] void Fail(std::string sReason) const;

    vok::Data m_oTree;
    View m_oView;
    vok::u2_t m_uParent;
    vok::u2_t m_uNode;  // the one that Next has found
    vok::u2_t m_uDepth = 0;
    std::map<vok::u2_t, std::pair<std::shared_ptr<void>, std::type_index>> m_oShared;
    const bool m_bRefuseUnknown;
    std::set<vok::u2_t> m_oTaken;  // where unknown ones are refused
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_TREE_IN_H
