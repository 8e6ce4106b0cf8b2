// SPDX-License-Identifier: MIT
// The floor: what any implementation of the same document has to do at the least.
#include <cstring>
#include <memory>

#include "benchmarks/contender.h"
#include "vok/data/data.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"

namespace bench {

namespace {

// A node as a flat loop would keep it: the step text ready made, the value beside it.
struct Flat {
    char sStep[24];
    std::uint32_t uStep;
    std::uint32_t uCount;
    Kind eKind;
    std::int32_t iValue;
    double dValue;
    const char* pText;
    std::uint32_t uText;
};

std::vector<Flat> MakeFlat(const Set& oSet) {
    std::vector<Flat> aoFlat;
    aoFlat.reserve(oSet.items.size());
    for (const Item& oItem : oSet.items) {
        Flat o{};
        const std::string sStep = oSet.names[oItem.uName].substr(0, 20) + "[0]";
        std::memcpy(o.sStep, sStep.data(), sStep.size());
        o.uStep = static_cast<std::uint32_t>(sStep.size());
        o.uCount = oItem.uChildren;
        o.eKind = oItem.eKind;
        if (oItem.eKind == Kind::Double) o.dValue = oItem.dValue;
        if (oItem.eKind == Kind::Integer || oItem.eKind == Kind::Boolean) o.iValue = oItem.iValue;
        const bool bBytes = oItem.eKind == Kind::Binary;
        if (oItem.eKind == Kind::Text || bBytes) o.pText = oItem.pText;
        o.uText = bBytes ? oItem.uText : oItem.uText + 1;
        aoFlat.push_back(o);
    }
    return aoFlat;
}

template <class T>
char* Put(char* p, T tValue) {
    std::memcpy(p, &tValue, sizeof(T));
    return p + sizeof(T);
}

// More than Emit will write.
std::size_t RoomFor(const std::vector<Flat>& aoFlat) {
    std::size_t uRoom = 0;
    for (const Flat& o : aoFlat) uRoom += sizeof(Flat) + o.uText;
    return uRoom;
}

char* Emit(const std::vector<Flat>& aoFlat, char* p) {
    for (const Flat& o : aoFlat) {
        p = Put(p, o.uStep);
        std::memcpy(p, o.sStep, sizeof(o.sStep));
        p += o.uStep;
        switch (o.eKind) {
            case Kind::Integer:
                *p++ = 1;
                p = Put(p, o.iValue);
                break;
            case Kind::Double:
                *p++ = 3;
                p = Put(p, o.dValue);
                break;
            case Kind::Boolean:
                *p++ = 6;
                *p++ = static_cast<char>(o.iValue);
                break;
            case Kind::Text:
            case Kind::Binary:
                *p++ = o.eKind == Kind::Text ? 5 : 8;
                p = Put(p, o.uText);
                std::memcpy(p, o.pText, o.uText);
                p += o.uText;
                break;
            case Kind::Map:
            case Kind::List: *p++ = 0; p = Put(p, o.uCount);
        }
    }
    return p;
}

}  // namespace

void RegisterFloor(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + "/floor/";
    const double dNodes = static_cast<double>(oSet.items.size());
    benchmark::RegisterBenchmark((sPrefix + "flat-loop").c_str(), [&oSet, dNodes](
                                                                      benchmark::State& oState) {
        const std::vector<Flat> aoFlat = MakeFlat(oSet);
        std::vector<char> aBytes(RoomFor(aoFlat));
        std::size_t uSize = 0;
        for (auto _ : oState) {
            uSize = static_cast<std::size_t>(Emit(aoFlat, aBytes.data()) - aBytes.data());
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(uSize));
    })->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark((sPrefix + "memcpy").c_str(), [&oSet,
                                                                dNodes](benchmark::State& oState) {
        const std::vector<Flat> aoFlat = MakeFlat(oSet);
        std::vector<char> aBytes(RoomFor(aoFlat));
        const auto uSize = static_cast<std::size_t>(Emit(aoFlat, aBytes.data()) - aBytes.data());
        std::vector<char> aCopy(uSize);
        for (auto _ : oState) {
            std::memcpy(aCopy.data(), aBytes.data(), uSize);
            benchmark::ClobberMemory();
        }
        Count(oState, dNodes, static_cast<double>(uSize));
    })->Unit(benchmark::kMicrosecond);
}

}  // namespace bench
