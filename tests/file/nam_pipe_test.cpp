// SPDX-License-Identifier: MIT
// Named pipes, between threads and between processes.
#include "vok/file/nam_pipe.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/file/peer.h"
#include "vok/base/mem.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/document.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace vok {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr u2_t SOON = 20000;  // ms; what takes longer will not come
constexpr std::size_t MIB = std::size_t{1} << 20;
// Two places that no other test uses at the same time.
const std::string g_sName = "vok-test-" + std::to_string(sys::ProcessId());
const char* const NAME = g_sName.c_str();

// What pipes of the user's own are below is the folder of the test.
class NamPipe_Test : public File_Test {
  protected:
    NamPipe_Test() {
#ifndef _WIN32
        ::setenv("XDG_RUNTIME_DIR", fs::current_path().c_str(), 1);
#endif
    }
    // Both ends of a connection.
    struct Ends {
        File_NamPipeServer oServer{NAME};
        File_NamPipe oHere{NAME, SOON};
        File_NamPipe oThere;
        Ends() { EXPECT_TRUE(oServer.Accept(oThere, SOON)); }
    };
};
using NamPipeThreads = NamPipe_Test;

// Answers every message with the same one, until the other side closes.
void Echo(File_NamPipe oClient) {
    for (Arr<char> oMessage; oClient.ReadMessage(oMessage);) {
        oClient.WriteMessage(oMessage.Beg(), oMessage.Size());
    }
}

std::string Ask(File_NamPipe& oPipe, const std::string& sQuestion) {
    Arr<char> oAnswer;
    oPipe.WriteMessage(sQuestion.data(), sQuestion.size());
    EXPECT_TRUE(oPipe.ReadMessage(oAnswer));
    return {oAnswer.Beg(), oAnswer.Size()};
}

TEST_F(NamPipeThreads, SixtyFourClientsAtATime) {
    constexpr unsigned CLIENTS = 64;
    std::atomic<unsigned> uGood{0};
    File_NamPipeServer oServer(NAME);
    std::vector<std::thread> aoThread;
    for (unsigned u = 0; u < CLIENTS; ++u) {
        aoThread.emplace_back([&uGood, u] {
            File_NamPipe oPipe(NAME, SOON);
            bool bGood = true;
            for (const std::size_t uSize : {0u, 1u, 65527u, 65528u, 65536u, 200000u}) {
                const std::string s(uSize, static_cast<char>('0' + u));
                bGood = bGood && Ask(oPipe, s) == s;
            }
            uGood += bGood;
        });
    }
    for (unsigned u = 0; u < CLIENTS; ++u) {
        File_NamPipe oClient;
        ASSERT_TRUE(oServer.Accept(oClient, SOON));
        aoThread.emplace_back(Echo, std::move(oClient));
    }
    for (std::thread& o : aoThread) o.join();
    EXPECT_EQ(uGood, CLIENTS);
}

// Of those that want a name at the same time one gets it, and when that is gone another one.
TEST_F(NamPipeThreads, OneServerHasAName) {
    if (std::getenv("WINEPREFIX") != nullptr) GTEST_SKIP() << "Wine gives a name to several";
    for (int i = 0; i < 30; ++i) {
        std::atomic<unsigned> uServers{0}, uTried{0};
        std::vector<std::thread> aoThread;
        for (unsigned u = 0; u < 4; ++u) {
            aoThread.emplace_back([&] {
                File_NamPipeServer oServer;
                const std::string s = Failing([&] { oServer.Open(NAME); });
                uServers += s.empty();
                EXPECT_TRUE(s.empty() ||
                            s.starts_with("Cannot create named pipe '" + g_sName + "'"));
                for (++uTried; uTried != 4;) std::this_thread::yield();
            });
        }
        for (std::thread& o : aoThread) o.join();
        EXPECT_EQ(uServers, 1u);
    }
#ifndef _WIN32
    EXPECT_TRUE(fs::is_empty("vok"));
#endif
}

TEST_F(NamPipe_Test, WhatIsWrittenComesInPiecesOfAnySize) {
    const std::string sBytes = Noise(3 * MIB, 8);
    Ends o;
    std::thread oWriter([&] {
        for (std::size_t u = 0, uPart = 1; u < sBytes.size(); u += uPart, uPart = uPart * 3 + 1) {
            uPart = std::min(uPart % 200000, sBytes.size() - u);
            EXPECT_EQ(o.oThere.Write(sBytes.data() + u, uPart), uPart);
        }
        o.oThere.Close();
    });
    std::string sRead;
    Arr<char> oPiece;
    for (std::size_t uPart = 1; o.oHere.Read(oPiece, uPart) == uPart; uPart = uPart * 5 % 300007) {
        sRead.append(oPiece.Beg(), oPiece.Size());
    }
    sRead.append(oPiece.Beg(), oPiece.Size());
    oWriter.join();
    EXPECT_TRUE(sRead == sBytes);
    // Three bytes that are there are all that a short read waits for.
    char s[8];
    File_NamPipe oNext(NAME, SOON);
    ASSERT_TRUE(o.oServer.Accept(o.oThere, SOON));
    o.oThere.Write("one");
    o.oThere.Flush();
    EXPECT_EQ(oNext.Read(s, sizeof(s), true), 3u);
    // A question does not stay behind in the buffer while its answer is waited for.
    oNext.Write("?", 1);
    std::thread oAnswer([&] {
        char c = 0;
        o.oThere.Read(&c, 1);
        o.oThere.Write(&c, 1);
        o.oThere.Flush();
    });
    EXPECT_EQ(oNext.Read(s, 1), 1u);
    EXPECT_EQ(s[0], '?');
    oAnswer.join();
}

TEST_F(NamPipe_Test, EveryWaitEnds) {
    Ends o;
    o.oHere.SetTimeouts(300, 300);
    o.oThere.SetTimeouts(300, 300);
    const std::string sLarge(8 * MIB, 'x');
    char s[8];
    Arr<char> oMessage;
    File_NamPipe oClient;
    o.oThere.Write("some");
    o.oThere.Flush();
    struct Case {
        const char* sStart;
        std::function<void()> oWait;
    };
    // Two that both write and do not read are the last ones.
    const Case CASES[] = {
        {"Could not open Named pipe", [&] { oClient.Connect((g_sName + "-none").c_str(), 300); }},
        {"", [&] { EXPECT_FALSE(o.oServer.Accept(oClient, 300)); }},
        {"", [&] { EXPECT_FALSE(oClient.Connect((g_sName + "-none").c_str(), 300, false)); }},
        {"Error reading to named pipe", [&] { o.oHere.Read(s, 5); }},
        {"Error reading to named pipe", [&] { o.oHere.ReadMessage(oMessage); }},
        {"Error writing to named pipe", [&] { o.oHere.Write(sLarge.data(), sLarge.size()); }},
        {"Error writing to named pipe", [&] { o.oThere.Write(sLarge.data(), sLarge.size()); }},
    };
    for (const Case& oCase : CASES) {
        const auto oSince = Clock::now();
        EXPECT_TRUE(Raises(oCase.sStart, oCase.oWait));
        const auto oTook = std::chrono::duration<double>(Clock::now() - oSince).count();
        EXPECT_TRUE(oTook > 0.28 && oTook < 2.5) << oTook << " s for: " << oCase.sStart;
    }
    EXPECT_TRUE(oClient.HasTimedOut() && o.oHere.HasTimedOut() && o.oThere.HasTimedOut());
    // What the other side has is not known any more.
    EXPECT_TRUE(Has(Failing([&] { o.oHere.Write("more"); }), "EPIPE"));
    EXPECT_FALSE(o.oHere.HasTimedOut());
}

TEST_F(NamPipe_Test, TheOtherSideGoes) {
    struct Case {
        const char* sSent;
        std::size_t uRead;
        const char* sWhat;  // of a read that needs all of it
    };
    for (const Case& oCase : {Case{"", 1, "unexpected end of file"}, Case{"abc", 3, ""},
                              Case{"abc", 4, "unexpected end of file"}}) {
        for (const bool bUnread : {false, true}) {
            Ends o;
            if (bUnread) o.oHere.WriteMessage("never read", 10);
            o.oThere.Write(oCase.sSent);
            o.oThere.Close();
            char s[8] = {};
            EXPECT_TRUE(Raises(
                oCase.sWhat, [&] { o.oHere.Read(s, oCase.uRead); }, Msg_Kind::Other));
            EXPECT_EQ(s, std::string(oCase.sSent));
            EXPECT_EQ(o.oHere.Read(s, 8, true), 0u);
            Arr<char> oMessage;
            EXPECT_FALSE(o.oHere.ReadMessage(oMessage));
            // No signal, however often.
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(Raises(
                    "Error writing to named pipe '" + g_sName + "': errno=EPIPE (Broken pipe)",
                    [&] {
                        o.oHere.Write("more");
                        o.oHere.Flush();
                    }));
            }
            EXPECT_FALSE(o.oHere.HasTimedOut());
        }
    }
}

TEST_F(NamPipe_Test, LengthsOfMessagesAreNotBelieved) {
    struct Case {
        std::string sBytes;
        u3_t uMost;
        const char* sWhat;
    };
    const Case CASES[] = {
        {U64(3) + "abc", 3, ""},
        {U64(3) + "abc", 2, "message of 3 bytes in named pipe"},
        {U64(~u3_t{0}), File_NamPipe::MESSAGE_BYTES, "message of 18446744073709551615 bytes"},
        {U64(~u3_t{0}), ~u3_t{0}, "message of 18446744073709551615 bytes"},
        {U64(u3_t{1} << 40) + "abc", ~u3_t{0}, "unexpected end of file"},
        {U64(4) + "abc", 4, "unexpected end of file"},
        {U64(4).substr(0, 7), 4, "unexpected end of file"},
    };
    for (const Case& oCase : CASES) {
        Ends o;
        o.oThere.Write(oCase.sBytes.data(), oCase.sBytes.size());
        o.oThere.Close();
        Arr<char> oMessage;
        const Mem_Probe oProbe;
        const std::string_view sWhat(oCase.sWhat);
        const bool bLimit = sWhat.starts_with("message of");
        EXPECT_TRUE(Raises(
            sWhat,
            [&] {
                EXPECT_TRUE(o.oHere.ReadMessage(oMessage, oCase.uMost));
                EXPECT_EQ(std::string_view(oMessage.Beg(), oMessage.Size()), "abc");
            },
            bLimit ? Msg_Kind::Limit : Msg_Kind::Other));
        EXPECT_LT(Mem_Probe::Peak(), MIB / 4);
        o.oHere = File_NamPipe();
        oMessage = Arr<char>();
    }
}

TEST_F(NamPipe_Test, DocumentsFollowEachOther) {
    Data oTree;
    oTree.SetToRoot();
    Dgraph_SetVersion(oTree, 1, 3, 0);
    for (i2_t i = 0; i < 5000; ++i) oTree.Append("n").SetValInt(i);
    oTree.Append("t").SetValStr("größe");
    const Document_Format FORMATS[] = {{Document_Form::Xml, Zip_Wrapping::None},
                                       {Document_Form::Json, Zip_Wrapping::None},
                                       {Document_Form::Dgraph, Zip_Wrapping::Gzip}};
    Ends o;
    std::thread oWriter([&] {
        for (int i = 0; i < 2; ++i) {
            Dgraph_SaveDGraph(oTree, o.oThere);
            oTree.Dump(o.oThere);
            for (const Document_Format& oFormat : FORMATS) {
                File_Buf oBuf("w");
                Document_SaveOptions oOptions;
                oOptions.oFormat = oFormat;
                Document_Save(oTree, oBuf, oOptions);
                o.oThere.WriteMessage(oBuf.Data(), oBuf.Size());
            }
        }
    });
    Data oRead;
    for (int i = 0; i < 2; ++i) {
        Dgraph_LoadDGraph(oRead, o.oHere);
        EXPECT_TRUE(Data::Equal(oRead, oTree));
        oRead.Load(o.oHere);
        EXPECT_TRUE(Data::Equal(oRead, oTree));
        for (const Document_Format& oFormat : FORMATS) {
            Arr<char> oMessage;
            ASSERT_TRUE(o.oHere.ReadMessage(oMessage));
            File_Buf oBuf(oMessage.Beg(), oMessage.Size());
            EXPECT_EQ(Document_Load(oRead, oBuf).eForm, oFormat.eForm);
            EXPECT_TRUE(Data::Equal(oRead, oTree));
        }
    }
    oWriter.join();
    EXPECT_EQ(Failing([&] { o.oHere.Seek(0); }), "file seek to position 0 in mode 0 failed");
    EXPECT_EQ(o.oHere.Tell(), -1);
    EXPECT_FALSE(o.oHere.CanSeek(File_Stream::FROM_START));
}

TEST_F(NamPipe_Test, NamesAreHeldToTheSameEverywhere) {
    for (const std::string& s :
         {std::string(), std::string(101, 'a'), std::string(".hidden"), std::string("with space"),
          std::string("größe"), std::string("back\\slash"), std::string("none/")}) {
        const bool bPath = !sys::IS_WINDOWS && s == "none/";
        File_NamPipeServer oServer;
        File_NamPipe oClient;
        const std::string sWhy = bPath ? "errno=E" : "errno=EINVAL";
        EXPECT_TRUE(Has(Failing([&] { oServer.Open(s.c_str()); }), sWhy));
        EXPECT_TRUE(Has(Failing([&] { oClient.Connect(s.c_str(), 0); }), bPath ? "" : sWhy));
        EXPECT_FALSE(oServer.IsOpen() || oClient.IsOpen());
    }
    File_NamPipe oClosed;
    File_NamPipeServer oServer;
    char s[1];
    const std::function<void()> CLOSED[] = {
        [&] { oClosed.Read(s, 1); },
        [&] { oClosed.Write("x"); },
        [&] { oClosed.Flush(); },
        [&] { (void)oClosed.PeerProcess(); },
        [&] { oServer.Accept(oClosed, 0); },
    };
    for (const auto& o : CLOSED) EXPECT_EQ(Failing(o), "object points to nothing");
}

// Whatever block there is no memory for, the error is raised and nothing is lost behind it.
TEST_F(NamPipe_Test, MemoryRunsOut) {
    Ends o;
    const Mem_Probe oProbe;
    std::string sGot;
    unsigned uRefused = 0;
    for (unsigned u = 1; Mem_Probe::HasRefused(u,
                                               [&] {
                                                   File_NamPipe oClient(NAME, SOON);
                                                   File_NamPipe oServed;
                                                   ASSERT_TRUE(o.oServer.Accept(oServed, SOON));
                                                   oServed.Write("abc", 3);
                                                   oServed.Close();
                                                   Arr<char> oRead;
                                                   oClient.Read(oRead, File_Stream::ALL);
                                                   sGot.assign(oRead.Beg(), oRead.Size());
                                               });
         ++u) {
        ++uRefused;
        for (File_NamPipe oLeft; o.oServer.Accept(oLeft, 0);) {
        }
    }
    EXPECT_GE(uRefused, 2u);
    EXPECT_EQ(sGot, "abc");
}

// ---- processes --------------------------------------------------------------

const Role_Start g_oAsk("ask", [](const std::string& sName) {
    File_NamPipe oPipe(sName.c_str(), SOON);
    const std::string sMine = std::to_string(sys::ProcessId());
    oPipe.WriteMessage(sMine.data(), sMine.size());
    const std::string sLarge(MIB, 'x');
    return Ask(oPipe, sLarge) == sLarge ? 0 : 1;
});

// Is killed while it writes more than a pipe holds, when it is told to by another one.
const Role_Start g_oDie("die", [](const std::string& sName) -> int {
    File_NamPipe oPipe(sName.c_str(), SOON), oTold(sName.c_str(), SOON);
    std::thread([&oTold] {
        char c = 0;
        oTold.Read(&c, 1);
        Die();
    }).detach();
    const std::string sLarge(64 * MIB, 'x');
    oPipe.Write(sLarge.data(), sLarge.size());
    return 0;
});

TEST_F(NamPipe_Test, AnotherProcessAsks) {
    File_NamPipeServer oServer(NAME);
    auto oPeer = Peer("ask", NAME);
    File_NamPipe oClient;
    ASSERT_TRUE(oServer.Accept(oClient, SOON));
    Arr<char> oProcess;
    ASSERT_TRUE(oClient.ReadMessage(oProcess));
    EXPECT_EQ(std::string(oProcess.Beg(), oProcess.Size()), std::to_string(oClient.PeerProcess()));
    Echo(std::move(oClient));
    EXPECT_EQ(oPeer.get(), 0);
}

TEST_F(NamPipe_Test, AnotherProcessIsKilledWhileItWrites) {
    File_NamPipeServer oServer(NAME);
    auto oPeer = Peer("die", NAME);
    File_NamPipe oClient, oTell;
    ASSERT_TRUE(oServer.Accept(oClient, SOON) && oServer.Accept(oTell, SOON));
    std::string sPart(MIB, 0);
    oClient.Read(sPart.data(), MIB);
    oTell.Write("!", 1);
    oTell.Flush();
    EXPECT_NE(oPeer.get(), 0);
    unsigned uParts = 1;
    EXPECT_TRUE(Raises(
        "unexpected end of file",
        [&] {
            for (;; ++uParts) oClient.Read(sPart.data(), MIB);
        },
        Msg_Kind::Other));
    EXPECT_LT(uParts, 8u);
}

#ifndef _WIN32

const Role_Start g_oServe("serve", [](const std::string& sName) -> int {
    const File_NamPipeServer oServer(sName.c_str());
    Die();
});

// Names that a killed server leaves are free, those of a living one are not, whatever is done to
// the lock; what is no socket stays.
TEST_F(NamPipe_Test, WhatAServerLeavesBehind) {
    for (const std::string& sName : {g_sName, std::string("./there")}) {
        const std::string sSocket = sName == g_sName ? "vok/" + g_sName : sName;
        EXPECT_NE(Peer("serve", sName).get(), 0);
        EXPECT_TRUE(fs::is_socket(sSocket));
        {
            File_NamPipeServer oServer(sName.c_str());
            File_NamPipe oClient(sName.c_str(), 0), oServed;
            EXPECT_TRUE(oServer.Accept(oServed, SOON));
            const std::string sLock = fs::path(sSocket).replace_filename(
                '.' + fs::path(sSocket).filename().string() + ".lock");
            for (int i = 0; i < 2; ++i) {
                EXPECT_TRUE(
                    Raises("Address already in use", [&] { File_NamPipeServer{sName.c_str()}; }));
                EXPECT_EQ(fs::remove(sLock), i == 0);
            }
            EXPECT_TRUE(oServer.Accept(oServed, SOON));  // who looked whether somebody is there
            char c = 0;
            EXPECT_EQ(oServed.Read(&c, 1, true), 0u);
            oClient.Connect(sName.c_str(), 0);
            // Who takes it away by hand lets another one have it, which keeps it.
            fs::remove(sSocket);
            const File_NamPipeServer oOther(sName.c_str());
            oServer.Close();
            EXPECT_TRUE(fs::exists(sLock));
            oClient.Connect(sName.c_str(), 0);
        }
        EXPECT_FALSE(fs::exists(sSocket));
        ToDisk(sSocket, "bytes");
        EXPECT_TRUE(Has(Failing([&] { File_NamPipeServer{sName.c_str()}; }), "errno=EEXIST"));
        EXPECT_EQ(OnDisk(sSocket), "bytes");
    }
}

mode_t ModeOf(const std::string& sPath) {
    struct stat oStat {};
    EXPECT_EQ(::lstat(sPath.c_str(), &oStat), 0) << sPath;
    return oStat.st_mode & 07777;
}

TEST_F(NamPipe_Test, NobodyElseMayConnect) {
    struct Case {
        mode_t uMask;
        File_NamPipeServer::Access eAccess;
        mode_t uMode;
    };
    using Access = File_NamPipeServer::Access;
    for (const Case& o : {Case{0, Access::Owner, 0600}, Case{0177, Access::Everyone, 0666},
                          Case{0, Access::Everyone, 0666}}) {
        const mode_t uBefore = ::umask(o.uMask);
        const File_NamPipeServer oServer("./there", o.eAccess);
        ::umask(uBefore);
        EXPECT_EQ(ModeOf("there"), o.uMode);
    }
    const mode_t uBefore = ::umask(0);
    const File_NamPipeServer oServer(NAME);
    EXPECT_EQ(ModeOf("vok/" + g_sName), 0600u);
    EXPECT_EQ(ModeOf("vok"), 0700u);
    ::umask(uBefore);
    EXPECT_TRUE(Has(Failing([] { File_NamPipeServer((g_sName + "x").c_str(), Access::Everyone); }),
                    "EINVAL"));
}

// Where there is no folder of the session it is one below that for temporary files, where others
// may have been first.
TEST_F(NamPipe_Test, FoldersThatOthersMayWriteToAreNotUsed) {
    const std::string sFolder = "vok-" + std::to_string(::geteuid());
    const std::string sHere = fs::current_path();
    ::setenv("TMPDIR", sHere.c_str(), 1);
    for (const char* sRuntime : {"", "relative", "/none", "/proc/self/stat"}) {
        ::setenv("XDG_RUNTIME_DIR", sRuntime, 1);
        const File_NamPipeServer oServer(NAME);
        EXPECT_TRUE(fs::is_socket(sFolder + '/' + g_sName));
    }
    for (const mode_t uMode : {0755u, 0770u, 0702u}) {
        ::chmod(sFolder.c_str(), uMode);
        EXPECT_TRUE(Has(Failing([] { File_NamPipeServer{NAME}; }), "errno=EACCES"));
        EXPECT_TRUE(Has(Failing([] { File_NamPipe(NAME, 0); }), "errno=EACCES"));
    }
    fs::rename(sFolder, "elsewhere");
    ::chmod("elsewhere", 0700);
    fs::create_directory_symlink("elsewhere", sFolder);
    EXPECT_TRUE(Has(Failing([] { File_NamPipeServer{NAME}; }), "errno=ENOTDIR"));
    ::unsetenv("TMPDIR");
    // A path that no address has room for goes another way.
    const std::string sFolders = "./" + std::string(90, 'd') + "/" + std::string(90, 'e');
    fs::create_directories(sFolders);
    const std::string sDeep = sFolders + "/there";
    File_NamPipeServer oDeep(sDeep.c_str());
    File_NamPipe oClient(sDeep.c_str(), 0), oServed;
    EXPECT_TRUE(oDeep.Accept(oServed, SOON));
}

#endif

}  // namespace
}  // namespace vok
