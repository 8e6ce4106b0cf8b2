// SPDX-License-Identifier: MIT
// vok::Data: a cursor on one node of a shared tree.
#ifndef VOK_DATA_DATA_H
#define VOK_DATA_DATA_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vok/base/arr.h"
#include "vok/base/limits.h"
#include "vok/base/str.h"
#include "vok/data/hash.h"
#include "vok/data/node.h"
#include "vok/data/value.h"

namespace vok {

// How a dump lies in its file: without gaps, or so that Data::Attach can use it where it lies.
enum class Data_DumpLayout : u0_t { Compact, Attachable };
// What is known of a dump that is attached.
enum class Data_Trust : u0_t { None, Checked };

class Data_Base;
class Data_NodeSet;
class Data_SuccIt;
class Data_Xpath;
class File_Shm;
class File_Stream;
enum class Data_MergePick : u0_t;
struct Data_Conflict;
struct Data_DiffOptions;
struct Data_Difference;
struct Data_XpathStep;

namespace dgraph {
struct Access;
}
namespace json {
struct Access;
}

// How the last reference to a tree destroys it; found by Mem::Ref where the store is unknown.
void Dispose(Data_Base* pBase) noexcept;

// A name of one tree, looked up once and used many times. Valid until Data::Shrink, or as long as
// the tree; in another tree it may mean another name, or none.
struct Data_Key {
    static constexpr u2_t UNKNOWN = 0xFFFFFFFF;
    u2_t uKey = UNKNOWN;
    [[nodiscard]] bool IsKnown() const noexcept { return uKey != UNKNOWN; }
};

// A name as an operation takes it: a text, which ends at its first NUL (null counts as empty),
// or a key of the tree. Not copied: a text must outlive the call.
class Data_Name {
  public:
    Data_Name(const char* sName) noexcept
        : Data_Name(std::string_view(sName != nullptr ? sName : "")) {}
    // Texts of 4 GiB and more are refused where the name is used.
    Data_Name(std::string_view sName) noexcept
        : m_sName(sName.data() != nullptr ? sName.data() : ""),
          m_uLength(static_cast<u2_t>(sName.size() < MOST ? sName.size() : MOST)) {}
    Data_Name(const std::string& sName) noexcept : Data_Name(std::string_view(sName)) {}
    Data_Name(Data_Key oKey) noexcept : m_uKey(oKey.uKey) {}

  private:
    friend class Data_Base;
    friend class Data_Builder;
    static constexpr std::size_t MOST = 0xFFFFFFFF;

    // 16 bytes, so that it travels in two registers.
    const char* m_sName = nullptr;  // null: the key counts
    u2_t m_uLength = 0;
    u2_t m_uKey = Data_Key::UNKNOWN;
};

// A small value: a counted reference to a tree store and the id of a node in it. Copying a
// cursor shares the tree, never copies it; the tree lives as long as any cursor or iterator
// refers to it. An empty cursor refers to no tree and has id 0.
//
// Building only appends. The order of successors (by name in byte order, then by creation)
// is brought up to date by the first read that needs it.
//
// Threads: a tree and all cursors on it belong to one thread at a time. After SetAccessMode
// several threads may read one tree through cursors of their own, until it is changed again.
//
// Texts are NUL-terminated UTF-8; text that is not valid UTF-8 is re-encoded (see Str). Texts
// handed out point into the tree and stay valid until the tree is next changed.
//
// Errors are Msg_Exceptions; a failed operation leaves cursor and tree as they were unless
// its description says otherwise. On an empty cursor operations that need a tree raise "node
// is empty", getters of values "object points to nothing". A cursor whose node is gone since
// the tree was compacted raises "try to access deleted node".
class Data {
  public:
    using Node = Data_Node;
    using Base = Data_Base;

    Data() noexcept = default;
    Data(const Data& oData) noexcept = default;
    // Empties oData.
    Data(Data&& oData) noexcept
        : m_oBase(std::move(oData.m_oBase)), m_uId(std::exchange(oData.m_uId, 0)) {}
    Data& operator=(const Data& oData) noexcept = default;
    // Swaps the two.
    Data& operator=(Data&& oData) noexcept {
        std::swap(m_oBase, oData.m_oBase);
        std::swap(m_uId, oData.m_uId);
        return *this;
    }
    ~Data() = default;

    // ---- cursor -----------------------------------------------------------

    // Gives up the tree: the cursor is empty.
    void Clear() noexcept;
    [[nodiscard]] bool IsNode() const noexcept { return static_cast<bool>(m_oBase); }
    [[nodiscard]] u2_t GetId() const noexcept { return m_uId; }
    // Two cursors are equal when they designate the same node of the same tree.
    friend bool operator==(const Data& a, const Data& b) noexcept = default;

    // The record of the node. The cursor must not be empty.
    [[nodiscard]] const Node& GetNode() const noexcept;
    // Raises "object points to nothing".
    [[nodiscard]] Node::Type GetType() const;
    // Nodes of the tree, removed ones included; 0 on an empty cursor.
    [[nodiscard]] u2_t GetNodes() const noexcept;

    // Moves to the root; an empty cursor gets a new tree of one unnamed, empty node.
    void SetToRoot();
    [[nodiscard]] Data GetRoot() const noexcept;
    // Moves to node uId and returns it. Raises "assertion failed: uId < GetNodes()".
    u2_t SetToNode(u2_t uId);
    // Empty when there is no such node.
    [[nodiscard]] Data GetNodeFromID(u2_t uId) const noexcept;
    // Moves to the predecessor. Raises "node has no predecessor".
    void SetToPred();
    // Empty for the root and for nodes cut loose.
    [[nodiscard]] Data GetPred() const noexcept;
    // Steps from the node up to the root; linear in them.
    [[nodiscard]] i2_t NodeDepth() const;

    // ---- names ------------------------------------------------------------

    // Null for an unnamed node, "Root" for an unnamed root.
    [[nodiscard]] const char* GetName() const;
    // Names the root, wherever the cursor stands.
    void SetRootName(Data_Name oName);
    // The key of a name if any node of the tree ever bore it, else an unknown key.
    [[nodiscard]] Data_Key FindKey(Data_Name oName) const;
    // The key of a name, which is added to the tree's names if need be.
    Data_Key MakeKey(Data_Name oName);

    // A free text kept with the tree.
    [[nodiscard]] Mem::Str GetUserTag() const;
    void SetUserTag(const char* sTag);

    // ---- successors -------------------------------------------------------

    // Brings the order of all successors up to date; from then on reading does not write.
    // Linear in what was added since the last time when it came in order.
    void SetAccessMode() const;

    // Iterators over all successors, or over those of one name ("" = the unnamed ones).
    // Empty when there are none; never an error for an unknown name.
    [[nodiscard]] Data_SuccIt GetSuccIt() const;
    [[nodiscard]] Data_SuccIt GetSuccIt(Data_Name oName) const;
    // The n-th successor, counted from 0 (removed ones keep their place); an empty cursor
    // when there are not so many.
    [[nodiscard]] Data GetNthSucc(u2_t uNth) const;
    [[nodiscard]] Data GetNthSucc(Data_Name oName, u2_t uNth) const;
    // How many successors of one name there are, removed ones included. Like GetNthSucc this takes
    // log n, also in turns with CreateNewSucc, where an iterator would put all in order.
    [[nodiscard]] u2_t GetSuccCount(Data_Name oName) const;
    // How many successors there are that were not removed. Raises "object points to nothing" for an
    // empty cursor, as the next two do. Constant time in a tree without removed
    // nodes, else linear in them.
    [[nodiscard]] u2_t GetLiveSuccs() const;
    // The sibling behind this node and the one in front of it, in the order of successors, removed
    // ones left out; empty where there is none, as for the root and for nodes cut loose.
    // Logarithmic in the siblings, linear in those of its name where nodes were moved.
    [[nodiscard]] Data GetNext() const;
    [[nodiscard]] Data GetPrev() const;
    // The same as GetNthSucc, but a missing successor raises "node has no successor named "%0"" or
    // "node has not %1 successors named "%0"".
    [[nodiscard]] Data GetCheckedSucc(Data_Name oName, u2_t uNth = 0) const;

    // Appends an empty successor and moves to it. Constant time. Only an empty node, a tree
    // node and a string of white space take successors: else "node "%0" with wrong data
    // type: '%1'", or "try to access deleted node".
    void SetToNewSucc(Data_Name oName);
    // The same, but returns the new cursor; an empty cursor gets a tree first.
    Data CreateNewSucc(Data_Name oName);
    // CreateNewSucc and a setter in one step, for less than half of the time: appends a
    // successor with a value and returns its id; the cursor stays. Errors are those of the
    // two; where the value cannot be stored the successor stays empty.
    u2_t AddInt(Data_Name oName, i2_t iValue, Node::Type eType = Node::Integer);
    u2_t AddBool(Data_Name oName, bool bValue);
    u2_t AddDbl(Data_Name oName, double dValue, Node::Type eType = Node::Double);
    u2_t AddLng(Data_Name oName, u3_t uValue);
    u2_t AddStr(Data_Name oName, std::string_view sText);
    u2_t AddStr(Data_Name oName, const char* sText);  // null counts as the empty text
    u2_t AddBin(Data_Name oName, const void* pData, u2_t uSize);
    // The first successor of that name, made if there is none; *pCreated (may be null)
    // receives the number of nodes made. An empty cursor gets a tree first.
    Data CreateSucc(Data_Name oName, u2_t* pCreated = nullptr);
    // The successor that a path step describes. Without a position: the only one that
    // matches name and attributes ("node is not unique" for several), or a new one. With
    // position p: the p-th of that name; missing ones are made, all but the last as
    // placeholders; a placeholder there is revived; another node must match ("node already
    // exists"). Attributes of the step are set on what was made or found without position.
    // Placeholders count against m_uSkippedSlots, looking for a match is linear in the successors
    // of that name and counts as work. When it fails nothing was made.
    Data CreateSucc(const Data_XpathStep& oStep, u2_t* pCreated = nullptr,
                    const Limits& oLimits = {});
    // The node at the end of a path, with every node on the way made that is missing. Raises
    // "invalid character '%0'" for a path with "*" or "//", before anything is made; any other
    // failure on the way takes back what was made. The placeholders of all steps together count
    // against m_uSkippedSlots, their work like that of GetNodeSet.
    Data CreateNode(const char* sPath, u2_t* pCreated = nullptr, const Limits& oLimits = {});
    Data CreateNode(std::string_view sPath, u2_t* pCreated = nullptr, const Limits& oLimits = {}) {
        return CreateNode(Str(sPath).CStr(), pCreated, oLimits);
    }

    // ---- values -----------------------------------------------------------
    //
    // Setters put an empty cursor on the root of a new tree first. They raise "node "%0"
    // with wrong data type: '%1'" on a node with successors, "try to access deleted node" on
    // a removed one, and "assertion failed: %0" for a type that is not among theirs.

    // eType: Boolean, Integer or Char.
    void SetValInt(i2_t iValue, Node::Type eType = Node::Integer);
    void SetValBool(bool bValue);
    // eType: Float, Double or Date (seconds since 1970-01-01 UTC).
    void SetValDbl(double dValue, Node::Type eType = Node::Double);
    void SetValLng(u3_t uValue);
    // Null counts as the empty text. The text may lie in this tree.
    void SetValStr(const char* sText);
    void SetValStr(std::string_view sText);
    // Raises "object points to nothing" for null with a size.
    void SetValBin(const void* pData, u2_t uSize);
    void SetValQuad(u2_t uW0, u2_t uW1, u2_t uW2, u2_t uW3);
    // A link to a node of the same tree, or to nothing for an empty cursor. The cursor must
    // be on a tree ("object points to nothing"); a target elsewhere raises ""%0" with wrong
    // data type" for "Root".
    void SetValLink(const Data& oTarget);
    // A value of any type but Link, which SetValLink takes with its target; of type Empty it is
    // ClearVal. Raises also "%0 with wrong data type" for types that have no value, and "assertion
    // failed: %0" for more than 2^31 - 1 bytes.
    void SetValue(const Data_Value& oValue);
    // Makes the node empty; a placeholder becomes a live node again, a node cut loose does
    // not: "try to access deleted node". Ignored when empty.
    void ClearVal();

    // Getters raise "node "%0" with wrong data type: '%2' expected but got '%1'" unless the
    // node has just the expected type, and "assertion failed: %0" when that is none of theirs
    // (GetValInt reads Boolean, Integer and Char, GetValDbl Float, Double and Date). Nothing is
    // converted.
    [[nodiscard]] i2_t GetValInt(Node::Type eType = Node::Integer) const;
    [[nodiscard]] bool GetValBool() const;
    [[nodiscard]] double GetValDbl(Node::Type eType = Node::Double) const;
    [[nodiscard]] u3_t GetValLng() const;
    [[nodiscard]] const char* GetValStr() const;
    [[nodiscard]] std::string_view GetValText() const;  // the same with its length
    [[nodiscard]] const void* GetValBin(u2_t& uSize) const;
    void GetValQuad(u2_t& uW0, u2_t& uW1, u2_t& uW2, u2_t& uW3) const;
    // An empty cursor for a link to nothing.
    [[nodiscard]] Data GetValLink() const;
    // The value of whatever type it is. Texts and bytes stay in the tree, and are valid until it is
    // changed; a Link has no text.
    [[nodiscard]] Data_Value GetValue() const;
    // The string value; sDefault for an empty node or cursor.
    [[nodiscard]] const char* GetStr(const char* sDefault) const;

    // The value as text in place of what oOut holds: numbers in decimal, reals with 16 significant
    // digits, dates as "2026-11-24 18:35:56" in UTC. Empty nodes give sDefault (null: the empty
    // string). Binary, Link, Tree and removed nodes raise the wrong-data-type error.
    void CvtStr(Str& oOut, const char* sDefault = nullptr) const;
    // The decimal number that a text starts with, after blanks and a sign: 0 when there is
    // none or the text is null, clamped to 32 bits. This is how CvtInt and CvtDbl read texts.
    [[nodiscard]] static i2_t StrToInt(const char* sText) noexcept;
    // The value as a whole number; a text as its leading 32-bit decimal number. Reals give 0,
    // whatever they hold: stored data depends on it, use CvtDbl for their number.
    [[nodiscard]] i3_t CvtInt(i2_t iDefault = 0) const;
    // The value as a real; a text as its leading 32-bit whole number, without its fraction.
    [[nodiscard]] double CvtDbl(double dDefault = 0.0) const;
    // Copies the value of oSrc to oDst. Within a tree texts are shared, between trees they
    // are copied; a link into another tree becomes a link to nothing. From a removed node, oDst is
    // removed: a root, too, of which a tree has nothing left that could be stored.
    static void CopyVal(const Data& oSrc, Data& oDst);

    // ---- attributes -------------------------------------------------------

    // Null removes the attribute. Raises "unallowed attribute "%0"" for an empty name, "try to
    // access deleted node" on a removed node.
    void SetAttVal(const char* sName, const char* sValue);
    void SetAttVal(std::string_view sName, std::string_view sValue) {
        SetAttVal(Str(sName).CStr(), Str(sValue).CStr());
    }
    // Null when there is no such attribute.
    [[nodiscard]] const char* GetAttVal(Data_Name oName) const;
    // Names and values of all attributes, entry i of one belonging to entry i of the other;
    // in name order, or in the order in which names first appeared in the tree.
    void GetAttributes(Arr<const char*>& oNames, Arr<const char*>& oValues, bool bSorted = false,
                       bool bNamesOnly = false) const;
    // The same for range-for, in name order; texts as long as those of the tree:
    //
    //     for (const auto& [sName, sValue] : oNode.GetAttributes()) ...
    [[nodiscard]] std::vector<std::pair<std::string_view, std::string_view>> GetAttributes() const;
    void RemoveAttributes();
    // Gives oDst, which may be in another tree, the attributes of this node and no others.
    void CopyAtt(Data& oDst) const;

    // ---- paths ------------------------------------------------------------

    // The nodes that a path selects, seen from this node, by ascending id. Raises the
    // errors of Data_Xpath::Parse, "node has no predecessor" for a step above the root, and the
    // limits on nodes looked at (m_uPathSteps) and on work, whose input are the path and the
    // records of the tree. Every step looks at each node once at most.
    [[nodiscard]] Data_NodeSet GetNodeSet(const char* sPath, const Limits& oLimits = {}) const;
    [[nodiscard]] Data_NodeSet GetNodeSet(std::string_view sPath, const Limits& oLimits = {}) const;
    // Whether the node has the attributes that a step asks for; removed nodes never have.
    [[nodiscard]] bool Test(const Data_XpathStep& oStep) const;
    // The path that selects just this node: "/" or "/a[0]/b[2]". Linear in its depth, and after
    // an Insert or Erase in the successors of the nodes on the way as well.
    [[nodiscard]] Str GetPath() const;
    // Appends sText to oOut with every byte of sSet (null: the characters of the path
    // syntax) as backspace, decimal code, semicolon; an empty text as that of code 0.
    static void EncodeXpath(Str& oOut, const char* sText, const char* sSet = nullptr);
    // Undoes that in place and returns the new end, where a NUL is written if the text
    // became shorter; pEnd null means up to the NUL.
    static char* DecodeXpath(char* pBegin, char* pEnd = nullptr);

    // ---- XML --------------------------------------------------------------

    // What LoadFromXML does beyond XML itself; flags that can be joined with "|".
    static constexpr u2_t XML_KEEP_UNKNOWN = 1;  // unknown references stay in the text
    static constexpr u2_t XML_SKIP_BLANKS = 2;   // a text of blanks only is no value
    static constexpr u2_t XML_SKIP_HTML = 4;     // the tags "br" and "meta" are left out
    static constexpr u2_t XML_LOOSE_TAGS = 8;    // attributes without quotes, or value

    // Reads the document that the stream holds at its position, and returns the number of its
    // elements. It ends with its top element: what stands behind is not read, and a stream that
    // can seek is left there, so that documents may follow each other.
    // Elements become nodes, XML attributes become attributes, the
    // text of an element without elements becomes its value, with the type that an attribute
    // dt:dt gives. The top element becomes the root of an empty tree, else a successor of this
    // node; the cursor ends on the root, and other cursors must be taken anew as after Shrink.
    //
    // Linear in the bytes read. Of a stream that is no File_Buf no more is held than the longest
    // tag or text. Raises "no XML stream or stream is corrupted", "missing char '%0' in XML
    // stream", "invalid character '%0' after '%1'", "unknown xml sequene "%0"", "unknown
    // character coding: "%0"", "missing header for binary data in XML string", "node "%0" with
    // wrong data type: '%1'" for text beside elements, the errors of limits and of the stream.
    // A failed load leaves the nodes made so far. pReport, unless it is null, is filled in
    // either case.
    u2_t LoadFromXML(File_Stream& in, u2_t uFlags, const Limits& oLimits = {},
                     Load_Report* pReport = nullptr);
    u2_t LoadFromXMLString(std::string_view sText, u2_t uFlags, const Limits& oLimits = {},
                           Load_Report* pReport = nullptr);

    // Writes this node and everything below it as an XML document in UTF-8; what it writes,
    // LoadFromXML reads back into an equal tree (a link that leads out of what is written becomes
    // an empty node). iDeclaration 0 leaves out "<?xml ...?>"; iDepth is the level that
    // indentation starts at. Linear; raises "node is empty", "try to access deleted node" and
    // the errors of the stream, which is not flushed.
    void SaveToXML(File_Stream& out, i2_t iDeclaration = 1, i2_t iDepth = 0) const;
    // The same as a text, in place of what oOut holds.
    void SaveToXMLString(Str& oOut, i2_t iDeclaration = 1, i2_t iDepth = 0) const;

    // ---- editing ----------------------------------------------------------
    //
    // Ids, values, attributes and cursors of nodes that are not named here stay. Iterators
    // over the successors of a node that gains or loses one must be taken anew. Positions
    // count the successors of one name from 0, removed ones included. A new or moved
    // successor at a position takes the place of the one there, which moves up with those
    // behind it; LAST, or any position past the end, appends. Nothing recurses.

    static constexpr u2_t LAST = 0xFFFFFFFF;

    // Appends an empty successor, as CreateNewSucc does, and returns it. Constant time.
    Data Append(Data_Name oName);
    // Makes an empty successor at a position and returns it; an empty cursor gets a tree
    // first. Errors are those of SetToNewSucc. Linear in the successors of this node.
    Data Insert(Data_Name oName, u2_t uPos = LAST);
    // Marks the node and everything below it as removed; it keeps its place among its
    // siblings until Shrink or Erase, its descendants are cut loose. The cursor stays.
    // Raises "node has no predecessor" on the root, "try to access deleted node" on a
    // removed node. Linear in what is removed.
    void Remove();
    // The same with everything below the node, which is then empty and takes a value or
    // successors. No places are kept. Does nothing on a node without successors, raises "try
    // to access deleted node" on a removed one.
    void RemoveSuccs();
    // Gives up the place that a removed node has kept: those behind it move down, a parent
    // without other successors is empty. The cursor stays on a removed node. Raises "node
    // "%0" with wrong data type: '%2' expected but got '%1'" on any other node. Linear in the
    // successors behind it; RemoveSuccs and Shrink clear many at once.
    void Erase();
    // Remove and Erase in one: no place is kept. The cursor stays on the removed node. Errors are
    // those of Remove; linear in what is removed and in the successors behind it.
    void Delete();
    // Gives the node another name, which the root may have as well: among those of that name it
    // takes the place at a position. Ids, cursors and links to it stay good. Raises "try to access
    // deleted node". Linear in the successors of its parent.
    void Rename(Data_Name oName, u2_t uPos = LAST);
    // Makes the node, with everything below it, a successor of oParent. Within a tree nothing
    // is copied: ids, cursors and links to it stay good, and an old parent that has no other
    // successors is empty. Into another tree it is copied as MkCopy does and removed here;
    // this cursor then stands on the copy. Raises "node has no predecessor" on the root, "try
    // to access deleted node" for removed nodes, "cannot link with outer structure" when
    // oParent is the node or below it, and the errors of SetToNewSucc for oParent. Linear in
    // both parents' successors and, between trees, in what is moved.
    void MoveTo(const Data& oParent, u2_t uPos = LAST);
    // Copies the node and everything below it - names, values, attributes, order - and
    // returns the copy, a successor of oParent, which may be in any tree and also below the
    // node itself. Removed nodes are left out. Links within what is copied lead to the
    // copies; others keep their target within a tree and lead to nothing in another. Errors
    // are those of MoveTo but for the root, which may be copied. Linear.
    Data MkCopy(const Data& oParent, u2_t uPos = LAST) const;
    // The same as a tree of its own, the copy being its root, with this tree's user tag.
    // Returns the root.
    [[nodiscard]] Data MkClone() const;
    // Drops removed nodes, unused texts and dead attributes, and names where most of more than a
    // thousand are no longer borne; costs nothing when there are none worth it. A Data_Key must
    // be taken anew after that. Ids change but keep their order: this cursor follows its node (or
    // goes to the root if that is gone), other cursors and iterators must be taken anew. Links to
    // dropped nodes lead to nothing.
    void Shrink();
    // Makes the tree as new for all its cursors: an unnamed, empty root, no user tag. Keys
    // stay valid, and memory stays for what is built next: Shrink gives it back. This cursor goes
    // to the root, others are on it or on deleted nodes. An empty cursor gets a tree.
    void Reset();
    // Whether one can come back to a node by going from predecessors to successors and from
    // links to their targets, starting here. Links to removed nodes lead nowhere. Linear in
    // what can be reached.
    [[nodiscard]] bool HasCycle() const;

    // ---- comparison -------------------------------------------------------

    // Whether two subtrees are the same in all that can be seen: names, types, values bit for
    // bit, attributes whatever their order, successors in their order. Removed nodes do not
    // count, and a node without live successors is an empty one. Links are the same when
    // their targets have the same place below the compared nodes; outside of these, when they
    // are one node or have the same path; a link to a removed node is one to nothing. Empty
    // cursors equal each other only. Linear. Raises "try to access deleted node".
    [[nodiscard]] static bool Equal(const Data& oA, const Data& oB);
    // Hands every difference to oVisit, in pre-order but for links, which come last, until it
    // returns false. Successors are compared name by name, the first with the first and so
    // on. The trees must not be changed meanwhile. Returns the number of calls.
    static u3_t Diff(const Data& oA, const Data& oB,
                     const std::function<bool(const Data_Difference&)>& oVisit);
    // The same with the successors of one name aligned: by keys, else by what they hold
    // (Data_DiffOptions). There are no differences where there would be none by position, but for
    // what the options leave out. A few insertions, removals and changes are found as such; where
    // much differs, not always the least number of differences. n log n, and a bounded number of
    // looks at each node where many differ (docs/compare.md). Raises the errors of paths, and
    // "key "%0" is no path of names".
    static u3_t Diff(const Data& oA, const Data& oB, const Data_DiffOptions& oOptions,
                     const std::function<bool(const Data_Difference&)>& oVisit);
    // What has to be done to oA for it to be as oB, as a tree that can be stored like any other
    // (docs/compare.md). Links that lead out of the compared nodes count as links to nothing, and
    // what the options leave out is left as it is in oA. Raises the errors of Diff, and "node is
    // empty" for empty cursors. Costs what Diff does, and the size of what differs.
    [[nodiscard]] static Data MakePatch(const Data& oA, const Data& oB,
                                        const Data_DiffOptions& oOptions);
    [[nodiscard]] static Data MakePatch(const Data& oA, const Data& oB);
    // This node and everything below it as a tree of its own, as MkClone makes it, with the changes
    // of a patch. Removed nodes are left out. Everything that the patch changes or removes must be
    // there as it was when the patch was made, else "patch does not fit at "%0": ..." tells what is
    // not; other parts may have changed, as long as they are counted the same. Raises "no patch:
    // ..." for a tree that is none. Neither tree is changed. Linear in both, n log n in changes.
    [[nodiscard]] Data ApplyPatch(const Data& oPatch) const;
    // What oA and oB have each made of oBase, in one tree, a copy of oBase as MkClone makes it.
    // What both have changed alike is changed once. Where they have changed the same in different
    // ways, where one has changed what the other removes, and where both put nodes without keys
    // (Data_DiffOptions::m_asKey) in one place, oVisit is told, until it returns false; the side of
    // ePick then counts, and for Data_MergePick::None the result is an empty cursor. Links that
    // lead out of the compared nodes count as links to nothing. Errors and cost are those of
    // MakePatch, twice, and of ApplyPatch.
    [[nodiscard]] static Data Merge(const Data& oBase, const Data& oA, const Data& oB,
                                    const Data_DiffOptions& oOptions, Data_MergePick ePick,
                                    const std::function<bool(const Data_Conflict&)>& oVisit);

    // What tells subtrees apart, in 128 bits: those that are Equal have the same hash, in whatever
    // form, on whatever system; docs/hash.md describes it and promises it. Links to nodes below
    // this one count by their place, as in Equal; the hash of a part that has links out of it
    // depends on the paths that they lead to. Linear, but for those paths. Raises "node is empty",
    // "try to access deleted node".
    [[nodiscard]] Data_Hash Hash() const;
    // The bytes that it is made of, in pieces which are valid during the call, for another hash.
    void Canonical(const std::function<void(std::string_view)>& oTake) const;

    // ---- native dump ------------------------------------------------------

    // Writes the whole tree, removed nodes and user tag included, in the library's own
    // format: the fast form, a few large blocks (docs/native-dump.md). Does not flush. Raises
    // "node is empty", "try to access deleted node" where the root itself is removed (only CopyVal
    // can do that), and the errors of the stream, which keeps what was written by then.
    void Dump(File_Stream& oOut, Data_DumpLayout eLayout = Data_DumpLayout::Compact) const;
    // Replaces the cursor's tree by one that was dumped and goes to its root; ids are those
    // of the tree that was dumped. The stream is left behind the dump. Nothing in it is
    // trusted; a failed load leaves the cursor as it was. pReport, unless it is null, is
    // filled in either case, without a path.
    //
    // Raises "binary data is not a dump of object "%0"", "binary data of object "%0" have
    // wrong version ...", "binary data is a dump of an invalid object "%0"" for anything that
    // does not hold together, the errors of limits and those of the stream. Linear but for
    // texts that are out of order, which are sorted.
    void Load(File_Stream& oIn, const Limits& oLimits = {}, Load_Report* pReport = nullptr);
    // Makes this a cursor on the root of the tree of a dump in a file, without copying what was
    // dumped as Attachable: nodes, groups and texts stay in the file, whose pages all processes
    // share that attach it. The tree is one like others; what is changed is this process' own, the
    // file stays. It may be replaced or removed meanwhile, but not be written to: bytes that change
    // or go under a tree are as bad as wild pointers. So publish trees with File_Replacement.
    // Windows lets nobody replace or remove a file that is attached: versions have names of their
    // own there.
    //
    // With Data_Trust::Checked nothing is verified, and only names and attributes take time: for
    // what this program or its peers have attached before, and nobody else can have changed. Else
    // it is verified as Load does, in the same time. Other dumps are loaded. Raises what Load
    // raises, and "could not open file".
    void Attach(const Str& oPath, Data_Trust eTrust = Data_Trust::None, const Limits& oLimits = {},
                Load_Report* pReport = nullptr);
    // The same of a dump in shared memory, at the position of oIn, which is left behind it; without
    // copying where that is a multiple of 64. Raises what Load raises, and "Cannot set shared
    // memory view".
    void Attach(File_Shm& oIn, Data_Trust eTrust = Data_Trust::None, const Limits& oLimits = {},
                Load_Report* pReport = nullptr);
    // Whether the next bytes are the header of a dump of any version; the stream must be able
    // to seek and stays where it is.
    [[nodiscard]] static bool CanLoad(File_Stream& oIn);

    // Heap bytes held by the tree.
    [[nodiscard]] std::size_t HeapBytes() const noexcept;
    // Those that hold texts and blocks.
    [[nodiscard]] std::size_t TextBytes() const noexcept;

  private:
    friend struct dgraph::Access;
    friend struct json::Access;
    friend class Data_Builder;
    friend class Data_NodeIt;
    friend class Data_NodeSet;
    friend class Data_SuccIt;
    friend class Data_View;
    friend class Data_Xpath;

    [[nodiscard]] Data Sibling(int iStep) const;

    Data(const Mem::Ref<Base>& oBase, u2_t uId) noexcept : m_oBase(oBase), m_uId(uId) {}

    Mem::Ref<Base> m_oBase;
    u2_t m_uId = 0;
};

}  // namespace vok

#endif  // VOK_DATA_DATA_H
