// SPDX-License-Identifier: MIT
// What sequences of operations cost: no more than n log n in all, however they are ordered.
#include <algorithm>
#include <numeric>

#include "tests/support.h"
#include "vok/dgraph/access.h"

namespace vok {
namespace {

std::vector<unsigned> Shuffled(unsigned uCount) {
    std::vector<unsigned> oAll(uCount);
    std::iota(oAll.begin(), oAll.end(), 0u);
    std::shuffle(oAll.begin(), oAll.end(), std::mt19937(uCount));
    return oAll;
}

std::string NameOf(unsigned u) {
    std::string s = "n0000000";
    for (std::size_t uAt = s.size(); u != 0; u /= 10) s[--uAt] = static_cast<char>('0' + u % 10);
    return s;
}

// A tree whose names are known, and that has no nodes but the root.
Data Known(unsigned uCount) {
    Data oRoot = NewTree();
    for (unsigned u = 0; u < uCount; ++u) oRoot.MakeKey(NameOf(u).c_str());
    return oRoot;
}

// uCount records, each with a link to the next one below it.
Data Records(unsigned uCount) {
    Data oRoot = NewTree();
    for (unsigned u = 0; u < uCount; ++u) {
        Data oRecord = oRoot.CreateNewSucc("record");
        oRecord.CreateNewSucc("x").SetValLink(oRecord);
    }
    oRoot.SetAccessMode();
    return oRoot;
}

template <class F>
void ForEachRecord(const Data& oRoot, F&& oBody) {
    for (auto oIt = oRoot.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) oBody(oIt.GetData());
}

struct Sequence {
    const char* sWhat;
    Data (*pPrepare)(unsigned);
    void (*pRun)(Data&, unsigned);
};

const Sequence SEQUENCES[] = {
    {"attributes against the order of ids", Records,
     [](Data& o, unsigned uCount) {
         for (unsigned u = 2 * uCount; u > 0; --u) {
             Data oNode = o.GetNodeFromID(u);
             oNode.SetAttVal("a", "1");
             ASSERT_STREQ(oNode.GetAttVal("a"), "1");
             ASSERT_EQ(o.GetNodeFromID(u / 2).GetAttVal("a"), nullptr);
         }
     }},
    {"attributes in any order", Records,
     [](Data& o, unsigned uCount) {
         for (const unsigned u : Shuffled(2 * uCount)) o.GetNodeFromID(u).SetAttVal("a", "1");
         for (unsigned u = 0; u < 2 * uCount; ++u)
             ASSERT_STREQ(o.GetNodeFromID(u).GetAttVal("a"), "1");
     }},
    {"known names, got or created in any order", Known,
     [](Data& o, unsigned uCount) {
         for (const unsigned u : Shuffled(uCount)) {
             u2_t uCreated = 0;
             o.CreateSucc(NameOf(u).c_str(), &uCreated);
             ASSERT_EQ(uCreated, 1u);
             o.CreateSucc(NameOf(u).c_str(), &uCreated);
             ASSERT_EQ(uCreated, 0u);
         }
     }},
    {"the same along paths, in two places", Known,
     [](Data& o, unsigned uCount) {
         for (const unsigned u : Shuffled(uCount)) {
             o.CreateNode(("/a/" + NameOf(u)).c_str());
             o.CreateNode(("/b/" + NameOf(u / 3)).c_str());
         }
         EXPECT_EQ(o.GetNthSucc("a", 0).GetSuccIt().Size(), uCount);
     }},
    {"counted after each one that is added in front", Known,
     [](Data& o, unsigned uCount) {
         for (unsigned u = uCount; u-- > 0;) {
             o.AddInt(NameOf(u), 1);
             ASSERT_EQ(o.GetSuccCount(NameOf(u).c_str()), 1u);
         }
     }},
    {"erased from the front", Records,
     [](Data& o, unsigned) {
         for (Data oFirst; (oFirst = o.GetNthSucc(0)).IsNode();) oFirst.Remove(), oFirst.Erase();
         EXPECT_EQ(o.GetType(), Data_Node::Empty);
     }},
    {"erased from the end", Records,
     [](Data& o, unsigned uCount) {
         for (unsigned u = uCount; u-- > 0;) {
             Data oLast = o.GetNthSucc("record", u);
             oLast.Remove(), oLast.Erase();
         }
     }},
    {"a path for each record", Records,
     [](Data& o, unsigned) {
         ForEachRecord(
             o, [](const Data& oRecord) { ASSERT_EQ(oRecord.GetNodeSet(".//x").Size(), 1u); });
     }},
    {"a cycle in each record", Records,
     [](Data& o, unsigned) {
         ForEachRecord(o, [](const Data& oRecord) { ASSERT_TRUE(oRecord.HasCycle()); });
     }},
    {"each record against itself", Records,
     [](Data& o, unsigned) {
         ForEachRecord(o, [](const Data& oRecord) { ASSERT_TRUE(Data::Equal(oRecord, oRecord)); });
     }},
    {"each record saved with its links", Records,
     [](Data& o, unsigned) {
         ForEachRecord(o, [](const Data& oRecord) {
             Str oText;
             oRecord.SaveToXMLString(oText);
         });
     }},
    {"a set that is filled from its end", Records,
     [](Data& o, unsigned uCount) {
         Data_NodeSet oSet;
         for (unsigned u = uCount; u-- > 0;) oSet.Add(o.GetNodeFromID(u)), oSet.Add(o);
         EXPECT_EQ(oSet.Size(), uCount);
         for (unsigned u = 0; u < uCount; ++u) ASSERT_EQ(oSet.GetNth(u).GetId(), u);
     }},
};

TEST(Growth, NoSequenceIsQuadratic) {
    const auto oCost = [](const Sequence& oSequence, unsigned uCount) {
        const Mem_Probe oProbe;
        Data oTree = oSequence.pPrepare(uCount);
        const u3_t uBefore = dgraph::Access::BaseOf(oTree)->Moved() + Mem_Probe::Asked() / 16;
        oSequence.pRun(oTree, uCount);
        return dgraph::Access::BaseOf(oTree)->Moved() + Mem_Probe::Asked() / 16 - uBefore;
    };
    for (const Sequence& o : SEQUENCES) {
        SCOPED_TRACE(o.sWhat);
        const u3_t uSmall = oCost(o, 4096);
        const u3_t uLarge = oCost(o, 4 * 4096);
        EXPECT_LT(uLarge, 6 * uSmall + 4096);
        EXPECT_LT(uLarge, u3_t{4 * 4096} * 200);
    }
}

}  // namespace
}  // namespace vok
