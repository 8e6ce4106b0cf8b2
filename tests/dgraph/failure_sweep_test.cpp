// Every allocation and every operation of a stream fails once: nothing leaks, nothing breaks,
// and the same operation succeeds right afterwards.
#include <functional>
#include <new>

#include "tests/dgraph/dgraph_support.h"
#include "vok/data/xpath.h"

// Containers take their memory from here: what a probe refuses fails as well.
void* operator new(std::size_t uSize) {
    void* p = vok::Mem_Probe::Refuses() ? nullptr : std::malloc(uSize != 0 ? uSize : 1);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept {
    return vok::Mem_Probe::Refuses() ? nullptr : std::malloc(uSize != 0 ? uSize : 1);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}

namespace vok {
namespace {

// A tree with every kind of value, attributes, links, long names and a large group.
void Build(Data& oTree) {
    oTree.Clear();
    oTree.SetToRoot();
    Dgraph_SetVersion(oTree, 1, 3, 0);
    Data oPart = oTree.CreateNewSucc("part");
    oPart.SetAttVal("id", "a long attribute value, longer than any small buffer");
    oPart.SetAttVal("x.y", "2");
    oPart.AddStr("text", "\xE4 not UTF-8, and long enough for a block of its own");
    oPart.AddBin("block", "\0\1\2", 3);
    oPart.CreateNewSucc("quad").SetValQuad(1, 2, 3, 4);
    oPart.AddDbl("date", 86400.0, Data_Node::Date);
    Data oList = oTree.CreateNewSucc("list");
    for (int i = 0; i < 60; ++i) {
        oList.AddInt(i % 3 != 0 ? "b.b" : ("name" + std::to_string(i)).c_str(), i);
    }
    oTree.CreateNewSucc("link").SetValLink(oPart);
    oTree.CreateNewSucc("a name that is much too long for any small buffer at all");
}

struct State {
    Data oTree;
    std::string sBytes;
    std::string sResult;
};

struct Case {
    const char* sWhat;
    void (*pOperation)(State&);
};

// Each can be done again after it failed half way.
const Case g_aCases[] = {
    {"build", [](State& o) { Build(o.oTree); }},
    {"write",
     [](State& o) {
         File_Buf oBuf("w");
         Dgraph_SaveDGraph(o.oTree, oBuf);
         o.sResult.assign(oBuf.Data(), oBuf.Size());
     }},
    {"write to a stream",
     [](State& o) {
         Drop_Stream oOut;
         Dgraph_SaveDGraph(o.oTree, oOut);
         o.sResult = std::to_string(oOut.m_oWritten.size());
     }},
    {"read",
     [](State& o) {
         File_Buf oBuf(o.sBytes.data(), o.sBytes.size());
         Load_Report oReport;
         Dgraph_LoadDGraph(o.oTree, oBuf, {}, &oReport);
     }},
    {"read from a stream",
     [](State& o) {
         Drop_Stream oStream(o.sBytes);
         Dgraph_LoadDGraph(o.oTree, oStream);
     }},
    {"evaluate paths",
     [](State& o) {
         const std::size_t uAll = o.oTree.GetNodeSet("//b\b46;b[@x=\"1\"]/..//*").Size() +
                                  o.oTree.GetNodeSet("list//b\b46;b").Size();
         o.sResult = std::to_string(uAll);
     }},
    {"make nodes along a path", [](State& o) { (void)o.oTree.CreateNode("new[2]/list/x[0]/y"); }},
    {"remove",
     [](State& o) {
         Data oList = o.oTree.GetNthSucc("list", 0);
         if (oList.GetType() != Data_Node::Zombi) oList.Remove();
     }},
    {"shrink",
     [](State& o) {
         Data oPart = o.oTree.GetNthSucc("part", 0);
         if (oPart.IsNode() && oPart.GetType() != Data_Node::Zombi) oPart.Remove();
         o.oTree.Shrink();
     }},
};

void Prepare(State& oState) {
    Build(oState.oTree);
    // Out of order at first, so that operations have something to sort.
    oState.oTree.AddBool("early", true);
    oState.sBytes = Save(oState.oTree);
    Build(oState.oTree);
}

TEST(FailureSweep, Allocations) {
    const Mem_Probe oProbe;
    for (const Case& oCase : g_aCases) {
        std::string sExpected;
        unsigned uFailures = 0;
        for (unsigned uNth = 0;; ++uNth) {
            SCOPED_TRACE(oCase.sWhat + " "s + std::to_string(uNth));
            const u3_t uBlocks = Mem::BlocksInUse();
            bool bFailed = false;
            bool bRefused = false;
            std::string sResult;
            {
                State oState;
                Prepare(oState);
                Mem_Probe::FailIn(uNth);
                try {
                    oCase.pOperation(oState);
                } catch (const std::exception&) {
                    bFailed = true;
                }
                bRefused = uNth != 0 && !Mem_Probe::IsArmed();
                Mem_Probe::FailIn(0);
                if (bFailed) oCase.pOperation(oState);
                sResult = oState.sResult + Show(oState.oTree) + Save(oState.oTree);
            }
            ASSERT_EQ(Mem::BlocksInUse(), uBlocks);
            if (uNth == 0) sExpected = sResult;
            ASSERT_EQ(sResult, sExpected);
            uFailures += bFailed;
            if (uNth == 0) continue;
            if (!bRefused) break;
        }
        EXPECT_GT(uFailures, 1u) << oCase.sWhat;
    }
}

// Passes everything on to a buffer until its n-th operation, which fails, or is short.
class Faulty_Stream : public File_Stream {
  public:
    Faulty_Stream(File_Buf& oBuf, unsigned uFailIn, bool bShort)
        : m_oBuf(oBuf), m_uFailIn(uFailIn), m_bShort(bShort) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        if (!Fails()) return m_oBuf.Read(pTarget, uCount, bAllowShort);
        if (!m_bShort) Msg::UnexpectedEndOfFile(nullptr, 0);
        // From here on there is nothing more.
        const std::size_t uRead = m_oBuf.Read(pTarget, uCount / 2, bAllowShort);
        m_oBuf.Seek(0, FROM_END);
        return uRead;
    }
    std::size_t Write(const void* pSource, std::size_t uCount) override {
        if (Fails()) Msg::FileWriteError(nullptr, uCount, Tell(), 0);
        return m_oBuf.Write(pSource, uCount);
    }
    void Seek(i3_t iOffset, int iWhence) override {
        if (Fails()) Msg::FileSeekFailed(iOffset, iWhence, 0);
        m_oBuf.Seek(iOffset, iWhence);
    }
    i3_t Tell() override { return m_oBuf.Tell(); }
    int Flush() override {
        if (Fails()) Msg::FileWriteError(nullptr, 0, Tell(), 0);
        return 0;
    }

    [[nodiscard]] bool HasFailed() const noexcept { return m_uFailIn == 0; }

  private:
    bool Fails() noexcept { return m_uFailIn != 0 && --m_uFailIn == 0; }

    File_Buf& m_oBuf;
    unsigned m_uFailIn;
    bool m_bShort;
};

// Runs an operation with its first, second, ... use of the stream failing until none does.
void SweepStream(const std::string& sBytes, bool bShort,
                 const std::function<void(File_Stream&)>& oOperation) {
    for (unsigned uNth = 1;; ++uNth) {
        SCOPED_TRACE(uNth);
        const u3_t uBlocks = Mem::BlocksInUse();
        bool bFailed = false;
        bool bUsed = false;
        {
            File_Buf oBuf("w");
            oBuf.Write(sBytes.data(), sBytes.size());
            oBuf.Seek(0);
            Faulty_Stream oStream(oBuf, uNth, bShort);
            try {
                oOperation(oStream);
            } catch (const Msg_Exception&) {
                bFailed = true;
            }
            bUsed = oStream.HasFailed();
        }
        ASSERT_EQ(Mem::BlocksInUse(), uBlocks);
        ASSERT_TRUE(bShort || bFailed == bUsed);
        if (!bUsed) break;
    }
}

TEST(FailureSweep, Streams) {
    State oState;
    Prepare(oState);
    const std::string sShown = Show(LoadTree(oState.sBytes));
    const std::string sWritten = Save(oState.oTree);
    SweepStream("", false, [&](File_Stream& o) { Dgraph_SaveDGraph(oState.oTree, o); });
    EXPECT_EQ(Save(oState.oTree), sWritten);
    for (const bool bShort : {false, true}) {
        SweepStream(oState.sBytes, bShort, [](File_Stream& o) {
            Data oTree;
            Dgraph_LoadDGraph(oTree, o);
        });
        SweepStream(oState.sBytes, bShort, [](File_Stream& o) { (void)Dgraph_CanLoadDGraph(o); });
    }
    EXPECT_EQ(Load(oState.sBytes), sShown);
}

}  // namespace
}  // namespace vok
