// SPDX-License-Identifier: MIT
// Trees from XML and to XML.
#include <bit>
#include <cmath>
#include <limits>

#include "tests/support.h"
#include "vok/base/utf8.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"

namespace vok {
namespace {

using namespace std::string_literals;

constexpr char TOP[] =
    "<?xml version='1.0' encoding='UTF-8'?>\n<R xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"";

Data Loaded(std::string_view sText, u2_t uFlags = 0) {
    Data oTree;
    oTree.LoadFromXMLString(sText, uFlags);
    return oTree;
}
std::string Saved(const Data& oTree, i2_t iDeclaration = 1, i2_t iDepth = 0) {
    Str oText;
    oTree.SaveToXMLString(oText, iDeclaration, iDepth);
    return oText.CStr();
}
// So many blanks behind a document let the loader take its fast way up to there.
const std::string PADDING(99, ' ');

// What "<R>sText</R>" is saved as, without the top element.
std::string Trip(const std::string& sText, u2_t uFlags = 0) {
    const std::string sSaved = Saved(Loaded("<R>" + sText + "</R>" + PADDING, uFlags));
    const std::string sStart = TOP + ">"s;
    if (!sSaved.starts_with(sStart)) return sSaved;
    std::string sBody = sSaved.substr(sStart.size(), sSaved.rfind("</R>") - sStart.size());
    std::erase_if(sBody, [](char c) { return c == '\n' || c == '\t'; });
    return sBody;
}
std::string Error(std::string_view sText, u2_t uFlags = 0) {
    return Failing([&] { Loaded(sText, uFlags); });
}

// The same for a stream that gives so many bytes at a time, or memory where uMost is 0.
std::string ErrorFrom(std::size_t uMost, std::string_view sText, Data& oTree,
                      Load_Report* pReport = nullptr, const Limits& oLimits = {}) {
    Drop_Stream oStream(sText, uMost);
    File_Buf oBuf(sText.data(), sText.size());
    File_Stream& oIn = uMost == 0 ? static_cast<File_Stream&>(oBuf) : oStream;
    return Failing([&] { oTree.LoadFromXML(oIn, 0, oLimits, pReport); });
}

TEST(Xml, ValuesOfEveryType) {
    const Pair aoCases[] = {
        // Elements without a type: texts, empty ones, trees.
        {"<a>x</a>", "<a><![CDATA[x]]></a>"},
        {"<a/>", "<a/>"},
        {"<a></a>", "<a/>"},
        {"<a><![CDATA[]]></a>", "<a><![CDATA[]]></a>"},
        {"<a> </a>", "<a><![CDATA[ ]]></a>"},
        {"<a>x<!-- y -->z<?p?><![CDATA[<&]]>!</a>", "<a><![CDATA[xz<&!]]></a>"},
        {"<a>&lt;&amp;&gt;&quot;&apos;&#228;&#xE4;&nbsp;</a>",
         "<a><![CDATA[<&>\"'ää\xC2\xA0]]></a>"},
        {"<a><![CDATA[x]]]]><![CDATA[>y]]]]></a>", "<a><![CDATA[x]]]]><![CDATA[>y]]]]></a>"},
        {"<b/><a/><b>1</b>", "<a/><b/><b><![CDATA[1]]></b>"},
        {"<a>\n <b/>text behind\n</a>", "<a><b/></a>"},
        // Types by another name, without a text, and those that change their form.
        {"<a dt:type=\"i4\"> -7x</a>", "<a dt:dt=\"i4\">-7</a>"},
        {"<a dt:dt='i4'/>", "<a dt:dt=\"i4\">0</a>"},
        {"<a dt:dt=\"bool\">0x7</a>", "<a dt:dt=\"boolean\">1</a>"},
        {"<a dt:dt=\"char\"/>", "<a dt:dt=\"char\"></a>"},
        {"<a dt:dt=\"dateTime.tz\">2026-11-24</a>",  // of a zone that is an hour east
         "<a dt:dt=\"dateTime\">2026-11-24T01:00:00</a>"},
        {"<a dt:dt=\"bin.base64\"/>", "<a dt:dt=\"bin.base64\"><![CDATA[]]></a>"},
        // A type nobody knows is an attribute like any other.
        {"<a dt:dt=\"uuid\">x</a>", "<a _x0064_t:dt=\"uuid\"><![CDATA[x]]></a>"},
        // Attributes, of which the last one of a name counts.
        {"<a b='1\r\n2\r3\t\n4&#13;&#10;5' c=\"'\"/>", "<a b=\"1 2 3  4&#13;&#10;5\" c=\"'\"/>"},
        {"<a b='1' c='2' b='3'/>", "<a b=\"3\" c=\"2\"/>"},
    };
    for (const auto& [sIn, sOut] : aoCases) {
        EXPECT_EQ(Trip(sIn), sOut) << sIn;
        EXPECT_EQ(Trip(sOut), sOut) << sOut;
    }
    // The texts of a type, as they are read and written.
    const struct {
        const char* sType;
        std::vector<std::pair<const char*, const char*>> oTexts;
    } aoTyped[] = {
        // clang-format off
        {"i4", {{"0x10", "16"}, {"010", "8"}, {"123456789", "123456789"}, {"x", "0"},
                {"-2147483648", "-2147483648"}, {"99999999999999999999", "2147483647"}}},
        {"i8", {{"-1", "18446744073709551615"}, {"9223372036854775807", "9223372036854775807"}}},
        {"boolean", {{"1", "1"}, {"true", "0"}}},
        {"char", {{"&#228;x", "ä"}, {"&lt;", "&lt;"}}},
        {"quad", {{"1,-2,4294967295", "1,-2,-1,0"}}},
        {"r8", {{"1.5e3", "1500"}, {" +.1 ", "0.1"}, {"0x1p-2", "0.25"}, {"1e999", "INF"},
                {"-1e-999", "-0"}, {"--1", "0"}, {"-INF", "-INF"}, {"NaN", "NaN"}}},
        {"r4", {{"0.5", "0.5"}}},
        {"dateTime", {{"2026-11-24T18:35:56", "2026-11-24T18:35:56"},
                      {" 1969-12-31T23:59:59.5Z ", "1969-12-31T23:59:59"},
                      {"2026-11-24T18:35:56-05:30", "2026-11-25T00:05:56"}}},
        {"bin.base64", {{"<![CDATA[AAEC\n/w==]]>", "<![CDATA[AAEC/w==]]>"}}},
        // clang-format on
    };
    for (const auto& [sType, oTexts] : aoTyped) {
        const std::string sStart = "<a dt:dt=\""s + sType + "\">";
        for (const auto& [sIn, sOut] : oTexts) {
            EXPECT_EQ(Trip(sStart + sIn + "</a>"), sStart + sOut + "</a>");
            EXPECT_EQ(Trip(sStart + sOut + "</a>"), sStart + sOut + "</a>");
        }
    }
    const Data oDate = Loaded("<a dt:dt='dateTime'>1970-01-02T00:00:00.25+00:00</a>");
    EXPECT_EQ(oDate.GetValDbl(Data_Node::Date), 86400.25);
}

TEST(Xml, FlagsOfTheLoader) {
    struct {
        u2_t uFlags;
        const char* sIn;
        const char* sOut;
    } const aoCases[] = {
        {Data::XML_KEEP_UNKNOWN, "<a>&x; & &#0; &#xD800; &</a>",
         "<a><![CDATA[&x; & &#0; &#xD800; &]]></a>"},
        {Data::XML_SKIP_BLANKS, "<a> \n</a><a><![CDATA[ ]]></a><a> x</a>",
         "<a/><a/><a><![CDATA[ x]]></a>"},
        {Data::XML_SKIP_HTML, "<a> <br><meta x='>'>1<br/>2</br>3<meta charset=utf-8 it's/ \"></a>",
         "<a><![CDATA[ 123]]></a>"},
        {Data::XML_SKIP_HTML, "<_x0062_r> <?p?></br></_x0062_r>", "<br><![CDATA[ ]]></br>"},
        {Data::XML_LOOSE_TAGS, "<a b c=1 d='2'/>", "<a b=\"\" c=\"1\" d=\"2\"/>"},
    };
    for (const auto& o : aoCases) EXPECT_EQ(Trip(o.sIn, o.uFlags), o.sOut) << o.sIn;
    EXPECT_EQ(Error("<a>&x;</a>"), "unknown xml sequene \"&x;\"");
    EXPECT_EQ(Error("<a b='&'/>"), "unknown xml sequene \"&\"");
}

// An element with all that the loader has a fast and a slow way for; sBlank goes into its tags.
std::string RandomElement(std::mt19937& oRandom, const char* sBlank) {
    static const char* const NAMES[] = {"a", "b.c", "br", "_x0062_r", "\xC3\xA4", "_x0041_"};
    static const char* const TYPES[] = {"", " dt:dt=\"i4\"", " dt:dt=\"r8\"", " dt:dt=\"boolean\"",
                                        " dt:dt=\"bin.base64\""};
    // clang-format off
    static const char* const TEXTS[] = {
        "", " ", "\n\t", "x", "]", "&lt;", "\xFF", "0", "-17", "010", "2147483647", "2147483648",
        "-2147483648", "-2147483649", "9999999999", "12345678901", "1.5e3", "1e999", "NaN", "<?p?>",
        "<!---->", "<br>", "<meta/>", "<![CDATA[ ]]>", "<![CDATA[]]>", "<![CDATA[a]]b]]>",
        "<![CDATA[AAEC\n/w==]]>", "<![CDATA[A]]>", "<![CDATA[>]]>", "<b x='1'/>"};
    // clang-format on
    const auto oOne = [&](const auto& as) -> std::string {
        return as[RandomBelow(oRandom, std::size(as))];
    };
    const std::string sName = oOne(NAMES);
    std::string s = '<' + sName + oOne(TYPES) + sBlank + '>';
    for (u2_t u = RandomBelow(oRandom, 4); u != 0; --u) {
        s += RandomBelow(oRandom, 2) != 0 ? oOne(TEXTS) : RandomElement(oRandom, sBlank);
    }
    return s + "</" + sName + sBlank + '>';
}

TEST(Xml, TheFastWayGivesTheSame) {
    unsigned uGood = 0;
    for (u2_t uSeed = 0; uSeed < 5000; ++uSeed) {
        const auto oOutcome = [&](const char* sBlank, const std::string& sBehind) {
            std::mt19937 oRandom(uSeed);
            const std::string sText = "<R>" + RandomElement(oRandom, sBlank) + "</R>" + sBehind;
            const std::string sError = Error(sText, uSeed % 16);
            return sError.empty() ? Saved(Loaded(sText, uSeed % 16)) : sError;
        };
        const std::string sFast = oOutcome("", PADDING);
        EXPECT_EQ(oOutcome("", ""), sFast) << uSeed;
        EXPECT_EQ(oOutcome(" ", ""), sFast) << uSeed;
        uGood += sFast.ends_with("</R>\n");
    }
    EXPECT_GT(uGood, 1500u);
}

TEST(Xml, TokensWithoutATree) {
    const std::string sText = "<a> & \"'\xC2\xA0\xC2\xA1\n";
    File_Buf oBuf("w+");
    File::WriteXML(oBuf, sText);
    EXPECT_EQ(Content(oBuf), "&lt;a&gt; &amp; &quot;&apos;&#160;\xC2\xA1&#10;");
    oBuf.Write("<t>");
    oBuf.Seek(0);
    Str oToken;
    EXPECT_TRUE(File::ReadXML(oBuf, oToken, '<'));
    EXPECT_EQ(oToken.CStr(), sText);
    // Tags are split as the loader does it.
    for (const char* s : {"t", "t b = '1\r\n2\r3\t\n&#10;&lt;' _x0041_=\">'\"", "t b=c d"}) {
        std::vector<File::XML_Attribute> oSplit;
        File::SplitXMLToken(s, oToken, oSplit, Data::XML_LOOSE_TAGS);
        Texts asSplit;
        for (const auto& o : oSplit) asSplit.push_back(o.m_oName.CStr() + "="s + o.m_oValue.CStr());
        const Data oTree = Loaded('<' + std::string(s) + " />", Data::XML_LOOSE_TAGS);
        EXPECT_EQ(asSplit, AttributesOf(oTree)) << s;
    }
}

TEST(Xml, NamesAndAttributesSurvive) {
    const char* const asNames[] = {"a b",         "1",       "-",        "a/b",
                                   "ä:ö",         "_x0041_", "_x0041",   "x_x0041_",
                                   "_x0041 ",     "_x12",    "\x01",     "\xF0\x9F\x98\x80",
                                   "dt:dt",       "dt:x",    "xmlns:dt", "CDNodeID",
                                   "CDNodeIDREF", "CDNodeX", "br",       "xml"};
    Data oTree = NewTree();
    oTree.SetRootName("R");
    for (const char* s : asNames) oTree.CreateNewSucc(s).SetAttVal(s, "1 < \"2\"\t'\n\r& \x01");
    oTree.CreateNewSucc("").SetValStr("no name");
    EXPECT_TRUE(Data::Equal(Loaded(Saved(oTree)), oTree)) << Saved(oTree);
}

// XML 1.0, fifth edition, productions 4 and 4a, at the ends of their ranges.
TEST(Xml, CharactersOfNames) {
    constexpr u2_t START[] = {0x5F,   0xC0,   0xD6,    0xD8,   0xF6,   0xF8,   0x2FF,
                              0x370,  0x37D,  0x37F,   0x1FFF, 0x200C, 0x200D, 0x2070,
                              0x218F, 0x2C00, 0x2FEF,  0x3001, 0xD7FF, 0xF900, 0xFDCF,
                              0xFDF0, 0xFFFD, 0x10000, 0xEFFFF};
    constexpr u2_t MORE[] = {0x2D, 0x2E, 0x39, 0xB7, 0x300, 0x36F, 0x203F, 0x2040};
    constexpr u2_t NONE[] = {0x2C,   0x2F,   0x40,   0x60,   0xB6,   0xB8,   0xBF,
                             0xD7,   0xF7,   0x37E,  0x2000, 0x200B, 0x200E, 0x203E,
                             0x2041, 0x206F, 0x2190, 0x2BFF, 0x2FF0, 0x3000, 0xE000,
                             0xF8FF, 0xFDD0, 0xFDEF, 0xFFFE, 0xFFFF, 0xF0000};
    const auto oKept = [](u2_t uCode, const char* sBefore) {
        char s[4];
        const std::string sName = sBefore + std::string(s, EncodeUtf8(uCode, s));
        Data oTree = NewTree();
        oTree.CreateNewSucc(sName);
        const std::string sSaved = Saved(oTree, 0);
        EXPECT_TRUE(Data::Equal(oTree, Loaded(sSaved))) << uCode;
        return sSaved.find("<" + sName + "/>") != std::string::npos;
    };
    for (const u2_t u : START) EXPECT_TRUE(oKept(u, "") && oKept(u, "a")) << u;
    for (const u2_t u : MORE) EXPECT_TRUE(!oKept(u, "") && oKept(u, "a")) << u;
    for (const u2_t u : NONE) EXPECT_TRUE(!oKept(u, "") && !oKept(u, "a")) << u;
}

TEST(Xml, LinksAreNumbers) {
    const Data oTree = Loaded(
        "<R CDNodeID='ID9'><a CDNodeIDREF='ID7' CDNodeRefType='x'/>"
        "<b CDNodeIDREF='ID9'/><c CDNodeIDREF='ID8'/><d CDNodeID='ID7'>1</d></R>");
    EXPECT_EQ(Show(oTree), "R(a->/d[0] b->/ c d:'1')");
    const std::string sSaved = Saved(oTree);
    EXPECT_EQ(sSaved, TOP +
                          " CDNodeID=\"ID1\">\n"
                          "\t<a CDNodeIDREF=\"ID2\" CDNodeRefType=\"link\"/>\n"
                          "\t<b CDNodeIDREF=\"ID1\" CDNodeRefType=\"link\"/>\n"
                          "\t<c/>\n"
                          "\t<d CDNodeID=\"ID2\"><![CDATA[1]]></d>\n</R>\n"s);
    EXPECT_EQ(Saved(Loaded(sSaved)), sSaved);
    // Numbers have 64 bits, a larger one is nobody's; of two targets the first counts.
    const Data oLarge = Loaded(
        "<R><a CDNodeIDREF='ID4294967298'/><b CDNodeIDREF='ID99999999999999999999'/>"
        "<c CDNodeID='ID2147483647'/><d CDNodeID='ID4294967298'/><e CDNodeID='ID4294967298'/>"
        "<f CDNodeID='ID88888888888888888888'/></R>");
    EXPECT_EQ(Show(oLarge), "R(a->/d[0] b c d e f)");
    // Out of a part of a tree, and to what is gone.
    Data oTarget = oTree.GetCheckedSucc("d");
    EXPECT_EQ(Saved(oTree.GetCheckedSucc("a"), 0, 2),
              "\t\t<a xmlns:dt=\"urn:schemas-microsoft-com:datatypes\" CDNodeIDREF=\"ID1\" "
              "CDNodeRefType=\"link\"/>\n");
    oTarget.Remove();
    EXPECT_EQ(Loaded(Saved(oTree)).GetCheckedSucc("a").GetType(), Data_Node::Empty);
    EXPECT_EQ(Raised([&] { Saved(oTarget); }), DELETED);
    EXPECT_EQ(Raised([] { Saved(Data()); }), "node is empty\n");
}

TEST(Xml, WhereADocumentGoes) {
    Data oTree = Loaded("<a/>");
    EXPECT_STREQ(oTree.GetName(), "a");
    // The root is empty still: the second document takes its place, the third goes below.
    oTree.SetAttVal("v", "old");
    EXPECT_EQ(oTree.LoadFromXMLString("<b v='new'><c/></b>", 0), 2u);
    oTree.SetToNode(1);
    EXPECT_EQ(oTree.LoadFromXMLString("<d><e/></d>", 0), 2u);
    EXPECT_EQ(oTree.GetId(), 0u);
    EXPECT_EQ(Saved(oTree, 0),
              "<b xmlns:dt=\"urn:schemas-microsoft-com:datatypes\" v=\"new\">\n\t<c>\n"
              "\t\t<d>\n\t\t\t<e/>\n\t\t</d>\n\t</c>\n</b>\n");
    EXPECT_EQ(Saved(NewTree(), 0), "<Root xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"/>\n");
}

TEST(Xml, CodingsOfTheInput) {
    const auto oWide = [](std::u16string_view s, bool bBig, bool bMark) {
        std::string sBytes;
        std::u16string sText = bMark ? u"\uFEFF" : u"";
        for (const char16_t c : sText.append(s)) {
            const char ac[2] = {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
            sBytes += ac[bBig];
            sBytes += ac[!bBig];
        }
        return sBytes;
    };
    const std::u16string sWide =
        u"<?xml version='1.0' encoding='UTF-16'?><a>\u00E4\u20AC\U0001F600</a>";
    const Pair aoCases[] = {
        {"\xEF\xBB\xBF<a>\xC3\xA4</a>", "ä"},
        {"<?xml version='1.0' encoding=\"utf-8\"?><a>\xC3\xA4</a>", "ä"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4\x80</a>", "ä\xC2\x80"},
        {"<?xml version='1.0' encoding='windows-1252'?><a>\xE4\x80</a>", "ä€"},
        {"<?xml version='1.0' encoding='US-ASCII'?><a>&#228;</a>", "ä"},
        {"<?xml version='1.0' encoding='ISO-8859-1'><a>\xE4</a><?p?>", "ä"},
        {"<?xml version='1.0'><a encoding='EBCDIC'>ä</a><?p?>", "ä"},
        {"<?xml-stylesheet encoding='EBCDIC'?><a>ä</a>", "ä"},
        {"<a>\xE4\xC3\xA4</a>", "ää"},  // not UTF-8: Latin-1 byte by byte
        {oWide(sWide, false, true), "ä€\U0001F600"},
        {oWide(sWide, true, true), "ä€\U0001F600"},
        {oWide(sWide, false, false), "ä€\U0001F600"},
        {oWide(sWide, true, false), "ä€\U0001F600"},
    };
    for (const auto& [sIn, sOut] : aoCases) {
        EXPECT_EQ(Loaded(sIn).GetValStr(), sOut) << sIn;
        Data oTree;
        EXPECT_EQ(ErrorFrom(1, sIn, oTree), "");
        EXPECT_EQ(oTree.GetValStr(), sOut) << sIn;
    }
    // The bytes in which windows-1252 is not ISO-8859-1.
    std::string sHigh;
    for (int i = 0x80; i < 0xA0; ++i) sHigh += static_cast<char>(i);
    EXPECT_STREQ(
        Loaded("<?xml version='1.0' encoding='windows-1252'?><a>" + sHigh + "</a>").GetValStr(),
        "€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ");
    EXPECT_EQ(Error("<?xml version='1.0' encoding='EBCDIC'?><a/>"),
              "unknown character coding: \"EBCDIC\"");
    EXPECT_EQ(Error("<?xml version='1.0' encoding='UTF-16'?><a/>"),
              "unknown character coding: \"UTF-16\"");
    EXPECT_EQ(Error("\xFF\xFE\0\0<\0\0\0"s), "unknown character coding: \"UTF-32\"");
}

TEST(Xml, WhatSurroundsTheElements) {
    const char* const asGood[] = {
        "<!DOCTYPE a [<!ENTITY b '>]>'><!-- ]> --><?p ]>?><!ELEMENT a (b)>]><a/>",
        "<!DOCTYPE a SYSTEM \"a>b\"><a/>",
        "<?xml version='1.0'?><!-- - -- --><?p > ?>\n<a \n/>\n<!----><?p?>\n",
        "anything<a></a \t>",
        "<?p x>\n<?p '<b>' ?>\n<a><?p x > ?></a><?p>",
        "<a/>text",  // the document ends with its top element
        "<a/></a>",
    };
    for (const char* s : asGood) EXPECT_EQ(Error(s), "") << s;
    const std::string sNone = "no XML stream or stream is corrupted";
    const auto oMissing = [](char c) { return "missing char '"s + c + "' in XML stream"; };
    const auto oInvalid = [](const char* s, char c) {
        return "invalid character '"s + s + "' after '" + c + "'";
    };
    const std::pair<std::string, Texts> aoBad[] = {
        {sNone,
         {"", "text", "</a>", "<a></b>", "<a><b></a></b>", "<a><!x></a>", "<![CDATA[]]>",
          "<a>\0</a>"s}},
        {oMissing('<'), {"<a>", "<a>x"}},
        {oMissing('>'), {"<?xml", "<!--x", "<a", "<a b='1'", "<a/", "<a / >", "<a><![CDATA[x]]"}},
        {oMissing('-'), {"<!--x>", "<!-x-->"}},
        {oMissing('='), {"<a b/>"}},
        {oMissing('"'), {"<a b=1/>"}},
        {oMissing('\''), {"<a b='1><c/>"}},
        {oMissing(']'), {"<a><![CDATA[x></a>", "<a dt:dt='bin.base64'><![CDATA[AA==]></a>"}},
        {oInvalid(">", '<'), {"<>"}},
        {oInvalid(" ", '<'), {"< a/>"}},
        {oInvalid("1", '<'), {"<1/>"}},
        {oInvalid("\xC3\x97", 'a'), {"<a\xC3\x97/>"}},
        {oInvalid("c", '\''), {"<a b='1'c='2'/>"}},
        {"missing header for binary data in XML string",
         {"<a dt:dt='bin.base64'>AA==</a>", "<a dt:dt='bin.base64'> <![CDATA[AA==]]></a>",
          "<a dt:dt='bin.base64'><![CDATA[A]]><![CDATA[A]]></a>"}},
        {"unknown xml sequene \"A\"", {"<a dt:dt='bin.base64'><![CDATA[A]]></a>"}},
        {"unknown xml sequene \"yesterday\"", {"<a dt:dt='dateTime'>yesterday</a>"}},
        {"node \"a\" with wrong data type: 'String'", {"<a>x<b/></a>"}},
        {"node \"a\" with wrong data type: 'Integer'", {"<a dt:dt='i4'><b/></a>"}},
        {"node \"a\" with wrong data type: 'Tree'",
         {"<a CDNodeID='ID1' CDNodeIDREF='ID1'><b/></a>"}},
    };
    for (const auto& [sError, oTexts] : aoBad) {
        for (const std::string& s : oTexts) EXPECT_EQ(Error(s), sError) << s;
    }
    EXPECT_EQ(Trail([] { Loaded("<a"); }),
              "vok::Data::LoadFromXML\nvok::Data::LoadFromXMLString\n");
}

TEST(Xml, PlaceOfAnError) {
    const Pair aoCases[] = {
        {"<a>\n <b/>\n <c/>\n <d></e></a>", "20 4:5 /d[0]"},
        {"<a>\n <ä>ö<b/>\n</ä></a>", "11 2:6 /ä[0]"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xE4\xE4<b", "51 2:8 /"},
        {"<a><b/></a> <c/>", "11 1:12 /"},
        {"<a><b/></a>", "11 1:12 /"},
        {"\xFF\xFE<\0a\0>\0\n\0\x3D\xD8\x00\xDE\xE4\0<\0b\0=\0"s, "20 2:5 /"},
        {"\xFE\xFF\0<\0a\0>\0\n\xD8\x3D\xDE\x00\0\xE4\0<\0b\0=\0"s, "20 2:5 /"},
    };
    for (const auto& [sText, sPlace] : aoCases) {
        for (const std::size_t uMost : {0u, 1u}) {
            Load_Report oReport;
            Data oTree;
            (void)ErrorFrom(uMost, sText, oTree, &oReport);
            EXPECT_EQ(PlaceOf(oReport), sPlace) << sText;
            EXPECT_EQ(oReport.m_uNodes, oTree.GetNodes());
        }
    }
}

// What of a document does not get into the tree, or stands behind it.
TEST(Xml, ReportOfWhatIsLost) {
    // Texts, references, elements out of order, comments, instructions; bytes behind it.
    const std::pair<std::string, std::vector<u3_t>> aoCases[] = {
        {"<?xml version='1.0'?><a><b>1</b><c/></a>", {0, 0, 0, 0, 0, 0}},
        {"<a><b/>one<b/> \n<b/><![CDATA[two]]></a>", {2, 0, 0, 0, 0, 0}},
        {"<a x='&y;'>&auml;&amp;</a>", {0, 2, 0, 0, 0, 0}},
        {"<a><c/><b/><c/><a/><d/></a>", {0, 0, 2, 0, 0, 0}},
        {"<a><b/><b/><b><z/><y/></b></a>", {0, 0, 1, 0, 0, 0}},
        {"<!DOCTYPE a><?p?><!--1--><a><!--2--><?xmlx?></a><!--3-->", {0, 0, 0, 2, 3, 8}},
        {"<a/>\n<a/>", {0, 0, 0, 0, 0, 5}},
    };
    for (const auto& [sText, oLost] : aoCases) {
        SCOPED_TRACE(sText);
        for (const std::size_t uMost : {0u, 1u, 1000u}) {
            Load_Report r;
            Data oTree;
            Drop_Stream oStream(sText, uMost);
            File_Buf oBuf(sText.data(), sText.size());
            oTree.LoadFromXML(uMost == 0 ? static_cast<File_Stream&>(oBuf) : oStream, 1, {}, &r);
            EXPECT_EQ(oLost, (std::vector{r.m_uDroppedTexts, r.m_uKeptReferences, r.m_uReordered,
                                          r.m_uComments, r.m_uInstructions, r.m_uBytesLeft}));
            EXPECT_EQ(r.IsComplete(), oLost.back() == 0);
            EXPECT_EQ(oBuf.Remaining(), uMost == 0 ? oLost.back() : sText.size());
        }
    }
    // A file is left behind the document, in every coding.
    const Scratch_Dir oDir;
    for (const std::string& sEach :
         {"<a>\xC3\xA4</a>"s, "<?xml version='1' encoding='windows-1252'?><a>\x80</a>"s,
          "\xFF\xFE<\0a\0>\0\x3D\xD8\x00\xDE<\0/\0a\0>\0"s}) {
        ToDisk("f", sEach + sEach + "rest");
        File oFile("f", "r");
        Data oFirst, oSecond;
        Load_Report r;
        oFirst.LoadFromXML(oFile, 0, {}, &r);
        EXPECT_EQ(r.m_uBytesLeft, sEach.size() + 4);
        EXPECT_EQ(r.m_uOffset, sEach.size());
        oSecond.LoadFromXML(oFile, 0);
        EXPECT_TRUE(Data::Equal(oFirst, oSecond));
        char s[4];
        EXPECT_EQ(oFile.Read(s, 4), 4u);
        EXPECT_EQ(std::string(s, 4), "rest");
    }
}

// Whatever is saved to a stream, no more than a piece of it is held.
TEST(Xml, SavingHoldsOnePiece) {
    Data oRoot = NewTree();
    const std::string sLong(5'000'000, '<'), sBytes = Noise(5'000'000, 8);
    oRoot.CreateNewSucc("text").SetValStr(sLong);
    for (const u2_t uSize : {0u, 1u, 3071u, 3072u, 3073u, 6144u, 9217u, 5'000'000u}) {
        oRoot.AddBin("block", sBytes.data(), uSize);
    }
    oRoot.SetAttVal("attribute", sLong.c_str());
    Data oMany = oRoot.CreateNewSucc("x");
    for (int i = 0; i < 100'000; ++i) oMany.AddStr("n", "a short text");
    oRoot.SetAccessMode();
    const Mem_Probe oProbe;
    Drop_Stream oOut;  // whose own memory is another's
    oRoot.SaveToXML(oOut);
    EXPECT_LT(Mem_Probe::Peak(), std::size_t{1} << 20);
    const std::string sText = Joined(oOut.m_oWritten);
    EXPECT_TRUE(sText == Saved(oRoot));
    for (const std::string& sBehind : {""s, PADDING}) {
        EXPECT_TRUE(Data::Equal(Loaded(sText + sBehind), oRoot));
    }
}

// Tokens that end where the pieces end that a stream is read in.
TEST(Xml, EndsOfPieces) {
    constexpr std::size_t PIECE = 256 * 1024;
    for (const char* s :
         {"<a b='", "<a>", "<a><![CDATA[", "<a/><!--", "<a/><?p>", "<a/>", "<!DOCTYPE a ["}) {
        for (const std::size_t uSize : {PIECE - 1, PIECE, PIECE + 1, 2 * PIECE}) {
            const std::string sText = s + std::string(uSize - std::strlen(s), ' ');
            Load_Report aoReport[2];
            Data aoTree[2];
            EXPECT_EQ(ErrorFrom(0, sText, aoTree[0], &aoReport[0]),
                      ErrorFrom(100000, sText, aoTree[1], &aoReport[1]))
                << s << uSize;
            EXPECT_EQ(PlaceOf(aoReport[0]), PlaceOf(aoReport[1])) << s << uSize;
        }
    }
}

// A tree with all that a document can carry, deep and wide enough for several pieces.
Data LargeTree() {
    Data oTree = NewTree();
    std::mt19937 oRandom(7);
    Grow(oTree, oRandom, 3000,
         {"a", "bb", "list", "name with blanks", "longer_than_sixteen_bytes", ""});
    for (u2_t u = 1; u < oTree.GetNodes(); ++u) {
        Data o = oTree.GetNodeFromID(u);
        if (u % 7 == 0) o.SetAttVal("k&", std::to_string(u).c_str());
        if (o.GetType() == Data_Node::Tree) continue;
        switch (u % 8) {
            case 0: o.SetValInt(static_cast<i2_t>(oRandom())); break;
            case 1: o.SetValDbl(std::bit_cast<double>(u3_t{oRandom()} << 32)); break;
            case 2:
                o.SetValStr(std::string(u % 100, static_cast<char>('[' + u % 3)).c_str());
                break;
            case 3: o.SetValBool(u % 3 == 0); break;
            case 4:
                o.SetValLink(oTree.GetNodeFromID(RandomBelow(oRandom, oTree.GetNodes())));
                break;
            case 5: o.SetValBin("\0\1\2\3\4\5", u % 7); break;
            case 6: o.SetValQuad(u, ~u, 0, 7); break;
            default: break;
        }
    }
    return oTree;
}

TEST(Xml, SameThroughEveryStream) {
    Data oTree = LargeTree();
    const std::string sText = Saved(oTree);
    // To a stream without memory, and into the middle of a buffer.
    Drop_Stream oOut;
    oTree.SaveToXML(oOut);
    EXPECT_EQ(Joined(oOut.m_oWritten), sText);
    File_Buf oBuf("w");
    oBuf.Write(std::string(sText.size() + 2, '.').c_str());
    oBuf.Seek(1);
    oTree.SaveToXML(oBuf);
    EXPECT_EQ(Content(oBuf), "." + sText + ".");
    // From a stream that gives a byte at a time.
    Drop_Stream oIn(sText);
    Data oSlow;
    EXPECT_EQ(oSlow.LoadFromXML(oIn, 0), oTree.GetNodes());
    EXPECT_EQ(Saved(oSlow), sText);
    File_Buf oEmpty;
    EXPECT_EQ(Trail([&] { Dgraph_Load(oTree, oEmpty); }),
              "vok::Data::LoadFromXML\nvok::Dgraph_Load\n");
}

TEST(Xml, CutOffAnywhere) {
    const std::string sText =
        "<!DOCTYPE R [<!-- x -->]><R a='1'><!-- c --><b dt:dt=\"i4\">12</b>"
        "<?p q?><c><![CDATA[x]]>&amp;</c><d e=\"f\"><g/></d></R>";
    for (std::size_t u = 0; u < sText.size(); ++u) {
        const std::string sPart = sText.substr(0, u);
        EXPECT_NE(Error(sPart), "") << sPart;
        Data oTree;
        EXPECT_EQ(ErrorFrom(1, sPart, oTree), Error(sPart)) << sPart;
        EXPECT_EQ(Raised([&] { oTree.SetAccessMode(); }), NOTHING_RAISED);
    }
}

// Each of these would take minutes, or the machine stack, if anything but linear.
TEST(Xml, LargeInLinearTime) {
    constexpr u2_t COUNT = 200000;
    std::string sWide = "<a ";
    for (u2_t u = 0; u < COUNT; ++u) {
        sWide += "x" + std::to_string(u) + "='1' y='" + std::to_string(u) + "' ";
    }
    const Data oDeep = Loaded(Repeat("<a>", COUNT) + Repeat("</a>", COUNT));
    EXPECT_EQ(oDeep.GetNodes(), COUNT);
    EXPECT_LT(Saved(oDeep).size(), std::size_t{80} * COUNT);
    EXPECT_EQ(Loaded(Saved(oDeep)).GetNodes(), COUNT);
    EXPECT_EQ(AttributesOf(Loaded(sWide + "/>")).size(), COUNT + 1);

    // One token after the other that does not end, byte by byte of a stream.
    for (const char* s : {"<a b='", "<a><![CDATA[", "<!--", "<!DOCTYPE [", "<a>", "<a ", "<?"}) {
        Data oTree;
        EXPECT_NE(ErrorFrom(1000, s + std::string(3000000, 'x'), oTree), "");
    }
}

TEST(Xml, LimitsHold) {
    struct {
        const Limit& oLimit;
        const char* sGood;
        const char* sBad;
    } const aoCases[] = {
        {LIMIT_NODES, "<a><b/><b/></a>", "<a><b/><b/><b/></a>"},
        {LIMIT_DEPTH, "<a><b><c/></b></a>", "<a><b><c><d/></c></b></a>"},
        {LIMIT_ATTRIBUTES, "<a b='' c='' d=''/>", "<a b='' c='' d='' e=''/>"},
        {LIMIT_TEXT_BYTES, "<a>x<!---->yz</a>", "<a>x<!---->yz1</a>"},
        {LIMIT_TEXT_BYTES, "<a><![CDATA[xyz]]></a>", "<a><![CDATA[xyz1]]></a>"},
        {LIMIT_TEXT_BYTES, "<a b='&lt;yz'/>", "<a b='wxyz'/>"},
        {LIMIT_TEXT_BYTES, "<a><b>xyz</b></a>", "<a><b>wxyz</b></a>"},
        {LIMIT_TEXT_BYTES, "<a><b dt:dt=\"i4\">-12</b></a>", "<a><b dt:dt=\"i4\">-123</b></a>"},
        {LIMIT_TEXT_BYTES, "<a><b dt:dt=\"r8\">1.5</b></a>", "<a><b dt:dt=\"r8\">1.25</b></a>"},
        {LIMIT_TEXT_BYTES, "<a><b dt:dt=\"bin.base64\"><![CDATA[AAA]]></b></a>",
         "<a><b dt:dt=\"bin.base64\"><![CDATA[AAAA]]></b></a>"},
    };
    for (const auto& o : aoCases) {
        // What was there before does not count.
        Data oFull = NewTree();
        for (int i = 0; i < 9; ++i) oFull.SetToNewSucc("x");
        EXPECT_EQ(ErrorFrom(0, o.sGood, oFull, nullptr, AtMost(o.oLimit, 3)), "");
        Data oTree;
        // Also to elements that are read the fast way.
        for (const std::string& sBehind : {""s, PADDING}) {
            const std::string sGood = o.sGood + sBehind;
            EXPECT_EQ(ErrorFrom(0, sGood, oTree = Data(), nullptr, AtMost(o.oLimit, 3)), "");
            const std::string sBad = o.sBad + sBehind;
            EXPECT_EQ(ErrorFrom(0, sBad, oTree = Data(), nullptr, AtMost(o.oLimit, 3)),
                      Exceeded(o.oLimit, 3))
                << sBad;
        }
    }
    // A tag is no text, however it meets the pieces of a stream.
    const std::string sLong = "<a" + std::string(300000, ' ') + ">xyz</a>";
    Data oTree;
    EXPECT_EQ(ErrorFrom(100000, sLong, oTree, nullptr, AtMost(LIMIT_TEXT_BYTES, 3)), "");
}

}  // namespace
}  // namespace vok
