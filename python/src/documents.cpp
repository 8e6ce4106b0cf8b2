// SPDX-License-Identifier: MIT
// Documents of every form and wrapping, to nodes and back.
#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <string_view>

#include "python/src/errors.h"
#include "python/src/file_object.h"
#include "python/src/module.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/document.h"
#include "vok/file/buf.h"

namespace vok::python {

namespace {

// Smaller ones are done before another thread has the interpreter's lock.
constexpr std::size_t WORTH_UNLOCKING = 16384;

// ---- reading --------------------------------------------------------------------

Document_Form FormNamed(const std::string& sForm) {
    const Document_Form eForm = Document_FormNamed(sForm);
    if (eForm == Document_Form::Any && !sForm.empty()) {
        Raise(PyExc_ValueError, "form is \"xml\", \"dgraph\", \"json\" or \"dump\"");
    }
    return eForm;
}

// The root of a tree that oLoad makes, without the interpreter's lock where bUnlock is set.
template <class Loader>
Node Loaded(bool bUnlock, const std::string& sName, const Loader& oLoad) {
    Data oTree;
    Load_Report oReport;
    try {
        std::optional<py::gil_scoped_release> oUnlocked;
        if (bUnlock) oUnlocked.emplace();
        oLoad(oTree, oReport);
    } catch (const Msg_Exception& oError) {
        Raise(g_oClasses.pLoadError, oError, &oReport, sName);
    }
    Node oNode(oTree);
    oNode.GetTree()->bGaps = oTree.GetNodes() != oReport.m_uNodes;
    oNode.GetTree()->oReport = oReport;
    return oNode;
}

// From a path or a stream.
template <class Source>
Node Load(const Source& oSource, bool bUnlock, const std::string& sForm, const Limits& oLimits,
          const std::string& sName) {
    Document_LoadOptions oOptions;
    oOptions.eForm = FormNamed(sForm);
    oOptions.oLimits = oLimits;
    return Loaded(bUnlock, sName, [&](Data& oTree, Load_Report& oReport) {
        const Document_Format o = Document_Load(oTree, oSource(), oOptions, &oReport);
        if (o.eForm == Document_Form::Dump) oTree.Shrink();  // nobody has its ids yet
    });
}

Node AttachFile(const std::string& sPath, bool bChecked, const Limits* pLimits) {
    const Limits oLimits = LimitsOf(pLimits);
    const Node oNode = Loaded(true, sPath, [&](Data& oTree, Load_Report& oReport) {
        oTree.Attach(Str(std::string_view(sPath)),
                     bChecked ? Data_Trust::Checked : Data_Trust::None, oLimits, &oReport);
    });
    // To find out whether it has any would take a walk over all of it.
    oNode.GetTree()->bGaps = true;
    return oNode;
}

Node LoadFile(const std::string& sPath, const std::string& sForm, const Limits* pLimits) {
    const Str oPath{std::string_view(sPath)};
    return Load([&]() -> const Str& { return oPath; }, true, sForm, LimitsOf(pLimits), sPath);
}

// The bytes do not change: whoever calls this has a bytes object.
Node LoadBytes(const py::bytes& oBytes, const std::string& sForm, const Limits* pLimits) {
    const std::string_view s(PyBytes_AS_STRING(oBytes.ptr()),
                             static_cast<std::size_t>(PyBytes_GET_SIZE(oBytes.ptr())));
    File_Buf oBuffer(s.data(), s.size());
    return Load([&]() -> File_Stream& { return oBuffer; }, s.size() >= WORTH_UNLOCKING, sForm,
                LimitsOf(pLimits), {});
}

// ---- writing --------------------------------------------------------------------

// What is written: the node, or where the form writes whole trees a tree of its own of a node that
// is no root.
Node Prepared(const Node& oNode, const Document_SaveOptions& oOptions, const py::tuple& oVersion) {
    const Document_Form eForm = oOptions.oFormat.eForm;
    const bool bWhole = eForm == Document_Form::Dgraph || eForm == Document_Form::Dump;
    const Node oTop = bWhole && oNode.GetId() != 0 ? Node(oNode.Get().MkClone()) : oNode;
    Data o = oTop.Get();
    if (eForm != Document_Form::Dgraph) return oTop;
    if (oVersion.size() != 3) Raise(PyExc_ValueError, "version is a tuple of three numbers");
    const std::string sTag = "DGraphBin " + std::string(py::str(oVersion[0])) + '.' +
                             std::string(py::str(oVersion[1])) + '.' +
                             std::string(py::str(oVersion[2]));
    if (o.GetUserTag().View() == sTag) return oTop;
    // While others read it, it cannot be told its version.
    if (oTop.GetTree()->uReaders != 0) return Prepared(Node(o.MkClone()), oOptions, oVersion);
    o = oTop.Change();
    Dgraph_SetVersion(o, oVersion[0].cast<int>(), oVersion[1].cast<int>(), oVersion[2].cast<int>());
    return oTop;
}

// Runs a function that writes a tree, without the interpreter's lock where that is worth it.
template <class Write>
void Unlocked(const Node& oTop, const std::string& sTarget, const Write& oWrite) {
    const Data o = oTop.Get();
    const Reading oReading(oTop.GetTree());
    try {
        std::optional<py::gil_scoped_release> oUnlocked;
        if (!sTarget.empty() || o.GetNodes() >= WORTH_UNLOCKING / 16) oUnlocked.emplace();
        oWrite(o);
    } catch (const Msg_Exception& oError) {
        Raise(g_oClasses.pError, oError, nullptr, sTarget);
    }
}

void SaveFile(const Node& oNode, const std::string& sPath, const Document_SaveOptions& oOptions,
              const py::tuple& oVersion) {
    const Node oTop = Prepared(oNode, oOptions, oVersion);
    Unlocked(oTop, sPath,
             [&](const Data& o) { Document_Save(o, Str(std::string_view(sPath)), oOptions); });
}

// The options for what is no file.
const Document_SaveOptions& ForStream(const Document_SaveOptions& o) {
    if (o.oFormat.eWrapping == Zip_Wrapping::Zip) {
        Raise(PyExc_ValueError, "a zip archive needs a path");
    }
    return o;
}

void SaveObject(const Node& oNode, const py::object& oFile, const Document_SaveOptions& oOptions,
                const py::tuple& oVersion) {
    const Node oTop = Prepared(oNode, ForStream(oOptions), oVersion);
    File_Object oStream(oFile);
    try {
        Unlocked(oTop, "file object", [&](const Data& o) { Document_Save(o, oStream, oOptions); });
    } catch (const Callback_Raised&) {
        oStream.RaiseAgain();
    }
}

py::bytes SaveBytes(const Node& oNode, const Document_SaveOptions& oOptions,
                    const py::tuple& oVersion) {
    const Node oTop = Prepared(oNode, ForStream(oOptions), oVersion);
    File_Buf oBuffer("w");
    Unlocked(oTop, {}, [&](const Data& o) { Document_Save(o, oBuffer, oOptions); });
    return {oBuffer.Data(), oBuffer.Size()};
}

// "plain", "zlib", "gzip", "zip", which the Python part has checked.
Zip_Wrapping WrappingNamed(std::string_view s) {
    return s == "zlib"   ? Zip_Wrapping::Zlib
           : s == "gzip" ? Zip_Wrapping::Gzip
           : s == "zip"  ? Zip_Wrapping::Zip
                         : Zip_Wrapping::None;
}

}  // namespace

void DefineDocuments(py::module_& oModule) {
    oModule.def("_load_file", &LoadFile);
    oModule.def("_load_bytes", &LoadBytes);
    oModule.def("_attach_file", &AttachFile);
    py::class_<Document_SaveOptions>(oModule, "_Form")
        .def(py::init([](const std::string& sForm, const std::string& sWrapping,
                         const std::string& sMember, bool bCompact, bool bAttachable) {
            Document_SaveOptions o;
            o.oFormat = {FormNamed(sForm), WrappingNamed(sWrapping)};
            o.oMember = Str(std::string_view(sMember));
            o.bCompact = bCompact;
            o.bAttachable = bAttachable;
            return o;
        }));
    oModule.def("_save_file", &SaveFile);
    oModule.def("_save_object", &SaveObject);
    oModule.def("_save_bytes", &SaveBytes);
}

}  // namespace vok::python
