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

// What "#json" has said of a node, and of the only successor of a name, is not so any more when one
// is added: attributes that say nothing true would be taken for attributes like any others.
void Unmark(Data oNode, bool bItem, bool bKind) {
    const char* const sMark = oNode.GetAttVal(json::MARK);
    if (sMark == nullptr) return;
    json::Mark oMark = json::Mark::Of(sMark);
    if (bItem) oMark.bItem = false;
    if (bKind) oMark.eKind = json::Mark::None;
    const std::string sValue(oMark.Value());
    oNode.SetAttVal(json::MARK.data(), sValue.empty() ? nullptr : sValue.c_str());
}
void UnmarkFor(const Data& oParent, const std::string& sName) {
    const bool bEmpty = oParent.GetType() != Data_Node::Tree;
    if (bEmpty || !sName.empty()) Unmark(oParent, false, true);
    if (oParent.GetSuccCount(sName) != 1) return;
    const Data oOnly = oParent.GetNthSucc(sName, 0);
    if (oOnly.GetType() != Data_Node::Zombi) Unmark(oOnly, true, false);
}
// The same for a node that a path has made, and for all between it and a node above.
void UnmarkAbove(const Data& oMade, const Data& oTop) {
    for (Data o = oMade; o != oTop && o.GetId() != 0; o.SetToPred()) {
        const Data oParent = o.GetPred();
        const char* const sName = o.GetName();
        Unmark(oParent, false, true);
        if (sName != nullptr && oParent.GetSuccCount(sName) > 1) {
            const Data oFirst = oParent.GetNthSucc(sName, 0);
            if (oFirst.GetType() != Data_Node::Zombi) Unmark(oFirst, true, false);
        }
    }
}

}  // namespace

Node Create(const Node& oNode, const std::string& sPath, const py::args& oValue) {
    if (oValue.size() > 1) Raise(PyExc_TypeError, "create() takes a path and a value");
    if (oValue.size() == 1 && !IsValue(oValue[0]))
        Raise(PyExc_TypeError, "a value is no container: see add()");
    oNode.GetTree()->bGaps = true;
    Data oMade = oNode.Change().CreateNode(Checked(sPath));
    UnmarkAbove(oMade, oNode.Get());
    if (oValue.size() != 0) SetValue(oMade, oValue[0].ptr());
    return oNode.At(oMade);
}

// ---- editing --------------------------------------------------------------------

py::object Add(const Node& oNode, const std::string& sName, const py::object& oObject,
               const py::object& oIndex, const py::object& oDefault, bool bMarks) {
    (void)oNode.Change();
    PyObject* const pDefault = oDefault.is_none() ? nullptr : oDefault.ptr();
    const u2_t uPos = PositionOf(oIndex);
    if (py::isinstance<Node>(oObject)) {
        const Node& oOther = oObject.cast<const Node&>();
        UnmarkFor(oNode.Change(), Checked(sName));
        Data oCopy = oOther.Get().MkCopy(oNode.Change());
        oCopy.Rename(sName, uPos);
        return py::cast(oNode.At(oCopy));
    }
    // Made apart: that may run code of others, which then sees the tree as it was.
    const Data oMade = MakeSuccs(Checked(sName), oObject.ptr(), pDefault, bMarks);
    Data oParent = oNode.Change();
    UnmarkFor(oParent, sName);
    py::object oFirst = py::none();
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
    return aoCopy.empty() ? oFirst : py::cast(oNode.At(aoCopy.front()));
}

void SetItem(const Node& oNode, const std::string& sName, const py::object& oObject) {
    const bool bValue = IsValue(oObject);
    Data oParent = oNode.Change();
    const u2_t uCount = Count(oNode, Checked(sName));
    if (uCount > 1) Msg::NodeIsNotUnique();
    if (!bValue) {
        (void)Add(oNode, sName, oObject, py::none(), py::none(), true);
        if (uCount == 1) Nth(oNode, sName, 0).Delete();
        return;
    }
    if (uCount == 1) {
        Data oOnly = Nth(oNode, sName, 0);
        if (oOnly.GetType() != Data_Node::Tree) return SetValue(oOnly, oObject.ptr());
    }
    UnmarkFor(oParent, sName);
    Data oNew = oParent.Append(sName);
    try {
        SetValue(oNew, oObject.ptr());
    } catch (...) {
        oNew.Delete();
        throw;
    }
    if (uCount == 1) Nth(oNode, sName, 0).Delete();
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
    const char* const sName = o.GetName();
    const Data oTo = oParent.Change();
    const bool bOther = oNode.GetTree() != oParent.GetTree();
    if (bOther || o.GetPred() != oTo) UnmarkFor(oTo, sName != nullptr ? sName : "");
    o.MoveTo(oTo, PositionOf(oIndex));
    if (bOther) oOld.Erase();  // it has kept its place
    return oParent.At(o);
}

Node CopyTo(const Node& oNode, const Node& oParent, const py::object& oIndex) {
    const Data o = oNode.Get(), oTo = oParent.Change();
    const char* const sName = o.GetName();
    UnmarkFor(oTo, sName != nullptr ? sName : "");
    return oParent.At(o.MkCopy(oTo, PositionOf(oIndex)));
}

void Clear(const Node& oNode) {
    Data o = oNode.Change();
    o.RemoveSuccs();
    o.ClearVal();
}

void Rename(const Node& oNode, const std::string& sName, const py::object& oIndex) {
    Data o = oNode.Change();
    const u2_t uPos = PositionOf(oIndex);
    const Data oParent = o.GetPred();
    if (oParent.IsNode()) UnmarkFor(oParent, Checked(sName));
    o.Rename(Checked(sName), uPos);
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
