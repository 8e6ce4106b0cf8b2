// The shape of a benchmark: every contender does the same six things with the same trees.
#ifndef BENCHMARKS_CONTENDER_H
#define BENCHMARKS_CONTENDER_H

#include <benchmark/benchmark.h>

#include <string>

#include "benchmarks/data_sets.h"

namespace bench {

// Times per node, and bytes per second where bytes are made or read.
inline void Count(benchmark::State& oState, double dNodes, double dBytes = 0) {
    using benchmark::Counter;
    oState.counters["per_node"] =
        Counter(dNodes, Counter::kIsIterationInvariantRate | Counter::kInvert);
    if (dBytes > 0) {
        oState.counters["bytes/s"] = Counter(dBytes, Counter::kIsIterationInvariantRate);
    }
}

// Contender is a class with
//     static constexpr const char* NAME;
//     explicit Contender(const Set&);      builds the tree
//     void Write(); size_t Size() const;   writes it to memory of its own, replacing the last
//     void Read();                         reads that into a tree of its own
//     uint64_t Walk(); uint64_t Lookup();  over the tree that was read
//     double HeapBytes();                  of the tree that was built
template <class Contender>
void Register(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + "/" + Contender::NAME + "/";
    const double dNodes = static_cast<double>(oSet.items.size());
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oBody)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("build", [&oSet, dNodes](benchmark::State& oState) {
        double dHeap = 0;
        for (auto _ : oState) {
            Contender o(oSet);
            benchmark::DoNotOptimize(o);
        }
        {
            Contender o(oSet);
            dHeap = o.HeapBytes();
        }
        Count(oState, dNodes);
        oState.counters["heap/node"] = dHeap / dNodes;
    });
    oAdd("write", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        for (auto _ : oState) {
            o.Write();
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    oAdd("read", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        for (auto _ : oState) {
            o.Read();
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    oAdd("walk", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        o.Read();
        for (auto _ : oState) benchmark::DoNotOptimize(o.Walk());
        Count(oState, dNodes);
    });
    oAdd("lookup", [&oSet](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        o.Read();
        for (auto _ : oState) benchmark::DoNotOptimize(o.Lookup());
        Count(oState, static_cast<double>(oSet.lookups.size() * oSet.uMaps));
    });
}

void RegisterDump(const Set& oSet);
void RegisterFacade(const Set& oSet);
void RegisterFloor(const Set& oSet);
void RegisterMsgpack(const Set& oSet);
void RegisterRapidjson(const Set& oSet);
void RegisterVok(const Set& oSet);
void RegisterXml(const Set& oSet);

}  // namespace bench

#endif  // BENCHMARKS_CONTENDER_H
