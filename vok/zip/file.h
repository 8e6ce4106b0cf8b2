// SPDX-License-Identifier: MIT
// A compressed stream in a file.
#ifndef VOK_ZIP_FILE_H
#define VOK_ZIP_FILE_H

#include "vok/file/file.h"
#include "vok/zip/stream.h"

namespace vok {

// A Zip_Stream over a file of its own: zlib or gzip is read, zlib written, gzip with the letter
// "z". (File itself, opened with "z", reads and writes gzip and plain files; it has no limits.)
class Zip_File final : public Zip_Stream {
  public:
    Zip_File() noexcept = default;
    explicit Zip_File(const Str& oPath, const char* sMode = "r", const Limits& oLimits = {}) {
        Open(oPath, sMode, oLimits);
    }
    ~Zip_File() override { CloseQuietly(); }

    // Opens oPath as File::Open does ("rb" or "wb"), then as Zip_Stream::Open. An empty path
    // closes and does nothing else.
    void Open(const Str& oPath, const char* sMode = "r", const Limits& oLimits = {});
    // Also closes the file; raises "file write error" when its last bytes do not reach the disk.
    void Close() override;

  private:
    File m_oFile;
};

}  // namespace vok

#endif  // VOK_ZIP_FILE_H
