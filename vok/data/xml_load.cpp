// Reads XML documents into a tree.
#include <algorithm>
#include <bit>
#include <cstring>

#include "vok/base/base64.h"
#include "vok/base/date.h"
#include "vok/base/hash_guess.h"
#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/xml_form.h"
#include "vok/file/xml_source.h"
#include "vok/file/xml_tag.h"
#include "vok/file/xml_text.h"

namespace vok {

namespace {

using Node = Data_Node;

// Tokens are read whole or not at all: one that the bytes at hand do not hold to its end is
// looked at anew when there are more of them.
class XmlLoader {
  public:
    XmlLoader(Data_Base& oBase, u2_t uNode, xml::Source& oSource, u2_t uFlags,
              const Limits& oLimits)
        : b(oBase),
          m_oSource(oSource),
          m_uFlags(uFlags),
          m_oLimits(oLimits),
          m_p(oSource.Begin()),
          m_pEnd(oSource.End()),
          m_uNode(uNode) {}

    // Reads the document and returns the number of elements.
    u2_t Run() {
        b.UpdateSucc();
        for (;;) {
            if (m_uDepth != 0) ReadPlainElements();
            const char* const pToken = m_p;
            if (m_p != m_pEnd && (*m_p == '<' ? ReadTag() : ReadText())) continue;
            const char* const pStopped = m_p;
            m_p = pToken;
            if (static_cast<std::size_t>(m_pEnd - m_p) > m_oLimits.m_uTextBytes) RaiseTextLimit();
            if (m_oSource.Fetch(m_p, m_pEnd)) continue;
            if (m_p == m_pEnd && m_bDone) break;
            if (m_bDone && *m_p != '<' && xml::IsBlank(Rest(m_p))) break;
            m_p = std::max(m_p, pStopped);
            RaiseEndInToken(pToken);
        }
        return m_uElements;
    }

    // Sets the links, once all elements are there.
    void ResolveLinks() {
        const auto oIsLess = [](const Numbered& x, const Numbered& y) {
            return x.iNumber < y.iNumber;
        };
        std::stable_sort(m_oTarget.Beg(), m_oTarget.End(), oIsLess);
        for (const Numbered& oLink : m_oLink) {
            const Numbered* pTarget =
                std::lower_bound(m_oTarget.Beg(), m_oTarget.End(), oLink, oIsLess);
            if (pTarget == m_oTarget.End() || pTarget->iNumber != oLink.iNumber) continue;
            m_uNode = oLink.uId;
            Node& oNode = b.m_oNode(m_uNode);
            if (oNode.GetType() == Node::Tree) {
                Msg::NodeWithWrongDataType(b.ShownName(m_uNode), Node::TypeName(Node::Tree));
            }
            b.DropValue(oNode);
            oNode.SetType(Node::Link);
            oNode.uWord2 = pTarget->uId;
        }
        m_uNode = 0;
    }

    // Where reading stands: the next byte, the innermost open element.
    [[nodiscard]] const char* Position() const noexcept { return m_p; }
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }

  private:
    struct Numbered {
        i2_t iNumber;
        u2_t uId;
    };

    // The words of a Quad that have no room in its record.
    static constexpr std::size_t QUAD_REST = 12;
    static constexpr char NO_WORDS[QUAD_REST] = {};

    [[nodiscard]] std::string_view Rest(const char* p) const noexcept {
        return {p, static_cast<std::size_t>(m_pEnd - p)};
    }
    [[nodiscard]] static std::string_view Between(const char* p, const char* pEnd) noexcept {
        return {p, static_cast<std::size_t>(pEnd - p)};
    }
    [[nodiscard]] bool Has(u2_t uFlag) const noexcept { return (m_uFlags & uFlag) != 0; }

    [[noreturn]] void RaiseTextLimit() const {
        Msg::LimitExceeded("text bytes", m_oLimits.m_uTextBytes, "Limits::m_uTextBytes");
    }

    // The document ended inside the token at pToken, or where one should have begun.
    [[noreturn]] void RaiseEndInToken(const char* pToken) const {
        if (pToken == m_pEnd || *pToken != '<') {
            if (!m_bBegun || m_bDone) Msg::NoXmlStream();
            Msg::MissingCharInXmlStream('<');
        }
        const std::string_view sToken = Rest(pToken);
        const bool bClosed = sToken.find('>') != std::string_view::npos;
        if (bClosed && sToken.starts_with("<!--")) Msg::MissingCharInXmlStream('-');
        if (bClosed && sToken.starts_with(xml::CDATA)) Msg::MissingCharInXmlStream(']');
        Msg::MissingCharInXmlStream('>');
    }

    // ---- tokens; false when they do not end within the bytes at hand ------

    bool ReadText() {
        const void* pFound = std::memchr(m_p, '<', static_cast<std::size_t>(m_pEnd - m_p));
        if (pFound == nullptr) return false;
        const char* pBegin = std::exchange(m_p, static_cast<const char*>(pFound));
        const std::string_view sRun = Between(pBegin, m_p);
        if (m_uDepth != 0) {
            AddText(sRun);
        } else if (m_bDone && !xml::IsBlank(sRun)) {
            m_p = pBegin;
            Msg::NoXmlStream();
        }
        return true;
    }

    bool ReadTag() {
        if (m_pEnd - m_p < 2) return false;
        m_bBegun = true;
        switch (m_p[1]) {
            case '?': return SkipPast("?>", 2);
            case '!': return ReadDeclaration();
            case '/': return ReadEndTag();
            default: return ReadStartTag();
        }
    }

    // Moves behind the next sEnd, which begins uSkip bytes from here at the earliest.
    bool SkipPast(std::string_view sEnd, std::size_t uSkip) {
        const std::size_t uEnd = Rest(m_p).find(sEnd, uSkip);
        if (uEnd == std::string_view::npos) return false;
        m_p += uEnd + sEnd.size();
        return true;
    }

    bool ReadDeclaration() {
        const std::string_view sRest = Rest(m_p);
        if (sRest.starts_with("<!-")) {
            if (sRest.size() < 4) return false;
            if (sRest[3] != '-') {
                m_p += 3;
                Msg::MissingCharInXmlStream('-');
            }
            return SkipPast("-->", 4);
        }
        constexpr std::string_view DOCTYPE = "<!DOCTYPE";
        for (const std::string_view sStart : {xml::CDATA, DOCTYPE}) {
            const bool bShort = sRest.size() < sStart.size();
            if (bShort && sStart.starts_with(sRest)) return false;
        }
        if (m_uDepth != 0 && sRest.starts_with(xml::CDATA)) return ReadCdata();
        // A document type declaration comes before the top element.
        if (m_uElements != 0 || !sRest.starts_with(DOCTYPE)) Msg::NoXmlStream();
        return SkipDoctype();
    }

    // Quotes, comments and brackets may hold a ">" that does not end the declaration. What it
    // declares counts for nothing.
    bool SkipDoctype() {
        std::size_t uBrackets = 0;
        for (const char* p = m_p; p != m_pEnd; ++p) {
            const std::string_view sRest = Rest(p);
            std::string_view sEnd;
            switch (*p) {
                case '[': ++uBrackets; break;
                case ']': uBrackets -= uBrackets != 0; break;
                case '"': sEnd = "\""; break;
                case '\'': sEnd = "'"; break;
                case '<':
                    if (sRest.starts_with("<!--")) sEnd = "-->";
                    if (sRest.starts_with("<?")) sEnd = "?>";
                    break;
                case '>':
                    if (uBrackets != 0) break;
                    m_p = p + 1;
                    return true;
                default: break;
            }
            if (sEnd.empty()) continue;
            const std::size_t uEnd = sRest.find(sEnd, 1);
            if (uEnd == std::string_view::npos) return false;
            p += uEnd + sEnd.size() - 1;
        }
        return false;
    }

    bool ReadCdata() {
        const char* pText = m_p + xml::CDATA.size();
        std::size_t uSize = Rest(pText).find(xml::CDATA_END);
        const bool bBinary = b.m_oNode(m_uNode).GetType() == Node::Binary;
        if (bBinary) {
            // Base64 has no ">": the first one is the end or never will be.
            uSize = Rest(pText).find('>');
            if (uSize == std::string_view::npos) return false;
            m_p = pText + uSize;
            if (uSize < 2 || m_p[-1] != ']' || m_p[-2] != ']') Msg::MissingCharInXmlStream(']');
            uSize -= 2;
        }
        if (uSize == std::string_view::npos) return false;
        m_p = pText + uSize + xml::CDATA_END.size();
        AddCdata({pText, uSize});
        return true;
    }

    bool ReadEndTag() {
        const void* pFound = std::memchr(m_p, '>', static_cast<std::size_t>(m_pEnd - m_p));
        if (pFound == nullptr) return false;
        const char* pName = m_p + 2;
        std::string_view sName = Between(pName, static_cast<const char*>(pFound));
        while (!sName.empty() && xml::Is(sName.back(), xml::BLANK)) sName.remove_suffix(1);
        if (!IsSkipped(sName)) {
            if (m_uDepth == 0 || !IsNameOf(m_uNode, sName)) Msg::NoXmlStream();
            CloseElement();
        }
        m_p = static_cast<const char*>(pFound) + 1;
        return true;
    }

    bool ReadStartTag() {
        const char* const pToken = m_p++;
        if (!m_oTag.Parse(m_p, m_pEnd, Has(Data::XML_LOOSE_TAGS))) return false;
        const char* pBehind = std::exchange(m_p, pToken);  // where errors below are reported
        if (!IsSkipped(m_oTag.Name())) {
            if (m_bDone) Msg::NoXmlStream();
            OpenElement();
            if (m_oTag.IsEmpty()) CloseElement();
        }
        m_p = pBehind;
        return true;
    }

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
        return b.m_oName.IsText(b.m_oNode(uId).uKey, Decoded(sName, m_oNameRoom));
    }

    u2_t InternName(std::string_view sName) {
        const u2_t uKey = b.Intern(Decoded(sName, m_oNameRoom));
        m_oGuess.Note(uKey, uKey != 0 && !xml::HasEscapes(sName), b.m_oName.Size());
        return uKey;
    }

    void OpenElement() {
        const u2_t uKey = InternName(m_oTag.Name());
        if (m_uDepth == 0 && b.m_oNode(0).GetType() == Node::Empty) {
            m_uNode = 0;
            b.m_oNode(0).uKey = uKey;
        } else {
            EndTextBeforeElement();
            b.CheckAppend(m_uNode);
            CheckLimits();
            m_uNode = b.Append(m_uNode, uKey);
        }
        ++m_uDepth;
        ++m_uElements;
        SetAttributes();
    }

    void CheckLimits() const {
        if (b.m_oNode.Size() >= m_oLimits.m_uNodes) [[unlikely]] {
            Msg::LimitExceeded("nodes", m_oLimits.m_uNodes, "Limits::m_uNodes");
        }
        if (m_uDepth >= m_oLimits.m_uDepth) [[unlikely]] {
            Msg::LimitExceeded("depth", m_oLimits.m_uDepth, "Limits::m_uDepth");
        }
    }

    void CloseElement() {
        if (m_bText) SetText();
        if (--m_uDepth == 0) {
            m_bDone = true;
            return;
        }
        m_uNode = b.m_oNode(m_uNode).Pred();
    }

    void SetAttributes() {
        const Arr<xml::Tag::Attribute>& oAttributes = m_oTag.Attributes();
        if (oAttributes.Size() > m_oLimits.m_uAttributes) {
            Msg::LimitExceeded("attributes", m_oLimits.m_uAttributes, "Limits::m_uAttributes");
        }
        for (const xml::Tag::Attribute& o : oAttributes) {
            if (o.sName == xml::DT_DECLARATION) continue;
            const bool bType = o.sName == "dt:dt" || o.sName == "dt:type";
            if (bType && SetType(o.sValue)) continue;
            if (o.sName == xml::NODE_ID) {
                m_oTarget.Add(Numbered{NumberOf(o.sValue), m_uNode});
            } else if (o.sName == xml::NODE_REFERENCE) {
                m_oLink.Add(Numbered{NumberOf(o.sValue), m_uNode});
            } else if (o.sName != xml::REFERENCE_TYPE) {
                SetAttribute(o);
            }
        }
    }

    // The number in "ID17".
    [[nodiscard]] static i2_t NumberOf(std::string_view sValue) noexcept {
        char s[NUMBER_ROOM] = {};
        if (sValue.size() > 2) sValue.substr(2).copy(s, sizeof(s) - 1);
        return ParseLong(s);
    }

    // Gives the node the type that a text stands for and no value yet; false for another text.
    bool SetType(std::string_view sType) {
        Node& oNode = b.m_oNode(m_uNode);
        if (oNode.GetType() == Node::Tree) return false;
        const xml::TypeName* pType = xml::FindType(sType);
        if (pType == nullptr) return false;
        u3_t uValue = pType->bZone ? std::bit_cast<u3_t>(3600.0) : 0;
        if (pType->eType == Node::Quad) uValue = b.AddHeap(NO_WORDS, QUAD_REST);
        b.DropValue(oNode);
        oNode.SetType(pType->eType);
        oNode.SetValue64(uValue);
        return true;
    }

    void SetAttribute(const xml::Tag::Attribute& o) {
        m_oText.Truncate(0);
        std::string_view sValue = o.sValue;
        const auto oIsSpecial = [](char c) { return c == '&' || c == '\t' || c == '\n' || c == '\r'; };
        if (std::any_of(sValue.begin(), sValue.end(), oIsSpecial)) {
            // Line breaks that are no references are blanks (XML 1.0, 3.3.3).
            m_oBlanked.Truncate(0);
            m_oBlanked.Add(sValue.data(), sValue.size());
            std::replace_if(m_oBlanked.Beg(), m_oBlanked.End(),
                            [](char c) { return xml::Is(c, xml::BLANK); }, ' ');
            xml::DecodeText(m_oText, {m_oBlanked.Beg(), m_oBlanked.Size()}, KeepsUnknown());
            sValue = {m_oText.Beg(), m_oText.Size()};
        }
        CheckNoNul(sValue);
        const Utf8_Text oName(Decoded(o.sName, m_oNameRoom));
        const Utf8_Text oValue(sValue);
        if (oName.Len() == 0) Msg::UnallowedAttribute("");
        if (!b.AddAttribute(m_uNode, oName.View(), oValue.View())) Msg::NoXmlStream();
        m_oText.Truncate(0);
    }

    // ---- texts ------------------------------------------------------------

    [[nodiscard]] bool KeepsUnknown() const noexcept { return Has(Data::XML_KEEP_UNKNOWN); }

    static void CheckNoNul(std::string_view sText) {
        if (sText.find('\0') != std::string_view::npos) Msg::NoXmlStream();
    }

    void CheckLength(std::size_t uMore) const {
        if (m_oText.Size() + uMore > m_oLimits.m_uTextBytes) RaiseTextLimit();
    }

    // A run of text between two tags of the current element.
    void AddText(std::string_view sRun) {
        const Node::Type eType = b.m_oNode(m_uNode).GetType();
        if (eType == Node::Tree) return;
        if (eType == Node::Binary) Msg::MissingHeaderForBinaryData();
        CheckLength(sRun.size());
        CheckNoNul(sRun);
        xml::DecodeText(m_oText, sRun, KeepsUnknown());
        m_bText = true;
    }

    void AddCdata(std::string_view sRun) {
        const Node::Type eType = b.m_oNode(m_uNode).GetType();
        if (eType == Node::Tree) return;
        if (eType == Node::Binary && m_bText) Msg::MissingHeaderForBinaryData();
        CheckLength(sRun.size());
        CheckNoNul(sRun);
        m_oText.Add(sRun.data(), sRun.size());
        m_bText = true;
    }

    // Blanks in front of an element mean nothing; any other text makes it a fault.
    void EndTextBeforeElement() {
        if (!m_bText) return;
        if (!xml::IsBlank({m_oText.Beg(), m_oText.Size()})) SetText();
        m_oText.Truncate(0);
        m_bText = false;
    }

    // Gives the current node the value that its text stands for.
    void SetText() {
        SetValue(m_uNode, {m_oText.Beg(), m_oText.Size()});
        m_oText.Truncate(0);
        m_bText = false;
    }

    void SetValue(u2_t uId, std::string_view sText) {
        Node& oNode = b.m_oNode(uId);
        switch (oNode.GetType()) {
            case Node::Boolean: oNode.uWord2 = ParseLongAnyBase(sText) != 0; break;
            case Node::Integer: oNode.uWord2 = static_cast<u2_t>(ParseLongAnyBase(sText)); break;
            case Node::Char: {
                const char* p = sText.data();
                if (!sText.empty()) oNode.uWord2 = DecodeUtf8(p, p + sText.size());
                break;
            }
            case Node::Float:
            case Node::Double: oNode.SetValue64(std::bit_cast<u3_t>(ParseReal(sText))); break;
            case Node::Date: {
                double dSeconds;
                if (!ParseDate(sText, dSeconds)) RaiseUnknownText(sText);
                dSeconds += std::bit_cast<double>(oNode.Value64());
                oNode.SetValue64(std::bit_cast<u3_t>(dSeconds));
                break;
            }
            case Node::Long: oNode.SetValue64(ParseLong64(sText)); break;
            case Node::Quad: SetQuad(uId, sText); break;
            case Node::Binary: SetBlock(uId, sText); break;
            case Node::Tree: break;
            default:
                if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) break;
                b.SetNewText(uId, sText);
        }
    }

    [[noreturn]] static void RaiseUnknownText(std::string_view sText) {
        Msg::UnknownXmlSequence(Str(sText.substr(0, 64)).CStr());
    }

    void SetQuad(u2_t uId, std::string_view sText) {
        std::array<u2_t, 4> auWord{};
        for (u2_t& uWord : auWord) {
            uWord = static_cast<u2_t>(ParseLong64(sText));
            const std::size_t uComma = sText.find(',');
            if (uComma == std::string_view::npos) break;
            sText.remove_prefix(uComma + 1);
        }
        // SetType has made room for the words.
        Node& oNode = b.m_oNode(uId);
        std::memcpy(b.m_oStr.Beg() + oNode.uWord2, auWord.data() + 1, QUAD_REST);
        oNode.uWord3 = auWord[0];
    }

    void SetBlock(u2_t uId, std::string_view sText) {
        m_oBlanked.Truncate(0);
        if (!DecodeBase64(sText, m_oBlanked)) RaiseUnknownText(sText);
        const u2_t uOffset = b.AddHeap(m_oBlanked.Beg(), m_oBlanked.Size());
        b.m_oNode(uId).SetValue64(u3_t{m_oBlanked.Size()} << 32 | uOffset);
    }

    // ---- the fast way -----------------------------------------------------

    // Reads elements as long as they are like most elements are: an expected name, no attributes
    // but the type, a plain text or number, its own end tag behind it. Stops in front of the
    // first other token, which is for the ways above. This loop is what loading XML costs.
    void ReadPlainElements();
    bool AddPlainText(Node& oNode, std::string_view sText);

    Data_Base& b;
    xml::Source& m_oSource;
    const u2_t m_uFlags;
    const Limits& m_oLimits;
    const char* m_p;
    const char* m_pEnd;
    u2_t m_uNode;       // the innermost open element, or where the document goes
    u3_t m_uDepth = 0;  // open elements
    u2_t m_uElements = 0;
    bool m_bBegun = false;  // a tag of any kind was there
    bool m_bDone = false;   // the top element is closed
    bool m_bText = false;   // the current element has a text, if only an empty one
    Hash_Guess m_oGuess;    // usable are names that documents carry as they stand
    xml::Tag m_oTag;
    Arr<char> m_oText;  // of the current element
    Arr<char> m_oNameRoom;
    Arr<char> m_oBlanked;
    Arr<Numbered> m_oTarget;
    Arr<Numbered> m_oLink;
};

// The bytes after a name in a start tag that gives the most frequent types.
constexpr std::string_view TYPE_START = " dt:dt=\"";
constexpr std::string_view INTEGER_TYPE = "i4\">";
constexpr std::string_view DOUBLE_TYPE = "r8\">";
constexpr std::string_view BOOLEAN_TYPE = "boolean\">";
// So many bytes can be looked at without asking: what lies before a value.
constexpr std::ptrdiff_t ROOM = 64;

bool StartsWith(const char* p, std::string_view s) noexcept {
    return std::memcmp(p, s.data(), s.size()) == 0;
}

// A whole number as it is written, with "<" behind it; false for any other text.
bool TakeInteger(const char*& p, u2_t& uValue) noexcept {
    const bool bNegative = *p == '-';
    p += bNegative;
    // Nine digits always fit; a leading zero means an octal number.
    if (*p == '0' && p[1] != '<') return false;
    const char* pDigits = p;
    u2_t u = 0;
    while (p - pDigits < 10 && static_cast<u2_t>(*p - '0') < 10) {
        u = 10 * u + static_cast<u2_t>(*p++ - '0');
    }
    if (p == pDigits || p - pDigits > 9 || *p != '<') return false;
    uValue = bNegative ? 0 - u : u;
    return true;
}

// Whether the end tag of an element stands at p, at least ROOM bytes before the end.
bool EndsHere(const Hash_Text& oName, const char* p, const char* pEnd) noexcept {
    const char* pName = p + 2;
    return pEnd - p >= ROOM && p[1] == '/' && *p == '<' &&
           oName.StandsAt(pName, static_cast<std::size_t>(pEnd - pName)) &&
           pName[oName.uLength] == '>';
}

// Makes a text the value of a record; false for one that needs a second look.
bool XmlLoader::AddPlainText(Node& oNode, std::string_view sText) {
    if (sText.size() > m_oLimits.m_uTextBytes) return false;
    if (!IsPlainText(sText.data(), sText.size())) return false;
    oNode.SetType(Node::String);
    oNode.uWord2 = b.AddText(sText);
    oNode.uWord3 = static_cast<u2_t>(sText.size() + 1);
    return true;
}

void XmlLoader::ReadPlainElements() {
    const char* const pEnd = m_pEnd;
    const char* p = m_p;
    if (m_bText) return;
    for (;;) {
        m_p = p;
        while (pEnd - p >= ROOM && xml::Is(*p, xml::BLANK)) ++p;
        if (pEnd - p < ROOM || *p != '<') return;
        const u2_t uParent = m_uNode;
        const Node::Type eParent = b.m_oNode(uParent).GetType();
        if (p[1] == '/') {
            // Blanks are the value of a node that has no other; the top element ends elsewhere.
            const Hash_Text& oName = b.m_oName(b.m_oNode(uParent).uKey);
            const std::size_t uRoom = static_cast<std::size_t>(pEnd - p) - 2;
            if ((eParent != Node::Tree && m_p != p) || m_uDepth == 1) return;
            if (!oName.StandsAt(p + 2, uRoom) || p[2 + oName.uLength] != '>') return;
            p += 2 + oName.uLength + 1;
            m_uNode = b.m_oNode(uParent).Pred();
            --m_uDepth;
            continue;
        }
        if (eParent != Node::Tree && eParent != Node::Empty) return;
        if (b.m_oNode.Size() >= m_oLimits.m_uNodes || m_uDepth >= m_oLimits.m_uDepth) return;

        // The name.
        const char* pName = ++p;
        const std::size_t uRoom = static_cast<std::size_t>(pEnd - p);
        u2_t uKey = m_oGuess.First();
        const auto oIsHere = [&](u2_t uGuess) {
            const Hash_Text& oText = b.m_oName(uGuess);
            return uGuess != 0 && oText.StandsAt(pName, uRoom) &&
                   !xml::Is(pName[oText.uLength], xml::NAME);
        };
        if (oIsHere(uKey) || oIsHere(uKey = m_oGuess.Second())) {
            m_oGuess.Confirm(uKey);
        } else {
            while (p != pEnd && xml::Is(*p, xml::NAME) && static_cast<u0_t>(*p) < 0x80) ++p;
            const std::string_view sName = Between(pName, p);
            if (sName.empty() || !xml::Is(*pName, xml::NAME_START)) return;
            if (p == pEnd || xml::Is(*p, xml::NAME) || xml::HasEscapes(sName)) return;
            if (IsSkipped(sName)) return;
            uKey = InternName(sName);
        }
        const Hash_Text& oName = b.m_oName(uKey);
        p = pName + oName.uLength;
        if (pEnd - p < ROOM) return;

        // The type and the value.
        Node oNode{uKey, (uParent + 1) << 4, 0, 0};
        if (*p == '>') {
            ++p;
            if (*p == '<' && p[1] == '!') {
                if (!StartsWith(p, xml::CDATA)) return;
                const char* pText = p + xml::CDATA.size();
                const char* pStop = pText;
                do {
                    const std::size_t uLeft = static_cast<std::size_t>(pEnd - pStop);
                    pStop = static_cast<const char*>(std::memchr(pStop, ']', uLeft));
                    if (pStop == nullptr || pEnd - pStop < ROOM) return;
                } while (!StartsWith(pStop++, xml::CDATA_END));
                const std::string_view sText = Between(pText, pStop - 1);
                p = pStop - 1 + xml::CDATA_END.size();
                if (!EndsHere(oName, p, pEnd) || !AddPlainText(oNode, sText)) return;
            } else {
                const char* pText = p;
                while (p != pEnd && *p != '<') ++p;
                if (pEnd - p < ROOM) return;
                const bool bEnd = p[1] == '/';
                const std::string_view sText = Between(pText, p);
                if (!bEnd && (p[1] == '!' || !xml::IsBlank(sText))) return;
                if (bEnd && !EndsHere(oName, p, pEnd)) return;
                if (bEnd && !sText.empty()) {
                    if (sText.find('&') != std::string_view::npos) return;
                    if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) return;
                    if (!AddPlainText(oNode, sText)) return;
                }
                if (!bEnd) {
                    // An element in the element.
                    m_uNode = b.Append(uParent, uKey);
                    ++m_uDepth;
                    ++m_uElements;
                    continue;
                }
            }
        } else if (StartsWith(p, TYPE_START)) {
            p += TYPE_START.size();
            if (StartsWith(p, INTEGER_TYPE)) {
                p += INTEGER_TYPE.size();
                oNode.SetType(Node::Integer);
                if (!TakeInteger(p, oNode.uWord2)) return;
            } else if (StartsWith(p, DOUBLE_TYPE)) {
                p += DOUBLE_TYPE.size();
                double dValue;
                const auto oResult = std::from_chars(p, pEnd, dValue);
                if (oResult.ec != std::errc() || oResult.ptr == pEnd) return;
                if (oResult.ptr == p || *oResult.ptr != '<') return;
                p = oResult.ptr;
                oNode.SetType(Node::Double);
                oNode.SetValue64(std::bit_cast<u3_t>(dValue));
            } else if (StartsWith(p, BOOLEAN_TYPE)) {
                p += BOOLEAN_TYPE.size();
                oNode.SetType(Node::Boolean);
                oNode.uWord2 = *p == '1';
                if (*p != '1' && *p != '0') return;
                ++p;
            } else {
                return;
            }
            if (!EndsHere(oName, p, pEnd)) return;
        } else {
            return;
        }
        b.Append(uParent, uKey, oNode.GetType(), oNode.Value64());
        ++m_uElements;
        // Behind the end tag that EndsHere has seen.
        p += 2 + oName.uLength + 1;
    }
}

// Tells the caller where an operation ended, on its way out.
class ReportOnExit {
  public:
    ReportOnExit(Load_Report* pReport, const Data& oData, const xml::Source& oSource,
                 const XmlLoader& oLoader) noexcept
        : m_pReport(pReport), m_oData(oData), m_oSource(oSource), m_oLoader(oLoader) {}
    ~ReportOnExit() {
        if (m_pReport == nullptr) return;
        const xml::Source::Place oPlace = m_oSource.PlaceOf(m_oLoader.Position());
        m_pReport->m_uOffset = oPlace.uOffset;
        m_pReport->m_uLine = oPlace.uLine;
        m_pReport->m_uColumn = oPlace.uColumn;
        m_pReport->m_uNodes = m_oData.GetNodes();
        try {
            m_pReport->m_oPath = m_oData.GetNodeFromID(m_oLoader.CurrentNode()).GetPath();
        } catch (const std::exception&) {
            m_pReport->m_oPath.Clear();
        }
    }
    ReportOnExit(const ReportOnExit&) = delete;
    ReportOnExit& operator=(const ReportOnExit&) = delete;

  private:
    Load_Report* m_pReport;
    const Data& m_oData;
    const xml::Source& m_oSource;
    const XmlLoader& m_oLoader;
};

}  // namespace

u2_t Data::LoadFromXML(File_Stream& in, u2_t uFlags, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Data::LoadFromXML", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        if (!m_oBase) SetToRoot();
        Base& b = detail::NodeOf(m_oBase, m_uId);
        xml::Source oSource(in);
        XmlLoader oLoader(b, m_uId, oSource, uFlags, oLimits);
        u2_t uElements;
        {
            const ReportOnExit oReport(pReport, *this, oSource, oLoader);
            uElements = oLoader.Run();
            oLoader.ResolveLinks();
        }
        SetAccessMode();
        Shrink();
        SetToRoot();
        return uElements;
    });
}

u2_t Data::LoadFromXMLString(std::string_view sText, u2_t uFlags, const Limits& oLimits,
                             Load_Report* pReport) {
    return Where("vok::Data::LoadFromXMLString", [&] {
        File_Buf oIn(sText.data(), sText.size());
        return LoadFromXML(oIn, uFlags, oLimits, pReport);
    });
}

}  // namespace vok
