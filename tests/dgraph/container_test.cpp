// SPDX-License-Identifier: MIT
// The wrappings of a stored tree.
#include "vok/dgraph/container.h"

#include "tests/dgraph/dgraph_support.h"
#include "vok/file/file.h"
#include "vok/zip/buf.h"

namespace vok {
namespace {

Data Sample() {
    Data oTree = Versioned();
    oTree.SetRootName("doc");
    oTree.CreateNewSucc("n").SetValInt(7);
    oTree.CreateNewSucc("text").SetValStr("abc");
    return oTree;
}

// What a file with these bytes gives, from disk and from memory.
std::string LoadBoth(const std::string& sBytes, const Limits& oLimits = {}) {
    ToDisk("file", sBytes);
    Data oFromFile = Sample();
    std::string sFile = Raised([&] { Dgraph_LoadFromFile(oFromFile, "file", oLimits); });
    Data oFromMemory = Sample();
    std::string sMemory =
        Raised([&] { Dgraph_LoadFromBuffer(oFromMemory, sBytes.data(), sBytes.size(), oLimits); });
    EXPECT_EQ(sFile == NOTHING_RAISED, sMemory == NOTHING_RAISED) << sFile << sMemory;
    EXPECT_EQ(File::OpenFiles(), 0u);
    if (sFile != NOTHING_RAISED) return sFile;
    EXPECT_EQ(Show(oFromFile), Show(oFromMemory));
    return Show(oFromFile);
}

TEST(Container, FormsAreToldApart) {
    std::string sOther = DumpOf(Sample());
    sOther.replace(sOther.find("Data"), 4, "Test");
    const struct {
        std::string sBytes;
        bool bDump, bDocument;
    } aCases[] = {
        // clang-format off
        {DumpOf(Sample()), true, false},  {sOther, false, false},    {"", false, false},
        {"DGraphBin", false, true},       {"DGraphBi", false, false}, {"xDGraphBin", false, false},
        {Header(9, 9, 9), false, true},   {"DGraphBin\xFF and more", false, true},
        // clang-format on
    };
    for (const auto& [sBytes, bDump, bDocument] : aCases) {
        const std::string sAll = "12" + sBytes;
        File_Buf oBuf(sAll.data(), sAll.size());
        oBuf.Seek(2);
        EXPECT_EQ(Data::CanLoad(oBuf), bDump) << sBytes;
        EXPECT_EQ(oBuf.Tell(), 2);
        EXPECT_EQ(Dgraph_CanLoadDGraph(oBuf), bDocument) << sBytes;
        EXPECT_EQ(oBuf.Tell(), 2);
    }
    Drop_Stream oStream("DGraphBin");
    EXPECT_EQ(Trail([&] { (void)Dgraph_CanLoadDGraph(oStream); }), "vok::Dgraph_CanLoadDGraph\n");
}

TEST(Container, EveryFormInEveryWrapping) {
    const Scratch_Dir oDir;
    const Data oTree = Sample();
    const std::string sShown = Show(oTree);
    const std::string sXml = Written([&](File_Buf& o) { oTree.SaveToXML(o); });
    for (const std::string& sForm : {Save(oTree), sXml, DumpOf(oTree)}) {
        EXPECT_EQ(LoadBoth(sForm), sShown);
        EXPECT_EQ(LoadBoth(Compressed(sForm)), sShown);
        EXPECT_EQ(LoadBoth(Zipped({sForm})), sShown);
    }
    EXPECT_EQ(Compressed("")[0], 'x');
}

TEST(Container, RefusesWhatIsNotOneTree) {
    const Scratch_Dir oDir;
    const File::SleepMs pSleep = File::SetSleep([](unsigned) {});
    const std::string sTree = Save(Sample());
    const std::string sCount = "assertion failed: oGlobalInfo.number_entry == 1\n";
    EXPECT_EQ(LoadBoth(Zipped({sTree, sTree})), sCount);
    EXPECT_EQ(LoadBoth(Zipped({})), sCount);
    EXPECT_EQ(LoadBoth("xml that begins with an x"), "invalid or corrupted zip buffer\n");
    EXPECT_EQ(LoadBoth("PK"), "invalid or corrupted zip file \"file\"\n");
    EXPECT_EQ(LoadBoth("x"), "unexpected end of file in \"*** File_Buf ***\"\n");
    EXPECT_TRUE(Has(LoadBoth(""), "XML")) << "an empty file is read as it is";
    // The checksum is read also where a piece of the stream ends in front of it.
    Data oEven = Sample();
    oEven.GetCheckedSucc("text").SetValStr(std::string(65536 + 3 - sTree.size(), 'x').c_str());
    std::string sPacked;
    for (const std::string& s : {Save(oEven), sTree}) {
        sPacked = Compressed(s);
        for (std::size_t uCut = 1; uCut <= 6; ++uCut) {
            EXPECT_EQ(LoadBoth(sPacked.substr(0, sPacked.size() - uCut)),
                      "unexpected end of file in \"*** File_Buf ***\"\n");
        }
        EXPECT_EQ(LoadBoth(sPacked.substr(0, sPacked.size() - 1) + '!'),
                  "invalid or corrupted zip buffer\n");
    }
    Limits oLimits;
    oLimits.m_uInflatedBytes = sTree.size() - 1;
    const std::string sLimit = "limit \"inflated bytes\" of " + std::to_string(sTree.size() - 1) +
                               " exceeded (raise Limits::m_uInflatedBytes)\n";
    EXPECT_EQ(LoadBoth(sPacked, oLimits), sLimit);
    EXPECT_EQ(LoadBoth(Zipped({sTree}), oLimits), sLimit);

    for (const char* sPath : {static_cast<const char*>(nullptr), ""}) {
        Data oTree = Sample();
        Dgraph_LoadFromFile(oTree, sPath);
        EXPECT_FALSE(oTree.IsNode());
    }
    Data oTree = Sample();
    EXPECT_EQ(Trail([&] { Dgraph_LoadFromFile(oTree, "none"); }),
              "vok::File::Open\nvok::Dgraph_LoadFromFile\n");
    EXPECT_FALSE(oTree.IsNode()) << "the old tree is gone in any case";
    Arr<char> oOut;
    EXPECT_EQ(Trail([&] { DGraph_Compress(oOut, nullptr, 1); }),
              "vok::Zip_Stream::Write\nvok::DGraph_Compress\n");
    File::SetSleep(pSleep);
}

}  // namespace
}  // namespace vok
