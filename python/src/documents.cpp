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
#include "vok/file/buf.h"
#include "vok/file/file.h"
#include "vok/file/rest.h"
#include "vok/json/json.h"
#include "vok/records/unwrapped.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace vok::python {

namespace {

// Smaller ones are done before another thread has the interpreter's lock.
constexpr std::size_t WORTH_UNLOCKING = 16384;

// ---- reading --------------------------------------------------------------------

// What the next bytes are.
std::string FormOf(File_Stream& oIn) {
    if (Data::CanLoad(oIn)) return "dump";
    if (Dgraph_CanLoadDGraph(oIn)) return "dgraph";
    char s[256];
    const i3_t iPosition = oIn.Tell();
    const std::size_t uRead = ReadUpTo(oIn, s, sizeof(s));
    oIn.Seek(iPosition);
    return Json_CanLoad({s, uRead}) ? "json" : "xml";
}

void LoadTree(Data& oTree, Unwrapped& oDocument, std::string sForm, Load_Report& oReport) {
    File_Stream& oIn = oDocument.In();
    const Limits& oLimits = oDocument.GetLimits();
    if (sForm.empty()) sForm = FormOf(oIn);
    if (sForm == "dump") {
        oTree.Load(oIn, oLimits, &oReport);
        oTree.Shrink();  // nobody has its ids yet
    } else if (sForm == "dgraph") {
        Dgraph_LoadDGraph(oTree, oIn, oLimits, &oReport);
    } else if (sForm == "json") {
        Json_Load(oTree, oIn, oLimits, &oReport);
    } else {
        oTree.LoadFromXML(oIn, Data::XML_KEEP_UNKNOWN, oLimits, &oReport);
    }
    oReport.m_uBytesLeft = oDocument.Finish(oReport.m_uBytesLeft);
    oTree.SetToRoot();
}

void CheckForm(const std::string& sForm) {
    for (const char* s : {"", "xml", "dgraph", "json", "dump"}) {
        if (sForm == s) return;
    }
    Raise(PyExc_ValueError, "form is \"xml\", \"dgraph\", \"json\" or \"dump\"");
}

// A source that Unwrapped takes, to a node.
template <class Source>
Node Load(const Source& oSource, bool bUnlock, const std::string& sForm, const Limits& oLimits,
          const std::string& sName) {
    CheckForm(sForm);
    Data oTree;
    Load_Report oReport;
    try {
        std::optional<py::gil_scoped_release> oUnlocked;
        if (bUnlock) oUnlocked.emplace();
        Unwrapped oDocument(oSource(), oLimits);
        LoadTree(oTree, oDocument, sForm, oReport);
    } catch (const Msg_Exception& oError) {
        Raise(g_oClasses.pLoadError, oError, &oReport, sName);
    }
    Node oNode(oTree);
    oNode.GetTree()->bGaps = oTree.GetNodes() != oReport.m_uNodes;
    oNode.GetTree()->oReport = oReport;
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

struct Form {
    std::string sForm;
    std::string sWrapping;
    std::string sMember;  // of an archive
    bool bCompact;
};

void WriteTree(const Data& o, const Form& oForm, File_Stream& oOut) {
    if (oForm.sForm == "xml") return o.SaveToXML(oOut);
    if (oForm.sForm == "json") {
        return Json_Save(o, oOut, oForm.bCompact ? Json_Layout::Compact : Json_Layout::Lines);
    }
    if (oForm.sForm == "dump") return o.Dump(oOut);
    Dgraph_SaveDGraph(o, oOut);
}

// To a stream that is no archive.
void WritePacked(const Data& o, const Form& oForm, File_Stream& oOut) {
    if (oForm.sWrapping == "plain") return WriteTree(o, oForm, oOut);
    Zip_Stream oPacked(oOut, oForm.sWrapping == "gzip" ? "wz" : "w");
    WriteTree(o, oForm, oPacked);
    oPacked.Close();
}

// What is written: the node, or where the form writes whole trees a tree of its own of a node that
// is no root.
Node Prepared(const Node& oNode, const Form& oForm, const py::tuple& oVersion) {
    CheckForm(oForm.sForm);
    const bool bWhole = oForm.sForm == "dgraph" || oForm.sForm == "dump";
    const Node oTop = bWhole && oNode.GetId() != 0 ? Node(oNode.Get().MkClone()) : oNode;
    Data o = oTop.Get();
    if (oForm.sForm != "dgraph") return oTop;
    if (oVersion.size() != 3) Raise(PyExc_ValueError, "version is a tuple of three numbers");
    const std::string sTag = "DGraphBin " + std::string(py::str(oVersion[0])) + '.' +
                             std::string(py::str(oVersion[1])) + '.' +
                             std::string(py::str(oVersion[2]));
    if (o.GetUserTag().View() == sTag) return oTop;
    // While others read it, it cannot be told its version.
    if (oTop.GetTree()->uReaders != 0) return Prepared(Node(o.MkClone()), oForm, oVersion);
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

void SaveFile(const Node& oNode, const std::string& sPath, const Form& oForm,
              const py::tuple& oVersion) {
    const Node oTop = Prepared(oNode, oForm, oVersion);
    Unlocked(oTop, sPath, [&](const Data& o) {
        const Str oPath{std::string_view(sPath)};
        if (oForm.sWrapping == "zip") {
            Zip_Archive oArchive(oPath, "w");
            oArchive.OpenNewFile(Str(std::string_view(oForm.sMember)));
            WriteTree(o, oForm, oArchive);
            return oArchive.Close();
        }
        File oFile(oPath, "Tw");
        WritePacked(o, oForm, oFile);
        oFile.Close();
    });
}

void SaveObject(const Node& oNode, const py::object& oFile, const Form& oForm,
                const py::tuple& oVersion) {
    if (oForm.sWrapping == "zip") Raise(PyExc_ValueError, "a zip archive needs a path");
    const Node oTop = Prepared(oNode, oForm, oVersion);
    File_Object oStream(oFile);
    try {
        Unlocked(oTop, "file object", [&](const Data& o) { WritePacked(o, oForm, oStream); });
    } catch (const Callback_Raised&) {
        oStream.RaiseAgain();
    }
}

py::bytes SaveBytes(const Node& oNode, const Form& oForm, const py::tuple& oVersion) {
    if (oForm.sWrapping == "zip") Raise(PyExc_ValueError, "a zip archive needs a path");
    const Node oTop = Prepared(oNode, oForm, oVersion);
    File_Buf oBuffer("w");
    Unlocked(oTop, {}, [&](const Data& o) { WritePacked(o, oForm, oBuffer); });
    return {oBuffer.Data(), oBuffer.Size()};
}

}  // namespace

void DefineDocuments(py::module_& oModule) {
    oModule.def("_load_file", &LoadFile);
    oModule.def("_load_bytes", &LoadBytes);
    py::class_<Form>(oModule, "_Form")
        .def(py::init(
            [](std::string sForm, std::string sWrapping, std::string sMember, bool bCompact) {
                return Form{std::move(sForm), std::move(sWrapping), std::move(sMember), bCompact};
            }));
    oModule.def("_save_file", &SaveFile);
    oModule.def("_save_object", &SaveObject);
    oModule.def("_save_bytes", &SaveBytes);
}

}  // namespace vok::python
