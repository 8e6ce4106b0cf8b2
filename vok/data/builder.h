// SPDX-License-Identifier: MIT
// The fast way to build a tree: nodes behind each other, each in the one that is open.
#ifndef VOK_DATA_BUILDER_H
#define VOK_DATA_BUILDER_H

#include <bit>
#include <string_view>

#include "vok/data/data.h"
#include "vok/data/node.h"
#include "vok/data/value.h"

namespace vok {

// Appends below a node what is told in the order of a document, the counterpart of Data_Walk:
//
//     Data_Builder oBuilder(oRoot);
//     oBuilder.Open("order");
//     oBuilder.AddInt("id", 7);
//     oBuilder.AddStr("symbol", "ALFA");
//     oBuilder.Close();
//     oBuilder.Finish();
//
// The tree is that of CreateNewSucc and the setters, for about half of their time; least of all it
// takes with keys that were looked up once (Data::MakeKey). Nothing else may use the tree until the
// builder is finished or gone, both of which close what is open; it keeps the tree alive. What an
// operation that fails was to add is not there; the nodes before it are.
//
// Errors are those of CreateNewSucc and of the setters.
class Data_Builder {
  public:
    // Builds below a node that takes successors; an empty cursor gets a tree first.
    explicit Data_Builder(Data& oParent);
    Data_Builder(const Data_Builder&) = delete;
    Data_Builder& operator=(const Data_Builder&) = delete;
    ~Data_Builder() { Finish(); }

    // Appends a node for those up to the Close that belongs to it. One that is given no successors
    // is empty. Raises "assertion failed: %0" behind 2^28 - 2 nodes, with or without successors.
    u2_t Open(Data_Name oName) {
        Data_Node::CheckPred(m_oTail.NextId());
        if (m_oOpen.Size() == m_oOpen.Capacity()) [[unlikely]]
            Deepen();
        const u2_t uId = Append(oName, Data_Node::Empty, 0);
        *m_oOpen.AddSpacePrivate() = {m_uBelow, m_uBase};
        m_uBelow = Data_Node::FlagsBelow(uId);
        m_uBase = m_oTail.NextId();
        return uId;
    }
    // Raises "node has no predecessor" when nothing is open.
    void Close() {
        if (m_oOpen.Size() == 0) [[unlikely]]
            RaiseNothingOpen();
        StoreCount();
        const u2_t uBelowIt = m_oTail.NextId() - Parent() - 1;
        m_uBelow = m_oOpen.Last().uBelow;
        m_uBase = m_oOpen.Last().uBase + uBelowIt;
        m_oOpen.Pop();
    }
    // Closes all that is open and gives the tree back. May be called again.
    void Finish() noexcept;

    // Each appends a node and returns its id.
    u2_t AddEmpty(Data_Name oName) { return Append(oName, Data_Node::Empty, 0); }
    u2_t AddInt(Data_Name oName, i2_t iValue) {
        return Append(oName, Data_Node::Integer, static_cast<u2_t>(iValue));
    }
    u2_t AddBool(Data_Name oName, bool bValue) { return Append(oName, Data_Node::Boolean, bValue); }
    u2_t AddDbl(Data_Name oName, double dValue) {
        return Append(oName, Data_Node::Double, std::bit_cast<u3_t>(dValue));
    }
    // Kept as it is: only DGraph documents hold no more than 32 bits of it.
    u2_t AddFlt(Data_Name oName, double dValue) {
        return Append(oName, Data_Node::Float, std::bit_cast<u3_t>(dValue));
    }
    u2_t AddChar(Data_Name oName, i2_t iChar) {
        return Append(oName, Data_Node::Char, static_cast<u2_t>(iChar));
    }
    // Seconds since 1970-01-01 UTC.
    u2_t AddDate(Data_Name oName, double dSeconds) {
        return Append(oName, Data_Node::Date, std::bit_cast<u3_t>(dSeconds));
    }
    u2_t AddLng(Data_Name oName, u3_t uValue) { return Append(oName, Data_Node::Long, uValue); }
    // A text ends at its first NUL.
    u2_t AddStr(Data_Name oName, std::string_view sText) { return AddText(KeyOf(oName), sText); }
    u2_t AddBin(Data_Name oName, const void* pData, u2_t uSize);
    u2_t AddQuad(Data_Name oName, u2_t uW0, u2_t uW1, u2_t uW2, u2_t uW3);

    // The same for a value of any type. Of a Link, whose target a path may not tell yet, it makes
    // an empty node, as of a Tree.
    u2_t Add(Data_Name oName, const Data_Value& oValue) {
        constexpr u2_t INLINE = 1u << Data_Node::Empty | 1u << Data_Node::Boolean |
                                1u << Data_Node::Integer | 1u << Data_Node::Char |
                                1u << Data_Node::Float | 1u << Data_Node::Double |
                                1u << Data_Node::Date | 1u << Data_Node::Long;
        const Data_Node::Type eType = oValue.GetType();
        return (INLINE >> eType & 1u) != 0 ? Append(oName, eType, oValue.Lng())
                                           : AddOther(oName, oValue);
    }

    // Sets an attribute of the node appended last. Errors are those of Data::SetAttVal, and "object
    // points to nothing" before the first one.
    void SetAttVal(const char* sName, const char* sValue);
    void SetAttVal(std::string_view sName, std::string_view sValue) {
        SetAttVal(Str(sName).CStr(), Str(sValue).CStr());
    }

  private:
    struct Level {
        u2_t uBelow;
        u2_t uBase;
    };

    u2_t AddOther(Data_Name oName, const Data_Value& oValue);
    u2_t Append(Data_Name oName, Data_Node::Type eType, u3_t uValue) {
        return Append(KeyOf(oName), eType, uValue);
    }
    u2_t Append(u2_t uKey, Data_Node::Type eType, u3_t uValue) {
        if (m_oTail.IsFull()) [[unlikely]]
            Grow();
        return AppendHere(uKey, eType, uValue);
    }
    u2_t AppendHere(u2_t uKey, Data_Node::Type eType, u3_t uValue) noexcept {
        return m_oTail.Add(m_uBelow, uKey, eType, uValue);
    }
    u2_t KeyOf(Data_Name oName) {
        return oName.m_sName == nullptr && oName.m_uKey < m_uNames ? oName.m_uKey : Intern(oName);
    }
    // Gives the open node its count. The others of the levels have theirs when they are closed.
    void StoreCount() noexcept {
        const u2_t uCount = m_oTail.NextId() - m_uBase;
        if (uCount == 0) return;
        Data_Node& o = m_oTail.pNodes[Parent()];
        if (o.GetType() == Data_Node::Empty) {
            o.SetType(Data_Node::Tree);
            o.uWord2 = Data_Node::NONE;
        } else if (o.GetType() != Data_Node::Tree) {
            DropBlanks();
        }
        o.uWord3 = uCount;
    }
    [[nodiscard]] u2_t Parent() const noexcept { return (m_uBelow >> 4) - 1; }
    void DropBlanks() noexcept;
    u2_t AddText(u2_t uKey, std::string_view sText);
    u2_t AddTextSlowly(u2_t uKey, std::string_view sText);
    u2_t Intern(Data_Name oName);
    void Deepen();
    void Grow();
    void Load() noexcept;
    [[noreturn]] static void RaiseNothingOpen();

    Data m_oTree;
    Data_Base* m_pBase;
    Data_Tail m_oTail;
    u2_t m_uBelow = 0;  // flags of a node below the open one
    u2_t m_uFirst = 0;  // id of its first node
    u2_t m_uNames = 0;  // keys that there are
    // Not beside m_uBelow, or both would be put aside as one word, and that waited for. Id of the
    // next node, modulo 2^32, less the successors that the open one has: stays as it is while nodes
    // are appended to it.
    u2_t m_uBase = 0;
    Arr_Near<Level, 16> m_oOpen;
};

}  // namespace vok

#endif  // VOK_DATA_BUILDER_H
