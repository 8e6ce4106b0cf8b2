// SPDX-License-Identifier: MIT
// Reads the package database of a Debian machine, writes all of it through the serializer to a
// DGraph file and to an XML file, reads them back and compares every field.
#include <chrono>
#include <cstdio>
#include <filesystem>

#include <CLI/CLI.hpp>

#include "examples/package_inventory/status_file.h"
#include "tools/output.h"
#include "tools/print.h"
#include "vok/base/msg.h"
#include "vok/data/succ_it.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"
#include "vok/file/file.h"

namespace {

using namespace inventory;
using Velmar::Q7R::Serializer::Byte;
using Velmar::Q7R::Serializer::Serializer;

class Stopwatch {
  public:
    // Milliseconds since the start or the last call.
    double Lap() {
        const auto oNow = std::chrono::steady_clock::now();
        const double dMs = std::chrono::duration<double, std::milli>(oNow - m_oLast).count();
        m_oLast = oNow;
        return dMs;
    }

  private:
    std::chrono::steady_clock::time_point m_oLast = std::chrono::steady_clock::now();
};

std::vector<Byte> Load(const std::string& sPath) {
    vok::File oFile;
    vok::Arr<char> oBytes;
    oFile.Open(sPath.c_str(), "r", true);
    oFile.Read(oBytes, vok::File_Stream::ALL);
    return {oBytes.Beg(), oBytes.End()};
}

// Prints every difference; true when there is none.
bool Compare(const Inventory& oWritten, const Inventory& oRead) {
    bool bEqual = oWritten.oPackages.size() == oRead.oPackages.size();
    if (!bEqual) {
        std::printf("DIFFERENT: %zu packages written, %zu read\n", oWritten.oPackages.size(),
                    oRead.oPackages.size());
    }
    const std::size_t uBoth = std::min(oWritten.oPackages.size(), oRead.oPackages.size());
    for (std::size_t u = 0; u < uBoth; ++u) {
        if (oWritten.oPackages[u] == oRead.oPackages[u]) continue;
        std::printf("DIFFERENT: package %s\n", oWritten.oPackages[u].sName.c_str());
        bEqual = false;
    }
    return bEqual;
}

// A few questions to the loaded tree.
void ShowPaths(const vok::Data& oRoot) {
    const auto oAsk = [&](const char* sPath) {
        const vok::Data_NodeSet oFound = oRoot.GetNodeSet(sPath);
        std::printf("  %-46s %6zu nodes", sPath, oFound.Size());
        const vok::Data oFirst = oFound.GetNth(0);
        if (oFirst.IsNode() && oFirst.GetType() == vok::Data_Node::String) {
            std::printf("; first: %.40s", oFirst.GetValStr());
        }
        if (oFirst.IsNode() && oFirst.GetType() == vok::Data_Node::Integer) {
            std::printf("; first: %d", oFirst.GetValInt());
        }
        std::printf("\n");
    };
    std::printf("found by path\n");
    oAsk("/package[0]/name");
    oAsk("/package/number/value");
    oAsk("//any-of/package/name");
    oAsk("//version");
}

int Run(const std::string& sStatus, const std::string& sOutput) {
    Stopwatch oWatch;
    std::size_t uBytesIn = 0;
    Inventory oInventory;
    oInventory.oPackages = ReadStatusFile(sStatus, uBytesIn);
    std::printf("read      %zu packages, %zu bytes of %s in %.1f ms\n", oInventory.oPackages.size(),
                uBytesIn, sStatus.c_str(), oWatch.Lap());

    Serializer oSerializer;
    const std::vector<Byte> aWritten = oSerializer.WriteToBinaryBuffer(oInventory);
    const double dWrite = oWatch.Lap();
    {
        tools::Output oFile(sOutput);
        oFile.Stream().Write(aWritten.data(), aWritten.size());
        oFile.Commit();
    }
    std::printf("wrote     %zu bytes to %s in %.1f ms, %.1f ms of them for the file\n",
                aWritten.size(), sOutput.c_str(), dWrite, oWatch.Lap());

    const std::vector<Byte> aLoaded = Load(sOutput);
    oWatch.Lap();
    Inventory oCopy;
    oSerializer.ReadFromBinaryBuffer(oCopy, aLoaded);
    const double dRead = oWatch.Lap();

    vok::Data oTree;
    vok::File_Buf oBuffer(aLoaded.data(), aLoaded.size());
    vok::Dgraph_LoadDGraph(oTree, oBuffer);
    std::printf("read back %u nodes in %.1f ms, objects included\n", oTree.GetNodes(), dRead);
    ShowPaths(oTree);

    const std::string sXml = sOutput + ".xml";
    oWatch.Lap();
    {
        tools::Output oFile(sXml);
        oSerializer.WriteToStream(oInventory, oFile.Stream(),
                                  Velmar::Q7R::Serializer::StreamForm::Xml);
        oFile.Commit();
    }
    const double dWriteXml = oWatch.Lap();
    Inventory oFromXml;
    oSerializer.ReadFromFile(oFromXml, sXml);
    std::printf("as XML    %lld bytes to %s in %.1f ms, read back in %.1f ms\n",
                static_cast<long long>(vok::File::Size(sXml.c_str())), sXml.c_str(), dWriteXml,
                oWatch.Lap());

    if (!Compare(oInventory, oCopy) || !Compare(oInventory, oFromXml)) return 1;
    std::printf("equal in every field\n");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    vok::Msg::SetBanner(false);
    tools::HandleSignals();
    CLI::App oApp{
        "Writes the package database of a Debian machine to a DGraph file and, beside it, to an "
        "XML file, reads them back and compares every field. Exits with 1 when anything differs."};
    std::string sStatus = "/var/lib/dpkg/status";
    std::string sOutput =
        (std::filesystem::temp_directory_path() / "package_inventory.dgraph").string();
    oApp.add_option("status", sStatus, "the package database")->capture_default_str();
    oApp.add_option("-o,--output", sOutput, "the DGraph file to write")->capture_default_str();
    oApp.allow_windows_style_options(false);  // "/" begins a path
    CLI11_PARSE(oApp, argc, argv);
    try {
        const int iExit = Run(sStatus, sOutput);
        tools::FinishPrinting();
        return iExit;
    } catch (const std::exception& e) {
        std::string sWhat = e.what();
        while (!sWhat.empty() && sWhat.back() == '\n') sWhat.pop_back();
        std::fprintf(stderr, "package_inventory: %s\n", sWhat.c_str());
        return 2;
    }
}
