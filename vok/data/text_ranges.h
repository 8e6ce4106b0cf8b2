// SPDX-License-Identifier: MIT
// Which parts of a text heap are referred to, and where they stand in a copy. Internal.
#ifndef VOK_DATA_TEXT_RANGES_H
#define VOK_DATA_TEXT_RANGES_H

#include <algorithm>
#include <utility>

#include "vok/data/text_heap.h"

namespace vok {

// Nodes and attributes may refer to the same text, or to the end of another one: what they
// share stays shared. First everything is named with Keep, then joined, then copied at once.
class Data_TextRanges {
  public:
    Data_TextRanges() { Keep(0, 1); }

    void Keep(const Data_Node& oNode) { Keep(oNode.uWord2, Data_Heap::BytesOf(oNode)); }
    void Keep(u2_t uBegin, std::size_t uSize) {
        if (uSize == 0) return;
        // Mostly texts stand in the order in which they are come upon: few ranges come of it.
        const u2_t uEnd = static_cast<u2_t>(uBegin + uSize);
        Range* pLast = m_oRange.Size() != 0 ? &m_oRange.Last() : nullptr;
        if (pLast != nullptr && uBegin >= pLast->uBegin && uBegin <= pLast->uEnd) {
            pLast->uEnd = std::max(pLast->uEnd, uEnd);
            return;
        }
        m_oRange.Add(Range{uBegin, uEnd, 0});
    }

    // Puts what was named in order, each byte once; returns how many bytes that are.
    u3_t Join() {
        std::sort(m_oRange.Beg(), m_oRange.End(),
                  [](const Range& oA, const Range& oB) { return oA.uBegin < oB.uBegin; });
        Arr<Range> oFound;
        oFound.Swap(m_oRange);
        for (const Range* p = oFound.Beg(); p != oFound.End(); ++p) {
            Keep(p->uBegin, p->uEnd - p->uBegin);
        }
        u3_t uBytes = 0;
        for (const Range& o : std::as_const(m_oRange)) uBytes += o.uEnd - o.uBegin;
        return uBytes;
    }
    // Copies the texts of oHeap; oAdd takes address and size and gives the new offset.
    template <class Add>
    void Copy(const Data_Heap& oHeap, Add oAdd) {
        for (Range* p = m_oRange.Beg(); p != m_oRange.End(); ++p) {
            p->uNew = oAdd(oHeap.At(p->uBegin), p->uEnd - p->uBegin);
        }
    }

    // Where a kept offset went.
    [[nodiscard]] u2_t NewOffset(u2_t uOffset) const noexcept {
        const Range* p = std::upper_bound(
            m_oRange.Beg(), m_oRange.End(), uOffset,
            [](u2_t uWanted, const Range& oRange) { return uWanted < oRange.uBegin; });
        --p;  // the first range begins at 0
        return p->uNew + (uOffset - p->uBegin);
    }
    // The same for the value of a node that Keep was given.
    void Renew(Data_Node& oNode) const noexcept {
        switch (oNode.GetType()) {
            case Data_Node::String:
            case Data_Node::Quad: oNode.uWord2 = NewOffset(oNode.uWord2); break;
            case Data_Node::Binary:
                oNode.uWord2 = oNode.uWord3 != 0 ? NewOffset(oNode.uWord2) : 0;
                break;
            default: break;
        }
    }

  private:
    struct Range {
        u2_t uBegin;
        u2_t uEnd;
        u2_t uNew;  // where it goes
    };

    Arr<Range> m_oRange;  // ascending and apart from each other once copied
};

}  // namespace vok

#endif  // VOK_DATA_TEXT_RANGES_H
