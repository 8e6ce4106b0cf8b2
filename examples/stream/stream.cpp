// SPDX-License-Identifier: MIT
// More than fits into memory: a document written node by node, and read record by record.
#include <cstdio>

#include "vok/vok.h"

using namespace vok;

namespace {

constexpr int ORDERS = 100000;
constexpr const char* FILE_NAME = "stream_example.dgraph";

// Names come in order: "id", "price", "state".
void Write() {
    File oFile(FILE_NAME, "w");
    Data_Writer oWriter(oFile);
    oWriter.Open("orders");
    for (int i = 0; i < ORDERS; ++i) {
        oWriter.Open("order");
        oWriter.SetAttVal("urgent", i % 7 == 0 ? "yes" : "no");
        oWriter.Add("id", i);
        oWriter.Add("price", 100 + i * 0.25);
        oWriter.Add("state", i % 3 == 0 ? "open" : "done");
        oWriter.Close();
    }
    oWriter.Close();
    oWriter.Finish();
    oFile.Close();
}

// Each order as a small tree, one after the other in the same memory.
double SumOfUrgent() {
    double dSum = 0;
    for (const Data& oOrder : Records(FILE_NAME, "/order[@urgent=\"yes\"]")) {
        dSum += oOrder.GetNthSucc("price", 0).GetValDbl();
    }
    return dSum;
}

// The same without trees: what goes by is looked at where it stands.
double SumOfAll() {
    double dSum = 0;
    Data_Reader oReader(FILE_NAME);
    while (oReader.Next()) {
        if (oReader->GetName() == "price") dSum += oReader->Dbl();
    }
    return dSum;
}

}  // namespace

int main() {
    Msg::SetBanner(false);
    try {
        Write();
        const double dUrgent = SumOfUrgent();
        const double dAll = SumOfAll();
        std::printf("%.2f of %.2f\n", dUrgent, dAll);
        std::remove(FILE_NAME);
        return dAll == 100.0 * ORDERS + 0.25 * ORDERS * (ORDERS - 1.0) / 2 ? 0 : 1;
    } catch (const Msg_Exception& oError) {
        std::fprintf(stderr, "%s", oError.what());
        return 1;
    }
}
