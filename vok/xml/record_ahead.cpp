// SPDX-License-Identifier: MIT
// The loop that most elements go through which are read one by one.
#include "vok/base/utf8.h"
#include "vok/xml/fast_text.h"
#include "vok/xml/record_reader.h"

namespace vok::xml {

using detail::Record_Batch;
using detail::Record_Trail;
using namespace fast;

namespace {

[[gnu::always_inline]] inline bool TakeText(Record_Batch::Entry& o, std::string_view sText,
                                            const Limits& oLimits) noexcept {
    if (sText.size() > oLimits.m_uTextBytes) return false;
    if (!IsAsciiText(sText.data(), sText.size()) && !IsUtf8Text(sText.data(), sText.size())) {
        return false;
    }
    o.SetValue(Data_Node::String, 0);
    o.m_sText = sText;
    return true;
}

}  // namespace

// The key of the name at p, 0 for one that needs a second look.
[[gnu::always_inline]] inline u2_t RecordReader::FindName(const char* p, bool bNew) {
    const auto uRoom = static_cast<std::size_t>(m_pEnd - p);
    Data_Names& oNames = m_oTrail.Names();
    const auto oIsHere = [&](u2_t uKey) {
        const Hash_Text& oText = oNames(uKey);
        return uKey != 0 && oText.StandsAt(p, uRoom) && !Is(p[oText.uLength], NAME) &&
               oNames.IsXmlVerbatim(uKey);
    };
    const u2_t uFirst = oNames.Guess().First();
    if (!oIsHere(uFirst)) {
        if (oIsHere(oNames.Guess().Second())) return oNames.Guess().Second();
        return ScanName(p, bNew);
    }
    oNames.Guess().Confirm(uFirst);
    return uFirst;
}

// A new one enters the table if it may, unless that is to start again.
[[gnu::noinline]] u2_t RecordReader::ScanName(const char* p, bool bNew) {
    u0_t uSeen;
    const std::string_view sName = Rest(p).substr(0, AsciiNameLength(Rest(p), uSeen));
    const char* const pStop = p + sName.size();
    if (sName.empty() || !Is(*p, NAME_START) || pStop == m_pEnd || Is(*pStop, NAME)) return 0;
    if ((uSeen & ESCAPE) != 0 && HasEscapes(sName)) return 0;
    Data_Names& oNames = m_oTrail.Names();
    if (bNew && !m_oTrail.IsFull()) return oNames.InternAs(sName, Hash_Guess::XML);
    const u2_t uKey = oNames.Find(sName);
    if (uKey == Hash::NONE) return 0;
    oNames.Guess().TryNote(uKey, oNames.Size());
    return uKey;
}

// What stands behind "<name" of an element: its value, and where it ends, or in front of the first
// one in it; null for what is not like most are.
[[gnu::always_inline]] inline const char* RecordReader::TakeContent(Record_Batch::Entry& o,
                                                                    const char* p,
                                                                    const Hash_Text& oName) const {
    o.m_sText = {};
    if (*p != '>') {
        if (!StartsWith(p, TYPE_START)) return nullptr;
        p += TYPE_START.size();
        Scalar oScalar;
        if (!oScalar.Take(p, m_pEnd) || oScalar.uBytes > m_oLimits.m_uTextBytes) return nullptr;
        o.SetValue(oScalar.eType, oScalar.uValue);
    } else if (++p; *p == '<' && p[1] == '!') {
        if (!StartsWith(p, CDATA)) return nullptr;
        const char* const pText = p + CDATA.size();
        const char* const pStop = EndOfCdata(pText, m_pEnd);
        if (pStop == nullptr || !TakeText(o, Between(pText, pStop), m_oLimits)) return nullptr;
        p = pStop + CDATA_END.size();
    } else {
        const char* const pText = p;
        const TextRun oRun(p, m_pEnd);
        p = oRun.pEnd;
        if (m_pEnd - p < END_TAG) return nullptr;
        const std::string_view sText = Between(pText, p);
        if (p[1] != '/') {
            if (IsMarkup(p[1]) || !IsBlank(sText)) return nullptr;
            o.SetValue(Data_Node::Tree, Data_Record::UNKNOWN);
            return p;
        }
        o.SetValue(Data_Node::Empty, 0);
        if (!sText.empty() && (oRun.bReference || !TakeText(o, sText, m_oLimits))) return nullptr;
    }
    return EndsHere(oName, p, m_pEnd) ? p + 2 + oName.uLength + 1 : nullptr;
}

// The end tag at p of the element that the last level is in; null for any other, and for the one
// that ends the document.
[[gnu::always_inline]] inline const char* RecordReader::TakeEnd(const char* p) const noexcept {
    if (m_oTrail.Size() <= 2) return nullptr;
    const Hash_Text& oName = m_oTrail.NameText(m_oTrail.At(m_oTrail.Size() - 2).uKey);
    return EndsHere(oName, p, m_pEnd) ? p + 2 + oName.uLength + 1 : nullptr;
}

// What there is to know of the last level is in locals; the trail has the others. Nothing is
// changed but the trail, and by names that are new, which only the first element may have: what
// fails in front of it has read nothing.
std::size_t RecordReader::ReadSeveral(std::size_t uMost) {
    Data_Names& oNames = m_oTrail.Names();
    Record_Batch::Entry* const pFirst = m_oBatch.Start(m_oTrail, uMost);
    Record_Batch::Entry* const pLast = pFirst + uMost;
    Record_Batch::Entry* pEntry = pFirst;
    const u3_t uOffset = m_oSource.OffsetOf(m_p);
    const bool bAsItIs = !m_oSource.IsConverted();
    const char* p = m_p;
    m_uReordered = m_oFound.uReordered;
    Record_Trail::Level o = m_oTrail.Last();
    std::size_t uClosed = 0;  // levels, since the last record
    while (pEntry != pLast) {
        while (p != m_pEnd && Is(*p, BLANK)) ++p;
        if (m_pEnd - p < END_TAG || *p != '<') break;
        if (p[1] == '/') {
            const char* const pBehind = TakeEnd(p);
            if (pBehind == nullptr || m_oTrail.Size() - 1 == m_oBatch.Lowest()) break;
            p = pBehind;
            m_oTrail.Last() = o;
            m_oTrail.Close();
            o = m_oTrail.Last();
            ++uClosed;
            continue;
        }
        const char* const pBegin = p++;
        const u2_t uKey = FindName(p, pEntry == pFirst);
        if (uKey == 0) break;
        const Hash_Text& oName = oNames(uKey);
        p += oName.uLength;
        if (m_pEnd - p < ROOM) break;
        const char* const pBehind = TakeContent(*pEntry, p, oName);
        if (pBehind == nullptr) break;
        const bool bTree = pEntry->GetType() == Data_Node::Tree;
        if (bTree && (m_oTrail.Size() >= m_oLimits.m_uDepth || !m_oTrail.HasRoom())) break;
        if (Record_Trail::IsBehindHigher(oNames, o, uKey)) {
            // The first one that is not in order is for the slow way, which notes it.
            if (m_bInOrder) break;
            ++m_oFound.uReordered;
        }
        if (uKey != o.uKey) o.uRun = 0;
        o.uKey = uKey;
        pEntry->m_uDepth = static_cast<u2_t>(m_oTrail.Size() - 1);
        pEntry->m_iIndex = static_cast<i2_t>(o.uRun++);
        pEntry->m_sName = oName.View();
        pEntry->m_uOffset =
            bAsItIs ? uOffset + static_cast<u3_t>(pBegin - m_p) : m_oSource.OffsetOf(pBegin);
        pEntry->m_pBehind = p = pBehind;
        ++pEntry;
        uClosed = 0;
        if (!bTree) continue;
        m_oTrail.OpenBelow(o, 0);
        o = {};
    }
    m_oTrail.Last() = o;
    // What ends behind the last one is open for as long as it is that.
    m_oTrail.Reopen(uClosed);
    const auto uRead = static_cast<std::size_t>(pEntry - pFirst);
    m_oBatch.SetSize(uRead);
    if (uRead != 0) m_p = pEntry[-1].m_pBehind;
    return uRead;
}

bool RecordReader::ReadNextTree(const char* p) {
    const char* const pBegin = p++;
    const u2_t uKey = m_oTrail.Last().uKey;
    if (uKey == Hash::NONE || uKey != m_oTrail.Last().uMost) return false;
    if (m_uNodes >= m_oLimits.m_uNodes || !m_oTrail.HasRoom()) return false;
    if (!m_oTrail.Names().IsXmlVerbatim(uKey)) return false;
    const Hash_Text& oName = m_oTrail.NameText(uKey);
    if (!oName.StandsAt(p, static_cast<std::size_t>(m_pEnd - p))) return false;
    p += oName.uLength;
    if (*p++ != '>') return false;
    const TextRun oRun(p, m_pEnd);
    if (m_pEnd - oRun.pEnd < END_TAG || oRun.pEnd[1] == '/' || IsMarkup(oRun.pEnd[1])) return false;
    if (!IsBlank(Between(p, oRun.pEnd))) return false;
    StandAtNext(m_oSource.OffsetOf(pBegin), UNKNOWN);
    m_oNumber.Truncate(0);
    m_uLinked = NO_NUMBER;
    m_bTarget = false;
    m_oTrail.OpenBelow(0);
    ++m_uNodes;
    ++m_uElements;
    ++m_uOpen;
    m_p = oRun.pEnd;
    return true;
}

// Ends come in front of elements: they belong to no batch.
const Data_Record* RecordReader::ReadAhead() {
    const char* p = m_p;
    for (;; m_p = p) {
        while (p != m_pEnd && Is(*p, BLANK)) ++p;
        if (m_pEnd - p < END_TAG || *p != '<') return nullptr;
        if (p[1] != '/') break;
        p = TakeEnd(p);
        if (p == nullptr) return nullptr;
        m_oTrail.Close();
        --m_uOpen;
    }
    if (m_uOpen >= m_oLimits.m_uDepth) return nullptr;
    if (IsPatient() && ReadNextTree(p)) return this;
    const std::size_t uRead = ReadSeveral(MostAhead(m_oLimits.m_uNodes - m_uNodes));
    m_uNodes += uRead;
    m_uElements += static_cast<u2_t>(uRead);
    m_uOpen = m_oTrail.Size() - 1;
    return uRead != 0 ? m_oBatch.begin() : nullptr;
}

void RecordReader::GoBack(const Data_Record* pGiven) noexcept {
    if (pGiven == this) return;
    const auto& o = static_cast<const Record_Batch::Entry&>(*pGiven);
    m_uNodes -= m_oBatch.Size();
    m_uElements -= static_cast<u2_t>(m_oBatch.Size());
    u3_t uReordered = m_uReordered;
    const bool bBack = GoBackTo(o, [&](const Record_Batch::Entry& oEntry, u2_t uKey) {
        uReordered += m_oTrail.IsBehindHigher(uKey);
        m_oTrail.Note(uKey, static_cast<u2_t>(oEntry.m_iIndex));
        if (oEntry.GetType() == Data_Node::Tree) m_oTrail.Open(0);
    });
    m_uNodes += m_oBatch.Size();
    m_uElements += static_cast<u2_t>(m_oBatch.Size());
    m_oNumber.Truncate(0);
    m_uLinked = NO_NUMBER;
    m_bTarget = false;
    if (!bBack) return;
    m_oFound.uReordered = uReordered;
    m_uOpen = m_oTrail.Size() - 1;
    m_p = o.m_pBehind;
}

}  // namespace vok::xml
