// Where the writer puts its bytes. Internal.
//
// A sink gives room for the fixed part of a record, is told where each field in it ends, and
// takes the parts that have a length of their own. What lies behind the last cut is dropped
// by the next call of Space().
#ifndef VOK_DGRAPH_SINKS_H
#define VOK_DGRAPH_SINKS_H

#include "vok/data/buffer_sink.h"

namespace vok::dgraph {

// Any stream: one write per field, of its exact width.
class StreamSink {
  public:
    static constexpr bool IN_MEMORY = false;

    explicit StreamSink(File_Stream& oOut) noexcept : m_oOut(oOut) {}

    [[nodiscard]] char* Space(std::size_t uSize) {
        if (m_oRoom.Size() < uSize) m_oRoom.Resize(uSize);
        m_pFrom = m_oRoom.Beg();
        return m_oRoom.Beg();
    }
    void Cut(char* pEnd) {
        m_oOut.Write(m_pFrom, static_cast<std::size_t>(pEnd - m_pFrom));
        m_pFrom = pEnd;
    }
    void Payload(const void* pData, std::size_t uSize) {
        if (uSize != 0) m_oOut.Write(pData, uSize);
    }
    // A text of the tree's heap.
    void HeapText(const char* pText, std::size_t uSize) { Payload(pText, uSize); }
    void Finish() noexcept {}

  private:
    File_Stream& m_oOut;
    Arr<char> m_oRoom;
    char* m_pFrom = nullptr;
};

using detail::BufferSink;

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_SINKS_H
