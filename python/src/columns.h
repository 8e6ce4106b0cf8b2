// SPDX-License-Identifier: MIT
// Numbers of many nodes in one block.
#ifndef VOK_PYTHON_COLUMNS_H
#define VOK_PYTHON_COLUMNS_H

#include <pybind11/pybind11.h>

#include <string>

#include "python/src/tree.h"

namespace vok::python {

namespace py = pybind11;

// A bytearray and what is in it, as NumPy calls it: "i4", "i8", "u8", "f8", "b1". oNodes are nodes;
// of those at a path seen from them, unless it is None, the first one counts. Types are widened
// where that keeps every value. Raises TypeError for others, NotFoundError.
[[nodiscard]] py::tuple Column(const py::iterable& oNodes, const py::object& oPath);
// The same for the successors of one name.
[[nodiscard]] py::tuple ColumnOfRun(const Node& oParent, const std::string& sName,
                                    const py::object& oPath);

}  // namespace vok::python

#endif  // VOK_PYTHON_COLUMNS_H
