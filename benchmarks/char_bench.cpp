// SPDX-License-Identifier: MIT
// Normalization and folding beside utf8proc, on texts of several scripts, and memcpy as the floor.
// A program of its own; takes the flags of Google Benchmark. Rates are those of the bytes read.
#include <benchmark/benchmark.h>
#include <utf8proc.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vok/char/casing.h"
#include "vok/char/cluster.h"
#include "vok/char/normalize.h"

namespace {

using vok::Char::Form;

struct Sample {
    const char* m_sName;
    const char* m_sText;
};
constexpr Sample SAMPLES[] = {
    {"ascii", "The quick brown fox jumps over the lazy dog, order[17] symbol ABC 1234.50 EUR. "},
    {"german",
     "Übungsstücke für größere Mädchen: Die Straße führt über die schöne Brücke zum Café. "},
    {"vietnamese",
     "Tất cả mọi người sinh ra đều được tự do và bình đẳng về nhân phẩm và quyền lợi. "},
    {"russian", "Все люди рождаются свободными и равными в своём достоинстве и правах, ёлка й. "},
    {"greek",
     "Όλοι οι άνθρωποι γεννιούνται ελεύθεροι και ίσοι στην αξιοπρέπεια και τα δικαιώματα. "},
    {"hindi", "सभी मनुष्यों को गौरव और अधिकारों के मामले में जन्मजात स्वतन्त्रता और समानता प्राप्त है। "},
    {"arabic", "يُولَدُ جَمِيعُ النَّاسِ أَحْرَارًا مُتَسَاوِينَ فِي الْكَرَامَةِ وَالْحُقُوقِ "},
    {"chinese",
     "人人生而自由，在尊严和权利上一律平等。他们赋有理性和良心，并应以兄弟关系的精神相对待。"},
    {"korean", "모든 인간은 태어날 때부터 자유로우며 그 존엄과 권리에 있어 동등하다. "},
};

std::string Long(const char* sText) {
    std::string s;
    while (s.size() < 1u << 20) s += sText;
    return s;
}

std::string In(Form eForm, const std::string& s) {
    vok::Arr<char> oOut;
    vok::Char::Normalize(s, eForm, oOut);
    return {oOut.Beg(), oOut.Size()};
}

// In the order of Form, and folding.
constexpr const char* NAMES[] = {"NFC", "NFD", "NFKC", "NFKD", "fold"};
constexpr int FOLD = 4;

void Ours(benchmark::State& oState, const std::string& s, int iWhat) {
    vok::Arr<char> oOut;
    for (auto _ : oState) {
        oOut.Truncate(0);
        if (iWhat == FOLD) {
            vok::Char::Fold(s, oOut);
        } else {
            vok::Char::Normalize(s, static_cast<Form>(iWhat), oOut);
        }
        benchmark::DoNotOptimize(oOut.Beg());
    }
    oState.SetBytesProcessed(static_cast<std::int64_t>(oState.iterations() * s.size()));
}

void Theirs(benchmark::State& oState, const std::string& s, int iWhat) {
    constexpr int OPTIONS[] = {UTF8PROC_COMPOSE, UTF8PROC_DECOMPOSE,
                               UTF8PROC_COMPOSE | UTF8PROC_COMPAT,
                               UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT, UTF8PROC_CASEFOLD};
    const auto eOptions = static_cast<utf8proc_option_t>(OPTIONS[iWhat] | UTF8PROC_STABLE);
    for (auto _ : oState) {
        utf8proc_uint8_t* pOut = nullptr;
        const auto iSize = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(s.data()),
                                        static_cast<utf8proc_ssize_t>(s.size()), &pOut, eOptions);
        if (iSize < 0) oState.SkipWithError("utf8proc failed");
        benchmark::DoNotOptimize(pOut);
        std::free(pOut);
    }
    oState.SetBytesProcessed(static_cast<std::int64_t>(oState.iterations() * s.size()));
}

void Copy(benchmark::State& oState, const std::string& s) {
    std::vector<char> oOut(s.size());
    for (auto _ : oState) {
        std::memcpy(oOut.data(), s.data(), s.size());
        benchmark::DoNotOptimize(oOut.data());
        benchmark::ClobberMemory();
    }
    oState.SetBytesProcessed(static_cast<std::int64_t>(oState.iterations() * s.size()));
}

void Clusters(benchmark::State& oState, const std::string& s) {
    for (auto _ : oState) benchmark::DoNotOptimize(vok::Char::Width(s));
    oState.SetBytesProcessed(static_cast<std::int64_t>(oState.iterations() * s.size()));
}

// The same by the peer: its rules for borders, and its widths.
void TheirClusters(benchmark::State& oState, const std::string& s) {
    for (auto _ : oState) {
        const auto* p = reinterpret_cast<const utf8proc_uint8_t*>(s.data());
        auto iLeft = static_cast<utf8proc_ssize_t>(s.size());
        utf8proc_int32_t iLast = 0, iBreak = 0, iCode = 0;
        std::size_t uClusters = 0, uColumns = 0;
        while (iLeft > 0) {
            const utf8proc_ssize_t iSize = utf8proc_iterate(p, iLeft, &iCode);
            uClusters += utf8proc_grapheme_break_stateful(iLast, iCode, &iBreak);
            uColumns += static_cast<std::size_t>(utf8proc_charwidth(iCode));
            iLast = iCode;
            p += iSize;
            iLeft -= iSize;
        }
        benchmark::DoNotOptimize(uClusters + uColumns);
    }
    oState.SetBytesProcessed(static_cast<std::int64_t>(oState.iterations() * s.size()));
}

}  // namespace

int main(int iArgs, char** asArgs) {
    benchmark::Initialize(&iArgs, asArgs);
    for (const Sample& o : SAMPLES) {
        // Both ways: a text that is in the form already, and one that is in the other one.
        const std::string sComposed = In(Form::NFC, Long(o.m_sText));
        const std::string sDecomposed = In(Form::NFD, sComposed);
        const auto oAdd = [&](const std::string& sName, auto pRun, auto... oArgs) {
            benchmark::RegisterBenchmark((std::string(o.m_sName) + '/' + sName).c_str(), pRun,
                                         oArgs...);
        };
        oAdd("memcpy", Copy, sComposed);
        for (int i = 0; i <= FOLD; ++i) {
            const std::string sName = NAMES[i];
            oAdd(sName + "/vok", Ours, sComposed, i);
            oAdd(sName + "/utf8proc", Theirs, sComposed, i);
            if (i == FOLD || sDecomposed == sComposed) continue;
            oAdd(sName + "_of_NFD/vok", Ours, sDecomposed, i);
            oAdd(sName + "_of_NFD/utf8proc", Theirs, sDecomposed, i);
        }
        oAdd("width/vok", Clusters, sComposed);
        oAdd("width/utf8proc", TheirClusters, sComposed);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
