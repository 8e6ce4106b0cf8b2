// Python objects as trees.
#ifndef VOK_PYTHON_FROM_PYTHON_H
#define VOK_PYTHON_FROM_PYTHON_H

#include <pybind11/pybind11.h>

#include <string>

#include "vok/data/data.h"

namespace vok::python {

// Appends a node of a name for an object, with all that is below it, and gives the root of what was
// made: oParent stays where it is. A list appends one for each of its items. What cannot be stored
// raises TypeError, ValueError or OverflowError; nothing is then left of it. Iterative: what is in
// itself ends at the limit of depth. pDefault, unless it is null, is asked what to take in place of
// an object that is not known.
void Append(Data& oParent, const std::string& sName, PyObject* pObject, PyObject* pDefault);
// A tree of an object, its root unnamed.
[[nodiscard]] Data MakeTree(PyObject* pObject, PyObject* pDefault);
// Gives a node a value: whatever is no dict, list or dataclass.
void SetValue(Data& oNode, PyObject* pObject);

}  // namespace vok::python

#endif  // VOK_PYTHON_FROM_PYTHON_H
