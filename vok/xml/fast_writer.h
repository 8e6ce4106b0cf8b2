// SPDX-License-Identifier: MIT
// The loop that most elements are written by. Internal: writer.cpp includes it, so that a
// compiler may put the loop where it is called.
#ifndef VOK_XML_FAST_WRITER_H
#define VOK_XML_FAST_WRITER_H

#include <bit>
#include <string_view>
#include <utility>

#include "vok/base/copy.h"
#include "vok/xml/writer.h"

namespace vok::detail {

static_assert(Hash::SLACK == COPY_SLACK && Data_Heap::SLACK == COPY_SLACK);

template <class Sink>
inline void XmlWriter<Sink>::WriteFastElements() {
    Frame& f = m_oFrame.Last();
    const Node* const pNodes = std::as_const(m_oBase.m_oNode).Beg();
    const Hash_Text* const pNames = m_oBase.m_oName.Texts();
    const char* const pHeap = m_oBase.m_oHeap.Begin();
    char* p = m_oSink.Space(SHORT_ROOM);
    const char* pEnd = m_oSink.SpaceEnd();
    for (; f.pNext != f.pEnd; ++f.pNext) {
        const u2_t uId = *f.pNext;
        const Node& oNode = pNodes[uId];
        const Node::Type eType = oNode.GetType();
        if ((FAST_TYPES >> eType & 1u) == 0 || !IsVerbatim(oNode.uKey)) break;
        if ((m_bAttributes && m_oBase.m_oAtt.Has(uId)) || IsNumbered(uId)) break;
        const Hash_Text& oName = pNames[oNode.uKey];
        if (oName.uLength > Element::SHORT_NAME) break;
        if (static_cast<std::size_t>(pEnd - p) < SHORT_ROOM) {
            m_oSink.Cut(p);
            p = m_oSink.Space(SHORT_ROOM);
            pEnd = m_oSink.SpaceEnd();
        }
        switch (eType) {
            case Node::Integer:
                p = Element::template ShortNumber<Node::Integer>(p, oName,
                                                                 static_cast<i2_t>(oNode.uWord2));
                break;
            case Node::Double:
                p = Element::template ShortNumber<Node::Double>(
                    p, oName, std::bit_cast<double>(oNode.Value64()));
                break;
            case Node::Boolean:
                p = Element::template ShortNumber<Node::Boolean>(p, oName,
                                                                 static_cast<i2_t>(oNode.uWord2));
                break;
            case Node::String: {
                const std::string_view sText(pHeap + oNode.uWord2, oNode.uWord3 - std::size_t{1});
                if (!Element::IsShort(sText)) return m_oSink.Cut(p);
                p = Element::ShortText(p, oName, [&](char* pTo) {
                    return sText.empty() ? pTo : PutPieces(pTo, sText.data(), sText.size());
                });
                break;
            }
            default: p = Element::ShortEmpty(p, oName); break;
        }
    }
    m_oSink.Cut(p);
}

}  // namespace vok::detail

#endif  // VOK_XML_FAST_WRITER_H
