// SPDX-License-Identifier: MIT
#include "python/src/errors.h"

#include <string_view>

#include "python/src/tree.h"

namespace vok::python {

Classes g_oClasses;

void Classes::Import() {
    const py::module_ oTypes = py::module_::import("vok._types");
    const auto oGet = [&](const char* s) {
        return oTypes.attr(s).cast<py::object>().release().ptr();
    };
    pError = oGet("Error");
    pLoadError = oGet("LoadError");
    pLimitError = oGet("LimitError");
    pFileError = oGet("FileError");
    pNotFoundError = oGet("NotFoundError");
    pBusyError = oGet("BusyError");
    pNoMemoryError = oGet("NoMemoryError");
    pLong = oGet("Long");
    pChar = oGet("Char");
    pFloat = oGet("Float");
    pDate = oGet("Date");
    pQuad = oGet("Quad");
    pLink = oGet("Link");
    pReport = oGet("Report");
    pDifference = oGet("Difference");
    pConflict = oGet("Conflict");
    const py::module_ oViews = py::module_::import("vok._views");
    pRun = oViews.attr("Run").cast<py::object>().release().ptr();
    pAttributes = oViews.attr("Attributes").cast<py::object>().release().ptr();
}

namespace {

PyObject* ClassOf(PyObject* pClass, Msg_Kind eKind) noexcept {
    switch (eKind) {
        case Msg_Kind::Limit: return g_oClasses.pLimitError;
        case Msg_Kind::NoMemory: return g_oClasses.pNoMemoryError;
        case Msg_Kind::System: return g_oClasses.pFileError;
        default: return pClass;
    }
}

py::tuple Lines(std::string_view s) {
    py::list oLines;
    while (!s.empty()) {
        const std::size_t uEnd = s.find('\n');
        oLines.append(py::str(std::string(s.substr(0, uEnd))));
        s = uEnd == s.npos ? std::string_view() : s.substr(uEnd + 1);
    }
    return oLines;
}

}  // namespace

void Raise(PyObject* pClass, const Msg_Exception& oError, const Load_Report* pReport,
           const std::string& sSource) {
    std::string_view sText = oError.what();
    while (sText.ends_with('\n')) sText.remove_suffix(1);
    py::dict oPlace;
    oPlace["where"] = Lines(oError.where());
    if (!sSource.empty()) oPlace["source"] = py::str(sSource);
    if (pReport != nullptr) {
        if (pReport->m_uOffset != 0 || pReport->m_uLine != 0) oPlace["offset"] = pReport->m_uOffset;
        if (pReport->m_uLine != 0) {
            oPlace["line"] = pReport->m_uLine;
            oPlace["column"] = pReport->m_uColumn;
        }
        if (!pReport->m_oPath.IsEmpty()) oPlace["path"] = py::str(pReport->m_oPath.CStr());
    }
    const py::object oClass = py::reinterpret_borrow<py::object>(ClassOf(pClass, oError.Kind()));
    const py::object oRaised = oClass(py::str(std::string(sText)), **oPlace);
    PyErr_SetObject(oClass.ptr(), oRaised.ptr());
    throw py::error_already_set();
}

void Raise(PyObject* pClass, const char* sText) {
    PyErr_SetString(pClass, sText);
    throw py::error_already_set();
}

void RaiseBusy(const char* sText) {
    Raise(g_oClasses.pBusyError, sText);
}

void RaiseRenumbered() {
    Raise(g_oClasses.pError, "nodes must be taken anew since shrink() has given them new ids");
}

void RegisterErrors() {
    py::register_exception_translator([](std::exception_ptr pError) {
        try {
            if (pError) std::rethrow_exception(pError);
        } catch (const py::cast_error&) {
            PyErr_SetString(PyExc_TypeError, "an argument is of another type than that");
        } catch (const Msg_Exception& oError) {
            try {
                Raise(g_oClasses.pError, oError);
            } catch (py::error_already_set& oRaised) {
                oRaised.restore();
            }
        }
    });
}

}  // namespace vok::python
