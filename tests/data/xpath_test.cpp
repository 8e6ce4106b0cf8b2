// Path texts: what parses to what, what is refused with which words, escapes.
#include "vok/data/xpath.h"

#include "tests/support.h"

namespace vok {
namespace {

std::string Parsed(const char* sPath) {
    Data_Xpath oPath;
    oPath.Parse(sPath);
    Str oText;
    oPath.Debug(oText);
    return oText.CStr();
}

TEST(Xpath, Parses) {
    const std::pair<const char*, const char*> ROWS[] = {
        // clang-format off
        {"", ""}, {nullptr, ""}, {"/", "Absolute\n"}, {"//", "Absolute\nStopEach\n"},
        {"a/", "Name=\"a\"\n"}, {"a//", "Name=\"a\" StopEach\n"}, {"a[*]", "Name=\"a\"\n"},
        {"a[1000000009]", "Name=\"a\" [1000000009]\n"}, {"[3]", "Name=\"\" Empty [3]\n"},
        {"a[@x y=\"=\"]", "Name=\"a\" @x y=\"=\"\n"}, {"a]b\"@=c", "Name=\"a]b\"@=c\"\n"},
        {"\xE4[@\xFC=\"\xF6\"]", "Name=\"ä\" @ü=\"ö\"\n"},
        // clang-format on
        {"//a//b/c", "Absolute\nStopEach\nName=\"a\" StopEach\nName=\"b\"\nName=\"c\"\n"},
        {"*[@x=\"\"][7][@y=\"a/b]\"]/c", "Name=\"*\" [7] @x=\"\" @y=\"a/b]\"\nName=\"c\"\n"},
        {"./../.a/...", "Name=\".\"\nName=\"..\"\nName=\".a\"\nName=\"...\"\n"},
        // Escapes are undone where they stand, without effect on what follows.
        {"a\b0;b/c\b47;d", "Name=\"a\"\nName=\"c/d\"\n"},
        {"a[@x\b61;=\"\b34;\b0;lost\"][@y=\"1\"]", "Name=\"a\" @x==\"\"\" @y=\"1\"\n"},
    };
    for (const auto& [sPath, sSteps] : ROWS) EXPECT_EQ(Parsed(sPath), sSteps);
    Data_Xpath oPath;
    oPath.Parse("\b42;/*/.");
    EXPECT_FALSE(oPath(0).m_bAnyName);
    EXPECT_TRUE(oPath(1).m_bAnyName);
    EXPECT_EQ(oPath(2).m_eKind, Data_XpathStep::Self);
}

TEST(Xpath, Refuses) {
    const std::pair<const char*, std::vector<const char*>> ROWS[] = {
        {"empty xpath not allowed", {"///", "///a", "a///b"}},
        {"invalid character '[' after '.'", {".[0]", "..[@a=\"\"]"}},
        {"opening bracket '[' used without corresponding closing bracket",
         {"a[", "a[0][", "a[12", "a[*"}},
        {"invalid character ']' after '['", {"a[]"}},
        {"invalid character 'x' after '['", {"a[x]"}},
        {"invalid character '-' after '['", {"a[-1]"}},
        {"invalid character 'ä' after '['", {"a[\xE4]"}},
        {"invalid character '😀' after '['", {"a[😀"}},
        {"invalid character 'x' after '1'", {"a[1x]"}},
        {"invalid character 'ä' after '0'", {"a[10ä]"}},
        {"invalid character 'x' after '*'", {"a[*x]"}},
        {"character '@' expected after '['", {"a[0][1]", "a[*][0]", "a[0][@x=\"1\"][*]"}},
        {"invalid character 'b' after ']'", {"a[0]b"}},
        {"invalid character ']' after ']'", {"a[0]]"}},
        {"integer value to big", {"a[10000000000]", "a[1000000010]", "a[99999999999999999999]"}},
        {"missing char '=' in string", {"a[@", "a[@x]/b"}},
        {"empty attribute name in xpath not allowed", {"a[@=\"1\"]"}},
        {"character '\"' expected after '='", {"a[@x=", "a[@x=1]"}},
        {"missing char '\"' in string", {"a[@x=\"1]"}},
        {"character ']' expected after '\"'", {"a[@x=\"1\"", "a[@x=\"1\"x]"}},
    };
    for (const auto& [sError, oPaths] : ROWS) {
        for (const char* sPath : oPaths) {
            EXPECT_EQ(Failing([&] { Parsed(sPath); }), sError) << sPath;
        }
    }
    // What failed leaves nothing behind; the next path does not see it.
    Data_Xpath oPath;
    EXPECT_THROW(oPath.Parse("//a/b["), Msg_Exception);
    EXPECT_EQ(oPath.Size(), 0u);
    EXPECT_FALSE(oPath.IsAbsolute() || oPath.IsDescendantFromRoot());
    char sNothing[] = "";
    Data_XpathStep oStep;
    EXPECT_EQ(Raised([&] { oStep.Parse(sNothing, sNothing); }),
              "assertion failed: sXpath < sEnd\n");
}

std::string Encoded(const char* sText, const char* sSet = nullptr) {
    Str oText;
    Data::EncodeXpath(oText, sText, sSet);
    return oText.CStr();
}

std::string Decoded(std::string sText) {
    const char* pEnd = Data::DecodeXpath(sText.data());
    EXPECT_EQ(*pEnd, 0);
    return sText.c_str();
}

// The reserved characters are for the tests of the writer.
TEST(Escapes, Encode) {
    EXPECT_EQ(Encoded("\xE4 "), "ä\b32;");
    EXPECT_EQ(Encoded(nullptr), "\b0;");
    EXPECT_EQ(Encoded("a.b", "ab"), "\b97;.\b98;");
    EXPECT_EQ(Encoded("a.b", ""), "a.b");
    Str oText("kept ");
    Data::EncodeXpath(oText, ".");
    EXPECT_EQ(oText, Str("kept \b46;"));
}

TEST(Escapes, DecodeLeavesWhatIsNone) {
    const Pair ROWS[] = {
        // clang-format off
        {"", ""}, {"\b", "\b"}, {"\b;", "\b;"}, {"\b46", "\b46"}, {"\b46x;", "\b46x;"},
        {"\b\b46;", "\b."}, {"\b1114112;", "\b1114112;"}, {"\b000046;", "."}, {"a\b0;b", "a"},
        {"\b99999999999999999999;", "\b99999999999999999999;"},
        {"\b228;\b8364;\b128512;", "ä€😀"}, {"\b8;46;", "\b46;"},  // undone once, not twice
        // clang-format on
    };
    for (const auto& [sText, sDecoded] : ROWS) EXPECT_EQ(Decoded(sText), sDecoded);
    char sText[] = "\b46;\b47;";
    EXPECT_EQ(Data::DecodeXpath(sText, sText + 4), sText + 1);
    EXPECT_STREQ(sText + 4, "\b47;");
    EXPECT_EQ(Data::DecodeXpath(nullptr), nullptr);
}

}  // namespace
}  // namespace vok
