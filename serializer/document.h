// SPDX-License-Identifier: MIT
// The way between a root node and its stored forms, which all hosts share. Internal.
#ifndef SERIALIZER_DOCUMENT_H
#define SERIALIZER_DOCUMENT_H

#include <span>
#include <string_view>
#include <vector>

#include "serializer/node.h"
#include "serializer/string.h"
#include "vok/data/data.h"
#include "vok/file/buf.h"
#include "vok/file/stream.h"

namespace Velmar::Q7R::Serializer {

// Failures raise System::ApplicationException with the text of the operation.
class Document {
  public:
    // Stamps the version that the facade writes, 1.2.0 unless told, on a tree, whatever it was read
    // from.
    static void StampVersion(vok::Data& root, int iMinor = 2);

    // The root of a fresh tree. sFailure is what a failure to make it says.
    [[nodiscard]] static Node NewRoot(const char* sFailure);

    static void SaveToFile(const Node& root, StringRef fileName);
    // bNewer: of version 1.3.0 where there is a Long, which is a text before. Linear.
    [[nodiscard]] static std::vector<Byte> SaveToBuffer(Node& root, bool bNewer = false);
    static void SaveToBuffer(Node& root, vok::File_Buf& buffer, bool bNewer = false);
    // Without a copy of the document; flushes the stream.
    static void SaveToStream(Node& root, vok::File_Stream& stream, bool bXml, bool bNewer = false);
    // The root of the tree that was loaded.
    [[nodiscard]] static Node LoadFromFile(StringRef fileName);
    [[nodiscard]] static Node LoadFromBuffer(std::span<const Byte> bytes);
    // Of any form, compressed or not.
    [[nodiscard]] static Node LoadFromStream(vok::File_Stream& stream);

    static constexpr char INVALID_ROOT[] = "Invalid vok::Data";
    static constexpr char WRITE_BUFFER_FAILED[] = "Failed to write data to buffer";
    static constexpr char WRITE_FILE_FAILED[] = "Failed to write data to file";
    static constexpr char WRITE_STREAM_FAILED[] = "Failed to write data to stream";
    static constexpr char READ_STREAM_FAILED[] = "Failed to read data from stream";
    static constexpr char READ_FAILED[] = "Failed to read data from file.";
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_DOCUMENT_H
