// SPDX-License-Identifier: MIT
// What the bytes of documents are said to mean, and what that holds to where they are damaged.
#include <set>

#include "tests/inspect/inspect_support.h"

namespace vok {
namespace {

constexpr u3_t ROOT_END = 30 + 4 + 7 + 1 + 4;  // behind the record of the root

class Inspecting : public testing::Test {
    Scratch_Dir m_oDir;
};

TEST_F(Inspecting, EveryTypeCode) {
    const Pair ROWS[] = {
        {Open("a[0]", 0), "54+1 type code=none: successors\n55+4 count=0\n"},
        {Leaf("a[0]", 1, I32(-5)), "54+1 type code=Integer\n55+4 value=-5\n"},
        {Leaf("a[0]", 2, F32(1.5f)), "54+1 type code=Float\n55+4 value=1.5\n"},
        {Leaf("a[0]", 3, F64(0.1)), "54+1 type code=Double\n55+8 value=0.1\n"},
        {Leaf("a[0]", 4, U8(200)), "54+1 type code=Char\n55+1 value=200\n"},
        {Text("a[0]", "hi"), "54+1 type code=String\n55+4 length of text=3\n59+3 text=hi\n"},
        {Text("a[0]", ""), "54+1 type code=String\n55+4 length of text=1\n59+1 text=\n"},
        {Leaf("a[0]", 6, U8(2)), "54+1 type code=Boolean\n55+1 value=true\n"},
        {Link("a[0]", "x", "x[1]"),
         "54+1 type code=Link\n55+4 length of name=1\n59+1 name of target=x\n"
         "60+4 length of path=4\n64+4 path of target=x[1]\n"},
        {Leaf("a[0]", 8, Block("\1\2")),
         "54+1 type code=Binary\n55+4 length of block=2\n59+2 block\n"},
        {Leaf("a[0]", 8, Block("")), "54+1 type code=Binary\n55+4 length of block=0\n"},
        {Leaf("a[0]", 9, F64(40000.25)), "54+1 type code=Date\n55+8 value=2009-07-06T06:00:00Z\n"},
        {Leaf("a[0]", 10, U64(~u3_t{0})), "54+1 type code=Long\n55+8 value=18446744073709551615\n"},
        {Leaf("a[0]", 11, I32(1) + I32(2) + I32(3) + I32(-1)),
         "54+1 type code=Quad\n55+16 value=1,2,3,4294967295\n"},
        {Leaf("a[0]", 77, ""), "54+1 type code=77, which is none: no value\n"},
    };
    for (const auto& [sRecord, sFields] : ROWS) {
        const Inspected o = Covered(Document(1, sRecord));
        EXPECT_EQ(o.From(ROOT_END), "46+4 length of step=4\n50+4 step=a[0] at /a[0]\n" + sFields);
        EXPECT_FALSE(o.bFault);
    }
    EXPECT_EQ(Covered(Document(0, "")).From(0),
              "0+9 magic=DGraphBin\n9+3 version=1.3.0\n12+18 reserved\n30+4 length of step=7\n"
              "34+7 step=Root[0] at /\n41+1 type code=none: successors\n42+4 count=0\n");
}

// Escapes, depth, and positions in runs.
TEST_F(Inspecting, Paths) {
    const std::string sBytes =
        Document(3, Open("a[0]", 2) + Text("b[0]", "") + Open("b[1][@k=\"v\"]", 1) +
                        Text("c[0]", "") + Text("line\nbreak[0]", "") + Text("\b0;[4]", ""));
    EXPECT_FALSE(Covered(sBytes).bFault);
    EXPECT_EQ(Covered(sBytes).asPath, (Texts{"/", "/a[0]", "/a[0]/b[0]", "/a[0]/b[1]",
                                             "/a[0]/b[1]/c[0]", "/line\nbreak[0]", "/\b0;[4]"}));
}

// What every minor version writes is read as that.
TEST_F(Inspecting, EveryMinorVersion) {
    const Texts DATES{"text=2009-07-06 06:00:00", "text=2009-07-06 06:00:00",
                      "value=2009-07-06T06:00:00Z", "value=2009-07-06T06:00:00Z"};
    for (int iMinor = 0; iMinor <= 3; ++iMinor) {
        Data oTree = Versioned(iMinor);
        oTree.CreateNode("/d").SetValDbl(1246860000, Data_Node::Date);
        oTree.CreateNode("/l").SetValLng(77);
        oTree.CreateNode("/q").SetValQuad(1, 2, 3, 4);
        oTree.CreateNode("/z").SetValInt(1);
        const Inspected o = Covered(Save(oTree));
        const std::string sFields = o.From(0);
        EXPECT_TRUE(Has(sFields, DATES[static_cast<std::size_t>(iMinor)]));
        EXPECT_TRUE(Has(sFields, iMinor < 3 ? "text=77\n" : "value=77\n"));
        EXPECT_TRUE(Has(sFields, iMinor < 3 ? "text=1,2,3,4\n" : "value=1,2,3,4\n"));
        EXPECT_EQ(o.asPath, (Texts{"/", "/d[0]", "/l[0]", "/q[0]", "/z[0]"}));
        // Such a Quad is what other readers cannot read.
        EXPECT_EQ(o.bFault, iMinor < 3);
    }
}

// The fields of the wrapping, then those of the document in it, which are what they are without.
TEST_F(Inspecting, Wrappings) {
    const std::string sBytes = AllTypes();
    const std::string sPlain = Covered(sBytes).From(0);
    const struct {
        std::string sStored;
        const char* sFirst;
        const char* sLast;
    } ROWS[] = {
        {Compressed(sBytes), "0+2 zlib header=deflate, level 2\n", "Adler-32="},
        {Gzipped(sBytes), "0+2 gzip magic\n2+1 method=deflate\n", " size=350\n"},
        {Gzipped(sBytes.substr(0, 50)) + Gzipped(sBytes.substr(50)), "0+2 gzip magic\n",
         " size=300\n"},
        {Zipped({sBytes}), "0+4 local header=04034b50\n", "length of comment=0\n"},
    };
    for (const auto& o : ROWS) {
        const Inspected oFound = Covered(o.sStored);
        EXPECT_FALSE(oFound.bFault) << oFound.From(0);
        EXPECT_TRUE(oFound.From(0).starts_with(o.sFirst));
        EXPECT_TRUE(Has(oFound.From(0), o.sLast));
        EXPECT_EQ(oFound.From(0, 1), sPlain);
    }
    const Inspected oTwo = Covered(Zipped({sBytes, Document(0, "")}));
    EXPECT_EQ(oTwo.From(0, 1), sPlain);
    EXPECT_EQ(oTwo.From(0, 2), Covered(Document(0, "")).From(0));
}

TEST_F(Inspecting, Dumps) {
    Data oTree = NewTree();
    oTree.CreateNode("/a").SetValStr("hi");
    oTree.CreateNode("/b").SetValInt(7);
    oTree.SetAttVal("k", "v");
    const std::string sDump = Dumped(oTree);
    const std::string sFields = Covered(sDump).From(0);
    for (const char* s :
         {"20+10 class=vok::Data\n", " name=a\n", "0: name 0, Tree, 2 successors, group at word 0",
          "1: name 1, String below 0, 3 bytes at", "2: name 2, Integer below 0, 7\n",
          " group=2 successors, room for 2\n", " successor=2\n", " attribute name=k\n",
          " attribute=node 0, value at ", "+4 end\n"}) {
        EXPECT_TRUE(Has(sFields, s));
    }
    const Inspected oAttachable =
        Covered(Written([&](File_Buf& o) { oTree.Dump(o, Data_DumpLayout::Attachable); }));
    EXPECT_FALSE(oAttachable.bFault);
    EXPECT_TRUE(Has(oAttachable.From(0), " gap\n"));
    Dgraph_SetVersion(oTree, 2, 0, 0);
    const std::string sDocument = Save(oTree);
    EXPECT_TRUE(Has(Covered(sDocument).From(30), "30+4 magic\n"));
    EXPECT_FALSE(Covered(sDocument).bFault);
}

// ---- damage -------------------------------------------------------------------------

// What is wrong is said at its place, and reading goes on behind it.
TEST_F(Inspecting, Faults) {
    const std::string sAfter = Text("x[0]", "y") + Text("x[1]", "y") + Text("x[2]", "y");
    const struct {
        std::string sBytes;
        std::string sFields;  // behind the root
        Texts asPath;
    } ROWS[] = {
        {I32(-1) + sAfter,
         "46+4 length of step=-1 !a negative length\n",
         {"/x[0]", "/x[1]", "/x[2]"}},
        {I32(0) + sAfter,
         "46+4 length of step=0 !a step without a text\n",
         {"/x[0]", "/x[1]", "/x[2]"}},
        {I32(9999) + "rest" + sAfter,
         "46+4 length of step=9999 !more than the bytes that are left\n50+4 skipped\n",
         {"/x[0]", "/x[1]", "/x[2]"}},
        {Text("a[0", "") + sAfter,
         "46+4 length of step=3\n50+3 step=a[0 at /?[0] !Missing ']' after index\n",
         {"/?[0]", "/x[0]", "/x[1]", "/x[2]"}},
        {Leaf("a[0]", 8, I32(-7)) + sAfter,
         "46+4 length of step=4\n50+4 step=a[0] at /a[0]\n54+1 type code=Binary\n"
         "55+4 length of block=-7 !a negative length\n",
         {"/a[0]", "/x[0]", "/x[1]", "/x[2]"}},
        {Text("x[0]", "") + sAfter,
         "46+4 length of step=4\n50+4 step=x[0] at /x[0]\n54+1 type code=String\n"
         "55+4 length of text=1\n59+1 text=\n60+4 length of step=4\n"
         "64+4 step=x[0] at /x[0] !a node with this index was there before\n",
         {"/x[0]", "/x[0]", "/x[1]", "/x[2]"}},
        {Link("a[0]", "", "") + sAfter,
         "46+4 length of step=4\n50+4 step=a[0] at /a[0]\n54+1 type code=Link\n"
         "55+4 length of name=0 !a link without a target\n"
         "59+4 length of path=0 !a link without a target\n",
         {"/a[0]", "/x[0]", "/x[1]", "/x[2]"}},
        // A level that lost its end: what comes next is above it.
        {Open("a[0]", 9) + Text("b[0]", "") + I32(-1) + "????" + sAfter,
         "",
         {"/a[0]", "/a[0]/b[0]", "/a[0]/x[0]", "/a[0]/x[1]", "/a[0]/x[2]"}},
        {Open("n[0]", 3) + Text("q[0]", "") + Text("z[0]", "") + I32(-1) + "????" + sAfter,
         "",
         {"/n[0]", "/n[0]/q[0]", "/n[0]/z[0]", "/x[0]", "/x[1]", "/x[2]"}},
        {Open("n[0]", 1 << 30) + Text("q[0]", "") + Text("n[1]", "") + sAfter,
         "",
         {"/n[0]", "/n[0]/q[0]", "/n[1]", "/x[0]", "/x[1]", "/x[2]"}},
    };
    for (const auto& o : ROWS) {
        const Inspected oFound = Covered(Document(4, o.sBytes));
        EXPECT_TRUE(oFound.From(ROOT_END).starts_with(o.sFields)) << oFound.From(ROOT_END);
        Texts asPath{"/"};
        asPath.insert(asPath.end(), o.asPath.begin(), o.asPath.end());
        EXPECT_EQ(oFound.asPath, asPath);
        EXPECT_TRUE(oFound.bFault);
    }
}

TEST_F(Inspecting, EndsAndHeaders) {
    const std::string sThree = Text("x[0]", "y") + Text("x[1]", "y") + Text("x[2]", "y");
    const Texts PATHS{"/", "/x[0]", "/x[1]", "/x[2]"};
    EXPECT_TRUE(Has(Covered(Document(5, sThree)).From(0), "+0 end=2 !records are missing\n"));
    // Records behind the end are records all the same.
    const Inspected oBehind = Covered(Document(1, sThree));
    EXPECT_TRUE(Has(oBehind.From(0), "+0 end=30 !bytes behind the document\n"));
    EXPECT_EQ(oBehind.asPath, PATHS);
    // A header that is damaged, and one that is gone together with the root.
    std::string sBytes = Document(3, sThree);
    sBytes[0] = 'd';
    EXPECT_TRUE(Has(Covered(sBytes).From(0), "0+9 magic=dGraphBin !not the magic"));
    EXPECT_EQ(Covered(sBytes).asPath, PATHS);
    sBytes = Document(3, sThree);
    sBytes[9] = 2;
    EXPECT_TRUE(Has(Covered(sBytes).From(0), "9+3 version=2.3.0 !a version that is not known"));
    EXPECT_EQ(Covered(sBytes).asPath, PATHS);
    EXPECT_EQ(Covered("lost" + sThree).asPath, (Texts{"/x[0]", "/x[1]", "/x[2]"}));
    EXPECT_EQ(Covered("no tree").From(0),
              "0+0 magic !neither a DGraph document nor a native dump\n0+7 skipped\n");
    EXPECT_TRUE(Has(Covered(Header(3, 0, 7)).From(0), "9+3 version=7.3.0 !a version that is not"));
    Covered("");
}

// Of a compressed document what can be inflated is shown.
TEST_F(Inspecting, DamagedWrappings) {
    std::string sRecords;
    for (int i = 0; i < 3000; ++i) {
        sRecords += Leaf("n[" + std::to_string(i) + "]", 1, I32(i * 7919 % 10007));
    }
    const std::string sBytes = Document(3000, sRecords);
    for (std::string sStored : {Compressed(sBytes), Gzipped(sBytes), Zipped({sBytes})}) {
        Inspected o = Covered(sStored.substr(0, sStored.size() / 2));
        EXPECT_TRUE(Has(o.From(0), "inflated !the bytes end here\n"));
        EXPECT_GT(o.asPath.size(), 1000u);
        sStored[sStored.size() / 2] = static_cast<char>(~sStored[sStored.size() / 2]);
        o = Covered(sStored);
        EXPECT_TRUE(o.bFault);
        EXPECT_GT(o.asPath.size(), 1000u);
    }
    std::string sSum = Gzipped(sBytes);
    sSum[sSum.size() - 8] = static_cast<char>(~sSum[sSum.size() - 8]);
    EXPECT_TRUE(Has(Covered(sSum).From(0), " !another checksum than that of the bytes\n"));
    EXPECT_TRUE(
        Has(Covered(Compressed(sBytes) + "more").From(0), "+0 end=4 !bytes behind the document\n"));
}

// Cut anywhere, and with any byte turned: every byte is in one field.
TEST_F(Inspecting, AnyDamage) {
    Data oTree = LoadTree(AllTypes());
    const std::string sDump = Dumped(oTree);
    for (const std::string& sBytes : {AllTypes(), sDump, Compressed(AllTypes()),
                                      Gzipped(AllTypes()), Zipped({AllTypes()}), Zipped({sDump})}) {
        for (std::size_t u = 0; u < sBytes.size() && !HasFailure(); ++u) {
            Covered(sBytes.substr(0, u));
            for (const int iMask : {1, 0xFF}) {
                std::string sTurned = sBytes;
                sTurned[u] = static_cast<char>(sTurned[u] ^ iMask);
                Covered(sTurned);
            }
        }
    }
}

// One damaged byte costs no more than a few records, and behind it paths are right again. A count
// that is too large but could be is believed.
TEST_F(Inspecting, WhatIsLeft) {
    std::string sRecords;
    std::set<std::size_t> oCounts;
    for (int i = 0; i < 40; ++i) {
        const std::string sIndex = '[' + std::to_string(i) + ']';
        oCounts.insert(ROOT_END + sRecords.size() + 4 + 1 + sIndex.size() + 1);
        sRecords += Open("o" + sIndex, 2) + Leaf("a[0]", 1, I32(i)) + Text("b[0]", "text");
    }
    const std::string sBytes = Document(40, sRecords);
    const std::size_t uAll = Covered(sBytes).asPath.size();
    for (std::size_t u = ROOT_END; u < sBytes.size(); ++u) {
        std::string sTurned = sBytes;
        sTurned[u] = static_cast<char>(~sTurned[u]);
        const Inspected o = Covered(sTurned);
        EXPECT_GE(o.asPath.size() + 3, uAll) << u;
        if (u + 100 < sBytes.size() && oCounts.count(u) == 0) {
            EXPECT_EQ(o.asPath.back(), "/o[39]/b[0]") << u;
        }
    }
}

// ---- streams ------------------------------------------------------------------------

// A file, memory and a stream that gives single bytes: larger than what is looked at at once.
TEST_F(Inspecting, EveryStream) {
    std::string sRecords;
    for (int i = 0; i < 200; ++i) {
        sRecords += Text("t[" + std::to_string(i) + "]", std::string(1000, 'x'));
        if (i % 50 == 7) sRecords += std::string(70000, '\1');
    }
    const std::string sBytes = Document(200, sRecords);
    for (const std::string& sStored : {sBytes, Gzipped(sBytes)}) {
        const u2_t uDocument = sStored != sBytes;
        const Inspected oMemory = Covered(sStored);
        EXPECT_EQ(oMemory.asPath.size(), 201u);
        ToDisk("stored", sStored);
        File oFile(Str("stored"), "r");
        EXPECT_EQ(Inspected(oFile).From(0, uDocument), oMemory.From(0, uDocument));
        Drop_Stream oDrops(sStored);
        EXPECT_EQ(Inspected(oDrops).From(0, uDocument), oMemory.From(0, uDocument));
    }
    // From the position of the stream on, and no further than its caller wants.
    File_Buf oBuf("w");
    oBuf.Write("before", 6);
    oBuf.Write(sBytes.data(), sBytes.size());
    oBuf.Seek(6);
    int iFields = 0;
    Inspect(oBuf, [&](const Inspect_Field& o) {
        EXPECT_EQ(o.m_sValue == "DGraphBin", iFields == 0);
        return ++iFields < 10;
    });
    EXPECT_EQ(iFields, 10);
}

TEST_F(Inspecting, Limits) {
    const std::string sBytes =
        Document(1, Open("a[0]", 1) + Open("b[0]", 1) + Open("c[0]", 1) + Text("d[0]", "text"));
    const Inspected oDeep(sBytes, AtMost(LIMIT_DEPTH, 3));
    EXPECT_TRUE(Has(oDeep.From(0), "count=1 !deeper than the limit on depth\n"));
    EXPECT_EQ(oDeep.m_oDocument.at(0).uEnd, sBytes.size());
    const Inspected oText(sBytes, AtMost(LIMIT_TEXT_BYTES, 7));
    EXPECT_FALSE(oText.bFault);
    EXPECT_TRUE(Inspected(sBytes, AtMost(LIMIT_TEXT_BYTES, 4)).bFault);
    vok::Limits oLimits;
    oLimits.m_uInflatedBytes = 100;
    EXPECT_TRUE(Has(Failing([&] { Inspected(Compressed(AllTypes()), oLimits); }), "limit \""));
}

}  // namespace
}  // namespace vok
