// Documents in streams; that memory and other streams agree is for every test that loads, and
// for random trees, damaged ones too, the fuzz targets dgraph and roundtrip.
#include "tests/dgraph/dgraph_support.h"

namespace vok {
namespace {

TEST(DgraphStreams, DocumentsFollowEachOther) {
    // Whatever the last record is, the position is right behind it.
    for (const std::string& sLast : {Open("z[0]", 0), Leaf("z[0]", 1, I32(1)), Text("z[0]", "t"),
                                     Leaf("z[0]", 200, ""), Leaf("z[0]", 8, Block(""))}) {
        const std::string sBytes = Document(2, Leaf("y[0]", 1, I32(1)) + sLast);
        File_Buf oBuf("w");
        oBuf.Write("ahead", 5);
        for (int i = 0; i < 2; ++i) oBuf.Write(sBytes.data(), sBytes.size());
        oBuf.Seek(5);
        const std::string sShown = LoadFrom(oBuf).sShown;
        EXPECT_EQ(static_cast<std::size_t>(oBuf.Tell()), 5 + sBytes.size());
        EXPECT_EQ(LoadFrom(oBuf).sShown, sShown);
        EXPECT_EQ(oBuf.Remaining(), 0u);
    }
}

TEST(DgraphStreams, CanLoad) {
    const std::pair<std::string, bool> aCases[] = {
        {"DGraphBin", true},
        {"DGraphBin\xFF and more", true},
        {Header(9, 9, 9), true},
        {"DGraphBi", false},
        {"", false},
        {"xDGraphBin", false},
    };
    for (const auto& [sBytes, bGood] : aCases) {
        const std::string sAll = "12" + sBytes;
        File_Buf oBuf(sAll.data(), sAll.size());
        oBuf.Seek(2);
        EXPECT_EQ(Dgraph_CanLoadDGraph(oBuf), bGood) << sBytes;
        EXPECT_EQ(oBuf.Tell(), 2);
    }
    Drop_Stream oStream("DGraphBin");
    EXPECT_EQ(Trail([&] { (void)Dgraph_CanLoadDGraph(oStream); }), "vok::Dgraph_CanLoadDGraph\n");
}

}  // namespace
}  // namespace vok
