// SPDX-License-Identifier: MIT
// The loop that most elements go through.
#include <cstring>
#include <string_view>

#include "vok/base/utf8.h"
#include "vok/xml/fast_text.h"
#include "vok/xml/loader.h"

namespace vok::detail {

using namespace xml::fast;

// What is called from the loop takes no reference to its variables, which then stay in registers.

// The place in the heap of a text that is put there; NONE for one that needs a second look.
u2_t XmlLoader::PlaceText(std::string_view sText) {
    if (!IsAsciiText(sText.data(), sText.size())) return Node::NONE;
    return m_pBase->m_oHeap.AddText(sText);
}

// Makes a text the value of a record; false for one that needs a second look.
inline bool XmlLoader::AddFastText(Node& oNode, std::string_view sText) {
    if (sText.size() > m_oLimits.m_uTextBytes) return false;
    if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) return false;
    u2_t uOffset = m_pBase->m_oHeap.TryAddText(sText);
    if (uOffset == 0) uOffset = PlaceText(sText);
    oNode.SetType(Node::String);
    oNode.uWord2 = uOffset;
    oNode.uWord3 = static_cast<u2_t>(sText.size() + 1);
    return uOffset != Node::NONE;
}

// Closes the current element, whose end tag begins at p, behind blanks from pBlanks on.
inline const char* XmlLoader::FastClose(const char* p, const char* pBlanks) noexcept {
    const Node& oNode = m_pBase->m_oNode(m_uNode);
    // Blanks are the value of a node that has no other; the top element ends elsewhere.
    if ((oNode.GetType() != Node::Tree && pBlanks != p) || m_uOpen == m_uAbove + 1) return nullptr;
    const Hash_Text& oName = m_pBase->m_oName(oNode.uKey);
    p += 2;
    if (!oName.StandsAt(p, static_cast<std::size_t>(m_pEnd - p))) return nullptr;
    if (p[oName.uLength] != '>' || IsSkipped(oName.View())) return nullptr;
    m_uNode = oNode.Pred();
    --m_uOpen;
    return p + oName.uLength + 1;
}

// The key of the name at p, 0 for one that needs a second look.
inline u2_t XmlLoader::FastName(const char* p) {
    if (Has(Data::XML_SKIP_HTML)) return ScanName(p);
    const std::size_t uRoom = static_cast<std::size_t>(m_pEnd - p);
    Data_Names& oNames = m_pBase->m_oName;
    const auto oIsHere = [&](u2_t uGuess) {
        const Hash_Text& oText = oNames(uGuess);
        return oText.StandsAt(p, uRoom) && !xml::Is(p[oText.uLength], xml::NAME) &&
               oNames.IsXmlVerbatim(uGuess);
    };
    u2_t uKey = oNames.Guess().First();
    if (!oIsHere(uKey) && !oIsHere(uKey = oNames.Guess().Second())) return ScanName(p);
    oNames.Guess().Confirm(uKey);
    return uKey;
}

u2_t XmlLoader::ScanName(const char* p) {
    u0_t uSeen;
    const std::string_view sName = Rest(p).substr(0, xml::AsciiNameLength(Rest(p), uSeen));
    const char* const pStop = p + sName.size();
    if (sName.empty() || !xml::Is(*p, xml::NAME_START)) return 0;
    if (pStop == m_pEnd || xml::Is(*pStop, xml::NAME) || IsSkipped(sName)) return 0;
    if ((uSeen & xml::ESCAPE) != 0 && xml::HasEscapes(sName)) return 0;
    return m_pBase->m_oName.InternAs(sName, Hash_Guess::XML);
}

// What stands behind "<name>": the text of the element and its end tag, or another element in it.
// p moves to the "<" that ends it.
inline XmlLoader::Content XmlLoader::FastContent(const char*& p, const Hash_Text& oName,
                                                 Node& oNode) {
    const char* pText = p;
    const TextRun oRun(p, m_pEnd);
    p = oRun.pEnd;
    if (m_pEnd - p < END_TAG) return Content::Other;
    const std::string_view sText = Between(pText, p);
    if (p[1] != '/') {
        return IsMarkup(p[1]) || !xml::IsBlank(sText) ? Content::Other : Content::Opens;
    }
    if (!EndsHere(oName, p, m_pEnd)) return Content::Other;
    if (sText.empty()) return Content::Ends;
    return !oRun.bReference && AddFastText(oNode, sText) ? Content::Ends : Content::Other;
}

// The same for a text in one CDATA section.
inline XmlLoader::Content XmlLoader::FastCdata(const char*& p, const Hash_Text& oName,
                                               Node& oNode) {
    if (!StartsWith(p, xml::CDATA)) return Content::Other;
    const char* const pText = p + xml::CDATA.size();
    const char* const pStop = EndOfCdata(pText, m_pEnd);
    if (pStop == nullptr) return Content::Other;
    const std::string_view sText = Between(pText, pStop);
    p = pStop + xml::CDATA_END.size();
    return EndsHere(oName, p, m_pEnd) && AddFastText(oNode, sText) ? Content::Ends : Content::Other;
}

// The same for a value of one of the frequent types, from " dt:dt=" on.
inline XmlLoader::Content XmlLoader::FastTyped(const char*& p, const Hash_Text& oName,
                                               Node& oNode) {
    if (!StartsWith(p, TYPE_START)) return Content::Other;
    p += TYPE_START.size();
    if (StartsWith(p, BINARY_TYPE)) {
        p += BINARY_TYPE.size();
        oNode.SetType(Node::Binary);
        u3_t uBlock = 0;
        p = FastBlock(p, oName, uBlock);
        oNode.SetValue64(uBlock);
        return p != nullptr ? Content::Ends : Content::Other;
    }
    Scalar o;
    if (!o.Take(p, m_pEnd) || o.uBytes > m_oLimits.m_uTextBytes) return Content::Other;
    oNode.SetType(o.eType);
    oNode.SetValue64(o.uValue);
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
        const Node::Type eParent = m_pBase->m_oNode(m_uNode).GetType();
        if (eParent != Node::Tree && eParent != Node::Empty) return;
        if (m_pBase->m_oNode.Size() >= m_uMostNodes || m_uOpen >= m_oLimits.m_uDepth) return;

        const u2_t uKey = FastName(++p);
        if (uKey == 0) return;
        const Hash_Text& oName = m_pBase->m_oName(uKey);
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
        const u2_t uId = m_pBase->Append(m_uNode, uKey, oNode.GetType(), oNode.Value64());
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
