// SPDX-License-Identifier: MIT
// Documents of any size, record by record.
#include <pybind11/pybind11.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "python/src/errors.h"
#include "python/src/file_object.h"
#include "python/src/module.h"
#include "python/src/to_python.h"
#include "vok/file/file.h"
#include "vok/file/rest.h"
#include "vok/records/records.h"
#include "vok/zip/wrapping.h"

namespace vok::python {

namespace {

// A file that others may run Python beside while it is waited for.
class Unlocked_File final : public File {
  public:
    using File::File;
    using File::Read;
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        const py::gil_scoped_release oUnlocked;
        return File::Read(pTarget, uCount, bAllowShort);
    }
};

bool IsArchive(const Str& oPath) {
    char s[ZIP_SNIFFED];
    File oFile(oPath, "Tr");
    if (oFile.Tell() < 0) return false;
    return Zip_WrappingOf({s, ReadUpTo(oFile, s, sizeof(s))}) == Zip_Wrapping::Zip;
}

// The parts that a path selects, as nodes of trees of their own, or as dicts. The interpreter's
// lock is given up whenever the file is read: for each part it would cost more than the part.
class Parts {
  public:
    Parts(const py::object& oSource, const std::string& sPath, bool bDicts,
          const py::iterable& oLists, const Limits* pLimits)
        : m_bDicts(bDicts), m_oToPython(oLists) {
        const Limits oLimits = LimitsOf(pLimits);
        const Busy oBusy(*this);
        if (py::hasattr(oSource, "read")) {
            m_pObject = std::make_unique<File_Object>(oSource);
            Guarded([&] { m_pRecords = std::make_unique<Records>(*m_pObject, sPath, oLimits); });
            return;
        }
        m_sName = PathOf(oSource);
        const Str oName{std::string_view(m_sName)};
        Guarded([&] {
            // A pipe is opened when somebody else does so.
            std::optional<py::gil_scoped_release> oUnlocked(std::in_place);
            std::error_code oNone;
            m_bArchive = std::filesystem::is_regular_file(m_sName, oNone) && IsArchive(oName);
            if (m_bArchive) {  // which opens its file itself
                m_pRecords = std::make_unique<Records>(oName, sPath, oLimits);
                return;
            }
            m_pFile = std::make_unique<Unlocked_File>(oName, "Tr");
            oUnlocked.reset();
            m_pRecords = std::make_unique<Records>(*m_pFile, sPath, oLimits);
        });
    }

    // A new reference; null behind the last one.
    [[nodiscard]] PyObject* Next() {
        const Busy oBusy(*this);  // what reads, and what is made, may run code of others
        if (m_pRecords == nullptr) return nullptr;
        bool bMore = false;
        Guarded([&] {
            std::optional<py::gil_scoped_release> oUnlocked;
            if (m_bArchive) oUnlocked.emplace();
            bMore = m_pRecords->Next();
        });
        if (!bMore) {
            Forget();
            return nullptr;
        }
        if (!m_bDicts) return py::cast(Node(m_pRecords->Release())).release().ptr();
        m_pTree->oRoot = m_pRecords->GetData();
        py::object oMade;
        {
            const Reading oReading(m_pTree);
            oMade = py::reinterpret_steal<py::object>(m_oToPython.Convert(Node(m_pTree, 0)));
        }
        if (m_pTree.use_count() != 1) {  // links hold it
            m_pTree = std::make_shared<Tree>(Data());
            (void)m_pRecords->Release();
        } else {
            m_pTree->oRoot.Clear();
        }
        return oMade.release().ptr();
    }
    // Where in the document the root of the part given last stands.
    [[nodiscard]] std::string Path() const {
        if (m_bBusy || m_pRecords == nullptr) Raise(g_oClasses.pError, "there is no record");
        return std::string(m_pRecords->GetPath().View());
    }
    void Close() {
        const Busy oBusy(*this);
        Forget();
    }

  private:
    // Nobody else goes on meanwhile: another thread, or a callback of the file object.
    class Busy {
      public:
        explicit Busy(Parts& o) : m_oParts(o) {
            if (o.m_bBusy) RaiseBusy("records are being read");
            o.m_bBusy = true;
        }
        ~Busy() { m_oParts.m_bBusy = false; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

      private:
        Parts& m_oParts;
    };

    void Forget() {
        m_pRecords.reset();
        m_pFile.reset();
        m_pObject.reset();
    }
    template <class Step>
    void Guarded(const Step& oStep) {
        try {
            oStep();
        } catch (const Msg_Exception& oError) {
            Load_Report oReport;
            if (m_pRecords != nullptr) oReport = m_pRecords->GetReader().GetReport();
            Forget();
            Raise(g_oClasses.pLoadError, oError, &oReport, m_sName);
        } catch (const Callback_Raised&) {
            m_pRecords.reset();
            const auto pObject = std::move(m_pObject);
            pObject->RaiseAgain();
        }
    }

    const bool m_bDicts;
    bool m_bBusy = false;
    bool m_bArchive = false;
    std::string m_sName;
    std::unique_ptr<File_Object> m_pObject;
    std::unique_ptr<Unlocked_File> m_pFile;
    std::unique_ptr<Records> m_pRecords;  // null when closed, at the end, or behind an error
    Tree_Ptr m_pTree = std::make_shared<Tree>(Data());  // what dicts are made of
    To_Python m_oToPython;
};

// As the interpreter calls it, without a search for the method.
PyObject* NextOf(PyObject* pSelf) {
    try {
        return py::handle(pSelf).cast<Parts&>().Next();
    } catch (py::error_already_set& oError) {
        oError.restore();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& oError) {
        PyErr_SetString(g_oClasses.pError, oError.what());
    }
    return nullptr;
}

}  // namespace

void DefineRecords(py::module_& oModule) {
    py::class_<Parts> oClass(
        oModule, "records",
        R"(The parts of a document that a path selects, one after the other, in constant memory.

records(source, path="/*", *, dicts=False, lists=(), limits=None): source is a path or a file object that is
opened for reading bytes, of any size, XML or DGraph of version 1, as it is, compressed or zipped.
Each part is the root of a tree of its own, or with dicts=True what to_dict(lists=lists) gives
of that.

>>> import io
>>> source = io.BytesIO(b'<o><i n="1">a</i><i n="2">b</i></o>')
>>> with vok.records(source, '/i[@n="2"]') as found:
...     for item in found:
...         print(found.path, item.value)
/i[1] b
)");
    oClass
        .def(py::init<const py::object&, const std::string&, bool, const py::iterable&,
                      const Limits*>(),
             py::arg("source"), py::arg("path") = "/*", py::kw_only(), py::arg("dicts") = false,
             py::arg("lists") = py::tuple(), py::arg("limits") = nullptr)
        .def("__iter__", [](const py::object& o) { return o; })
        .def("__next__",
             [](Parts& o) {
                 PyObject* const p = o.Next();
                 if (p == nullptr) throw py::stop_iteration();
                 return py::reinterpret_steal<py::object>(p);
             })
        .def("__enter__", [](const py::object& o) { return o; })
        .def("__exit__", [](Parts& o, const py::args&) { o.Close(); })
        .def("close", &Parts::Close, "Lets the file go; nothing more comes.")
        .def_property_readonly("path", &Parts::Path,
                               "Where in the document the part that came last stands.");
    reinterpret_cast<PyTypeObject*>(oClass.ptr())->tp_iternext = NextOf;
}

}  // namespace vok::python
