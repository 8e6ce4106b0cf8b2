// Reads DGraph documents; those of major version 2 are a header and a native dump.
#include "vok/dgraph/reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>
#include <string_view>

#include "vok/base/date.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/link_bytes.h"
#include "vok/data/report.h"
#include "vok/data/select.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/fast_reader.h"
#include "vok/file/forward.h"
#include "vok/file/rest.h"

namespace vok {

namespace dgraph {

template <class Source>
void Reader<Source>::Run() {
    m_oLevel.Add(Level{1, NO_NAME, 0, 0, true});
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
void Reader<Source>::ResolveLinks() {
    m_oData.SetToRoot();
    m_oData.SetAccessMode();
    m_oWork.SetInput(HEADER_SIZE + m_oSource.Offset());
    Arr<u2_t> oFound;
    for (std::size_t u = 0; u < m_oLink.Size(); ++u) {
        m_uNode = m_oLink(u).uId;
        const char* sPath = m_oPaths.Beg() + m_oLink(u).uPath;
        detail::SelectNodes(m_oBase, 0, sPath, m_oWork, oFound);
        if (oFound.Size() == 0) RaiseTargetMissing();
        if (oFound.Size() > 1) RaiseTargetNotUnique();
        m_oBase.m_oNode(m_uNode).uWord2 = oFound(0);
    }
    m_uNode = 0;
    if (m_oLink.Size() != 0) (void)m_oWork.CheckMemory(detail::LinkBytes(m_oBase));
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
        if (uGot < 4) return false;
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
    if (m_oLevel.Size() >= m_oLimits.m_uDepth) {
        m_oLimits.RaiseExceeded(&Limits::m_uDepth);
    }
    m_oLevel.Add(Level{static_cast<u2_t>(iCount), NO_NAME, 0, m_uNode, true});
    // Room for no more successors, on all levels together, than there can be records in
    // the bytes at hand.
    const u3_t uRecords = m_oSource.AtHand() / SMALLEST_RECORD + m_oBase.m_oNode.Size();
    const u3_t uMost = std::max(uRecords - std::min(uRecords, m_uPromised), UNSEEN_RECORDS);
    const u3_t uRoom = std::min(iCount > 0 ? static_cast<u3_t>(iCount) : 1, uMost);
    m_uPromised += uRoom;
    m_oBase.OpenTree(m_uNode, static_cast<u2_t>(uRoom));
}

template <class Source>
void Reader<Source>::ReadStep() {
    const std::size_t uLength = GetLength();
    if (uLength == 0) RaiseEmptyNodePath();
    const std::string_view sStep = m_oSource.View(uLength);
    m_oStep.Parse(sStep);
    const u2_t uKey = m_oBase.m_oName.Intern(m_oStep.Name());
    if constexpr (Source::LOOKS_AHEAD) {
        if (!m_oBase.m_oName.IsVerbatim(uKey)) NoteForm(sStep.substr(0, sStep.find('[')), uKey);
    }
    if (m_bFirst) {
        m_oBase.m_oNode(0).uKey = uKey;
        m_bFirst = false;
    } else {
        AppendNode(uKey, m_oStep.Index());
    }
    const Arr<Step::Attribute>& oAttributes = m_oStep.Attributes();
    if (oAttributes.Size() == 0) return;
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    m_oData.SetToNode(m_uNode);
    for (std::size_t u = 0; u < oAttributes.Size(); ++u) {
        m_oData.SetAttVal(oAttributes(u).sName, oAttributes(u).sValue);
    }
    if (m_oWork.IsMetered()) NoteBytes(oAttributes.Size() * MOST_PER_NODE);
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
    m_oBase.CheckAppend(uParent);
    Level& oLevel = Top();
    const bool bSameRun = oLevel.uRunKey == uKey;
    if (!bSameRun) {
        if (IsBehind(oLevel, uKey)) oLevel.bInOrder = false;
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
        m_oBase.Remove(m_uNode);
        m_uNode = AppendCounted(uParent, uKey);
    }
}

template <class Source>
void Reader<Source>::CheckMemory() {
    if (m_oBase.m_oNode.Size() >= m_oLimits.m_uNodes) {
        m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    }
    const u3_t uHeld = m_oData.HeapBytes() + m_oSource.Held() + m_oPaths.Capacity() +
                       m_oForm.HeapBytes() + m_oKeyOfForm.HeapBytes() +
                       m_oLevel.Capacity() * sizeof(Level) + m_oLink.Capacity() * sizeof(Link) +
                       COPIES * m_uNoted;
    m_uNoted = 0;
    const u3_t uNext = m_oWork.CheckMemory(uHeld) / MOST_PER_NODE;
    m_uMostNodes = std::min(m_oLimits.m_uNodes,
                            m_oBase.m_oNode.Size() + std::max(uNext, NODES_BETWEEN_CHECKS));
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
    m_oBase.m_oHeap.CheckRoom(sBlock.size() + uMissing);
    const u2_t uOffset = m_oBase.m_oHeap.Add(sBlock.data(), sBlock.size());
    if (uMissing != 0) {
        Arr<char> oZeros;
        oZeros.Resize(uMissing);
        m_oBase.m_oHeap.Add(oZeros.Beg(), uMissing);
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

namespace {

template <class Source>
void ReadRecords(Data& oData, Source& oSource, const Limits& oLimits, Load_Report* pReport) {
    Reader<Source> oReader(oData, oSource, oLimits);
    const vok::detail::ReportOnExit oOnExit(pReport, [&](Load_Report& oReport) {
        oReport.m_uOffset += oSource.Offset();  // behind the header, counted before
        oReader.AddTo(oReport);
        vok::detail::ReportNode(oReport, oData, oReader.CurrentNode());
    });
    oReader.Run();
    oReader.ResolveLinks();
}

// Whether a stream may be read ahead: who reads on finds it behind the document, or does not.
bool MayReadAhead(File_Stream& oIn) {
    if (dynamic_cast<const File_Forward*>(&oIn) != nullptr) return true;
    const File* pFile = dynamic_cast<const File*>(&oIn);
    return pFile != nullptr && (pFile->Flags() & File::FLAG_GZIP) == 0 && oIn.Tell() >= 0;
}

// Where the first error is on its way.
void LeaveQuietly(WindowSource& oSource) noexcept {
    try {
        (void)oSource.Leave();
    } catch (const std::exception&) {
        // Nobody reads on in a stream that fails.
    }
}

// The body of major version 2. Offsets count from the header on.
void LoadDump(Data& oData, File_Stream& oIn, const Limits& oLimits, Load_Report* pReport) {
    const u3_t uHeader = pReport != nullptr ? pReport->m_uOffset : 0;
    const vok::detail::ReportOnExit oOnExit(
        pReport, [uHeader](Load_Report& oReport) { oReport.m_uOffset += uHeader; });
    oData.Load(oIn, oLimits, pReport);
}

}  // namespace

}  // namespace dgraph

void Dgraph_LoadDGraph(Data& data, File_Stream& in, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Dgraph_LoadDGraph", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        dgraph::Access::Restart(data);
        data.SetRootName("Root");
        char sHeader[dgraph::HEADER_SIZE];
        const std::size_t uRead = ReadUpTo(in, sHeader, sizeof(sHeader));
        if (pReport != nullptr) pReport->m_uOffset = uRead;
        dgraph::Version oVersion;
        if (!dgraph::LoadHeader(sHeader, uRead, oVersion)) dgraph::RaiseNoBinaryDGraph();
        if (oVersion.iMajor == 2) return dgraph::LoadDump(data, in, oLimits, pReport);
        if (oVersion.iMajor != 1) dgraph::RaiseWrongVersion();
        u3_t uLeft = 0;
        if (File_Buf* pBuffer = dynamic_cast<File_Buf*>(&in); pBuffer != nullptr) {
            dgraph::BufferSource oSource(*pBuffer);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        } else if (dgraph::MayReadAhead(in)) {
            dgraph::WindowSource oSource(in);
            try {
                dgraph::ReadRecords(data, oSource, oLimits, pReport);
            } catch (...) {
                dgraph::LeaveQuietly(oSource);
                throw;
            }
            uLeft = oSource.Leave();
        } else {
            dgraph::StreamSource oSource(in);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        }
        if (pReport != nullptr) pReport->m_uBytesLeft = std::max(uLeft, BytesLeft(in));
        Dgraph_SetVersion(data, 1, oVersion.iMinor, oVersion.iPatch);
        data.Shrink();
    });
}

}  // namespace vok
