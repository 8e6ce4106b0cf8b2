// SPDX-License-Identifier: MIT
// Any bytes as JSON: from memory and from a foreign stream the same tree or the same error, and
// what was loaded, in part or whole, comes back as an equal tree and the same bytes.
#include "fuzz/fuzz_support.h"
#include "vok/json/json.h"

namespace {

using namespace vok;

std::string Written(const Data& oTree, Json_Layout eLayout) {
    File_Buf oBuf("w");
    Json_Save(oTree, oBuf, eLayout);
    return {oBuf.Data(), oBuf.Size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    Data oTree;
    Data oOther;
    Load_Report oReport;
    Load_Report oOtherReport;
    Foreign_Stream oStream(sBytes);
    const std::string sError =
        Raised([&] { Json_LoadString(oTree, sBytes, SmallLimits(), &oReport); });
    Check(sError == Raised([&] { Json_Load(oOther, oStream, SmallLimits(), &oOtherReport); }));
    Check(oReport.m_uOffset <= uSize);
    Check(oReport.m_uOffset == oOtherReport.m_uOffset && oReport.m_uLine == oOtherReport.m_uLine);
    Check(oReport.m_uColumn == oOtherReport.m_uColumn);
    CheckTree(oTree);
    Check(Data::Equal(oTree, oOther));
    for (const Json_Layout eLayout : {Json_Layout::Compact, Json_Layout::Lines}) {
        const std::string sJson = Written(oTree, eLayout);
        Data oBack;
        Load_Report oBackReport;
        Json_LoadString(oBack, sJson, {}, &oBackReport);
        CheckTree(oBack);
        Check(oBackReport.IsComplete() && oBackReport.m_uRounded == 0);
        Check(Data::Equal(oTree, oBack));
        Check(Written(oBack, eLayout) == sJson);
    }
    return 0;
}
