// Documents saved and loaded.
#include "serializer/document.h"

#include <cstring>
#include <memory>
#include <vector>

#include "serializer/c/internal.h"

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
    return Do([&] {
        const std::vector<Byte> oBytes = Document::SaveToBuffer(Use(root));
        auto pCopy = Guarded(Document::WRITE_BUFFER_FAILED, [&] {
            return std::make_unique_for_overwrite<uint8_t[]>(oBytes.size());
        });
        std::memcpy(pCopy.get(), oBytes.data(), oBytes.size());
        *bytes = pCopy.release();
        // Documents that 32 bits cannot count are refused when they are saved.
        *size = static_cast<int32_t>(oBytes.size());
    });
}

void vok_bytes_free(uint8_t* bytes) {
    delete[] bytes;
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
