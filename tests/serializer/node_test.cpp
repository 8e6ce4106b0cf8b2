// SPDX-License-Identifier: MIT
// Every kind of value through the facade, in a fresh tree and in one read back from bytes.
#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/serializer/serializer_support.h"

namespace Velmar::Q7R::Serializer {
namespace {

// Runs oCheck on a tree that was just built and on the same one after a round trip.
void OnBoth(const std::function<void(Node&)>& oBuild, const std::function<void(Node&)>& oCheck) {
    Node oFresh;
    oBuild(oFresh);
    oCheck(oFresh);
    Read(Write(oBuild), oCheck);
}

using Quad = std::array<Int32, 4>;

bool Get(const Node& o, const char* s, Int32 iNth, Quad& oValue) {
    return iNth == 0 ? o.TryGetValue(s, oValue[0], oValue[1], oValue[2], oValue[3])
                     : o.TryGetValue(s, iNth, oValue[0], oValue[1], oValue[2], oValue[3]);
}
template <class T>
bool Get(const Node& o, const char* s, Int32 iNth, T& tValue) {
    return iNth == 0 ? o.TryGetValue(s, tValue) : o.TryGetValue(s, iNth, tValue);
}

std::string Shown(const String& oValue) {
    return oValue.ToUtf8();
}
template <class T>
std::string Shown(const T& tValue) {
    if constexpr (std::is_arithmetic_v<T>) {
        return std::to_string(tValue);
    } else {
        std::string s;
        for (const auto i : tValue) s += std::to_string(i) + ".";
        return s;
    }
}

// What a getter makes of a variable: its new text, "none" and its old one, or the failure.
template <class T>
std::string Got(const Node& o, const char* s, T tValue, Int32 iNth = 0) {
    bool bFound = false;
    const std::string sFailure = Failure([&] { bFound = Get(o, s, iNth, tValue); });
    return sFailure.empty() ? (bFound ? "" : "none ") + Shown(tValue) : sFailure;
}

void Add(Node& o, const char* s, const Quad& a) {
    o.AddValue(s, a[0], a[1], a[2], a[3]);
}
template <class T>
void Add(Node& o, const char* s, const T& tValue) {
    o.AddValue(s, tValue);
}

struct Kind {
    template <class T>
    Kind(const char* sKind, const char* sAdding, const char* sGetting, const T& tValue,
         const T& tOld)
        : sName(sKind),
          sAddFailure(sAdding),
          sFailure(sGetting),
          sValue(Shown(tValue)),
          sOld(Shown(tOld)),
          oAdd([=](Node& o, const char* s) { Add(o, s, tValue); }),
          oGet([=](const Node& o, const char* s, Int32 i) { return Got(o, s, tOld, i); }) {}

    const char* sName;
    const char* sAddFailure;
    const char* sFailure;  // to get it from another kind; null where the text tells what is wrong
    std::string sValue;
    std::string sOld;  // of the variable that oGet reads into
    std::function<void(Node&, const char*)> oAdd;
    std::function<std::string(const Node&, const char*, Int32)> oGet;
};

const Kind g_aKinds[] = {
    {"string", "Failed to add Node String value", nullptr, String(u"text"), String(u"-7")},
    {"bytes", "Failed to add Node byte array", "Failed to get Node byte array", Bytes{0, 255},
     Bytes{7}},
    {"quad", "Failed to add Node quad tuple", "none -7.-7.-7.-7.",  // without its parts none fails
     Quad{1, -2, 3, 4}, Quad{-7, -7, -7, -7}},
    {"int", "Failed to add Node int value", "Failed to get Node int value", 42, -7},
    {"double", "Failed to add Node double value", "Failed to get Node double value", -0.5, -7.0},
    {"bool", "Failed to add Node bool value", "Failed to get Node bool value", false, true},
};

TEST(Node, EveryGetterOnEveryKind) {
    const auto oBuild = [](Node& node) {
        for (const Kind& oKind : g_aKinds) {
            oKind.oAdd(node, oKind.sName);
            node.AddSubnode(oKind.sName);
        }
        node.AddSubnode("tree").AddValue("x", 1);
    };
    OnBoth(oBuild, [](Node& node) {
        for (const Kind& oGetter : g_aKinds) {
            const std::string sOwn = oGetter.sName;
            SCOPED_TRACE(sOwn);
            const std::string sNone = std::string("none ") + oGetter.sOld;
            EXPECT_EQ(oGetter.oGet(node, "none", 0), sNone);
            EXPECT_EQ(oGetter.oGet(node, oGetter.sName, 2), sNone);
            for (const Kind& oKind : g_aKinds) {
                const std::string sGot = oGetter.oGet(node, oKind.sName, 0);
                if (sOwn == oKind.sName) {
                    EXPECT_EQ(sGot, oKind.sValue);
                } else if (oGetter.sFailure != nullptr) {
                    EXPECT_EQ(sGot, oGetter.sFailure) << oKind.sName;
                } else {
                    // Only strings tell the host what happened below.
                    EXPECT_TRUE(sGot.starts_with("node \"" + std::string(oKind.sName) +
                                                 "\" with wrong data type: 'String' expected"));
                    EXPECT_TRUE(sGot.ends_with("\nvok::Data::GetValStr\nvok::Data::GetStr\n"));
                }
            }
            // A node without value is the empty text.
            EXPECT_EQ(oGetter.oGet(node, oGetter.sName, 1),
                      sOwn == "string" ? "" : oGetter.sFailure);
            EXPECT_NE(oGetter.oGet(node, "tree", 0), oGetter.sValue);
        }
    });
}

// What was asked for behind a name the last time is looked at first: whatever that is, what is
// found is what was asked for.
TEST(Node, AsksInPatternsAndOutOfThem) {
    constexpr std::string_view NAMES[] = {
        "a",         "b",   "bb",       "quantity",
        "quantitz",  "",    "\xC3\xA4", "a longer name, of 27 bytes",
        "not there", "\xE4"};
    std::mt19937 oRandom(11);
    Node root(vok::NewTree());
    std::vector<std::multimap<std::string_view, Int32>> oModel;
    std::vector<Node> oObjects;
    Int32 iNext = 0;
    for (int iRound = 0; iRound < 3000; ++iRound) {
        const bool bNew = iRound % 50 == 0;
        if (bNew) {
            oModel.emplace_back();
            oObjects.push_back(root.AddSubnode("object"));
        }
        const std::size_t uObject = oRandom() % oObjects.size();
        if (bNew || oRandom() % 20 == 0) {
            for (int i = 0; i < 7; ++i) {
                const std::string_view sName = NAMES[oRandom() % 8];
                oModel[uObject].emplace(sName, iNext);
                oObjects[uObject].AddValue(sName, iNext++);
            }
            if (oRandom() % 2 == 0) root.Data().SetAccessMode();
        }
        const std::size_t uFrom = oRandom() % 3 == 0 ? oRandom() % std::size(NAMES) : 0;
        for (std::size_t u = uFrom; u < std::size(NAMES); ++u) {
            // A byte that is no UTF-8 is the character of its value.
            const std::string_view sKept = NAMES[u] == "\xE4" ? "\xC3\xA4" : NAMES[u];
            const auto [oFirst, oEnd] = oModel[uObject].equal_range(sKept);
            Int32 iIndex = 0;
            for (auto o = oFirst;; ++o, ++iIndex) {
                Int32 iValue = -1;
                ASSERT_EQ(oObjects[uObject].TryGetValue(NAMES[u], iIndex, iValue), o != oEnd);
                if (o == oEnd) break;
                ASSERT_EQ(iValue, o->second) << NAMES[u] << ' ' << iIndex;
            }
        }
    }
}

TEST(Node, Strings) {
    const std::u16string sLong(200, u'\u00E4');
    const std::string sUtf8 = vok::Repeat("\xC3\xA4", 200);
    struct {
        StringRef oValue;
        std::u16string sRead;
        std::string_view sUtf8;
    } const aCases[] = {
        // clang-format off
        {nullptr, u"", ""}, {String(), u"", ""}, {String::Empty(), u"", ""}, {u"", u"", ""},
        {"", u"", ""}, {u"plain", u"plain", "plain"}, {"plain", u"plain", "plain"},
        {"\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {u"\u00E4\U0001F600", u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {u"\xD83D", u"\uFFFD", "\xEF\xBF\xBD"},
        {u"\xDE00\xD83Dx", u"\uFFFD\uFFFDx", "\xEF\xBF\xBD\xEF\xBF\xBDx"},
        {u"\u00C3\u00A4", u"\u00C3\u00A4", "\xC3\x83\xC2\xA4"},
        {u"\u007F", u"\u007F", "\x7F"}, {u"\u0080", u"\u0080", "\xC2\x80"},
        {u8"\u00E4\U0001F600", u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {"\xE4", u"\u00E4", "\xC3\xA4"}, {std::u16string_view(u"ab\0cd", 5), u"ab", "ab"},
        {std::string_view("ab\0cd", 5), u"ab", "ab"}, {sLong, sLong, sUtf8},
        // clang-format on
    };
    for (const auto& o : aCases) {
        OnBoth([&](Node& node) { node.AddValue("s", o.oValue); },
               [&](Node& node) {
                   String oValue;
                   EXPECT_TRUE(node.TryGetValue("s", oValue));
                   EXPECT_FALSE(oValue.IsNull());
                   EXPECT_EQ(oValue.Text(), o.sRead);
                   EXPECT_EQ(oValue.ToUtf8(), o.sUtf8);
                   std::string sUtf8Read;
                   EXPECT_TRUE(node.TryGetValue("s", sUtf8Read));
                   EXPECT_EQ(sUtf8Read, o.sUtf8);
               });
        // As a name it finds what was added under its other form.
        OnBoth([&](Node& node) { node.AddValue(o.oValue, 5); },
               [&](Node& node) {
                   Int32 iValue = 0;
                   EXPECT_TRUE(node.TryGetValue(o.sRead, iValue));
                   EXPECT_EQ(iValue, 5);
                   EXPECT_EQ(node.GetSubnodeCount(o.sUtf8), 1);
               });
    }
}

// A pointer is a text or does not compile; it is never true.
template <class T>
concept Addable = requires(Node& node, T tValue) {
    node.AddValue("x", tValue);
};
static_assert(Addable<const char*> && Addable<const char8_t*> && Addable<const char16_t*>);
static_assert(Addable<char*> && Addable<char8_t*> && Addable<char16_t*> && Addable<bool>);
static_assert(!Addable<const wchar_t*> && !Addable<const char32_t*> && !Addable<void*>);
static_assert(!Addable<int*> && !Addable<const unsigned char*> && !Addable<void (*)()>);
static_assert(!Addable<volatile char*>);
static_assert(!Addable<Node*> && !Addable<int Quad::*> && !Addable<std::nullptr_t>);

TEST(Node, LiteralsOfEveryKindAreTexts) {
    Node node;
    node.AddValue("x", "\xC3\xA4");
    node.AddValue(u8"x", u8"\u00E4");
    node.AddValue(u"x", u"\u00E4");
    for (Int32 i = 0; i < 3; ++i) EXPECT_EQ(Got(node, "x", String(), i), "\xC3\xA4");
}

TEST(Node, NumbersAndBytesKeepEveryBit) {
    using Most = std::numeric_limits<double>;
    constexpr Int32 LOWEST = std::numeric_limits<Int32>::min();
    const double adValues[] = {-0.0, 0.1, Most::max(), Most::denorm_min(), Most::infinity()};
    Bytes oLarge(70000);
    for (std::size_t u = 0; u < oLarge.size(); ++u) oLarge[u] = static_cast<Byte>(u * 7);
    const Bytes aoBytes[] = {{}, {0}, oLarge};
    const auto oBuild = [&](Node& node) {
        for (const double d : adValues) node.AddValue("d", d);
        for (const Bytes& o : aoBytes) node.AddValue("b", o);
        node.AddValue("q", LOWEST, -1, 0, 0x7FFFFFFF);
    };
    OnBoth(oBuild, [&](Node& node) {
        for (std::size_t u = 0; u < std::size(adValues); ++u) {
            double dRead = 7;
            EXPECT_TRUE(node.TryGetValue("d", static_cast<Int32>(u), dRead));
            EXPECT_EQ(std::bit_cast<vok::u3_t>(dRead), std::bit_cast<vok::u3_t>(adValues[u]));
        }
        for (std::size_t u = 0; u < std::size(aoBytes); ++u) {
            EXPECT_EQ(Got(node, "b", Bytes{9, 9}, static_cast<Int32>(u)), Shown(aoBytes[u]));
        }
        EXPECT_EQ(Got(node, "q", Quad{}), Shown(Quad{LOWEST, -1, 0, 0x7FFFFFFF}));
    });
}

TEST(Node, SuccessorsOfOneName) {
    const auto oBuild = [](Node& node) {
        for (int i = 0; i < 3; ++i) {
            Node sub = node.AddSubnode("a");
            sub.AddValue("V1", i);
            sub.AddValue("V3", 30 + i);
        }
        Node bad = node.AddSubnode("bad");
        bad.AddValue("V1", 1);
        bad.AddValue("V2", "2");
    };
    OnBoth(oBuild, [](Node& node) {
        EXPECT_EQ(node.GetSubnodeCount(u"a"), 3);
        EXPECT_EQ(node.GetSubnodeCount("none"), 0);
        Node oSub;
        for (const Int32 iBeyond : {3, -1, std::numeric_limits<Int32>::min()}) {
            EXPECT_FALSE(node.TryGetSubnode("a", iBeyond, oSub));
        }
        // Those of four that there are, up to one that is none.
        Quad oQuad = {-1, -2, -3, -4};
        EXPECT_EQ(Got(node, "a", oQuad, 2), "none 2.-2.32.-4.");
        EXPECT_EQ(Failure([&] { Get(node, "bad", 0, oQuad); }), "Failed to get Node int value");
        EXPECT_EQ(oQuad, (Quad{1, -2, -3, -4}));
        EXPECT_TRUE(node.TryGetSubnode("a", node));  // into the node itself
        EXPECT_EQ(Got(node, "V1", -1), "0");
    });
}

// Only a tree node and an empty one take successors.
TEST(Node, FailuresOfWriting) {
    Node node;
    node.AddValue("leaf", 1);
    Node leaf, disposed;
    ASSERT_TRUE(node.TryGetSubnode("leaf", leaf));
    disposed.Dispose();
    for (Node* p : {&leaf, &disposed}) {
        for (const Kind& o : g_aKinds) EXPECT_EQ(Failure([&] { o.oAdd(*p, "x"); }), o.sAddFailure);
        EXPECT_EQ(Failure([&] { p->AddValue(u"x", u"y"); }), "Failed to add Node String value");
        EXPECT_EQ(Failure([&] { (void)p->AddSubnode("x"); }), "Failed to add subnode");
    }
    EXPECT_EQ(Got(node, "leaf", 0), "1");
}

TEST(Node, DisposeGivesUpTheNodeNotTheTree) {
    Node node;
    Node sub = node.AddSubnode("sub");
    Node copy = node;
    node.Dispose();
    node.Dispose();
    sub.AddValue("i", 5);
    EXPECT_EQ(copy.GetSubnodeCount("sub"), 1);
    EXPECT_EQ(Failure([&] { (void)node.GetSubnodeCount("sub"); }), "Failed to get subnode count");
    EXPECT_EQ(Failure([&] { node.TryGetSubnode("sub", sub); }), "Failed to get subnode");
    for (const Kind& o : g_aKinds) {
        const std::string sGot = o.oGet(node, "sub", 0);
        EXPECT_TRUE(sGot.starts_with("Failed to get Node ") || sGot == "object points to nothing\n")
            << o.sName << ": " << sGot;
    }
    // A new value for the variable is a usable node again.
    node = copy;
    EXPECT_EQ(node.GetSubnodeCount("sub"), 1);
}

// What a value of one type becomes when it is read as another.
template <class From, class To>
std::string Reread(const From& from, To to = {}) {
    Node node;
    node.AddValue("x", from);
    const std::string sError = Failure([&] { EXPECT_TRUE(node.TryGetValue("x", to)); });
    if (!sError.empty()) return sError;
    if constexpr (requires { to.time_since_epoch(); }) {
        return std::to_string(to.time_since_epoch().count());
    } else if constexpr (requires { *to; }) {
        return std::to_string(*to);
    } else {
        return std::to_string(to);
    }
}

TEST(Node, NumbersOfEveryWidth) {
    using std::chrono::sys_days, std::chrono::sys_seconds;
    using Ms = std::chrono::sys_time<std::chrono::milliseconds>;
    constexpr auto LOWEST = std::numeric_limits<std::int64_t>::min();
    constexpr auto HIGHEST = std::numeric_limits<std::uint64_t>::max();
    const sys_days day(std::chrono::days(-3));
    const vok::Pair CASES[] = {
        {Reread<std::int8_t, std::int8_t>(-128), "-128"},
        {Reread<std::uint16_t, std::int8_t>(128),
         "/x: a number from -128 to 127 expected, Integer 128 found"},
        {Reread<std::uint32_t, std::uint32_t>(0xFFFFFFFF), "4294967295"},
        {Reread<std::int64_t, std::int64_t>(LOWEST), std::to_string(LOWEST)},
        {Reread<std::uint64_t, std::uint64_t>(HIGHEST), std::to_string(HIGHEST)},
        {Reread<std::uint64_t, std::uint32_t>(HIGHEST),
         "/x: a number from 0 to 4294967295 expected, Long 18446744073709551615 found"},
        {Reread<std::int64_t, std::int16_t>(-5), "-5"},
        {Reread<Int32, std::uint64_t>(-1),
         "/x: a number from 0 to 18446744073709551615 expected, Integer -1 found"},
        {Reread<double, float>(1.5), "1.500000"},
        {Reread<std::optional<int>, std::optional<int>>(4), "4"},
        {Reread<sys_days, sys_seconds>(day), "-259200"},
        {Reread<sys_seconds, sys_days>(sys_seconds(day)), "-3"},
        {Reread<Ms, Ms>(Ms(std::chrono::milliseconds(5))), "5"},
        {Reread<bool, std::int64_t>(true), "/x: Long expected, Boolean found"},
    };
    for (const auto& [sGot, sExpected] : CASES) EXPECT_EQ(sGot, sExpected);
    Node node;
    node.AddValue("none", std::optional<int>());
    std::int64_t iUntouched = 7;
    EXPECT_FALSE(node.TryGetValue("none", iUntouched));
    EXPECT_EQ(iUntouched, 7);
}

TEST(Node, TextsAndSubnodesWhereTheyLie) {
    Node node;
    node.AddValue(std::string("a"), std::string("text"));
    node.AddValue(std::string_view("b"), Bytes{1});
    for (int i = 0; i < 3; ++i) node.AddSubnode("leg").AddValue("n", i);
    std::string_view sText;
    std::span<const Byte> oBytes;
    EXPECT_TRUE(node.TryGetValue("a", sText) && node.TryGetValue("b", oBytes));
    EXPECT_EQ(sText, "text");
    EXPECT_EQ(oBytes[0], 1);
    std::string sAll;
    for (const Node leg : node.GetSubnodes("leg")) {
        Int32 n = -1;
        EXPECT_TRUE(leg.TryGetValue("n", n));
        sAll += std::to_string(n);
    }
    for (const Node sub : node.GetSubnodes()) sAll += sub.GetName();
    EXPECT_EQ(sAll, "012ableglegleg");
    node.Data().SetAttVal("k", "v");
    node.Data().CreateNode(std::string("/leg[1]/deep"));
    for (const auto& [sName, sValue] : node.Data().GetAttributes())
        sAll = std::string(sName) + std::string(sValue);
    for (const vok::Data& oFound : node.Data().GetNodeSet(std::string("//deep")))
        sAll += oFound.GetPath().View();
    EXPECT_EQ(sAll, "kv/leg[1]/deep[0]");
}

TEST(Node, ASuccessorWhoseValueCannotBeHadStays) {
    Node node;
    node.AddValue("a", "x");
    const vok::Mem_Probe oProbe;
    const auto oRefused = [&](const auto& value) {
        vok::Mem_Probe::FailIn(1);
        const std::string sFailure = Failure([&] { node.AddValue("a", value); });
        vok::Mem_Probe::FailIn(0);
        return sFailure;
    };
    EXPECT_EQ(oRefused(std::string(100000, 'x')), "Failed to add Node String value");
    EXPECT_EQ(oRefused(Bytes(100000)), "Failed to add Node byte array");
    EXPECT_EQ(node.GetSubnodeCount("a"), 3);
}

}  // namespace
}  // namespace Velmar::Q7R::Serializer
