// SPDX-License-Identifier: MIT
// The tree store behind every cursor. Internal: the code of this folder and the codecs work on it
// directly, everybody else through cursors.
//
// A tree is a handful of flat arrays, each in a class of its own that alone knows its words:
//
//     m_oNode   records of 16 bytes by id (node.h); id 0 is the root
//     m_oName   the distinct names, numbered from 1 on (names.h)
//     m_oGroup  the successors of every node, in groups (succ_groups.h)
//     m_oHeap   texts, blocks, words of quads, attribute values (text_heap.h)
//     m_oAtt    attributes by name (attribute_table.h)
//
// The tree   Root ( b = "hi", a = 7 with attribute k = "v" ),   built in that order and read:
//
//     m_oName    0 ""   1 "b"   2 "a"
//
//     m_oNode    id   name   predecessor + 1   type      words 2 and 3
//                 0      0                 0   Tree      0, 2    group at word 0, 2 successors
//                 1      1                 1   String    1, 3    text at 1, 3 bytes with its NUL
//                 2      2                 1   Integer   7, 0
//
//     m_oGroup   word   0   1   2   3
//                       2   2   2   1       2 successors, room for 2: node 2, "a", before node 1
//
//     m_oHeap    byte   0   1   2   3   4   5
//                      NUL  h   i  NUL  v  NUL
//
//     m_oAtt     names  1 "k";   records of 1:  node 2, text at 4, no other;   heads  0 0 1
//
// Building only appends: a record, the parent's count, perhaps a text. So a node that was not
// moved has a higher id than its parent and its elder siblings. What is appended is pending, from
// m_uIndexed on: its id stands in no group, and the count of its parent is ahead of its group.
// The first read of the successors of a parent that misses some places all that are pending.
//
// What is handed out points into these arrays. A record or a text is good until something is
// added; a group until one grows, and SuccOf may place, sort and compact: whoever holds two groups
// calls UpdateSucc first, after which SuccOf only reads until the tree is changed. Keys of names
// are good until Shrink, ids too.
//
// A tree that another document is loaded into keeps its names (Restart): those that no node bears
// are m_bFormerNames, and only a dump has to leave them out.
//
// Threads: a tree belongs to one thread at a time. After UpdateSucc reading does not write.
#ifndef VOK_DATA_STORE_H
#define VOK_DATA_STORE_H

#include <algorithm>
#include <memory>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/data/attribute_table.h"
#include "vok/data/data.h"
#include "vok/data/names.h"
#include "vok/data/succ_groups.h"
#include "vok/data/text_heap.h"
#include "vok/data/user_tag.h"

namespace vok {

class Data_Shapes;
class Few_Keys;

class Data_Base {
  public:
    using Node = Data_Node;
    using Group = Data_Groups::View;

    static constexpr u2_t NONE = Data_Node::NONE;
    // Small trees have all of their parts in one block with this object: this many nodes, and what
    // goes with them.
    static constexpr std::size_t FIRST_NODES = 32;
    // Ids are signed 32-bit numbers elsewhere.
    static constexpr u2_t MOST_IDS = 0x7FFFFFFF;

    Data_Base();
    Data_Base(const Data_Base&) = delete;
    Data_Base& operator=(const Data_Base&) = delete;

    // Heap bytes held. Linear in attribute names.
    [[nodiscard]] std::size_t HeapBytes() const noexcept;
    // Those that UpdateSucc takes at most.
    [[nodiscard]] std::size_t BytesToOrder() const noexcept;
    // Heap bytes that uNodes more nodes take in addition at most, as far as arrays grow in steps:
    // with new names, a mebibyte of texts, and places below uParent (NONE: without places).
    [[nodiscard]] std::size_t GrowthFor(std::size_t uNodes, u2_t uParent) const noexcept;

    // ---- names ------------------------------------------------------------

    // The key behind a name or key that a caller gave, for one that is to bear it.
    u2_t KeyOf(Data_Name oName) {
        if (oName.m_sName != nullptr) return m_oName.Intern(ViewOf(oName));
        if (oName.m_uKey >= m_oName.Size()) [[unlikely]] {
            Msg::AssertionFailed("b.m_oName.ValidHndl(uHndl)");
        }
        return oName.m_uKey;
    }
    // The same for looking: nothing is added, NONE for what no node can bear.
    [[nodiscard]] u2_t FindKey(Data_Name oName) const {
        if (oName.m_sName != nullptr) return m_oName.Look(ViewOf(oName));
        return oName.m_uKey < m_oName.Size() ? oName.m_uKey : NONE;
    }
    // The text behind it; empty for a key that pBase, which may be null, does not have.
    [[nodiscard]] static std::string_view TextOf(Data_Name oName, const Data_Base* pBase) noexcept {
        if (oName.m_sName != nullptr) return ViewOf(oName);
        const bool bKnown = pBase != nullptr && oName.m_uKey < pBase->m_oName.Size();
        return bKnown ? pBase->m_oName(oName.m_uKey).View() : std::string_view();
    }
    // Null for an unnamed node, "Root" for an unnamed root.
    [[nodiscard]] const char* NameOf(u2_t uId) const noexcept {
        const char* sName = m_oName.TextOrNull(m_oNode(uId).uKey);
        return sName != nullptr || uId != 0 ? sName : "Root";
    }
    // NameOf for messages: never null.
    [[nodiscard]] const char* ShownName(u2_t uId) const noexcept {
        const char* sName = NameOf(uId);
        return sName != nullptr ? sName : "";
    }

    // ---- nodes ------------------------------------------------------------

    // Raises the error for a node that takes no successors.
    void CheckAppend(u2_t uParent) const {
        if (m_oNode(uParent).GetType() != Node::Tree) [[unlikely]]
            CheckAppendSlow(uParent);
    }
    // Appends a node with an inline value, or an empty one, below uParent, which CheckAppend
    // has passed, and returns its id. Constant time.
    u2_t Append(u2_t uParent, u2_t uKey, Node::Type eType = Node::Empty, u3_t uValue = 0) {
        const std::size_t uId = m_oNode.Size();
        const bool bFirst = m_oNode(uParent).GetType() != Node::Tree;
        if (bFirst || uId == m_oNode.Capacity() || uId > MOST_IDS) [[unlikely]] {
            PrepareAppend(uParent);
        }
        m_oNode.AddSpacePrivate()->Make(Node::FlagsBelow(uParent), uKey, eType, uValue);
        ++m_oNode(uParent).uWord3;
        return static_cast<u2_t>(uId);
    }
    // The end of the nodes, of which there shall be at most uMost, for who appends to it and gives
    // it back before anything else uses the tree.
    [[nodiscard]] Data_Tail TakeTail(u3_t uMost = MOST_IDS) noexcept {
        const auto uRoom = std::min({u3_t{m_oNode.Capacity()}, uMost, u3_t{MOST_IDS}});
        return {m_oNode.Beg(), m_oNode.End(), m_oNode.Beg() + uRoom};
    }
    void GiveBack(const Data_Tail& oTail) noexcept { m_oNode.SetSize(oTail.NextId()); }
    // The same with a text, which ends at its first NUL.
    u2_t AppendText(u2_t uParent, u2_t uKey, std::string_view sText) {
        const u2_t uOffset = m_oHeap.TryAddText(sText);
        if (uOffset != 0) [[likely]] {
            return Append(uParent, uKey, Node::String, u3_t{sText.size() + 1} << 32 | uOffset);
        }
        return Append(uParent, uKey, Node::String, AddText(sText));
    }
    // Adds a text, which ends at its first NUL, and returns the value of a node that has it.
    [[nodiscard]] u3_t AddText(std::string_view sText);
    // The value of a node that Append has just made.
    void SetNewValue(u2_t uId, Node::Type eType, u2_t uWord2, u2_t uWord3) noexcept {
        Node& oNode = m_oNode(uId);
        oNode.uFlags |= eType;
        oNode.uWord2 = uWord2;
        oNode.uWord3 = uWord3;
    }

    // A text for it, which ends at its first NUL.
    void SetNewText(u2_t uId, std::string_view sText);

    // Raises unless uParent can have successors and uCount more nodes can have ids.
    void CheckIds(u2_t uParent, std::size_t uCount) const;
    // Makes a node that CheckAppend has passed a tree node, if it is none yet.
    void MakeTree(u2_t uId) noexcept;

    // ---- editing ----------------------------------------------------------

    // Makes a successor at a position among those of its name, past the end behind them.
    u2_t Insert(u2_t uParent, u2_t uKey, u2_t uPos);
    // Hangs a placed node below uParent, which CheckAppend has passed and which is not below
    // it. Nothing is changed if memory runs out.
    void Move(u2_t uId, u2_t uParent, u2_t uPos);
    // Gives a placed node another position among those of its name; never fails.
    void Reorder(u2_t uId, u2_t uPos) noexcept;
    // Gives a node another name, and a place among those of that name. Nothing is changed if memory
    // runs out.
    void Rename(u2_t uId, u2_t uKey, u2_t uPos);
    // Takes a placed node out of the successors of its parent, which is empty after the last
    // one. Its predecessor field is left to the caller. Never fails.
    void Unlink(u2_t uId) noexcept;
    // Everything below a node, removed nodes included, each behind its parent.
    void ListBelow(u2_t uId, Arr<u2_t>& oBelow);
    // Marks what ListBelow gave as removed and cuts it loose.
    void CutLoose(const Arr<u2_t>& oBelow) noexcept;
    // Marks one node as removed.
    void Kill(u2_t uId) noexcept;
    // Marks a node and everything below it as removed.
    void Remove(u2_t uId);
    void RemoveSuccs(u2_t uId);
    // Compacts the tree; uFollow is the id of a node, and becomes its new one.
    void Shrink(u2_t& uFollow);
    // Whether uId is uTop or below it.
    [[nodiscard]] bool IsBelow(u2_t uId, u2_t uTop) const noexcept;
    // Leaves an unnamed, empty root and nothing else, but keeps the numbers of names, and the
    // memory for other nodes.
    void Reset();
    // The same, but for the user tag.
    void ResetNodes();
    // Reset for another tree in its place. Names stay, as long as they are not many more than
    // those nodes: most trees that follow each other bear the same. Nobody sees them but FindKey.
    void Restart();
    // Gives back memory that a former, much larger tree needed.
    void Trim();
    // Takes back the nodes from uFirst on, none of them placed, with their attributes.
    void Rollback(u2_t uFirst) noexcept;

    // ---- successors -------------------------------------------------------

    [[nodiscard]] bool IsIndexed() const noexcept {
        return m_uIndexed == m_oNode.Size() && m_oGroup.IsAllSorted();
    }
    // Places every pending node; true only if each came behind all that its parent had.
    bool UpdateSucc();
    // The same without compaction of the groups: needs no memory beyond what ReservePlaces
    // asked for.
    void PlacePending();
    // Room for placing uCount more nodes in uGroups new groups, and for uParent to grow by one.
    void ReservePlaces(u2_t uParent, std::size_t uCount, std::size_t uGroups);
    // Makes uId, which is empty and new, a tree node whose group has room for uCapacity, for
    // a loader that knows how many successors follow.
    void OpenTree(u2_t uId, u2_t uCapacity) {
        Node::CheckPred(uId);
        const u2_t uStart = m_oGroup.Add(uCapacity);
        Node& oNode = m_oNode(uId);
        oNode.SetType(Node::Tree);
        oNode.uWord2 = uStart;
        oNode.uWord3 = 0;
        if (uId == 0) m_uIndexed = 1;  // a root stands in no group
    }
    // Append for a loader: the node is placed at once, a long group that gets out of order is
    // left so. Nothing may be pending.
    u2_t AppendPlaced(u2_t uParent, u2_t uKey) {
        const u2_t uId = Append(uParent, uKey);
        Place(uId);
        m_uIndexed = uId + 1;
        return uId;
    }
    // Whether nodes may be appended and put in a group in one go: a tree node of less successors
    // than its group has room for, and nothing pending or unsorted.
    [[nodiscard]] bool CanPlace(u2_t uParent) const noexcept {
        const Node& oParent = m_oNode(uParent);
        if (oParent.GetType() != Node::Tree || oParent.Start() == NONE || !IsIndexed() ||
            uParent >= Node::CUT_LOOSE - 1) {
            return false;
        }
        return m_oGroup.HasRoom(oParent.Start());
    }
    // A view of the successors of uId, all placed; empty for a node that is no tree.
    Group SuccOf(u2_t uId) {
        const Node& oNode = m_oNode(uId);
        if (oNode.GetType() != Node::Tree || oNode.Size() == 0) return {};
        if (oNode.Start() == NONE || !m_oGroup.IsComplete(oNode.Start(), oNode.Size()))
            [[unlikely]] {
            UpdateSucc();
        }
        return m_oGroup.ViewOf(oNode.Start(), oNode.Size());
    }
    // The successors of one name within a group: first and count.
    struct Run {
        u2_t uFirst = 0;
        u2_t uSize = 0;
    };
    [[nodiscard]] Run FindRun(const Group& oGroup, u2_t uKey) const noexcept;
    // The successors of one name, removed ones included: how many, and the n-th (NONE behind the
    // last). Unlike SuccOf these do not have to put a large group in order that was appended to in
    // between: a sequence of appending and asking takes n log n in all.
    [[nodiscard]] u2_t CountNamed(u2_t uId, u2_t uKey);
    [[nodiscard]] u2_t FindNamed(u2_t uId, u2_t uKey, u2_t uNth);
    // Hands them to oVisit, group by group in their order, until it returns false.
    template <class Visit>
    void VisitNamed(u2_t uId, u2_t uKey, const Visit& oVisit) {
        const Node& oNode = m_oNode(uId);
        if (oNode.GetType() != Node::Tree || oNode.Size() == 0) return;
        const bool bInOrder =
            oNode.Start() != NONE && m_oGroup.IsComplete(oNode.Start(), oNode.Size());
        const Data_Groups::Unsorted* p = bInOrder ? nullptr : RunsOf(uId);
        const u2_t* pFirst = m_oGroup.Ids(oNode.Start());
        const u2_t uRuns = p != nullptr ? p->oRuns.uCount : 1;
        for (u2_t u = 0; u < uRuns; ++u) {
            const u2_t uFrom = p != nullptr ? p->oRuns.auStart[u] : 0;
            const u2_t uEnd = p != nullptr ? p->oRuns.End(u, p->uPlaced) : oNode.Size();
            const Run oRun = FindRun({pFirst + uFrom, uEnd - uFrom}, uKey);
            if (oRun.uSize != 0 && !oVisit(Group{pFirst + uFrom + oRun.uFirst, oRun.uSize})) return;
        }
    }
    // Successors that were not removed.
    [[nodiscard]] u2_t LiveSuccs(u2_t uId);
    // The next one, by 1 or -1, among the successors of its parent that was not removed; NONE where
    // there is none.
    [[nodiscard]] u2_t Sibling(u2_t uId, int iStep);
    // Position of a node among the successors of its parent that share its name.
    [[nodiscard]] u2_t PositionOf(u2_t uId);

    // ---- values -----------------------------------------------------------

    // Accounts for what the value of oNode leaves behind when it is replaced.
    void DropValue(Node& oNode) noexcept {
        const u2_t uType = oNode.uFlags & 0xFu;
        // String, Binary, Quad and Zombi are the ones with something to account for.
        if ((0x8580u >> uType & 1u) != 0) [[unlikely]]
            DropValueSlow(oNode);
    }

    // ---- attributes -------------------------------------------------------

    void SetAttribute(u2_t uId, std::string_view sName, std::string_view sValue) {
        m_oAtt.Set(uId, sName, sValue, m_oNode.Size(), m_oHeap);
    }
    // The same for texts from outside, which may be no UTF-8. Raises "unallowed attribute" for an
    // empty name.
    void SetOutsideAttribute(u2_t uId, std::string_view sName, std::string_view sValue);
    void RemoveAttribute(u2_t uId, std::string_view sName) noexcept {
        m_oAtt.Remove(uId, sName, m_oHeap);
    }
    // The value of an attribute; null when the node has none of that name.
    [[nodiscard]] const char* AttributeOf(u2_t uId, u2_t uKey) const noexcept {
        const u2_t uValue = m_oAtt.Find(uId, uKey);
        return uValue != Data_Att::NO_VALUE ? m_oHeap.At(uValue) : nullptr;
    }

    // ---- for tests --------------------------------------------------------

    // Elements that keeping order has moved so far.
    [[nodiscard]] u3_t Moved() const noexcept { return m_oGroup.Moved() + m_oAtt.Moved(); }

    // ---- fields -----------------------------------------------------------

    std::shared_ptr<const void> m_pAttached;  // a file that arrays may lie in: it goes behind them
    Arr_Near<Node, FIRST_NODES> m_oNode;      // by id
    Data_Names m_oName;
    Data_Groups m_oGroup;
    Data_Heap m_oHeap;
    Data_Attributes m_oAtt;
    Data_UserTag m_oUserTag;
    u2_t m_uIndexed = 0;          // nodes below stand in their groups
    u2_t m_uDead = 0;             // removed nodes
    bool m_bFormerNames = false;  // some of the names are those of former trees

  private:
    [[nodiscard]] static std::string_view ViewOf(const Data_Name& o) noexcept {
        return {o.m_sName, o.m_uLength};
    }
    void CheckAppendSlow(u2_t uParent) const;
    void PrepareAppend(u2_t uParent);
    void DropValueSlow(Node& oNode) noexcept;
    // The order of ids by name.
    struct NameOrder {
        const Data_Base& b;

        [[nodiscard]] u2_t WeightOf(u2_t uId) const noexcept { return b.m_oNode(uId).uKey; }
        [[nodiscard]] bool IsBelow(u2_t uKey, u2_t uId) const noexcept {
            return b.m_oName.IsLess(uKey, b.m_oNode(uId).uKey);
        }
        bool operator()(u2_t uA, u2_t uB) const noexcept { return IsBelow(WeightOf(uA), uB); }
    };
    [[nodiscard]] NameOrder ByName() const noexcept { return {*this}; }
    void Place(u2_t uId);
    template <class Less>
    bool PlaceOne(u2_t uId, const Less& oIsLess);
    template <class Less>
    bool PlaceSiblings(const Less& oIsLess);
    template <class Less>
    bool PlaceNew(const Less& oIsLess);
    // Whether the first node that is placed below uParent makes it a group.
    [[nodiscard]] bool StartsGroup(u2_t uParent) const noexcept {
        return uParent < m_oNode.Size() && m_oNode(uParent).GetType() == Node::Tree &&
               m_oNode(uParent).Start() == NONE;
    }
    [[nodiscard]] u2_t GatherFew(const u2_t* pRank, Few_Keys& oKeys) const noexcept;
    bool PlaceRun(const u2_t* pRank, Data_Shapes& oShapes);
    void PlaceByRank();
    template <class Less>
    void SortByRank(const Less& oIsLess);
    bool PlaceByName();
    void CompactGroups();
    const Data_Groups::Unsorted* RunsOf(u2_t uId);
    [[nodiscard]] u2_t* PlaceOf(u2_t uId) noexcept;
    void GrowGroup(Node& oParent);
    void Link(u2_t uId, u2_t uParent, u2_t uPos) noexcept;
    void AbandonGroup(const Node& oNode) noexcept {
        if (oNode.Start() != NONE) m_oGroup.Abandon(oNode.Start());
    }

    friend class Data_Undo;
};

}  // namespace vok

#endif  // VOK_DATA_STORE_H
