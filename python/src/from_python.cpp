// SPDX-License-Identifier: MIT
#include "python/src/from_python.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "python/src/errors.h"
#include "python/src/to_python.h"
#include "python/src/tree.h"
#include "python/src/values.h"
#include "vok/data/builder.h"
#include "vok/data/succ_it.h"
#include "vok/json/form.h"

namespace vok::python {

namespace {

using json::Mark;

[[noreturn]] void RaiseUnknown(PyObject* p) {
    PyErr_Format(PyExc_TypeError, "%.200s cannot be stored", Py_TYPE(p)->tp_name);
    throw py::error_already_set();
}

bool IsSequence(PyObject* p) {
    return PyList_Check(p) ||
           (PyTuple_Check(p) && Py_TYPE(p) != reinterpret_cast<PyTypeObject*>(g_oClasses.pQuad));
}

// The dict that an object stands for: itself, the fields of a dataclass, a copy of another mapping;
// nothing for others.
py::object DictOf(PyObject* p) {
    if (PyDict_Check(p)) return py::reinterpret_borrow<py::object>(p);
    const py::handle oObject(p);
    if (PyType_Check(p)) return {};
    if (py::hasattr(oObject, "__dataclass_fields__")) {
        py::dict oFields;
        for (const py::handle oName : py::list(oObject.attr("__dataclass_fields__"))) {
            // Class variables are pseudo-fields.
            const py::object oValue = py::getattr(oObject, oName, py::none());
            const py::object oKind =
                oObject.attr("__dataclass_fields__")[oName].attr("_field_type");
            if (py::str(oKind.attr("name")).cast<std::string>() == "_FIELD")
                oFields[oName] = oValue;
        }
        return py::object(std::move(oFields));
    }
    if (!PyMapping_Check(p) || !py::hasattr(oObject, "keys")) return {};
    py::dict oCopy;
    if (PyDict_Update(oCopy.ptr(), p) != 0) throw py::error_already_set();
    return py::object(std::move(oCopy));
}

// Held: comparing keys may run code that takes it out of the dict. Empty where there is none.
py::object ItemOf(PyObject* pDict, const py::str& oKey) {
    PyObject* const p = PyDict_GetItemWithError(pDict, oKey.ptr());
    if (p == nullptr && PyErr_Occurred() != nullptr) throw py::error_already_set();
    return py::reinterpret_borrow<py::object>(p);
}

class From_Python {
  public:
    From_Python(Data& oTree, PyObject* pDefault, bool bMarks)
        : m_oTree(oTree), m_pDefault(pDefault), m_bMarks(bMarks) {}

    void Run(PyObject* pObject) {
        StartRoot(py::reinterpret_borrow<py::object>(pObject));
        if (m_aoFrame.empty()) return;  // a value
        Build([] {});
    }
    // A member of the root alone: the object under a name.
    void Run(PyObject* pName, PyObject* pObject) {
        Build([&] { AddMember(pName, py::reinterpret_borrow<py::object>(pObject)); });
    }

  private:
    enum class Kind : u0_t { Members, Run, List };
    struct Frame {
        Kind eKind;
        bool bClose;           // it has a node of its own to be closed
        py::object oOwner;     // dict, list or tuple
        py::object oName;      // of the nodes of a run
        Py_ssize_t iNext = 0;  // in it
        Py_ssize_t iSize = 0;  // that it had
    };
    struct Pending {
        u2_t uId;
        std::string sPath;
    };
    struct Known {
        py::object oText;
        Data_Key oKey;
    };

    template <class Start>
    void Build(const Start& oStart) {
        Data oRoot = m_oTree;
        Data_Builder oBuilder(oRoot);
        m_pBuilder = &oBuilder;
        oStart();
        while (!m_aoFrame.empty()) Step();
        oBuilder.Finish();
        for (const Pending& o : m_aoLink) SetLink(o);
    }

    void StartRoot(py::object oObject) {
        for (int iTries = 0; iTries < MOST_TRIES; ++iTries) {
            PyObject* const p = oObject.ptr();
            if (const py::object oDict = DictOf(p)) {
                if (PyDict_Size(oDict.ptr()) == 0) {
                    return MarkRoot(Mark::Object);
                }
                const py::object oAttributes = ItemOf(oDict.ptr(), m_oAttributes);
                const py::object oValue = ItemOf(oDict.ptr(), m_oValue);
                PyObject* const pAttributes = oAttributes.ptr();
                PyObject* const pValue = oValue.ptr();
                CheckMembers(oDict.ptr(), pAttributes, pValue);
                if (pAttributes != nullptr) {
                    EachAttribute(pAttributes, [&](const char* sName, const char* sValue) {
                        m_oTree.SetAttVal(sName, sValue);
                    });
                }
                if (pValue != nullptr) return SetValue(m_oTree, pValue);
                return Push({Kind::Members, false, oDict, {}, 0, PyDict_Size(oDict.ptr())});
            }
            if (IsSequence(p)) {
                MarkRoot(Mark::List);
                return Push({Kind::List, false, oObject, {}, 0, PySequence_Fast_GET_SIZE(p)});
            }
            Borrowed oBytes;
            Data_Value oValue;
            if (ToValue(p, oValue, oBytes) || m_pDefault == nullptr) return SetValue(m_oTree, p);
            oObject = Default(p);
        }
        RaiseUnknown(oObject.ptr());
    }

    void MarkRoot(Mark::Kind eKind) {
        if (m_bMarks) m_oTree.SetAttVal(json::MARK, Mark{false, eKind}.Value());
    }
    void Push(Frame oFrame) {
        static const Limits s_oLimits;
        if (m_aoFrame.size() >= s_oLimits.m_uDepth) s_oLimits.RaiseExceeded(&Limits::m_uDepth);
        m_aoFrame.push_back(std::move(oFrame));
    }

    void Step() {
        Frame& f = m_aoFrame.back();
        if (f.eKind == Kind::Members) {
            PyObject *pKey = nullptr, *pValue = nullptr;
            if (PyDict_Size(f.oOwner.ptr()) != f.iSize) {
                Raise(PyExc_RuntimeError, "dictionary changed size during iteration");
            }
            if (PyDict_Next(f.oOwner.ptr(), &f.iNext, &pKey, &pValue) == 0) return Pop();
            if (!PyUnicode_Check(pKey))
                Raise(PyExc_TypeError, "names are texts: dict key is no str");
            const py::object oKey = py::reinterpret_borrow<py::object>(pKey);
            return AddMember(pKey, py::reinterpret_borrow<py::object>(pValue));
        }
        if (f.iNext >= PySequence_Fast_GET_SIZE(f.oOwner.ptr())) return Pop();
        const py::object oItem =
            py::reinterpret_borrow<py::object>(PySequence_Fast_GET_ITEM(f.oOwner.ptr(), f.iNext++));
        const py::object oName = f.oName;
        AddNode(oName ? KeyOf(oName.ptr()) : Data_Name(""), oItem, false);
    }
    void Pop() {
        if (m_aoFrame.back().bClose) m_pBuilder->Close();
        m_aoFrame.pop_back();
    }

    // The name of a node for a member of a dict.
    static std::string_view NameOf(PyObject* pKey) {
        std::string_view s = Utf8Of(pKey);
        if (s.find('\0') != s.npos) Raise(PyExc_ValueError, "a name with a NUL");
        if (s.starts_with("##") && IsMarked(s)) [[unlikely]]
            s.remove_prefix(1);
        return s;
    }

    // The same as a key of the tree. Dicts have the same few texts as names, which are told by
    // where they are.
    Data_Name KeyOf(PyObject* pKey) {
        Known& o = m_aoKnown[(reinterpret_cast<std::uintptr_t>(pKey) >> 4) % m_aoKnown.size()];
        if (o.oText.ptr() != pKey) {
            o.oKey = m_oTree.MakeKey(NameOf(pKey));
            o.oText = py::reinterpret_borrow<py::object>(pKey);
        }
        return o.oKey;
    }

    void AddMember(PyObject* pKey, py::object oObject) {
        PyObject* const p = oObject.ptr();
        if (pKey == m_oAttributes.ptr() || Utf8Of(pKey) == json::ATTRIBUTES) return;  // set before
        const Data_Name oName = KeyOf(pKey);
        if (!IsSequence(p)) {
            if (!PyObject_CheckBuffer(p)) return AddNode(oName, oObject, false);
            Borrowed oRow;
            if (!oRow.Take(p) || !oRow.IsRow() || oRow.IsBlock())
                return AddNode(oName, oObject, false);
            return AddRow(oName, oRow);
        }
        const Py_ssize_t iSize = PySequence_Fast_GET_SIZE(p);
        if (iSize == 0) return AddNothing(oName);
        if (iSize == 1) {
            const py::object oOnly =
                py::reinterpret_borrow<py::object>(PySequence_Fast_GET_ITEM(p, 0));
            return AddNode(oName, oOnly, true);
        }
        Push({Kind::Run, false, std::move(oObject), py::reinterpret_borrow<py::object>(pKey), 0,
              iSize});
    }

    // The numbers of a row, a node for each.
    void AddRow(Data_Name oName, const Borrowed& oRow) {
        if (oRow.Size() == 0) return AddNothing(oName);
        for (Py_ssize_t i = 0; i < oRow.Size(); ++i) {
            const Data_Value oValue = oRow.Nth(i);
            if (oValue.GetType() == Data_Node::Empty)
                Raise(PyExc_OverflowError, "a number below 32 bits");
            m_pBuilder->Add(oName, oValue);
        }
        if (oRow.Size() == 1) SetMark({true, Mark::None});
    }

    // For an empty list.
    void AddNothing(Data_Name oName) {
        if (m_bMarks) AddMarked(oName, {false, Mark::List});
    }
    void AddMarked(Data_Name oName, const Mark& oMark) {
        m_pBuilder->AddEmpty(oName);
        SetMark(oMark);
    }
    void SetMark(const Mark& oMark) {
        if (m_bMarks && !oMark.Value().empty()) m_pBuilder->SetAttVal(json::MARK, oMark.Value());
    }

    // One node, and what is below it to come.
    void AddNode(Data_Name oName, py::object oObject, bool bItem) {
        for (int iTries = 0; iTries < MOST_TRIES; ++iTries) {
            PyObject* const p = oObject.ptr();
            Borrowed oBytes;
            Data_Value oValue;
            if (!PyDict_CheckExact(p) && !PyList_CheckExact(p) && ToValue(p, oValue, oBytes)) {
                return AddValue(oName, oValue, bItem);
            }
            if (const py::object oDict = DictOf(p)) return AddDict(oName, oDict, bItem);
            if (IsSequence(p)) {
                const Py_ssize_t iSize = PySequence_Fast_GET_SIZE(p);
                if (iSize == 0) return AddMarked(oName, {bItem, Mark::List});
                m_pBuilder->Open(oName);
                SetMark({bItem, Mark::List});
                return Push({Kind::List, true, std::move(oObject), {}, 0, iSize});
            }
            if (oBytes.IsTaken() && oBytes.IsRow()) {
                if (oBytes.Size() == 0) return AddMarked(oName, {bItem, Mark::List});
                m_pBuilder->Open(oName);
                SetMark({bItem, Mark::List});
                AddRow(Data_Name(""), oBytes);
                return m_pBuilder->Close();
            }
            if (Py_TYPE(p) == reinterpret_cast<PyTypeObject*>(g_oClasses.pLink)) {
                const py::object oPath = oObject.attr("path");
                const u2_t uId = m_pBuilder->AddEmpty(oName);
                m_aoLink.push_back({uId, oPath.is_none() ? "" : oPath.cast<std::string>()});
                return SetMark({bItem, Mark::None});
            }
            if (m_pDefault == nullptr) RaiseUnknown(p);
            oObject = Default(p);
        }
        RaiseUnknown(oObject.ptr());
    }

    void AddValue(Data_Name oName, const Data_Value& oValue, bool bItem) {
        // Texts of a tree end at a NUL.
        const bool bText = oValue.GetType() == Data_Node::String &&
                           oValue.Text().find('\0') != std::string_view::npos;
        if (bText) {
            if (!m_bMarks) Raise(PyExc_ValueError, "a text with a NUL: store it as bytes");
            const std::string_view s = oValue.Text();
            m_pBuilder->Add(oName, Data_Value::Binary(s.data(), s.size()));
        } else {
            m_pBuilder->Add(oName, oValue);
        }
        if (bItem || bText) SetMark({bItem, bText ? Mark::Text : Mark::None});
    }

    void AddDict(Data_Name oName, const py::object& oDict, bool bItem) {
        PyObject* const p = oDict.ptr();
        const Py_ssize_t iSize = PyDict_Size(p);
        if (iSize == 0) return AddMarked(oName, {bItem, Mark::Object});
        const py::object oAttributes = ItemOf(p, m_oAttributes);
        const py::object oOnly = ItemOf(p, m_oValue);
        PyObject* const pAttributes = oAttributes.ptr();
        PyObject* const pValue = oOnly.ptr();
        if (pAttributes == nullptr && pValue == nullptr) [[likely]] {
            m_pBuilder->Open(oName);
            if (bItem) SetMark({true, Mark::None});
            return Push({Kind::Members, true, oDict, {}, 0, iSize});
        }
        CheckMembers(p, pAttributes, pValue);
        const bool bOpen = pValue == nullptr && iSize > 1;
        if (bOpen) {
            m_pBuilder->Open(oName);
        } else if (pValue != nullptr) {
            Borrowed oBytes;
            Data_Value oValue;
            const bool bLink = Py_TYPE(pValue) == reinterpret_cast<PyTypeObject*>(g_oClasses.pLink);
            if (bLink) {
                AddNode(oName, oOnly, false);
            } else if (ToValue(pValue, oValue, oBytes)) {
                AddValue(oName, oValue, false);
            } else {
                Raise(PyExc_ValueError, "\"#value\" is no value");
            }
        } else {
            m_pBuilder->AddEmpty(oName);
        }
        if (pAttributes != nullptr) {
            EachAttribute(pAttributes, [&](const char* s, const char* sValue) {
                m_pBuilder->SetAttVal(s, sValue);
            });
        }
        if (bItem) SetMark({true, Mark::None});
        if (bOpen) Push({Kind::Members, true, oDict, {}, 0, iSize});
    }

    static void CheckMembers(PyObject* pDict, PyObject* pAttributes, PyObject* pValue) {
        if (pAttributes != nullptr && !PyDict_Check(pAttributes)) {
            Raise(PyExc_ValueError, "\"#attributes\" is no dict of texts");
        }
        if (pValue != nullptr && PyDict_Size(pDict) != (pAttributes != nullptr ? 2 : 1)) {
            Raise(PyExc_ValueError, "there are members beside \"#value\"");
        }
    }
    template <class Set>
    static void EachAttribute(PyObject* pDict, const Set& oSet) {
        PyObject *pName = nullptr, *pValue = nullptr;
        for (Py_ssize_t i = 0; PyDict_Next(pDict, &i, &pName, &pValue) != 0;) {
            if (!PyUnicode_Check(pName) || !PyUnicode_Check(pValue)) {
                Raise(PyExc_ValueError, "\"#attributes\" is no dict of texts");
            }
            const std::string_view sName = Utf8Of(pName), sValue = Utf8Of(pValue);
            if (sName.find('\0') != sName.npos || sValue.find('\0') != sValue.npos) {
                Raise(PyExc_ValueError, "an attribute with a NUL");
            }
            oSet(sName.data(), sValue.data());
        }
    }

    py::object Default(PyObject* p) const {
        PyObject* const pResult = PyObject_CallOneArg(m_pDefault, p);
        if (pResult == nullptr) throw py::error_already_set();
        return py::reinterpret_steal<py::object>(pResult);
    }

    void SetLink(const Pending& o) {
        Data oNode = m_oTree.GetNodeFromID(o.uId);
        if (o.sPath.empty()) return oNode.SetValLink({});
        const Data_NodeSet oTarget = m_oTree.GetNodeSet(o.sPath);
        if (oTarget.Size() != 1) {
            PyErr_Format(PyExc_ValueError, "link to nothing: \"%.200s\"", o.sPath.c_str());
            throw py::error_already_set();
        }
        oNode.SetValLink(oTarget.GetNth(0));
    }

    // How often an object may be taken for another one.
    static constexpr int MOST_TRIES = 100;

    Data& m_oTree;
    PyObject* m_pDefault;
    const bool m_bMarks;
    Data_Builder* m_pBuilder = nullptr;
    std::vector<Frame> m_aoFrame;
    std::vector<Pending> m_aoLink;
    std::array<Known, 256> m_aoKnown;
    const py::str m_oAttributes{json::ATTRIBUTES.data()};
    const py::str m_oValue{json::VALUE.data()};
};

}  // namespace

Data MakeTree(PyObject* pObject, PyObject* pDefault, bool bMarks) {
    Data oTree;
    oTree.SetToRoot();
    From_Python(oTree, pDefault, bMarks).Run(pObject);
    oTree.SetToRoot();
    return oTree;
}

Data MakeSuccs(const std::string& sName, PyObject* pObject, PyObject* pDefault, bool bMarks) {
    Data oMade;
    oMade.SetToRoot();
    const py::str oName(IsMarked(sName) ? '#' + sName : sName);
    From_Python(oMade, pDefault, bMarks).Run(oName.ptr(), pObject);
    return oMade;
}

void SetValue(Data& oNode, PyObject* p) {
    Borrowed oBytes;
    Data_Value o;
    if (!ToValue(p, o, oBytes)) {
        // A link: a Link or a node.
        py::object oTarget = py::reinterpret_borrow<py::object>(p);
        if (Py_TYPE(p) == reinterpret_cast<PyTypeObject*>(g_oClasses.pLink)) {
            oTarget = oTarget.attr("target");
            if (oTarget.is_none()) return oNode.SetValLink({});
            if (PyUnicode_Check(oTarget.ptr())) {
                const Data_NodeSet oFound = oNode.GetRoot().GetNodeSet(Utf8Of(oTarget.ptr()));
                if (oFound.Size() != 1) Raise(PyExc_ValueError, "link to nothing");
                return oNode.SetValLink(oFound.GetNth(0));
            }
        }
        if (py::isinstance<Node>(oTarget)) {
            return oNode.SetValLink(oTarget.cast<const Node&>().Get());
        }
        RaiseUnknown(p);
    }
    if (o.GetType() == Data_Node::String && o.Text().find('\0') != std::string_view::npos) {
        Raise(PyExc_ValueError, "a text with a NUL: store it as bytes");
    }
    oNode.SetValue(o);
}

}  // namespace vok::python
