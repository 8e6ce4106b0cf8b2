// SPDX-License-Identifier: MIT
// Reads JSON documents into a tree: levels and members.
#include "vok/json/loader.h"

#include <algorithm>
#include <cstring>

#include <rapidjson/reader.h>

#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/data/report.h"
#include "vok/file/rest.h"
#include "vok/json/access.h"
#include "vok/json/json.h"
#include "vok/json/memory.h"
#include "vok/json/messages.h"

namespace vok {

namespace json {

namespace {

[[nodiscard]] Syntax SyntaxOf(rapidjson::ParseErrorCode eCode) noexcept {
    switch (eCode) {
        case rapidjson::kParseErrorObjectMissName: return Syntax::NoName;
        case rapidjson::kParseErrorObjectMissColon: return Syntax::NoColon;
        case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket: return Syntax::NoObjectEnd;
        case rapidjson::kParseErrorArrayMissCommaOrSquareBracket: return Syntax::NoArrayEnd;
        case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex: return Syntax::BadHex;
        case rapidjson::kParseErrorStringUnicodeSurrogateInvalid: return Syntax::BadSurrogate;
        case rapidjson::kParseErrorStringEscapeInvalid: return Syntax::BadEscape;
        case rapidjson::kParseErrorStringMissQuotationMark: return Syntax::NoTextEnd;
        case rapidjson::kParseErrorStringInvalidEncoding: return Syntax::NoUtf8;
        case rapidjson::kParseErrorNumberTooBig: return Syntax::TooLarge;
        case rapidjson::kParseErrorNumberMissFraction: return Syntax::NoFraction;
        case rapidjson::kParseErrorNumberMissExponent: return Syntax::NoExponent;
        default: return Syntax::NoValue;
    }
}

[[nodiscard]] std::string_view ViewOf(const Arr<char>& o) noexcept {
    return {o.Beg(), o.Size()};
}

// The name of the successor that a member is, which may be written with one more "#".
[[nodiscard]] std::string_view SuccessorOf(std::string_view sMember) noexcept {
    return sMember.substr(sMember.starts_with("##") && IsMarked(sMember) ? 1 : 0);
}

void Assign(Arr<char>& o, std::string_view s) {
    o.Truncate(0);
    o.Add(s.data(), s.size());
}

}  // namespace

bool Input::Fetch() {
    const char* const pBegin = m_oSource.Begin();
    const auto uKept = static_cast<std::size_t>(std::min(KEPT, m_p - pBegin));
    const char* p = m_p - uKept;
    const auto uDropped = static_cast<std::size_t>(p - pBegin);
    if (!m_oSource.Fetch(p, m_pEnd)) return false;
    m_uBefore += uDropped;
    m_p = p + uKept;
    return m_p != m_pEnd;
}

void Loader::Run() {
    constexpr unsigned FLAGS = rapidjson::kParseIterativeFlag | rapidjson::kParseStopWhenDoneFlag |
                               rapidjson::kParseNumbersAsStringsFlag |
                               rapidjson::kParseValidateEncodingFlag;
    Memory oMemory(m_oLimits);
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, Memory> oReader(&oMemory);
    const rapidjson::ParseResult oResult = oReader.Parse<FLAGS>(m_oIn, *this);
    if (oResult.IsError()) {
        m_oIn.MoveTo(oResult.Offset());
        RaiseSyntax(SyntaxOf(oResult.Code()));
    }
    m_oIn.SkipBlanks();
}

// What the reader lets pass: half of a surrogate pair by its escape.
bool Loader::CheckText(std::string_view sText) const {
    if (sText.size() > m_oLimits.m_uTextBytes) m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
    if (IsAsciiText(sText.data(), sText.size())) [[likely]]
        return false;
    if (!IsUtf8(sText.data(), sText.size())) RaiseSyntax(Syntax::BadSurrogate);
    return sText.find('\0') != std::string_view::npos;
}

void Loader::CheckMemory() {
    m_uAttributes = 0;
    m_uMostNodes = m_oLimits.m_uNodes;
    if (!m_oWork.IsMetered()) return;
    const u3_t uHeld = m_oBase.HeapBytes() + m_oSource.Held() +
                       m_oLevel.Capacity() * sizeof(Level) + m_oLinkText.Capacity() +
                       m_oLink.Capacity() * sizeof(Link);
    m_uMostNodes = std::min(m_uMostNodes, detail::NodesBeforeCheck(m_oWork, uHeld, m_oBase));
}

void Loader::CheckLimits() {
    if (m_oBase.m_oNode.Size() >= m_uMostNodes) [[unlikely]] {
        if (m_oBase.m_oNode.Size() >= m_oLimits.m_uNodes) {
            m_oLimits.RaiseExceeded(&Limits::m_uNodes);
        }
        CheckMemory();
    }
    if (m_uDepth >= m_oLimits.m_uDepth) [[unlikely]]
        m_oLimits.RaiseExceeded(&Limits::m_uDepth);
}

// ---- nodes ------------------------------------------------------------------

// Makes the node of the value that has come; at the top that is the root.
u2_t Loader::Append(Node::Type eType, u3_t uValue) {
    if (m_oLevel.Size() == 0) {
        m_oBase.SetNewValue(0, eType, static_cast<u2_t>(uValue), static_cast<u2_t>(uValue >> 32));
        return 0;
    }
    Level& o = m_oLevel.Last();
    if (o.eKind == Kind::Object) BeginMember(o);
    CheckLimits();
    m_oBase.CheckAppend(o.uNode);
    o.uLast = m_oBase.Append(o.uNode, o.uKey, eType, uValue);
    ++o.uCount;
    o.eMark = Mark::None;
    return o.uLast;
}

u2_t Loader::AppendText(std::string_view sText) {
    return Append(Node::String, m_oBase.AddText(sText));
}

void Loader::Open(u2_t uId, Kind eKind) {
    m_uNode = uId;
    m_oLevel.Add(Level{.uNode = uId, .eKind = eKind});
    ++m_uDepth;
}

void Loader::BeginMember(Level& o) {
    if (o.bMembers) return;
    o.bMembers = true;
    if (!m_oPending.IsThere()) return;
    const u2_t uKey = o.uKey;
    DemotePending();
    o.uKey = uKey;
}

// The name that came is that of a successor after all.
void Loader::TakeKey(Level& o) {
    if (m_eMember == Member::Successor) return;
    o.uKey = m_oBase.m_oName.Intern(WordOf(m_eMember));
    m_eMember = Member::Successor;
}

bool Loader::Key(const char* s, u2_t uSize, bool) {
    const std::string_view sName(s, uSize);
    if (CheckText(sName)) [[unlikely]]
        RaiseNulInName();
    Level& o = m_oLevel.Last();
    if (o.eKind == Kind::Attributes) {
        Assign(m_oName, sName);
        return true;
    }
    m_eMember = MemberOf(sName);
    if (m_eMember == Member::Successor) o.uKey = m_oBase.m_oName.Intern(SuccessorOf(sName));
    return true;
}

bool Loader::StartObject() {
    if (m_oLevel.Size() != 0) {
        if (m_oLevel.Last().eKind == Kind::Attributes) Demote();
        Level& o = m_oLevel.Last();
        if (o.eKind == Kind::Object && m_eMember == Member::Attributes) {
            m_eMember = Member::Successor;
            m_oAttribute.Truncate(0);
            m_oAttributeText.Truncate(0);
            m_oLevel.Add(Level{.uNode = o.uNode, .eKind = Kind::Attributes});
            return true;
        }
        TakeKey(o);
    }
    Open(Append(Node::Empty, 0), Kind::Object);
    return true;
}

bool Loader::EndObject(u2_t) {
    if (m_oLevel.Last().eKind == Kind::Attributes) {
        if (m_oAttribute.Size() != 0) {
            SetAttributes(m_oLevel.Last().uNode);
            m_oLevel.Pop();
            m_oLevel.Last().bTold = true;
            m_oLevel.Last().uAttributes += static_cast<u2_t>(m_oAttribute.Size());
            return true;
        }
        m_oName.Truncate(0);
        Demote();
    }
    m_uNode = m_oLevel.Last().uNode;
    const bool bValue = m_oPending.bValue;
    if (!bValue && m_oPending.IsThere()) BeginMember(m_oLevel.Last());
    const bool bEmpty = !m_oLevel.Last().bMembers && !m_oLevel.Last().bTold && !bValue;
    m_oLevel.Pop();
    --m_uDepth;
    if (bValue) SetValue(m_uNode);
    if (bEmpty) SetMark(m_uNode, {false, Mark::Object});
    if (m_uNode != 0) m_uNode = m_oBase.m_oNode(m_uNode).Pred();
    return true;
}

bool Loader::StartArray() {
    if (m_oLevel.Size() != 0) {
        if (m_oLevel.Last().eKind == Kind::Attributes) Demote();
        Level& o = m_oLevel.Last();
        if (o.eKind == Kind::Object) {
            TakeKey(o);
            BeginMember(o);
            m_oLevel.Add(Level{.uNode = o.uNode, .uKey = o.uKey, .eKind = Kind::Run});
            return true;
        }
    }
    Open(Append(Node::Empty, 0), Kind::List);
    return true;
}

bool Loader::EndArray(u2_t) {
    const Level o = m_oLevel.Last();
    if (o.eKind == Kind::List) {
        m_oLevel.Pop();
        --m_uDepth;
        SetMark(o.uNode, {false, Mark::List});
        if (o.uNode != 0) m_uNode = m_oBase.m_oNode(o.uNode).Pred();
        return true;
    }
    if (o.uCount == 0) SetMark(Append(Node::Empty, 0), {false, Mark::List});
    if (o.uCount == 1) {
        // Who has named one himself keeps it.
        const u2_t uKey = m_oBase.m_oAtt.Names().Find(MARK);
        const bool bOther = o.eMark == Mark::None && uKey != Data_Base::NONE &&
                            m_oBase.AttributeOf(o.uLast, uKey) != nullptr;
        if (!bOther) SetMark(o.uLast, {true, o.eMark});
    }
    m_oLevel.Pop();
    return true;
}

void Loader::SetMark(u2_t uId, const Mark& oMark) {
    m_oBase.SetAttribute(uId, MARK, oMark.Value());
    if (m_oLevel.Size() != 0) m_oLevel.Last().eMark = oMark.eKind;
    if (++m_uAttributes >= detail::NODES_BETWEEN_CHECKS) CheckMemory();
}

// ---- members that are no successors -------------------------------------------

bool Loader::OnScalar(const Scalar& o) {
    if (m_oLevel.Size() != 0) {
        if (m_oLevel.Last().eKind == Kind::Attributes) {
            if (o.eKind == Scalar::Text && !o.bNul && m_oName.Size() != 0) {
                AddAttribute(o.sText);
                return true;
            }
            Demote();
        }
        Level& oLevel = m_oLevel.Last();
        if (oLevel.eKind == Kind::Object && m_eMember != Member::Successor) {
            if (TakeSpecial(oLevel, o)) {
                m_eMember = Member::Successor;
                return true;
            }
            TakeKey(oLevel);
        }
    }
    AppendScalar(o);
    return true;
}

bool Loader::TakeSpecial(Level& oLevel, const Scalar& o) {
    switch (m_eMember) {
        case Member::Name:
            if (oLevel.uNode != 0 || o.eKind != Scalar::Text || o.sText.empty()) return false;
            if (m_oBase.m_oNode(0).uKey != 0 || o.bNul) return false;
            oLevel.bTold = true;
            m_oBase.m_oNode(0).uKey = m_oBase.m_oName.Intern(o.sText);
            return true;
        case Member::Type:
            if (oLevel.bMembers || o.eKind != Scalar::Text) return false;
            if (m_oPending.eType != Node::Tree) return false;
            m_oPending.eType = TypeOf(o.sText);
            return m_oPending.eType != Node::Tree;
        case Member::Value:
            if (oLevel.bMembers || m_oPending.bValue) return false;
            m_oPending.bValue = true;
            m_oPending.eKind = o.eKind;
            m_oPending.bNul = o.bNul;
            Assign(m_oPendingText, o.sText);
            return true;
        default: return false;
    }
}

void Loader::AddAttribute(std::string_view sValue) {
    // An object may tell of them more than once.
    const u3_t uBefore = m_oLevel(m_oLevel.Size() - 2).uAttributes;
    if (uBefore + m_oAttribute.Size() >= m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    m_oAttributeText.Add(m_oName.Beg(), m_oName.Size());
    const std::size_t uName = m_oAttributeText.Size();
    m_oAttributeText.Add(sValue.data(), sValue.size());
    m_oAttribute.Add(Ends{uName, m_oAttributeText.Size()});
}

void Loader::SetAttributes(u2_t uId) {
    // They cost memory like nodes.
    if ((m_uAttributes += m_oAttribute.Size()) >= detail::NODES_BETWEEN_CHECKS) CheckMemory();
    const std::string_view sAll = ViewOf(m_oAttributeText);
    std::size_t uBegin = 0;
    for (const Ends& o : m_oAttribute) {
        m_oBase.SetAttribute(uId, sAll.substr(uBegin, o.uName - uBegin),
                             sAll.substr(o.uName, o.uValue - o.uName));
        uBegin = o.uValue;
    }
}

void Loader::Demote() {
    m_oLevel.Pop();
    m_oLevel.Last().uKey = m_oBase.m_oName.Intern(ATTRIBUTES);
    Open(Append(Node::Empty, 0), Kind::Object);
    const std::string_view sAll = ViewOf(m_oAttributeText);
    std::size_t uBegin = 0;
    for (const Ends& o : m_oAttribute) {
        const std::string_view sName = sAll.substr(uBegin, o.uName - uBegin);
        m_oLevel.Last().uKey = m_oBase.m_oName.Intern(SuccessorOf(sName));
        AppendText(sAll.substr(o.uName, o.uValue - o.uName));
        uBegin = o.uValue;
    }
    (void)Key(m_oName.Beg(), static_cast<u2_t>(m_oName.Size()), true);
}

void Loader::DemotePending() {
    const Pending oPending = m_oPending;
    m_oPending = {};
    Level& o = m_oLevel.Last();
    if (oPending.eType != Node::Tree) {
        o.uKey = m_oBase.m_oName.Intern(TYPE);
        AppendText(Node::TypeName(oPending.eType));
    }
    if (!oPending.bValue) return;
    o.uKey = m_oBase.m_oName.Intern(VALUE);
    AppendScalar({oPending.eKind, ViewOf(m_oPendingText), oPending.bNul});
}

}  // namespace json

void Json_Load(Data& oTree, File_Stream& oIn, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Json_Load", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        Data_Base& b = json::Access::Restart(oTree);
        xml::Source oSource(oIn, xml::Declares::No);
        json::Loader oLoader(b, oSource, oLimits);
        {
            const auto oOnExit = detail::ReportOnExit(pReport, [&](Load_Report& oReport) {
                const xml::Source::Place oPlace = oSource.PlaceOf(oLoader.Position());
                oReport.m_uOffset = oPlace.uOffset;
                oReport.m_uLine = oPlace.uLine;
                oReport.m_uColumn = oPlace.uColumn;
                if (oLoader.LinkOffset() != 0) {
                    oReport.m_uOffset = oLoader.LinkOffset();
                    oReport.m_uLine = oReport.m_uColumn = 0;
                }
                oReport.m_uRounded = oLoader.Rounded();
                oReport.m_uWork = oLoader.Work();
                detail::ReportNode(oReport, oTree, oLoader.CurrentNode());
            });
            oLoader.Run();
            oTree.SetAccessMode();
            oLoader.ResolveLinks();
        }
        const u3_t uLeft = oSource.Leave(oLoader.Position());
        if (pReport != nullptr) pReport->m_uBytesLeft = std::max(uLeft, BytesLeft(oIn));
        oTree.Shrink();
    });
}

void Json_LoadString(Data& oTree, std::string_view sText, const Limits& oLimits,
                     Load_Report* pReport) {
    return Where("vok::Json_LoadString", [&] {
        File_Buf oIn(sText.data(), sText.size());
        Json_Load(oTree, oIn, oLimits, pReport);
    });
}

bool Json_CanLoad(std::string_view sStart) noexcept {
    // Of UTF-16 every other byte is a NUL here.
    if (sStart.starts_with("\xEF\xBB\xBF")) sStart.remove_prefix(3);
    if (sStart.starts_with("\xFF\xFE") || sStart.starts_with("\xFE\xFF")) sStart.remove_prefix(2);
    const std::size_t u = sStart.find_first_not_of(std::string_view(" \t\r\n\0", 5));
    return u != std::string_view::npos && (sStart[u] == '{' || sStart[u] == '[');
}

}  // namespace vok
