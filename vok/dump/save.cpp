// SPDX-License-Identifier: MIT
// Writes the native dump.
#include "vok/dump/format.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/file/buf.h"
#include "vok/file/file.h"

namespace vok {

namespace dump {

void TurnQuads(const Arr<Data_Node>& oNode, char* pHeap) {
    Arr<u2_t> oPlace;
    for (const Data_Node* p = oNode.Beg(); p != oNode.End(); ++p) {
        if (p->GetType() == Data_Node::Quad) oPlace.Add(p->uWord2);
    }
    std::sort(oPlace.Beg(), oPlace.End());
    const u2_t* pEnd = std::unique(oPlace.Beg(), oPlace.End());
    for (const u2_t* p = oPlace.Beg(); p != pEnd; ++p) TurnWords(pHeap + *p, 3);
}

namespace {

class Writer {
  public:
    Writer(Data_Base& oBase, File_Stream& oOut, Data_DumpLayout eLayout)
        : m_oBase(oBase), m_oOut(oOut), m_bGaps(eLayout == Data_DumpLayout::Attachable) {}

    void Run() {
        m_oBase.UpdateSucc();
        const bool bOwnNames = !m_oBase.m_bFormerNames;
        if (bOwnNames) {
            CollectNames(m_oBase.m_oName, m_oNames);
        } else {
            NumberNames();
        }
        CollectNames(m_oBase.m_oAtt.Names(), m_oAttNames);
        CollectAttributes();
        const bool bAsIs = IS_NATIVE && bOwnNames && IsInPlace();
        if (!bAsIs) PutInPlace();
        const Arr<Data_Node>& oNode = bAsIs ? m_oBase.m_oNode : m_oNode;
        const Arr<u2_t>& oWord = bAsIs ? m_oBase.m_oGroup.Words() : m_oWord;
        const char* pHeap = IS_NATIVE ? m_oBase.m_oHeap.Begin() : m_oHeap.Beg();
        const std::size_t uHeap = m_oBase.m_oHeap.Size();
        const std::string_view sTag = m_oBase.m_oUserTag.View();
        (void)Msg::ToInt32(sTag.size());

        ReserveSpace(sTag.size() + m_oNames.Size() + SizeOf(oNode) + SizeOf(oWord) + uHeap +
                     m_oAttNames.Size() + SizeOf(m_oAttribute));
        m_uAt += File::WriteMagic(m_oOut, CLASS_NAME, m_bGaps ? ATTACHABLE_VERSION : VERSION);
        m_uAt += File::DumpBufStream32(File_Buf(sTag.data(), sTag.size()), m_oOut);
        WriteBlock(m_oNames);
        WriteArray(oNode.Beg(), SizeOf(oNode));
        WriteArray(oWord.Beg(), SizeOf(oWord));
        WriteArray(pHeap, uHeap);
        WriteBlock(m_oAttNames);
        WriteBlock(m_oAttribute);
        if (m_bGaps) WriteSummary();
        File::DumpEndMarker(m_oOut);
    }

  private:
    template <class T>
    [[nodiscard]] static std::size_t SizeOf(const Arr<T>& oArr) noexcept {
        return oArr.Size() * sizeof(T);
    }
    template <class T>
    void WriteBlock(const Arr<T>& oArr) {
        m_uAt += File::DumpBufStream64(File_Buf(oArr.Beg(), SizeOf(oArr)), m_oOut);
    }

    // One of those that are attached.
    void WriteArray(const void* pBytes, std::size_t uSize) {
        const File_Buf oBytes(pBytes, uSize);
        if (!m_bGaps) {
            m_uAt += File::DumpBufStream64(oBytes, m_oOut);
            return;
        }
        char sHead[2 * WIDE_LENGTH + Mem::HEADER_SIZE + ALIGNMENT] = {};
        const std::size_t uLeast = 2 * WIDE_LENGTH + Mem::HEADER_SIZE;
        const auto uBehind = static_cast<std::size_t>((m_uAt + uLeast) % ALIGNMENT);
        const std::size_t uHead = uLeast + (uBehind != 0 ? ALIGNMENT - uBehind : 0);
        le::Store<u3_t>(sHead, uSize);
        le::Store<u3_t>(sHead + WIDE_LENGTH, uHead - 2 * WIDE_LENGTH);
        m_oOut.Write(sHead, uHead);
        if (uSize != 0) m_oOut.Write(pBytes, uSize);
        m_uAt += uHead + uSize;
    }
    void WriteSummary() {
        char s[SUMMARY_SIZE];
        le::Store<u3_t>(s, m_oBase.m_uDead);
        le::Store<u3_t>(s + 8, m_oBase.m_oHeap.Referred());
        File::DumpBufStream32(File_Buf(s, sizeof(s)), m_oOut);
    }

    // A memory buffer grows once instead of step by step.
    void ReserveSpace(std::size_t uBlocks) {
        constexpr std::size_t uAround = 512;  // header, lengths, gaps, end marker
        File_Buf* pBuffer = dynamic_cast<File_Buf*>(&m_oOut);
        if (pBuffer == nullptr || !pBuffer->IsBinaryWritable()) return;
        (void)pBuffer->WriteSpace(uBlocks + uAround);
    }

    static void CollectNames(const Hash& oTable, Arr<char>& oNames) {
        for (u2_t uKey = 1; uKey < oTable.Size(); ++uKey) {
            oNames.Add(oTable(uKey).sText, oTable(uKey).uLength + std::size_t{1});
        }
    }

    // Names that only former trees bore are left out; the others are numbered as they would be in
    // a new tree.
    void NumberNames() {
        m_oNewKey.Resize(m_oBase.m_oName.Size());
        u2_t uNext = 1;
        for (const Data_Node& o : std::as_const(m_oBase.m_oNode)) {
            if (o.uKey == 0 || m_oNewKey(o.uKey) != 0) continue;
            m_oNewKey(o.uKey) = uNext++;
            const Hash_Text& oName = m_oBase.m_oName(o.uKey);
            m_oNames.Add(oName.sText, oName.uLength + std::size_t{1});
        }
    }

    void CollectAttributes() {
        for (std::size_t u = 1; u < m_oBase.m_oAtt.Names().Size(); ++u) {
            const std::size_t uCount = m_oAttribute.Size();
            m_oAttribute.Add(0);
            for (const Data_Att& o : m_oBase.m_oAtt.Records(static_cast<u2_t>(u))) {
                if (o.uValue == Data_Att::NO_VALUE) continue;
                m_oAttribute.Add(o.uId);
                m_oAttribute.Add(o.uValue);
                ++m_oAttribute(uCount);
            }
        }
        if (!IS_NATIVE) TurnWords(m_oAttribute.Beg(), m_oAttribute.Size());
    }

    // Whether the groups stand one behind the other by the ids of their nodes, without room
    // to grow: so they do in a tree that was built and read.
    [[nodiscard]] bool IsInPlace() const noexcept {
        std::size_t uNext = 0;
        const Data_Groups& oGroup = m_oBase.m_oGroup;
        for (const Data_Node& o : std::as_const(m_oBase.m_oNode)) {
            if (o.GetType() != Data_Node::Tree) continue;
            if (o.Start() != uNext || oGroup.Room(o.Start()) != o.Size()) return false;
            uNext += Data_Groups::HEADER + o.Size();
        }
        return uNext == oGroup.Words().Size();
    }

    void PutInPlace() {
        m_oNode.Add(m_oBase.m_oNode.Beg(), m_oBase.m_oNode.Size());
        m_oWord.Reserve(m_oBase.m_oGroup.LivingWords());
        for (Data_Node* p = m_oNode.Beg(); p != m_oNode.End(); ++p) {
            if (m_oNewKey.Size() != 0) p->uKey = m_oNewKey(p->uKey);
            if (p->GetType() != Data_Node::Tree) continue;
            const Data_Groups::View oOld = p->Size() != 0
                                               ? m_oBase.m_oGroup.ViewOf(p->Start(), p->Size())
                                               : Data_Groups::View();
            p->uWord2 = Data_Groups::Write(m_oWord, oOld.uSize, [&oOld](u2_t* pNew) {
                std::copy(oOld.begin(), oOld.end(), pNew);
                return oOld.uSize;
            });
        }
        if (IS_NATIVE) return;
        m_oHeap.Add(m_oBase.m_oHeap.Begin(), m_oBase.m_oHeap.Size());
        TurnQuads(m_oBase.m_oNode, m_oHeap.Beg());
        TurnWords(m_oNode.Beg(), 4 * m_oNode.Size());
        TurnWords(m_oWord.Beg(), m_oWord.Size());
    }

    Data_Base& m_oBase;
    File_Stream& m_oOut;
    const bool m_bGaps;
    u3_t m_uAt = 0;  // bytes written
    Arr<char> m_oNames;
    Arr<u2_t> m_oNewKey;  // by key; empty when all keep theirs
    Arr<char> m_oAttNames;
    Arr<u2_t> m_oAttribute;
    // Copies, where the arrays of the tree cannot be written as they are.
    Arr<Data_Node> m_oNode;
    Arr<u2_t> m_oWord;
    Arr<char> m_oHeap;
};

}  // namespace

}  // namespace dump

void Data::Dump(File_Stream& oOut, Data_DumpLayout eLayout) const {
    return Where("vok::Data::Dump", [&] {
        Data_Base& b = detail::TreeOf(m_oBase);
        (void)detail::LiveNodeOf(m_oBase, 0);
        dump::Writer(b, oOut, eLayout).Run();
    });
}

}  // namespace vok
