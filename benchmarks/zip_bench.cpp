// SPDX-License-Identifier: MIT
// The compressed streams against zlib itself on the same bytes, and directories of many members.
// A program of its own; takes the flags of Google Benchmark.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace {

constexpr std::size_t CHUNK = 256 * 1024;

// 16 MiB of records as they are in documents: short texts, counters, some noise.
const std::string& Plain() {
    static const std::string s_sPlain = [] {
        std::string s;
        std::mt19937 oRandom(1);
        for (unsigned u = 0; s.size() < 16u << 20; ++u) {
            s += "order[" + std::to_string(u) + "] symbol ";
            s += "ABCDEFGH"[oRandom() % 8];
            s.append(reinterpret_cast<const char*>(&u), sizeof(u));
            const auto uNoise = static_cast<unsigned>(oRandom());
            s.append(reinterpret_cast<const char*>(&uNoise), sizeof(uNoise));
        }
        return s;
    }();
    return s_sPlain;
}

std::string Deflate(const std::string& sPlain) {
    std::string sOut;
    std::vector<char> oChunk(CHUNK);
    z_stream oZ{};
    if (deflateInit(&oZ, Z_DEFAULT_COMPRESSION) != Z_OK) return sOut;
    for (std::size_t u = 0; u < sPlain.size(); u += CHUNK) {
        oZ.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(sPlain.data() + u));
        oZ.avail_in = static_cast<uInt>(std::min(CHUNK, sPlain.size() - u));
        const int iFlush = u + CHUNK >= sPlain.size() ? Z_FINISH : Z_NO_FLUSH;
        do {
            oZ.next_out = reinterpret_cast<Bytef*>(oChunk.data());
            oZ.avail_out = CHUNK;
            deflate(&oZ, iFlush);
            sOut.append(oChunk.data(), CHUNK - oZ.avail_out);
        } while (oZ.avail_out == 0);
    }
    deflateEnd(&oZ);
    return sOut;
}

const std::string& Packed() {
    static const std::string s_sPacked = Deflate(Plain());
    return s_sPacked;
}

void SetBytes(benchmark::State& oState) {
    oState.SetBytesProcessed(static_cast<std::int64_t>(Plain().size()) *
                             static_cast<std::int64_t>(oState.iterations()));
}

// ---- deflate ----------------------------------------------------------------

void DeflateZlib(benchmark::State& oState) {
    for (auto _ : oState) benchmark::DoNotOptimize(Deflate(Plain()));
    SetBytes(oState);
}

void WriteAll(vok::File_Stream& oOut, std::size_t uPiece) {
    const std::string& s = Plain();
    for (std::size_t u = 0; u < s.size(); u += uPiece) {
        oOut.Write(s.data() + u, std::min(uPiece, s.size() - u));
    }
}

void DeflateZipBuf(benchmark::State& oState) {
    for (auto _ : oState) {
        vok::Zip_Buf oZip;
        oZip.Open("w");
        WriteAll(oZip, static_cast<std::size_t>(oState.range(0)));
        oZip.Close();
        benchmark::DoNotOptimize(oZip.GetBuffer().Size());
    }
    SetBytes(oState);
}

std::string ArchivePath() {
    return std::filesystem::temp_directory_path().string() + "/vok_zip_bench.zip";
}

void DeflateArchive(benchmark::State& oState) {
    for (auto _ : oState) {
        vok::Zip_Archive oZip(ArchivePath().c_str(), "w");
        oZip.OpenNewFile("m");
        WriteAll(oZip, static_cast<std::size_t>(oState.range(0)));
        oZip.Close();
    }
    SetBytes(oState);
}

// ---- inflate ----------------------------------------------------------------

void InflateZlib(benchmark::State& oState) {
    const std::string& s = Packed();
    std::vector<char> oChunk(CHUNK);
    for (auto _ : oState) {
        z_stream oZ{};
        if (inflateInit(&oZ) != Z_OK) return;
        int iResult = Z_OK;
        for (std::size_t u = 0; iResult == Z_OK && u < s.size(); u += CHUNK) {
            oZ.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(s.data() + u));
            oZ.avail_in = static_cast<uInt>(std::min(CHUNK, s.size() - u));
            do {
                oZ.next_out = reinterpret_cast<Bytef*>(oChunk.data());
                oZ.avail_out = CHUNK;
                iResult = inflate(&oZ, Z_NO_FLUSH);
                benchmark::ClobberMemory();
            } while (oZ.avail_out == 0);
        }
        inflateEnd(&oZ);
    }
    SetBytes(oState);
}

void ReadAll(vok::File_Stream& oIn, std::size_t uPiece) {
    std::vector<char> oPiece(uPiece);
    while (oIn.Read(oPiece.data(), uPiece, true) != 0) benchmark::ClobberMemory();
}

void InflateZipBuf(benchmark::State& oState) {
    for (auto _ : oState) {
        vok::Zip_Buf oZip;
        oZip.Open(Packed().data(), Packed().size());
        ReadAll(oZip, static_cast<std::size_t>(oState.range(0)));
    }
    SetBytes(oState);
}

// With a CRC-32 on top, which zlib's stream has not.
void InflateArchive(benchmark::State& oState) {
    {
        vok::Zip_Archive oZip(ArchivePath().c_str(), "w");
        oZip.OpenNewFile("m");
        WriteAll(oZip, CHUNK);
    }
    for (auto _ : oState) {
        vok::Zip_Archive oZip(ArchivePath().c_str());
        oZip.OpenCurrentFile();
        ReadAll(oZip, static_cast<std::size_t>(oState.range(0)));
    }
    SetBytes(oState);
}

// ---- directories ------------------------------------------------------------

void MakeMany(std::int64_t iMembers) {
    vok::Zip_Archive oZip(ArchivePath().c_str(), "w");
    for (std::int64_t i = 0; i < iMembers; ++i) {
        oZip.OpenNewFile(("folder/member" + std::to_string(i)).c_str());
        oZip.Write("some bytes of a member");
    }
}

void List(benchmark::State& oState) {
    MakeMany(oState.range(0));
    for (auto _ : oState) {
        vok::Zip_Archive oZip(ArchivePath().c_str());
        for (bool b = oZip.GoToFirstFile(); b; b = oZip.GoToNextFile()) {
            benchmark::DoNotOptimize(oZip.GetCurrentFileInfo().m_uCrc);
        }
    }
    oState.SetItemsProcessed(oState.range(0) * static_cast<std::int64_t>(oState.iterations()));
}

void Extract(benchmark::State& oState) {
    MakeMany(oState.range(0));
    vok::Arr<char> oBytes;
    for (auto _ : oState) {
        vok::Zip_Archive oZip(ArchivePath().c_str());
        for (bool b = oZip.GoToFirstFile(); b; b = oZip.GoToNextFile()) oZip.Uncompress(oBytes);
    }
    oState.SetItemsProcessed(oState.range(0) * static_cast<std::int64_t>(oState.iterations()));
}

void Locate(benchmark::State& oState) {
    MakeMany(oState.range(0));
    vok::Zip_Archive oZip(ArchivePath().c_str());
    oZip.LocateFile("");
    std::vector<vok::Str> oNames;
    std::mt19937 oRandom(2);
    for (unsigned u = 0; u < 1000; ++u) {
        const auto uNth = oRandom() % static_cast<unsigned>(oState.range(0));
        oNames.emplace_back(("folder/member" + std::to_string(uNth)).c_str());
    }
    for (auto _ : oState) {
        for (const vok::Str& o : oNames) benchmark::DoNotOptimize(oZip.LocateFile(o));
    }
    oState.SetItemsProcessed(1000 * static_cast<std::int64_t>(oState.iterations()));
}

BENCHMARK(DeflateZlib)->Unit(benchmark::kMillisecond);
BENCHMARK(DeflateZipBuf)->Arg(CHUNK)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(DeflateArchive)->Arg(CHUNK)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateZlib)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateZipBuf)->Arg(CHUNK)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateArchive)->Arg(CHUNK)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(List)->Arg(6553)->Arg(65535)->Unit(benchmark::kMillisecond);
BENCHMARK(Extract)->Arg(6553)->Arg(65535)->Unit(benchmark::kMillisecond);
BENCHMARK(Locate)->Arg(655)->Arg(65535)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
