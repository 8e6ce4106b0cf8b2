#include "serializer/serializer.h"

#include "serializer/document.h"

namespace Velmar::Q7R::Serializer {

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
    Node root = Document::NewRoot(Document::WRITE_BUFFER_FAILED);
    iSerialisable.WriteValues(root);
    return Document::SaveToBuffer(root);
}

std::vector<Byte> Serializer::Write(ISerialisable& iSerialisable) {
    Node root = Document::NewRoot(Document::WRITE_BUFFER_FAILED);
    iSerialisable.WriteValues(root);
    return Document::SaveToBuffer(root, true);
}

void Serializer::ReadFromBinaryBuffer(ISerialisable& iSerialisable,
                                      std::span<const Byte> byteArray) {
    Node root = Document::LoadFromBuffer(byteArray);
    iSerialisable.ReadValues(root);
}

}  // namespace Velmar::Q7R::Serializer
