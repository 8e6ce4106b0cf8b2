// The loop that most elements go through.
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "vok/base/utf8.h"
#include "vok/xml/loader.h"

namespace vok::detail {

namespace {

// The bytes after a name in a start tag that gives the most frequent types.
constexpr std::size_t SAME = xml::TYPE.size() + 3;  // which all types have in front
constexpr std::string_view TYPE_START = xml::TypeTag<Data_Node::Integer>::TEXT.substr(0, SAME);
constexpr std::string_view INTEGER_TYPE = xml::TypeTag<Data_Node::Integer>::TEXT.substr(SAME);
constexpr std::string_view DOUBLE_TYPE = xml::TypeTag<Data_Node::Double>::TEXT.substr(SAME);
constexpr std::string_view BOOLEAN_TYPE = xml::TypeTag<Data_Node::Boolean>::TEXT.substr(SAME);
constexpr std::string_view BINARY_TYPE = xml::TypeTag<Data_Node::Binary>::TEXT.substr(SAME);
// So many bytes behind a name can be looked at without asking: a type and a whole number, or the
// start of a CDATA section.
constexpr std::ptrdiff_t ROOM = 32;
constexpr std::size_t LONGEST_INTEGER = 12;  // with the "<" behind it
static_assert(SAME + INTEGER_TYPE.size() + LONGEST_INTEGER <= ROOM);
static_assert(SAME + BINARY_TYPE.size() + xml::CDATA.size() <= ROOM);
// Bytes that tell an end tag.
constexpr std::ptrdiff_t END_TAG = 2;

bool StartsWith(const char* p, std::string_view s) noexcept {
    return std::memcmp(p, s.data(), s.size()) == 0;
}

// A whole number as it is written, with "<" behind it; false for any other text.
bool TakeInteger(const char*& p, u2_t& uValue) noexcept {
    const bool bNegative = *p == '-';
    p += bNegative;
    // A leading zero means an octal number.
    if (*p == '0' && p[1] != '<') return false;
    const char* pDigits = p;
    u3_t u = 0;
    while (p - pDigits < 10 && static_cast<u2_t>(*p - '0') < 10) {
        u = 10 * u + static_cast<u2_t>(*p++ - '0');
    }
    constexpr u3_t MOST = std::numeric_limits<i2_t>::max();
    if (p == pDigits || *p != '<' || u > MOST + bNegative) return false;
    uValue = static_cast<u2_t>(bNegative ? 0 - u : u);
    return true;
}

// Whether the end tag of an element stands at p, and is told without looking at its bytes one by
// one.
inline bool EndsHere(const Hash_Text& oName, const char* p, const char* pEnd) noexcept {
    const char* pName = p + 2;
    return pEnd - p >= END_TAG && p[1] == '/' && *p == '<' &&
           oName.StandsAt(pName, static_cast<std::size_t>(pEnd - pName)) &&
           pName[oName.uLength] == '>';
}

}  // namespace

// What is called from the loop takes no reference to its variables, which then stay in registers.

// The place in the heap of a text that is put there; NONE for one that needs a second look.
u2_t XmlLoader::PlaceText(std::string_view sText) {
    if (!IsAsciiText(sText.data(), sText.size())) return Node::NONE;
    return m_oBase.m_oHeap.AddText(sText);
}

// Makes a text the value of a record; false for one that needs a second look.
inline bool XmlLoader::AddFastText(Node& oNode, std::string_view sText) {
    if (sText.size() > m_oLimits.m_uTextBytes) return false;
    if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) return false;
    u2_t uOffset = m_oBase.m_oHeap.TryAddText(sText);
    if (uOffset == 0) uOffset = PlaceText(sText);
    oNode.SetType(Node::String);
    oNode.uWord2 = uOffset;
    oNode.uWord3 = static_cast<u2_t>(sText.size() + 1);
    return uOffset != Node::NONE;
}

// Closes the current element, whose end tag begins at p, behind blanks from pBlanks on.
inline const char* XmlLoader::FastClose(const char* p, const char* pBlanks) noexcept {
    const Node& oNode = m_oBase.m_oNode(m_uNode);
    // Blanks are the value of a node that has no other; the top element ends elsewhere.
    if ((oNode.GetType() != Node::Tree && pBlanks != p) || m_uOpen == 1) return nullptr;
    const Hash_Text& oName = m_oBase.m_oName(oNode.uKey);
    p += 2;
    if (!oName.StandsAt(p, static_cast<std::size_t>(m_pEnd - p))) return nullptr;
    if (p[oName.uLength] != '>' || IsSkipped(oName.View())) return nullptr;
    m_uNode = oNode.Pred();
    --m_uOpen;
    return p + oName.uLength + 1;
}

// The key of the name at p, 0 for one that needs a second look.
inline u2_t XmlLoader::FastName(const char* p) {
    const std::size_t uRoom = static_cast<std::size_t>(m_pEnd - p);
    const auto oIsHere = [&](u2_t uGuess) {
        const Hash_Text& oText = m_oBase.m_oName(uGuess);
        return uGuess != 0 && oText.StandsAt(p, uRoom) && !xml::Is(p[oText.uLength], xml::NAME);
    };
    u2_t uKey = m_oGuess.First();
    if (!oIsHere(uKey) && !oIsHere(uKey = m_oGuess.Second())) return ScanName(p);
    m_oGuess.Confirm(uKey);
    return uKey;
}

u2_t XmlLoader::ScanName(const char* p) {
    u0_t uSeen;
    const std::string_view sName = Rest(p).substr(0, xml::AsciiNameLength(Rest(p), uSeen));
    const char* const pStop = p + sName.size();
    if (sName.empty() || !xml::Is(*p, xml::NAME_START)) return 0;
    if (pStop == m_pEnd || xml::Is(*pStop, xml::NAME) || IsSkipped(sName)) return 0;
    if ((uSeen & xml::ESCAPE) != 0 && xml::HasEscapes(sName)) return 0;
    const u2_t uKey = m_oBase.m_oName.Insert(sName);
    m_oGuess.Note(uKey, m_oBase.m_oName.Size());
    return uKey;
}

// What stands behind "<name>": the text of the element and its end tag, or another element in it.
// p moves to the "<" that ends it.
inline XmlLoader::Content XmlLoader::FastContent(const char*& p, const Hash_Text& oName,
                                                 Node& oNode) {
    const char* pText = p;
    while (p != m_pEnd && *p != '<') ++p;
    if (m_pEnd - p < END_TAG) return Content::Other;
    const std::string_view sText = Between(pText, p);
    if (p[1] != '/') {
        return IsMarkup(p[1]) || !xml::IsBlank(sText) ? Content::Other : Content::Opens;
    }
    if (!EndsHere(oName, p, m_pEnd)) return Content::Other;
    if (sText.empty()) return Content::Ends;
    if (sText.find('&') != std::string_view::npos) return Content::Other;
    return AddFastText(oNode, sText) ? Content::Ends : Content::Other;
}

// The same for a text in one CDATA section.
inline XmlLoader::Content XmlLoader::FastCdata(const char*& p, const Hash_Text& oName,
                                               Node& oNode) {
    if (!StartsWith(p, xml::CDATA)) return Content::Other;
    const char* pText = p + xml::CDATA.size();
    const char* pStop = pText;
    do {
        const std::size_t uLeft = static_cast<std::size_t>(m_pEnd - pStop);
        pStop = static_cast<const char*>(std::memchr(pStop, ']', uLeft));
        if (pStop == nullptr || Rest(pStop).size() < xml::CDATA_END.size()) return Content::Other;
    } while (!StartsWith(pStop++, xml::CDATA_END));
    const std::string_view sText = Between(pText, pStop - 1);
    p = pStop - 1 + xml::CDATA_END.size();
    return EndsHere(oName, p, m_pEnd) && AddFastText(oNode, sText) ? Content::Ends : Content::Other;
}

// The same for a value of one of the frequent types, from " dt:dt=" on.
inline XmlLoader::Content XmlLoader::FastTyped(const char*& p, const Hash_Text& oName,
                                               Node& oNode) {
    if (!StartsWith(p, TYPE_START)) return Content::Other;
    p += TYPE_START.size();
    const char* pText;
    if (StartsWith(p, INTEGER_TYPE)) {
        pText = p += INTEGER_TYPE.size();
        oNode.SetType(Node::Integer);
        if (!TakeInteger(p, oNode.uWord2)) return Content::Other;
    } else if (StartsWith(p, DOUBLE_TYPE)) {
        pText = p += DOUBLE_TYPE.size();
        oNode.SetType(Node::Double);
        double dValue;
        const auto oResult = std::from_chars(p, m_pEnd, dValue);
        if (oResult.ec != std::errc() || oResult.ptr == p) return Content::Other;
        p = oResult.ptr;
        oNode.SetValue64(std::bit_cast<u3_t>(dValue));
    } else if (StartsWith(p, BOOLEAN_TYPE)) {
        pText = p += BOOLEAN_TYPE.size();
        oNode.SetType(Node::Boolean);
        oNode.uWord2 = *p == '1';
        if (*p != '1' && *p != '0') return Content::Other;
        ++p;
    } else if (StartsWith(p, BINARY_TYPE)) {
        p += BINARY_TYPE.size();
        oNode.SetType(Node::Binary);
        u3_t uBlock = 0;
        p = FastBlock(p, oName, uBlock);
        oNode.SetValue64(uBlock);
        return p != nullptr ? Content::Ends : Content::Other;
    } else {
        return Content::Other;
    }
    if (Between(pText, p).size() > m_oLimits.m_uTextBytes) return Content::Other;
    return EndsHere(oName, p, m_pEnd) ? Content::Ends : Content::Other;
}

// Adds bytes in base64, which stand in one CDATA section at p and have no ">" in them. Returns the
// "<" that ends them; null for what needs a second look.
const char* XmlLoader::FastBlock(const char* p, const Hash_Text& oName, u3_t& uBlock) {
    if (!StartsWith(p, xml::CDATA)) return nullptr;
    const char* const pText = p + xml::CDATA.size();
    const void* const pFound = std::memchr(pText, '>', static_cast<std::size_t>(m_pEnd - pText));
    if (pFound == nullptr) return nullptr;
    p = static_cast<const char*>(pFound) + 1;
    const char* const pStop = p - xml::CDATA_END.size();
    if (pStop < pText || !StartsWith(pStop, xml::CDATA_END)) return nullptr;
    const std::string_view sText = Between(pText, pStop);
    if (sText.size() > m_oLimits.m_uTextBytes || !EndsHere(oName, p, m_pEnd)) return nullptr;
    return AddBlock(sText, uBlock) ? p : nullptr;
}

// m_p stays in front of what is not taken. Limits are looked at before anything is made.
void XmlLoader::ReadFastElements() {
    if (m_bText) return;
    for (const char* p = m_p;; m_p = p) {
        const char* const pBlanks = p;
        while (p != m_pEnd && xml::Is(*p, xml::BLANK)) ++p;
        if (m_pEnd - p < END_TAG || *p != '<') return;
        if (p[1] == '/') {
            p = FastClose(p, pBlanks);
            if (p == nullptr) return;
            continue;
        }
        const Node::Type eParent = m_oBase.m_oNode(m_uNode).GetType();
        if (eParent != Node::Tree && eParent != Node::Empty) return;
        if (m_oBase.m_oNode.Size() >= m_uMostNodes || m_uOpen >= m_oLimits.m_uDepth) return;

        const u2_t uKey = FastName(++p);
        if (uKey == 0) return;
        const Hash_Text& oName = m_oBase.m_oName(uKey);
        p += oName.uLength;
        if (m_pEnd - p < ROOM) return;

        Node oNode{uKey, 0, 0, 0};  // its type and value
        Content eContent;
        if (*p != '>') {
            eContent = FastTyped(p, oName, oNode);
        } else if (++p; *p == '<' && p[1] == '!') {
            eContent = FastCdata(p, oName, oNode);
        } else {
            eContent = FastContent(p, oName, oNode);
        }
        if (eContent == Content::Other) return;
        const u2_t uId = m_oBase.Append(m_uNode, uKey, oNode.GetType(), oNode.Value64());
        ++m_uElements;
        if (eContent == Content::Opens) {
            m_uNode = uId;
            ++m_uOpen;
        } else {
            p += 2 + oName.uLength + 1;  // the end tag that EndsHere has seen
        }
    }
}

}  // namespace vok::detail
