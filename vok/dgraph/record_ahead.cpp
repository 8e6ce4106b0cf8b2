// SPDX-License-Identifier: MIT
// The loop that most records go through which are read one by one.
#include <cstdint>
#include <functional>

#include "vok/dgraph/fast_step.h"
#include "vok/dgraph/record_reader.h"

namespace vok::dgraph {

using detail::Record_Batch;
using detail::Record_Trail;

// A value of one of the frequent types, which begins at p, and what is behind it; null for any
// other and for a node that has successors.
[[gnu::always_inline]] inline const char* RecordReader::TakeLeaf(Record_Batch::Entry& o, u0_t uCode,
                                                                 const char* p,
                                                                 const char* pEnd) const noexcept {
    o.m_sText = {};
    switch (uCode) {
        case CODE_INTEGER: o.SetValue(Data_Node::Integer, Load<u2_t>(p)); return p + 4;
        case CODE_DOUBLE: o.SetValue(Data_Node::Double, Load<u3_t>(p)); return p + 8;
        case CODE_LONG: o.SetValue(Data_Node::Long, Load<u3_t>(p)); return p + 8;
        case CODE_BOOLEAN: o.SetValue(Data_Node::Boolean, *p != 0); return p + 1;
        case CODE_STRING: {
            const std::size_t uText = Load<u2_t>(p);
            p += LENGTH_SIZE;
            if (uText - 1 >= static_cast<std::size_t>(pEnd - p)) return nullptr;
            if (uText > m_oLimits.m_uTextBytes || p[uText - 1] != 0) return nullptr;
            o.m_sText = {p, uText - 1};
            if (!IsAsciiText(p, uText - 1) && !IsUtf8Text(p, uText - 1)) return nullptr;
            o.SetValue(Data_Node::String, 0);
            return p + uText;
        }
        case CODE_NONE:
            if (Load<u2_t>(p) != 0) return nullptr;
            o.SetValue(Data_Node::Empty, 0);
            return p + 4;
        default: return nullptr;
    }
}

// Whether an expected name belongs behind another one, Hash::NONE for none. What came in front of
// it when it was noted has been compared.
[[gnu::always_inline]] inline bool RecordReader::IsInOrder(Hash_Guess::Expected oExpected,
                                                           u2_t uBehind, u2_t uLast) noexcept {
    return uLast == Hash::NONE || (uLast == uBehind && oExpected.IsAscending()) ||
           !m_oTrail.Names().IsLess(oExpected.Key(), uLast);
}

// The key of the name at p, 0 where there is none for this. A new one enters the table if it may,
// unless that is to start again.
inline u2_t RecordReader::FindName(const char* p, std::size_t uSeen, std::size_t uStep, bool bNew) {
    Data_Names& oNames = m_oTrail.Names();
    if (const u2_t uKey = GuessName(oNames, p, uSeen); uKey != 0) return uKey;
    const std::size_t uName = NameBytes(p, uStep);
    if (uName == 0 || !IsVerbatim(p, uName)) return 0;
    if (bNew && !m_oTrail.IsFull()) return oNames.InternAs({p, uName}, Hash_Guess::DGRAPH);
    const u2_t uKey = oNames.Find({p, uName});
    if (uKey == Hash::NONE) return 0;
    oNames.Guess().TryNote(uKey, oNames.Size());
    return uKey;
}

// A head other than the one that is expected, and the next one of its run, behind a record of the
// name uLast that is the last of uRun; of a name that is new if bNew.
[[gnu::noinline]] RecordReader::Head RecordReader::FindHead(const char* p, const char* pEnd,
                                                            u2_t uLast, u2_t uRun, bool bNew) {
    const std::size_t uStep = Load<u2_t>(p);
    p += LENGTH_SIZE;
    const auto uSeen = static_cast<std::size_t>(pEnd - p);
    if (uSeen < uStep + 1 + LARGEST_VALUE || uStep > m_oLimits.m_uTextBytes) return {0, nullptr};
    const u2_t uKey = FindName(p, uSeen, uStep, bNew);
    if (uKey == 0) return {0, nullptr};
    const Data_Names& oNames = m_oTrail.Names();
    const std::size_t uName = oNames(uKey).uLength;
    const u2_t uIndex = uKey == uLast ? uRun : 0;
    if (!IsIndex(p + uName + 1, uStep - uName - 1, uIndex)) return {0, nullptr};
    const bool bInOrder = uLast == Hash::NONE || !oNames.IsLess(uKey, uLast);
    // The first one that is not is for the slow way, which notes it.
    return {uKey, bInOrder || !m_bInOrder ? p + uStep : nullptr};
}

// What there is to know of the last level is in locals; the trail has the others. Nothing is
// changed but the trail, and by names that are new, which only the first record may have: what
// fails in front of it has read nothing.
std::size_t RecordReader::ReadSeveral(std::size_t uMost) {
    Data_Names& oNames = m_oTrail.Names();
    Hash_Guess& oGuess = oNames.Guess();
    Record_Batch::Entry* const pFirst = m_oBatch.Start(m_oTrail, uMost);
    Record_Batch::Entry* const pLast = pFirst + uMost;
    Record_Batch::Entry* pEntry = pFirst;
    const char* p = m_oWindow.Peek();
    const char* const pEnd = p + m_oWindow.AtHand();
    // What is added to an address is an offset.
    const u3_t uOrigin = m_oWindow.Offset() - reinterpret_cast<std::uintptr_t>(p);
    // Behind it there is no room for a head that is compared as a whole.
    const bool bHeads = m_oWindow.AtHand() >= m_uHeadRoom;
    const char* const pLastHead = bHeads ? pEnd - m_uHeadRoom : nullptr;
    const char* pBefore = m_oBefore.Get();
    Record_Trail::Level o = m_oTrail.Last();
    std::size_t uLevels = m_oTrail.Size();
    u2_t uBehind = oGuess.Second();  // the name that came last
    std::size_t uClosed = 0;         // levels, since the last record
    while (pEntry != pLast) {
        if (o.uPending == 0) {
            if (uLevels - 1 == m_oBatch.Lowest()) break;
            m_oTrail.Last() = o;
            m_oTrail.Close();
            o = m_oTrail.Last();
            pBefore = m_oBefore.At(--uLevels);
            ++uClosed;
            continue;
        }
        if (std::greater<const char*>()(p, pLastHead)) break;
        const Hash_Guess::Expected oExpected = oGuess.GetExpected(uBehind);
        const char* pCode = MatchHead(oGuess, oExpected, p);
        u2_t uKey = oExpected.Key();
        if (pCode != nullptr) {
            if (uKey == o.uKey) break;
            if (!IsInOrder(oExpected, uBehind, o.uKey) && m_bInOrder) break;
        } else {
            if (pBefore != nullptr) pCode = MatchNext(p, pBefore);
            uKey = o.uKey;
            if (pCode == nullptr) {
                oGuess.Confirm(uBehind);
                const Head oHead = FindHead(p, pEnd, o.uKey, o.uRun, pEntry == pFirst);
                if (oHead.pCode == nullptr) break;
                pCode = oHead.pCode;
                uKey = oHead.uKey;
            }
        }
        const auto uCode = static_cast<u0_t>(*pCode++);
        const u2_t uCount = uCode == CODE_NONE ? Load<u2_t>(pCode) : 0;
        const char* pBehind = pCode + sizeof(uCount);
        if (uCount == 0) {
            pBehind = TakeLeaf(*pEntry, uCode, pCode, pEnd);
            if (pBehind == nullptr) break;
        } else {
            if (uLevels >= m_oLimits.m_uDepth || !m_oTrail.HasRoom()) break;
            pEntry->m_sText = {};
            pEntry->SetValue(Data_Node::Tree, uCount);
        }
        uBehind = uKey;
        if (uKey != o.uKey) o.uRun = 0;
        o.uKey = uKey;
        pEntry->m_uDepth = static_cast<u2_t>(uLevels - 1);
        pEntry->m_iIndex = static_cast<i2_t>(o.uRun++);
        pEntry->m_sName = oNames(uKey).View();
        pEntry->m_uOffset = reinterpret_cast<std::uintptr_t>(p) + uOrigin;
        ++pEntry;
        --o.uPending;
        uClosed = 0;
        pBefore = p;
        p = pBehind;
        if (uCount == 0) continue;
        m_oTrail.OpenBelow(o, uCount);
        m_oBefore.Keep(uLevels++, pBefore);
        pBefore = nullptr;
        o = {Hash::NONE, 0, Hash::NONE, uCount};
    }
    oGuess.Confirm(uBehind);
    m_oTrail.Last() = o;
    // The last record stands on its level for as long as it is the last one.
    m_oTrail.Reopen(uClosed);
    const auto uRead = static_cast<std::size_t>(pEntry - pFirst);
    m_oBatch.SetSize(uRead);
    const bool bLeaf = uClosed != 0 && uRead != 0;  // it was the last one of its level
    m_oBefore.Set(bLeaf ? m_oWindow.At(pEntry[-1].m_uOffset) : pBefore);
    m_oWindow.Skip(static_cast<std::size_t>(p - m_oWindow.Peek()));
    return uRead;
}

bool RecordReader::ReadNextTree() {
    const char* const pBefore = m_oBefore.Get();
    if (pBefore == nullptr || m_oWindow.AtHand() < m_uHeadRoom) return false;
    if (m_uNodes >= m_oLimits.m_uNodes || m_oTrail.Size() >= m_oLimits.m_uDepth) return false;
    if (!m_oTrail.HasRoom()) return false;
    const char* const p = m_oWindow.Peek();
    const char* const pCode = MatchNext(p, pBefore);
    if (pCode == nullptr || *pCode != CODE_NONE) return false;
    const auto uCount = Load<u2_t>(pCode + 1);
    if (uCount == 0) return false;
    StandAtNext(m_oWindow.Offset(), uCount);
    --m_oTrail.Last().uPending;
    m_oBefore.Keep(m_oTrail.Size(), p);
    m_oBefore.Set(nullptr);
    m_oTrail.OpenBelow(uCount);
    ++m_uNodes;
    m_bNamed = true;
    m_oWindow.Skip(static_cast<std::size_t>(pCode + 1 + sizeof(uCount) - p));
    return true;
}

const Data_Record* RecordReader::ReadAhead() {
    // That of the root is like no other.
    if (m_oTrail.Size() == 1) return nullptr;
    if (IsPatient() && ReadNextTree()) return this;
    const std::size_t uRead = ReadSeveral(MostAhead(m_oLimits.m_uNodes - m_uNodes));
    m_uNodes += uRead;
    m_bNamed = m_bNamed || uRead != 0;
    return uRead != 0 ? m_oBatch.begin() : nullptr;
}

void RecordReader::GoBack(const Data_Record* pGiven) noexcept {
    if (pGiven == this) return;
    const auto& o = static_cast<const Record_Batch::Entry&>(*pGiven);
    const Record_Batch::Entry* const pNext = &o + 1;  // it is there where something is undone
    m_uNodes -= m_oBatch.Size();
    const bool bBack = GoBackTo(o, [&](const Record_Batch::Entry& oEntry, u2_t uKey) {
        m_oTrail.Note(uKey, static_cast<u2_t>(oEntry.m_iIndex));
        --m_oTrail.Last().uPending;
        // There was room for it.
        if (oEntry.GetType() == Data_Node::Tree) m_oTrail.Open(oEntry.GetSuccs());
    });
    m_uNodes += m_oBatch.Size();
    if (!bBack) return;
    m_oWindow.GoBack(m_oWindow.Offset() - pNext->m_uOffset);
    m_oBefore.Forget();
}

}  // namespace vok::dgraph
