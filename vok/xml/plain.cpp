// The loop that most elements go through.
#include <bit>
#include <charconv>
#include <cstring>
#include <string_view>

#include "vok/base/utf8.h"
#include "vok/xml/loader.h"

namespace vok::detail {

namespace {

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

}  // namespace

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
            if (IsSkipped({oName.sText, oName.uLength})) return;
            p += 2 + oName.uLength + 1;
            m_uNode = b.m_oNode(uParent).Pred();
            --m_uDepth;
            continue;
        }
        if (eParent != Node::Tree && eParent != Node::Empty) return;
        if (b.m_oNode.Size() >= m_uMostNodes || m_uDepth >= m_oLimits.m_uDepth) return;

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
            uKey = b.m_oName.Insert(sName);
            m_oGuess.Note(uKey, true, b.m_oName.Size());
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
                if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) return;
                if (!EndsHere(oName, p, pEnd) || !AddPlainText(oNode, sText)) return;
            } else {
                const char* pText = p;
                while (p != pEnd && *p != '<') ++p;
                if (pEnd - p < ROOM) return;
                const bool bEnd = p[1] == '/';
                const std::string_view sText = Between(pText, p);
                if (!bEnd && (IsMarkup(p[1]) || !xml::IsBlank(sText))) return;
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

}  // namespace vok::detail
