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
#include "vok/data/record_trail.h"
#include "vok/data/store.h"

namespace vok::detail {

// A record that was read in front of its turn, one without attributes.
class Ahead_Record final : public Data_Record {
  public:
    using Data_Record::m_iIndex;
    using Data_Record::m_sName;
    using Data_Record::m_sText;
    using Data_Record::m_uDepth;
    using Data_Record::m_uOffset;
    using Data_Record::SetValue;

    u2_t m_uKey = 0;  // of its name
};

// A document of which the record says what the last call of Next has come to, or GoBack.
class Record_Source : public Data_Record {
  public:
    Record_Source(const Record_Source&) = delete;
    Record_Source& operator=(const Record_Source&) = delete;
    virtual ~Record_Source() = default;

    // The next record that is not left out, which is the source itself or one of several that were
    // read together; null behind the last one. Not to be called again after an error.
    virtual const Data_Record* Next() = 0;
    // Records behind that one may be known already: the next of them, which goes in front of what
    // Next comes to; null behind the last one.
    [[nodiscard]] const Data_Record* NextAhead() noexcept {
        return m_pAhead != m_pAheadEnd ? m_pAhead++ : nullptr;
    }
    // Knows none any more, and has come to the one that NextAhead gave last, if it has given one.
    // To be called in front of all that asks where it stands.
    virtual void GoBack() noexcept {}
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

    // Leaves out what is below the last node of a level, or nothing after all.
    void SkipBelow(std::size_t uLevel) noexcept { m_uMostDepth = uLevel; }
    void SkipNothing() noexcept { m_uMostDepth = ALL; }
    [[nodiscard]] const Record_Trail& Trail() const noexcept { return m_oTrail; }
    // Looks at the order of a name behind the last one of the last level.
    void NoteOrder(u2_t uKey) noexcept {
        const u2_t uLast = m_oTrail.Last().uKey;
        if (uKey == uLast || uLast == Hash::NONE) return;
        if (m_oTrail.Names().IsLess(uKey, uLast)) [[unlikely]]
            m_bInOrder = false;
    }
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
    // Whether records may be left out.
    [[nodiscard]] bool LeavesOut() const noexcept { return m_uMostDepth != ALL; }
    // Whether the record is left out, which ends with the first one that is not.
    [[nodiscard]] bool IsLeftOut() noexcept {
        if (m_uDepth > m_uMostDepth) return true;
        SkipNothing();
        return false;
    }

    const Ahead_Record* m_pAhead = nullptr;
    const Ahead_Record* m_pAheadEnd = nullptr;
    Record_Trail m_oTrail;
    Arr<u3_t> m_oNumber;
    u3_t m_uLinked = NO_NUMBER;
    u3_t m_uLeft = 0;
    bool m_bInOrder = true;

  private:
    static constexpr std::size_t ALL = ~std::size_t{0};
    std::size_t m_uMostDepth = ALL;  // records below are left out
};

}  // namespace vok::detail

#endif  // VOK_DATA_RECORD_SOURCE_H
