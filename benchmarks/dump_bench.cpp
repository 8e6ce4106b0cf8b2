// SPDX-License-Identifier: MIT
// The native dump against memcpy of the same bytes: to memory that is there, as a dump that
// replaces another has it, and to memory that is new each time, as loading has it.
#include <cstring>

#include "benchmarks/contender.h"
#include "benchmarks/vok_tree.h"
#include "vok/base/mem.h"
#include "vok/file/buf.h"

namespace bench {

namespace {

using vok::Data;

struct Dumped {
    explicit Dumped(const Set& oSet) : oTree(MakeTree(oSet)), oBytes("w") { oTree.Dump(oBytes); }
    Data oTree;
    vok::File_Buf oBytes;
    Data oOther;
    std::vector<char> oCopy;
};

}  // namespace

void RegisterDump(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + "/dump/";
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        const auto oRun = [&oSet, oBody](benchmark::State& oState) {
            Dumped o(oSet);
            for (auto _ : oState) {
                oBody(o);
                benchmark::ClobberMemory();
            }
            Count(oState, static_cast<double>(oSet.items.size()),
                  static_cast<double>(o.oBytes.Size()));
        };
        benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oRun)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("write", [](Dumped& o) {
        o.oBytes.Open("w");
        o.oTree.Dump(o.oBytes);
    });
    oAdd("memcpy-in-place", [](Dumped& o) {
        o.oCopy.resize(o.oBytes.Size());
        std::memcpy(o.oCopy.data(), o.oBytes.Data(), o.oBytes.Size());
    });
    oAdd("read", [](Dumped& o) {
        vok::File_Buf oIn(o.oBytes.Data(), o.oBytes.Size());
        Data oLoaded;
        oLoaded.Load(oIn);
    });
    // In three blocks, as a tree has its bytes.
    oAdd("memcpy-to-new", [](Dumped& o) {
        const std::size_t uPart = o.oBytes.Size() / 3;
        void* apBlock[3];
        for (std::size_t u = 0; u < 3; ++u) {
            apBlock[u] = vok::Mem::Create(uPart);
            std::memcpy(apBlock[u], o.oBytes.Data() + u * uPart, uPart);
        }
        benchmark::DoNotOptimize(apBlock);
        for (void* pBlock : apBlock) vok::Mem::Free(pBlock);
    });
    oAdd("clone", [](Dumped& o) { benchmark::DoNotOptimize(o.oTree.MkClone()); });
    oAdd("equal", [](Dumped& o) {
        if (!o.oOther.IsNode()) o.oOther = o.oTree.MkClone();
        benchmark::DoNotOptimize(Data::Equal(o.oTree, o.oOther));
    });
}

}  // namespace bench
