// SPDX-License-Identifier: MIT
// The shape of a benchmark: every contender does the same things with the same trees, and what is
// timed is what a user pays: the first write of a tree with all that it puts in order, the walk
// with its names. A column that uses something again says so.
#ifndef BENCHMARKS_CONTENDER_H
#define BENCHMARKS_CONTENDER_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/data_sets.h"
#include "benchmarks/region.h"

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

// How many trees of a set are written in one go, to be told by a clock: few if values are long.
inline std::size_t ThingsAtOnce(const Set& oSet) {
    std::size_t uWork = oSet.items.size();
    for (const Item& oItem : oSet.items) uWork += oItem.uText / 1024;
    return std::max<std::size_t>(1, 5000 / uWork);
}

// Times what oBody does to things of its own, each of them used once: many are made first where one
// alone takes too little time to be told by a clock.
template <class Thing, class Make, class Body>
void TimeOnce(benchmark::State& oState, const Set& oSet, const Make& oMake, const Body& oBody) {
    using Clock = std::chrono::steady_clock;
    const std::size_t uThings = ThingsAtOnce(oSet);
    for (auto _ : oState) {
        std::vector<std::unique_ptr<Thing>> aoThing;
        for (std::size_t u = 0; u < uThings; ++u) aoThing.push_back(oMake());
        const auto oStart = Clock::now();
        {
            const Region oRegion;
            for (const auto& p : aoThing) oBody(*p);
        }
        const std::chrono::duration<double> oTime = Clock::now() - oStart;
        benchmark::ClobberMemory();
        oState.SetIterationTime(oTime.count());
    }
    oState.counters["at_once"] = static_cast<double>(uThings);
}

// Contender is a class with
//     static constexpr const char* NAME;
//     explicit Contender(const Set&);      builds the tree
//     void BuildAgain();                   builds it once more, where it was; may be left out
//     void Write(); size_t Size() const;   writes it to memory of its own, replacing the last
//     void Read();                         reads that into a new tree of its own
//     void ReadAgain();                    into the tree of the last one; may be left out
//     uint64_t Walk(); uint64_t Lookup();  over the tree that was read, names included
//     double HeapBytes();                  of the tree that was built
template <class Contender>
void Register(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + "/" + Contender::NAME + "/";
    const double dNodes = static_cast<double>(oSet.items.size());
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        return benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oBody)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("build", [&oSet, dNodes](benchmark::State& oState) {
        {
            const Region oRegion;
            for (auto _ : oState) {
                Contender o(oSet);
                benchmark::DoNotOptimize(o);
            }
        }
        Contender o(oSet);
        Count(oState, dNodes);
        oState.counters["heap/node"] = o.HeapBytes() / dNodes;
    });
    if constexpr (requires(Contender & o) { o.BuildAgain(); }) {
        oAdd("build reused", [&oSet, dNodes](benchmark::State& oState) {
            Contender o(oSet);
            o.BuildAgain();
            const Region oRegion;
            for (auto _ : oState) {
                o.BuildAgain();
                benchmark::ClobberMemory();
            }
            Count(oState, dNodes);
        });
    }
    oAdd("write", [&oSet, dNodes](benchmark::State& oState) {
        std::size_t uBytes = 0;
        TimeOnce<Contender>(
            oState, oSet, [&] { return std::make_unique<Contender>(oSet); },
            [&](Contender& o) {
                o.Write();
                uBytes = o.Size();
            });
        const double dAtOnce = oState.counters["at_once"];
        Count(oState, dNodes * dAtOnce, static_cast<double>(uBytes) * dAtOnce);
    })->UseManualTime();
    // A tree that was written once has its order, and its buffer the size.
    oAdd("write reused", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        const Region oRegion;
        for (auto _ : oState) {
            o.Write();
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    oAdd("read", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        const Region oRegion;
        for (auto _ : oState) {
            o.Read();
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    if constexpr (requires(Contender & o) { o.ReadAgain(); }) {
        oAdd("read reused", [&oSet, dNodes](benchmark::State& oState) {
            Contender o(oSet);
            o.Write();
            o.ReadAgain();
            const Region oRegion;
            for (auto _ : oState) {
                o.ReadAgain();
                benchmark::ClobberMemory();
            }
            Count(oState, dNodes, static_cast<double>(o.Size()));
        });
    }
    oAdd("walk", [&oSet, dNodes](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        o.Read();
        const Region oRegion;
        for (auto _ : oState) benchmark::DoNotOptimize(o.Walk());
        Count(oState, dNodes);
    });
    oAdd("lookup", [&oSet](benchmark::State& oState) {
        Contender o(oSet);
        o.Write();
        o.Read();
        const Region oRegion;
        for (auto _ : oState) benchmark::DoNotOptimize(o.Lookup());
        Count(oState, static_cast<double>(oSet.lookups.size() * oSet.uMaps));
    });
}

void RegisterDump(const Set& oSet);
void RegisterFacade(const Set& oSet);
void RegisterFloor(const Set& oSet);
void RegisterMsgpack(const Set& oSet);
void RegisterRapidjson(const Set& oSet);
void RegisterRecords(const Set& oSet);
void RegisterVok(const Set& oSet);
void RegisterXml(const Set& oSet);

}  // namespace bench

#endif  // BENCHMARKS_CONTENDER_H
