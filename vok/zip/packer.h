// SPDX-License-Identifier: MIT
// Plain bytes to compressed ones, in pieces of any size. Internal.
#ifndef VOK_ZIP_PACKER_H
#define VOK_ZIP_PACKER_H

#include <cstring>

#include <zlib.h>

#include "vok/base/arr.h"
#include "vok/zip/codec.h"

namespace vok::zip {

// Where a Packer puts compressed bytes.
class Sink {
  public:
    // Room for more bytes; at least one, uSize of them.
    virtual char* Space(std::size_t& uSize) = 0;
    // The first uCount bytes of it are written.
    virtual void Commit(std::size_t uCount) = 0;
    virtual void Put(const char* pSource, std::size_t uCount) = 0;

  protected:
    Sink() = default;
    Sink(const Sink&) = default;
    Sink& operator=(const Sink&) = default;
    ~Sink() = default;
};

// Deflates, or copies, into a sink, counts both sides and takes the CRC-32 of the plain bytes.
class Packer {
  public:
    static constexpr int DEFAULT_LEVEL = -1;
    static constexpr int MAX_LEVEL = 9;

    Packer() noexcept = default;
    Packer(const Packer&) = delete;
    Packer& operator=(const Packer&) = delete;
    ~Packer();

    // Starts a stream. Memory of an earlier use is used again.
    void Open(Sink& oSink, Format eFormat, int iLevel);

    void Write(const char* pSource, std::size_t uCount) {
        if (uCount - 1 < m_uRoom - m_uPending) [[likely]] {
            std::memcpy(m_oBuffer.Beg() + m_uPending, pSource, uCount);
            m_uPending += uCount;
            return;
        }
        WriteMore(pSource, uCount);
    }
    // Completes the stream.
    void Finish();

    // Plain bytes in, compressed bytes out; the latter are complete after Finish().
    [[nodiscard]] u3_t BytesIn() const noexcept { return m_uIn + m_uPending; }
    [[nodiscard]] u3_t BytesOut() const noexcept { return m_uOut; }
    [[nodiscard]] u2_t Crc() const noexcept { return m_uCrc; }

  private:
    void WriteMore(const char* pSource, std::size_t uCount);
    void Drain();
    void Deflate(const char* pSource, std::size_t uCount, int iFlush);

    Sink* m_pSink = nullptr;
    z_stream m_oZ{};
    bool m_bInit = false;
    Format m_eFormat = Format::Stored;
    int m_iLevel = DEFAULT_LEVEL;
    bool m_bCrc = false;  // zlib and gzip have checksums of their own
    u2_t m_uCrc = 0;
    u3_t m_uIn = 0;
    u3_t m_uOut = 0;

    Arr<char> m_oBuffer;  // plain bytes not compressed yet, [0, m_uPending)
    std::size_t m_uRoom = 0;
    std::size_t m_uPending = 0;
};

}  // namespace vok::zip

#endif  // VOK_ZIP_PACKER_H
