// SPDX-License-Identifier: MIT
// The class Node: reading, and what its methods are called.
#include <pybind11/pybind11.h>

#include <string>
#include <string_view>
#include <vector>

#include "python/src/errors.h"
#include "python/src/from_python.h"
#include "python/src/module.h"
#include "python/src/node.h"
#include "python/src/to_python.h"
#include "python/src/values.h"
#include "vok/data/succ_it.h"
#include "vok/data/xpath.h"

// A name or an attribute as the library takes it.

namespace vok::python {

const std::string& Checked(const std::string& s) {
    if (s.find('\0') != s.npos) Raise(PyExc_ValueError, "a text with a NUL");
    return s;
}

u2_t Count(const Node& oNode, const std::string& sName) {
    const Data o = oNode.Get();
    if (!oNode.GetTree()->bGaps) return o.GetSuccCount(sName);
    u2_t uCount = 0;
    for (Data_SuccIt oIt = o.GetSuccIt(sName); oIt.SkipZombies(); oIt.Advance()) ++uCount;
    return uCount;
}

void RaiseNotFound(const Node& oNode, const std::string& sName, i3_t iNth) {
    Load_Report oPlace;
    oPlace.m_oPath = oNode.Get().GetPath();
    try {
        (void)oNode.Get().GetCheckedSucc(
            sName, iNth < 0 || iNth >= i3_t{Data::LAST} ? Data::LAST - 1 : static_cast<u2_t>(iNth));
    } catch (const Msg_Exception& oError) {
        Raise(g_oClasses.pNotFoundError, oError, &oPlace);
    }
    Raise(g_oClasses.pNotFoundError, "no such successor");
}

Data Nth(const Node& oNode, const std::string& sName, i3_t iNth) {
    const Data o = oNode.Get();
    const bool bGaps = oNode.GetTree()->bGaps;
    const i3_t iFrom = iNth < 0 ? iNth + Count(oNode, sName) : iNth;
    if (iFrom >= 0 && iFrom < i3_t{Data::LAST}) {
        if (!bGaps) {
            const Data oFound = o.GetNthSucc(sName, static_cast<u2_t>(iFrom));
            if (oFound.IsNode()) return oFound;
        } else {
            i3_t iLeft = iFrom;
            for (Data_SuccIt oIt = o.GetSuccIt(sName); oIt.SkipZombies(); oIt.Advance()) {
                if (iLeft-- == 0) return oIt.GetData();
            }
        }
    }
    RaiseNotFound(oNode, sName, iFrom);
}

bool Has(const Node& oNode, const std::string& sName) {
    Data_SuccIt oIt = oNode.Get().GetSuccIt(sName);
    return oIt.SkipZombies();
}

namespace {

py::object Or(const Node& oNode, const Data& o) {
    const bool bThere = o.IsNode() && o.GetNode().GetType() != Data_Node::Zombi;
    return bThere ? py::cast(oNode.At(o)) : py::none();
}

py::str Text(std::string_view s) {
    return py::reinterpret_steal<py::str>(TextOf(s));
}

py::object Value(const Node& oNode) {
    const Data o = oNode.Get();
    if (o.GetType() == Data_Node::Link) return Or(oNode, o.GetValLink());
    const Reading oReading(oNode.GetTree());
    return py::reinterpret_steal<py::object>(To_Python::Value(Data_View(o), oNode.GetTree()));
}

py::object ToDict(const Node& oNode, const py::object& oLists) {
    (void)oNode.Get();
    To_Python oToPython(oLists);
    const Reading oReading(oNode.GetTree());
    return py::reinterpret_steal<py::object>(oToPython.Convert(oNode));
}

std::string Path(const Node& oNode) {
    return std::string(oNode.Get().GetPath().View());
}

std::string Shown(const Node& oNode) {
    if (!oNode.IsAlive()) return "<deleted Node>";
    std::string s = Path(oNode);
    if (s.size() > 200) s = s.substr(0, 100) + "..." + s.substr(s.size() - 97);
    // Cut at the border of a character.
    const std::string sText(Str(std::string_view(s)).View());
    return std::string("<Node ") + Data_Node::TypeName(oNode.Get().GetType()) + " at " + sText +
           ">";
}

// ---- successors -----------------------------------------------------------------

py::list All(const Node& oNode, Data_SuccIt oIt) {
    py::list oAll;
    for (; oIt.SkipZombies(); oIt.Advance()) oAll.append(oNode.At(oIt.GetId()));
    return oAll;
}

Data One(const Node& oNode, const std::string& sName) {
    const Data oFound = Nth(oNode, sName, 0);
    if (Count(oNode, sName) != 1) Msg::NodeIsNotUnique();
    return oFound;
}

py::object Run(const Node& oNode, const std::string& sName) {
    if (!Has(oNode, sName)) RaiseNotFound(oNode, sName, 0);
    return py::handle(g_oClasses.pRun)(oNode, sName);
}

Node NthOfAll(const Node& oNode, i3_t iNth) {
    const Data o = oNode.Get();
    const i3_t iFrom = iNth < 0 ? iNth + o.GetLiveSuccs() : iNth;
    i3_t iLeft = iFrom;
    Data_SuccIt oIt = o.GetSuccIt();
    if (iFrom >= 0 && oIt.Size() == o.GetLiveSuccs()) {
        oIt.SetPos(static_cast<u2_t>(std::min<i3_t>(iFrom, oIt.Size())));
        iLeft = 0;
    }
    for (; iLeft >= 0 && oIt.SkipZombies(); oIt.Advance()) {
        if (iLeft-- == 0) return oNode.At(oIt.GetId());
    }
    Raise(g_oClasses.pNotFoundError, "node has not so many successors");
}

py::object Get(const Node& oNode, const std::string& sName, const py::object& oDefault) {
    const Data o = oNode.Get();
    Data_SuccIt oIt = o.GetSuccIt(sName);
    if (!oIt.SkipZombies()) return oDefault;
    const Node oFound = oNode.At(oIt.GetId());
    oIt.Advance();
    if (oIt.SkipZombies()) Msg::NodeIsNotUnique();
    return Value(oFound);
}

py::list Names(const Node& oNode) {
    py::list oNames;
    const Reading oReading(oNode.GetTree());
    const Data_View o(oNode.Get());
    u2_t uLast = Data_Key::UNKNOWN;
    for (u2_t u = 0; u < o.GetSuccs(); ++u) {
        const Data_View oSucc = o.GetSucc(u);
        if (oSucc.GetType() == Data_Node::Zombi || oSucc.GetKey().uKey == uLast) continue;
        uLast = oSucc.GetKey().uKey;
        const char* const sName = oSucc.GetName();
        oNames.append(Text(sName != nullptr ? sName : ""));
    }
    return oNames;
}

// ---- paths ----------------------------------------------------------------------

py::list Find(const Node& oNode, const std::string& sPath, const Limits* pLimits) {
    py::list oAll;
    for (const Data& o : oNode.Get().GetNodeSet(Checked(sPath), LimitsOf(pLimits))) {
        oAll.append(oNode.At(o));
    }
    return oAll;
}

py::object FindFirst(const Node& oNode, const std::string& sPath, const Limits* pLimits) {
    Data_Xpath oPath;
    oPath.Parse(Checked(sPath).c_str());
    return Or(oNode, oPath.EvaluateFirst(oNode.Get(), LimitsOf(pLimits)));
}

// ---- attributes -----------------------------------------------------------------

py::list AllAttributes(const Node& oNode) {
    py::list oAll;
    for (const auto& [sName, sValue] : oNode.Get().GetAttributes()) {
        oAll.append(py::make_tuple(Text(sName), Text(sValue)));
    }
    return oAll;
}

py::object Attribute(const Node& oNode, const std::string& sName) {
    const char* const s = oNode.Get().GetAttVal(sName);
    return s != nullptr ? Text(s) : py::object(py::none());
}

// ---- the bytes of a Binary ------------------------------------------------------

// The bytes where they are: the tree cannot change until they are given back.
int GetBuffer(PyObject* pSelf, Py_buffer* pView, int iFlags) {
    try {
        const Node& oNode = py::handle(pSelf).cast<const Node&>();
        const Data o = oNode.Get();
        if (o.GetType() != Data_Node::Binary) {
            PyErr_Format(PyExc_BufferError, "%s is no Binary", Data_Node::TypeName(o.GetType()));
            pView->obj = nullptr;
            return -1;
        }
        const std::string_view s = Data_View(o).Block();
        // For reading only: it is not changed through the pointer.
        auto* const p = const_cast<char*>(s.data());
        if (PyBuffer_FillInfo(pView, pSelf, p, static_cast<Py_ssize_t>(s.size()), 1, iFlags) != 0) {
            return -1;
        }
        ++oNode.GetTree()->uReaders;
        return 0;
    } catch (py::error_already_set& oError) {
        oError.restore();
    } catch (const std::exception& oError) {
        PyErr_SetString(PyExc_BufferError, oError.what());
    }
    pView->obj = nullptr;
    return -1;
}

void ReleaseBuffer(PyObject* pSelf, Py_buffer*) {
    --py::handle(pSelf).cast<const Node&>().GetTree()->uReaders;
}

}  // namespace

void DefineNode(py::module_& oModule) {
    py::class_<Node> oClass(oModule, "Node", py::buffer_protocol(), R"(A node of a tree.

It keeps its tree, and belongs to it: two are equal where they are the same node of the same tree.
Nodes are made by `load`, `loads`, `node` and by those that are there.

>>> doc = vok.node({"order": [{"id": 7, "price": 9.5}, {"id": 8, "price": 7.25}]}, name="orders")
>>> doc["order"][1]["price"].value
7.25
>>> [order["id"].value for order in doc.find("//order")]
[7, 8]
>>> doc["order"][0]["price"] = 9.75
>>> doc["order"][0].to_dict()
{'id': 7, 'price': 9.75}
)");
    oClass
        .def_property(
            "name",
            [](const Node& o) -> py::object {
                const char* const s = o.Get().GetName();
                return s != nullptr ? Text(s) : py::object(py::none());
            },
            [](const Node& o, const std::string& s) { Rename(o, s, py::none()); },
            "The name, None for an unnamed node; to be set as well.")
        .def_property_readonly(
            "type", [](const Node& o) { return Data_Node::TypeName(o.Get().GetType()); },
            "\"Empty\", \"Boolean\", \"Integer\", \"Char\", \"Float\", \"Double\", \"Date\", "
            "\"String\", "
            "\"Binary\", \"Long\", \"Quad\", \"Link\" or \"Tree\".")
        .def_property(
            "value", &Value,
            [](const Node& o, const py::object& oValue) { Assign(o.Change(), oValue); },
            R"(The value; None for Empty and Tree. That of a Link is the node that it leads to, or None.

Setting one that is no container replaces value and type; a Tree has to be cleared first.

>>> doc = vok.node({"a": 1})
>>> doc["a"].value = vok.Float(0.5)
>>> doc["a"].type
'Float'
)")
        .def_property_readonly(
            "text",
            [](const Node& o) {
                Str oText;
                o.Get().CvtStr(oText);
                return std::string(oText.View());
            },
            "The value as a text: numbers in decimal, dates as \"2026-11-24 18:35:56\".")
        .def_property_readonly(
            "attributes", [](const Node& o) { return py::handle(g_oClasses.pAttributes)(o); },
            "The attributes, a mapping of texts that changes them.")
        .def_property_readonly("path", &Path,
                               "The path that selects just this node: \"/a[0]/b[2]\".")
        .def_property_readonly(
            "id", [](const Node& o) { return o.Get().GetId(); },
            "Its number in the tree; the root is 0.")
        .def_property_readonly(
            "node_count", [](const Node& o) { return o.Get().GetNodes(); },
            "Nodes of the whole tree, removed ones included.")
        .def_property_readonly("parent", [](const Node& o) { return Or(o, o.Get().GetPred()); })
        .def_property_readonly("root", [](const Node& o) { return o.At(o.Get().GetRoot()); })
        .def_property_readonly("next", [](const Node& o) { return Or(o, o.Get().GetNext()); })
        .def_property_readonly("previous", [](const Node& o) { return Or(o, o.Get().GetPrev()); })
        .def_property_readonly("depth", [](const Node& o) { return o.Get().NodeDepth(); })
        .def_property_readonly("alive", &Node::IsAlive,
                               "Whether it was not deleted, nor renumbered.")
        .def_property_readonly(
            "user_tag", [](const Node& o) { return std::string(o.Get().GetUserTag().View()); },
            "The free text kept with the tree: of a DGraph document its version.")
        .def_property_readonly(
            "report",
            [](const Node& o) -> py::object {
                if (!o.GetTree()->oReport) return py::none();
                const Load_Report& r = *o.GetTree()->oReport;
                return py::handle(g_oClasses.pReport)(
                    r.m_uOffset, r.m_uLine, r.m_uColumn, r.m_uNodes, r.m_oPath.CStr(),
                    r.m_uMissingBytes, r.m_uMissingNodes, r.m_uBytesLeft, r.m_uDroppedTexts,
                    r.m_uKeptReferences, r.m_uReordered, r.m_uComments, r.m_uInstructions,
                    r.m_uRounded);
            },
            "A `Report` of how the tree was loaded; None for one that was not.")
        .def(
            "to_dict", &ToDict, py::kw_only(), py::arg("lists") = py::tuple(),
            R"(What is below as dicts, lists and values; a value by itself for a node without successors.

Successors of one name are a list where there are several, where the attribute "#json" says so, and
always if the name is one of lists.

>>> vok.loads(b'<o><x dt:dt="i4">1</x><x dt:dt="i4">2</x><y a="b"/></o>').to_dict()
{'x': [1, 2], 'y': {'#attributes': {'a': 'b'}}}
)")
        .def("get", &Get, py::arg("name"), py::arg("default") = py::none(),
             R"(The value of the only successor of a name; default where there is none.

>>> vok.node({"price": 9.5}).get("price")
9.5
)")
        .def("names", &Names, "The names of its successors, each once, in order.")
        .def("find", &Find, py::arg("path"), py::kw_only(), py::arg("limits") = nullptr,
             R"(The nodes that a path selects, seen from this node: a list, by ascending id.

>>> doc = vok.loads(b'<o><i n="1"/><i n="2"/></o>')
>>> doc.find('/i[@n="2"]')
[<Node Empty at /i[1]>]
)")
        .def("find_first", &FindFirst, py::arg("path"), py::kw_only(), py::arg("limits") = nullptr,
             "The first of them in the order of the document, or None.")
        .def(
            "create", &Create, py::arg("path"),
            R"(The node at the end of a path, made with those on the way that are missing; create(path, value) sets its value.

>>> doc = vok.node({})
>>> doc.create('/order[1][@id="7"]/price', 9.5).path
'/order[1]/price[0]'
)")
        .def(
            "add", &Add, py::arg("name"), py::arg("value") = py::none(),
            py::arg("index") = py::none(), py::kw_only(), py::arg("default") = py::none(),
            py::arg("marks") = true,
            R"(Adds a successor for an object - a value, a dict, a dataclass, another node, which is copied - and returns it.

A list adds one for each item, and returns the first. index is the position among those of the
name; without one they go behind them. default(object) is asked for what to take in place of an object that is not known.

>>> doc = vok.node({})
>>> doc.add("order", {"id": 7, "tags": ["a", "b"]})["tags"][1].value
'b'
)")
        .def(
            "delete", [](const Node& o) { o.Change().Delete(); },
            "Removes the node and all below it from the tree.")
        .def("clear", &Clear, "Makes it an empty node: without successors or value.")
        .def("rename", &Rename, py::arg("name"), py::arg("index") = py::none(),
             "Gives it another name, and among those of that name a position.")
        .def("move_to", &MoveTo, py::arg("parent"), py::arg("index") = py::none(),
             "Makes it, with all below it, a successor of another node, which may be in another "
             "tree; returns it there.")
        .def("copy_to", &CopyTo, py::arg("parent"), py::arg("index") = py::none(),
             "Copies it, with all below it, to be a successor of another node; returns the copy.")
        .def(
            "clone", [](const Node& o) { return Node(o.Get().MkClone()); },
            "A copy of it and all below it as a tree of its own.")
        .def("shrink", &Shrink,
             "Gives back the memory of what was deleted. Nodes get new ids: those at hand must be "
             "taken anew.")
        .def(
            "has_cycle", [](const Node& o) { return o.Get().HasCycle(); },
            "Whether one can come back to a node by going down and along links.")
        .def("_count", &Count)
        .def("_nth", [](const Node& o, const std::string& s, i3_t i) { return o.At(Nth(o, s, i)); })
        .def("_one", [](const Node& o, const std::string& s) { return o.At(One(o, s)); })
        .def("_list",
             [](const Node& o, const std::string& s) { return All(o, o.Get().GetSuccIt(s)); })
        .def("_attributes", &AllAttributes)
        .def("_attribute", &Attribute)
        .def("_set_attribute", &SetAttribute)
        .def("__getitem__", &Run)
        .def("__getitem__", &NthOfAll)
        .def("__setitem__", &SetItem)
        .def("__delitem__", &DeleteItem)
        .def("__contains__", &Has)
        .def("__len__", [](const Node& o) { return o.Get().GetLiveSuccs(); })
        .def("__bool__", [](const Node&) { return true; })
        .def("__iter__", [](const Node& o) { return py::iter(All(o, o.Get().GetSuccIt())); })
        .def("__eq__",
             [](const Node& a, const py::object& b) {
                 return py::isinstance<Node>(b) && a == b.cast<const Node&>();
             })
        .def("__hash__",
             [](const Node& o) {
                 return std::hash<const void*>()(o.GetTree().get()) * 31 + o.GetId();
             })
        .def("__repr__", &Shown)
        .def("__copy__", [](const Node& o) { return Node(o.Get().MkClone()); })
        .def("__deepcopy__",
             [](const Node& o, const py::object&) { return Node(o.Get().MkClone()); });

    auto* const pType = reinterpret_cast<PyHeapTypeObject*>(oClass.ptr());
    pType->as_buffer.bf_getbuffer = GetBuffer;
    pType->as_buffer.bf_releasebuffer = ReleaseBuffer;

    oModule.def(
        "node",
        [](const py::object& oObject, const py::object& oName, const py::object& oDefault,
           bool bMarks) {
            Data o = py::isinstance<Node>(oObject)
                         ? oObject.cast<const Node&>().Get().MkClone()
                         : MakeTree(oObject.ptr(), oDefault.is_none() ? nullptr : oDefault.ptr(),
                                    bMarks);
            if (!oName.is_none()) o.SetRootName(Checked(oName.cast<std::string>()));
            return Node(o);
        },
        py::arg("value") = py::none(), py::kw_only(), py::arg("name") = py::none(),
        py::arg("default") = py::none(), py::arg("marks") = true,
        R"(The root of a new tree that is made of an object: None, a value, a dict, a list, a dataclass, another node.

default(object) is asked for what to take in place of an object that is not known. With marks the
attribute "#json" tells what a tree by itself does not, as lists of one item; without, they are that item.

>>> vok.node({"id": 7, "tags": ["new"]}, name="order").to_dict()
{'id': 7, 'tags': ['new']}
)");
}

}  // namespace vok::python
