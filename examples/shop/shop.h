// SPDX-License-Identifier: MIT
// A shop as objects: customers that several orders share, lines in orders, a discount of several
// kinds, and the same in its first version, whose documents are still about.
#ifndef EXAMPLES_SHOP_SHOP_H
#define EXAMPLES_SHOP_SHOP_H

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "serializer/fields.h"

namespace shop {

using namespace Velmar::Q7R::Serializer;

enum class State { Open, Paid, Shipped };
VOK_ENUM(State, Open, Paid, Shipped)

struct Customer {
    std::string name;
    std::optional<std::string> email;
    std::vector<std::uint8_t> photo;
    VOK_FIELDS(Customer, name, email, photo)
};

// What an order takes off its price, in cents.
struct Discount {
    virtual ~Discount() = default;
    [[nodiscard]] virtual std::int64_t Of(std::int64_t iCents) const = 0;
};
struct Percent : Discount {
    std::int32_t rate = 0;
    [[nodiscard]] std::int64_t Of(std::int64_t iCents) const override {
        return iCents * rate / 100;
    }
    VOK_FIELDS(Percent, rate)
};
struct Voucher : Discount {
    std::string code;
    std::int64_t cents = 0;
    [[nodiscard]] std::int64_t Of(std::int64_t iCents) const override {
        return iCents < cents ? iCents : cents;
    }
    VOK_FIELDS(Voucher, code, cents)
};
VOK_KINDS(Discount, Percent, Voucher)

struct Line {
    std::string product;
    std::uint32_t count = 1;
    std::int64_t cents = 0;
    VOK_FIELDS(Line, product, count, cents)
};

struct Order {
    std::int64_t id = 0;
    std::shared_ptr<Customer> customer;
    State state = State::Open;
    std::chrono::sys_seconds placed;
    std::vector<Line> lines;
    std::unique_ptr<Discount> discount;
    std::map<std::string, std::string> notes;

    [[nodiscard]] std::int64_t Total() const {
        std::int64_t iCents = 0;
        for (const Line& line : lines) iCents += line.count * line.cents;
        return discount != nullptr ? iCents - discount->Of(iCents) : iCents;
    }
    // Version 1 had "number" for the id, and one note.
    static constexpr auto Fields() {
        return List<Order>(Field("id", &Order::id).Was("number"),
                           Field("customer", &Order::customer), Field("state", &Order::state),
                           Field("placed", &Order::placed), Field("lines", &Order::lines),
                           Field("discount", &Order::discount), Field("notes", &Order::notes),
                           Field("note", &Order::sOldNote).OmitEmpty());
    }
    static constexpr int FIELDS_VERSION = 2;
    void AfterReading(int iVersion) {
        if (iVersion < 2 && !sOldNote.empty()) notes.emplace("", std::exchange(sOldNote, ""));
    }

  private:
    std::string sOldNote;
};

struct Shop {
    std::string name;
    std::vector<std::shared_ptr<Customer>> customers;
    std::vector<Order> orders;
    VOK_FIELDS(Shop, name, customers, orders)
};

// The shop as its first program knew it.
namespace v1 {

struct Line {
    std::string product;
    std::int32_t count = 1;  // cents were in the price list
    VOK_FIELDS(Line, product, count)
};
struct Order {
    std::int32_t number = 0;
    State state = State::Open;
    std::vector<Line> lines;
    std::string note;
    VOK_FIELDS(Order, number, state, lines, note)
};
struct Shop {
    std::string name;
    std::vector<Order> orders;
    VOK_FIELDS(Shop, name, orders)
};

}  // namespace v1

}  // namespace shop

#endif  // EXAMPLES_SHOP_SHOP_H
