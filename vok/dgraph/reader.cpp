// Reads DGraph documents; those of major version 2 are a header and a native dump.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/date.h"
#include "vok/base/hash_guess.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/link_bytes.h"
#include "vok/data/report.h"
#include "vok/data/select.h"
#include "vok/data/store.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/messages.h"
#include "vok/dgraph/sources.h"
#include "vok/dgraph/step.h"
#include "vok/file/rest.h"

namespace vok {

namespace dgraph {

namespace {

// The bytes of names that need no second look: ASCII without the reserved ones.
constexpr std::array<bool, 256> PLAIN_NAME = [] {
    std::array<bool, 256> abPlain{};
    for (std::size_t u = 1; u < 128; ++u) abPlain[u] = !detail::RESERVED[u];
    return abPlain;
}();

// Whether the name stands at p and "[" behind it; uSize bytes can be read at p.
[[nodiscard]] bool IsNameAt(const Hash_Text& oName, const char* p, std::size_t uSize) noexcept {
    return oName.StandsAt(p, uSize) && p[oName.uLength] == '[';
}

template <class Source>
class Reader {
  public:
    Reader(Data& oData, Source& oSource, const Limits& oLimits)
        : m_oData(oData),
          b(*Access::BaseOf(oData)),
          m_oSource(oSource),
          m_oLimits(oLimits),
          m_oWork(oLimits),
          m_uMostNodes(oLimits.m_uNodes) {
        if (m_oWork.IsMetered()) CheckMemory();
    }

    void Run() {
        m_oLevel.Reserve(32);
        m_oLevel.Add(Level{1, NO_NAME, 0, 0, true});
        while (Top().uPending != 0) {
            m_uNode = Top().uParent;
            if (!ReadRecord()) break;
            if constexpr (Source::IN_MEMORY) ReadPlainRecords();
        }
        m_uNode = 0;
    }

    // Sets the links, once every target is there.
    void ResolveLinks() {
        m_oData.SetToRoot();
        m_oData.SetAccessMode();
        m_oWork.SetInput(HEADER_SIZE + m_oSource.Offset());
        Arr<u2_t> oFound;
        for (std::size_t u = 0; u < m_oLink.Size(); ++u) {
            m_uNode = m_oLink(u).uId;
            const char* sPath = m_oPaths.Beg() + m_oLink(u).uPath;
            detail::SelectNodes(b, 0, sPath, m_oWork, oFound);
            if (oFound.Size() == 0) RaiseTargetMissing();
            if (oFound.Size() > 1) RaiseTargetNotUnique();
            b.m_oNode(m_uNode).uWord2 = oFound(0);
        }
        m_uNode = 0;
        if (m_oLink.Size() != 0) (void)m_oWork.CheckMemory(detail::LinkBytes(b));
    }

    // The node of the record being read.
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }
    // What the document did not have, and what its links took.
    void AddTo(Load_Report& oReport) const noexcept {
        oReport.m_uMissingBytes = m_oSource.Missing();
        for (const Level& o : m_oLevel) oReport.m_uMissingNodes += o.uPending;
        oReport.m_uWork = m_oWork.Done();
    }

  private:
    // The successors of one open node: records still to come (a negative number is a large
    // one), the run of equal names at its end, whether all came in the order of names. The
    // lowest level is that of the root itself.
    struct Level {
        u2_t uPending;
        u2_t uRunKey;
        i2_t iRunCount;
        u2_t uParent;
        bool bInOrder;
    };
    struct Link {
        u2_t uId;
        std::size_t uPath;  // in m_oPaths
    };

    static constexpr u2_t NO_NAME = Hash::NONE;
    // Length, one byte of step text at the least, type code.
    static constexpr std::size_t SMALLEST_RECORD = 6;
    // Expected where the bytes to come cannot be seen.
    static constexpr u3_t UNSEEN_RECORDS = 4;
    // Memory that a node with a new name takes at most, arrays that grow included.
    static constexpr u3_t MOST_PER_NODE = 512;
    static constexpr u3_t NODES_BETWEEN_CHECKS = 4096;
    static constexpr u3_t BYTES_BETWEEN_CHECKS = u3_t{1} << 20;
    // A text is held by the source and by the tree.
    static constexpr u3_t COPIES = 2;

    [[nodiscard]] Level& Top() noexcept { return m_oLevel(m_oLevel.Size() - 1); }

    template <class T>
    T Get(std::size_t* pGot = nullptr) {
        char s[sizeof(T)];
        const std::size_t uGot = m_oSource.Fetch(s, sizeof(T));
        if (pGot != nullptr) *pGot = uGot;
        return Load<T>(s);
    }

    // A length from outside, checked.
    std::size_t GetLength() {
        const i2_t iLength = Get<i2_t>();
        if (iLength < 0) RaiseNegativeLength();
        if (static_cast<u3_t>(iLength) > m_oLimits.m_uTextBytes) {
            m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
        }
        if (m_oWork.IsMetered()) NoteBytes(static_cast<u3_t>(iLength));
        return static_cast<std::size_t>(iLength);
    }

    // Reads one record; false when the document ends.
    bool ReadRecord() {
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

    // Closes the levels that are complete; that of the root's successors stays open.
    void CloseLevels() noexcept {
        while (Top().uPending == 0 && Top().uParent != 0) {
            m_oLevel.Truncate(m_oLevel.Size() - 1);
        }
    }

    // Reads records as long as they are like most records are: an expected name, no attributes,
    // the next index of its run, in the order of names, a value that needs no second look.
    // Stops in front of the first other one, which is for ReadRecord. This loop is what
    // loading a document costs.
    void ReadPlainRecords() {
        constexpr std::size_t LENGTH = 4;
        constexpr std::size_t LARGEST_VALUE = 8;
        while (Top().uPending != 0) {
            Level& oLevel = Top();
            const char* p = m_oSource.Peek();
            const std::size_t uAtHand = m_oSource.AtHand();
            if (uAtHand < LENGTH) return;
            const std::size_t uStep = Load<u2_t>(p);
            p += LENGTH;
            if (uAtHand < LENGTH + uStep + 1 + LARGEST_VALUE) return;
            if (uStep > m_oLimits.m_uTextBytes) return;
            u2_t uKey = GuessName(p, uAtHand - LENGTH);
            if (uKey != 0) {
                m_oGuess.Confirm(uKey);
            } else {
                uKey = ScanName(p, uStep);
                if (uKey == 0) return;
            }

            // The index is the one that the run has reached.
            const std::size_t uName = b.m_oName(uKey).uLength;
            const bool bSameRun = uKey == oLevel.uRunKey;
            const u2_t uIndex = bSameRun ? static_cast<u2_t>(oLevel.iRunCount) : 0;
            if (!IsIndex(p + uName + 1, uStep - uName - 1, uIndex)) return;
            if (!oLevel.bInOrder || (!bSameRun && IsBehind(oLevel, uKey))) return;
            if (b.m_oNode.Size() >= m_uMostNodes || !b.CanPlace(oLevel.uParent)) return;

            p += uStep;
            const Code eCode = static_cast<Code>(*p++);
            Data_Node oNode{uKey, (oLevel.uParent + 1) << 4, 0, 0};
            std::size_t uValue = 4;
            switch (eCode) {
                case CODE_NONE:
                    if (Load<i2_t>(p) <= 0) return;
                    break;
                case CODE_INTEGER:
                    oNode.SetType(Data_Node::Integer);
                    oNode.uWord2 = Load<u2_t>(p);
                    break;
                case CODE_DOUBLE:
                    oNode.SetType(Data_Node::Double);
                    oNode.SetValue64(Load<u3_t>(p));
                    uValue = 8;
                    break;
                case CODE_BOOLEAN:
                    oNode.SetType(Data_Node::Boolean);
                    oNode.uWord2 = *p != 0;
                    uValue = 1;
                    break;
                case CODE_STRING: {
                    const std::size_t uText = Load<u2_t>(p);
                    const std::size_t uLeft = uAtHand - LENGTH - uStep - 1 - LENGTH;
                    if (uText == 0 || uText > uLeft || uText > m_oLimits.m_uTextBytes) return;
                    const char* pText = p + LENGTH;
                    if (pText[uText - 1] != 0 || !IsPlainText(pText, uText - 1)) return;
                    oNode.SetType(Data_Node::String);
                    oNode.uWord2 = b.m_oHeap.AddText({pText, uText - 1});
                    oNode.uWord3 = static_cast<u2_t>(uText);
                    uValue = LENGTH + uText;
                    break;
                }
                default: return;
            }
            m_uNode = b.AppendPlain(oLevel.uParent, oNode);
            oLevel.uRunKey = uKey;
            oLevel.iRunCount = static_cast<i2_t>(uIndex + 1);
            --oLevel.uPending;
            m_oSource.Skip(LENGTH + uStep + 1 + uValue);
            if (eCode == CODE_NONE) {
                OpenLevel(Load<i2_t>(p));
            } else {
                CloseLevels();
            }
        }
    }

    // The key of the name at p if it is one of those expected, else 0.
    [[nodiscard]] u2_t GuessName(const char* p, std::size_t uSize) const noexcept {
        const u2_t uFirst = m_oGuess.First();
        if (uFirst != 0 && IsNameAt(b.m_oName(uFirst), p, uSize)) return uFirst;
        const u2_t uSecond = m_oGuess.Second();
        return uSecond != 0 && IsNameAt(b.m_oName(uSecond), p, uSize) ? uSecond : 0;
    }

    // The key of a name that documents carry as it stands and that "[" ends, else 0.
    [[nodiscard]] u2_t ScanName(const char* p, std::size_t uStep) {
        std::size_t uName = 0;
        while (uName < uStep && PLAIN_NAME[static_cast<u0_t>(p[uName])]) ++uName;
        if (uName == 0 || uName == uStep || p[uName] != '[') return 0;
        const u2_t uKey = b.m_oName.Insert({p, uName});
        m_oGuess.Note(uKey, true, b.m_oName.Size());
        return uKey;
    }

    // Whether the rest of a step text is this index in decimal and its bracket.
    [[nodiscard]] static bool IsIndex(const char* p, std::size_t uSize, u2_t uIndex) noexcept {
        if (uIndex < 10) [[likely]] {
            return uSize == 2 && static_cast<u2_t>(p[0] - '0') == uIndex && p[1] == ']';
        }
        if (uSize < 3 || uSize > 11 || p[uSize - 1] != ']') return false;
        while (--uSize > 0) {
            if (static_cast<u2_t>(p[uSize - 1] - '0') != uIndex % 10) return false;
            uIndex /= 10;
        }
        return uIndex == 0;
    }

    // Whether a name belongs before that of the last record.
    [[nodiscard]] bool IsBehind(const Level& oLevel, u2_t uKey) const noexcept {
        return oLevel.uRunKey != NO_NAME && b.m_oName.IsLess(uKey, oLevel.uRunKey);
    }

    void OpenLevel(i2_t iCount) {
        if (m_oLevel.Size() >= m_oLimits.m_uDepth) {
            m_oLimits.RaiseExceeded(&Limits::m_uDepth);
        }
        m_oLevel.Add(Level{static_cast<u2_t>(iCount), NO_NAME, 0, m_uNode, true});
        // Room for no more successors, on all levels together, than there can be records in
        // the bytes at hand.
        const u3_t uRecords = m_oSource.AtHand() / SMALLEST_RECORD + b.m_oNode.Size();
        const u3_t uMost = std::max(uRecords - std::min(uRecords, m_uPromised), UNSEEN_RECORDS);
        const u3_t uRoom = std::min(iCount > 0 ? static_cast<u3_t>(iCount) : 1, uMost);
        m_uPromised += uRoom;
        b.OpenTree(m_uNode, static_cast<u2_t>(uRoom));
    }

    void ReadStep() {
        const std::size_t uLength = GetLength();
        if (uLength == 0) RaiseEmptyNodePath();
        m_oStep.Parse(m_oSource.View(uLength));
        const u2_t uKey = b.m_oName.Intern(m_oStep.Name());
        const Hash_Text& oName = b.m_oName(uKey);
        const bool bPlain = uKey != 0 && !detail::HasReserved({oName.sText, oName.uLength});
        m_oGuess.Note(uKey, bPlain, b.m_oName.Size());
        if (m_bFirst) {
            b.m_oNode(0).uKey = uKey;
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

    // Appends the node of a record, behind placeholders for the run indexes that it skips.
    void AppendNode(u2_t uKey, i2_t iIndex) {
        const u2_t uParent = m_uNode;
        b.CheckAppend(uParent);
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

    void SkipSlots(u2_t uParent, u2_t uKey, i3_t iSlots) {
        m_uSkipped += static_cast<u3_t>(iSlots);
        if (m_uSkipped > m_oLimits.m_uSkippedSlots) {
            m_oLimits.RaiseExceeded(&Limits::m_uSkippedSlots);
        }
        m_oWork.SetInput(HEADER_SIZE + m_oSource.Offset());
        m_oWork.Charge(static_cast<u3_t>(iSlots));
        for (; iSlots > 0; --iSlots) {
            b.Remove(m_uNode);
            m_uNode = AppendCounted(uParent, uKey);
        }
    }

    u2_t AppendCounted(u2_t uParent, u2_t uKey) {
        if (b.m_oNode.Size() >= m_uMostNodes) [[unlikely]]
            CheckMemory();
        return b.AppendPlaced(uParent, uKey);
    }

    // Bytes that the next fields may cost: they are looked at together.
    void NoteBytes(u3_t uBytes) {
        m_uNoted += uBytes;
        if (m_uNoted >= BYTES_BETWEEN_CHECKS) CheckMemory();
    }

    // Raises the error of the limit on nodes. Where a small input can become a large tree, looks
    // at its memory, and says at how many nodes that is worth doing again.
    void CheckMemory() {
        if (b.m_oNode.Size() >= m_oLimits.m_uNodes) {
            m_oLimits.RaiseExceeded(&Limits::m_uNodes);
        }
        const u3_t uHeld = m_oData.HeapBytes() + m_oSource.Held() + m_oPaths.Capacity() +
                           m_oLevel.Capacity() * sizeof(Level) + m_oLink.Capacity() * sizeof(Link) +
                           COPIES * m_uNoted;
        m_uNoted = 0;
        const u3_t uNext = m_oWork.CheckMemory(uHeld) / MOST_PER_NODE;
        m_uMostNodes =
            std::min(m_oLimits.m_uNodes, b.m_oNode.Size() + std::max(uNext, NODES_BETWEEN_CHECKS));
    }

    // ---- values -----------------------------------------------------------

    void SetValue(Data_Node::Type eType, u3_t uValue) {
        b.SetNewValue(m_uNode, eType, static_cast<u2_t>(uValue), static_cast<u2_t>(uValue >> 32));
    }

    void ReadValue(Code eCode) {
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

    void ReadText() {
        std::string_view sText = m_oSource.View(GetLength());
        // The text ends at its first NUL, which is almost always the last byte.
        if (!sText.empty() && sText.back() == 0) sText.remove_suffix(1);
        b.SetNewText(m_uNode, sText);
    }

    void ReadBlock() {
        const std::size_t uLength = GetLength();
        const std::string_view sBlock = m_oSource.View(uLength);
        // Where the stream ends inside, zeros follow; not more than were worth reading.
        const std::size_t uMissing = std::min(uLength - sBlock.size(), StreamSource::CHUNK);
        const u2_t uOffset = b.m_oHeap.Add(sBlock.data(), sBlock.size());
        if (uMissing != 0) {
            Arr<char> oZeros;
            oZeros.Resize(uMissing);
            b.m_oHeap.Add(oZeros.Beg(), uMissing);
        }
        SetValue(Data_Node::Binary, u3_t{sBlock.size() + uMissing} << 32 | uOffset);
    }

    void ReadQuad() {
        char s[16];
        m_oSource.Fetch(s, sizeof(s));
        const Data_Heap::Quad auWord = {Load<u2_t>(s), Load<u2_t>(s + 4), Load<u2_t>(s + 8),
                                        Load<u2_t>(s + 12)};
        SetValue(Data_Node::Quad, u3_t{auWord[0]} << 32 | b.m_oHeap.AddQuad(auWord));
    }

    void ReadLink() {
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

    Data& m_oData;
    Data_Base& b;
    Source& m_oSource;
    const Limits& m_oLimits;
    Work m_oWork;
    u3_t m_uMostNodes;  // nodes there may be before CheckMemory is asked
    u3_t m_uNoted = 0;  // bytes since it was asked
    Step m_oStep;
    Hash_Guess m_oGuess;  // usable are names that documents carry as they stand
    Arr<Level> m_oLevel;
    Arr<Link> m_oLink;
    Arr<char> m_oPaths;
    u2_t m_uNode = 0;  // of the record being read; its parent as long as its name is not known
    u3_t m_uSkipped = 0;
    u3_t m_uPromised = 0;  // successors that groups have room for
    bool m_bFirst = true;
};

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
        data.Clear();
        data.SetToRoot();
        data.SetRootName("Root");
        char sHeader[dgraph::HEADER_SIZE];
        const std::size_t uRead = ReadUpTo(in, sHeader, sizeof(sHeader));
        if (pReport != nullptr) pReport->m_uOffset = uRead;
        dgraph::Version oVersion;
        if (!dgraph::LoadHeader(sHeader, uRead, oVersion)) dgraph::RaiseNoBinaryDGraph();
        if (oVersion.iMajor == 2) return dgraph::LoadDump(data, in, oLimits, pReport);
        if (oVersion.iMajor != 1) dgraph::RaiseWrongVersion();
        if (File_Buf* pBuffer = dynamic_cast<File_Buf*>(&in); pBuffer != nullptr) {
            dgraph::BufferSource oSource(*pBuffer);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        } else {
            dgraph::StreamSource oSource(in);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        }
        if (pReport != nullptr) pReport->m_uBytesLeft = BytesLeft(in);
        Dgraph_SetVersion(data, 1, oVersion.iMinor, oVersion.iPatch);
        data.Shrink();
    });
}

}  // namespace vok
