// The loop that most elements are written by. Internal: writer.cpp includes it, so that a
// compiler may put the loop where it is called.
#ifndef VOK_XML_FAST_WRITER_H
#define VOK_XML_FAST_WRITER_H

#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/number.h"
#include "vok/xml/writer.h"

namespace vok::detail {

inline char* PutText(char* p, std::string_view s) noexcept {
    std::memcpy(p, s.data(), s.size());
    return p + s.size();
}

// The same for a text of the heap or a table of names that is not empty, behind which SLACK bytes
// can be read and written: pieces of that size are quicker than asking how many bytes there are.
inline char* PutPieces(char* p, const char* pText, std::size_t uSize) noexcept {
    static_assert(Hash::SLACK == Data_Heap::SLACK);
    std::size_t u = 0;
    do {
        std::memcpy(p + u, pText + u, Hash::SLACK);
        u += Hash::SLACK;
    } while (u < uSize);
    return p + uSize;
}

template <class Sink>
inline void XmlWriter<Sink>::WriteFastElements() {
    Frame& f = m_oFrame.Last();
    const Node* const pNodes = std::as_const(m_oBase.m_oNode).Beg();
    const Hash_Text* const pNames = m_oBase.m_oName.Texts();
    const char* const pHeap = m_oBase.m_oHeap.Begin();
    char* p = m_oSink.Space(FAST_ROOM);
    const char* pEnd = m_oSink.SpaceEnd();
    for (; f.pNext != f.pEnd; ++f.pNext) {
        const u2_t uId = *f.pNext;
        const Node& oNode = pNodes[uId];
        const Node::Type eType = oNode.GetType();
        if ((FAST_TYPES >> eType & 1u) == 0 || !IsVerbatim(oNode.uKey)) break;
        if ((m_bAttributes && m_oBase.m_oAtt.Has(uId)) || IsNumbered(uId)) break;
        const Hash_Text& oName = pNames[oNode.uKey];
        if (oName.uLength > SHORT_NAME) break;
        if (static_cast<std::size_t>(pEnd - p) < FAST_ROOM) {
            m_oSink.Cut(p);
            p = m_oSink.Space(FAST_ROOM);
            pEnd = m_oSink.SpaceEnd();
        }
        char* const pBegin = p;
        p = StoreTabs(p);
        *p++ = '<';
        p = PutPieces(p, oName.sText, oName.uLength);
        switch (eType) {
            case Node::Integer:
                p = PutText(p, xml::TypeTag<Node::Integer>::TEXT);
                p += FormatInteger(static_cast<i2_t>(oNode.uWord2), p);
                break;
            case Node::Double:
                p = PutText(p, xml::TypeTag<Node::Double>::TEXT);
                p += FormatReal(std::bit_cast<double>(oNode.Value64()), p);
                break;
            case Node::Boolean:
                p = PutText(p, xml::TypeTag<Node::Boolean>::TEXT);
                p += FormatInteger(static_cast<i2_t>(oNode.uWord2), p);
                break;
            case Node::String: {
                const char* pText = pHeap + oNode.uWord2;
                const std::size_t uSize = oNode.uWord3 - std::size_t{1};
                if (uSize > SHORT_TEXT || std::memchr(pText, ']', uSize) != nullptr) {
                    m_oSink.Cut(pBegin);
                    return;
                }
                *p++ = '>';
                p = PutText(p, xml::CDATA);
                if (uSize != 0) p = PutPieces(p, pText, uSize);
                p = PutText(p, xml::CDATA_END);
                break;
            }
            default: p = PutText(p, "/>\n"); continue;
        }
        p = PutText(p, "</");
        p = PutText(PutPieces(p, oName.sText, oName.uLength), ">\n");
    }
    m_oSink.Cut(p);
}

}  // namespace vok::detail

#endif  // VOK_XML_FAST_WRITER_H
