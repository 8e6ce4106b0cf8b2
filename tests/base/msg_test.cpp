// SPDX-License-Identifier: MIT
// Messages: formatting, system errors, languages, the where-trail.
#include <cerrno>
#include <climits>
#include <stdexcept>

#include <zlib.h>

#include "tests/support.h"
#include "vok/base/msg_entry.h"
#include "vok/base/where.h"

namespace vok {
namespace {

TEST(Msg, Format) {
    const std::pair<const char*, std::string> ROWS[] = {
        {"", "\n"},
        {nullptr, "\n"},
        {"plain", "plain\n"},
        {"%0 and %1", "A and B\n"},
        {"%1%0%1", "BAB\n"},
        {"%9|%5", "J|\n"},  // 5 is null
        {"100%% of %0", "100% of A\n"},
        {"%%0", "%0\n"},
        {"a%xb%-c", "abc\n"},
        {"tail%", "tail\n"},
    };
    const Msg_Capture oCapture;
    for (const auto& [sText, sMessage] : ROWS) {
        const auto Emit = [s = sText](int iMode) {
            return Msg::Emit(iMode, s, 0, "A", "B", "C", "D", "E", nullptr, "G", "H", "I", "J");
        };
        EXPECT_EQ(Raised([&] { Emit(Msg::MODE_RAISE); }), sMessage);
        (void)Msg_Capture::TakeDebug();
        EXPECT_EQ(Emit(Msg::MODE_LOG), 0);
        EXPECT_EQ(Msg_Capture::TakeDebug(), sMessage);
        EXPECT_EQ(Msg_Capture::TakeConsole(), "");
        EXPECT_EQ(Emit(Msg::MODE_REPORT), 0);
        EXPECT_EQ(Msg_Capture::TakeConsole(), sMessage + "|");
        EXPECT_EQ(Msg_Capture::TakeDebug(), "");
    }
}

TEST(Msg, LongMessagesAreCutBetweenCharacters) {
    const struct {
        std::size_t uFill;
        const char* sRest;
        const char* sEnd;  // what is left of sRest and the line break
    } oRows[] = {
        // clang-format off
        {1021, "b", "b\n"}, {1022, "b", "b"}, {1023, "b", ""}, {1021, "ä", "ä"},
        {1022, "ä", "\n"},  // the character does not fit, the line break does
        {1020, "\xF0\x9F\x98\x80", "\n"}, {1019, "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {1022, "\xE4", "\n"},  // one byte of Latin-1 takes two
        // clang-format on
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
    std::string sAll;
    for (u2_t u = 0; u < 200; ++u) sAll += Msg::ErrnoText(sBuf, sizeof(sBuf), u);
    EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(sAll.data()), static_cast<uInt>(sAll.size())),
              0x65819AD6u)
        << sAll;
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
    // Neither the banner nor who prints it changes what the system said before.
    Msg::SetBanner(true);
    Msg::SetWriter(
        {[](const char*, std::size_t) { sys::SetLastError(0); }, [] { sys::SetLastError(0); }});
    EXPECT_TRUE(Text(Msg::NO_SYSTEM_ERROR_CODE, 2).starts_with("Function f failed: 2 :"));
    EXPECT_EQ(sys::LastError(), 2u);
    Msg::SetDebugSink([](const char*) { sys::SetLastError(0); });
    EXPECT_TRUE(Text(Msg::NO_SYSTEM_ERROR_CODE, 2).starts_with("Function f failed: 2 :"));
    EXPECT_EQ(sys::LastError(), 2u);
    Msg::OpenFiles(1, 1);
    EXPECT_EQ(sys::LastError(), 2u);
    Msg::SetBanner(false);
    // The system's own numbers are translated to those the texts go by.
    EXPECT_EQ(Text(ENAMETOOLONG, 0), "Function f failed: errno=ENAMETOOLONG\n");
    EXPECT_EQ(Text(ENOTEMPTY, 0), "Function f failed: errno=ENOTEMPTY (Directory not empty)\n");
    EXPECT_EQ(Raised([] { Msg::Emit(Msg::MODE_RAISE, "own", ENOTEMPTY); }),
              "own: errno=ENOTEMPTY (Directory not empty)\n");
#ifdef ELOOP
    EXPECT_TRUE(Text(ELOOP, ELOOP).starts_with("Function f failed: errno=" + std::to_string(ELOOP)))
        << Text(ELOOP, ELOOP);
#endif
}

TEST(Msg, ArgumentsArePrintedByKind) {
    const std::pair<void (*)(), const char*> ROWS[] = {
        {[] { Msg::InvalidCharacterAfter(0xE4, 0x1F600); }, "invalid character 'ä' after '😀'\n"},
        {[] { Msg::InvalidCharacter(0xD800); }, "invalid character '\uFFFD'\n"},
        {[] { Msg::BlockDamaged(0xBEEF, UINT64_MAX); },
         "block 0x000000000000BEEF with size 18446744073709551615 damaged\n"},
        // Signed counts print as unsigned ones.
        {[] { Msg::FileSeekFailed(-1, 2, 0); },
         "file seek to position 18446744073709551615 in mode 2 failed\n"},
        {[] { Msg::IdNotFound(nullptr); }, "id \"\" not found\n"},
    };
    for (const auto& [pRaise, sMessage] : ROWS) EXPECT_EQ(Raised(pRaise), sMessage);
}

TEST(Msg, Languages) {
    const Msg_Capture oCapture;
    for (const char* sName : {"GERMAN", "english", "Deutsch", "EN", "de", "english"}) {
        const bool bGerman = Msg::LanguageIndex() == Msg::ENGLISH;  // by turns
        Msg::SetLanguage(sName);
        EXPECT_EQ(Msg::LanguageIndex(), bGerman ? Msg::GERMAN : Msg::ENGLISH) << sName;
    }
    for (const std::string sBad : {"fr", "", "e", "english "}) {
        EXPECT_EQ(Failing([&] { Msg::SetLanguage(sBad.c_str()); }),
                  "invalid language: \"" + sBad + "\"");
    }
    EXPECT_EQ(Failing([] { Msg::SetLanguage(nullptr); }), "invalid language: \"\"");
    EXPECT_EQ(Failing([] { Msg::SetLanguageId(1); }), "invalid language code: 1");
    EXPECT_EQ(Failing([] { Msg::SetLanguageIndex(2); }), "invalid language id: 2");
    EXPECT_EQ(Msg::LanguageIndex(), Msg::ENGLISH);
    // Whatever row is asked for, the answer is about the current one.
    for (const u2_t uId : {1033u, 1031u}) {
        Msg::SetLanguageId(uId);
        const bool bGerman = uId == 1033;
        for (const u2_t uRow : {Msg::ENGLISH, Msg::GERMAN}) {
            EXPECT_EQ(Msg::LanguageId(uRow), uId);
            EXPECT_STREQ(Msg::LanguageNativeName(uRow), bGerman ? "deutsch" : "english");
            EXPECT_STREQ(Msg::LanguageEnglishName(uRow), bGerman ? "german" : "english");
            EXPECT_STREQ(Msg::LanguageCode(uRow), bGerman ? "de" : "en");
        }
    }
    EXPECT_EQ(Msg::LanguageId(2), 0u);
    for (const char* s :
         {Msg::LanguageNativeName(2), Msg::LanguageEnglishName(2), Msg::LanguageCode(UINT32_MAX)}) {
        EXPECT_EQ(s, nullptr);
    }
}

TEST(Msg, RangeChecks) {
    EXPECT_EQ(Msg::ToInt32(i3_t{INT32_MIN}), INT32_MIN);
    EXPECT_EQ(Msg::ToInt32(u3_t{INT32_MAX}), INT32_MAX);
    constexpr const char* FAILED = "assertion failed: vok::Msg::IsInt32(x)";
    EXPECT_EQ(Failing([] { Msg::ToInt32(i3_t{INT32_MAX} + 1); }), FAILED);
    EXPECT_EQ(Failing([] { Msg::ToInt32(i3_t{INT32_MIN} - 1); }), FAILED);
    EXPECT_EQ(Failing([] { Msg::ToInt32(UINT64_MAX); }), FAILED);
    EXPECT_TRUE(Msg::IsInt16(u2_t{32767}));
    EXPECT_FALSE(Msg::IsInt16(u2_t{32768}));
    EXPECT_FALSE(Msg::IsInt16(static_cast<u2_t>(-1)));
    EXPECT_EQ(Msg::ToU2(UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(Failing([] { Msg::ToU2(u3_t{1} << 32); }), "unexpected integer value >= 2^32");
    EXPECT_EQ(Failing([] { Msg::Assert(false, "a < b"); }), "assertion failed: a < b");
}

// What leaves three nested functions the innermost of which runs oBody.
template <class F>
std::exception_ptr Leaving(F&& oBody) {
    try {
        Where("vok::Outer", [&] {
            return Where("vok::Middle", "a.xml", [&] { return Where("vok::Inner", oBody); });
        });
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

TEST(Where, CollectsNamesInnermostFirst) {
    const auto oThrown = Leaving([] { Msg::NodeIsEmpty(); });
    EXPECT_EQ(Trail([&] { std::rethrow_exception(oThrown); }),
              "vok::Inner\nvok::Middle(a.xml)\nvok::Outer\n");
    EXPECT_EQ(Raised([&] { std::rethrow_exception(oThrown); }), "node is empty\n");
    EXPECT_NEAR(Msg_Exception().Time(), static_cast<double>(sys::UnixTime()), 5);
}

TEST(Where, LogsOtherExceptionsAndPassesTheSameObject) {
    struct Refused : std::runtime_error {
        using std::runtime_error::runtime_error;
    };
    const std::pair<Refused, std::string> ROWS[] = {{Refused("bad %0 luck"), ": bad %0 luck\n"},
                                                    {Refused(""), "\n"}};
    const Msg_Capture oCapture;
    for (const auto& [oRefused, sEnd] : ROWS) {
        const auto oThrown = Leaving([&o = oRefused] { throw o; });
        EXPECT_THROW(std::rethrow_exception(oThrown), Refused);
        EXPECT_EQ(Msg_Capture::TakeDebug(), "unexpected exception in vok::Inner" + sEnd +
                                                "unexpected exception in vok::Middle(a.xml)" +
                                                sEnd + "unexpected exception in vok::Outer" + sEnd);
    }
    EXPECT_THROW(std::rethrow_exception(Leaving([] { throw 7; })), int);
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

TEST(MsgException, KindsOfFailures) {
    const auto Kind = [](auto&& oRaise) {
        try {
            oRaise();
        } catch (const std::exception& oError) {
            return Msg_Exception::KindOf(oError);
        }
        return Msg_Kind::Other;
    };
    EXPECT_EQ(Kind([] { Msg::NodeIsEmpty(); }), Msg_Kind::Other);
    EXPECT_EQ(Kind([] { throw std::runtime_error("allocation of 5 bytes failed"); }),
              Msg_Kind::Other);
    EXPECT_EQ(Kind([] { Msg::AllocationFailed(1, 2, 3); }), Msg_Kind::NoMemory);
    EXPECT_EQ(Kind([] { throw std::bad_alloc(); }), Msg_Kind::NoMemory);
    EXPECT_EQ(Kind([] { Limits().RaiseExceeded(&Limits::m_uDepth); }), Msg_Kind::Limit);
    EXPECT_EQ(Kind([] { Msg::FileWriteError("f", 1, 0, ENOSPC); }), Msg_Kind::System);
    EXPECT_EQ(Kind([] { Msg::FileWriteError("f", 1, 0, 0); }), Msg_Kind::Other);
    EXPECT_EQ(Kind([] { Msg::Emit(Msg::MODE_RAISE, "own", ENOENT); }), Msg_Kind::System);
    // It passes through, and a copy keeps it.
    EXPECT_EQ(Kind([] {
                  Where("vok::Outer", [] {
                      Where("vok::Inner", [] { Limits().RaiseExceeded(&Limits::m_uNodes); });
                  });
              }),
              Msg_Kind::Limit);
}

}  // namespace
}  // namespace vok
