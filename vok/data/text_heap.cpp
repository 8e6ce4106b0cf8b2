// SPDX-License-Identifier: MIT
#include "vok/data/text_heap.h"

#include "vok/base/msg.h"

namespace vok {

void Data_Heap::RaiseFull() {
    Msg::AssertionFailed("vok::Msg::IsInt32(x)");
}

char* Data_Heap::Space(std::size_t uSize) {
    CheckRoom(uSize);
    const std::size_t uOffset = m_oBytes.Size();
    char* pSpace = m_oBytes.AddSpace(uSize + SLACK);
    m_oBytes.Truncate(uOffset + uSize);
    Measure();
    return pSpace;
}

// The heap has nothing yet, and gets the empty text first.
u2_t Data_Heap::TryAddFirst(std::string_view sText) noexcept {
    if (sText.empty() || m_oBytes.Capacity() <= sText.size() + SLACK + 1) return 0;
    Start();
    return TryAddText(sText);
}

// Copies to the end of the heap, from where it may itself have been moved by making room.
u2_t Data_Heap::Append(const char* pSrc, std::size_t uSize, std::size_t uNul) {
    const bool bOwn = pSrc >= m_oBytes.Beg() && pSrc < m_oBytes.End();
    const std::size_t uFrom = bOwn ? static_cast<std::size_t>(pSrc - m_oBytes.Beg()) : 0;
    char* pDst = Space(uSize + uNul);
    CopyBytes(pDst, bOwn ? m_oBytes.Beg() + uFrom : pSrc, uSize);
    if (uNul != 0) pDst[uSize] = 0;
    return static_cast<u2_t>(pDst - m_oBytes.Beg());
}

}  // namespace vok
