// SPDX-License-Identifier: MIT
#include "vok/dgraph/reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/date.h"
#include "vok/data/escape.h"
#include "vok/data/link_bytes.h"
#include "vok/data/select.h"
#include "vok/dgraph/fast_reader.h"

namespace vok::dgraph {

template <class Source>
inline void Reader<Source>::Start(Data& oTree, const Above& oAbove) {
    m_pData = &oTree;
    m_pBase = Access::BaseOf(oTree);
    m_uMost = m_oLimits.m_uNodes - std::min(m_oLimits.m_uNodes, oAbove.uNodes);
    m_uMostNodes = m_uMost;
    m_uSkipped = oAbove.uSkipped;
    m_uAbove = oAbove.uLevels;
    m_uPromised = 0;
    m_uNode = 0;
    m_uNoted = 0;
    m_oLevel.Truncate(0);
    m_oLink.Truncate(0);
    m_oPaths.Truncate(0);
    if (m_oKeyOfForm.Size() != 0) {
        Hash oNone;
        m_oForm.Swap(oNone);
        m_oKeyOfForm.Truncate(0);
    }
    if (m_oWork.IsMetered()) LookAtMemory();
}

template <class Source>
void Reader<Source>::Run(Data& oTree) {
    Start(oTree, {});
    m_oLevel.Emplace(1u, NO_NAME, 0, 0u, true);
    if constexpr (Source::LOOKS_AHEAD) {
        if (ReadFastRoot()) ReadFastRecords();
    }
    while (Top().uPending != 0) {
        m_uNode = Top().uParent;
        if (!ReadRecord()) break;
        if constexpr (Source::LOOKS_AHEAD) ReadFastRecords();
    }
    m_uNode = 0;
}

template <class Source>
void Reader<Source>::RunBelow(Data& oTree, u2_t uCount, const Above& oAbove) {
    Start(oTree, oAbove);
    m_bFirst = false;
    // That of the root, and that of the records to come, whose depth the caller has checked. The
    // first levels need no memory.
    m_oLevel.SetSize(2);
    m_oLevel(0) = {0, NO_NAME, 0, 0, true};
    m_oLevel(1) = {uCount, NO_NAME, 0, 0, true};
    m_uPromised = RoomFor(uCount, m_oSource.AtHand(), 1);
    m_pBase->OpenTree(0, static_cast<u2_t>(m_uPromised));
    do {
        if constexpr (Source::LOOKS_AHEAD) ReadFastRecords();
        if (Top().uPending == 0) return;
        m_uNode = Top().uParent;
    } while (ReadRecord());
}

template <class Source>
void Reader<Source>::ResolveLinks() {
    m_pData->SetToRoot();
    m_pData->SetAccessMode();
    m_oWork.SetInput(HEADER_SIZE + m_oSource.Offset());
    Arr<u2_t> oFound;
    for (std::size_t u = 0; u < m_oLink.Size(); ++u) {
        m_uNode = m_oLink(u).uId;
        const char* sPath = m_oPaths.Beg() + m_oLink(u).uPath;
        detail::SelectNodes(*m_pBase, 0, sPath, m_oWork, oFound);
        if (oFound.Size() == 0) RaiseTargetMissing();
        if (oFound.Size() > 1) RaiseTargetNotUnique();
        m_pBase->m_oNode(m_uNode).uWord2 = oFound(0);
    }
    m_uNode = 0;
    if (m_oLink.Size() != 0) (void)m_oWork.CheckMemory(detail::LinkBytes(*m_pBase));
}

template <class Source>
std::size_t Reader<Source>::GetLength() {
    const i2_t iLength = Get<i2_t>();
    if (iLength < 0) RaiseNegativeLength();
    if (static_cast<u3_t>(iLength) > m_oLimits.m_uTextBytes) {
        m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
    }
    if (m_oWork.IsMetered()) NoteBytes(static_cast<u3_t>(iLength));
    return static_cast<std::size_t>(iLength);
}

template <class Source>
bool Reader<Source>::ReadRecord() {
    ReadStep();
    const Code eCode = static_cast<Code>(Get<u0_t>());
    --Top().uPending;
    if (eCode != CODE_NONE) {
        ReadValue(eCode);
    } else {
        std::size_t uGot;
        const i2_t iCount = Get<i2_t>(&uGot);
        m_bCutOff = uGot < 4;
        if (m_bCutOff) return false;
        if (iCount != 0) {
            OpenLevel(iCount);
            return true;
        }
    }
    if (m_oLevel.Size() == 1) return false;  // a root without successors
    CloseLevels();
    return true;
}

template <class Source>
void Reader<Source>::OpenLevel(i2_t iCount) {
    if (!MayOpen()) m_oLimits.RaiseExceeded(&Limits::m_uDepth);
    m_oLevel.Emplace(static_cast<u2_t>(iCount), NO_NAME, 0, m_uNode, true);
    const u2_t uRoom = RoomFor(iCount > 0 ? static_cast<u2_t>(iCount) : 1, m_oSource.AtHand(),
                               m_pBase->m_oNode.Size());
    m_uPromised += uRoom;
    m_pBase->OpenTree(m_uNode, uRoom);
}

template <class Source>
void Reader<Source>::ReadStep() {
    const std::size_t uLength = GetLength();
    if (uLength == 0) RaiseEmptyNodePath();
    const std::string_view sStep = m_oSource.View(uLength);
    m_oStep.Parse(sStep);
    const u2_t uKey = m_pBase->m_oName.Intern(m_oStep.Name());
    if constexpr (Source::LOOKS_AHEAD) {
        if (!m_pBase->m_oName.IsVerbatim(uKey)) NoteForm(sStep.substr(0, sStep.find('[')), uKey);
    }
    if (m_bFirst) {
        m_pBase->m_oNode(0).uKey = uKey;
        m_bFirst = false;
    } else {
        AppendNode(uKey, m_oStep.Index());
    }
    const Arr<Step::Attribute>& oAttributes = m_oStep.Attributes();
    if (oAttributes.Size() == 0) return;
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    m_pData->SetToNode(m_uNode);
    for (std::size_t u = 0; u < oAttributes.Size(); ++u) {
        m_pData->SetAttVal(oAttributes(u).sName, oAttributes(u).sValue);
    }
    if (m_oWork.IsMetered()) NoteBytes(oAttributes.Size() * vok::detail::MOST_PER_NODE);
}

template <class Source>
void Reader<Source>::NoteForm(std::string_view sForm, u2_t uKey) {
    const u2_t uForm = m_oForm.Insert(sForm);
    if (uForm >= m_oKeyOfForm.Size()) m_oKeyOfForm.Resize(uForm + std::size_t{1});
    m_oKeyOfForm(uForm) = uKey;
}

template <class Source>
void Reader<Source>::AppendNode(u2_t uKey, i2_t iIndex) {
    const u2_t uParent = m_uNode;
    m_pBase->CheckAppend(uParent);
    Level& oLevel = Top();
    oLevel.pBefore = nullptr;
    const bool bSameRun = oLevel.uRunKey == uKey;
    if (!bSameRun) {
        if (IsBehind(oLevel, uKey)) oLevel.bInOrder = m_bInOrder = false;
        oLevel.uRunKey = uKey;
        oLevel.iRunCount = 0;
    }
    m_uNode = AppendCounted(uParent, uKey);
    if (bSameRun && iIndex < oLevel.iRunCount) RaiseElementExists();
    if (iIndex > oLevel.iRunCount) SkipSlots(uParent, uKey, iIndex - i3_t{oLevel.iRunCount});
    oLevel.iRunCount = static_cast<i2_t>(static_cast<u2_t>(iIndex) + 1);
}

template <class Source>
void Reader<Source>::SkipSlots(u2_t uParent, u2_t uKey, i3_t iSlots) {
    m_uSkipped += static_cast<u3_t>(iSlots);
    if (m_uSkipped > m_oLimits.m_uSkippedSlots) {
        m_oLimits.RaiseExceeded(&Limits::m_uSkippedSlots);
    }
    m_oWork.SetInput(HEADER_SIZE + m_oSource.Offset());
    m_oWork.Charge(static_cast<u3_t>(iSlots));
    for (; iSlots > 0; --iSlots) {
        m_pBase->Remove(m_uNode);
        m_uNode = AppendCounted(uParent, uKey);
    }
}

template <class Source>
void Reader<Source>::CheckNodes() {
    if (m_pBase->m_oNode.Size() >= m_uMost) m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    LookAtMemory();
}

template <class Source>
void Reader<Source>::LookAtMemory() {
    const u3_t uHeld = m_pData->HeapBytes() + m_oSource.Held() + m_oPaths.Capacity() +
                       m_oForm.HeapBytes() + m_oKeyOfForm.HeapBytes() +
                       m_oLevel.Capacity() * sizeof(Level) + m_oLink.Capacity() * sizeof(Link) +
                       COPIES * m_uNoted;
    m_uNoted = 0;
    const u2_t uParent = m_oLevel.Size() != 0 ? Top().uParent : 0;
    m_uMostNodes =
        std::min(m_uMost, vok::detail::NodesBeforeCheck(m_oWork, uHeld, *m_pBase, uParent));
}

template <class Source>
void Reader<Source>::ReadValue(Code eCode) {
    switch (eCode) {
        case CODE_INTEGER: return SetValue(Data_Node::Integer, Get<u2_t>());
        case CODE_FLOAT: {
            const double dValue = std::bit_cast<float>(Get<u2_t>());
            return SetValue(Data_Node::Float, std::bit_cast<u3_t>(dValue));
        }
        case CODE_DOUBLE: return SetValue(Data_Node::Double, Get<u3_t>());
        case CODE_CHAR: return SetValue(Data_Node::Char, Get<u0_t>());
        case CODE_STRING: return ReadText();
        case CODE_BOOLEAN: return SetValue(Data_Node::Boolean, Get<u0_t>() != 0);
        case CODE_LINK: return ReadLink();
        case CODE_BINARY: return ReadBlock();
        case CODE_DATE: {
            const double dSeconds = SecondsOfDays(std::bit_cast<double>(Get<u3_t>()));
            return SetValue(Data_Node::Date, std::bit_cast<u3_t>(dSeconds));
        }
        case CODE_LONG: return SetValue(Data_Node::Long, Get<u3_t>());
        case CODE_QUAD: return ReadQuad();
        default: return;  // a code without a value
    }
}

template <class Source>
void Reader<Source>::ReadBlock() {
    const std::size_t uLength = GetLength();
    const std::string_view sBlock = m_oSource.View(uLength);
    // Where the stream ends inside, zeros follow; not more than were worth reading.
    const std::size_t uMissing = std::min(uLength - sBlock.size(), StreamSource::CHUNK);
    m_pBase->m_oHeap.CheckRoom(sBlock.size() + uMissing);
    const u2_t uOffset = m_pBase->m_oHeap.Add(sBlock.data(), sBlock.size());
    if (uMissing != 0) {
        Arr<char> oZeros;
        oZeros.Resize(uMissing);
        m_pBase->m_oHeap.Add(oZeros.Beg(), uMissing);
    }
    SetValue(Data_Node::Binary, u3_t{sBlock.size() + uMissing} << 32 | uOffset);
}

template <class Source>
void Reader<Source>::ReadLink() {
    // The name of the target only has to be there: the path decides.
    const std::size_t uName = GetLength();
    if (uName == 0) RaiseEmptyTargetName();
    (void)m_oSource.View(uName);
    const std::size_t uPath = GetLength();
    if (uPath == 0) RaiseEmptyTargetPath();
    const std::string_view sPath = m_oSource.View(uPath);
    m_oLink.Add(Link{m_uNode, m_oPaths.Size()});
    m_oPaths.Add(sPath.data(), sPath.size());
    m_oPaths.Add('\0');
    SetValue(Data_Node::Link, m_uNode);
}

// What is called from elsewhere; whole classes would have a copy of every function that is inlined.
template void Reader<BufferSource>::Run(Data&);
template void Reader<BufferSource>::ResolveLinks();
template void Reader<StreamSource>::Run(Data&);
template void Reader<StreamSource>::ResolveLinks();
template void Reader<WindowSource>::Run(Data&);
template void Reader<WindowSource>::ResolveLinks();
template void Reader<WindowSource>::RunBelow(Data&, u2_t, const Above&);

}  // namespace vok::dgraph
