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
#include "vok/dgraph/format.h"

namespace Velmar::Q7R::Serializer::fields {

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
        using Known = Step<S>;
        if (m_uPending == 0) return false;
        if (Left() > Known::HEAD_SIZE &&
            std::memcmp(m_p, Known::HEAD.data(), Known::HEAD_SIZE) == 0) [[likely]] {
            m_p += Known::HEAD_SIZE;
            return true;
        }
        // Most that are not there have a record behind them that differs in its first letter.
        if (Left() > 4 && IsBehind(m_p[4], Known::STEM[0])) return false;
        return Look(Known::STEM, S::BEFORE);
    }
    // The node of a name and an index.
    template <class S>
    [[nodiscard]] bool Next(vok::u2_t uIndex) noexcept {
        if (uIndex == 0) return Next<S>(First());
        using Known = Step<S>;
        if (m_uPending == 0) return false;
        const std::size_t uStep = Known::STEM_SIZE + DigitsOf(uIndex) + 1;
        if (Left() > 4 + uStep && vok::le::Load<vok::u2_t>(m_p) == uStep &&
            std::memcmp(m_p + 4, Known::STEM.data(), Known::STEM_SIZE) == 0 &&
            IsIndexAt(m_p + 4 + Known::STEM_SIZE, uIndex)) [[likely]] {
            m_p += 4 + uStep;
            return true;
        }
        // What stands behind the last one has another name, of which this must be the first.
        if (Left() <= 4 || !IsBehind(m_p[4], Known::STEM[0])) CheckBehind(Known::STEM);
        return false;
    }
    // Behind the last field of T.
    template <class T>
    void FinishFields() noexcept {
        if (m_uPending != 0) [[unlikely]]
            (void)Look({}, BEHIND<T>);
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
        if (Left() < 5 || *m_p != vok::dgraph::CODE_NONE) return Fail(), Mark{false, 0};
        const auto uCount = vok::le::Load<vok::u2_t>(m_p + 1);
        if (uCount > 0x7FFFFFFF || ++m_uDepth > MOST_DEPTH) return Fail(), Mark{false, 0};
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

    void Get(bool& b) noexcept {
        if (const char* p = Value(vok::dgraph::CODE_BOOLEAN, 1)) b = *p != 0;
    }
    void Get(float& f) noexcept {
        if (const char* p = Value(vok::dgraph::CODE_FLOAT, 4))
            f = std::bit_cast<float>(vok::le::Load<vok::u2_t>(p));
    }
    void Get(double& d) noexcept {
        if (const char* p = Value(vok::dgraph::CODE_DOUBLE, 8))
            d = std::bit_cast<double>(vok::le::Load<vok::u3_t>(p));
    }
    template <Whole T>
    void Get(T& value) noexcept {
        if constexpr (ShortWhole<T>) {
            const char* p = Value(vok::dgraph::CODE_INTEGER, 4);
            if (p == nullptr) return;
            const auto i = vok::le::Load<vok::i2_t>(p);
            if (!std::in_range<T>(i)) return Fail();
            value = static_cast<T>(i);
        } else {
            vok::u3_t u = 0;
            if (!GetLong(u, std::is_signed_v<T>)) return;
            if (sizeof(T) < 8 && u > std::numeric_limits<T>::max()) return Fail();
            value = static_cast<T>(u);
        }
    }
    void Get(std::string_view& sText) noexcept;
    void Get(std::string& sText) {
        std::string_view s;
        Get(s);
        if (!m_bFailed) sText.assign(s);
    }
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

  private:
    static constexpr vok::u2_t MOST_DEPTH = 256;

    [[nodiscard]] std::size_t Left() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_p);
    }
    // Nothing is there any more.
    void Fail() noexcept {
        m_bFailed = true;
        m_uPending = 0;
        m_p = m_pEnd;
    }
    // The bytes of a value of one type, behind which the next record begins; null where it is of
    // another.
    [[nodiscard]] const char* Value(vok::dgraph::Code eCode, std::size_t uSize) noexcept {
        if (Left() <= uSize || *m_p != static_cast<char>(eCode)) [[unlikely]]
            return Fail(), nullptr;
        const char* const p = m_p + 1;
        m_p = p + uSize;
        --m_uPending;
        return p;
    }
    // The same for one that begins with its length.
    [[nodiscard]] const char* Block(vok::dgraph::Code eCode, std::size_t& uSize) noexcept;
    [[nodiscard]] bool GetLong(vok::u3_t& u, bool bSigned) noexcept;

    // A record taken apart, as far as it has a plain name and no attributes.
    struct Head {
        std::string_view sName;
        vok::u2_t uIndex;
        const char* pCode;
    };
    [[nodiscard]] bool ParseHead(Head& o) const noexcept;
    // Goes to the first record of a name; false where there is none. Records of names between
    // sBefore, that of the field before, and this one are unknown, and skipped unless sBefore is
    // null; for an empty sStem all that are left are.
    [[nodiscard]] bool Look(std::string_view sStem, std::string_view sBefore) noexcept;
    void CheckBehind(std::string_view sStem) noexcept;
    // Skips a value, and the records below it. False, as below, at what is not for this class.
    [[nodiscard]] bool SkipValue() noexcept;
    [[nodiscard]] bool SkipOneValue(vok::u2_t& uSuccessors) noexcept;

    [[nodiscard]] static bool IsBehind(char c, char cThan) noexcept {
        return static_cast<unsigned char>(c) > static_cast<unsigned char>(cThan);
    }
    [[nodiscard]] static std::size_t DigitsOf(vok::u2_t uIndex) noexcept;
    [[nodiscard]] static bool IsIndexAt(const char* p, vok::u2_t uIndex) noexcept;

    const char* m_p = nullptr;
    const char* m_pEnd = nullptr;
    vok::u2_t m_uPending = 0;  // records of the open node that are still to come
    vok::u2_t m_uDepth = 0;
    bool m_bFailed = false;
    const bool m_bRefuseUnknown;
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_RECORD_IN_H
