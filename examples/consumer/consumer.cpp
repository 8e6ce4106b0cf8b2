// The smallest complete use: an object to bytes and back.
#include <cstdio>

#include "serializer/serializer.h"

using namespace Velmar::Q7R::Serializer;

namespace {

struct Point : ISerialisable {
    Int32 x = 0;
    Int32 y = 0;
    String label;

    void WriteValues(Node& node) override {
        node.AddValue("x", x);
        node.AddValue("y", y);
        node.AddValue("label", label);
    }
    void ReadValues(Node& node) override {
        node.TryGetValue("x", x);
        node.TryGetValue("y", y);
        node.TryGetValue("label", label);
    }
};

}  // namespace

int main() {
    Point point;
    point.x = 3;
    point.y = -4;
    point.label = u"Münster";

    Serializer serializer;
    const std::vector<Byte> bytes = serializer.WriteToBinaryBuffer(point);
    Point copy;
    serializer.ReadFromBinaryBuffer(copy, bytes);
    std::printf("%zu bytes: (%d, %d) %s\n", bytes.size(), copy.x, copy.y,
                copy.label.ToUtf8().c_str());
    return copy.x == point.x && copy.y == point.y && copy.label == point.label ? 0 : 1;
}
