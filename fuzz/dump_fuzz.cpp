// SPDX-License-Identifier: MIT
// Arbitrary bytes as a native dump: what is accepted must stand everything that can be done
// with a tree.
#include "fuzz/fuzz_support.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace {

using namespace vok;

Data Load(std::string_view sBytes, std::string& sError) {
    Data oTree;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    sError = Raised([&] { oTree.Load(oBuf, SmallLimits()); });
    return oTree;
}

std::string Dump(const Data& oTree) {
    File_Buf oBuf("w");
    oTree.Dump(oBuf);
    return {oBuf.Data(), oBuf.Size()};
}

// Reads everything; the sum only keeps the compiler from leaving it out.
u3_t Walk(const Data& oTree) {
    u3_t uSum = 0;
    Arr<const char*> oNames;
    Arr<const char*> oValues;
    for (Data_Walk o(oTree); o.Next();) {
        const Data oNode = o.GetData();
        oNode.GetAttributes(oNames, oValues, true);
        for (std::size_t u = 0; u < oNames.Size(); ++u) {
            Check(oNode.GetAttVal(oNames(u)) == oValues(u));
        }
        uSum += oNode.GetPath().Len() + static_cast<u3_t>(oNode.NodeDepth());
        switch (o.GetType()) {
            case Data_Node::String: uSum += std::string(o.Text()).size(); break;
            case Data_Node::Binary: uSum += std::string(o.Block()).size(); break;
            case Data_Node::Quad: uSum += o.QuadWord(1) + o.QuadWord(3); break;
            case Data_Node::Link: uSum += oNode.GetValLink().GetId(); break;
            default: break;
        }
        if (oNode.GetId() == oTree.GetId()) continue;
        const Data oPred = oNode.GetPred();
        const u2_t uSame = oPred.GetSuccIt(oNode.GetName()).Size();
        Check(uSame != 0 && uSame <= oPred.GetSuccIt().Size());
    }
    return uSum;
}

void Edit(Data oTree, std::string_view sBytes) {
    for (std::size_t u = 0; u + 3 < sBytes.size() && u < 600; u += 4) {
        const auto oByte = [&](std::size_t uNth) { return static_cast<u0_t>(sBytes[u + uNth]); };
        Data oNode = oTree.GetNodeFromID(oByte(1) % oTree.GetNodes());
        const Data oOther = oTree.GetNodeFromID(oByte(2) % oTree.GetNodes());
        (void)Raised([&] {
            switch (oByte(0) % 12) {
                case 0: oNode.Insert("i", oByte(3) % 4); break;
                case 1: oNode.Append("a"); break;
                case 2: oNode.Remove(); break;
                case 3: oNode.RemoveSuccs(); break;
                case 4: oNode.Erase(); break;
                case 5: oNode.MoveTo(oOther, oByte(3) % 4); break;
                case 6:
                    if (oTree.GetNodes() < 200) (void)oNode.MkCopy(oOther, oByte(3) % 4);
                    break;
                case 7: oNode.SetAttVal("k", oByte(3) % 2 == 0 ? "v" : nullptr); break;
                case 8: oNode.ClearVal(); break;
                case 9: oNode.SetValLink(oOther); break;
                case 10: {
                    Data oTo = oOther;
                    Data::CopyVal(oNode, oTo);
                    break;
                }
                default: oTree.Shrink(); break;
            }
        });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    std::string sError;
    const Data oTree = Load(sBytes, sError);
    // A foreign stream says the same, but for how it calls itself.
    Foreign_Stream oForeign(sBytes);
    Data oSame;
    const bool bSame = Raised([&] { oSame.Load(oForeign, SmallLimits()); }).empty();
    Check(bSame == sError.empty());
    if (!bSame) return 0;
    CheckTree(oTree);
    Check(Data::Equal(oTree, oSame));
    const std::string sDump = Dump(oTree);
    Check(Dump(oSame) == sDump);
    Check(Dump(Load(sDump, sError)) == sDump);
    const u3_t uSum = Walk(oTree);
    Check(Walk(oSame) == uSum);
    (void)oTree.HasCycle();
    Check(Data::Equal(oTree, oTree.MkClone()));

    Edit(oSame, sBytes);
    CheckTree(oSame);
    // The copied value of a removed node removes even the root: nothing of it is stored.
    const bool bRootLives = oSame.GetType() != Data_Node::Zombi;
    if (bRootLives) {
        Check(Dump(Load(Dump(oSame), sError)) == Dump(oSame));
    } else {
        Check(!Raised([&] { (void)Dump(oSame); }).empty());
    }
    Dgraph_SetVersion(oSame, 1, 3, 0);
    (void)Raised([&] { (void)Save(oSame); });
    oSame.Shrink();
    CheckTree(oSame);
    (void)Walk(oSame);
    if (bRootLives) Check(Data::Equal(oSame, oSame.MkClone()));
    return 0;
}
