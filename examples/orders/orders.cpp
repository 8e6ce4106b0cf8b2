// SPDX-License-Identifier: MIT
// Many objects of one kind, the fast way: built with keys, written, read again, summed up.
#include <cstdio>

#include "vok/vok.h"

using namespace vok;

namespace {

// What a program looks up once per tree, not once per node.
struct Keys {
    Data_Key oOrder, oId, oSymbol, oPrice;

    explicit Keys(Data& oRoot)
        : oOrder(oRoot.MakeKey("order")),
          oId(oRoot.MakeKey("id")),
          oSymbol(oRoot.MakeKey("symbol")),
          oPrice(oRoot.MakeKey("price")) {}
};

Data Build(int iOrders) {
    static const char* const SYMBOLS[] = {"ALFA", "BRVO", "CHRL"};
    Data oRoot;
    oRoot.SetToRoot();
    oRoot.SetRootName("orders");
    Dgraph_SetVersion(oRoot, 1, 3, 0);
    const Keys oKeys(oRoot);
    Data_Builder oBuilder(oRoot);
    for (int i = 0; i < iOrders; ++i) {
        oBuilder.Open(oKeys.oOrder);
        oBuilder.AddInt(oKeys.oId, i);
        oBuilder.AddStr(oKeys.oSymbol, SYMBOLS[i % 3]);
        oBuilder.AddDbl(oKeys.oPrice, 100 + i * 0.25);
        oBuilder.Close();
    }
    oBuilder.Finish();
    return oRoot;
}

// The sum of the prices of one symbol: fields are found by key, in the tree's own arrays.
double SumOf(const Data& oTree, std::string_view sSymbol) {
    const Data_View oRoot(oTree);
    const Data_Key oSymbol = oRoot.KeyOf("symbol");
    const Data_Key oPrice = oRoot.KeyOf("price");
    double dSum = 0;
    for (u2_t u = 0; u < oRoot.GetSuccs(); ++u) {
        const Data_View oOrder = oRoot.GetSucc(u);
        const Data_View oIts = oOrder.Find(oSymbol);
        const Data_View oCosts = oOrder.Find(oPrice);
        const bool bCounts = oIts.IsNode() && oIts.GetType() == Data_Node::String &&
                             oIts.Text() == sSymbol && oCosts.IsNode() &&
                             oCosts.GetType() == Data_Node::Double;
        if (bCounts) dSum += oCosts.Dbl();
    }
    return dSum;
}

}  // namespace

int main() {
    try {
        const Data oBuilt = Build(1000);
        File_Buf oDocument("w");
        Dgraph_SaveDGraph(oBuilt, oDocument);

        Data oRead;
        File_Buf oIn(oDocument.Data(), oDocument.Size());
        Dgraph_LoadDGraph(oRead, oIn);
        std::size_t uNodes = 0;
        for (Data_Walk oWalk(oRead); oWalk.Next();) ++uNodes;

        const double dSum = SumOf(oRead, "BRVO");
        std::printf("%zu bytes, %zu nodes, BRVO %.2f\n", oDocument.Size(), uNodes, dSum);
        return dSum == SumOf(oBuilt, "BRVO") && uNodes == 4001 && std::fflush(stdout) == 0 ? 0 : 1;
    } catch (const Msg_Exception& oError) {
        std::fprintf(stderr, "orders: %s", oError.what());
        return 2;
    }
}
