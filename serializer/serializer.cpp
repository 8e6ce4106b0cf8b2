#include "serializer/serializer.h"

#include "serializer/utilities.h"
#include "vok/base/msg.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"
#include "vok/file/file.h"

namespace Velmar::Q7R::Serializer {

namespace {

constexpr char WRITE_FAILED[] = "Failed to write data to buffer";
constexpr char WRITE_FILE_FAILED[] = "Failed to write data to file";
constexpr char READ_FAILED[] = "Failed to read data from file.";

// Runs the native part of an operation; whatever it throws becomes the operation's own text.
template <class F>
decltype(auto) Guarded(const char* sMessage, F&& oBody) {
    try {
        return oBody();
    } catch (...) {
        throw System::ApplicationException(sMessage);
    }
}

// The document version of this facade.
void StampVersion(vok::Data& oRoot) {
    vok::Dgraph_SetVersion(oRoot, 1, 2, 0);
}

vok::Data& CursorOf(vok::Data* pData) {
    if (pData == nullptr) throw System::ApplicationException("Invalid vok::Data");
    return *pData;
}

}  // namespace

void Serializer::WriteToFile(ISerialisable& iSerialisable, StringRef fileName) {
    Node root = Guarded(WRITE_FILE_FAILED, [] { return Node(true); });
    iSerialisable.WriteValues(root);
    const vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    Guarded(WRITE_FILE_FAILED, [&] {
        vok::File file(Utilities::String2Str(fileName), "w");
        data.SaveToXML(file, 1, 0);
        file.Close();
    });
}

void Serializer::ReadFromFile(ISerialisable& iSerialisable, StringRef fileName) {
    Node root = Guarded(READ_FAILED, [] { return Node(true); });
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    Guarded(READ_FAILED, [&] {
        vok::File file(Utilities::String2Str(fileName), "r");
        data.Clear();
        data.LoadFromXML(file, vok::Data::XML_KEEP_UNKNOWN);
        file.Close();
    });
    iSerialisable.ReadValues(root);
}

std::vector<Byte> Serializer::WriteToBinaryBuffer(ISerialisable& iSerialisable) {
    Node root = Guarded(WRITE_FAILED, [] { return Node(true); });
    iSerialisable.WriteValues(root);
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    return Guarded(WRITE_FAILED, [&] {
        vok::File_Buf buffer("w");
        data.SetToRoot();
        StampVersion(data);
        vok::Dgraph_SaveDGraph(data, buffer);
        (void)vok::Msg::ToInt32(buffer.Size());
        const Byte* pBytes = reinterpret_cast<const Byte*>(buffer.Data());
        return std::vector<Byte>(pBytes, pBytes + buffer.Size());
    });
}

void Serializer::ReadFromBinaryBuffer(ISerialisable& iSerialisable,
                                      std::span<const Byte> byteArray) {
    Node root = Guarded(READ_FAILED, [] { return Node(true); });
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    Guarded(READ_FAILED, [&] {
        vok::File_Buf buffer(byteArray.data(), byteArray.size());
        data.Clear();
        vok::Dgraph_LoadDGraph(data, buffer);
        data.SetToRoot();
        // After loading, whatever version the bytes carried.
        StampVersion(data);
    });
    iSerialisable.ReadValues(root);
}

}  // namespace Velmar::Q7R::Serializer
