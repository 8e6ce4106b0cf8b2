// SPDX-License-Identifier: MIT
// Documents node by node.
#include "vok/records/writer.h"
#include "tests/records/records_support.h"
#include "vok/data/builder.h"
#include "vok/file/file.h"
#include "vok/zip/stream.h"

namespace vok {
namespace {

using Form = Data_Writer::Form;

std::string SaveXml(const Data& oTree) {
    return Written([&](File_Buf& o) { oTree.SaveToXML(o); });
}

// A tree with every type, names and attributes that need escapes, runs, and links.
Data Everything() {
    Data oRoot = Versioned();
    oRoot.SetRootName("R");
    oRoot.SetAttVal("z", "1");
    oRoot.SetAttVal("a b", "\"<&\n");
    Data_Builder o(oRoot);
    o.AddStr("", "unnamed");
    o.Open("a");
    o.Close();
    for (int i = 0; i < 12; ++i) {
        o.Open("a.b [c]");
        o.AddInt("i", i);
        o.SetAttVal("dt:dt", "i8");
        o.SetAttVal("empty", "");
        o.SetAttVal("a b", "x");
        o.Close();
    }
    const unsigned char auBytes[] = {0, 1, 255};
    o.AddBin("bin", auBytes, 3);
    o.AddBool("bool", true);
    o.AddChar("char", 0xE4);
    o.AddDate("date", 1e9);
    o.AddDbl("dbl", 0.1);
    o.AddFlt("flt", 0.5);
    o.AddLng("lng", 1234567890123u);
    o.AddQuad("quad", 1, 2, 3, 0xFFFFFFFF);
    o.AddStr("text", "a ]]> b \xC3\xA4");
    o.Open("tree");
    o.Open("tree");
    o.AddStr("text", std::string(100000, 'x'));
    o.Finish();
    return oRoot;
}

// What a writer makes of a document that is read.
std::string Rewritten(std::string_view sDocument, Form eForm, int iMinor = 3) {
    return Written([&](File_Buf& oOut) {
        File_Buf oIn(sDocument.data(), sDocument.size());
        Data_Reader oReader(oIn);
        Data_Writer oWriter(oOut, eForm, iMinor);
        u2_t uOpen = 0;
        while (oReader.Next()) {
            for (; uOpen > oReader->GetDepth(); --uOpen) oWriter.Close();
            oWriter.Add(*oReader);
            uOpen += oReader->GetType() == Data_Node::Tree;
        }
        for (; uOpen != 0; --uOpen) oWriter.Close();
        oWriter.Finish();
    });
}

TEST(Writer, BytesAreThoseOfTheTree) {
    for (const int iMinor : {0, 2, 3}) {
        Data oTree = Everything();
        Dgraph_SetVersion(oTree, 1, iMinor, 0);
        const std::string sDGraph = Save(oTree);
        const std::string sXml = SaveXml(oTree);
        const auto oAdded = [&](Form eForm) {
            return Written([&](File_Buf& o) {
                o.Write("front", 5);
                Data_Writer oWriter(o, eForm, iMinor);
                oWriter.Add(oTree);
                oWriter.Finish();
            });
        };
        EXPECT_EQ(oAdded(Form::DGraph), "front" + sDGraph);
        EXPECT_EQ(oAdded(Form::Xml), "front" + sXml);
        if (iMinor != 3) continue;
        EXPECT_EQ(Rewritten(sDGraph, Form::DGraph), sDGraph);
        // Empty attributes are in XML only.
        EXPECT_EQ(Rewritten(sDGraph, Form::Xml), SaveXml(LoadTree(sDGraph)));
        EXPECT_EQ(Rewritten(sXml, Form::Xml), sXml);
        Data oFromXml;
        oFromXml.LoadFromXMLString(sXml, 0);
        Dgraph_SetVersion(oFromXml, 1, iMinor, 0);
        EXPECT_EQ(Rewritten(sXml, Form::DGraph), Save(oFromXml));
    }
    // A root alone, of any type.
    for (const std::string& s :
         {Header() + Open("Root[0]", 0), Header() + Leaf("v[0]", 1, I32(7))}) {
        EXPECT_EQ(Rewritten(s, Form::DGraph), s);
        EXPECT_EQ(Rewritten(s, Form::Xml), SaveXml(LoadTree(s)));
    }
}

TEST(Writer, LinksToTargetsThatAreAnnounced) {
    Data oTree = Everything();
    oTree.CreateNode("u").SetValLink(oTree.CreateNode("tree/tree"));
    oTree.CreateNode("v").SetValLink(oTree.CreateNode("u"));
    oTree.CreateNode("w").SetValLink(oTree);
    const Data oThird = oTree.GetNthSucc("a.b [c]", 2);
    oTree.CreateNode("x").SetValLink(oThird);
    const auto oWrite = [&](File_Buf& o, Form eForm, const Texts& aoTarget) {
        Data_Writer oWriter(o, eForm);
        for (const std::string& s : aoTarget) oWriter.AnnounceTarget(s);
        oWriter.Add(oTree);
        oWriter.Finish();
    };
    const std::string sTarget = oThird.GetPath().CStr();
    const Texts aoTarget = {"/tree[0]/tree[0]", "u[0]", "/", sTarget, "/not[0]/there[0]"};
    EXPECT_EQ(Written([&](File_Buf& o) { oWrite(o, Form::Xml, aoTarget); }), SaveXml(oTree));
    EXPECT_EQ(Written([&](File_Buf& o) { oWrite(o, Form::DGraph, {}); }), Save(oTree));
    File_Buf oNone("w");
    EXPECT_EQ(Failing([&] { oWrite(oNone, Form::Xml, {"/"}); }),
              "link to \"tree[0]/tree[0]\", which was not announced");
}

TEST(Writer, RefusesWhatIsNoDocument) {
    File_Buf oOut("w");
    Data_Writer o(oOut);
    const auto oError = [&](auto&& oBody) { return Failing(oBody); };
    EXPECT_EQ(oError([&] { o.Close(); }), "no node is open");
    EXPECT_EQ(oError([&] { o.SetAttVal("a", "b"); }), "no node is open");
    EXPECT_EQ(oError([&] { o.Finish(); }), "no node is open");
    o.Open("R", 2);
    EXPECT_EQ(oError([&] { o.SetAttVal("", "b"); }), Failing([] { NewTree().SetAttVal("", "b"); }));
    EXPECT_EQ(oError([&] { o.Finish(); }), "node \"R\" is still open");
    EXPECT_EQ(oError([&] { o.Close(); }), "node \"R\" has 0 successors, not 2 as was told");
    o.Add("b", 1);
    EXPECT_EQ(oError([&] { o.Add("a", 1); }), "names out of order: \"a\" behind \"b\"");
    EXPECT_EQ(oError([&] { o.SetAttVal("a", "b"); }),
              "attributes of node \"b\" come before its value and its successors");
    EXPECT_EQ(oError([&] { o.SetValue(1); }), "node \"b\" has its value or successors already");
    EXPECT_EQ(oError([&] { o.Close(); }), "node \"R\" has 1 successors, not 2 as was told");
    o.Open("b");
    o.SetValue("x");
    EXPECT_EQ(oError([&] { o.Add("c"); }), "node \"b\" has its value or successors already");
    EXPECT_EQ(oError([&] { o.Finish(); }), "node \"b\" is still open");
    o.Close();
    o.Close();
    EXPECT_EQ(oError([&] { o.Add("R"); }), "the document is complete");
    o.Finish();
    EXPECT_EQ(Load(Content(oOut)), "R(b:1 b:'x')");
}

// Orders of which each tells how many successors it has, or none does.
void WriteOrders(File_Stream& oOut, u2_t uOrders, bool bTell, Form eForm = Form::DGraph) {
    Data_Writer o(oOut, eForm);
    o.Open("orders", bTell ? uOrders : Data_Writer::UNKNOWN);
    for (u2_t u = 0; u < uOrders; ++u) {
        o.Open("order");
        o.Add("id", static_cast<i2_t>(u));
        o.Add("text", "some text that is written again and again");
        o.Close();
    }
    o.Close();
    o.Finish();
}

TEST(Writer, CountsGoWhereTheStreamLets) {
    const Scratch_Dir oDir;
    constexpr u2_t MANY = 30000;  // several pieces
    const std::string sTold = Written([](File_Buf& o) { WriteOrders(o, MANY, true); });
    EXPECT_EQ(LoadTree(sTold).GetNodes(), 3 * MANY + 1);
    EXPECT_EQ(Written([](File_Buf& o) { WriteOrders(o, MANY, false); }), sTold);
    {
        File oFile("f", "w");
        oFile.Write("x", 1);
        WriteOrders(oFile, MANY, false);
    }
    EXPECT_EQ(OnDisk("f"), "x" + sTold);
    // Streams that do not go back: held back, or told.
    for (const bool bTell : {false, true}) {
        Drop_Stream oPipe;
        const Mem_Probe oProbe;
        WriteOrders(oPipe, MANY, bTell);
        EXPECT_EQ(Joined(oPipe.m_oWritten), sTold);
        EXPECT_EQ(Mem_Probe::Peak() < 1000000, bTell);
        File_Buf oBuf("w");
        {
            Zip_Stream oPacked(oBuf, "w");
            WriteOrders(oPacked, MANY, bTell);
            oPacked.Close();
        }
        oBuf.Seek(0);
        EXPECT_EQ(Records(oBuf, "/").begin() == std::default_sentinel, false);
    }
    Drop_Stream oPipe;
    EXPECT_EQ(Failing([&] { WriteOrders(oPipe, 1200000, false); }),
              "the number of successors has to be told when a node is opened: the stream cannot "
              "seek");
}

TEST(Writer, MemoryDoesNotGrowWithTheDocument) {
    class Nowhere final : public Drop_Stream {
        std::size_t Write(const void*, std::size_t uCount) override { return uCount; }
    } oNowhere;
    for (const Form eForm : {Form::DGraph, Form::Xml}) {
        const Mem_Probe oProbe;
        WriteOrders(oNowhere, 300000, true, eForm);
        EXPECT_LT(Mem_Probe::Peak(), 1000000u);
    }
    // Names that do not repeat, and open ones among them, of which more than are kept.
    const std::string sMany = Written([](File_Buf& oOut) {
        Data_Writer o(oOut);
        o.Open("0");
        for (int i = 100000; i < 200000; ++i) o.Open(std::to_string(i)), o.Add("1"), o.Add("1");
        for (int i = 100000; i < 200001; ++i) o.Close();
        o.Finish();
    });
    const Data oTree = LoadTree(sMany);
    EXPECT_EQ(oTree.GetNodes(), 300001u);
    EXPECT_EQ(Save(oTree), sMany);
}

}  // namespace
}  // namespace vok
