/* SPDX-License-Identifier: MIT */
// Where documents go, and what forms are made of. Internal.
#ifndef C_OUTPUT_H
#define C_OUTPUT_H

#include <memory>
#include <optional>

#include "c/vok_tree_document.h"
#include "vok/document/document.h"
#include "vok/document/sink.h"
#include "vok/file/replacement.h"

namespace vok::c {

// What a form is made of.
constexpr int32_t FORM = 0xF;
constexpr int32_t WRAPPING = 0x30;
constexpr int32_t SAVE_FLAGS = VOK_TREE_COMPACT | VOK_TREE_NO_DECLARATION | VOK_TREE_ATTACHABLE;
constexpr int32_t LOAD_FLAGS = VOK_TREE_SKIP_BLANKS | VOK_TREE_SKIP_HTML | VOK_TREE_LOOSE_TAGS;

[[nodiscard]] constexpr Document_Format FormatOf(int32_t iForm) noexcept {
    static_assert(static_cast<int32_t>(Document_Form::Dump) == VOK_TREE_DUMP &&
                  static_cast<int32_t>(Document_Form::Json) == VOK_TREE_JSON &&
                  static_cast<int32_t>(Document_Form::Dgraph) == VOK_TREE_DGRAPH &&
                  static_cast<int32_t>(Document_Form::Xml) == VOK_TREE_XML);
    static_assert(static_cast<int32_t>(Zip_Wrapping::Zlib) << 4 == VOK_TREE_ZLIB &&
                  static_cast<int32_t>(Zip_Wrapping::Gzip) << 4 == VOK_TREE_GZIP &&
                  static_cast<int32_t>(Zip_Wrapping::Zip) << 4 == VOK_TREE_ZIP);
    return {static_cast<Document_Form>(iForm & FORM),
            static_cast<Zip_Wrapping>((iForm & WRAPPING) >> 4)};
}

// A file, which is there once it is whole, or a stream, compressed as a form says; no archives.
class Output {
  public:
    Output(const char* sPath, int32_t iForm)
        : m_oFile(std::in_place, Str(sPath)),
          m_oSink(m_oFile->GetFile(), FormatOf(iForm).eWrapping) {}
    Output(std::unique_ptr<File_Stream> pBelow, int32_t iForm)
        : m_pBelow(std::move(pBelow)), m_oSink(*m_pBelow, FormatOf(iForm).eWrapping) {}

    [[nodiscard]] File_Stream& Stream() noexcept { return m_oSink.Stream(); }
    // Whether all of it has got where it belongs shows here.
    void Close() {
        m_oSink.Close();
        if (m_oFile.has_value()) m_oFile->Commit();
    }

  private:
    std::optional<File_Replacement> m_oFile;
    std::unique_ptr<File_Stream> m_pBelow;
    Document_Sink m_oSink;
};

}  // namespace vok::c

#endif  // C_OUTPUT_H
