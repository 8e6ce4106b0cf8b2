// SPDX-License-Identifier: MIT
// Documents saved and loaded.
#include "serializer/document.h"

#include <cstddef>
#include <cstdint>

#include "serializer/c/host_stream.h"
#include "serializer/c/internal.h"
#include "serializer/exception.h"
#include "serializer/guarded.h"
#include "serializer/node.h"
#include "vok/base/mem.h"
#include "vok/file/buf.h"
#include "vok/zip/stream.h"

using namespace Velmar::Q7R::Serializer;
using C::Do;
using C::Text;
using C::Use;

namespace {

// Where a tree that is loaded goes.
Node& Target(vok_node* root) {
    if (root == nullptr) throw System::ApplicationException(Document::INVALID_ROOT);
    return root->m_oNode;
}

}  // namespace

vok_status vok_save_file(const vok_node* root, const vok_char* path) {
    return Do([&] { Document::SaveToFile(Use(root), Text(path)); });
}

vok_status vok_save_buffer(vok_node* root, uint8_t** bytes, int32_t* size) {
    return vok_save_buffer_as(root, VOK_DGRAPH, bytes, size);
}

vok_status vok_save_buffer_as(vok_node* root, int32_t form, uint8_t** bytes, int32_t* size) {
    return Do([&] {
        vok::File_Buf oDocument("w");
        Document::SaveToBuffer(Use(root), oDocument, (form & VOK_DGRAPH_1_3) != 0);
        // The block stays when the buffer goes: there is no second copy.
        vok::Mem::AddRef(oDocument.GetBuffer().Beg());
        *bytes = reinterpret_cast<uint8_t*>(oDocument.GetBuffer().Beg());
        // Documents that 32 bits cannot count are refused when they are saved.
        *size = static_cast<int32_t>(oDocument.Size());
    });
}

void vok_bytes_free(uint8_t* bytes) {
    if (bytes != nullptr && vok::Mem::DropRef(bytes)) vok::Mem::Free(bytes);
}

vok_status vok_save_stream(vok_node* root, int32_t form, vok_write_function write, void* context) {
    return Do([&] {
        C::HostStream oStream(nullptr, write, context);
        const bool bXml = (form & VOK_XML) != 0;
        const bool bNewer = (form & VOK_DGRAPH_1_3) != 0;
        if ((form & (VOK_ZLIB | VOK_GZIP)) == 0) {
            Document::SaveToStream(Use(root), oStream, bXml, bNewer);
        } else {
            vok::Zip_Stream oPacked(oStream, (form & VOK_GZIP) != 0 ? "wz" : "w");
            Document::SaveToStream(Use(root), oPacked, bXml, bNewer);
            Guarded(Document::WRITE_STREAM_FAILED, [&] { oPacked.Close(); });
        }
    });
}

vok_status vok_load_stream(vok_node* root, vok_read_function read, void* context) {
    return Do([&] {
        Node& oRoot = Target(root);
        C::HostStream oStream(read, nullptr, context);
        oRoot = Document::LoadFromStream(oStream);
    });
}

vok_status vok_load_file(vok_node* root, const vok_char* path) {
    return Do([&] {
        Node& oRoot = Target(root);
        oRoot = Document::LoadFromFile(Text(path));
    });
}

vok_status vok_load_buffer(vok_node* root, const uint8_t* bytes, int32_t size) {
    return Do([&] {
        Node& oRoot = Target(root);
        const std::size_t uSize = bytes != nullptr && size > 0 ? static_cast<std::size_t>(size) : 0;
        oRoot = Document::LoadFromBuffer({bytes, uSize});
    });
}
