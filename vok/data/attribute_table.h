// SPDX-License-Identifier: MIT
// The attributes of all nodes of a tree. Internal.
#ifndef VOK_DATA_ATTRIBUTE_TABLE_H
#define VOK_DATA_ATTRIBUTE_TABLE_H

#include <string_view>

#include "vok/base/hash.h"
#include "vok/data/runs.h"
#include "vok/data/text_heap.h"
#include "vok/data/text_ranges.h"

namespace vok {

// One attribute of one node.
struct Data_Att {
    static constexpr u2_t NO_VALUE = 0xFFFFFFFF;
    u2_t uId;     // node
    u2_t uValue;  // offset of the text in the heap, NO_VALUE once removed
    u2_t uNext;   // key of another attribute name of the node, 0 at the end
};

// One array of records per attribute name, by ascending node id; from a node a chain leads
// through the names it was ever given. A removed attribute keeps its record. Names have keys from
// 1 on, by first use. Names and values are valid UTF-8, names are not empty.
class Data_Attributes {
  public:
    static constexpr u2_t NO_VALUE = Data_Att::NO_VALUE;

    Data_Attributes() = default;
    ~Data_Attributes();
    Data_Attributes(const Data_Attributes&) = delete;
    Data_Attributes& operator=(const Data_Attributes&) = delete;

    // ---- names ------------------------------------------------------------

    [[nodiscard]] const Hash& Names() const noexcept { return m_oName; }
    // Key of a name, with a place for its records.
    u2_t Intern(std::string_view sName);

    // ---- of one node ------------------------------------------------------

    // Whether no node was ever given one.
    [[nodiscard]] bool IsUnused() const noexcept { return m_oHead.Size() == 0; }
    // Whether the node was ever given one.
    [[nodiscard]] bool Has(u2_t uId) const noexcept {
        return uId < m_oHead.Size() && m_oHead(uId) != 0;
    }
    // Offset of a value in the heap, NO_VALUE when there is none. Logarithmic in the records of
    // the name.
    [[nodiscard]] u2_t Find(u2_t uId, u2_t uKey) const noexcept;
    // Keys of the names that a node has, ascending: in the order in which they first appeared
    // in the tree. oKeys is emptied first; n log n in the names of the node.
    void List(u2_t uId, Arr<u2_t>& oKeys) const;
    // The same in the byte order of the names.
    void ListByName(u2_t uId, Arr<u2_t>& oKeys) const;

    // Sets a value; one that lies in the heap is referred to, not copied. uNodes is how many
    // nodes there are. Nothing is changed if memory runs out, but for the heap.
    void Set(u2_t uId, std::string_view sName, std::string_view sValue, std::size_t uNodes,
             Data_Heap& oHeap);
    void Remove(u2_t uId, std::string_view sName, Data_Heap& oHeap) noexcept;
    // Gives an attribute the value back that it had, which may be none.
    void Restore(u2_t uId, u2_t uKey, u2_t uValue) noexcept;

    // ---- of all nodes -----------------------------------------------------

    // The records of a name by ascending node, removed ones included.
    [[nodiscard]] const Arr<Data_Att>& Records(u2_t uKey) noexcept;
    // Adds a record behind all others of its name, for a loader that has interned all of them.
    void AddLast(u2_t uId, u2_t uKey, u2_t uValue, std::size_t uNodes);
    void ReserveRecords(u2_t uKey, std::size_t uCount) { m_oArray(uKey - 1)->oAtt.Reserve(uCount); }

    class Rewrite;

    // Forgets the records of nodes from uFirst on, and gives up their values.
    void Rollback(u2_t uFirst, Data_Heap& oHeap) noexcept;
    // Forgets all records; keys stay valid.
    void Reset() noexcept {
        if (m_oHead.Capacity() != 0) Forget();  // else there are none
    }
    // Forgets the names as well.
    void Restart() noexcept;

    // Bytes of records without a value.
    [[nodiscard]] u3_t DeadBytes() const noexcept { return m_uDead * sizeof(Data_Att); }
    // Linear in names.
    [[nodiscard]] std::size_t HeapBytes() const noexcept;
    // Records that keeping order has moved so far.
    [[nodiscard]] u3_t Moved() const noexcept { return m_uMoved; }

    // Whether it holds together, for a tree of so many nodes: the order of records, the chains,
    // the count of dead ones, values in the heap, whose bytes are added to uReferred.
    [[nodiscard]] bool Check(std::size_t uNodes, const Data_Heap& oHeap, u3_t& uReferred) const;

  private:
    // In runs once records came in another order; oRuns has one element then, else none.
    struct Array {
        Arr<Data_Att> oAtt;
        Arr<runs::Starts> oRuns;
    };

    [[nodiscard]] static const Data_Att* FindIn(const Array& o, u2_t uId) noexcept;
    [[nodiscard]] const Data_Att* FindRecord(u2_t uId, u2_t uKey) const noexcept;
    [[nodiscard]] Data_Att& Writable(const Data_Att* pRecord, u2_t uKey) noexcept {
        Arr<Data_Att>& oAtt = m_oArray(uKey - 1)->oAtt;
        return oAtt(static_cast<std::size_t>(pRecord - oAtt.Beg()));
    }
    void AddRecord(Array& o, const Data_Att& oNew);
    void Settle(Array& o) noexcept;
    void Forget() noexcept;

    Hash m_oName;
    Arr<Array*> m_oArray;  // that of key k is element k - 1; names without records may lack one
    Arr<u2_t> m_oHead;     // by id: key of a name it has, from where uNext leads to the others;
                           // 0 for a node never given one. As long as it has to be.
    u3_t m_uDead = 0;      // records without value
    u3_t m_uMoved = 0;
};

// What a compaction makes of a table: which records it keeps, and under which keys. All memory but
// that for dropping names is asked for before Commit.
class Data_Attributes::Rewrite {
  public:
    // oNewId has the new id of every node, Data_Node::NONE for one that is dropped. With bMayDrop
    // names that nobody has any more are dropped if that is worth it.
    Rewrite(Data_Attributes& oTable, bool bMayDrop, const Arr<u2_t>& oNewId);

    // Names the values that are kept, and returns the bytes that they refer to.
    [[nodiscard]] u3_t KeepValues(Data_TextRanges& oRanges, const Data_Heap& oHeap) const;
    // Makes the new records for uNodes nodes, whose values are where oRanges has copied them.
    void Copy(std::size_t uNodes, const Data_TextRanges& oRanges);
    // Raises the errors of memory where names are dropped; nothing is changed then.
    void Commit();

  private:
    [[nodiscard]] bool IsKept(const Data_Att& o) const noexcept {
        return o.uValue != NO_VALUE && m_oNewId(o.uId) != Data_Node::NONE;
    }
    void DropArrays() noexcept;

    Data_Attributes& m_oTable;
    const Arr<u2_t>& m_oNewId;
    bool m_bDrop = false;
    Hash m_oName;
    Arr<u2_t> m_oNewKey;  // by old key; 0 for the dropped ones
    Arr<u2_t> m_oHead;
    Arr<Data_Att> m_oRecord;    // of all names, one after the other
    Arr<std::size_t> m_oBegin;  // by name: its first one
};

}  // namespace vok

#endif  // VOK_DATA_ATTRIBUTE_TABLE_H
