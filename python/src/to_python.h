// SPDX-License-Identifier: MIT
// Trees as Python objects.
#ifndef VOK_PYTHON_TO_PYTHON_H
#define VOK_PYTHON_TO_PYTHON_H

#include <pybind11/pybind11.h>

#include <string_view>
#include <vector>

#include "python/src/tree.h"
#include "vok/base/hash_text.h"
#include "vok/data/view.h"
#include "vok/json/form.h"

namespace vok::python {

namespace py = pybind11;

// Makes dicts, lists and values of nodes (docs/python.md): one pass, no recursion. Names become
// texts once; those of the tree before are used again where they are the same.
//
// Whoever calls it has a Reading of the tree: values of some classes, and the collector, may run
// code of others. The collector is held off meanwhile; nothing that is made here is garbage.
class To_Python {
  public:
    // oLists are names whose nodes are always in lists.
    explicit To_Python(const py::iterable& oLists) : m_oLists(oLists) {}
    ~To_Python();
    To_Python(const To_Python&) = delete;
    To_Python& operator=(const To_Python&) = delete;

    // A new reference. Raises py::error_already_set.
    [[nodiscard]] PyObject* Convert(const Node& oTop);
    // The value of one node alone: a new reference, None where it has none. pTree is for links.
    [[nodiscard]] static PyObject* Value(const Data_View& oNode, const Tree_Ptr& pTree);

  private:
    using Mark = json::Mark;
    enum class Place : u0_t { Top, Alone, Run, List };
    // Where it is in the tree. A view of its own for each node would cost as much as the node.
    class Cursor : public Data_View {
      public:
        Cursor() = default;
        explicit Cursor(const Data& o) : Data_View(o) {}
        void Stand(u2_t uId) noexcept { m_pNode = m_pNodes + uId; }
        [[nodiscard]] const Data_Node& NodeAt(u2_t uId) const noexcept { return m_pNodes[uId]; }
        [[nodiscard]] const u2_t* Succs() const noexcept { return m_pIds + m_pNode->Start(); }
        [[nodiscard]] const Hash_Text& NameOf(u2_t uKey) const noexcept { return m_pNames[uKey]; }
    };
    // Successors that are still to come, and where they go.
    struct Frame {
        const u2_t* pNext = nullptr;
        const u2_t* pEnd = nullptr;
        PyObject* pInto = nullptr;   // dict or list, borrowed
        PyObject* pItems = nullptr;  // list of a run, borrowed
        u2_t uRun = NO_RUN;          // its key
        bool bList = false;
    };
    // A name as it is in a dict, and its text in the tree that it was made for, of which the
    // characters are those of pText.
    struct Name {
        PyObject* pText = nullptr;
        PyObject* pKey = nullptr;
        Hash_Text oText{};
        u2_t uRun = 0;  // of Convert, in which it was compared last
        bool bList = false;
    };
    static constexpr u2_t NO_RUN = 0xFFFFFFFF;

    [[nodiscard]] bool SkipRemoved(Frame& f) const noexcept {
        while (f.pNext != f.pEnd && m_oAt.NodeAt(*f.pNext).GetType() == Data_Node::Zombi) ++f.pNext;
        return f.pNext != f.pEnd;
    }
    // The successors of the node that it is at.
    [[nodiscard]] Frame Below(PyObject* pInto, bool bList) const noexcept {
        Frame f;
        f.pInto = pInto;
        f.bList = bList;
        if (m_oAt.GetType() != Data_Node::Tree || m_oAt.GetSuccs() == 0) return f;
        f.pNext = m_oAt.Succs();
        f.pEnd = f.pNext + m_oAt.GetSuccs();
        return f;
    }
    [[nodiscard]] PyObject* KeyOf(u2_t uKey) {
        if (uKey < m_aoName.size() && m_aoName[uKey].uRun == m_uRun) return m_aoName[uKey].pKey;
        return FindKey(uKey);
    }
    [[nodiscard]] PyObject* FindKey(u2_t uKey);
    [[nodiscard]] PyObject* Make(Place ePlace, Mark& oMark);
    [[nodiscard]] PyObject* MakeMarked(Place ePlace, Mark& oMark);
    [[nodiscard]] Mark MarkOf(Place ePlace, std::size_t uAttributes, std::string_view sMark) const;
    void Step();

    const py::set m_oLists;
    Cursor m_oAt;
    Tree_Ptr m_pTree;
    std::vector<Frame> m_aoFrame;
    std::vector<Name> m_aoName;  // by key
    u2_t m_uRun = 0;
};

// Whether a name has one more "#" as a member of a dict: "#attributes", "#value", and those that
// have more of them already.
[[nodiscard]] bool IsMarked(std::string_view sName) noexcept;
// The text of a String; a new reference.
[[nodiscard]] PyObject* TextOf(std::string_view s);

}  // namespace vok::python

#endif  // VOK_PYTHON_TO_PYTHON_H
