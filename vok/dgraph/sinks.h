// SPDX-License-Identifier: MIT
// Where the writer puts its bytes when it must write field by field. Internal.
#ifndef VOK_DGRAPH_SINKS_H
#define VOK_DGRAPH_SINKS_H

#include "vok/file/sinks.h"

namespace vok::dgraph {

// Any stream: one write per field, of its exact width. Cut is called behind every field.
class StreamSink {
  public:
    static constexpr bool COLLECTS = false;

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

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_SINKS_H
