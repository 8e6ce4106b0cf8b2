// SPDX-License-Identifier: MIT
#include "serializer/document.h"

#include <string_view>

#include "serializer/guarded.h"
#include "serializer/utilities.h"
#include "vok/base/limits.h"
#include "vok/base/msg.h"
#include "vok/data/walk.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"
#include "vok/file/file.h"
#include "vok/records/unwrapped.h"

namespace Velmar::Q7R::Serializer {

namespace {

template <class Data>
Data& CursorOf(Data* pData) {
    if (pData == nullptr) throw System::ApplicationException(Document::INVALID_ROOT);
    return *pData;
}

bool HasLong(const vok::Data& data) {
    for (vok::Data_Walk walk(data); walk.Next();) {
        if (walk.GetType() == vok::Data_Node::Long) return true;
    }
    return false;
}

}  // namespace

void Document::StampVersion(vok::Data& root, int iMinor) {
    vok::Dgraph_SetVersion(root, 1, iMinor, 0);
}

Node Document::NewRoot(const char* sFailure) {
    return Guarded(sFailure, [] { return Node(true); });
}

void Document::SaveToFile(const Node& root, StringRef fileName) {
    const vok::Data& data = CursorOf(static_cast<const vok::Data*>(root));
    Guarded(WRITE_FILE_FAILED, [&] {
        vok::File file(Utilities::String2Str(fileName), "w");
        data.SaveToXML(file, 1, 0);
        file.Close();
    });
}

void Document::SaveToStream(Node& root, vok::File_Stream& stream, bool bXml, bool bNewer) {
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    Guarded(WRITE_STREAM_FAILED, [&] {
        if (bXml) {
            data.SaveToXML(stream, 1, 0);
            stream.Flush();
            return;
        }
        data.SetToRoot();
        StampVersion(data, bNewer && HasLong(data) ? 3 : 2);
        vok::Dgraph_SaveDGraph(data, stream);
    });
}

void Document::SaveToBuffer(Node& root, vok::File_Buf& buffer, bool bNewer) {
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    Guarded(WRITE_BUFFER_FAILED, [&] {
        data.SetToRoot();
        StampVersion(data, bNewer && HasLong(data) ? 3 : 2);
        vok::Dgraph_SaveDGraph(data, buffer);
        (void)vok::Msg::ToInt32(buffer.Size());
    });
}

std::vector<Byte> Document::SaveToBuffer(Node& root, bool bNewer) {
    vok::File_Buf buffer("w");
    SaveToBuffer(root, buffer, bNewer);
    return Guarded(WRITE_BUFFER_FAILED, [&] {
        const Byte* pBytes = reinterpret_cast<const Byte*>(buffer.Data());
        return std::vector<Byte>(pBytes, pBytes + buffer.Size());
    });
}

Node Document::LoadFromFile(StringRef fileName) {
    Node root = NewRoot(READ_FAILED);
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    vok::Load_Report report;
    Guarded(READ_FAILED, report, [&] {
        vok::File file(Utilities::String2Str(fileName), "r");
        data.Clear();
        data.LoadFromXML(file, vok::Data::XML_KEEP_UNKNOWN, {}, &report);
        file.Close();
    });
    return root;
}

Node Document::LoadFromStream(vok::File_Stream& stream) {
    Node root = NewRoot(READ_STREAM_FAILED);
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    vok::Load_Report report;
    Guarded(READ_STREAM_FAILED, report, [&] {
        vok::Unwrapped document(stream, {});
        vok::Dgraph_Load(data, document.In(), document.GetLimits(), &report);
        (void)document.Finish(0);
        data.SetToRoot();
        StampVersion(data);
    });
    return root;
}

Node Document::LoadFromBuffer(std::span<const Byte> bytes) {
    Node root = NewRoot(READ_FAILED);
    vok::Data& data = CursorOf(static_cast<vok::Data*>(root));
    vok::Load_Report report;
    Guarded(READ_FAILED, report, [&] {
        vok::File_Buf buffer(bytes.data(), bytes.size());
        vok::Dgraph_LoadDGraph(data, buffer, {}, &report);
        data.SetToRoot();
        StampVersion(data);
    });
    return root;
}

}  // namespace Velmar::Q7R::Serializer
