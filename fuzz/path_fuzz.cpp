// SPDX-License-Identifier: MIT
// Path texts: parsing, evaluation on a fixed tree, nodes made along them, and the law that
// decoding undoes encoding.
#include "fuzz/fuzz_support.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"
#include "vok/data/xpath.h"

namespace {

using namespace vok;

Data MakeTree() {
    Data oRoot;
    oRoot.SetToRoot();
    for (const char* sName : {"a", "b", "a", "", "x.y", "\xC3\xA4"}) {
        Data oNode = oRoot.CreateNewSucc(sName);
        oNode.SetAttVal("k", sName);
        for (const char* sBelow : {"a", "c", "a", "b"}) {
            oNode.CreateNewSucc(sBelow).CreateNewSucc("a").SetAttVal("k", "v/\"]");
        }
    }
    oRoot.GetNthSucc("a", 0).Remove();
    oRoot.SetAccessMode();
    return oRoot;
}

void Evaluate(const char* sPath) {
    static const Data s_oTree = MakeTree();
    const Data_NodeSet oSet = s_oTree.GetNodeSet(sPath, SmallLimits());
    for (std::size_t u = 0; u < oSet.Size(); ++u) {
        const Data oNode = oSet.GetNth(u);
        Check(oNode.GetType() != Data_Node::Zombi);
        Check(u == 0 || oSet.GetNth(u - 1).GetId() < oNode.GetId());
    }
    // From the root an absolute path is the same as a relative one, elsewhere it is not.
    Data oOther = s_oTree.GetNthSucc("b", 0);
    const Data_NodeSet oThere = oOther.GetNodeSet(sPath, SmallLimits());
    if (*sPath == '/') Check(oThere.Size() == oSet.Size());
}

void Parse(const char* sPath) {
    Data_Xpath oPath;
    oPath.Parse(sPath);
    Str oText;
    oPath.Debug(oText);
    Check(oText.Len() != 0 || oPath.Size() == 0);
}

// What a path made is what it selects.
void Create(const char* sPath) {
    Data oRoot;
    oRoot.SetToRoot();
    u2_t uCreated = 0;
    const Data oMade = oRoot.CreateNode(sPath, &uCreated, SmallLimits());
    // A placeholder that a later step revives counts once more.
    Check(oRoot.GetNodes() <= uCreated + 1);
    // A step may ask for two values of one attribute, of which a node has the last.
    Data_Xpath oPath;
    oPath.Parse(sPath);
    for (std::size_t u = 0; u < oPath.Size(); ++u) {
        if (oPath(u).m_oAttName.Size() > 1) return;
    }
    bool bFound = false;
    const Data_NodeSet oSet = oRoot.GetNodeSet(sPath, SmallLimits());
    for (std::size_t u = 0; u < oSet.Size(); ++u) bFound |= oSet.GetNth(u) == oMade;
    Check(bFound);
}

void EncodeAndDecode(const char* sText) {
    // Encoding works on valid UTF-8, which it makes of anything else first.
    const Str oText(sText);
    Str oEncoded;
    Data::EncodeXpath(oEncoded, sText);
    std::string sCoded = oEncoded.CStr();
    Check(sCoded.find_first_of(" /.[]=\"*") == std::string::npos);
    char* pEnd = Data::DecodeXpath(sCoded.data(), sCoded.data() + sCoded.size());
    Check(std::string_view(sCoded.data()) == oText.CStr());
    // An empty text is the escape of code 0, whose character ends it.
    Check(pEnd == sCoded.data() + (oText.Len() != 0 ? oText.Len() : 1));
    // Anything at all can be decoded; it never grows.
    std::string sAny = sText;
    Check(Data::DecodeXpath(sAny.data(), sAny.data() + sAny.size()) <= sAny.data() + sAny.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string sText(reinterpret_cast<const char*>(pData), uSize);
    const std::string sError = Raised([&] { Parse(sText.c_str()); });
    const std::string sOther = Raised([&] { Evaluate(sText.c_str()); });
    Check(sError.empty() || sOther == sError);
    const std::string sCreate = Raised([&] { Create(sText.c_str()); });
    Check(sError.empty() || sCreate == sError);
    EncodeAndDecode(sText.c_str());
    return 0;
}
