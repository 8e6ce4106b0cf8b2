// All benchmarks, contender by contender within a data set, so that ratios come from one run.
//
//     vok_benchmarks [--table] [flags of Google Benchmark]
//
// With --table every benchmark runs several times in mixed order, and the best time per node of
// each is printed as one Markdown table per data set, beside its ratio to the peer to beat:
// MessagePack, or pugixml for documents in XML.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/contender.h"
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

    static constexpr const char* COLUMNS[] = {"build",  "write", "read", "walk",
                                              "lookup", "load",  "save", "heap"};

    static void Note(Row& oRow, const std::string& sWhat, double dValue) {
        const auto [oFound, bNew] = oRow.try_emplace(sWhat, dValue);
        if (!bNew) oFound->second = std::min(oFound->second, dValue);
    }

    static void PrintTable(const std::string& sSet, const Table& oTable) {
        auto oPeer = oTable.find("msgpack");
        if (oPeer == oTable.end()) oPeer = oTable.find("pugixml");
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
                if (oPeer->first != sContender) {
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

int main(int argc, char** argv) {
    vok::Msg::SetBanner(false);
    // Freed memory stays with the process, so that contenders on malloc do not pay the system
    // for fresh pages in every round.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    for (const bench::Set* pSet : {&bench::Orders(), &bench::Config(), &bench::Small()}) {
        bench::RegisterFloor(*pSet);
        bench::RegisterVok(*pSet);
        bench::RegisterDump(*pSet);
        bench::RegisterFacade(*pSet);
        bench::RegisterMsgpack(*pSet);
        bench::RegisterRapidjson(*pSet);
        bench::RegisterXml(*pSet);
    }
    std::vector<char*> asArgs(argv, argv + argc);
    char sRepetitions[] = "--benchmark_repetitions=10";
    char sMixed[] = "--benchmark_enable_random_interleaving=true";
    char sMinTime[] = "--benchmark_min_time=0.1";
    const auto oTable = std::find_if(asArgs.begin() + 1, asArgs.end(),
                                     [](const char* s) { return std::strcmp(s, "--table") == 0; });
    const bool bTable = oTable != asArgs.end();
    if (bTable) {
        asArgs.erase(oTable);
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
