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

void TurnQuads(const Arr<Data_Node>& oNode, Arr<char>& oHeap) {
    Arr<u2_t> oPlace;
    for (const Data_Node* p = oNode.Beg(); p != oNode.End(); ++p) {
        if (p->GetType() == Data_Node::Quad) oPlace.Add(p->uWord2);
    }
    std::sort(oPlace.Beg(), oPlace.End());
    const u2_t* pEnd = std::unique(oPlace.Beg(), oPlace.End());
    for (const u2_t* p = oPlace.Beg(); p != pEnd; ++p) TurnWords(oHeap.Beg() + *p, 3);
}

namespace {

class Writer {
  public:
    Writer(Data_Base& oBase, File_Stream& oOut) : b(oBase), m_oOut(oOut) {}

    void Run() {
        b.UpdateSucc();
        CollectNames(b.m_oName, m_oNames);
        CollectNames(b.m_oAttName, m_oAttNames);
        CollectAttributes();
        const bool bAsIs = IS_NATIVE && IsInPlace();
        if (!bAsIs) PutInPlace();
        const Arr<Data_Node>& oNode = bAsIs ? b.m_oNode : m_oNode;
        const Arr<u2_t>& oSucc = bAsIs ? b.m_oSucc : m_oSucc;
        const Arr<char>& oHeap = IS_NATIVE ? b.m_oStr : m_oHeap;
        const std::string_view sTag = b.m_oUserTag.View();
        (void)Msg::ToInt32(sTag.size());

        ReserveSpace(sTag.size() + m_oNames.Size() + SizeOf(oNode) + SizeOf(oSucc) + oHeap.Size() +
                     m_oAttNames.Size() + SizeOf(m_oAttribute));
        File::WriteMagic(m_oOut, CLASS_NAME, VERSION);
        File::DumpBufStream32(File_Buf(sTag.data(), sTag.size()), m_oOut);
        WriteBlock(m_oNames);
        WriteBlock(oNode);
        WriteBlock(oSucc);
        WriteBlock(oHeap);
        WriteBlock(m_oAttNames);
        WriteBlock(m_oAttribute);
        File::DumpEndMarker(m_oOut);
    }

  private:
    template <class T>
    [[nodiscard]] static std::size_t SizeOf(const Arr<T>& oArr) noexcept {
        return oArr.Size() * sizeof(T);
    }
    template <class T>
    void WriteBlock(const Arr<T>& oArr) {
        File::DumpBufStream64(File_Buf(oArr.Beg(), SizeOf(oArr)), m_oOut);
    }

    // A memory buffer grows once instead of step by step.
    void ReserveSpace(std::size_t uBlocks) {
        constexpr std::size_t uAround = 256;  // header, lengths, end marker
        File_Buf* pBuffer = dynamic_cast<File_Buf*>(&m_oOut);
        if (pBuffer == nullptr || !pBuffer->IsBinaryWritable()) return;
        (void)pBuffer->WriteSpace(uBlocks + uAround);
    }

    static void CollectNames(const Hash& oTable, Arr<char>& oNames) {
        for (u2_t uKey = 1; uKey < oTable.Size(); ++uKey) {
            oNames.Add(oTable(uKey).sText, oTable(uKey).uLength + std::size_t{1});
        }
    }

    void CollectAttributes() {
        for (std::size_t u = 1; u < b.m_oAttName.Size(); ++u) {
            const std::size_t uCount = m_oAttribute.Size();
            m_oAttribute.Add(0);
            // A name that was met by an attempt without memory has no records yet.
            if (u > b.m_oAttArr.Size()) continue;
            b.SettleAttributes(*b.m_oAttArr(u - 1));
            const Arr<Data_Att>& oAtt = b.m_oAttArr(u - 1)->oAtt;
            for (const Data_Att* p = oAtt.Beg(); p != oAtt.End(); ++p) {
                if (p->uValue == Data_Att::NO_VALUE) continue;
                m_oAttribute.Add(p->uId);
                m_oAttribute.Add(p->uValue);
                ++m_oAttribute(uCount);
            }
        }
        if (!IS_NATIVE) TurnWords(m_oAttribute.Beg(), m_oAttribute.Size());
    }

    // Whether the groups stand one behind the other by the ids of their nodes, without room
    // to grow: so they do in a tree that was built and read.
    [[nodiscard]] bool IsInPlace() const noexcept {
        std::size_t uNext = 0;
        const u2_t* pSucc = std::as_const(b.m_oSucc).Beg();
        const Data_Node* pEnd = b.m_oNode.End();
        for (const Data_Node* p = b.m_oNode.Beg(); p != pEnd; ++p) {
            if (p->GetType() != Data_Node::Tree) continue;
            if (p->Start() != uNext || pSucc[uNext + 1] != p->Size()) return false;
            uNext += Data_Base::GROUP_HEADER + p->Size();
        }
        return uNext == b.m_oSucc.Size();
    }

    void PutInPlace() {
        m_oNode.Add(b.m_oNode.Beg(), b.m_oNode.Size());
        m_oSucc.Reserve(b.m_oSucc.Size() - static_cast<std::size_t>(b.m_uDeadSucc));
        for (Data_Node* p = m_oNode.Beg(); p != m_oNode.End(); ++p) {
            if (p->GetType() != Data_Node::Tree) continue;
            const u2_t uStart = static_cast<u2_t>(m_oSucc.Size());
            m_oSucc.Add(p->Size());
            m_oSucc.Add(p->Size());
            if (p->Size() != 0) {
                m_oSucc.Add(b.m_oSucc.Beg() + p->Start() + Data_Base::GROUP_HEADER, p->Size());
            }
            p->uWord2 = uStart;
        }
        if (IS_NATIVE) return;
        m_oHeap.Add(b.m_oStr.Beg(), b.m_oStr.Size());
        TurnQuads(b.m_oNode, m_oHeap);
        TurnWords(m_oNode.Beg(), 4 * m_oNode.Size());
        TurnWords(m_oSucc.Beg(), m_oSucc.Size());
    }

    Data_Base& b;
    File_Stream& m_oOut;
    Arr<char> m_oNames;
    Arr<char> m_oAttNames;
    Arr<u2_t> m_oAttribute;
    // Copies, where the arrays of the tree cannot be written as they are.
    Arr<Data_Node> m_oNode;
    Arr<u2_t> m_oSucc;
    Arr<char> m_oHeap;
};

}  // namespace

}  // namespace dump

void Data::Dump(File_Stream& oOut) const {
    return Where("vok::Data::Dump", [&] { dump::Writer(detail::TreeOf(m_oBase), oOut).Run(); });
}

}  // namespace vok
