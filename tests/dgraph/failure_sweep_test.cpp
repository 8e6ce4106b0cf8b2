// SPDX-License-Identifier: MIT
// Every allocation and every operation of a stream fails once: nothing leaks, nothing breaks,
// and the same operation succeeds right afterwards.
#include <functional>

#include "tests/dgraph/dgraph_support.h"
#include "vok/data/store_check.h"
#include "vok/data/xpath.h"
#include "vok/dgraph/access.h"
#include "vok/records/records.h"
#include "vok/records/writer.h"

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

    [[nodiscard]] std::string Shown() const { return sResult + Show(oTree) + Save(oTree); }
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
    {"read record by record",
     [](State& o) {
         Drop_Stream oStream(o.sBytes, 100);
         Data_Reader oReader(oStream);
         if (oReader.Next()) oReader.Take(o.oTree);
         while (oReader.Next()) {
         }
     }},
    {"read XML record by record",
     [](State& o) {
         const std::string sXml = Written([&](File_Buf& oOut) { o.oTree.SaveToXML(oOut); });
         Drop_Stream oStream(sXml, 100);
         o.sResult.clear();
         for (const Data& oPart : Records(oStream, "//*")) o.sResult += Show(oPart);
     }},
    {"write node by node",
     [](State& o) {
         File_Buf oBuf("w");
         for (const auto eForm : {Data_Writer::Form::DGraph, Data_Writer::Form::Xml}) {
             Data_Writer oWriter(oBuf, eForm);
             oWriter.AnnounceTarget("/part[0]");
             oWriter.Add(o.oTree);
             oWriter.Finish();
         }
         o.sResult.assign(oBuf.Data(), oBuf.Size());
     }},
    {"evaluate paths",
     [](State& o) {
         const std::size_t uAll = o.oTree.GetNodeSet("//b\b46;b[@x=\"1\"]/..//*").Size() +
                                  o.oTree.GetNodeSet("list//b\b46;b").Size();
         o.sResult = std::to_string(uAll);
     }},
    {"make nodes along a path", [](State& o) { (void)o.oTree.CreateNode("new[2]/list/x[0]/y"); }},
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
        State oUndisturbed;
        Prepare(oUndisturbed);
        oCase.pOperation(oUndisturbed);
        const std::string sExpected = oUndisturbed.Shown();
        unsigned uFailures = 0;
        bool bRefused = true;
        for (unsigned uNth = 1; bRefused; ++uNth) {
            SCOPED_TRACE(oCase.sWhat + " "s + std::to_string(uNth));
            const u3_t uBlocks = Mem::BlocksInUse();
            {
                State oState;
                Prepare(oState);
                Mem_Probe::FailIn(uNth);
                bool bFailed = false;
                try {
                    oCase.pOperation(oState);
                } catch (const std::exception&) {
                    bFailed = true;
                }
                bRefused = !Mem_Probe::IsArmed();
                Mem_Probe::FailIn(0);
                uFailures += bFailed;
                if (bFailed) oCase.pOperation(oState);
                ASSERT_EQ(oState.Shown(), sExpected);
            }
            ASSERT_EQ(Mem::BlocksInUse(), uBlocks);
        }
        EXPECT_GT(uFailures, 1u) << oCase.sWhat;
    }
}

// Runs an operation with its first, second, ... use of a stream failing until none does; where
// the bytes end too early the tests of the reader look.
void SweepStream(const std::string& sBytes, const std::function<void(File_Stream&)>& oOperation) {
    bool bFailed = true;
    for (unsigned uNth = 1; bFailed; ++uNth) {
        const u3_t uBlocks = Mem::BlocksInUse();
        Drop_Stream oStream(sBytes);
        oStream.m_uFailIn = uNth;
        bFailed = !Failing([&] { oOperation(oStream); }).empty();
        ASSERT_EQ(bFailed, oStream.m_uFailIn == 0) << uNth;
        ASSERT_EQ(Mem::BlocksInUse(), uBlocks);
    }
}

TEST(FailureSweep, Streams) {
    State oState;
    Prepare(oState);
    const std::string sShown = Show(LoadTree(oState.sBytes));
    const std::string sWritten = Save(oState.oTree);
    SweepStream("", [&](File_Stream& o) { Dgraph_SaveDGraph(oState.oTree, o); });
    EXPECT_EQ(Save(oState.oTree), sWritten);
    SweepStream(oState.sBytes, [](File_Stream& o) {
        Data oTree;
        Dgraph_LoadDGraph(oTree, o);
    });
    EXPECT_EQ(Load(oState.sBytes), sShown);
}

// A heap that has room for all but some of what a document has: refused, wherever that is, and
// what was read until then is a tree that holds together.
TEST(FailureSweep, TheHeapIsFull) {
    State o;
    Build(o.oTree);
    const std::string sXml = Written([&](File_Buf& oOut) { o.oTree.SaveToXML(oOut); });
    const std::string asDocument[] = {Save(o.oTree), sXml};
    for (const std::string& sDocument : asDocument) {
        const auto oLoad = [&](Data& oTree, bool bStream) {
            File_Buf oBuf(sDocument.data(), sDocument.size());
            Drop_Stream oStream(sDocument);
            File_Stream& oIn = bStream ? static_cast<File_Stream&>(oStream) : oBuf;
            const bool bXml = &sDocument != asDocument;
            bXml ? (void)oTree.LoadFromXML(oIn, 0) : Dgraph_LoadDGraph(oTree, oIn);
        };
        Data oWhole = NewTree();
        oLoad(oWhole, false);
        const std::size_t uNeeded = dgraph::Access::BaseOf(oWhole)->m_oHeap.Size();
        EXPECT_GT(uNeeded, 100u);
        for (std::size_t uMost = 1; uMost <= uNeeded; ++uMost) {
            for (const bool bStream : {false, true}) {
                SCOPED_TRACE(uMost);
                Data oTree = NewTree();
                dgraph::Access::BaseOf(oTree)->m_oHeap.SetMost(uMost);
                EXPECT_EQ(Failing([&] { oLoad(oTree, bStream); }),
                          uMost < uNeeded ? "assertion failed: vok::Msg::IsInt32(x)" : "");
                EXPECT_STREQ(CheckStore(*dgraph::Access::BaseOf(oTree)), nullptr);
                EXPECT_LE(dgraph::Access::BaseOf(oTree)->m_oHeap.Size(), uMost);
                EXPECT_EQ(Data::Equal(oTree, oWhole), uMost == uNeeded);
            }
        }
    }
}

}  // namespace
}  // namespace vok
