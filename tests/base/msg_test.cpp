// Messages: formatting, system errors, languages, the where-trail.
#include <cerrno>
#include <climits>
#include <stdexcept>

#include "tests/support.h"
#include "vok/base/msg_entry.h"
#include "vok/base/where.h"

namespace vok {
namespace {

TEST(Msg, Format) {
    const char* const oRows[][2] = {
        // clang-format off
        {"", "\n"}, {"plain", "plain\n"}, {"%0 and %1", "A and B\n"}, {"%1%0%1", "BAB\n"},
        {"%9|%5", "J|\n"},  // 5 is null
        {"100%% of %0", "100% of A\n"}, {"%%0", "%0\n"}, {"a%xb%-c", "abc\n"}, {"tail%", "tail\n"},
        {"%", "\n"}, {nullptr, "\n"},
        // clang-format on
    };
    const Msg_Capture oCapture;
    for (const auto& oRow : oRows) {
        SCOPED_TRACE(oRow[0] != nullptr ? oRow[0] : "(null)");
        const auto Emit = [&](int iMode) {
            return Msg::Emit(iMode, oRow[0], 0, "A", "B", "C", "D", "E", nullptr, "G", "H", "I",
                             "J");
        };
        EXPECT_EQ(Raised([&] { Emit(Msg::MODE_RAISE); }), oRow[1]);
        (void)Msg_Capture::TakeDebug();
        EXPECT_EQ(Emit(Msg::MODE_LOG), 0);
        EXPECT_EQ(Msg_Capture::TakeDebug(), oRow[1]);
        EXPECT_EQ(Msg_Capture::TakeConsole(), "");
        EXPECT_EQ(Emit(Msg::MODE_REPORT), 0);
        EXPECT_EQ(Msg_Capture::TakeConsole(), std::string(oRow[1]) + "|");
        EXPECT_EQ(Msg_Capture::TakeDebug(), "");
    }
}

TEST(Msg, LongMessagesAreCutBetweenCharacters) {
    const struct {
        std::size_t uFill;
        const char* sRest;
        const char* sEnd;  // what is left of sRest and the line break
    } oRows[] = {
        {1021, "b", "b\n"},
        {1022, "b", "b"},
        {1023, "b", ""},
        {1021, "ä", "ä"},
        {1022, "ä", "\n"},  // the character does not fit, the line break does
        {1020, "\xF0\x9F\x98\x80", "\n"},
        {1019, "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {1022, "\xE4", "\n"},  // one byte of Latin-1 takes two
    };
    const Msg_Capture oCapture;
    for (const auto& oRow : oRows) {
        const std::string sFill(oRow.uFill, 'a');
        const std::string sMessage =
            Raised([&] { Msg::Emit(Msg::MODE_RAISE, "%0%1", 0, sFill.c_str(), oRow.sRest); });
        EXPECT_EQ(sMessage, sFill + oRow.sEnd) << oRow.uFill << oRow.sRest;
    }
    // A report has no such bound.
    const std::string sLong(5000, 'x');
    Msg::Emit(Msg::MODE_REPORT, "%0", 0, sLong.c_str());
    EXPECT_EQ(Msg_Capture::TakeConsole(), sLong + "\n|");
}

TEST(Msg, ErrnoTexts) {
    char sBuf[256];
    const struct {
        u2_t uCode;
        const char* sText;
    } oRows[] = {
        // clang-format off
        {1, "EPERM (Operation not permitted)"}, {13, "EACCES (Permission denied)"},
        {36, "EDEADLK (Resource deadlock would occur)"}, {38, "ENAMETOOLONG"}, {80, "STRUNCATE"},
        {15, "0 :UNKNOWN (unknown errno 15)"}, {0, "0 :UNKNOWN (unknown errno 0)"},
        {0xFFFFFFFF, "0 :UNKNOWN (unknown errno -1)"},
        // clang-format on
    };
    for (const auto& oRow : oRows) {
        sys::SetLastError(0);
        EXPECT_STREQ(Msg::ErrnoText(sBuf, sizeof(sBuf), oRow.uCode), oRow.sText);
    }
    sys::SetLastError(0);
    EXPECT_STREQ(Msg::ErrnoText(sBuf, 38, 99), "0 :UNKNOWN (unknown errno 99)");
    EXPECT_STREQ(Msg::ErrnoText(sBuf, 37, 99), "UNKNOWN (unknown errno)");
    EXPECT_STREQ(Msg::ErrnoText(sBuf, 0, 99), "UNKNOWN (unknown errno)");
    EXPECT_STREQ(Msg::ErrnoText(nullptr, 0, 2), "ENOENT (No such file or directory)");
    // Any other code is answered with what the system said last.
    sys::SetLastError(2);
    EXPECT_TRUE(std::string(Msg::ErrnoText(sBuf, sizeof(sBuf), 99)).starts_with("2 :"));
    EXPECT_EQ(std::string(Msg::ErrnoText(sBuf, 6, 99)).substr(0, 3), "2 :");
    EXPECT_LE(std::string(sBuf).size(), 5u);
}

TEST(Msg, SystemErrorsFollowTheMessage) {
    const Msg_Capture oCapture;
    const auto Text = [](u2_t uCode, int iLastError) {
        return Raised([&] {
            sys::SetLastError(static_cast<u2_t>(iLastError));
            Msg::FunctionFailed("f", uCode);
        });
    };
    EXPECT_EQ(Text(0, 2), "Function f failed\n");
    EXPECT_EQ(Text(2, 0), "Function f failed: errno=ENOENT (No such file or directory)\n");
    EXPECT_EQ(Text(Msg::NO_SYSTEM_ERROR_CODE, 0),
              "Function f failed: 0 :UNKNOWN (unknown errno -1)\n");
    EXPECT_EQ(sys::LastError(), 0u);
    sys::SetRuntimeError(0);
    EXPECT_EQ(Msg::SystemError(), Msg::NO_SYSTEM_ERROR_CODE);
    sys::SetRuntimeError(5);
    EXPECT_EQ(Msg::SystemError(), 5u);
    // The system's own numbers are translated to those the texts go by.
    EXPECT_EQ(Text(ENAMETOOLONG, 0), "Function f failed: errno=ENAMETOOLONG\n");
    EXPECT_EQ(Text(ENOTEMPTY, 0), "Function f failed: errno=ENOTEMPTY (Directory not empty)\n");
#ifdef ELOOP
    EXPECT_TRUE(Text(ELOOP, ELOOP).starts_with("Function f failed: errno=" + std::to_string(ELOOP)))
        << Text(ELOOP, ELOOP);
#endif
}

TEST(Msg, ArgumentsArePrintedByKind) {
    const Msg_Capture oCapture;
    EXPECT_EQ(Raised([] { Msg::InvalidCharacterAfter(0xE4, 0x1F600); }),
              "invalid character 'ä' after '😀'\n");
    EXPECT_EQ(Raised([] { Msg::InvalidCharacter(0xD800); }), "invalid character '\uFFFD'\n");
    EXPECT_EQ(Raised([] { Msg::ReallocationFailed(0xBEEF, UINT64_MAX, 0, 1); }),
              "reallocation of block 0x000000000000BEEF to 18446744073709551615 bytes failed, 0 "
              "bytes and 1 blocks in use\n");
    // Signed counts print as unsigned ones.
    EXPECT_EQ(Raised([] { Msg::FileSeekFailed(-1, 2, 0); }),
              "file seek to position 18446744073709551615 in mode 2 failed\n");
    EXPECT_EQ(Raised([] { Msg::BinaryDataWrongVersion("Str", 7, 3); }),
              "binary data of object \"Str\" have wrong version 7, expected 3\n");
    EXPECT_EQ(Raised([] { Msg::LimitExceeded("nodes", 7, "Limits::m_uNodes"); }),
              "limit \"nodes\" of 7 exceeded (raise Limits::m_uNodes)\n");
    EXPECT_EQ(Raised([] { Msg::IdNotFound(nullptr); }), "id \"\" not found\n");
}

TEST(Msg, Languages) {
    const Msg_Capture oCapture;
    const struct {
        const char* sName;
        u2_t uIndex;
    } oRows[] = {{"english", 0}, {"GERMAN", 1},  {"EN", 0},
                 {"Deutsch", 1}, {"english", 0}, {"de", 1}};
    for (const auto& oRow : oRows) {
        Msg::SetLanguage(oRow.sName);
        EXPECT_EQ(Msg::LanguageIndex(), oRow.uIndex) << oRow.sName;
    }
    Msg::SetLanguageId(1031);
    EXPECT_EQ(Msg::LanguageIndex(), Msg::ENGLISH);
    EXPECT_EQ(Msg::LanguageId(), 1031u);
    for (const char* sBad : {"fr", "", "e", "english "}) {
        EXPECT_EQ(Raised([&] { Msg::SetLanguage(sBad); }),
                  "invalid language: \"" + std::string(sBad) + "\"\n");
    }
    EXPECT_EQ(Raised([] { Msg::SetLanguage(nullptr); }), "invalid language: \"\"\n");
    EXPECT_EQ(Raised([] { Msg::SetLanguageId(1); }), "invalid language code: 1\n");
    EXPECT_EQ(Raised([] { Msg::SetLanguageIndex(2); }), "invalid language id: 2\n");
    EXPECT_EQ(Msg::LanguageIndex(), Msg::ENGLISH);

    Msg::SetLanguageId(1033);
    EXPECT_EQ(Msg::LanguageIndex(), Msg::GERMAN);
    EXPECT_STREQ(Msg::LanguageNativeName(), "deutsch");
    EXPECT_STREQ(Msg::LanguageEnglishName(), "german");
    // Whatever row is asked for, the answer is about the current one.
    for (const u2_t uRow : {Msg::ENGLISH, Msg::GERMAN}) {
        EXPECT_EQ(Msg::LanguageId(uRow), 1033u);
        EXPECT_STREQ(Msg::LanguageNativeName(uRow), "deutsch");
        EXPECT_STREQ(Msg::LanguageEnglishName(uRow), "german");
        EXPECT_STREQ(Msg::LanguageCode(uRow), "de");
    }
    EXPECT_EQ(Msg::LanguageId(2), 0u);
    EXPECT_EQ(Msg::LanguageNativeName(2), nullptr);
    EXPECT_EQ(Msg::LanguageEnglishName(2), nullptr);
    EXPECT_EQ(Msg::LanguageCode(UINT32_MAX), nullptr);
}

TEST(Msg, RangeChecks) {
    const Msg_Capture oCapture;
    EXPECT_EQ(Msg::ToInt32(i3_t{INT32_MIN}), INT32_MIN);
    EXPECT_EQ(Msg::ToInt32(u3_t{INT32_MAX}), INT32_MAX);
    constexpr const char* sFailed = "assertion failed: vok::Msg::IsInt32(x)\n";
    EXPECT_EQ(Raised([] { Msg::ToInt32(i3_t{INT32_MAX} + 1); }), sFailed);
    EXPECT_EQ(Raised([] { Msg::ToInt32(i3_t{INT32_MIN} - 1); }), sFailed);
    EXPECT_EQ(Raised([] { Msg::ToInt32(UINT64_MAX); }), sFailed);
    EXPECT_TRUE(Msg::IsInt16(u2_t{32767}));
    EXPECT_FALSE(Msg::IsInt16(u2_t{32768}));
    EXPECT_FALSE(Msg::IsInt16(static_cast<u2_t>(-1)));
    EXPECT_EQ(Msg::ToU2(UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(Raised([] { Msg::ToU2(u3_t{1} << 32); }), "unexpected integer value >= 2^32\n");
    EXPECT_EQ(Raised([] { Msg::Assert(false, "a < b"); }), "assertion failed: a < b\n");
}

// ---- the where-trail --------------------------------------------------------

struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class F>
int Outer(F&& oBody) {
    return Where("vok::Outer", [&] {
        return Where("vok::Middle", "a.xml", [&] { return Where("vok::Inner", oBody); });
    });
}

TEST(Where, CollectsNamesInnermostFirst) {
    const Msg_Capture oCapture;
    try {
        Outer([]() -> int { Msg::NodeIsEmpty(); });
        FAIL();
    } catch (const std::exception& oError) {
        EXPECT_STREQ(oError.what(), "node is empty\n");
        const auto& oMsg = dynamic_cast<const Msg_Exception&>(oError);
        EXPECT_STREQ(oMsg.where(), "vok::Inner\nvok::Middle(a.xml)\nvok::Outer\n");
        EXPECT_NEAR(oMsg.Time(), static_cast<double>(sys::UnixTime()), 5);
    }
}

TEST(Where, LogsOtherExceptionsAndPassesTheSameObject) {
    const Msg_Capture oCapture;
    try {
        Outer([]() -> int { throw Refused("bad %0 luck"); });
        FAIL();
    } catch (const Refused& oError) {
        EXPECT_STREQ(oError.what(), "bad %0 luck");
    }
    EXPECT_EQ(Msg_Capture::TakeDebug(),
              "unexpected exception in vok::Inner: bad %0 luck\n"
              "unexpected exception in vok::Middle(a.xml): bad %0 luck\n"
              "unexpected exception in vok::Outer: bad %0 luck\n");
    EXPECT_THROW(Outer([]() -> int { throw Refused(""); }), Refused);
    EXPECT_EQ(Msg_Capture::TakeDebug(),
              "unexpected exception in vok::Inner\n"
              "unexpected exception in vok::Middle(a.xml)\n"
              "unexpected exception in vok::Outer\n");
    EXPECT_THROW(Outer([]() -> int { throw 7; }), int);
    EXPECT_EQ(Msg_Capture::TakeDebug(), "");
}

TEST(MsgException, TrailIsCutAndCopied) {
    Msg_Exception oError;
    oError.AddWhere(nullptr);
    oError.AddWhere("");
    EXPECT_STREQ(oError.where(), "");
    oError.AddWhere("f", "");
    EXPECT_STREQ(oError.where(), "f()\n");
    for (int i = 0; i < 200; ++i) oError.AddWhere("vok::Data::GetValInt");
    EXPECT_EQ(std::string(oError.where()).size(), Msg_Exception::CAPACITY - 1);
    oError.Append("text \xFF");
    const Msg_Exception oCopy = oError;
    EXPECT_STREQ(oCopy.what(), "text ÿ");
    EXPECT_STREQ(oCopy.where(), oError.where());
    EXPECT_EQ(oCopy.Time(), oError.Time());
}

}  // namespace
}  // namespace vok
