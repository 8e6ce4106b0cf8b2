// Reads DGraph documents of major version 1.
#include <bit>

#include "vok/base/date.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/select.h"
#include "vok/data/store.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/messages.h"
#include "vok/dgraph/sources.h"
#include "vok/dgraph/step.h"

namespace vok {

namespace dgraph {

namespace {

// Names follow each other in patterns: what came after a name the last time is looked at
// first the next time, which saves most records a search in the table of names.
class NameGuess {
  public:
    explicit NameGuess(const Hash& oNames) noexcept : m_oNames(oNames) {}

    // The key of the name at p if it is the expected one and "[" follows, else Hash::NONE.
    // uSize bytes can be read at p.
    [[nodiscard]] u2_t Match(const char* p, std::size_t uSize) const noexcept {
        const u2_t uKey = m_uLast < m_oNext.Size() ? m_oNext(m_uLast) : 0;
        if (uKey == 0) return Hash::NONE;
        const Hash_Text& oName = m_oNames(uKey);
        if (oName.uLength + std::size_t{8} > uSize || p[oName.uLength] != '[') return Hash::NONE;
        const std::size_t uHead = oName.uLength < 8 ? oName.uLength : 8;
        u3_t uPrefix = 0;
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(&uPrefix, p, 8);
            uPrefix = __builtin_bswap64(uPrefix);
        } else {
            std::memcpy(&uPrefix, p, 8);
        }
        // uHead is at least 1: the shift is below 64.
        if ((uPrefix ^ oName.uPrefix) >> (64 - 8 * uHead) != 0) return Hash::NONE;
        if (oName.uLength > 8 &&
            std::memcmp(p + 8, oName.sText + 8, oName.uLength - std::size_t{8}) != 0) {
            return Hash::NONE;
        }
        return uKey;
    }
    // uKey was read. Only names that are written as they stand are expected again.
    void Note(u2_t uKey, bool bPlain) {
        if (m_oNext.Size() < m_oNames.Size()) m_oNext.Resize(m_oNames.Size());
        m_oNext(m_uLast) = bPlain ? uKey : 0;
        m_uLast = uKey;
    }
    void Confirm(u2_t uKey) noexcept { m_uLast = uKey; }

  private:
    const Hash& m_oNames;
    Arr<u2_t> m_oNext;  // by key; 0 = nothing expected
    u2_t m_uLast = 0;
};

template <class Source>
class Reader {
  public:
    Reader(Data& oData, Source& oSource, const Limits& oLimits)
        : m_oData(oData),
          b(*Access::BaseOf(oData)),
          m_oSource(oSource),
          m_oLimits(oLimits),
          m_oGuess(b.m_oName) {}

    void Run() {
        m_oLevel.Reserve(32);
        m_oLevel.Add(Level{1, NO_NAME, 0});
        while (m_oLevel.Size() != 0 && Top().iPending != 0) {
            if (!ReadRecord()) break;
        }
        m_uNode = 0;
    }

    // Sets the links, once every target is there.
    void ResolveLinks() {
        m_oData.SetToRoot();
        m_oData.SetAccessMode();
        Arr<u2_t> oFound;
        u3_t uSeen = 0;
        for (std::size_t u = 0; u < m_oLink.Size(); ++u) {
            m_uNode = m_oLink(u).uId;
            const char* sPath = m_oPaths.Beg() + m_oLink(u).uPath;
            detail::SelectNodes(b, 0, sPath, m_oLimits, uSeen, oFound);
            if (oFound.Size() == 0) RaiseTargetMissing();
            if (oFound.Size() > 1) RaiseTargetNotUnique();
            b.m_oNode(m_uNode).uWord2 = oFound(0);
        }
        m_uNode = 0;
    }

    // The node of the record being read.
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }

  private:
    // One open level: records still to come, and the run of equal names at its end.
    struct Level {
        i2_t iPending;
        u2_t uRunKey;
        i2_t iRunCount;
    };
    struct Link {
        u2_t uId;
        std::size_t uPath;  // in m_oPaths
    };

    static constexpr u2_t NO_NAME = Hash::NONE;

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
            Msg::LimitExceeded("text bytes", m_oLimits.m_uTextBytes, "Limits::m_uTextBytes");
        }
        return static_cast<std::size_t>(iLength);
    }

    // Reads one record; false when the document ends.
    bool ReadRecord() {
        if (!ReadPlainStep()) ReadStep();
        const Code eCode = static_cast<Code>(Get<u0_t>());
        if (eCode != CODE_NONE) ReadValue(eCode);
        --Top().iPending;
        if (eCode == CODE_NONE) {
            std::size_t uGot;
            const i2_t iCount = Get<i2_t>(&uGot);
            if (uGot < 4) return false;
            if (iCount != 0) {
                OpenLevel(iCount);
                return true;
            }
        }
        if (m_uNode == 0) return false;
        m_uNode = b.m_oNode(m_uNode).Pred();
        // Close the levels that are complete; the root's own ends with the loop.
        while (m_uNode != 0 && m_oLevel.Size() != 0 && Top().iPending == 0) {
            m_oLevel.Truncate(m_oLevel.Size() - 1);
            m_uNode = b.m_oNode(m_uNode).Pred();
        }
        return true;
    }

    void OpenLevel(i2_t iCount) {
        if (m_oLevel.Size() > m_oLimits.m_uDepth) {
            Msg::LimitExceeded("depth", m_oLimits.m_uDepth, "Limits::m_uDepth");
        }
        m_oLevel.Add(Level{iCount, NO_NAME, 0});
    }

    // The step "name[0]" to "name[9]" of an expected name, which most records have. False
    // when it is anything else; nothing is consumed then.
    bool ReadPlainStep() {
        constexpr std::size_t uLengthSize = 4;
        if (m_oSource.AtHand() < uLengthSize + 8 || m_bFirst) return false;
        const char* p = m_oSource.Peek();
        const u2_t uLength = Load<u2_t>(p);
        p += uLengthSize;
        const u2_t uKey = m_oGuess.Match(p, m_oSource.AtHand() - uLengthSize);
        if (uKey == Hash::NONE) return false;
        const u2_t uName = b.m_oName(uKey).uLength;
        const unsigned uDigit = static_cast<u0_t>(p[uName + 1]) - unsigned{'0'};
        if (uLength != uName + 3 || uDigit > 9 || p[uName + 2] != ']') return false;
        m_oSource.Skip(uLengthSize + uLength);
        m_oGuess.Confirm(uKey);
        AppendNode(uKey, static_cast<i2_t>(uDigit));
        return true;
    }

    void ReadStep() {
        const std::size_t uLength = GetLength();
        if (uLength == 0) RaiseEmptyNodePath();
        m_oStep.Parse(m_oSource.View(uLength));
        const u2_t uKey = b.Intern(m_oStep.Name());
        const Hash_Text& oName = b.m_oName(uKey);
        m_oGuess.Note(uKey, uKey != 0 && !detail::HasReserved({oName.sText, oName.uLength}));
        if (m_bFirst) {
            b.m_oNode(0).uKey = uKey;
            m_bFirst = false;
        } else {
            AppendNode(uKey, m_oStep.Index());
        }
        const Arr<Step::Attribute>& oAttributes = m_oStep.Attributes();
        if (oAttributes.Size() == 0) return;
        if (oAttributes.Size() > m_oLimits.m_uAttributes) {
            Msg::LimitExceeded("attributes", m_oLimits.m_uAttributes, "Limits::m_uAttributes");
        }
        m_oData.SetToNode(m_uNode);
        for (std::size_t u = 0; u < oAttributes.Size(); ++u) {
            m_oData.SetAttVal(oAttributes(u).sName, oAttributes(u).sValue);
        }
    }

    // Appends the node of a record, behind placeholders for the run indexes that it skips.
    void AppendNode(u2_t uKey, i2_t iIndex) {
        const u2_t uParent = m_uNode;
        b.CheckAppend(uParent);
        Level& oLevel = Top();
        const bool bSameRun = oLevel.uRunKey == uKey;
        if (!bSameRun) {
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
            Msg::LimitExceeded("skipped slots", m_oLimits.m_uSkippedSlots,
                               "Limits::m_uSkippedSlots");
        }
        for (; iSlots > 0; --iSlots) {
            b.Remove(m_uNode);
            m_uNode = AppendCounted(uParent, uKey);
        }
    }

    u2_t AppendCounted(u2_t uParent, u2_t uKey) {
        if (b.m_oNode.Size() >= m_oLimits.m_uNodes) [[unlikely]] {
            Msg::LimitExceeded("nodes", m_oLimits.m_uNodes, "Limits::m_uNodes");
        }
        return b.Append(uParent, uKey);
    }

    // ---- values -----------------------------------------------------------

    // The node of the record is new: whatever it gets replaces nothing.
    void SetValue(Data_Node::Type eType, u3_t uValue) {
        Data_Node& oNode = b.m_oNode(m_uNode);
        oNode.SetType(eType);
        oNode.SetValue64(uValue);
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
        const void* pNul = sText.empty() ? nullptr : std::memchr(sText.data(), 0, sText.size());
        if (pNul != nullptr) {
            const char* pEnd = static_cast<const char*>(pNul);
            sText = sText.substr(0, static_cast<std::size_t>(pEnd - sText.data()));
        }
        if (IsAscii(sText.data(), sText.size())) {
            const u2_t uOffset = b.AddText(sText);
            return SetValue(Data_Node::String, u3_t{sText.size() + 1} << 32 | uOffset);
        }
        const Utf8_Text oText(sText);
        const u2_t uOffset = b.AddText(oText.View());
        SetValue(Data_Node::String, u3_t{oText.Len() + 1} << 32 | uOffset);
    }

    void ReadBlock() {
        const std::size_t uLength = GetLength();
        const std::string_view sBlock = m_oSource.View(uLength);
        // Where the stream ends inside, zeros follow; not more than were worth reading.
        const std::size_t uMissing = std::min(uLength - sBlock.size(), StreamSource::CHUNK);
        const u2_t uOffset = b.AddHeap(sBlock.data(), sBlock.size());
        if (uMissing != 0) {
            Arr<char> oZeros;
            oZeros.Resize(uMissing);
            b.AddHeap(oZeros.Beg(), uMissing);
        }
        SetValue(Data_Node::Binary, u3_t{sBlock.size() + uMissing} << 32 | uOffset);
    }

    void ReadQuad() {
        char s[16];
        m_oSource.Fetch(s, sizeof(s));
        const u2_t auRest[3] = {Load<u2_t>(s + 4), Load<u2_t>(s + 8), Load<u2_t>(s + 12)};
        const u2_t uOffset = b.AddHeap(auRest, sizeof(auRest));
        SetValue(Data_Node::Quad, u3_t{Load<u2_t>(s)} << 32 | uOffset);
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
    Step m_oStep;
    NameGuess m_oGuess;
    Arr<Level> m_oLevel;
    Arr<Link> m_oLink;
    Arr<char> m_oPaths;
    u2_t m_uNode = 0;  // of the record being read; between records the parent of the next one
    u3_t m_uSkipped = 0;
    bool m_bFirst = true;
};

// Tells the caller where an operation ended, on its way out.
template <class Source>
class ReportOnExit {
  public:
    ReportOnExit(Load_Report* pReport, const Data& oData, const Source& oSource,
                 const Reader<Source>& oReader) noexcept
        : m_pReport(pReport), m_oData(oData), m_oSource(oSource), m_oReader(oReader) {}
    ~ReportOnExit() {
        if (m_pReport == nullptr) return;
        m_pReport->m_uOffset = HEADER_SIZE + m_oSource.Offset();
        m_pReport->m_uNodes = m_oData.GetNodes();
        try {
            m_pReport->m_oPath = m_oData.GetNodeFromID(m_oReader.CurrentNode()).GetPath();
        } catch (const std::exception&) {
            m_pReport->m_oPath.Clear();
        }
    }
    ReportOnExit(const ReportOnExit&) = delete;
    ReportOnExit& operator=(const ReportOnExit&) = delete;

  private:
    Load_Report* m_pReport;
    const Data& m_oData;
    const Source& m_oSource;
    const Reader<Source>& m_oReader;
};

template <class Source>
void ReadRecords(Data& oData, Source& oSource, const Limits& oLimits, Load_Report* pReport) {
    Reader<Source> oReader(oData, oSource, oLimits);
    const ReportOnExit<Source> oReport(pReport, oData, oSource, oReader);
    oReader.Run();
    oReader.ResolveLinks();
}

}  // namespace

}  // namespace dgraph

void Dgraph_LoadDGraph(Data& data, File_Stream& in, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Dgraph_LoadDGraph", [&] {
        if (pReport != nullptr) *pReport = Load_Report();
        data.Clear();
        data.SetToRoot();
        data.SetRootName("Root");
        char sHeader[dgraph::HEADER_SIZE] = {};
        const std::size_t uRead = in.Read(sHeader, sizeof(sHeader), true);
        if (pReport != nullptr) pReport->m_uOffset = uRead;
        if (uRead < dgraph::MAGIC_SIZE ||
            std::memcmp(sHeader, dgraph::MAGIC, dgraph::MAGIC_SIZE) != 0) {
            dgraph::RaiseNoBinaryDGraph();
        }
        if (sHeader[9] == 2) Msg::FeatureNotYetImplemented("DGraph major version 2");
        if (sHeader[9] != 1) dgraph::RaiseWrongVersion();
        if (File_Buf* pBuffer = dynamic_cast<File_Buf*>(&in); pBuffer != nullptr) {
            dgraph::BufferSource oSource(*pBuffer);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        } else {
            dgraph::StreamSource oSource(in);
            dgraph::ReadRecords(data, oSource, oLimits, pReport);
        }
        Dgraph_SetVersion(data, 1, static_cast<u0_t>(sHeader[10]), static_cast<u0_t>(sHeader[11]));
        data.Shrink();
    });
}

}  // namespace vok
