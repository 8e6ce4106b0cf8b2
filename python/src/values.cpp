// SPDX-License-Identifier: MIT
#include "python/src/values.h"

#include <datetime.h>

#include <cstring>
#include <string_view>

#include "python/src/errors.h"
#include "python/src/tree.h"

namespace vok::python {

namespace {

[[noreturn]] void RaiseRange() {
    Raise(PyExc_OverflowError, "whole numbers are from -2147483648 to 18446744073709551615");
}

Data_Value OfNumber(i3_t i) noexcept {
    const auto i32 = static_cast<i2_t>(i);
    return i32 == i ? Data_Value(i32) : Data_Value(i);
}

Data_Value OfInt(PyObject* p) {
    int iOverflow = 0;
    const long long i = PyLong_AsLongLongAndOverflow(p, &iOverflow);
    if (iOverflow == 0) {
        if (i < -i3_t{0x80000000}) RaiseRange();
        return OfNumber(i);
    }
    const unsigned long long u = iOverflow > 0 ? PyLong_AsUnsignedLongLong(p) : 0;
    if (iOverflow < 0 || PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        RaiseRange();
    }
    return Data_Value(static_cast<u3_t>(u));
}

Data_Value OfLong(PyObject* p) {
    const unsigned long long u = PyLong_AsUnsignedLongLong(p);
    if (PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        RaiseRange();
    }
    return Data_Value(static_cast<u3_t>(u));
}

Data_Value OfChar(PyObject* p) {
    int iOverflow = 0;
    const long long i = PyLong_AsLongLongAndOverflow(p, &iOverflow);
    if (iOverflow != 0 || i < -i3_t{0x80000000} || i > i3_t{0xFFFFFFFF}) RaiseRange();
    return Data_Value::Char(static_cast<u2_t>(i));
}

Data_Value OfQuad(PyObject* p) {
    u2_t auWord[4];
    for (Py_ssize_t i = 0; i < 4; ++i) {
        PyObject* const pWord = PyTuple_GetItem(p, i);
        const unsigned long u =
            pWord != nullptr && PyLong_Check(pWord) ? PyLong_AsUnsignedLong(pWord) : ~0ul;
        if (PyErr_Occurred() != nullptr || u > 0xFFFFFFFF) {
            PyErr_Clear();
            Raise(PyExc_OverflowError, "a Quad has four numbers from 0 to 4294967295");
        }
        auWord[i] = static_cast<u2_t>(u);
    }
    return Data_Value::Quad(auWord[0], auWord[1], auWord[2], auWord[3]);
}

bool IsDateTime(PyObject* p) {
    if (PyDateTimeAPI == nullptr) PyDateTime_IMPORT;
    if (PyDateTimeAPI == nullptr) PyErr_Clear();
    return PyDateTimeAPI != nullptr && PyDateTime_Check(p);
}

Data_Value OfDateTime(PyObject* p) {
    const py::handle oDate(p);
    if (oDate.attr("utcoffset")().is_none()) {
        Raise(PyExc_ValueError, "a datetime without a time zone is no point in time");
    }
    return Data_Value::Date(oDate.attr("timestamp")().cast<double>());
}

bool IsA(PyObject* p, PyObject* pClass) {
    return PyObject_TypeCheck(p, reinterpret_cast<PyTypeObject*>(pClass)) != 0;
}

template <class T>
T Load(const char* p) noexcept {
    T t;
    std::memcpy(&t, p, sizeof(T));
    return t;
}

// A number of so many bytes: 1, 2, 4, 8.
i3_t LoadSigned(const char* p, Py_ssize_t iSize) noexcept {
    switch (iSize) {
        case 1: return Load<std::int8_t>(p);
        case 2: return Load<std::int16_t>(p);
        case 4: return Load<i2_t>(p);
        default: return Load<i3_t>(p);
    }
}
u3_t LoadUnsigned(const char* p, Py_ssize_t iSize) noexcept {
    switch (iSize) {
        case 1: return Load<std::uint8_t>(p);
        case 2: return Load<std::uint16_t>(p);
        case 4: return Load<u2_t>(p);
        default: return Load<u3_t>(p);
    }
}

}  // namespace

std::string_view Utf8Of(PyObject* pText) {
    Py_ssize_t iSize = 0;
    const char* const s = PyUnicode_AsUTF8AndSize(pText, &iSize);
    if (s == nullptr) throw py::error_already_set();
    return {s, static_cast<std::size_t>(iSize)};
}

bool Borrowed::Take(PyObject* pObject) {
    // The bytes of a node have to be asked for.
    if (!PyObject_CheckBuffer(pObject) || py::isinstance<Node>(pObject)) return false;
    if (PyObject_GetBuffer(pObject, &m_oView, PyBUF_STRIDED_RO | PyBUF_FORMAT) == 0) return true;
    m_oView.obj = nullptr;
    throw py::error_already_set();
}

char Borrowed::Code() const noexcept {
    std::string_view s = m_oView.format != nullptr ? m_oView.format : "B";
    if (s.starts_with('@') || s.starts_with('=') || s.starts_with('<')) s.remove_prefix(1);
    if (s.size() != 1) return 0;
    if (s[0] == 'f') return m_oView.itemsize == 4 ? 'f' : '\0';
    if (s[0] == 'd') return m_oView.itemsize == 8 ? 'd' : '\0';
    if (s[0] == '?') return m_oView.itemsize == 1 ? '?' : '\0';
    const bool bSize = m_oView.itemsize == 1 || m_oView.itemsize == 2 || m_oView.itemsize == 4 ||
                       m_oView.itemsize == 8;
    if (!bSize) return 0;
    if (std::string_view("bhilqn").find(s[0]) != s.npos) return 'i';
    return std::string_view("BHILQN").find(s[0]) != s.npos ? 'u' : '\0';
}

bool Borrowed::IsBlock() const noexcept {
    return m_oView.ndim == 1 && m_oView.itemsize == 1 && Code() == 'u' &&
           (m_oView.strides == nullptr || m_oView.strides[0] == 1);
}

Data_Value Borrowed::Nth(Py_ssize_t iNth) const noexcept {
    const char* p = static_cast<const char*>(m_oView.buf);
    if (m_oView.ndim == 1) {
        p += iNth * (m_oView.strides != nullptr ? m_oView.strides[0] : m_oView.itemsize);
    }
    switch (Code()) {
        case 'f': return Data_Value(Load<float>(p));
        case 'd': return Data_Value(Load<double>(p));
        case '?': return Data_Value(*p != 0);
        case 'i': {
            const i3_t i = LoadSigned(p, m_oView.itemsize);
            // Below 32 bits there is no whole number: the nearest one would be another.
            return i >= -i3_t{0x80000000} ? OfNumber(i) : Data_Value();
        }
        default: {
            const u3_t u = LoadUnsigned(p, m_oView.itemsize);
            return u <= 0x7FFFFFFF ? Data_Value(static_cast<i2_t>(u)) : Data_Value(u);
        }
    }
}

bool ToValue(PyObject* p, Data_Value& oValue, Borrowed& oBytes) {
    const Classes& c = g_oClasses;
    if (PyUnicode_Check(p)) {
        oValue = Utf8Of(p);
    } else if (PyLong_CheckExact(p)) {
        oValue = OfInt(p);
    } else if (PyFloat_CheckExact(p)) {
        oValue = PyFloat_AS_DOUBLE(p);
    } else if (p == Py_None) {
        oValue = Data_Value();
    } else if (PyBool_Check(p)) {
        oValue = p == Py_True;
    } else if (PyFloat_Check(p)) {
        const double d = PyFloat_AS_DOUBLE(p);
        oValue = IsA(p, c.pFloat)  ? Data_Value::Float(d)
                 : IsA(p, c.pDate) ? Data_Value::Date(d)
                                   : Data_Value(d);
    } else if (PyLong_Check(p)) {
        oValue = IsA(p, c.pLong) ? OfLong(p) : IsA(p, c.pChar) ? OfChar(p) : OfInt(p);
    } else if (IsA(p, c.pQuad)) {
        oValue = OfQuad(p);
    } else if (IsDateTime(p)) {
        oValue = OfDateTime(p);
    } else if (oBytes.Take(p) && (oBytes.IsBlock() || oBytes.IsOne())) {
        if (oBytes.IsOne()) {
            oValue = oBytes.Nth(0);
            if (oValue.GetType() == Data_Node::Empty) RaiseRange();
        } else {
            if (oBytes.Block().size() > 0x7FFFFFFF)
                Raise(PyExc_OverflowError, "a block has at most 2 GiB");
            oValue = Data_Value::Binary(oBytes.Block().data(), oBytes.Block().size());
        }
    } else {
        return false;
    }
    return true;
}

}  // namespace vok::python
