// SPDX-License-Identifier: MIT
// Cursors: where they stand, what they are called, what may be appended to them; and the corners of
// attributes, which the model test has at random.
#include "tests/data/kinds.h"

namespace vok {
namespace {

TEST(Cursor, MovesAboutItsTree) {
    const Data oRoot = NewTree();
    EXPECT_STREQ(oRoot.GetName(), "Root");
    EXPECT_EQ(oRoot.GetType(), Data_Node::Empty);
    EXPECT_EQ(oRoot.NodeDepth(), 0);
    EXPECT_EQ(oRoot.GetUserTag(), Str());
    Data oNode = oRoot;
    const Data oA = oNode.CreateNewSucc("a");
    EXPECT_EQ(oNode, oRoot);
    oNode = oA;
    oNode.SetToNewSucc(nullptr);
    EXPECT_EQ(oNode.GetId(), 2u);
    EXPECT_EQ(oNode.GetName(), nullptr);
    EXPECT_EQ(oNode.NodeDepth(), 2);
    EXPECT_EQ(oNode.GetPred(), oA);
    EXPECT_EQ(oNode.GetRoot(), oRoot);
    EXPECT_EQ(oRoot.GetNodeFromID(1), oA);
    EXPECT_NE(oNode, oA);
    EXPECT_NE(NewTree(), oRoot);
    for (const Data& o : {oRoot.GetPred(), oRoot.GetNodeFromID(3), oRoot.GetNodeFromID(~0u)}) {
        EXPECT_FALSE(o.IsNode());
    }
    EXPECT_EQ(Raised([&] { oNode.SetToNode(3); }), "assertion failed: uId < GetNodes()\n");
    EXPECT_EQ(oNode.GetId(), 2u);
    EXPECT_EQ(oNode.SetToNode(1), 1u);
    oNode.SetToPred();
    EXPECT_EQ(oNode, oRoot);
    EXPECT_EQ(Raised([&] { oNode.SetToPred(); }), "node has no predecessor\n");
}

TEST(Cursor, RootAndTagBelongToTheTree) {
    const Data oRoot = NewTree();
    Data oNode = oRoot.GetNodeFromID(0).CreateNewSucc("Root");
    for (const char* sName : {"x", "\xE4", "", "y"}) {
        oNode.SetRootName(sName);
        const std::string sShown = *sName == 0 ? "Root" : *sName == '\xE4' ? "ä" : sName;
        EXPECT_EQ(oRoot.GetName(), sShown);
        EXPECT_STREQ(oNode.GetName(), "Root");
    }
    oNode.SetUserTag("tag \xFC");
    const Mem::Str oTag = oRoot.GetUserTag();
    EXPECT_EQ(oNode.MkClone().GetUserTag(), oTag);
    oNode.SetUserTag(nullptr);
    EXPECT_EQ(oTag, Str("tag ü"));
    EXPECT_TRUE(oRoot.GetUserTag().IsEmpty());
}

TEST(Cursor, KeysNameNodes) {
    Data oRoot = NewTree();
    const Data_Key oKey = oRoot.MakeKey("ü");
    EXPECT_EQ(oRoot.FindKey("\xFC").uKey, oKey.uKey);  // the same name in Latin-1
    EXPECT_FALSE(oRoot.FindKey("u").IsKnown());
    EXPECT_STREQ(oRoot.CreateNewSucc(oKey).GetName(), "ü");
    EXPECT_EQ(oRoot.CreateNewSucc(Data_Key{0}).GetName(), nullptr);
    EXPECT_EQ(oRoot.GetNthSucc(oKey, 0).GetId(), 1u);
    EXPECT_FALSE(oRoot.GetNthSucc(oKey, 1).IsNode());
    for (const u2_t uBad : {oKey.uKey + 1, Data_Key::UNKNOWN}) {
        EXPECT_EQ(Raised([&] { oRoot.CreateNewSucc(Data_Key{uBad}); }),
                  "assertion failed: b.m_oName.ValidHndl(uHndl)\n");
        EXPECT_EQ(oRoot.GetSuccIt(Data_Key{uBad}).Size(), 0u);
    }
    EXPECT_EQ(oRoot.GetNodes(), 3u);
}

TEST(Cursor, WhoTakesSuccessors) {
    const auto Refuses = [](Data oNode, Data_Node::Type eType) {
        const Data_Node oBefore = oNode.GetNode();
        const u2_t uNodes = oNode.GetNodes();
        EXPECT_EQ(Raised([&] { oNode.CreateNewSucc("new"); }),
                  WrongType(Data_Node::TypeName(eType)));
        EXPECT_EQ(oNode.GetNodes(), uNodes);
        EXPECT_EQ(std::memcmp(&oBefore, &oNode.GetNode(), sizeof(oBefore)), 0);
    };
    Data oRoot = NewTree();
    for (const Kind& oKind : KINDS) {
        Data oNode = oRoot.CreateNewSucc("n");
        oKind.pSet(oNode);
        Refuses(oNode, oKind.eType);
    }
    for (const char* sText : {" \n\t\r\fx", "\v", "\u00A0"}) {
        Refuses(oRoot.GetNodeFromID(oRoot.AddStr("n", sText)), Data_Node::String);
    }
    for (const char* sBlank : {" \n\t\r\f", ""}) {
        Data oNode = oRoot.GetNodeFromID(oRoot.AddStr("n", sBlank));
        oNode.CreateNewSucc("new");
        EXPECT_EQ(oNode.GetType(), Data_Node::Tree);
        EXPECT_EQ(oNode.GetCheckedSucc("new").GetId(), oNode.GetId() + 1);
    }
}

TEST(Cursor, CheckedSuccessors) {
    Data oRoot = NewTree();
    for (int i = 0; i < 2; ++i) oRoot.CreateNewSucc("a");
    EXPECT_EQ(oRoot.CreateSucc("a").GetId(), 1u);
    EXPECT_EQ(oRoot.GetCheckedSucc("a", 1).GetId(), 2u);
    EXPECT_FALSE(oRoot.GetNthSucc("a", 2).IsNode() || oRoot.GetNthSucc(2).IsNode());
    EXPECT_EQ(Failing([&] { (void)oRoot.GetCheckedSucc("a", 3); }),
              "node has not 3 successors named \"a\"");
}

TEST(Cursor, ErrorsNameEveryOperationTheyPass) {
    Data oNode = NewTree().CreateNewSucc("n");
    oNode.SetValInt(1);
    EXPECT_EQ(Trail([&] { oNode.CreateNewSucc("x"); }), "vok::Data::CreateNewSucc(const char*)\n");
    EXPECT_EQ(Trail([&] { oNode.CreateSucc("x"); }),
              "vok::Data::SetToNewSucc\nvok::Data::CreateSucc(const char*)\n");
    EXPECT_EQ(Trail([&] { oNode.CreateNode("x"); }),
              "vok::Data::CreateNewSucc(const char*)\n"
              "vok::Data::CreateSucc(const Data_Xpath::Step&, u2_t*)\nvok::Data::CreateNode\n");
    EXPECT_EQ(Trail([&] { (void)oNode.GetValBool(); }),
              "vok::Data::GetValInt\nvok::Data::GetValBool\n");
    EXPECT_EQ(Trail([&] { (void)oNode.GetNodeSet("a["); }),
              "vok::Data_Xpath::Step::Parse\nvok::Data_Xpath::Parse\nvok::Data::GetNodeSet\n");
}

TEST(Cursor, TheLastReferenceFreesTheTree) {
    const u3_t uBlocks = Mem::BlocksInUse();
    {
        Data oNode = NewTree();
        oNode.SetToNewSucc("a");
        oNode.SetAttVal("x", "y");
        oNode.SetValStr("text");
        Data_SuccIt oIt = oNode.GetRoot().GetSuccIt();
        Data_NodeSet oSet = oNode.GetNodeSet("/a");
        Data oCopy = oNode;
        Data oMoved = std::move(oNode);
        EXPECT_FALSE(oNode.IsNode());  // NOLINT(bugprone-use-after-move): empty by contract
        EXPECT_EQ(oNode, Data());
        oCopy = std::as_const(oCopy);
        oCopy.Clear();
        EXPECT_EQ(oCopy, Data());
        oMoved = NewTree();
        EXPECT_STREQ(oIt.GetData().GetName(), "a");
        oIt = Data_SuccIt();
        EXPECT_STREQ(oSet.GetNth(0).GetValStr(), "text");
    }
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

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
