// SPDX-License-Identifier: MIT
// Console, debugger and log file.
#include <ctime>
#include <map>
#include <sstream>
#include <thread>

#include "tests/support.h"

namespace vok {
namespace {

namespace fs = std::filesystem;

class MsgConsole : public testing::Test {
    const Msg_Capture m_oCapture;
};
class MsgLog : public MsgConsole {
    const Scratch_Dir m_oDir;
};

std::string Ids() {
    return "<" + std::to_string(sys::ProcessId()) + "," + std::to_string(sys::ThreadId()) + "> ";
}

// sText with every digit as 0 and the build date of the banner as DATE.
std::string Shape(std::string sText) {
    const std::string sVersion = "(vok 2.1.143-1  ";
    const std::size_t uVersion = sText.find(sVersion);
    if (uVersion != std::string::npos) sText.replace(uVersion + sVersion.size(), 11, "DATE");
    for (char& c : sText) c = c >= '0' && c <= '9' ? '0' : c;
    return sText;
}

std::string BannerShape() {
    return Shape(Ids() + "### ===== 2026-01-31 23:59:59 (vok 2.1.143-1  Nov 22 2018) =====\n");
}

// Whether sText shows the time of this very moment, give or take a second.
bool ShowsNow(const std::string& sText) {
    for (std::time_t iTime = std::time(nullptr) - 2, iEnd = iTime + 4; iTime < iEnd; ++iTime) {
        char sTime[32];
        std::strftime(sTime, sizeof(sTime), "%Y-%m-%d %H:%M:%S ", std::localtime(&iTime));
        if (sText.find(sTime) != std::string::npos) return true;
    }
    return false;
}

// What oBody prints to standard output and to the error output.
template <class F>
Pair Printed(F&& oBody) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    oBody();
    const std::string sOut = testing::internal::GetCapturedStdout();
    return {sOut, testing::internal::GetCapturedStderr()};
}

TEST_F(MsgConsole, DefaultWriterClipsCharactersAndChoosesTheStream) {
    Msg::SetWriter(Msg::DefaultWriter());
    const std::string sLong(5000, 'x');
    EXPECT_EQ(Printed([&] { Msg::Emit(Msg::MODE_REPORT, "%0 ä\xE4€ %1", 0, "a", sLong.c_str()); }),
              Pair("a ääÿ " + sLong + "\n", ""));
    const char* const psWords[] = {"vok", "--x"};
    EXPECT_EQ(Printed([&] {
                  Msg::SetConsoleLevel(1);
                  Msg::Abort(2, psWords);
                  Msg::OpenFiles(1, 2);  // back to standard output
              }),
              Pair("1 open files (peak 2)\n", "******** PROGRAM ABORTED ********** \nvok --x \n"));
}

#ifdef __GLIBC__
// A program may put another file in the place of its standard output.
TEST_F(MsgConsole, DefaultWriterFollowsStandardOutput) {
    const Scratch_Dir oDir;
    Msg::SetWriter(Msg::DefaultWriter());
    std::FILE* const pOld = std::exchange(stdout, std::fopen("out", "w"));
    std::fputs("first ", stdout);
    const Pair oPrinted = Printed([] { Msg::OpenFiles(1, 2); });
    std::fclose(std::exchange(stdout, pOld));
    EXPECT_EQ(oPrinted, Pair("", ""));
    EXPECT_EQ(OnDisk("out"), "first 1 open files (peak 2)\n");
}
#endif

TEST_F(MsgConsole, BannerComesBeforeRaisedAndLoggedMessages) {
    EXPECT_FALSE(Msg::SetBanner(true));
    EXPECT_TRUE(Msg::Banner());
    EXPECT_EQ(Raised([] { Msg::NodeIsEmpty(); }), "node is empty\n");
    const std::string sBanner = Msg_Capture::TakeConsole();
    EXPECT_EQ(Shape(sBanner), BannerShape() + "|");
    EXPECT_TRUE(ShowsNow(sBanner)) << sBanner;
    Msg::UnexpectedException("f");
    EXPECT_EQ(Shape(Msg_Capture::TakeConsole()), BannerShape() + "|");
    Msg::OpenFiles(1, 1);
    EXPECT_EQ(Msg_Capture::TakeConsole(), "1 open files (peak 1)\n|");
    EXPECT_TRUE(Msg::SetBanner(false));
    Msg_Exception oError;
    oError.Append("hello\n");
    Msg::LogException(oError);  // always with a banner
    EXPECT_EQ(Shape(Msg_Capture::TakeConsole()), BannerShape() + "hello\n|");
}

TEST_F(MsgConsole, DebugOutputTakesThePlaceOfTheWriter) {
    if (sys::HasDebugger()) GTEST_SKIP();
    Msg::SetDebugOutput(true);
    Msg::Emit(Msg::MODE_REPORT, "ä%0", 0, "€");
    EXPECT_EQ(Msg_Capture::TakeDebug(), "ä€\n");
    EXPECT_EQ(Msg_Capture::TakeConsole(), "");
    EXPECT_TRUE(Msg::SetDebugOutput(false));
    // Without a debugger the default is silent until asked for.
    Msg::SetDebugSink(nullptr);
    EXPECT_EQ(Printed([] {
                  Msg::Log("one\n", 0);
                  Msg::SetDebugOutput(true);
                  Msg::Log("two\n", 0);
              }),
              Pair("", "two\n"));
}

TEST_F(MsgConsole, HoldsBackWhatNoWriterTakes) {
    Msg::SetWriter({nullptr, nullptr});
    Msg::OpenFiles(1, 2);
    EXPECT_EQ(Msg::HeldBack(), "1 open files (peak 2)\n");
    const std::string sLong = std::string(1021, 'x') + "ä";
    Msg::Emit(Msg::MODE_REPORT, "%0", 0, sLong.c_str());
    EXPECT_EQ(Msg::HeldBack(), std::string(1021, 'x') + "\n");
    Msg::Emit(Msg::MODE_REPORT, "%0%0", 0, sLong.c_str());
    EXPECT_LE(Msg::HeldBack().size(), 1022u);
}

// A writer that emits a message of its own does not wait for itself.
TEST_F(MsgConsole, WriterMayEmitAndThrow) {
    Msg::SetWriter({[](const char*, std::size_t) {
                        Msg::OpenFiles(8, 9);
                        Msg::NodeIsEmpty();
                    },
                    nullptr});
    EXPECT_EQ(Msg::Emit(Msg::MODE_REPORT, "hello", 0), 0);
    const std::string sHeld = Msg::HeldBack();
    EXPECT_TRUE(sHeld.starts_with("8 open files (peak 9)\nhello")) << sHeld;
}

TEST_F(MsgLog, AppendsMessagesWithIdsAndBanner) {
    std::ofstream("a.log") << "old\n";
    Msg::SetLogFile("a.log");
    EXPECT_EQ(Msg::LogFile(), "a.log");
    EXPECT_NE(Raised([] { Msg::NodeIsEmpty(); }), "");
    Msg::UnexpectedException("f", "g");
    Msg::OpenFiles(1, 1);  // reports are not logged
    EXPECT_EQ(LinesOnDisk("a.log"),
              "old\n" + Ids() + "node is empty\n" + Ids() + "unexpected exception in f: g\n");
    fs::remove("a.log");  // no handle is kept
    Msg::SetBanner(true);
    EXPECT_NE(Raised([] { Msg::NodeIsEmpty(); }), "");
    EXPECT_EQ(Shape(LinesOnDisk("a.log")), BannerShape() + Shape(Ids()) + "node is empty\n");
    Msg::SetLogFile("");
    EXPECT_EQ(Msg::LogFile(), "");
    fs::remove("a.log");
    EXPECT_NE(Raised([] { Msg::NodeIsEmpty(); }), "");
    EXPECT_FALSE(fs::exists("a.log"));
}

TEST_F(MsgLog, Flags) {
    const struct {
        int iFlags;
        std::string sFile;
        const char* sDebug;
    } oRows[] = {
        {0, "text", "text"},
        {Msg::LOG_NEWLINE, "text\n", "text\n"},
        {Msg::LOG_IDS | Msg::LOG_NO_DEBUG, Ids() + "text", ""},
        {Msg::LOG_NEWLINE | Msg::LOG_NO_DEBUG, "text\n", ""},
        {Msg::LOG_TIME | Msg::LOG_IDS, "2026-01-31 23:59:59 " + Ids() + "text", "text"},
    };
    for (const auto& oRow : oRows) {
        fs::remove("a.log");
        Msg::SetLogFile("a.log");
        Msg::Log("text", oRow.iFlags);
        EXPECT_EQ(Shape(LinesOnDisk("a.log")), Shape(oRow.sFile));
        EXPECT_EQ(ShowsNow(LinesOnDisk("a.log")), (oRow.iFlags & Msg::LOG_TIME) != 0);
        EXPECT_EQ(Msg_Capture::TakeDebug(), oRow.sDebug);
    }
}

TEST_F(MsgLog, Paths) {
    Msg::SetLogFile("grün.log");
    EXPECT_EQ(Msg::LogFile(), "gr~n.log");
    EXPECT_TRUE(fs::exists("gr~n.log"));
    if (sys::IS_WINDOWS) return;  // what follows would write to drives
    // A path that does not open is followed by the usual places, of which the first one that
    // opens counts.
    Texts oPlaces;
    for (const char cDrive : std::string_view("CDEFG")) {
        for (const char* sFolder : {":/tmp", ":/temp"})
            oPlaces.push_back(cDrive + std::string(sFolder));
    }
    for (const char cDrive : std::string_view("CDEFG"))
        oPlaces.push_back(cDrive + std::string(":"));
    for (const std::string& s : oPlaces) fs::create_directories(s);
    for (const std::string& s : oPlaces) {
        Msg::SetLogFile("no/such/dir/a.log");
        EXPECT_EQ(Msg::LogFile(), s + "/vok2.log");
        fs::remove_all(s);
    }
    const bool bThere = fs::exists("/tmp/vok2.log");
    Msg::SetLogFile("no/such/dir/a.log");
    EXPECT_EQ(Msg::LogFile(), "/tmp/vok2.log");
    if (!bThere) fs::remove("/tmp/vok2.log");
    // A path too long is replaced before it is tried; one shorter is tried and found to be a
    // directory. Both places exist here, and differ in case.
    fs::create_directories("c:/tmp");
    fs::create_directories("C:/tmp");
    const std::string sLong = "./" + std::string(1016, '/');
    Msg::SetLogFile(sLong.c_str());
    EXPECT_EQ(Msg::LogFile(), "c:/tmp/vok2.log");
    Msg::SetLogFile(sLong.substr(1).c_str());
    EXPECT_EQ(Msg::LogFile(), "C:/tmp/vok2.log");
}

// A message raised while logging is not logged, and nobody waits for himself.
TEST_F(MsgLog, SinkMayEmit) {
    Msg::SetLogFile("a.log");
    Msg::SetDebugSink([](const char*) {
        Msg::OpenFiles(8, 9);
        Msg::NodeIsEmpty();
    });
    EXPECT_EQ(Raised([] { Msg::NodeIsNotUnique(); }), "node is not unique\n");
    EXPECT_EQ(LinesOnDisk("a.log"), Ids() + "node is not unique\n");
    EXPECT_EQ(Msg_Capture::TakeConsole(), "8 open files (peak 9)\n|");
}

// What runs in a process of its own, which has to end on time and with status 0.
template <class F>
void EndsWell(F&& oBody) {
    if (sys::IS_WINDOWS) GTEST_SKIP() << "takes a fork";
    const auto oRun = [&] {
        std::thread([] {
            std::this_thread::sleep_for(std::chrono::seconds(20));
            std::_Exit(99);
        }).detach();
        oBody();
        std::_Exit(0);
    };
    EXPECT_EXIT(oRun(), testing::ExitedWithCode(0), "");
}

std::atomic<int> g_iInSink{0};

void WaitFor(int iInSink) {
    while (g_iInSink < iInSink) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// One logs, and from the sink emits; the other emits, and from the sink logs: neither waits for
// the other for ever.
TEST_F(MsgLog, SinksThatEmitAndLogDoNotWaitForEachOther) {
    EndsWell([] {
        Msg::SetDebugOutput(true);
        Msg::SetDebugSink([](const char* sText) {
            if (*sText == '!') return;
            ++g_iInSink;
            WaitFor(2);
            if (*sText == 'l') {
                Msg::Emit(Msg::MODE_REPORT, "!", 0);
            } else {
                Msg::Log("!", 0);
            }
        });
        std::thread oOther([] { Msg::Log("log", 0); });
        Msg::Emit(Msg::MODE_REPORT, "emit", 0);
        oOther.join();
    });
}

TEST_F(MsgLog, ExitDoesNotWaitForAWriteThatNeverEnds) {
    EndsWell([] {
        Msg::SetDebugSink([](const char*) {
            ++g_iInSink;
            for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
        });
        std::thread([] { Msg::Log("x", 0); }).detach();
        WaitFor(1);
        std::exit(0);
    });
}

// The allocator of AddressSanitizer does not survive a fork while other threads use it: a child
// would wait for its locks.
#ifndef __has_feature
#define __has_feature(x) 0
#endif
constexpr std::size_t SPEAKERS = __has_feature(address_sanitizer) ? 0 : 3;

// Whatever another thread, or this one, is in the middle of.
TEST_F(MsgLog, ChildrenOfAForkGoOn) {
    Msg::SetLogFile("a.log");
    const auto oSpeak = [] {
        (void)Raised([] { Msg::NodeIsEmpty(); });
        Msg::OpenFiles(1, 1);
        Msg::Log("x", 0);
        Mem::Free(Mem::Create(std::size_t{8} << 20));
    };
    std::atomic<bool> bEnd{false};
    std::vector<std::thread> oThreads(SPEAKERS);
    for (std::thread& o : oThreads) {
        o = std::thread([&, bSpeaks = &o != &oThreads[0]] {
            while (!bEnd) bSpeaks ? oSpeak() : Mem::Free(Mem::Create(std::size_t{8} << 20));
        });
    }
    for (int i = 0; i < 20; ++i) EndsWell(oSpeak);
    bEnd = true;
    for (std::thread& o : oThreads) o.join();
    // From inside of a sink and of a writer.
    static void (*s_pSpeak)() = oSpeak;
    Msg::SetDebugSink([](const char*) {
        Msg::SetDebugSink(nullptr);
        EndsWell(s_pSpeak);
    });
    Msg::Log("x", 0);
    Msg::SetWriter({[](const char*, std::size_t) { EndsWell(s_pSpeak); }, nullptr});
    Msg::OpenFiles(1, 1);
    // While another is in the middle of a log write, which the child has nobody to end for.
    static std::atomic<bool> s_bEnd{false};
    g_iInSink = 0;
    Msg::SetDebugSink([](const char*) {
        for (++g_iInSink; !s_bEnd;) std::this_thread::yield();
    });
    std::thread oOther([] { Msg::Log("x", 0); });
    WaitFor(1);
    Msg::SetWriter(
        {[](const char*, std::size_t) { EndsWell([] { (void)Msg::LogFile(); }); }, nullptr});
    Msg::OpenFiles(1, 1);
    s_bEnd = true;
    oOther.join();
}

TEST_F(MsgLog, MessagesOfThreadsArriveWhole) {
    constexpr int ROUNDS = 50;
    Msg::SetLogFile("a.log");
    std::vector<std::thread> oThreads;
    std::map<std::string, int> oExpected;
    for (const std::string sId : {"one", "two", "three", "four"}) {
        oExpected["id \"" + sId + "\" not found"] = ROUNDS;
        oExpected["unexpected exception in f: " + sId] = ROUNDS;
        oThreads.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) {
                EXPECT_EQ(Failing([&] { Msg::IdNotFound(sId.c_str()); }),
                          "id \"" + sId + "\" not found");
                Msg::UnexpectedException("f", sId.c_str());
                Msg::OpenFiles(1, 1);
                Msg::SetBanner(false);
                (void)Msg::HeldBack();
            }
        });
    }
    for (std::thread& oThread : oThreads) oThread.join();

    std::istringstream oLog(LinesOnDisk("a.log"));
    std::map<std::string, int> oLines;
    for (std::string sLine; std::getline(oLog, sLine);) {
        EXPECT_TRUE(sLine.starts_with("<")) << sLine;
        ++oLines[sLine.substr(sLine.find("> ") + 2)];
    }
    EXPECT_EQ(oLines, oExpected);
    EXPECT_EQ(Msg_Capture::TakeConsole(), Repeat("1 open files (peak 1)\n|", 4 * ROUNDS));
}

}  // namespace
}  // namespace vok
