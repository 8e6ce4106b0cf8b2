// SPDX-License-Identifier: MIT
// The bytes drive a builder of trees. A tree that was written and read once is written as the
// same bytes ever after, through memory and through a foreign stream. JSON brings back an equal
// one.
#include <bit>

#include "fuzz/fuzz_support.h"
#include "vok/json/json.h"

namespace {

using namespace vok;

void SetValue(Data& oNode, Script& oScript) {
    const u3_t uNumber = oScript.Number();
    const u2_t uWord = static_cast<u2_t>(uNumber);
    const double dNumber = std::bit_cast<double>(uNumber);
    switch (oScript.Byte() % 12) {
        case 0: oNode.SetValBool(uNumber != 0); break;
        case 1: oNode.SetValInt(static_cast<i2_t>(uWord)); break;
        case 2: oNode.SetValInt(static_cast<i2_t>(uWord), Data_Node::Char); break;
        case 3: oNode.SetValDbl(dNumber, Data_Node::Float); break;
        case 4: oNode.SetValDbl(dNumber); break;
        // Whole seconds of some thousand years: more than that a day number does not hold.
        case 5: oNode.SetValDbl(static_cast<i2_t>(uWord) * 50.0, Data_Node::Date); break;
        case 6: oNode.SetValStr(oScript.Text()); break;
        case 7: {
            const std::string_view sBlock = oScript.Text();
            oNode.SetValBin(sBlock.data(), static_cast<u2_t>(sBlock.size()));
            break;
        }
        case 8: oNode.SetValLng(uNumber); break;
        case 9: oNode.SetValQuad(uWord, 1, static_cast<u2_t>(uNumber >> 32), 0); break;
        case 10: oNode.SetValLink(oNode.GetNodeFromID(uWord % oNode.GetNodes())); break;
        default: oNode.ClearVal(); break;
    }
}

void Step(Data& oRoot, Script& oScript) {
    const unsigned uWhat = oScript.Byte();
    Data oNode = oRoot.GetNodeFromID(static_cast<u2_t>(oScript.Number() % oRoot.GetNodes()));
    switch (uWhat % 8) {
        case 0:
        case 1:
        case 2: {
            Data oNew = oNode.CreateNewSucc(oScript.Text());
            if (uWhat >= 128) SetValue(oNew, oScript);
            break;
        }
        case 3: SetValue(oNode, oScript); break;
        case 4: {
            const std::string sName(oScript.Text());
            const std::string sValue(oScript.Text());
            oNode.SetAttVal(sName.c_str(), uWhat < 200 ? sValue.c_str() : nullptr);
            break;
        }
        case 5: oNode.Remove(); break;
        case 6: oRoot.Shrink(); break;
        default: {
            const std::string sPath(oScript.Text());
            (void)oNode.CreateNode(sPath.c_str(), nullptr, SmallLimits());
            break;
        }
    }
}

Data Load(std::string_view sBytes, bool bMemory) {
    Data oTree;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Foreign_Stream oStream(sBytes);
    File_Stream& oIn = bMemory ? static_cast<File_Stream&>(oBuf) : oStream;
    Dgraph_LoadDGraph(oTree, oIn);
    Check(bMemory ? oBuf.Remaining() == 0 : oStream.m_sBytes.empty());
    return oTree;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    Script oScript({reinterpret_cast<const char*>(pData), uSize < 4096 ? uSize : 4096});
    Data oRoot;
    oRoot.SetToRoot();
    Dgraph_SetVersion(oRoot, 1, 3, 0);
    while (!oScript.IsAtEnd() && oRoot.GetNodes() < 20000) {
        (void)Raised([&] { Step(oRoot, oScript); });
    }
    CheckTree(oRoot);
    File_Buf oJson("w");
    Json_Save(oRoot, oJson);
    Data oBack;
    Json_LoadString(oBack, {oJson.Data(), oJson.Size()});
    Check(Data::Equal(oRoot, oBack));
    const std::string sFirst = Save(oRoot);
    const Data oTrip = Load(sFirst, true);
    // Gaps in the runs of a name are closed, attributes are in the order of first use.
    const std::string sNormal = Save(oTrip);
    Check(sNormal.size() <= sFirst.size());
    Check(Save(Load(sFirst, false)) == sNormal);
    Check(Save(Load(sNormal, true)) == sNormal);
    Check(Save(Load(sNormal, false)) == sNormal);
    return 0;
}
