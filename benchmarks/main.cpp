// All benchmarks, contender by contender within a data set, so that ratios come from one run.
#include "benchmarks/contender.h"
#include "vok/base/msg.h"

int main(int argc, char** argv) {
    vok::Msg::SetBanner(false);
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
