// Reading XML: the loader behind Data::LoadFromXML. Internal.
//
// Its functions stand in three files: tokens and elements (loader.cpp), the values that texts
// stand for (value.cpp), and the loop that most elements go through (fast_loader.cpp).
#ifndef VOK_XML_LOADER_H
#define VOK_XML_LOADER_H

#include <string_view>

#include "vok/base/hash_guess.h"
#include "vok/base/work.h"
#include "vok/data/store.h"
#include "vok/file/xml_source.h"
#include "vok/file/xml_tag.h"
#include "vok/file/xml_text.h"
#include "vok/xml/form.h"

namespace vok::detail {

// Tokens are read whole or not at all: one that the bytes at hand do not hold to its end is
// looked at anew when there are more of them.
class XmlLoader {
  public:
    using Node = Data_Node;

    XmlLoader(Data_Base& oBase, u2_t uNode, xml::Source& oSource, u2_t uFlags,
              const Limits& oLimits)
        : m_oBase(oBase),
          m_oSource(oSource),
          m_uFlags(uFlags),
          m_oLimits(oLimits),
          m_oWork(oLimits),
          m_p(oSource.Begin()),
          m_pEnd(oSource.End()),
          m_uNode(uNode),
          m_uFirst(oBase.m_oNode(0).GetType() == Node::Empty ? 0 : oBase.m_oNode.Size()) {
        CheckMemory();
    }

    // Reads the document and returns the number of elements.
    u2_t Run();

    // Sets the links, once all elements are there.
    void ResolveLinks();

    // Says what of the document the tree does not hold; its order must be up to date.
    void AddTo(Load_Report& oReport);

    // Where reading stands: the next byte, the innermost open element.
    [[nodiscard]] const char* Position() const noexcept { return m_p; }
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }

  private:
    struct Numbered {
        u3_t uNumber;
        u2_t uId;
    };

    // Memory that an element with a new name takes at most, arrays that grow included.
    static constexpr u3_t MOST_PER_NODE = 512;
    static constexpr u3_t NODES_BETWEEN_CHECKS = 4096;
    // Tokens of so many bytes are read whatever the limit on texts.
    static constexpr u3_t LONG_TOKEN = u3_t{1} << 20;

    [[nodiscard]] std::string_view Rest(const char* p) const noexcept {
        return {p, static_cast<std::size_t>(m_pEnd - p)};
    }
    [[nodiscard]] static std::string_view Between(const char* p, const char* pEnd) noexcept {
        return {p, static_cast<std::size_t>(pEnd - p)};
    }
    [[nodiscard]] bool Has(u2_t uFlag) const noexcept { return (m_uFlags & uFlag) != 0; }

    [[noreturn]] void RaiseTextLimit() const { m_oLimits.RaiseExceeded(&Limits::m_uTextBytes); }

    // The document ended inside the token at pToken, or where one should have begun.
    [[noreturn]] void RaiseEndInToken(const char* pToken) const;

    // ---- tokens; false when they do not end within the bytes at hand ------

    bool ReadText();
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

    // Elements of HTML that come without an end tag.
    [[nodiscard]] bool IsSkipped(std::string_view sName) const noexcept {
        return Has(Data::XML_SKIP_HTML) && (sName == "br" || sName == "meta");
    }

    // ---- elements ---------------------------------------------------------

    [[nodiscard]] std::string_view Decoded(std::string_view sName, Arr<char>& oRoom) const {
        if (!xml::HasEscapes(sName)) return sName;
        oRoom.Truncate(0);
        xml::DecodeName(oRoom, sName);
        return {oRoom.Beg(), oRoom.Size()};
    }

    [[nodiscard]] bool IsNameOf(u2_t uId, std::string_view sName) {
        return m_oBase.m_oName.IsText(m_oBase.m_oNode(uId).uKey, Decoded(sName, m_oNameRoom));
    }

    u2_t InternName(std::string_view sName) {
        const u2_t uKey = m_oBase.m_oName.Intern(Decoded(sName, m_oNameRoom));
        if (uKey != 0 && !xml::HasEscapes(sName)) {
            m_oGuess.Note(uKey, m_oBase.m_oName.Size());
        } else {
            m_oGuess.Confirm(0);
        }
        return uKey;
    }

    void OpenElement();
    void CheckLimits();
    // Raises the error of the limit on nodes. Where a small input can become a large tree, looks
    // at its memory, and at uMore bytes that will be asked for, and says at how many nodes that is
    // worth doing again.
    void CheckMemory(u3_t uMore = 0);
    [[nodiscard]] u3_t CountReordered();
    void CloseElement();
    void SetAttributes();

    static constexpr u3_t TOO_LARGE = ~u3_t{0};  // what a number is clamped to
    void AddNumbered(Arr<Numbered>& oArr, std::string_view sValue) const;

    // Gives the node the type that a text stands for and no value yet; false for another text.
    bool SetType(std::string_view sType);
    void SetAttribute(const xml::Tag::Attribute& o);

    // ---- texts ------------------------------------------------------------

    [[nodiscard]] bool KeepsUnknown() const noexcept { return Has(Data::XML_KEEP_UNKNOWN); }

    static void CheckNoNul(std::string_view sText) {
        if (sText.find('\0') != std::string_view::npos) Msg::NoXmlStream();
    }

    void CheckLength(std::size_t uMore) const {
        if (m_oText.Size() + uMore > m_oLimits.m_uTextBytes) RaiseTextLimit();
    }

    // A run of text between two tags of the current element.
    void AddText(std::string_view sRun);
    void AddCdata(std::string_view sRun);

    // Blanks in front of an element mean nothing; any other text makes it a fault.
    void EndTextBeforeElement();

    // Gives the current node the value that its text stands for.
    void SetText();
    void SetValue(u2_t uId, std::string_view sText);
    [[noreturn]] static void RaiseUnknownText(std::string_view sText);
    [[nodiscard]] static bool ParseNoDate(std::string_view sText, double& dSeconds) noexcept;
    void SetQuad(u2_t uId, std::string_view sText);
    void SetBlock(u2_t uId, std::string_view sText);
    // Adds the bytes of a text in base64 and gives the value of a block; false for any other text.
    bool AddBlock(std::string_view sText, u3_t& uValue);

    // ---- the fast way -----------------------------------------------------

    // Whether what "<" and c begin may be no element: blanks in front of it belong to a text.
    [[nodiscard]] bool IsMarkup(char c) const noexcept {
        return c == '!' || c == '?' || (Has(Data::XML_SKIP_HTML) && (c == 'b' || c == 'm'));
    }

    // Reads elements as long as they are like most elements are: an expected name, no attributes
    // but the type, a plain text or number, its own end tag behind it. Stops in front of the
    // first other token, which is for the ways above. This loop is what loading XML costs.
    void ReadFastElements();
    // Its steps. They look at no more than ROOM bytes without asking for the end.
    enum class Content : u0_t { Other, Ends, Opens };
    [[nodiscard]] const char* FastClose(const char* p, const char* pBlanks) noexcept;
    [[nodiscard]] u2_t FastName(const char* p);
    [[nodiscard]] u2_t ScanName(const char* p);
    [[nodiscard]] Content FastContent(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] Content FastCdata(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] Content FastTyped(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] const char* FastBlock(const char* p, const Hash_Text& oName, u3_t& uBlock);
    [[nodiscard]] u2_t PlaceText(std::string_view sText);
    [[nodiscard]] bool AddFastText(Node& oNode, std::string_view sText);

    Data_Base& m_oBase;
    xml::Source& m_oSource;
    const u2_t m_uFlags;
    const Limits& m_oLimits;
    Work m_oWork;
    const char* m_p;
    const char* m_pEnd;
    u2_t m_uNode;            // the innermost open element, or where the document goes
    const u3_t m_uFirst;     // nodes that were there before: they do not count
    u3_t m_uMostNodes = 0;   // nodes there may be before CheckMemory is asked
    u3_t m_uAttributes = 0;  // since it was asked
    u3_t m_uDepth = 0;       // open elements
    u2_t m_uElements = 0;
    bool m_bBegun = false;  // a tag of any kind was there
    bool m_bDone = false;   // the top element is closed
    bool m_bText = false;   // the current element has a text, if only an empty one
    Hash_Guess m_oGuess;    // of names that documents carry as they stand
    xml::Tag m_oTag;
    Arr<char> m_oText;  // of the current element
    Arr<char> m_oNameRoom;
    Arr<char> m_oBlock;
    Arr<Numbered> m_oTarget;
    Arr<Numbered> m_oLink;
    Load_Report m_oFound;  // what was met on the way
};

}  // namespace vok::detail

#endif  // VOK_XML_LOADER_H
