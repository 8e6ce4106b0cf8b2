// SPDX-License-Identifier: MIT
// The other side of ObjectsTest.cs: objects with the same fields.
//
//     objects_partner write FOLDER    writes cpp_*.dgraph, cpp_*.dgraph12 and cpp_*.xml
//     objects_partner check FOLDER    reads cs_*, which must be the same objects
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "serializer/fields.h"

using namespace Velmar::Q7R::Serializer;

namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;

enum class Side : std::int8_t { Buy, Sell = 5 };
VOK_ENUM(Side, Buy, Sell)
enum class Level : std::uint16_t { Low, High = 40000 };
enum class Huge : std::uint64_t { Low, High = 0xFFFFFFFFFFFFFFFF };

struct Leg {
    int ratio = 1;
    double strike = 0;
    bool operator==(const Leg&) const = default;
    VOK_FIELDS(Leg, ratio, strike)
};

struct Shape {
    virtual ~Shape() = default;
};
struct Circle : Shape {
    double radius = 0;
    VOK_FIELDS(Circle, radius)
};
struct Square : Shape {
    int edge = 0;
    std::optional<std::string> name;
    VOK_FIELDS(Square, edge, name)
};
constexpr auto KindsOf(Type<Shape>) {
    return Kinds(Kind<Circle>("circle"), Kind<Square>("Square"));
}

struct Point : ISerialisable {
    int x = 0;
    void WriteValues(Node& node) override { node.AddValue("x", x); }
    void ReadValues(Node& node) override { node.TryGetValue("x", x); }
};

struct Attributes {
    std::string title;
    int count = 0;
    std::uint64_t big = 0;
    double ratio = 0;
    float small = 0;
    bool on = false;
    Side side = Side::Buy;
    Level level = Level::Low;
    int inside = 0;
    bool operator==(const Attributes&) const = default;
    static constexpr auto Fields() {
        return List<Attributes>(
            Field("title", &Attributes::title).Attribute(),
            Field("count", &Attributes::count).Attribute(),
            Field("big", &Attributes::big).Attribute(),
            Field("ratio", &Attributes::ratio).Attribute(),
            Field("small", &Attributes::small).Attribute(),
            Field("on", &Attributes::on).Attribute(), Field("side", &Attributes::side).Attribute(),
            Field("level", &Attributes::level).Attribute(), Field("inside", &Attributes::inside));
    }
};

struct Child {
    static constexpr int FIELDS_VERSION = 3;
    std::string name;
    std::unique_ptr<Child> next;
    VOK_FIELDS(Child, name, next)
};

struct Order {
    bool flag = false;
    std::int8_t i1 = 0;
    std::uint8_t u1 = 0;
    std::int16_t i2 = 0;
    std::uint16_t u2 = 0;
    std::int32_t i4 = 0;
    std::uint32_t u4 = 0;
    std::int64_t i8 = 0;
    std::uint64_t u8 = 0;
    float f = 0;
    double d = 0;
    Side side = Side::Buy;
    Level level = Level::Low;
    Huge huge = Huge::Low;
    std::optional<std::string> text;
    std::optional<std::vector<std::uint8_t>> bytes;
    std::chrono::sys_seconds placed;
    std::chrono::sys_time<Ticks> exact;
    Ticks lasts{};
    std::string price = "0";
    std::string guid = "00000000-0000-0000-0000-000000000000";
    std::string local = "0001-01-01T00:00:00.0000000+00:00";
    std::optional<int> limit;
    std::optional<Side> other;
    Leg leg;
    std::unique_ptr<Child> child;
    std::unique_ptr<Shape> shape;
    std::unique_ptr<Point> point;
    std::unique_ptr<Attributes> attributes;
    std::vector<Leg> legs;
    std::vector<int> numbers;
    std::set<std::string> names;
    std::map<std::string, int> counts;
    std::map<int, std::vector<Leg>> groups;
    std::vector<std::vector<int>> matrix;
    std::vector<std::optional<int>> gaps;
    std::vector<std::optional<std::string>> texts;
    std::vector<std::unique_ptr<Shape>> shapes;
    std::vector<std::unique_ptr<Point>> points;
    std::map<std::string, std::vector<std::vector<int>>> named;
    int zero = 0;
    std::string id;

    static constexpr auto Fields() {
        using T = Order;
        return List<T>(
            Field("flag", &T::flag), Field("i1", &T::i1), Field("u1", &T::u1), Field("i2", &T::i2),
            Field("u2", &T::u2), Field("i4", &T::i4), Field("u4", &T::u4), Field("i8", &T::i8),
            Field("u8", &T::u8), Field("f", &T::f), Field("d", &T::d), Field("side", &T::side),
            Field("level", &T::level), Field("huge", &T::huge), Field("text", &T::text),
            Field("bytes", &T::bytes), Field("placed", &T::placed), Field("exact", &T::exact),
            Field("lasts", &T::lasts), Field("price", &T::price), Field("guid", &T::guid),
            Field("local", &T::local), Field("limit", &T::limit), Field("other", &T::other),
            Field("leg", &T::leg), Field("child", &T::child), Field("shape", &T::shape),
            Field("point", &T::point), Field("attributes", &T::attributes), Field("legs", &T::legs),
            Field("numbers", &T::numbers), Field("names", &T::names), Field("counts", &T::counts),
            Field("groups", &T::groups), Field("matrix", &T::matrix), Field("gaps", &T::gaps),
            Field("texts", &T::texts), Field("shapes", &T::shapes), Field("points", &T::points),
            Field("named", &T::named).Entries("z", "a").Items("row"),
            Field("zero", &T::zero).OmitEmpty(), Field("\xC3\xA4 id", &T::id));
    }
};

Order Full() {
    Order o;
    o.flag = true;
    o.i1 = -128;
    o.u1 = 255;
    o.i2 = -32768;
    o.u2 = 65535;
    o.i4 = std::numeric_limits<std::int32_t>::min();
    o.u4 = 0xFFFFFFFF;
    o.i8 = std::numeric_limits<std::int64_t>::min();
    o.u8 = 0xFFFFFFFFFFFFFFFF;
    o.f = 0.1f;
    o.d = -0.0;
    o.side = Side::Sell;
    o.level = Level::High;
    o.huge = Huge::High;
    o.text = "gr\xC3\xBC\xC3\x9F <&> \xF0\x9F\x98\x80";
    o.bytes = std::vector<std::uint8_t>{0, 1, 255};
    o.placed = std::chrono::sys_seconds(std::chrono::seconds(-1));
    o.exact = std::chrono::sys_time<Ticks>(Ticks(17000000001234567));
    o.lasts = Ticks(-5);
    o.price = "-1234567890.50";
    o.guid = "00112233-4455-6677-8899-aabbccddeeff";
    o.local = "2026-11-26T19:40:35.1234567+05:30";
    o.limit = 0;
    o.other = Side::Buy;
    o.leg = {2, 99.5};
    o.child = std::make_unique<Child>();
    o.child->name = "one";
    o.child->next = std::make_unique<Child>();
    auto circle = std::make_unique<Circle>();
    circle->radius = 1.5;
    o.shape = std::move(circle);
    o.point = std::make_unique<Point>();
    o.point->x = 7;
    o.attributes = std::make_unique<Attributes>(Attributes{
        "t \"&\xC3\xA4", -3, 0xFFFFFFFFFFFFFFFF, 0.1, 0.25f, true, Side::Sell, Level::High, 9});
    o.legs = {{1, 1e300}, {}, {3, 5e-324}};
    o.numbers = {3, 1, 2};
    o.names = {"", "B", "a"};
    o.counts = {{"A", 1}, {"b", -1}};
    o.groups = {{-1, {}}, {2, {{4, 4}, {5, 5}}}};
    o.matrix = {{1, 2}, {}, {3}};
    o.gaps = {1, std::nullopt, 3};
    o.texts = {"x", std::nullopt, ""};
    o.shapes.push_back(std::make_unique<Square>());
    o.shapes.push_back(nullptr);
    static_cast<Square&>(*o.shapes[0]).name = "sq";
    for (int i : {1, 2}) {
        o.points.push_back(std::make_unique<Point>());
        o.points.back()->x = i;
    }
    o.named = {{"n", {{1}, {2, 3}}}};
    o.zero = 1;
    o.id = "id";
    return o;
}

std::string Bytes(const std::vector<Byte>& aoByte) {
    return {aoByte.begin(), aoByte.end()};
}

std::string FileOf(const std::string& sPath) {
    std::ifstream oFile(sPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(oFile), std::istreambuf_iterator<char>()};
}

void Write(const std::string& sPath, const std::string& sBytes) {
    std::ofstream(sPath, std::ios::binary) << sBytes;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string sFolder = std::string(argv[2]) + "/";
    const bool bWrite = std::string_view(argv[1]) == "write";
    int iWrong = 0;
    Serializer oSerializer;
    const std::pair<const char*, Order> aoCase[] = {{"full", Full()}, {"empty", Order()}};
    for (const auto& [sName, oOrder] : aoCase) {
        if (bWrite) {
            const std::string sStem = sFolder + "cpp_" + sName;
            Write(sStem + ".dgraph", Bytes(oSerializer.Write(oOrder)));
            Write(sStem + ".dgraph12", Bytes(oSerializer.WriteToBinaryBuffer(oOrder)));
            oSerializer.WriteToFile(oOrder, (sStem + ".xml").c_str());
            continue;
        }
        // Read, and written again: an object that is the same gives the same bytes.
        const std::string sStem = sFolder + "cs_" + sName;
        const std::string sWanted = Bytes(oSerializer.Write(oOrder));
        for (const char* sEnd : {".dgraph", ".dgraph12", ".xml"}) {
            Order oRead;
            try {
                if (std::string_view(sEnd) == ".xml") {
                    oSerializer.ReadFromFile(oRead, (sStem + sEnd).c_str(),
                                             {.refuseUnknown = true});
                } else {
                    const std::string s = FileOf(sStem + sEnd);
                    oSerializer.Read(oRead,
                                     std::span(reinterpret_cast<const Byte*>(s.data()), s.size()),
                                     {.refuseUnknown = true});
                }
            } catch (const System::ApplicationException& e) {
                std::printf("%s%s: %s\n", sStem.c_str(), sEnd, e.what());
                ++iWrong;
                continue;
            }
            if (Bytes(oSerializer.Write(oRead)) == sWanted) continue;
            std::printf("%s%s: another object\n", sStem.c_str(), sEnd);
            ++iWrong;
        }
    }
    return iWrong == 0 ? 0 : 1;
}
