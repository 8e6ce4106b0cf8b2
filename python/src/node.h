// SPDX-License-Identifier: MIT
// What the class Node does, in parts.
#ifndef VOK_PYTHON_NODE_H
#define VOK_PYTHON_NODE_H

#include <pybind11/pybind11.h>

#include <string>

#include "python/src/tree.h"

namespace vok::python {

namespace py = pybind11;

// A name or a path as the library takes it. Raises ValueError for one with a NUL.
const std::string& Checked(const std::string& s);

// ---- successors of one name, removed ones left out ------------------------------

[[nodiscard]] u2_t Count(const Node& oNode, const std::string& sName);
[[nodiscard]] bool Has(const Node& oNode, const std::string& sName);
// The n-th, from the end for a negative one. Raises NotFoundError.
[[nodiscard]] Data Nth(const Node& oNode, const std::string& sName, i3_t iNth);
[[noreturn]] void RaiseNotFound(const Node& oNode, const std::string& sName, i3_t iNth);

// ---- editing --------------------------------------------------------------------
//
// What raises an error has changed nothing.

// Gives a node a value: of a node that may be changed.
void Assign(Data oNode, const py::object& oValue);
[[nodiscard]] Node Create(const Node& oNode, const std::string& sPath, const py::args& oValue);
// Appends what an object is and returns the first node of it; None for an empty list.
py::object Add(const Node& oNode, const std::string& sName, const py::object& oObject,
               const py::object& oIndex, const py::object& oDefault, bool bMarks);
// What an object is in place of the only successor of a name, or as a new one.
void SetItem(const Node& oNode, const std::string& sName, const py::object& oObject);
void DeleteItem(const Node& oNode, const std::string& sName);
void Rename(const Node& oNode, const std::string& sName, const py::object& oIndex);
[[nodiscard]] Node MoveTo(const Node& oNode, const Node& oParent, const py::object& oIndex);
[[nodiscard]] Node CopyTo(const Node& oNode, const Node& oParent, const py::object& oIndex);
void Clear(const Node& oNode);
void Shrink(const Node& oNode);
// None removes it.
void SetAttribute(const Node& oNode, const std::string& sName, const py::object& oValue);

}  // namespace vok::python

#endif  // VOK_PYTHON_NODE_H
