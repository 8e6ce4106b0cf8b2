// SPDX-License-Identifier: MIT
// What a codec is asked for by those who read record by record. Internal.
#ifndef VOK_DATA_RECORD_SOURCE_H
#define VOK_DATA_RECORD_SOURCE_H

#include <string_view>
#include <vector>

#include "vok/base/limits.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"
#include "vok/data/data.h"
#include "vok/data/record.h"
#include "vok/data/record_batch.h"
#include "vok/data/record_trail.h"
#include "vok/data/store.h"

namespace vok::detail {

// A document of which the record says what the last call of Next has come to, or GoBack.
class Record_Source : public Data_Record {
  public:
    Record_Source(const Record_Source&) = delete;
    Record_Source& operator=(const Record_Source&) = delete;
    virtual ~Record_Source() = default;

    // The next record that is not left out: the source itself, or one of several that were read
    // together, which lead to those behind them; null behind the last one. Not to be called again
    // after an error.
    virtual const Data_Record* Next() = 0;
    // Has come to no more than a record that Next gave, or led to, and says what that says. To be
    // called in front of all that asks where it stands.
    virtual void GoBack(const Data_Record* pGiven) noexcept = 0;
    // What building the tree of a record has come to, by the ids of its nodes.
    struct Built {
        // A node that is to lead to another.
        struct Link {
            u2_t uId;
            u3_t uNumber;  // of its target; NO_NUMBER where that is told by its path
            bool bEmpty;   // it is nothing else
            Str oTarget;   // what the document says of it
        };
        struct Numbered {
            u3_t uNumber;
            u2_t uId;
        };
        u2_t uNode = 0;      // of the record being read
        bool bGaps = false;  // there are removed nodes, for free places in runs
        Arr<Numbered> oNumber;
        std::vector<Link> aoLink;
    };
    // Builds what is below the record, a Tree that has just been come to, as the successors of the
    // root of oTree, whose nodes are in oBase, and passes over it; adds to oBuilt, as far as it
    // goes where it ends with an error. Links stay empty.
    virtual void BuildBelow(Data& oTree, Data_Base& oBase, Built& oBuilt) = 0;
    // The user tag of trees of such a document.
    [[nodiscard]] virtual Str Version() const { return {}; }
    // Where reading has got to, or has failed, and what was met on the way.
    virtual void AddTo(Load_Report& oReport) const = 0;
    // Bytes read so far.
    [[nodiscard]] virtual u3_t Offset() const = 0;
    // Bytes behind the document that were read as well, once Next has returned false.
    [[nodiscard]] u3_t Left() const noexcept { return m_uLeft; }

    // The path of the record that was given last. Linear in what it gives.
    [[nodiscard]] Str PathOf(const Data_Record& r) const {
        if (&r == this) return m_oTrail.PathTo(r.GetDepth());
        return m_oBatch.PathTo(m_oTrail, static_cast<const Record_Batch::Entry&>(r));
    }
    // Leaves out what is below the record that was given last, or nothing after all.
    void SkipBelow(const Data_Record& r) noexcept {
        const bool bAhead =
            &r != this && m_oBatch.SkipBelow(static_cast<const Record_Batch::Entry&>(r));
        if (!bAhead) m_uMostDepth = r.GetDepth();
    }
    void SkipNothing() noexcept { m_uMostDepth = ALL; }
    [[nodiscard]] const Record_Trail& Trail() const noexcept { return m_oTrail; }
    // Makes the record the last node of an open level again, without a value.
    void StandAt(std::size_t uLevel) noexcept {
        m_uDepth = static_cast<u2_t>(uLevel);
        m_iIndex = static_cast<i2_t>(m_oTrail.At(uLevel).uRun - 1);
        m_sName = m_oTrail.NameAt(uLevel);
        m_sText = {};
        m_oAttribute.Truncate(0);
        SetValue(Data_Node::Empty, 0);
    }
    // Numbers by which links lead to the record, and the one that the record leads to.
    static constexpr u3_t NO_NUMBER = ~u3_t{0};
    [[nodiscard]] const Arr<u3_t>& Numbers() const noexcept { return m_oNumber; }
    [[nodiscard]] u3_t LinkedNumber() const noexcept { return m_uLinked; }
    // Whether the record is a Tree and nothing is said of it but its name.
    [[nodiscard]] bool IsBareTree() const noexcept {
        return m_eType == Data_Node::Tree && m_oAttribute.Size() == 0 && m_oNumber.Size() == 0 &&
               m_uLinked == NO_NUMBER;
    }
    // Whether successors came in the order of their names so far.
    [[nodiscard]] bool IsInOrder() const noexcept { return m_bInOrder; }

  protected:
    Record_Source() = default;

    // A text from outside as the tree would have it, in place where it is so already.
    [[nodiscard]] static std::string_view Valid(std::string_view s, Arr<char>& oRoom) {
        if (IsAsciiText(s.data(), s.size())) [[likely]]
            return s;
        const Utf8_Text oText(s);
        const bool bSame = oText.View().data() == s.data();
        if (bSame) return oText.View();
        oRoom.Truncate(0);
        oRoom.Add(oText.View().data(), oText.View().size());
        return {oRoom.Beg(), oRoom.Size()};
    }
    // Makes the record the last node of the last level, with the value and the attributes that it
    // is given.
    void StandAtLast() noexcept {
        m_uDepth = static_cast<u2_t>(m_oTrail.Size() - 1);
        m_iIndex = static_cast<i2_t>(m_oTrail.Last().uRun - 1);
        m_sName = m_oTrail.NameAt(m_uDepth);
    }
    // The first record that is not left out, from one on that was just read, with which leaving
    // out ends; null where all are.
    [[nodiscard]] const Data_Record* FirstShown(const Data_Record* p) noexcept {
        while (p->GetDepth() > m_uMostDepth) {
            p = p != this ? static_cast<const Record_Batch::Entry*>(p)->m_pNext : nullptr;
            if (p == nullptr) return nullptr;
        }
        SkipNothing();
        return p;
    }

    // ---- records in front of their turn ---------------------------------------------

    // Whether they had better come one by one.
    [[nodiscard]] bool IsPatient() const noexcept { return m_uPatience != 0; }
    // How many may be read together, of those that there may be.
    [[nodiscard]] std::size_t MostAhead(u3_t uLimit) noexcept {
        if (m_uPatience == 0) return std::min<u3_t>(uLimit, Record_Batch::MOST);
        --m_uPatience;
        return std::min<u3_t>(uLimit, 1);
    }
    // The source has come to one more node of the run in front, in which there are others.
    void StandAtNext(u3_t uOffset, u2_t uSuccs) noexcept {
        Record_Trail::Level& o = m_oTrail.Last();
        m_uDepth = static_cast<u2_t>(m_oTrail.Size() - 1);
        m_iIndex = static_cast<i2_t>(o.uRun++);
        m_sName = m_oTrail.NameText(o.uKey).View();
        m_uOffset = uOffset;
        m_sText = {};
        SetValue(Data_Node::Tree, uSuccs);
        m_oAttribute.Truncate(0);
    }
    // The source says what one of them says, and there is none behind it any more. Where there was
    // one the trail is what it was in front of them, and has come back to that one with what oNote
    // has it note of each; then the result is true.
    template <class Note>
    bool GoBackTo(const Record_Batch::Entry& oLast, Note oNote) noexcept {
        m_uDepth = oLast.m_uDepth;
        m_iIndex = oLast.m_iIndex;
        m_sName = oLast.m_sName;
        m_uOffset = oLast.m_uOffset;
        m_sText = oLast.m_sText;
        SetValue(oLast.GetType(), oLast.Lng());
        m_oAttribute.Truncate(0);
        m_uPatience = PATIENCE;
        if (m_oBatch.IsLast(oLast)) return false;
        if (Record_Batch::Skips(oLast)) m_uMostDepth = oLast.GetDepth();
        m_oBatch.SetSize(static_cast<std::size_t>(&oLast - m_oBatch.begin()) + 1);
        m_oBatch.Restore(m_oTrail);
        for (const Record_Batch::Entry& o : m_oBatch) {
            while (m_oTrail.Size() > o.GetDepth() + std::size_t{1}) m_oTrail.Close();
            oNote(o, m_oTrail.Names().Find(o.m_sName));
        }
        return true;
    }

    Record_Batch m_oBatch;
    Record_Trail m_oTrail;
    Arr<u3_t> m_oNumber;
    u3_t m_uLinked = NO_NUMBER;
    u3_t m_uLeft = 0;
    bool m_bInOrder = true;

  private:
    // Who asks where one of them stands will do so again: records until it is tried once more.
    static constexpr u2_t PATIENCE = 256;
    u2_t m_uPatience = 0;  // records that are still to come one by one

    static constexpr std::size_t ALL = ~std::size_t{0};
    std::size_t m_uMostDepth = ALL;  // records below are left out
};

}  // namespace vok::detail

#endif  // VOK_DATA_RECORD_SOURCE_H
