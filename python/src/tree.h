// SPDX-License-Identifier: MIT
// Trees that Python holds, and nodes of them.
#ifndef VOK_PYTHON_TREE_H
#define VOK_PYTHON_TREE_H

#include <memory>
#include <optional>

#include "vok/base/limits.h"
#include "vok/base/msg.h"
#include "vok/data/data.h"

namespace vok::python {

// A tree with what Python has to know of it. All fields belong to who holds the interpreter's lock.
//
// A tree is changed under that lock only, and only while nobody reads it: who gives the lock up
// while it reads the tree, who may run code of others meanwhile, and who has handed out a pointer
// into it, holds a Reading. So a tree cannot change under anybody's hands, whatever other threads,
// callbacks and finalizers do: their changes raise BusyError.
struct Tree {
    explicit Tree(Data oTop) noexcept : oRoot(std::move(oTop)) {}

    Data oRoot;
    std::optional<Load_Report> oReport;  // of a tree that was loaded
    u2_t uRenumbered = 0;                // how often nodes got other ids
    u2_t uReaders = 0;
    bool bGaps = false;  // there may be removed nodes that keep their places
};
using Tree_Ptr = std::shared_ptr<Tree>;

// Raises BusyError.
[[noreturn]] void RaiseBusy(const char* sText);
// Raises Error for a node whose id is another's since Shrink.
[[noreturn]] void RaiseRenumbered();

// For the time that it lives a tree is not changed, and reading it does not write. To be made and
// destroyed with the interpreter's lock.
class Reading {
  public:
    explicit Reading(const Tree_Ptr& pTree) : m_pTree(pTree) {
        m_pTree->oRoot.SetAccessMode();
        ++m_pTree->uReaders;
    }
    ~Reading() { --m_pTree->uReaders; }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

  private:
    Tree_Ptr m_pTree;
};

// A node as Python has it: it keeps its tree, and knows when it is gone.
class Node {
  public:
    Node(Tree_Ptr pTree, u2_t uId) noexcept
        : m_pTree(std::move(pTree)),
          m_uId(uId),
          m_uRenumbered(uId != 0 ? m_pTree->uRenumbered : 0) {}
    // The root of a tree of its own.
    explicit Node(Data oRoot) : Node(std::make_shared<Tree>(std::move(oRoot)), 0) {}

    [[nodiscard]] const Tree_Ptr& GetTree() const noexcept { return m_pTree; }
    [[nodiscard]] u2_t GetId() const noexcept { return m_uId; }
    [[nodiscard]] bool IsAlive() const noexcept {
        if (IsRenumbered()) return false;
        const Data o = m_pTree->oRoot.GetNodeFromID(m_uId);
        return o.IsNode() && o.GetNode().GetType() != Data_Node::Zombi;
    }

    // Raises "try to access deleted node".
    [[nodiscard]] Data Get() const {
        if (IsRenumbered()) RaiseRenumbered();
        if (!IsAlive()) Msg::TryToAccessDeletedNode();
        return m_pTree->oRoot.GetNodeFromID(m_uId);
    }
    // The same for who changes the tree.
    [[nodiscard]] Data Change() const {
        if (m_pTree->uReaders != 0) RaiseBusy("tree is being read");
        return Get();
    }
    [[nodiscard]] Node At(u2_t uId) const { return {m_pTree, uId}; }
    [[nodiscard]] Node At(const Data& o) const { return {m_pTree, o.GetId()}; }

    friend bool operator==(const Node& a, const Node& b) noexcept = default;

  private:
    // The root has the same number for ever.
    [[nodiscard]] bool IsRenumbered() const noexcept {
        return m_uId != 0 && m_uRenumbered != m_pTree->uRenumbered;
    }

    Tree_Ptr m_pTree;
    u2_t m_uId;
    u2_t m_uRenumbered;
};

}  // namespace vok::python

#endif  // VOK_PYTHON_TREE_H
