// SPDX-License-Identifier: MIT
// Reading DGraph documents of major version 1. Internal.
//
// Its functions stand in two files: steps and values (reader.cpp), and the loop that most records
// go through (fast_reader.h).
#ifndef VOK_DGRAPH_READER_H
#define VOK_DGRAPH_READER_H

#include <algorithm>
#include <string_view>

#include "vok/base/hash_guess.h"
#include "vok/base/work.h"
#include "vok/data/memory_watch.h"
#include "vok/data/store.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/messages.h"
#include "vok/dgraph/sources.h"
#include "vok/dgraph/step.h"

namespace vok::dgraph {

// Reads from a memory buffer in place, or field by field from any stream. Nothing that it is told
// is trusted.
template <class Source>
class Reader {
  public:
    // What counts against the limits of a document already, where only a part of it is read: nodes,
    // skipped places, and levels that are open.
    struct Above {
        u3_t uNodes = 0;
        u3_t uSkipped = 0;
        std::size_t uLevels = 0;
    };

    Reader(Source& oSource, const Limits& oLimits)
        : m_oSource(oSource), m_oLimits(oLimits), m_oWork(oLimits) {}

    // Reads a document into a tree without nodes.
    void Run(Data& oTree);
    // Reads what is below a record that was read already, and has so many successors, one level
    // below it being within the limit: they become those of the root, which is there. May be called
    // again, with another tree.
    void RunBelow(Data& oTree, u2_t uCount, const Above& oAbove);

    // Sets the links, once every target is there.
    void ResolveLinks();
    // Leaves them empty instead, and gives the id of each and the path of its target.
    template <class F>
    void DropLinks(const F& oUse) {
        for (const Link& o : m_oLink) {
            m_pBase->m_oNode(o.uId).SetType(Data_Node::Empty);
            m_pBase->SetNewValue(o.uId, Data_Node::Empty, 0, 0);
            oUse(o.uId, std::string_view(m_oPaths.Beg() + o.uPath));
        }
    }

    // The node of the record being read.
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }
    // What the document did not have, and what its links took.
    void AddTo(Load_Report& oReport) const noexcept {
        oReport.m_uMissingBytes = m_oSource.Missing();
        oReport.m_uMissingNodes += MissingNodes();
        oReport.m_uWork = m_oWork.Done();
    }
    // Records that were announced and have not come.
    [[nodiscard]] u3_t MissingNodes() const noexcept {
        u3_t uMissing = 0;
        for (const Level& o : m_oLevel) uMissing += o.uPending;
        return uMissing;
    }
    // Places that were skipped, those above included.
    [[nodiscard]] u3_t Skipped() const noexcept { return m_uSkipped; }
    // Whether the successors of every node came in the order of their names.
    [[nodiscard]] bool IsInOrder() const noexcept { return m_bInOrder; }
    // Whether the stream ended where the document may be cut off, in front of a count.
    [[nodiscard]] bool IsCutOff() const noexcept { return m_bCutOff; }

  private:
    void Start(Data& oTree, const Above& oAbove);
    // The successors of one open node: records still to come (a negative number is a large
    // one), the run of equal names at its end, whether all came in the order of names. The
    // lowest level is that of the root itself.
    struct Level {
        u2_t uPending;
        u2_t uRunKey;
        i2_t iRunCount;
        u2_t uParent;
        bool bInOrder;
        const char* pBefore = nullptr;  // the record in front, where the next one may be like it
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
    static constexpr u3_t BYTES_BETWEEN_CHECKS = u3_t{1} << 20;
    // A text is held by the source and by the tree.
    static constexpr u3_t COPIES = 2;

    [[nodiscard]] Level& Top() noexcept { return m_oLevel.Last(); }

    template <class T>
    T Get(std::size_t* pGot = nullptr) {
        char s[sizeof(T)];
        const std::size_t uGot = m_oSource.Fetch(s, sizeof(T));
        if (pGot != nullptr) *pGot = uGot;
        return Load<T>(s);
    }

    // A length from outside, checked.
    std::size_t GetLength();

    // Reads one record; false when the document ends.
    bool ReadRecord();

    // Closes the levels that are complete; that of the root's successors stays open.
    void CloseLevels() noexcept {
        while (Top().uPending == 0 && Top().uParent != 0) {
            m_oLevel.Pop();
        }
    }

    // Reads records as long as they are like most records are: an expected name, no attributes,
    // the next index of its run, in the order of names, a value that needs no second look.
    // Stops in front of the first other one, which is for ReadRecord. This loop is what
    // loading a document costs.
    void ReadFastRecords();
    // The same for the record of the root, which is the first one; false when it is for ReadRecord.
    bool ReadFastRoot();
    class Fast;

    // A name in a step text: its key, 0 for one that needs a second look, and its bytes there.
    struct Name {
        u2_t uKey = 0;
        std::size_t uLength = 0;
    };
    // That of a name which documents carry as it stands, or which was seen before; "[" ends it.
    [[nodiscard]] Name ScanName(const char* p, std::size_t uStep);
    [[nodiscard]] Name FindForm(std::string_view sForm);

    // Whether a name belongs before that of the last record.
    [[nodiscard]] bool IsBehind(const Level& oLevel, u2_t uKey) const noexcept {
        return oLevel.uRunKey != NO_NAME && m_pBase->m_oName.IsLess(uKey, oLevel.uRunKey);
    }

    void OpenLevel(i2_t iCount);
    // Whether one more level is within the limit.
    [[nodiscard]] bool MayOpen() const noexcept {
        return m_oLevel.Size() + m_uAbove < m_oLimits.m_uDepth;
    }
    // Room for no more successors, on all levels together, than there can be records in the bytes
    // at hand, uNodes being there.
    [[nodiscard]] u2_t RoomFor(u2_t uCount, u3_t uAtHand, u3_t uNodes) const noexcept {
        const u3_t uAll = m_uPromised + uCount;
        if (uAll <= uNodes || (uAll - uNodes) * SMALLEST_RECORD <= uAtHand) [[likely]]
            return uCount;
        const u3_t uRecords = uAtHand / SMALLEST_RECORD + uNodes;
        const u3_t uMost = std::max(uRecords - std::min(uRecords, m_uPromised), UNSEEN_RECORDS);
        return static_cast<u2_t>(std::min<u3_t>(uCount, uMost));
    }

    void ReadStep();
    void NoteForm(std::string_view sForm, u2_t uKey);

    // Appends the node of a record, behind placeholders for the run indexes that it skips.
    void AppendNode(u2_t uKey, i2_t iIndex);

    void SkipSlots(u2_t uParent, u2_t uKey, i3_t iSlots);

    u2_t AppendCounted(u2_t uParent, u2_t uKey) {
        if (m_pBase->m_oNode.Size() >= m_uMostNodes) [[unlikely]]
            CheckNodes();
        return m_pBase->AppendPlaced(uParent, uKey);
    }

    // Bytes that the next fields may cost: they are looked at together.
    void NoteBytes(u3_t uBytes) {
        m_uNoted += uBytes;
        if (m_uNoted >= BYTES_BETWEEN_CHECKS) LookAtMemory();
    }

    // Raises the error of the limit on nodes for one more. Where a small input can become a large
    // tree, looks at its memory.
    void CheckNodes();
    // Raises the error of the limit on memory where there is one, and says at how many nodes to
    // look again.
    void LookAtMemory();

    // ---- values -----------------------------------------------------------

    void SetValue(Data_Node::Type eType, u3_t uValue) {
        m_pBase->SetNewValue(m_uNode, eType, static_cast<u2_t>(uValue),
                             static_cast<u2_t>(uValue >> 32));
    }

    void ReadValue(Code eCode);

    void ReadText() {
        std::string_view sText = m_oSource.View(GetLength());
        // The text ends at its first NUL, which is almost always the last byte.
        if (!sText.empty() && sText.back() == 0) sText.remove_suffix(1);
        m_pBase->SetNewText(m_uNode, sText);
    }

    void ReadBlock();

    void ReadQuad() {
        char s[16];
        m_oSource.Fetch(s, sizeof(s));
        const Data_Heap::Quad auWord = {Load<u2_t>(s), Load<u2_t>(s + 4), Load<u2_t>(s + 8),
                                        Load<u2_t>(s + 12)};
        SetValue(Data_Node::Quad, u3_t{auWord[0]} << 32 | m_pBase->m_oHeap.AddQuad(auWord));
    }

    void ReadLink();

    Source& m_oSource;
    const Limits& m_oLimits;
    Work m_oWork;
    Data* m_pData = nullptr;
    Data_Base* m_pBase = nullptr;
    u3_t m_uMost = 0;       // nodes there may be
    u3_t m_uMostNodes = 0;  // nodes there may be before CheckNodes is asked
    u3_t m_uNoted = 0;      // bytes since memory was looked at
    Step m_oStep;
    // Names as they stand in the document, where that is not as they are, and their keys.
    Hash m_oForm;
    Arr<u2_t> m_oKeyOfForm;
    Arr_Near<Level, 32> m_oLevel;
    Arr<Link> m_oLink;
    Arr<char> m_oPaths;
    u2_t m_uNode = 0;  // of the record being read; its parent as long as its name is not known
    u3_t m_uSkipped = 0;
    std::size_t m_uAbove = 0;  // levels
    u3_t m_uPromised = 0;      // successors that groups have room for
    bool m_bFirst = true;
    bool m_bInOrder = true;
    bool m_bCutOff = false;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_READER_H
