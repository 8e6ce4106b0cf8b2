// SPDX-License-Identifier: MIT
// What the attributes and texts of elements stand for.
#include <algorithm>
#include <string_view>

#include "vok/base/base64.h"
#include "vok/xml/loader.h"
#include "vok/xml/scalar.h"

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

// Notes the number of the current node, or of the one that it leads to.
void XmlLoader::AddNumbered(Arr<Numbered>& oArr, std::string_view sValue) const {
    const u3_t uNumber = xml::ParseNodeNumber(sValue);
    if (uNumber != xml::NO_NUMBER) oArr.Add(Numbered{uNumber, m_uNode});
}

bool XmlLoader::SetType(std::string_view sType) {
    Node& oNode = m_pBase->m_oNode(m_uNode);
    if (oNode.GetType() == Node::Tree) return false;
    const xml::TypeName* pType = xml::FindType(sType);
    if (pType == nullptr) return false;
    u3_t uValue = xml::SeedOf(*pType);
    if (pType->eType == Node::Quad) uValue = m_pBase->m_oHeap.AddQuad({});
    m_pBase->DropValue(oNode);
    oNode.SetType(pType->eType);
    oNode.SetValue64(uValue);
    return true;
}

void XmlLoader::SetAttribute(const xml::Tag::Attribute& o) {
    const std::string_view sValue = DecodedValue(o.sValue, m_oValueRoom);
    m_pBase->SetOutsideAttribute(m_uNode, Decoded(o.sName, m_oNameRoom), sValue);
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
    Node& oNode = m_pBase->m_oNode(uId);
    switch (oNode.GetType()) {
        case Node::Boolean:
        case Node::Integer:
        case Node::Char:
        case Node::Float:
        case Node::Double:
        case Node::Date:
        case Node::Long:
            oNode.SetValue64(xml::ParseScalar(oNode.GetType(), sText, oNode.Value64()));
            break;
        case Node::Quad: SetQuad(uId, sText); break;
        case Node::Binary: SetBlock(uId, sText); break;
        case Node::Tree: break;
        default:
            if (Has(Data::XML_SKIP_BLANKS) && xml::IsBlank(sText)) break;
            m_pBase->SetNewText(uId, sText);
    }
}

void XmlLoader::SetQuad(u2_t uId, std::string_view sText) {
    const Data_Heap::Quad auWord = xml::ParseQuad(sText);
    // SetType has made room for the words.
    Node& oNode = m_pBase->m_oNode(uId);
    m_pBase->m_oHeap.SetQuad(oNode.uWord2, auWord);
    oNode.uWord3 = auWord[0];
}

void XmlLoader::SetBlock(u2_t uId, std::string_view sText) {
    u3_t uValue;
    if (!AddBlock(sText, uValue)) xml::RaiseUnknownText(sText);
    m_pBase->m_oNode(uId).SetValue64(uValue);
}

bool XmlLoader::AddBlock(std::string_view sText, u3_t& uValue) {
    m_oBlock.Truncate(0);
    if (!DecodeBase64(sText, m_oBlock)) return false;
    const u2_t uOffset = m_pBase->m_oHeap.Add(m_oBlock.Beg(), m_oBlock.Size());
    uValue = u3_t{m_oBlock.Size()} << 32 | uOffset;
    return true;
}

}  // namespace vok::detail
