// SPDX-License-Identifier: MIT
// Comparing, patching, merging, hashing.
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "python/src/errors.h"
#include "python/src/module.h"
#include "python/src/values.h"
#include "vok/compare/diff.h"
#include "vok/compare/merge.h"

namespace vok::python {

namespace {

std::vector<std::string> Texts(const py::object& o) {
    if (PyUnicode_Check(o.ptr())) return {o.cast<std::string>()};
    std::vector<std::string> as;
    for (const py::handle oText : o) as.push_back(oText.cast<std::string>());
    return as;
}

Data_DiffOptions OptionsOf(const py::object& oKey, const py::object& oIgnore, double dDelta) {
    return {Texts(oKey), Texts(oIgnore), dDelta};
}

py::object TextOrNone(const char* s) {
    return s != nullptr ? py::str(s) : py::object(py::none());
}

// Runs a function that reads trees, without the interpreter's lock.
template <class Read>
auto Unlocked(const Read& oRead) {
    const py::gil_scoped_release oUnlocked;
    return oRead();
}

py::list Diff(const Node& oA, const Node& oB, const py::object& oKey, const py::object& oIgnore,
              double dDelta, const py::object& oLimit) {
    struct Found {
        Data_Difference o;
        std::string sPath, sAttribute, sPathB;
    };
    const Data_DiffOptions oOptions = OptionsOf(oKey, oIgnore, dDelta);
    const std::size_t uMost = oLimit.is_none() ? ~std::size_t{0} : oLimit.cast<std::size_t>();
    const Data a = oA.Get(), b = oB.Get();
    const Reading oReadingA(oA.GetTree()), oReadingB(oB.GetTree());
    std::vector<Found> aoFound;
    const auto oText = [](const char* s) { return std::string(s != nullptr ? s : ""); };
    Unlocked([&] {
        if (uMost == 0) return;
        Data::Diff(a, b, oOptions, [&](const Data_Difference& o) {
            aoFound.push_back({o, oText(o.m_sPath), oText(o.m_sAttribute), oText(o.m_sPathB)});
            return aoFound.size() < uMost;
        });
    });
    py::list oAll;
    for (const Found& f : aoFound) {
        const auto oSide = [](const Node& oNode, const Data& o) {
            return o.IsNode() ? py::cast(oNode.At(o)) : py::object(py::none());
        };
        oAll.append(py::handle(g_oClasses.pDifference)(
            Data_Difference::WhatName(f.o.m_eWhat), f.sPath,
            f.o.m_sAttribute != nullptr ? py::object(py::str(f.sAttribute)) : py::none(),
            oSide(oA, f.o.m_oA), oSide(oB, f.o.m_oB),
            f.o.m_sPathB != nullptr ? py::object(py::str(f.sPathB)) : py::none()));
    }
    return oAll;
}

Node MakePatch(const Node& oA, const Node& oB, const py::object& oKey, const py::object& oIgnore,
               double dDelta) {
    const Data_DiffOptions oOptions = OptionsOf(oKey, oIgnore, dDelta);
    const Data a = oA.Get(), b = oB.Get();
    const Reading oReadingA(oA.GetTree()), oReadingB(oB.GetTree());
    return Node(Unlocked([&] { return Data::MakePatch(a, b, oOptions); }));
}

Node ApplyPatch(const Node& oNode, const Node& oPatch) {
    const Data o = oNode.Get(), p = oPatch.Get();
    const Reading oReadingA(oNode.GetTree()), oReadingB(oPatch.GetTree());
    return Node(Unlocked([&] { return o.ApplyPatch(p); }));
}

py::tuple Merge(const Node& oBase, const Node& oA, const Node& oB, const py::object& oPrefer,
                const py::object& oKey, const py::object& oIgnore, double dDelta) {
    struct Found {
        std::string sPath, sAttribute;
        bool bAttribute;
        Data_Conflict::Did eA, eB;
    };
    const Data_DiffOptions oOptions = OptionsOf(oKey, oIgnore, dDelta);
    Data_MergePick ePick = Data_MergePick::None;
    if (!oPrefer.is_none()) {
        const auto s = oPrefer.cast<std::string>();
        if (s != "a" && s != "b") Raise(PyExc_ValueError, "prefer is \"a\", \"b\" or None");
        ePick = s == "a" ? Data_MergePick::A : Data_MergePick::B;
    }
    const Data oRoot = oBase.Get(), a = oA.Get(), b = oB.Get();
    const Reading oReading(oBase.GetTree()), oReadingA(oA.GetTree()), oReadingB(oB.GetTree());
    std::vector<Found> aoFound;
    Data oMerged = Unlocked([&] {
        return Data::Merge(oRoot, a, b, oOptions, ePick, [&](const Data_Conflict& o) {
            const bool bAttribute = o.m_sAttribute != nullptr;
            aoFound.push_back({o.m_sPath, bAttribute ? o.m_sAttribute : "", bAttribute, o.m_oA.eDid,
                               o.m_oB.eDid});
            return true;
        });
    });
    py::list oAll;
    for (const Found& f : aoFound) {
        oAll.append(py::handle(g_oClasses.pConflict)(
            f.sPath, TextOrNone(f.bAttribute ? f.sAttribute.c_str() : nullptr),
            Data_Conflict::DidName(f.eA), Data_Conflict::DidName(f.eB)));
    }
    // Conflicts without anybody who decides: no tree.
    const bool bMerged = oMerged.IsNode();
    return py::make_tuple(bMerged ? py::cast(Node(std::move(oMerged))) : py::object(py::none()),
                          oAll);
}

std::string Hash(const Node& oNode) {
    const Data o = oNode.Get();
    const Reading oReading(oNode.GetTree());
    return Unlocked([&] { return std::string(o.Hash().ToHex().View()); });
}

// Hands out larger pieces than those that it gets.
void Canonical(const Node& oNode, const py::object& oUpdate) {
    const Data o = oNode.Get();
    const Reading oReading(oNode.GetTree());
    std::string sPiece;
    o.Canonical([&](std::string_view s) {
        sPiece += s;
        if (sPiece.size() < 65536) return;
        oUpdate(py::bytes(sPiece));
        sPiece.clear();
    });
    if (!sPiece.empty()) oUpdate(py::bytes(sPiece));
}

bool Equal(const Node& oA, const Node& oB) {
    const Data a = oA.Get(), b = oB.Get();
    const Reading oReadingA(oA.GetTree()), oReadingB(oB.GetTree());
    return Unlocked([&] { return Data::Equal(a, b); });
}

}  // namespace

void DefineCompare(py::module_& oModule) {
    const auto oKey = py::arg("key") = py::tuple();
    const auto oIgnore = py::arg("ignore") = py::tuple();
    const auto oDelta = py::arg("delta") = 0.0;
    oModule.def(
        "diff", &Diff, py::arg("a"), py::arg("b"), py::kw_only(), oKey, oIgnore, oDelta,
        py::arg("limit") = py::none(),
        R"(The differences of two nodes and all that is below them, at most limit: a list of `Difference`.

key tells successors of one name apart ("@id", "id"), ignore are paths that are not looked at,
reals that differ by no more than delta are the same.

>>> a, b = vok.node({"x": 1, "y": 2}), vok.node({"x": 1, "y": 3})
>>> [(d.what, d.path) for d in vok.diff(a, b)]
[('value', '/y[0]')]
)");
    oModule.def("patch", &MakePatch, py::arg("a"), py::arg("b"), py::kw_only(), oKey, oIgnore,
                oDelta,
                "What makes one node of another, as a tree that can be stored: for `apply`.");
    oModule.def("apply", &ApplyPatch, py::arg("node"), py::arg("patch"),
                R"(A copy of a node with the changes of a patch.

>>> a, b = vok.node({"x": 1}), vok.node({"x": 2})
>>> vok.apply(a, vok.patch(a, b)).to_dict()
{'x': 2}
)");
    oModule.def(
        "merge", &Merge, py::arg("base"), py::arg("a"), py::arg("b"), py::kw_only(),
        py::arg("prefer") = py::none(), oKey, oIgnore, oDelta,
        R"(What two sides have made of one tree, in one: the new root, and a list of `Conflict`.

prefer is the side that counts in conflicts, "a" or "b"; without one the root is None if there are some.

>>> base = vok.node({"x": 1, "y": 1})
>>> a, b = vok.node({"x": 2, "y": 1}), vok.node({"x": 1, "y": 3})
>>> merged, conflicts = vok.merge(base, a, b)
>>> merged.to_dict(), conflicts
({'x': 2, 'y': 3}, [])
)");
    oModule.def("hash", &Hash, py::arg("node"),
                R"(32 hexadecimal digits that equal trees share, in whatever form.

>>> vok.hash(vok.loads(b'<a>1</a>')) == vok.hash(vok.loads(b'{"#name": "a", "#value": "1"}'))
True
)");
    oModule.def("canonical", &Canonical, py::arg("node"), py::arg("update"),
                R"(Hands the bytes that a hash is made of to a function, for another hash.

>>> import hashlib
>>> sha = hashlib.sha256()
>>> vok.canonical(vok.node({"x": 1}), sha.update)
>>> len(sha.hexdigest())
64
)");
    oModule.def(
        "equal", &Equal, py::arg("a"), py::arg("b"),
        "Whether two nodes and all that is below them are the same in all that can be seen.");
}

}  // namespace vok::python
