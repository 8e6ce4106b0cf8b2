// SPDX-License-Identifier: MIT
// The library in two calls: write an object to a buffer or a file, read it back.
//
//     struct Point : Velmar::Q7R::Serializer::ISerialisable {
//         int x = 0;
//         void WriteValues(Node& node) override { node.AddValue("x", x); }
//         void ReadValues(Node& node) override { node.TryGetValue("x", x); }
//     };
//
//     Serializer serializer;
//     std::vector<Byte> bytes = serializer.WriteToBinaryBuffer(point);
//     serializer.ReadFromBinaryBuffer(copy, bytes);
#ifndef SERIALIZER_SERIALIZER_H
#define SERIALIZER_SERIALIZER_H

#include <concepts>
#include <span>
#include <vector>

#include "serializer/exception.h"
#include "serializer/node.h"
#include "serializer/string.h"
#include "vok/file/stream.h"

namespace Velmar::Q7R::Serializer {

// What a host object implements to be written and read.
class ISerialisable {
  public:
    using Node = Velmar::Q7R::Serializer::Node;

    virtual ~ISerialisable() = default;
    // Adds the object's state below the given root.
    virtual void WriteValues(Node& node) = 0;
    // Takes the object's state from the given root.
    virtual void ReadValues(Node& node) = 0;
};

// An object that is written by its fields, which serializer/fields.h explains.
template <class T>
concept FieldObject = !std::derived_from<T, ISerialisable>;

// How objects are read by their fields.
struct ReadOptions {
    bool refuseUnknown = false;  // nodes that no field asks for are an error
};

// What is written to streams.
enum class StreamForm { DGraph, Xml };

// Holds no state: one serializer may be used for any number of objects, from any thread.
// Exceptions of WriteValues and ReadValues pass through; every other failure raises
// System::ApplicationException.
class Serializer {
  public:
    Serializer() = default;
    virtual ~Serializer() = default;

    // Writes the object to a file as XML; the directories above it are made when they are
    // missing, a file that is there is replaced. Linear in its nodes. "Failed to write data to
    // file", "Invalid vok::Data" when WriteValues disposed of the root.
    void WriteToFile(ISerialisable& iSerialisable, StringRef fileName);
    // Reads an XML file into the object; linear in its bytes. Untrusted files are safe, as
    // below. "Failed to read data from file."; ReadValues is not called then.
    void ReadFromFile(ISerialisable& iSerialisable, StringRef fileName);

    // The object as a binary DGraph document of version 1.2.0; linear in its nodes. "Failed
    // to write data to buffer", "Invalid vok::Data" when WriteValues disposed of the root.
    [[nodiscard]] std::vector<Byte> WriteToBinaryBuffer(ISerialisable& iSerialisable);
    // Reads a binary DGraph document of any version into the object; linear in its bytes.
    // Untrusted bytes are safe: what a document may cost is bounded by vok::Limits. "Failed to
    // read data from file."; ReadValues is not called then.
    void ReadFromBinaryBuffer(ISerialisable& iSerialisable, std::span<const Byte> byteArray);

    // As WriteToBinaryBuffer, but of version 1.3.0 where it has a Long: before, that is a text.
    [[nodiscard]] std::vector<Byte> Write(ISerialisable& iSerialisable);

    // Writes the object to a stream, from its position on, and flushes it: a DGraph document as
    // Write gives it, or XML. Nothing is held but the tree, so that a large document takes no more
    // memory than a small one of it would. vok::Zip_Stream compresses what is written to it.
    // "Failed to write data to stream", "Invalid vok::Data" when WriteValues disposed of the root.
    void WriteToStream(ISerialisable& iSerialisable, vok::File_Stream& stream,
                       StreamForm form = StreamForm::DGraph);
    // Reads a document of any form, as it is or compressed with zlib or gzip, from the position of
    // a stream, which is left behind it if it can seek. Memory follows the bytes that come. "Failed
    // to read data from stream"; ReadValues is not called then.
    void ReadFromStream(ISerialisable& iSerialisable, vok::File_Stream& stream);

    // ---- objects that say which fields they have: include serializer/fields.h ------------
    //
    // Errors name the field: "/legs[3]/strike: Double expected, String found, byte 1234". All are
    // linear.

    // The object as a DGraph document, of version 1.2.0, or 1.3.0 where it has a Long.
    template <FieldObject T>
    [[nodiscard]] std::vector<Byte> Write(const T& object);
    // The same in place of what the buffer held, without a heap block of its own where there is
    // room enough.
    template <FieldObject T>
    void Write(const T& object, std::vector<Byte>& buffer);
    // An object from a DGraph document of any version.
    template <FieldObject T>
    [[nodiscard]] T Read(std::span<const Byte> bytes, const ReadOptions& options = {});
    template <FieldObject T>
    void Read(T& object, std::span<const Byte> bytes, const ReadOptions& options = {});
    // As their namesakes above do.
    template <FieldObject T>
    void WriteToFile(const T& object, StringRef fileName);
    template <FieldObject T>
    void ReadFromFile(T& object, StringRef fileName, const ReadOptions& options = {});
    template <FieldObject T>
    [[nodiscard]] std::vector<Byte> WriteToBinaryBuffer(const T& object);
    template <FieldObject T>
    void ReadFromBinaryBuffer(T& object, std::span<const Byte> byteArray);
    template <FieldObject T>
    void WriteToStream(const T& object, vok::File_Stream& stream,
                       StreamForm form = StreamForm::DGraph);
    template <FieldObject T>
    void ReadFromStream(T& object, vok::File_Stream& stream, const ReadOptions& options = {});

    void Dispose() { Dispose(true); }

  protected:
    virtual void Dispose(bool) {}
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_SERIALIZER_H
