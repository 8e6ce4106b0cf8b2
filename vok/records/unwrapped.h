// SPDX-License-Identifier: MIT
// A stored document without what it is wrapped in. Internal.
#ifndef VOK_RECORDS_UNWRAPPED_H
#define VOK_RECORDS_UNWRAPPED_H

#include <optional>
#include <string_view>

#include "vok/base/limits.h"
#include "vok/file/file.h"
#include "vok/file/forward.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"
#include "vok/zip/wrapping.h"

namespace vok {

// Takes a document from a file, or from a stream of which it stands at the beginning, and gives its
// plain bytes piece by piece. Archives are read from files and memory buffers only.
class Unwrapped {
  public:
    Unwrapped(File_Stream& oIn, const Limits& oLimits);
    Unwrapped(const Str& oPath, const Limits& oLimits);
    Unwrapped(const Unwrapped&) = delete;
    Unwrapped& operator=(const Unwrapped&) = delete;

    // The plain bytes; a stream that can at least go back to their beginning.
    [[nodiscard]] File_Stream& In() noexcept { return *m_pIn; }
    [[nodiscard]] Zip_Wrapping GetWrapping() const noexcept { return m_eWrapping; }
    // Those of the caller, and with a wrapping the size of what is in it, as far as it is known.
    [[nodiscard]] const Limits& GetLimits() const noexcept { return m_oLimits; }
    // For the end of the document: whether what was wrapped is sound shows there only. Returns how
    // many bytes stood behind the document, uLeft of them known already.
    u3_t Finish(u3_t uLeft);

  private:
    void Unwrap(File_Stream& oIn, std::string_view sStart, u3_t uSize);
    void OpenMember();

    Limits m_oLimits;
    Zip_Wrapping m_eWrapping = Zip_Wrapping::None;
    std::optional<File> m_oFile;
    std::optional<File_Forward> m_oAhead;  // over a stream that cannot go back
    std::optional<Zip_Archive> m_oArchive;
    std::optional<Zip_Stream> m_oPacked;
    std::optional<File_Forward> m_oPlain;  // over one of those two
    File_Stream* m_pIn = nullptr;
};

}  // namespace vok

#endif  // VOK_RECORDS_UNWRAPPED_H
