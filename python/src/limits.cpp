// SPDX-License-Identifier: MIT
// The class Limits.
#include <pybind11/pybind11.h>

#include <string>
#include <string_view>

#include "python/src/errors.h"
#include "python/src/module.h"

namespace vok::python {

namespace {

constexpr struct {
    const char* sName;
    u3_t Limits::*pField;
} FIELDS[] = {
    {"nodes", &Limits::m_uNodes},
    {"depth", &Limits::m_uDepth},
    {"skipped_slots", &Limits::m_uSkippedSlots},
    {"text_bytes", &Limits::m_uTextBytes},
    {"attributes", &Limits::m_uAttributes},
    {"inflated_bytes", &Limits::m_uInflatedBytes},
    {"inflation_ratio", &Limits::m_uInflationRatio},
    {"zip_entries", &Limits::m_uZipEntries},
    {"path_steps", &Limits::m_uPathSteps},
    {"work_per_byte", &Limits::m_uWorkPerByte},
    {"memory_per_byte", &Limits::m_uMemoryPerByte},
    {"input_bytes", &Limits::m_uInputBytes},
};

Limits Make(const py::kwargs& oFields) {
    Limits oLimits;
    for (const auto& [oName, oValue] : oFields) {
        const auto sName = oName.cast<std::string>();
        bool bFound = false;
        for (const auto& o : FIELDS) {
            if (sName != o.sName) continue;
            oLimits.*o.pField = oValue.cast<u3_t>();
            bFound = true;
        }
        if (!bFound) Raise(PyExc_TypeError, ("there is no limit \"" + sName + "\"").c_str());
    }
    return oLimits;
}

std::string ShownLimits(const Limits& oLimits) {
    const Limits oDefaults;
    std::string s;
    for (const auto& o : FIELDS) {
        if (oLimits.*o.pField == oDefaults.*o.pField) continue;
        s += (s.empty() ? "" : ", ") + std::string(o.sName) + '=' +
             std::to_string(oLimits.*o.pField);
    }
    return "Limits(" + s + ')';
}

}  // namespace

void DefineLimits(py::module_& oModule) {
    py::class_<Limits> oClass(oModule, "Limits",
                              R"(What input may use up; what is not given is as it is by default.

nodes, depth, skipped_slots, text_bytes, attributes, inflated_bytes, inflation_ratio, zip_entries,
path_steps, work_per_byte, memory_per_byte, input_bytes: those of the library, which names them
m_uNodes and so on in errors.

>>> vok.loads(b'<a><b/><c/></a>', limits=vok.Limits(nodes=2))
Traceback (most recent call last):
vok.LimitError: byte 7, line 1, column 8, at /: limit "nodes" of 2 exceeded (raise Limits::m_uNodes)
)");
    oClass.def(py::init(&Make))
        .def_static("trusted", &Limits::Trusted, "No bounds, for input of one's own.")
        .def("__repr__", &ShownLimits);
    for (const auto& o : FIELDS) oClass.def_readwrite(o.sName, o.pField);
}

}  // namespace vok::python
