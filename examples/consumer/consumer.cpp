// SPDX-License-Identifier: MIT
// The smallest complete use: an object to bytes and back.
#include <cstdio>

#include "serializer/fields.h"

using namespace Velmar::Q7R::Serializer;

namespace {

struct Point {
    int x = 0;
    int y = 0;
    std::string label;
    VOK_FIELDS(Point, x, y, label)
};

}  // namespace

int main() {
    Serializer serializer;
    const Point point{3, -4, "Münster"};
    const std::vector<Byte> bytes = serializer.Write(point);
    const Point copy = serializer.Read<Point>(bytes);
    std::printf("%zu bytes: (%d, %d) %s\n", bytes.size(), copy.x, copy.y, copy.label.c_str());
    return copy.x == point.x && copy.y == point.y && copy.label == point.label ? 0 : 1;
}
