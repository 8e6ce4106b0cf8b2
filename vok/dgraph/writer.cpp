// SPDX-License-Identifier: MIT
// Writes a tree as a DGraph document; of major version 2 that is a header and a native dump.
#include "vok/dgraph/writer.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "vok/base/date.h"
#include "vok/base/where.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/fast_writer.h"
#include "vok/dgraph/messages.h"

namespace vok {

namespace dgraph {

template <class Sink>
void Writer<Sink>::Run() {
    WriteNode(0, 0);
    while (m_oFrame.Size() != 0) {
        if constexpr (Sink::COLLECTS) {
            IsScattered(m_oFrame.Last()) ? WriteScattered() : WriteFastRecords<false>();
        }
        Frame& f = m_oFrame.Last();
        if (f.uPos == f.oGroup.uSize) {
            m_oFrame.Pop();
            continue;
        }
        const u2_t uPos = f.uPos++;
        const u2_t uId = f.oGroup.pId[uPos];
        const Data_Node& oNode = m_oBase.m_oNode(uId);
        if (oNode.uKey != f.uRunKey) {
            f.uRunKey = oNode.uKey;
            f.uRunStart = uPos;
        }
        // A removed node keeps its place in the run.
        if (oNode.GetType() == Data_Node::Zombi) continue;
        WriteNode(uId, uPos - f.uRunStart);
    }
}

template <class Sink>
inline void Writer<Sink>::WriteNode(u2_t uId, u2_t uIndex) {
    const Data_Node& oNode = m_oBase.m_oNode(uId);
    // The step text, built behind the four bytes of its length.
    const bool bVerbatim = IsVerbatim(oNode.uKey);
    // An unnamed root has a name of its own.
    const bool bLong = !bVerbatim && (uId == 0 || m_oBase.m_oName(oNode.uKey).uLength > SHORT_NAME);
    if (m_oBase.m_oAtt.Has(uId) || bLong) {
        WriteLongStep(uId, uIndex);
    } else {
        const Hash_Text& oName = bVerbatim ? m_oBase.m_oName(oNode.uKey) : Escaped(oNode.uKey);
        Record::Step(oName, uIndex);
    }
    WriteValue(uId, oNode);
}

template <class Sink>
const Hash_Text& Writer<Sink>::Escaped(u2_t uKey) {
    u2_t& uForm = m_oFormOf(uKey);
    if (uForm == 0) {
        m_oEscaped.Truncate(0);
        detail::AppendEncoded(m_oEscaped, m_oBase.m_oName(uKey).View(), detail::RESERVED.data());
        uForm = m_oForm.Insert({m_oEscaped.Beg(), m_oEscaped.Size()});
    }
    return m_oForm(uForm);
}

template <class Sink>
void Writer<Sink>::WriteLongStep(u2_t uId, u2_t uIndex) {
    const char* sName = m_oBase.NameOf(uId);
    Record::BeginStep(sName != nullptr ? sName : "", uIndex);
    m_oBase.m_oAtt.List(uId, m_oAttKeys);
    for (const u2_t uKey : m_oAttKeys) {
        const char* sValue = m_oBase.AttributeOf(uId, uKey);
        if (*sValue != 0) Record::AddAttribute(m_oBase.m_oAtt.Names()(uKey).View(), sValue);
    }
    Record::EndStep();
}

template <class Sink>
inline void Writer<Sink>::WriteValue(u2_t uId, const Data_Node& oNode) {
    const char* const pHeap = m_oBase.m_oHeap.Begin();
    const auto oDouble = [&] { return std::bit_cast<double>(oNode.Value64()); };
    switch (oNode.GetType()) {
        case Data_Node::Empty: return Record::Count(0);
        case Data_Node::Tree: return WriteTree(uId);
        case Data_Node::Boolean: return Record::Bool(oNode.uWord2 != 0);
        case Data_Node::Integer: return Record::Int(oNode.uWord2);
        case Data_Node::Char: return Record::Char(oNode.uWord2);
        case Data_Node::Float: return Record::Flt(static_cast<float>(oDouble()));
        case Data_Node::Double: return Record::Dbl(oNode.Value64());
        case Data_Node::Date: return Record::Date(oDouble());
        case Data_Node::String: return Record::HeapText(pHeap + oNode.uWord2, oNode.uWord3);
        case Data_Node::Binary: return Record::Bin(pHeap + oNode.uWord2, oNode.uWord3);
        case Data_Node::Long: return Record::Lng(oNode.Value64());
        case Data_Node::Quad: return Record::Quad(m_oBase.m_oHeap.QuadOf(oNode));
        case Data_Node::Link: return WriteLink(oNode);
        case Data_Node::Zombi: return;
        default: return Record::Nothing();
    }
}

template <class Sink>
inline void Writer<Sink>::WriteTree(u2_t uId) {
    const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
    u2_t uLive = oGroup.uSize;
    if (m_oBase.m_uDead != 0) {
        for (u2_t u = 0; u < oGroup.uSize; ++u) {
            uLive -= m_oBase.m_oNode(oGroup.pId[u]).GetType() == Data_Node::Zombi;
        }
    }
    Record::Count(uLive);
    // No key is this large: the first successor begins a run.
    if (uLive != 0) m_oFrame.Emplace(oGroup, 0u, Hash::NONE, 0u);
}

template <class Sink>
bool Writer<Sink>::IsInDocument(u2_t uId) const noexcept {
    if (uId == 0 || uId >= m_oBase.m_oNode.Size()) return false;
    if (m_oBase.m_oNode(uId).GetType() == Data_Node::Zombi) return false;
    do {
        uId = m_oBase.m_oNode(uId).Pred();
        if (uId >= m_oBase.m_oNode.Size() || m_oBase.m_oNode(uId).GetType() != Data_Node::Tree) {
            return false;
        }
    } while (uId != 0);
    return true;
}

template <class Sink>
void Writer<Sink>::WriteLink(const Data_Node& oNode) {
    if (!IsInDocument(oNode.uWord2)) return Record::Count(0);
    const Data oTarget = m_oRoot.GetNodeFromID(oNode.uWord2);
    const Str oPath = oTarget.GetPath();
    if (oPath.CStr()[0] != '/') Msg::AssertionFailed("sTmp[0] == '/'");
    const char* sName = oTarget.GetName();
    Record::Link(sName != nullptr ? sName : "", oPath.View().substr(1));
}

namespace {

// What is asked for at first: as much as most records take, what the writer wants at hand for the
// last one included, and no more than is little for any process.
constexpr std::size_t FIRST_ROOM = 4096;
constexpr std::size_t PER_NODE = 32;

template <class Sink>
void WriteDocument(const Data& oRoot, const Version& oVersion, Sink& oSink) {
    std::size_t uRoom = HEADER_SIZE;
    if constexpr (std::is_same_v<Sink, BufferSink>) {
        // That of a small document in one step.
        const Data_Base& b = *Access::BaseOf(oRoot);
        uRoom = std::min(FIRST_ROOM, b.m_oNode.Size() * PER_NODE + b.m_oHeap.Size());
    }
    char* p = oSink.Space(std::max(uRoom, HEADER_SIZE));
    StoreHeader(p, oVersion);
    oSink.Cut(p + HEADER_SIZE);
    oRoot.SetAccessMode();
    Writer<Sink>(oRoot, oVersion, oSink).Run();
    oSink.Finish();
}

}  // namespace

}  // namespace dgraph

void Dgraph_SaveDGraph(const Data& data, File_Stream& out) {
    return Where("vok::Dgraph_SaveDGraph", [&] {
        dgraph::Version oVersion;
        const Data_Base* const pBase = dgraph::Access::BaseOf(data);
        if (pBase == nullptr || !dgraph::ParseVersion(pBase->m_oUserTag.CStr(), oVersion)) {
            dgraph::RaiseNoDGraph();
        }
        if (oVersion.iMajor != 1 && oVersion.iMajor != 2) dgraph::RaiseWrongVersion();
        if (oVersion.iMajor == 2) {
            char sHeader[dgraph::HEADER_SIZE];
            dgraph::StoreHeader(sHeader, oVersion);
            out.Write(sHeader, sizeof(sHeader));
            return data.Dump(out);
        }
        const Data oRoot = data.GetRoot();
        File_Buf* pBuffer = dynamic_cast<File_Buf*>(&out);
        if (pBuffer != nullptr && BufferSink::Fits(*pBuffer)) {
            BufferSink oSink(*pBuffer);
            dgraph::WriteDocument(oRoot, oVersion, oSink);
        } else if (out.TakesPieces()) {
            PieceSink oSink(out);
            dgraph::WriteDocument(oRoot, oVersion, oSink);
        } else {
            dgraph::StreamSink oSink(out);
            dgraph::WriteDocument(oRoot, oVersion, oSink);
        }
        out.Flush();
    });
}

}  // namespace vok
