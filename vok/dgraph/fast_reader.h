// SPDX-License-Identifier: MIT
// The loop that most records are read by. Internal: reader.cpp includes it, so that a
// compiler may put the loop where it is called.
#ifndef VOK_DGRAPH_FAST_READER_H
#define VOK_DGRAPH_FAST_READER_H

#include <algorithm>
#include <functional>

#include "vok/dgraph/fast_step.h"
#include "vok/dgraph/reader.h"

namespace vok::dgraph {

// The reader's state in locals, while records are like most records are. What is appended and
// consumed counts for the reader and the tree only after Sync, and for a level when another one is
// the last: loops and stores of bytes would otherwise have every field of theirs read and written
// again for every record.
//
// m_p is the next record. The level is the reader's last one, its successors came in the order of
// names and stand in a group that is in order; m_pId is where the id of the next one goes.
template <class Source>
class Reader<Source>::Fast {
  public:
    [[gnu::always_inline]] explicit Fast(Reader& oReader) noexcept
        : r(oReader), m_oBase(*oReader.m_pBase), m_p(oReader.m_oSource.Peek()) {
        SetEnd();
    }
    [[gnu::always_inline]] ~Fast() {
        if (m_bAhead) Sync();
    }
    Fast(const Fast&) = delete;
    Fast& operator=(const Fast&) = delete;

    // Reads up to the first record that is not for it.
    [[gnu::always_inline]] void Run() {
        if (!LoadLevel()) return;
        while (ReadLevel()) {
        }
    }
    // Reads the first record, which is the root's; false when it is not for this.
    [[nodiscard]] bool ReadRoot() {
        m_uRunKey = NO_NAME;
        m_uRunCount = 0;
        Record o;
        if (!ReadHead(o) || o.eCode != CODE_NONE) return false;
        const i2_t iCount = Load<i2_t>(o.pValue);
        if (iCount <= 0) return false;
        m_oBase.m_oNode(0).uKey = o.uKey;
        r.m_bFirst = false;
        --r.Top().uPending;
        r.m_oSource.Skip(static_cast<std::size_t>(o.pValue + 4 - r.m_oSource.Peek()));
        r.OpenLevel(iCount);
        return true;
    }

  private:
    // Where what is at hand ends, and up to where heads are compared as a whole: nowhere, if they
    // might be longer than a text may be.
    [[gnu::always_inline]] void SetEnd() noexcept {
        const std::size_t uAtHand = r.m_oSource.AtHand();
        m_pEnd = m_p + uAtHand;
        const bool bHeads = uAtHand >= HEAD_ROOM && r.m_oLimits.m_uTextBytes >= MOST_HEAD;
        m_pLastHead = bHeads ? m_pEnd - HEAD_ROOM : nullptr;
    }

    // A record taken apart: its name and index, its type code, where its value begins.
    struct Record {
        u2_t uKey;
        u2_t uIndex;
        Code eCode;
        const char* pValue;
    };

    // Takes the state of the reader and of its last level; false when there is nothing to read in
    // it, or not by this loop.
    [[gnu::always_inline]] bool LoadLevel() noexcept {
        m_bAhead = false;
        if (!m_oBase.CanPlace(r.Top().uParent)) return false;
        m_oTail = m_oBase.TakeTail(r.m_uMostNodes);
        m_bAhead = LoadTop();
        return m_bAhead;
    }
    // The same for a level behind one below it, which has a group.
    [[gnu::always_inline]] bool LoadTop() noexcept {
        const Level& oLevel = r.Top();
        const Data_Node& oParent = m_oTail.pNodes[oLevel.uParent];
        if (oLevel.uPending == 0 || !oLevel.bInOrder) return false;
        if (!m_oBase.m_oGroup.HasRoom(oParent.Start())) return false;
        m_uParent = oLevel.uParent;
        m_uBelow = Data_Node::FlagsBelow(m_uParent);
        m_uPending = oLevel.uPending;
        m_uRunKey = oLevel.uRunKey;
        m_uRunCount = static_cast<u2_t>(oLevel.iRunCount);
        m_pBefore = oLevel.pBefore;
        m_pFirst = m_oBase.m_oGroup.Ids(oParent.Start());
        m_pId = m_pFirst + oParent.Size();
        const std::size_t uRoom = m_oBase.m_oGroup.Room(oParent.Start()) - oParent.Size();
        m_pLast = m_pId + std::min<std::size_t>(uRoom, m_oTail.Left());
        return true;
    }
    // Gives the reader and the tree the state of the level.
    [[gnu::always_inline]] void SyncLevel() noexcept {
        Level& oLevel = r.Top();
        oLevel.uPending = m_uPending;
        oLevel.uRunKey = m_uRunKey;
        oLevel.iRunCount = static_cast<i2_t>(m_uRunCount);
        if constexpr (!Source::MOVES) oLevel.pBefore = m_pBefore;
        Data_Node& oParent = m_oTail.pNodes[m_uParent];
        oParent.uWord3 = static_cast<u2_t>(m_pId - m_pFirst);
        m_oBase.m_oGroup.SetPlaced(oParent.Start(), oParent.uWord3);
    }
    // And all other state.
    [[gnu::always_inline]] void Sync() noexcept {
        SyncLevel();
        SyncEnd();
    }
    [[gnu::always_inline]] void SyncEnd() noexcept {
        m_oBase.GiveBack(m_oTail);
        m_oBase.m_uIndexed = m_oTail.NextId();
        r.m_oSource.Skip(static_cast<std::size_t>(m_p - r.m_oSource.Peek()));
        r.m_uNode = m_oTail.NextId() - 1;
    }
    // The rest is the reader's: nothing that it does is undone by Sync.
    [[gnu::always_inline]] void HandOver() noexcept {
        Sync();
        m_bAhead = false;
    }

    // Reads records until another level is the last one; false in front of a record that is not
    // for this loop.
    [[gnu::always_inline]] bool ReadLevel() {
        do {
            Record o;
            if (!ReadExpected(o) && !ReadHead(o)) return false;
            if (m_pId == m_pLast) return false;
            if (o.eCode == CODE_NONE) {
                const i2_t iCount = Load<i2_t>(o.pValue);
                if (iCount <= 0) return false;
                m_pBefore = m_p;
                if (Open(o, static_cast<u2_t>(iCount))) return true;
                Append(o, Data_Node::Empty, 0);
                m_p = o.pValue + 4;
                HandOver();
                r.OpenLevel(iCount);
                return LoadLevel();
            }
            m_pBefore = m_p;
            ReadValue(o);
        } while (m_uPending != 0);
        return Close();
    }
    // Appends a node that has successors, and makes theirs the last level; false, with nothing
    // changed, where that needs memory or is refused.
    [[gnu::always_inline]] bool Open(const Record& o, u2_t uCount) noexcept {
        const u2_t uId = m_oTail.NextId();
        const char* const pBehind = o.pValue + 4;
        const u2_t uRoom =
            r.RoomFor(uCount, static_cast<std::size_t>(m_pEnd - pBehind), uId + u3_t{1});
        if (r.m_oLevel.Size() == r.m_oLevel.Capacity() || !r.MayOpen() ||
            !Data_Node::MayPred(uId)) {
            return false;
        }
        if (!m_oBase.m_oGroup.HasSpace(uRoom)) return false;
        const u2_t uStart = m_oBase.m_oGroup.Add(uRoom);
        Append(o, Data_Node::Tree, uStart);
        SyncLevel();
        r.m_oLevel.Emplace(uCount, NO_NAME, 0, uId, true);
        r.m_uPromised += uRoom;
        m_p = pBehind;
        m_uParent = uId;
        m_uBelow = Data_Node::FlagsBelow(uId);
        m_uPending = uCount;
        m_uRunKey = NO_NAME;
        m_uRunCount = 0;
        m_pBefore = nullptr;
        m_pId = m_pFirst = m_oBase.m_oGroup.Ids(uStart);
        m_pLast = m_pId + std::min<std::size_t>(uRoom, m_oTail.Left());
        return true;
    }
    // Goes back to the next level that is not complete; false where that is not for this loop.
    [[gnu::always_inline]] bool Close() noexcept {
        SyncLevel();
        r.CloseLevels();
        if (LoadTop()) return true;
        SyncEnd();
        m_bAhead = false;
        return false;
    }

    // The head that is expected, in the order of names.
    [[gnu::always_inline]] bool ReadExpected(Record& o) {
        if (std::greater<const char*>()(m_p, m_pLastHead)) return false;
        Hash_Guess& oGuess = m_oBase.m_oName.Guess();
        const Hash_Guess::Expected oExpected = oGuess.GetExpected();
        const char* const pCode = MatchHead(oGuess, oExpected, m_p);
        if (pCode == nullptr) return ReadNext(o);
        o.uKey = oExpected.Key();
        const bool bBehind = m_uRunKey == oGuess.Second() && oExpected.IsAscending();
        // Else it came behind another level, or is not the name that was behind it before.
        if (!bBehind && m_uRunKey != NO_NAME && !m_oBase.m_oName.IsLess(m_uRunKey, o.uKey)) {
            return false;
        }
        oGuess.Confirm(o.uKey);
        o.uIndex = 0;
        o.eCode = static_cast<Code>(*pCode);
        o.pValue = pCode + 1;
        return true;
    }

    // The next one of the run that the record in front belongs to.
    [[gnu::always_inline]] bool ReadNext(Record& o) noexcept {
        if (m_pBefore == nullptr) return false;
        const char* const pCode = MatchNext(m_p, m_pBefore);
        if (pCode == nullptr) return false;
        o.uKey = m_uRunKey;
        o.uIndex = m_uRunCount;
        o.eCode = static_cast<Code>(*pCode);
        o.pValue = pCode + 1;
        return true;
    }

    // An expected name, no attributes, the next index of its run, in the order of names.
    [[gnu::always_inline]] bool ReadHead(Record& o) {
        const auto uAtHand = static_cast<std::size_t>(m_pEnd - m_p);
        if (uAtHand < LENGTH_SIZE) return false;
        const std::size_t uStep = Load<u2_t>(m_p);
        const char* const pStep = m_p + LENGTH_SIZE;
        const std::size_t uSeen = uAtHand - LENGTH_SIZE;
        if (uStep > r.m_oLimits.m_uTextBytes) return false;
        if (uSeen < uStep + 1 + LARGEST_VALUE && !IsThere(pStep, uSeen, uStep)) return false;
        const Name oName = ReadName(pStep, uSeen, uStep);
        if (oName.uKey == 0) return false;
        o.uKey = oName.uKey;
        const bool bSameRun = o.uKey == m_uRunKey;
        const u2_t uIndex = bSameRun ? m_uRunCount : 0;
        if (!IsIndex(pStep + oName.uLength + 1, uStep - oName.uLength - 1, uIndex)) return false;
        if (!bSameRun && m_uRunKey != NO_NAME && m_oBase.m_oName.IsLess(o.uKey, m_uRunKey)) {
            return false;
        }
        o.uIndex = uIndex;
        o.eCode = static_cast<Code>(pStep[uStep]);
        o.pValue = pStep + uStep + 1;
        return true;
    }

    // The same for a record at the end of the document: whether all that ReadValue looks at without
    // asking is there.
    [[gnu::noinline]] static bool IsThere(const char* pStep, std::size_t uSeen,
                                          std::size_t uStep) noexcept {
        return uSeen > uStep && uSeen - uStep - 1 >= FixedSize(static_cast<u0_t>(pStep[uStep]));
    }

    [[gnu::always_inline]] Name ReadName(const char* p, std::size_t uSeen, std::size_t uStep) {
        const u2_t uKey = GuessName(m_oBase.m_oName, p, uSeen);
        if (uKey == 0) return r.ScanName(p, uStep);
        m_oBase.m_oName.Guess().Confirm(uKey);
        return {uKey, m_oBase.m_oName(uKey).uLength};
    }

    [[gnu::always_inline]] void ReadValue(const Record& o) {
        const char* const p = o.pValue;
        switch (o.eCode) {
            case CODE_INTEGER: return Take(o, Data_Node::Integer, Load<u2_t>(p), 4);
            case CODE_DOUBLE: return Take(o, Data_Node::Double, Load<u3_t>(p), 8);
            case CODE_LONG: return Take(o, Data_Node::Long, Load<u3_t>(p), 8);
            case CODE_BOOLEAN: return Take(o, Data_Node::Boolean, *p != 0, 1);
            case CODE_STRING: {
                const std::size_t uText = Load<u2_t>(p);
                const char* const pText = p + LENGTH_SIZE;
                if (uText - 1 < static_cast<std::size_t>(m_pEnd - pText) &&
                    uText <= r.m_oLimits.m_uTextBytes && pText[uText - 1] == 0) {
                    const u2_t uAt = m_oBase.m_oHeap.TryAddText({pText, uText - 1});
                    if (uAt != 0) {
                        return Take(o, Data_Node::String, u3_t{uText} << 32 | uAt,
                                    LENGTH_SIZE + uText);
                    }
                }
                break;
            }
            default: break;
        }
        // Any other value is for the reader, whose node is there already.
        Append(o, Data_Node::Empty, 0);
        m_p = p;
        HandOver();
        r.ReadValue(o.eCode);
        m_p = r.m_oSource.Peek();
        if constexpr (Source::MOVES) {
            SetEnd();
            m_pBefore = nullptr;
        }
        m_bAhead = true;
    }

    [[gnu::always_inline]] void Take(const Record& o, Data_Node::Type eType, u3_t uValue,
                                     std::size_t uBytes) noexcept {
        Append(o, eType, uValue);
        m_p = o.pValue + uBytes;
    }
    [[gnu::always_inline]] void Append(const Record& o, Data_Node::Type eType,
                                       u3_t uValue) noexcept {
        *m_pId++ = m_oTail.Add(m_uBelow, o.uKey, eType, uValue);
        m_uRunKey = o.uKey;
        m_uRunCount = o.uIndex + 1;
        --m_uPending;
    }

    Reader& r;
    Data_Base& m_oBase;
    const char* m_p;
    const char* m_pEnd;
    const char* m_pLastHead;          // null where that is nowhere
    const char* m_pBefore = nullptr;  // the record in front, of this level; null where unknown
    bool m_bAhead = false;            // of what the reader and the tree know
    u2_t m_uParent;
    u2_t m_uBelow;  // flags of a node below it
    u2_t m_uPending;
    u2_t m_uRunKey;
    u2_t m_uRunCount;
    Data_Tail m_oTail;
    u2_t* m_pFirst;
    u2_t* m_pId;
    u2_t* m_pLast;
};

// Out of line: what the loop keeps in registers is worth more than the call.
template <class Source>
[[gnu::noinline]] typename Reader<Source>::Name Reader<Source>::ScanName(const char* p,
                                                                         std::size_t uStep) {
    const std::size_t uName = NameBytes(p, uStep);
    if (uName == 0) return {};
    if (!IsVerbatim(p, uName)) [[unlikely]]
        return FindForm({p, uName});
    return {m_pBase->m_oName.InternAs({p, uName}, Hash_Guess::DGRAPH), uName};
}

template <class Source>
[[gnu::noinline]] typename Reader<Source>::Name Reader<Source>::FindForm(std::string_view sForm) {
    const u2_t uForm = m_oForm.Find(sForm);
    if (uForm == Hash::NONE || m_oKeyOfForm(uForm) == 0) return {};
    const u2_t uKey = m_oKeyOfForm(uForm);
    m_pBase->m_oName.Guess().Note(uKey, m_pBase->m_oName.Size());
    return {uKey, sForm.size()};
}

template <class Source>
bool Reader<Source>::ReadFastRoot() {
    return Fast(*this).ReadRoot();
}

template <class Source>
void Reader<Source>::ReadFastRecords() {
    Fast(*this).Run();
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_FAST_READER_H
