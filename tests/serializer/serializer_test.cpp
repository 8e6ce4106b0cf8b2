// SPDX-License-Identifier: MIT
// Objects to bytes and back.
#include <exception>
#include <functional>
#include <string>

#include "tests/serializer/serializer_support.h"
#include "vok/base/mem.h"
#include "vok/base/msg_exception.h"
#include "vok/file/file.h"
#include "vok/zip/stream.h"

namespace Velmar::Q7R::Serializer {
namespace {

using namespace std::string_literals;

std::string Text(const Bytes& oBytes) {
    return {oBytes.begin(), oBytes.end()};
}
Bytes ToBytes(const std::string& sText) {
    return {sText.begin(), sText.end()};
}

const std::string g_sHeader = "DGraphBin\1\2"s + std::string(19, '\0');
const std::string g_sReadFailed = "Failed to read data from file.";

TEST(Serializer, BytesOfAnObject) {
    EXPECT_EQ(Text(Write([](Node&) {})), g_sHeader + "\7\0\0\0Root[0]\0\0\0\0\0"s);
    const Bytes oBytes = Write([](Node& node) {
        node.AddValue(u"name", u"\u00E4");
        node.AddValue("id", 258);
        node.AddValue("on", true);
        node.AddValue("raw", Bytes{1, 2});
        node.AddValue("p", 1, 2, 3, 4);
    });
    EXPECT_EQ(Text(oBytes), g_sHeader +
                                "\7\0\0\0Root[0]\0\5\0\0\0"
                                "\5\0\0\0id[0]\1\2\1\0\0"
                                "\7\0\0\0name[0]\5\3\0\0\0\xC3\xA4\0"
                                "\5\0\0\0on[0]\6\1"
                                "\4\0\0\0p[0]\0\4\0\0\0"
                                "\5\0\0\0V1[0]\1\1\0\0\0"
                                "\5\0\0\0V2[0]\1\2\0\0\0"
                                "\5\0\0\0V3[0]\1\3\0\0\0"
                                "\5\0\0\0V4[0]\1\4\0\0\0"
                                "\6\0\0\0raw[0]\b\2\0\0\0\1\2"s);
}

TEST(Serializer, TheRootThatIsRead) {
    // Written by a newer version; nodes of the tree as it was loaded, not of a fresh one.
    const std::string sDocument = "DGraphBin\1\3\7"s + std::string(18, '\0') +
                                  "\5\0\0\0Me[0]\0\1\0\0\0\4\0\0\0x[0]\1\5\0\0\0"s;
    Bytes oAgain;
    Read(ToBytes(sDocument), [&](Node& node) {
        Int32 iValue = 0;
        EXPECT_TRUE(node.TryGetValue("x", iValue));
        EXPECT_EQ(iValue, 5);
        // The version is that of this library, whatever the document said.
        oAgain = Write([&](Node& other) { other = node; });
    });
    EXPECT_EQ(Text(oAgain), g_sHeader + sDocument.substr(30));
}

TEST(Serializer, WhatCannotBeReadNeverReachesTheObject) {
    const std::string aDocuments[] = {
        // clang-format off
        "", "no document", g_sHeader, "DGraphBin\3\2"s + std::string(19, '\0') + "Root",
        g_sHeader + "\7\0\0\0Root[0]\0\1\0\0\0\xFF\xFF\xFF\xFF"s,
        g_sHeader + "\7\0\0\0Root[0]\0\1\0\0\0\7\0\0\0x[99999]\1\0\0\0\0"s,
        g_sHeader + "\7\0\0\0Root[0]\0\1\0\0\0\xD\0\0\0x[2000000000]\1\0\0\0\0"s,
        // clang-format on
    };
    for (const std::string& s : aDocuments) {
        const auto oRead = [&] { Read(ToBytes(s), [](Node&) { FAIL() << "read from nothing"; }); };
        EXPECT_EQ(Failure(oRead), g_sReadFailed);
    }
}

// The native error behind a failure, the functions that it passed, and the place.
struct Reason {
    std::string sText, sTrail;
    System::ApplicationException::Place oPlace;
};
template <class F>
Reason ReasonOf(F&& oBody) {
    Reason oReason;
    try {
        oBody();
    } catch (const System::ApplicationException& oError) {
        oReason.oPlace = oError.GetPlace();
        try {
            std::rethrow_if_nested(oError);
        } catch (const vok::Msg_Exception& oNative) {
            oReason.sText = oNative.what();
            oReason.sTrail = oNative.where();
        }
    }
    return oReason;
}

TEST(Serializer, FailuresHaveTheirReasonsInThem) {
    const vok::Scratch_Dir oDir;
    vok::ToDisk("bad.xml", "<a>\n <b><c \xC3\xA4=''></d></b></a>");
    Host oHost;
    const Reason oXml = ReasonOf([&] { Serializer().ReadFromFile(oHost, "bad.xml"); });
    EXPECT_EQ(oXml.sText, "no XML stream or stream is corrupted\n");
    EXPECT_TRUE(oXml.sTrail.ends_with("vok::Data::LoadFromXML\n")) << oXml.sTrail;
    EXPECT_EQ(oXml.oPlace.uLine, 2u);
    EXPECT_GE(oXml.oPlace.uColumn, 8u);
    EXPECT_GT(oXml.oPlace.uOffset, 12u);
    EXPECT_TRUE(std::string(oXml.oPlace.sPath).starts_with("/b[0]")) << oXml.oPlace.sPath;

    const std::string sShort = g_sHeader + "\7\0\0\0Root[0]\0\1\0\0\0\xFF\xFF\xFF\xFF"s;
    const Reason oBinary = ReasonOf([&] { Read(ToBytes(sShort), [](Node&) {}); });
    EXPECT_EQ(oBinary.sText,
              "Dgraph_LoadDGraph: Input stream is corrupted! Negative length read.\n");
    EXPECT_EQ(oBinary.oPlace.uOffset, sShort.size());
    EXPECT_EQ(oBinary.oPlace.uLine, 0u);

    Node node;
    node.AddValue("x", 1);
    double dValue;
    EXPECT_EQ(ReasonOf([&] { node.TryGetValue("x", dValue); }).sText.substr(0, 32),
              "node \"x\" with wrong data type: '");
    // A text that says it all has none, and may be asked for one.
    EXPECT_EQ(ReasonOf([] { (void)Write([](Node& root) { root.Dispose(); }); }).sText, "");
    // Texts of any length.
    const std::string sLong(5000, 'x');
    EXPECT_EQ(System::ApplicationException(sLong.c_str(), "y").what(), sLong.substr(0, 2047));
    EXPECT_EQ(std::string(System::ApplicationException("x", "y").what()), "xy");
}

TEST(Serializer, WhatWriteValuesMayDoToTheRoot) {
    EXPECT_EQ(Failure([] { (void)Write([](Node& node) { node.Dispose(); }); }),
              "Invalid vok::Data");
    // Another node, anywhere in another tree: the whole of that tree is written.
    const Bytes oBytes = Write([](Node& node) {
        Node other;
        Node sub = other.AddSubnode("a");
        sub.AddValue("b", 1);
        node = sub;
    });
    EXPECT_EQ(Text(oBytes), Text(Write([](Node& node) { node.AddSubnode("a").AddValue("b", 1); })));
    EXPECT_EQ(Text(Write([](Node& node) { node = Node(); })), Text(Write([](Node&) {})));
}

TEST(Serializer, ExceptionsOfTheHostPassThrough) {
    struct HostError {};
    const Bytes oBytes = Write([](Node&) {});
    EXPECT_THROW((void)Write([](Node&) { throw HostError(); }), HostError);
    EXPECT_THROW(Read(oBytes, [](Node&) { throw HostError(); }), HostError);
    // And so do those of nodes.
    const auto oFail = [](Node& node) {
        node.AddValue("x", 1);
        double dValue;
        node.TryGetValue("x", dValue);
    };
    EXPECT_EQ(Failure([&] { (void)Write(oFail); }), "Failed to get Node double value");
    EXPECT_EQ(Failure([&] { Read(oBytes, oFail); }), "Failed to get Node double value");
}

TEST(Serializer, OutOfMemory) {
    const vok::Mem_Probe oProbe;
    const auto oFill = [](Node& node) {
        node.AddSubnode("a").AddValue(u"text", u"\u00E4 text that is longer than a short one");
    };
    const Bytes oGood = Write(oFill);
    unsigned uFailures = 0;
    const auto oSweep = [&](const std::string& sFailed, const std::function<void()>& oBody) {
        bool bRefused = true;
        for (unsigned uNth = 1; bRefused; ++uNth) {
            const vok::u3_t uBlocks = vok::Mem::BlocksInUse();
            vok::Mem_Probe::FailIn(uNth);
            const std::string sFailure = Failure(oBody);
            bRefused = !vok::Mem_Probe::IsArmed();
            vok::Mem_Probe::FailIn(0);
            ASSERT_EQ(vok::Mem::BlocksInUse(), uBlocks);
            // Some things go without the memory that would have made them faster.
            ASSERT_TRUE(sFailure.empty() || (bRefused && sFailure == sFailed)) << sFailure;
            uFailures += sFailure.empty() ? 0 : 1;
        }
    };
    oSweep("Failed to write data to buffer", [&] { EXPECT_EQ(Write([](Node&) {}).size(), 46u); });
    oSweep(g_sReadFailed, [&] { Read(oGood, [](Node&) {}); });
    const std::u16string sLong(100, u'\u00E4');
    oSweep("Failed to add Node String value", [&] { Node().AddValue(sLong, sLong); });
    oSweep("Failed to add subnode", [&] { (void)Node().AddSubnode(sLong); });
    Node node;
    node.AddValue("x", sLong);
    String sValue;
    node.TryGetValue("x", sValue);  // orders the successors
    oSweep("Failed to get Node String value", [&] { node.TryGetValue("x", sValue); });
    EXPECT_GT(uFailures, 20u);
    EXPECT_EQ(Write(oFill), oGood);
}

TEST(Serializer, Streams) {
    Host oHost;
    oHost.oWrite = [](Node& node) {
        node.AddValue("id", 258);
        for (int i = 0; i < 2000; ++i) node.AddValue("text", std::string(500, 'x'));
    };
    int iReads = 0;
    oHost.oRead = [&](Node& node) {
        Int32 iId = 0;
        iReads += node.TryGetValue("id", iId) && iId == 258 && node.GetSubnodeCount("text") == 2000;
    };
    for (const StreamForm eForm : {StreamForm::DGraph, StreamForm::Xml}) {
        // One behind the other, and something else behind both.
        vok::File_Buf oBuf("w+");
        for (int i = 0; i < 2; ++i) Serializer().WriteToStream(oHost, oBuf, eForm);
        oBuf.Write("end", 3);
        oBuf.Seek(0);
        for (int i = 0; i < 2; ++i) Serializer().ReadFromStream(oHost, oBuf);
        // XML ends in a line break, which is behind its top element.
        EXPECT_EQ(oBuf.Remaining(), eForm == StreamForm::Xml ? 4u : 3u);
        // Streams that only go forward, plain and compressed.
        vok::Drop_Stream oPipe;
        Serializer().WriteToStream(oHost, oPipe, eForm);
        const std::string sPiped = vok::Joined(oPipe.m_oWritten);
        vok::Drop_Stream oBack(sPiped, 1000);
        Serializer().ReadFromStream(oHost, oBack);
        for (const char* sMode : {"w", "wz"}) {
            vok::Drop_Stream oBelow;
            vok::Zip_Stream oPacked(oBelow, sMode);
            Serializer().WriteToStream(oHost, oPacked, eForm);
            oPacked.Close();
            const std::string sPacked = vok::Joined(oBelow.m_oWritten);
            EXPECT_LT(sPacked.size(), 30000u);
            vok::Drop_Stream oPackedBack(sPacked, 1000);
            Serializer().ReadFromStream(oHost, oPackedBack);
            vok::Drop_Stream oCut(std::string_view(sPacked).substr(0, sPacked.size() - 5), 1000);
            EXPECT_EQ(Failure([&] { Serializer().ReadFromStream(oHost, oCut); }),
                      "Failed to read data from stream");
        }
        // A stream that fails at any time.
        for (unsigned u = 1; u < 12; ++u) {
            vok::Drop_Stream oFails;
            oFails.m_uFailIn = u;
            const std::string sFailure =
                Failure([&] { Serializer().WriteToStream(oHost, oFails, eForm); });
            EXPECT_EQ(sFailure, oFails.m_uFailIn == 0 ? "Failed to write data to stream" : "");
        }
    }
    EXPECT_EQ(iReads, 10);
    oHost.oWrite = [](Node& node) { node.Dispose(); };
    vok::File_Buf oBuf("w");
    EXPECT_EQ(Failure([&] { Serializer().WriteToStream(oHost, oBuf); }), "Invalid vok::Data");
}

TEST(Serializer, Files) {
    const vok::Scratch_Dir oDir;
    Host oHost;
    oHost.oWrite = [](Node& node) {
        node.AddValue("name", u"a<\u00E4]]>\r\n");
        node.AddValue("id", -7);
        node.AddValue("raw", Bytes{0, 255});
        node.AddValue("p", 1, 2, 3, 4);
    };
    Serializer().WriteToFile(oHost, u"sub/\u00E4.xml");
    EXPECT_EQ(vok::OnDisk("sub/\u00E4.xml"),
              "<?xml version='1.0' encoding='UTF-8'?>\n"
              "<Root xmlns:dt=\"urn:schemas-microsoft-com:datatypes\">\n"
              "\t<id dt:dt=\"i4\">-7</id>\n"
              "\t<name><![CDATA[a<\xC3\xA4]]]]><![CDATA[>\r\n]]></name>\n"
              "\t<p>\n\t\t<V1 dt:dt=\"i4\">1</V1>\n\t\t<V2 dt:dt=\"i4\">2</V2>\n"
              "\t\t<V3 dt:dt=\"i4\">3</V3>\n\t\t<V4 dt:dt=\"i4\">4</V4>\n\t</p>\n"
              "\t<raw dt:dt=\"bin.base64\"><![CDATA[AP8=]]></raw>\n</Root>\n");
    bool bRead = false;
    oHost.oRead = [&](Node& node) {
        String sName;
        Bytes oRaw;
        bRead = node.TryGetValue("name", sName) && node.TryGetValue("raw", oRaw);
        EXPECT_EQ(sName, String(u"a<\u00E4]]>\r\n"));
        EXPECT_EQ(oRaw, (Bytes{0, 255}));
    };
    Serializer().ReadFromFile(oHost, u"sub/\u00E4.xml");
    EXPECT_TRUE(bRead);

    // What is no entity stays in the text.
    vok::ToDisk("own.xml", "<a><name>x &unknown; y</name></a>");
    String sText;
    oHost.oRead = [&](Node& node) { EXPECT_TRUE(node.TryGetValue("name", sText)); };
    Serializer().ReadFromFile(oHost, u"own.xml");
    EXPECT_EQ(sText, String(u"x &unknown; y"));

    oHost.oRead = [](Node&) { FAIL() << "read from nothing"; };
    vok::ToDisk("bad", "<a><b></a>");
    for (const char* sName : {"bad", "none", ""}) {
        EXPECT_EQ(Failure([&] { Serializer().ReadFromFile(oHost, sName); }), g_sReadFailed);
    }
    // Closing is when a short document meets a full disk.
    const auto pSleep = vok::File::SetSleep([](unsigned) {});
    const bool bFull = vok::File::Size("/dev/full") >= 0;
    for (const char* sName : {"", "bad/below.xml", bFull ? "/dev/full" : ""}) {
        EXPECT_EQ(Failure([&] { Serializer().WriteToFile(oHost, sName); }),
                  "Failed to write data to file");
    }
    vok::File::SetSleep(pSleep);
    oHost.oWrite = [](Node& node) { node.Dispose(); };
    EXPECT_EQ(Failure([&] { Serializer().WriteToFile(oHost, "x"); }), "Invalid vok::Data");
}

}  // namespace
}  // namespace Velmar::Q7R::Serializer
