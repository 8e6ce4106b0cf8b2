// SPDX-License-Identifier: MIT
#include "vok/dgraph/record_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "vok/base/date.h"
#include "vok/data/report.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/fast_step.h"
#include "vok/dgraph/messages.h"

namespace vok::dgraph {

RecordReader::RecordReader(File_Stream& oIn, const Limits& oLimits)
    : m_oWindow(oIn),
      m_oLimits(oLimits),
      // No head is longer than a text may be.
      m_uHeadRoom(oLimits.m_uTextBytes >= MOST_HEAD ? HEAD_ROOM : ~std::size_t{0}) {
    const std::string_view sHeader = m_oWindow.View(HEADER_SIZE);
    dgraph::Version oVersion;
    if (!LoadHeader(sHeader.data(), sHeader.size(), oVersion)) RaiseNoBinaryDGraph();
    if (oVersion.iMajor != 1) RaiseWrongVersion();
    m_uMissingHeader = m_oWindow.Missing();
    m_oTrail.Last().uPending = 1;
    Data oTree;
    oTree.SetToRoot();
    Dgraph_SetVersion(oTree, 1, oVersion.iMinor, oVersion.iPatch);
    m_oTag = oTree.GetUserTag();
}

// ---- the fast way -------------------------------------------------------------------

[[gnu::always_inline]] inline u2_t RecordReader::FindName(const char* p, std::size_t uSeen,
                                                          std::size_t uStep) {
    Data_Names& oNames = m_oTrail.Names();
    if (const u2_t uKey = GuessName(oNames, p, uSeen); uKey != 0) [[likely]] {
        oNames.Guess().Confirm(uKey);
        return uKey;
    }
    const std::size_t uName = NameBytes(p, uStep);
    if (uName == 0 || !IsVerbatim(p, uName)) return 0;
    return m_oTrail.InternAs({p, uName}, Hash_Guess::DGRAPH);
}

// A value of one of the frequent types, which begins at p, and what is behind it; null for any
// other and for a node that has successors.
template <class Record>
[[gnu::always_inline]] inline const char* RecordReader::TakeLeaf(Record& o, u0_t uCode,
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
            p += 4;
            if (uText - 1 >= static_cast<std::size_t>(pEnd - p)) return nullptr;
            if (uText > m_oLimits.m_uTextBytes || p[uText - 1] != 0) return nullptr;
            if (!IsAsciiText(p, uText - 1)) return nullptr;
            o.m_sText = {p, uText - 1};
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

// The same, and for a node that has successors; then the window is behind it.
[[gnu::always_inline]] inline bool RecordReader::ReadFastValue(u0_t uCode, const char* p,
                                                               const char* pEnd) {
    const u2_t uCount = uCode == CODE_NONE ? Load<u2_t>(p) : 0;
    if (uCount != 0) {
        if (m_oTrail.Size() >= m_oLimits.m_uDepth) return false;
        p += 4;
        m_sText = {};
        SetValue(Data_Node::Tree, uCount);
        --m_oTrail.Last().uPending;
        m_oTrail.Open(uCount);
    } else {
        p = TakeLeaf(*this, uCode, p, pEnd);
        if (p == nullptr) return false;
        --m_oTrail.Last().uPending;
    }
    m_oWindow.Skip(static_cast<std::size_t>(p - m_oWindow.Peek()));
    return true;
}

// Whether an expected name belongs behind another one, Hash::NONE for none. What came in front of
// it when it was noted has been compared.
[[gnu::always_inline]] inline bool RecordReader::IsInOrder(Hash_Guess::Expected oExpected,
                                                           u2_t uLast) noexcept {
    const Data_Names& oNames = m_oTrail.Names();
    return uLast == Hash::NONE || (uLast == oNames.Guess().Second() && oExpected.IsAscending()) ||
           !oNames.IsLess(oExpected.Key(), uLast);
}

// The head that is expected.
[[gnu::always_inline]] inline bool RecordReader::ReadExpected(const char* p, Head& o) {
    Hash_Guess& oGuess = m_oTrail.Names().Guess();
    const Hash_Guess::Expected oExpected = oGuess.GetExpected();
    o.pCode = MatchHead(oGuess, oExpected, p);
    if (o.pCode == nullptr) return false;
    o.uKey = oExpected.Key();
    o.uIndex = 0;
    const u2_t uLast = m_oTrail.Last().uKey;
    if (uLast == o.uKey) return false;  // which it is not the first of
    if (!IsInOrder(oExpected, uLast)) m_bInOrder = false;
    oGuess.Confirm(o.uKey);
    return true;
}

// The next one of the run that the record in front belongs to.
[[gnu::always_inline]] inline bool RecordReader::ReadNext(const char* p, Head& o) noexcept {
    if (m_pBefore == nullptr) return false;
    o.pCode = MatchNext(p, m_pBefore);
    if (o.pCode == nullptr) return false;
    o.uKey = m_oTrail.Last().uKey;
    o.uIndex = m_oTrail.Last().uRun;
    return true;
}

[[gnu::always_inline]] inline bool RecordReader::ReadHead(const char* p, std::size_t uAtHand,
                                                          Head& o) {
    constexpr std::size_t LARGEST_VALUE = 8;
    const char* const pStep = p + LENGTH;
    const std::size_t uStep = Load<u2_t>(p);
    const std::size_t uSeen = uAtHand - LENGTH;
    if (uSeen < uStep + 1 + LARGEST_VALUE || uStep > m_oLimits.m_uTextBytes) return false;
    o.uKey = FindName(pStep, uSeen, uStep);
    if (o.uKey == 0) return false;
    const std::size_t uName = m_oTrail.Names()(o.uKey).uLength;
    o.uIndex = o.uKey == m_oTrail.Last().uKey ? m_oTrail.Last().uRun : 0;
    if (!IsIndex(pStep + uName + 1, uStep - uName - 1, o.uIndex)) return false;
    o.pCode = pStep + uStep;
    NoteOrder(o.uKey);
    return true;
}

[[gnu::always_inline]] inline bool RecordReader::ReadFast() {
    const std::size_t uAtHand = m_oWindow.AtHand();
    if (uAtHand < m_uHeadRoom) {
        m_pBefore = nullptr;
        return ReadAtEnd(uAtHand);
    }
    if (m_uNodes >= m_oLimits.m_uNodes) return false;
    const char* const p = m_oWindow.Peek();
    Head o;
    if (!ReadExpected(p, o) && !ReadNext(p, o) && !ReadHead(p, uAtHand, o)) return false;
    if (!ReadBehind(o, p + uAtHand)) return false;
    m_pBefore = m_eType != Data_Node::Tree ? p : nullptr;
    return true;
}

// Where heads are not compared as a whole.
bool RecordReader::ReadAtEnd(std::size_t uAtHand) {
    if (uAtHand < LENGTH || m_uNodes >= m_oLimits.m_uNodes) return false;
    const char* const p = m_oWindow.Peek();
    Head o;
    return ReadHead(p, uAtHand, o) && ReadBehind(o, p + uAtHand);
}

// What is behind a head.
[[gnu::always_inline]] inline bool RecordReader::ReadBehind(const Head& o, const char* pEnd) {
    // The record stands on its level, which may not be the last one any more behind its value.
    const std::size_t uLevel = m_oTrail.Size() - 1;
    if (!ReadFastValue(static_cast<u0_t>(*o.pCode), o.pCode + 1, pEnd)) return false;
    m_uNodes += uLevel != 0;
    m_bNamed = true;
    m_uDepth = static_cast<u2_t>(uLevel);
    m_iIndex = static_cast<i2_t>(o.uIndex);
    m_sName = m_oTrail.Names()(o.uKey).View();
    m_oTrail.NoteAt(uLevel, o.uKey, o.uIndex);
    if (m_oAttribute.Size() != 0) m_oAttribute.Truncate(0);
    return true;
}

bool RecordReader::ReadAhead() {
    m_bMore = false;
    if (m_uPatience != 0) {
        --m_uPatience;
        return false;
    }
    const detail::Record_Trail::Level& oLevel = m_oTrail.Last();
    if (m_oTrail.Size() == 1 || oLevel.uPending == 0) return false;
    if (!m_oTrail.Names().Guess().GetExpected() && m_pBefore == nullptr) return false;
    if (!m_paoAhead) m_paoAhead = std::make_unique<std::array<detail::Ahead_Record, MOST_AHEAD>>();
    m_uStart = m_oTrail.Size() - 1;
    m_oStart = oLevel;
    const std::size_t uRead =
        ReadSeveral(std::min<u3_t>(MOST_AHEAD, m_oLimits.m_uNodes - m_uNodes));
    m_pAhead = m_paoAhead->data();
    m_pAheadEnd = m_pAhead + uRead;
    m_uNodes += uRead;
    m_uInVain = uRead != 0 ? 0 : m_uInVain + 1;
    if (m_uInVain >= MOST_IN_VAIN) m_uPatience = SHORT_PATIENCE;
    m_bMore = uRead == MOST_AHEAD;
    return uRead != 0;
}

// What there is to know of the last level is in locals; the trail has the others.
std::size_t RecordReader::ReadSeveral(std::size_t uMost) {
    Data_Names& oNames = m_oTrail.Names();
    Hash_Guess& oGuess = oNames.Guess();
    detail::Ahead_Record* const pFirst = m_paoAhead->data();
    detail::Ahead_Record* pRecord = pFirst;
    const char* const pBegin = m_oWindow.Peek();
    const char* const pEnd = pBegin + m_oWindow.AtHand();
    const u3_t uOffset = m_oWindow.Offset();
    const char* p = pBegin;
    std::size_t uBelow = 0;  // levels below the one that it began on
    // Of each level the record in front, for the next one of its run; null where unknown.
    std::array<const char*, MOST_AHEAD + 1> apBefore;
    apBefore[0] = m_pBefore;
    u2_t uKey = m_oTrail.Last().uKey;
    u2_t uRun = m_oTrail.Last().uRun;
    u2_t uPending = m_oTrail.Last().uPending;
    const auto oStore = [&] {
        m_oTrail.Last().uKey = uKey;
        m_oTrail.Last().uRun = uRun;
        m_oTrail.Last().uPending = uPending;
    };
    std::size_t uClosed = 0;  // levels, since the last record
    while (pRecord != pFirst + uMost) {
        if (uPending == 0) {
            if (uBelow == 0) break;
            oStore();
            m_oTrail.Close();
            ++uClosed;
            --uBelow;
            uKey = m_oTrail.Last().uKey;
            uRun = m_oTrail.Last().uRun;
            uPending = m_oTrail.Last().uPending;
            continue;
        }
        if (static_cast<std::size_t>(pEnd - p) < m_uHeadRoom) break;
        const Hash_Guess::Expected oExpected = oGuess.GetExpected();
        const char* pCode = MatchHead(oGuess, oExpected, p);
        const bool bNext = pCode == nullptr;
        if (!bNext) {
            if (oExpected.Key() == uKey || !IsInOrder(oExpected, uKey)) break;
        } else {
            if (apBefore[uBelow] == nullptr) break;
            pCode = MatchNext(p, apBefore[uBelow]);
            if (pCode == nullptr) break;
        }
        const auto uCode = static_cast<u0_t>(*pCode++);
        const u2_t uCount = uCode == CODE_NONE ? Load<u2_t>(pCode) : 0;
        const char* pBehind = pCode + sizeof(uCount);
        if (uCount == 0) {
            pBehind = TakeLeaf(*pRecord, uCode, pCode, pEnd);
            if (pBehind == nullptr) break;
        } else {
            if (m_oTrail.Size() >= m_oLimits.m_uDepth || !m_oTrail.HasRoom()) break;
            pRecord->m_sText = {};
            pRecord->SetValue(Data_Node::Tree, uCount);
        }
        uRun = bNext ? uRun : 0;
        uKey = bNext ? uKey : oExpected.Key();
        oGuess.Confirm(uKey);
        pRecord->m_uDepth = static_cast<u2_t>(m_uStart + uBelow);
        pRecord->m_iIndex = static_cast<i2_t>(uRun++);
        pRecord->m_sName = oNames(uKey).View();
        pRecord->m_uOffset = uOffset + static_cast<std::size_t>(p - pBegin);
        pRecord->m_uKey = uKey;
        ++pRecord;
        --uPending;
        uClosed = 0;
        apBefore[uBelow] = p;
        p = pBehind;
        if (uCount == 0) continue;
        oStore();
        m_oTrail.Open(uCount);
        apBefore[++uBelow] = nullptr;
        uKey = Hash::NONE;
        uRun = 0;
        uPending = uCount;
    }
    oStore();
    // The last record stands on its level for as long as it is the last one.
    m_oTrail.Reopen(uClosed);
    m_pBefore = apBefore[uBelow];  // forgotten where that level is closed
    m_oWindow.Skip(static_cast<std::size_t>(p - pBegin));
    return static_cast<std::size_t>(pRecord - pFirst);
}

void RecordReader::GoBack() noexcept {
    if (m_pAhead == nullptr) return;
    const detail::Ahead_Record* const pFirst = m_paoAhead->data();
    if (m_pAhead != pFirst) {
        const detail::Ahead_Record& o = m_pAhead[-1];
        m_uDepth = o.m_uDepth;
        m_iIndex = o.m_iIndex;
        m_sName = o.m_sName;
        m_uOffset = o.m_uOffset;
        m_sText = o.m_sText;
        SetValue(o.GetType(), o.Lng());
        m_oAttribute.Truncate(0);
        m_bNamed = true;
        m_bPlain = true;
    }
    if (m_pAhead != m_pAheadEnd) {
        // What has been given of them opens and closes levels once more, for which there is room.
        while (m_oTrail.Size() > m_uStart + 1) m_oTrail.Close();
        m_oTrail.Last() = m_oStart;
        for (const detail::Ahead_Record* p = pFirst; p != m_pAhead; ++p) {
            while (m_oTrail.Size() > p->GetDepth() + std::size_t{1}) m_oTrail.Close();
            m_oTrail.Note(p->m_uKey, static_cast<u2_t>(p->m_iIndex));
            --m_oTrail.Last().uPending;
            if (p->GetType() == Data_Node::Tree) m_oTrail.Open(p->GetSuccs());
        }
        m_oWindow.GoBack(m_oWindow.Offset() - m_pAhead->m_uOffset);
        m_uNodes -= static_cast<std::size_t>(m_pAheadEnd - m_pAhead);
        m_pBefore = nullptr;
        m_uPatience = PATIENCE;
    }
    m_pAhead = m_pAheadEnd = nullptr;
}

const Data_Record* RecordReader::Next() {
    m_pAhead = m_pAheadEnd = nullptr;
    do {
        m_bNamed = false;
        if (!CloseLevels()) {
            m_bDone = true;
            m_uLeft = m_oWindow.GiveBack();
            return nullptr;
        }
        if (m_bMore && !LeavesOut() && ReadAhead()) return NextAhead();
        m_uOffset = m_oWindow.Offset();
        m_bPlain = ReadFast();
        if (m_bPlain) continue;
        m_pBefore = nullptr;
        ReadStep();
        ReadValue();
    } while (IsLeftOut());
    ReadAhead();
    return this;
}

// A tree is built by what loads whole documents, for which the records above have counted.
void RecordReader::BuildBelow(Data& oTree, Data_Base& oBase, Built& oBuilt) {
    if (!m_oLoader.has_value()) m_oLoader.emplace(*this);
    Reader<WindowSource>& oReader = m_oLoader->oReader;
    const u3_t uBefore = m_uSkipped;
    m_bNamed = false;  // no record of the level that is open is
    // What it has come to counts whether it ends with an error or not.
    const detail::OnExit oOnExit([&] {
        m_uNodes += oBase.m_oNode.Size() - 1;
        m_uSkipped = oReader.Skipped();
        m_bInOrder = m_bInOrder && oReader.IsInOrder();
        m_bEnd = oReader.IsCutOff();
        oBuilt.uNode = oReader.CurrentNode();
    });
    oReader.RunBelow(oTree, std::exchange(m_oTrail.Last().uPending, 0),
                     {m_uNodes - 1, m_uSkipped, m_oTrail.Size() - 2});
    // The record is the one in front again.
    m_oTrail.Close();
    m_bNamed = true;
    m_pBefore = m_bPlain ? m_oWindow.At(m_uOffset) : nullptr;
    oBuilt.bGaps = oReader.Skipped() != uBefore;
    oReader.DropLinks([&](u2_t uId, std::string_view sPath) {
        oBuilt.aoLink.push_back({uId, NO_NUMBER, true, Str(Valid(sPath, m_oRoom))});
    });
}

void RecordReader::AddTo(Load_Report& oReport) const {
    oReport.m_uOffset = m_oWindow.Offset();
    oReport.m_uNodes = m_uNodes;
    oReport.m_uMissingBytes = m_oWindow.Missing() - m_uMissingHeader;
    oReport.m_uMissingNodes = m_oLoader.has_value() ? m_oLoader->oReader.MissingNodes() : 0;
    for (const auto& o : m_oTrail.Levels()) oReport.m_uMissingNodes += o.uPending;
    oReport.m_uBytesLeft = m_uLeft;
    // The record being read, or its parent; at the end the root.
    const std::size_t uLevel = m_oTrail.Size() == 0 ? 0 : m_oTrail.Size() - 1;
    if (m_bDone || uLevel == 0) {
        oReport.m_oPath = "/";
    } else {
        // Below a node that was read last there is none yet.
        const bool bHere = m_bNamed && m_oTrail.Last().uKey != Hash::NONE;
        oReport.m_oPath = m_oTrail.PathTo(uLevel - !bHere);
    }
}

std::size_t RecordReader::GetLength() {
    const auto iLength = m_oWindow.Get<i2_t>();
    if (iLength < 0) RaiseNegativeLength();
    if (static_cast<u3_t>(iLength) > m_oLimits.m_uTextBytes) {
        m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
    }
    return static_cast<std::size_t>(iLength);
}

void RecordReader::ReadStep() {
    const std::size_t uLength = GetLength();
    if (uLength == 0) RaiseEmptyNodePath();
    const std::string_view sStep = m_oWindow.View(uLength);
    m_oAttribute.Truncate(0);
    m_oStep.Parse(sStep);
    NoteName(m_oTrail.Intern(m_oStep.Name()), m_oStep.Index());
    if (m_oStep.Attributes().Size() != 0) ReadAttributes();
}

void RecordReader::NoteName(u2_t uKey, i2_t iIndex) {
    const bool bSameRun = m_oTrail.Last().uKey == uKey;
    const auto iRun = static_cast<i2_t>(bSameRun ? m_oTrail.Last().uRun : 0);
    const bool bRoot = m_oTrail.Size() == 1;
    NoteOrder(uKey);
    if (!bRoot) Count(1);
    m_bNamed = true;
    m_oTrail.Note(uKey, static_cast<u2_t>(bRoot ? iIndex : iRun));
    if (!bRoot) {
        if (bSameRun && iIndex < iRun) RaiseElementExists();
        if (iIndex > iRun) {
            const auto uFree = static_cast<u2_t>(iIndex - i3_t{iRun});
            m_uSkipped += uFree;
            if (m_uSkipped > m_oLimits.m_uSkippedSlots) {
                m_oLimits.RaiseExceeded(&Limits::m_uSkippedSlots);
            }
            // Where there are too many, as far as they go.
            const u3_t uFits = m_oLimits.m_uNodes - m_uNodes;
            m_oTrail.Last().uRun += static_cast<u2_t>(std::min<u3_t>(uFits, uFree));
            Count(uFree);
        }
        m_oTrail.Last().uRun = static_cast<u2_t>(iIndex) + 1;
    }
    StandAtLast();
}

void RecordReader::ReadAttributes() {
    const Arr<Step::Attribute>& oAttributes = m_oStep.Attributes();
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    // Texts that are not UTF-8 move, so that what refers to them is set in the end.
    Arr<std::size_t> oSizes;
    m_oTexts.Truncate(0);
    bool bAllValid = true;
    for (const Step::Attribute& o : oAttributes) {
        if (*o.sName == 0) Msg::UnallowedAttribute("");
        m_oAttribute.Add(Attribute{o.sName, o.sValue});
        for (const std::string_view s : {m_oAttribute.Last().sName, m_oAttribute.Last().sValue}) {
            const Utf8_Text oText(s);
            bAllValid = bAllValid && oText.View().data() == s.data();
            oSizes.Add(oText.Len());
            m_oTexts.Add(oText.View().data(), oText.Len());
        }
    }
    if (bAllValid) return;
    std::size_t uAt = 0;
    for (std::size_t u = 0; u < m_oAttribute.Size(); ++u) {
        const auto oNext = [&](std::size_t uNth) {
            const std::string_view s(m_oTexts.Beg() + uAt, oSizes(uNth));
            uAt += s.size();
            return s;
        };
        m_oAttribute(u).sName = oNext(2 * u);
        m_oAttribute(u).sValue = oNext(2 * u + 1);
    }
}

// A block that the stream cuts short is filled up with zeros, not more than were worth reading.
std::string_view RecordReader::ReadBlock() {
    const std::size_t uLength = GetLength();
    const std::string_view sBlock = m_oWindow.View(uLength);
    if (sBlock.size() == uLength) return sBlock;
    m_oRoom.Truncate(0);
    m_oRoom.Add(sBlock.data(), sBlock.size());
    const std::size_t uZeros = std::min(uLength - sBlock.size(), File_Window::CHUNK);
    for (std::size_t u = 0; u < uZeros; ++u) m_oRoom.Add('\0');
    return {m_oRoom.Beg(), m_oRoom.Size()};
}

void RecordReader::ReadValue() {
    m_sText = {};
    SetValue(Data_Node::Empty, 0);
    const auto eCode = static_cast<Code>(m_oWindow.Get<u0_t>());
    --m_oTrail.Last().uPending;
    switch (eCode) {
        case CODE_NONE: {
            std::size_t uGot = 0;
            const auto uCount = m_oWindow.Get<u2_t>(&uGot);
            m_bEnd = uGot < 4;
            if (m_bEnd || uCount == 0) return;
            if (m_oTrail.Size() >= m_oLimits.m_uDepth) {
                m_oLimits.RaiseExceeded(&Limits::m_uDepth);
            }
            m_oTrail.Open(uCount);
            return SetValue(Data_Node::Tree, uCount);
        }
        case CODE_INTEGER: return SetValue(Data_Node::Integer, m_oWindow.Get<u2_t>());
        case CODE_FLOAT: {
            const double dValue = std::bit_cast<float>(m_oWindow.Get<u2_t>());
            return SetValue(Data_Node::Float, std::bit_cast<u3_t>(dValue));
        }
        case CODE_DOUBLE: return SetValue(Data_Node::Double, m_oWindow.Get<u3_t>());
        case CODE_CHAR: return SetValue(Data_Node::Char, m_oWindow.Get<u0_t>());
        case CODE_BOOLEAN: return SetValue(Data_Node::Boolean, m_oWindow.Get<u0_t>() != 0);
        case CODE_DATE: {
            const double dDays = std::bit_cast<double>(m_oWindow.Get<u3_t>());
            return SetValue(Data_Node::Date, std::bit_cast<u3_t>(SecondsOfDays(dDays)));
        }
        case CODE_LONG: return SetValue(Data_Node::Long, m_oWindow.Get<u3_t>());
        case CODE_STRING: {
            std::string_view sText = m_oWindow.View(GetLength());
            if (!sText.empty() && sText.back() == 0) sText.remove_suffix(1);
            m_sText = Valid(sText, m_oRoom);
            return SetValue(Data_Node::String, 0);
        }
        case CODE_BINARY: m_sText = ReadBlock(); return SetValue(Data_Node::Binary, 0);
        case CODE_LINK: {
            const std::size_t uName = GetLength();
            if (uName == 0) RaiseEmptyTargetName();
            (void)m_oWindow.View(uName);
            const std::size_t uPath = GetLength();
            if (uPath == 0) RaiseEmptyTargetPath();
            m_sText = m_oWindow.View(uPath);
            m_sText = Valid(m_sText.substr(0, m_sText.find('\0')), m_oRoom);
            return SetValue(Data_Node::Link, 0);
        }
        case CODE_QUAD:
            for (u2_t& u : m_auQuad) u = m_oWindow.Get<u2_t>();
            return SetValue(Data_Node::Quad, 0);
        default: return;  // a code without a value
    }
}

}  // namespace vok::dgraph
