// SPDX-License-Identifier: MIT
// Texts of lines, words, numbers and fields; every case from memory and from a stream that gives
// one byte at a time.
#include <functional>

#include "tests/file/file_support.h"
#include "vok/file/scan.h"

namespace vok {
namespace {

using Visit = std::function<std::string(File_Scan&)>;

// What oVisit makes of a text, which no kind of stream may change.
std::string Scanned(const std::string& sText, const Visit& oVisit, const Limits& oLimits = {}) {
    std::string asMade[2];
    const auto oRun = [&](File_Stream& oIn) {
        std::string sMade;
        const std::string sRaised = Failing([&] {
            File_Scan oScan(oIn, oLimits);
            sMade = oVisit(oScan);
        });
        return sRaised.empty() ? sMade : sRaised;
    };
    File_Buf oBuf(sText.data(), sText.size());
    asMade[0] = oRun(oBuf);
    Drop_Stream oDrops(sText);
    asMade[1] = oRun(oDrops);
    // Memory has a name of its own.
    constexpr std::string_view NAME = "*** File_Buf ***";
    if (const std::size_t u = asMade[0].find(NAME); u != std::string::npos) {
        asMade[0].erase(u, NAME.size());
    }
    EXPECT_EQ(asMade[0], asMade[1]);
    return asMade[1];
}

std::string At(const File_Scan& o) {
    return std::to_string(o.Line()) + ":" + std::to_string(o.Column());
}

TEST(File_Scan, LinesOfEverySystem) {
    const Visit oLines = [](File_Scan& o) {
        std::string s;
        std::string_view sLine;
        while (o.ReadLine(sLine)) s += "[" + std::string(sLine) + "]" + At(o) + " ";
        return s;
    };
    const Pair CASES[] = {
        {"", ""},
        {"a", "[a]1:2 "},
        {"a\n", "[a]2:1 "},
        {"a\nb\r\nc\rd", "[a]2:1 [b]3:1 [c]4:1 [d]4:2 "},
        {"\n\r\n\r", "[]2:1 []3:1 []4:1 "},
        {"\r\r\n\n", "[]2:1 []3:1 []4:1 "},
        {"\xEF\xBB\xBFäö\n", "[äö]2:1 "},
        {std::string("\xFF\xFE"
                     "a\0\n\0\xE4\0",
                     8),
         "[a]2:1 [ä]2:2 "},
        {"a\xFF"
         "b",
         "[a\xFF"
         "b]1:4 "},
        {std::string("a\0b", 3), std::string("[a\0b]1:4 ", 9)},
    };
    for (const Pair& o : CASES) EXPECT_EQ(Scanned(o.first, oLines), o.second) << o.first;
    // Tokens that are longer than a piece of the stream, with their break at its border.
    for (const std::size_t uSize : {262143u, 262144u, 262145u, 700000u}) {
        const std::string sLong(uSize, 'x');
        const std::string sMade = Scanned(sLong + "\r\n" + sLong + "\ny", oLines);
        EXPECT_EQ(sMade, "[" + sLong + "]2:1 [" + sLong + "]3:1 [y]3:2 ");
    }
}

TEST(File_Scan, LongTokensMeetTheLimit) {
    const Visit oLine = [](File_Scan& o) {
        std::string_view s;
        o.ReadLine(s);
        return std::string(s);
    };
    EXPECT_EQ(Scanned("12345\r\n", oLine, AtMost(LIMIT_TEXT_BYTES, 5)), "12345");
    EXPECT_EQ(Scanned("123456\r\n", oLine, AtMost(LIMIT_TEXT_BYTES, 5)),
              Exceeded(LIMIT_TEXT_BYTES, 5));
    // No more is read of what has no end.
    class Endless : public Drop_Stream {
      public:
        std::size_t Read(void* p, std::size_t uCount, bool) override {
            std::memset(p, 'x', uCount);
            m_uRead += uCount;
            return uCount;
        }
        u3_t m_uRead = 0;
    } oEndless;
    File_Scan oScan(oEndless, AtMost(LIMIT_TEXT_BYTES, 1000000));
    for (const auto& oRead :
         {Visit([](File_Scan& o) { return std::string(o.ReadWord()); }),
          Visit([](File_Scan& o) { return std::string(o.ReadField(',').m_sText); })}) {
        EXPECT_EQ(Failing([&] { oRead(oScan); }), Exceeded(LIMIT_TEXT_BYTES, 1000000));
    }
    EXPECT_LT(oEndless.m_uRead, 4000000u);
}

TEST(File_Scan, WordsAndNumbers) {
    const Visit oAll = [](File_Scan& o) {
        std::string s(o.ReadWord());
        s += "|" + std::to_string(o.ReadInteger());
        s += "|" + std::to_string(o.ReadReal());
        s += "|" + std::string(o.ReadString());
        s += "|" + std::string(o.ReadWord(";"));
        s += o.Skip(';') ? ";" : "";
        o.SkipBlanks();
        return s + (o.AtEnd() ? "" : " more");
    };
    EXPECT_EQ(Scanned(" wörd\r\n-12\t+1.5e3 \"a \"\"b\"\"\n\"x;\n", oAll),
              "wörd|-12|1500.000000|a \"b\"\n|x;");
    EXPECT_EQ(Scanned("w 9223372036854775807 .5 \"\"x", oAll), "w|9223372036854775807|0.500000||x");
}

TEST(File_Scan, FaultsTellLineAndColumn) {
    const Visit oInteger = [](File_Scan& o) { return std::to_string(o.ReadInteger(-5, 99, ",")); };
    const Visit oReal = [](File_Scan& o) { return std::to_string(o.ReadReal()); };
    const Visit oWord = [](File_Scan& o) { return std::string(o.ReadWord()); };
    const Visit oText = [](File_Scan& o) { return std::string(o.ReadString()); };
    const struct {
        std::string sText;
        const Visit& oVisit;
        const char* sRaised;
    } CASES[] = {
        {"", oInteger, "an integer expected in \"\", line 1, column 1: \"\""},
        {"\n\r\n  ä1", oInteger, "an integer expected in \"\", line 3, column 3: \"ä1\""},
        {"12x,", oInteger, "an integer expected in \"\", line 1, column 1: \"12x\""},
        {"1.0", oInteger, "an integer expected in \"\", line 1, column 1: \"1.0\""},
        {"--1", oInteger, "an integer expected in \"\", line 1, column 1: \"--1\""},
        {"0x10", oInteger, "an integer expected in \"\", line 1, column 1: \"0x10\""},
        {" 100", oInteger, "number out of range in \"\", line 1, column 2: \"100\""},
        {"-6", oInteger, "number out of range in \"\", line 1, column 1: \"-6\""},
        {"99999999999999999999", oInteger,
         "number out of range in \"\", line 1, column 1: \"99999999999999999999\""},
        {"1e", oReal, "a number expected in \"\", line 1, column 1: \"1e\""},
        {"inf", oReal, "a number expected in \"\", line 1, column 1: \"inf\""},
        {".", oReal, "a number expected in \"\", line 1, column 1: \".\""},
        {"1e999", oReal, "number out of range in \"\", line 1, column 1: \"1e999\""},
        {" \r ", oWord, "a word expected in \"\", line 2, column 2: \"\""},
        {" abc", oText, "a text in quotes expected in \"\", line 1, column 2: \"abc\""},
        {"\"a\"\"b", oText, "missing char '\"' in string"},
    };
    for (const auto& o : CASES) EXPECT_EQ(Scanned(o.sText, o.oVisit), o.sRaised);
    EXPECT_EQ(Scanned("1e-999 ", oReal), "0.000000");
}

TEST(File_Scan, Fields) {
    const Visit oFields = [](File_Scan& o) {
        std::string s;
        while (!o.AtEnd()) {
            const File_Scan::Field f = o.ReadField(',');
            s += "[" + std::string(f.m_sText) + "]";
            s += f.m_bQuoted ? "q" : "";
            s += f.m_bUnclosed ? "u" : "";
            s += f.m_bBehind ? "b" : "";
            s += ",/."[static_cast<int>(f.m_eEnd)];
        }
        return s + At(o);
    };
    const Pair CASES[] = {
        {"a,b\nc", "[a],[b]/[c].2:2"},
        {",\n", "[],[]/2:1"},
        {"\"a,\r\nb\",\"\"\r\n", "[a,\r\nb]q,[]q/3:1"},
        {"\"a\"\"b\"\"\"\"c\"", "[a\"b\"\"c]q.1:12"},
        {"\"\"\"\"", "[\"]q.1:5"},
        {"a\"b\"\"c,", "[a\"b\"\"c],1:8"},
        {"\"a\"x\"y\",z", "[ax\"y\"]qb,[z].1:10"},
        {"\"a\"\"b\"x\n", "[a\"bx]qb/2:1"},
        {"\"a,b\nc", "[a,b\nc]qu.2:2"},
        {"\"", "[]qu.1:2"},
        {"\"a\"\r", "[a]q/2:1"},
    };
    for (const Pair& o : CASES) EXPECT_EQ(Scanned(o.first, oFields), o.second) << o.first;
    EXPECT_EQ(
        Scanned("\"a;b\"", [](File_Scan& o) { return std::string(o.ReadField(';', 0).m_sText); }),
        "\"a");
}

TEST(File_Scan, HoldsRewindsAndLeaves) {
    const std::string sLong = Repeat("äbc\r\n", 100000);
    const Visit oVisit = [](File_Scan& o) {
        std::string_view s;
        o.ReadLine(s);
        const std::string sAhead(o.Ahead(3));
        o.Hold();
        const std::string sFrom = At(o);
        while (o.ReadLine(s)) {
        }
        const std::size_t uHeld = o.Held().size();
        const std::string sTo = At(o);
        o.Rewind();
        const std::string sBack = At(o) + " " + std::to_string(o.Offset());
        const int iNext = o.Peek();
        return sAhead + " " + sFrom + " " + std::to_string(uHeld) + " " + sTo + " " + sBack + " " +
               std::to_string(iNext);
    };
    EXPECT_EQ(Scanned(sLong, oVisit), "äb 2:1 599994 100001:1 2:1 6 195");
    const std::string sText = "one two three";
    File_Buf oBuf(sText.data(), sText.size());
    File_Scan oScan(oBuf);
    EXPECT_EQ(oScan.ReadWord(), "one");
    EXPECT_EQ(oScan.Leave(), 10u);
    EXPECT_TRUE(oScan.AtEnd());
    EXPECT_EQ(oScan.Offset(), 3u);
    EXPECT_EQ(oBuf.Remaining(), 10u);
}

TEST(File_Scan, ErrorsOfTheStreamAndRefusedMemory) {
    const std::string sText = Repeat("\"a\"\"b\",", 100000);
    const auto oRead = [&](Drop_Stream& oIn) {
        File_Scan oScan(oIn);
        while (!oScan.AtEnd()) (void)oScan.ReadField(',');
    };
    for (const unsigned uNth : {1u, 2u, 3u}) {
        Drop_Stream oIn(sText, 200000);
        oIn.m_uFailIn = uNth;
        EXPECT_EQ(Failing([&] { oRead(oIn); }), "unexpected end of file in \"\"");
    }
    for (unsigned uNth = 1;; ++uNth) {
        Mem_Probe oProbe;
        Drop_Stream oIn(sText, 200000);
        if (!Mem_Probe::HasRefused(uNth, [&] { oRead(oIn); })) break;
        ASSERT_LT(uNth, 100u);
    }
}

}  // namespace
}  // namespace vok
