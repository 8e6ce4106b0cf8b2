// SPDX-License-Identifier: MIT
// What the tests of the DGraph codec share: documents put together byte by byte, and trees as
// text.
#ifndef TESTS_DGRAPH_DGRAPH_SUPPORT_H
#define TESTS_DGRAPH_DGRAPH_SUPPORT_H

#include <bit>
#include <memory>

#include "tests/support.h"
#include "vok/dgraph/container.h"
#include "vok/dgraph/dgraph.h"
#include "vok/zip/archive.h"

namespace vok {

using namespace std::string_literals;

// What the messages about a faulty step text begin with.
inline const std::string BAD_STEP = "Dgraph_LoadDGraph: Invalid path specification! ";

inline std::string U8(int iValue) {
    return std::string(1, static_cast<char>(iValue));
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
// One record of every kind.
inline std::string AllTypes() {
    return Document(
        13, Leaf("binary[0]", 8, Block("\1\2\3")) + Leaf("char[0]", 4, U8(200)) +
                Leaf("date[0]", 9, F64(40000.25)) + Leaf("double[0]", 3, F64(2.5)) +
                Open("empty[0]", 0) + Leaf("float[0]", 2, F32(1.5f)) + Leaf("int[0]", 1, I32(-5)) +
                Link("link[0]", "x", "tree[0]/x[1]") + Leaf("long[0]", 10, U64(77)) +
                Leaf("quad[0]", 11, I32(1) + I32(2) + I32(3) + I32(4)) +
                Text("string[0][@a\b32;b=\"c\b46;\"]", "some text") + Open("tree[0]", 2) +
                Text("x[0]", "y") + Leaf("x[1]", 6, U8(1)) + Leaf("yes[0]", 6, U8(1)));
}

// Three objects of the same names, of any length up to one that is too long to be expected as a
// whole, with runs of one digit and of two. oHeads gets where the records of the last one begin.
inline std::string Repeating(std::vector<std::size_t>& oHeads) {
    Texts sRecords;
    char cName = 'a';
    for (const std::size_t u :
         {1u, 2u, 4u, 5u, 8u, 9u, 10u, 13u, 16u, 17u, 18u, 21u, 24u, 25u, 26u, 30u}) {
        sRecords.push_back(Leaf(std::string(u, cName++) + "[0]", 1, I32(1)));
    }
    sRecords.push_back(Text("xy[0]", "a text"));
    for (const std::size_t u : {1u, 3u, 5u, 10u, 20u, 40u}) {
        const std::string sName(u, cName++);
        for (int i = 0; i < 12; ++i) {
            sRecords.push_back(Leaf(sName + "[" + std::to_string(i) + "]", 6, U8(i & 1)));
        }
    }
    std::stable_sort(sRecords.begin(), sRecords.end(), [](const auto& a, const auto& b) {
        return a.substr(4, a.find('[') - 4) < b.substr(4, b.find('[') - 4);
    });
    std::string sDocument = Header() + Open("Root[0]", 3);
    for (int i = 0; i < 3; ++i) {
        sDocument += Open("o[" + std::to_string(i) + "]", static_cast<i3_t>(sRecords.size()));
        oHeads.clear();
        for (const std::string& s : sRecords) {
            oHeads.push_back(sDocument.size());
            sDocument += s;
        }
    }
    return sDocument;
}

// Documents in which a name follows that it was seen to follow before, but where it does not belong
// in front of the others, is there already, or has another index than its text.
inline Texts Misleading() {
    const std::string sInner = Leaf("z[0]", 1, I32(1));
    const std::string sNext = Leaf("m[0]", 1, I32(2));
    std::string sSeen;
    for (int i = 0; i < 3; ++i) {
        sSeen += Open("o[" + std::to_string(i) + "]", 2) + Open("k[0]", 1) + sInner + sNext;
    }
    std::string sRun;
    for (int i = 0; i < 10; ++i) sRun += Leaf("r[" + std::to_string(i) + "]", 1, I32(i));
    // Nothing is expected at the end of a document.
    const std::string sEnd = Text("z[0]", std::string(60, 'z'));
    return {Document(4, sSeen + Open("o[3]", 3) + Open("q[0]", 1) + sInner + sNext + sEnd),
            Document(4, sSeen + Open("o[3]", 3) + Open("m[0]", 1) + sInner + sNext + sEnd),
            Document(12, sRun + Leaf("r[:]", 1, I32(10)) + sEnd)};
}

// The bytes that a tree is written as.
inline std::string Save(const Data& oTree) {
    return Written([&](File_Buf& o) { Dgraph_SaveDGraph(oTree, o); });
}
inline Data Versioned(int iMinor = 3) {
    Data oRoot = NewTree();
    Dgraph_SetVersion(oRoot, 1, iMinor, 0);
    return oRoot;
}

// What loading gives: the tree as text, or the message without its line break; and the report.
struct Loaded {
    std::string sShown;
    bool bGood = false;
    Load_Report oReport;
};
inline Loaded LoadFrom(File_Stream& oIn, const Limits& oLimits = {}) {
    Data oTree;
    Loaded o;
    o.oReport.m_oPath = Str("stale");
    o.oReport.m_uLine = 5;
    o.sShown = Failing([&] { Dgraph_LoadDGraph(oTree, oIn, oLimits, &o.oReport); });
    o.bGood = o.sShown.empty();
    if (o.bGood) o.sShown = Show(oTree);
    return o;
}
// Calls oBody with the bytes in memory and in a foreign stream.
template <class F>
void FromBoth(std::string_view sBytes, F&& oBody) {
    // A block of its own size: reading past its end is noticed.
    const std::unique_ptr<char[]> pBytes(new char[sBytes.size()]);
    sBytes.copy(pBytes.get(), sBytes.size());
    File_Buf oBuf(pBytes.get(), sBytes.size());
    Drop_Stream oStream(sBytes);
    oBody(oBuf);
    oBody(oStream);
    EXPECT_EQ(oBuf.Remaining(), oStream.m_sBytes.size());
}
// From memory and from a stream, which have to agree.
inline std::vector<Loaded> LoadFromBoth(std::string_view sBytes, const Limits& oLimits = {}) {
    std::vector<Loaded> oBoth;
    FromBoth(sBytes, [&](File_Stream& oIn) { oBoth.push_back(LoadFrom(oIn, oLimits)); });
    EXPECT_EQ(oBoth[0].sShown, oBoth[1].sShown);
    return oBoth;
}
inline std::string Load(std::string_view sBytes, const Limits& oLimits = {}) {
    return LoadFromBoth(sBytes, oLimits)[0].sShown;
}
// Documents in their wrappings; an archive is made in the current directory.
inline std::string Compressed(const std::string& sBytes) {
    Arr<char> oOut;
    oOut.Add("gone", 4);
    DGraph_Compress(oOut, sBytes.data(), static_cast<u2_t>(sBytes.size()));
    return Content(oOut);
}
inline std::string Zipped(const Texts& sMembers) {
    Zip_Archive oZip("made.zip", "w");
    for (const std::string& s : sMembers) {
        oZip.OpenNewFile("m");
        oZip.Write(s.data(), s.size());
    }
    oZip.Close();
    return OnDisk("made.zip");
}
inline Data LoadTree(std::string_view sBytes) {
    Data oTree;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Dgraph_LoadDGraph(oTree, oBuf);
    return oTree;
}

}  // namespace vok

#endif  // TESTS_DGRAPH_DGRAPH_SUPPORT_H
