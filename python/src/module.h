// SPDX-License-Identifier: MIT
// The parts of the module.
#ifndef VOK_PYTHON_MODULE_H
#define VOK_PYTHON_MODULE_H

#include <pybind11/pybind11.h>

#include <string>

#include "python/src/tree.h"
#include "vok/base/limits.h"

namespace vok::python {

namespace py = pybind11;

void DefineNode(py::module_& oModule);
void DefineLimits(py::module_& oModule);
void DefineDocuments(py::module_& oModule);
void DefineRecords(py::module_& oModule);
void DefineCompare(py::module_& oModule);

// Limits that may be left out.
[[nodiscard]] inline Limits LimitsOf(const Limits* pLimits) {
    return pLimits != nullptr ? *pLimits : Limits();
}

// The texts of a str, or of an os.PathLike, as the library takes paths. Raises what os.fspath does.
[[nodiscard]] std::string PathOf(const py::object& oPath);

}  // namespace vok::python

#endif  // VOK_PYTHON_MODULE_H
