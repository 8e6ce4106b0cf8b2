// SPDX-License-Identifier: MIT
// The extension module: what the package "vok" is made of.
#include "python/src/module.h"

#include "python/src/columns.h"
#include "python/src/errors.h"
#include "vok/base/msg.h"

namespace vok::python {

std::string PathOf(const py::object& oPath) {
    const py::object oText = py::module_::import("os").attr("fsdecode")(oPath);
    const auto s = oText.cast<std::string>();
    if (s.empty() || s.find('\0') != s.npos)
        Raise(PyExc_ValueError, "a path that is empty, or has a NUL in it");
    return s;
}

}  // namespace vok::python

PYBIND11_MODULE(_vok, oModule) {
    using namespace vok::python;
    py::options oOptions;
    oOptions.disable_function_signatures();
    vok::Msg::SetBanner(false);
    g_oClasses.Import();
    RegisterErrors();
    DefineLimits(oModule);
    DefineNode(oModule);
    DefineDocuments(oModule);
    DefineRecords(oModule);
    DefineCompare(oModule);
    oModule.def("_column", &Column);
    oModule.def("_column_of_run", &ColumnOfRun);
}
