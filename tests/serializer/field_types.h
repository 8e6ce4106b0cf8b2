// SPDX-License-Identifier: MIT
// Types with fields of every kind, and random values for them.
#ifndef TESTS_SERIALIZER_FIELD_TYPES_H
#define TESTS_SERIALIZER_FIELD_TYPES_H

#include <array>
#include <chrono>
#include <deque>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <variant>
#include <vector>

#include "serializer/fields.h"

namespace field_types {

using namespace Velmar::Q7R::Serializer;

enum class Side : std::int8_t { Buy, Sell = 5 };
VOK_ENUM(Side, Buy, Sell)
enum class Level : std::uint16_t { Low, High = 40000 };
enum Plain : int { None, Some };
enum class Huge : std::uint32_t { Low, High = 0xFFFFFFFF };

struct Leg {
    std::int32_t ratio = 1;
    double strike = 0;
    bool operator==(const Leg&) const = default;
    VOK_FIELDS(Leg, ratio, strike)
};

// Values of one node, in no order of names.
struct Scalars {
    bool flag = false;
    std::int8_t i1 = 0;
    std::uint16_t u2 = 0;
    std::int32_t i4 = 7;
    std::uint32_t u4 = 0;
    std::int64_t i8 = 0;
    std::uint64_t u8 = 0;
    float f = 0;
    double d = 0;
    Side side = Side::Buy;
    Level level = Level::Low;
    Plain plain = None;
    Huge huge = Huge::Low;
    std::string text;
    std::u16string wide;
    std::vector<std::uint8_t> bytes;
    std::array<std::byte, 3> three{};
    std::chrono::sys_seconds at;
    std::chrono::sys_days day;
    std::chrono::sys_time<std::chrono::milliseconds> exact;
    std::chrono::minutes lasts{};
    Quad quad;
    bool operator==(const Scalars&) const = default;
    VOK_FIELDS(Scalars, flag, i1, u2, i4, u4, i8, u8, f, d, side, level, plain, huge, text, wide,
               bytes, three, at, day, exact, lasts, quad)
};

// Names that need escapes, one that begins another, and what has a name of its own.
struct Names {
    int a = 0;
    int ab = 0;
    std::string spaced;
    std::optional<int> slashed;
    bool operator==(const Names&) const = default;
    static constexpr auto Fields() {
        return List<Names>(Field("ab", &Names::ab), Field("a", &Names::a),
                           Field("with space", &Names::spaced),
                           Field("\xC3\xA4/[0]", &Names::slashed));
    }
};

// Other names in documents of former times.
struct Renamed {
    int id = 0;
    std::vector<int> n;
    bool operator==(const Renamed&) const = default;
    static constexpr auto Fields() {
        return List<Renamed>(Field("id", &Renamed::id).Was("aa"), Field("n", &Renamed::n).Was("m"));
    }
};

struct Containers {
    std::vector<Leg> legs;
    std::deque<std::string> texts;
    std::list<double> reals;
    std::vector<bool> flags;
    std::array<int, 3> fixed{};
    std::set<std::string> names;
    std::map<std::string, int> counts;
    std::unordered_map<int, std::string> hashed;
    std::multimap<int, bool> several;
    std::map<int, std::vector<Leg>> groups;
    std::vector<std::vector<int>> matrix;
    std::vector<std::optional<int>> gaps;
    std::pair<int, std::string> pair;
    std::tuple<int, std::vector<bool>, std::string> tuple;
    std::variant<std::monostate, int, Leg, std::vector<std::string>> choice;
    bool operator==(const Containers&) const = default;
    VOK_FIELDS(Containers, legs, texts, reals, flags, fixed, names, counts, hashed, several, groups,
               matrix, gaps, pair, tuple, choice)
};

// Objects in objects, as deep as they like.
struct Tree {
    std::string name;
    std::optional<Leg> leg;
    std::unique_ptr<Tree> child;
    std::vector<Tree> children;
    bool operator==(const Tree& o) const {
        return name == o.name && leg == o.leg && children == o.children && !child == !o.child &&
               (!child || *child == *o.child);
    }
    VOK_FIELDS(Tree, name, leg, child, children)
};

struct All {
    Scalars scalars;
    Names names;
    Containers containers;
    Tree tree;
    bool operator==(const All&) const = default;
    VOK_FIELDS(All, scalars, names, containers, tree)
};

// ---- random values --------------------------------------------------------------

class Filler {
  public:
    explicit Filler(unsigned uSeed) : m_oRandom(uSeed) {}

    template <class T>
    void Fill(T& value) {
        if constexpr (std::same_as<T, bool>) {
            value = Below(2) != 0;
        } else if constexpr (std::integral<T>) {
            value = static_cast<T>(Below(3) == 0 ? m_oRandom() : Below(100));
            if (Below(8) == 0) value = std::numeric_limits<T>::min();
            if (Below(8) == 0) value = std::numeric_limits<T>::max();
        } else if constexpr (std::floating_point<T>) {
            value = static_cast<T>(m_oRandom()) / T{64} - T{1000};
        } else if constexpr (std::same_as<T, Side>) {
            value = Below(2) != 0 ? Side::Buy : Side::Sell;
        } else if constexpr (std::same_as<T, Level>) {
            value = Below(2) != 0 ? Level::Low : Level::High;
        } else if constexpr (std::same_as<T, Plain>) {
            value = Below(2) != 0 ? None : Some;
        } else if constexpr (std::same_as<T, Huge>) {
            value = Below(2) != 0 ? Huge::Low : Huge::High;
        } else if constexpr (std::same_as<T, std::string>) {
            value.clear();
            for (auto n = Below(20); n-- > 0;) value += Below(10) != 0 ? "x" : "\xC3\xA4";
        } else if constexpr (std::same_as<T, std::u16string>) {
            value.assign(Below(9), u'\u0416');
        } else if constexpr (fields::Clocked<T>) {
            value = T(typename T::duration(static_cast<typename T::rep>(Below(50000)) - 1000));
        } else if constexpr (fields::Ticking<T>) {
            value = T(static_cast<typename T::rep>(m_oRandom()));
        } else if constexpr (fields::IS_OF<T, std::optional>) {
            value.reset();
            if (Below(2) != 0) Fill(value.emplace());
        } else if constexpr (fields::IS_OF<T, std::unique_ptr>) {
            value.reset();
            if (++m_uDepth < 4 && Below(2) != 0)
                Fill(*(value = std::make_unique<typename T::element_type>()));
            --m_uDepth;
        } else if constexpr (fields::FixedRange<T>) {
            for (auto& element : value) FillElement(element);
        } else if constexpr (fields::Map<T>) {
            value.clear();
            for (auto n = Below(4); n-- > 0;) {
                typename T::key_type key{};
                typename T::mapped_type mapped{};
                Fill(key);
                Fill(mapped);
                value.emplace(std::move(key), std::move(mapped));
            }
        } else if constexpr (fields::Range<T>) {
            value.clear();
            // Two digits of index now and then.
            for (auto n = ++m_uDepth < 4 ? Below(Below(8) != 0 ? 4 : 14) : 0; n-- > 0;) {
                typename T::value_type element{};
                FillElement(element);
                value.insert(value.end(), std::move(element));
            }
            --m_uDepth;
        } else if constexpr (fields::Pair<T>) {
            Fill(value.first);
            Fill(value.second);
        } else if constexpr (fields::Tuple<T>) {
            std::apply([&](auto&... part) { (Fill(part), ...); }, value);
        } else if constexpr (fields::Variant<T>) {
            switch (Below(4)) {
                case 0: value = {}; break;
                case 1: Fill(value.template emplace<1>()); break;
                case 2: Fill(value.template emplace<2>()); break;
                default: Fill(value.template emplace<3>());
            }
        } else {
            std::apply([&](const auto&... f) { (Fill(std::invoke(f.m_oAccess, value)), ...); },
                       fields::LIST<T>.m_oFields);
        }
    }

    std::size_t Below(std::size_t uMost) { return m_oRandom() % uMost; }

  private:
    template <class T>
    void FillElement(T& element) {
        if constexpr (std::same_as<T, std::byte>) {
            element = std::byte(Below(256));
        } else {
            Fill(element);
        }
    }

    std::mt19937 m_oRandom;
    unsigned m_uDepth = 0;
};

// ---- documents that are not as they should be -----------------------------------

// Takes a document apart into its records, changes some of them, and puts it together again with
// all counts right: duplicates, other orders, names, indexes and types, unknown fields.
class Shuffler {
  public:
    explicit Shuffler(unsigned uSeed) : m_oRandom(uSeed) {}

    std::vector<Byte> Shuffle(const std::vector<Byte>& aoDocument) {
        m_p = reinterpret_cast<const char*>(aoDocument.data()) + HEADER;
        Record oRoot = Parse();
        for (auto n = Below(4) + 1; n-- > 0;) Change(oRoot);
        std::string sOut(aoDocument.begin(), aoDocument.begin() + HEADER);
        Put(oRoot, sOut);
        return {sOut.begin(), sOut.end()};
    }

  private:
    static constexpr int HEADER = 30;
    struct Record {
        std::string sStep;
        char cCode = 0;
        std::string sValue;
        std::vector<Record> aoIn;
    };

    std::size_t Below(std::size_t uMost) { return m_oRandom() % uMost; }
    std::string Take(std::size_t uSize) {
        const std::string s(m_p, uSize);
        m_p += uSize;
        return s;
    }
    std::uint32_t TakeNumber() { return vok::le::Load<std::uint32_t>(Take(4).data()); }
    Record Parse() {
        static constexpr std::size_t SIZES[] = {0, 4, 4, 8, 1, 0, 1, 0, 0, 8, 8, 16};
        Record o;
        o.sStep = Take(TakeNumber());
        o.cCode = *m_p++;
        if (o.cCode == 0) {
            for (auto n = TakeNumber(); n-- > 0;) o.aoIn.push_back(Parse());
        } else if (o.cCode == 5 || o.cCode == 8) {
            o.sValue = Take(4);
            o.sValue += Take(vok::le::Load<std::uint32_t>(o.sValue.data()));
        } else {
            o.sValue = Take(SIZES[static_cast<std::size_t>(o.cCode)]);
        }
        return o;
    }
    static void PutNumber(std::size_t u, std::string& sOut) {
        char s[4];
        vok::le::Store(s, static_cast<std::uint32_t>(u));
        sOut.append(s, 4);
    }
    static void Put(const Record& o, std::string& sOut) {
        PutNumber(o.sStep.size(), sOut);
        sOut += o.sStep + o.cCode;
        if (o.cCode == 0) PutNumber(o.aoIn.size(), sOut);
        sOut += o.sValue;
        for (const Record& oIn : o.aoIn) Put(oIn, sOut);
    }

    // With successors on so many levels at most.
    Record Unknown(int iLevels = 8) {
        static const char* const STEPS[] = {"zz[0]",     "aa[0]", "id[0]",          "m[0]",
                                            "m[1]",      "m[00]", "k[0][@a=\"b\"]", "text[0]",
                                            "x\b32;[0]", "ab[1]"};
        Record o;
        o.sStep = STEPS[Below(std::size(STEPS))];
        for (auto n = iLevels > 0 ? Below(3) : 0; n-- > 0;) {
            o.aoIn.push_back(Unknown(iLevels - 1));
        }
        if (!o.aoIn.empty()) return o;
        if (Below(2) == 0) {
            o.cCode = 5;
            const std::string sText = Below(2) != 0 ? "-5" : "18446744073709551615";
            PutNumber(sText.size() + 1, o.sValue);
            o.sValue += sText + '\0';
        } else {
            o.cCode = 1;
            PutNumber(Below(70000), o.sValue);
        }
        return o;
    }
    void Change(Record& oRoot) {
        Record* p = &oRoot;
        while (Below(3) != 0 && !p->aoIn.empty()) p = &p->aoIn[Below(p->aoIn.size())];
        if (p->cCode != 0 || p->aoIn.empty()) return;
        std::vector<Record>& ao = p->aoIn;
        const auto pAt = ao.begin() + static_cast<std::ptrdiff_t>(Below(ao.size()));
        const Record oOther = ao[Below(ao.size())];
        const std::size_t uBracket = pAt->sStep.find('[');
        switch (Below(9)) {
            case 0: ao.insert(pAt, Record(*pAt)); break;
            case 1: std::swap(*pAt, ao[Below(ao.size())]); break;
            case 2: pAt->sStep = oOther.sStep; break;
            case 3: pAt->sStep.replace(uBracket, std::string::npos, "[1]"); break;
            case 4: pAt->sStep.replace(uBracket, std::string::npos, "[00]"); break;
            case 5:
                pAt->cCode = oOther.cCode;
                pAt->sValue = oOther.sValue;
                pAt->aoIn = oOther.aoIn;
                break;
            case 6: ao.erase(pAt); break;
            case 7: {
                const Record o = Unknown();
                pAt->cCode = o.cCode;
                pAt->sValue = o.sValue;
                pAt->aoIn = o.aoIn;
                break;
            }
            // Where it belongs by its name, more often than not.
            default: {
                const Record o = Unknown();
                auto q = ao.begin();
                while (Below(9) != 0 && q != ao.end() && q->sStep < o.sStep) ++q;
                ao.insert(q, o);
            }
        }
    }

    std::mt19937 m_oRandom;
    const char* m_p = nullptr;
};

}  // namespace field_types

#endif  // TESTS_SERIALIZER_FIELD_TYPES_H
