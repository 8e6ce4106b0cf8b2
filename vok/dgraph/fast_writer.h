// SPDX-License-Identifier: MIT
// The loop that most records are written by. Internal: writer.cpp includes it, so that a
// compiler may put the loop where it is called.
#ifndef VOK_DGRAPH_FAST_WRITER_H
#define VOK_DGRAPH_FAST_WRITER_H

#include <cstring>
#include <utility>

#include "vok/dgraph/writer.h"

namespace vok::dgraph {

// Nodes in the order of many names stand all over memory, and so do their names: what is written
// some steps later is asked for now, the record, what its name is, and where that stands.
template <class Sink>
[[gnu::always_inline]] inline void Writer<Sink>::AskFor(const Data_Base::Group& oGroup, u2_t uPos,
                                                        const Data_Node* pNodes,
                                                        const Hash_Text* pNames) noexcept {
    if (oGroup.uSize - uPos <= 3 * STEP) return;
    const auto oNodeAt = [&](u2_t uSteps) -> const Data_Node& {
        return pNodes[oGroup.pId[uPos + uSteps]];
    };
    __builtin_prefetch(&oNodeAt(3 * STEP));
    __builtin_prefetch(&pNames[oNodeAt(2 * STEP).uKey]);
    __builtin_prefetch(pNames[oNodeAt(STEP).uKey].sText);
}

template <class Sink>
template <bool SCATTERED>
inline void Writer<Sink>::WriteFastRecords() {
    Frame& f = m_oFrame.Last();
    const Data_Node* const pNodes = std::as_const(m_oBase.m_oNode).Beg();
    const Hash_Text* const pNames = m_oBase.m_oName.Texts();
    const char* const pHeap = m_oBase.m_oHeap.Begin();
    const bool bAttributes = !m_oBase.m_oAtt.IsUnused();
    u2_t uPos = f.uPos;
    u2_t uRunKey = f.uRunKey;
    u2_t uRunStart = f.uRunStart;
    char* p = m_oSink.Space(PIECE);
    const char* pEnd = m_oSink.SpaceEnd();
    // Where the step of the record in front ends, and the bytes of its head; null where the next
    // one is not to be made of it.
    const char* pStepEnd = nullptr;
    std::size_t uHead = 0;
    for (; uPos < f.oGroup.uSize; ++uPos) {
        const u2_t uId = f.oGroup.pId[uPos];
        if constexpr (SCATTERED) AskFor(f.oGroup, uPos, pNodes, pNames);
        const Data_Node& oNode = pNodes[uId];
        const Data_Node::Type eType = oNode.GetType();
        const bool bShortText = eType == Data_Node::String && oNode.uWord3 <= SHORT_TEXT;
        if ((FAST_TYPES >> eType & 1u) == 0 && !bShortText) break;
        if (!IsVerbatim(oNode.uKey) || (bAttributes && m_oBase.m_oAtt.Has(uId))) break;
        const Hash_Text& oName = pNames[oNode.uKey];
        if (oName.uLength > SHORT_NAME) break;
        if (static_cast<std::size_t>(pEnd - p) < PIECE) {
            m_oSink.Cut(p);
            p = m_oSink.Space(PIECE);
            pEnd = m_oSink.SpaceEnd();
            pStepEnd = nullptr;
        }
        char* const pLength = p;
        p = CopyName(p + 4, oName);
        if (oNode.uKey != uRunKey) {
            uRunKey = oNode.uKey;
            uRunStart = uPos;
            p = StoreFirst(p);
        } else if (pStepEnd != nullptr && StoreNext(pLength + uHead, pStepEnd)) {
            p = pLength + uHead;
        } else {
            p = StoreIndex(p, uPos - uRunStart);
        }
        uHead = static_cast<std::size_t>(p - pLength);
        Store(pLength, static_cast<u2_t>(uHead - 4));
        pStepEnd = p;
        switch (eType) {
            case Data_Node::Integer:
                *p++ = CODE_INTEGER;
                p = Store(p, oNode.uWord2);
                break;
            case Data_Node::Double:
                *p++ = CODE_DOUBLE;
                p = Store(p, oNode.Value64());
                break;
            case Data_Node::Boolean:
                *p++ = CODE_BOOLEAN;
                *p++ = oNode.uWord2 != 0;
                break;
            default:
                *p++ = CODE_STRING;
                p = Store(p, oNode.uWord3);
                for (u2_t u = 0; u < oNode.uWord3; u += 16) {
                    std::memcpy(p + u, pHeap + oNode.uWord2 + u, 16);
                }
                p += oNode.uWord3;
                break;
        }
    }
    m_oSink.Cut(p);
    f.uPos = uPos;
    f.uRunKey = uRunKey;
    f.uRunStart = uRunStart;
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_FAST_WRITER_H
