/* SPDX-License-Identifier: MIT */
// Where documents go. Internal.
#ifndef C_OUTPUT_H
#define C_OUTPUT_H

#include <memory>
#include <optional>

#include "c/vok_tree_document.h"
#include "vok/file/file.h"
#include "vok/zip/stream.h"

namespace vok::c {

// What a form is made of.
constexpr int32_t FORM = 0xF;
constexpr int32_t WRAPPING = 0x30;
constexpr int32_t SAVE_FLAGS = VOK_TREE_COMPACT | VOK_TREE_NO_DECLARATION;
constexpr int32_t LOAD_FLAGS = VOK_TREE_SKIP_BLANKS | VOK_TREE_SKIP_HTML | VOK_TREE_LOOSE_TAGS;

// A file or a stream, compressed as a form says, but for archives.
class Output {
  public:
    // oBelow must outlive this.
    Output(File_Stream& oBelow, int32_t iForm) { Open(oBelow, iForm); }
    Output(const char* sPath, int32_t iForm) { Open(m_oFile.emplace(Str(sPath), "w"), iForm); }
    Output(std::unique_ptr<File_Stream> pBelow, int32_t iForm) : m_pOwn(std::move(pBelow)) {
        Open(*m_pOwn, iForm);
    }

    [[nodiscard]] File_Stream& Stream() noexcept { return *m_pStream; }
    // Whether all of it has got where it belongs shows here.
    void Close() {
        if (m_oPacked.has_value()) m_oPacked->Close();
        if (m_oFile.has_value()) m_oFile->Close();
    }

  private:
    void Open(File_Stream& oBelow, int32_t iForm) {
        m_pStream = &oBelow;
        const int32_t iWrapping = iForm & WRAPPING;
        if (iWrapping == 0) return;
        m_pStream = &m_oPacked.emplace(oBelow, iWrapping == VOK_TREE_GZIP ? "wz" : "w");
    }

    std::optional<File> m_oFile;
    std::unique_ptr<File_Stream> m_pOwn;
    std::optional<Zip_Stream> m_oPacked;
    File_Stream* m_pStream = nullptr;
};

}  // namespace vok::c

#endif  // C_OUTPUT_H
