// A memory buffer as a place to write to, for the codecs. Internal.
#ifndef VOK_DATA_BUFFER_SINK_H
#define VOK_DATA_BUFFER_SINK_H

#include <algorithm>
#include <cstring>

#include "vok/data/store.h"
#include "vok/file/buf.h"

namespace vok::detail {

// A memory buffer: the bytes go straight to their place. What was written stays written when
// an error ends the sink early.
class BufferSink {
  public:
    static constexpr bool IN_MEMORY = true;

    // Text mode rewrites bytes on their way, and bytes behind the position must stay as they
    // are where this sink leaves garbage: both not for this sink. A buffer that cannot be
    // written reports that itself, through the other one.
    [[nodiscard]] static bool Fits(File_Buf& oOut) noexcept {
        return oOut.IsBinaryWritable() && oOut.Remaining() == 0;
    }

    explicit BufferSink(File_Buf& oOut) noexcept : m_oOut(oOut) {}
    BufferSink(const BufferSink&) = delete;
    BufferSink& operator=(const BufferSink&) = delete;
    ~BufferSink() { Finish(); }

    [[nodiscard]] char* Space(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            Grow(uSize);
        return m_p;
    }
    // The end of the room that Space gave, which may be more than was asked for.
    [[nodiscard]] const char* SpaceEnd() const noexcept { return m_pEnd; }
    void Cut(char* pEnd) noexcept { m_p = pEnd; }
    void Payload(const char* pData, std::size_t uSize) {
        char* p = Space(uSize);
        if (uSize != 0) std::memcpy(p, pData, uSize);
        m_p = p + uSize;
    }
    // Short texts of the tree go in pieces of 16 bytes, which is quicker than asking how many
    // there are.
    void HeapText(const char* pText, std::size_t uSize) {
        static_assert(Data_Base::HEAP_SLACK >= 16);
        if (uSize > 64) return Payload(pText, uSize);
        char* p = Space(uSize + 16);
        for (std::size_t u = 0; u < uSize; u += 16) std::memcpy(p + u, pText + u, 16);
        m_p = p + uSize;
    }
    void Finish() noexcept {
        if (m_p != m_pBegin) m_oOut.Commit(static_cast<std::size_t>(m_p - m_pBegin));
        m_pBegin = m_p = m_pEnd = nullptr;
    }

  private:
    void Grow(std::size_t uSize) {
        Finish();
        m_pBegin = m_p = m_oOut.WriteSpace(uSize);
        m_pEnd = m_p + std::max(uSize, m_oOut.SpaceAtHand());
    }

    File_Buf& m_oOut;
    char* m_pBegin = nullptr;  // what lies before is committed
    char* m_p = nullptr;
    char* m_pEnd = nullptr;
};

}  // namespace vok::detail

#endif  // VOK_DATA_BUFFER_SINK_H
