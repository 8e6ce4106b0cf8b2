#include "python/src/columns.h"

#include <bit>
#include <cstring>
#include <string>
#include <vector>

#include "python/src/errors.h"
#include "python/src/tree.h"
#include "vok/data/view.h"
#include "vok/data/xpath.h"

namespace vok::python {

namespace {

struct Number {
    Data_Node::Type eType;
    u3_t uBits;
};

constexpr u2_t Bit(Data_Node::Type eType) noexcept {
    return 1u << eType;
}
constexpr u2_t REALS = Bit(Data_Node::Float) | Bit(Data_Node::Double);

// "f8" and so on for the types that there are; null where none holds them all.
const char* CodeOf(u2_t uTypes, bool bBeyondSigned) {
    constexpr u2_t INTEGER = Bit(Data_Node::Integer), LONG = Bit(Data_Node::Long);
    if (uTypes == 0) return "f8";
    if (uTypes == Bit(Data_Node::Boolean)) return "b1";
    if (uTypes == INTEGER || uTypes == Bit(Data_Node::Char)) return "i4";
    if (uTypes == LONG) return "u8";
    if (uTypes == (INTEGER | LONG)) return bBeyondSigned ? nullptr : "i8";
    if (uTypes == Bit(Data_Node::Date)) return "f8";
    return (uTypes & ~(REALS | INTEGER)) == 0 ? "f8" : nullptr;
}

void Store(char* p, const char* sCode, const Number& o) {
    const auto iValue = static_cast<i2_t>(o.uBits);
    if (std::strcmp(sCode, "b1") == 0) {
        *p = static_cast<char>(iValue != 0);
    } else if (std::strcmp(sCode, "i4") == 0) {
        std::memcpy(p, &iValue, 4);
    } else if (std::strcmp(sCode, "f8") == 0) {
        const double d = o.eType == Data_Node::Integer ? iValue : std::bit_cast<double>(o.uBits);
        std::memcpy(p, &d, 8);
    } else {
        const i3_t i = o.eType == Data_Node::Integer ? iValue : static_cast<i3_t>(o.uBits);
        std::memcpy(p, &i, 8);
    }
}

Number NumberOf(const Data& o) {
    constexpr u2_t NUMBERS = REALS | Bit(Data_Node::Boolean) | Bit(Data_Node::Integer) |
                             Bit(Data_Node::Char) | Bit(Data_Node::Long) | Bit(Data_Node::Date);
    const Data_Node::Type eType = o.GetType();
    if ((NUMBERS & Bit(eType)) == 0) {
        const std::string sText =
            std::string(o.GetPath().View()) + " is no number: " + Data_Node::TypeName(eType);
        Raise(PyExc_TypeError, sText.c_str());
    }
    return {eType, Data_View(o).Lng()};
}

}  // namespace

py::tuple Column(const py::iterable& oNodes, const py::object& oPath) {
    Data_Xpath oXpath;
    const std::string sPath = oPath.is_none() ? "" : oPath.cast<std::string>();
    if (!oPath.is_none()) oXpath.Parse(sPath.c_str());
    std::vector<Number> ao;
    u2_t uTypes = 0;
    bool bBeyondSigned = false;
    for (const py::handle oItem : oNodes) {
        Data o = oItem.cast<const Node&>().Get();
        if (!oPath.is_none()) {
            const Data oFound = oXpath.EvaluateFirst(o);
            if (!oFound.IsNode()) {
                const std::string sText =
                    "no \"" + sPath + "\" at " + std::string(o.GetPath().View());
                Raise(g_oClasses.pNotFoundError, sText.c_str());
            }
            o = oFound;
        }
        ao.push_back(NumberOf(o));
        uTypes |= Bit(ao.back().eType);
        bBeyondSigned |= ao.back().eType == Data_Node::Long && ao.back().uBits >> 63 != 0;
    }
    const char* const sCode = CodeOf(uTypes, bBeyondSigned);
    if (sCode == nullptr) Raise(PyExc_TypeError, "numbers of types that no array holds together");
    const std::size_t uSize = static_cast<std::size_t>(sCode[1] - '0');
    const py::object oBytes = py::reinterpret_steal<py::object>(
        PyByteArray_FromStringAndSize(nullptr, static_cast<Py_ssize_t>(ao.size() * uSize)));
    if (!oBytes) throw py::error_already_set();
    char* p = PyByteArray_AS_STRING(oBytes.ptr());
    for (const Number& o : ao) {
        Store(p, sCode, o);
        p += uSize;
    }
    return py::make_tuple(oBytes, sCode);
}

}  // namespace vok::python
