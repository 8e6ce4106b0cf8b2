// Every kind of value through the facade, in a fresh tree and in one read back from bytes.
#include <cmath>
#include <limits>

#include "tests/serializer/serializer_support.h"

namespace Velmar::Q7R::Serializer {
namespace {

// One successor of every kind, named by its kind.
void AddAll(Node& node) {
    node.AddValue("string", "text");
    node.AddValue("int", 42);
    node.AddValue("double", -0.5);
    node.AddValue("bool", false);
    node.AddValue("bytes", Bytes{0, 255});
    node.AddValue("quad", 1, -2, 3, 4);
    node.AddSubnode("empty");
    node.AddSubnode("tree").AddValue("x", 1);
}

const char* const g_aKinds[] = {"string", "int",  "double", "bool",
                                "bytes",  "quad", "empty",  "tree"};

// Runs oCheck on a tree that was just built and on the same one after a round trip.
void OnBoth(const std::function<void(Node&)>& oBuild, const std::function<void(Node&)>& oCheck) {
    Node oFresh;
    oBuild(oFresh);
    oCheck(oFresh);
    Read(Write(oBuild), oCheck);
}

// Tries to get one kind of value, and shows it as text; the outputs begin with -7, "-7" or true.
struct Getter {
    const char* sKind;
    const char* sFailure;  // null: that of the library below
    const char* sFound;    // what the tree above has
    const char* sBefore;   // what a getter that finds nothing leaves
    bool (*pGet)(const Node&, const char*, std::string&);
};

template <class T>
std::string Join(const T& oValues) {
    std::string s;
    for (const auto i : oValues) s += std::to_string(i) + ".";
    return s;
}

template <class T>
bool Get(const Node& o, const char* s, std::string& sValue) {
    T tValue = static_cast<T>(-7);
    const bool b = o.TryGetValue(s, tValue);
    sValue = std::to_string(tValue);
    return b;
}

const Getter g_aGetters[] = {
    {"string", nullptr, "text", "-7",
     [](const Node& o, const char* s, std::string& sValue) {
         String oValue(u"-7");
         const bool b = o.TryGetValue(s, oValue);
         sValue = oValue.ToUtf8();
         return b;
     }},
    {"bytes", "Failed to get Node byte array", "0.255.", "7.",
     [](const Node& o, const char* s, std::string& sValue) {
         Bytes oValue = {7};
         const bool b = o.TryGetValue(s, oValue);
         sValue = Join(oValue);
         return b;
     }},
    {"quad", "Failed to get Node int value", "1.-2.3.4.", "-7.-7.-7.-7.",
     [](const Node& o, const char* s, std::string& sValue) {
         Int32 ai[] = {-7, -7, -7, -7};
         const bool b = o.TryGetValue(s, ai[0], ai[1], ai[2], ai[3]);
         sValue = Join(ai);
         return b;
     }},
    {"int", "Failed to get Node int value", "42", "-7", Get<Int32>},
    {"double", "Failed to get Node double value", "-0.500000", "-7.000000", Get<double>},
    {"bool", "Failed to get Node bool value", "0", "1", Get<bool>},
};

TEST(Node, EveryGetterOnEveryKind) {
    OnBoth(AddAll, [](Node& node) {
        for (const Getter& oGetter : g_aGetters) {
            const std::string sOwn = oGetter.sKind;
            std::string sValue;
            EXPECT_FALSE(oGetter.pGet(node, "none", sValue));
            EXPECT_EQ(sValue, oGetter.sBefore);
            for (const std::string sKind : g_aKinds) {
                SCOPED_TRACE(sOwn + " of " + sKind);
                bool bFound = false;
                const std::string sFailure =
                    Failure([&] { bFound = oGetter.pGet(node, sKind.c_str(), sValue); });
                // A node without value is the empty text.
                const bool bEmpty = sOwn == "string" && sKind == "empty";
                EXPECT_EQ(bFound, sKind == sOwn || bEmpty);
                if (bFound) {
                    EXPECT_EQ(sValue, bEmpty ? "" : oGetter.sFound);
                } else if (sOwn == "quad") {
                    // Without the four parts there is nothing to fail on.
                    EXPECT_EQ(sFailure, "");
                    EXPECT_EQ(sValue, oGetter.sBefore);
                } else {
                    EXPECT_TRUE(oGetter.sFailure == nullptr ? !sFailure.empty()
                                                            : sFailure == oGetter.sFailure)
                        << sFailure;
                }
            }
        }
    });
}

// Only this one tells the host what happened below.
TEST(Node, TheStringGetterPassesTheNativeErrorOn) {
    OnBoth(AddAll, [](Node& node) {
        String oValue;
        EXPECT_EQ(Failure([&] { node.TryGetValue("int", oValue); }),
                  "node \"int\" with wrong data type: 'String' expected but got 'Integer'\n"
                  "vok::Data::GetValStr\nvok::Data::GetStr\n");
        EXPECT_TRUE(oValue.IsNull());
    });
}

TEST(Node, QuadsFillWhatTheyCan) {
    const auto oBuild = [](Node& node) {
        Node quad = node.AddSubnode("partial");
        quad.AddValue("V1", 1);
        quad.AddValue("V3", 3);
        quad.AddValue("V3", 33);
        Node bad = node.AddSubnode("bad");
        bad.AddValue("V1", 1);
        bad.AddValue("V2", "2");
        bad.AddValue("V3", 3);
    };
    OnBoth(oBuild, [](Node& node) {
        Int32 ai[] = {-1, -2, -3, -4};
        EXPECT_FALSE(node.TryGetValue("partial", ai[0], ai[1], ai[2], ai[3]));
        EXPECT_EQ(Join(ai), "1.-2.3.-4.");
        ai[2] = -3;
        EXPECT_EQ(Failure([&] { node.TryGetValue("bad", ai[0], ai[1], ai[2], ai[3]); }),
                  "Failed to get Node int value");
        EXPECT_EQ(ai[2], -3);
    });
}

TEST(Node, Strings) {
    const std::u16string sLong(200, u'\u00E4');
    struct {
        StringRef oValue;
        std::u16string sRead;
        const char* sUtf8;
    } const aCases[] = {
        // clang-format off
        {nullptr, u"", ""}, {String(), u"", ""}, {String::Empty(), u"", ""}, {u"", u"", ""},
        {"", u"", ""}, {u"plain", u"plain", "plain"}, {"plain", u"plain", "plain"},
        {"\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {u"\u00E4\U0001F600", u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {u"\xD83D", u"\uFFFD", "\xEF\xBF\xBD"},
        {u"\xDE00\xD83Dx", u"\uFFFD\uFFFDx", "\xEF\xBF\xBD\xEF\xBF\xBDx"},
        {"\xE4", u"\u00E4", "\xC3\xA4"}, {std::u16string_view(u"ab\0cd", 5), u"ab", "ab"},
        {std::string_view("ab\0cd", 5), u"ab", "ab"}, {sLong, sLong, nullptr},
        // clang-format on
    };
    for (const auto& o : aCases) {
        OnBoth([&](Node& node) { node.AddValue("s", o.oValue); },
               [&](Node& node) {
                   String oValue;
                   EXPECT_TRUE(node.TryGetValue("s", oValue));
                   EXPECT_FALSE(oValue.IsNull());
                   EXPECT_EQ(oValue.Text(), o.sRead);
                   if (o.sUtf8 != nullptr) {
                       EXPECT_EQ(oValue.ToUtf8(), o.sUtf8);
                   }
               });
        // As a name it finds what was added under its other form.
        OnBoth([&](Node& node) { node.AddValue(o.oValue, 5); },
               [&](Node& node) {
                   Int32 iValue = 0;
                   EXPECT_TRUE(node.TryGetValue(o.sRead, iValue));
                   EXPECT_EQ(iValue, 5);
                   if (o.sUtf8 != nullptr) {
                       EXPECT_EQ(node.GetSubnodeCount(o.sUtf8), 1);
                   }
               });
    }
}

TEST(Node, NumbersAndBytesKeepEveryBit) {
    using Limit = std::numeric_limits<double>;
    constexpr Int32 LOWEST = std::numeric_limits<Int32>::min();
    const double adValues[] = {-0.0, 0.1, Limit::max(), Limit::denorm_min(), Limit::infinity()};
    Bytes oLarge(70000);
    for (std::size_t u = 0; u < oLarge.size(); ++u) oLarge[u] = static_cast<Byte>(u * 7);
    const auto oBuild = [&](Node& node) {
        for (const double d : adValues) node.AddValue("d", d);
        for (const Bytes& o : {Bytes{}, Bytes{0}, oLarge}) node.AddValue("b", o);
        node.AddValue("q", LOWEST, -1, 0, 0x7FFFFFFF);
    };
    OnBoth(oBuild, [&](Node& node) {
        Int32 iNth = 0;
        for (const double d : adValues) {
            double dRead = 7;
            EXPECT_TRUE(node.TryGetValue("d", iNth++, dRead));
            EXPECT_EQ(dRead, d);
            EXPECT_EQ(std::signbit(dRead), std::signbit(d));
        }
        iNth = 0;
        for (const Bytes& o : {Bytes{}, Bytes{0}, oLarge}) {
            Bytes oRead = {9, 9};
            EXPECT_TRUE(node.TryGetValue("b", iNth++, oRead));
            EXPECT_EQ(oRead, o);
        }
        Int32 ai[4] = {};
        EXPECT_TRUE(node.TryGetValue("q", 0, ai[0], ai[1], ai[2], ai[3]));
        EXPECT_EQ(Join(ai), Join(std::vector<Int32>{LOWEST, -1, 0, 0x7FFFFFFF}));
    });
}

TEST(Node, SuccessorsOfOneName) {
    const auto oBuild = [](Node& node) {
        for (int i = 0; i < 3; ++i) {
            node.AddSubnode("a").AddValue("i", i);
            node.AddValue("n", 10 * i);
        }
    };
    OnBoth(oBuild, [](Node& node) {
        EXPECT_EQ(node.GetSubnodeCount("a"), 3);
        EXPECT_EQ(node.GetSubnodeCount(u"n"), 3);
        EXPECT_EQ(node.GetSubnodeCount("none"), 0);
        Int32 iValue = -1;
        EXPECT_TRUE(node.TryGetValue("n", 2, iValue));
        EXPECT_EQ(iValue, 20);
        for (const Int32 iBeyond : {3, -1, std::numeric_limits<Int32>::min()}) {
            EXPECT_FALSE(node.TryGetValue("n", iBeyond, iValue));
            EXPECT_EQ(iValue, 20);
        }
        Node oSub;
        EXPECT_FALSE(node.TryGetSubnode("a", 3, oSub));
        EXPECT_TRUE(node.TryGetSubnode("a", 2, oSub));
        EXPECT_TRUE(oSub.TryGetValue("i", iValue));
        EXPECT_EQ(iValue, 2);
        // Into the node itself.
        EXPECT_TRUE(node.TryGetSubnode("a", node));
        EXPECT_TRUE(node.TryGetValue("i", iValue));
        EXPECT_EQ(iValue, 0);
    });
}

// Only a tree node and an empty one take successors.
TEST(Node, FailuresOfWriting) {
    Node node;
    node.AddValue("leaf", 1);
    Node leaf;
    ASSERT_TRUE(node.TryGetSubnode("leaf", leaf));
    struct {
        const char* sFailure;
        std::function<void(Node&)> oAdd;
    } const aCases[] = {
        {"Failed to add Node String value", [](Node& o) { o.AddValue("x", "y"); }},
        {"Failed to add Node String value", [](Node& o) { o.AddValue(u"x", u"y"); }},
        {"Failed to add Node int value", [](Node& o) { o.AddValue("x", 1); }},
        {"Failed to add Node double value", [](Node& o) { o.AddValue("x", 1.0); }},
        {"Failed to add Node bool value", [](Node& o) { o.AddValue("x", false); }},
        {"Failed to add Node byte array", [](Node& o) { o.AddValue("x", Bytes{1}); }},
        {"Failed to add Node quad tuple", [](Node& o) { o.AddValue("x", 1, 2, 3, 4); }},
        {"Failed to add subnode", [](Node& o) { (void)o.AddSubnode("x"); }},
    };
    for (const auto& o : aCases) {
        EXPECT_EQ(Failure([&] { o.oAdd(leaf); }), o.sFailure);
        Node disposed;
        disposed.Dispose();
        EXPECT_EQ(Failure([&] { o.oAdd(disposed); }), o.sFailure);
        Node fresh;
        EXPECT_EQ(Failure([&] { o.oAdd(fresh); }), "");
        EXPECT_EQ(fresh.GetSubnodeCount("x"), 1);
    }
    Int32 iValue = 0;
    EXPECT_TRUE(node.TryGetValue("leaf", iValue));
    EXPECT_EQ(iValue, 1);
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
    std::string sValue;
    for (const Getter& o : g_aGetters) {
        const std::string sFailure = Failure([&] { o.pGet(node, "sub", sValue); });
        EXPECT_EQ(sFailure, o.sFailure != nullptr ? o.sFailure : "object points to nothing\n");
    }
    // A new value for the variable is a usable node again.
    node = copy;
    EXPECT_EQ(node.GetSubnodeCount("sub"), 1);
}

}  // namespace
}  // namespace Velmar::Q7R::Serializer
