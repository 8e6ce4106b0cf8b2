// Documents of any size, record by record.
#include <pybind11/pybind11.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "python/src/errors.h"
#include "python/src/file_object.h"
#include "python/src/module.h"
#include "python/src/to_python.h"
#include "tools/path.h"
#include "vok/records/records.h"

namespace vok::python {

namespace {

// The parts that a path selects, as nodes of trees of their own, or as dicts.
//
// Of a file several are read at once without the interpreter's lock, which would else have to be
// waited for with each of them; what a pipe or a file object gives is handed out as it comes.
class Parts {
  public:
    Parts(const py::object& oSource, const std::string& sPath, bool bDicts, const Limits* pLimits)
        : m_bDicts(bDicts) {
        const Limits oLimits = LimitsOf(pLimits);
        if (py::hasattr(oSource, "read")) {
            m_pFile = std::make_unique<File_Object>(oSource);
            Guarded([&] { m_pRecords = std::make_unique<Records>(*m_pFile, sPath, oLimits); });
            return;
        }
        m_sName = PathOf(oSource);
        std::error_code oNone;
        const bool bFile = std::filesystem::is_regular_file(tools::ToPath(m_sName), oNone);
        m_uMost = bFile ? RECORDS : 1;
        Guarded([&] {
            const py::gil_scoped_release oUnlocked;
            m_pRecords = std::make_unique<Records>(Str(std::string_view(m_sName)), sPath, oLimits);
        });
    }

    [[nodiscard]] py::object Next() {
        if (m_uNext == m_aoPart.size()) Fill();
        if (m_uNext == m_aoPart.size()) {
            if (m_oError) RaiseError();
            throw py::stop_iteration();
        }
        Part& oPart = m_aoPart[m_uNext++];
        m_sPath = oPart.sPath;
        const Node oNode(std::move(oPart.oTree));
        if (!m_bDicts) return py::cast(oNode);
        const Reading oReading(oNode.GetTree());
        const Busy oBusy(*this);  // values may run code of others
        return py::reinterpret_steal<py::object>(m_oToPython.Convert(oNode));
    }
    // Where in the document the root of the part given last stands.
    [[nodiscard]] const std::string& Path() const noexcept { return m_sPath; }
    void Close() {
        if (m_bBusy) RaiseBusy("records are being read");
        m_pRecords.reset();
        m_pFile.reset();
        m_aoPart.clear();
        m_uNext = 0;
    }

  private:
    struct Part {
        Data oTree;
        std::string sPath;
    };
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
    static constexpr std::size_t RECORDS = 64;
    static constexpr std::size_t NODES = 8192;

    void Fill() {
        const Busy oBusy(*this);
        m_aoPart.clear();
        m_uNext = 0;
        if (m_pRecords == nullptr || m_oError) return;
        if (m_pFile != nullptr) return Guarded([&] { Read(); });
        const py::gil_scoped_release oUnlocked;
        try {
            Read();
        } catch (const Msg_Exception& oError) {
            m_oError = std::make_unique<Msg_Exception>(oError);
        }
    }
    void Read() {
        std::size_t uNodes = 0;
        while (m_aoPart.size() < m_uMost && uNodes < NODES && m_pRecords->Next()) {
            m_aoPart.push_back({m_pRecords->GetData(), std::string(m_pRecords->GetPath().View())});
            uNodes += m_aoPart.back().oTree.GetNodes();
        }
    }
    [[noreturn]] void RaiseError() {
        const Msg_Exception oError = *m_oError;
        m_oError.reset();
        const Load_Report oReport = m_pRecords->GetReader().GetReport();
        m_pRecords.reset();
        Raise(g_oClasses.pLoadError, oError, &oReport, m_sName);
    }
    template <class Step>
    void Guarded(const Step& oStep) {
        try {
            oStep();
        } catch (const Msg_Exception& oError) {
            Load_Report oReport;
            if (m_pRecords != nullptr) oReport = m_pRecords->GetReader().GetReport();
            m_pRecords.reset();
            Raise(g_oClasses.pLoadError, oError, &oReport, m_sName);
        } catch (const Callback_Raised&) {
            m_pRecords.reset();
            m_pFile->RaiseAgain();
        }
    }

    const bool m_bDicts;
    std::string m_sName;
    std::unique_ptr<File_Object> m_pFile;
    std::unique_ptr<Records> m_pRecords;  // null when closed, or behind an error
    std::size_t m_uMost = 1;
    std::vector<Part> m_aoPart;
    std::size_t m_uNext = 0;
    std::string m_sPath;
    std::unique_ptr<Msg_Exception> m_oError;  // behind the parts that are there
    bool m_bBusy = false;
    To_Python m_oToPython;
};

}  // namespace

void DefineRecords(py::module_& oModule) {
    py::class_<Parts>(oModule, "records", R"(The parts of a document that a path selects, one after the other, in constant memory.

records(source, path="/*", *, dicts=False, limits=None): source is a path or a file object that is
opened for reading bytes, of any size, XML or DGraph of version 1, as it is, compressed or zipped.
Each part is the root of a tree of its own, or with dicts=True what to_dict gives of that.

>>> import io
>>> source = io.BytesIO(b'<o><i n="1">a</i><i n="2">b</i></o>')
>>> with vok.records(source, '/i[@n="2"]') as found:
...     for item in found:
...         print(found.path, item.value)
/i[1] b
)")
        .def(py::init<const py::object&, const std::string&, bool, const Limits*>(), py::arg("source"),
             py::arg("path") = "/*", py::kw_only(), py::arg("dicts") = false, py::arg("limits") = nullptr)
        .def("__iter__", [](const py::object& o) { return o; })
        .def("__next__", &Parts::Next)
        .def("__enter__", [](const py::object& o) { return o; })
        .def("__exit__", [](Parts& o, const py::args&) { o.Close(); })
        .def("close", &Parts::Close, "Lets the file go; nothing more comes.")
        .def_property_readonly("path", &Parts::Path,
                               "Where in the document the part that came last stands.");
}

}  // namespace vok::python
