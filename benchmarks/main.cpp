// SPDX-License-Identifier: MIT
// All benchmarks, contender by contender within a data set, so that ratios come from one run.
//
//     vok_benchmarks [--set=NAME] [--table | --columns] [flags of Google Benchmark]
//     vok_benchmarks --large[=NODES]
//
// With --set only that data set is made and registered. --columns lists our own columns of it with
// what is counted in each: nodes, or questions asked, of one iteration.
//
// With --table every benchmark runs several times in mixed order, and the best time per node of
// each is printed as one Markdown table per data set, beside its ratio to the peer to beat:
// MessagePack, or pugixml for documents in XML.
//
// --large is one tree of 100 million nodes, or of as many as it says, and nothing else.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/contender.h"
#include "benchmarks/large.h"
#include "benchmarks/objects.h"
#include "vok/base/msg.h"

namespace {

// Collects the best run of "set/contender/what" and prints tables at the end.
class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& aoRuns) override {
        for (const Run& oRun : aoRuns) {
            if (oRun.run_type != Run::RT_Iteration) continue;
            const std::string& sName = oRun.run_name.function_name;
            const std::size_t uFirst = sName.find('/');
            const std::size_t uLast = sName.rfind('/');
            Row& oRow =
                m_oTables[sName.substr(0, uFirst)][sName.substr(uFirst + 1, uLast - uFirst - 1)];
            Note(oRow, sName.substr(uLast + 1), oRun.counters.at("per_node") * 1e9);
            const auto oHeap = oRun.counters.find("heap/node");
            if (oHeap != oRun.counters.end()) Note(oRow, "heap", oHeap->second);
        }
    }

    void Finalize() override {
        for (const auto& [sSet, oTable] : m_oTables) PrintTable(sSet, oTable);
    }

  private:
    using Row = std::map<std::string, double>;  // what -> best figure
    using Table = std::map<std::string, Row>;   // contender -> row

    static constexpr const char* COLUMNS[] = {"build", "build reused", "write", "write reused",
                                              "read",  "read reused",  "walk",  "lookup",
                                              "load",  "save",         "heap"};

    static void Note(Row& oRow, const std::string& sWhat, double dValue) {
        const auto [oFound, bNew] = oRow.try_emplace(sWhat, dValue);
        if (!bNew) oFound->second = std::min(oFound->second, dValue);
    }

    static void PrintTable(const std::string& sSet, const Table& oTable) {
        auto oPeer = oTable.find("msgpack");
        if (oPeer == oTable.end()) oPeer = oTable.find("pugixml");
        if (oPeer == oTable.end()) oPeer = oTable.find("tree");
        if (oPeer == oTable.end()) oPeer = oTable.begin();
        const auto oIsShown = [&](const char* sColumn) {
            return oPeer->second.count(sColumn) != 0;
        };
        std::printf("\n### %s\n\n| ns per node |", sSet.c_str());
        std::string sRule = "\n|---|";
        for (const char* sColumn : COLUMNS) {
            if (!oIsShown(sColumn)) continue;
            std::printf(" %s |", sColumn);
            sRule += "---|";
        }
        std::printf("%s\n", sRule.c_str());
        for (const auto& [sContender, oRow] : oTable) {
            if (sContender == "floor" || sContender == "facade") continue;
            std::printf("| %s |", sContender.c_str());
            for (const char* sColumn : COLUMNS) {
                if (!oIsShown(sColumn)) continue;
                const auto oFound = oRow.find(sColumn);
                if (oFound == oRow.end()) {
                    std::printf(" |");
                    continue;
                }
                std::printf(" %.1f", oFound->second);
                if (oPeer->first != sContender && oPeer->second.count(sColumn) != 0) {
                    std::printf(" (%.2f)", oFound->second / oPeer->second.at(sColumn));
                }
                std::printf(" |");
            }
            std::printf("\n");
        }
        for (const char* sContender : {"facade", "floor"}) {
            const auto oFound = oTable.find(sContender);
            if (oFound == oTable.end()) continue;
            std::printf("\n%s:", sContender);
            for (const auto& [sWhat, dValue] : oFound->second) {
                std::printf(" %s %.1f;", sWhat.c_str(), dValue);
            }
            std::printf("\n");
        }
    }

    std::map<std::string, Table> m_oTables;
};

}  // namespace

namespace {

constexpr struct {
    const char* sName;
    const bench::Set& (*pMake)();
} SETS[] = {{"orders", bench::Orders},   {"config", bench::Config}, {"small", bench::Small},
            {"numbers", bench::Numbers}, {"names", bench::Names},   {"deep", bench::Deep},
            {"blobs", bench::Blobs}};

void RegisterAll(const bench::Set& oSet) {
    bench::RegisterFloor(oSet);
    bench::RegisterVok(oSet);
    bench::RegisterDump(oSet);
    bench::RegisterFacade(oSet);
    bench::RegisterMsgpack(oSet);
    bench::RegisterRapidjson(oSet);
    bench::RegisterXml(oSet);
    bench::RegisterRecords(oSet);
    bench::RegisterObjects(oSet);
    bench::RegisterCereal(oSet);
    bench::RegisterBoost(oSet);
}

void PrintColumns(const bench::Set& oSet) {
    const std::size_t uNodes = oSet.items.size();
    const std::size_t uQuestions = oSet.lookups.size() * oSet.uMaps;
    const struct {
        const char* sColumn;
        std::size_t uUnits;
    } COLUMNS[] = {
        {"/vok/build", uNodes},
        {"/vok-keys/build", uNodes},
        {"/vok-keys/build reused", uNodes},
        {"/vok/write", uNodes * bench::ThingsAtOnce(oSet)},
        {"/vok/write reused", uNodes},
        {"/vok/read", uNodes},
        {"/vok/read reused", uNodes},
        {"/vok/walk", uNodes},
        {"/vok/lookup", uQuestions},
        {"/vok-keys/lookup", uQuestions},
        {"/facade/build+write", uNodes},
        {"/facade/read", uNodes},
        {"/facade/read values", uNodes},
        {" as XML/vok/load", uNodes},
        {" as XML/vok/save", uNodes},
    };
    for (const auto& o : COLUMNS) std::printf("%s%s\t%zu\n", oSet.sName, o.sColumn, o.uUnits);
    if (std::strcmp(oSet.sName, "orders") == 0) {
        for (const char* sColumn :
             {" by records/Data_Reader/read", " by records/Records/read",
              " by records/Data_Writer/write", " by records as XML/Data_Reader/read",
              " by records as XML/Data_Writer/write"}) {
            std::printf("%s%s\t%zu\n", oSet.sName, sColumn, uNodes);
        }
    }
    const std::size_t uObjectNodes = bench::ObjectNodes(oSet);
    if (uObjectNodes == 0) return;
    for (const char* sColumn : {"write", "write reused", "read"}) {
        std::printf("%s as objects/vok/%s\t%zu\n", oSet.sName, sColumn, uObjectNodes);
    }
}

// Takes an argument out of the list: the rest of it behind its name, null when it is not there.
const char* Take(std::vector<char*>& asArgs, std::string_view sName) {
    const auto oFound = std::find_if(asArgs.begin() + 1, asArgs.end(), [sName](const char* s) {
        return std::string_view(s).starts_with(sName);
    });
    if (oFound == asArgs.end()) return nullptr;
    const char* sRest = *oFound + sName.size();
    asArgs.erase(oFound);
    return sRest;
}

}  // namespace

int main(int argc, char** argv) {
    vok::Msg::SetBanner(false);
    // Freed memory stays with the process, so that contenders on malloc do not pay the system
    // for fresh pages in every round.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    std::vector<char*> asArgs(argv, argv + argc);
    if (const char* sLarge = Take(asArgs, "--large"); sLarge != nullptr) {
        constexpr std::size_t uNodes = 100'000'000;
        return bench::RunLarge(*sLarge == '=' ? std::strtoull(sLarge + 1, nullptr, 10) : uNodes);
    }
    const char* sSet = Take(asArgs, "--set=");
    const bool bColumns = Take(asArgs, "--columns") != nullptr;
    const bool bTable = Take(asArgs, "--table") != nullptr;
    for (const auto& o : SETS) {
        if (sSet != nullptr && std::strcmp(sSet, o.sName) != 0) continue;
        bColumns ? PrintColumns(o.pMake()) : RegisterAll(o.pMake());
    }
    if (bColumns) return 0;
    char sRepetitions[] = "--benchmark_repetitions=10";
    char sMixed[] = "--benchmark_enable_random_interleaving=true";
    char sMinTime[] = "--benchmark_min_time=0.1";
    if (bTable) {
        asArgs.insert(asArgs.begin() + 1, {sRepetitions, sMixed, sMinTime});
    }
    int iArgs = static_cast<int>(asArgs.size());
    benchmark::Initialize(&iArgs, asArgs.data());
    if (benchmark::ReportUnrecognizedArguments(iArgs, asArgs.data())) return 1;
    TableReporter oReporter;
    if (bTable) {
        benchmark::RunSpecifiedBenchmarks(&oReporter);
    } else {
        benchmark::RunSpecifiedBenchmarks();
    }
    return 0;
}
