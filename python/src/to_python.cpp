// SPDX-License-Identifier: MIT
#include "python/src/to_python.h"

#include <datetime.h>

#include <cmath>
#include <cstring>

#include "python/src/errors.h"
#include "python/src/values.h"

namespace vok::python {

namespace {

// What the interpreter gives: null is an error that it has set.
PyObject* Checked(PyObject* p) {
    if (p == nullptr) throw py::error_already_set();
    return p;
}
void Check(int iResult) {
    if (iResult < 0) throw py::error_already_set();
}

class No_Collector {
  public:
    No_Collector() : m_bWasOn(PyGC_Disable() != 0) {}
    ~No_Collector() {
        if (m_bWasOn) PyGC_Enable();
    }
    No_Collector(const No_Collector&) = delete;
    No_Collector& operator=(const No_Collector&) = delete;

  private:
    bool m_bWasOn;
};

// A new object of a class, made of one argument that is given up.
PyObject* Wrapped(PyObject* pClass, PyObject* pArgument) {
    const py::object oArgument = py::reinterpret_steal<py::object>(Checked(pArgument));
    return Checked(PyObject_CallOneArg(pClass, oArgument.ptr()));
}

// A datetime where one is just that, else a Date.
PyObject* DateOf(double dSeconds) {
    if (PyDateTimeAPI == nullptr) PyDateTime_IMPORT;
    constexpr double FIRST = -62135596800.0, END = 253402300800.0;  // the years 1 to 9999
    if (PyDateTimeAPI != nullptr && dSeconds >= FIRST && dSeconds < END) {
        const double dWhole = std::floor(dSeconds);
        const double dMicro = std::nearbyint((dSeconds - dWhole) * 1e6);
        i3_t iSeconds = static_cast<i3_t>(dWhole);
        const i3_t iMicros = iSeconds * 1000000 + static_cast<i3_t>(dMicro);
        // The number that a datetime is stored as: rounded once as long as the dividend is exact,
        // up to the year 2255. Behind that no number has all microseconds, and a few are rounded
        // twice.
        const bool bExact = iMicros > -(i3_t{1} << 53) && iMicros < i3_t{1} << 53;
        const double dNearest = bExact
                                    ? static_cast<double>(iMicros) / 1e6
                                    : static_cast<double>(static_cast<long double>(iMicros) / 1e6L);
        if (dMicro < 1e6 && dNearest == dSeconds && !(dSeconds == 0 && std::signbit(dSeconds))) {
            i3_t iDay = iSeconds / 86400;
            iSeconds %= 86400;
            if (iSeconds < 0) iSeconds += 86400, --iDay;
            // The proleptic Gregorian calendar, years that begin in March.
            iDay += 719468;
            const i3_t iEra = (iDay >= 0 ? iDay : iDay - 146096) / 146097;
            const i3_t iOfEra = iDay - iEra * 146097;
            const i3_t iYear = (iOfEra - iOfEra / 1460 + iOfEra / 36524 - iOfEra / 146096) / 365;
            const i3_t iOfYear = iOfEra - (365 * iYear + iYear / 4 - iYear / 100);
            const i3_t iMonth = (5 * iOfYear + 2) / 153;
            const int iDayOfMonth = static_cast<int>(iOfYear - (153 * iMonth + 2) / 5 + 1);
            const int iCalendarMonth = static_cast<int>(iMonth < 10 ? iMonth + 3 : iMonth - 9);
            const int iCalendarYear =
                static_cast<int>(iYear + iEra * 400 + (iCalendarMonth <= 2 ? 1 : 0));
            return Checked(PyDateTimeAPI->DateTime_FromDateAndTime(
                iCalendarYear, iCalendarMonth, iDayOfMonth, static_cast<int>(iSeconds / 3600),
                static_cast<int>(iSeconds / 60 % 60), static_cast<int>(iSeconds % 60),
                static_cast<int>(dMicro), PyDateTime_TimeZone_UTC, PyDateTimeAPI->DateTimeType));
        }
    }
    PyErr_Clear();
    return Wrapped(g_oClasses.pDate, PyFloat_FromDouble(dSeconds));
}

PyObject* Interned(std::string_view s) {
    PyObject* p = TextOf(s);
    PyUnicode_InternInPlace(&p);
    return p;
}

}  // namespace

bool IsMarked(std::string_view sName) noexcept {
    const std::size_t uMarks = sName.find_first_not_of('#');
    if (uMarks == 0 || uMarks == sName.npos) return false;
    const std::string_view sWord = sName.substr(uMarks - 1);
    return sWord == json::ATTRIBUTES || sWord == json::VALUE;
}

PyObject* TextOf(std::string_view s) {
    return Checked(PyUnicode_FromStringAndSize(s.data(), static_cast<Py_ssize_t>(s.size())));
}

To_Python::~To_Python() {
    for (const Name& o : m_aoName) {
        Py_XDECREF(o.pText);
        Py_XDECREF(o.pKey);
    }
}

PyObject* To_Python::Value(const Data_View& oNode, const Tree_Ptr& pTree) {
    switch (oNode.GetType()) {
        case Data_Node::Boolean: return Py_NewRef(oNode.Int() != 0 ? Py_True : Py_False);
        case Data_Node::Integer: return Checked(PyLong_FromLong(oNode.Int()));
        case Data_Node::Double: return Checked(PyFloat_FromDouble(oNode.Dbl()));
        case Data_Node::String: return TextOf(oNode.Text());
        case Data_Node::Binary: {
            const std::string_view s = oNode.Block();
            return Checked(PyBytes_FromStringAndSize(s.data(), static_cast<Py_ssize_t>(s.size())));
        }
        case Data_Node::Long: {
            PyObject* const p = Checked(PyLong_FromUnsignedLongLong(oNode.Lng()));
            return oNode.Lng() > 0x7FFFFFFF ? p : Wrapped(g_oClasses.pLong, p);
        }
        case Data_Node::Char: return Wrapped(g_oClasses.pChar, PyLong_FromLong(oNode.Int()));
        case Data_Node::Float: return Wrapped(g_oClasses.pFloat, PyFloat_FromDouble(oNode.Dbl()));
        case Data_Node::Date: return DateOf(oNode.Dbl());
        case Data_Node::Quad:
            return Checked(PyObject_CallFunction(g_oClasses.pQuad, "IIII", oNode.QuadWord(0),
                                                 oNode.QuadWord(1), oNode.QuadWord(2),
                                                 oNode.QuadWord(3)));
        case Data_Node::Link: {
            const Node oTarget(pTree, oNode.LinkId());
            py::object oLeadsTo = py::none();
            if (oTarget.IsAlive()) oLeadsTo = py::cast(oTarget);
            return Wrapped(g_oClasses.pLink, oLeadsTo.release().ptr());
        }
        default: return Py_NewRef(Py_None);
    }
}

PyObject* To_Python::FindKey(u2_t uKey) {
    if (uKey >= m_aoName.size()) m_aoName.resize(uKey + std::size_t{1});
    Name& o = m_aoName[uKey];
    const Hash_Text& t = m_oAt.NameOf(uKey);
    // The numbers tell texts of up to twelve bytes.
    const bool bSame = o.pText != nullptr && o.oText.uPrefix == t.uPrefix &&
                       o.oText.uLength == t.uLength && o.oText.uSuffix == t.uSuffix &&
                       (t.uLength <= 12 || std::memcmp(o.oText.sText, t.sText, t.uLength) == 0);
    if (!bSame) [[unlikely]] {
        Py_CLEAR(o.pText);
        Py_CLEAR(o.pKey);
        const std::string_view sName = uKey != 0 ? t.View() : std::string_view();
        const py::object oText = py::reinterpret_steal<py::object>(Interned(sName));
        const char* const sText = Utf8Of(oText.ptr()).data();
        o.pKey = Checked(IsMarked(sName) ? PyUnicode_FromFormat("#%U", oText.ptr())
                                         : Py_NewRef(oText.ptr()));
        o.pText = Py_NewRef(oText.ptr());
        o.oText = t;
        o.oText.sText = sText;
        o.bList = m_oLists.contains(oText);
    }
    o.uRun = m_uRun;
    return o.pKey;
}

PyObject* To_Python::Convert(const Node& oTop) {
    const No_Collector oHeldOff;
    m_pTree = oTop.GetTree();
    if (++m_uRun == 0) {
        for (Name& o : m_aoName) o.uRun = 0;
        m_uRun = 1;
    }
    m_aoFrame.clear();
    m_oAt = Cursor(oTop.Get());
    Mark oMark;
    py::object oResult = py::reinterpret_steal<py::object>(Make(Place::Top, oMark));
    while (!m_aoFrame.empty()) Step();
    m_pTree.reset();
    return oResult.release().ptr();
}

// The next successor of the node that was opened last.
void To_Python::Step() {
    Frame& f = m_aoFrame.back();
    if (!SkipRemoved(f)) {
        m_aoFrame.pop_back();
        return;
    }
    m_oAt.Stand(*f.pNext++);
    PyObject* const pInto = f.pInto;
    const u2_t uKey = m_oAt.GetKey().uKey;
    Mark oMark;
    if (f.bList || f.uRun == uKey) {
        PyObject* const pItems = f.bList ? pInto : f.pItems;
        const Place ePlace = f.bList ? Place::List : Place::Run;
        const py::object o = py::reinterpret_steal<py::object>(Make(ePlace, oMark));
        return Check(PyList_Append(pItems, o.ptr()));
    }
    const bool bRun = SkipRemoved(f) && m_oAt.NodeAt(*f.pNext).uKey == uKey;
    PyObject* const pKey = KeyOf(uKey);
    if (bRun) {
        PyObject* const pItems = Checked(PyList_New(0));
        f.uRun = uKey;
        f.pItems = pItems;
        const int iSet = PyDict_SetItem(pInto, pKey, pItems);
        Py_DECREF(pItems);
        Check(iSet);
        const py::object o = py::reinterpret_steal<py::object>(Make(Place::Run, oMark));
        return Check(PyList_Append(pItems, o.ptr()));
    }
    py::object o = py::reinterpret_steal<py::object>(Make(Place::Alone, oMark));
    if (oMark.bItem || m_aoName[uKey].bList) [[unlikely]] {
        PyObject* const pOnly = Checked(PyList_New(1));
        PyList_SET_ITEM(pOnly, 0, o.release().ptr());
        o = py::reinterpret_steal<py::object>(pOnly);
    }
    Check(PyDict_SetItem(pInto, pKey, o.ptr()));
}

// What the node becomes; if that is a container, what belongs in it comes next.
PyObject* To_Python::Make(Place ePlace, Mark& oMark) {
    if (m_oAt.HasAttributes()) [[unlikely]]
        return MakeMarked(ePlace, oMark);
    if (m_oAt.GetType() != Data_Node::Tree) return Value(m_oAt, m_pTree);
    Frame f = Below(nullptr, false);
    if (!SkipRemoved(f)) return Py_NewRef(Py_None);
    f.pInto = Checked(PyDict_New());
    m_aoFrame.push_back(f);
    return f.pInto;
}

PyObject* To_Python::MakeMarked(Place ePlace, Mark& oMark) {
    const auto oAttributes = m_pTree->oRoot.GetNodeFromID(m_oAt.GetId()).GetAttributes();
    std::string_view sMark;
    for (const auto& [sName, sValue] : oAttributes) {
        if (sName == json::MARK) sMark = sValue;
    }
    oMark = MarkOf(ePlace, oAttributes.size(), sMark);
    if (oMark.eKind == Mark::Object) return Checked(PyDict_New());
    if (oMark.eKind == Mark::List) {
        PyObject* const pList = Checked(PyList_New(0));
        m_aoFrame.push_back(Below(pList, true));
        return pList;
    }
    const bool bText = oMark.eKind == Mark::Text;
    const bool bWithoutMark = oMark.bItem || bText;
    Frame f = Below(nullptr, false);
    const bool bTree = SkipRemoved(f);
    const auto oValue = [&] {
        return py::reinterpret_steal<py::object>(bText ? TextOf(m_oAt.Block())
                                                       : Value(m_oAt, m_pTree));
    };
    if (bWithoutMark && oAttributes.size() == 1 && !bTree) return oValue().release().ptr();
    py::dict oInto;
    if (oAttributes.size() > (bWithoutMark ? 1 : 0)) {
        py::dict oTexts;
        for (const auto& [sName, sText] : oAttributes) {
            if (bWithoutMark && sName == json::MARK) continue;
            oTexts[py::reinterpret_steal<py::object>(TextOf(sName))] =
                py::reinterpret_steal<py::object>(TextOf(sText));
        }
        oInto[json::ATTRIBUTES.data()] = oTexts;
    }
    if (bTree) {
        f.pInto = oInto.ptr();
        m_aoFrame.push_back(f);
    } else if (m_oAt.GetType() != Data_Node::Empty && m_oAt.GetType() != Data_Node::Tree) {
        oInto[json::VALUE.data()] = oValue();
    }
    return oInto.release().ptr();
}

// What the attribute "#json" says, where it belongs to what it is on; as in JSON.
json::Mark To_Python::MarkOf(Place ePlace, std::size_t uAttributes, std::string_view sMark) const {
    const Mark o = Mark::Of(sMark);
    const bool bAlone = ePlace == Place::Alone;
    Frame f = Below(nullptr, false);
    while (f.pEnd != f.pNext && m_oAt.NodeAt(f.pEnd[-1]).GetType() == Data_Node::Zombi) --f.pEnd;
    const bool bEmpty = f.pNext == f.pEnd;
    const bool bUnnamed = bEmpty || m_oAt.NodeAt(f.pEnd[-1]).uKey == 0;  // those come first
    const Data_Node::Type eType = m_oAt.GetType();
    const bool bOnlyMarked =
        uAttributes == 1 && (eType == Data_Node::Empty || eType == Data_Node::Tree);
    bool bGood = bAlone || !o.bItem;
    switch (o.eKind) {
        case Mark::List:
            bGood = bGood && (!bAlone || o.bItem || bEmpty) && bOnlyMarked && bUnnamed;
            break;
        case Mark::Object: bGood = bGood && bEmpty && bOnlyMarked; break;
        case Mark::Text: {
            const bool bBlock = eType == Data_Node::Binary;
            const std::string_view s = bBlock ? m_oAt.Block() : std::string_view();
            bGood = bGood && s.find('\0') != s.npos;
            if (!bGood) break;
            // Whether it is UTF-8.
            PyObject* const p =
                PyUnicode_FromStringAndSize(s.data(), static_cast<Py_ssize_t>(s.size()));
            bGood = p != nullptr;
            Py_XDECREF(p);
            PyErr_Clear();
            break;
        }
        default: break;
    }
    return bGood ? o : Mark();
}

}  // namespace vok::python
