// What the attributes and texts of elements stand for.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/base64.h"
#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/xml/loader.h"

namespace vok::detail {

void XmlLoader::SetAttributes() {
    const Arr<xml::Tag::Attribute>& oAttributes = m_oTag.Attributes();
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    // They cost memory like nodes.
    if (m_oWork.IsMetered() && (m_uAttributes += oAttributes.Size()) >= NODES_BETWEEN_CHECKS) {
        CheckMemory();
    }
    for (const xml::Tag::Attribute& o : oAttributes) {
        if (o.sName == xml::DT_DECLARATION) continue;
        const bool bType = o.sName == xml::TYPE || o.sName == "dt:type";
        if (bType && SetType(o.sValue)) continue;
        if (o.sName == xml::NODE_ID) {
            AddNumbered(m_oTarget, o.sValue);
        } else if (o.sName == xml::NODE_REFERENCE) {
            AddNumbered(m_oLink, o.sValue);
        } else if (o.sName != xml::REFERENCE_TYPE) {
            SetAttribute(o);
        }
    }
}

// Notes the number in "ID17" for the current node. One beyond 64 bits is nobody's.
void XmlLoader::AddNumbered(Arr<Numbered>& oArr, std::string_view sValue) const {
    const u3_t uNumber = sValue.size() > 2 ? ParseLong64(sValue.substr(2)) : 0;
    if (uNumber != TOO_LARGE) oArr.Add(Numbered{uNumber, m_uNode});
}

bool XmlLoader::SetType(std::string_view sType) {
    Node& oNode = m_oBase.m_oNode(m_uNode);
    if (oNode.GetType() == Node::Tree) return false;
    const xml::TypeName* pType = xml::FindType(sType);
    if (pType == nullptr) return false;
    u3_t uValue = pType->bZone ? std::bit_cast<u3_t>(3600.0) : 0;
    if (pType->eType == Node::Quad) uValue = m_oBase.m_oHeap.AddQuad({});
    m_oBase.DropValue(oNode);
    oNode.SetType(pType->eType);
    oNode.SetValue64(uValue);
    return true;
}

void XmlLoader::SetAttribute(const xml::Tag::Attribute& o) {
    m_oText.Truncate(0);
    std::string_view sValue = o.sValue;
    const auto oIsSpecial = [](char c) { return c == '&' || c == '\t' || c == '\n' || c == '\r'; };
    if (std::any_of(sValue.begin(), sValue.end(), oIsSpecial)) {
        m_oFound.m_uKeptReferences += xml::DecodeValue(m_oText, sValue, KeepsUnknown());
        sValue = {m_oText.Beg(), m_oText.Size()};
    }
    CheckNoNul(sValue);
    if (sValue.size() > m_oLimits.m_uTextBytes) RaiseTextLimit();
    m_oBase.SetOutsideAttribute(m_uNode, Decoded(o.sName, m_oNameRoom), sValue);
    m_oText.Truncate(0);
}

void XmlLoader::AddText(std::string_view sRun) {
    const Node::Type eType = m_oBase.m_oNode(m_uNode).GetType();
    if (eType == Node::Tree) {
        m_oFound.m_uDroppedTexts += !xml::IsBlank(sRun);
        return;
    }
    if (eType == Node::Binary) Msg::MissingHeaderForBinaryData();
    CheckLength(sRun.size());
    CheckNoNul(sRun);
    m_oFound.m_uKeptReferences += xml::DecodeText(m_oText, sRun, KeepsUnknown());
    m_bText = true;
}

void XmlLoader::AddCdata(std::string_view sRun) {
    const Node::Type eType = m_oBase.m_oNode(m_uNode).GetType();
    if (eType == Node::Tree) {
        m_oFound.m_uDroppedTexts += !xml::IsBlank(sRun);
        return;
    }
    if (eType == Node::Binary && m_bText) Msg::MissingHeaderForBinaryData();
    CheckLength(sRun.size());
    CheckNoNul(sRun);
    m_oText.Add(sRun.data(), sRun.size());
    m_bText = true;
}

void XmlLoader::EndTextBeforeElement() {
    if (!m_bText) return;
    if (!xml::IsBlank({m_oText.Beg(), m_oText.Size()})) SetText();
    m_oText.Truncate(0);
    m_bText = false;
}

void XmlLoader::SetText() {
    SetValue(m_uNode, {m_oText.Beg(), m_oText.Size()});
    m_oText.Truncate(0);
    m_bText = false;
}

void XmlLoader::SetValue(u2_t uId, std::string_view sText) {
    Node& oNode = m_oBase.m_oNode(uId);
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
            if (!ParseDate(sText, dSeconds) && !ParseNoDate(sText, dSeconds)) {
                RaiseUnknownText(sText);
            }
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
            m_oBase.SetNewText(uId, sText);
    }
}

// What FormatReal gives for the numbers that are no moment.
bool XmlLoader::ParseNoDate(std::string_view sText, double& dSeconds) noexcept {
    for (const std::string_view s : {"INF", "-INF", "NaN"}) {
        if (sText != s) continue;
        dSeconds = ParseReal(sText);
        return true;
    }
    return false;
}

void XmlLoader::RaiseUnknownText(std::string_view sText) {
    Msg::UnknownXmlSequence(Str(sText.substr(0, 64)).CStr());
}

void XmlLoader::SetQuad(u2_t uId, std::string_view sText) {
    Data_Heap::Quad auWord{};
    for (u2_t& uWord : auWord) {
        uWord = static_cast<u2_t>(ParseLong64(sText));
        const std::size_t uComma = sText.find(',');
        if (uComma == std::string_view::npos) break;
        sText.remove_prefix(uComma + 1);
    }
    // SetType has made room for the words.
    Node& oNode = m_oBase.m_oNode(uId);
    m_oBase.m_oHeap.SetQuad(oNode.uWord2, auWord);
    oNode.uWord3 = auWord[0];
}

void XmlLoader::SetBlock(u2_t uId, std::string_view sText) {
    u3_t uValue;
    if (!AddBlock(sText, uValue)) RaiseUnknownText(sText);
    m_oBase.m_oNode(uId).SetValue64(uValue);
}

bool XmlLoader::AddBlock(std::string_view sText, u3_t& uValue) {
    m_oBlock.Truncate(0);
    if (!DecodeBase64(sText, m_oBlock)) return false;
    const u2_t uOffset = m_oBase.m_oHeap.Add(m_oBlock.Beg(), m_oBlock.Size());
    uValue = u3_t{m_oBlock.Size()} << 32 | uOffset;
    return true;
}

}  // namespace vok::detail
