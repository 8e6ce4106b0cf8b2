// What the tests of the DGraph codec share: documents put together byte by byte, and trees as
// text.
#ifndef TESTS_DGRAPH_DGRAPH_SUPPORT_H
#define TESTS_DGRAPH_DGRAPH_SUPPORT_H

#include <bit>
#include <memory>

#include "tests/support.h"
#include "vok/dgraph/dgraph.h"

namespace vok {

using namespace std::string_literals;

// ---- documents --------------------------------------------------------------

template <class T>
std::string Number(T tValue) {
    std::string sBytes;
    for (std::size_t u = 0; u < sizeof(T); ++u) {
        sBytes += static_cast<char>(static_cast<u3_t>(tValue) >> 8 * u & 0xFF);
    }
    return sBytes;
}
inline std::string U8(int iValue) {
    return std::string(1, static_cast<char>(iValue));
}
inline std::string I32(i3_t iValue) {
    return Number(static_cast<u2_t>(iValue));
}
inline std::string U64(u3_t uValue) {
    return Number(uValue);
}
inline std::string F32(float fValue) {
    return Number(std::bit_cast<u2_t>(fValue));
}
inline std::string F64(double dValue) {
    return Number(std::bit_cast<u3_t>(dValue));
}
// Length and bytes.
inline std::string Block(std::string_view sBytes) {
    return I32(static_cast<i3_t>(sBytes.size())) + std::string(sBytes);
}
inline std::string Leaf(std::string_view sStep, int iCode, const std::string& sValue) {
    return Block(sStep) + U8(iCode) + sValue;
}
inline std::string Text(std::string_view sStep, const std::string& sText) {
    return Leaf(sStep, 5, Block(sText + '\0'));
}
inline std::string Link(std::string_view sStep, std::string_view sName, std::string_view sPath) {
    return Leaf(sStep, 7, Block(sName) + Block(sPath));
}
// A record without value, in front of the records of its successors.
inline std::string Open(std::string_view sStep, i3_t iSuccessors) {
    return Leaf(sStep, 0, I32(iSuccessors));
}
inline std::string Header(int iMinor = 3, int iPatch = 0, int iMajor = 1) {
    return "DGraphBin" + U8(iMajor) + U8(iMinor) + U8(iPatch) + std::string(18, '\0');
}
// A document whose root has that many successors.
inline std::string Document(i3_t iSuccessors, const std::string& sRecords, int iMinor = 3) {
    return Header(iMinor) + Open("Root[0]", iSuccessors) + sRecords;
}

// ---- trees ------------------------------------------------------------------

inline std::string ShowValue(const Data& o) {
    switch (o.GetType()) {
        case Data_Node::Empty:
        case Data_Node::Tree:
        case Data_Node::Zombi: return "";
        case Data_Node::Boolean: return o.GetValBool() ? ":yes" : ":no";
        case Data_Node::Char: return ":'" + std::to_string(o.GetValInt(Data_Node::Char));
        case Data_Node::String: return ":'" + std::string(o.GetValText()) + "'";
        case Data_Node::Binary: {
            u2_t uSize = 0;
            const auto* p = static_cast<const u0_t*>(o.GetValBin(uSize));
            std::string s = ":#";
            for (u2_t u = 0; u < 2 * uSize; ++u)
                s += "0123456789ABCDEF"[p[u / 2] >> (u % 2 == 0 ? 4 : 0) & 15];
            return s;
        }
        case Data_Node::Link: {
            const Data oTarget = o.GetValLink();
            return oTarget.IsNode() ? "->"s + oTarget.GetPath().CStr() : "->nothing";
        }
        default: {
            Str oText;
            o.CvtStr(oText);
            static constexpr const char* SUFFIX[] = {"", "", "", "", "f", "d", "", "", "", "u", ""};
            return ":"s + oText.CStr() + SUFFIX[o.GetType()];
        }
    }
}

// "Root(a:1 b@k=v:'text' c(d))": names, attributes, values and successors of a small tree.
inline std::string Show(const Data& o) {
    std::string s = o.GetName() != nullptr ? o.GetName() : "?";
    for (const std::string& sAttribute : AttributesOf(o)) s += "@" + sAttribute;
    s += ShowValue(o);
    if (o.GetType() != Data_Node::Tree) return s;
    s += '(';
    for (Data_SuccIt oIt = o.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) {
        s += (s.back() == '(' ? "" : " ") + Show(oIt.GetData());
    }
    return s + ")";
}

// The bytes that a tree is written as.
inline std::string Save(const Data& oTree) {
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTree, oBuf);
    return Content(oBuf);
}
inline Data Versioned(int iMinor = 3) {
    Data oRoot = NewTree();
    Dgraph_SetVersion(oRoot, 1, iMinor, 0);
    return oRoot;
}

// ---- loading ----------------------------------------------------------------

// What loading gives: the tree as text, or the message without its line break.
inline std::string LoadFrom(File_Stream& oIn, const Limits& oLimits = {}) {
    Data oTree;
    std::string s = Raised([&] { Dgraph_LoadDGraph(oTree, oIn, oLimits); });
    if (s == "(nothing raised)") return Show(oTree);
    if (!s.empty() && s.back() == '\n') s.pop_back();
    return s;
}
// The same for bytes, which memory and a foreign stream have to agree on.
inline std::string Load(std::string_view sBytes, const Limits& oLimits = {}) {
    // A block of its own size: reading past its end is noticed.
    const std::unique_ptr<char[]> pBytes(new char[sBytes.size()]);
    sBytes.copy(pBytes.get(), sBytes.size());
    File_Buf oBuf(pBytes.get(), sBytes.size());
    Drop_Stream oStream(sBytes);
    const std::string sShown = LoadFrom(oBuf, oLimits);
    EXPECT_EQ(LoadFrom(oStream, oLimits), sShown);
    EXPECT_EQ(oBuf.Remaining(), oStream.m_sBytes.size());
    return sShown;
}
inline Data LoadTree(std::string_view sBytes) {
    Data oTree;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Dgraph_LoadDGraph(oTree, oBuf);
    return oTree;
}

}  // namespace vok

#endif  // TESTS_DGRAPH_DGRAPH_SUPPORT_H
