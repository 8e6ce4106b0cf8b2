// SPDX-License-Identifier: MIT
// An XML document taken apart into tags and texts. Internal.
#ifndef VOK_XML_TOKENS_H
#define VOK_XML_TOKENS_H

#include <string_view>

#include "vok/base/limits.h"
#include "vok/base/msg.h"
#include "vok/base/work.h"
#include "vok/data/data.h"
#include "vok/file/xml_source.h"
#include "vok/file/xml_tag.h"
#include "vok/file/xml_text.h"
#include "vok/xml/form.h"

namespace vok::xml {

// Tokens are read whole or not at all: one that the bytes at hand do not hold to its end is looked
// at anew when there are more of them. What they mean, and which element is open, is for who
// derives from this; so are the limits but that on the length of a token.
class Tokens {
  public:
    Tokens(const Tokens&) = delete;
    Tokens& operator=(const Tokens&) = delete;

    // Where reading stands: the next byte.
    [[nodiscard]] const char* Position() const noexcept { return m_p; }

  protected:
    Tokens(Source& oSource, u2_t uFlags, const Limits& oLimits)
        : m_oSource(oSource),
          m_uFlags(uFlags),
          m_oLimits(oLimits),
          m_oWork(oLimits),
          m_p(oSource.Begin()),
          m_pEnd(oSource.End()) {}
    ~Tokens() = default;

    // Goes on from where another one stands, with what it has found; that has none of it any more
    // and may go on in the same way. Neither may hold a text.
    void TakeOver(Tokens& o) noexcept;

    // Reads the next token. Raises the error of a document that ends inside of it, or in front of
    // it.
    void ReadToken();

    // ---- what tokens mean -------------------------------------------------

    // A run of text, and a CDATA section, in the innermost open element.
    virtual void OnText(std::string_view sRun) = 0;
    virtual void OnCdata(std::string_view sRun) = 0;
    // The start tag in m_oTag; it may be empty. While this runs m_p is in front of it, and where
    // this leaves it false it stays there, for another time.
    virtual bool OnStart() = 0;
    // The end tag of an element of that name, as it is written.
    virtual void OnEnd(std::string_view sName) = 0;
    // Whether the innermost open element is to hold bytes.
    [[nodiscard]] virtual bool IsBinary() const noexcept = 0;
    // The bytes at hand are to be held, and as much again.
    virtual void BeforeFetch(u3_t uBytes) = 0;

    // ---- for them ---------------------------------------------------------

    [[nodiscard]] std::string_view Rest(const char* p) const noexcept {
        return {p, static_cast<std::size_t>(m_pEnd - p)};
    }
    [[nodiscard]] static std::string_view Between(const char* p, const char* pEnd) noexcept {
        return {p, static_cast<std::size_t>(pEnd - p)};
    }
    [[nodiscard]] bool Has(u2_t uFlag) const noexcept { return (m_uFlags & uFlag) != 0; }
    [[nodiscard]] bool KeepsUnknown() const noexcept { return Has(Data::XML_KEEP_UNKNOWN); }
    // Elements of HTML that come without an end tag.
    [[nodiscard]] bool IsSkipped(std::string_view sName) const noexcept {
        return Has(Data::XML_SKIP_HTML) && (sName == "br" || sName == "meta");
    }
    // Whether what "<" and c begin may be no element: blanks in front of it belong to a text.
    [[nodiscard]] bool IsMarkup(char c) const noexcept {
        return c == '!' || c == '?' || (Has(Data::XML_SKIP_HTML) && (c == 'b' || c == 'm'));
    }
    [[nodiscard]] static std::string_view Decoded(std::string_view sName, Arr<char>& oRoom) {
        if (!HasEscapes(sName)) return sName;
        oRoom.Truncate(0);
        DecodeName(oRoom, sName);
        return {oRoom.Beg(), oRoom.Size()};
    }
    static void CheckNoNul(std::string_view sText) {
        if (sText.find('\0') != std::string_view::npos) Msg::NoXmlStream();
    }
    [[noreturn]] void RaiseTextLimit() const { m_oLimits.RaiseExceeded(&Limits::m_uTextBytes); }

    // The value of an attribute; in oRoom where it is not as it stands. Raises the errors of texts.
    [[nodiscard]] std::string_view DecodedValue(std::string_view sValue, Arr<char>& oRoom);
    // Adds a run of text, or a CDATA section, to the text of an element of a type that has one.
    void AddText(Data_Node::Type eType, std::string_view sRun);
    void AddCdata(Data_Node::Type eType, std::string_view sRun);

    Source& m_oSource;
    const u2_t m_uFlags;
    const Limits& m_oLimits;
    Work m_oWork;
    const char* m_p;
    const char* m_pEnd;
    u3_t m_uOpen = 0;  // open elements
    u2_t m_uElements = 0;
    bool m_bDone = false;  // the top element is closed
    Tag m_oTag;
    Arr<char> m_oText;     // of the innermost open element
    bool m_bText = false;  // it has one, if only an empty one
    // What was met on the way, as Load_Report has it.
    struct Found {
        u3_t uDroppedTexts = 0;
        u3_t uKeptReferences = 0;
        u3_t uReordered = 0;
        u3_t uComments = 0;
        u3_t uInstructions = 0;

        void AddTo(Load_Report& o) const noexcept {
            o.m_uDroppedTexts = uDroppedTexts;
            o.m_uKeptReferences = uKeptReferences;
            o.m_uReordered = uReordered;
            o.m_uComments = uComments;
            o.m_uInstructions = uInstructions;
        }
    };
    Found m_oFound;

  private:
    // Tokens of so many bytes are read whatever the limit on texts.
    static constexpr u3_t LONG_TOKEN = u3_t{1} << 20;

    // The document ended inside the token at pToken, or where one should have begun.
    [[noreturn]] void RaiseEndInToken(const char* pToken) const;

    // False when they do not end within the bytes at hand.
    bool ReadRun();
    bool ReadTag();
    // Moves behind the next sEnd, which begins uSkip bytes from here at the earliest.
    bool SkipPast(std::string_view sEnd, std::size_t uSkip);
    bool SkipInstruction();
    bool ReadDeclaration();
    // Quotes, comments and brackets may hold a ">" that does not end the declaration. What it
    // declares counts for nothing.
    bool SkipDoctype();
    bool ReadCdata();
    bool ReadEndTag();
    bool ReadStartTag();
    void CheckLength(std::size_t uMore) const {
        if (m_oText.Size() + uMore > m_oLimits.m_uTextBytes) RaiseTextLimit();
    }

    bool m_bBegun = false;  // a tag of any kind was there
};

}  // namespace vok::xml

#endif  // VOK_XML_TOKENS_H
