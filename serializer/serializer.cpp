// SPDX-License-Identifier: MIT
#include "serializer/serializer.h"

#include "serializer/document.h"

namespace Velmar::Q7R::Serializer {

namespace {

std::vector<Byte> ToBuffer(ISerialisable& iSerialisable, bool bNewer) {
    Node root = Document::NewRoot(Document::WRITE_BUFFER_FAILED);
    iSerialisable.WriteValues(root);
    return Document::SaveToBuffer(root, bNewer);
}

}  // namespace

void Serializer::WriteToFile(ISerialisable& iSerialisable, StringRef fileName) {
    Node root = Document::NewRoot(Document::WRITE_FILE_FAILED);
    iSerialisable.WriteValues(root);
    Document::SaveToFile(root, fileName);
}

void Serializer::ReadFromFile(ISerialisable& iSerialisable, StringRef fileName) {
    Node root = Document::LoadFromFile(fileName);
    iSerialisable.ReadValues(root);
}

std::vector<Byte> Serializer::WriteToBinaryBuffer(ISerialisable& iSerialisable) {
    return ToBuffer(iSerialisable, false);
}

std::vector<Byte> Serializer::Write(ISerialisable& iSerialisable) {
    return ToBuffer(iSerialisable, true);
}

void Serializer::WriteToStream(ISerialisable& iSerialisable, vok::File_Stream& stream,
                               StreamForm form) {
    Node root = Document::NewRoot(Document::WRITE_STREAM_FAILED);
    iSerialisable.WriteValues(root);
    Document::SaveToStream(root, stream, form == StreamForm::Xml, true);
}

void Serializer::ReadFromStream(ISerialisable& iSerialisable, vok::File_Stream& stream) {
    Node root = Document::LoadFromStream(stream);
    iSerialisable.ReadValues(root);
}

void Serializer::ReadFromBinaryBuffer(ISerialisable& iSerialisable,
                                      std::span<const Byte> byteArray) {
    Node root = Document::LoadFromBuffer(byteArray);
    iSerialisable.ReadValues(root);
}

}  // namespace Velmar::Q7R::Serializer
