// SPDX-License-Identifier: MIT
// Where the plain bytes of a document go.
#ifndef VOK_DOCUMENT_SINK_H
#define VOK_DOCUMENT_SINK_H

#include <optional>

#include "vok/file/file.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"
#include "vok/zip/wrapping.h"

namespace vok {

// A stream to which a document is written, whatever it is to be wrapped in on its way to the one
// below, which must outlive this.
class Document_Sink {
  public:
    // Raises "a zip archive needs a file" for one.
    Document_Sink(File_Stream& oBelow, Zip_Wrapping eWrapping);
    // An archive gets a member of that name.
    Document_Sink(File& oBelow, Zip_Wrapping eWrapping, const Str& oMember);
    Document_Sink(const Document_Sink&) = delete;
    Document_Sink& operator=(const Document_Sink&) = delete;

    [[nodiscard]] File_Stream& Stream() noexcept { return *m_pStream; }
    // Completes what it is wrapped in, and flushes the stream below, which stays open. Whether all
    // of it has got there shows here; without it the document stays incomplete.
    void Close();

  private:
    File_Stream& m_oBelow;
    std::optional<Zip_Archive> m_oArchive;
    std::optional<Zip_Stream> m_oPacked;
    File_Stream* m_pStream = nullptr;
};

}  // namespace vok

#endif  // VOK_DOCUMENT_SINK_H
