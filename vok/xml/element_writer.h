// SPDX-License-Identifier: MIT
// The elements of an XML document as bytes, wherever their nodes come from. Internal.
#ifndef VOK_XML_ELEMENT_WRITER_H
#define VOK_XML_ELEMENT_WRITER_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "vok/base/base64.h"
#include "vok/base/copy.h"
#include "vok/base/date.h"
#include "vok/base/hash.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/file/sinks.h"
#include "vok/file/xml_text.h"
#include "vok/xml/form.h"

namespace vok::xml {

// An element is its start tag - name, attributes, and what the value adds to it - and, unless that
// is empty, its value and its end tag. Names come as documents have them. Sinks are those of
// vok/file/sinks.h.
template <class Sink>
class ElementWriter {
  protected:
    // Room for everything of an element that has no length of its own: tabs, brackets, type
    // attribute, the longest number, CDATA marks.
    static constexpr std::size_t FIXED_ROOM = 192;

  public:
    ElementWriter(Sink& oSink, u2_t uDepth) : m_oSink(oSink), m_uDepth(uDepth) {}

    void Declaration() { Add("<?xml version='1.0' encoding='UTF-8'?>\n"); }

    // ---- tags -------------------------------------------------------------

    void BeginTag(std::string_view sName) {
        char* p = StoreTabs(m_oSink.Space(FIXED_ROOM));
        *p++ = '<';
        PutName(p, sName);
    }
    void Attribute(std::string_view sName, std::string_view sValue) {
        Add(" ");
        Add(sName);
        Add("=\"");
        while (!sValue.empty()) {
            const std::string_view sPiece = sValue.substr(0, PIECE);
            m_oAttValue.Truncate(0);
            EncodeText(m_oAttValue, sPiece);
            Add({m_oAttValue.Beg(), m_oAttValue.Size()});
            sValue.remove_prefix(sPiece.size());
        }
        Add("\"");
    }
    // One of a node, whose name may be any text.
    void NodeAttribute(std::string_view sName, std::string_view sValue) {
        const bool bReserved = IsReserved(sName);
        if (!bReserved && IsVerbatimName(sName)) return Attribute(sName, sValue);
        m_oAttName.Truncate(0);
        EncodeName(m_oAttName, sName, bReserved);
        Attribute({m_oAttName.Beg(), m_oAttName.Size()}, sValue);
    }
    // The one of the top element.
    void DeclareTypes() { Attribute(DT_DECLARATION, DT_NAMESPACE); }
    // The number of the node, or of the one that it leads to.
    void Number(std::string_view sName, u2_t uNumber) {
        char s[NUMBER_ROOM + 2] = "ID";
        Attribute(sName, {s, 2 + FormatInteger(uNumber, s + 2)});
    }
    void EndTag(std::string_view sName) {
        PutName(PutText(m_oSink.Space(FIXED_ROOM), "</"), sName);
        m_oSink.Cut(PutText(m_oSink.Space(FIXED_ROOM), ">\n"));
    }

    // ---- elements with others in them ---------------------------------------

    void BeginTree() {
        Add(">\n");
        ++m_uDepth;
    }
    void EndTree(std::string_view sName) {
        --m_uDepth;
        PutName(PutText(StoreTabs(m_oSink.Space(FIXED_ROOM)), "</"), sName);
        m_oSink.Cut(PutText(m_oSink.Space(FIXED_ROOM), ">\n"));
    }

    // ---- values: all behind the attributes, up to the end tag ---------------

    // An element without one, which has no end tag.
    void Empty() { Add("/>\n"); }
    // The same for one that leads to another.
    void Link(u2_t uNumber) {
        Number(NODE_REFERENCE, uNumber);
        Attribute(REFERENCE_TYPE, "link");
        Empty();
    }
    // Boolean, Integer.
    void Int(Data_Node::Type eType, u2_t uValue) {
        char s[NUMBER_ROOM];
        Typed(eType, {s, FormatInteger(static_cast<i2_t>(uValue), s)});
    }
    void Char(u2_t uCode) {
        char s[4];
        m_oValue.Truncate(0);
        if (uCode != 0) EncodeText(m_oValue, {s, EncodeUtf8(uCode, s)});
        Typed(Data_Node::Char, {m_oValue.Beg(), m_oValue.Size()});
    }
    // Float, Double.
    void Real(Data_Node::Type eType, double dValue) {
        char s[128];
        Typed(eType, {s, FormatReal(dValue, s)});
    }
    void Date(double dSeconds) {
        char s[128];
        Typed(Data_Node::Date, {s, std::isfinite(dSeconds) ? FormatDate(dSeconds, 'T', s)
                                                           : FormatReal(dSeconds, s)});
    }
    void Lng(u3_t uValue) {
        char s[2 * NUMBER_ROOM];  // a compiler warns of less
        Typed(Data_Node::Long, {s, FormatInteger(uValue, s)});
    }
    void Quad(const std::array<u2_t, 4>& au) {
        char s[4 * NUMBER_ROOM];
        std::size_t uSize = 0;
        for (const u2_t uWord : au) {
            if (uSize != 0) s[uSize++] = ',';
            uSize += FormatInteger(static_cast<i2_t>(uWord), s + uSize);
        }
        Typed(Data_Node::Quad, {s, uSize});
    }
    // A text with the end mark of a section in it goes into two that share the mark.
    void Str(std::string_view sText) {
        Add(">");
        Add(CDATA);
        for (;;) {
            const std::size_t uEnd = sText.find(CDATA_END);
            if (uEnd == std::string_view::npos) break;
            Add(sText.substr(0, uEnd + 2));
            Add(CDATA_END);
            Add(CDATA);
            sText.remove_prefix(uEnd + 2);
        }
        Add(sText);
        Add(CDATA_END);
    }
    void Bin(const char* pData, std::size_t uSize) {
        Add(TagOf(Data_Node::Binary));
        Add(CDATA);
        for (std::size_t u = 0; u < uSize; u += BLOCK_PIECE) {
            const std::size_t uPiece = std::min(uSize - u, BLOCK_PIECE);
            char* const p = m_oSink.Space(Base64Size(uPiece));
            EncodeBase64(pData + u, uPiece, p);
            m_oSink.Cut(p + Base64Size(uPiece));
        }
        Add(CDATA_END);
    }

    // ---- short elements -------------------------------------------------------
    //
    // Most elements, whole: of a name that is written as it stands, without attributes. They are
    // put at a place that has SHORT_ROOM, and the place behind is returned. Behind the name SLACK
    // bytes can be read, as tables of names have them.

    static constexpr u2_t SHORT_NAME = 64;
    static constexpr std::size_t SHORT_TEXT = 64;
    static constexpr std::size_t SHORT_ROOM = 2 * SHORT_NAME + SHORT_TEXT + FIXED_ROOM;

    [[nodiscard]] static bool IsShort(std::string_view sText) noexcept {
        return sText.size() <= SHORT_TEXT &&
               std::memchr(sText.data(), ']', sText.size()) == nullptr;
    }
    // Boolean, Integer, Long, Double.
    template <Data_Node::Type TYPE, class T>
    [[gnu::always_inline]] char* ShortNumber(char* p, const Hash_Text& oName, T value) const {
        p = PutText(ShortBegin(p, oName), TypeTag<TYPE>::TEXT);
        if constexpr (std::is_floating_point_v<T>) {
            p += FormatReal(value, p);
        } else {
            p += FormatInteger(value, p);
        }
        return ShortEnd(p, oName);
    }
    // A text for which IsShort holds, and which oPut puts at a place; it returns the end.
    template <class Put>
    [[gnu::always_inline]] char* ShortText(char* p, const Hash_Text& oName, const Put& oPut) const {
        p = PutText(ShortBegin(p, oName), ">");
        p = oPut(PutText(p, CDATA));
        return ShortEnd(PutText(p, CDATA_END), oName);
    }
    char* ShortEmpty(char* p, const Hash_Text& oName) const {
        return PutText(ShortBegin(p, oName), "/>\n");
    }

  protected:
    // Elements stand on lines of their own, a tab deeper than the one they are in. Deeper than
    // this the lines do not get longer, so that the document stays linear in the tree.
    static constexpr u2_t MOST_TABS = 32;
    void Add(std::string_view s) { m_oSink.Payload(s.data(), s.size()); }
    char* StoreTabs(char* p) const noexcept {
        const u2_t uTabs = std::min(m_uDepth, MOST_TABS);
        std::memset(p, '\t', MOST_TABS);
        return p + uTabs;
    }

    Sink& m_oSink;

  private:
    // Long values are converted in pieces: base64, of three bytes at a time, in its place.
    static constexpr std::size_t PIECE = 3 << 14;
    static constexpr std::size_t BLOCK_PIECE = 3 << 10;
    static_assert(Base64Size(BLOCK_PIECE) <= PieceSink::LARGEST_SPACE);

    static char* PutText(char* p, std::string_view s) noexcept {
        CopyBytes(p, s.data(), s.size());
        return p + s.size();
    }
    [[gnu::always_inline]] char* ShortBegin(char* p, const Hash_Text& oName) const {
        p = StoreTabs(p);
        *p++ = '<';
        return PutPieces(p, oName.sText, oName.uLength);
    }
    [[gnu::always_inline]] static char* ShortEnd(char* p, const Hash_Text& oName) {
        return PutText(PutPieces(PutText(p, "</"), oName.sText, oName.uLength), ">\n");
    }
    // A name behind what was put at p, in the room of which there is place for a short one.
    void PutName(char* p, std::string_view sName) {
        if (sName.size() <= SHORT_NAME) [[likely]]
            return m_oSink.Cut(PutText(p, sName));
        m_oSink.Cut(p);
        Add(sName);
    }
    // A short text.
    void Typed(Data_Node::Type eType, std::string_view sText) {
        char* const p = PutText(m_oSink.Space(FIXED_ROOM), TagOf(eType));
        m_oSink.Cut(PutText(p, sText));
    }

    u2_t m_uDepth;
    Arr<char> m_oAttName;
    Arr<char> m_oAttValue;
    Arr<char> m_oValue;
};

}  // namespace vok::xml

#endif  // VOK_XML_ELEMENT_WRITER_H
