// SPDX-License-Identifier: MIT
// Documents both ways, byte by byte; what is refused, and where.
#include <bit>
#include <cmath>

#include "tests/json/json_support.h"

namespace vok {
namespace {

using std::string_literals::operator""s;

// A foreign document, the tree that it becomes, and the document that this becomes; empty where it
// is the first one.
struct Document {
    const char* sIn;
    const char* sTree;
    const char* sOut = "";
};
const Document DOCUMENTS[] = {
    // ---- what is plain
    {"{}", "Root@#json=object"},
    {"null", "Root"},
    {R"({"a":null,"b":true,"c":false,"d":"x\ty\u0001\"\\/","e":[1,-2,3]})",
     "Root(a b:yes c:no d:'x\ty\x01\"\\/' e:1 e:-2 e:3)"},
    {" \r\n\t{ \"b\" : 1 ,\n \"a\" : 2 } ", "Root(a:2 b:1)", R"({"a":2,"b":1})"},
    {R"({"a":{"b":{"c":1}},"d":{}})", "Root(a(b(c:1)) d@#json=object)"},
    {"\xEF\xBB\xBF\"\xC3\xA4\\u00e4\\uD83D\\uDE00\"", "Root:'\xC3\xA4\xC3\xA4\xF0\x9F\x98\x80'",
     "\"\xC3\xA4\xC3\xA4\xF0\x9F\x98\x80\""},
    {R"({"":1,"#":2,"#x":3,"##value":4,"###type":5})", "Root(?:1 #:2 ##type:5 #value:4 #x:3)",
     R"({"":1,"#":2,"###type":5,"##value":4,"#x":3})"},
    // ---- arrays
    {R"({"a":[]})", "Root(a@#json=list)"},
    {R"({"a":[1]})", "Root(a@#json=item:1)"},
    {R"({"a":[null]})", "Root(a@#json=item)"},
    {R"({"a":[{}]})", "Root(a@#json=item object)"},
    {R"({"a":[[]]})", "Root(a@#json=item list)"},
    {R"({"a":[[1,2]]})", "Root(a@#json=item list(?:1 ?:2))"},
    {R"({"a":[[1,2],[3],[]],"b":[{"c":1},{"c":[2]}]})",
     "Root(a@#json=list(?:1 ?:2) a@#json=list(?:3) a@#json=list b(c:1) b(c@#json=item:2))"},
    {"[]", "Root@#json=list"},
    {"[1]", "Root@#json=list(?:1)"},
    {R"([[[]],{"a":1},"x"])", "Root@#json=list(?@#json=list(?@#json=list) ?(a:1) ?:'x')"},
    // ---- a name twice: nothing is lost
    {R"({"a":1,"b":2,"a":3})", "Root(a:1 a:3 b:2)", R"({"a":[1,3],"b":2})"},
    {R"({"a":[1],"a":3})", "Root(a@#json=item:1 a:3)",
     R"({"a":[{"#attributes":{"#json":"item"},"#value":1},3]})"},
    // ---- attributes, the name of the top
    {R"({"#attributes":{"k":"v"},"#name":"top","a":{"#attributes":{"x":"","y":"2"},"#value":7}})",
     "top@k=v(a@x=@y=2:7)"},
    {R"({"a":[{"#attributes":{"k":"v"},"#value":null}]})", "Root(a@k=v@#json=item)",
     R"({"a":[{"#attributes":{"k":"v"}}]})"},
    {R"({"#attributes":{"k":"v"}})", "Root@k=v"},
    {R"({"#name":"top"})", "top"},
    // ---- texts with a NUL
    {R"({"a":["x\u0000"],"b":{"#attributes":{"k":"v"},"#value":"\u0000"}})",
     "Root(a@#json=item text:#7800 b@#json=text@k=v:#00)"},
    {R"({"#attributes":{"a":"\u0000"}})", "Root(#attributes(a@#json=text:#00))",
     R"({"##attributes":{"a":"\u0000"}})"},
    {R"({"#attributes":{"#json":"text"},"#type":"Binary","#value":"eA=="})", "Root@#json=text:#78"},
    {R"({"#name":"top","#value":[1,2]})", "top(#value:1 #value:2)",
     R"({"#name":"top","##value":[1,2]})"},
    {R"({"#name":"top","#value":5})", "top:5"},
    {R"({"x":1,"#attributes":{"k":"1","k":"2"},"#name":"top"})", "top@k=2(x:1)",
     R"({"#attributes":{"k":"2"},"#name":"top","x":1})"},
    // ---- types
    {R"([{"#type":"Char","#value":"A"},{"#type":"Char","#value":0}])",
     "Root@#json=list(?:'65 ?:'0)"},
    {R"({"#value":"AAH/","#type":"Binary"})", "Root:#0001FF",
     R"({"#type":"Binary","#value":"AAH/"})"},
    {R"({"#type":"Quad","#value":"1,2,3,4294967295"})", "Root:0x000000010000000200000003FFFFFFFF"},
    {R"({"#type":"Date","#value":"2026-11-24T18:35:56Z"})", "Root:2026-11-24 18:35:56"},
    {R"({"#type":"Long","#value":17})", "Root:17u"},
    {R"({"#type":"Boolean","#value":7})", "Root:yes"},
    {R"({"#type":"Double","#value":1})", "Root:1d", "1.0"},
    {R"({"a":{"b":[1,2]},"l":{"#type":"Link","#value":"/a[0]/b[1]"},)"
     R"("n":{"#type":"Link","#value":null},"t":{"#type":"Link","#value":"/"}})",
     "Root(a(b:1 b:2) l->/a[0]/b[1] n->nothing t->/)"},
    // ---- what only looks like it: members like any other
    {R"({"#type":"Widget","#value":1})", "Root(#type:'Widget' #value:1)",
     R"({"##type":"Widget","##value":1})"},
    {R"({"#type":"Date","x":1,"#value":2})", "Root(#type:'Date' #value:2 x:1)",
     R"({"##type":"Date","##value":2,"x":1})"},
    {R"({"#value":1.5,"x":[]})", "Root(#value:1.5d x@#json=list)", R"({"##value":1.5,"x":[]})"},
    {R"({"#type":"Date"})", "Root(#type:'Date')", R"({"##type":"Date"})"},
    {R"({"#type":7,"#name":8})", "Root(#name:8 #type:7)", R"({"##name":8,"##type":7})"},
    {R"({"a":{"#name":"b"}})", "Root(a(#name:'b'))", R"({"a":{"##name":"b"}})"},
    {R"({"#attributes":{}})", "Root(#attributes@#json=object)", R"({"##attributes":{}})"},
    {R"({"#attributes":{"a":"1","b":2,"#value":{}}})",
     "Root(#attributes(#value@#json=object a:'1' b:2))",
     R"({"##attributes":{"##value":{},"a":"1","b":2}})"},
    {R"({"#attributes":{"a":"1","b":[]},"#value":3})",
     "Root(#attributes(a:'1' b@#json=list) #value:3)",
     R"({"##attributes":{"a":"1","b":[]},"##value":3})"},
    {R"({"#attributes":{"##type":"1","###name":"2","n":3}})",
     "Root(#attributes(##name:'2' #type:'1' n:3))",
     R"({"##attributes":{"###name":"2","##type":"1","n":3}})"},
    {R"({"#attributes":{"":"1"}})", "Root(#attributes(?:'1'))", R"({"##attributes":{"":"1"}})"},
    {R"({"#attributes":[],"#value":{"a":1}})", "Root(#attributes@#json=list #value(a:1))",
     R"({"##attributes":[],"##value":{"a":1}})"},
    // ---- marks that brackets cannot tell
    {R"({"a":{"#attributes":{"#json":"list"},"":[1,2]}})", "Root(a@#json=list(?:1 ?:2))"},
    {R"({"a":{"#attributes":{"#json":"what"},"#value":1}})", "Root(a@#json=what:1)"},
    {R"({"#attributes":{"#json":"list"},"#name":"top","":[1,2]})", "top@#json=list(?:1 ?:2)"},
};

TEST(Json, Documents) {
    for (const Document& o : DOCUMENTS) {
        const Data oTree = FromJson(o.sIn);
        EXPECT_EQ(Show(oTree), o.sTree) << o.sIn;
        EXPECT_EQ(JsonOf(oTree), *o.sOut != 0 ? o.sOut : o.sIn);
        EXPECT_TRUE(ComesBack(oTree)) << o.sIn;
    }
}

// Numbers: what is read, its type, what is written, and whether digits were lost.
TEST(Json, Numbers) {
    struct Row {
        std::string sIn;
        Data_Node::Type eType;
        std::string sOut;
        bool bRounded = false;
    };
    const std::string sTenth = "0.1000000000000000055511151231257827021181583404541015625";
    const Row aRows[] = {
        {"0", Data_Node::Integer, "0"},
        {"2147483647", Data_Node::Integer, "2147483647"},
        {"2147483648", Data_Node::Long, "2147483648"},
        {"-2147483648", Data_Node::Integer, "-2147483648"},
        {"-2147483649", Data_Node::Double, "-2147483649.0"},
        {"18446744073709551615", Data_Node::Long, "18446744073709551615"},
        {"18446744073709551616", Data_Node::Double, "18446744073709551616.0"},
        {"18446744073709551617", Data_Node::Double, "18446744073709551616.0", true},
        {"-9007199254740993", Data_Node::Double, "-9007199254740992.0", true},
        {"123456789012345678901234567890", Data_Node::Double, "1.2345678901234568e+29", true},
        {"-0", Data_Node::Double, "-0.0"},
        {"-0.0", Data_Node::Double, "-0.0"},
        {"1.0", Data_Node::Double, "1.0"},
        {"1E2", Data_Node::Double, "100.0"},
        {"0.1", Data_Node::Double, "0.1"},
        {"0.10000000000000001", Data_Node::Double, "0.1"},
        {sTenth, Data_Node::Double, "0.1"},
        {sTenth + "1", Data_Node::Double, "0.1", true},
        {sTenth + Repeat("0", 2000), Data_Node::Double, "0.1"},
        {"0.1" + Repeat("0", 2000) + "1", Data_Node::Double, "0.1", true},
        {"3.14159265358979323846", Data_Node::Double, "3.141592653589793", true},
        {"5e-324", Data_Node::Double, "5e-324"},
        {"1e-400", Data_Node::Double, "0.0", true},
        {"-1e-400", Data_Node::Double, "-0.0", true},
        {"0e-400", Data_Node::Double, "0.0"},
        {"1.7976931348623157e308", Data_Node::Double, "1.7976931348623157e+308"},
        {Repeat("9", 300), Data_Node::Double, "1e+300", true},
    };
    for (const Row& o : aRows) {
        Data oTree;
        Load_Report oReport;
        Json_LoadString(oTree, o.sIn, {}, &oReport);
        EXPECT_EQ(oTree.GetType(), o.eType) << o.sIn;
        EXPECT_EQ(JsonOf(oTree), o.sOut) << o.sIn;
        EXPECT_EQ(oReport.m_uRounded, o.bRounded) << o.sIn;
    }
}

// The values that plain JSON does not have, bit by bit.
TEST(Json, Values) {
    struct Row {
        Data_Node::Type eType;
        u3_t uBits;
        const char* sJson;
    };
    const auto oBits = [](double d) { return std::bit_cast<u3_t>(d); };
    const Row aRows[] = {
        {Data_Node::Boolean, 2, R"({"#type":"Boolean","#value":2})"},
        {Data_Node::Boolean, 0xFFFFFFFF, R"({"#type":"Boolean","#value":-1})"},
        {Data_Node::Char, 0x1F600, "{\"#type\":\"Char\",\"#value\":\"\xF0\x9F\x98\x80\"}"},
        {Data_Node::Char, 0xD800, R"({"#type":"Char","#value":55296})"},
        {Data_Node::Char, 0xFFFFFFFF, R"({"#type":"Char","#value":4294967295})"},
        {Data_Node::Char, '"', R"({"#type":"Char","#value":"\""})"},
        {Data_Node::Float, oBits(0.1), R"({"#type":"Float","#value":0.1})"},
        {Data_Node::Double, 0x7FF8000000000000, R"({"#type":"Double","#value":"NaN"})"},
        {Data_Node::Double, 0x7FF8000000000001,
         R"({"#type":"Double","#value":"0x7FF8000000000001"})"},
        {Data_Node::Float, 0xFFF4000000000000,
         R"({"#type":"Float","#value":"0xFFF4000000000000"})"},
        {Data_Node::Double, oBits(HUGE_VAL), R"({"#type":"Double","#value":"INF"})"},
        {Data_Node::Date, oBits(-HUGE_VAL), R"({"#type":"Date","#value":"-INF"})"},
        {Data_Node::Date, oBits(0.0), R"({"#type":"Date","#value":"1970-01-01T00:00:00Z"})"},
        {Data_Node::Date, oBits(-0.0), R"({"#type":"Date","#value":-0.0})"},
        {Data_Node::Date, oBits(1.5), R"({"#type":"Date","#value":1.5})"},
        {Data_Node::Date, oBits(1e300), R"({"#type":"Date","#value":1e+300})"},
        {Data_Node::Long, 0x7FFFFFFF, R"({"#type":"Long","#value":2147483647})"},
        {Data_Node::Long, 0x80000000, "2147483648"},
    };
    for (const Row& o : aRows) {
        Data oTree = NewTree();
        const double d = std::bit_cast<double>(o.uBits);
        switch (o.eType) {
            case Data_Node::Boolean:
            case Data_Node::Char: oTree.SetValInt(static_cast<i2_t>(o.uBits), o.eType); break;
            case Data_Node::Long: oTree.SetValLng(o.uBits); break;
            default: oTree.SetValDbl(d, o.eType);
        }
        EXPECT_EQ(JsonOf(oTree), o.sJson);
        EXPECT_TRUE(ComesBack(oTree)) << o.sJson;
    }
    // Texts that doubles have in this library's and in RapidJSON's hands.
    std::mt19937_64 oRandom(7);
    for (int i = 0; i < 20000; ++i) {
        const double d = std::bit_cast<double>(oRandom());
        Data oTree = NewTree();
        oTree.SetValDbl(i % 3 != 0 || !std::isfinite(d) ? d : std::trunc(std::fmod(d, 1e25)));
        ASSERT_TRUE(Data::Equal(oTree, FromJson(JsonOf(oTree)))) << JsonOf(oTree);
    }
}

TEST(Json, Lines) {
    const Data oTree = FromJson(R"({"a":[1,{"b":[]}],"c":{},"#attributes":{"k":"v"}})");
    EXPECT_EQ(JsonOf(oTree, Json_Layout::Lines),
              "{\n  \"#attributes\": {\n    \"k\": \"v\"\n  },\n  \"a\": [\n    1,\n    {\n"
              "      \"b\": []\n    }\n  ],\n  \"c\": {}\n}");
    Str oText;
    Json_SaveString(FromJson("[1]"), oText, Json_Layout::Lines);
    EXPECT_EQ(oText.View(), "[\n  1\n]\n");
}

// Every document in docs/json.md comes out as it goes in.
TEST(Json, Manual) {
    const std::string sManual = OnDisk(VOK_DOCS "/json.md");
    int iDocuments = 0;
    for (std::size_t u = 0; (u = sManual.find("\n```json\n", u)) != std::string::npos;
         ++iDocuments) {
        u += 9;
        const std::string sJson = sManual.substr(u, sManual.find("\n```\n", u) - u);
        EXPECT_EQ(JsonOf(FromJson(sJson), Json_Layout::Lines), sJson);
    }
    EXPECT_GE(iDocuments, 4);
}

TEST(Json, RemovedAndOutside) {
    Data oRoot = NewTree();
    Data oFirst = oRoot.CreateNewSucc("a");
    oRoot.CreateNode("/a[3]").SetValInt(7);
    Data oPart = oRoot.CreateNewSucc("b");
    oPart.CreateNewSucc("to a").SetValLink(oRoot.GetNthSucc("a", 3));
    oPart.CreateNewSucc("to b").SetValLink(oPart);
    oRoot.CreateNewSucc("gone").SetValLink(oFirst);
    oFirst.Remove();
    Data oEmpty = oRoot.CreateNewSucc("c");
    oEmpty.CreateNewSucc("d").Remove();
    EXPECT_EQ(JsonOf(oRoot), R"({"a":7,"b":{"to a":{"#type":"Link","#value":"/a[0]"},)"
                             R"("to b":{"#type":"Link","#value":"/b[0]"}},"c":null,)"
                             R"("gone":{"#type":"Link","#value":null}})");
    EXPECT_TRUE(ComesBack(oRoot));
    // A part of it: where its top is, is "/"; its name is kept.
    EXPECT_EQ(JsonOf(oPart), R"({"#name":"b","to a":{"#type":"Link","#value":null},)"
                             R"("to b":{"#type":"Link","#value":"/"}})");
    EXPECT_EQ(Failing([&] { (void)JsonOf(oFirst); }), "try to access deleted node");
    EXPECT_EQ(Failing([&] { (void)JsonOf(Data()); }), "node is empty");
}

// What is refused, and where: byte, line, column, path.
TEST(Json, Faults) {
    struct Row {
        std::string sIn;
        const char* sMessage;
        const char* sPlace;
    };
    const Row aRows[] = {
        {"", "invalid JSON: a value expected", "0 1:1 /"},
        {" \n ", "invalid JSON: a value expected", "3 2:2 /"},
        {"nul", "invalid JSON: a value expected", "3 1:4 /"},
        {"{\"a\":\n tru}", "invalid JSON: a value expected", "10 2:5 /"},
        {"[1,]", "invalid JSON: a value expected", "3 1:4 /"},
        {"[1 2]", "invalid JSON: \",\" or \"]\" expected behind an item", "3 1:4 /"},
        {"[1", "invalid JSON: \",\" or \"]\" expected behind an item", "2 1:3 /"},
        {"{\"a\":{\"b\":1,}}", "invalid JSON: the name of a member expected", "12 1:13 /a[0]"},
        {"{\"a\" 1}", "invalid JSON: \":\" expected behind the name of a member", "5 1:6 /"},
        {"{\"a\":1", "invalid JSON: \",\" or \"}\" expected behind a member", "6 1:7 /"},
        {"{'a':1}", "invalid JSON: the name of a member expected", "1 1:2 /"},
        {"{\"\xC3\xA4\":\"x", "invalid JSON: a text does not end", "8 1:8 /"},
        {"[\"a\nb\"]", "invalid JSON: an unknown escape or a control character in a text",
         "3 1:4 /"},
        {"[\"\\x\"]", "invalid JSON: an unknown escape or a control character in a text",
         "2 1:3 /"},
        {"[\"\\u12G4\"]", "invalid JSON: four hexadecimal digits expected behind \"\\u\"",
         "2 1:3 /"},
        {"[\"\\uD83Dx\"]", "invalid JSON: half of a surrogate pair", "2 1:3 /"},
        {"[\"\\uDE00\"]", "invalid JSON: half of a surrogate pair", "9 1:10 /"},
        {"[\"\xFF\"]", "invalid JSON: a text is not UTF-8", "2 1:3 /"},
        {"[\"\xED\xA0\x80\"]", "invalid JSON: a text is not UTF-8", "2 1:3 /"},
        {"{\"\xC0\x80\":1}", "invalid JSON: a text is not UTF-8", "2 1:3 /"},
        {"{\"a\\u0000\":1}", "JSON name with a NUL", "10 1:11 /"},
        {"[1e400]", "invalid JSON: a number is too large", "1 1:2 /"},
        {"[-" + Repeat("9", 400) + "]", "invalid JSON: a number is too large", "1 1:2 /"},
        {"[1.]", "invalid JSON: a digit expected behind the decimal point", "3 1:4 /"},
        {"[1e+]", "invalid JSON: a digit expected in an exponent", "4 1:5 /"},
        {"[01]", "invalid JSON: \",\" or \"]\" expected behind an item", "2 1:3 /"},
        {"[NaN]", "invalid JSON: a value expected", "1 1:2 /"},
        {"{\"a\":1 /**/}", "invalid JSON: \",\" or \"}\" expected behind a member", "7 1:8 /"},
        {"{\"d\":{\"#type\":\"Date\",\"#value\":\"yesterday\"}}",
         "invalid JSON value for type \"Date\": \"yesterday\"", "41 1:42 /d[0]"},
        {"{\"#type\":\"Link\",\"#value\":\"a\"}", "invalid JSON value for type \"Link\": \"a\"",
         "28 1:29 /"},
        {"{\"a\":{\"#type\":\"Link\",\"#value\":\"/b[0]\"},\"c\":1}",
         "JSON link to nothing: \"/b[0]\"", "37 0:0 /a[0]"},
        {"\xFF\xFE\0\0["s, "unknown character coding: \"UTF-32\"", "0 0:0 "},
    };
    for (const Row& o : aRows) {
        for (const bool bMemory : {true, false}) {
            Data oTree;
            Load_Report oReport;
            File_Buf oBuf(o.sIn.data(), o.sIn.size());
            Drop_Stream oStream(o.sIn);
            File_Stream& oIn = bMemory ? static_cast<File_Stream&>(oBuf) : oStream;
            EXPECT_EQ(Failing([&] { Json_Load(oTree, oIn, {}, &oReport); }), o.sMessage) << o.sIn;
            EXPECT_EQ(PlaceOf(oReport), o.sPlace) << o.sIn;
            EXPECT_EQ(Fault(oTree), "");
        }
    }
    // In German as well, and with the way that it took.
    const Msg_Capture oCapture;
    Msg::SetLanguageIndex(Msg::GERMAN);
    const auto oLoad = [] {
        Data oTree;
        Json_LoadString(oTree, "[1 2]");
    };
    EXPECT_EQ(Failing(oLoad), "ungültiges JSON: \",\" oder \"]\" wird nach einem Eintrag erwartet");
    EXPECT_EQ(Trail(oLoad), "vok::Json_Load\nvok::Json_LoadString\n");
}

TEST(Json, TypedFaults) {
    for (const auto& [sType, sValue] : {Pair{"Integer", "\"1\""},
                                        {"Integer", "1.5"},
                                        {"Integer", "2147483648"},
                                        {"Integer", "-2147483649"},
                                        {"Integer", "true"},
                                        {"Boolean", "\"x\""},
                                        {"Char", "\"ab\""},
                                        {"Char", "\"\""},
                                        {"Char", "null"},
                                        {"Float", "\"1\""},
                                        {"Double", "true"},
                                        {"Double", "\"0x\""},
                                        {"Double", "\"0x1G\""},
                                        {"Double", "\"0x11111111111111111\""},
                                        {"Date", "null"},
                                        {"Long", "-1"},
                                        {"Long", "18446744073709551616"},
                                        {"Binary", "\"A\""},
                                        {"Binary", "\"*\""},
                                        {"Binary", "1"},
                                        {"Quad", "\"1,2,3\""},
                                        {"Quad", "\"1,2,3,4,5\""},
                                        {"Quad", "\"1,2,3,4294967296\""},
                                        {"String", "1"},
                                        {"Link", "1"}}) {
        const std::string sJson = "{\"#type\":\"" + sType + "\",\"#value\":" + sValue + "}";
        EXPECT_TRUE(Has(Failing([&] { (void)FromJson(sJson); }),
                        "invalid JSON value for type \"" + sType + "\""))
            << sJson;
    }
    for (const char* sPath : {"/a", "/a[]", "/a[-1]", "/a[0]x", "/a[0", "//a[0]", "/a[1]",
                              "/a[0]/b[0]", "/a[4294967296]", "/]["}) {
        const std::string sJson = R"({"a":0,"l":{"#type":"Link","#value":")"s + sPath + "\"}}";
        EXPECT_TRUE(Has(Failing([&] { (void)FromJson(sJson); }), "JSON link to nothing")) << sPath;
    }
}

// Names in the paths of links are any names.
TEST(Json, LinksToOddNames) {
    Data oRoot = NewTree();
    for (const char* sName : {"", "a/b", "[0]", "\b47;", "\xC3\xA4 \"x\"", "#value", "."}) {
        Data oTarget = oRoot.CreateNewSucc(sName).CreateNewSucc(sName);
        oRoot.CreateNewSucc("link").SetValLink(oTarget);
    }
    EXPECT_TRUE(ComesBack(oRoot)) << JsonOf(oRoot);
}

TEST(Json, WhatStandsBehind) {
    const std::string sText = "{\"a\":1} \n [2] 3 \n";
    File_Buf oBuf(sText.data(), sText.size());
    for (const Pair& o : {Pair{"Root(a:1)", "7"}, {"Root@#json=list(?:2)", "3"}, {"Root:3", "0"}}) {
        Data oTree;
        Load_Report oReport;
        Json_Load(oTree, oBuf, {}, &oReport);
        EXPECT_EQ(Show(oTree), o.first);
        EXPECT_EQ(std::to_string(oReport.m_uBytesLeft), o.second);
    }
}

TEST(Json, Codings) {
    const std::string sText = "{\"a\":\"x\"}";
    for (const bool bBig : {false, true}) {
        std::string s = bBig ? "\xFE\xFF" : "\xFF\xFE";
        for (const char c : sText) (s += bBig ? '\0' : c) += bBig ? c : '\0';
        EXPECT_TRUE(Json_CanLoad(s));
        EXPECT_EQ(JsonOf(FromJson(s)), sText);
    }
    for (const char* s : {"{", " \n[1", "\xEF\xBB\xBF\t{"}) EXPECT_TRUE(Json_CanLoad(s)) << s;
    for (const char* s : {"", "  ", "<a/>", "1", "\"{\"", "\xEF\xBB\xBF"})
        EXPECT_FALSE(Json_CanLoad(s)) << s;
}

TEST(Json, Limits) {
    const auto oLoad = [](const std::string& sJson, const Limit& oLimit, u3_t uMost) {
        return Failing([&] {
            Data oTree;
            Json_LoadString(oTree, sJson, AtMost(oLimit, uMost));
        });
    };
    const struct {
        std::string sJson;
        const Limit& oLimit;
        u3_t uMost;  // that it needs
    } aRows[] = {
        {"[1,2,{\"a\":[]}]", LIMIT_NODES, 5},
        {"[" + Repeat("0,", 9999) + "0]", LIMIT_NODES, 10001},
        {"[[1],{\"a\":[{}]}]", LIMIT_DEPTH, 3},
        {"[\"abc\"]", LIMIT_TEXT_BYTES, 3},
        {"{\"abcd\":1}", LIMIT_TEXT_BYTES, 4},
        {"{\"#attributes\":{\"a\":\"\",\"b\":\"\"}}", LIMIT_ATTRIBUTES, 2},
        {R"({"#attributes":{"a":""},"b":{"#attributes":{"c":""}},"#attributes":{"d":""}})",
         LIMIT_ATTRIBUTES, 2},
    };
    for (const auto& o : aRows) {
        EXPECT_EQ(oLoad(o.sJson, o.oLimit, o.uMost), "");
        EXPECT_EQ(oLoad(o.sJson, o.oLimit, o.uMost - 1), Exceeded(o.oLimit, o.uMost - 1));
    }
    // A text that is too long is not held first.
    const Mem_Probe oProbe;
    const std::string sLong = '"' + std::string(100 << 20, 'x') + '"';
    EXPECT_EQ(oLoad(sLong, LIMIT_TEXT_BYTES, 1000), Exceeded(LIMIT_TEXT_BYTES, 1000));
    EXPECT_LT(Mem_Probe::Peak(), sLong.size());
    // Where little was inflated to much.
    Limits oLimits;
    oLimits.m_uInputBytes = 1000;
    Data oTree;
    const std::string sMuch = "[" + Repeat("[],", 4 << 20) + "0]";
    EXPECT_TRUE(Has(Failing([&] { Json_LoadString(oTree, sMuch, oLimits); }), "memory"));
    EXPECT_LT(oTree.GetNodes(), 2u << 20);
}

}  // namespace
}  // namespace vok
