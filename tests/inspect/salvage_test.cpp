// SPDX-License-Identifier: MIT
// What is left of damaged documents is one that loads.
#include "vok/inspect/salvage.h"
#include "tests/inspect/inspect_support.h"

namespace vok {
namespace {

class Salvaging : public testing::Test {
    Scratch_Dir m_oDir;
};

struct Salvaged {
    explicit Salvaged(std::string_view sBytes) {
        File_Buf oIn(sBytes.data(), sBytes.size());
        sOut = Written([&](File_Buf& oOut) {
            oReport = Dgraph_Salvage(oIn, oOut, [&](const Inspect_Field&) { ++iTold; });
        });
    }
    std::string sOut;
    Salvage_Report oReport;
    int iTold = 0;
};

TEST_F(Salvaging, WholeDocuments) {
    Data oOld = Versioned(2);
    oOld.CreateNode("/q").SetValQuad(1, 2, 3, 4);
    for (const std::string& sBytes :
         {AllTypes(), Document(0, ""), Document(2, Text("x[2]", "") + Text("x[5]", ""), 1)}) {
        const Salvaged o(sBytes);
        EXPECT_EQ(o.sOut, sBytes);
        EXPECT_TRUE(o.oReport.IsWhole());
        EXPECT_EQ(Salvaged(Gzipped(sBytes)).sOut, sBytes);
        EXPECT_EQ(Salvaged(Zipped({"no document", sBytes})).sOut, sBytes);
    }
    // A form that readers do not take becomes one that they do.
    const Data oTree = LoadTree(Salvaged(Save(oOld)).sOut);
    EXPECT_EQ(Show(oTree), "Root(q:0x00000001000000020000000300000004)");
}

TEST_F(Salvaging, WhatIsLost) {
    const std::string sAfter = Text("x[0]", "y") + Text("x[1]", "y");
    const struct {
        std::string sRecords;
        std::string sLeft;
        u3_t Salvage_Report::*pCount;
        u3_t uCount;
    } ROWS[] = {
        {Text("a[0]", "") + I32(-1) + "lost" + sAfter, Text("a[0]", "") + sAfter,
         &Salvage_Report::m_uSkippedBytes, 4},
        {Leaf("a[0]", 8, I32(-1)) + sAfter, Open("a[0]", 0) + sAfter,
         &Salvage_Report::m_uWithoutValue, 1},
        {Text("x[0]", "") + sAfter, Text("x[0]", "") + Text("x[1]", "y"),
         &Salvage_Report::m_uLeftOut, 1},
        {Open("x[0]", 0) + Open("x[0]", 1) + Text("b[0]", "") + Text("x[1]", ""),
         Open("x[0]", 0) + Text("x[1]", ""), &Salvage_Report::m_uLeftOut, 2},
        {Text("x[2000000000]", "") + Text("y[0]", ""), Text("y[0]", ""),
         &Salvage_Report::m_uLeftOut, 1},
        {Link("a[0]", "x", "x[1]") + Link("b[0]", "x", "x[2]") + sAfter,
         Link("a[0]", "x", "x[1]") + Open("b[0]", 0) + sAfter, &Salvage_Report::m_uLinks, 1},
        // Two runs of one name: which of them is the first is not for us to say.
        {Link("a[0]", "x", "x[0]") + Text("x[0]", "") + Text("b[0]", "") + Text("x[0]", ""),
         Open("a[0]", 0) + Text("x[0]", "") + Text("b[0]", "") + Text("x[0]", ""),
         &Salvage_Report::m_uLinks, 1},
        {Open("a[0]", 7) + Text("b[0]", ""), Open("a[0]", 1) + Text("b[0]", ""),
         &Salvage_Report::m_uFaults, 1},
        {Text("a[0][@\b0;=\"v\"]", "") + sAfter, Text("a[0]", "") + sAfter,
         &Salvage_Report::m_uLeftOut, 0},
    };
    for (const auto& o : ROWS) {
        const Salvaged oFound(Document(3, o.sRecords));
        // Whatever the root says, it has what is there.
        const std::string sLeft = oFound.sOut.substr(46);
        EXPECT_EQ(sLeft, o.sLeft);
        EXPECT_EQ(oFound.oReport.*o.pCount, o.uCount);
        EXPECT_EQ(LoadFromBoth(oFound.sOut)[0].oReport.IsComplete(), true);
    }
    // Without header and root.
    EXPECT_EQ(Salvaged("lost" + sAfter).sOut, Document(2, sAfter));
    EXPECT_EQ(Failing([] { Salvaged("no tree"); }), "No binary DGraph buffer!");
    EXPECT_EQ(Failing([] { Salvaged(Dumped(NewTree())); }), "No binary DGraph buffer!");
}

// Cut anywhere, and with every byte turned: what is written loads, whole, with as many nodes as are
// told; with nothing wrong everything is there.
TEST_F(Salvaging, AnyDamage) {
    for (const std::string& sBytes : {AllTypes(), Gzipped(AllTypes())}) {
        for (std::size_t u = 0; u < sBytes.size() && !HasFailure(); ++u) {
            for (int iMask : {0, 1, 0x40, 0xFF}) {
                std::string sDamaged = sBytes;
                sDamaged[u] = static_cast<char>(sDamaged[u] ^ iMask);
                if (iMask == 0) sDamaged.resize(u);
                std::string sOut;
                Salvage_Report oReport;
                try {
                    const Salvaged o(sDamaged);
                    sOut = o.sOut;
                    oReport = o.oReport;
                } catch (const Msg_Exception&) {
                    continue;  // nothing left
                }
                const Loaded o = LoadFromBoth(sOut)[0];
                EXPECT_TRUE(o.bGood) << u << ' ' << iMask << ' ' << o.sShown;
                EXPECT_TRUE(o.oReport.IsComplete()) << u << ' ' << iMask;
                // A change that could be right is believed, but nothing goes.
                EXPECT_TRUE(!oReport.IsWhole() || iMask == 0 ||
                            sOut.size() + 8 > AllTypes().size());
            }
        }
    }
}

}  // namespace
}  // namespace vok
