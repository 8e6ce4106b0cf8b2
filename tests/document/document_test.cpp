// SPDX-License-Identifier: MIT
// Documents of every form and wrapping, and files that are there whole or not at all.
#include "vok/document/document.h"

#include <filesystem>

#include "tests/support.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/sink.h"
#include "vok/file/replacement.h"

namespace vok {
namespace {

namespace fs = std::filesystem;

constexpr Document_Form FORMS[] = {Document_Form::Xml, Document_Form::Dgraph, Document_Form::Json,
                                   Document_Form::Dump};
constexpr Zip_Wrapping WRAPPINGS[] = {Zip_Wrapping::None, Zip_Wrapping::Zlib, Zip_Wrapping::Gzip,
                                      Zip_Wrapping::Zip};

Data SmallTree() {
    Data o = NewTree();
    o.SetRootName("orders");
    o.CreateNode("/order/id").SetValInt(7);
    o.CreateNode("/order/note").SetValStr("ä\n");
    return o;
}

TEST(Document, EveryFormInEveryWrapping) {
    const Scratch_Dir oDir;
    for (const Document_Form eForm : FORMS) {
        for (const Zip_Wrapping eWrapping : WRAPPINGS) {
            SCOPED_TRACE(std::string(Document_FormName(eForm)) + Zip_WrappingName(eWrapping));
            Document_SaveOptions oOptions;
            oOptions.oFormat = {eForm, eWrapping};
            Document_Save(SmallTree(), "kept", oOptions);
            const auto Check = [&](auto&& oFrom) {
                Data oTree;
                Load_Report oReport;
                const Document_Format oFound = Document_Load(oTree, oFrom, {}, &oReport);
                EXPECT_EQ(oFound.eForm, eForm);
                EXPECT_EQ(oFound.eWrapping, eWrapping);
                EXPECT_TRUE(Data::Equal(oTree, SmallTree()));
                EXPECT_EQ(oReport.m_uNodes, 4u);
                // XML has a line break behind its top element.
                EXPECT_EQ(oReport.m_uBytesLeft, eForm == Document_Form::Xml ? 1u : 0u);
            };
            Check(Str("kept"));
            const std::string sBytes = OnDisk("kept");
            File_Buf oBuf(sBytes.data(), sBytes.size());
            Check(static_cast<File_Stream&>(oBuf));
            // Without a file: the same bytes, but for an archive.
            File_Buf oOut("w");
            if (eWrapping == Zip_Wrapping::Zip) {
                EXPECT_EQ(Raised([&] { Document_Save(SmallTree(), oOut, oOptions); }),
                          "a zip archive needs a file\n");
            } else {
                Document_Save(SmallTree(), oOut, oOptions);
                EXPECT_EQ(std::string(oOut.Data(), oOut.Size()), sBytes);
            }
        }
    }
}

TEST(Document, NamesTellFormats) {
    const struct {
        const char* sPath;
        Document_Form eForm;
        Zip_Wrapping eWrapping;
    } CASES[] = {
        {"a.xml", Document_Form::Xml, Zip_Wrapping::None},
        {"data.json/a.DG", Document_Form::Dgraph, Zip_Wrapping::None},
        {"a.b.Dgraph.gz", Document_Form::Dgraph, Zip_Wrapping::Gzip},
        {"a.json.ZIP", Document_Form::Json, Zip_Wrapping::Zip},
        {"a.dump", Document_Form::Dump, Zip_Wrapping::None},
        {"a.zip", Document_Form::Any, Zip_Wrapping::Zip},
        {"xml", Document_Form::Any, Zip_Wrapping::None},
        {"a.xml.bak", Document_Form::Any, Zip_Wrapping::None},
        {"", Document_Form::Any, Zip_Wrapping::None},
    };
    for (const auto& o : CASES) {
        EXPECT_EQ(Document_FormatNamed(o.sPath).eForm, o.eForm) << o.sPath;
        EXPECT_EQ(Document_FormatNamed(o.sPath).eWrapping, o.eWrapping) << o.sPath;
    }
    for (const Document_Form e : FORMS) EXPECT_EQ(Document_FormNamed(Document_FormName(e)), e);

    const Scratch_Dir oDir;
    Document_Save(SmallTree(), "new/folder/orders.xml.zip");
    Zip_Archive oArchive("new/folder/orders.xml.zip");
    oArchive.GoToFirstFile();
    EXPECT_STREQ(oArchive.GetCurrentFileInfo().m_oName.CStr(), "orders.xml");
    EXPECT_EQ(Raised([] { Document_Save(SmallTree(), "orders.txt"); }),
              "\"orders.txt\" does not tell the form of a document by its ending\n");
    EXPECT_FALSE(fs::exists("orders.txt"));
}

TEST(Document, VersionsOfTrees) {
    Data oTree = SmallTree();
    Document_SaveOptions oOptions;
    oOptions.oFormat.eForm = Document_Form::Dgraph;
    const auto Version = [&] {
        File_Buf oOut("w");
        Document_Save(oTree, oOut, oOptions);
        return std::string(oOut.Data() + 9, 3);
    };
    EXPECT_EQ(Version(), std::string("\1\3\0", 3));
    Dgraph_SetVersion(oTree, 1, 1, 2);
    EXPECT_EQ(Version(), std::string("\1\1\2", 3));
}

// The tree and the report of a document that is refused.
TEST(Document, WhatFailsLeavesTheTree) {
    Data oTree = SmallTree();
    Load_Report oReport;
    const std::string sFaulty = "<a>\n <b></c></a>";
    File_Buf oBuf(sFaulty.data(), sFaulty.size());
    EXPECT_NE(Raised([&] { Document_Load(oTree, oBuf, {}, &oReport); }), "");
    EXPECT_EQ(oReport.m_uLine, 2u);
    EXPECT_TRUE(Data::Equal(oTree, SmallTree()));
    // As another form than it is.
    File_Buf oAgain(sFaulty.data(), sFaulty.size());
    Document_LoadOptions oJson;
    oJson.eForm = Document_Form::Json;
    EXPECT_NE(Raised([&] { Document_Load(oTree, oAgain, oJson); }), "");
    // Blanks in front of JSON.
    const std::string sBlanks = std::string(3000, '\n') + "[1]";
    File_Buf oBlanks(sBlanks.data(), sBlanks.size());
    EXPECT_EQ(Document_FormOf(oBlanks), Document_Form::Json);
    EXPECT_EQ(oBlanks.Tell(), 0);
}

TEST(Replacement, OldUntilItIsWhole) {
    const Scratch_Dir oDir;
    ToDisk("kept", "old");
    fs::permissions("kept", fs::perms::owner_read | fs::perms::owner_write);
    const auto Files = [] {
        return std::distance(fs::directory_iterator("."), fs::directory_iterator());
    };
    File_Replacement::Watch oWatch{nullptr};
    {
        File_Replacement oFile("kept", &oWatch);
        EXPECT_STREQ(oFile.GetFile().Name(), "kept");
        oFile.GetFile().Write("new", 3);
        EXPECT_EQ(OnDisk("kept"), "old");
        EXPECT_TRUE(fs::exists(oWatch.load()));
    }
    EXPECT_EQ(OnDisk("kept"), "old");
    EXPECT_EQ(Files(), 1);
    for (const bool bDurable : {true, false}) {
        File_Replacement oFile("kept", &oWatch);
        oFile.GetFile().Write(bDurable ? "new" : "NEW", 3);
        oFile.Commit(bDurable);
        EXPECT_EQ(oWatch.load(), nullptr);
        EXPECT_EQ(OnDisk("kept"), bDurable ? "new" : "NEW");
        EXPECT_EQ(Files(), 1);
    }
#ifndef _WIN32
    EXPECT_EQ(fs::status("kept").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    // A link stays, also one that leads nowhere yet.
    fs::create_symlink("kept", "link");
    fs::create_symlink("none", "ahead");
    for (const char* s : {"link", "ahead"}) {
        File_Replacement oFile(s);
        oFile.GetFile().Write("far", 3);
        oFile.Commit();
        EXPECT_TRUE(fs::is_symlink(s));
    }
    EXPECT_EQ(OnDisk("kept") + OnDisk("none"), "farfar");
    fs::create_symlink("circle", "circle");
    EXPECT_THROW(File_Replacement("circle"), Msg_Exception);
    EXPECT_TRUE(fs::is_symlink("circle"));
    // What cannot be replaced.
    {
        File_Replacement oFile("/dev/null");
        EXPECT_TRUE(oFile.IsDirect());
        oFile.GetFile().Write("far", 3);
        oFile.Commit();
    }
    EXPECT_FALSE(fs::is_regular_file("/dev/null"));
#endif
}

TEST(Replacement, WhatMayNotBeWritten) {
    const Scratch_Dir oDir;
    fs::create_directory("folder");
    ToDisk("file", "old");
    fs::permissions("file", fs::perms::owner_read);
    for (const char* s : {"folder", "file", "file/below", ""}) {
        try {
            File_Replacement oFile(s);
            ADD_FAILURE() << s;
        } catch (const Msg_Exception& oError) {
            EXPECT_EQ(oError.Kind(), Msg_Kind::System) << s;
            EXPECT_EQ(std::string(oError.what()).find(".vok-"), std::string::npos) << s;
        }
    }
    EXPECT_EQ(OnDisk("file"), "old");
    fs::permissions("file", fs::perms::owner_all);
    // A tree that cannot be written leaves what was there.
    Data oTree = SmallTree();
    Dgraph_SetVersion(oTree, 9, 0, 0);
    ToDisk("t.dgraph", "old");
    EXPECT_NE(Raised([&] { Document_Save(oTree, "t.dgraph"); }), "");
    EXPECT_EQ(OnDisk("t.dgraph"), "old");
}

}  // namespace
}  // namespace vok
