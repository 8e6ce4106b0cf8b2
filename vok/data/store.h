// The tree store behind every cursor. Internal: only the code of this folder, the codecs
// and the facade work on it directly.
#ifndef VOK_DATA_STORE_H
#define VOK_DATA_STORE_H

#include <string_view>

#include "vok/base/copy.h"
#include "vok/base/hash.h"
#include "vok/base/hash_guess.h"
#include "vok/base/msg.h"
#include "vok/base/utf8.h"
#include "vok/data/data.h"
#include "vok/data/runs.h"

namespace vok {

// One attribute of one node.
struct Data_Att {
    static constexpr u2_t NO_VALUE = 0xFFFFFFFF;
    u2_t uId;     // node
    u2_t uValue;  // offset of the text in the heap, NO_VALUE once removed
    u2_t uNext;   // key of another attribute name of the node, 0 at the end
};

// The attributes of one name, by ascending node id; in runs once they came in another order.
struct Data_AttArr {
    Arr<Data_Att> oAtt;
    Arr<runs::Starts> oRuns;  // one, or none where oAtt is a single run
};

// A successor group that is not in order as a whole.
struct Data_Unsorted {
    u2_t uParent;        // NONE once it is
    u2_t uPlaced;        // successors in their place
    u2_t uKnown;         // those of them that stand in runs; the others follow as they came
    runs::Starts oRuns;  // by name
};

// All successors stand in one array of words, in groups:
//
//     word 0   how many successors are in their place; differs from the node's count while
//              some are still to be placed. With the top bit the group is not sorted: the other
//              bits are the index of its entry in m_oUnsorted, which has the count.
//     word 1   capacity of the group in successors
//     words 2- their ids: by name in byte order, equal names by creation
//
// Node records carry the place of word 0. A group that outgrows its capacity moves to the
// end with twice as much. Nodes are placed in bulk: everything from m_uIndexed on is pending
// and is distributed by the first read of a parent that misses some.
class Data_Base {
  public:
    using Node = Data_Node;

    static constexpr u2_t NONE = Data_Node::NONE;
    static constexpr u2_t GROUP_HEADER = 2;
    static constexpr u2_t UNSORTED = 0x80000000;

    // Successors in their place in the group at uStart.
    [[nodiscard]] u2_t PlacedIn(u2_t uStart) const noexcept {
        const u2_t uHeader = m_oSucc(uStart);
        return (uHeader & UNSORTED) == 0 ? uHeader : m_oUnsorted(uHeader & ~UNSORTED).uPlaced;
    }

    Data_Base();
    ~Data_Base();
    Data_Base(const Data_Base&) = delete;
    Data_Base& operator=(const Data_Base&) = delete;

    // Heap bytes held. Linear in attribute names.
    [[nodiscard]] std::size_t HeapBytes() const noexcept;

    // ---- names ------------------------------------------------------------

    // Key of a name; "" is key 0. A name ends at its first NUL.
    u2_t Intern(std::string_view sName) {
        u2_t uKey = m_oGuess.First();
        if (uKey == 0 || !m_oName.IsText(uKey, sName)) uKey = m_oGuess.Second();
        if (uKey == 0 || !m_oName.IsText(uKey, sName)) return InternSlow(sName);
        m_oGuess.Confirm(uKey);
        return uKey;
    }
    u2_t Intern(const char* sName) {
        return Intern(std::string_view(sName != nullptr ? sName : ""));
    }
    // The key behind a name or key that a caller gave.
    u2_t KeyOf(Data_Name oName) {
        if (oName.m_sName != nullptr) {
            return Intern(std::string_view(oName.m_sName, oName.m_uLength));
        }
        if (oName.m_uKey >= m_oName.Size()) [[unlikely]] {
            Msg::AssertionFailed("b.m_oName.ValidHndl(uHndl)");
        }
        return oName.m_uKey;
    }
    [[nodiscard]] u2_t FindKey(const char* sName) const;
    // Null for key 0.
    [[nodiscard]] const char* KeyText(u2_t uKey) const noexcept {
        return uKey != 0 ? m_oName(uKey).sText : nullptr;
    }
    // Null for an unnamed node, "Root" for an unnamed root.
    [[nodiscard]] const char* NameOf(u2_t uId) const noexcept {
        const char* sName = KeyText(m_oNode(uId).uKey);
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
        const u2_t uType = m_oNode(uParent).uFlags & 0xFu;
        if (uType != Node::Tree && uType != Node::Empty) [[unlikely]]
            CheckAppendSlow(uParent);
    }
    // Appends a node with an inline value, or an empty one, below uParent, which CheckAppend
    // has passed, and returns its id. Constant time.
    u2_t Append(u2_t uParent, u2_t uKey, Node::Type eType = Node::Empty, u3_t uValue = 0) {
        const std::size_t uId = m_oNode.Size();
        const bool bFirst = m_oNode(uParent).GetType() != Node::Tree;
        if (bFirst || uId == m_oNode.Capacity() || uId > 0x7FFFFFFF) [[unlikely]] {
            PrepareAppend(uParent);
        }
        Node* pNode = m_oNode.AddSpacePrivate();
        pNode->uKey = uKey;
        pNode->uFlags = (uParent + 1) << 4 | eType;
        pNode->SetValue64(uValue);
        ++m_oNode(uParent).uWord3;
        return static_cast<u2_t>(uId);
    }
    // The same with a text, which ends at its first NUL.
    u2_t AppendText(u2_t uParent, u2_t uKey, std::string_view sText) {
        const std::size_t uOffset = m_oStr.Size();
        const bool bRoom = m_oStr.Capacity() - uOffset > sText.size() + HEAP_SLACK &&
                           m_oStr.Capacity() <= 0x7FFFFFFF && uOffset != 0;
        if (bRoom && !sText.empty() && IsPlainText(sText.data(), sText.size())) [[likely]] {
            char* pText = m_oStr.End();
            CopyBytes(pText, sText.data(), sText.size());
            pText[sText.size()] = 0;
            m_oStr.SetSize(uOffset + sText.size() + 1);
            return Append(uParent, uKey, Node::String, u3_t{sText.size() + 1} << 32 | uOffset);
        }
        const u2_t uId = Append(uParent, uKey);
        SetNewText(uId, sText);
        return uId;
    }
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
    // So many names are kept whether they are used or not.
    static constexpr std::size_t MANY_NAMES = 1024;
    // Compacts the tree; uFollow is the id of a node, and becomes its new one.
    void Shrink(u2_t& uFollow);
    // Whether uId is uTop or below it.
    [[nodiscard]] bool IsBelow(u2_t uId, u2_t uTop) const noexcept;
    // Leaves an unnamed, empty root and nothing else, but keeps the numbers of names.
    void Reset();
    // Takes back the nodes from uFirst on, none of them placed, with their attributes.
    void Rollback(u2_t uFirst) noexcept;

    // ---- successors -------------------------------------------------------

    [[nodiscard]] bool IsIndexed() const noexcept {
        return m_uIndexed == m_oNode.Size() && m_oUnsorted.Size() == 0;
    }
    // Places every pending node.
    void UpdateSucc();
    // The same without compaction of the groups: needs no memory beyond what ReservePlaces
    // asked for.
    void PlacePending();
    // Room for placing uCount more nodes in uGroups new groups, and for uParent to grow by one.
    void ReservePlaces(u2_t uParent, std::size_t uCount, std::size_t uGroups);
    // Makes uId, which is empty and new, a tree node whose group has room for uCapacity, for
    // a loader that knows how many successors follow.
    void OpenTree(u2_t uId, u2_t uCapacity);
    // Append for a loader: the node is placed at once, a long group that gets out of order is
    // left so. Nothing may be pending.
    u2_t AppendPlaced(u2_t uParent, u2_t uKey) {
        const u2_t uId = Append(uParent, uKey);
        Place(uId);
        m_uIndexed = uId + 1;
        return uId;
    }
    // Whether AppendPlain may be called: a tree node of less successors than its group has
    // room for, and nothing pending or unsorted.
    [[nodiscard]] bool CanPlace(u2_t uParent) const noexcept {
        const Node& oParent = m_oNode(uParent);
        if (oParent.GetType() != Node::Tree || oParent.Start() == NONE || !IsIndexed() ||
            uParent >= Node::CUT_LOOSE - 1 || m_oNode.Size() > 0x7FFFFFFF) {
            return false;
        }
        return m_oSucc(oParent.Start()) < m_oSucc(oParent.Start() + 1);
    }
    // Appends a finished record, whose predecessor is uParent, behind all others in the order
    // of successors.
    u2_t AppendPlain(u2_t uParent, const Node& oNode) {
        const u2_t uId = static_cast<u2_t>(m_oNode.Size());
        m_oNode.Add(oNode);
        Node& oParent = m_oNode(uParent);
        ++oParent.uWord3;
        u2_t* pGroup = m_oSucc.Beg() + oParent.Start();
        pGroup[GROUP_HEADER + pGroup[0]++] = uId;
        m_uIndexed = uId + 1;
        return uId;
    }
    // A view of the successors of uId, all placed; empty for a node that is no tree.
    struct Group {
        const u2_t* pId = nullptr;
        u2_t uSize = 0;
    };
    Group SuccOf(u2_t uId) {
        const Node& oNode = m_oNode(uId);
        if (oNode.GetType() != Node::Tree || oNode.Size() == 0) return {};
        if (oNode.Start() == NONE || m_oSucc(oNode.Start()) != oNode.Size()) [[unlikely]] {
            UpdateSucc();
        }
        return {m_oSucc.Beg() + oNode.Start() + GROUP_HEADER, oNode.Size()};
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
        const bool bInOrder = oNode.Start() != NONE && m_oSucc(oNode.Start()) == oNode.Size();
        const Data_Unsorted* p = bInOrder ? nullptr : UnsortedOf(uId);
        const u2_t* pFirst = m_oSucc.Beg() + oNode.Start() + GROUP_HEADER;
        const u2_t uRuns = p != nullptr ? p->oRuns.uCount : 1;
        for (u2_t u = 0; u < uRuns; ++u) {
            const u2_t uFrom = p != nullptr ? p->oRuns.auStart[u] : 0;
            const u2_t uEnd = p != nullptr ? p->oRuns.End(u, p->uPlaced) : oNode.Size();
            const Run oRun = FindRun({pFirst + uFrom, uEnd - uFrom}, uKey);
            if (oRun.uSize != 0 && !oVisit(Group{pFirst + uFrom + oRun.uFirst, oRun.uSize})) return;
        }
    }
    // Position of a node among the successors of its parent that share its name.
    [[nodiscard]] u2_t PositionOf(u2_t uId);

    // ---- values -----------------------------------------------------------

    // Appends bytes to the text heap and returns their offset; they may lie in the heap.
    u2_t AddHeap(const void* pData, std::size_t uSize);
    // So many bytes may be read behind the end of the heap.
    static constexpr std::size_t HEAP_SLACK = 16;
    // Appends a text and its NUL. The text is valid UTF-8 without a NUL.
    u2_t AddText(std::string_view sText);
    [[nodiscard]] const char* HeapAt(u2_t uOffset) const noexcept { return m_oStr.Beg() + uOffset; }
    // Accounts for what the value of oNode leaves behind when it is replaced.
    void DropValue(Node& oNode) noexcept {
        const u2_t uType = oNode.uFlags & 0xFu;
        // String, Binary, Quad and Zombi are the ones with something to account for.
        if ((0x8580u >> uType & 1u) != 0) [[unlikely]]
            DropValueSlow(oNode);
    }

    // ---- attributes -------------------------------------------------------

    [[nodiscard]] bool HasAttributes(u2_t uId) const noexcept {
        return uId < m_oAttHead.Size() && m_oAttHead(uId) != 0;
    }
    // Key of an attribute name, with a place for its records. Names and values here and below
    // are valid UTF-8, names are not empty.
    u2_t InternAttribute(std::string_view sName);
    void SetAttribute(u2_t uId, std::string_view sName, std::string_view sValue);
    void RemoveAttribute(u2_t uId, std::string_view sName);
    // Puts the records of a name in order as a whole: one run.
    void SettleAttributes(Data_AttArr& o) noexcept;
    // Offset of the value in the heap, NO_VALUE when there is none.
    [[nodiscard]] u2_t FindAttribute(u2_t uId, u2_t uName) const noexcept;
    // Keys of the attribute names of a node in the order in which they first appeared in
    // the tree. oKeys is emptied first; n log n in the attributes of the node.
    void ListAttributes(u2_t uId, Arr<u2_t>& oKeys) const;

    // ---- fields -----------------------------------------------------------

    Hash m_oName;         // node names
    Hash_Guess m_oGuess;  // of the next name to be interned
    Arr<Node> m_oNode;    // by id; 0 is the root
    Arr<u2_t> m_oSucc;    // successor groups
    Arr<Data_Unsorted> m_oUnsorted;
    Hash m_oAttName;  // attribute names; key k has its records in m_oAttArr(k - 1)
    Arr<Data_AttArr*> m_oAttArr;
    Arr<u2_t> m_oAttHead;  // by id: key of a name it has, from where uNext leads to the others;
                           // 0 for a node never given one. As long as it has to be.
    Arr<char> m_oStr;      // text heap; byte 0 is the empty text
    Mem::Str m_oUserTag;
    u2_t m_uIndexed = 0;   // nodes below are placed in their groups
    u2_t m_uDead = 0;      // removed nodes
    u3_t m_uDeadSucc = 0;  // words of abandoned groups
    u3_t m_uGarbage = 0;   // unreferenced bytes of the text heap
    u3_t m_uDeadAtts = 0;  // attribute records without value
    u3_t m_uMoved = 0;     // elements that keeping order has moved so far, for tests

  private:
    u2_t InternSlow(std::string_view sName);
    char* HeapSpace(std::size_t uSize);
    u2_t AppendHeap(const char* pSrc, std::size_t uSize, std::size_t uExtra);
    void CheckAppendSlow(u2_t uParent) const;
    void PrepareAppend(u2_t uParent);
    void DropValueSlow(Node& oNode) noexcept;
    [[nodiscard]] bool IsInOrder(const u2_t* pGroup, u2_t uSize, u2_t uKey) const noexcept {
        return uSize == 0 || !m_oName.IsLess(uKey, m_oNode(pGroup[GROUP_HEADER + uSize - 1]).uKey);
    }
    // The order of ids by name.
    [[nodiscard]] auto ByName() const noexcept {
        return
            [this](u2_t uA, u2_t uB) { return m_oName.IsLess(m_oNode(uA).uKey, m_oNode(uB).uKey); };
    }
    void Place(u2_t uId);
    void PlaceNew();
    void Unsort(u2_t uParent, u2_t& uHeader);
    void SortGroup(Data_Unsorted& o);
    const Data_Unsorted* UnsortedOf(u2_t uId);
    [[nodiscard]] u2_t* PlaceOf(u2_t uId) noexcept;
    void AddRecord(Data_AttArr& o, const Data_Att& oNew);
    void RestoreValue(u2_t uId, u2_t uName, u2_t uValue) noexcept;
    u2_t AddGroup(u2_t uCapacity);
    void GrowGroup(Node& oParent);
    void Link(u2_t uId, u2_t uParent, u2_t uPos) noexcept;
    void AddDeadGroup(const Node& oNode) noexcept {
        if (oNode.Start() != NONE) m_uDeadSucc += GROUP_HEADER + m_oSucc(oNode.Start() + 1);
    }
    void SortGroups();
    void CompactGroups();
    [[nodiscard]] const Data_Att* FindRecord(u2_t uId, u2_t uName) const noexcept;
    void DropText(u2_t uOffset) noexcept;
    [[nodiscard]] bool IsHeapText(std::string_view sText) const noexcept;
    // What small trees need grows in one step.
    static constexpr std::size_t FIRST_HEAP = 256 - Mem::HEADER_SIZE;
    static constexpr std::size_t FIRST_NODES = 32;
    static constexpr std::size_t FIRST_SUCC = 64;
    void StartHeap() {
        if (m_oStr.Size() != 0) return;
        m_oStr.Reserve(FIRST_HEAP);
        m_oStr.Add('\0');
    }

    friend class Data_Shrink;
    friend class Data_Undo;
};

}  // namespace vok

#endif  // VOK_DATA_STORE_H
