// SPDX-License-Identifier: MIT
// What the Python part of the package gives to this one, and errors on their way there.
#ifndef VOK_PYTHON_ERRORS_H
#define VOK_PYTHON_ERRORS_H

#include <pybind11/pybind11.h>

#include <string>

#include "vok/base/limits.h"
#include "vok/base/msg_exception.h"

namespace vok::python {

namespace py = pybind11;

// The classes of _types.py and _views.py; they live as long as the interpreter.
struct Classes {
    PyObject *pError, *pLoadError, *pLimitError, *pFileError, *pNotFoundError, *pBusyError,
        *pNoMemoryError, *pLong, *pChar, *pFloat, *pDate, *pQuad, *pLink, *pReport, *pDifference,
        *pConflict, *pRun, *pAttributes;

    void Import();
};
extern Classes g_oClasses;

// Makes a Msg_Exception a Python error, of a class that says more where its kind does, and raises
// that. pReport tells where in a document it was.
[[noreturn]] void Raise(PyObject* pClass, const Msg_Exception& oError,
                        const Load_Report* pReport = nullptr, const std::string& sSource = {});
// The same with a text alone.
[[noreturn]] void Raise(PyObject* pClass, const char* sText);

// Has what the library raises become an Error wherever it leaves this module.
void RegisterErrors();

}  // namespace vok::python

#endif  // VOK_PYTHON_ERRORS_H
