// SPDX-License-Identifier: MIT
// A compressed stream in memory.
#ifndef VOK_ZIP_BUF_H
#define VOK_ZIP_BUF_H

#include <cstring>

#include "vok/file/buf.h"
#include "vok/zip/stream.h"

namespace vok {

// A Zip_Stream over a File_Buf: its own, or one of the caller's. The operations are those of
// Zip_Stream; damaged bytes are an "invalid or corrupted zip buffer".
class Zip_Buf final : public Zip_Stream {
  public:
    Zip_Buf() noexcept = default;
    explicit Zip_Buf(File_Buf& oBuf, const char* sMode = "r", const Limits& oLimits = {}) {
        Open(oBuf, sMode, oLimits);
    }
    ~Zip_Buf() override { CloseQuietly(); }

    // Over a buffer of the caller's, from its position on; for writing it must be writable.
    void Open(File_Buf& oBuf, const char* sMode = "r", const Limits& oLimits = {}) {
        Zip_Stream::Open(oBuf, sMode, oLimits);
    }
    // Reads a compressed block of the caller's, which must stay alive and unchanged.
    void Open(const void* pBlock, std::size_t uSize, const Limits& oLimits = {}) {
        Close();
        m_oOwn.Open(pBlock, uSize);
        Zip_Stream::Open(m_oOwn, "r", oLimits);
    }
    // Compresses into the stream's own buffer, emptied before ("w"), or reads what is there ("r").
    void Open(const char* sMode, const Limits& oLimits = {}) {
        Close();
        const bool bWrite = sMode != nullptr && std::strchr(sMode, 'w') != nullptr;
        m_oOwn.Open(bWrite ? "w" : "r");
        Zip_Stream::Open(m_oOwn, sMode, oLimits);
    }

    // The stream's own buffer: the compressed bytes, complete after Flush() or Close().
    [[nodiscard]] Arr<char>& GetBuffer() noexcept { return m_oOwn.GetBuffer(); }

  private:
    File_Buf m_oOwn;
};

}  // namespace vok

#endif  // VOK_ZIP_BUF_H
