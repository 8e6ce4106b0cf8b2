// SPDX-License-Identifier: MIT
// Untrusted documents: memory and a foreign stream must give the same tree or the same error,
// and a tree that was read must bear everything one does with it.
#include "fuzz/fuzz_support.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace {

using namespace vok;

struct Outcome {
    Data oTree;
    Load_Report oReport;
    std::string sError;
    std::size_t uLeft = 0;
};

Outcome LoadFromMemory(std::string_view sBytes) {
    Outcome o;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    o.sError = Raised([&] { Dgraph_LoadDGraph(o.oTree, oBuf, SmallLimits(), &o.oReport); });
    o.uLeft = oBuf.Remaining();
    return o;
}

Outcome LoadFromStream(std::string_view sBytes) {
    Outcome o;
    Foreign_Stream oStream(sBytes);
    o.sError = Raised([&] { Dgraph_LoadDGraph(o.oTree, oStream, SmallLimits(), &o.oReport); });
    o.uLeft = oStream.m_sBytes.size();
    return o;
}

// Every node is found where its path says, successors stand in the order of names.
void Walk(const Data& oTree) {
    unsigned uChecked = 0;
    u2_t uLive = 0;
    for (Data_Walk oWalk(oTree); oWalk.Next(); ++uLive) {
        const Data oNode = oWalk.GetData();
        Data_SuccIt oIt = oNode.GetSuccIt();
        std::string sBefore;
        for (; oIt.SkipZombies(); oIt.Advance()) {
            const char* sName = oIt.GetData().GetName();
            Check(sBefore <= (sName != nullptr ? sName : ""));
            sBefore = sName != nullptr ? sName : "";
        }
        if (++uChecked > 50) continue;
        const Str oPath = oNode.GetPath();
        const Data_NodeSet oSet = oTree.GetNodeSet(oPath.CStr());
        Check(oSet.Size() == 1 && oSet.GetNth(0) == oNode);
    }
    Check(uLive == oTree.GetNodes());
}

void Use(Data& oTree) {
    Walk(oTree);
    const std::string sBytes = Save(oTree);
    Foreign_Stream oOut;
    Dgraph_SaveDGraph(oTree, oOut);
    Check(oOut.m_sWritten == sBytes);

    const std::string sEverything = Raised([&] { (void)oTree.GetNodeSet("//*", SmallLimits()); });
    Data oLast = oTree.GetNodeFromID(oTree.GetNodes() - 1);
    const bool bRoot = oLast.GetId() == 0;
    Check(Raised([&] { oLast.Remove(); }).empty() == !bRoot);
    const std::string sWithout = Save(oTree);
    const u2_t uNodes = oTree.GetNodes();
    oTree.Shrink();
    Check(oTree.GetNodes() == uNodes - !bRoot);
    Check(Save(oTree).size() <= sWithout.size());
    Walk(oTree);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    Outcome o = LoadFromMemory(sBytes);
    const Outcome oOther = LoadFromStream(sBytes);
    Check(o.sError.empty() == oOther.sError.empty());
    // A native dump in the document has a target of its own.
    if (sBytes.size() >= 10 && sBytes[9] == 2) return 0;
    Check(o.sError == oOther.sError);
    Check(o.uLeft == oOther.uLeft);
    Check(o.oReport.m_uOffset == oOther.oReport.m_uOffset);
    Check(o.oReport.m_uOffset == uSize - o.uLeft);
    Check(o.oReport.m_uNodes == oOther.oReport.m_uNodes);
    Check(std::string_view(o.oReport.m_oPath.CStr()) == oOther.oReport.m_oPath.CStr());
    if (!o.sError.empty()) return 0;
    Check(Save(o.oTree) == Save(oOther.oTree));
    Use(o.oTree);
    return 0;
}
