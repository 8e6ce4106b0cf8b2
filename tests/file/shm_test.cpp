// SPDX-License-Identifier: MIT
// Shared memory as a stream, between threads and between processes.
#include "vok/file/shm.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/file/peer.h"
#include "vok/base/mem.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vok {
namespace {

using Mode = File_Shm::Mode;

constexpr std::size_t MIB = std::size_t{1} << 20;
const std::string g_sName = "vok-test-" + std::to_string(sys::ProcessId());
const char* const NAME = g_sName.c_str();

// The name is free before and behind each test.
class Shm_Test : public File_Test {
  protected:
    Shm_Test() { (void)File_Shm::Remove(NAME); }
    ~Shm_Test() override {
        (void)File_Shm::Remove(NAME);
        File_Shm::CheckAllClosed();
    }
};
using ShmThreads = Shm_Test;

std::string All(File_Shm& o) {
    Arr<char> oBytes;
    o.Seek(0);
    o.Read(oBytes, File_Stream::ALL);
    return {oBytes.Beg(), oBytes.Size()};
}

// Whatever is done to it is what comes of a buffer in memory.
TEST_F(Shm_Test, IsAStreamLikeABuffer) {
    File_Shm oShm(NAME, Mode::Create, 4 * MIB);
    File_Buf oBuf("w+");
    std::mt19937 oRandom(1);
    const std::string sNoise = Noise(MIB, 8);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t uSize = oRandom() % (i % 100 == 0 ? 300000 : 200);
        File_Stream* const apStream[] = {&oShm, &oBuf};
        std::string asSeen[2];
        const u2_t uWhat = RandomBelow(oRandom, 4), uWhence = RandomBelow(oRandom, 3);
        const auto iOffset = static_cast<i3_t>(oRandom() % (2 * MIB)) - static_cast<i3_t>(MIB / 2);
        for (unsigned u = 0; u < 2; ++u) {
            File_Stream& o = *apStream[u];
            Arr<char> oRead;
            asSeen[u] = Failing([&] {
                if (uWhat == 0) o.Seek(iOffset, static_cast<int>(uWhence));
                if (uWhat == 1 && o.Tell() < static_cast<i3_t>(3 * MIB)) {
                    o.Write(sNoise.data() + i, uSize);
                }
                if (uWhat == 2) o.Read(oRead, uSize);
                if (uWhat == 3) {
                    char s[200];
                    const std::size_t uRead = o.Read(s, uSize % sizeof(s), true);
                    oRead.Add(s, uRead);
                }
            });
            asSeen[u] += "|" + std::string(oRead.Beg(), oRead.Size());
            asSeen[u] += std::to_string(o.Tell());
        }
        ASSERT_TRUE(asSeen[0] == asSeen[1]) << i;
        ASSERT_EQ(oShm.Size(), oBuf.Size());
    }
    EXPECT_TRUE(All(oShm) == std::string(oBuf.Data(), oBuf.Size()));
    EXPECT_GT(oShm.Size(), MIB);
}

TEST_F(Shm_Test, ReadersSeeWhatIsPublished) {
    File_Shm oWriter(NAME, Mode::Create);
    File_Shm oEarly(NAME);
    oWriter.Write("first");
    EXPECT_EQ(All(oEarly), "");
    EXPECT_FALSE(oEarly.Refresh());
    oWriter.Publish();
    EXPECT_EQ(All(oEarly), "");
    EXPECT_TRUE(oEarly.Refresh());
    EXPECT_FALSE(oEarly.Refresh());
    EXPECT_EQ(All(oEarly), "first");
    oWriter.Write(" second");
    const File_Shm oOther(NAME);
    EXPECT_EQ(oOther.Size(), 5u);
    oWriter.Publish();
    oWriter.Publish();
    EXPECT_TRUE(oEarly.Refresh());
    EXPECT_EQ(oEarly.Generation(), 3u);
    EXPECT_EQ(All(oEarly), "first second");
    // What was published stays, what was not may be changed.
    oWriter.Write("rubbish");
    oWriter.Seek(12);
    oWriter.Write("x", 1);
    for (const i3_t iAt : {0, 11}) {
        oWriter.Seek(iAt);
        EXPECT_TRUE(Has(Failing([&] { oWriter.Write("!"); }), "file write error after position"));
    }
    EXPECT_EQ(All(oWriter), "first secondxubbish");
    EXPECT_TRUE(Has(Failing([&] { oEarly.Write("!"); }), "is not open for write"));
    EXPECT_TRUE(Has(Failing([&] { oEarly.Publish(); }), "is not open for write"));
    oWriter.Close();
    // The next one goes on there, and nothing that was left shows in a gap.
    oWriter.Open(NAME, Mode::Write);
    EXPECT_EQ(oWriter.Tell(), 12);
    oWriter.Seek(3, File_Stream::FROM_END);
    oWriter.Write("third");
    oWriter.Publish();
    EXPECT_TRUE(oEarly.Refresh());
    EXPECT_EQ(All(oEarly), std::string("first second\0\0\0third", 20));
}

TEST_F(Shm_Test, WhoMayOpenIt) {
    struct Case {
        bool bThere;
        bool bWritten;  // by another one at the time
        Mode eMode;
        u3_t uLimit;
        const char* sWhy;
    };
    const Case CASES[] = {
        {false, false, Mode::Read, 0, "ENOENT"},
        {false, false, Mode::Write, 0, "ENOENT"},
        {false, false, Mode::Create, 100, ""},
        {false, false, Mode::CreateOrOpen, 100, ""},
        {false, false, Mode::Create, 0, "EINVAL"},
        {false, false, Mode::Create, (u3_t{1} << 46) + 1, "EINVAL"},
        {true, false, Mode::Read, 0, ""},
        {true, false, Mode::Write, 0, ""},
        {true, false, Mode::Create, 100, "EEXIST"},
        {true, false, Mode::CreateOrOpen, 100, ""},
        {true, true, Mode::Read, 0, ""},
        {true, true, Mode::Write, 0, "EBUSY"},
        {true, true, Mode::CreateOrOpen, 100, "EBUSY"},
    };
    for (const Case& o : CASES) {
        (void)File_Shm::Remove(NAME);
        File_Shm oOther, oKeeps, oShm;
        if (o.bThere) {
            oOther.Open(NAME, Mode::Create, 200);
            oKeeps.Open(NAME);
            if (!o.bWritten) oOther.Close();
        }
        EXPECT_TRUE(Raises(o.sWhy, [&] { oShm.Open(NAME, o.eMode, o.uLimit); }));
        EXPECT_EQ(oShm.IsOpen(), *o.sWhy == 0);
        EXPECT_EQ(oShm.Limit(), !oShm.IsOpen() ? 0 : o.bThere ? 200u : 100u);
    }
    for (const std::string& s : {std::string(), std::string("a/b"), std::string(".a"),
                                 std::string("größe"), std::string(201, 'a')}) {
        File_Shm o;
        EXPECT_TRUE(Has(Failing([&] { o.Open(s.c_str(), Mode::Create); }), "errno=EINVAL"));
        EXPECT_TRUE(Has(Failing([&] { File_Shm::Remove(s.c_str()); }), "errno=EINVAL"));
    }
    File_Shm oClosed;
    char c = 0;
    const std::function<void()> CLOSED[] = {
        [&] { oClosed.Read(&c, 1); }, [&] { oClosed.Write("x"); },   [&] { oClosed.Seek(0); },
        [&] { oClosed.Publish(); },   [&] { (void)oClosed.Tell(); }, [&] { oClosed.Flush(); },
        [&] { oClosed.Refresh(); },
    };
    for (const auto& o : CLOSED) EXPECT_EQ(Failing(o), "object points to nothing");
}

TEST_F(Shm_Test, GrowsUpToItsLimit) {
    constexpr u3_t LIMIT = 40 * MIB + 7;
    const std::string sPart = Noise(3 * MIB, 8);
    File_Shm oWriter(NAME, Mode::Create, LIMIT);
    File_Shm oReader(NAME);
    while (oWriter.Size() + sPart.size() <= LIMIT) {
        oWriter.Write(sPart.data(), sPart.size());
        oWriter.Publish();
        ASSERT_TRUE(oReader.Refresh());
        Arr<char> oRead;
        EXPECT_EQ(oReader.Read(oRead, File_Stream::ALL), sPart.size());
        ASSERT_EQ(std::string_view(oRead.Beg(), oRead.Size()), sPart);
    }
    const auto uLeft = static_cast<std::size_t>(LIMIT - oWriter.Size());
    EXPECT_TRUE(
        Raises("Cannot resize shared memory '" + g_sName + "' to size 41943048: errno=EFBIG",
               [&] { oWriter.Write(sPart.data(), uLeft + 1); }));
    oWriter.Write(sPart.data(), uLeft);
    oWriter.Seek(100, File_Stream::FROM_END);
    EXPECT_TRUE(Has(Failing([&] { oWriter.Write("x"); }), "EFBIG"));
    EXPECT_EQ(oWriter.Size(), LIMIT);
    oWriter.Publish();
    EXPECT_TRUE(oReader.Refresh());
    EXPECT_EQ(oReader.Size(), LIMIT);
}

// Numbers that follow each other, in publications of several.
constexpr u2_t AT_A_TIME = 1000;
void PublishNumbers(File_Shm& o, u2_t& uNext) {
    for (u2_t u = 0; u < AT_A_TIME; ++u, ++uNext) o.Write(&uNext, sizeof(uNext));
    o.Publish();
}
// Reads those that have come; false where they are not what they should be.
bool TakeNumbers(File_Shm& o, u2_t& uNext) {
    (void)o.Refresh();
    if (o.Size() % (AT_A_TIME * sizeof(u2_t)) != 0) return false;
    for (u2_t uRead = 0; o.Read(&uRead, sizeof(uRead), true) != 0; ++uNext) {
        if (uRead != uNext) return false;
    }
    return uNext * sizeof(u2_t) == o.Size();
}

TEST_F(ShmThreads, ReadWhileSomebodyWrites) {
    constexpr u2_t ALL = 300 * AT_A_TIME;
    File_Shm oWriter(NAME, Mode::Create);
    std::vector<std::thread> aoThread;
    std::atomic<unsigned> uGood{0};
    for (int i = 0; i < 3; ++i) {
        aoThread.emplace_back([&uGood] {
            File_Shm oReader(NAME);
            u2_t uNext = 0;
            while (uNext < ALL && TakeNumbers(oReader, uNext)) std::this_thread::yield();
            uGood += uNext == ALL;
        });
    }
    for (u2_t uNext = 0; uNext < ALL;) PublishNumbers(oWriter, uNext);
    for (std::thread& o : aoThread) o.join();
    EXPECT_EQ(uGood, 3u);
}

// The memory grows and is published while a reader looks at it, again and again.
TEST_F(ShmThreads, RefreshWhileItGrows) {
    unsigned uFailed = 0;
    for (int iRound = 0; iRound < 150; ++iRound) {
        File_Shm oWriter(NAME, Mode::Create);
        std::atomic<bool> bReads{false};
        std::thread oThread([&] {
            try {
                File_Shm oReader(NAME);
                while (oReader.Published() == 0) {
                    (void)oReader.Refresh();
                    bReads = true;
                }
            } catch (const Msg_Exception&) {
                ++uFailed;
                bReads = true;
            }
        });
        while (!bReads) std::this_thread::yield();
        oWriter.Write("some");
        oWriter.Publish();
        oThread.join();
        oWriter.Close();
        (void)File_Shm::Remove(NAME);
    }
    EXPECT_EQ(uFailed, 0u);
}

// Is killed when it has published some and written more.
const Role_Start g_oPublish("publish", [](const std::string& sName) -> int {
    File_Shm o(sName.c_str(), Mode::Write);
    auto uNext = static_cast<u2_t>(o.Size() / sizeof(u2_t));
    for (int i = 0; i < 50; ++i) PublishNumbers(o, uNext);
    std::thread([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        Die();
    }).detach();
    for (;;) {
        const u2_t uRubbish = 0xFFFFFFFF;
        o.Write(&uRubbish, sizeof(uRubbish));
        if (o.Size() > 100 * MIB) o.Seek(static_cast<i3_t>(o.Published()));
    }
});

TEST_F(Shm_Test, AWriterThatIsKilledLeavesWholePublications) {
    File_Shm(NAME, Mode::Create).Publish();
    File_Shm oReader;
    // The memory of Windows goes with the last process that has it.
    File_Shm oFirst(NAME, Mode::CreateOrOpen);
    oReader.Open(NAME);
    oFirst.Close();
    u2_t uNext = 0;
    for (u2_t uRound = 1; uRound <= 2; ++uRound) {
        auto oPeer = Peer("publish", NAME);
        while (oPeer.wait_for(std::chrono::milliseconds(1)) == std::future_status::timeout) {
            ASSERT_TRUE(TakeNumbers(oReader, uNext));
        }
        EXPECT_NE(oPeer.get(), 0);
        EXPECT_TRUE(TakeNumbers(oReader, uNext));
        EXPECT_EQ(uNext, uRound * 50 * AT_A_TIME);
    }
    File_Shm oNext(NAME, Mode::Write);
    PublishNumbers(oNext, uNext);
    u2_t uAgain = 0;
    EXPECT_TRUE(TakeNumbers(*std::make_unique<File_Shm>(NAME), uAgain));
    EXPECT_EQ(uAgain, uNext);
}

TEST_F(Shm_Test, CountsThoseThatAreOpen) {
    const Mem_Probe oProbe;
    EXPECT_EQ(File_Shm::InUse(), 0u);
    File_Shm oWriter(NAME, Mode::Create);
    const File_Shm oReader(NAME);
    EXPECT_EQ(Failing([] { File_Shm::CheckAllClosed(); }), "still 2 shared memory in use");
    oWriter.Write("abc");
    oWriter.Publish();
    oWriter.Seek(0);
    Arr<char> oRead;
    EXPECT_TRUE(Mem_Probe::HasRefused(1, [&] { oWriter.Read(oRead, 3); }));
    EXPECT_TRUE(Mem_Probe::HasRefused(2, [&] { oWriter.Read(oRead, 3); }));
    oWriter.Seek(0);
    EXPECT_EQ(oWriter.Read(oRead, 3), 3u);
}

#ifndef _WIN32

// Where the system keeps them.
const std::string PATH = "/dev/shm/" + g_sName;

TEST_F(Shm_Test, RemovingTakesTheName) {
    File_Shm oWriter(NAME, Mode::Create);
    oWriter.Write("old");
    oWriter.Publish();
    File_Shm oReader(NAME);
    EXPECT_TRUE(File_Shm::Remove(NAME));
    EXPECT_FALSE(File_Shm::Remove(NAME));
    File_Shm oNew(NAME, Mode::Create);
    oNew.Write("new");
    oNew.Publish();
    EXPECT_EQ(All(oReader), "old");
    EXPECT_EQ(All(*std::make_unique<File_Shm>(NAME)), "new");
}

TEST_F(Shm_Test, NobodyElseHasAccess) {
    const mode_t uBefore = ::umask(0);
    File_Shm(NAME, Mode::Create).Publish();
    ::umask(uBefore);
    struct stat oStat {};
    ASSERT_EQ(::stat(PATH.c_str(), &oStat), 0);
    EXPECT_EQ(oStat.st_mode & 07777, 0600u);
    if (::geteuid() != 0) GTEST_SKIP() << "files can be given away by root only";
    ASSERT_EQ(::chown(PATH.c_str(), 1, 1), 0);
    for (const Mode e : {Mode::Read, Mode::Write, Mode::CreateOrOpen}) {
        EXPECT_TRUE(Has(Failing([&] { File_Shm(NAME, e); }), "errno=EACCES"));
    }
}

TEST_F(Shm_Test, MemoryRunsOut) {
    File_Shm oWriter(NAME, Mode::Create);
    oWriter.Write("published");
    oWriter.Publish();
    const std::string sLarge(MIB, 'x');
    rlimit oBefore{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &oBefore), 0);
    const rlimit oLittle{MIB / 2, oBefore.rlim_max};
    auto* const pBefore = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &oLittle), 0);
    const std::string sWhat = Failing([&] { oWriter.Write(sLarge.data(), sLarge.size()); });
    // As much as there is, and not what growing takes beyond.
    const std::string sFits = Failing([&] { oWriter.Write(sLarge.data(), MIB / 2 - 5000); });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &oBefore), 0);
    std::signal(SIGXFSZ, pBefore);
    EXPECT_TRUE(
        Has(sWhat, "Cannot resize shared memory '" + g_sName + "' to size 1048585: errno="));
    EXPECT_EQ(sFits, "");
    oWriter.Write(sLarge.data(), sLarge.size());
    oWriter.Publish();
    EXPECT_EQ(All(*std::make_unique<File_Shm>(NAME)),
              "published" + std::string(MIB / 2 - 5000, 'x') + sLarge);
}

// Fills what the system has for all of them; what had room is there.
const Role_Start g_oFill("fill", [](const std::string& sName) {
    File_Shm oWriter(sName.c_str(), Mode::Create);
    const std::string sPart(100000, 'x');
    u3_t uWritten = 0;
    const std::string sWhat = Failing([&] {
        for (;; uWritten += sPart.size()) oWriter.Write(sPart.data(), sPart.size());
    });
    oWriter.Publish();
    Arr<char> oRead;
    File_Shm(sName.c_str()).Read(oRead, File_Stream::ALL);
    const bool bGood = Has(sWhat, "Cannot resize shared memory") && Has(sWhat, "errno=ENOSPC");
    return bGood && oRead.Size() == uWritten && uWritten > 500000 ? 0 : 1;
});

TEST_F(Shm_Test, TheSystemHasNoMemory) {
    const std::string sSmall = "mount -t tmpfs -o size=1m tmpfs /dev/shm";
    if (std::system(("unshare -rm sh -c '" + sSmall + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "no file system of one's own";
    const std::string sFill = ThisProgram() + " --peer fill " + NAME;
    EXPECT_EQ(std::system(("unshare -rm sh -c '" + sSmall + " && " + sFill + "'").c_str()), 0);
}

// What stands in front is not believed: each field with what is wrong in it, and a size.
TEST_F(Shm_Test, HeadersThatDoNotHoldTogether) {
    struct Case {
        std::size_t uField;
        u3_t uValue;
        u3_t uSize;
        const char* sWhy;  // of opening; reading on finds all but the first two not valid
    };
    constexpr std::size_t MAGIC = 0, VERSION = 8, LIMIT = 16, PUBLISHED = 24, GENERATION = 32;
    constexpr u3_t SIZE = 4096 + 65536;
    const Case CASES[] = {
        {GENERATION, 7, SIZE, ""},
        {PUBLISHED, 65536, SIZE, ""},
        {MAGIC, 0, SIZE, "ENOENT"},
        {MAGIC, 1, SIZE, "EINVAL"},
        {VERSION, 2, SIZE, "EINVAL"},
        {LIMIT, 2, SIZE, "EINVAL"},
        {LIMIT, ~u3_t{0}, SIZE, "EINVAL"},
        {PUBLISHED, 65537, SIZE, "EINVAL"},
        {PUBLISHED, ~u3_t{0}, SIZE, "EINVAL"},
        {GENERATION, 1, 4096 + 2, "EINVAL"},
        {GENERATION, 1, 4095, "ENOENT"},
        {GENERATION, 1, 0, "ENOENT"},
    };
    for (const Case& o : CASES) {
        (void)File_Shm::Remove(NAME);
        {
            File_Shm oWriter(NAME, Mode::Create, 65536);
            oWriter.Write("abc");
            oWriter.Publish();
        }
        File_Shm oReader(NAME);
        {
            std::fstream oFile(PATH, std::ios::in | std::ios::out | std::ios::binary);
            oFile.seekp(static_cast<std::streamoff>(o.uField));
            oFile.write(reinterpret_cast<const char*>(&o.uValue), sizeof(o.uValue));
        }
        ASSERT_EQ(::truncate(PATH.c_str(), static_cast<off_t>(o.uSize)), 0);
        for (const Mode e : {Mode::Read, Mode::Write}) {
            EXPECT_TRUE(Raises(o.sWhy, [&] { File_Shm(NAME, e); }));
        }
        EXPECT_TRUE(Raises(*o.sWhy == 0 ? "" : "Cannot set shared memory view",
                           [&] { EXPECT_TRUE(oReader.Refresh()); }));
        EXPECT_EQ(oReader.Size(), o.uField == PUBLISHED && *o.sWhy == 0 ? 65536u : 3u);
    }
    // What somebody has begun and not finished can be finished by another one.
    (void)File_Shm::Remove(NAME);
    ToDisk(PATH, "");
    EXPECT_TRUE(Has(Failing([] { File_Shm(NAME, Mode::Create); }), "EEXIST"));
    File_Shm(NAME, Mode::CreateOrOpen).Publish();
    EXPECT_EQ(File_Shm(NAME).Generation(), 1u);
}

TEST_F(Shm_Test, AnotherProcessCutsItOff) {
    const std::string sBytes = Noise(300000, 8);
    File_Shm oWriter(NAME, Mode::Create);
    oWriter.Write(sBytes.data(), sBytes.size());
    oWriter.Publish();
    File_Shm oReader(NAME);
    ASSERT_EQ(::truncate(PATH.c_str(), 4096 + 100000), 0);
    Arr<char> oRead;
    EXPECT_EQ(oReader.Read(oRead, 100000), 100000u);
    EXPECT_EQ(std::string_view(oRead.Beg(), oRead.Size()), sBytes.substr(0, 100000));
    char s[10];
    const std::string sEnd = "unexpected end of file in \"" + g_sName + "\"";
    EXPECT_EQ(Failing([&] { oReader.Read(s, 10, true); }), sEnd);
    EXPECT_EQ(Failing([&] { oReader.Read(oRead, File_Stream::ALL); }), sEnd);
    EXPECT_TRUE(Has(Failing([&] { oReader.Refresh(); }), "Cannot set shared memory view"));
    EXPECT_TRUE(Has(Failing([&] { oWriter.Publish(); }), "Cannot set shared memory view"));
}

#endif

}  // namespace
}  // namespace vok
