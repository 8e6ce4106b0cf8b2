// SPDX-License-Identifier: MIT
// Changing trees.
#include <string>
#include <vector>

#include "python/src/errors.h"
#include "python/src/from_python.h"
#include "python/src/node.h"
#include "python/src/values.h"
#include "vok/data/succ_it.h"
#include "vok/json/form.h"

namespace vok::python {

namespace {

u2_t PositionOf(const py::object& oIndex) {
    if (oIndex.is_none()) return Data::LAST;
    const auto i = oIndex.cast<long long>();
    if (i < 0) Raise(PyExc_ValueError, "positions count from 0");
    return i < i3_t{Data::LAST} ? static_cast<u2_t>(i) : Data::LAST;
}

// Whether an object is a value by itself: a link as well, but no container.
bool IsValue(const py::object& oObject) {
    Borrowed oBytes;
    Data_Value oIgnored;
    return py::isinstance<Node>(oObject) ||
           Py_TYPE(oObject.ptr()) == reinterpret_cast<PyTypeObject*>(g_oClasses.pLink) ||
           ToValue(oObject.ptr(), oIgnored, oBytes);
}

// ---- marks ---------------------------------------------------------------------

// ---- marks ----------------------------------------------------------------------
//
// What "#json" has said of a node is not so any more when it gets a value, or successors, or others
// of its name beside it. A mark that says nothing true would be taken for an attribute like any
// other.

void Unmark(Data oNode, bool bItem, bool bKind) {
    const char* const sMark = oNode.GetAttVal(json::MARK);
    if (sMark == nullptr) return;
    json::Mark oMark = json::Mark::Of(sMark);
    if (bItem) oMark.bItem = false;
    if (bKind) oMark.eKind = json::Mark::None;
    const std::string sValue(oMark.Value());
    oNode.SetAttVal(json::MARK.data(), sValue.empty() ? nullptr : sValue.c_str());
}
// For a node that has come to where it is.
void UnmarkAround(const Data& oNew) {
    const Data oParent = oNew.GetPred();
    if (!oParent.IsNode()) return;
    const char* const s = oNew.GetName();
    const std::string sName(s != nullptr ? s : "");
    if (!sName.empty()) Unmark(oParent, false, true);  // a list may get another item
    const u2_t uCount = oParent.GetSuccCount(sName);
    if (uCount < 2) return;
    Unmark(oNew, true, false);
    // Where there are more they are not the only one since long.
    for (u2_t u = 0; u < 2 && uCount == 2; ++u) {
        const Data oNode = oParent.GetNthSucc(sName, u);
        if (oNode.GetType() != Data_Node::Zombi) Unmark(oNode, true, false);
    }
}

}  // namespace

void Assign(Data oNode, const py::object& oValue) {
    SetValue(oNode, oValue.ptr());
    Unmark(oNode, false, true);
}

Node Create(const Node& oNode, const std::string& sPath, const py::args& oValue) {
    if (oValue.size() > 1) Raise(PyExc_TypeError, "create() takes a path and a value");
    if (oValue.size() == 1 && !IsValue(oValue[0]))
        Raise(PyExc_TypeError, "a value is no container: see add()");
    oNode.GetTree()->bGaps = true;
    Data oMade = oNode.Change().CreateNode(Checked(sPath));
    for (Data o = oMade; o != oNode.Get() && o.GetId() != 0; o.SetToPred()) UnmarkAround(o);
    if (oValue.size() != 0) Assign(oMade, oValue[0]);
    return oNode.At(oMade);
}

// ---- editing --------------------------------------------------------------------

namespace {

// Copies the successors of oMade, all of one name, and returns the first copy.
py::object Insert(const Node& oNode, const Data& oMade, u2_t uPos) {
    const Data oParent = oNode.Change();
    std::vector<Data> aoCopy;
    try {
        u2_t uAt = uPos;
        for (const Data& o : oMade.GetSuccIt()) {
            aoCopy.push_back(o.MkCopy(oParent, uAt));
            if (uAt != Data::LAST) ++uAt;
        }
    } catch (...) {
        for (Data& o : aoCopy) o.Delete();
        throw;
    }
    if (aoCopy.empty()) return py::none();
    UnmarkAround(aoCopy.front());
    return py::cast(oNode.At(aoCopy.front()));
}

}  // namespace

py::object Add(const Node& oNode, const std::string& sName, const py::object& oObject,
               const py::object& oIndex, const py::object& oDefault, bool bMarks) {
    (void)oNode.Change();
    PyObject* const pDefault = oDefault.is_none() ? nullptr : oDefault.ptr();
    const u2_t uPos = PositionOf(oIndex);
    if (py::isinstance<Node>(oObject)) {
        const Node& oOther = oObject.cast<const Node&>();
        Data oCopy = oOther.Get().MkCopy(oNode.Change());
        oCopy.Rename(Checked(sName), uPos);
        UnmarkAround(oCopy);
        return py::cast(oNode.At(oCopy));
    }
    // Made apart: that may run code of others, which then sees the tree as it was.
    return Insert(oNode, MakeSuccs(Checked(sName), oObject.ptr(), pDefault, bMarks), uPos);
}

void SetItem(const Node& oNode, const std::string& sName, const py::object& oObject) {
    const bool bValue = IsValue(oObject);
    (void)oNode.Change();
    const Data oMade = bValue ? Data() : MakeSuccs(Checked(sName), oObject.ptr(), nullptr, true);
    Data oParent = oNode.Change();
    const u2_t uCount = Count(oNode, Checked(sName));
    if (uCount > 1) Msg::NodeIsNotUnique();
    if (!bValue) {
        if (uCount == 1) Nth(oNode, sName, 0).Delete();
        (void)Insert(oNode, oMade, Data::LAST);
        return;
    }
    if (uCount == 1) {
        Data oOnly = Nth(oNode, sName, 0);
        if (oOnly.GetType() != Data_Node::Tree) {
            Assign(oOnly, oObject);
            return Unmark(oOnly, true, false);
        }
    }
    Data oNew = oParent.Append(sName);
    try {
        Assign(oNew, oObject);
    } catch (...) {
        oNew.Delete();
        throw;
    }
    if (uCount == 1) Nth(oNode, sName, 0).Delete();
    UnmarkAround(oNew);
}

void DeleteItem(const Node& oNode, const std::string& sName) {
    Data o = oNode.Change();
    if (!Has(oNode, sName)) RaiseNotFound(oNode, sName, 0);
    std::vector<Data> ao;
    for (const Data& oSucc : o.GetSuccIt(sName)) ao.push_back(oSucc);
    // Those behind move down: from the end on nothing moves.
    for (std::size_t u = ao.size(); u-- > 0;) ao[u].Delete();
}

void Shrink(const Node& oNode) {
    Data o = oNode.Change();
    o.SetToRoot();
    o.Shrink();
    ++oNode.GetTree()->uRenumbered;
    oNode.GetTree()->bGaps = false;
}

Node MoveTo(const Node& oNode, const Node& oParent, const py::object& oIndex) {
    Data o = oNode.Change();
    Data oOld = o;
    o.MoveTo(oParent.Change(), PositionOf(oIndex));
    // In another tree it is a copy, and the place here was kept.
    if (oNode.GetTree() != oParent.GetTree()) oOld.Erase();
    UnmarkAround(o);
    return oParent.At(o);
}

Node CopyTo(const Node& oNode, const Node& oParent, const py::object& oIndex) {
    const Data oCopy = oNode.Get().MkCopy(oParent.Change(), PositionOf(oIndex));
    UnmarkAround(oCopy);
    return oParent.At(oCopy);
}

void Clear(const Node& oNode) {
    Data o = oNode.Change();
    o.RemoveSuccs();
    o.ClearVal();
    Unmark(o, false, true);
}

void Rename(const Node& oNode, const std::string& sName, const py::object& oIndex) {
    Data o = oNode.Change();
    o.Rename(Checked(sName), PositionOf(oIndex));
    UnmarkAround(o);
}

void SetAttribute(const Node& oNode, const std::string& sName, const py::object& oValue) {
    Data o = oNode.Change();
    if (oValue.is_none())
        return o.SetAttVal(Checked(sName).c_str(), static_cast<const char*>(nullptr));
    if (!PyUnicode_Check(oValue.ptr()))
        Raise(PyExc_TypeError, "the value of an attribute is a text");
    const auto sValue = oValue.cast<std::string>();
    o.SetAttVal(Checked(sName).c_str(), Checked(sValue).c_str());
    // A text with a NUL stays one, and the only item of an array.
    if (o.GetType() != Data_Node::Binary && sName != json::MARK) Unmark(o, false, true);
}

}  // namespace vok::python
