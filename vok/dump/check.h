// SPDX-License-Identifier: MIT
// Whether what a dump holds is a tree. Internal.
#ifndef VOK_DUMP_CHECK_H
#define VOK_DUMP_CHECK_H

#include "vok/base/work.h"
#include "vok/data/store.h"

namespace vok::dump {

// The first thing that is wrong: where in its block.
struct Fault {
    enum Block : u0_t { NODES, GROUPS, HEAP, ATTRIBUTES };
    Block eBlock;
    u3_t uOffset;
};

// Checks the arrays of a tree that were read as they are, and sets the fields that follow from
// them. Afterwards the tree is as good as one that was built. Throws a Fault, or raises the
// errors of limits. Linear but for texts that are out of order, which are sorted.
class Checker {
  public:
    // uVersion is that of the dump: records of an older one become what they are today.
    Checker(Data_Base& oBase, u2_t uVersion, const Limits& oLimits, const Work& oWork)
        : m_oBase(oBase),
          m_uVersion(uVersion),
          m_oWord(oBase.m_oGroup.Words()),
          m_oLimits(oLimits),
          m_oWork(oWork) {}

    // Nodes, groups and texts, then the attributes: those of all names from the words of their
    // block.
    void Run(const Arr<u2_t>& oAttributes);
    // Takes the arrays of a tree that was checked before for good.
    void Believe(const Arr<u2_t>& oAttributes);

  private:
    static constexpr std::size_t RECORD_SIZE = sizeof(Data_Node);

    [[noreturn]] static void FailNode(std::size_t uId) {
        throw Fault{Fault::NODES, u3_t{uId} * RECORD_SIZE};
    }
    [[noreturn]] static void FailGroup(std::size_t uWord) {
        throw Fault{Fault::GROUPS, u3_t{uWord} * 4};
    }

    void WidenNodes() noexcept;
    void CheckNodes();
    void CheckGroup(u2_t uId, const Data_Node& oNode);
    void CheckDistinct(const u2_t* pGroup, std::size_t uSize, std::size_t uFirst);
    void CheckValue(u2_t uId, const Data_Node& oNode);
    void CheckLevels();
    void CheckAttributes(const Arr<u2_t>& oWords);
    void CheckSize(u3_t uSize) const;

    // ---- texts ------------------------------------------------------------

    // A text whose end is not known ends at its first NUL.
    static constexpr u2_t TO_NUL = 0;
    struct Text {
        u2_t uBegin;
        u2_t uSize;  // with the NUL, or TO_NUL
    };

    [[nodiscard]] bool IsNextText(const Data_Node& oNode) noexcept;
    [[nodiscard]] bool CheckText(u2_t uBegin, u2_t uSize);
    // The end of a valid text with its NUL, 0 when there is none.
    [[nodiscard]] std::size_t EndOfText(u2_t uBegin, u2_t uSize) const;
    void CheckLateTexts();
    void CheckShared() const;

    Data_Base& m_oBase;
    const u2_t m_uVersion;
    const Arr<u2_t>& m_oWord;  // of the groups
    const Limits& m_oLimits;
    const Work& m_oWork;
    std::size_t m_uNextGroup = 0;  // word at which the next group begins
    u3_t m_uHung = 0;              // nodes that name a predecessor
    u3_t m_uInGroups = 0;
    bool m_bBelieve = false;
    bool m_bUpward = false;  // some node has a lower id than its predecessor
    Arr<u2_t> m_oKeyAfter;   // by key: one that is known to come behind it, or 0
    Arr<u3_t> m_oSeen;       // a bit per node of groups that are not in the order of ids
    // Texts in the order of the heap are checked at once, others when all are known: so every
    // byte is looked at twice at the most, however many texts share it.
    std::size_t m_uChecked = 0;
    u3_t m_uReferred = 0;  // bytes of the heap that are in use, once for each use
    Arr<Text> m_oLate;
};

}  // namespace vok::dump

#endif  // VOK_DUMP_CHECK_H
