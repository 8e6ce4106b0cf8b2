// Bytes of any form, with the limits that everybody has: whatever they are taken for, the outcome
// is a tree that can be saved or an error, and it costs no more than such bytes may.
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    using namespace vok;
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    File_Buf oIn(pData, uSize);
    Data oTree;
    Load_Report oReport;
    const std::string sError = Raised([&] { Dgraph_Load(oTree, oIn, {}, &oReport); });
    Check(oReport.m_uOffset <= uSize);
    CheckCost(oReport, uSize);
    if (!sError.empty() || !oTree.IsNode()) return 0;
    oTree.SetToRoot();
    Dgraph_SetVersion(oTree, 1, 3, 0);
    const std::string sBytes = Save(oTree);
    File_Buf oAgain(sBytes.data(), sBytes.size());
    Data oTrip;
    Dgraph_Load(oTrip, oAgain);
    Check(Save(oTrip).size() <= sBytes.size());
    return 0;
}
