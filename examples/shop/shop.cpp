// SPDX-License-Identifier: MIT
// Writes a shop to memory and to XML, reads it back, reads a document of its first version, and
// lets the first version read one of today. Fails where anything is not as it was.
#include "examples/shop/shop.h"

#include <cstdio>
#include <filesystem>

#include "vok/base/msg.h"

namespace {

using namespace shop;

int g_iFailed = 0;

void Expect(bool bTrue, const char* sWhat) {
    std::printf("%s %s\n", bTrue ? "ok  " : "FAIL", sWhat);
    g_iFailed += !bTrue;
}

Shop MakeShop() {
    Shop shop;
    shop.name = "Corner shop";
    for (const char* s : {"Ada", "Bob"}) {
        shop.customers.push_back(std::make_shared<Customer>());
        shop.customers.back()->name = s;
    }
    shop.customers[0]->email = "ada@example.com";
    for (int i = 0; i < 3; ++i) {
        Order& order = shop.orders.emplace_back();
        order.id = 5'000'000'000 + i;
        order.customer = shop.customers[i == 1];
        order.placed = std::chrono::sys_days(std::chrono::year(2026) / 11 / (20 + i));
        order.lines.resize(static_cast<std::size_t>(i) + 1);
        for (Line& line : order.lines) line = {"tea", 2, 450};
    }
    auto percent = std::make_unique<Percent>();
    percent->rate = 10;
    shop.orders[1].discount = std::move(percent);
    shop.orders[2].state = State::Paid;
    shop.orders[2].notes["gift"] = "wrap it";
    return shop;
}

void Check(const Shop& shop, const char* sWhat) {
    bool bGood = shop.customers.size() == 2 && shop.orders.size() == 3;
    // One customer, not three copies.
    bGood = bGood && shop.orders[0].customer == shop.customers[0] &&
            shop.orders[2].customer == shop.customers[0];
    bGood = bGood && shop.orders[1].Total() == 1620 && shop.orders[2].state == State::Paid &&
            shop.orders[2].notes.at("gift") == "wrap it";
    Expect(bGood, sWhat);
}

void Run() {
    Serializer serializer;
    const Shop shop = MakeShop();
    const std::vector<Byte> bytes = serializer.Write(shop);
    Check(serializer.Read<Shop>(bytes), "a shop in memory and back");

    const std::filesystem::path oFile =
        std::filesystem::temp_directory_path() / "vok_example_shop.xml";
    serializer.WriteToFile(shop, oFile.string());
    Shop fromXml;
    serializer.ReadFromFile(fromXml, oFile.string());
    std::filesystem::remove(oFile);
    Check(fromXml, "a shop as XML and back");

    v1::Shop old;
    old.name = "Corner shop";
    old.orders.emplace_back();
    old.orders[0].number = 17;
    old.orders[0].lines.emplace_back();
    old.orders[0].note = "ring twice";
    const Shop now = serializer.Read<Shop>(serializer.Write(old));
    Expect(now.orders.at(0).id == 17 && now.orders[0].notes.at("") == "ring twice" &&
               now.orders[0].customer == nullptr,
           "a document of version 1 in the program of today");

    const v1::Shop then = serializer.Read<v1::Shop>(bytes);
    Expect(then.name == shop.name && then.orders.size() == 3 && then.orders[2].lines.size() == 3 &&
               then.orders[2].state == State::Paid,
           "a document of today in the program of version 1");

    // An error says where.
    struct Wrong {
        std::string name;
        std::vector<std::string> orders;
        VOK_FIELDS(Wrong, name, orders)
    };
    try {
        (void)serializer.Read<Wrong>(bytes);
        Expect(false, "an error");
    } catch (const System::ApplicationException& e) {
        std::printf("ok   %s\n", e.what());
    }
}

}  // namespace

int main() {
    vok::Msg::SetBanner(false);
    try {
        Run();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "shop: %s\n", e.what());
        return 2;
    }
    return g_iFailed != 0;
}
