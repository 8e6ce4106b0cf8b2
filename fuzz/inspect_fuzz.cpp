// SPDX-License-Identifier: MIT
// Any bytes, whole and damaged: the fields of each document cover each of its bytes once, memory
// and a foreign stream give the same fields, and a document that loads whole has no fault and as
// many steps as nodes. What is salvaged loads.
#include <map>

#include "fuzz/fuzz_support.h"
#include "vok/inspect/inspect.h"
#include "vok/inspect/salvage.h"

namespace {

using namespace vok;

struct Outcome {
    std::string sError;
    u3_t uFields = 0;
    u3_t uSteps = 0;
    bool bFault = false;
    std::map<u2_t, u3_t> oEnds;
};

Outcome Go(File_Stream& oIn, std::string_view sBytes) {
    Outcome o;
    Limits oLimits = SmallLimits();
    oLimits.m_uInflatedBytes = 1 << 20;
    const auto oVisit = [&](const Inspect_Field& oField) {
        u3_t& uEnd = o.oEnds[oField.m_uDocument];
        Check(oField.m_uOffset == uEnd);
        Check(oField.m_sBytes.size() == std::min<u3_t>(oField.m_uLength, Inspect_Field::SHOWN));
        Check(oField.m_uLength != 0 || !oField.m_sFault.empty());
        if (oField.m_uDocument == 0) {
            Check(sBytes.substr(uEnd, oField.m_sBytes.size()) == oField.m_sBytes);
        }
        uEnd += oField.m_uLength;
        ++o.uFields;
        o.uSteps += std::string_view(oField.m_sName) == "step";
        o.bFault = o.bFault || oField.IsSkipped() || !oField.m_sFault.empty();
        return true;
    };
    o.sError = Raised([&] { Inspect(oIn, oVisit, oLimits); });
    if (o.sError.empty()) Check(o.oEnds[0] == sBytes.size());
    return o;
}

// What is salvaged loads, whole.
void Salvage(std::string_view sBytes) {
    File_Buf oIn(sBytes.data(), sBytes.size());
    File_Buf oOut("w");
    Limits oLimits = SmallLimits();
    oLimits.m_uInflatedBytes = 1 << 20;
    Salvage_Report oSalvaged;
    const std::string sError = Raised([&] {
        oSalvaged = Dgraph_Salvage(
            oIn, oOut, [](const Inspect_Field&) {}, oLimits);
    });
    if (!sError.empty()) return;
    oOut.Seek(0);
    Data oTree;
    Load_Report oReport;
    const std::string sLoad = Raised([&] { Dgraph_LoadDGraph(oTree, oOut, {}, &oReport); });
    if (!sLoad.empty()) std::fputs(sLoad.c_str(), stderr);
    Check(sLoad.empty() && oReport.IsComplete());
    Check(oTree.GetNodes() == oSalvaged.m_uNodes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    File_Buf oBuf(sBytes.data(), sBytes.size());
    const Outcome o = Go(oBuf, sBytes);
    Foreign_Stream oStream(sBytes);
    const Outcome oOther = Go(oStream, sBytes);
    Check(o.sError == oOther.sError);
    Check(o.uFields == oOther.uFields);

    Salvage(sBytes);

    if (sBytes.size() < 30 || !sBytes.starts_with("DGraphBin\1")) return 0;
    Data oTree;
    Load_Report oReport;
    File_Buf oAgain(sBytes.data(), sBytes.size());
    const std::string sLoad =
        Raised([&] { Dgraph_LoadDGraph(oTree, oAgain, SmallLimits(), &oReport); });
    // What loads without a word may have texts with NULs in them, which look like damage.
    if (sLoad.empty() && oReport.IsComplete() && !o.bFault) Check(o.uSteps == oTree.GetNodes());
    return 0;
}
