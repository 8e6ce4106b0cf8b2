// SPDX-License-Identifier: MIT
// The operating system as the library sees it.
#include "vok/sys/sys.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <memory>
#include <thread>
#include <tuple>

#include "tests/support.h"
#include "vok/sys/counter.h"
#include "vok/sys/page_cache.h"

namespace vok::sys {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t MIB = std::size_t{1} << 20;

struct Closer {
    void operator()(std::FILE* pFile) const noexcept { (void)std::fclose(pFile); }
};
using Handle = std::unique_ptr<std::FILE, Closer>;

Handle Open(const char* sPath, const char* sMode) {
    return Handle(OpenFile(sPath, sMode, Sharing::All));
}

TEST(SysThreads, HaveIdsBlocksAndCountersOfTheirOwn) {
    std::atomic<u3_t> uSum{0};
    FetchAdd<u3_t>(uSum, 1);
    const u2_t uProcess = ProcessId();
    const u2_t uThread = ThreadId();
    void* const pBlock = ThreadBlock(100);
    ASSERT_NE(pBlock, nullptr);
    std::memset(pBlock, 1, 100);
    const auto oCount = [&] {
        for (int i = 0; i < 20000; ++i) FetchAdd<u3_t>(uSum, 1);
    };
    std::thread oOther([&] {
        EXPECT_EQ(ProcessId(), uProcess);
        EXPECT_NE(ThreadId(), uThread);
        void* const pOwn = ThreadBlock(100);
        EXPECT_TRUE(pOwn != nullptr && pOwn != pBlock);
        std::memset(pOwn, 2, 100);
        oCount();
    });
    oCount();
    oOther.join();
    EXPECT_EQ(uSum, 40001u);
    EXPECT_EQ(ThreadBlock(10), pBlock);
    EXPECT_EQ(std::string(static_cast<char*>(pBlock), 100), std::string(100, '\1'));
    void* const pLarge = ThreadBlock(1 << 20);
    ASSERT_NE(pLarge, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pLarge) % alignof(std::max_align_t), 0u);
    std::memset(pLarge, 3, 1 << 20);
}

TEST(SysTime, OfTheClockAndOfTheTimeZone) {
    const auto oStart = std::chrono::steady_clock::now();
    SleepMs(30);
    const auto oSlept = std::chrono::steady_clock::now() - oStart;
    EXPECT_GE(oSlept, std::chrono::milliseconds(25));
    EXPECT_LT(oSlept, std::chrono::seconds(20));
    EXPECT_NEAR(static_cast<double>(UnixTime()), static_cast<double>(std::time(nullptr)), 2);
    static char s_sZone[] = "TZ=XYZ-5:30";
    ::putenv(s_sZone);
    ::tzset();
    for (const std::time_t iTime : {951782400LL, 1795545356LL, 2147483648LL, 7258118399LL}) {
        const std::tm oTm = *std::localtime(&iTime);
        const Calendar o = LocalTime(iTime);
        EXPECT_EQ(std::tie(o.iHour, o.iMinute, o.iSecond, o.iDay),
                  std::tie(oTm.tm_hour, oTm.tm_min, oTm.tm_sec, oTm.tm_mday));
        EXPECT_EQ(std::pair(o.iYear - 1900, o.iMonth - 1), std::pair(oTm.tm_year, oTm.tm_mon));
    }
}

TEST(SysError, TextsFitTheirBuffers) {
    char sBuf[512];
    const std::size_t uWhole = SystemErrorText(2, sBuf, sizeof(sBuf));
    const std::string sWhole(sBuf, uWhole);
    EXPECT_GT(uWhole, 8u);
    EXPECT_GT(sBuf[uWhole - 1], ' ');  // no line break
    for (const std::size_t uSize :
         {std::size_t{0}, std::size_t{1}, std::size_t{8}, uWhole, uWhole + 1}) {
        std::memset(sBuf, '#', sizeof(sBuf));
        const std::size_t uLength = SystemErrorText(2, sBuf, uSize);
        EXPECT_EQ(uLength, uSize == 0 ? 0 : uSize - 1);
        EXPECT_EQ(std::string(sBuf, uLength), sWhole.substr(0, uLength));
        EXPECT_EQ(sBuf[uSize], '#') << uSize;
        EXPECT_EQ(sBuf[uLength], uSize != 0 ? 0 : '#');
    }
    SetLastError(13);
    SetRuntimeError(IS_WINDOWS ? 2 : 13);
    EXPECT_EQ(LastError(), 13u);
    // Numbers that both systems share, and one that only this one has.
    for (const u2_t uCode : {1u, 13u, 34u, 41u}) EXPECT_EQ(RuntimeErrno(uCode), uCode);
    EXPECT_EQ(RuntimeErrno(ENAMETOOLONG), 38u);
    EXPECT_EQ(RuntimeErrno(ENOTEMPTY), 41u);
    EXPECT_EQ(RuntimeErrno(42), IS_WINDOWS ? 42u : 0x10000u + 42);
}

TEST(SysConsole, BytesComeBehindWhatWasPrinted) {
    const std::string sLong(100000, 'x');
    for (const bool bError : {false, true}) {
        bError ? testing::internal::CaptureStderr() : testing::internal::CaptureStdout();
        std::fputs("first ", bError ? stderr : stdout);
        WriteToConsole(bError, sLong.data(), sLong.size());
        WriteToConsole(bError, " last", 5);
        EXPECT_EQ(bError ? testing::internal::GetCapturedStderr()
                         : testing::internal::GetCapturedStdout(),
                  "first " + sLong + " last");
    }
    const Scratch_Dir oDir;
    const Handle oFile(std::fopen("a", "w"));
    EXPECT_FALSE(IsTerminal(oFile.get()));
    SetBinary(oFile.get());
    std::fputs("a\nb", oFile.get());
    EXPECT_EQ(SizeOf(oFile.get()), 3);
    EXPECT_EQ(std::ranges::count(EndingSignals(), SIGTERM), 1);
}

TEST(SysFile, Modes) {
    const struct {
        const char* sMode;
        bool bOpensMissing;
        const char* sAfter;  // what was read of "old", and the file with "+" written to its end
    } oRows[] = {
        {"rb", false, "old|old"}, {"r+b", false, "old|old+"}, {"wb", true, "|+"},
        {"w+b", true, "|+"},      {"ab", true, "|old+"},      {"a+b", true, "old|old+"},
    };
    const Scratch_Dir oDir;
    for (const auto& oRow : oRows) {
        fs::remove(ToPath("größe"));
        SetRuntimeError(0);
        EXPECT_EQ(Open("größe", oRow.sMode) != nullptr, oRow.bOpensMissing) << oRow.sMode;
        EXPECT_EQ(RuntimeError() == ENOENT, !oRow.bOpensMissing);
        ToDisk("größe", "old");
        char sRead[8] = {};
        {
            const Handle oFile = Open("größe", oRow.sMode);
            ASSERT_NE(oFile, nullptr) << oRow.sMode;
            (void)Seek(oFile.get(), 0, SEEK_SET);
            const std::size_t uRead = std::fread(sRead, 1, 4, oFile.get());
            std::clearerr(oFile.get());
            (void)Seek(oFile.get(), 0, SEEK_END);
            EXPECT_EQ(uRead, std::strlen(sRead));
            (void)std::fputs("+", oFile.get());
        }
        EXPECT_EQ(sRead + ("|" + OnDisk("größe")), oRow.sAfter) << oRow.sMode;
        const int iDescriptor = OpenDescriptor("größe", oRow.sMode, Sharing::All);
        EXPECT_GE(iDescriptor, 0);
        CloseDescriptor(iDescriptor);
        EXPECT_EQ(Open(".", oRow.sMode), nullptr) << oRow.sMode;
    }
}

TEST(SysFile, SizesAndPlaces) {
    const Scratch_Dir oDir;
    ToDisk("a", "12345");
    {
        const Handle oFile = Open("a", "r+b");
        constexpr i3_t FAR = i3_t{5} << 30;  // more than 32 bits of offset
        EXPECT_TRUE(Seek(oFile.get(), FAR, SEEK_SET));
        EXPECT_EQ(Tell(oFile.get()), FAR);
        EXPECT_FALSE(Seek(oFile.get(), -1, SEEK_SET));
        EXPECT_TRUE(Seek(oFile.get(), 4, SEEK_SET));
        std::fputs("abc", oFile.get());  // still in the stream's buffer
        EXPECT_EQ(SizeOf(oFile.get()), 7);
        EXPECT_TRUE(Seek(oFile.get(), 1, SEEK_SET));
        EXPECT_EQ(SizeOf(oFile.get()), 7);
        EXPECT_EQ(Tell(oFile.get()), 1);  // asking moves nothing
    }
    EXPECT_TRUE(TruncateFile("a", 2));
    EXPECT_EQ(OnDisk("a"), "12");
    EXPECT_EQ(SizeOf("a"), 2);
    EXPECT_TRUE(SyncFile("a"));
    EXPECT_EQ(SyncFile(""), !IS_WINDOWS);
    for (const char* sMissing : {"no", "no/a"}) {
        EXPECT_EQ(SizeOf(sMissing), -1);
        EXPECT_FALSE(TruncateFile(sMissing, 0) || SyncFile(sMissing) || MayWrite(sMissing) ||
                     IsLink(sMissing));
    }
}

TEST(SysFile, MadeAndRemoved) {
    const Scratch_Dir oDir;
    EXPECT_TRUE(CreateNew("ä"));
    EXPECT_TRUE(MayWrite("ä"));
    EXPECT_FALSE(CreateNew("ä"));
    EXPECT_EQ(RuntimeError(), static_cast<u2_t>(EEXIST));
    const std::pair<const char*, bool> ROWS[] = {
        {"x", true}, {"x/y/z", true}, {"x//y/w/", true}, {"x/y", true}, {"ä/b", false}};
    for (const auto& [sPath, bMade] : ROWS) {
        EXPECT_EQ(MakeDirectories(sPath), bMade) << sPath;
        EXPECT_EQ(fs::is_directory(ToPath(sPath)), bMade) << sPath;
    }
    fs::permissions(ToPath("ä"), fs::perms{0444});
    EXPECT_FALSE(MayWrite("ä"));
    fs::permissions(ToPath("ä"), fs::perms{0640});
    if (!IS_WINDOWS) {
        const auto oMode = [](const char* s) {
            return static_cast<unsigned>(fs::status(s).permissions());
        };
        fs::create_symlink("nowhere", "link");
        EXPECT_TRUE(IsLink("link"));
        EXPECT_FALSE(CreateNew("link"));
        EXPECT_TRUE(CreateNew("n"));
        EXPECT_EQ(oMode("n"), 0600u);
        CopyMode("ä", "n");
        EXPECT_EQ(oMode("n"), 0640u);
        ToDisk("plain", "");
        CopyMode("nowhere", "n");
        EXPECT_EQ(oMode("n"), oMode("plain"));
    }
    RemoveOnInterrupt("ä");
    EXPECT_EQ(SizeOf("ä"), -1);
}

TEST(SysPages, KeepTheirBytes) {
    constexpr std::size_t uFrom = 2 * MIB;
    char* p = static_cast<char*>(AllocPages(uFrom));
    ASSERT_NE(p, nullptr);
    std::size_t uSize = uFrom;
    std::memset(p, 'a', uSize);
    // Grown in place, moved, into a freed block, and less than before.
    void* const pFreed = AllocPages(40 * MIB);
    FreePages(pFreed, 40 * MIB);
    for (const std::size_t uNext : {uFrom + 1, 3 * MIB, 30 * MIB, 100 * MIB, uFrom}) {
        p = static_cast<char*>(ReallocPages(p, uSize, uNext));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 16, 0u);
        EXPECT_EQ(std::string_view(p, uFrom), std::string(uFrom, 'a')) << uNext;
        p[uNext - 1] = 'a';
        uSize = uNext;
    }
    FreePages(p, uSize);
    EXPECT_EQ(AllocPages(SIZE_MAX / 4), nullptr);
}

TEST(SysPages, CacheHandsOutWhatFits) {
    PageHeader oBlocks[] = {{32 * MIB, 0}, {8 * MIB, 0}, {128 * MIB, 0}, {89 * MIB, 0}};
    PageCache oCache;
    EXPECT_EQ(oCache.Take(1, false), nullptr);
    for (std::size_t u = 0; u < 4; ++u) EXPECT_EQ(oCache.Give(&oBlocks[u]), u < 3) << u;
    const struct {
        std::size_t uMapped;
        bool bLargest;
        PageHeader* pBlock;
    } oRows[] = {
        {129 * MIB, false, nullptr}, {9 * MIB, false, &oBlocks[0]}, {1, true, &oBlocks[2]},
        {1, false, &oBlocks[1]},     {1, false, nullptr},
    };
    for (const auto& oRow : oRows) EXPECT_EQ(oCache.Take(oRow.uMapped, oRow.bLargest), oRow.pBlock);
    // No more than sixteen of them.
    PageHeader oSmall[17] = {};
    for (std::size_t u = 0; u < 17; ++u) EXPECT_EQ(oCache.Give(&oSmall[u]), u < 16) << u;
    EXPECT_TRUE(oCache.IsFirmFor(64 * MIB));
    EXPECT_FALSE(oCache.IsFirmFor(64 * MIB + 1));
}

}  // namespace
}  // namespace vok::sys
