/* SPDX-License-Identifier: MIT */
// Functions of a host as a stream. Internal.
#ifndef SERIALIZER_C_HOST_STREAM_H
#define SERIALIZER_C_HOST_STREAM_H

#include <algorithm>
#include <cstring>

#include "serializer/c/vok_serializer.h"
#include "vok/base/msg.h"
#include "vok/file/stream.h"

namespace Velmar::Q7R::Serializer::C {

// Hands bytes on in pieces, and gets them in pieces: a call of a host may cost as much as a
// thousand fields.
class HostStream final : public vok::File_Stream {
  public:
    // One of the two functions may be null: then the stream is not for that.
    HostStream(vok_read_function pRead, vok_write_function pWrite, void* pContext) noexcept
        : m_pRead(pRead), m_pWrite(pWrite), m_pContext(pContext) {}

    std::size_t Read(vok::Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        if (m_pRead == nullptr) vok::Msg::StreamNotOpenForRead();
        auto* const p = static_cast<uint8_t*>(pTarget);
        std::size_t uDone = 0;
        while (uDone < uCount && !m_bEnd) {
            const auto iWanted = static_cast<int32_t>(std::min(uCount - uDone, PIECE));
            const int32_t iRead = m_pRead(m_pContext, p + uDone, iWanted);
            if (iRead < 0 || iRead > iWanted) vok::Msg::UnexpectedEndOfFile(Name(), 0);
            m_bEnd = iRead == 0;
            uDone += static_cast<std::size_t>(iRead);
        }
        if (uDone < uCount && !bAllowShort) vok::Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    }
    std::size_t Write(const void* pSource, std::size_t uCount) override {
        if (m_pWrite == nullptr) vok::Msg::StreamNotOpenForWrite();
        if (uCount == ALL) uCount = std::strlen(static_cast<const char*>(pSource));
        const auto* const p = static_cast<const uint8_t*>(pSource);
        for (std::size_t u = 0; u < uCount; u += PIECE) {
            const auto iSize = static_cast<int32_t>(std::min(uCount - u, PIECE));
            if (m_pWrite(m_pContext, p + u, iSize) != 0) {
                vok::Msg::FileWriteError(Name(), uCount - u, 0, 0);
            }
        }
        return uCount;
    }
    void Seek(vok::i3_t iOffset, int iWhence) override {
        vok::Msg::FileSeekFailed(iOffset, iWhence, 0);
    }
    [[nodiscard]] vok::i3_t Tell() override { return -1; }
    int Flush() override { return 0; }
    [[nodiscard]] const char* Name() const override { return "stream"; }
    [[nodiscard]] bool TakesPieces() const override { return true; }

  private:
    static constexpr std::size_t PIECE = std::size_t{1} << 20;

    const vok_read_function m_pRead;
    const vok_write_function m_pWrite;
    void* const m_pContext;
    bool m_bEnd = false;
};

}  // namespace Velmar::Q7R::Serializer::C

#endif  // SERIALIZER_C_HOST_STREAM_H
