// SPDX-License-Identifier: MIT
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

// Numbers that come one by one, and what there is among them.
class Collector {
  public:
    // oNode is what the view looks at.
    void Add(const Data_View& o, const Node& oNode) {
        constexpr u2_t NUMBERS = REALS | Bit(Data_Node::Boolean) | Bit(Data_Node::Integer) |
                                 Bit(Data_Node::Char) | Bit(Data_Node::Long) | Bit(Data_Node::Date);
        const Data_Node::Type eType = o.GetType();
        if ((NUMBERS & Bit(eType)) == 0) {
            const std::string sPath(oNode.At(o.GetId()).Get().GetPath().View());
            Raise(PyExc_TypeError,
                  (sPath + " is no number: " + Data_Node::TypeName(eType)).c_str());
        }
        m_ao.push_back({eType, o.Lng()});
        m_uTypes |= Bit(eType);
        m_bBeyondSigned |= eType == Data_Node::Long && o.Lng() >> 63 != 0;
    }

    [[nodiscard]] py::tuple Finish() const {
        const char* const sCode = CodeOf(m_uTypes, m_bBeyondSigned);
        if (sCode == nullptr)
            Raise(PyExc_TypeError, "numbers of types that no array holds together");
        const auto uSize = static_cast<std::size_t>(sCode[1] - '0');
        const py::object oBytes = py::reinterpret_steal<py::object>(
            PyByteArray_FromStringAndSize(nullptr, static_cast<Py_ssize_t>(m_ao.size() * uSize)));
        if (!oBytes) throw py::error_already_set();
        char* p = PyByteArray_AS_STRING(oBytes.ptr());
        for (const Number& o : m_ao) {
            Store(p, sCode, o);
            p += uSize;
        }
        return py::make_tuple(oBytes, sCode);
    }

  private:
    std::vector<Number> m_ao;
    u2_t m_uTypes = 0;
    bool m_bBeyondSigned = false;
};

// The first node at a path, as it is seen from others.
class Field {
  public:
    explicit Field(const py::object& oPath) {
        if (oPath.is_none()) return;
        m_sPath = oPath.cast<std::string>();
        m_oXpath.Parse(m_sPath.c_str());
        m_bName = m_sPath.find_first_of("/[]@*.='\"\b") == m_sPath.npos;
    }
    [[nodiscard]] Data_View Of(const Data_View& oView, const Node& oNode) const {
        if (m_sPath.empty()) return oView;
        Data_View oFound;
        if (m_bName) {
            // Removed ones keep their places.
            const Data_Key oKey = oView.KeyOf(m_sPath);
            for (u2_t u = 0; (oFound = oView.Find(oKey, u)).IsNode(); ++u) {
                if (oFound.GetType() != Data_Node::Zombi) break;
            }
        } else if (const Data o = m_oXpath.EvaluateFirst(oNode.At(oView.GetId()).Get());
                   o.IsNode()) {
            oFound = Data_View(o);
        }
        if (oFound.IsNode()) return oFound;
        const std::string sAt(oNode.At(oView.GetId()).Get().GetPath().View());
        Raise(g_oClasses.pNotFoundError, ("no \"" + m_sPath + "\" at " + sAt).c_str());
    }

  private:
    std::string m_sPath;
    Data_Xpath m_oXpath;
    bool m_bName = false;
};

}  // namespace

py::tuple Column(const py::iterable& oNodes, const py::object& oPath) {
    const Field oField(oPath);
    Collector oCollector;
    for (const py::handle oItem : oNodes) {
        const Node oNode = oItem.cast<const Node&>();
        const Reading oReading(oNode.GetTree());
        oCollector.Add(oField.Of(Data_View(oNode.Get()), oNode), oNode);
    }
    return oCollector.Finish();
}

py::tuple ColumnOfRun(const Node& oParent, const std::string& sName, const py::object& oPath) {
    const Field oField(oPath);
    Collector oCollector;
    const Data o = oParent.Get();
    const Reading oReading(oParent.GetTree());
    const Data_View oView(o);
    const Data_Key oKey = oView.KeyOf(sName);
    for (u2_t u = 0; u < oView.GetSuccs(); ++u) {
        const Data_View oSucc = oView.GetSucc(u);
        if (oSucc.GetKey().uKey != oKey.uKey || oSucc.GetType() == Data_Node::Zombi) continue;
        oCollector.Add(oField.Of(oSucc, oParent), oParent);
    }
    return oCollector.Finish();
}

}  // namespace vok::python
