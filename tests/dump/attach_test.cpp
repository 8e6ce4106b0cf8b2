// SPDX-License-Identifier: MIT
// Dumps that become trees where they lie.
#include <filesystem>

#include "tests/dump/dump_support.h"
#include "vok/data/walk.h"
#include "vok/file/replacement.h"
#include "vok/file/shm.h"

namespace vok {
namespace {

constexpr const char* PATH = "tree.dump";

std::string Attachable(const Data& oTree) {
    File_Buf oBuf("w");
    oTree.Dump(oBuf, Data_DumpLayout::Attachable);
    return Content(oBuf);
}
void Publish(const Data& oTree) {
    File_Replacement oFile(PATH);
    oTree.Dump(oFile.GetFile(), Data_DumpLayout::Attachable);
    oFile.Commit(false);
}
Data Attached(Data_Trust eTrust = Data_Trust::None) {
    Data oTree;
    oTree.Attach(PATH, eTrust);
    return oTree;
}
// Many nodes that have much in common, some of them removed, some with attributes.
Data Large() {
    Data oTree = NewTree();
    for (u2_t u = 0; u < 20000; ++u) {
        Data oOrder = oTree.Append("order");
        oOrder.Append("id").SetValLng(u);
        oOrder.Append("note").SetValStr("the text of an order");
        if (u % 100 == 0) oOrder.SetAttVal("state", u % 200 == 0 ? "open" : "done");
        if (u % 1000 == 7) oOrder.Remove();
    }
    return oTree;
}

TEST(Attach, KeepsEverythingWhereverItLies) {
    const Scratch_Dir oDir;
    Data oRich = Rich();
    // The lengths of tags and names move what comes behind them.
    for (std::size_t u = 0; u < 70; ++u) {
        oRich.SetUserTag(std::string(u, 't').c_str());
        Publish(oRich);
        for (const Data_Trust e : {Data_Trust::None, Data_Trust::Checked}) {
            const Data oTree = Attached(e);
            EXPECT_TRUE(Data::Equal(oTree, oRich));
            EXPECT_EQ(DumpOf(oTree), DumpOf(oRich));
            EXPECT_EQ(Attachable(oTree), OnDisk(PATH));
        }
        Data oLoaded;
        File oFile(PATH);
        oLoaded.Load(oFile);
        EXPECT_EQ(DumpOf(oLoaded), DumpOf(oRich));
    }
    // What is not made for it is loaded, and nobody keeps the file.
    ToDisk(PATH, DumpOf(oRich));
    const Data oLoaded = Attached();
    EXPECT_EQ(DumpOf(oLoaded), DumpOf(oRich));
    EXPECT_EQ(dgraph::Access::BaseOf(oLoaded)->m_pAttached, nullptr);
    Publish(NewTree());
    EXPECT_EQ(DumpOf(Attached()), DumpOf(NewTree()));
}

TEST(Attach, StaysInTheFile) {
    const Scratch_Dir oDir;
    const Data oLarge = Large();
    Publish(oLarge);
    for (const Data_Trust e : {Data_Trust::None, Data_Trust::Checked}) {
        const u3_t uBefore = Mem::BytesInUse();
        const Data oTree = Attached(e);
        // A copy would take more than a megabyte. Attributes have 4 bytes for each node.
        EXPECT_LT(Mem::BytesInUse() - uBefore, 4 * 60001u + 20000u);
        EXPECT_EQ(oTree.GetNodeSet("/order[5]/note").GetNth(0).GetValText(),
                  "the text of an order");
        EXPECT_EQ(oTree.GetNodeSet("/order[@state=\"open\"]").Size(), 100u);
        EXPECT_EQ(oTree.GetLiveSuccs(), 19980u);
    }
}

// Whatever is done to one tree gives what it gives to another, and the file stays.
TEST(Attach, ChangesAreItsOwn) {
    const Scratch_Dir oDir;
    Publish(Large());
    const std::string sBytes = OnDisk(PATH);
    using Change = std::function<void(Data)>;
    const Change CHANGES[] = {
        [](Data o) { o.GetNthSucc("order", 3).GetNthSucc("note", 0).SetValStr("another text"); },
        [](Data o) { o.GetNthSucc("order", 3).GetNthSucc("id", 0).SetValInt(-1); },
        [](Data o) {
            for (int i = 0; i < 5000; ++i) o.Append("new").SetValStr("text");
        },
        [](Data o) { o.GetNthSucc("order", 4).Append("more").SetAttVal("a", "b"); },
        [](Data o) { o.GetNthSucc("order", 200).SetAttVal("state", "gone"); },
        [](Data o) { o.GetNthSucc("order", 5).Delete(); },
        [](Data o) { o.GetNthSucc("order", 5).Rename("first"); },
        [](Data o) { o.GetNthSucc("order", 9).MoveTo(o.GetNthSucc("order", 8)); },
        [](Data o) { o.Shrink(); },
        [](Data o) { o.RemoveSuccs(); },
        [](Data o) {
            o.Reset();
            o.Append("a").SetValStr("after");
        },
    };
    Data oAll = Attached(Data_Trust::Checked), oExpected = Large();
    for (const Change& oChange : CHANGES) {
        Data oTree = Attached(), oOther = Large();
        oChange(oTree);
        oChange(oOther);
        EXPECT_EQ(DumpOf(oTree), DumpOf(oOther));
        oChange(oAll);
        oChange(oExpected);
        EXPECT_EQ(DumpOf(oAll), DumpOf(oExpected));
        EXPECT_EQ(OnDisk(PATH), sBytes);
    }
}

// But on Windows, which lets nobody touch them.
TEST(Attach, FilesMayBeReplaced) {
    const Scratch_Dir oDir;
    Publish(Large());
    const Data oOld = Attached();
#ifdef _WIN32
    EXPECT_THROW(Publish(NewTree()), Msg_Exception);
    EXPECT_TRUE(Data::Equal(oOld, Large()));
#else
    Data oNew = NewTree();
    oNew.Append("version").SetValInt(2);
    Publish(oNew);
    EXPECT_TRUE(Data::Equal(oOld, Large()));
    EXPECT_TRUE(Data::Equal(Attached(), oNew));
    const Data oLast = Attached();
    std::error_code oNone;
    std::filesystem::remove(PATH, oNone);
    EXPECT_TRUE(Data::Equal(oLast, oNew));
#endif
    // What is taken from a tree does not need the file.
    Data oClone;
    {
        if (!std::filesystem::exists(PATH)) Publish(Large());
        oClone = Attached().GetNthSucc("order", 1).MkClone();
    }
    EXPECT_EQ(oClone.GetNthSucc("note", 0).GetValText(), "the text of an order");
}

TEST(Attach, WhatIsNoDump) {
    const Scratch_Dir oDir;
    std::filesystem::create_directory("folder");
    ToDisk("empty", "");
    Data oTree = Rich();
    for (const char* s : {"none", "folder", "empty"}) {
        try {
            oTree.Attach(s);
            ADD_FAILURE() << s;
        } catch (const Msg_Exception& oError) {
            EXPECT_EQ(oError.Kind(), Msg_Kind::System) << s << oError.what();
        }
    }
    ToDisk(PATH, "<a/>");
    EXPECT_EQ(Failing([&] { oTree.Attach(PATH); }), "binary data is not a dump of object \"Data\"");
    EXPECT_TRUE(Data::Equal(oTree, Rich()));
}

// Every byte changed in some ways, every length: what loading says, and the same tree.
TEST(Attach, SurvivesEveryChange) {
    const Scratch_Dir oDir;
    const std::string sBytes = Attachable(Rich());
    const auto Check = [](const std::string& sChanged) {
        ToDisk(PATH, sChanged);
        Data oTree, oLoaded;
        File_Buf oBuf(sChanged.data(), sChanged.size());
        Load_Report oReport, oExpected;
        const std::string sError = Failing([&] { oTree.Attach(PATH, {}, {}, &oReport); });
        EXPECT_EQ(sError, Failing([&] { oLoaded.Load(oBuf, {}, &oExpected); }));
        EXPECT_EQ(oReport.m_uOffset, oExpected.m_uOffset);
        EXPECT_EQ(oReport.m_uBytesLeft, oExpected.m_uBytesLeft);
        if (!sError.empty()) return;
        EXPECT_EQ(DumpOf(oTree), DumpOf(oLoaded));
        oTree.RemoveSuccs();
        oTree.Shrink();
    };
    for (std::size_t u = 0; u < sBytes.size(); ++u) {
        std::string sChanged = sBytes;
        sChanged[u] = static_cast<char>(sBytes[u] ^ (u % 2 == 0 ? 1 : 128));
        Check(sChanged);
        if (u % 3 == 1) Check(sBytes.substr(0, u));
    }
}

TEST(Attach, MemoryRunsOut) {
    const Scratch_Dir oDir;
    Publish(Rich());
    for (unsigned uNth = 1;; ++uNth) {
        const Mem_Probe oProbe;
        Data oTree = NewTree();
        const Data oBefore = oTree;
        if (!Mem_Probe::HasRefused(uNth, [&] { oTree.Attach(PATH); })) break;
        EXPECT_EQ(oTree, oBefore);
    }
}

// Several trees in one memory, each at a place where it can stay or not.
TEST(Attach, InSharedMemory) {
    const std::string sName = "vok-test-attach-" + std::to_string(sys::ProcessId());
    const Data oLarge = Large();
    (void)File_Shm::Remove(sName.c_str());
    File_Shm oWriter(sName.c_str(), File_Shm::Mode::Create);
    std::vector<i3_t> aiPlace;
    for (const i3_t iGap : {0, 64, 1, 0}) {
        oWriter.Seek((oWriter.Tell() + 63) / 64 * 64 + iGap);
        aiPlace.push_back(oWriter.Tell());
        oLarge.Dump(oWriter, Data_DumpLayout::Attachable);
        if (aiPlace.size() != 4) oWriter.Publish();
    }
    File_Shm oShm(sName.c_str()), oOther(sName.c_str());
    for (std::size_t u = 0; u < 3; ++u) {
        for (const Data_Trust e : {Data_Trust::None, Data_Trust::Checked}) {
            oShm.Seek(aiPlace[u]);
            oOther.Seek(aiPlace[u]);
            Data oTree, oSecond;
            const u3_t uBefore = Mem::BytesInUse();
            oTree.Attach(oShm, e);
            const bool bStays = Mem::BytesInUse() - uBefore < 4 * 60001u + 20000u;
            EXPECT_EQ(bStays, u != 2);
            EXPECT_LE((oShm.Tell() + 63) / 64, aiPlace[u + 1] / 64);
            oSecond.Attach(oOther, e);
            oTree.GetNthSucc("order", 3).GetNthSucc("note", 0).SetValStr("another text");
            oTree.GetNthSucc("order", 5).GetNthSucc("id", 0).SetValInt(-1);
            EXPECT_FALSE(Data::Equal(oTree, oSecond));
            EXPECT_TRUE(Data::Equal(oSecond, oLarge));
        }
    }
    // What is not published is not there, and what is there is no tree everywhere.
    Data oKept = Rich();
    for (const i3_t iAt : {aiPlace[3], aiPlace[3] + 1000000, i3_t{1}}) {
        oShm.Seek(iAt);
        EXPECT_NE(Failing([&] { oKept.Attach(oShm); }), "");
    }
    File_Shm oClosed;
    EXPECT_EQ(Failing([&] { oKept.Attach(oClosed); }), "object points to nothing");
    EXPECT_TRUE(Data::Equal(oKept, Rich()));
    // A tree keeps the memory, without the name and those that had it open.
    oShm.Seek(0);
    oKept.Attach(oShm);
    (void)File_Shm::Remove(sName.c_str());
    for (File_Shm* p : {&oShm, &oOther, &oWriter}) p->Close();
    EXPECT_TRUE(Data::Equal(oKept, oLarge));
}

}  // namespace
}  // namespace vok
