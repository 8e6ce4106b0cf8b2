// SPDX-License-Identifier: MIT
#include "vok/xml/record_reader.h"

#include <utility>

#include "vok/base/base64.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/data/report.h"
#include "vok/xml/scalar.h"

namespace vok::xml {

RecordReader::RecordReader(Source& oSource, const Limits& oLimits)
    : Tokens(oSource, Data::XML_KEEP_UNKNOWN, oLimits) {
    CheckLimits();
    BeforeFetch(0);
}

// The source itself, or the first of several; null behind the last one.
const Data_Record* RecordReader::ReadRecord() {
    while (!m_bReady && !m_bDone) {
        if (m_uOpen != 0 && !m_bHeld) {
            if (const Data_Record* p = ReadAhead(); p != nullptr) return p;
        }
        ReadToken();
    }
    return std::exchange(m_bReady, false) ? this : nullptr;
}

const Data_Record* RecordReader::Next() {
    for (;;) {
        const Data_Record* p = ReadRecord();
        if (p == nullptr) {
            if (!std::exchange(m_bEnd, true)) m_uLeft = m_oSource.Leave(m_p);
            return nullptr;
        }
        if (p = FirstShown(p); p != nullptr) return p;
    }
}

// A tree is built by what loads whole documents, which counts on from here.
void RecordReader::BuildBelow(Data& /*oTree*/, Data_Base& oBase, Built& oBuilt) {
    if (!m_oLoader.has_value()) m_oLoader.emplace(m_oSource, m_uFlags, m_oLimits);
    detail::XmlLoader& oLoader = *m_oLoader;
    const u3_t uReordered = m_oFound.uReordered;
    // What it has come to counts whether it ends with an error or not.
    const detail::OnExit oOnExit([&] {
        TakeOver(oLoader);
        m_uNodes += oBase.m_oNode.Size() - 1;
        m_bInOrder = m_bInOrder && m_oFound.uReordered == uReordered;
        m_bDone = m_uOpen == 0;
        oBuilt.uNode = oLoader.CurrentNode();
    });
    oLoader.RunBelow(oBase, *this, m_uNodes);
    m_oTrail.Close();
    oLoader.VisitNumbers(
        [&](u3_t uNumber, u2_t uId) {
            oBuilt.oNumber.Add(Built::Numbered{uNumber, uId});
        },
        [&](u3_t uNumber, u2_t uId) {
            // Of several that one node has the last one counts.
            if (!oBuilt.aoLink.empty() && oBuilt.aoLink.back().uId == uId) oBuilt.aoLink.pop_back();
            const bool bEmpty = oBase.m_oNode(uId).GetType() == Data_Node::Empty;
            char s[NUMBER_ROOM + 2];
            oBuilt.aoLink.push_back({uId, uNumber, bEmpty, Str(FormatNodeNumber(uNumber, s))});
        });
}

void RecordReader::AddTo(Load_Report& oReport) const {
    m_oFound.AddTo(oReport);
    const Source::Place oPlace = m_oSource.PlaceOf(m_p);
    oReport.m_uOffset = oPlace.uOffset;
    oReport.m_uLine = oPlace.uLine;
    oReport.m_uColumn = oPlace.uColumn;
    oReport.m_uNodes = m_uNodes;
    oReport.m_uWork = m_oWork.Done();
    oReport.m_uBytesLeft = m_uLeft;
    // The innermost open element.
    const std::size_t uLevel = m_oTrail.Size() - 1;
    oReport.m_oPath = m_oTrail.PathTo(uLevel - (!m_bHeld && uLevel != 0));
}

// ---- elements -----------------------------------------------------------------

void RecordReader::CheckLimits() const {
    if (m_uNodes >= m_oLimits.m_uNodes) m_oLimits.RaiseExceeded(&Limits::m_uNodes);
}

void RecordReader::BeforeFetch(u3_t uBytes) {
    if (m_oWork.IsMetered()) {
        (void)m_oWork.CheckMemory(m_oSource.Held() + m_oText.Capacity() + uBytes);
    }
}

bool RecordReader::OnStart() {
    if (m_bHeld) {
        EndAsTree();
        return false;
    }
    if (m_uOpen != 0) {
        m_bText = false;
        m_oText.Truncate(0);
        CheckLimits();
        if (m_uOpen >= m_oLimits.m_uDepth) m_oLimits.RaiseExceeded(&Limits::m_uDepth);
        ++m_uNodes;
    }
    Hold();
    if (m_oTag.IsEmpty()) EndAsLeaf();
    return true;
}

void RecordReader::OnEnd(std::string_view sName) {
    // The element stands one level up where others in it came to an end.
    const std::size_t uLevel = m_oTrail.Size() - (m_bHeld ? 1 : 2);
    if (m_oTrail.NameAt(uLevel) != Decoded(sName, m_oNameRoom)) Msg::NoXmlStream();
    if (m_bHeld) return EndAsLeaf();
    m_oTrail.Close();
    CloseElement();
}

void RecordReader::CloseElement() noexcept {
    m_bText = false;
    m_oText.Truncate(0);
    if (--m_uOpen == 0) m_bDone = true;
}

void RecordReader::Hold() {
    m_uOffset = m_oSource.OffsetOf(m_p);
    const std::string_view sName = Decoded(m_oTag.Name(), m_oNameRoom);
    const u2_t uKey = m_oTrail.Intern(sName);
    if (m_oTrail.IsBehindHigher(uKey)) {
        ++m_oFound.uReordered;
        m_bInOrder = false;
    }
    m_oTrail.Note(uKey, uKey == m_oTrail.Last().uKey ? m_oTrail.Last().uRun : 0);
    StandAtLast();
    SetValue(Data_Node::Empty, 0);
    m_sText = {};
    m_uLinked = NO_NUMBER;
    m_bTarget = false;
    m_oNumber.Truncate(0);
    m_bHeld = true;
    ++m_uOpen;
    ++m_uElements;
    if (!HasEscapes(m_oTag.Name())) m_oTrail.Names().SetXmlVerbatim(uKey);
    m_oAttribute.Truncate(0);
    if (m_oTag.Attributes().Size() != 0) TakeAttributes();
}

void RecordReader::TakeAttributes() {
    const Arr<Tag::Attribute>& oAttributes = m_oTag.Attributes();
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    m_oAttText.Truncate(0);
    m_oAttEnd.Truncate(0);
    for (const Tag::Attribute& o : oAttributes) {
        if (o.sName == DT_DECLARATION) continue;
        const bool bType = o.sName == TYPE || o.sName == "dt:type";
        if (bType && TakeType(o.sValue)) continue;
        if (o.sName == NODE_ID) {
            const u3_t uNumber = ParseNodeNumber(o.sValue);
            if (uNumber != NO_NUMBER) m_oNumber.Add(uNumber);
        } else if (o.sName == NODE_REFERENCE) {
            const u3_t uNumber = ParseNodeNumber(o.sValue);
            if (uNumber != NO_NUMBER) m_uLinked = uNumber;
            m_bTarget = m_uLinked != NO_NUMBER;
        } else if (o.sName != REFERENCE_TYPE) {
            NoteAttribute(Decoded(o.sName, m_oNameRoom), DecodedValue(o.sValue, m_oValueRoom));
        }
    }
    ShowAttributes();
}

bool RecordReader::TakeType(std::string_view sType) {
    const TypeName* pType = FindType(sType);
    if (pType == nullptr) return false;
    SetValue(pType->eType, SeedOf(*pType));
    m_auQuad = {};
    return true;
}

void RecordReader::NoteAttribute(std::string_view sName, std::string_view sValue) {
    const Utf8_Text oName(sName);
    if (oName.Len() == 0) Msg::UnallowedAttribute("");
    const Utf8_Text oValue(sValue);
    for (const std::string_view s : {oName.View(), oValue.View()}) {
        m_oAttText.Add(s.data(), s.size());
        m_oAttEnd.Add(m_oAttText.Size());
    }
}

void RecordReader::ShowAttributes() {
    std::size_t uAt = 0;
    const auto oNext = [&](std::size_t u) {
        const std::string_view s(m_oAttText.Beg() + uAt, m_oAttEnd(u) - uAt);
        uAt = m_oAttEnd(u);
        return s;
    };
    for (std::size_t u = 0; u < m_oAttEnd.Size(); u += 2) {
        const std::string_view sName = oNext(u);
        m_oAttribute.Add(Attribute{sName, oNext(u + 1)});
    }
}

// ---- what an element is ---------------------------------------------------------

void RecordReader::EndAsTree() {
    // Blanks in front of an element mean nothing; any other text is a value.
    if (m_bText && !IsBlank({m_oText.Beg(), m_oText.Size()})) TakeValue();
    m_bText = false;
    m_oText.Truncate(0);
    const bool bFeeds = m_sText.find_first_not_of(" \t\n\r\f") == std::string_view::npos;
    if (m_eType != Data_Node::Empty && !(m_eType == Data_Node::String && bFeeds)) {
        Msg::NodeWithWrongDataType(Str(m_sName).CStr(), Data_Node::TypeName(m_eType));
    }
    SetValue(Data_Node::Tree, UNKNOWN);
    m_oTrail.Open(0);
    m_bHeld = false;
    m_bReady = true;
}

void RecordReader::EndAsLeaf() {
    if (m_bText) TakeValue();
    // One that has a value of its own keeps that as long as its target is not known.
    if (m_uLinked != NO_NUMBER && m_eType == Data_Node::Empty) {
        SetValue(Data_Node::Link, 0);
        char s[NUMBER_ROOM + 2];
        const std::string_view sTarget = FormatNodeNumber(m_uLinked, s);
        m_oValue.Truncate(0);
        m_oValue.Add(sTarget.data(), sTarget.size());
        m_sText = {m_oValue.Beg(), m_oValue.Size()};
    }
    m_bHeld = false;
    m_bReady = true;
    CloseElement();
}

void RecordReader::TakeValue() {
    const std::string_view sText(m_oText.Beg(), m_oText.Size());
    switch (m_eType) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char:
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date:
        case Data_Node::Long: return SetValue(m_eType, ParseScalar(m_eType, sText, m_uValue));
        case Data_Node::Quad: m_auQuad = ParseQuad(sText); return;
        case Data_Node::Binary:
            m_oValue.Truncate(0);
            if (!DecodeBase64(sText, m_oValue)) RaiseUnknownText(sText);
            break;
        default: {
            SetValue(Data_Node::String, 0);
            // What comes behind the element may use the room of its text.
            const std::string_view sValid = Valid(sText, m_oValue);
            if (sValid.data() == sText.data()) {
                m_oValue.Swap(m_oText);
                m_oText.Truncate(0);
                m_sText = sValid;
                return;
            }
        }
    }
    m_sText = {m_oValue.Beg(), m_oValue.Size()};
}

}  // namespace vok::xml
