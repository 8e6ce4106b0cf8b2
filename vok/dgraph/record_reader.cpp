// SPDX-License-Identifier: MIT
#include "vok/dgraph/record_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "vok/base/date.h"
#include "vok/data/report.h"
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
    m_oTag = Str(VersionTag(oVersion).View());
}

const Data_Record* RecordReader::Next() {
    for (;;) {
        m_bNamed = false;
        if (!CloseLevels()) {
            m_bDone = true;
            m_uLeft = m_oWindow.GiveBack();
            return nullptr;
        }
        const Data_Record* p = ReadAhead();
        m_bPlain = p != nullptr;
        if (p == nullptr) {
            ReadOne();
            p = this;
        }
        if (p = FirstShown(p); p != nullptr) return p;
    }
}

// The careful way.
void RecordReader::ReadOne() {
    m_oBatch.SetSize(0);
    m_oBefore.Forget();
    m_uOffset = m_oWindow.Offset();
    ReadStep();
    ReadValue();
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
    m_oBefore.Forget();
    if (m_bPlain) m_oBefore.Set(m_oWindow.At(m_uOffset));
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
    const u2_t uLast = m_oTrail.Last().uKey;
    if (uLast != Hash::NONE && m_oTrail.Names().IsLess(uKey, uLast)) m_bInOrder = false;
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
