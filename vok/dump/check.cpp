// SPDX-License-Identifier: MIT
#include "vok/dump/check.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "vok/data/link_bytes.h"
#include "vok/dump/format.h"

namespace vok::dump {

using detail::LinkBytes;

void Checker::Run(const Arr<u2_t>& oAttributes) {
    if (m_oBase.m_oHeap.Size() != 0 && *m_oBase.m_oHeap.Begin() != 0) throw Fault{Fault::HEAP, 0};
    if (m_uVersion == NARROW_VERSION) WidenNodes();
    CheckNodes();
    if (m_bUpward || m_oBase.m_oNode.Size() > m_oLimits.m_uDepth) CheckLevels();
    CheckAttributes(oAttributes);
    CheckLateTexts();
    CheckShared();
    m_oBase.m_uIndexed = static_cast<u2_t>(m_oBase.m_oNode.Size());
    m_oBase.m_oHeap.SetReferred(m_uReferred);
}

void Checker::Believe(const Arr<u2_t>& oAttributes) {
    m_bBelieve = true;
    CheckAttributes(oAttributes);
    m_oBase.m_uIndexed = static_cast<u2_t>(m_oBase.m_oNode.Size());
}

// ---- nodes and groups ---------------------------------------------------------

// Almost every text stands behind the one before and is ASCII.
inline bool Checker::IsNextText(const Data_Node& oNode) noexcept {
    const std::size_t uBegin = oNode.uWord2;
    const std::size_t uSize = oNode.uWord3;
    const std::size_t uHeap = m_oBase.m_oHeap.Size();
    if (uBegin == 0 || uBegin < m_uChecked || uSize == 0 || uSize > m_oLimits.m_uTextBytes) {
        return false;
    }
    if (uBegin + uSize > uHeap) return false;
    const char* pText = m_oBase.m_oHeap.At(oNode.uWord2);
    if (pText[uSize - 1] != 0 || !IsAsciiText(pText, uSize - 1)) return false;
    m_uChecked = uBegin + uSize;
    m_uReferred += uSize;
    return true;
}

// Before anything is looked at: what the checks find must be what the tree will have.
void Checker::WidenNodes() noexcept {
    constexpr u2_t CUT_LOOSE = 0xFFFFFF;
    for (Data_Node* p = m_oBase.m_oNode.Beg(); p != m_oBase.m_oNode.End(); ++p) {
        const u2_t uField = p->PredField() & CUT_LOOSE;
        p->SetPredField(uField != CUT_LOOSE ? uField : Data_Node::CUT_LOOSE);
    }
}

void Checker::CheckNodes() {
    const std::size_t uNodes = m_oBase.m_oNode.Size();
    const std::size_t uNames = m_oBase.m_oName.Size();
    if (uNodes == 0 || m_oBase.m_oNode(0).PredField() != 0) FailNode(0);
    if (m_oBase.m_oNode(0).GetType() == Data_Node::Zombi) FailNode(0);  // it is never dumped
    m_oKeyAfter.Resize(uNames);
    // The types whose payload is any number, a bit each.
    constexpr u2_t NUMBERS = 1u << Data_Node::Empty | 1u << Data_Node::Boolean |
                             1u << Data_Node::Integer | 1u << Data_Node::Char |
                             1u << Data_Node::Float | 1u << Data_Node::Double |
                             1u << Data_Node::Date | 1u << Data_Node::Long;
    const Data_Node* pNodes = std::as_const(m_oBase.m_oNode).Beg();
    u3_t uHung = 0;
    bool bUpward = false;
    for (u2_t uId = 0; uId < uNodes; ++uId) {
        const Data_Node& oNode = pNodes[uId];
        const u2_t uPred = oNode.PredField();
        if (oNode.uKey >= uNames) FailNode(uId);
        const bool bHung = uPred - 1 < Data_Node::CUT_LOOSE - 1;
        uHung += bHung;
        bUpward |= bHung & (uPred > uId);
        const Data_Node::Type eType = oNode.GetType();
        if ((NUMBERS >> eType & 1) != 0) continue;
        if (eType == Data_Node::Tree) {
            CheckGroup(uId, oNode);
        } else if (eType != Data_Node::String || !IsNextText(oNode)) {
            CheckValue(uId, oNode);
        }
    }
    m_uHung = uHung;
    m_bUpward = bUpward;
    // Every node in a group is there once, and under its own predecessor: as many as name one
    // are all of them.
    if (m_uNextGroup != m_oWord.Size() || m_uInGroups != m_uHung) FailGroup(m_uNextGroup);
}

void Checker::CheckGroup(u2_t uId, const Data_Node& oNode) {
    const std::size_t uNodes = m_oBase.m_oNode.Size();
    const std::size_t uSize = oNode.Size();
    const std::size_t uFirst = m_uNextGroup + Data_Groups::HEADER;
    if (oNode.Start() != m_uNextGroup || uFirst > m_oWord.Size() ||
        uSize > m_oWord.Size() - uFirst) {
        FailNode(uId);
    }
    if (uSize != 0 && uId >= Data_Node::CUT_LOOSE - 1) FailNode(uId);
    const u2_t* pGroup = m_oWord.Beg() + m_uNextGroup;
    if (pGroup[0] != uSize || pGroup[1] != uSize) FailGroup(m_uNextGroup);
    pGroup += Data_Groups::HEADER;
    const Data_Node* pNodes = std::as_const(m_oBase.m_oNode).Beg();
    bool bAscending = true;
    u2_t uLast = 0;     // the root is nobody's successor
    u2_t uLastKey = 0;  // unnamed ones come first
    for (std::size_t u = 0; u < uSize; ++u) {
        const u2_t uSucc = pGroup[u];
        if (uSucc >= uNodes || pNodes[uSucc].PredField() != uId + 1) FailGroup(uFirst + u);
        bAscending &= uSucc > uLast;
        uLast = uSucc;
        const u2_t uKey = pNodes[uSucc].uKey;
        if (uKey == uLastKey) continue;
        if (uKey == 0 || uKey >= m_oKeyAfter.Size()) FailGroup(uFirst + u);
        if (m_oKeyAfter(uLastKey) != uKey) {
            if (!m_oBase.m_oName.IsLess(uLastKey, uKey)) FailGroup(uFirst + u);
            m_oKeyAfter(uLastKey) = uKey;
        }
        uLastKey = uKey;
    }
    if (!bAscending) CheckDistinct(pGroup, uSize, uFirst);
    m_uInGroups += uSize;
    m_uNextGroup = uFirst + uSize;
}

// Whether no node is twice in a group. It cannot be in two of them: it names one predecessor.
void Checker::CheckDistinct(const u2_t* pGroup, std::size_t uSize, std::size_t uFirst) {
    if (m_oSeen.Size() == 0) m_oSeen.Resize((m_oBase.m_oNode.Size() + 63) / 64);
    for (std::size_t u = 0; u < uSize; ++u) {
        u3_t& uSeen = m_oSeen(pGroup[u] >> 6);
        const u3_t uBit = u3_t{1} << (pGroup[u] & 63);
        if ((uSeen & uBit) != 0) FailGroup(uFirst + u);
        uSeen |= uBit;
    }
}

void Checker::CheckValue(u2_t uId, const Data_Node& oNode) {
    const u3_t uHeap = m_oBase.m_oHeap.Size();
    switch (oNode.GetType()) {
        case Data_Node::String:
            if (oNode.uWord3 == 0) FailNode(uId);
            CheckSize(oNode.uWord3 - 1);
            if (!CheckText(oNode.uWord2, oNode.uWord3)) FailNode(uId);
            return;
        case Data_Node::Binary:
            CheckSize(oNode.uWord3);
            if (u3_t{oNode.uWord2} + oNode.uWord3 > uHeap) FailNode(uId);
            m_uReferred += oNode.uWord3;
            return;
        case Data_Node::Quad:
            if (u3_t{oNode.uWord2} + Data_Heap::QUAD_REST > uHeap) FailNode(uId);
            m_uReferred += Data_Heap::QUAD_REST;
            return;
        case Data_Node::Link:
            if (oNode.uWord2 != Data_Node::NONE && oNode.uWord2 >= m_oBase.m_oNode.Size())
                FailNode(uId);
            return;
        case Data_Node::Zombi: ++m_oBase.m_uDead; return;
        default: FailNode(uId);  // a type that no node has
    }
}

void Checker::CheckSize(u3_t uSize) const {
    if (uSize <= m_oLimits.m_uTextBytes) return;
    m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
}

// No way up may lead in a circle, or be too long. Every node is passed once: where a way is
// known already it is not gone again.
void Checker::CheckLevels() {
    constexpr u2_t UNKNOWN = 0;
    constexpr u2_t ON_THE_WAY = 0xFFFFFFFF;
    const std::size_t uNodes = m_oBase.m_oNode.Size();
    Arr<u2_t> oLevel;  // by id, from 1
    oLevel.Resize(uNodes);
    for (u2_t uId = 0; uId < uNodes; ++uId) {
        u2_t uSteps = 0;
        u2_t uUp = uId;
        for (; uUp < uNodes && oLevel(uUp) == UNKNOWN; uUp = m_oBase.m_oNode(uUp).Pred()) {
            oLevel(uUp) = ON_THE_WAY;
            ++uSteps;
        }
        if (uUp < uNodes && oLevel(uUp) == ON_THE_WAY) FailNode(uId);
        u2_t uLevel = (uUp < uNodes ? oLevel(uUp) : 0) + uSteps;
        if (uLevel > m_oLimits.m_uDepth) {
            m_oLimits.RaiseExceeded(&Limits::m_uDepth);
        }
        for (u2_t u = uId; u != uUp && u < uNodes; u = m_oBase.m_oNode(u).Pred())
            oLevel(u) = uLevel--;
    }
}

// ---- texts --------------------------------------------------------------------

bool Checker::CheckText(u2_t uBegin, u2_t uSize) {
    if (uBegin >= m_oBase.m_oHeap.Size()) return false;
    if (uBegin == 0) return uSize <= 1;  // the empty text
    if (uBegin < m_uChecked) {
        m_oLate.Add(Text{uBegin, uSize});
        return true;
    }
    const std::size_t uEnd = EndOfText(uBegin, uSize);
    if (uEnd == 0) return false;
    m_uChecked = uEnd;
    m_uReferred += uEnd - uBegin;
    return true;
}

std::size_t Checker::EndOfText(u2_t uBegin, u2_t uSize) const {
    const std::size_t uHeap = m_oBase.m_oHeap.Size();
    const char* pText = m_oBase.m_oHeap.At(uBegin);
    std::size_t uLength = uSize - std::size_t{1};
    if (uSize == TO_NUL) {
        const void* pNul = std::memchr(pText, 0, uHeap - uBegin);
        if (pNul == nullptr) return 0;
        uLength = static_cast<std::size_t>(static_cast<const char*>(pNul) - pText);
        CheckSize(uLength);
        return IsUtf8(pText, uLength) ? uBegin + uLength + 1 : 0;
    }
    if (uSize > uHeap - uBegin || pText[uLength] != 0) return 0;
    if (IsAsciiText(pText, uLength)) return uBegin + uSize;
    const bool bNul = std::memchr(pText, 0, uLength) != nullptr;
    return !bNul && IsUtf8(pText, uLength) ? uBegin + uSize : 0;
}

// Texts that overlap end at the same NUL, so one that begins inside of another is a tail of it:
// valid when it begins with a character.
void Checker::CheckLateTexts() {
    std::sort(m_oLate.Beg(), m_oLate.End(),
              [](const Text& x, const Text& y) { return x.uBegin < y.uBegin; });
    std::size_t uEnd = 0;
    for (const Text* p = m_oLate.Beg(); p != m_oLate.End(); ++p) {
        if (p->uBegin >= uEnd) {
            uEnd = EndOfText(p->uBegin, p->uSize);
            if (uEnd == 0) throw Fault{Fault::HEAP, p->uBegin};
            m_uReferred += uEnd - p->uBegin;
            continue;
        }
        m_uReferred += uEnd - p->uBegin;
        const bool bSameEnd = p->uSize == TO_NUL || u3_t{p->uBegin} + p->uSize == uEnd;
        const bool bInsideCharacter =
            (static_cast<u0_t>(*m_oBase.m_oHeap.At(p->uBegin)) & 0xC0u) == 0x80u;
        if (!bSameEnd || bInsideCharacter) throw Fault{Fault::HEAP, p->uBegin};
    }
}

// Nodes may share texts and names, which every form but the dump writes out for each of them, and
// links the nodes that they lead to.
void Checker::CheckShared() const {
    u3_t uBytes = m_uReferred + LinkBytes(m_oBase);
    u3_t uLongest = 0;
    for (u2_t uKey = 0; uKey < m_oBase.m_oName.Size(); ++uKey) {
        uLongest = std::max<u3_t>(uLongest, m_oBase.m_oName(uKey).uLength);
    }
    // A record takes 16 bytes of a dump, so that shorter names stay below any bound.
    constexpr u3_t SHORT_NAME = 256;
    if (uLongest > SHORT_NAME) {
        for (const Data_Node& o : m_oBase.m_oNode) uBytes += m_oBase.m_oName(o.uKey).uLength;
    }
    (void)m_oWork.CheckMemory(uBytes);
}

// ---- attributes ---------------------------------------------------------------

void Checker::CheckAttributes(const Arr<u2_t>& oWords) {
    const auto oFail = [](std::size_t uWord) { throw Fault{Fault::ATTRIBUTES, u3_t{uWord} * 4}; };
    const std::size_t uNodes = m_oBase.m_oNode.Size();
    const std::size_t uNames = m_oBase.m_oAtt.Names().Size() - 1;
    Arr<u2_t> oCount;  // by node, where a limit could be reached
    if (uNames > m_oLimits.m_uAttributes) oCount.Resize(uNodes);
    std::size_t uNext = 0;
    for (std::size_t uName = 1; uName <= uNames; ++uName) {
        if (uNext == oWords.Size()) oFail(uNext);
        const std::size_t uCount = oWords(uNext++);
        if (uCount > (oWords.Size() - uNext) / 2) oFail(uNext - 1);
        if (uCount == 0) continue;
        const u2_t uKey = static_cast<u2_t>(uName);
        m_oBase.m_oAtt.ReserveRecords(uKey, uCount);
        u2_t uLast = 0;
        for (std::size_t u = 0; u < uCount; ++u, uNext += 2) {
            const u2_t uId = oWords(uNext);
            const u2_t uValue = oWords(uNext + 1);
            const bool bAscending = u == 0 || uId > uLast;
            const bool bText = m_bBelieve || CheckText(uValue, TO_NUL);
            if (uId >= uNodes || !bAscending || !bText) oFail(uNext);
            if (oCount.Size() != 0 && ++oCount(uId) > m_oLimits.m_uAttributes) {
                m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
            }
            m_oBase.m_oAtt.AddLast(uId, uKey, uValue, uNodes);
            uLast = uId;
        }
    }
    if (uNext != oWords.Size()) oFail(uNext);
}

}  // namespace vok::dump
