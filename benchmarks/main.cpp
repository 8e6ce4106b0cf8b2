// All benchmarks, contender by contender within a data set, so that ratios come from one run.
#include <malloc.h>

#include "benchmarks/contender.h"
#include "vok/base/msg.h"

int main(int argc, char** argv) {
    vok::Msg::SetBanner(false);
    // Freed memory stays with the process, so that contenders on malloc do not pay the system
    // for fresh pages in every round.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    for (const bench::Set* pSet : {&bench::Orders(), &bench::Config(), &bench::Small()}) {
        bench::RegisterFloor(*pSet);
        bench::RegisterVok(*pSet);
        bench::RegisterFacade(*pSet);
        bench::RegisterMsgpack(*pSet);
        bench::RegisterRapidjson(*pSet);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
