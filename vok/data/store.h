// The tree store behind every cursor. Internal: only the code of this folder, the codecs
// and the facade work on it directly.
#ifndef VOK_DATA_STORE_H
#define VOK_DATA_STORE_H

#include "vok/base/hash.h"
#include "vok/base/msg.h"
#include "vok/data/data.h"

namespace vok {

// One attribute of one node.
struct Data_Att {
    static constexpr u2_t NO_VALUE = 0xFFFFFFFF;
    u2_t uId;     // node
    u2_t uValue;  // offset of the text in the heap, NO_VALUE once removed
    u2_t uNext;   // key of another attribute name of the node, 0 at the end
};

// The attributes of one name, by ascending node id.
struct Data_AttArr {
    Arr<Data_Att> oAtt;
};

// All successors stand in one array of words, in groups:
//
//     word 0   how many successors are in their place; differs from the node's count while
//              some are still to be placed. The top bit is set while the group is unsorted.
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

    Data_Base();
    ~Data_Base();
    Data_Base(const Data_Base&) = delete;
    Data_Base& operator=(const Data_Base&) = delete;

    // ---- names ------------------------------------------------------------

    // Key of a name; null and "" are key 0.
    u2_t Intern(const char* sName);
    u2_t Intern(std::string_view sName);
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
        if (uType != Node::Tree && uType != Node::Empty) [[unlikely]] CheckAppendSlow(uParent);
    }
    // Appends an empty node below uParent, which CheckAppend has passed. Constant time.
    u2_t Append(u2_t uParent, u2_t uKey) {
        const std::size_t uId = m_oNode.Size();
        if (uParent >= Node::CUT_LOOSE - 1 || uId > 0x7FFFFFFF) [[unlikely]] {
            RaiseFull(uParent);
        }
        m_oNode.Add(Node{uKey, (uParent + 1) << 4, 0, 0});
        Node& oParent = m_oNode(uParent);
        if (oParent.GetType() == Node::Tree) {
            ++oParent.uWord3;
        } else {
            MakeTree(oParent);
        }
        return static_cast<u2_t>(uId);
    }

    // Marks a node and everything below it as removed.
    void Remove(u2_t uId);
    // Compacts the tree; uFollow is the id of a node, and becomes its new one.
    void Shrink(u2_t& uFollow);

    // ---- successors -------------------------------------------------------

    [[nodiscard]] bool IsIndexed() const noexcept {
        return m_uIndexed == m_oNode.Size() && m_oUnsorted.Size() == 0;
    }
    // Places every pending node.
    void UpdateSucc();
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
    // Position of a node among the successors of its parent that share its name.
    [[nodiscard]] u2_t PositionOf(u2_t uId);

    // ---- values -----------------------------------------------------------

    // Appends bytes to the text heap and returns their offset; they may lie in the heap.
    u2_t AddHeap(const void* pData, std::size_t uSize);
    // Appends a text and its NUL. The text is valid UTF-8 without a NUL.
    u2_t AddText(std::string_view sText);
    [[nodiscard]] const char* HeapAt(u2_t uOffset) const noexcept { return m_oStr.Beg() + uOffset; }
    // Accounts for what the value of oNode leaves behind when it is replaced.
    void DropValue(Node& oNode) noexcept {
        const u2_t uType = oNode.uFlags & 0xFu;
        // String, Binary, Quad and Zombi are the ones with something to account for.
        if ((0x8580u >> uType & 1u) != 0) [[unlikely]] DropValueSlow(oNode);
    }

    // ---- attributes -------------------------------------------------------

    [[nodiscard]] bool HasAttributes(u2_t uId) const noexcept {
        return uId < m_oAttHead.Size() && m_oAttHead(uId) != 0;
    }
    // sName and sValue are valid UTF-8; sName is not empty.
    void SetAttribute(u2_t uId, std::string_view sName, std::string_view sValue);
    void RemoveAttribute(u2_t uId, std::string_view sName);
    // Offset of the value in the heap, NO_VALUE when there is none.
    [[nodiscard]] u2_t FindAttribute(u2_t uId, u2_t uName) const noexcept;
    // Keys of the attribute names of a node in the order in which they first appeared in
    // the tree. oKeys is emptied first; n log n in the attributes of the node.
    void ListAttributes(u2_t uId, Arr<u2_t>& oKeys) const;

    // ---- fields -----------------------------------------------------------

    Hash m_oName;            // node names
    Arr<Node> m_oNode;       // by id; 0 is the root
    Arr<u2_t> m_oSucc;       // successor groups
    Arr<u2_t> m_oUnsorted;   // pairs: parent, length of the sorted part of its group
    Hash m_oAttName;         // attribute names; key k has its records in m_oAttArr(k - 1)
    Arr<Data_AttArr*> m_oAttArr;
    Arr<u2_t> m_oAttHead;    // by id: key of a name it has, from where uNext leads to the others;
                             // 0 for a node never given one. As long as it has to be.
    Arr<char> m_oStr;        // text heap; byte 0 is the empty text
    Mem::Str m_oUserTag;
    u2_t m_uIndexed = 0;     // nodes below are placed in their groups
    u2_t m_uDead = 0;        // removed nodes
    u3_t m_uDeadSucc = 0;    // words of abandoned groups
    u3_t m_uGarbage = 0;     // unreferenced bytes of the text heap
    u3_t m_uDeadAtts = 0;    // attribute records without value

  private:
    void CheckAppendSlow(u2_t uParent) const;
    [[noreturn]] void RaiseFull(u2_t uParent) const;
    void DropValueSlow(Node& oNode) noexcept;
    void MakeTree(Node& oNode) noexcept;
    void Place(u2_t uId);
    void GrowGroup(Node& oParent);
    void SortGroups();
    void CompactGroups();
    u2_t InternAttribute(std::string_view sName);
    [[nodiscard]] const Data_Att* FindRecord(u2_t uId, u2_t uName) const noexcept;
    void DropText(u2_t uOffset) noexcept;
    [[nodiscard]] bool IsHeapText(std::string_view sText) const noexcept;
    void StartHeap() {
        if (m_oStr.Size() == 0) m_oStr.Add('\0');
    }

    friend class Data_Shrink;
};

}  // namespace vok

#endif  // VOK_DATA_STORE_H
