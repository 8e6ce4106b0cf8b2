// SPDX-License-Identifier: MIT
// Python values as values of nodes.
#ifndef VOK_PYTHON_VALUES_H
#define VOK_PYTHON_VALUES_H

#include <pybind11/pybind11.h>

#include "vok/data/value.h"

namespace vok::python {

namespace py = pybind11;

// The bytes, or the numbers, that an object lends: until this is gone, as long as it has them.
class Borrowed {
  public:
    Borrowed() = default;
    ~Borrowed() {
        if (m_oView.obj != nullptr) PyBuffer_Release(&m_oView);
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    // False, and no error, for an object that lends nothing.
    [[nodiscard]] bool Take(PyObject* pObject);
    [[nodiscard]] bool IsTaken() const noexcept { return m_oView.obj != nullptr; }
    // Whether it is one block of bytes.
    [[nodiscard]] bool IsBlock() const noexcept;
    // Whether it is a row of numbers or truth values.
    [[nodiscard]] bool IsRow() const noexcept { return m_oView.ndim == 1 && Code() != 0; }
    // Whether it is just one of them.
    [[nodiscard]] bool IsOne() const noexcept { return m_oView.ndim == 0 && Code() != 0; }
    [[nodiscard]] Py_ssize_t Size() const noexcept { return m_oView.shape[0]; }
    [[nodiscard]] Data_Value Nth(Py_ssize_t iNth) const noexcept;
    [[nodiscard]] std::string_view Block() const noexcept {
        return {static_cast<const char*>(m_oView.buf), static_cast<std::size_t>(m_oView.len)};
    }

  private:
    // What the numbers are, as the struct module has it; 0 for what is none.
    [[nodiscard]] char Code() const noexcept;

    Py_buffer m_oView{};
};

// The value of a node that an object is: texts and bytes are those of the object, or of oBytes,
// and not copied. False for what is none: a container, a Link, an unknown object. Raises
// OverflowError for numbers beyond 64 bits, ValueError for a datetime without a time zone.
[[nodiscard]] bool ToValue(PyObject* pObject, Data_Value& oValue, Borrowed& oBytes);

// A text as UTF-8; it lives as long as the object.
[[nodiscard]] std::string_view Utf8Of(PyObject* pText);

}  // namespace vok::python

#endif  // VOK_PYTHON_VALUES_H
