// SPDX-License-Identifier: MIT
// Objects of a program to bytes and back: what a type's declaration is all that is written by hand
// for.
#ifndef BENCHMARKS_OBJECTS_H
#define BENCHMARKS_OBJECTS_H

#include <benchmark/benchmark.h>

#include <msgpack.hpp>
#include <string>
#include <vector>

#include "benchmarks/contender.h"
#include "serializer/fields.h"

namespace bench {

namespace objects {

struct Leg {
    int V1 = 0, V2 = 0, V3 = 0, V4 = 0;
    VOK_FIELDS(Leg, V1, V2, V3, V4)
    MSGPACK_DEFINE_MAP(V1, V2, V3, V4)
};
// The orders of the set of that name.
struct Order {
    int id = 0;
    std::string symbol;
    double price = 0;
    int quantity = 0;
    bool active = false;
    std::string note;
    std::vector<std::string> tags;
    Leg leg;
    VOK_FIELDS(Order, id, symbol, price, quantity, active, note, tags, leg)
    MSGPACK_DEFINE_MAP(id, symbol, price, quantity, active, note, tags, leg)
};
struct Orders {
    std::vector<Order> order;
    VOK_FIELDS(Orders, order)
    MSGPACK_DEFINE_MAP(order)
};

struct Address {
    std::string street, city, country;
    int zip = 0;
    VOK_FIELDS(Address, street, city, country, zip)
    MSGPACK_DEFINE_MAP(street, city, country, zip)
};
struct Flags {
    bool admin = false, beta = false, mail = false, push = false;
    VOK_FIELDS(Flags, admin, beta, mail, push)
    MSGPACK_DEFINE_MAP(admin, beta, mail, push)
};
// The one object of the set "small".
struct Person {
    std::string name;
    int age = 0;
    bool active = false;
    double balance = 0;
    Address address;
    std::vector<std::string> phones;
    std::vector<int> scores;
    Flags flags;
    VOK_FIELDS(Person, name, age, active, balance, address, phones, scores, flags)
    MSGPACK_DEFINE_MAP(name, age, active, balance, address, phones, scores, flags)
};

}  // namespace objects

// What the sets "orders" and "small" hold.
const objects::Orders& OrderObjects();
const objects::Person& PersonObject();

void RegisterObjects(const Set& oSet);
void RegisterCereal(const Set& oSet);
void RegisterBoost(const Set& oSet);

// Contender has, for an object and for the bytes that it keeps them in:
//     static constexpr const char* NAME;
//     template <class T> void Write(const T&);        in place of the last
//     template <class T> void Read(T&) const;         what was written, into a new object
//     void Forget(); std::size_t Size() const;        the bytes
template <class Contender, class T>
void RegisterObject(const char* sSet, const T& object, double dNodes) {
    const std::string sPrefix = std::string(sSet) + "/" + Contender::NAME + "/";
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oBody)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("write", [&object, dNodes](benchmark::State& oState) {
        Contender o;
        {
            const Region oRegion;
            for (auto _ : oState) {
                o.Forget();
                o.Write(object);
            }
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    oAdd("write reused", [&object, dNodes](benchmark::State& oState) {
        Contender o;
        o.Write(object);
        {
            const Region oRegion;
            for (auto _ : oState) o.Write(object);
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
    oAdd("read", [&object, dNodes](benchmark::State& oState) {
        Contender o;
        o.Write(object);
        {
            const Region oRegion;
            for (auto _ : oState) {
                T copy;
                o.Read(copy);
                benchmark::DoNotOptimize(copy);
            }
        }
        Count(oState, dNodes, static_cast<double>(o.Size()));
    });
}
// The nodes of a set as objects, 0 for those that are not.
inline std::size_t ObjectNodes(const Set& oSet) {
    const std::string_view sSet(oSet.sName);
    return sSet == "orders" ? 1 + 15 * std::size_t{100000} : sSet == "small" ? 23 : 0;
}
template <class Contender>
void RegisterContender(const Set& oSet) {
    const auto dNodes = static_cast<double>(ObjectNodes(oSet));
    if (std::string_view(oSet.sName) == "orders") {
        RegisterObject<Contender>("orders as objects", OrderObjects(), dNodes);
    } else if (dNodes != 0) {
        RegisterObject<Contender>("small as objects", PersonObject(), dNodes);
    }
}

}  // namespace bench

#endif  // BENCHMARKS_OBJECTS_H
