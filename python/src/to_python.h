// Trees as Python objects.
#ifndef VOK_PYTHON_TO_PYTHON_H
#define VOK_PYTHON_TO_PYTHON_H

#include <pybind11/pybind11.h>

#include <string_view>
#include <vector>

#include "python/src/tree.h"
#include "vok/data/view.h"
#include "vok/json/form.h"

namespace vok::python {

// Makes dicts, lists and values of nodes (docs/python.md): one pass, no recursion. Names become
// texts once; those of the tree before are used again where they are the same.
//
// Whoever calls it has a Reading of the tree: values of some classes, and the collector, may run
// code of others. The collector is held off meanwhile; nothing that is made here is garbage.
class To_Python {
  public:
    To_Python() = default;
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
    // A node whose successors are still to come, and where they go.
    struct Frame {
        Data_View oNode;
        u2_t uNext = 0;
        u2_t uSize = 0;
        u2_t uRun = NO_RUN;          // key of those that go to pItems
        PyObject* pItems = nullptr;  // borrowed
        PyObject* pInto = nullptr;   // dict or list, borrowed
        bool bList = false;
    };
    struct Name {
        PyObject* pText = nullptr;  // as it is in the tree
        PyObject* pKey = nullptr;   // as it is in a dict
    };
    static constexpr u2_t NO_RUN = 0xFFFFFFFF;

    [[nodiscard]] static bool SkipRemoved(Frame& f) noexcept;
    [[nodiscard]] PyObject* KeyOf(const Data_View& oNode);
    [[nodiscard]] PyObject* Make(const Data_View& oNode, Place ePlace, Mark& oMark);
    [[nodiscard]] PyObject* MakeMarked(const Data_View& oNode, Place ePlace, Mark& oMark);
    [[nodiscard]] Mark MarkOf(const Data_View& oNode, Place ePlace, std::size_t uAttributes,
                              std::string_view sMark) const;
    void Open(const Data_View& oNode, PyObject* pInto, bool bList);
    void Step();

    Tree_Ptr m_pTree;
    std::vector<Frame> m_aoFrame;
    std::vector<Name> m_aoName;  // by key
};

// The text of a String; a new reference.
[[nodiscard]] PyObject* TextOf(std::string_view s);

}  // namespace vok::python

#endif  // VOK_PYTHON_TO_PYTHON_H
