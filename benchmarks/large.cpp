// SPDX-License-Identifier: MIT
#include "benchmarks/large.h"

#include <chrono>
#include <cstdio>

#include "vok/data/builder.h"
#include "vok/data/data.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"

namespace bench {

namespace {

using vok::Data;
using vok::Data_Node;
using vok::File_Buf;

constexpr std::size_t LEAVES = 4;
constexpr vok::u2_t REMOVED = 10;  // one inner node out of so many

// Times one step after the other, and prints a line for each.
class Steps {
  public:
    explicit Steps(std::size_t uNodes) : m_dNodes(static_cast<double>(uNodes)) {
        std::printf("| %zu nodes | seconds | ns per node | bytes per node |\n|---|---|---|---|\n",
                    uNodes);
    }
    // oStep returns the bytes of what it has made, or 0.
    template <class Step>
    void Time(const char* sWhat, const Step& oStep) const {
        const auto oStart = std::chrono::steady_clock::now();
        const std::size_t uBytes = oStep();
        const std::chrono::duration<double> oTime = std::chrono::steady_clock::now() - oStart;
        std::printf("| %s | %.2f | %.1f |", sWhat, oTime.count(), oTime.count() * 1e9 / m_dNodes);
        if (uBytes != 0) std::printf(" %.1f", static_cast<double>(uBytes) / m_dNodes);
        std::printf(" |\n");
        std::fflush(stdout);
    }

  private:
    const double m_dNodes;
};

// Inner nodes with four leaves each, all behind each other: their ids go up to that of the last.
std::size_t Build(Data& oTree, std::size_t uInner) {
    oTree.SetToRoot();
    vok::Dgraph_SetVersion(oTree, 1, 3, 0);
    oTree.SetRootName("Root");
    const auto oTrade = oTree.MakeKey("trade"), oId = oTree.MakeKey("id"),
               oLive = oTree.MakeKey("live"), oPrice = oTree.MakeKey("price"),
               oSymbol = oTree.MakeKey("symbol");
    vok::Data_Builder o(oTree);
    for (std::size_t u = 0; u < uInner; ++u) {
        const auto iNth = static_cast<vok::i2_t>(u);
        o.Open(oTrade);
        o.AddInt(oId, iNth);
        o.AddBool(oLive, u % 3 == 0);
        o.AddDbl(oPrice, 0.25 * iNth);
        o.AddStr(oSymbol, u % 2 == 0 ? "ALFA" : "BRAVO");
        o.Close();
    }
    o.Finish();
    return oTree.HeapBytes();
}

}  // namespace

int RunLarge(std::size_t uNodes) {
    const std::size_t uInner = uNodes / (LEAVES + 1);
    const Steps oSteps(uInner * (LEAVES + 1) + 1);
    bool bGood = true;
    const auto oCompare = [&](const Data& oTree, const Data& oLoaded) {
        oSteps.Time("compare", [&] {
            bGood = Data::Equal(oTree, oLoaded) && bGood;
            return std::size_t{0};
        });
    };
    Data oTree;
    oSteps.Time("build", [&] { return Build(oTree, uInner); });
    oSteps.Time("order of successors", [&] {
        (void)oTree.GetNthSucc(0);
        return oTree.HeapBytes();
    });
    {
        File_Buf oBuf("w");
        oSteps.Time("save DGraph", [&] {
            vok::Dgraph_SaveDGraph(oTree, oBuf);
            return oBuf.Size();
        });
        Data oLoaded;
        oSteps.Time("load DGraph", [&] {
            File_Buf oIn(oBuf.Data(), oBuf.Size());
            vok::Dgraph_LoadDGraph(oLoaded, oIn, vok::Limits::Trusted());
            return oLoaded.HeapBytes();
        });
        oCompare(oTree, oLoaded);
    }
    {
        File_Buf oBuf("w");
        oSteps.Time("dump", [&] {
            oTree.Dump(oBuf);
            return oBuf.Size();
        });
        Data oLoaded;
        oSteps.Time("load dump", [&] {
            File_Buf oIn(oBuf.Data(), oBuf.Size());
            oLoaded.Load(oIn, vok::Limits::Trusted());
            return oLoaded.HeapBytes();
        });
        oCompare(oTree, oLoaded);
    }
    const std::size_t uBefore = oTree.GetNodes();
    std::size_t uGone = 0;
    oSteps.Time("remove a tenth", [&] {
        for (std::size_t u = 1; u < uBefore; u += REMOVED * (LEAVES + 1)) {
            oTree.GetNodeFromID(static_cast<vok::u2_t>(u)).Remove();
            uGone += LEAVES + 1;
        }
        return std::size_t{0};
    });
    oSteps.Time("shrink", [&] {
        oTree.Shrink();
        return oTree.HeapBytes();
    });
    bGood = bGood && oTree.GetNodes() == uBefore - uGone;
    if (!bGood) std::printf("what came back is not what was saved\n");
    return bGood ? 0 : 1;
}

}  // namespace bench
