// SPDX-License-Identifier: MIT
// Objects in one declaration: a type says once which fields it has, and is written and read.
//
//     struct Leg { int ratio = 1; double strike = 0; VOK_FIELDS(Leg, ratio, strike) };
//     struct Order {
//         std::int64_t id = 0;
//         std::string symbol;
//         std::optional<std::string> note;              // absent: no node
//         std::vector<Leg> legs;                        // legs[0], legs[1], ...
//         std::chrono::sys_seconds placed;              // a Date
//         VOK_FIELDS(Order, id, symbol, note, legs, placed)
//     };
//
//     Serializer serializer;
//     std::vector<Byte> bytes = serializer.Write(order);    // a DGraph document
//     Order copy = serializer.Read<Order>(bytes);
//     serializer.WriteToFile(order, "order.xml");           // the same as XML
//
// The documents are those of an object that adds the same values to a Node by hand, byte for byte;
// every host reads them. Each field is a node of its name:
//
//     bool                                   Boolean
//     integers that 32 bits with sign hold   Integer; unsigned 32 and 64 bits Long, negative ones
//                                            as their two's complement
//     float, double                          Float, Double
//     std::string, u16string, String         String; views too, for writing
//     enumerations                           by number as the type that they name; by name with
//                                            VOK_ENUM, which those without a type need
//     bytes (vector, array, span of          Binary
//       std::uint8_t or std::byte)
//     Quad                                   a subnode with "V1" to "V4"
//     time points of whole seconds           Date; finer ones, and durations, their ticks as a
//                                            number: a Date keeps no fractions
//     optional, unique_ptr                   what they hold, or no node
//     vector, deque, list, set, array, ...   a node of the field's name for each element
//     map, multimap, unordered_map           a subnode each, with "key" and "value"
//     pair, tuple                            a subnode with "first" and "second", "V1", "V2", ...
//     variant                                a subnode with one node, "V1" for the first type
//     other types with fields                a subnode
//     pointers to what has VOK_KINDS         a subnode with one node, named by the type
//     shared_ptr, weak_ptr                   what they point to where it is met first, and a Link
//                                            to it everywhere else
//     an ISerialisable                       a subnode that it fills
//     types of other libraries               as what StoredAs makes of them
//
// Containers without an order of their own are written in the one they have at the time.
//
// A container in a container has a subnode with "item" nodes; an element that may be there or not
// and is not is an empty node with the attribute null="true".
//
// Without macros, for private members, foreign types and other names, by a function: static in the
// class, or Fields(Type<T>) in its namespace:
//
//     constexpr auto Fields(Type<Point>) {
//         return List<Point>(Field("x", &Point::x), Field("y", &Point::y).Was("Y"));
//     }
//
// Reading. A field without node keeps its value, but for optionals, pointers and containers,
// whose emptiness has no node: they become empty. Numbers are taken from nodes of any type that
// holds theirs, and checked against their range. Nodes that no field asks for are ignored, unless
// ReadOptions refuse them. FIELDS_VERSION, a static int of a class, is stored with its objects as
// "version"; AfterReading() or AfterReading(int version), if a class has one, is called when an
// object has been read, with the version that was stored or 0.
//
// Errors are System::ApplicationException with the place and what is wrong with it:
//     /legs[3]/strike: Double expected, String found, byte 1234
// or the text of the operation; std::bad_alloc where there is no memory for what is read into.
// Reading that fails leaves an object with some of its fields read.
//
// Objects nest at most 256 levels deep; a text holds no NUL. What is written through pointers to
// a base must be among its kinds, and what a weak_ptr points to must be written as well.
// An object is shared by pointers of one type.
//
// Time. Straight from objects to records and back, without a tree, linear; types with attributes,
// shared pointers, AfterReading or an ISerialisable in them, and documents that are not as this
// library writes them, go through a tree, with the same result.
#ifndef SERIALIZER_FIELDS_H
#define SERIALIZER_FIELDS_H

#include "serializer/fields/forms.h"
#include "serializer/serializer.h"

namespace Velmar::Q7R::Serializer {

// An object with fields where an ISerialisable is asked for; refers to it.
template <class T>
class Serialisable : public ISerialisable {
  public:
    explicit Serialisable(T& object) noexcept : m_object(object) {}
    void WriteValues(Node& node) override { fields::WriteBelow(node, fields::SourceOf(m_object)); }
    void ReadValues(Node& node) override {
        fields::ReadBelow(node, fields::TargetOf(m_object), false);
    }

  private:
    T& m_object;
};

template <FieldObject T>
std::vector<Byte> Serializer::Write(const T& object) {
    std::vector<Byte> bytes;
    fields::WriteDocument(bytes, object, true);
    return bytes;
}
template <FieldObject T>
void Serializer::Write(const T& object, std::vector<Byte>& buffer) {
    fields::WriteDocument(buffer, object, true);
}
template <FieldObject T>
T Serializer::Read(std::span<const Byte> bytes, const ReadOptions& options) {
    T object{};
    fields::ReadDocument(bytes, object, options.refuseUnknown);
    return object;
}
template <FieldObject T>
void Serializer::Read(T& object, std::span<const Byte> bytes, const ReadOptions& options) {
    fields::ReadDocument(bytes, object, options.refuseUnknown);
}
template <FieldObject T>
void Serializer::WriteToFile(const T& object, StringRef fileName) {
    fields::WriteXml(fileName, fields::SourceOf(object));
}
template <FieldObject T>
void Serializer::ReadFromFile(T& object, StringRef fileName, const ReadOptions& options) {
    fields::ReadXml(fileName, fields::TargetOf(object), options.refuseUnknown);
}
template <FieldObject T>
std::vector<Byte> Serializer::WriteToBinaryBuffer(const T& object) {
    std::vector<Byte> bytes;
    fields::WriteDocument(bytes, object, false);
    return bytes;
}
template <FieldObject T>
void Serializer::WriteToStream(const T& object, vok::File_Stream& stream, StreamForm form) {
    fields::WriteStream(stream, fields::SourceOf(object), form == StreamForm::Xml);
}
template <FieldObject T>
void Serializer::ReadFromStream(T& object, vok::File_Stream& stream, const ReadOptions& options) {
    fields::ReadStream(stream, fields::TargetOf(object), options.refuseUnknown);
}
template <FieldObject T>
void Serializer::ReadFromBinaryBuffer(T& object, std::span<const Byte> byteArray) {
    fields::ReadDocument(byteArray, object, false);
}

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_FIELDS_H
