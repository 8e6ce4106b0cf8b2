// SPDX-License-Identifier: MIT
// Python objects as trees.
#ifndef VOK_PYTHON_FROM_PYTHON_H
#define VOK_PYTHON_FROM_PYTHON_H

#include <pybind11/pybind11.h>

#include <string>

#include "vok/data/data.h"

namespace vok::python {

// A tree of an object, its root unnamed. What cannot be stored raises TypeError, ValueError or
// OverflowError. Iterative: what is in itself ends at the limit of depth. pDefault, unless it is
// null, is asked what to take in place of an object that is not known. With bMarks the attribute
// "#json" tells what a tree does not; without a list of one item is that item, and an empty one
// nothing.
[[nodiscard]] Data MakeTree(PyObject* pObject, PyObject* pDefault, bool bMarks);
// The same for the value of a member: the root of the tree has what it is as successors of a name,
// for a list one for each item.
[[nodiscard]] Data MakeSuccs(const std::string& sName, PyObject* pObject, PyObject* pDefault,
                             bool bMarks);
// Gives a node a value: whatever is no dict, list or dataclass.
void SetValue(Data& oNode, PyObject* pObject);

}  // namespace vok::python

#endif  // VOK_PYTHON_FROM_PYTHON_H
