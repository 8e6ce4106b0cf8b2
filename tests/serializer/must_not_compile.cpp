// SPDX-License-Identifier: MIT
// One mistake each, which the compiler must tell in a readable line: tests/CMakeLists.txt says
// which.
#include "serializer/fields.h"

using namespace Velmar::Q7R::Serializer;

struct Bare {};
struct Base1 {
    int x = 0;
    VOK_FIELDS(Base1, x)
};

#if MISTAKE == 1
struct Object {
    Bare bare;
    VOK_FIELDS(Object, bare)
};
#elif MISTAKE == 2
struct Object : Base1 {
    int y = 0;
};
#elif MISTAKE == 3
struct Object {
    int x = 0, y = 0;
    static constexpr auto Fields() {
        return List<Object>(Field("x", &Object::x), Field("x", &Object::y));
    }
};
#elif MISTAKE == 4
struct Object {
    std::string_view text;
    VOK_FIELDS(Object, text)
};
#elif MISTAKE == 5
struct Object {
    char letter = 'a';
    VOK_FIELDS(Object, letter)
};
#elif MISTAKE == 6
enum Color { Red, Green };
struct Object {
    Color color = Red;
    VOK_FIELDS(Object, color)
};
#endif

Object Copy(const Object& object) {
    Serializer serializer;
    return serializer.Read<Object>(serializer.Write(object));
}
