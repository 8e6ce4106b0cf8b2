// SPDX-License-Identifier: MIT
#include "python/src/file_object.h"

#include <algorithm>
#include <cstring>

#include "python/src/errors.h"
#include "vok/base/msg.h"

namespace vok::python {

template <class Call>
auto File_Object::Guarded(const Call& oCall) {
    if (m_bRaised) throw Callback_Raised();
    const py::gil_scoped_acquire oLock;
    try {
        return oCall();
    } catch (py::error_already_set& oError) {
        m_bRaised = true;
        m_oRaised = oError.value();
    }
    throw Callback_Raised();
}

void File_Object::RaiseAgain() {
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(m_oRaised.ptr())), m_oRaised.ptr());
    m_oRaised = py::none();  // an error that keeps its frames alive is let go
    throw py::error_already_set();
}

std::size_t File_Object::ReadPiece(char* p, std::size_t uMost) {
    const py::object oRead = m_oFile.attr("read")(uMost);
    if (!PyBytes_Check(oRead.ptr())) {
        Raise(PyExc_TypeError, "read() must give bytes: open files in binary mode");
    }
    const auto uRead = static_cast<std::size_t>(PyBytes_GET_SIZE(oRead.ptr()));
    if (uRead > uMost) Raise(PyExc_ValueError, "read() gave more than it was asked for");
    std::memcpy(p, PyBytes_AS_STRING(oRead.ptr()), uRead);
    return uRead;
}

std::size_t File_Object::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    char* const p = static_cast<char*>(pTarget);
    std::size_t uDone = 0;
    while (uDone < uCount && !m_bEnd) {
        const std::size_t uMost = std::min(uCount - uDone, PIECE);
        const std::size_t uRead = Guarded([&] { return ReadPiece(p + uDone, uMost); });
        m_bEnd = uRead == 0;
        uDone += uRead;
    }
    if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
    return uDone;
}

// The bytes are copied: who gets them may keep them.
std::size_t File_Object::WritePiece(const char* p, std::size_t uSize) {
    const py::object oWritten = m_oFile.attr("write")(py::bytes(p, uSize));
    if (oWritten.is_none() || !PyLong_Check(oWritten.ptr())) return uSize;
    const auto iWritten = oWritten.cast<long long>();
    if (iWritten <= 0 || static_cast<std::size_t>(iWritten) > uSize) {
        Raise(PyExc_OSError, "write() did not take its bytes");
    }
    return static_cast<std::size_t>(iWritten);
}

std::size_t File_Object::Write(const void* pSource, std::size_t uCount) {
    const char* const p = static_cast<const char*>(pSource);
    if (uCount == ALL) uCount = std::strlen(p);
    for (std::size_t uDone = 0; uDone < uCount;) {
        const std::size_t uSize = std::min(uCount - uDone, PIECE);
        uDone += Guarded([&] { return WritePiece(p + uDone, uSize); });
    }
    return uCount;
}

void File_Object::Seek(i3_t iOffset, int iWhence) {
    Msg::FileSeekFailed(iOffset, iWhence, 0);
}

}  // namespace vok::python
