// SPDX-License-Identifier: MIT
// Objects straight from the records of a DGraph document. Internal.
#ifndef SERIALIZER_FIELDS_RECORD_IN_H
#define SERIALIZER_FIELDS_RECORD_IN_H

#include <bit>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "serializer/fields/read.h"
#include "vok/dgraph/plain_step.h"

namespace Velmar::Q7R::Serializer::fields {

// Names as they follow each other among the successors of a node.
class NameOrder {
  public:
    // Behind sBefore; null where nothing may follow.
    explicit NameOrder(std::string_view sBefore = "") noexcept : m_sName(sBefore) {}
    // Whether the next one is of a name behind the last and the first of it, or the next of the
    // same.
    [[nodiscard]] bool Takes(std::string_view sName, vok::u2_t uIndex) noexcept;

  private:
    std::string_view m_sName;
    vok::u2_t m_uIndex = 0;
    bool m_bAny = false;
};

// The place as steps have its name.
template <class S>
inline constexpr Place STEP_PLACE{Step<S>::STEP_NAME, {}, S::BEFORE};

// Values of one size.
template <class T>
concept Plain = std::same_as<T, bool> || ShortWhole<T> || Real<T>;
template <class T>
struct Form;
template <>
struct Form<bool> {
    static constexpr auto CODE = vok::dgraph::CODE_BOOLEAN;
    static constexpr std::size_t SIZE = 1;
    template <class In>
    static void Load(In&, const char* p, bool& b) noexcept {
        b = *p != 0;
    }
};
template <>
struct Form<float> {
    static constexpr auto CODE = vok::dgraph::CODE_FLOAT;
    static constexpr std::size_t SIZE = 4;
    template <class In>
    static void Load(In&, const char* p, float& f) noexcept {
        f = std::bit_cast<float>(vok::le::Load<vok::u2_t>(p));
    }
};
template <>
struct Form<double> {
    static constexpr auto CODE = vok::dgraph::CODE_DOUBLE;
    static constexpr std::size_t SIZE = 8;
    template <class In>
    static void Load(In&, const char* p, double& d) noexcept {
        d = std::bit_cast<double>(vok::le::Load<vok::u3_t>(p));
    }
};
template <ShortWhole T>
struct Form<T> {
    static constexpr auto CODE = vok::dgraph::CODE_INTEGER;
    static constexpr std::size_t SIZE = 4;
    template <class In>
    static void Load(In& in, const char* p, T& value) noexcept {
        const auto i = vok::le::Load<vok::i2_t>(p);
        if (!std::in_range<T>(i)) return in.Fail();
        value = static_cast<T>(i);
    }
};

// Goes through records in the order in which documents of this library have them: by name, and
// those of one name by their index. A record that comes as expected is compared with a constant;
// one of a name that no field has is skipped where nothing depends on it. Anything else is for a
// tree, and fails here: attributes, escapes that are not needed, another order, other types,
// limits. What it accepts, it reads as TreeIn does.
class RecordIn {
  public:
    explicit RecordIn(std::span<const Byte> oDocument, bool bRefuseUnknown) noexcept;

    // False where the document is to be read through a tree.
    template <class T>
    [[nodiscard]] bool ReadObject(T& object) {
        m_uPending = 1;
        if (!Next<RootName>(First())) return false;
        if (const Mark oMark = Enter()) {
            ReadContent<RootName>(*this, object);
            Leave(oMark);
        }
        return !m_bFailed;
    }

    [[nodiscard]] bool HasFailed() const noexcept { return m_bFailed; }

    // ---- finding ----------------------------------------------------------

    // The only node of a name, or the first.
    template <class S>
    [[nodiscard]] bool Next(First) noexcept {
        if (Is<S>()) [[likely]]
            return true;
        if (m_uPending == 0) return false;
        return Look(STEP_PLACE<S>);
    }
    // Whether the only node of the one that is entered has a name: one of several that are asked
    // for in any order.
    template <class S>
    [[nodiscard]] bool Is() noexcept {
        using Known = Step<S>;
        if (m_uPending == 0 || Left() <= Known::HEAD_SIZE ||
            std::memcmp(m_p, Known::HEAD.data(), Known::HEAD_SIZE) != 0) {
            return false;
        }
        m_p += Known::HEAD_SIZE;
        return true;
    }
    // The node of a name and an index.
    template <class S>
    [[nodiscard]] bool Next(vok::u2_t uIndex) noexcept {
        if (uIndex == 0) return Next<S>(First());
        using Known = Step<S>;
        if (m_uPending == 0) return false;
        if (Left() > 4 + Known::STEM_SIZE) [[likely]] {
            const std::size_t uStep = vok::le::Load<vok::u2_t>(m_p);
            if (uStep < Left() - 4 && uStep > Known::STEM_SIZE &&
                std::memcmp(m_p + 4, Known::STEM.data(), Known::STEM_SIZE) == 0 &&
                vok::dgraph::IsIndex(m_p + 4 + Known::STEM_SIZE, uStep - Known::STEM_SIZE, uIndex))
                [[likely]] {
                m_p += 4 + uStep;
                return true;
            }
        }
        CheckBehind(STEP_PLACE<S>);
        return false;
    }
    // Behind the last field of T.
    template <class T>
    void FinishFields() noexcept {
        if (m_uPending != 0) [[unlikely]]
            SkipRest(BEHIND<T>);
    }
    [[nodiscard]] static bool SkipNull() noexcept { return false; }
    // Whether objects are told that they were read: not those that may be thrown away.
    static constexpr bool RUNS_HOOKS = false;

    struct Mark {
        bool bEntered;
        vok::u2_t uOuterPending;
        explicit operator bool() const noexcept { return bEntered; }
    };
    [[nodiscard]] Mark Enter() noexcept {
        if (Left() < 5 || *m_p != vok::dgraph::CODE_NONE) return NoMark();
        const auto uCount = vok::le::Load<vok::u2_t>(m_p + 1);
        if (uCount > 0x7FFFFFFF || ++m_uDepth > MOST_DEPTH) return NoMark();
        m_p += 5;
        return {true, std::exchange(m_uPending, uCount) - 1};
    }
    void Leave(const Mark& oMark) noexcept {
        if (m_uPending != 0) [[unlikely]]
            Fail();
        --m_uDepth;
        m_uPending = m_bFailed ? 0 : oMark.uOuterPending;
    }

    // ---- values -----------------------------------------------------------

    template <Plain T>
    void Get(T& value) noexcept {
        using As = Form<T>;
        if (const char* p = Value(As::CODE, As::SIZE)) As::Load(*this, p, value);
    }
    template <Whole T>
    requires(!Plain<T>) void Get(T& value) noexcept {
        vok::u3_t u = 0;
        if (!GetLong(u, std::is_signed_v<T>)) return;
        if (sizeof(T) < 8 && u > std::numeric_limits<T>::max()) return Fail();
        value = static_cast<T>(u);
    }
    // Next and Get in one.
    template <class S, Plain T>
    void Fetch(T& value) noexcept {
        using Known = Step<S>;
        using As = Form<T>;
        const char* p = nullptr;
        if (m_uPending != 0 && Left() > Known::HEAD_SIZE + As::SIZE &&
            std::memcmp(m_p, Known::HEAD.data(), Known::HEAD_SIZE) == 0 &&
            m_p[Known::HEAD_SIZE] == As::CODE) [[likely]] {
            p = m_p + Known::HEAD_SIZE + 1;
            m_p = p + As::SIZE;
            --m_uPending;
        } else {
            p = FetchOther(STEP_PLACE<S>, As::CODE, As::SIZE);
            if (p == nullptr) return;
        }
        As::Load(*this, p, value);
    }
    void Get(std::string_view& sText) noexcept;
    void Get(std::string& sText);
    void Get(std::u16string& sText);
    bool GetDate(std::int64_t& iTicks, std::int64_t iPeriod, std::int64_t iLowest,
                 std::uint64_t uHighest) noexcept;
    bool GetBytes(std::span<const Byte>& oBytes) noexcept;

    // What only a tree does.
    template <class S, class T>
    void GetPointer(T&) noexcept {
        Fail();
    }
    void GetHost(ISerialisable&) noexcept { Fail(); }
    template <class S, class T>
    void GetAttribute(T&) noexcept {
        Fail();
    }

    template <class NameAt>
    void FailName(std::size_t, const NameAt&) noexcept {
        Fail();
    }
    void FailCount(std::size_t, std::size_t) noexcept { Fail(); }
    void FailKind() noexcept { Fail(); }
    void FailDouble() noexcept { Fail(); }

    // Nothing is there any more.
    [[gnu::cold, gnu::noinline]] void Fail() noexcept;

  private:
    [[nodiscard]] std::size_t Left() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_p);
    }
    [[gnu::cold, gnu::noinline]] const char* FailValue() noexcept;
    [[nodiscard]] const char* FetchOther(const Place& oPlace, vok::dgraph::Code eCode,
                                         std::size_t uSize) noexcept;
    [[nodiscard]] Mark NoMark() noexcept {
        Fail();
        return {false, 0};
    }
    // The bytes of a value of one type, behind which the next record begins; null where it is of
    // another.
    [[nodiscard]] const char* Value(vok::dgraph::Code eCode, std::size_t uSize) noexcept {
        if (Left() <= uSize || *m_p != static_cast<char>(eCode)) [[unlikely]]
            return FailValue();
        const char* const p = m_p + 1;
        m_p = p + uSize;
        --m_uPending;
        return p;
    }
    // The same for one that begins with its length.
    [[nodiscard]] const char* Block(vok::dgraph::Code eCode, std::size_t& uSize) noexcept;
    [[nodiscard]] bool GetLong(vok::u3_t& u, bool bSigned) noexcept;

    // The head of a record taken apart, as far as it is a plain one.
    struct Head {
        vok::dgraph::PlainStep oStep;
        const char* pCode;
    };
    [[nodiscard]] bool ParseHead(Head& o) const noexcept;
    // Goes to the first record of a name, whose head was not as expected; false where there is
    // none. Records of names between that of the field before and this one are unknown, and
    // skipped unless the place has null for that name.
    [[nodiscard]] bool Look(const Place& oPlace) noexcept;
    // Skips all that are left, of names behind sBefore.
    void SkipRest(std::string_view sBefore) noexcept;
    [[nodiscard]] bool SkipUnknown(const Head& o, NameOrder& oOrder) noexcept;
    // Fails unless the record at hand is of a name behind that of the place.
    void CheckBehind(const Place& oPlace) noexcept;
    // Skips a value, and the records below it. False, as below, at what is not for this class.
    [[nodiscard]] bool SkipValue() noexcept;
    [[nodiscard]] bool SkipOneValue(vok::u2_t& uSuccessors) noexcept;

    const char* m_p = nullptr;
    const char* m_pEnd = nullptr;
    vok::u2_t m_uPending = 0;  // records of the open node that are still to come
    vok::u2_t m_uDepth = 0;
    bool m_bFailed = false;
    const bool m_bRefuseUnknown;
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_RECORD_IN_H
