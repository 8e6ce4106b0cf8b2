// SPDX-License-Identifier: MIT
// A patch as it is to be applied: what happens to which node. Internal.
#ifndef VOK_COMPARE_PATCH_PLAN_H
#define VOK_COMPARE_PATCH_PLAN_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/base/hash.h"
#include "vok/compare/side.h"
#include "vok/data/xpath.h"

namespace vok {

// By id in a patch: the node of the tree that is a target there, plus 1, or NOTHING.
struct Data_PatchTargets : Data_IdMap<u2_t> {
    static constexpr u2_t NOTHING = 0xFFFFFFFF;
    using Data_IdMap<u2_t>::Data_IdMap;
};

// Reads a patch, finds the nodes that it speaks of, and holds what it says of them to what is
// there.
class Data_PatchPlan {
  public:
    static constexpr u2_t NONE = Data_Node::NONE;

    struct Change {
        u2_t uId;
        u2_t uPatch;    // the node of the patch that it comes from
        u2_t uContent;  // the node of the patch whose value or successors it gets, or NONE
        u2_t uFirstAttribute;
        u2_t uAttributes;
        bool bLeaves;  // is removed, or moves: not in its place
        bool bRemoved;
    };
    struct Attribute {
        const char* sName;
        const char* sNew;  // null: is removed

        [[nodiscard]] bool IsBelow(const char* sOther) const noexcept {
            return std::strcmp(sName, sOther) < 0;
        }
    };
    // By name.
    struct AttributeRange {
        const Attribute* pBeg;
        const Attribute* pEnd;

        [[nodiscard]] bool Has(const char* sName) const noexcept {
            const Attribute* p = std::lower_bound(
                pBeg, pEnd, sName, [](const Attribute& o, const char* s) { return o.IsBelow(s); });
            return p != pEnd && std::strcmp(p->sName, sName) == 0;
        }
    };
    // A node that comes in: of the patch, or one that moves.
    struct Arrival {
        u2_t uParent;
        std::string_view sName;
        u2_t uTo;
        u2_t uPatch;  // the node of the patch that it comes from
        u2_t uNew;    // the node of the patch whose copy it is, or NONE
        u2_t uMoved;  // the node that moves, or NONE

        friend bool operator<(const Arrival& x, const Arrival& y) noexcept {
            if (x.uParent != y.uParent) return x.uParent < y.uParent;
            return x.sName != y.sName ? x.sName < y.sName : x.uTo < y.uTo;
        }
    };

    // A plan that changes nothing yet, for one who makes it of others: what these refer to is
    // oPatch.
    Data_PatchPlan(Data_Side& oTree, Data_Side& oPatch, Data_PatchTargets& oTargets);
    // Reads the patch that uTop of oPatch is. Raises what Data::ApplyPatch does, but for what is
    // found out by applying it.
    void Read(u2_t uTop);

    // Null for a node that is not changed.
    [[nodiscard]] const Change* ChangeOf(u2_t uId) const noexcept {
        const u2_t uNth = m_oChangeOf.Find(uId);
        return uNth != 0 ? &m_oChange(uNth - 1) : nullptr;
    }
    [[nodiscard]] const Arr<Change>& Changes() const noexcept { return m_oChange; }
    // The attributes of a node that change.
    [[nodiscard]] AttributeRange AttributesOf(u2_t uId) const noexcept {
        const Change* p = ChangeOf(uId);
        if (p == nullptr) return {nullptr, nullptr};
        const Attribute* pBeg = m_oAttribute.Beg() + p->uFirstAttribute;
        return {pBeg, pBeg + p->uAttributes};
    }
    // Sorted by parent, name and position; the first of a parent, or their number.
    [[nodiscard]] const Arr<Arrival>& Arrivals() const noexcept { return m_oArrival; }
    [[nodiscard]] u2_t FirstArrival(u2_t uParent) const noexcept;
    [[nodiscard]] bool IsRead() const noexcept { return m_uPatchTop != NONE; }
    // What a link of the patch leads to: a node of the tree, NONE for nothing; false when it is
    // none of these.
    [[nodiscard]] bool FindTarget(u2_t uLink, u2_t& uId);
    // The node of the patches that stands for one that is the same and was left out; NONE for
    // others.
    [[nodiscard]] u2_t TwinOf(u2_t uPatch) const noexcept { return m_oTwinOf.Find(uPatch) - 1; }
    // The new name of the top; null: it stays.
    [[nodiscard]] const char* NewName() const noexcept { return m_sNewName; }

    // Raises "no patch" with the place in the patch.
    [[noreturn]] void Refuse(u2_t uPatch);
    // The path of a node of the tree; of one below it, if a name is given.
    [[nodiscard]] Str PathOf(u2_t uId);
    [[nodiscard]] Str PathOf(u2_t uParent, std::string_view sName, u2_t uPos);
    // The live nodes of a run, until another one is asked for.
    struct LiveRun {
        const u2_t* pId = nullptr;
        u2_t uSize = 0;
    };
    [[nodiscard]] LiveRun FindRun(u2_t uParent, std::string_view sName);

  private:
    friend class Data_PlanMerger;

    struct Open {
        u2_t uPatch;
        u2_t uId;
    };
    // The live nodes of a run, once they were asked for.
    struct Run {
        std::size_t uFirst;
        u2_t uSize;
    };

    void ReadTargets();
    void ReadEdit(const Open& o);
    void ReadPart(const Open& o, u2_t uPart);
    void ReadChild(const Open& o, u2_t uPart, bool bRemoves);
    void ReadInsert(const Open& o, u2_t uPart);
    void ReadAttribute(const Open& o, u2_t uPart);
    void ReadName(const Open& o, u2_t uPart);
    void ReadContent(const Open& o);
    Change& MakeChange(u2_t uId, u2_t uPatch);

    [[nodiscard]] u2_t Follow(u2_t uId, const Data_Xpath& oPath, std::size_t uSteps);
    [[nodiscard]] u2_t FindLive(u2_t uParent, std::string_view sName, u2_t uPos);
    void ParseAt(u2_t uPatch, Data_Xpath& oPath);
    [[nodiscard]] const char* AttributeOf(u2_t uPatch, const char* sName) const noexcept;
    [[nodiscard]] u2_t Part(u2_t uPatch, const char* sName) const;
    [[nodiscard]] const char* TextOf(u2_t uPatch);

    void CheckFits(u2_t uOld, u2_t uId, bool bWhole);

    Data_Side& m_oTree;
    Data_Side& m_oPatch;
    Data_IdMap<u2_t> m_oChangeOf;  // by id: the change plus 1
    Arr<Change> m_oChange;
    Arr<Attribute> m_oAttribute;
    Arr<Arrival> m_oArrival;
    Data_PatchTargets& m_oTargetOf;
    u2_t m_uPatchTop = NONE;     // NONE: it is made of others
    Data_IdMap<u2_t> m_oTwinOf;  // plus 1
    const char* m_sNewName = nullptr;
    Hash m_oNames;  // of what is inserted
    Arr<Open> m_oOpen;
    Data_IdMap<u2_t> m_oRunOf;  // by the first node of a run: plus 1
    Arr<Run> m_oRun;
    Arr<u2_t> m_oLive;
};

// The tree with the changes of a plan; of one that was read, everything must be there to be
// changed.
[[nodiscard]] Data MakePatchedCopy(Data_Side& oTree, Data_Side& oPatch, Data_PatchPlan& oPlan);

}  // namespace vok

#endif  // VOK_COMPARE_PATCH_PLAN_H
