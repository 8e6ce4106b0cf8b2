// SPDX-License-Identifier: MIT
// Reads the native dump.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/report.h"
#include "vok/dump/check.h"
#include "vok/dump/format.h"
#include "vok/file/buf.h"
#include "vok/file/file.h"
#include "vok/file/rest.h"
#include "vok/file/shm.h"
#include "vok/sys/mapping.h"

namespace vok {

namespace dump {

namespace {

// The memory of a dump.
using Attached = std::shared_ptr<char>;

class Reader {
  public:
    Reader(File_Stream& oIn, const Limits& oLimits)
        : m_oIn(oIn),
          m_oLimits(oLimits),
          m_oWork(oLimits),
          m_oNew(Mem::Ref<Data_Base>::Create()),
          m_oBase(*m_oNew) {}
    // From the memory that oIn is over, in which arrays may stay: the tree then shares it.
    Reader(File_Buf& oIn, const Attached& oAttached, Data_Trust eTrust, const Limits& oLimits)
        : Reader(oIn, oLimits) {
        m_pAttached = &oAttached;
        m_eTrust = eTrust;
    }

    Mem::Ref<Data_Base> Run() {
        u2_t uLibraryVersion = 0;
        File::CheckMagic(m_oIn, CLASS_NAME, uLibraryVersion, m_uVersion, true, 1, NARROW_VERSION,
                         ATTACHABLE_VERSION);
        m_uAt = 20 + std::string_view("vok::").size() + sizeof(CLASS_NAME);
        ReadTag();
        ReadNames(false);
        m_auBlock[Fault::NODES] = ReadArray(m_oBase.m_oNode, 0, MaxNodes());
        ReadGroups();
        ReadHeap();
        ReadNames(true);
        Arr<u2_t> oAttributes;
        m_auBlock[Fault::ATTRIBUTES] = ReadBlock(oAttributes, 0, ~u3_t{0});
        const bool bTrusted = m_eTrust == Data_Trust::Checked && m_uVersion == ATTACHABLE_VERSION;
        if (bTrusted) ReadSummary();
        m_uAt += File::LoadEndMarker(m_oIn);
        if (!IS_NATIVE) {
            TurnWords(m_oBase.m_oNode.Beg(), 4 * m_oBase.m_oNode.Size());
            TurnWords(oAttributes.Beg(), oAttributes.Size());
        }
        try {
            m_oWork.SetInput(m_uAt);
            Checker oChecker(m_oBase, m_uVersion, m_oLimits, m_oWork);
            if (bTrusted) {
                oChecker.Believe(oAttributes);
            } else {
                oChecker.Run(oAttributes);
            }
        } catch (const Fault& oFault) {
            Fail(m_auBlock[oFault.eBlock] + oFault.uOffset);
        }
        if (!IS_NATIVE) TurnQuads(m_oBase.m_oNode, m_oBase.m_oHeap.WritableAt(0));
        return m_oNew;
    }

    // Bytes from the beginning to what is read, or to what is wrong.
    [[nodiscard]] u3_t Offset() const noexcept { return m_uAt; }
    [[nodiscard]] std::size_t Nodes() const noexcept { return m_oBase.m_oNode.Size(); }

  private:
    // Places in the heap and in the groups are signed 32-bit numbers elsewhere.
    static constexpr u3_t MAX_WORDS = 0x7FFFFFFF;
    static constexpr std::size_t NAMES_BETWEEN_CHECKS = 4096;
    static constexpr std::size_t FIRST_CHUNK = 64 * 1024;

    [[noreturn]] void Fail(u3_t uOffset) {
        m_uAt = uOffset;
        Msg::BinaryDataIsADumpOfAnInvalidObject(CLASS_NAME);
    }

    [[nodiscard]] u3_t MaxNodes() const noexcept { return std::min(m_oLimits.m_uNodes, MAX_WORDS); }

    void ReadTag() {
        File_Buf oTag;
        const u3_t uRead = File::LoadBufStream32(oTag, m_oIn);
        m_uAt += uRead != 0 ? uRead : NARROW_LENGTH;
        if (oTag.Size() > m_oLimits.m_uTextBytes) {
            m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
        }
        m_oBase.m_oUserTag.Set({oTag.Data(), oTag.Size()});
    }

    // Reads a block of whole elements, with room for some more, and returns where it begins.
    template <class T>
    u3_t ReadBlock(Arr<T>& oArr, std::size_t uExtra, u3_t uMost) {
        const u3_t uSize = ReadLength<T>(uMost);
        return ReadElements(oArr, uSize, uExtra);
    }
    // The same for one that may have a gap in front, or stay where it is.
    template <class T>
    u3_t ReadArray(Arr<T>& oArr, std::size_t uExtra, u3_t uMost) {
        const u3_t uSize = ReadLength<T>(uMost);
        const std::size_t uGap = m_uVersion == ATTACHABLE_VERSION ? SkipGap() : 0;
        return StayHere(oArr, uSize, uExtra, uGap) ? m_uAt - uSize * sizeof(T)
                                                   : ReadElements(oArr, uSize, uExtra);
    }
    template <class T>
    [[nodiscard]] u3_t ReadLength(u3_t uMost) {
        char sLength[WIDE_LENGTH];
        m_oIn.Read(sLength, sizeof(sLength));
        const u3_t uBytes = le::Load<u3_t>(sLength);
        const u3_t uSize = uBytes / sizeof(T);
        if (uBytes % sizeof(T) != 0 || uSize > MAX_SIZE) Fail(m_uAt);
        if (uSize > uMost) RaiseTooMany(uSize);
        m_uAt += sizeof(sLength);
        return uSize;
    }
    // Returns how many bytes the gap has.
    [[nodiscard]] std::size_t SkipGap() {
        char s[WIDE_LENGTH + MOST_PADDING];
        m_oIn.Read(s, WIDE_LENGTH);
        const u3_t uGap = le::Load<u3_t>(s);
        if (uGap > MOST_PADDING) Fail(m_uAt);
        m_oIn.Read(s + WIDE_LENGTH, static_cast<std::size_t>(uGap));
        m_uAt += WIDE_LENGTH + uGap;
        return static_cast<std::size_t>(uGap);
    }
    // Leaves elements where they are, if that can be: the gap in front of them becomes their
    // header, and behind them there are bytes that may be read.
    template <class T>
    [[nodiscard]] bool StayHere(Arr<T>& oArr, u3_t uSize, std::size_t uExtra, std::size_t uGap) {
        if (m_pAttached == nullptr || !IS_NATIVE || uSize == 0 || uGap < Mem::HEADER_SIZE) {
            return false;
        }
        auto& oIn = static_cast<File_Buf&>(m_oIn);
        const auto uPlace = static_cast<std::size_t>(oIn.Tell());
        char* const p = m_pAttached->get() + uPlace;
        const std::size_t uLeft = oIn.Remaining();
        const bool bThere = uLeft > uExtra && (uLeft - uExtra) / sizeof(T) >= uSize;
        if (!bThere || reinterpret_cast<std::uintptr_t>(p) % 16 != 0) return false;
        m_oBase.m_pAttached = *m_pAttached;
        oArr.Attach(reinterpret_cast<T*>(p), static_cast<std::size_t>(uSize));
        oIn.Seek(static_cast<i3_t>(uSize * sizeof(T)), File_Stream::FROM_POSITION);
        m_uAt += uSize * sizeof(T);
        return true;
    }
    // No more memory is asked for than about twice what has come.
    template <class T>
    u3_t ReadElements(Arr<T>& oArr, u3_t uSize, std::size_t uExtra) {
        const u3_t uBegin = m_uAt;
        const File_Buf* pBuffer = dynamic_cast<const File_Buf*>(&m_oIn);
        const std::size_t uSure = pBuffer != nullptr ? pBuffer->Remaining() / sizeof(T) : 0;
        oArr.Truncate(0);
        while (oArr.Size() < uSize) {
            const std::size_t uLeft = static_cast<std::size_t>(uSize) - oArr.Size();
            const std::size_t uChunk = std::min(uLeft, std::max({uSure, oArr.Size(), FIRST_CHUNK}));
            oArr.Reserve(oArr.Size() + uChunk + uExtra);
            m_oIn.Read(oArr.End(), uChunk * sizeof(T));
            m_uAt += uChunk * sizeof(T);
            oArr.SetSize(oArr.Size() + uChunk);
        }
        oArr.Reserve(oArr.Size() + uExtra);
        return uBegin;
    }
    static constexpr u3_t MAX_SIZE = u3_t{1} << 48;

    [[noreturn]] void RaiseTooMany(u3_t uSize) {
        if (uSize > MAX_WORDS) Fail(m_uAt);
        m_oLimits.RaiseExceeded(&Limits::m_uNodes);
    }

    void ReadGroups() {
        Arr<u2_t> oWord;
        m_auBlock[Fault::GROUPS] = ReadArray(oWord, 0, MAX_WORDS);
        if (!IS_NATIVE) TurnWords(oWord.Beg(), oWord.Size());
        m_oBase.m_oGroup.Swap(oWord);
    }

    void ReadHeap() {
        Arr<char> oBytes;
        m_auBlock[Fault::HEAP] = ReadArray(oBytes, Data_Heap::SLACK, MAX_WORDS);
        if (oBytes.Capacity() > oBytes.Size()) std::memset(oBytes.End(), 0, Data_Heap::SLACK);
        m_oBase.m_oHeap.Swap(oBytes);
    }

    void ReadSummary() {
        File_Buf oSummary;
        m_uAt += File::LoadBufStream32(oSummary, m_oIn);
        if (oSummary.Size() != SUMMARY_SIZE) Fail(m_uAt);
        m_oBase.m_uDead = static_cast<u2_t>(le::Load<u3_t>(oSummary.Data()));
        m_oBase.m_oHeap.SetReferred(le::Load<u3_t>(oSummary.Data() + 8));
    }

    // Names of nodes or of attributes: none empty, none twice.
    void ReadNames(bool bAttributes) {
        Arr<char> oBytes;
        const u3_t uBegin = ReadBlock(oBytes, 0, ~u3_t{0});
        std::string_view sLeft(oBytes.Beg(), oBytes.Size());
        const Hash& oTable = bAttributes ? m_oBase.m_oAtt.Names() : m_oBase.m_oName;
        while (!sLeft.empty()) {
            const u3_t uOffset = uBegin + (oBytes.Size() - sLeft.size());
            const std::size_t uLength = sLeft.find('\0');
            if (uLength == 0 || uLength == std::string_view::npos) Fail(uOffset);
            if (!IsUtf8(sLeft.data(), uLength)) Fail(uOffset);
            const std::size_t uKeys = oTable.Size();
            if (bAttributes) {
                m_oBase.m_oAtt.Intern(sLeft.substr(0, uLength));
            } else {
                m_oBase.m_oName.Intern(sLeft.substr(0, uLength));
            }
            if (oTable.Size() == uKeys) Fail(uOffset);
            // Names cost more than their bytes, which may have been inflated from few.
            const bool bLook = m_oWork.IsMetered() && uKeys % NAMES_BETWEEN_CHECKS == 0;
            if (bLook) (void)m_oWork.CheckMemory(m_oBase.HeapBytes());
            sLeft.remove_prefix(uLength + 1);
        }
    }

    File_Stream& m_oIn;
    const Limits& m_oLimits;
    Work m_oWork;
    const Mem::Ref<Data_Base> m_oNew;
    Data_Base& m_oBase;
    const Attached* m_pAttached = nullptr;  // the memory that arrays may stay in
    Data_Trust m_eTrust = Data_Trust::None;
    u2_t m_uVersion = 0;
    u3_t m_uAt = 0;
    u3_t m_auBlock[4] = {};  // where the blocks begin that a Fault names
};

}  // namespace

}  // namespace dump

void Data::Load(File_Stream& oIn, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Data::Load", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        dump::Reader oReader(oIn, oLimits);
        {
            const auto oOnExit = detail::ReportOnExit(pReport, [&](Load_Report& oReport) {
                oReport.m_uOffset = oReader.Offset();
                oReport.m_uNodes = oReader.Nodes();
            });
            *this = Data(oReader.Run(), 0);
        }
        if (pReport != nullptr) pReport->m_uBytesLeft = BytesLeft(oIn);
    });
}

namespace {

// A tree over memory that oIn reads.
Mem::Ref<Data_Base> RunAttached(File_Buf& oIn, const dump::Attached& oAttached, Data_Trust eTrust,
                                const Limits& oLimits, Load_Report* pReport) {
    dump::Reader oReader(oIn, oAttached, eTrust, oLimits);
    const auto oOnExit = detail::ReportOnExit(pReport, [&](Load_Report& oReport) {
        oReport.m_uOffset = oReader.Offset();
        oReport.m_uNodes = oReader.Nodes();
    });
    return oReader.Run();
}

}  // namespace

void Data::Attach(const Str& oPath, Data_Trust eTrust, const Limits& oLimits,
                  Load_Report* pReport) {
    return Where("vok::Data::Attach", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        sys::Mapping oMapping;
        if (!sys::MapFile(oPath.CStr(), oMapping)) {
            Msg::CouldNotOpenFile(oPath.CStr(), "r", File::OpenFiles(), Msg::SystemError());
        }
        const dump::Attached oAttached(oMapping.pBytes,
                                       [oMapping](char*) { sys::Unmap(oMapping); });
        File_Buf oIn(oMapping.pBytes, oMapping.uSize);
        *this = Data(RunAttached(oIn, oAttached, eTrust, oLimits, pReport), 0);
        if (pReport != nullptr) pReport->m_uBytesLeft = BytesLeft(oIn);
    });
}

void Data::Attach(File_Shm& oShm, Data_Trust eTrust, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Data::Attach", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        const File_Shm::Bytes oBytes = oShm.MapBytes();
        File_Buf oIn(oBytes.pBegin.get(), oBytes.uSize);
        *this = Data(RunAttached(oIn, oBytes.pBegin, eTrust, oLimits, pReport), 0);
        oShm.Seek(oIn.Tell(), File_Stream::FROM_POSITION);
        if (pReport != nullptr) pReport->m_uBytesLeft = BytesLeft(oIn);
    });
}

bool Data::CanLoad(File_Stream& oIn) {
    return Where("vok::Data::CanLoad", [&] {
        const i3_t iPosition = oIn.Tell();
        u2_t uLibraryVersion = 0;
        u2_t uVersion = 0;
        if (!File::CheckMagic(oIn, dump::CLASS_NAME, uLibraryVersion, uVersion, false, 1,
                              dump::NARROW_VERSION)) {
            return false;
        }
        oIn.Seek(iPosition);
        return true;
    });
}

}  // namespace vok
