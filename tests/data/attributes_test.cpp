// Attributes: the corners of each operation; the model test has them at random.
#include "tests/support.h"

namespace vok {
namespace {

TEST(Attributes, NamesAndValues) {
    Data oNode = NewTree();
    EXPECT_EQ(oNode.GetAttVal("a"), nullptr);
    EXPECT_EQ(oNode.GetAttVal(nullptr), nullptr);
    EXPECT_EQ(oNode.GetAttVal(""), nullptr);
    for (const char* sBad : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Raised([&] { oNode.SetAttVal(sBad, "x"); }), "unallowed attribute \"\"\n");
        EXPECT_EQ(Raised([&] { oNode.SetAttVal(sBad, nullptr); }), "unallowed attribute \"\"\n");
    }
    oNode.SetAttVal("a", "");
    EXPECT_STREQ(oNode.GetAttVal("a"), "");
    oNode.SetAttVal("a\xFC", "\xE4");
    EXPECT_STREQ(oNode.GetAttVal("aü"), "ä");
    EXPECT_STREQ(oNode.GetAttVal("a\xFC"), "ä");
    oNode.SetAttVal("unknown", nullptr);

    Arr<const char*> oNames, oValues;
    oValues.Add("left over");
    oNode.GetAttributes(oNames, oValues, false, true);
    EXPECT_EQ(oNames.Size(), 2u);
    EXPECT_EQ(oValues.Size(), 0u);
    Data oOther = oNode.CreateNewSucc("n");
    oOther.GetAttributes(oNames, oValues);
    EXPECT_EQ(oNames.Size(), 0u);
}

// The heap grows by what is new, and by nothing else: the next string tells where it ends.
TEST(Attributes, TextsAreNotStoredTwice) {
    Data oNode = NewTree();
    Data oBlock = oNode.CreateNewSucc("block");
    oBlock.SetValBin("xyz", 4);
    const auto HeapEnd = [&] {
        Data oProbe = oNode.CreateSucc("probe");
        oProbe.SetValStr("p");
        return oProbe.GetNode().uWord2;
    };
    // What the heap grows by when an attribute gets a value.
    const auto Growth = [&](const char* sName, const char* sValue) {
        const u2_t uBefore = HeapEnd();
        oNode.SetAttVal(sName, sValue);
        return HeapEnd() - uBefore - 2;
    };
    EXPECT_EQ(Growth("a", "value"), 6u);
    EXPECT_EQ(Growth("a", "value"), 0u);
    EXPECT_EQ(Growth("b", oNode.GetAttVal("a")), 0u);
    EXPECT_EQ(Growth("c", oNode.GetAttVal("a") + 3), 0u);
    EXPECT_EQ(Growth("a", ""), 0u);
    EXPECT_EQ(Growth("a", "other"), 6u);
    u2_t uSize = 0;  // a block is shared like a text where a NUL ends it
    EXPECT_EQ(Growth("d", static_cast<const char*>(oBlock.GetValBin(uSize))), 0u);
    EXPECT_EQ(AttributesOf(oNode), (Texts{"a=other", "b=value", "c=ue", "d=xyz"}));
}

// What a refused allocation leaves behind must not be in the way of other names.
TEST(Attributes, MemoryRunsOut) {
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        Data oNode = NewTree();
        const auto oSet = [&] {
            for (const char* s : {"a", "b", "c", "d", "e", "f", "g", "h", "i"})
                oNode.SetAttVal(s, "1");
        };
        if (!Mem_Probe::HasRefused(uNth, oSet)) break;
        EXPECT_EQ(Fault(oNode), "");
        oNode.SetAttVal("other", "2");
        oNode.SetAttVal("another", "3");
        oSet();
        EXPECT_EQ(AttributesOf(oNode, true).size(), 11u);
        EXPECT_STREQ(oNode.GetAttVal("another"), "3");
    }
}

TEST(Attributes, Copies) {
    Data oSrc = NewTree(), oOther = NewTree();
    for (const char* s : {"a", "b"}) oSrc.SetAttVal(s, "1");
    for (const char* s : {"old", "b"}) oOther.SetAttVal(s, "x");
    oSrc.CopyAtt(oOther);
    EXPECT_EQ(AttributesOf(oOther), (Texts{"b=1", "a=1"}));
    // A source that is gone must not cost the destination its own.
    oSrc.CreateNewSucc("x").Remove();
    const Data oStale = oSrc.GetNodeFromID(1);
    oSrc.Shrink();
    EXPECT_EQ(Raised([&] { oStale.CopyAtt(oOther); }), DELETED);
    EXPECT_EQ(AttributesOf(oOther, true).size(), 2u);
}

}  // namespace
}  // namespace vok
