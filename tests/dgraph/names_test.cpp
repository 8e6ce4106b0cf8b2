// SPDX-License-Identifier: MIT
// Names that a DGraph tree may carry, and children made at positions.
#include "vok/dgraph/names.h"

#include "tests/support.h"

namespace vok {
namespace {

TEST(Names, Checks) {
    const auto Attribute = [](const char* s) { Dgraph_CheckAttNam(s); };
    const auto Name = [](const char* s) { Dgraph_CheckName(s); };
    const auto Path = [](const char* s) { Dgraph_CheckPath(s); };
    // Both languages for the two sides of the bar; %s stands for what is not allowed.
    const Pair BAD_ATTRIBUTE{"The attribute name contains the invalid character '%s'\n",
                             "Der Buchstabe '%s' ist im Attribut-Namen nicht erlaubt\n"};
    const Pair BAD_NAME{"The node type contains the invalid character '%s'\n",
                        "Der Buchstabe '%s' ist im Knoten-Typ nicht erlaubt\n"};
    const Pair RESERVED{"invalid type specification \"%s\"\n", "Unerlaubter Knoten-Typ \"%s\"\n"};
    const Pair NO_ATTRIBUTE{"Empty attribute name not allowed\n",
                            "Leerer Attribut-Nname ist nicht erlaubt\n"};
    const Pair NO_NAME{"Empty node type is not allowed\n", "Leerer Knoten-Typ ist nicht erlaubt\n"};
    const Pair GOOD{NOTHING_RAISED, NOTHING_RAISED};
    struct Case {
        void (*pCheck)(const char*);
        const char* sText;
        const Pair& oMessage;
        std::string sWhat;
    };
    const Case CASES[] = {
        // clang-format off
        {Attribute, "a/b c.*", GOOD, ""}, {Attribute, nullptr, NO_ATTRIBUTE, ""},
        {Attribute, "", NO_ATTRIBUTE, ""}, {Attribute, "\\[", BAD_ATTRIBUTE, "["},
        {Attribute, "a<b>=c", BAD_ATTRIBUTE, "="},  // the first of the list, not of the name
        {Name, "...", GOOD, ""}, {Name, ".x=b&<>\\", GOOD, ""}, {Name, nullptr, NO_NAME, ""},
        {Name, "", NO_NAME, ""}, {Name, ".", RESERVED, "."}, {Name, "..", RESERVED, ".."},
        {Name, "CDNodeReference", RESERVED, "CDNodeReference"},
        {Name, "CDNodeReference2", GOOD, ""}, {Name, "a\"b'c]d[e/", BAD_NAME, "/"},
        {Path, "/a/b[2]//c[@k=\"v\"]", GOOD, ""}, {Path, "a/../b", RESERVED, ".."},
        {Path, "a\b47;b", BAD_NAME, "/"},
        // In the first step only the first attribute is looked at, in the second the second.
        {Path, "a[@x<=\"1\"]", BAD_ATTRIBUTE, "<"},
        {Path, "a[@x=\"1\"][@y<=\"1\"]/b[@x<=\"1\"]", GOOD, ""},
        {Path, "a/b[@x=\"1\"][@y<=\"1\"]", BAD_ATTRIBUTE, "<"},
        // clang-format on
    };
    for (const Case& oCase : CASES) {
        for (const u2_t uLanguage : {Msg::GERMAN, Msg::ENGLISH}) {
            Msg::SetLanguageIndex(uLanguage);
            const bool bGerman = uLanguage == Msg::GERMAN;
            std::string sMessage = bGerman ? oCase.oMessage.second : oCase.oMessage.first;
            if (!oCase.sWhat.empty()) sMessage.replace(sMessage.find("%s"), 2, oCase.sWhat);
            EXPECT_EQ(Raised([&] { oCase.pCheck(oCase.sText); }), sMessage);
        }
    }
    // Up to an end that is given; a NUL before it is a character like others.
    const char sText[] = "ab\0]";
    EXPECT_EQ(Raised([&] { Dgraph_CheckName(sText, sText + 3); }), NOTHING_RAISED);
    EXPECT_NE(Raised([&] { Dgraph_CheckName(sText, sText + 4); }), NOTHING_RAISED);
    EXPECT_EQ(Trail([] { Dgraph_CheckPath("."); }),
              "vok::Dgraph_CheckName\nvok::Dgraph_CheckPath\n");
    Dgraph_CheckAttVal(nullptr);
}

TEST(Names, InsertChild) {
    Data oRoot = NewTree(), oChild;
    const auto Insert = [&](const char* sName, i2_t iIndex) {
        Dgraph_InsertChild(oChild, oRoot, sName, iIndex);
        return oChild.GetId();
    };
    EXPECT_EQ(Insert("n", 5), 1u);  // past the end
    EXPECT_EQ(Insert("n", 0), 2u);
    EXPECT_EQ(Insert("a", 0), 3u);
    EXPECT_EQ(Insert("n", 1), 4u);
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt("n")), (Ids{2, 4, 1}));
    oChild.SetValInt(1);
    oChild.Remove();
    EXPECT_EQ(Insert("n", 1), 4u);  // the freed one, empty
    EXPECT_EQ(oChild.GetType(), Data_Node::Empty);
    EXPECT_EQ(Insert("n", -1), 6u);  // one is appended before
    EXPECT_EQ(IdsOf(oRoot.GetSuccIt("n")), (Ids{2, 4, 1, 5, 6}));
    oChild.SetValInt(1);
    EXPECT_EQ(Raised([&] { Dgraph_InsertChild(oChild, oChild, "n", 0); }),
              "node \"n\" with wrong data type: 'Integer'\n");
    EXPECT_EQ(oChild.GetId(), 6u);
    Data oEmpty;
    Dgraph_InsertChild(oChild, oEmpty, "n", 0);
    EXPECT_EQ(oChild.GetPred(), oEmpty);
    Dgraph_InsertChild(oChild, oChild, "m", 0);
    EXPECT_STREQ(oChild.GetPath().CStr(), "/n[0]/m[0]");
}

}  // namespace
}  // namespace vok
