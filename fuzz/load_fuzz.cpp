// SPDX-License-Identifier: MIT
// Bytes of any form, with the limits that everybody has: whatever they are taken for, the outcome
// is a tree that can be saved or an error, and it costs no more than such bytes may. Read record by
// record they give the same.
#include <optional>

#include "fuzz/fuzz_support.h"
#include "vok/records/canonical.h"

namespace {

using namespace vok;

// What is compressed, and native dumps, are not for this.
bool HasRecords(std::string_view sBytes) {
    if (sBytes.empty() || sBytes[0] == 'x' || sBytes[0] == 'P' || sBytes[0] == '\x1f') return false;
    File_Buf oIn(sBytes.data(), sBytes.size());
    if (Data::CanLoad(oIn)) return false;
    return !Dgraph_CanLoadDGraph(oIn) || (sBytes.size() > 9 && sBytes[9] == 1);
}

// The canonical form, told record by record, is that of the tree.
void CheckForm(std::string_view sBytes, const Data& oTree) {
    std::string sForm;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Data_Canonical oForm([&](std::string_view s) { sForm += s; });
    for (Data_Reader o(oBuf); o.Next();) {
        if (!oForm.Add(o)) return;
    }
    oForm.Finish();
    std::size_t uSeen = 0;
    oTree.GetRoot().Canonical([&](std::string_view s) {
        Check(sForm.compare(uSeen, s.size(), s) == 0);
        uSeen += s.size();
    });
    Check(uSeen == sForm.size());
}

// The same tree or the same error at the same place, but for links, which loading may find too dear
// to follow, or to lead nowhere.
void CheckRecords(std::string_view sBytes, const Data& oLoaded, const std::string& sError,
                  const Load_Report& oReport) {
    // A stream of few bytes at a time, and a buffer; readers end before they do.
    Foreign_Stream oStream(sBytes);
    File_Buf oBuf(sBytes.data(), sBytes.size());
    std::optional<Data_Reader> oReader;
    bool bLinks = false;
    const auto oRead = [&](bool bTake, Data& oTree) {
        File_Stream& oIn = bTake ? static_cast<File_Stream&>(oBuf) : oStream;
        return Raised([&] {
            oReader.emplace(oIn);
            while (oReader->Next()) {
                bLinks |= (*oReader)->GetType() == Data_Node::Link ||
                          (*oReader)->FindAttribute("CDNodeIDREF") != nullptr;
                if (bTake) oReader->Take(oTree);
            }
        });
    };
    Data oTree;
    const std::string sReading = oRead(false, oTree);
    bLinks |= sBytes.find("CDNodeIDREF") != std::string_view::npos;
    if (!bLinks) Check(sReading == sError);
    Check(sError.empty() <= sReading.empty());
    if (oReader && sReading == sError) {
        const Load_Report o = oReader->GetReport();
        Check(o.m_uOffset == oReport.m_uOffset && o.m_uNodes == oReport.m_uNodes);
        Check(o.m_uLine == oReport.m_uLine && o.m_uColumn == oReport.m_uColumn);
        Check(o.m_uMissingBytes == oReport.m_uMissingBytes);
        Check(o.m_uMissingNodes == oReport.m_uMissingNodes);
        Check(o.m_uComments == oReport.m_uComments);
    }
    const std::string sTaking = oRead(true, oTree);
    if (bLinks || !sReading.empty()) return;
    Check(sTaking.empty());
    Data oWhole = oLoaded;
    for (Data* p : {&oWhole, &oTree}) Dgraph_SetVersion(*p, 1, 3, 0);
    Check(Save(oTree) == Save(oWhole));
    CheckForm(sBytes, oWhole);
}

// A reader that is asked where it stands, has some records left out, or takes them, comes to the
// same as one that only goes on.
void CheckAsked(std::string_view sBytes) {
    File_Buf oPlainIn(sBytes.data(), sBytes.size());
    File_Buf oAskedIn(sBytes.data(), sBytes.size());
    Data_Reader oPlain(oPlainIn);
    Data_Reader oAsked(oAskedIn);
    Data oTree;
    const std::size_t uSeldom = 1 + sBytes.size() % 13;
    for (std::size_t u = 0;; ++u) {
        bool bPlain = false;
        bool bAsked = false;
        const std::string sError = Raised([&] { bPlain = oPlain.Next(); });
        Check(Raised([&] { bAsked = oAsked.Next(); }) == sError && bAsked == bPlain);
        if (!bPlain) break;
        Check(oPlain->GetName() == oAsked->GetName() && oPlain->GetIndex() == oAsked->GetIndex());
        Check(oPlain->GetDepth() == oAsked->GetDepth() && oPlain->GetType() == oAsked->GetType());
        Check(oPlain->GetOffset() == oAsked->GetOffset() && oPlain->Text() == oAsked->Text());
        if (u % uSeldom != 0) continue;
        switch (u / uSeldom % 4) {
            case 0: Check(oPlain.GetPath() == oAsked.GetPath()); break;
            case 1: (void)oAsked.GetReport(); break;
            case 2:
                // Below a leaf there is nothing to leave out.
                oAsked.SkipSuccessors();
                if (oPlain->GetType() == Data_Node::Tree) oPlain.SkipSuccessors();
                break;
            default:
                // Links may lead nowhere, and what is wrong below is met by both, but not at once.
                if (!Raised([&] { oAsked.Take(oTree); }).empty()) return;
                oPlain.SkipSuccessors();
        }
    }
    Check(oPlain.IsInOrder() == oAsked.IsInOrder());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    File_Buf oIn(pData, uSize);
    Data oTree;
    Load_Report oReport;
    const std::string sError = Raised([&] { Dgraph_Load(oTree, oIn, {}, &oReport); });
    Check(oReport.m_uOffset <= uSize);
    CheckCost(oReport, uSize);
    if (HasRecords(sBytes)) {
        CheckRecords(sBytes, oTree, sError, oReport);
        (void)Raised([&] { CheckAsked(sBytes); });
    }
    if (!sError.empty() || !oTree.IsNode()) return 0;
    oTree.SetToRoot();
    Dgraph_SetVersion(oTree, 1, 3, 0);
    const std::string sSaved = Save(oTree);
    File_Buf oAgain(sSaved.data(), sSaved.size());
    Data oTrip;
    Dgraph_Load(oTrip, oAgain);
    Check(Save(oTrip).size() <= sSaved.size());
    if (Data::Equal(oTree, oTrip)) Check(oTree.Hash() == oTrip.Hash());
    return 0;
}
