// SPDX-License-Identifier: MIT
// XML from outside: memory and a foreign stream give the same tree or the same error at the
// same place; a tree that came out of it survives XML and DGraph.
#include "fuzz/fuzz_support.h"

namespace {

using namespace vok;

std::string SaveXml(const Data& oTree) {
    File_Buf oBuf("w");
    oTree.SaveToXML(oBuf);
    return {oBuf.Data(), oBuf.Size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    if (uSize == 0) return 0;
    const u2_t uFlags = pData[0] & 15;
    const std::string_view sText(reinterpret_cast<const char*>(pData) + 1, uSize - 1);
    const Limits oLimits = SmallLimits();

    Data oTree, oOther;
    Load_Report oReport, oOtherReport;
    File_Buf oBuf(sText.data(), sText.size());
    Foreign_Stream oStream(sText);
    const std::string sError = Raised([&] { oTree.LoadFromXML(oBuf, uFlags, oLimits, &oReport); });
    const std::string sOtherError =
        Raised([&] { oOther.LoadFromXML(oStream, uFlags, oLimits, &oOtherReport); });
    Check(sError == sOtherError);
    Check(oReport.m_uOffset == oOtherReport.m_uOffset && oReport.m_uOffset <= sText.size());
    Check(oReport.m_uLine == oOtherReport.m_uLine && oReport.m_uColumn == oOtherReport.m_uColumn);
    if (!oTree.IsNode()) return 0;
    CheckTree(oTree);
    oTree.SetToRoot();

    // With blanks behind it most of a short document is read the fast way.
    if (sError.empty() && sText.find('\0') == std::string_view::npos) {
        Data oPadded;
        oPadded.LoadFromXMLString(std::string(sText) + std::string(64, ' '), uFlags, oLimits);
        Check(SaveXml(oPadded) == SaveXml(oTree));
    }

    // Also what a failed load left is a tree.
    const std::string sFirst = SaveXml(oTree);
    Data oTrip;
    oTrip.LoadFromXMLString(sFirst, 0);
    Check(SaveXml(oTrip) == sFirst);

    // A document drops empty attributes, links to the root, and digits of some values, once.
    const auto oThroughDGraph = [](Data& o) {
        Dgraph_SetVersion(o, 1, 3, 0);
        const std::string sBytes = Save(o);
        File_Buf oIn(sBytes.data(), sBytes.size());
        Data oLoaded;
        Dgraph_Load(oLoaded, oIn);
        return oLoaded;
    };
    Data oOnce = oThroughDGraph(oTree);
    Check(SaveXml(oThroughDGraph(oOnce)) == SaveXml(oOnce));
    bool bExact = true;
    for (const char* sLossy : {"=\"\"", "\"r4\"", "dateTime", "\"char\""}) {
        bExact = bExact && sFirst.find(sLossy) == std::string::npos;
    }
    const std::size_t uRootTag = sFirst.find("<", 1);
    const std::string_view sRootTag =
        std::string_view(sFirst).substr(uRootTag, sFirst.find('>', uRootTag) - uRootTag);
    bExact = bExact && sRootTag.find("CDNodeID=") == std::string_view::npos;
    Check(!bExact || SaveXml(oOnce) == sFirst);
    return 0;
}
