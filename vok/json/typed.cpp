// SPDX-License-Identifier: MIT
// What the values of a document are in a tree.
#include <string_view>

#include "vok/base/base64.h"
#include "vok/json/loader.h"
#include "vok/json/messages.h"

namespace vok::json {

void Loader::AppendScalar(const Scalar& o) {
    Node::Type eType;
    const u3_t uBits = PlainBits(o, eType);
    const u2_t uId = Append(eType, uBits);
    if (eType == Node::Binary) SetMark(uId, {false, Mark::Text});
}

u3_t Loader::PlainBits(const Scalar& o, Node::Type& eType) {
    switch (o.eKind) {
        case Scalar::False:
        case Scalar::True: eType = Node::Boolean; return o.eKind == Scalar::True;
        case Scalar::Number: {
            const Number oNumber = ReadNumber(o.sText);
            m_uRounded += oNumber.bRounded;
            eType = oNumber.eType;
            return oNumber.uBits;
        }
        case Scalar::Text:
            // Texts of a tree end at a NUL.
            eType = o.bNul ? Node::Binary : Node::String;
            return o.bNul ? AddBlock(o.sText) : m_oBase.AddText(o.sText);
        default: eType = Node::Empty; return 0;
    }
}

// Gives an object the value that it says it has.
void Loader::SetValue(u2_t uId) {
    const Pending oPending = m_oPending;
    m_oPending = {};
    const Scalar o{oPending.eKind, {m_oPendingText.Beg(), m_oPendingText.Size()}, oPending.bNul};
    if (oPending.eType != Node::Tree) return SetTyped(uId, oPending.eType, o);
    Node::Type eType;
    const u3_t uBits = PlainBits(o, eType);
    m_oBase.m_oNode(uId).SetType(eType);
    m_oBase.m_oNode(uId).SetValue64(uBits);
    if (eType == Node::Binary) SetMark(uId, {false, Mark::Text});
}

void Loader::SetTyped(u2_t uId, Node::Type eType, const Scalar& o) {
    u3_t uBits = 0;
    bool bRounded = false;
    bool bGood = o.eKind == Scalar::Text;
    switch (eType) {
        case Node::String:
            bGood = bGood && !o.bNul;
            if (bGood) uBits = m_oBase.AddText(o.sText);
            break;
        case Node::Binary: bGood = bGood && BinaryBits(o.sText, uBits); break;
        case Node::Quad: bGood = bGood && QuadBits(o.sText, uBits); break;
        case Node::Link:
            bGood = o.eKind == Scalar::Null || (bGood && o.sText.starts_with('/'));
            uBits = Node::NONE;
            if (bGood) AddLink(uId, o);
            break;
        default: bGood = ReadTyped(eType, o, uBits, bRounded);
    }
    if (!bGood) RaiseNoValueOf(Node::TypeName(eType), o.sText);
    m_uRounded += bRounded;
    m_oBase.m_oNode(uId).SetType(eType);
    m_oBase.m_oNode(uId).SetValue64(uBits);
}

bool Loader::BinaryBits(std::string_view sText, u3_t& uBits) {
    m_oBlock.Truncate(0);
    if (!DecodeBase64(sText, m_oBlock)) return false;
    uBits = AddBlock({m_oBlock.Beg(), m_oBlock.Size()});
    return true;
}

u3_t Loader::AddBlock(std::string_view sBlock) {
    const u2_t uOffset = m_oBase.m_oHeap.Add(sBlock.data(), sBlock.size());
    return u3_t{sBlock.size()} << 32 | uOffset;
}

bool Loader::QuadBits(std::string_view sText, u3_t& uBits) {
    Data_Heap::Quad auWord{};
    if (!ReadQuad(sText, auWord.data())) return false;
    const u2_t uOffset = m_oBase.m_oHeap.AddQuad(auWord);
    uBits = u3_t{auWord[0]} << 32 | uOffset;
    return true;
}

// ---- links ------------------------------------------------------------------

void Loader::AddLink(u2_t uId, const Scalar& o) {
    if (o.eKind == Scalar::Null) return;
    m_oLinkText.Add(o.sText.data(), o.sText.size());
    m_oLink.Add(Link{uId, m_oSource.OffsetOf(m_oIn.Position()), m_oLinkText.Size()});
}

void Loader::ResolveLinks() {
    // Decoding a path writes to it, and a NUL behind it.
    m_oLinkText.Add('\0');
    std::size_t uBegin = 0;
    for (const Link& o : m_oLink) {
        const std::string_view sPath(m_oLinkText.Beg() + uBegin, o.uEnd - uBegin);
        const Str oShown(sPath.substr(0, 64));
        const u2_t uTarget = FindTarget(m_oLinkText.Beg() + uBegin, m_oLinkText.Beg() + o.uEnd);
        if (uTarget == Node::NONE) {
            m_uNode = o.uId;
            m_uLinkOffset = o.uOffset;
            RaiseNoTarget(oShown.View());
        }
        m_oBase.m_oNode(o.uId).uWord2 = uTarget;
        uBegin = o.uEnd;
    }
}

// The node at "/" or "/a[0]/b[2]"; NONE where there is none, and for any other text.
u2_t Loader::FindTarget(char* pPath, char* pEnd) {
    u2_t uId = 0;
    if (pEnd - pPath == 1) return *pPath == '/' ? 0 : Node::NONE;
    for (char* p = pPath; p != pEnd;) {
        if (*p != '/') return Node::NONE;
        const std::string_view sRest(p + 1, static_cast<std::size_t>(pEnd - p - 1));
        const std::size_t uOpen = sRest.find('[');
        const std::size_t uClose = sRest.find(']');
        if (uClose == std::string_view::npos || uOpen >= uClose) return Node::NONE;
        u2_t uNth = 0;
        const char* const pNth = sRest.data() + uOpen + 1;
        const auto oNth = std::from_chars(pNth, sRest.data() + uClose, uNth);
        if (oNth.ec != std::errc() || oNth.ptr != sRest.data() + uClose) return Node::NONE;
        char* const pName = p + 1;
        std::string_view sName(
            pName, static_cast<std::size_t>(Data::DecodeXpath(pName, pName + uOpen) - pName));
        sName = sName.substr(0, sName.find('\0'));
        const u2_t uKey = m_oBase.m_oName.Look(sName);
        if (uKey == Data_Base::NONE) return Node::NONE;
        if (m_oBase.m_oNode(uId).GetType() != Node::Tree) return Node::NONE;
        uId = m_oBase.FindNamed(uId, uKey, uNth);
        if (uId == Data_Base::NONE) return Node::NONE;
        p = pName + uClose + 1;
    }
    return uId;
}

}  // namespace vok::json
