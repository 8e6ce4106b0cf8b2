// SPDX-License-Identifier: MIT
// The same bytes in memory, in a file and in a stream that knows nothing of itself: whatever they
// are taken for, the tree, the error, its place and what is left of the bytes do not depend on it.
#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_support.h"
#include "vok/dgraph/container.h"
#include "vok/file/file.h"
#include "vok/sys/sys.h"

namespace {

using namespace vok;

const std::string& Path() {
    static const std::string s_sPath = std::filesystem::temp_directory_path().string() +
                                       "/vok_places_fuzz_" + std::to_string(sys::ProcessId());
    return s_sPath;
}

// A tree, or why there is none.
struct Outcome {
    Data oTree;
    Load_Report oReport;
    bool bGood = false;

    template <class F>
    explicit Outcome(F&& oLoad) {
        bGood = Raised([&] { oLoad(oTree, oReport); }).empty();
    }
};

void CheckSame(const Outcome& o, const Outcome& oOther, std::size_t uSize) {
    Check(o.bGood == oOther.bGood);
    Check(o.oReport.m_uOffset == oOther.oReport.m_uOffset);
    Check(o.oReport.m_uNodes == oOther.oReport.m_uNodes);
    Check(o.oReport.m_uMissingBytes == oOther.oReport.m_uMissingBytes);
    Check(o.oReport.m_uMissingNodes == oOther.oReport.m_uMissingNodes);
    Check(o.oReport.m_uBytesLeft == oOther.oReport.m_uBytesLeft);
    CheckCost(o.oReport, uSize);
    CheckCost(oOther.oReport, uSize);
    if (!o.bGood || !o.oTree.IsNode()) return;
    if (o.oTree.GetType() == Data_Node::Zombi) return;
    Check(Data::Equal(o.oTree, oOther.oTree));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    std::ofstream(Path(), std::ios::binary) << sBytes;

    const Outcome oMemory([&](Data& oTree, Load_Report& oReport) {
        File_Buf oIn(pData, uSize);
        Dgraph_Load(oTree, oIn, {}, &oReport);
    });
    const Outcome oFile([&](Data& oTree, Load_Report& oReport) {
        File oIn(Path().c_str(), "r");
        Dgraph_Load(oTree, oIn, {}, &oReport);
    });
    CheckSame(oMemory, oFile, uSize);
    if (!sBytes.starts_with('x') && !sBytes.starts_with("PK")) return 0;
    const Outcome oWrapped([&](Data& oTree, Load_Report& oReport) {
        Dgraph_LoadFromBuffer(oTree, pData, uSize, {}, &oReport);
    });
    const Outcome oWrappedFile([&](Data& oTree, Load_Report& oReport) {
        Dgraph_LoadFromFile(oTree, Path().c_str(), {}, &oReport);
    });
    CheckSame(oWrapped, oWrappedFile, uSize);
    return 0;
}
